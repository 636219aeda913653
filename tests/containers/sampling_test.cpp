#include <varnow/containers/matrix_special.h>
#include <varnow/containers/table.h>

#include "tests/support/refusal.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace varnow {
namespace {

// The sequence by 64-bit arithmetic; the library's takes over from the same state.
class Generator
{
public:
    Generator() : state_(detail::random_state) {}
    std::uint64_t step() { return state_ = state_ * 48271 % 2147483647; }
    int place(int n) { return static_cast<int>(step() % unsigned(n)); }
    bool abreast() const { return state_ == detail::random_state; }

private:
    std::uint64_t state_;
};

// Row i has cells i and 10 i and the name "ri"; columns are "a" and "b".
matrix numbered(int rows)
{
    matrix m(rows, 2);
    m.colname(1) = "a";
    m.colname(2) = "b";
    for (int i = 1; i <= rows; ++i) {
        m(i, 1) = i;
        m(i, 2) = 10 * i;
        m.rowname(i) = "r" + Text(i);
    }
    return m;
}

void expect_rows(matrix const& m, std::vector<int> const& from)
{
    ASSERT_EQ(m.rows, static_cast<int>(from.size()));
    EXPECT_EQ(m.colname(1), "a");
    EXPECT_EQ(m.colname(2), "b");
    for (int i = 1; i <= m.rows; ++i) {
        int const k = from[std::size_t(i - 1)];
        EXPECT_EQ(m(i, 1), k);
        EXPECT_EQ(m(i, 2), 10 * k);
        EXPECT_EQ(m.rowname(i), "r" + Text(k));
    }
}

TEST(Sampling, WithRepeatsEachRowIsOneDraw)
{
    matrix const m = numbered(7);
    Generator g;
    matrix const s = m.sample_n(8, 1);
    std::vector<int> rows;
    for (int i = 0; i < 8; ++i) rows.push_back(g.place(7) + 1);
    expect_rows(s, rows);
    EXPECT_TRUE(g.abreast());
}

TEST(Sampling, WithoutRepeatsRowsFollowRisingRandomKeys)
{
    matrix const m = numbered(9);
    Generator g;
    matrix const s = m.sample_n(4, 0);
    std::vector<std::pair<std::uint64_t, int>> keys;
    for (int i = 1; i <= 9; ++i) keys.push_back({g.step(), i});
    std::sort(keys.begin(), keys.end());
    expect_rows(s, {keys[0].second, keys[1].second, keys[2].second, keys[3].second});
    EXPECT_TRUE(g.abreast());
    EXPECT_EQ(m.sample_n(9, 0).rows, 9);
}

TEST(Sampling, AFractionIsTruncated)
{
    matrix const m = numbered(7);
    EXPECT_EQ(m.sample_frac(0.57, 0).rows, 3); // 3.99
    EXPECT_EQ(m.sample_frac(1, 0).rows, 7);
    EXPECT_EQ(m.sample_frac(2.5, 1).rows, 17);
    table const t(5, 1);
    EXPECT_EQ(t.sample_frac(0.5, 0).rows, 2);
}

TEST(Sampling, ShufflesExchangeEachLineWithARandomOne)
{
    matrix m = numbered(6);
    Generator g;
    std::vector<int> rows{1, 2, 3, 4, 5, 6}, cols{1, 2};
    for (int i = 0; i < 6; ++i) std::swap(rows[std::size_t(i)], rows[std::size_t(g.place(6))]);
    m.random_shuffle_rows();
    expect_rows(m, rows);

    matrix before = m;
    for (int i = 0; i < 2; ++i) std::swap(cols[std::size_t(i)], cols[std::size_t(g.place(2))]);
    m.random_shuffle_cols();
    for (int j = 1; j <= 2; ++j) {
        EXPECT_EQ(m.colname(j), before.colname(cols[std::size_t(j - 1)]));
        EXPECT_EQ(m(5, j), before(5, cols[std::size_t(j - 1)]));
    }
    EXPECT_EQ(m.rowname(5), before.rowname(5));
    EXPECT_TRUE(g.abreast());

    matrix nothing;
    nothing.random_shuffle_rows();
    nothing.random_shuffle_cols();
    EXPECT_TRUE(g.abreast());
}

TEST(SamplingDeathTest, RefusesSamplesThatCannotBeDrawn)
{
    matrix const m = numbered(3);
    table const t(0, 2);
    char const* const routine = "matrix sample_n(int,int)";
    char const* const few = "wybrano mniej niz 1 przypadek";
    char const* const many = "wybrano probke bez powtorzen i wiecej przypadkow niz jest w danych";
    EXPECT_REFUSAL(m.sample_n(0, 1), "MATRIX", routine, few);
    EXPECT_REFUSAL(m.sample_n(4, 0), "MATRIX", routine, many);
    EXPECT_REFUSAL(m.sample_frac(0.3, 0), "MATRIX", routine, few);
    EXPECT_REFUSAL(m.sample_frac(std::numeric_limits<double>::quiet_NaN(), 0), "MATRIX", routine,
                   few);
    EXPECT_REFUSAL(m.sample_frac(1e30, 0), "MATRIX", routine, many);
    EXPECT_REFUSAL(t.sample_n(1, 1), "TABLE", "table sample_n(int,int)",
                   "brak przypadkow w danych");
}

} // namespace
} // namespace varnow
