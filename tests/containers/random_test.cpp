#include <varnow/containers/matrix_special.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <cmath>
#include <cstdint>

using namespace varnow;
using test::show;

namespace {

// Before any test draws.
std::uint32_t const state_at_load = detail::random_state;

// The same generator in 64 bits, and the transform, which gives sine and cosine in turn.
struct reference
{
    std::uint64_t state = 12345;
    double uniform() { return static_cast<double>(step()) / 2147483647.0; }
    std::uint64_t step() { return state = state * 48271 % 2147483647; }
    double sine = 0, cosine = 0;
    reference& pair()
    {
        double const r = std::sqrt(-2 * std::log((static_cast<double>(step()) + 1) / 2147483649.0));
        double const angle = uniform() * 6.283185307;
        sine = r * std::sin(angle);
        cosine = r * std::cos(angle);
        return *this;
    }
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
    reference expected;
    detail::random_state = 12345;
    matrix const shapes[] = {rand(3, 2), rand(2), rand(0, 3)};
    for (matrix const& m : shapes)
        for (int i = 0; i < m.rows; ++i)
            for (int j = 0; j < m.cols; ++j) EXPECT_EQ(m.cell[i][j], expected.uniform());
    EXPECT_EQ(detail::random_state, expected.state);

    matrix member = test::grid<double>(1, 2);
    member.rand();
    EXPECT_EQ(member(1), expected.uniform());
    EXPECT_EQ(member(2), expected.uniform());
    EXPECT_EQ(member.colname(2), Text("c2"));
}

// Which pair a cell takes its value from, and s(ine) or c(osine) of it.
TEST(Random, PlacesNormalPairsAtOppositeEnds)
{
    struct
    {
        int rows, cols;
        std::vector<char const*> places;
    } const shapes[] = {
        {1, 1, {"1s"}},
        {1, 2, {"1s", "1c"}},
        {1, 5, {"1s", "2s", "3s", "2c", "1c"}},
        {2, 2, {"1s", "2s", "1c", "2c"}},
        {4, 1, {"1s", "2s", "2c", "1c"}},
        {3, 2, {"1s", "2s", "3s", "3c", "1c", "2c"}},
        {3, 3, {"1s", "2s", "3s", "4s", "5s", "4c", "1c", "2c", "3c"}},
        {5, 2, {"1s", "3s", "2s", "4s", "5s", "5c", "2c", "4c", "1c", "3c"}},
        {0, 4, {}},
    };
    for (auto const& shape : shapes) {
        SCOPED_TRACE(std::to_string(shape.rows) + "x" + std::to_string(shape.cols));
        reference source;
        std::vector<reference> pairs(1, source);
        int last = 0;
        for (char const* place : shape.places) last = std::max(last, place[0] - '0');
        for (int k = 0; k < last; ++k) pairs.push_back(source.pair());

        detail::random_state = 12345;
        matrix const free = randn(shape.rows, shape.cols);
        EXPECT_EQ(detail::random_state, source.state); // two steps a pair, and no more
        detail::random_state = 12345;
        matrix member(shape.rows, shape.cols);
        member.randn();
        EXPECT_TRUE(test::same_bits(free, member));
        std::size_t k = 0;
        for (int i = 0; i < free.rows; ++i)
            for (int j = 0; j < free.cols; ++j, ++k) {
                reference const& pair = pairs[static_cast<std::size_t>(shape.places[k][0] - '0')];
                EXPECT_DOUBLE_EQ(free.cell[i][j],
                                 shape.places[k][1] == 's' ? pair.sine : pair.cosine)
                    << shape.places[k];
            }
    }
}
