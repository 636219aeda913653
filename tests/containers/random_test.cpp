#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>

using namespace varnow;
using namespace varnow::test;

namespace {

// Before any test draws.
std::uint32_t const state_at_load = detail::random_state;

// The sequence by 64-bit arithmetic; the library's starts over at the same state.
class Generator
{
public:
    Generator() { detail::random_state = 12345; }
    std::uint64_t step() { return state_ = state_ * 48271 % 2147483647; }
    double uniform() { return static_cast<double>(step()) / 2147483647; }
    int place(int n) { return static_cast<int>(step() % unsigned(n)); }
    bool abreast() const { return state_ == detail::random_state; }

private:
    std::uint64_t state_ = 12345;
};

} // namespace

TEST(Random, StartsWhereItIsStatedAndStepsAsPublished)
{
    EXPECT_EQ(state_at_load, 12345u);
    detail::random_state = 12345;
    EXPECT_EQ(rand(1, 1)(1), 595905495 / 2147483647.0);
    // Park, Miller and Stockmeyer, CACM 36 (1993) 108: from 1, the 10,000th
    detail::random_state = 1;
    for (int k = 0; k < 10000; ++k) detail::random_step();
    EXPECT_EQ(detail::random_state, 399268537u);
}

TEST(Random, FillsRowAfterRowFromOneSequence)
{
    Generator g;
    matrix member = grid<double>(1, 2);
    member.rand();
    EXPECT_EQ(member.colname(2), Text("c2"));
    for (matrix const& m : {member, rand(3, 2), rand(2), rand(0, 3)})
        for (double x : list(m)) EXPECT_EQ(x, g.uniform());
    EXPECT_TRUE(g.abreast());
}

// Each cell as the number of the pair that it takes its value from, and the s(ine) or c(osine) of
// it by the transform.
TEST(Random, PlacesNormalPairsAtOppositeEnds)
{
    std::tuple<int, int, std::string> const shapes[] = {
        {1, 5, "1s 2s 3s 2c 1c"},
        {4, 1, "1s 2s 2c 1c"},
        {3, 3, "1s 2s 3s 4s 5s 4c 1c 2c 3c"},
        {5, 2, "1s 3s 2s 4s 5s 5c 2c 4c 1c 3c"},
        {0, 4, ""},
    };
    for (auto const& [rows, cols, places] : shapes) {
        SCOPED_TRACE(places);
        matrix member(rows, cols);
        detail::random_state = 12345;
        member.randn();
        Generator g;
        matrix const free = randn(rows, cols);
        EXPECT_TRUE(same_bits(free, member));
        std::vector<double> sines, cosines;
        for (int pair = 0; pair < (rows * cols + 1) / 2; ++pair) {
            double const first = static_cast<double>(g.step() + 1) / 2147483649.0;
            double const r = std::sqrt(-2 * std::log(first)), angle = g.uniform() * 6.283185307;
            sines.push_back(r * std::sin(angle));
            cosines.push_back(r * std::cos(angle));
        }
        EXPECT_TRUE(g.abreast()); // two steps a pair, and no more
        char const* place = places.c_str();
        for (double x : list(free)) {
            EXPECT_DOUBLE_EQ(x, (place[1] == 's' ? sines : cosines)[std::size_t(*place - '1')]);
            place += 3;
        }
    }
}

TEST(Sampling, WithRepeatsEachRowIsOneDrawAndWithoutRowsFollowRisingKeys)
{
    matrix const m = grid<double>(9, 2);
    Generator g;
    matrix const repeated = m.sample_n(10, 1), single = m.sample_n(4, 0);
    Vector drawn(10);
    for (int i = 0; i < 10; ++i) drawn.v[i] = g.place(9) + 1;
    std::vector<std::pair<std::uint64_t, int>> keys;
    for (int i = 1; i <= 9; ++i) keys.push_back({g.step(), i});
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(show(repeated), show(m.row(drawn)));
    EXPECT_EQ(show(single),
              show(m.row(c(keys[0].second, keys[1].second, keys[2].second, keys[3].second))));
    EXPECT_TRUE(g.abreast());

    EXPECT_EQ(m.sample_frac(0.44, 0).rows, 3); // of 3.96
    EXPECT_EQ(m.sample_frac(1, 0).rows, 9);
    EXPECT_EQ(m.sample_frac(2.5, 1).rows, 22);
    EXPECT_EQ(table(5, 1).sample_frac(0.5, 0).rows, 2);
}

TEST(Sampling, ShufflesExchangeEachLineWithARandomOne)
{
    for (bool rows : {true, false}) {
        matrix const before = grid<double>(6, 6);
        matrix m = before, nothing;
        Generator g;
        Vector order = $(6);
        for (int i = 0; i < 6; ++i) std::swap(order.v[i], order.v[g.place(6)]);
        rows ? m.random_shuffle_rows() : m.random_shuffle_cols();
        rows ? nothing.random_shuffle_rows() : nothing.random_shuffle_cols();
        EXPECT_EQ(show(m), show(rows ? before.row(order) : before.col(order)));
        EXPECT_TRUE(g.abreast());
    }
}

TEST(SamplingDeathTest, RefusesSamplesThatCannotBeDrawn)
{
    matrix const m = grid<double>(3, 2);
    char const* const routine = "matrix sample_n(int,int)";
    char const* const few = "wybrano mniej niz 1 przypadek";
    char const* const many = "wybrano probke bez powtorzen i wiecej przypadkow niz jest w danych";
    EXPECT_REFUSAL(m.sample_n(0, 1), "MATRIX", routine, few);
    EXPECT_REFUSAL(m.sample_n(4, 0), "MATRIX", routine, many);
    EXPECT_REFUSAL(m.sample_frac(0.3, 0), "MATRIX", routine, few);
    EXPECT_REFUSAL(m.sample_frac(NaN, 0), "MATRIX", routine, few);
    EXPECT_REFUSAL(m.sample_frac(1e30, 0), "MATRIX", routine, many);
    EXPECT_REFUSAL(table(0, 2).sample_n(1, 1), "TABLE", "table sample_n(int,int)",
                   "brak przypadkow w danych");
}
