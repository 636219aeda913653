#include "carry.h"
#include "objects.h"

#include <cstdio>

template <> SEXP object_mark<varnow::html>()
{
    return Rf_install("varnow_html");
}
template <> SEXP object_mark<varnow::gplot>()
{
    return Rf_install("varnow_gplot");
}

namespace {

using varnow::Text;

// Of settings given by name, the one asked for where it is there.
Text text_of(Rcpp::List const& settings, char const* name)
{
    return settings.containsElementNamed(name) ? Text(Rcpp::as<std::string>(settings[name]))
                                               : Text();
}
int number_of(Rcpp::List const& settings, char const* name, int otherwise)
{
    return settings.containsElementNamed(name) ? Rcpp::as<int>(settings[name]) : otherwise;
}

varnow::text_properties text_format(Rcpp::List const& settings)
{
    varnow::text_properties p;
    p.bold = number_of(settings, "bold", p.bold);
    p.italic = number_of(settings, "italic", p.italic);
    p.underline = number_of(settings, "underline", p.underline);
    p.size = number_of(settings, "size", p.size);
    p.color = text_of(settings, "color");
    p.face = text_of(settings, "face");
    return p;
}

varnow::table_properties table_format(Rcpp::List const& settings)
{
    varnow::table_properties p;
    p.caption = text_of(settings, "caption");
    p.caption_align = text_of(settings, "caption_align");
    p.width = text_of(settings, "width");
    p.height = text_of(settings, "height");
    p.align = text_of(settings, "align");
    p.bgcolor = text_of(settings, "bgcolor");
    p.header_bgcolor = text_of(settings, "header_bgcolor");
    p.show_colnames = number_of(settings, "show_colnames", p.show_colnames);
    p.show_rownames = number_of(settings, "show_rownames", p.show_rownames);
    p.border = number_of(settings, "border", p.border);
    p.cellpadding = number_of(settings, "cellpadding", p.cellpadding);
    p.cellspacing = number_of(settings, "cellspacing", p.cellspacing);
    return p;
}

varnow::matrix formats_of(Rcpp::NumericVector const& formats)
{
    return varnow::cmatrix(
        Rcpp::NumericMatrix(1, static_cast<int>(formats.size()), formats.begin()));
}

using text_member = void (varnow::gplot::*)(Text const&);
using number_member = void (varnow::gplot::*)(double);
using whole_member = void (varnow::gplot::*)(int);
using pair_member = void (varnow::gplot::*)(double, double);

template <class M> struct named
{
    char const* name;
    M member;
};

// clang-format off
#define MEMBER(name) {#name, &varnow::gplot::name}
named<text_member> const text_members[] = {
    MEMBER(title), MEMBER(style), MEMBER(xlabel), MEMBER(ylabel), MEMBER(zlabel), MEMBER(key), MEMBER(object),
    MEMBER(xtics), MEMBER(ytics), MEMBER(ztics), MEMBER(set), MEMBER(define), MEMBER(inst), MEMBER(instc),
    MEMBER(comment)};
named<number_member> const number_members[] = {MEMBER(boxwidth), MEMBER(bmargin)};
named<whole_member> const whole_members[] = {
    MEMBER(samples), MEMBER(isosamples), MEMBER(parametric), MEMBER(endl)};
named<pair_member> const pair_members[] = {MEMBER(xrange), MEMBER(yrange), MEMBER(zrange), MEMBER(view)};
#undef MEMBER
// clang-format on

template <class M, std::size_t n> M member(named<M> const (&list)[n], std::string const& name)
{
    for (named<M> const& x : list)
        if (name == x.name) return x.member;
    Rcpp::stop("no such statement");
}

} // namespace

// Writes bytes as they are, which the library's own writer would end the process over.
// [[Rcpp::export]]
bool reports_write(std::string const& file, Rcpp::RawVector const& bytes)
{
    std::FILE* const f = std::fopen(file.c_str(), "wt");
    if (!f) return false;
    std::size_t const n = static_cast<std::size_t>(bytes.size());
    bool const written = std::fwrite(bytes.begin(), 1, n, f) == n;
    return std::fclose(f) == 0 && written;
}

