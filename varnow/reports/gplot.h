// Writer of gnuplot scripts and of the data files that they plot.
#pragma once

#include <varnow/containers/table.h>

#include <cstdio>

namespace varnow {

namespace detail {
/// The type of the second and later series: that of the first, which must be a container, not
/// deduced anew.
template <class D, class = void> struct container
{
};
template <class D> struct container<D, std::void_t<typename D::cell_type>>
{
    using type = D;
};
template <class D> using container_t = typename container<D>::type;
} // namespace detail

/// A gnuplot script under way: every member appends to it at once, in the order of the calls. It
/// only writes files; drawing them is the caller's business. Fractional numbers stand with six
/// decimals.
/// - "%%" in a text writes one "%", and a lone "%" stands as it is
/// - on a script that is not open, or could not be opened, every member does nothing
/// - copies share the stream, and the destructor leaves it open: `close` ends the script
class VARNOW_API gplot
{
public:
    Text path;   ///< directory of the files, with its closing slash
    Text name;   ///< stem of the script and of its data files
    FILE* fp;    ///< the open script, or null
    int counter; ///< plot statements with data objects so far; numbers their files

    gplot() : fp(nullptr), counter(0) {}
    gplot(Text const& stem, Text const& directory) : gplot() { open(stem, directory); }
    /// Starts path + name + ".plt". A stream that is still open is flushed and let go, since copies
    /// may use it.
    void open(Text const& stem, Text const& directory);
    void close();

    void title(Text const& x);
    void style(Text const& x);
    void boxwidth(double v);
    void xrange(double a, double b);
    void yrange(double a, double b);
    void zrange(double a, double b);
    void xlabel(Text const& x);
    void ylabel(Text const& x);
    void zlabel(Text const& x);
    void key(Text const& x);
    void samples(int v);
    void isosamples(int v);
    void parametric(int on);
    void view(double a, double b);
    void label(int n, Text const& x, double a, double b);
    void object(Text const& x);
    void xtics(Text const& x);
    void ytics(Text const& x);
    void ztics(Text const& x);
    void bmargin(double v);
    void reset();
    void multiplot(int on, int rows, int cols);
    void set(Text const& x);
    void define(Text const& x);
    void inst(Text const& x);
    /// A statement that goes on in the same line.
    void instc(Text const& x);
    void comment(Text const& x);
    /// A comment line of n times ch.
    void sep(char ch, int n);
    void endl(int n);
    /// A comment between two such lines.
    void speccom(Text const& x, char ch, int n);
    void pause(int n, Text const& x);

    // One plot statement of up to five series. The source is a file (its name holds ".txt" or
    // ".dat"), "~" for the previous file, or an expression; an empty one ends the list. Empty
    // clauses are left out; the title "notitle" stands for none.
    // clang-format off
#define VARNOW_SERIES(D, E)                                                                                  \
    D const& s1, Text const& u1, Text const& t1, Text const& w1,                                             \
    E const& s2 = E(), Text const& u2 = Text(), Text const& t2 = Text(), Text const& w2 = Text(),            \
    E const& s3 = E(), Text const& u3 = Text(), Text const& t3 = Text(), Text const& w3 = Text(),            \
    E const& s4 = E(), Text const& u4 = Text(), Text const& t4 = Text(), Text const& w4 = Text(),            \
    E const& s5 = E(), Text const& u5 = Text(), Text const& t5 = Text(), Text const& w5 = Text()
#define VARNOW_PASS                                                                                          \
    s1, u1, t1, w1, s2, u2, t2, w2, s3, u3, t3, w3, s4, u4, t4, w4, s5, u5, t5, w5
    void plot(VARNOW_SERIES(Text, Text)) { plot_dim(2, VARNOW_PASS); }
    void splot(VARNOW_SERIES(Text, Text)) { plot_dim(3, VARNOW_PASS); }
    /// "plot" for dim 2, "splot" for 3, nothing in its place for any other.
    void plot_dim(int dim, VARNOW_SERIES(Text, Text));

    // The same with containers as sources (all tables or all matrices; the first empty one behind the first ends
    // the list). Each is written beside the script, tab-separated and without names, as name_title.dat or,
    // without a title, as name_counter-k.dat; a title used twice in a script is one file. The writer waits for
    // a place that cannot be written, so a title must not name one.
    template <class D> void plot(VARNOW_SERIES(D, detail::container_t<D>)) { plot_dim(2, VARNOW_PASS); }
    template <class D> void splot(VARNOW_SERIES(D, detail::container_t<D>)) { plot_dim(3, VARNOW_PASS); }
    template <class D> void plot_dim(int dim, VARNOW_SERIES(D, detail::container_t<D>))
    {
        if (!fp) return;
        ++counter;
        D const* const source[] = {&s1, &s2, &s3, &s4, &s5};
        Text const* const named[] = {&t1, &t2, &t3, &t4, &t5};
        Text file[5];
        for (int k = 0; k < 5 && (k == 0 || (source[k]->rows > 0 && source[k]->cols > 0)); ++k) {
            file[k] = data_file(*named[k], k + 1);
            source[k]->swritetxt((path + file[k]).str, 0, 0, 0, 0, '\t', '.', 1);
        }
        plot_dim(dim, file[0], u1, t1, w1, file[1], u2, t2, w2, file[2], u3, t3, w3, file[3], u4, t4, w4,
                 file[4], u5, t5, w5);
    }
#undef VARNOW_SERIES
#undef VARNOW_PASS
    // clang-format on

private:
    void write(Text const& x);
    Text data_file(Text const& series_title, int k) const;
};

} // namespace varnow
