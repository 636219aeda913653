#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <varnow/varnow.h>

#include <cmath>
#include <tuple>

namespace varnow {
namespace {

TEST(ParamStart, GivesTheMeansOfBothLevels)
{
    using test::same_bits;
    EXPECT_TRUE(
        same_bits(param_start_B("0; 1; 0; 2; nan; 1", "1; 5; 3; 7; 100; nan"), matrix("2; 6")));
    EXPECT_TRUE(same_bits(param_start_B("1; 1", "2; 4"), matrix("3; 3")));
    EXPECT_TRUE(same_bits(param_start_B(matrix(0, 1), matrix(0, 1)), matrix("0; 0")));
}

// Beside the best of searches from the true parameters and from the result itself.
TEST(ParamStart, ComesNearTheLeastSquaresSigmoid)
{
    int const n = 3000;
    struct
    {
        char const *name, *truth;
        double power; // of x, from 0 to 10 before
        double noise;
    } const rows[] = {
        {"rising", "2; 0.9; -4; 1", 1, 0.3},
        {"falling, much noise", "-0.2; 0.7; -2; 0.3", 1, 1.0},
        {"steep", "1; 8; -40; 0", 1, 0.2},
        {"one end only", "1; 0.3; 0; 0", 1, 0.1},
        {"nearly straight", "20; 0.01; -0.05; 0", 1, 0.1},
        {"long tail", "1; 0.02; -1; 3", 4, 0.2},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        matrix truth = row.truth, x(n, 1), noise = randn(n, 1);
        for (int i = 1; i <= n; ++i) x(i) = std::pow(10.0 * i / n, row.power);
        matrix const y = fun_fit(x, f_C, truth) + row.noise * noise;
        matrix start = param_start_C(x, y, 0);
        double const error = err_fit(x, y, f_C, start, EsQuadratic);
        double best = error;
        for (matrix par : {truth, start}) {
            fitu(x, y, f_C, df_C, par, 1e-9, EsQuadratic, BFGS);
            best = (min)(best, err_fit(x, y, f_C, par, EsQuadratic));
        }
        EXPECT_LT(error, 1.002 * best);
        EXPECT_GT(start(2), 0.0);
    }
}

TEST(ParamStart, HeedsTheDirectionAndDegenerateData)
{
    matrix const x = "0; 1; 2; 3", t = "0; 1; 1; 2";
    EXPECT_GT(param_start_C(x, t, 1)(1), 0.0);
    EXPECT_LT(param_start_C(x, -t, -1)(1), 0.0);
    std::tuple<matrix, matrix, double> const rows[] = {
        {"1; 1; 1", "1; 2; 6", 3.0}, {x, "5; 5; 5; 5", 5.0}, {"4", "2", 2.0}};
    for (auto const& [places, targets, level] : rows) {
        matrix p = param_start_C(places, targets, 0);
        EXPECT_NEAR(p(1), 0.0, 1e-12);
        EXPECT_NEAR(f_C(2.0, p), level, 1e-12);
        EXPECT_TRUE(std::isfinite(p(2)) && std::isfinite(p(3)));
    }
    EXPECT_NEAR(param_start_C(x, t, -1)(1), 0.0, 1e-12);
    // Of the many curves through two points none with levels that cancel.
    matrix p = param_start_C("0; 1", "0; 1", 0);
    EXPECT_NEAR(f_C(0.0, p), 0.0, 1e-12);
    EXPECT_NEAR(f_C(1.0, p), 1.0, 1e-12);
    EXPECT_LT(std::fabs(p(1)), 2.0);
}

TEST(ParamStartDeathTest, RefusesWhatIsNoPairOfColumns)
{
    EXPECT_REFUSAL(param_start_B("1; 2", "1"), "MATRIX", "matrix param_start_B(matrix,matrix)",
                   "niezgodne wymiary macierzy");
    EXPECT_REFUSAL(param_start_C("1 2", "1 2", 0), "MATRIX",
                   "matrix param_start_C(matrix,matrix,int)", "oczekiwane wektory kolumnowe");
}

} // namespace
} // namespace varnow
