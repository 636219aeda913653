#include "tests/analytics/columns.h"

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace varnow;
using test::calls;
using test::column;
using test::notes;
using test::show;

using Groups = std::unique_ptr<table[]>;

table people()
{
    table t = column({"M", "F", "F", "M", "F"}, "Sex") |
              column({"2001", "2002", "2001", "2001", "2002"}, "year") |
              column({"40", "30", "20,5", "", "50"}, "age");
    t.rowname(3) = "third";
    return t;
}

// The keys and then the groups, a line each.
template <class Names> std::string split(table const& t, Names const& names)
{
    table keys;
    Groups const groups(t.group_by(names, keys));
    std::string lines = show(keys);
    for (int g = 0; g < keys.rows; ++g) lines += "\n" + show(groups[g]);
    return lines;
}

TEST(GroupBy, SplitsByCombinationsOfLevelsTheFirstKeyFastest)
{
    EXPECT_EQ(split(people(), "SEX"),
              "2x1 Sex | .: F | .: M\n"
              "3x3 Sex year age | .: F 2002 30 | third: F 2001 20,5 | .: F 2002 50\n"
              "2x3 Sex year age | .: M 2001 40 | .: M 2001 .");
    EXPECT_EQ(split(people(), c("sex", "year")),
              "3x2 Sex year | .: F 2001 | .: M 2001 | .: F 2002\n"
              "1x3 Sex year age | third: F 2001 20,5\n"
              "2x3 Sex year age | .: M 2001 40 | .: M 2001 .\n"
              "2x3 Sex year age | .: F 2002 30 | .: F 2002 50");
    table const alike = column({"", ""}, "k") | column({"1", "2"}, "x");
    EXPECT_EQ(split(alike, "k"), "1x1 k | .: .\n" + show(alike));
    for (table const& none : {table(), table(1, 0), table(0, 3)}) {
        EXPECT_EQ(split(people(), none), "1x0 | .:\n" + show(people()));
        EXPECT_EQ(split(table(0, 2), none), "0x0");
    }
    EXPECT_EQ(show(people().summarise(table(), "n=count(age)", count)), "1x1 n | .: 5.000000");
}

TEST(GroupBy, MayPutItsKeysIntoWhatItReads)
{
    table t = people(), names = c("year");
    Groups const groups(t.group_by(names, names));
    EXPECT_EQ(show(names), "2x1 year | .: 2001 | .: 2002");
    Groups const again(t.group_by("Sex", t));
    EXPECT_EQ(show(t), "2x1 Sex | .: F | .: M");
    EXPECT_EQ(again[0].rows, 3);
}

TEST(GroupBy, AgreesWithAMapOfTheRows)
{
    // Six keys of some 2,000 levels each have more combinations than 64 bits can number.
    std::vector<std::vector<unsigned>> const shapes = {
        {1}, {7}, {3, 4}, {40, 2, 5}, {3000, 3000, 3000, 3000, 3000, 3000}};
    std::mt19937 source(3);
    for (auto const& shape : shapes) {
        int const k = static_cast<int>(shape.size()), n = 4000;
        table t(n, k + 1), names(1, k), keys;
        for (int j = 0; j < k; ++j) names.cell[0][j] = t.cnames[j] = "k" + itot(j + 1);
        t.cnames[k] = "x";
        // The last key decides first.
        std::map<std::vector<std::string>, std::vector<int>> wanted;
        for (int i = 0; i < n; ++i) {
            std::vector<std::string> key;
            for (int j = k; j-- > 0; key.push_back(t.cell[i][j].str))
                t.cell[i][j] =
                    itot(static_cast<int>(source() % shape[static_cast<std::size_t>(j)]));
            t.cell[i][k] = itot(static_cast<int>(source() % 1000));
            wanted[key].push_back(i + 1);
        }
        Groups const groups(t.group_by(names, keys));
        table const sums = t.summarise(names, "n=count(x)", count, "s=sum(x)", sum);
        ASSERT_EQ(keys.rows, static_cast<int>(wanted.size()));
        int g = 0;
        for (auto const& [key, members] : wanted) {
            table group(0, k + 1);
            copynames_c2c(t, group);
            for (int i : members) group &= t.row(i);
            ASSERT_EQ(show(groups[g]), show(group));
            table const of_group = group.row(1).select(names);
            ASSERT_EQ(show(keys.row(++g)), show(of_group));
            EXPECT_EQ(sums(g, k + 1), dtot(group.rows, 0));
            EXPECT_EQ(sums(g, k + 2), dtot(double(sum(matrix(group["x"]))), 0));
        }
    }
}

