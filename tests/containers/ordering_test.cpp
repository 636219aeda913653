#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/ordering.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <tuple>

namespace varnow {
namespace {

using namespace test;

// The quicksort whose permutation is promised, step by step; cells with their positions.
template <class T> void plain_quicksort(std::pair<T, int>* x, int left, int right, bool falling)
{
    while (left < right) {
        std::swap(x[left], x[(left + right) / 2]);
        int last = left;
        for (int i = left + 1; i <= right; ++i)
            if (falling ? x[i].first > x[left].first : x[i].first < x[left].first)
                std::swap(x[++last], x[i]);
        std::swap(x[left], x[last]);
        plain_quicksort(x, left, last - 1, falling);
        left = last + 1;
    }
}

// Every way to sort gives what the plain quicksort gives.
template <class T> void expect_plain_order(std::vector<T> const& keys)
{
    int const n = static_cast<int>(keys.size());
    for (Direction d : {Ascending, Descending}) {
        std::vector<std::pair<T, int>> cells;
        for (T const& x : keys) cells.emplace_back(x, static_cast<int>(cells.size()) + 1);
        plain_quicksort(cells.data(), 0, n - 1, d == Descending);
        std::vector<int> permutation;
        for (auto const& x : cells) permutation.push_back(x.second);
        for (bool row : {false, true}) {
            data<T> x = vector_of(keys, row);
            ASSERT_EQ(list(order(x, d)), permutation) << "n " << n << " direction " << d;
            ASSERT_EQ(list(sort(x, d)), permutation);
            for (int i = 0; i < n; ++i)
                ASSERT_TRUE(same_bits(x(i + 1), cells[std::size_t(i)].first)) << i;
        }
    }
}

// Random choices from one of the palettes, short and long, each made over by vary(keys, turn).
template <class T, class F>
void expect_plain_order_of(std::vector<std::vector<T>> const& palettes, F vary)
{
    std::mt19937 random(1);
    for (int turn = 0; turn < 4000; ++turn) {
        std::vector<T> const& palette = palettes[random() % palettes.size()];
        std::vector<T> x(random() % (turn % 10 ? 20 : 200));
        for (T& v : x) v = palette[random() % palette.size()];
        data<T> keys = vector_of(x);
        vary(keys, turn);
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(list(keys)));
    }
}

TEST(Ordering, SmallNumbersFollowTheQuicksortAmongTiesAndNaN)
{
    std::vector<std::vector<double>> const palettes = {
        {0, 1},
        {0.0, -0.0, 1, -1},
        {NaN, 1, 2},
        {NaN, -NaN, inf, -inf, 0.0, -0.0, 5e-324, -5e-324},
        {1, 1 + 1e-15, 1 - 1e-15, 1e300, NaN},
        {3, 1, 4, 1.5, 9, 2.6, 5.3, 5.8, 9.7, 9.3, 2.3, 8.4, 6.2, -6.4, -3.3, 8.3, -2.7, -9.5},
    };
    expect_plain_order_of(palettes, [](data<double>& x, int turn) {
        if (turn % 4 == 0) sort(x, turn % 8 == 0); // what rises or falls takes a way of its own
    });
}

TEST(Ordering, LargeNumbersFollowTheQuicksort)
{
    // Beyond the size where short sorts take over. The close ones differ in their last bits only,
    // and the far one beside them hides these from a look at the leading bits.
    double (*const makers[])(int) = {
        [](int i) { return i * 0.5; },
        [](int i) { return 1e6 - i; },
        [](int i) { return std::floor(i / 3.0); },
        [](int i) { return -std::floor(i / 7.0); },
        [](int) { return 3.0; },
        [](int i) { return i % 7 == 3 ? 1.0 : 0.0; },
        [](int i) { return double(i < 1500 ? 2 * i : 6001 - 2 * i); },
        [](int i) { return double(std::min(i, 2999 - i)); },
        [](int i) { return i % 5 == 1 ? NaN : std::floor(100 * std::sin(i)); },
        [](int i) { return i % 2 ? -0.0 : 0.0; },
        [](int) { return NaN; },
        [](int i) { return 1 + i * 0x1p-52; },
        [](int i) { return i ? 1 + i * 0x1p-52 : -1e300; },
        [](int i) { return i ? 1 + i / 2 * 0x1p-52 : inf; },
        [](int i) { return 1.7e9 + i; },
        [](int i) { return i ? 1 + i % 3 * 0.25 + i / 9 * 0x1p-52 : inf; },
        // The last bits of one group are the leading bits of the next.
        [](int i) { return i ? std::ldexp(i % 4 * 0x1p30 + i / 4 % (i % 4 + 2), -1074) : 1e300; },
        [](int i) { return i < 2998 ? 1.0 + i % 3 * 0x1p-40 : NaN; },
    };
    std::mt19937 random(7);
    for (auto* const& make : makers) {
        SCOPED_TRACE(&make - makers);
        std::vector<double> x;
        for (int i = 0; i < 3000; ++i) x.push_back(make(i));
        std::vector<double> shuffled = x;
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        on_every_machine([&] {
            ASSERT_NO_FATAL_FAILURE(expect_plain_order(x));
            ASSERT_NO_FATAL_FAILURE(expect_plain_order(shuffled));
        });
    }
}

TEST(Ordering, TextsFollowTheQuicksortInSignedByteOrder)
{
    std::vector<std::vector<Text>> const palettes = {
        {"", "a", "b"},
        {"a", "a\x80", "a\x80\x80", "", "\x80", "\xff", "\x7f"},
        {"client-000001", "client-000002", "client-0000020", "client-00000", "client-000003x"},
        {"Kowalski Jan", "Kowalski", "kowalski", "Nowak", "N\xf3wak", Text("ab\0c", 4), "ab"},
        {"12345678", "1234567", "123456789", "12345678\x80", "12345678\x80\x80", "1234567\x80"},
    };
    std::mt19937 random(2);
    expect_plain_order_of(palettes, [&](data<Text>& x, int) {
        for (int i = 0; i < x.rows; i += 1 + static_cast<int>(random() % 8))
            x.cell[i][0] += Text(static_cast<int>(random() % 30));
    });
    for (char const* start : {"", "a start in common, "}) {
        std::vector<Text> large;
        for (int i = 0; i < 2000; ++i)
            large.push_back(start + Text(static_cast<int>(random() % 3000)) + "/1");
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(large));
    }
}

