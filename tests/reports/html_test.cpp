#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/reports/html.h>

#include "tests/support/folder.h"
#include "tests/support/refusal.h"

#include <limits>
#include <string>

namespace varnow {
namespace {

html report()
{
    html r("Title", "About", "key, words");
    r.tab("one");
    return r;
}

Text body(html const& r)
{
    return r.tab_bodies(1, r.ntabs);
}

Text content(char const* name)
{
    Text t;
    t.read_file(name);
    return t;
}

int occurrences(Text const& text, std::string const& what)
{
    std::string const s = text.str;
    int n = 0;
    for (std::size_t at = s.find(what); at != std::string::npos; at = s.find(what, at + 1)) ++n;
    return n;
}

TEST(Html, PropertyIsWrittenOnlyWithAValue)
{
    EXPECT_EQ(property("size", ""), "");
    EXPECT_EQ(property("size", "3"), " size='3'");
}

TEST(Html, HeadCarriesTheTextsAndTheScriptsOfBothDirectories)
{
    Text const ours = varnow_script_directory, theirs = gnuplot_script_directory;
    EXPECT_EQ(theirs, "C:\\Program Files\\gnuplot\\share\\js\\");
    EXPECT_EQ(ours, "C:\\Program Files\\Varnow\\js\\");
    varnow_script_directory = "v/";
    gnuplot_script_directory = "g/";
    html const r = report();
    varnow_script_directory = ours;
    gnuplot_script_directory = theirs;

    std::string const head = r.head.str;
    std::string const tail =
        "  <meta name='Description' content='About' />\n"
        "  <meta name='Keywords' content='key, words' />\n"
        "  <title>Title</title>\n"
        "  <script src='g/canvasmath.js'></script>\n  <script src='g/canvastext.js'></script>\n"
        "  <script src='g/gnuplot_common.js'></script>\n"
        "  <script src='g/gnuplot_dashedlines.js'></script>\n"
        "  <script src='g/gnuplot_mouse.js'></script>\n  <script src='g/gnuplot_svg.js'></script>\n"
        "  <script src='v/updating.js'></script>\n  <script src='v/tabs.js'></script>\n"
        "  <link rel=\"stylesheet\" type=\"text/css\" href=\"varnow.css\">\n</head>\n";
    ASSERT_GT(head.size(), tail.size());
    EXPECT_EQ(head.substr(head.size() - tail.size()), tail);
    EXPECT_NE(head.find("\"-//W3C//DTD XHTML 1.0 Transitional//EN\""), std::string::npos);
    EXPECT_NE(head.find("<head>\n  <meta http-equiv='Content-Type' content='text/html; "
                        "charset=iso-8859-2' />\n"),
              std::string::npos);
}

TEST(Html, TextAndChaptersCarryTheirFormat)
{
    html r = report();
    text_properties p;
    p.bold = p.underline = 1;
    p.color = "red";
    p.size = 4;
    r.htext("x", p);
    EXPECT_EQ(body(r), "  <font color='red' size='4'><b><u>\n  x\n  </u></b></font>\n");
    r.tab("two");
    r.chapter("Start");
    EXPECT_EQ(body(r), "  <a name=\"C1\"></a>\n  <font size='1'>\n  Start\n  </font>\n");
    r.tab("three");
    r.paragraph("text", text_properties(), "right");
    EXPECT_EQ(body(r), "  <p align='right' font size='1'>\n  text\n  </p>\n");
}

TEST(Html, ImagesAndLinksAreWrittenInBothForms)
{
    struct Element
    {
        char const* written;
        void (*add)(html&);
    };
    Element const elements[] = {
        {"  <img src='d/a.png' alt='Blad w add_image: nie znaleziono obrazka!' align='left' "
         "width='3' "
         "height='4'/>\n",
         [](html& r) { r.image("a.png", "d/", "left", 3, 4); }},
        {"  <center><img src='d/a.png' alt='Blad w add_image: nie znaleziono obrazka!' width='3' "
         "height='0'/></center>\n",
         [](html& r) { r.image("a.png", "d/", "center", 3, 0); }},
        {"  <a href='d/u'>label</a>\n", [](html& r) { r.href("u", "d/", "label"); }},
        {"  <a href='u'><img src='p.png' alt='Blad w add_href: nie znaleziono obrazka!' "
         "border='0'/></a>\n",
         [](html& r) { r.href("u", "", "label", "p.png"); }},
        {"  <br/>\n  <br/>\n", [](html& r) { r.endline(2); }},
        {"  <script src='d/f.js'></script>\n  <canvas id='f' width=6 height=7>\n"
         "    <div id='err_msg'>No support for HTML 5 canvas element</div>\n  </canvas>\n",
         [](html& r) { r.js("f", "d/", 6, 7); }},
    };
    for (Element const& e : elements) {
        html r = report();
        e.add(r);
        EXPECT_EQ(body(r), e.written);
    }
}

TEST(Html, TablesFollowTheirProperties)
{
    table cells(2, 2);
    cells.test("", "c");
    html plain = report();
    plain.htable(cells);
    EXPECT_EQ(body(plain), "  <table border='4' cellpadding='4' cellspacing='2'>\n"
                           "  <tr><th>&nbsp</th><th>C1</th><th>C2</th></tr>\n"
                           "  <tr><th>R1</th><td>c1</td><td>c2</td></tr>\n"
                           "  <tr><th>R2</th><td>c3</td><td>c4</td></tr>\n  </table>\n");

    table_properties p;
    p.caption = "Cap";
    p.caption_align = "top";
    p.width = "50%";
    p.header_bgcolor = "blue";
    p.show_rownames = 0;
    html r = report();
    r.htable(cells.row(1), p);
    EXPECT_EQ(body(r), "  <table border='4' cellpadding='4' cellspacing='2' width='50%'>\n"
                       "  <caption align='top'>Cap</caption>\n"
                       "  <tr bgcolor='blue'><th>C1</th><th>C2</th></tr>\n"
                       "  <tr><td>c1</td><td>c2</td></tr>\n  </table>\n");
}

TEST(Html, FormatsWriteDecimalsWholeNumbersAndPercents)
{
    struct Format
    {
        double value, format;
        char const* cell;
    };
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Format const formats[] = {
        {1.23456, 3, "1.235"}, {2.5, 0, "3"},        {-2.5, 0, "-2"},   {1e12, 0, "1000000000000"},
        {0.12345, -1, "12.3"}, {0.5, -2.4, "50.00"}, {1.5, 0.6, "1.5"}, {nan, 2, ""},
    };
    for (Format const& f : formats) {
        html r = report();
        r.hmatrix(matrix(f.value), matrix(f.format));
        EXPECT_EQ(occurrences(body(r), std::string("<td>") + f.cell + "</td>"), 1)
            << f.value << " " << f.format;
    }
    html r = report();
    r.htable(c("0,5", "half"), matrix("2 2"));
    EXPECT_EQ(occurrences(body(r), "<td>0.50</td><td>half</td>"), 1);
}

TEST(HtmlDeathTest, RefusesWrongFormatsAndFullTabs)
{
    html r = report();
    matrix const m(varnow::ones(2, 2));
    char const* const of_matrix = "void add_matrix(matrix,matrix,table_properties)";
    char const* const of_table = "void add_table(table,matrix,table_properties)";
    char const* const no_vector = "zmienna definiujaca format kolumn nie jest wektorem";
    Text const length = "wektor definiujacy format kolumn ma dlugosc niezgodna z liczba kolumn ";
    EXPECT_REFUSAL(r.hmatrix(m, m), "HTML", of_matrix, no_vector);
    EXPECT_REFUSAL(r.hmatrix(m, matrix("1 2 3")), "HTML", of_matrix, (length + "macierzy").str);
    EXPECT_REFUSAL(r.htable(table(m), m), "HTML", of_table, no_vector);
    EXPECT_REFUSAL(r.htable(table(m), matrix()), "HTML", of_table, (length + "tabeli").str);

    for (int k = 2; k <= 10; ++k) r.tab("t");
    EXPECT_REFUSAL_DETAIL(r.tab("t"), "TABLE", "Text & operator ()(int,int)",
                          "indeks poza zakresem", "1 x 10 : ( 1 , 11 )");
    for (int k = 1; k <= 10; ++k) r.chapter("c");
    EXPECT_REFUSAL_DETAIL(r.chapter("c"), "TABLE", "Text & operator ()(int,int)",
                          "indeks poza zakresem", "10 x 10 : ( 11 , 10 )");
    html untabbed("", "", "");
    EXPECT_REFUSAL_DETAIL(untabbed.htext("x"), "TABLE", "Text & operator ()(int,int)",
                          "indeks poza zakresem", "1 x 10 : ( 1 , 0 )");
}

TEST(HtmlDeathTest, RefusesAPlaceThatCannotBeWritten)
{
    html const r = report();
    EXPECT_REFUSAL_DETAIL(r.save("no-such-directory/", "a.html"), "HTML", "void save(Text,Text)",
                          "nieudane otwarcie pliku do zapisu",
                          "katalog: no-such-directory/, plik: a.html");
    folder out;
    out.make_folder("varnow.css");
    Text const dir = out.path("");
    EXPECT_REFUSAL_DETAIL(r.save(dir, "a.html"), "HTML", "html(Text,Text,Text)",
                          "nieudany zapis stylow css",
                          std::string("katalog: ") + dir.str + ", plik: a.html");
}

TEST(Html, SavesOneTabBareAndSeveralWithButtonsAndNavigation)
{
    html r = report();
    r.htext("first");
    r.save("", "bare.html");
    Text const bare = content("bare.html");
    EXPECT_EQ(occurrences(bare, "<button"), 0);
    EXPECT_EQ(occurrences(bare, "tabcontent"), 0);
    EXPECT_EQ(
        occurrences(bare, "</head>\n<body>\n<div class=\"main\">\n  <font size='1'>\n  first\n"),
        1);
    EXPECT_EQ(content("varnow.css"), r.style());

    r.background("#fff");
    r.chapter("A");
    r.chapter("B");
    r.tab("two");
    for (char const* name : {"C", "D", "E"}) r.chapter(name);
    for (char const* name : {"f1", "f2", "f3"}) r.js(name, "", 1, 1);
    r.save("", "tabs.html");
    Text const page = content("tabs.html");
    EXPECT_EQ(occurrences(page, "<body bgcolor='#fff' onload='f1();f2();f3();'>\n"
                                "<button class=\"tablink\" onclick=\"openPage('one', this, "
                                "'green')\">one</button>\n"
                                "<button class=\"tablink\" onclick=\"openPage('two', this, "
                                "'green')\">two</button>\n"
                                "<div id=\"one\" class=\"tabcontent\">\n<div class=\"sidenav\">\n"
                                "<a href=\"#C1\">A</a>\n<a href=\"#C2\">B</a>\n</div>\n\n"
                                "<div class=\"main\">\n"),
              1);
    EXPECT_EQ(r.sidenav(2),
              "<div class=\"sidenav\">\n<a href=\"#C3\">C</a>\n<a href=\"#C4\">D</a>\n"
              "<a href=\"#C5\">E</a>\n</div>\n\n");
    EXPECT_EQ(occurrences(page, "</div>\n</div>\n\n\n</body>\n</html>"), 1);
}

TEST(Html, GrowsItsCanvasesAndStartsAnewAfterClear)
{
    html r = report();
    for (int k = 1; k <= 25; ++k) r.js("f" + itot(k), "", 1, 1);
    EXPECT_EQ(r.functions.rows, 30);
    EXPECT_EQ(r.functions(25, 1), "f25");
    html copy = r;
    r.clear();
    EXPECT_EQ(r.nfunctions, 0);
    EXPECT_EQ(r.ntabs, 0);
    r.tab("new");
    EXPECT_EQ(body(r), "");
    EXPECT_EQ(copy.nfunctions, 25);
}

} // namespace
} // namespace varnow
