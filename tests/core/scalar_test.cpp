#include "tests/support/bits.h"

#include <varnow/core/scalar.h>

#include <algorithm>
#include <climits>
#include <type_traits>

TEST(Scalar, RaisesToWholePowers)
{
    using namespace varnow;
    std::pair<double, double> const cases[] = {{powi_int(3, 13), 1594323}, {powi_int(0, 0), 1},
                                               {powi_int(2, -3), 1},       {powi(2, -3), 0.125},
                                               {powi(10, 22), 1e22},       {powi(-1, INT_MAX), -1},
                                               {powi(2, INT_MIN), 0},      {powi(0, -1), INFINITY},
                                               {powi(NAN, 2), NAN},        {powi(NAN, 0), 1}};
    for (auto const& [got, expected] : cases) EXPECT_TRUE(test::same_bits(got, expected)) << got;
}

TEST(Scalar, TheErrorFunctionIsTheRationalApproximation)
{
    double const bound = 1.5e-7; // of 7.1.26
    double worst = 0;
    for (double x = -6; x <= 6; x += 0.001) {
        EXPECT_EQ(varnow::erf(-x), -varnow::erf(x));
        worst = std::max(worst, std::fabs(varnow::erf(x) - std::erf(x)));
    }
    EXPECT_LT(worst, bound);
    EXPECT_GT(worst, bound / 3); // and not another, better one
    EXPECT_EQ(varnow::erf(0.0), 0);
    EXPECT_EQ(varnow::erf(INFINITY), 1);
    EXPECT_NEAR(varnow::phi(1.959963984540054), 0.975, bound);
    EXPECT_NEAR(varnow::phi(-1.2815515655446004), 0.1, bound);
}

TEST(Scalar, NumbersStayNumbersBehindUsingDirectives)
{
    using namespace varnow;
    using namespace std;
    static_assert(is_same<decltype(min(1, 2.5)), double>::value, "");
    static_assert(is_same<decltype(max(1L, 2)), long>::value, "");
    static_assert(is_same<decltype(abs(-1)), int>::value, "");
    static_assert(is_same<decltype(exp(1)), double>::value, "");
    static_assert(is_same<decltype(varnow::pow(2, 3)), double>::value, "");
    EXPECT_EQ(min(3, 2), 2);
    EXPECT_EQ(max(2.5, 3), 3);
    EXPECT_EQ(min(-1, 1u), 1u); // as the common type orders them
    EXPECT_EQ(abs(-1.5), 1.5);
    EXPECT_EQ(floor(log10(sqrt(1e4))), 2);
}
