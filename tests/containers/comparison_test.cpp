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
    matrix const one(1.0), missing(NaN);
    table const texts = ~c("1", "2,0", "3", ""), texts_reversed = ~c("3", "2.0", "1", "");
    table const words = ~c("10", "2", "9"), words_reversed = flipud(words); // as texts 10 < 2 < 9
    table const days = ~c("2024-01-31", "2024.02.01", "2024/03/01"), days_reversed = flipud(days);
    table const two_words = ~c("2", "2", "2");
    data<Text> const plain = words;
    data<double> const cells = numbers;
    date const day("2024-02-01");
    for_each_operator([&](std::string const& sign, std::string const& truth, auto op) {
        SCOPED_TRACE(sign);
        std::string const of_three = truth.substr(0, 5), of_nan = truth.substr(6);
        for (Vector const& flags :
             {op(numbers, 2), op(2, reversed), op(texts, 2), op(2, texts_reversed), op(cells, 2),
              as_Vector(op(numbers, twos)), as_Vector(op(cells, data<double>(twos)))})
            EXPECT_EQ(show(flags), truth);
        for (Vector const& flags :
             {op(words, "2"), op("2", words_reversed), op(words, two_words), op(plain, two_words),
              op(plain, "2"), op(days, day), op(day, days_reversed)})
            EXPECT_EQ(show(flags), of_three);
        for (Vector const& flags : {op(one, NaN), op(NaN, one), op(table(c("1")), NaN),
                                    as_Vector(op(one, missing)), as_Vector(op(missing, one))})
            EXPECT_EQ(show(flags), of_nan);
        for (Vector const& flags : {op(matrix(3, 0), 1), op(1, matrix()), op(table(3, 0), "x"),
                                    op(table(3, 0), table(3, 1)), op(table(), table())})
            EXPECT_EQ(flags.n, 0);
        EXPECT_EQ(show(op(grid<double>(2, 2), zeros(2, 2)) * 0 + 1), show(named(ones(2, 2))));
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
