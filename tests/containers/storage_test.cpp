#include <varnow/containers/slicing.h>
#include <varnow/containers/storage.h>

#include "tests/support/containers.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <utility>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Storage : public testing::Test
{
};
TYPED_TEST_SUITE(Storage, CellTypes);

template <class T> void expect_empty_object(data<T> const& a)
{
    EXPECT_EQ(show(a), "0x0");
    EXPECT_FALSE(a.cell || a.rnames || a.cnames);
}

// Cells undefined or empty alike made 7.
template <class T> std::string show_filled(data<T> a)
{
    a.fill(cell<T>(7));
    return show(a);
}

} // namespace

TYPED_TEST(Storage, StartsEmptyOrWithEmptyNames)
{
    using T = TypeParam;
    expect_empty_object(data<T>());
    expect_empty_object(data<T>(data<T>()));
    data<T> const row(1, 0), column(0, 1), square(2);
    for (data<T> const* a : {&row, &column, &square})
        EXPECT_TRUE(a->cell && a->rnames && a->cnames);
    EXPECT_EQ(show(row) + " " + show(column), "1x0 | .: 0x1 .");
    EXPECT_EQ(show_filled(square), "2x2 . . | .: 7 7 | .: 7 7");
    EXPECT_EQ(show(data<Text>(1, 2)), "1x2 . . | .: . .");
}

TYPED_TEST(Storage, CopiesAreDeepWhateverTheOrderOfTheRows)
{
    using T = TypeParam;
    data<T> a = grid<T>(3, 2);
    a.swap_rows(1, 3);
    a.swap_rows(2, 3);
    std::string const content = "3x2 c1 c2 | r3: 31 32 | r1: 11 12 | r2: 21 22";
    data<T> b = a, target = grid<T>(3, 2);
    target.flipud();
    target = a;
    EXPECT_EQ(show(b), content);
    EXPECT_EQ(show(target), content);
    b(1, 1) = cell<T>(99);
    b.rowname(1) = "new";
    EXPECT_EQ(show(a), content);
    data<T> moved = static_cast<data<T>&&>(a);
    expect_empty_object(a);
    EXPECT_EQ(show(moved), content);
    a = static_cast<data<T>&&>(moved);
    EXPECT_EQ(show(a), content);
}

TYPED_TEST(Storage, AssignmentTakesEveryNameAndKeepsFittingArrays)
{
    using T = TypeParam;
    data<T> const b = grid<T>(2, 3);
    data<T> same(2, 3), taller(4, 3), wider(2, 4), fresh;
    same.rowname(1) = "old";
    void const* const arrays[] = {same.cell, same.rnames, same.cnames, taller.cnames, wider.rnames};
    for (data<T>* a : {&same, &taller, &wider, &fresh}) {
        *a = b;
        EXPECT_EQ(show(*a), "2x3 c1 c2 c3 | r1: 11 12 13 | r2: 21 22 23");
        data<T> const& self = *a;
        *a = self;
        EXPECT_EQ(show(*a), show(b));
    }
    EXPECT_THAT(arrays, testing::ElementsAre(same.cell, same.rnames, same.cnames, taller.cnames,
                                             wider.rnames));
    same = data<T>(2, 3);
    EXPECT_EQ(show_filled(same), "2x3 . . . | .: 7 7 7 | .: 7 7 7");
    same = data<T>();
    EXPECT_EQ(show(same), "0x0");
}

