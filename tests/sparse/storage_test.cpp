#include "tests/sparse/show.h"

#include <varnow/containers/matrix_special.h>

#include <cmath>
#include <map>
#include <utility>

namespace varnow::test {
namespace {

double const nan = std::nan("");

TEST(Sparse, InsertsInAnyOrderAndKeepsTheIndex)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 draw(seed);
        int const rows = 1 + static_cast<int>(draw() % 7), cols = 1 + static_cast<int>(draw() % 7);
        sparse plain = spempty(rows, cols), indexed = plain;
        indexed.mkindex();
        std::map<std::pair<int, int>, double> stored;
        for (int step = 0; step < 40; ++step) {
            int const i = 1 + static_cast<int>(draw() % static_cast<unsigned>(rows));
            int const j = 1 + static_cast<int>(draw() % static_cast<unsigned>(cols));
            EXPECT_EQ(plain.iselem(i, j), static_cast<int>(stored.count({i, j})));
            double& x = stored[{i, j}];
            EXPECT_EQ(plain(i, j), x);
            EXPECT_EQ(indexed(i, j), x);
            plain(i, j) = indexed(i, j) = x = step;
            std::string expected = std::to_string(rows) + "x" + std::to_string(cols);
            for (auto const& e : stored)
                expected += " (" + std::to_string(e.first.first) + "," +
                            std::to_string(e.first.second) + ")" + show(e.second);
            ASSERT_EQ(show(plain), expected);
            ASSERT_EQ(show(indexed), expected);
            sparse fresh = plain;
            fresh.mkindex();
            ASSERT_EQ(show_index(indexed), show_index(fresh));
        }
        for (int i = 1; i <= rows; ++i)
            for (int j = 1; j <= cols; ++j)
                for (sparse const* s : {&plain, &indexed}) {
                    auto const e = stored.find({i, j});
                    EXPECT_EQ(s->get(i, j), e == stored.end() ? 0.0 : e->second);
                    EXPECT_EQ(s->iszero(i, j), e == stored.end());
                }
    }
}

TEST(Sparse, IndexesRowsWithAndWithoutEntries)
{
    for (auto const& c :
         {shown{spempty(3, 2), ". . .", ""}, shown{sparse(2, 2), ". .", ""},
          shown{sparse(), "", ""}, shown{speye(2, 3), "0-1 1-2", ""},
          shown{listed(5, 3, {{2, 1, 1}, {2, 3, 1}, {4, 2, 1}}), ". 0-2 . 2-3 .", ""}}) {
        sparse s = c.s, t = c.s;
        s.mkindex();
        s.mkindex();
        EXPECT_EQ(show_index(s), c.first);
        t.cpyindex(s);
        EXPECT_EQ(show_index(t), c.first);
        s.delindex();
        EXPECT_EQ(show_index(s), "-");
    }
    // An index that is there stays; of another list none is taken over.
    sparse s = speye(2, 2), t = spones(2, 2);
    s.mkindex();
    t.cpyindex(s);
    EXPECT_EQ(show_index(t), "0-2 2-4");
    s.cpyindex(t);
    EXPECT_EQ(show_index(s), "0-1 1-2");
}

TEST(Sparse, CopiesDeeplyAndMoves)
{
    sparse a = speye(2, 3);
    a.mkindex();
    sparse const undefined(2, 3);
    for (sparse const& other : {sparse(), spzeros(2, 3), spzeros(3, 2), undefined}) {
        sparse b = other;
        b.mkindex();
        b = a;
        b(1, 2) = 7;
        sparse const& itself = b;
        b = itself;
        EXPECT_EQ(show(b), "2x3 (1,1)1 (1,2)7 (2,2)1");
        EXPECT_EQ(show_index(b), "0-2 2-3");
        EXPECT_EQ(show(a), "2x3 (1,1)1 (2,2)1");
        b = other;
        EXPECT_EQ(show(b), show(other));
        EXPECT_EQ(show_index(b), "-");
    }
    sparse taken = std::move(a);
    a = std::move(taken);
    EXPECT_EQ(show_index(a), "0-1 1-2");
    EXPECT_EQ(show(sparse()), "0x0");
    a.free();
    EXPECT_EQ(show(a), "0x0 ?");
    EXPECT_EQ(a.values, nullptr);
}