// [[Rcpp::export]]
SEXP html_new(std::string const& title, std::string const& description, std::string const& keywords,
              std::string const& scripts, std::string const& gnuplot_scripts)
{
    varnow::varnow_script_directory = Text(scripts);
    varnow::gnuplot_script_directory = Text(gnuplot_scripts);
    return object_pointer(
        std::make_unique<varnow::html>(Text(title), Text(description), Text(keywords)));
}

// Tabs, chapters of the last tab.
// [[Rcpp::export]]
Rcpp::IntegerVector html_counts(SEXP pointer)
{
    varnow::html const& h = object<varnow::html>(pointer);
    return Rcpp::IntegerVector::create(h.ntabs, h.ntabs > 0 ? h.tab_chapters.v[h.ntabs - 1] : 0);
}

// [[Rcpp::export]]
void html_text(SEXP pointer, std::string const& part, std::string const& x,
               Rcpp::List const& settings)
{
    varnow::html& h = object<varnow::html>(pointer);
    Text const text(x);
    if (part == "background") h.background(text);
    if (part == "tab") h.tab(text);
    if (part == "htext") h.htext(text, text_format(settings));
    if (part == "chapter") h.chapter(text, text_format(settings));
    if (part == "paragraph") h.paragraph(text, text_format(settings), text_of(settings, "align"));
}

// [[Rcpp::export]]
void html_image(SEXP pointer, std::string const& file, std::string const& dir,
                std::string const& align, int w, int h)
{
    object<varnow::html>(pointer).image(Text(file), Text(dir), Text(align), w, h);
}

// [[Rcpp::export]]
void html_href(SEXP pointer, std::string const& url, std::string const& dir,
               std::string const& label, std::string const& picture)
{
    object<varnow::html>(pointer).href(Text(url), Text(dir), Text(label), Text(picture));
}

// [[Rcpp::export]]
void html_js(SEXP pointer, std::string const& name, std::string const& dir, int w, int h)
{
    object<varnow::html>(pointer).js(Text(name), Text(dir), w, h);
}

// [[Rcpp::export]]
void html_endline(SEXP pointer, int n)
{
    object<varnow::html>(pointer).endline(n);
}

// [[Rcpp::export]]
void html_clear(SEXP pointer)
{
    object<varnow::html>(pointer).clear();
}

// [[Rcpp::export]]
void html_matrix(SEXP pointer, Rcpp::NumericMatrix const& x, Rcpp::NumericVector const& formats,
                 Rcpp::List const& settings)
{
    object<varnow::html>(pointer).hmatrix(matrix_arg(x), formats_of(formats),
                                          table_format(settings));
}

// [[Rcpp::export]]
void html_table(SEXP pointer, Rcpp::List const& x, Rcpp::CharacterVector const& row_names,
                Rcpp::Nullable<Rcpp::NumericVector> const& formats, Rcpp::List const& settings)
{
    varnow::html& h = object<varnow::html>(pointer);
    varnow::table t = table_arg(x);
    for (int i = 0; i < t.rows && i < row_names.size(); ++i)
        t.rnames[i] = CHAR(STRING_ELT(row_names, i));
    if (formats.isNull())
        h.htable(t, table_format(settings));
    else
        h.htable(t, formats_of(formats.get()), table_format(settings));
}

// [[Rcpp::export]]
std::string html_page(SEXP pointer)
{
    return object<varnow::html>(pointer).page().str;
}

// [[Rcpp::export]]
std::string html_style(SEXP pointer)
{
    return object<varnow::html>(pointer).style().str;
}

namespace {

// The library leaves the script open, since copies share it; R holds but one.
void close_script(varnow::gplot* g)
{
    g->close();
    delete g;
}

} // namespace

// [[Rcpp::export]]
SEXP gplot_new(std::string const& name, std::string const& directory)
{
    std::unique_ptr<varnow::gplot> g(new varnow::gplot(Text(name), Text(directory)));
    if (!g->fp) return R_NilValue;
    return Rcpp::XPtr<varnow::gplot, Rcpp::PreserveStorage, close_script>(
        g.release(), true, object_mark<varnow::gplot>());
}

