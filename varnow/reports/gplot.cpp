#include <varnow/reports/gplot.h>

namespace varnow {

void gplot::open(Text const& stem, Text const& directory)
{
    name = stem;
    path = directory;
    counter = 0;
    if (fp) std::fflush(fp);
    fp = std::fopen((path + name + ".plt").str, "wt");
}

void gplot::close()
{
    if (!fp) return;
    std::fclose(fp);
    fp = nullptr;
}

// Callers double a percent sign, and one is meant.
void gplot::write(Text const& x)
{
    if (!fp) return;
    for (char const* p = x.str; *p; ++p) {
        if (p[0] == '%' && p[1] == '%') ++p;
        std::fputc(*p, fp);
    }
}

// clang-format off
#define TEXT_STATEMENT(member, before, after) \
    void gplot::member(Text const& x) { write(Text(before) + x + after); }
TEXT_STATEMENT(title, "set title '", "'\n")
TEXT_STATEMENT(style, "set style ", "\n")
TEXT_STATEMENT(xlabel, "set xlabel '", "'\n")
TEXT_STATEMENT(ylabel, "set ylabel '", "'\n")
TEXT_STATEMENT(zlabel, "set zlabel '", "'\n")
TEXT_STATEMENT(key, "set key ", "\n")
TEXT_STATEMENT(object, "set object ", "\n")
TEXT_STATEMENT(xtics, "set xtics ", "\n")
TEXT_STATEMENT(ytics, "set ytics ", "\n")
TEXT_STATEMENT(ztics, "set ztics ", "\n")
TEXT_STATEMENT(set, "set ", "\n")
TEXT_STATEMENT(define, "", "\n")
TEXT_STATEMENT(inst, "", "\n")
TEXT_STATEMENT(instc, "", " ")
TEXT_STATEMENT(comment, "# ", "\n")
#undef TEXT_STATEMENT

#define NUMBER_STATEMENT(member, type, before, number) \
    void gplot::member(type v) { write(before + number + "\n"); }
NUMBER_STATEMENT(boxwidth, double, "set boxwidth ", dtot(v, 0))
NUMBER_STATEMENT(bmargin, double, "set bmargin ", dtot(v, 0))
NUMBER_STATEMENT(samples, int, "set samples ", itot(v))
NUMBER_STATEMENT(isosamples, int, "set isosamples ", itot(v))
#undef NUMBER_STATEMENT

#define RANGE_STATEMENT(member) \
    void gplot::member(double a, double b) { write("set " #member " [" + dtot(a, 0) + ":" + dtot(b, 0) + "]\n"); }
RANGE_STATEMENT(xrange)
RANGE_STATEMENT(yrange)
RANGE_STATEMENT(zrange)
#undef RANGE_STATEMENT
// clang-format on

void gplot::parametric(int on)
{
    write(on ? "set parametric\n" : "unset parametric\n");
}

void gplot::view(double a, double b)
{
    write("set view " + dtot(a, 0) + "," + dtot(b, 0) + "\n");
}

void gplot::label(int n, Text const& x, double a, double b)
{
    write("set label " + itot(n) + " '" + x + "' at " + dtot(a, 0) + "," + dtot(b, 0) + "\n");
}

void gplot::reset()
{
    write("reset\n");
}

void gplot::multiplot(int on, int rows, int cols)
{
    write(on ? "set multiplot layout " + itot(rows) + "," + itot(cols) + "\n"
             : t("unset multiplot\n"));
}

void gplot::sep(char ch, int n)
{
    std::string line(n > 0 ? static_cast<std::size_t>(n) : 0, ch);
    write(Text("# ") + Text(line) + "\n");
}

void gplot::endl(int n)
{
    for (int k = 0; k < n; ++k) write("\n");
}

void gplot::speccom(Text const& x, char ch, int n)
{
    sep(ch, n);
    comment(x);
    sep(ch, n);
}

void gplot::pause(int n, Text const& x)
{
    write("pause " + itot(n) + " '" + x + "'\n\n");
}

Text gplot::data_file(Text const& series_title, int k) const
{
    if (series_title.len > 0) return name + "_" + series_title + ".dat";
    return name + "_" + itot(counter) + "-" + itot(k) + ".dat";
}

void gplot::plot_dim(int dim, Text const& s1, Text const& u1, Text const& t1, Text const& w1,
                     Text const& s2, Text const& u2, Text const& t2, Text const& w2, Text const& s3,
                     Text const& u3, Text const& t3, Text const& w3, Text const& s4, Text const& u4,
                     Text const& t4, Text const& w4, Text const& s5, Text const& u5, Text const& t5,
                     Text const& w5)
{
    struct series
    {
        Text const &source, &use, &heading, &with;
    };
    series const list[] = {
        {s1, u1, t1, w1}, {s2, u2, t2, w2}, {s3, u3, t3, w3}, {s4, u4, t4, w4}, {s5, u5, t5, w5}};

    Text line = dim == 2 ? "plot" : dim == 3 ? "splot" : "";
    for (series const& s : list) {
        bool const first = &s == list;
        if (!first && s.source.len == 0) break;
        if (!first) line += ",";
        if (s.source == "~")
            line += " ''";
        else if (s.source.exist(".txt") || s.source.exist(".dat"))
            line += " '" + s.source + "'";
        else
            line += " " + s.source;
        if (s.use.len > 0) line += " using " + s.use;
        if (s.heading == "notitle")
            line += " notitle";
        else if (s.heading.len > 0)
            line += " title '" + s.heading + "'";
        if (s.with.len > 0) line += " with " + s.with;
    }
    write(line + "\n");
}

} // namespace varnow
