#include <varnow/reports/html.h>

#include <varnow/core/textutils.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace varnow {

Text gnuplot_script_directory = "C:\\Program Files\\gnuplot\\share\\js\\";
Text varnow_script_directory = "C:\\Program Files\\Varnow\\js\\";

namespace {

constexpr int most_tabs = 10;
constexpr int most_chapters = 10;
constexpr int functions_step = 10;
// More decimals than any number has; keeps an absurd format from an absurd text.
constexpr double most_decimals = 400.0;

char const head_start[] =
    "<!DOCTYPE html\n"
    "  PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\"\n"
    "  \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
    "<html xmlns='http://www.w3.org/1999/xhtml' xml:lang='pl' lang='pl'>\n"
    "<head>\n"
    "  <meta http-equiv='Content-Type' content='text/html; charset=iso-8859-2' />\n"
    "  <meta name='Description' content='";

char const* const gnuplot_scripts[] = {"canvasmath.js",     "canvastext.js",
                                       "gnuplot_common.js", "gnuplot_dashedlines.js",
                                       "gnuplot_mouse.js",  "gnuplot_svg.js"};
char const* const own_scripts[] = {"updating.js", "tabs.js"};

char const style_sheet[] =
    "body {\n  font-family: \"Lato\", sans-serif;\n}\n\n"
    ".sidenav {\n  width: 180px;\n  position: fixed;\n  z-index: 1;\n  top: 70px;\n  left: 10px;\n"
    "  background: #eee;\n  overflow-x: hidden;\n  padding: 8px 0;\n}\n\n"
    ".sidenav a {\n  padding: 6px 8px 6px 16px;\n  text-decoration: none;\n  font-size: 18px;\n"
    "  color: #2196F3;\n  display: block;\n}\n\n"
    ".sidenav a:hover {\n  color: #064579;\n}\n\n"
    ".main {\n  margin-left: 190px;\n  padding: 0px 10px;\n}\n\n"
    "@media screen and (max-height: 450px) {\n  .sidenav {padding-top: 15px;}\n"
    "  .sidenav a {font-size: 18px;}\n}\n\n"
    "body, html {\n  height: 100%;\n  margin: 0;\n  font-family: Arial;\n}\n\n"
    ".tablink {\n  background-color: #555;\n  color: white;\n  float: left;\n  border: none;\n"
    "  outline: none;\n  cursor: pointer;\n  padding: 14px 16px;\n  font-size: 17px;\n  width: "
    "25%;\n}\n\n"
    ".tablink:hover {\n  background-color: #777;\n}\n\n"
    ".tabcontent {\n  color: black;\n  display: none;\n  padding: 100px 20px;\n}\n";

// Tags of the flags of a run of text, opened in this order and closed in reverse.
Text flag_tags(text_properties const& p, bool closing)
{
    struct flag
    {
        int set;
        char const *open, *close;
    };
    flag const flags[] = {
        {p.bold, "<b>", "</b>"}, {p.italic, "<i>", "</i>"}, {p.underline, "<u>", "</u>"}};
    std::string tags;
    for (flag const& f : flags)
        if (f.set) closing ? tags.insert(0, f.close) : tags.append(f.open);
    return tags;
}

Text font_properties(text_properties const& p)
{
    return property("color", p.color) + property("size", Text(p.size)) + property("face", p.face);
}

// x without decimals, whatever its size.
Text whole(double x)
{
    double const rounded = std::floor(x + 0.5);
    if (rounded >= -2147483648.0 && rounded <= 2147483647.0) return itot(static_cast<int>(rounded));
    Text const written = dtot(rounded, 1);
    int const point = written.firstpos('.');
    return point > 0 ? part(written, point - 1) : written;
}

Text formatted(double x, int format)
{
    if (format > 0) return dtot(x, format);
    return format == 0 ? whole(x) : fperc(x, -format);
}

// The formats as integers, or none after a refusal.
bool read_formats(matrix const& fmt, int cols, char const* routine, char const* object,
                  Vector& formats)
{
    auto refuse = [&](Text const& why) {
        errormessage("HTML", routine, why, "");
        return false;
    };
    if (fmt.rows > 1 && fmt.cols > 1)
        return refuse("zmienna definiujaca format kolumn nie jest wektorem");
    if ((fmt.rows == 0 || fmt.cols == 0 ? 0 : std::max(fmt.rows, fmt.cols)) != cols)
        return refuse(
            Text("wektor definiujacy format kolumn ma dlugosc niezgodna z liczba kolumn ") +
            object);
    formats.resize(cols);
    for (int j = 0; j < cols; ++j) {
        double const f = std::floor(fmt(j + 1) + 0.5);
        formats.v[j] = std::isnan(f)
                           ? 0
                           : static_cast<int>(std::min(std::max(f, -most_decimals), most_decimals));
    }
    return true;
}

void write_file(Text const& dir, char const* file, Text const& named, Text const& content,
                char const* failure, char const* routine)
{
    FILE* const f = std::fopen((dir + file).str, "wt");
    bool written = f && std::fputs(content.str, f) >= 0;
    if (f && std::fclose(f) != 0) written = false;
    if (!written) errormessage("HTML", routine, failure, "katalog: " + dir + ", plik: " + named);
}

} // namespace

