#include "tests/sparse/show.h"

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace varnow::test {
namespace {

double const nan = std::nan("");

using grid = std::vector<std::vector<double>>;

// What is stored, from row and column 1.
grid expanded(sparse const& s)
{
    grid g(static_cast<std::size_t>(s.rows) + 1,
           std::vector<double>(static_cast<std::size_t>(s.cols) + 1));
    for (int k = 0; k < s.nnz; ++k)
        g[static_cast<std::size_t>(s.rowidx[k])][static_cast<std::size_t>(s.colidx[k])] =
            s.values[k];
    return g;
}

// All entries above the threshold, with every bit of their values; a NaN shows as such.
std::string kept(grid const& g)
{
    std::string r;
    char text[64];
    for (std::size_t i = 1; i < g.size(); ++i)
        for (std::size_t j = 1; j < g[i].size(); ++j)
            if (!(std::fabs(g[i][j]) <= 1e-15)) {
                std::snprintf(text, sizeof text, " (%d,%d)%a", static_cast<int>(i),
                              static_cast<int>(j), std::isnan(g[i][j]) ? nan : g[i][j]);
                r += text;
            }
    return r;
}
std::string kept(sparse const& s)
{
    EXPECT_EQ(s.indexed, 0);
    sparse packed = s;
    packed.pack();
    EXPECT_EQ(packed.nnz, s.nnz) << "entries below the threshold";
    return kept(expanded(s));
}

TEST(SparseAlgebra, CombinesAnyPatternsAsWholeMatricesDo)
{
    struct
    {
        char const* sign;
        sparse (*apply)(sparse const&, sparse const&);
        double (*cell)(double, double);
    } const operators[] = {
        {"+", operator+, [](double x, double y) { return x + y; }},
        {"-", operator-, [](double x, double y) { return x - y; }},
        {"*", operator*, [](double x, double y) { return x * y; }},
    };
    for (int every : {1, 2, 5, 40})
        for (auto const& o : operators) {
            SCOPED_TRACE(o.sign);
            sparse a = scattered(9, 13, every, 1), b = scattered(9, 13, 3, 2);
            a(2, 2) = b(2, 3) = nan;
            a(3, 3) = b(3, 3) = 1e-16;
            a(4, 4) = 0.1 + 0.2, b(4, 4) = 0.3; // equal but for one bit
            a.mkindex();
            grid const x = expanded(a), y = expanded(b);
            grid r = x;
            for (std::size_t i = 1; i < r.size(); ++i)
                for (std::size_t j = 1; j < r[i].size(); ++j)
                    // A product needs both.
                    r[i][j] =
                        *o.sign == '*' && !(a.iselem(int(i), int(j)) && b.iselem(int(i), int(j)))
                            ? 0.0
                            : o.cell(x[i][j], y[i][j]);
            EXPECT_EQ(kept(o.apply(a, b)), kept(r));
        }
    EXPECT_EQ(show(sparse(2, 2) + speye(2, 2)), "2x2 (1,1)1 (2,2)1");
    EXPECT_EQ(show(spempty(2, 2) - speye(2, 2)), "2x2 (1,1)-1 (2,2)-1");
    // 49 times 1/49 is not 1.
    EXPECT_EQ(sum(sparse(matrix("49")) / sparse(matrix("49"))), 49 * (1.0 / 49));
    EXPECT_EQ(show(listed(2, 2, {{1, 1, 3}, {2, 2, 1e-16}}) /
                   listed(2, 2, {{1, 1, 2}, {1, 2, 1}, {2, 2, 1}})),
              "2x2 (1,1)1.5");
}

TEST(SparseAlgebra, MultipliesWithSumsInListOrder)
{
    struct
    {
        int rows, inner, cols, every_a, every_b;
    } const cases[] = {{1, 5, 3, 1, 1},    {7, 9, 200, 2, 30}, {7, 9, 200, 1, 1},
                       {30, 70, 64, 9, 9}, {5, 300, 1, 2, 2},  {40, 40, 65, 50, 50},
                       {6, 8, 130, 1, 3}};
    for (auto const& c : cases) {
        sparse a = scattered(c.rows, c.inner, c.every_a, 3),
               b = scattered(c.inner, c.cols, c.every_b, 4);
        a(1, 1) = nan;
        // Two terms that cancel to less than the threshold.
        a(c.rows, 1) = a(c.rows, 2) = 1;
        b(1, c.cols) = 1, b(2, c.cols) = -1;
        grid const x = expanded(a), y = expanded(b);
        grid r(x.size(), std::vector<double>(y[0].size()));
        for (std::size_t i = 1; i < x.size(); ++i)
            for (std::size_t k = 1; k < y.size(); ++k)
                for (std::size_t j = 1; j < y[0].size(); ++j)
                    if (a.iselem(int(i), int(k)) && b.iselem(int(k), int(j)))
                        r[i][j] += x[i][k] * y[k][j];
        EXPECT_EQ(kept(mul(a, b)), kept(r));
        b.mkindex();
        EXPECT_EQ(kept(mul(a, b)), kept(r));
    }
    EXPECT_EQ(show(mul(sparse(2, 3), spones(3, 2))), "2x2");
    EXPECT_EQ(show(mul(spempty(2, 0), spempty(0, 2))), "2x2");
    // No grid of the whole size stands on the stack.
    sparse const large = speye(2000, 2000);
    EXPECT_EQ(compare(mul(large, large) + large * large, 2 * large), 1);
}

TEST(SparseAlgebra, WorksEntryByEntryOnOnePattern)
{
    sparse const a = listed(2, 2, {{1, 2, 6}, {2, 1, -3}}),
                 b = listed(2, 2, {{1, 2, 2}, {2, 1, 0}});
    auto const changed = [&a](auto change) {
        sparse s = a;
        s.mkindex();
        change(s);
        EXPECT_EQ(show_index(s), "0-1 1-2");
        return s;
    };
    struct
    {
        sparse result;
        double first, second;
    } const cases[] = {
        {spplus(a, b), 8, -3},
        {spminus(a, b), 4, -3},
        {spminus(a, b, 10), -14, -3},
        {spmul(a, b), 12, 0},
        {spdiv(b, a), 1.0 / 3, 0},
        {changed([&](sparse& s) { s.addassign(b); }), 8, -3},
        {changed([&](sparse& s) { s.addassign(10, b); }), 62, -30},
        {changed([&](sparse& s) { s.addassign(b, 10); }), 26, -3},
        {changed([&](sparse& s) { s.subassign(b); }), 4, -3},
        {changed([&](sparse& s) { s.subassign(10, b); }), 58, -30},
        {changed([&](sparse& s) { s.subassign(b, 10); }), -14, -3},
        {changed([](sparse& s) { s += 1; }), 7, -2},
        {changed([](sparse& s) { s -= 1; }), 5, -4},
        {changed([](sparse& s) { s *= 2; }), 12, -6},
        {changed([](sparse& s) { s /= 3; }), 2, -1},
        {changed([](sparse& s) { s.zeros(); }), 0, 0},
        {changed([](sparse& s) { s.ones(); }), 1, 1},
        {changed([](sparse& s) { s.fill(5); }), 5, 5},
        {changed([](sparse& s) { s.spabs(); }), 6, 3},
        {changed([](sparse& s) { s.spsqr(); }), 36, 9},
        {changed([](sparse& s) { s.forall([](double x) { return x + 1; }); }), 7, -2},
        {changed([](sparse& s) { s.forall([](double x, double p) { return x * p; }, 0.5); }), 3,
         -1.5},
        {changed([](sparse& s) { s.forall([](double x, int p) { return x / p; }, 3); }), 2, -1},
        {forall(a, [](double x) { return x + 1; }), 7, -2},
        {forall(
             a, [](double x, double p) { return x * p; }, 0.5),
         3, -1.5},
        {forall(
             a, [](double x, int p) { return x / p; }, 3),
         2, -1},
        {a / 3, 2, -1},
        {12 / a, 2, -4},
        {2.5 * a, 15, -7.5},
        {-a, -6, 3},
        {abs(a), 6, 3},
        {sqr(a), 36, 9},
    };
    for (auto const& c : cases)
        EXPECT_EQ(show(c.result), "2x2 (1,2)" + show(c.first) + " (2,1)" + show(c.second));
    sparse s = b;
    s.fill0(4);
    EXPECT_EQ(show(s), "2x2 (1,2)2 (2,1)4");
    EXPECT_EQ(show(spplus(sparse(2, 2), sparse(2, 2))), "2x2 ?");
    EXPECT_EQ(show(spempty(2, 2) / 0 * 3), "2x2");
}

TEST(SparseAlgebra, MakesAndDrawsRowAfterRow)
{
    EXPECT_EQ(show(sptest(2, 3)), "2x3 (1,1)1 (1,2)2 (2,1)4 (2,2)5");
    EXPECT_EQ(show(speye(2, 3)), "2x3 (1,1)1 (2,2)1");
    EXPECT_EQ(show(spones(1, 2)), "1x2 (1,1)1 (1,2)1");
    EXPECT_EQ(show(spempty(0, 2)), "0x2");
    // The sequence s = 48271 s mod 2147483647, taken by division here.
    long long state = 12345;
    auto const draw = [&state] {
        state = state * 48271 % 2147483647;
        return double(state) / 2147483647;
    };
    auto const all_drawn = [&](sparse const& s, double factor) {
        for (int k = 1; k <= s.nnz; ++k) EXPECT_EQ(s[k], draw() * factor);
    };
    all_drawn(sprand(2, 3), 1);
    sparse s = speye(3, 3);
    s.rfill(0.5);
    all_drawn(s, 0.5);
    s[2] = 0;
    double const first = s[1];
    s.rfill0(2);
    EXPECT_EQ(s[2], draw() * 2);
    EXPECT_EQ(s[1], first);
    all_drawn(sprand(1, 1), 1);
}

TEST(SparseAlgebra, TransposesShiftsAndTakesRows)
{
    sparse const a = listed(3, 2, {{1, 1, 1}, {1, 2, 0}, {3, 1, 3}});
    sparse s = a;
    s.mkindex();
    EXPECT_EQ(show(~s), "2x3 (1,1)1 (1,3)3 (2,1).");
    for (char const* r : {"1x2 (1,1)1 (1,2).", "1x2", "1x2 (1,1)3"}) {
        static int n = 0;
        ++n;
        EXPECT_EQ(show(row(s, n)), r);
        EXPECT_EQ(show(row(a, n)), r);
    }
    s.T();
    EXPECT_EQ(show(s) + show_index(s), "2x3 (1,1)1 (1,3)3 (2,1).-");
    sparse v = row(a, 1), undefined(2, 3);
    v.mkindex();
    v.T();
    EXPECT_EQ(show(v) + show_index(v), "2x1 (1,1)1 (2,1).-");
    EXPECT_EQ(show(~undefined), "3x2 ?");
    undefined.shiftrows(5);
    EXPECT_EQ(show(undefined), "2x3 ?");

    s = a;
    s.mkindex();
    s.shiftcols(1);
    EXPECT_EQ(show(s) + show_index(s), "3x2 (1,2)1 (3,2)3-");
    s.set(3, 2, 0);
    s.shiftrows(2);
    EXPECT_EQ(show(s), "3x2 (3,2)1");

    struct
    {
        sparse s;
        int extremes[4];
    } const cases[] = {
        {a, {1, 3, 1, 1}},
        {listed(4, 5, {{1, 1, 1e-15}, {2, 4, nan}, {3, 2, -1}, {4, 5, 0}}), {2, 3, 2, 4}},
        {spzeros(4, 5), {4, 1, 5, 1}},
        {sparse(4, 5), {4, 1, 5, 1}}};
    for (auto const& c : cases) {
        int const* e = c.extremes;
        EXPECT_TRUE(minrow(c.s) == e[0] && maxrow(c.s) == e[1] && mincol(c.s) == e[2] &&
                    maxcol(c.s) == e[3])
            << show(c.s);
    }
    EXPECT_EQ(sum(listed(2, 2, {{1, 1, 3}, {2, 1, -5}})), -2);
    EXPECT_EQ(sumsqr(listed(2, 2, {{1, 1, 3}, {2, 1, -5}})), 34);
    for (sparse const& other : {sptest(3, 2), spempty(2, 3), sptest(2, 3) * 2, ~sptest(3, 2)})
        EXPECT_EQ(compare(sptest(2, 3), other), 0);
    EXPECT_EQ(compare(sptest(2, 3), sptest(2, 3)), 1);
}

TEST(SparseAlgebraDeathTest, RefusesWhatDoesNotFit)
{
    sparse const a = spones(2, 3), turned = spones(3, 2), thin = speye(2, 3);
    sparse s = a;
    char const* const shape = "niezgodne wymiary macierzy";
    char const* const length = "niezgodna dlugosc wypelnienia";
    struct
    {
        std::function<void()> call;
        char const* routine;
        char const* message;
    } const cases[] = {
        {[&] { spplus(a, turned); }, "sparse spplus(sparse,sparse)", shape},
        {[&] { spplus(a, thin); }, "sparse spplus(sparse,sparse)", length},
        {[&] { spminus(a, turned); }, "sparse spminus(sparse,sparse)", shape},
        {[&] { spminus(a, thin, 2); }, "sparse spminus(sparse,sparse)", length},
        {[&] { spmul(a, thin); }, "sparse spmul(sparse,sparse)", length},
        {[&] { spdiv(a, turned); }, "sparse spdiv(sparse,sparse)", shape},
        {[&] { s.addassign(turned); }, "void addassign(sparse)", shape},
        {[&] { s.subassign(thin, 2); }, "void addassign(sparse)", length},
        {[&] { a + turned; }, "sparse operator +(sparse,sparse)", shape},
        {[&] { a - turned; }, "sparse operator -(sparse,sparse)", shape},
        {[&] { a* turned; }, "sparse operator *(sparse,sparse)", shape},
        {[&] { a / turned; }, "sparse operator /(sparse,sparse)", shape},
        {[&] { a / thin; }, "sparse operator /(sparse,sparse)", "dzielenie przez zero"},
        {[&] { mul(a, a); }, "sparse mul(sparse,sparse)", shape},
        {[&] { s.shiftrows(1); }, "void shiftrows(int)", "przesuniecie poza zakres"},
        {[&] { s.shiftcols(-1); }, "void shiftcols(int)", "przesuniecie poza zakres"},
        {[&] { s.shiftcols(std::numeric_limits<int>::max()); }, "void shiftcols(int)",
         "przesuniecie poza zakres"},
        {[&] { row(a, 0); }, "sparse row(sparse,int)", "numer wiersza poza zakresem"},
        {[&] { row(a, 3); }, "sparse row(sparse,int)", "numer wiersza poza zakresem"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.routine);
        EXPECT_REFUSAL(c.call(), "SPARSE", c.routine, c.message);
    }
}

} // namespace
} // namespace varnow::test
