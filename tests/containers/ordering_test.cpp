#include <varnow/containers/ordering.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace varnow {
namespace {

double const nan = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

// The quicksort whose permutation is promised, step by step.
template <class T>
void plain_quicksort(std::vector<T>& x, std::vector<int>& p, int left, int right, bool falling)
{
    auto exchange = [&](int i, int j) {
        std::swap(x[std::size_t(i)], x[std::size_t(j)]);
        std::swap(p[std::size_t(i)], p[std::size_t(j)]);
    };
    while (left < right) {
        exchange(left, (left + right) / 2);
        int last = left;
        for (int i = left + 1; i <= right; ++i) {
            T const &a = x[std::size_t(i)], &pivot = x[std::size_t(left)];
            if (falling ? a > pivot : a < pivot) exchange(++last, i);
        }
        exchange(left, last);
        plain_quicksort(x, p, left, last - 1, falling);
        left = last + 1;
    }
}

bool same(double a, double b)
{
    return (a == b && std::signbit(a) == std::signbit(b)) || (a != a && b != b);
}
bool same(Text const& a, Text const& b)
{
    return a == b;
}

template <class T> data<T> vector_of(std::vector<T> const& x, bool row)
{
    int const n = static_cast<int>(x.size());
    data<T> r(row ? 1 : n, row ? n : 1);
    for (int i = 0; i < n; ++i) (row ? r.cell[0][i] : r.cell[i][0]) = x[std::size_t(i)];
    return r;
}

std::vector<int> list(Vector const& v)
{
    return std::vector<int>(v.v, v.v + v.n);
}

template <class T>::testing::AssertionResult holds(data<T> const& x, std::vector<T> const& cells)
{
    for (std::size_t i = 0; i < cells.size(); ++i)
        if (!same(x(static_cast<int>(i) + 1), cells[i]))
            return ::testing::AssertionFailure() << "other cell at " << i + 1;
    return ::testing::AssertionSuccess();
}

// Every way to sort gives what the plain quicksort gives.
template <class T> void expect_plain_order(std::vector<T> const& keys)
{
    int const n = static_cast<int>(keys.size());
    for (Direction d : {Ascending, Descending}) {
        std::vector<T> cells = keys;
        std::vector<int> permutation(keys.size());
        for (int i = 0; i < n; ++i) permutation[std::size_t(i)] = i + 1;
        plain_quicksort(cells, permutation, 0, n - 1, d == Descending);
        for (bool row : {false, true}) {
            data<T> x = vector_of(keys, row);
            ASSERT_EQ(list(order(x, d)), permutation) << "n " << n << " direction " << d;
            ASSERT_TRUE(holds(x, keys));
            ASSERT_EQ(list(sort(x, d)), permutation);
            ASSERT_TRUE(holds(x, cells));
        }
    }
}

std::vector<double> numbers(int n, double (*f)(int))
{
    std::vector<double> r;
    for (int i = 0; i < n; ++i) r.push_back(f(i));
    return r;
}

std::vector<double> shuffled(std::vector<double> x)
{
    std::mt19937 random(7);
    std::shuffle(x.begin(), x.end(), random);
    return x;
}

TEST(Ordering, SmallNumbersFollowTheQuicksortAmongTiesAndNaN)
{
    std::vector<std::vector<double>> const palettes = {
        {0, 1},
        {0.0, -0.0, 1, -1},
        {nan, 1, 2},
        {nan, -nan, inf, -inf, 0.0, -0.0, 5e-324, -5e-324},
        {1, 1 + 1e-15, 1 - 1e-15, 1e300, nan},
        {3, 1, 4, 1.5, 9, 2.6, 5.3, 5.8, 9.7, 9.3, 2.3, 8.4, 6.2, -6.4, -3.3, 8.3, -2.7, -9.5},
    };
    std::mt19937 random(1);
    for (int turn = 0; turn < 4000; ++turn) {
        std::vector<double> const& palette = palettes[random() % palettes.size()];
        std::vector<double> x(random() % (turn % 10 ? 20 : 200));
        for (double& v : x) v = palette[random() % palette.size()];
        if (turn % 4 == 0) { // what rises or falls already takes a way of its own
            std::vector<int> ignored(x.size());
            plain_quicksort(x, ignored, 0, static_cast<int>(x.size()) - 1, turn % 8 == 0);
        }
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(x));
    }
}

