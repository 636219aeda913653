#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/table.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <array>
#include <cmath>
#include <random>
#include <tuple>

using namespace varnow;
using namespace varnow::test;

namespace {

std::string shown(std::string const& first, std::string const& second)
{
    return "2x2 c1 c2 | r1: " + first + " | r2: " + second;
}

struct Operator
{
    char const* sign;
    matrix (*matrices)(matrix const&, matrix const&);
    matrix (*with_number)(matrix const&, double);
    matrix (*number_with)(double, matrix const&);
    matrix& (matrix::*in_place)(matrix const&);
    matrix& (matrix::*number_in_place)(double);
    double (*cells)(double, double);
    // of "6 -1; 0.5 8" with "4 2; 0 -2", with the number 2, and of 2 with the matrix
    std::string of_matrices, of_number, number_of;
};

// clang-format off
#define OPERATOR(op)                                                                                   \
    #op, operator op, operator op, operator op, &matrix::operator op##=, &matrix::operator op##=,      \
    [](double x, double y) { return x op y; }
Operator const operators[] = {
    {OPERATOR(+), shown("10 1", "0.5 6"), shown("8 1", "2.5 10"), shown("8 1", "2.5 10")},
    {OPERATOR(-), shown("2 -3", "0.5 10"), shown("4 -3", "-1.5 6"), shown("-4 3", "1.5 -6")},
    // the product of matrices is mul
    {OPERATOR(*), shown("24 -2", ". -16"), shown("12 -2", "1 16"), shown("12 -2", "1 16")},
    {OPERATOR(/), shown("1.5 -0.5", "inf -4"), shown("3 -0.5", "0.25 4"), shown("0.333333 -2", "4 0.25")},
    {"max", max, max, max, nullptr, nullptr, [](double x, double y) { return x >= y ? x : y; },
     shown("6 2", "0.5 8"), shown("6 2", "2 8"), shown("6 2", "2 8")},
    {"min", min, min, min, nullptr, nullptr, [](double x, double y) { return x >= y ? y : x; },
     shown("4 -1", ". -2"), shown("2 -1", "0.5 2"), shown("2 -1", "0.5 2")},
};
#undef OPERATOR
// clang-format on

} // namespace

TEST(MatrixArithmetic, WorksCellByCellWithTheNamesOfTheFirstMatrix)
{
    matrix const a = named("6 -1; 0,5 8"), b = named("4 2; 0 -2", "other");
    for (Operator const& o : operators) {
        SCOPED_TRACE(o.sign);
        EXPECT_EQ(show(o.matrices(a, b)), o.of_matrices);
        EXPECT_EQ(show(o.with_number(a, 2)), o.of_number);
        EXPECT_EQ(show(o.number_with(2, a)), o.number_of);
        if (!o.in_place) continue;
        matrix by_matrix = a, by_number = a;
        EXPECT_EQ(&(by_matrix.*o.in_place)(b), &by_matrix);
        EXPECT_EQ(&(by_number.*o.number_in_place)(2), &by_number);
        EXPECT_EQ(show(by_matrix), o.of_matrices);
        EXPECT_EQ(show(by_number), o.of_number);
    }
    EXPECT_EQ(show(-a), shown("-6 1", "-0.5 -8"));
}

// Shapes on both sides of the size of a piece, and large enough for released storage to serve
// again; rows in order and mixed; zeros of both signs, infinities and NaN.
TEST(MatrixArithmetic, GivesTheBitsOfAPlainLoopInWhateverOrderTheRowsStand)
{
    std::pair<int, int> const shapes[] = {{0, 0},   {0, 4},   {3, 0},   {1, 1},   {1, 7},
                                          {255, 1}, {520, 1}, {300, 3}, {3, 700}, {9000, 1}};
    for (auto const& [rows, cols] : shapes) {
        matrix const mixed = scattered(rows, cols, 1, 0.2);
        matrix const other = scattered(rows, cols, 2, 0.2);
        matrix const straight = other;
        matrix target = scattered(rows, cols, 3);
        target = straight; // into rows that stand in another order
        EXPECT_TRUE(same_bits(target, other));
        for (Operator const& o : operators) {
            SCOPED_TRACE(o.sign + std::to_string(rows) + "x" + std::to_string(cols));
            matrix expected(rows, cols);
            for (int i = 0; i < rows; ++i)
                for (int j = 0; j < cols; ++j)
                    expected.cell[i][j] = o.cells(mixed.cell[i][j], other.cell[i][j]);
            EXPECT_TRUE(same_bits(o.matrices(mixed, other), expected));
            EXPECT_TRUE(same_bits(o.matrices(mixed, straight), expected));
            if (!o.in_place) continue;
            matrix in_place = scattered(rows, cols, 1, 0.2);
            (in_place.*o.in_place)(straight);
            EXPECT_TRUE(same_bits(in_place, expected));
        }
    }
}

