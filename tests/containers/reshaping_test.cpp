#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <climits>
#include <utility>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Reshaping : public testing::Test
{
};
template <class T> using ReshapingDeathTest = Reshaping<T>;
TYPED_TEST_SUITE(Reshaping, CellTypes);
TYPED_TEST_SUITE(ReshapingDeathTest, CellTypes);

// The object after a member has changed a copy of it.
template <class T, class... P, class... A>
std::string after(data<T> a, void (data<T>::*change)(P...), A... arguments)
{
    (a.*change)(arguments...);
    return show(a);
}

} // namespace

TYPED_TEST(Reshaping, TurnsAndMirrorsWithTheNames)
{
    using T = TypeParam;
    using D = data<T>;
    D const a = grid<T>(2, 3);
    EXPECT_EQ(show(~a), "3x2 r1 r2 | c1: 11 21 | c2: 12 22 | c3: 13 23");
    EXPECT_EQ(show(rot90(a)), "3x2 r1 r2 | c3: 13 23 | c2: 12 22 | c1: 11 21");
    EXPECT_EQ(show(flipud(a)), "2x3 c1 c2 c3 | r2: 21 22 23 | r1: 11 12 13");
    EXPECT_EQ(show(fliplr(a)), "2x3 c3 c2 c1 | r1: 13 12 11 | r2: 23 22 21");
    for (D const& x : {D(), D(0, 1), D(1, 0), grid<T>(1, 1), grid<T>(1, 3), grid<T>(3, 1), a}) {
        EXPECT_EQ(show(~~x), show(x));
        EXPECT_EQ(show(rot90(x)), show(flipud(~x)));
        EXPECT_EQ(after(x, &D::flipud), show(flipud(x)));
        EXPECT_EQ(after(x, &D::fliplr), show(fliplr(x)));
    }
    // sizes beside the squares in which cells are walked; in place as into a new object
    for (int n : {0, 1, 2, 15, 16, 17, 33}) {
        D const wide = grid<T>(n, n + 20), x = grid<T>(n, n), turned = ~wide;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < wide.cols; ++j) ASSERT_EQ(turned.cell[j][i], wide.cell[i][j]);
        EXPECT_EQ(after(x, &D::tr), show(~x));
        EXPECT_EQ(after(x, &D::rot90), show(rot90(x)));
        EXPECT_EQ(show(rot90(x)), show(flipud(~x)));
    }
}

TYPED_TEST(Reshaping, ShiftsAndCutsTriangles)
{
    using T = TypeParam;
    using D = data<T>;
    D const tall = grid<T>(3, 2), wide = grid<T>(2, 4), square = grid<T>(3, 3);
    EXPECT_EQ(show(up(tall)), "3x2 c1 c2 | r1: 11 22 | r2: 21 32 | r3: 31 .");
    EXPECT_EQ(show(down(tall)), "3x2 c1 c2 | r1: 11 . | r2: 21 12 | r3: 31 22");
    EXPECT_EQ(show(up(wide)), "2x4 c1 c2 c3 c4 | r1: 11 22 . . | r2: 21 . . .");
    EXPECT_EQ(show(down(wide)), "2x4 c1 c2 c3 c4 | r1: 11 . . . | r2: 21 12 . .");
    EXPECT_EQ(show(tril(square)), "3x3 c1 c2 c3 | r1: 11 . . | r2: 21 22 . | r3: 31 32 33");
    EXPECT_EQ(show(triu(square)), "3x3 c1 c2 c3 | r1: 11 12 13 | r2: . 22 23 | r3: . . 33");
    for (D const& x : {D(), D(0, 2), D(2, 0)})
        EXPECT_EQ(show(up(x)) + show(down(x)), show(x) + show(x));
    EXPECT_EQ(show(tril(D())), "0x0");
}

TYPED_TEST(Reshaping, ReadsAndWritesColumnByColumn)
{
    using T = TypeParam;
    using D = data<T>;
    D const a = grid<T>(3, 2);
    EXPECT_EQ(after(a, &D::reshape, 2, 3), "2x3 . . . | .: 11 31 22 | .: 21 12 32");
    EXPECT_EQ(after(a, &D::reshape, 3, 2), "3x2 . . | .: 11 12 | .: 21 22 | .: 31 32");
    EXPECT_EQ(after(D(), &D::reshape, 0, 2), "0x2 . .");
    D large(40, 21);
    large.flipud();
    for (int k = 0; k < 840; ++k) large.cell[k % 40][k / 40] = cell<T>(k + 1);
    large.reshape(35, 24);
    for (int k = 0; k < 840; ++k) ASSERT_EQ(large.cell[k % 35][k / 35], cell<T>(k + 1));
}

TYPED_TEST(Reshaping, KeepsRangesOfLines)
{
    using T = TypeParam;
    using D = data<T>;
    D const a = grid<T>(3, 3);
    EXPECT_EQ(after(a, &D::leave_cols, 2, 3), "3x2 c2 c3 | r1: 12 13 | r2: 22 23 | r3: 32 33");
    EXPECT_EQ(after(a, &D::leave_rows, 2, 3), "2x3 c1 c2 c3 | r2: 21 22 23 | r3: 31 32 33");
    EXPECT_EQ(after(a, &D::leave_cols, 1, 3) + after(a, &D::leave_rows, 1, 3), show(a) + show(a));
    EXPECT_EQ(after(a, &D::leave_cols, 2, 1), "3x0 | r1: | r2: | r3:");
    EXPECT_EQ(after(a, &D::leave_rows, 4, 3), "0x3 c1 c2 c3");
    D b = a;
    void const *const cells = b.cell, *const columns = b.cnames;
    b.flipud();
    b.leave_rows_to(2);
    EXPECT_EQ(show(b), "2x3 c1 c2 c3 | r3: 31 32 33 | r2: 21 22 23");
    EXPECT_TRUE(b.cell == cells && b.cnames == columns);
    b.newrows(1);
    EXPECT_EQ(show(b), "3x3 c1 c2 c3 | r3: 31 32 33 | r2: 21 22 23 | .: . . .");
    b.leave_rows_to(0);
    EXPECT_EQ(show(b), "0x3 c1 c2 c3");
    b = a;
    EXPECT_EQ(show(b), show(a));
}