Text property(Text const& name, Text const& value)
{
    return value.len == 0 ? Text() : " " + name + "='" + value + "'";
}

html::html(Text const& title, Text const& description, Text const& keywords)
    : nfunctions(0),
      functions(functions_step, 1),
      ntabs(0),
      tab_names(1, most_tabs),
      tab_bodies(1, most_tabs),
      nchapters(0),
      tab_chapters(vzeros(most_tabs)),
      chapter_names(most_chapters, most_tabs)
{
    std::string h = head_start;
    h += description.str;
    h += "' />\n  <meta name='Keywords' content='";
    h += keywords.str;
    h += "' />\n  <title>";
    h += title.str;
    h += "</title>\n";
    auto link = [&h](Text const& dir, char const* file) {
        h.append("  <script src='").append(dir.str).append(file).append("'></script>\n");
    };
    for (char const* file : gnuplot_scripts) link(gnuplot_script_directory, file);
    for (char const* file : own_scripts) link(varnow_script_directory, file);
    h += "  <link rel=\"stylesheet\" type=\"text/css\" href=\"varnow.css\">\n</head>\n";
    head = Text(h);
}

Text& html::body()
{
    return tab_bodies(1, ntabs);
}

void html::tab(Text const& x)
{
    tab_names(1, ntabs + 1) = x;
    ++ntabs;
    body() = Text();
    tab_chapters.v[ntabs - 1] = 0;
}

void html::htext(Text const& x, text_properties const& p)
{
    body() += "  <font" + font_properties(p) + ">" + flag_tags(p, false) + "\n  " + x + "\n  " +
              flag_tags(p, true) + "</font>\n";
}

void html::chapter(Text const& x, text_properties const& p)
{
    body();
    chapter_names(tab_chapters.v[ntabs - 1] + 1, ntabs) = x;
    ++tab_chapters.v[ntabs - 1];
    ++nchapters;
    body() += "  <a name=\"C" + Text(nchapters) + "\"></a>\n";
    htext(x, p);
}

void html::paragraph(Text const& x, text_properties const& p, Text const& align)
{
    body() += "  <p align='" + align + "' font" + font_properties(p) + ">\n  " + x + "\n  </p>\n";
}

void html::image(Text const& file, Text const& dir, Text const& align, int w, int h)
{
    Text const picture =
        "<img src='" + dir + file + "' alt='Blad w add_image: nie znaleziono obrazka!'";
    Text const sizes = property("width", Text(w)) + property("height", Text(h));
    body() += align == "center" ? "  <center>" + picture + sizes + "/></center>\n"
                                : "  " + picture + " align='" + align + "'" + sizes + "/>\n";
}

void html::href(Text const& url, Text const& dir, Text const& label, Text const& picture)
{
    Text const shown = picture.len == 0
                           ? label
                           : "<img src='" + picture +
                                 "' alt='Blad w add_href: nie znaleziono obrazka!' border='0'/>";
    body() += "  <a href='" + dir + url + "'>" + shown + "</a>\n";
}

void html::endline(int n)
{
    std::string lines;
    for (int k = 0; k < n; ++k) lines += "  <br/>\n";
    body() += Text(lines);
}

void html::clear()
{
    background_color = Text();
    nfunctions = ntabs = nchapters = 0;
    tab_chapters.fill(0);
}

void html::js(Text const& name, Text const& dir, int w, int h)
{
    body();
    if (nfunctions == functions.rows) functions.newrows(functions_step);
    functions(++nfunctions, 1) = name;
    body() += "  <script src='" + dir + name + ".js'></script>\n  <canvas id='" + name +
              "' width=" + Text(w) + " height=" + Text(h) +
              ">\n    <div id='err_msg'>No support for HTML 5 canvas element</div>\n  </canvas>\n";
}