// One comparison decides: with a NaN max takes the second operand and min the first.
TEST(MatrixArithmetic, TakesTheStatedOperandOfEqualAndIncomparableCells)
{
    std::array<double, 4> const rows[] = {
        {NaN, 1, 1, NaN},       {1, NaN, NaN, 1}, {0.0, -0.0, 0.0, -0.0},
        {-0.0, 0.0, -0.0, 0.0}, {inf, 1, inf, 1}, {-inf, 1, 1, -inf},
    };
    for (auto const& [a, b, high, low] : rows) {
        SCOPED_TRACE(std::to_string(a) + " with " + std::to_string(b));
        matrix const x(a), y(b);
        for (double r : {max(x, y)(1), max(x, b)(1), max(a, y)(1)}) EXPECT_TRUE(same_bits(r, high));
        for (double r : {min(x, y)(1), min(x, b)(1), min(a, y)(1)}) EXPECT_TRUE(same_bits(r, low));
    }
}

TEST(MatrixArithmetic, AllowsTheOperandToBeTheObjectOrACellOfIt)
{
    matrix a("1 2; 3 4");
    matrix const& same = a;
    a += same;
    a *= same;
    a = a - a + a;
    a /= a(1, 1);
    EXPECT_EQ(show(a), "2x2 . . | .: 1 4 | .: 9 16");
    a -= a(2, 2);
    EXPECT_EQ(show(a), "2x2 . . | .: -15 -12 | .: -7 .");
    a /= same;
    EXPECT_EQ(show(a), "2x2 . . | .: 1 1 | .: 1 NaN");
}

namespace {

struct Function
{
    char const* name;
    matrix (*free)(matrix const&);
    void (matrix::*member)();
    double x, value;
};

// Values to 16 digits from the tables of elementary functions.
// clang-format off
#define FUNCTION(name) #name, varnow::name, &matrix::name
Function const functions[] = {
    {FUNCTION(abs), -1.5, 1.5},                {FUNCTION(sqr), -1.5, 2.25},
    {FUNCTION(sqrt), 2.25, 1.5},               {FUNCTION(sqrt), -1, NaN},
    {FUNCTION(sin), 0.5, 0.4794255386042030},  {FUNCTION(asin), 0.5, 0.5235987755982989},
    {FUNCTION(cos), 0.5, 0.8775825618903727},  {FUNCTION(acos), 0.5, 1.0471975511965979},
    {FUNCTION(tan), 0.5, 0.5463024898437905},  {FUNCTION(atan), 0.5, 0.4636476090008061},
    {FUNCTION(sinh), 0.5, 0.5210953054937474}, {FUNCTION(cosh), 0.5, 1.1276259652063808},
    {FUNCTION(tanh), 0.5, 0.4621171572600098}, {FUNCTION(asin), 2, NaN},
    {FUNCTION(exp), 1, 2.7182818284590452},    {FUNCTION(exp), -inf, 0},
    {FUNCTION(log), 10, 2.3025850929940457},   {FUNCTION(log), 0, -inf},
    {FUNCTION(log10), 1000, 3},                {"minus", operator-, &matrix::minus, 1.5, -1.5},
    {FUNCTION(ceil), -1.5, -1},                {FUNCTION(ceil), 1.25, 2},
    {FUNCTION(floor), -1.5, -2},               {FUNCTION(floor), 1.75, 1},
};
#undef FUNCTION
// clang-format on

} // namespace

TEST(MatrixFunctions, StandAsMemberAndAsFreeFunction)
{
    for (Function const& f : functions) {
        SCOPED_TRACE(f.name);
        matrix m = named("NaN 0");
        m(2) = f.x;
        matrix const r = f.free(m);
        EXPECT_TRUE(std::isnan(r(1)));
        EXPECT_THAT(r(2), testing::NanSensitiveDoubleEq(f.value));
        EXPECT_EQ(r.rowname(1) + r.colname(2), Text("r1c2"));
        (m.*f.member)();
        EXPECT_TRUE(same_bits(m, r));
    }
}

