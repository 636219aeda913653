#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <functional>

using namespace varnow;
using namespace varnow::test;

namespace {

// Each operator with what it says of an operand that is less, equal, greater, and of a NaN on
// either side.
template <class F> void for_each_operator(F check)
{
    check("==", "0 1 0 0", std::equal_to<>());
    check("!=", "1 0 1 1", std::not_equal_to<>());
    check("<", "1 0 0 0", std::less<>());
    check("<=", "1 1 0 0", std::less_equal<>());
    check(">", "0 0 1 0", std::greater<>());
    check(">=", "0 1 1 0", std::greater_equal<>());
}

} // namespace

// The operands stand in the order in which they are written.
TEST(Comparisons, OfAColumnGiveFlags)
{
    matrix const numbers("1; 2; 3; NaN"), reversed("3; 2; 1; NaN"), twos("2; 2; 2; 2");
    table const texts = ~c("1", "2,0", "3", ""), texts_reversed = ~c("3", "2.0", "1", "");
    table const words = ~c("10", "2", "9"), words_reversed = flipud(words),
                two_words = ~c("2", "2", "2");
    table const days = ~c("2024-01-31", "2024.02.01", "2024/03/01"), days_reversed = flipud(days);
    date const day("2024-02-01");
    for_each_operator([&](std::string const& sign, std::string const& truth, auto op) {
        SCOPED_TRACE(sign);
        std::string const of_three = truth.substr(0, 5), of_nan = truth.substr(6);
        expect_shown<Vector>({
            {as_Vector(op(numbers, twos)), truth},
            {op(numbers, 2), truth},
            {op(2, reversed), truth},
            {op(texts, 2), truth},
            {op(2, texts_reversed), truth},
            {op(words, "2"), of_three}, // as texts 10 < 2 < 9
            {op("2", words_reversed), of_three},
            {op(words, two_words), of_three},
            {op(days, day), of_three},
            {op(day, days_reversed), of_three},
            {op(matrix(1.0), NaN), of_nan},
            {op(NaN, matrix(1.0)), of_nan},
            {as_Vector(op(matrix(1.0), matrix(NaN))), of_nan},
            {op(table(c("1")), NaN), of_nan},
        });
        EXPECT_EQ(show(op(grid<double>(2, 2), zeros(2, 2)) * 0 + 1), show(named(ones(2, 2))));
        // of nothing, and of plain containers
        expect_shown<Vector>({
            {op(matrix(3, 0), 1), ""},
            {op(1, matrix()), ""},
            {op(table(3, 0), "x"), ""},
            {op(table(3, 0), table(3, 1)), ""},
            {op(table(), table()), ""},
            {op(data<Text>(words), two_words), of_three},
            {op(data<Text>(words), "2"), of_three},
            {op(data<double>(numbers), 2), truth},
            {as_Vector(op(data<double>(numbers), data<double>(twos))), truth},
        });
    });
    EXPECT_EQ(show(table(~c("", "abc", "0")) == 0.0), "0 1 1"); // empty is missing, a word is 0
    EXPECT_EQ(show(table(~c("\xB1", "a", "")) < "a"), "1 0 1"); // bytes have a sign
}

TEST(ComparisonsDeathTest, RefuseMoreThanOneColumn)
{
    matrix const m(2, 3);
    table const t(2, 2), one(2, 1), longer(3, 1);
    std::string const why = "oczekiwana jedna kolumna danych";
    for_each_operator([&](std::string const& sign, char const*, auto op) {
        SCOPED_TRACE(sign);
        std::string const routine = "Vector operator " + sign, tables = routine + "(table,table)";
        EXPECT_REFUSAL(op(m, zeros(3, 2)), "MATRIX", "matrix operator " + sign + "(matrix,matrix)",
                       "niezgodne wymiary macierzy");
        EXPECT_REFUSAL(op(m, 1), "MATRIX", routine + "(matrix,double)", why);
        EXPECT_REFUSAL(op(1, m), "MATRIX", routine + "(double,matrix)", why);
        EXPECT_REFUSAL(op(t, 1), "TABLE", routine + "(table,double)", why);
        EXPECT_REFUSAL(op(1, t), "TABLE", routine + "(double,table)", why);
        EXPECT_REFUSAL(op(t, "1"), "TABLE", routine + "(table,Text)", why);
        EXPECT_REFUSAL(op("1", t), "TABLE", routine + "(Text,table)", why);
        EXPECT_REFUSAL(op(t, date()), "TABLE", routine + "(table,date)", why);
        EXPECT_REFUSAL(op(date(), t), "TABLE", routine + "(date,table)", why);
        EXPECT_REFUSAL(op(t, t), "TABLE", tables, "pierwszy argument nie jest wektorem");
        EXPECT_REFUSAL(op(longer, t), "TABLE", tables, "drugi argument nie jest wektorem");
        EXPECT_REFUSAL(op(one, longer), "TABLE", tables, "niezgodne dlugosci wektorow");
    });
}
