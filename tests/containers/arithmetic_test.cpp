#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace varnow;
using test::grid;
using test::same_bits;
using test::scattered;
using test::show;

namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

// Two rows r1, r2 and two columns c1, c2, or other names.
matrix square(char const* cells, char const* names = nullptr)
{
    matrix m = grid<double>(2, 2), values(cells);
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) m.cell[i][j] = values.cell[i][j];
        if (names) m.rnames[i] = m.cnames[i] = names;
    }
    return m;
}

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
    matrix const a = square("6 -1; 0,5 8"), b = square("4 2; 0 -2", "other");
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
    data<double> const plain = a;
    EXPECT_EQ(show(plain + plain), shown("12 -2", "1 16"));
}

// Shapes on both sides of the size of a piece, and large enough for released storage to serve
// again; rows in order and mixed; zeros of both signs, infinities and NaN.
TEST(MatrixArithmetic, GivesTheBitsOfAPlainLoopInWhateverOrderTheRowsStand)
{
    int const shapes[][2] = {{0, 0},   {0, 4},   {3, 0},   {1, 1},   {1, 7},
                             {255, 1}, {520, 1}, {300, 3}, {3, 700}, {9000, 1}};
    for (auto const& shape : shapes) {
        matrix const mixed = scattered(shape[0], shape[1], 1, 0.2);
        matrix const other = scattered(shape[0], shape[1], 2, 0.2);
        matrix const straight = other;
        matrix target = scattered(shape[0], shape[1], 3);
        target = straight; // into rows that stand in another order
        EXPECT_TRUE(same_bits(target, other));
        for (Operator const& o : operators) {
            SCOPED_TRACE(o.sign + std::to_string(shape[0]) + "x" + std::to_string(shape[1]));
            matrix expected(shape[0], shape[1]);
            for (int i = 0; i < shape[0]; ++i)
                for (int j = 0; j < shape[1]; ++j)
                    expected.cell[i][j] = o.cells(mixed.cell[i][j], other.cell[i][j]);
            EXPECT_TRUE(same_bits(o.matrices(mixed, other), expected));
            EXPECT_TRUE(same_bits(o.matrices(mixed, straight), expected));
            if (!o.in_place) continue;
            matrix in_place = scattered(shape[0], shape[1], 1, 0.2);
            (in_place.*o.in_place)(straight);
            EXPECT_TRUE(same_bits(in_place, expected));
        }
    }
}

// One comparison decides: with a NaN max takes the second operand and min the first.
TEST(MatrixArithmetic, TakesTheStatedOperandOfEqualAndIncomparableCells)
{
    struct
    {
        double a, b, max, min;
    } const rows[] = {
        {NaN, 1, 1, NaN},       {1, NaN, NaN, 1}, {0.0, -0.0, 0.0, -0.0},
        {-0.0, 0.0, -0.0, 0.0}, {inf, 1, inf, 1}, {-inf, 1, 1, -inf},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(std::to_string(row.a) + " with " + std::to_string(row.b));
        matrix const maxima[] = {max(matrix(row.a), matrix(row.b)), max(matrix(row.a), row.b),
                                 max(row.a, matrix(row.b))};
        matrix const minima[] = {min(matrix(row.a), matrix(row.b)), min(matrix(row.a), row.b),
                                 min(row.a, matrix(row.b))};
        for (int form = 0; form < 3; ++form) {
            EXPECT_TRUE(same_bits(maxima[form](1), row.max));
            EXPECT_TRUE(same_bits(minima[form](1), row.min));
        }
    }
}

TEST(MatrixArithmetic, AllowsTheOperandToBeTheObjectOrACellOfIt)
{
    matrix a = square("1 2; 3 4");
    matrix const& same = a;
    a += same;
    EXPECT_EQ(show(a), shown("2 4", "6 8"));
    a *= same;
    EXPECT_EQ(show(a), shown("4 16", "36 64"));
    a = a - a + a;
    a /= a(1, 1);
    EXPECT_EQ(show(a), shown("1 4", "9 16"));
    a -= a(2, 2);
    EXPECT_EQ(show(a), shown("-15 -12", "-7 ."));
    a /= same;
    EXPECT_EQ(show(a), shown("1 1", "1 NaN"));
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
#define FUNCTION(name) #name, varnow::name, &matrix::name
Function const functions[] = {
    {FUNCTION(abs), -1.5, 1.5},
    {FUNCTION(sqr), -1.5, 2.25},
    {FUNCTION(sqrt), 2.25, 1.5},
    {FUNCTION(sqrt), -1, NaN},
    {"minus", operator-, &matrix::minus, 1.5, -1.5},
    {FUNCTION(sin), 0.5, 0.4794255386042030},
    {FUNCTION(cos), 0.5, 0.8775825618903727},
    {FUNCTION(tan), 0.5, 0.5463024898437905},
    {FUNCTION(sinh), 0.5, 0.5210953054937474},
    {FUNCTION(cosh), 0.5, 1.1276259652063808},
    {FUNCTION(tanh), 0.5, 0.4621171572600098},
    {FUNCTION(asin), 0.5, 0.5235987755982989},
    {FUNCTION(asin), 2, NaN},
    {FUNCTION(acos), 0.5, 1.0471975511965979},
    {FUNCTION(atan), 0.5, 0.4636476090008061},
    {FUNCTION(exp), 1, 2.7182818284590452},
    {FUNCTION(exp), -inf, 0},
    {FUNCTION(log), 10, 2.3025850929940457},
    {FUNCTION(log), 0, -inf},
    {FUNCTION(log10), 1000, 3},
    {FUNCTION(ceil), -1.5, -1},
    {FUNCTION(ceil), 1.25, 2},
    {FUNCTION(floor), -1.5, -2},
    {FUNCTION(floor), 1.75, 1},
};
#undef FUNCTION

double third_of(double x)
{
    return x / 3;
}

} // namespace