TEST(Summarise, AddsAColumnForEachFormulaToTheKeys)
{
    // An empty cell is a 0 and counts.
    EXPECT_EQ(show(people().summarise(c("sex", "year"), "n=count(age)", count, "", nullptr,
                                      "average=anything at all(AGE)", mean)),
              "3x4 Sex year n average | .: F 2001 1.000000 20.500000"
              " | .: M 2001 2.000000 20.000000 | .: F 2002 2.000000 40.000000");
    EXPECT_EQ(show(people().summarise(c("sex"))), "2x1 Sex | .: F | .: M");
    // Keys are columns like any other, names may repeat, and a missing value is an empty cell.
    EXPECT_EQ(show(people().summarise(c("year"), "v=var(year)", var, "v=(age)", mean)),
              "2x3 year v v | .: 2001 0.000000 20.166667 | .: 2002 0.000000 40.000000");
    table const single = column({"a"}, "k") | column({"1"}, "x");
    EXPECT_EQ(show(single.summarise(c("k"), "v=var(x)", var)), "1x2 k v | .: a .");
    // The name stands between the first parentheses.
    table const strange =
        column({"a"}, "k") | column({"1"}, "a=b") | column({"2"}) | column({"3"}, "(x");
    EXPECT_EQ(show(strange.summarise(c("k"), "x=f(a=b)", sum, "=()", sum, "y=((x)", sum)),
              "1x4 k x . y | .: a 1.000000 2.000000 3.000000");
}

TEST(Summarise, TakesTenFormulasInTheirOrder)
{
    table const t = column({"a", "a"}, "k") | column({"3", "5"}, "x");
    table const r = t.summarise(c("k"), "a=(x)", sum, "b=(x)", mean, "c=(x)", (varnow::min),
                                "d=(x)", (varnow::max), "e=(x)", count, "f=(x)", prod, "g=(x)",
                                sumsqr, "h=(x)", median, "i=(x)", var, "j=(x)", mode);
    EXPECT_EQ(show(r), "1x11 k a b c d e f g h i j | .: a 8.000000 4.000000 3.000000 5.000000"
                       " 2.000000 15.000000 34.000000 4.000000 2.000000 3.000000");
}

TEST(Summarise, HandsOverTheColumnOfEachGroupWithItsNames)
{
    std::string const wanted = "3x1 AGE | .: 30 | third: 20.5 | .: 50;2x1 AGE | .: 40 | .: .;"
                               "3x1 year | .: 2002 | third: 2001 | .: 2002;"
                               "2x1 year | .: 2001 | .: 2001;";
    calls = "";
    table const at_once = people().summarise(c("sex"), "a=(AGE)", notes, "b=(year)", notes);
    EXPECT_EQ(calls, wanted);

    calls = "";
    table result;
    Groups const groups(people().group_by("sex", result));
    table::summarise_stp(result, groups.get(), "a=(AGE)", notes);
    table::summarise_stp(result, groups.get(), "b=(year)", notes);
    EXPECT_EQ(calls, wanted);
    EXPECT_EQ(show(result), show(at_once));
}

TEST(GroupByDeathTest, RefusesKeysThatAreNotThereAndFormulasThatSayNothing)
{
    table const t = people(), stacked(2, 1);
    table empty = t.row(1), keys;
    empty.resize(0, 3);
    char const* const by_several = "table* group_by(table,int,table)";
    char const* const not_row = "pierwszy argument ma byc wektorem wierszowym";
    char const* const no_column = "nie znaleziono kolumny";
    char const* const formula = "table summarise(table,Text,matrix f(matrix))";
    test::refusal const cases[] = {
        {[&] { t.group_by(stacked, keys); }, by_several, not_row},
        {[&] { t.summarise(stacked, "n", count); },
         "table summarise(table,Text,matrix f(matrix),...)", not_row},
        {[&] { t.group_by(c("sex", "height"), keys); }, by_several, no_column, "height"},
        {[&] { t.group_by("height", keys); }, "table* group_by(Text,table)", no_column, "height"},
        {[&] { t.summarise(c("height"), "n", nullptr); }, by_several, no_column, "height"},
        {[&] { empty.group_by("age", keys); }, "table levels(data)", "puste dane"},
        {[&] { empty.summarise(c("age")); }, "table levels(data)", "puste dane"},
        {[&] { t.summarise(c("sex"), "n=count(height)", nullptr); }, formula, "brak funkcji",
         "n=count(height)"},
        {[&] { t.summarise(c("sex"), "n=count(height)", count); }, "table operator [](Text)",
         no_column},
    };
    test::expect_refusals("TABLE", cases);
    for (char const* wrong :
         {"count(age)", "a(b)=c", "a=b)c(", "n=count age)", "n=count(age", "(a=b)", "n", "="}) {
        SCOPED_TRACE(wrong);
        EXPECT_REFUSAL(t.summarise(c("sex"), "n=(age)", count, wrong, nullptr), "TABLE", formula,
                       "nieprawidlowa formula");
    }
    EXPECT_REFUSAL(t.summarise(c("sex"), "n=two(age)", test::two), "MATRIX", "operator double()",
                   "konwersja niemozliwa");
}

} // namespace