// [[Rcpp::export]]
void gplot_close(SEXP pointer)
{
    object<varnow::gplot>(pointer).close();
}

// [[Rcpp::export]]
void gplot_text(SEXP pointer, std::string const& name, std::string const& x)
{
    (object<varnow::gplot>(pointer).*member(text_members, name))(Text(x));
}

// [[Rcpp::export]]
void gplot_number(SEXP pointer, std::string const& name, double x)
{
    (object<varnow::gplot>(pointer).*member(number_members, name))(x);
}

// [[Rcpp::export]]
void gplot_whole(SEXP pointer, std::string const& name, int x)
{
    (object<varnow::gplot>(pointer).*member(whole_members, name))(x);
}

// [[Rcpp::export]]
void gplot_pair(SEXP pointer, std::string const& name, double a, double b)
{
    (object<varnow::gplot>(pointer).*member(pair_members, name))(a, b);
}

// [[Rcpp::export]]
void gplot_label(SEXP pointer, int n, std::string const& x, double a, double b)
{
    object<varnow::gplot>(pointer).label(n, Text(x), a, b);
}

// [[Rcpp::export]]
void gplot_reset(SEXP pointer)
{
    object<varnow::gplot>(pointer).reset();
}

// [[Rcpp::export]]
void gplot_multiplot(SEXP pointer, bool on, int rows, int cols)
{
    object<varnow::gplot>(pointer).multiplot(on, rows, cols);
}

// A comment of such a line, or a text between two of them.
// [[Rcpp::export]]
void gplot_sep(SEXP pointer, std::string const& ch, int n,
               Rcpp::Nullable<Rcpp::CharacterVector> const& x)
{
    varnow::gplot& g = object<varnow::gplot>(pointer);
    if (x.isNull())
        g.sep(ch[0], n);
    else
        g.speccom(Text(Rcpp::as<std::string>(x.get())), ch[0], n);
}

// [[Rcpp::export]]
void gplot_pause(SEXP pointer, int n, std::string const& x)
{
    object<varnow::gplot>(pointer).pause(n, Text(x));
}

// A statement of up to five series. A source of data is written as the library's own plot names and
// writes it, but a file that cannot be written is given back, where that one would wait for ever.
// [[Rcpp::export]]
std::string gplot_plot(SEXP pointer, int dim, Rcpp::List const& sources,
                       Rcpp::CharacterVector const& clauses)
{
    varnow::gplot& g = object<varnow::gplot>(pointer);
    if (!g.fp) return "";
    int const n = static_cast<int>(sources.size());
    Text source[5], clause[15];
    for (int k = 0; k < 3 * n; ++k) clause[k] = Text(Rcpp::as<std::string>(clauses[k]));
    bool counted = false;
    for (int k = 0; k < n; ++k) {
        SEXP const x = VECTOR_ELT(sources, k);
        if (TYPEOF(x) == STRSXP) {
            source[k] = Text(Rcpp::as<std::string>(x));
            continue;
        }
        if (!counted) ++g.counter;
        counted = true;
        Text const& titled = clause[3 * k + 1];
        source[k] =
            g.name + "_" +
            (titled.len > 0 ? titled : varnow::itot(g.counter) + "-" + varnow::itot(k + 1)) +
            ".dat";
        Text const file = g.path + source[k];
        int const failed =
            TYPEOF(x) == REALSXP
                ? matrix_arg(Rcpp::NumericMatrix(x)).writetxt(file.str, 0, 0, 0, 0, '\t', '.', 0)
                : table_arg(Rcpp::List(x)).writetxt(file.str, 0, 0, 0, 0, '\t', '.', 0);
        if (failed) return file.str;
    }
    Text const* c = clause;
    g.plot_dim(dim, source[0], c[0], c[1], c[2], source[1], c[3], c[4], c[5], source[2], c[6], c[7],
               c[8], source[3], c[9], c[10], c[11], source[4], c[12], c[13], c[14]);
    return "";
}