TEST(Ordering, LargeNumbersFollowTheQuicksort)
{
    // Beyond the size where short sorts take over. The close ones differ in their last bits only,
    // and the far one beside them hides these from a look at the leading bits.
    std::vector<std::vector<double>> const cases = {
        numbers(3000, [](int i) { return std::sin(i); }),
        numbers(3000, [](int i) { return i * 0.5; }),
        numbers(3000, [](int i) { return 1e6 - i; }),
        numbers(3000, [](int i) { return std::floor(i / 3.0); }),
        numbers(3000, [](int i) { return -std::floor(i / 7.0); }),
        numbers(2500, [](int) { return 3.0; }),
        numbers(2500, [](int i) { return i % 7 == 3 ? 1.0 : 0.0; }),
        numbers(3000, [](int i) { return double(i < 1500 ? 2 * i : 6001 - 2 * i); }),
        numbers(3000, [](int i) { return double(std::min(i, 2999 - i)); }),
        numbers(3000, [](int i) { return i % 5 == 1 ? nan : std::floor(100 * std::sin(i)); }),
        numbers(3000, [](int i) { return i % 2 ? -0.0 : 0.0; }),
        numbers(2000, [](int) { return nan; }),
        shuffled(numbers(3000, [](int i) { return 1 + i * 0x1p-52; })),
        shuffled(numbers(3000, [](int i) { return i ? 1 + i * 0x1p-52 : -1e300; })),
        shuffled(numbers(3000, [](int i) { return i ? 1 + i / 2 * 0x1p-52 : inf; })),
        shuffled(numbers(3000, [](int i) { return 1.7e9 + i; })),
        shuffled(numbers(3000, [](int i) { return i ? 1 + i % 3 * 0.25 + i / 9 * 0x1p-52 : inf; })),
        // The last bits of one group are the leading bits of the next.
        shuffled(numbers(3000,
                         [](int i) {
                             return i ? std::ldexp(i % 4 * 0x1p30 + i / 4 % (i % 4 + 2), -1074)
                                      : 1e300;
                         })),
        shuffled(numbers(3000, [](int i) { return i < 2998 ? 1.0 + i % 3 * 0x1p-40 : nan; })),
    };
    for (std::size_t k = 0; k < cases.size(); ++k) {
        SCOPED_TRACE(k);
        test::on_every_machine([&] { ASSERT_NO_FATAL_FAILURE(expect_plain_order(cases[k])); });
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
    for (int turn = 0; turn < 2000; ++turn) {
        std::vector<Text> const& palette = palettes[random() % palettes.size()];
        std::vector<Text> x(random() % (turn % 10 ? 16 : 150));
        for (Text& v : x) {
            v = palette[random() % palette.size()];
            if (random() % 4 == 0) v += Text(static_cast<int>(random() % 30));
        }
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(x));
    }
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
        [](int) { return nan; },
        [](int i) { return i % 100 ? 0.0 : 1.0; },
        [](int i) { return i % 3 ? nan : double(i % 2); },
        [](int i) { return double(i / 1000); },
        [](int i) { return double(-(i / 1000)); },
    };
    for (auto* make : makers) {
        matrix x(n, 1);
        for (int i = 0; i < n; ++i) x.cell[i][0] = make(i);
        matrix const before = x;
        std::vector<int> p = list(sort(x));
        for (int i = 0; i < n; i += 997)
            ASSERT_TRUE(same(x.cell[i][0], before.cell[p[std::size_t(i)] - 1][0]));
        std::sort(p.begin(), p.end());
        for (int i = 0; i < n; ++i) ASSERT_EQ(p[std::size_t(i)], i + 1);
    }
}