TEST(Ordering, AMillionRepeatedKeysAreNoTrouble)
{
    int const n = 1000000;
    double (*const makers[])(int) = {
        [](int) { return 1.0; },
        [](int) { return NaN; },
        [](int i) { return i % 100 ? 0.0 : 1.0; },
        [](int i) { return i % 3 ? NaN : double(i % 2); },
        [](int i) { return double(i / 1000); },
        [](int i) { return double(-(i / 1000)); },
    };
    for (auto* make : makers) {
        matrix x(n, 1);
        for (int i = 0; i < n; ++i) x.cell[i][0] = make(i);
        std::vector<int> p = list(sort(x));
        for (int i = 0; i < n; i += 997)
            ASSERT_TRUE(same_bits(x.cell[i][0], make(p[std::size_t(i)] - 1)));
        std::sort(p.begin(), p.end());
        EXPECT_EQ(p, list($(n)));
    }
}

TEST(Ordering, MovesNamesOnlyWhenAsked)
{
    for (bool row : {false, true}) {
        auto turned = [row](matrix const& m) { return row ? ~m : m; };
        matrix x = turned(named("3; 1; 2")), y = turned(named("5; 9; 7")), still = x;
        EXPECT_EQ(show(sort(still)), "2 3 1");
        EXPECT_EQ(show(turned(still)), "3x1 c1 | r1: 1 | r2: 2 | r3: 3");
        sort(x, y, 1, 1); // descending
        EXPECT_EQ(show(turned(x)), "3x1 c1 | r1: 3 | r3: 2 | r2: 1");
        EXPECT_EQ(show(turned(y)), "3x1 c1 | r1: 5 | r3: 7 | r2: 9");
    }
    matrix one("2; 1; 3");
    sort(one, one);
    EXPECT_EQ(show(one), "3x1 . | .: 1 | .: 2 | .: 3");
}

TEST(Ordering, VectorsWithoutCellsStayAsTheyAre)
{
    for (matrix m : {matrix(), matrix(0, 1), matrix(1, 0)}) {
        EXPECT_EQ(sort(m, Ascending, 1).n, 0);
        EXPECT_EQ(order(table(m)).n, 0);
        sort(m, m, Descending, 1);
    }
    matrix headed(0, 2);
    headed.sort(2);
    EXPECT_EQ(show(headed), "0x2 . .");
}

