#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/reference_sets.h"
#include "tests/support/refusal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace varnow {
namespace {

using test::same_bits;
using test::scattered;

double const NaN = std::numeric_limits<double>::quiet_NaN();

void expect_column(matrix const& m, std::vector<double> const& expected, double relative)
{
    ASSERT_EQ(m.rows, static_cast<int>(expected.size()));
    ASSERT_EQ(m.cols, 1);
    for (int i = 0; i < m.rows; ++i) {
        double const e = expected[static_cast<std::size_t>(i)];
        EXPECT_NEAR(m.cell[i][0], e, relative * std::fabs(e)) << "row " << i + 1;
    }
}

TEST(LinearModel, MeetsCertifiedValuesToTheDigitsThatCrossProductsLeave)
{
    // The squared condition of the problem takes its digits: about 16 less twice the logarithm of
    // the condition of X with its columns at unit length.
    struct
    {
        test::reference_set set;
        double coefficients, errors;
    } const cases[] = {
        {test::norris(), 11, 12},
        {test::pontius(), 11, 11},
        {test::longley(), 7, 7},
        {test::wampler("Wampler1", 0), 7, 0},
        {test::wampler("Wampler3", 1), 7, 10},
        {test::wampler("Wampler4", 100), 7, 10},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(a.set.name);
        matrix se, t, p, par = lm_tstud(a.set.X, a.set.y, se, t, p, EsQuadratic);
        double coefficients = 15, errors = 15;
        for (int i = 0; i < par.rows; ++i) {
            auto const k = static_cast<std::size_t>(i);
            coefficients =
                std::min(coefficients, test::digits(par.cell[i][0], a.set.coefficients[k]));
            if (a.errors > 0)
                errors = std::min(errors, test::digits(se.cell[i][0], a.set.errors[k]));
        }
        std::printf("%s: %.1f digits of the coefficients, %.1f of the errors\n", a.set.name.c_str(),
                    coefficients, a.errors > 0 ? errors : NaN);
        EXPECT_GE(coefficients, a.coefficients);
        EXPECT_GE(errors, a.errors);
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

    // R's summary(lm(stack.loss ~ .)), the tails by pnorm.
    void expect_full(matrix const& par) const
    {
        expect_column(
            par, {0.715640200485284, 1.295286124388573, -0.152122519148651, -39.919674420124089},
            digits);
        expect_column(se,
                      {0.134858185355372, 0.368024265272704, 0.156294043248621, 11.895996850644259},
                      digits);
        expect_column(t, {5.30661300683722, 3.51956717698702, -0.97330976911683, -3.35572335141986},
                      digits);
        double const tails[] = {1.11680933650e-07, 4.32251556714e-04, 3.30399368602e-01,
                                7.91577091379e-04};
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(p.cell[i][0], tails[i], tail);
    }
    // The same of stack.loss ~ Air.Flow + Acid.Conc., with the intercept as a third variable.
    void expect_part(matrix const& par) const
    {
        ASSERT_EQ(se.rows, 4);
        expect_column(par, {1.064806775487009, -0.152222713352066, -33.686297214241428}, digits);
        double const errors[] = {0.116720757911506, 0.199703833781882, 15.030645270350625};
        // M counts the ones as a variable: one degree of freedom less than in R.
        double const less = std::sqrt(18.0 / 17.0);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(se.cell[i][0], less * errors[i], digits * errors[i]);
            EXPECT_NEAR(t.cell[i][0], par.cell[i][0] / se.cell[i][0], 1e-14);
            EXPECT_NEAR(p.cell[i][0], std::erfc(std::fabs(t.cell[i][0]) / std::sqrt(2.0)), tail);
        }
        EXPECT_TRUE(std::isnan(t.cell[3][0]));
        EXPECT_TRUE(std::isnan(p.cell[3][0]));
    }
};

TEST_F(StackLoss, TestsAreThoseOfR)
{
    X.colname(2) = "water";
    matrix const par = lm_tstud(X, y, se, t, p, EsQuadratic);
    expect_full(par);
    EXPECT_EQ(par.rowname(2), "water");
    EXPECT_EQ(par.rowname(4), "");
    EXPECT_EQ(par.colname(1), "LINREG");
    EXPECT_TRUE(same_bits(par, lm_par(X, y, EsQuadratic)));
    EXPECT_TRUE(same_bits(par, linreg(X1, y)));
    EXPECT_NEAR(lm_err(lm_val(X, par), y), 2.91816936743992, 1e-12);
}

TEST_F(StackLoss, SizesTheResultsAfterItsArgumentsAreRead)
{
    matrix par, data_and_error = y;
    par = lm_tstud(X, data_and_error, data_and_error, t, p, EsQuadratic);
    se = data_and_error;
    expect_full(par);
}

TEST_F(StackLoss, SubsetsAreRegressionsOfTheirOwn)
{
    expect_part(lm_tstud_c(X1, y, M, cond, se, t, p));
    matrix const par = lm_par_c(M, cond), f = lm_val_c(X1, par, cond);
    EXPECT_NEAR(lm_err(f, y), 4.14419005416143 * std::sqrt(18.0 / 21.0), 1e-12);
    // Two variables of X and an intercept behind them.
    EXPECT_TRUE(same_bits(lm_val_c(X, par, "1; 0; 1; 1"), f));
    EXPECT_EQ(f.colname(1), "");
}

TEST_F(StackLoss, AdmissibilityIsTestedFromTheCheapSide)
{
    // The largest are the acid's tail and the intercept's error.
    double const p_acid = 0.459, largest_se = 15.4665;
    struct
    {
        double lo, pmax, semax;
        int ok;
        bool tested;
    } const cases[] = {
        {-34, p_acid + 0.001, largest_se + 0.001, 1, true},
        {-33, 1, 100, 0, false}, // the column of ones counts as a variable
        {-34, p_acid - 0.001, 100, 0, true},
        {-34, 1, largest_se - 0.001, 0, true},
        {NaN, NaN, NaN, 1, true},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(testing::Message() << a.lo << ", " << a.pmax << ", " << a.semax);
        se = t = p = matrix(7.0);
        int ok = 5;
        matrix const par = lm_qtstud_c(X1, y, M, cond, se, t, p, a.lo, a.pmax, a.semax, ok);
        EXPECT_EQ(ok, a.ok);
        EXPECT_TRUE(same_bits(par, lm_par_c(M, cond)));
        if (a.tested)
            expect_part(par);
        else
            for (matrix const* m : {&se, &t, &p}) EXPECT_TRUE(same_bits(*m, matrix(7.0)));
    }
    // Without a variable nothing is tested, nor is an intercept read.
    for (char const* none : {"0; 0; 0; 0; 0", "0; 0; 0; 0; 1"}) {
        int ok = 0;
        se = matrix(7.0);
        EXPECT_EQ(lm_qtstud_c(X1, y, M, none, se, t, p, 1, 0, 0, ok).rows, 0);
        EXPECT_EQ(ok, 1);
        EXPECT_TRUE(same_bits(se, matrix(7.0)));
    }
}

TEST_F(StackLoss, SizesFallApartWhereTheConditionIsNoFlag)
{
    // 0.999 counts for k, 2.999 less the rounded last cell, and selects nothing.
    matrix const par = lm_tstud_c(X1, y, M, "1; 0.999; 0; 1; 0", se, t, p);
    ASSERT_EQ(par.rows, 2);
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

TEST(LinearModel, ValuesAreThoseOfTheBoundProduct)
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
}

TEST(LinearModel, ErrorIsTheRootMeanSquare)
{
    EXPECT_EQ(lm_err("1; 2; 3; 4", "2; 4; 3; 2"), 1.5);
    EXPECT_TRUE(std::isnan(lm_err(matrix(), matrix())));
}

TEST(LinearModel, LikelihoodTakesTheLinearValueForAProbability)
{
    // Counts at x = 0, 1, 2; R's glm(binomial(link = "identity")).
    matrix const x = "0; 0; 0; 0; 0; 0; 1; 1; 1; 1; 1; 2; 2; 2; 2; 2; 2; 2";
    matrix const y = "0; 0; 0; 0; 0; 1; 0; 0; 1; 0; 1; 1; 1; 0; 1; 1; 1; 1";
    expect_column(lm_par(x, y, EsQuadratic), {0.347639484978541, 0.133047210300429}, 1e-13);
    expect_column(lm_par(x, y, EsLikelihood), {0.346001690306892, 0.147172210477610}, 1e-5);
    for (int type : {2, -1}) {
        matrix const none = lm_par(x, y, static_cast<EsType>(type));
        EXPECT_TRUE(same_bits(none, varnow::zeros(2, 1)));
    }
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
    EXPECT_EQ(se(1), 0);
    EXPECT_TRUE(std::isinf(t(1)));
    EXPECT_EQ(p(1), 0);
    lm_tstud("1; 3", "2; 5", se, t, p, EsQuadratic);
    EXPECT_FALSE(std::isfinite(se(1)) && se(1) > 0);
}

using StackLossDeathTest = StackLoss;

TEST_F(StackLossDeathTest, RefusesAsTheOperationsDo)
{
    char const* const sizes = "nieprawidlowe wymiary macierzy";
    EXPECT_REFUSAL(lm_par(X, "1; 2", EsQuadratic), "MATRIX", "matrix linreg(matrix,matrix)", sizes);
    // Three variables and the intercept are more than three observations.
    EXPECT_REFUSAL(lm_tstud(X.row(c(1, 2, 3)), "1; 2; 3", se, t, p, EsQuadratic), "MATRIX",
                   "matrix linreg(matrix,matrix)", sizes);
    EXPECT_REFUSAL(lm_val(X, "1; 2; 3"), "MATRIX", "matrix mul(matrix,matrix)",
                   "niezgodne wymiary macierzy");
    EXPECT_REFUSAL(lm_err("1; 2", "1 2"), "MATRIX", "matrix operator -(matrix,matrix)",
                   "niezgodne wymiary macierzy");
    EXPECT_REFUSAL(lm_par_c(M, "1; 1"), "MATRIX", "linreg_c(matrix,matrix,int)",
                   "dlugosc wektora warunkowego niezgodna z wymiarami macierzy iloczynow");
    char const* const element = "double & operator ()(int)";
    // With a model intercept there is one parameter less than lm_val_c reads.
    EXPECT_REFUSAL_DETAIL(lm_tstud_c(X1, y, M, "1; 0; 1; 1; 1", se, t, p), "MATRIX", element,
                          "indeks poza zakresem", "3 x 1 : ( 4 )");
    EXPECT_REFUSAL_DETAIL(lm_val_c(X1, "1; 2", "1; 0; 1"), "MATRIX", element,
                          "indeks poza zakresem", "3 x 1 : ( 4 )");
    EXPECT_REFUSAL_DETAIL(lm_val_c(X1, "1; 2", cond), "MATRIX", element, "indeks poza zakresem",
                          "2 x 1 : ( 3 )");
}

} // namespace
} // namespace varnow