TYPED_TEST(Storage, ResizeKeepsNamesOfACountThatStaysAndResizecTheCommonBlock)
{
    using T = TypeParam;
    auto expect = [](int rows, int cols, char const* resized, char const* resizedc) {
        data<T> a = grid<T>(2, 3), b = a;
        void const* const cells = a.cell;
        a.resize(rows, cols);
        EXPECT_EQ(a.cell == cells && show(a) == show(b), rows == 2 && cols == 3);
        EXPECT_EQ(show_filled(a), resized);
        a.free();
        expect_empty_object(a);
        a.resize(rows, cols);
        EXPECT_TRUE(a.rnames && a.cnames);
        b.resizec(rows, cols);
        EXPECT_EQ(show(b), resizedc);
    };
    expect(2, 3, "2x3 c1 c2 c3 | r1: 7 7 7 | r2: 7 7 7",
           "2x3 c1 c2 c3 | r1: 11 12 13 | r2: 21 22 23");
    expect(2, 1, "2x1 . | r1: 7 | r2: 7", "2x1 c1 | r1: 11 | r2: 21");
    expect(1, 3, "1x3 c1 c2 c3 | .: 7 7 7", "1x3 c1 c2 c3 | r1: 11 12 13");
    expect(3, 2, "3x2 . . | .: 7 7 | .: 7 7 | .: 7 7",
           "3x2 c1 c2 | r1: 11 12 | r2: 21 22 | .: . .");
    expect(1, 4, "1x4 . . . . | .: 7 7 7 7", "1x4 c1 c2 c3 . | r1: 11 12 13 .");
    expect(0, 3, "0x3 c1 c2 c3", "0x3 c1 c2 c3");
    data<Text> t = grid<Text>(2, 3);
    t.resize(2, 2);
    EXPECT_EQ(show(t), "2x2 . . | r1: . . | r2: . .") << "cells of a new size are empty";
    data<T> b;
    b.resizec(1, 2);
    b.newrows(0);
    b.newrows(1);
    b.colname(1) = "first";
    b.newcol(b.colname(1));
    EXPECT_EQ(show(b), "2x3 first . first | .: . . . | .: . . .");
}

TYPED_TEST(Storage, BadSizesFailInTheAllocationAndLeaveTheObjectWhole)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 1);
    for (auto const& [r, c] : {std::pair(-1, 2), {2, -1}, {INT_MAX, INT_MAX}}) {
        EXPECT_THROW(data<T>(r, c), std::bad_array_new_length);
        EXPECT_THROW(a.resize(r, c), std::bad_array_new_length);
        EXPECT_THROW(a.resizec(r, c), std::bad_array_new_length);
    }
    EXPECT_THROW(a.newrows(INT_MAX), std::bad_array_new_length);
    EXPECT_EQ(show(a), "2x1 c1 | r1: 11 | r2: 21");
}

// Large arrays are used again; nothing of their former life may show.
TYPED_TEST(Storage, AReleasedLargeObjectLeavesNoTrace)
{
    using T = TypeParam;
    for (int turn = 0; turn < 3; ++turn) {
        data<T> a(1000, 20);
        for (int i = 0; i < a.rows; ++i) ASSERT_EQ(a.rnames[i].len, 0);
        std::set<T*> starts(a.cell, a.cell + a.rows);
        ASSERT_EQ(starts.size(), 1000u);
        for (int i = 0; i < a.rows && std::is_same<T, Text>::value; ++i)
            for (int j = 0; j < a.cols; ++j) ASSERT_EQ(a.cell[i][j], __0<T>());
        a.fill(cell<T>(5));
        for (int i = 0; i < a.rows; ++i) a.rnames[i] = "a name long enough for the allocator";
        a.flipud();
        a.leave_rows_to(turn == 1 ? 0 : 400);
        if (turn != 1) a.swap_rows(1, 400);
    }
}

TEST(CellTypes, HaveTheirZerosMissingValuesAndConversions)
{
    double const missing = __NAN<double>();
    std::uint64_t bits;
    std::memcpy(&bits, &missing, sizeof bits);
    EXPECT_EQ(bits, 0x7FF8000000000000u); // the single 0x7FC00000 widened
    EXPECT_EQ(commod<double>(','), '.');
    EXPECT_EQ(commod<Text>(','), ',');
    EXPECT_EQ(StoT<double>("2.5x"), 2.5);
    EXPECT_EQ(StoT<Text>("2.5x"), "2.5x");
    EXPECT_EQ((TtoU<Text, double>("1,5")), 1.5);
    EXPECT_TRUE(std::isnan(TtoU<Text, double>("")));
    EXPECT_EQ((TtoU<double, Text>(2.5)), "2.500000");
    EXPECT_EQ((TtoU<double, Text>(NAN)), "");
    EXPECT_EQ((TtoU<double, int>(-2.9)), -2);
    EXPECT_EQ((TtoU<double, int>(NAN)), std::numeric_limits<int>::min());
}