TEST(MatrixFunctions, TakeExponentialsToTheBitOfTheCLibrary)
{
    std::vector<double> x = {NaN, inf, -inf, 0.0, -0.0, 1e300, -1e300};
    for (double edge : {5e-324, 0x1p-1022, 0x1p-54, 0x1p-53, 1.0, 512.0, 707.0, 708.4, 709.78271289,
                        709.7827128933841, 744.4, 745.1332191019411, 746.0})
        for (double sign : {1.0, -1.0})
            for (double to : {-inf, edge, inf}) x.push_back(sign * std::nextafter(edge, to));
    for (int k = -130; k <= 130; ++k) { // the edges between the steps of a table
        x.push_back((k + 0.5) * std::log(2.0) / 128);
        x.push_back(k * std::log(2.0) / 128);
    }
    std::mt19937_64 source(1);
    for (double scale : {1e-9, 1e-3, 1.0, 40.0, 512.0, 760.0}) {
        std::uniform_real_distribution<double> uniform(-scale, scale);
        for (int i = 0; i < 200003; ++i) x.push_back(uniform(source));
    }
    std::vector<double> expected;
    for (double v : x) expected.push_back(std::exp(v));
    test::on_every_machine([&] {
        matrix in_place = vector_of(x, true);
        EXPECT_TRUE(same_bits(exp(in_place), vector_of(expected, true)));
        in_place.exp();
        EXPECT_TRUE(same_bits(in_place, vector_of(expected, true)));
    });
}

TEST(MatrixFunctions, RaiseToPowersAndApplyFunctionsOfTheUser)
{
    matrix const m = named("2 -1; 9 0,5");
    double (*third_of)(double) = [](double x) { return x / 3; };
    matrix n = m;
    n.pow(2.0);
    n.pow(2);
    expect_shown<matrix>({
        {pow(m, 0.5), shown("1.41421 NaN", "3 0.707107")},
        {pow(m, 3), shown("8 -1", "729 0.125")},
        {pow(m, -2), shown("0.25 1", "0.0123457 4")},
        {pow(m, 0), shown("1 1", "1 1")},
        {n, shown("16 1", "6561 0.0625")},
        {forall(m, third_of), shown("0.666667 -0.333333", "3 0.166667")},
        {forall(m, std::fmod, 2.0), shown(". -1", "1 0.5")},
    });
    // (x x)(x x) x x by repeated squaring; the product from the left ends one bit lower
    double const x = 1.1, x2 = x * x;
    EXPECT_EQ(pow(matrix(x), 6)(1), x2 * (x2 * x2));
}

TEST(MatrixFunctions, ScaleToUnitSumUnlessTheSumIsZero)
{
    std::pair<matrix, matrix> const rows[] = {
        {"1 3 4", "0.125 0.375 0.5"},     {"1 -1", "1 -1"},     {"1; 3", "0.25; 0.75"}, {"0", "0"},
        {"1 2; 3 -2", "0.25 2; 0.75 -2"}, {matrix(), matrix()},
    };
    for (auto const& [m, scaled] : rows) {
        matrix in_place = named(m);
        EXPECT_EQ(show(norm(in_place)), show(named(scaled)));
        in_place.norm();
        EXPECT_EQ(show(in_place), show(named(scaled)));
    }
}

TEST(MatrixLogic, TakesACellTruncatedToAnInteger)
{
    std::pair<double, bool> const rows[] = {
        {0, 0},    {-0.0, 0}, {0.5, 0},  {-0.9, 0}, {0.9999999999999999, 0}, {1, 1},
        {-1.0, 1}, {1.5, 1},  {1e10, 1}, {NaN, 1},  {4294967296.0, 1},       {-inf, 1}};
    for (auto const& [x, truth] : rows) {
        EXPECT_EQ((!matrix(x))(1), !truth) << x;
        for (auto const& [y, other] : rows) {
            EXPECT_EQ((matrix(x) && matrix(y))(1), truth && other) << x << " and " << y;
            EXPECT_EQ((matrix(x) || matrix(y))(1), truth || other) << x << " or " << y;
        }
    }
    matrix const m = named("1 0; 0 1"), other = named("1 1; 0 0", "other");
    expect_shown<matrix>({{m && other, shown("1 .", ". .")},
                          {m || other, shown("1 1", ". 1")},
                          {!m, shown(". 1", "1 .")}});
}