TEST(Ordering, MovesNamesOnlyWhenAsked)
{
    for (bool row : {false, true}) {
        matrix x(vector_of<double>({3, 1, 2}, row));
        auto name = [row](matrix& m, int i) -> Text& { return row ? m.colname(i) : m.rowname(i); };
        for (int i = 1; i <= 3; ++i) name(x, i) = Text(i);
        (row ? x.rowname(1) : x.colname(1)) = "line";
        matrix still = x;
        EXPECT_EQ(list(sort(still)), (std::vector<int>{2, 3, 1}));
        EXPECT_EQ(name(still, 1), "1");
        matrix y = x;
        for (int i = 1; i <= 3; ++i) y(i) = 10 * x(i);
        sort(x, y, 1, 1); // descending
        EXPECT_TRUE(holds(x, {3, 2, 1}));
        EXPECT_TRUE(holds(y, {30, 20, 10}));
        for (matrix* each : {&x, &y}) {
            EXPECT_EQ(name(*each, 1), "1");
            EXPECT_EQ(name(*each, 2), "3");
            EXPECT_EQ(name(*each, 3), "2");
            EXPECT_EQ(row ? each->rowname(1) : each->colname(1), "line");
        }
    }
    matrix one = vector_of<double>({2, 1, 3}, false);
    sort(one, one);
    EXPECT_TRUE(holds(one, {1, 2, 3}));
}

TEST(Ordering, VectorsWithoutCellsStayAsTheyAre)
{
    for (int rows : {0, 1})
        for (int cols : {0, 1}) {
            if (rows && cols) continue;
            matrix m(rows, cols);
            EXPECT_EQ(sort(m, Ascending, 1).n, 0);
            table x(rows, cols);
            EXPECT_EQ(order(x).n, 0);
        }
    matrix none;
    sort(none, none, Descending, 1);
    EXPECT_EQ(none.rows, 0);
    matrix headed(0, 2);
    headed.sort(2);
    EXPECT_EQ(headed.cols, 2);
}

TEST(Ordering, AContainerIsReorderedByOneOfItsLines)
{
    matrix m(3, 2);
    double const cells[3][2] = {{3, 30}, {1, 10}, {2, 20}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 2; ++j) m.cell[i][j] = cells[i][j];
    for (int i = 1; i <= 3; ++i) m.rowname(i) = "r" + Text(i);
    m.colname(1) = "Key";
    m.colname(2) = "other";
    matrix by_number = m, by_name = m, by_row = m;
    by_number.sort(1);
    by_name.sort("KEY", Descending);
    EXPECT_TRUE(holds<double>(by_number.col(2), {10, 20, 30}));
    EXPECT_EQ(by_number.rowname(1), "r2");
    EXPECT_TRUE(holds<double>(by_name.col(2), {30, 20, 10}));
    EXPECT_EQ(by_name.rowname(3), "r2");
    by_row.sort("R2", Descending, 0);
    EXPECT_TRUE(holds<double>(by_row.row(1), {30, 3}));
    EXPECT_EQ(by_row.colname(1), "other");
    EXPECT_EQ(by_row.rowname(1), "r1");

    table t(2, 1);
    t.cell[0][0] = "9";
    t.cell[1][0] = "10";
    t.sort(1);
    EXPECT_EQ(t(1, 1), "10");
}

TEST(Ordering, NamedQuicksortsWorkOnAStretchAndCarryTheVector)
{
    // Places 1 to 3 of 5, counted from 0; the middle one is swapped to the left first.
    for (bool row : {false, true}) {
        matrix x = vector_of<double>({0, 2, 1, 2, -1}, row);
        Vector p{50, 60, 70, 80, 90};
        row ? qsort_desc_2r(x, p, 1, 3) : qsort_desc_2c(x, p, 1, 3);
        EXPECT_TRUE(holds(x, {0, 2, 2, 1, -1}));
        EXPECT_EQ(list(p), (std::vector<int>{50, 80, 60, 70, 90}));
        row ? qsort_asc_2r(x, p, 0, 4) : qsort_asc_2c(x, p, 0, 4);
        EXPECT_TRUE(holds(x, {-1, 0, 1, 2, 2}));
        row ? swap_2r(x, p, 4, 0) : swap_2c(x, p, 4, 0);
        EXPECT_TRUE(holds(x, {2, 0, 1, 2, -1}));
        EXPECT_EQ(p.v[4], 90);
        row ? qsort_asc_2r(x, p, 3, 3) : qsort_asc_2c(x, p, 9, 2);
        EXPECT_TRUE(holds(x, {2, 0, 1, 2, -1}));
    }
}

