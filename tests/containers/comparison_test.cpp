#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>

#include "tests/support/containers.h"

#include <limits>

using namespace varnow;
using test::grid;
using test::show;

namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();

struct Comparison
{
    char const* sign;
    // for an operand that is less, equal, greater, and for a NaN on either side
    char const* truth;
    matrix (*matrices)(matrix const&, matrix const&);
    Vector (*matrix_number)(matrix const&, double);
    Vector (*number_matrix)(double, matrix const&);
    Vector (*table_number)(table const&, double);
    Vector (*number_table)(double, table const&);
    Vector (*table_text)(table const&, Text const&);
    Vector (*text_table)(Text const&, table const&);
    Vector (*table_date)(table const&, date const&);
    Vector (*date_table)(date const&, table const&);
    Vector (*tables)(table const&, table const&);
};

// clang-format off
#define COMPARISON(op, truth)                                                                          \
    {#op, truth, operator op, operator op, operator op, operator op, operator op, operator op,         \
     operator op, operator op, operator op, operator op}
Comparison const comparisons[] = {
    COMPARISON(==, "0 1 0 0"), COMPARISON(!=, "1 0 1 1"), COMPARISON(<, "1 0 0 0"),
    COMPARISON(<=, "1 1 0 0"), COMPARISON(>, "0 0 1 0"),  COMPARISON(>=, "0 1 1 0"),
};
#undef COMPARISON
// clang-format on

// One column, named, of the given texts.
table column(std::initializer_list<char const*> cells)
{
    table r = grid<Text>(static_cast<int>(cells.size()), 1);
    int i = 0;
    for (char const* x : cells) r.cell[i++][0] = x;
    return r;
}

// The flags without the one for NaN.
std::string first_three(char const* truth)
{
    return std::string(truth, 5);
}

} // namespace

TEST(Comparisons, OfTwoMatricesGiveAMatrixWithTheNamesOfTheLeft)
{
    matrix const a = matrix("1; 2; 3; NaN"), b = matrix("2; 2; 2; 2");
    for (Comparison const& o : comparisons) {
        SCOPED_TRACE(o.sign);
        EXPECT_EQ(show(as_Vector(o.matrices(a, b))), o.truth);
        EXPECT_EQ(show(as_Vector(o.matrices(b, a)))[6], o.truth[6]);
        matrix left = grid<double>(2, 2);
        EXPECT_EQ(show(o.matrices(left, zeros(2, 2)) * 0 + 1), "2x2 c1 c2 | r1: 1 1 | r2: 1 1");
    }
}

// The operands stand in the order in which they are written.
TEST(Comparisons, WithAScalarGiveFlags)
{
    matrix const numbers("1; 2; 3; NaN"), reversed("3; 2; 1; NaN");
    table const texts = column({"1", "2,0", "3", ""}),
                texts_reversed = column({"3", "2.0", "1", ""});
    table const words = column({"10", "2", "9"}), words_reversed = column({"9", "2", "10"});
    table const days = column({"2024-01-31", "2024.02.01", "2024/03/01"});
    table const days_reversed = column({"2024-03-01", "2024-02-01", "2024-01-31"});
    date const day("2024-02-01");
    for (Comparison const& o : comparisons) {
        SCOPED_TRACE(o.sign);
        EXPECT_EQ(show(o.matrix_number(numbers, 2)), o.truth);
        EXPECT_EQ(show(o.number_matrix(2, reversed)), o.truth);
        EXPECT_EQ(show(o.table_number(texts, 2)), o.truth);
        EXPECT_EQ(show(o.number_table(2, texts_reversed)), o.truth);
        EXPECT_EQ(show(o.table_text(words, "2")), first_three(o.truth)); // as texts 10 < 2 < 9
        EXPECT_EQ(show(o.text_table("2", words_reversed)), first_three(o.truth));
        EXPECT_EQ(show(o.tables(words, column({"2", "2", "2"}))), first_three(o.truth));
        EXPECT_EQ(show(o.table_date(days, day)), first_three(o.truth));
        EXPECT_EQ(show(o.date_table(day, days_reversed)), first_three(o.truth));
        EXPECT_EQ(show(o.matrix_number(numbers, NaN))[0], o.truth[6]);
        EXPECT_EQ(show(o.table_number(texts, NaN))[0], o.truth[6]);
    }
    EXPECT_EQ(show(column({"", "abc", "0"}) == 0.0), "0 1 1"); // empty is missing, a word is 0
    EXPECT_EQ(show(column({"\xB1", "a", ""}) < "a"), "1 0 1"); // bytes have a sign
}

