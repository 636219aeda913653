#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace varnow {
namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();

using scalar_model = double (*)(double, matrix&);
using scalar_slope = double (*)(double, matrix&, int);
using row_model = double (*)(matrix&, matrix&);
using row_slope = double (*)(matrix&, matrix&, int);

// The model's value is the observation itself, so that a test chooses it.
double itself(double x, matrix&)
{
    return x;
}
double itself_of_row(matrix& row, matrix&)
{
    return row(1);
}
double slope_10(double x, matrix&, int j)
{
    return 10 * j + x;
}
double slope_10_of_row(matrix& row, matrix& par, int j)
{
    return slope_10(row(1), par, j);
}

// But for the order in which sums meet; a NaN is near NaN.
void expect_near(double a, double b)
{
    EXPECT_TRUE(test::same_bits(a, b) || std::fabs(a - b) <= 1e-13 * std::fabs(b))
        << a << " against " << b;
}

// Both forms of every measure, on columns.
struct Measured
{
    double error, slope;
};
Measured measured(matrix const& X, matrix const& y, EsType type, int j = 1)
{
    matrix par(0.0);
    double const error = err_fit(X, y, itself, par, type);
    double const slope = derr_fit(X, y, itself, slope_10, par, j, type);
    expect_near(err_fit(X, y, itself_of_row, par, type), error);
    expect_near(derr_fit(X, y, itself_of_row, slope_10_of_row, par, j, type), slope);
    return {error, slope};
}