void html::htable(table const& t, table_properties const& p)
{
    std::string s;
    s += "  <table border='" + std::to_string(p.border) + "' cellpadding='" +
         std::to_string(p.cellpadding) + "' cellspacing='" + std::to_string(p.cellspacing) + "'";
    s.append(property("width", p.width).str).append(property("height", p.height).str);
    s.append(property("align", p.align).str)
        .append(property("bgcolor", p.bgcolor).str)
        .append(">\n");
    if (p.caption.len > 0)
        s.append("  <caption")
            .append(property("align", p.caption_align).str)
            .append(">")
            .append(p.caption.str)
            .append("</caption>\n");
    if (p.show_colnames) {
        s.append("  <tr").append(property("bgcolor", p.header_bgcolor).str).append(">");
        if (p.show_rownames) s += "<th>&nbsp</th>";
        for (int j = 0; j < t.cols; ++j) s.append("<th>").append(t.cnames[j].str).append("</th>");
        s += "</tr>\n";
    }
    for (int i = 0; i < t.rows; ++i) {
        s += "  <tr>";
        if (p.show_rownames) s.append("<th>").append(t.rnames[i].str).append("</th>");
        for (int j = 0; j < t.cols; ++j) s.append("<td>").append(t.cell[i][j].str).append("</td>");
        s += "</tr>\n";
    }
    s += "  </table>\n";
    body() += Text(s);
}

void html::hmatrix(matrix const& m, matrix const& fmt, table_properties const& p)
{
    Vector formats;
    if (!read_formats(fmt, m.cols, "void add_matrix(matrix,matrix,table_properties)", "macierzy",
                      formats))
        return;
    table shown(m.rows, m.cols);
    copynames(m, shown);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.cols; ++j) shown.cell[i][j] = formatted(m.cell[i][j], formats.v[j]);
    htable(shown, p);
}

void html::htable(table const& t, matrix const& fmt, table_properties const& p)
{
    Vector formats;
    if (!read_formats(fmt, t.cols, "void add_table(table,matrix,table_properties)", "tabeli",
                      formats))
        return;
    table shown = t;
    for (int i = 0; i < t.rows; ++i)
        for (int j = 0; j < t.cols; ++j)
            if (numerical(t.cell[i][j]))
                shown.cell[i][j] = formatted(ttod(t.cell[i][j]), formats.v[j]);
    htable(shown, p);
}

Text html::style() const
{
    return style_sheet;
}

Text html::tablink() const
{
    if (ntabs < 2) return Text();
    Text buttons;
    for (int k = 1; k <= ntabs; ++k)
        buttons += "<button class=\"tablink\" onclick=\"openPage('" + tab_names(1, k) +
                   "', this, 'green')\">" + tab_names(1, k) + "</button>\n";
    return buttons;
}

Text html::sidenav(int k) const
{
    int const chapters = k >= 1 && k <= tab_chapters.n ? tab_chapters.v[k - 1] : 0;
    if (chapters == 0) return Text();
    int base = 0;
    for (int before = 1; before < k; ++before) base += tab_chapters.v[before - 1];
    Text links = "<div class=\"sidenav\">\n";
    for (int i = 1; i <= chapters; ++i)
        links += "<a href=\"#C" + Text(base + i) + "\">" + chapter_names(i, k) + "</a>\n";
    return links + "</div>\n\n";
}

Text html::page() const
{
    std::string page = head.str;
    std::string onload;
    if (nfunctions > 0) {
        onload = " onload='";
        for (int k = 1; k <= nfunctions; ++k) onload.append(functions(k, 1).str).append("();");
        onload += "'";
    }
    page.append("<body")
        .append(property("bgcolor", background_color).str)
        .append(onload)
        .append(">\n");
    page += tablink().str;
    for (int k = 1; k <= std::max(ntabs, 1); ++k) {
        if (ntabs > 1)
            page.append("<div id=\"")
                .append(tab_names(1, k).str)
                .append("\" class=\"tabcontent\">\n");
        page.append(sidenav(k).str)
            .append("<div class=\"main\">\n")
            .append(tab_bodies(1, k).str)
            .append("</div>\n");
        if (ntabs > 1) page += "</div>\n\n";
    }
    page += "\n</body>\n</html>";
    return page;
}

void html::save(Text const& dir, Text const& file) const
{
    write_file(dir, file.str, file, page(), "nieudane otwarcie pliku do zapisu",
               "void save(Text,Text)");
    write_file(dir, "varnow.css", file, style(), "nieudany zapis stylow css",
               "html(Text,Text,Text)");
}

} // namespace varnow