TYPED_TEST(Reshaping, ExchangesAndReordersLinesWithTheirNames)
{
    using T = TypeParam;
    using D = data<T>;
    D a = grid<T>(2, 3), tall = grid<T>(3, 1);
    T const *const second = a.cell[1], *const last = tall.cell[2];
    a.swap_rows(1, 2);
    tall.reorder_rows(c(3, 1, 2), 1, 3);
    EXPECT_TRUE(a.cell[0] == second && tall.cell[0] == last) << "rows move by their pointers";
    a.swap_cols(3, 1);
    a.swap_cols(2, 2);
    EXPECT_EQ(show(a), "2x3 c3 c2 c1 | r2: 23 22 21 | r1: 13 12 11");

    auto expect = [](Vector const& order, int from, int to, char const* reordered) {
        D x = grid<T>(1, 4), y = ~x;
        x.reorder_cols(order, from, to);
        EXPECT_EQ(show(x), reordered);
        y.reorder_rows(order, from, to);
        EXPECT_EQ(show(~y), reordered);
        y(1, 1) = cell<T>(1);
        EXPECT_EQ(show((~y).col(c(-1))), show(x.col(c(-1)))) << "no two rows share their cells";
    };
    expect(c(3, 1, 2), 2, 4, "1x4 c1 c4 c2 c3 | r1: 11 14 12 13");
    expect(c(4, 3, 2, 1), 1, 4, "1x4 c4 c3 c2 c1 | r1: 14 13 12 11");
    expect(c(1), 3, 3, "1x4 c1 c2 c3 c4 | r1: 11 12 13 14");
    expect(Vector(), 5, 4, "1x4 c1 c2 c3 c4 | r1: 11 12 13 14");
    expect(c(2, 2, 2), 1, 3, "1x4 c2 c2 c2 c4 | r1: 12 12 12 14");
    expect(c(3, 1, 3), 2, 4, "1x4 c1 c4 c2 c4 | r1: 11 14 12 14");
}

TYPED_TEST(ReshapingDeathTest, RefusesWrongShapesAndPositions)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3);
    char const *const square = "obiekt powinien byc kwadratowy",
                      *const range = "indeks poza zakresem",
                      *const length = "wektor kolejnosci ma nieprawidlowa dlugosc";
    expect_refusals_of<T>({
        {[&] { a.tr(); }, "tr()", square},
        {[&] { a.rot90(); }, "rot90()", square},
        {[&] { a.tril(); }, "tril()", square},
        {[&] { a.triu(); }, "triu()", square},
        {[&] { tril(a); }, "_data_ tril(_data_)", square},
        {[&] { triu(a); }, "_data_ triu(_data_)", square},
        {[&] { a.leave_rows_to(3); }, "leave_rows_to(int)", range},
        {[&] { a.leave_rows_to(-1); }, "leave_rows_to(int)", range},
        {[&] { a.swap_cols(1, 4); }, "swap_cols(int,int)", "numer kolumny poza zakresem"},
        {[&] { a.swap_rows(0, 1); }, "swap_rows(int,int)", "numer wiersza poza zakresem"},
    });
    using numbers = std::pair<int, int>;
    for (auto const& [r, k] : {numbers{2, 2}, {-2, -3}, {1 << 16, 1 << 16}, {6, 0}})
        EXPECT_REFUSAL_OF(T, a.reshape(r, k), "reshape(int,int)", "podano zle wymiary");
    for (auto const& [from, to] : {numbers{0, 2}, {1, 4}, {3, 1}, {INT_MIN, INT_MAX}}) {
        EXPECT_REFUSAL_OF(T, a.leave_cols(from, to), "leave_cols(int,int)", range);
        EXPECT_REFUSAL_OF(T, a.leave_rows(from, to), "leave_rows(int,int)", range);
    }
    auto expect = [&](Vector const& order, int from, int to, char const* message) {
        EXPECT_REFUSAL_OF(T, a.reorder_cols(order, from, to), "reorder_cols(Vector,int,int)",
                          message);
        EXPECT_REFUSAL_OF(T, a.reorder_rows(order, from, to), "reorder_rows(Vector,int,int)",
                          message);
    };
    expect(c(1), 1, 2, length);
    expect(c(1), INT_MIN, INT_MAX, length);
    expect(c(1, 2), 0, 1, range);
    expect(c(1, 2), 3, 4, range);
    for (int wrong : {3, 0, INT_MIN}) expect(c(1, wrong), 1, 2, range);
}

TEST(Display, AlignsColumnsUnderTheirNames)
{
    matrix m("0,25 -12 0; 10 3 6,02e23");
    m.cell[0][2] = NAN;
    m.colname(2) = "balance";
    m.rowname(2) = "total";
    table const t = c("a", "") & c("long", "b");
    testing::internal::CaptureStdout();
    m.display("%d of all");
    t.display();
    matrix(0, 2).display();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n%d of all\n"
                                                      "              balance\n"
                                                      "        0.25      -12       NaN\n"
                                                      "total  10.00        3  6.02e+23\n\n"
                                                      "\na\nlong  b\n\n"
                                                      "\n(0 x 2)\n\n");
}