namespace {

// any, all, empty, square, symmetric
template <class Rows> void expect_truths(Rows const& rows)
{
    for (auto const& [x, expected] : rows) {
        std::string truths;
        for (bool truth : {any(x), all(x), isempty(x), issqr(x), issym(x)})
            truths += truth ? '1' : '0';
        EXPECT_EQ(truths, expected) << show(x);
    }
}

} // namespace

TEST(MatrixLogic, TellsTheTruthOfTheWhole)
{
    table symmetric(2, 2), crooked(2, 2);
    symmetric(1, 2) = symmetric(2, 1) = crooked(1, 2) = "a";
    std::pair<table, char const*> const tables[] = {
        {table(), "01111"},   {c(""), "00011"},   {c("", "0"), "10001"},  {c("a", "b"), "11001"},
        {symmetric, "10011"}, {crooked, "10010"}, {table(3, 1), "00001"},
    };
    // Nothing stands opposite the last row of the tall one.
    std::pair<matrix, char const*> const matrices[] = {
        {matrix(), "01111"},   {matrix(0, 3), "01101"}, {"1 NaN; NaN 1", "11010"},
        {"0 NaN", "10001"},    {"0,5; -1", "11001"},    {"NaN 2; 2 NaN", "11011"},
        {"0", "00011"},        {"1 2; 2,5 1", "11010"}, {"1 2; 2 1; 3 4", "11001"},
        {"1 2; 2 1", "11011"},
    };
    expect_truths(tables);
    expect_truths(matrices);
    for (int far : {33, 100}) { // one differing pair in the last block
        matrix m = scattered(far, far, 3);
        m = m + ~m;
        EXPECT_TRUE(issym(m));
        m(far, far - 1) += 1;
        EXPECT_FALSE(issym(m));
    }
}

TEST(MatrixConversions, MakeIntegersAndPositionsOfAVector)
{
    std::tuple<matrix, char const*, char const*> const rows[] = {
        {matrix(), "", ""},
        {matrix(0, 5), "", ""},
        {"1,9 -1,9 0,5", "1 -1 0", "1 2 3"},
        {"0; NaN; 3e9; -3e9", "0 -2147483648 -2147483648 -2147483648", "2 3 4"},
        {"2147483647,5 -2147483648,5 0", "2147483647 -2147483648 0", "1 2"},
    };
    for (auto const& [m, integers, positions] : rows) {
        EXPECT_EQ(show(as_Vector(m)), integers);
        EXPECT_EQ(show(find(m)), positions);
    }
    EXPECT_EQ(show(vect(grid<double>(2, 2))), "4x1 . | .: 11 | .: 21 | .: 12 | .: 22");
    EXPECT_EQ(vect(matrix(0, 3)).rows, 0);
}

TEST(MatrixArithmeticDeathTest, RefusesUnequalShapesAndMoreThanAVector)
{
    matrix a(2, 3);
    matrix const b(3, 2), taller(3, 3);
    std::string const matrices = "niezgodne wymiary macierzy";
    std::string const vector = "oczekiwany wektor wierszowy lub kolumnowy";
    for (Operator const& o : operators) {
        SCOPED_TRACE(o.sign);
        std::string const sign = o.sign, name = o.in_place ? "operator " + sign : sign;
        std::string const why = sign == "+" ? "niezgodne wymiary obiektow" : matrices;
        EXPECT_REFUSAL(o.matrices(a, b), "MATRIX", "matrix " + name + "(matrix,matrix)", why);
        if (!o.in_place) continue;
        EXPECT_REFUSAL((a.*o.in_place)(taller), "MATRIX", "operator " + sign + "=(matrix)", why);
    }
    EXPECT_REFUSAL(a && b, "MATRIX", "matrix operator &&(matrix,matrix)", matrices);
    EXPECT_REFUSAL(a || taller, "MATRIX", "matrix operator ||(matrix,matrix)", matrices);
    EXPECT_REFUSAL(as_Vector(matrix(2, 2)), "MATRIX", "Vector as_Vector(matrix)", vector);
    EXPECT_REFUSAL(find(matrix(2, 2)), "MATRIX", "Vector find(matrix)", vector);
}
