#include <varnow/containers/matrix_special.h>
#include <varnow/reports/gplot.h>

#include "tests/support/folder.h"

#include <functional>
#include <utility>

namespace varnow {
namespace {

TEST(Gplot, WritesEachStatementAsItIsStated)
{
    std::pair<char const*, std::function<void(gplot&)>> const statements[] = {
        {"set title 'A b'\n", [](gplot& g) { g.title("A b"); }},
        {"set title '100% of %s %n %'\n", [](gplot& g) { g.title("100%% of %s %n %"); }},
        {"set style fill solid\n", [](gplot& g) { g.style("fill solid"); }},
        {"set boxwidth 0.500000\n", [](gplot& g) { g.boxwidth(0.5); }},
        {"set xrange [0.000000:1.000000]\n", [](gplot& g) { g.xrange(0, 1); }},
        {"set yrange [-1.500000:2.000000]\n", [](gplot& g) { g.yrange(-1.5, 2); }},
        {"set zrange [0.000000:9.000000]\n", [](gplot& g) { g.zrange(0, 9); }},
        {"set xlabel 'x'\n", [](gplot& g) { g.xlabel("x"); }},
        {"set ylabel 'y'\n", [](gplot& g) { g.ylabel("y"); }},
        {"set zlabel 'z'\n", [](gplot& g) { g.zlabel("z"); }},
        {"set key left top\n", [](gplot& g) { g.key("left top"); }},
        {"set samples 200\n", [](gplot& g) { g.samples(200); }},
        {"set isosamples 40\n", [](gplot& g) { g.isosamples(40); }},
        {"set parametric\n", [](gplot& g) { g.parametric(1); }},
        {"unset parametric\n", [](gplot& g) { g.parametric(0); }},
        {"set view 60.000000,30.000000\n", [](gplot& g) { g.view(60, 30); }},
        {"set label 3 'a' at 0.600000,0.200000\n", [](gplot& g) { g.label(3, "a", 0.6, 0.2); }},
        {"set object 1 rect\n", [](gplot& g) { g.object("1 rect"); }},
        {"set xtics 1\n", [](gplot& g) { g.xtics("1"); }},
        {"set ytics 2\n", [](gplot& g) { g.ytics("2"); }},
        {"set ztics 3\n", [](gplot& g) { g.ztics("3"); }},
        {"set bmargin 4.000000\n", [](gplot& g) { g.bmargin(4); }},
        {"reset\n", [](gplot& g) { g.reset(); }},
        {"set multiplot layout 2,3\n", [](gplot& g) { g.multiplot(1, 2, 3); }},
        {"unset multiplot\n", [](gplot& g) { g.multiplot(0, 2, 3); }},
        {"set grid\n", [](gplot& g) { g.set("grid"); }},
        {"f(x) = x\n", [](gplot& g) { g.define("f(x) = x"); }},
        {"replot\n", [](gplot& g) { g.inst("replot"); }},
        {"plot x, ", [](gplot& g) { g.instc("plot x,"); }},
        {"# note\n", [](gplot& g) { g.comment("note"); }},
        {"# \n", [](gplot& g) { g.sep('-', 0); }},
        {"\n\n", [](gplot& g) { g.endl(2); }},
        {"# ==\n# part\n# ==\n", [](gplot& g) { g.speccom("part", '=', 2); }},
        {"pause -1 'key'\n\n", [](gplot& g) { g.pause(-1, "key"); }},

        {"plot '' using 1:2 notitle with lines\n",
         [](gplot& g) { g.plot("~", "1:2", "notitle", "lines"); }},
        {"splot sin(x)\n", [](gplot& g) { g.splot("sin(x)", "", "", ""); }},
        {"plot 'x.dat' using 1:2 title 'one' with lines, 'y.txt' title 'two', x*x with dots\n",
         [](gplot& g) {
             g.plot("x.dat", "1:2", "one", "lines", "y.txt", "", "two", "", "x*x", "", "", "dots");
         }},
        // An empty source ends the list, whatever stands behind it; the first is always written.
        {"plot \n", [](gplot& g) { g.plot("", "", "", "", "", "", "", "", "a", "", "", ""); }},
        {" x\n", [](gplot& g) { g.plot_dim(4, "x", "", "", ""); }},
    };
    folder const out;
    for (auto const& [written, call] : statements) {
        gplot g("script", out.path(""));
        call(g);
        g.close();
        EXPECT_EQ(out.text("script.plt"), written);
    }
}

TEST(Gplot, WritesContainersAsFilesBesideTheScript)
{
    folder const out;
    gplot g("a", out.path(""));
    matrix const m("1 2,5; 3 4");
    g.plot(m, "1:2", "", "lines");
    g.plot(m, "1:2", "curve", "lines", m, "1", "", "dots", matrix(), "", "late", "", m, "", "", "");
    g.splot(c("u", "v"), "", "", "");
    g.close();
    EXPECT_EQ(
        out.text("a.plt"),
        "plot 'a_1-1.dat' using 1:2 with lines\n"
        "plot 'a_curve.dat' using 1:2 title 'curve' with lines, 'a_2-2.dat' using 1 with dots\n"
        "splot 'a_3-1.dat'\n");
    EXPECT_EQ(out.text("a_1-1.dat"), "1.000000\t2.500000\n3.000000\t4.000000\n");
    EXPECT_EQ(out.text("a_curve.dat"), out.text("a_1-1.dat"));
    EXPECT_EQ(out.text("a_3-1.dat"), "u\tv\n");
    EXPECT_EQ(g.counter, 3);
}

TEST(Gplot, DoesNothingOnAScriptThatIsNotOpen)
{
    gplot closed;
    closed.title("x");
    closed.plot(varnow::ones(1, 1), "", "never", "");
    closed.close();
    EXPECT_EQ(closed.counter, 0);
    EXPECT_FALSE(std::filesystem::exists("_never.dat"));
    gplot lost("x", "no-such-directory/");
    lost.title("x");
    EXPECT_EQ(lost.fp, nullptr);
}

TEST(Gplot, CopiesShareTheStreamAndReopeningStartsCountingAnew)
{
    folder const out;
    gplot g("shared", out.path(""));
    gplot h = g;
    g.title("1");
    h.title("2");
    g.close();
    EXPECT_EQ(out.text("shared.plt"), "set title '1'\nset title '2'\n");
    g.counter = 7;
    g.open("again", out.path(""));
    EXPECT_EQ(g.counter, 0);
    EXPECT_EQ(g.name, "again");
    g.close();
}

} // namespace
} // namespace varnow