TEST(Ordering, AContainerIsReorderedByOneOfItsLines)
{
    matrix const m = named("3 1; 1 2; 2 3");
    matrix by_number = m, by_name = m, by_row = m;
    by_number.sort(1);
    by_name.sort("C1", Descending);
    by_row.sort("R3", Descending, 0);
    EXPECT_EQ(show(by_number), "3x2 c1 c2 | r2: 1 2 | r3: 2 3 | r1: 3 1");
    EXPECT_EQ(show(by_name), "3x2 c1 c2 | r1: 3 1 | r3: 2 3 | r2: 1 2");
    EXPECT_EQ(show(by_row), "3x2 c2 c1 | r1: 1 3 | r2: 2 1 | r3: 3 2");
    table t = matrix("9; 10");
    t.sort(1);
    EXPECT_EQ(show(t), "2x1 . | .: 10 | .: 9");
}

TEST(Ordering, NamedQuicksortsWorkOnAStretchAndCarryTheVector)
{
    for (bool row : {false, true}) {
        matrix x = vector_of<double>({0, 2, 1, 2, -1}, row);
        auto cells = [&x] { return show(as_Vector(x)); };
        Vector p{50, 60, 70, 80, 90};
        // Places 1 to 3 of 5, counted from 0; the middle one is swapped to the left first.
        row ? qsort_desc_2r(x, p, 1, 3) : qsort_desc_2c(x, p, 1, 3);
        EXPECT_EQ(cells(), "0 2 2 1 -1");
        EXPECT_EQ(show(p), "50 80 60 70 90");
        row ? qsort_asc_2r(x, p, 0, 4) : qsort_asc_2c(x, p, 0, 4);
        EXPECT_EQ(cells(), "-1 0 1 2 2");
        row ? swap_2r(x, p, 4, 0) : swap_2c(x, p, 4, 0);
        row ? qsort_asc_2r(x, p, 3, 3) : qsort_asc_2c(x, p, 9, 2); // nothing to do
        EXPECT_EQ(cells(), "2 0 1 2 -1");
        EXPECT_EQ(p.v[4], 90);
    }
}

TEST(Ordering, RecordsCompareByTheirKeyAndANaNAsEqual)
{
    std::tuple<double, double, int> const rows[] = {
        {1, 2.5, -1}, {0, -1, 1}, {1, 1, 0}, {1, NaN, 0}, {NaN, 1, 0}};
    for (auto const& [x, y, rising] : rows) {
        sort_record const a{1, x}, b{2, y};
        EXPECT_EQ(sort_asc(&a, &b), rising);
        EXPECT_EQ(sort_desc(&a, &b), -rising);
    }
}

TEST(OrderingDeathTest, RefusesWhatIsNoVectorNoDirectionAndNoLine)
{
    matrix m(2, 2), x(2, 1), y(1, 2);
    table t(2, 3);
    Vector p{1, 2};
    Direction const none = static_cast<Direction>(2), below = static_cast<Direction>(-1);
    std::string const first = "pierwszy argument nie jest wektorem";
    std::string const direction = "nieprawidlowy kierunek sortowania", far = "indeks poza zakresem";
    std::string const of_matrix = "Vector sort(matrix,Direction,int)",
                      of_table = "Vector sort(table,Direction,int)",
                      by_number = "sort(int,Direction,int)", by_name = "sort(Text,Direction,int)";
    EXPECT_REFUSAL(sort(m, none), "MATRIX", of_matrix, first);
    EXPECT_REFUSAL(sort(x, below), "MATRIX", of_matrix, direction);
    EXPECT_REFUSAL(order(t, none), "TABLE", "Vector order(table,Direction)", "oczekiwany wektor");
    EXPECT_REFUSAL(order(x, none), "MATRIX", of_matrix, direction);
    EXPECT_REFUSAL(sort(x, y), "MATRIX", "sort(matrix,matrix,Direction,int)",
                   "wektory maja niezgodne wymiary");
    EXPECT_REFUSAL(sort(t, t), "TABLE", of_table, first);
    EXPECT_REFUSAL(qsort_asc_2c(m, p, 0, 2), "MATRIX", "qsort_asc_2c(matrix,Vector,int,int)", far);
    EXPECT_REFUSAL(swap_2r(t, p, -1, 1), "TABLE", "swap_2r(table,Vector,int,int)", far);
    EXPECT_REFUSAL(t.sort(4, none), "TABLE", by_number, "numer kolumny poza zakresem");
    EXPECT_REFUSAL(t.sort(3, Ascending, 0), "TABLE", by_number, "numer wiersza poza zakresem");
    EXPECT_REFUSAL(t.sort(3, none), "TABLE", of_table, direction);
    EXPECT_REFUSAL(t.sort("x"), "TABLE", by_name, "nie znaleziono podanej kolumny");
    EXPECT_REFUSAL(t.sort("x", Ascending, 0), "TABLE", by_name, "nie znaleziono podanego wiersza");
}

} // namespace
} // namespace varnow
