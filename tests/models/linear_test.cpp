#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/reference_sets.h"
#include "tests/support/refusals.h"

#include <cmath>
#include <limits>
#include <tuple>

namespace varnow {
namespace {

using test::same_bits;
using test::scattered;

double const NaN = std::numeric_limits<double>::quiet_NaN();

void expect_near(matrix const& m, matrix const& expected, double relative, double absolute = 0)
{
    ASSERT_EQ(m.rows, expected.rows);
    ASSERT_EQ(m.cols, expected.cols);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.cols; ++j) {
            double const e = expected.cell[i][j];
            EXPECT_NEAR(m.cell[i][j], e, relative * std::fabs(e) + absolute)
                << "at " << i + 1 << ", " << j + 1;
        }
}

TEST(LinearModel, MeetsCertifiedValuesToTheDigitsThatCrossProductsLeave)
{
    // The squared condition of the problem takes its digits: about 16 less twice the logarithm of
    // the condition of X with its columns at unit length.
    std::tuple<test::reference_set, double, double> const cases[] = {
        {test::norris(), 1e-11, 1e-12},
        {test::pontius(), 1e-11, 1e-11},
        {test::longley(), 1e-7, 1e-7},
        {test::wampler("Wampler1", 0), 1e-7, 0},
        {test::wampler("Wampler3", 1), 1e-7, 1e-10},
        {test::wampler("Wampler4", 100), 1e-7, 1e-10},
    };
    for (auto const& [set, coefficients, errors] : cases) {
        SCOPED_TRACE(set.name);
        matrix se, t, p, par = lm_tstud(set.X, set.y, se, t, p, EsQuadratic);
        expect_near(par, test::as_column(set.coefficients), coefficients);
        if (errors > 0) expect_near(se, test::as_column(set.errors), errors);
    }
}

// Brownlee's stack losses: air flow, water temperature, acid concentration, loss.
class StackLoss : public testing::Test
{
protected:
    matrix const data = "80 27 89 42; 80 27 88 37; 75 25 90 37; 62 24 87 28; 62 22 87 18;"
                        "62 23 87 18; 62 24 93 19; 62 24 93 20; 58 23 87 15; 58 18 80 14;"
                        "58 18 89 14; 58 17 88 13; 58 18 82 11; 58 19 93 12; 50 18 89 8;"
                        "50 18 86 7; 50 19 72 8; 50 19 79 8; 50 20 80 9; 56 20 82 15; 70 20 91 15";
    matrix X = data.col(c(1, 2, 3));
    matrix const y = data.col(4);
    // With a column of ones as the fourth variable.
    matrix const X1 = X | varnow::ones(21, 1), M = crossprod(X1 | y);
    matrix const cond = "1; 0; 1; 1; 0";
    matrix se, t, p;
    double const digits = 1e-10;
    // Of the normal tail by the library's `erf`.
    double const tail = 4e-7;
};

TEST_F(StackLoss, TestsAreThoseOfR)
{
    X.colname(2) = "water";
    matrix const par = lm_tstud(X, y, se, t, p, EsQuadratic);
    // summary(lm(stack.loss ~ .)), the tails by pnorm.
    expect_near(par | se | t,
                "0.715640200485284 0.134858185355372 5.30661300683722;"
                "1.295286124388573 0.368024265272704 3.51956717698702;"
                "-0.152122519148651 0.156294043248621 -0.97330976911683;"
                "-39.919674420124089 11.895996850644259 -3.35572335141986",
                digits);
    expect_near(p, "1.1168e-7; 4.32251556714e-4; 0.330399368602; 7.91577091379e-4", 0, tail);
    EXPECT_EQ(par.rowname(2), "water");
    EXPECT_EQ(par.rowname(4), "");
    EXPECT_EQ(par.colname(1), "LINREG");
    EXPECT_TRUE(same_bits(par, lm_par(X, y, EsQuadratic)));
    EXPECT_TRUE(same_bits(par, linreg(X1, y)));
    EXPECT_NEAR(lm_err(lm_val(X, par), y), 2.91816936743992, 1e-12);
    // An argument may take a result.
    matrix data_and_error = y;
    lm_tstud(X, data_and_error, data_and_error, t, p, EsQuadratic);
    EXPECT_TRUE(same_bits(data_and_error, se));
}

TEST_F(StackLoss, SubsetsAreRegressionsOfTheirOwn)
{
    matrix const par = lm_tstud_c(X1, y, M, cond, se, t, p);
    ASSERT_EQ(se.rows, 4);
    // R's summary(lm(stack.loss ~ Air.Flow + Acid.Conc.)); M counts the intercept as a third
    // variable: one degree of freedom less.
    double const less = std::sqrt(18.0 / 17.0);
    Vector const fitted = $(3);
    expect_near(par | se.row(fitted) / less | t.row(fitted) * less,
                "1.064806775487009 0.116720757911506 9.122685583435935;"
                "-0.152222713352066 0.199703833781882 -0.762242318884698;"
                "-33.686297214241428 15.030645270350625 -2.241174387947991",
                digits);
    expect_near(p.row(fitted), "0; 0.458835101875959; 0.0294038027916252", 0, tail);
    EXPECT_TRUE(std::isnan(t(4)) && std::isnan(p(4)));
    matrix const f = lm_val_c(X1, par, cond);
    EXPECT_NEAR(lm_err(f, y), 4.14419005416143 * std::sqrt(18.0 / 21.0), 1e-12);
    // Two variables of X and an intercept behind them.
    EXPECT_TRUE(same_bits(lm_val_c(X, par, "1; 0; 1; 1"), f));
    EXPECT_EQ(f.colname(1), "");
}

TEST_F(StackLoss, AdmissibilityIsTestedFromTheCheapSide)
{
    // The largest are the acid's tail and the intercept's error.
    double const p_acid = 0.459, largest_se = 15.4665;
    lm_tstud_c(X1, y, M, cond, se, t, p);
    matrix const tests = se | t | p, none = "7 7 7";
    struct
    {
        matrix cond;
        double lo, pmax, semax;
        int ok;
        matrix tests;
    } const cases[] = {
        {cond, -34, p_acid + 0.001, largest_se + 0.001, 1, tests},
        {cond, -33, 1, 100, 0, none}, // the column of ones counts as a variable
        {cond, -34, p_acid - 0.001, 100, 0, tests},
        {cond, -34, 1, largest_se - 0.001, 0, tests},
        {cond, NaN, NaN, NaN, 1, tests},
        // Without a variable nothing is tested, nor is an intercept read.
        {"0; 0; 0; 0; 0", 1, 0, 0, 1, none},
        {"0; 0; 0; 0; 1", 1, 0, 0, 1, none},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(testing::Message() << a.lo << ", " << a.pmax << ", " << a.semax);
        se = t = p = matrix(7.0);
        int ok = 5;
        matrix const par = lm_qtstud_c(X1, y, M, a.cond, se, t, p, a.lo, a.pmax, a.semax, ok);
        EXPECT_EQ(ok, a.ok);
        EXPECT_TRUE(same_bits(par, lm_par_c(M, a.cond)));
        EXPECT_TRUE(same_bits(se | t | p, a.tests));
    }
}

TEST_F(StackLoss, SizesFallApartWhereTheConditionIsNoFlag)
{
    // 0.999 counts for k, 2.999 less the rounded last cell, and selects nothing.
    EXPECT_EQ(lm_tstud_c(X1, y, M, "1; 0.999; 0; 1; 0", se, t, p).rows, 2);
    ASSERT_EQ(se.rows, 3);
    EXPECT_TRUE(std::isnan(t(3)));
    // Rounded, the last cell makes k one less than there are coefficients: row k + 1 has one too.
    EXPECT_EQ(lm_tstud_c(X1, y, M, "1; 0; 0; 1; 0.6", se, t, p).rows, 2);
    ASSERT_EQ(se.rows, 2);
    EXPECT_FALSE(std::isnan(t(2)));
    // More variables than k + 1 have no room.
    EXPECT_EQ(lm_tstud_c(X1, y, M, "1; 1; 0; 0.7; 0.6", se, t, p).rows, 3);
    EXPECT_EQ(se.rows, 3);
}

TEST(LinearModel, ValuesAreThoseOfTheBoundProductAndTheErrorIsTheirRootMeanSquare)
{
    for (double specials : {0.0, 0.1}) {
        matrix const X = scattered(50, 7, 1, specials), par = scattered(8, 2, 2, specials);
        test::on_every_machine(
            [&] { EXPECT_TRUE(same_bits(lm_val(X, par), mul(X | varnow::ones(50, 1), par))); });
    }
    matrix X = "1 2; 3 4", par = "10; 100; 1000";
    X.rowname(2) = "r";
    par.colname(1) = "c";
    matrix const f = lm_val(X, par);
    EXPECT_EQ(f(2), 1430);
    EXPECT_EQ(f.rowname(2), "r");
    EXPECT_EQ(f.colname(1), "c");
    EXPECT_EQ(lm_val(matrix(0, 2), par).rows, 0);
    EXPECT_EQ(lm_err("1; 2; 3; 4", "2; 4; 3; 2"), 1.5);
    EXPECT_TRUE(std::isnan(lm_err(matrix(), matrix())));
}

TEST(LinearModel, LikelihoodTakesTheLinearValueForAProbability)
{
    // Counts at x = 0, 1, 2; R's glm(binomial(link = "identity")).
    matrix const x = "0; 0; 0; 0; 0; 0; 1; 1; 1; 1; 1; 2; 2; 2; 2; 2; 2; 2";
    matrix const y = "0; 0; 0; 0; 0; 1; 0; 0; 1; 0; 1; 1; 1; 0; 1; 1; 1; 1";
    expect_near(lm_par(x, y, EsQuadratic), "0.347639484978541; 0.133047210300429", 1e-13);
    expect_near(lm_par(x, y, EsLikelihood), "0.346001690306892; 0.147172210477610", 1e-5);
    for (int type : {2, -1})
        EXPECT_TRUE(same_bits(lm_par(x, y, static_cast<EsType>(type)), varnow::zeros(2, 1)));
    matrix se, t, p;
    lm_tstud(x, y, se, t, p, static_cast<EsType>(2));
    // Of zeros: the sum of squares is 9 ones over 16, (X'X)^-1 = (18 -19; -19 33) / 233.
    EXPECT_NEAR(se(1), std::sqrt(9.0 / 16 * 18 / 233), 1e-14);
    EXPECT_EQ(t(2), 0);
    EXPECT_NEAR(p(2), 1, 2e-7);
}

TEST(LinearModel, PerfectAndOverfullModelsPassWithoutAWord)
{
    matrix se, t, p;
    lm_tstud("1; 2; 3; 4", "2; 4; 6; 8", se, t, p, EsQuadratic);
    EXPECT_TRUE(se(1) == 0 && std::isinf(t(1)) && p(1) == 0);
    lm_tstud("1; 3", "2; 5", se, t, p, EsQuadratic);
    EXPECT_FALSE(std::isfinite(se(1)) && se(1) > 0);
}

using StackLossDeathTest = StackLoss;

TEST_F(StackLossDeathTest, RefusesAsTheOperationsDo)
{
    char const* const linreg = "matrix linreg(matrix,matrix)";
    char const* const element = "double & operator ()(int)";
    char const* const sizes = "nieprawidlowe wymiary macierzy";
    char const* const unlike = "niezgodne wymiary macierzy";
    char const* const outside = "indeks poza zakresem";
    test::refusal const cases[] = {
        {[&] { lm_par(X, "1; 2", EsQuadratic); }, linreg, sizes},
        // Three variables and the intercept are more than three observations.
        {[&] { lm_tstud(X.row($(3)), "1; 2; 3", se, t, p, EsQuadratic); }, linreg, sizes},
        {[&] { lm_val(X, "1; 2; 3"); }, "matrix mul(matrix,matrix)", unlike},
        {[&] { lm_err("1; 2", "1 2"); }, "matrix operator -(matrix,matrix)", unlike},
        {[&] { lm_par_c(M, "1; 1"); }, "linreg_c(matrix,matrix,int)",
         "dlugosc wektora warunkowego niezgodna z wymiarami macierzy iloczynow"},
        // With a model intercept there is one parameter less than lm_val_c reads.
        {[&] { lm_tstud_c(X1, y, M, "1; 0; 1; 1; 1", se, t, p); }, element, outside,
         "3 x 1 : ( 4 )"},
        {[&] { lm_val_c(X1, "1; 2", "1; 0; 1"); }, element, outside, "3 x 1 : ( 4 )"},
        {[&] { lm_val_c(X1, "1; 2", cond); }, element, outside, "2 x 1 : ( 3 )"},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
} // namespace varnow