TEST(Sparse, ResizesWithAndWithoutTheContent)
{
    sparse s = sptest(2, 3);
    s.mkindex();
    double const* const values = s.values;
    s.resize(2, 3);
    EXPECT_EQ(show_index(s), "0-2 2-4");
    s.resize(3, 2);
    EXPECT_EQ(s.values, values);
    EXPECT_EQ(show(s) + show_index(s), "3x2 ?-");
    s.resize(1, 4);
    EXPECT_EQ(show(s), "1x4 ?");

    for (auto const& c :
         {shown{sparse(2, 2), "2x2 (1,1)1 (1,2)2 (2,1)4 (2,2)5", "0-2 2-4"},
          shown{sparse(2, 3), "2x3 (1,1)1 (1,2)2 (2,1)4 (2,2)5", "0-2 2-4"},
          shown{sparse(3, 2), "3x2 (1,1)1 (1,2)2 (2,1)4 (2,2)5", "0-2 2-4 ."},
          shown{sparse(1, 9), "1x9 (1,1)1 (1,2)2", "0-2"}, shown{sparse(0, 3), "0x3", ""}}) {
        sparse t = sptest(2, 3);
        t.mkindex();
        double const* const before = t.values;
        t.resizec(c.s.rows, c.s.cols);
        EXPECT_EQ(t.values == before, c.s.rows * c.s.cols == 6);
        EXPECT_EQ(show(t), c.first);
        EXPECT_EQ(show_index(t), c.second);
    }
    sparse undefined(2, 2);
    undefined.resizec(3, 3);
    EXPECT_EQ(show(undefined) + show_index(undefined), "3x3 ?-");
}

TEST(Sparse, PacksUnpacksAndTakesOverAPattern)
{
    sparse s = listed(2, 3, {{1, 1, 1e-15}, {1, 2, 2e-15}, {1, 3, -1e-15}, {2, 1, nan}, {2, 3, 0}});
    s.mkindex();
    sparse full = s, undefined(2, 3);
    s.pack();
    EXPECT_EQ(show(s) + show_index(s), "2x3 (1,2)2e-15 (2,1)NaN-");
    undefined.pack();
    EXPECT_EQ(show(undefined), "2x3 ?");
    undefined.unpack();
    EXPECT_EQ(show(undefined), "2x3 (1,1). (1,2). (1,3). (2,1). (2,2). (2,3).");
    full.unpack();
    EXPECT_EQ(show(full) + show_index(full),
              "2x3 (1,1)1e-15 (1,2)2e-15 (1,3)-1e-15 (2,1)NaN (2,2). (2,3).-");

    sparse const ref = listed(2, 3, {{1, 2, 5}, {2, 2, 5}});
    for (bool indexed : {false, true}) {
        sparse t = sptest(2, 3);
        if (indexed) t.mkindex();
        t.synch(ref);
        EXPECT_EQ(show(t) + show_index(t), "2x3 (1,2)2 (2,2)5-");
    }
    s.synch(s);
    EXPECT_EQ(show(s), "2x3 (1,2)2e-15 (2,1)NaN");
    s.synch(ref);
    EXPECT_EQ(show(s), "2x3 (1,2)2e-15 (2,2).");
    sparse never(2, 3);
    never.synch(ref);
    EXPECT_EQ(show(never), "2x3 (1,2). (2,2).");
    s.synch(sparse(2, 3));
    EXPECT_EQ(show(s), "2x3");
}

TEST(Sparse, ConvertsToAndFromWholeMatricesAndNumbers)
{
    sparse s = matrix("0 2; 0.000000000000001 0; 3 0");
    s(1, 1) = nan;
    EXPECT_EQ(show(s), "3x2 (1,1)NaN (1,2)2 (3,1)3");
    matrix const m = s;
    EXPECT_TRUE(m.rows == 3 && m.cols == 2 && std::isnan(m(1, 1)));
    EXPECT_EQ(m(3, 1) + m(2, 1) + m(3, 2), 3.0);
    EXPECT_EQ(show(sparse(m)), show(s));
    EXPECT_EQ(static_cast<double>(spones(1, 1)), 1.0);
    EXPECT_EQ(static_cast<double>(sparse(1, 1)) + static_cast<double>(spempty(1, 1)), 0.0);
}

