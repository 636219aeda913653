#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace varnow {
namespace {

using test::same_bits;

double const NaN = std::numeric_limits<double>::quiet_NaN();

using scalar_model = double (*)(double, matrix&);
using scalar_slope = double (*)(double, matrix&, int);
using row_model = double (*)(matrix&, matrix&);
using row_slope = double (*)(matrix&, matrix&, int);

// The model's value is the observation itself, so that a test chooses it.
scalar_model const itself = [](double x, matrix&) { return x; };
row_model const itself_of_row = [](matrix& row, matrix&) { return double(row(1)); };
scalar_slope const slope_10 = [](double x, matrix&, int j) { return 10 * j + x; };
row_slope const slope_10_of_row = [](matrix& row, matrix&, int j) { return 10 * j + row(1); };

// But for the order in which sums meet; a NaN is near NaN.
void expect_near(double a, double b)
{
    EXPECT_TRUE(same_bits(a, b) || std::fabs(a - b) <= 1e-13 * std::fabs(b)) << a << ", not " << b;
}

TEST(FitError, IsTheRootMeanSquareOrMinusTheLogarithmOfTheLikelihood)
{
    matrix const none(0, 1), X("2; 1; 5");
    matrix moved = X; // whose rows stand in another order in memory
    moved.swap_rows(1, 3);
    double const error = std::sqrt(3.0), slope = (22 - 2 * 21 + 2 * 25) / std::sqrt(3.0 * 9);
    struct
    {
        matrix X, y;
        EsType type;
        double error, slope;
    } const cases[] = {
        // Differences 1, -2, 2: sqrt(9 / 3); slopes 22, 21, 25.
        {X, "1; 3; 3", EsQuadratic, error, slope},
        {moved, "3; 3; 1", EsQuadratic, error, slope},
        // y as a row, and with more columns and values than are looked at.
        {X, "1 3 3", EsQuadratic, error, slope},
        {X | X, "1 9; 3 9; 3 9; 9 9", EsQuadratic, error, slope},
        {"2 1 5", "1 3 3", EsQuadratic, 1, 22}, // a row of X is one observation
        {X, X, EsQuadratic, 0, NaN},
        {none, none, EsQuadratic, NaN, NaN},
        {none, none, EsLikelihood, -0.0, -0.0},
        // What leaves the open interval costs 100, unless it hits.
        {0.25, 1.0, EsLikelihood, -std::log(0.25), -20.25 / 0.25},
        {0.25, 0.0, EsLikelihood, -std::log(0.75), 20.25 / 0.75},
        {0.25, 0.5, EsLikelihood, -0.5 * std::log(0.1875), -0.25 * 20.25 / 0.1875},
        {"0; 1", "0; 1", EsLikelihood, 0, 0},
        {"0; -0.5; 1; 1.5", "1; 0; 0; 1", EsLikelihood, 400, 0},
        {NaN, 1.0, EsLikelihood, 0, 0},
        {"0.25; 0; 0.25", "1; 1; 0", EsLikelihood, 100 - std::log(0.1875), -81 + 27},
        // Any other measure.
        {"1; 2", "5; 5", static_cast<EsType>(-1), 0, 0},
        {"1; 2", "5; 5", static_cast<EsType>(2), 0, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(test::show(c.X) + " for " + test::show(c.y));
        matrix par(0.0);
        expect_near(err_fit(c.X, c.y, itself, par, c.type), c.error);
        expect_near(err_fit(c.X, c.y, itself_of_row, par, c.type), c.error);
        expect_near(derr_fit(c.X, c.y, itself, slope_10, par, 2, c.type), c.slope);
        expect_near(derr_fit(c.X, c.y, itself_of_row, slope_10_of_row, par, 2, c.type), c.slope);
    }
    matrix par(0.0);
    EXPECT_EQ(test::show(fun_fit(moved, itself, par)), "3x1 . | .: 5 | .: 1 | .: 2");
    EXPECT_EQ(test::show(fun_fit(~X, itself, par)), "1x1 . | .: 2");
}

// What a model has seen, by thread.
std::mutex guard;
std::map<std::thread::id, std::vector<std::string>> seen;
row_model const recorded = [](matrix& row, matrix&) {
    std::lock_guard<std::mutex> const lock(guard);
    seen[std::this_thread::get_id()].push_back(test::show(row));
    row.fill(-1); // its own
    return 0.0;
};

TEST(FitThreads, TakeBlocksOfWholeRowsWithTheirNames)
{
    for (int n : {10, 3}) {
        matrix X(n, 2), par(0.0);
        X.colname(1) = "a";
        X.colname(2) = "b";
        std::vector<std::string> rows;
        for (int i = 1; i <= n; ++i) {
            if (i != 2) X.rowname(i) = "r" + itot(i);
            X(i, 1) = i;
            X(i, 2) = 10 * i;
            rows.push_back(test::show(X.row(i)));
        }
        seen.clear();
        fun_fit(X, recorded, par);
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[std::this_thread::get_id()], rows);

        for (EsType type : {EsQuadratic, EsLikelihood}) {
            seen.clear();
            err_fit(X, zeros(n, 1), recorded, par, type);
            std::set<std::vector<std::string>> blocks, expected;
            for (auto const& [thread, block] : seen) blocks.insert(block);
            auto at = rows.begin();
            for (int length : n == 10 ? std::vector<int>{3, 3, 2, 2} : std::vector<int>{1, 1, 1}) {
                expected.emplace(at, at + length);
                at += length;
            }
            EXPECT_EQ(blocks, expected);
        }
    }
}

TEST(FitThreads, ExceptionsOfTheModelReachTheCaller)
{
    row_model const thrower = [](matrix& row, matrix&) -> double {
        if (row(1) > 5) throw std::range_error("beyond");
        return row(1);
    };
    matrix par(0.0);
    EXPECT_THROW(err_fit("1; 2; 3; 9", "1; 2; 3; 4", thrower, par, EsQuadratic), std::range_error);
}

// Nonlinear regressions of the NIST statistical reference data sets.
scalar_model const boxbod = [](double x, matrix& b) { return b(1) * (1 - std::exp(-b(2) * x)); };
scalar_model const mgh09 = [](double x, matrix& b) {
    return b(1) * (x * x + x * b(2)) / (x * x + x * b(3) + b(4));
};
scalar_model const mgh10 = [](double x, matrix& b) { return b(1) * std::exp(b(2) / (x + b(3))); };
scalar_model const thurber = [](double x, matrix& b) {
    return (b(1) + x * (b(2) + x * (b(3) + x * b(4)))) / (1 + x * (b(5) + x * (b(6) + x * b(7))));
};
scalar_model const eckerle4 = [](double x, matrix& b) {
    return b(1) / b(2) * std::exp(-std::pow((x - b(3)) / b(2), 2) / 2);
};

TEST(Fits, ReachTheCertifiedValues)
{
    struct
    {
        char const* name;
        scalar_model f;
        matrix data;       // x and y
        matrix parameters; // a start far away, a nearer one and the certified values
        double squares;    // certified sum of squared residuals
        int far, near;     // digits to be reached; 0 where the simplex may end elsewhere
    } const sets[] = {
        {"BoxBOD", boxbod, "1 2 3 5 7 10; 109 149 149 191 213 224",
         "1 100 213.80940889; 1 0.75 0.54723748542", 1.1680088766E+03, 0, 7},
        {"MGH09", mgh09,
         "4 2 1 0.5 0.25 0.167 0.125 0.1 0.0833 0.0714 0.0625;"
         "0.1957 0.1947 0.1735 0.16 0.0844 0.0627 0.0456 0.0342 0.0323 0.0235 0.0246",
         "25 0.25 0.19280693458; 39 0.39 0.19128232873; 41.5 0.415 0.12305650693;"
         "39 0.39 0.13606233068",
         3.0750560385E-04, 0, 5},
        {"MGH10", mgh10,
         "50 55 60 65 70 75 80 85 90 95 100 105 110 115 120 125;"
         "34780 28610 23650 19630 16370 13720 11540 9744 8261 7030 6005 5147 4427 3820 3307 2872",
         "2 0.02 5.6096364710E-03; 400000 4000 6181.3463463; 25000 250 345.22363462",
         8.7945855171E+01, 0, 5},
        {"Thurber", thurber,
         "-3.067 -2.981 -2.921 -2.912 -2.84 -2.797 -2.702 -2.699 -2.633 -2.481 -2.363 -2.322 "
         "-1.501 -1.46 -1.274 -1.212 -1.1 -1.046 -0.915 -0.714 -0.566 -0.545 -0.4 -0.309 -0.109 "
         "-0.103 0.01 0.119 0.377 0.79 0.963 1.006 1.115 1.572 1.841 2.047 2.2;"
         "80.574 84.248 87.264 87.195 89.076 89.608 89.868 90.101 92.405 95.854 100.696 101.06 "
         "401.672 390.724 567.534 635.316 733.054 759.087 894.206 990.785 1090.109 1080.914 "
         "1122.643 1178.351 1260.531 1273.514 1288.339 1327.543 1353.863 1414.509 1425.208 "
         "1421.384 1442.962 1464.35 1468.705 1447.894 1457.628",
         "1000 1300 1288.13968; 1000 1500 1491.0792535; 400 500 583.23836877; 40 75 75.416644291;"
         "0.7 1 0.96629502864; 0.3 0.4 0.39797285797; 0.03 0.05 0.049727297349",
         5.6427082397E+03, 5, 5},
        {"Eckerle4", eckerle4,
         "400 405 410 415 420 425 430 435 436.5 438 439.5 441 442.5 444 445.5 447 448.5 450 451.5 "
         "453 454.5 456 457.5 459 460.5 462 463.5 465 470 475 480 485 490 495 500;"
         "0.0001575 0.0001699 0.000235 0.0003102 0.0004917 0.000871 0.0017418 0.00464 0.0065895 "
         "0.0097302 0.0149002 0.023731 0.0401683 0.0712559 0.1264458 0.2073413 0.2902366 0.3445623 "
         "0.3698049 0.3668534 0.3106727 0.2078154 0.1164354 0.0616764 0.03372 0.0194023 0.0117831 "
         "0.0074357 0.0022732 0.00088 0.0004579 0.0002345 0.0001586 0.0001143 0.000071",
         "1 1.5 1.5543827178; 10 5 4.0888321754; 500 450 451.54121844", 1.4635887487E-03, 7, 7},
    };
    for (auto const& s : sets) {
        SCOPED_TRACE(s.name);
        matrix const x = ~s.data.row(1), y = s.data.row(2), certified = s.parameters.col(3);
        matrix par = certified;
        EXPECT_NEAR(x.rows * std::pow(err_fit(x, y, s.f, par, EsQuadratic), 2), s.squares,
                    1e-9 * s.squares);
        for (int k : {1, 2}) {
            par = s.parameters.col(k);
            // A simplex that has shrunk begins anew around its answer.
            for (int runs = 0; runs < 20 && !fits(x, y, s.f, par, 1e-11, EsQuadratic);) ++runs;
            int const digits = k == 1 ? s.far : s.near;
            for (int j = 1; j <= par.rows && digits > 0; ++j)
                EXPECT_NEAR(par(j) / certified(j), 1, std::pow(10, -digits)) << k << ", " << j;
        }
    }
}

scalar_model const logistic = [](double x, matrix& b) {
    return 1 / (1 + std::exp(-b(1) - b(2) * x));
};
scalar_slope const d_logistic = [](double x, matrix& b, int j) {
    double const p = logistic(x, b);
    return (j == 1 ? 1 : x) * p * (1 - p);
};

TEST(Fits, LikelihoodMeetsTheShares)
{
    // Shares of 0.75 at x = 0 and 0.2 at x = 1: the optimum has these.
    matrix const X("0; 1"), y("0.75; 0.2");
    double const best =
        -0.75 * std::log(0.75) - 0.25 * std::log(0.25) - 0.2 * std::log(0.2) - 0.8 * std::log(0.8);
    for (EsSpeed speed : {SpeedSlow, SpeedMedium, SpeedFast, SpeedFastest}) {
        SCOPED_TRACE(speed);
        matrix par("0.5; 0.5");
        fitx(X, y, logistic, speed < SpeedFast ? d_logistic : nullptr, par, 1e-9, speed,
             EsLikelihood, BFGS);
        EXPECT_NEAR(par(1), std::log(3.0), 1e-6);
        EXPECT_NEAR(par(2), std::log(0.25 / 3), 1e-6);
        EXPECT_NEAR(err_fit(X, y, logistic, par, EsLikelihood), best, 1e-9);
    }
    // The library's own linear predictor serves as a row model.
    matrix line("0; 0");
    EXPECT_TRUE(fitu(X, y, lm_val1, lm_dval1, line, 1e-9, EsQuadratic, BFGS));
    EXPECT_NEAR(line(2), 0.75, 1e-8);
    EXPECT_NEAR(line(1), 0.2 - 0.75, 1e-8);
}

TEST(FitsDeathTest, RefuseWhatCannotBeFitted)
{
    matrix const X("1; 2; 3"), y("1; 2; 3"), narrow(3, 0);
    matrix par("1; 1"), wide("1 2");
    scalar_model const f = nullptr;
    scalar_slope const df = nullptr;
    row_model const rf = nullptr;
    row_slope const rdf = nullptr;
    std::string const scalar = "double (*)(double,matrix)", row = "double (*)(matrix,matrix)";
    std::string const scalar_d = "double (*)(double,matrix,int)",
                      row_d = "double (*)(matrix,matrix,int)";
    std::string const error = "double err_fit(matrix,matrix," + scalar + ",matrix,EsType)";
    std::string const values = "matrix fun_fit(matrix," + scalar + ",matrix)";
    char const *const none = "brak funkcji", *const sizes = "niezgodne wymiary macierzy";
    test::refusal const cases[] = {
        {[&] { fun_fit(X, f, par); }, values, none},
        {[&] { fun_fit(X, rf, par); }, "matrix fun_fit(matrix," + row + ",matrix)", none},
        {[&] { err_fit(X, y, rf, par, EsQuadratic); },
         "double err_fit(matrix,matrix," + row + ",matrix,EsType)", none},
        {[&] { derr_fit(X, y, itself, df, par, 1, EsQuadratic); },
         "double derr_fit(matrix,matrix," + scalar + "," + scalar_d + ",matrix,int,EsType)", none},
        {[&] { fitu(X, y, itself_of_row, rdf, par, 1e-6, EsQuadratic, BFGS); },
         "bool fitu(matrix,matrix," + row + "," + row_d + ",matrix,double,EsType,EsMethod)", none},
        {[&] { fits(X, y, f, par, 1e-6, EsQuadratic); },
         "bool fits(matrix,matrix," + scalar + ",matrix,double,EsType)", none},
        {[&] { fitx(X, y, itself, df, par, 1e-6, SpeedMedium, EsQuadratic, BFGS); },
         "fitx(matrix,matrix," + scalar + "," + scalar_d +
             ",matrix,double,EsSpeed,EsType,EsMethod)",
         none},
        {[&] { err_fit(X, "1; 2", itself, par, EsQuadratic); }, error, sizes},
        {[&] { err_fit(X, matrix(), itself, par, EsLikelihood); }, error, sizes},
        {[&] { err_fit(narrow, y, itself, par, EsQuadratic); }, error, sizes},
        {[&] { fun_fit(narrow, itself, par); }, values, sizes},
        {[&] { fits(X, y, itself, wide, 1e-6, EsQuadratic); }, "setcol(Vector,matrix)",
         "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu"},
        // A model that asks for a parameter that is not there, on several threads at once.
        {[&] { err_fit(X, y, f_C, par, EsQuadratic); }, "double & operator ()(int)",
         "indeks poza zakresem", "2 x 1 : ( 3 )"},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
} // namespace varnow