TEST(Ordering, RecordsSortByTheirKeyWithTheCLibrary)
{
    sort_record r[] = {{1, 2.5}, {2, -1}, {3, 7}, {4, 0}};
    std::qsort(r, 4, sizeof *r, sort_asc);
    EXPECT_EQ(r[0].position, 2);
    EXPECT_EQ(r[3].position, 3);
    std::qsort(r, 4, sizeof *r, sort_desc);
    EXPECT_EQ(r[0].position, 3);
    EXPECT_EQ(r[3].position, 2);
    sort_record const number{1, 1}, missing{2, nan}, equal{3, 1};
    for (auto* compare_records : {sort_asc, sort_desc}) {
        EXPECT_EQ(compare_records(&number, &missing), 0);
        EXPECT_EQ(compare_records(&missing, &number), 0);
        EXPECT_EQ(compare_records(&number, &equal), 0);
    }
    EXPECT_EQ(sort_asc(&r[3], &number), -1);
    EXPECT_EQ(sort_desc(&r[3], &number), 1);
}

TEST(OrderingDeathTest, RefusesWhatIsNoVectorOrNoDirection)
{
    matrix m(2, 2), x(2, 1), y(1, 2);
    table t(2, 2);
    Direction const none = static_cast<Direction>(2), below = static_cast<Direction>(-1);
    EXPECT_REFUSAL(sort(m, none), "MATRIX", "Vector sort(matrix,Direction,int)",
                   "pierwszy argument nie jest wektorem");
    EXPECT_REFUSAL(sort(x, below), "MATRIX", "Vector sort(matrix,Direction,int)",
                   "nieprawidlowy kierunek sortowania");
    EXPECT_REFUSAL(order(t, none), "TABLE", "Vector order(table,Direction)", "oczekiwany wektor");
    EXPECT_REFUSAL(order(x, none), "MATRIX", "Vector sort(matrix,Direction,int)",
                   "nieprawidlowy kierunek sortowania");
    EXPECT_REFUSAL(sort(x, y), "MATRIX", "sort(matrix,matrix,Direction,int)",
                   "wektory maja niezgodne wymiary");
    EXPECT_REFUSAL(sort(t, t), "TABLE", "Vector sort(table,Direction,int)",
                   "pierwszy argument nie jest wektorem");
    m.cell[0][0] = 1;
    Vector p{1, 2};
    EXPECT_REFUSAL(qsort_asc_2c(m, p, 0, 2), "MATRIX", "qsort_asc_2c(matrix,Vector,int,int)",
                   "indeks poza zakresem");
    EXPECT_REFUSAL(swap_2r(t, p, -1, 1), "TABLE", "swap_2r(table,Vector,int,int)",
                   "indeks poza zakresem");
}

TEST(OrderingDeathTest, RefusesLinesThatAreNotThere)
{
    table t(2, 3);
    Direction const none = static_cast<Direction>(2);
    EXPECT_REFUSAL(t.sort(4, none), "TABLE", "sort(int,Direction,int)",
                   "numer kolumny poza zakresem");
    EXPECT_REFUSAL(t.sort(3, Ascending, 0), "TABLE", "sort(int,Direction,int)",
                   "numer wiersza poza zakresem");
    EXPECT_REFUSAL(t.sort(3, none), "TABLE", "Vector sort(table,Direction,int)",
                   "nieprawidlowy kierunek sortowania");
    EXPECT_REFUSAL(t.sort("x"), "TABLE", "sort(Text,Direction,int)",
                   "nie znaleziono podanej kolumny");
    EXPECT_REFUSAL(t.sort("x", Ascending, 0), "TABLE", "sort(Text,Direction,int)",
                   "nie znaleziono podanego wiersza");
}

} // namespace
} // namespace varnow