TEST(Comparisons, OfNothingGiveNothing)
{
    EXPECT_EQ((matrix(3, 0) == 1.0).n, 0);
    EXPECT_EQ((1.0 < matrix()).n, 0);
    EXPECT_EQ((table(3, 0) == "x").n, 0);
    EXPECT_EQ((table(3, 0) == table(3, 1)).n, 0);
    EXPECT_EQ((table() != table()).n, 0);
}

TEST(Comparisons, OfPlainContainersActAsThoseOfTheirClasses)
{
    data<Text> const texts = column({"a", "b"});
    data<double> const numbers = matrix("1; 2");
    EXPECT_EQ(show(texts == texts), "1 1");
    EXPECT_EQ(show(texts > "a"), "0 1");
    EXPECT_EQ(show(numbers == 2), "0 1");
    EXPECT_EQ(show(numbers == numbers), "2x1 . | .: 1 | .: 1");
}

TEST(ComparisonsDeathTest, RefuseMoreThanOneColumn)
{
    matrix const m(2, 3);
    table const t(2, 2), one(2, 1), longer(3, 1);
    std::string const message = "oczekiwana jedna kolumna danych";
    for (Comparison const& o : comparisons) {
        SCOPED_TRACE(o.sign);
        std::string const routine = "Vector operator " + std::string(o.sign);
        EXPECT_REFUSAL(o.matrices(m, zeros(3, 2)), "MATRIX",
                       "matrix operator " + std::string(o.sign) + "(matrix,matrix)",
                       "niezgodne wymiary macierzy");
        EXPECT_REFUSAL(o.matrix_number(m, 1), "MATRIX", routine + "(matrix,double)", message);
        EXPECT_REFUSAL(o.number_matrix(1, m), "MATRIX", routine + "(double,matrix)", message);
        EXPECT_REFUSAL(o.table_number(t, 1), "TABLE", routine + "(table,double)", message);
        EXPECT_REFUSAL(o.number_table(1, t), "TABLE", routine + "(double,table)", message);
        EXPECT_REFUSAL(o.table_text(t, "1"), "TABLE", routine + "(table,Text)", message);
        EXPECT_REFUSAL(o.text_table("1", t), "TABLE", routine + "(Text,table)", message);
        EXPECT_REFUSAL(o.table_date(t, date()), "TABLE", routine + "(table,date)", message);
        EXPECT_REFUSAL(o.date_table(date(), t), "TABLE", routine + "(date,table)", message);
        EXPECT_REFUSAL(o.tables(t, t), "TABLE", routine + "(table,table)",
                       "pierwszy argument nie jest wektorem");
        EXPECT_REFUSAL(o.tables(longer, t), "TABLE", routine + "(table,table)",
                       "drugi argument nie jest wektorem");
        EXPECT_REFUSAL(o.tables(one, longer), "TABLE", routine + "(table,table)",
                       "niezgodne dlugosci wektorow");
    }
    EXPECT_REFUSAL((void)(m == 1), "MATRIX", "Vector operator ==(matrix,double)", message);
    EXPECT_REFUSAL((void)("x" < t), "TABLE", "Vector operator <(Text,table)", message);
}
