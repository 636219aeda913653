#include "tests/sparse/show.h"

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_products.h>

#include <cmath>
#include <limits>

namespace varnow::test {
namespace {

double const nan = std::nan("");

// The same entries, to the last bit, as a whole matrix has above the threshold; NaN is NaN.
void expect_same(sparse const& s, matrix const& m)
{
    auto const comparable = [](double x) { return std::isnan(x) ? 1e300 : x; };
    EXPECT_EQ(compare(forall(s, comparable), forall(sparse(m), comparable)), 1);
    EXPECT_EQ(s.indexed, 0);
}

TEST(SparseAlgebra, CombinesAnyPatternsAsWholeMatricesDo)
{
    for (int every : {1, 2, 5, 40}) {
        SCOPED_TRACE(every);
        sparse a = scattered(9, 13, every, 1), b = scattered(9, 13, 3, 2);
        a(2, 2) = b(2, 2) = nan;
        a(3, 3) = b(3, 3) = a(5, 5) = 1e-16;
        a(4, 4) = 0.1 + 0.2, b(4, 4) = 0.3; // equal but for one bit
        a.mkindex();
        matrix const x = a, y = b;
        expect_same(a + b, x + y);
        expect_same(a - b, x - y);
        expect_same(a * b, x * y);
    }
    EXPECT_EQ(show(sparse(2, 2) + speye(2, 2)), "2x2 (1,1)1 (2,2)1");
    // 49 times 1/49 is not 1.
    EXPECT_EQ(sum(sparse(matrix("49")) / sparse(matrix("49"))), 49 * (1.0 / 49));
    EXPECT_EQ(show(listed(2, 2, {{1, 1, 3}, {2, 2, 1e-16}}) / spones(2, 2)), "2x2 (1,1)3");
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
        SCOPED_TRACE(c.cols);
        sparse a = scattered(c.rows, c.inner, c.every_a, 3);
        sparse b = scattered(c.inner, c.cols, c.every_b, 4);
        // Two terms that cancel to less than the threshold.
        a(c.rows, 1) = a(c.rows, 2) = 1;
        b(1, c.cols) = 1, b(2, c.cols) = -1;
        matrix const product = mul(matrix(a), matrix(b));
        expect_same(mul(a, b), product);
        b.mkindex();
        expect_same(mul(a, b), product);
    }
    EXPECT_EQ(show(mul(listed(2, 2, {{1, 1, nan}}), speye(2, 2))), "2x2 (1,1)NaN");
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
        {forall(a, [](double x) { return x + 1; }), 7, -2},
        {forall(a, std::hypot, 8.0), 10, std::hypot(3.0, 8)},
        {forall(a, std::ldexp, 3), 48, -24},
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
    for (sparse const& t : {s, a})
        EXPECT_EQ(show(row(t, 1)) + show(row(t, 2)) + show(row(t, 3)),
                  "1x2 (1,1)1 (1,2).1x21x2 (1,1)3");
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
    refusal const cases[] = {
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
    expect_refusals("SPARSE", cases);
}

} // namespace
} // namespace varnow::test