TEST(SparseDeathTest, RefusesWhatLiesOutside)
{
    sparse s = spzeros(2, 3), shape = spempty(3, 2), index = spempty(2, 3);
    s.mkindex();
    char const* const range = "indeks poza zakresem";
    char const* const reference = "niezgodne wymiary macierzy referencyjnej";
    char const* const size = "niewlasciwy rozmiar macierzy";
    refusal const cases[] = {
        {[&] { s.iselem(0, 1); }, "int iselem(int,int)", range, "2 x 3 : ( 0 , 1 )"},
        {[&] { s.iszero(1, 4); }, "int iszero(int,int)", range, "2 x 3 : ( 1 , 4 )"},
        {[&] { s.get(3, 3); }, "double get(int,int)", range, "2 x 3 : ( 3 , 3 )"},
        {[&] { s.set(2, 0, 1); }, "void set(int,int,double)", range, "2 x 3 : ( 2 , 0 )"},
        {[&] { s(-1, 1) = 1; }, "double & operator ()(int,int)", range, "2 x 3 : ( -1 , 1 )"},
        {[&] { index.set(2, 1, 1); }, "void set(int,int,double)", "odwolanie od pustego elementu",
         " ( 2 , 1 )"},
        {[&] { s[0] = 1; }, "double & operator [](int)", range, "6 : [ 0 ]"},
        {[&] { std::as_const(s)[7]; }, "double & operator [](int)", range, "6 : [ 7 ]"},
        {[&] { shape.cpyindex(s); }, "void cpyindex(sparse)", reference},
        {[&] { shape.synch(s); }, "void synch(sparse)", reference},
        {[&] { matrix(spempty(0, 2)); }, "operator matrix()",
         "konwersja niemozliwa, zerowy rozmiar obiektu"},
        {[&] { static_cast<void>(double(s)); }, "operator double()",
         "konwersja niemozliwa, niewlasciwy rozmiar macierzy"},
        {[&] { sparse(2, -1); }, "sparse(int,int)", size, "2 x -1"},
        {[&] { s.resize(65536, 65536); }, "void resize(int,int)", size, "65536 x 65536"},
        {[&] { s.resizec(-2, -3); }, "void resizec(int,int)", size, "-2 x -3"},
    };
    expect_refusals("SPARSE", cases);
}

} // namespace
} // namespace varnow::test

// Behind a using directive, where the functions of matrix and the C library stand as well.
using namespace varnow;

TEST(Sparse, StandsBesideMatrixWithoutAmbiguity)
{
    sparse s = sptest(2, 2), r = s * 2;
    EXPECT_EQ(compare(r, 2.0 * s), 1);
    EXPECT_EQ(compare(s * 2, 2 * s), 1);
    EXPECT_EQ(compare(-s, s * -1), 1);
    EXPECT_EQ(compare(r / 2, abs(-s)), 1);
    EXPECT_EQ(compare(~s + s, s + ~s), 1);
    EXPECT_EQ(sum(1 / row(s, 1)), 1.5);
    EXPECT_EQ(sum(forall(s, pow, 2)), sumsqr(s));
    EXPECT_EQ(sum(forall(s, pow, 2.0)), sum(sqr(s)));
    matrix m = s, n(s), k = matrix(s);
    m = s;
    s = m;
    EXPECT_EQ(compare(m, n) + compare(n, k), 2);
    double x = mul(row(s, 1), ~row(s, 1));
    EXPECT_EQ(x, 5.0);
    x += mul(row(s, 1), ~row(s, 1));
    EXPECT_EQ(x, 10.0);
    // Beside a matrix it is one: no threshold, no refusal of holes, the names of the matrix.
    m = matrix("1 2; 0.000000000000001 4");
    m.rowname(1) = "first";
    sparse const hole = varnow::test::listed(2, 2, {{1, 1, 3}, {2, 2, 4}});
    matrix const whole = hole;
    struct
    {
        matrix result, expected;
    } const cases[] = {
        {hole + m, whole + m},         {hole - m, whole - m}, {hole * m, whole * m},
        {hole / m, whole / m},         {m + hole, m + whole}, {m - hole, m - whole},
        {m * hole, m * whole},         {m / hole, m / whole}, {mul(hole, m), mul(whole, m)},
        {mul(m, hole), mul(m, whole)},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(compare(c.result, c.expected), 1);
        EXPECT_TRUE(c.result.rowname(1) == c.expected.rowname(1));
    }
    EXPECT_EQ(compare(m, hole) + compare(hole, m), 0);
    EXPECT_EQ(compare(whole, hole) + compare(hole, whole), 2);
}