TEST(MatrixFunctions, StandAsMemberAndAsFreeFunction)
{
    for (Function const& f : functions) {
        SCOPED_TRACE(f.name);
        matrix m = grid<double>(1, 2);
        m(1, 1) = NaN;
        m(1, 2) = f.x;
        matrix const r = f.free(m);
        EXPECT_TRUE(std::isnan(r(1)));
        if (std::isnan(f.value))
            EXPECT_TRUE(std::isnan(r(2)));
        else
            EXPECT_DOUBLE_EQ(r(2), f.value);
        EXPECT_EQ(r.colname(2), Text("c2"));
        EXPECT_EQ(r.rowname(1), Text("r1"));
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
    matrix m(1, static_cast<int>(x.size())), expected = m;
    for (int j = 0; j < m.cols; ++j) {
        m.cell[0][j] = x[std::size_t(j)];
        expected.cell[0][j] = std::exp(x[std::size_t(j)]);
    }
    test::on_every_machine([&] {
        EXPECT_TRUE(same_bits(exp(m), expected));
        matrix in_place = m;
        in_place.exp();
        EXPECT_TRUE(same_bits(in_place, expected));
    });
}

TEST(MatrixFunctions, RaiseToPowersAndApplyFunctionsOfTheUser)
{
    matrix const m = square("2 -1; 9 0,5");
    EXPECT_EQ(show(pow(m, 0.5)), shown("1.41421 NaN", "3 0.707107"));
    EXPECT_EQ(show(pow(m, 3)), shown("8 -1", "729 0.125"));
    EXPECT_EQ(show(pow(m, -2)), shown("0.25 1", "0.0123457 4"));
    EXPECT_EQ(show(pow(m, 0)), shown("1 1", "1 1"));
    EXPECT_EQ(show(forall(m, third_of)), shown("0.666667 -0.333333", "3 0.166667"));
    EXPECT_EQ(show(forall(m, std::fmod, 2.0)), shown(". -1", "1 0.5"));
    matrix n = m;
    n.pow(2.0);
    n.pow(2);
    EXPECT_EQ(show(n), shown("16 1", "6561 0.0625"));
    // (x x)(x x) x x by repeated squaring; the product from the left ends one bit lower
    double const x = 1.1, x2 = x * x;
    EXPECT_EQ(pow(matrix(x), 6)(1), x2 * (x2 * x2));
}

TEST(MatrixFunctions, ScaleToUnitSumUnlessTheSumIsZero)
{
    struct
    {
        char const* cells;
        char const* scaled;
    } const rows[] = {
        {"1 3 4", "1x3 . . . | .: 0.125 0.375 0.5"},
        {"1 -1", "1x2 . . | .: 1 -1"},
        {"1; 3", "2x1 . | .: 0.25 | .: 0.75"},
        {"1 2 5; 3 -2 NaN", "2x3 . . . | .: 0.25 2 NaN | .: 0.75 -2 NaN"},
        {"8", "1x1 . | .: 1"},
        {"0", "1x1 . | .: ."},
    };
    for (auto const& row : rows) {
        matrix m(row.cells);
        EXPECT_EQ(show(norm(m)), row.scaled);
        m.norm();
        EXPECT_EQ(show(m), row.scaled);
    }
    EXPECT_EQ(show(norm(square("1 1; 3 1"))), shown("0.25 0.5", "0.75 0.5"));
    EXPECT_EQ(show(norm(matrix())), "0x0");
}

TEST(MatrixLogic, TakesACellTruncatedToAnInteger)
{
    struct
    {
        double x;
        bool truth;
    } const rows[] = {
        {0, 0},    {-0.0, 0}, {0.5, 0},  {-0.9, 0}, {0.9999999999999999, 0}, {1, 1},
        {-1.0, 1}, {1.5, 1},  {1e10, 1}, {NaN, 1},  {4294967296.0, 1},       {-inf, 1}};
    for (auto const& a : rows) {
        EXPECT_EQ((!matrix(a.x))(1), a.truth ? 0.0 : 1.0) << a.x;
        for (auto const& b : rows) {
            SCOPED_TRACE(std::to_string(a.x) + " with " + std::to_string(b.x));
            EXPECT_EQ((matrix(a.x) && matrix(b.x))(1), a.truth && b.truth ? 1.0 : 0.0);
            EXPECT_EQ((matrix(a.x) || matrix(b.x))(1), a.truth || b.truth ? 1.0 : 0.0);
        }
    }
    matrix const m = square("1 0; 0 1"), other = square("1 1; 0 0", "other");
    EXPECT_EQ(show(m && other), shown("1 .", ". ."));
    EXPECT_EQ(show(m || other), shown("1 1", ". 1"));
    EXPECT_EQ(show(!m), shown(". 1", "1 ."));
}

TEST(MatrixLogic, TellsTheTruthOfTheWhole)
{
    struct
    {
        matrix m;
        bool any, all, empty, square, symmetric;
    } const rows[] = {
        {matrix(), 0, 1, 1, 1, 1},
        {matrix(0, 3), 0, 1, 1, 0, 1},
        {matrix("0"), 0, 0, 0, 1, 1},
        {matrix("0 NaN"), 1, 0, 0, 0, 1},
        {matrix("0,5; -1"), 1, 1, 0, 0, 1},
        {matrix("1 2; 2 1"), 1, 1, 0, 1, 1},
        {matrix("1 2; 2,0000001 1"), 1, 1, 0, 1, 0},
        {matrix("1 NaN; NaN 1"), 1, 1, 0, 1, 0},
        {matrix("NaN 2; 2 NaN"), 1, 1, 0, 1, 1},
        {matrix("1 2; 2 1; 3 4"), 1, 1, 0, 0, 1}, // nothing stands opposite the last row
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(show(row.m));
        EXPECT_EQ(any(row.m), row.any);
        EXPECT_EQ(all(row.m), row.all);
        EXPECT_EQ(isempty(row.m), row.empty);
        EXPECT_EQ(issqr(row.m), row.square);
        EXPECT_EQ(issym(row.m), row.symmetric);
    }
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
    struct
    {
        matrix m;
        char const* integers;
        char const* positions;
    } const rows[] = {
        {matrix(), "", ""},
        {matrix(0, 5), "", ""},
        {matrix("1,9 -1,9 0,5"), "1 -1 0", "1 2 3"},
        {matrix("0; NaN; 3e9; -3e9"), "0 -2147483648 -2147483648 -2147483648", "2 3 4"},
        {matrix("2147483647,5 -2147483648,5 0"), "2147483647 -2147483648 0", "1 2"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(show(row.m));
        EXPECT_EQ(show(as_Vector(row.m)), row.integers);
        EXPECT_EQ(show(find(row.m)), row.positions);
    }
    EXPECT_EQ(show(vect(grid<double>(2, 2))), "4x1 . | .: 11 | .: 21 | .: 12 | .: 22");
    EXPECT_EQ(vect(matrix(0, 3)).rows, 0);
}

TEST(MatrixArithmeticDeathTest, RefusesUnequalShapes)
{
    matrix const a(2, 3), b(3, 2), taller(3, 3);
    for (Operator const& o : operators) {
        SCOPED_TRACE(o.sign);
        std::string const sign = o.sign, name = o.in_place ? "operator " + sign : sign;
        std::string const objects = sign == "+" ? "obiektow" : "macierzy";
        EXPECT_REFUSAL(o.matrices(a, b), "MATRIX", "matrix " + name + "(matrix,matrix)",
                       "niezgodne wymiary " + objects);
        if (!o.in_place) continue;
        matrix target(2, 3);
        EXPECT_REFUSAL((target.*o.in_place)(taller), "MATRIX", "operator " + sign + "=(matrix)",
                       "niezgodne wymiary " + objects);
    }
    EXPECT_REFUSAL(a && b, "MATRIX", "matrix operator &&(matrix,matrix)",
                   "niezgodne wymiary macierzy");
    EXPECT_REFUSAL(a || taller, "MATRIX", "matrix operator ||(matrix,matrix)",
                   "niezgodne wymiary macierzy");
}

TEST(MatrixArithmeticDeathTest, RefusesMoreThanAVector)
{
    EXPECT_REFUSAL(as_Vector(ones(2, 2)), "MATRIX", "Vector as_Vector(matrix)",
                   "oczekiwany wektor wierszowy lub kolumnowy");
    EXPECT_REFUSAL(find(ones(2, 2)), "MATRIX", "Vector find(matrix)",
                   "oczekiwany wektor wierszowy lub kolumnowy");
}