TEST(FitError, QuadraticIsTheRootMeanSquare)
{
    // Differences 1, -2, 2: sqrt(9 / 3); slopes 22, 21, 25 by hand.
    matrix const X("2; 1; 5"), y("1; 3; 3");
    Measured const m = measured(X, y, EsQuadratic, 2);
    EXPECT_DOUBLE_EQ(m.error, std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(m.slope, (22 - 2 * 21 + 2 * 25) / std::sqrt(3.0 * 9.0));

    EXPECT_EQ(measured(X, X, EsQuadratic).error, 0.0);
    EXPECT_TRUE(std::isnan(measured(X, X, EsQuadratic).slope));
    matrix const none(0, 1);
    EXPECT_TRUE(std::isnan(measured(none, none, EsQuadratic).error));
}

TEST(FitError, LikelihoodCountsWhatLeavesTheOpenInterval)
{
    struct Case
    {
        double p, y, cost, slope;
    };
    Case const cases[] = {
        {0.25, 1.0, -std::log(0.25), -10.25 / 0.25},
        {0.25, 0.0, -std::log(0.75), 10.25 / 0.75},
        {0.25, 0.5, -0.5 * std::log(0.25 * 0.75), -0.25 * 10.25 / 0.1875},
        {0.0, 0.0, 0.0, 0.0},
        {0.0, 1.0, 100.0, 0.0},
        {-0.5, 0.0, 100.0, 0.0},
        {1.0, 1.0, 0.0, 0.0},
        {1.0, 0.0, 100.0, 0.0},
        {1.5, 1.0, 100.0, 0.0},
        {NaN, 1.0, 0.0, 0.0},
    };
    double cost = 0.0, slope = 0.0;
    matrix X(0, 1), y(0, 1);
    for (Case const& c : cases) {
        Measured const m = measured(c.p, c.y, EsLikelihood);
        EXPECT_DOUBLE_EQ(m.error, c.cost) << c.p << " for " << c.y;
        EXPECT_DOUBLE_EQ(m.slope, c.slope) << c.p << " for " << c.y;
        cost += c.cost;
        slope += c.slope;
        X &= matrix(c.p);
        y &= matrix(c.y);
    }
    EXPECT_NEAR(measured(X, y, EsLikelihood).error, cost, 1e-12 * cost);
    EXPECT_NEAR(measured(X, y, EsLikelihood).slope, slope, 1e-12 * std::fabs(slope));
    matrix const none(0, 1);
    EXPECT_TRUE(test::same_bits(measured(none, none, EsLikelihood).error, -0.0));
}

TEST(FitError, IsZeroForAnotherMeasure)
{
    for (int type : {-1, 2}) {
        Measured const m = measured("1; 2", "5; 5", static_cast<EsType>(type));
        EXPECT_EQ(m.error, 0.0);
        EXPECT_EQ(m.slope, 0.0);
        // A descent stops where it stands; a simplex shrinks onto its start.
        matrix par("3");
        EXPECT_TRUE(
            fitu("1; 2", "5; 5", itself, slope_10, par, 1e-6, static_cast<EsType>(type), BFGS));
        EXPECT_EQ(par(1), 3.0);
    }
}

TEST(FitError, ReadsRowsAndColumns)
{
    matrix par(0.0);
    matrix const X("2; 1; 5"), y("1; 3; 3");
    // y as a row, and with more columns and values than are looked at.
    EXPECT_DOUBLE_EQ(err_fit(X, ~y, itself, par, EsQuadratic), std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(err_fit(X, "1 9; 3 9; 3 9; 9 9", itself, par, EsQuadratic), std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(err_fit(X | y, y, itself, par, EsQuadratic), std::sqrt(3.0));
    // A row of X is one observation.
    EXPECT_DOUBLE_EQ(err_fit(~X, ~y, itself, par, EsQuadratic), 1.0);
    EXPECT_TRUE(test::same_bits(fun_fit(~X, itself, par), matrix(2.0)));
    EXPECT_TRUE(test::same_bits(fun_fit(X, itself, par), X));
    // Rows in another order in memory.
    matrix moved = X;
    moved.swap_rows(1, 3);
    EXPECT_TRUE(test::same_bits(fun_fit(moved, itself, par), matrix("5; 1; 2")));
    EXPECT_DOUBLE_EQ(err_fit(moved, "4; 3; 0", itself, par, EsQuadratic), std::sqrt(3.0));
}

// What a model has seen, by thread.
std::mutex guard;
std::map<std::thread::id, std::vector<std::string>> seen;

double recorded(matrix& row, matrix&)
{
    std::string what;
    for (int j = 1; j <= row.cols; ++j)
        what += std::string(row.colname(j).str) + std::to_string(static_cast<int>(row(j))) + " ";
    std::lock_guard<std::mutex> const lock(guard);
    seen[std::this_thread::get_id()].push_back(row.rowname(1).str + (": " + what));
    row.fill(-1); // its own
    return 0.0;
}

TEST(FitThreads, TakeBlocksOfWholeRowsWithTheirNames)
{
    for (int n : {10, 3}) {
        matrix X(n, 2);
        std::vector<std::string> rows;
        for (int i = 1; i <= n; ++i) {
            X.rowname(i) = i == 2 ? Text() : "r" + itot(i);
            X(i, 1) = i;
            X(i, 2) = 10 * i;
            rows.push_back((i == 2 ? "" : "r" + std::to_string(i)) + ": a" + std::to_string(i) +
                           " b" + std::to_string(10 * i) + " ");
        }
        X.colname(1) = "a";
        X.colname(2) = "b";
        matrix par(0.0);

        seen.clear();
        fun_fit(X, recorded, par);
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[std::this_thread::get_id()], rows);

        for (EsType type : {EsQuadratic, EsLikelihood}) {
            seen.clear();
            err_fit(X, zeros(n, 1), recorded, par, type);
            std::vector<std::vector<std::string>> blocks, expected;
            for (auto const& [thread, block] : seen) blocks.push_back(block);
            auto at = rows.begin();
            for (int length : n == 10 ? std::vector<int>{3, 3, 2, 2} : std::vector<int>{1, 1, 1}) {
                expected.emplace_back(at, at + length);
                at += length;
            }
            std::sort(blocks.begin(), blocks.end(), [](auto const& a, auto const& b) {
                return std::stoi(a.back().substr(a.back().find('a') + 1)) <
                       std::stoi(b.back().substr(b.back().find('a') + 1));
            });
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

// The nonlinear regressions of the NIST statistical reference data sets.
double misra1a(double x, matrix& b)
{
    return b(1) * (1 - std::exp(-b(2) * x));
}
double d_misra1a(double x, matrix& b, int j)
{
    double const e = std::exp(-b(2) * x);
    return j == 1 ? 1 - e : b(1) * x * e;
}
double misra1b(double x, matrix& b)
{
    return b(1) * (1 - std::pow(1 + b(2) * x / 2, -2));
}
double misra1c(double x, matrix& b)
{
    return b(1) * (1 - 1 / std::sqrt(1 + 2 * b(2) * x));
}
double misra1d(double x, matrix& b)
{
    return b(1) * b(2) * x / (1 + b(2) * x);
}
double dan_wood(double x, matrix& b)
{
    return b(1) * std::pow(x, b(2));
}
double d_dan_wood(double x, matrix& b, int j)
{
    double const p = std::pow(x, b(2));
    return j == 1 ? p : b(1) * p * std::log(x);
}
double mgh09(double x, matrix& b)
{
    return b(1) * (x * x + x * b(2)) / (x * x + x * b(3) + b(4));
}
double d_mgh09(double x, matrix& b, int j)
{
    double const above = x * x + x * b(2), below = x * x + x * b(3) + b(4);
    double const back = -b(1) * above / (below * below);
    return j == 1 ? above / below : j == 2 ? b(1) * x / below : j == 3 ? back * x : back;
}
double rat42(double x, matrix& b)
{
    return b(1) / (1 + std::exp(b(2) - b(3) * x));
}
double d_rat42(double x, matrix& b, int j)
{
    double const e = std::exp(b(2) - b(3) * x), back = -b(1) * e / ((1 + e) * (1 + e));
    return j == 1 ? 1 / (1 + e) : j == 2 ? back : -x * back;
}
double rat43(double x, matrix& b)
{
    return b(1) / std::pow(1 + std::exp(b(2) - b(3) * x), 1 / b(4));
}
double mgh10(double x, matrix& b)
{
    return b(1) * std::exp(b(2) / (x + b(3)));
}
double thurber(double x, matrix& b)
{
    return (b(1) + x * (b(2) + x * (b(3) + x * b(4)))) / (1 + x * (b(5) + x * (b(6) + x * b(7))));
}
double mgh17(double x, matrix& b)
{
    return b(1) + b(2) * std::exp(-x * b(4)) + b(3) * std::exp(-x * b(5));
}
double eckerle4(double x, matrix& b)
{
    double const z = (x - b(3)) / b(2);
    return b(1) / b(2) * std::exp(-z * z / 2);
}
double roszman1(double x, matrix& b)
{
    return b(1) - b(2) * x - std::atan(b(3) / (x - b(4))) / std::acos(-1.0);
}
double lanczos3(double x, matrix& b)
{
    return b(1) * std::exp(-b(2) * x) + b(3) * std::exp(-b(4) * x) + b(5) * std::exp(-b(6) * x);
}

char const* const misra_x =
    "77.6; 114.9; 141.1; 190.8; 239.9; 289; 332.8; 378.4; 434.8; 477.3; 536.8; 593.1; 689.1; 760";
char const* const misra_y = "10.07; 14.73; 17.94; 23.93; 29.61; 35.18; 40.02; 44.82; 50.76; 55.05; "
                            "61.01; 66.40; 75.47; 81.78";

struct Reference
{
    char const* name;
    scalar_model f;
    scalar_slope df;
    matrix x, y, starts, certified; // the first start is farther away
    double squares;                 // certified sum of squared residuals
    double from_1, from_2;          // digits to be reached; 0 where the simplex may end elsewhere
};
std::vector<Reference> references()
{
    return {
        {"Misra1a", misra1a, d_misra1a, misra_x, misra_y, "500 250; 0.0001 0.0005",
         "238.94212918; 5.5015643181E-04", 1.2455138894E-01, 6, 6},
        {"Misra1b", misra1b, nullptr, misra_x, misra_y, "500 300; 0.0001 0.0002",
         "337.99746163; 3.9039091287E-04", 7.5464681533E-02, 6, 6},
        {"Misra1c", misra1c, nullptr, misra_x, misra_y, "500 600; 0.0001 0.0002",
         "636.42725809; 2.0813627256E-04", 4.0966836971E-02, 6, 6},
        {"Misra1d", misra1d, nullptr, misra_x, misra_y, "500 450; 0.0001 0.0003",
         "437.36970754; 3.0227324449E-04", 5.6419295283E-02, 6, 6},
        {"DanWood", dan_wood, d_dan_wood, "1.309; 1.471; 1.490; 1.565; 1.611; 1.680",
         "2.138; 3.421; 3.597; 4.340; 4.882; 5.660", "1 0.7; 5 4", "0.76886226176; 3.8604055871",
         4.3173084083E-03, 7, 7},
        {"BoxBOD", misra1a, d_misra1a, "1; 2; 3; 5; 7; 10", "109; 149; 149; 191; 213; 224",
         "1 100; 1 0.75", "213.80940889; 0.54723748542", 1.1680088766E+03, 0, 7},
        {"MGH09", mgh09, d_mgh09, "4; 2; 1; 0.5; 0.25; 0.167; 0.125; 0.1; 0.0833; 0.0714; 0.0625",
         "0.1957; 0.1947; 0.1735; 0.16; 0.0844; 0.0627; 0.0456; 0.0342; 0.0323; 0.0235; 0.0246",
         "25 0.25; 39 0.39; 41.5 0.415; 39 0.39",
         "0.19280693458; 0.19128232873; 0.12305650693; 0.13606233068", 3.0750560385E-04, 0, 5},
        {"Rat42", rat42, d_rat42, "9; 14; 21; 28; 42; 57; 63; 70; 79",
         "8.93; 10.8; 18.59; 22.33; 39.35; 56.11; 61.73; 64.62; 67.08", "100 75; 1 2.5; 0.1 0.07",
         "72.462237576; 2.6180768402; 0.067359200066", 8.0565229338, 7, 7},
        {"Rat43", rat43, nullptr, ~seq(1, 15),
         "16.08; 33.83; 65.8; 97.2; 191.55; 326.2; 386.87; 520.53; 590.03; 651.92; 724.93; 699.56; "
         "689.96; 637.56; 717.41",
         "100 700; 10 5; 1 0.75; 1 1.3", "699.6415127; 5.2771253025; 0.75962938329; 1.2792483859",
         8.7864049080E+03, 0, 5},
        {"MGH10", mgh10, nullptr, ~seq(50, 125, 5),
         "34780; 28610; 23650; 19630; 16370; 13720; 11540; 9744; 8261; 7030; 6005; 5147; 4427; "
         "3820; 3307; 2872",
         "2 0.02; 400000 4000; 25000 250", "5.6096364710E-03; 6181.3463463; 345.22363462",
         8.7945855171E+01, 0, 5},
        {"Thurber", thurber, nullptr,
         "-3.067; -2.981; -2.921; -2.912; -2.840; -2.797; -2.702; -2.699; -2.633; -2.481; -2.363; "
         "-2.322; -1.501; -1.460; -1.274; -1.212; -1.100; -1.046; -0.915; -0.714; -0.566; -0.545; "
         "-0.400; -0.309; -0.109; -0.103; 0.010; 0.119; 0.377; 0.790; 0.963; 1.006; 1.115; 1.572; "
         "1.841; 2.047; 2.200",
         "80.574; 84.248; 87.264; 87.195; 89.076; 89.608; 89.868; 90.101; 92.405; 95.854; 100.696; "
         "101.060; 401.672; 390.724; 567.534; 635.316; 733.054; 759.087; 894.206; 990.785; "
         "1090.109; 1080.914; 1122.643; 1178.351; 1260.531; 1273.514; 1288.339; 1327.543; "
         "1353.863; 1414.509; 1425.208; 1421.384; 1442.962; 1464.350; 1468.705; 1447.894; 1457.628",
         "1000 1300; 1000 1500; 400 500; 40 75; 0.7 1; 0.3 0.4; 0.03 0.05",
         "1288.13968; 1491.0792535; 583.23836877; 75.416644291; 0.96629502864; 0.39797285797; "
         "0.049727297349",
         5.6427082397E+03, 5, 5},
        {"MGH17", mgh17, nullptr, ~seq(0, 320, 10),
         "0.844; 0.908; 0.932; 0.936; 0.925; 0.908; 0.881; 0.850; 0.818; 0.784; 0.751; 0.718; "
         "0.685; 0.658; 0.628; 0.603; 0.580; 0.558; 0.538; 0.522; 0.506; 0.490; 0.478; 0.467; "
         "0.457; 0.448; 0.438; 0.431; 0.424; 0.420; 0.414; 0.411; 0.406",
         "50 0.5; 150 1.5; -100 -1; 1 0.01; 2 0.02",
         "0.37541005211; 1.9358469127; -1.4646871366; 0.01286753464; 0.022122699662",
         5.4648946975E-05, 0, 5},
        {"Eckerle4", eckerle4, nullptr,
         "400; 405; 410; 415; 420; 425; 430; 435; 436.5; 438; 439.5; 441; 442.5; 444; 445.5; 447; "
         "448.5; 450; 451.5; 453; 454.5; 456; 457.5; 459; 460.5; 462; 463.5; 465; 470; 475; 480; "
         "485; 490; 495; 500",
         "0.0001575; 0.0001699; 0.0002350; 0.0003102; 0.0004917; 0.0008710; 0.0017418; 0.0046400; "
         "0.0065895; 0.0097302; 0.0149002; 0.0237310; 0.0401683; 0.0712559; 0.1264458; 0.2073413; "
         "0.2902366; 0.3445623; 0.3698049; 0.3668534; 0.3106727; 0.2078154; 0.1164354; 0.0616764; "
         "0.0337200; 0.0194023; 0.0117831; 0.0074357; 0.0022732; 0.0008800; 0.0004579; 0.0002345; "
         "0.0001586; 0.0001143; 0.0000710",
         "1 1.5; 10 5; 500 450", "1.5543827178; 4.0888321754; 451.54121844", 1.4635887487E-03, 7,
         7},
        {"Roszman1", roszman1, nullptr,
         "-4868.68; -4868.09; -4867.41; -3375.19; -3373.14; -3372.03; -2473.74; -2472.35; "
         "-2469.45; -1894.65; -1893.40; -1497.24; -1495.85; -1493.41; -1208.68; -1206.18; "
         "-1206.04; -997.92; -996.61; -996.31; -834.94; -834.66; -710.03; -530.16; -464.17",
         "0.252429; 0.252141; 0.251809; 0.297989; 0.296257; 0.295319; 0.339603; 0.337731; "
         "0.333820; 0.389510; 0.386998; 0.438864; 0.434887; 0.427893; 0.471568; 0.461699; "
         "0.461144; 0.513532; 0.506641; 0.505062; 0.535648; 0.533726; 0.568064; 0.612886; 0.624169",
         "0.1 0.2; -0.00001 -0.000005; 1000 1200; -100 -150",
         "0.20196866396; -6.1953516256E-06; 1204.4556708; -181.34269537", 4.9484847331E-04, 5, 5},
        {"Lanczos3", lanczos3, nullptr, ~seq(0, 23) * 0.05,
         "2.5134; 2.0443; 1.6684; 1.3664; 1.1232; 0.9269; 0.7679; 0.6389; 0.5338; 0.4479; 0.3776; "
         "0.3197; 0.2720; 0.2325; 0.1997; 0.1723; 0.1493; 0.1301; 0.1138; 0.1000; 0.0883; 0.0783; "
         "0.0698; 0.0624",
         "1.2 0.5; 0.3 0.7; 5.6 3.6; 5.5 4.2; 6.5 4; 7.6 6.3",
         "0.086816414977; 0.95498101505; 0.84400777463; 2.9515951832; 1.5825685901; 4.9863565084",
         1.6117193594E-08, 0, 0},
    };
}

double fewest_digits(matrix const& found, matrix const& certified)
{
    double fewest = 11; // as many as are certified
    for (int j = 1; j <= found.rows; ++j)
        fewest = std::fmin(fewest, -std::log10(std::fabs(found(j) / certified(j) - 1)));
    return fewest;
}

TEST(Fits, ReachTheCertifiedValues)
{
    for (Reference const& r : references()) {
        SCOPED_TRACE(r.name);
        matrix par = r.certified;
        double const n = r.x.rows;
        EXPECT_NEAR(n * std::pow(err_fit(r.x, r.y, r.f, par, EsQuadratic), 2), r.squares,
                    1e-9 * r.squares);

        for (int k : {1, 2}) {
            par = r.starts.col(k);
            int runs = 0;
            // A simplex that has shrunk begins anew around its answer.
            while (runs < 20 && ++runs && !fits(r.x, r.y, r.f, par, 1e-11, EsQuadratic)) {
            }
            double const simplex = fewest_digits(par, r.certified),
                         wanted = k == 1 ? r.from_1 : r.from_2;
            if (wanted > 0) {
                EXPECT_GE(simplex, wanted) << "from start " << k;
            }
            std::printf("%-8s start %d: fits %4.1f digits in %d runs%s", r.name, k, simplex, runs,
                        simplex < 4 ? ", not reached" : "");
            if (r.df) {
                par = r.starts.col(k);
                bool const ended = fitu(r.x, r.y, r.f, r.df, par, 1e-11, EsQuadratic, BFGS);
                double const descent = fewest_digits(par, r.certified);
                std::printf("; fitu %4.1f digits, %s%s", descent, ended ? "ended" : "stuck",
                            descent < 4 ? ", not reached" : "");
            }
            std::printf("\n");
        }
    }
}

double logistic(double x, matrix& b)
{
    return 1 / (1 + std::exp(-b(1) - b(2) * x));
}
double d_logistic(double x, matrix& b, int j)
{
    double const p = logistic(x, b);
    return (j == 1 ? 1 : x) * p * (1 - p);
}

TEST(Fits, LikelihoodMeetsTheShares)
{
    // 30 of 40 at x = 0 and 12 of 60 at x = 1: the optimum has these shares.
    matrix X(100, 1), y(100, 1);
    for (int i = 1; i <= 100; ++i) {
        X(i) = i > 40;
        y(i) = i <= 30 || i > 88;
    }
    double const b1 = std::log(3.0), b2 = std::log(0.25) - std::log(3.0);
    double const best =
        -30 * std::log(0.75) - 10 * std::log(0.25) - 12 * std::log(0.2) - 48 * std::log(0.8);
    for (int speed = SpeedSlow; speed <= SpeedFastest; ++speed) {
        SCOPED_TRACE(speed);
        matrix par("0.5; 0.5");
        fitx(X, y, logistic, speed < SpeedFast ? d_logistic : nullptr, par, 1e-9,
             static_cast<EsSpeed>(speed), EsLikelihood, BFGS);
        EXPECT_NEAR(par(1), b1, 1e-6);
        EXPECT_NEAR(par(2), b2, 1e-6);
        EXPECT_NEAR(err_fit(X, y, logistic, par, EsLikelihood), best, 1e-9);
    }
    // A maximum has no slope; the library's own linear predictor serves as a row model.
    matrix par(2, 1);
    par(1) = b1;
    par(2) = b2;
    for (int j : {1, 2})
        EXPECT_NEAR(derr_fit(X, y, logistic, d_logistic, par, j, EsLikelihood), 0.0, 1e-12);
    matrix line("0; 0");
    EXPECT_TRUE(fitu(X, y, lm_val1, lm_dval1, line, 1e-9, EsQuadratic, BFGS));
    EXPECT_NEAR(line(2), 0.75, 1e-8);
    EXPECT_NEAR(line(1), 0.2 - 0.75, 1e-8);
}

TEST(Fits, ResponseCurveIsFoundAgain)
{
    matrix X = ~linspace(-3, 3, 200), truth("2; 1.5; -0.5; 0.25");
    matrix const y = fun_fit(X, f_C, truth);
    matrix par("1; 1; 0.1; 0.1");
    fitx(X, y, f_C, df_C, par, 1e-10, SpeedMedium, EsQuadratic, BFGS);
    EXPECT_LT(double(matrix(max(abs(par - truth)))), 1e-6);
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
    char const* const none = "brak funkcji";
    EXPECT_REFUSAL(fun_fit(X, f, par), "MATRIX", "matrix fun_fit(matrix," + scalar + ",matrix)",
                   none);
    EXPECT_REFUSAL(fun_fit(X, rf, par), "MATRIX", "matrix fun_fit(matrix," + row + ",matrix)",
                   none);
    EXPECT_REFUSAL(err_fit(X, y, rf, par, EsQuadratic), "MATRIX",
                   "double err_fit(matrix,matrix," + row + ",matrix,EsType)", none);
    EXPECT_REFUSAL(
        derr_fit(X, y, itself, df, par, 1, EsQuadratic), "MATRIX",
        "double derr_fit(matrix,matrix," + scalar + "," + scalar_d + ",matrix,int,EsType)", none);
    EXPECT_REFUSAL(
        fitu(X, y, itself_of_row, rdf, par, 1e-6, EsQuadratic, BFGS), "MATRIX",
        "bool fitu(matrix,matrix," + row + "," + row_d + ",matrix,double,EsType,EsMethod)", none);
    EXPECT_REFUSAL(fits(X, y, f, par, 1e-6, EsQuadratic), "MATRIX",
                   "bool fits(matrix,matrix," + scalar + ",matrix,double,EsType)", none);
    EXPECT_REFUSAL(fitx(X, y, itself, df, par, 1e-6, SpeedMedium, EsQuadratic, BFGS), "MATRIX",
                   "fitx(matrix,matrix," + scalar + "," + scalar_d +
                       ",matrix,double,EsSpeed,EsType,EsMethod)",
                   none);

    char const* const sizes = "niezgodne wymiary macierzy";
    std::string const error = "double err_fit(matrix,matrix," + scalar + ",matrix,EsType)";
    EXPECT_REFUSAL(err_fit(X, "1; 2", itself, par, EsQuadratic), "MATRIX", error, sizes);
    EXPECT_REFUSAL(err_fit(X, matrix(), itself, par, EsLikelihood), "MATRIX", error, sizes);
    EXPECT_REFUSAL(err_fit(narrow, y, itself, par, EsQuadratic), "MATRIX", error, sizes);
    EXPECT_REFUSAL(fun_fit(narrow, itself, par), "MATRIX",
                   "matrix fun_fit(matrix," + scalar + ",matrix)", sizes);
    EXPECT_REFUSAL(fits(X, y, itself, wide, 1e-6, EsQuadratic), "MATRIX", "setcol(Vector,matrix)",
                   "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu");
    // A model that asks for a parameter that is not there, on several threads at once.
    EXPECT_REFUSAL_DETAIL(err_fit(X, y, f_C, par, EsQuadratic), "MATRIX",
                          "double & operator ()(int)", "indeks poza zakresem", "2 x 1 : ( 3 )");
}

} // namespace
} // namespace varnow
