#include "../support/containers.h"

#include <varnow/varnow.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace varnow;
using test::show;

using Groups = std::unique_ptr<table[]>;

// Rows of a table, its column names first.
table rows(std::vector<std::vector<char const*>> const& lines)
{
    table t(static_cast<int>(lines.size()) - 1, static_cast<int>(lines[0].size()));
    for (int j = 0; j < t.cols; ++j) {
        t.cnames[j] = lines[0][static_cast<std::size_t>(j)];
        for (int i = 0; i < t.rows; ++i)
            t.cell[i][j] = lines[static_cast<std::size_t>(i) + 1][static_cast<std::size_t>(j)];
    }
    return t;
}

table people()
{
    table t = rows({{"Sex", "year", "age"},
                    {"M", "2001", "40"},
                    {"F", "2002", "30"},
                    {"F", "2001", "20,5"},
                    {"M", "2001", ""},
                    {"F", "2002", "50"}});
    t.rowname(3) = "third";
    return t;
}

TEST(GroupBy, SplitsByTheLevelsOfOneColumn)
{
    table keys;
    Groups const groups(people().group_by("SEX", keys));
    EXPECT_EQ(show(keys), "2x1 Sex | .: F | .: M");
    EXPECT_EQ(show(groups[0]),
              "3x3 Sex year age | .: F 2002 30 | third: F 2001 20,5 | .: F 2002 50");
    EXPECT_EQ(show(groups[1]), "2x3 Sex year age | .: M 2001 40 | .: M 2001 .");

    table const alike = rows({{"k", "x"}, {"", "1"}, {"", "2"}});
    Groups const one(alike.group_by("k", keys));
    EXPECT_EQ(show(keys), "1x1 k | .: .");
    EXPECT_EQ(show(one[0]), show(alike));
}

TEST(GroupBy, SplitsByCombinationsTheFirstKeyFastest)
{
    table keys;
    Groups const groups(people().group_by(c("sex", "year"), keys));
    EXPECT_EQ(show(keys), "3x2 Sex year | .: F 2001 | .: M 2001 | .: F 2002");
    EXPECT_EQ(show(groups[0]), "1x3 Sex year age | third: F 2001 20,5");
    EXPECT_EQ(show(groups[1]), "2x3 Sex year age | .: M 2001 40 | .: M 2001 .");
    EXPECT_EQ(show(groups[2]), "2x3 Sex year age | .: F 2002 30 | .: F 2002 50");
}

TEST(GroupBy, OfNoNamesIsOneGroupOfAllRows)
{
    table keys;
    for (table const& none : {table(), table(1, 0), table(0, 3)}) {
        Groups const groups(people().group_by(none, keys));
        EXPECT_EQ(show(keys), "1x0 | .:");
        EXPECT_EQ(show(groups[0]), show(people()));
        delete[] table(0, 2).group_by(none, keys);
        EXPECT_EQ(keys.rows, 0);
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

// Random keys with few and many levels, and a column of numbers.
table sample(int n, std::vector<int> const& levels_of_keys, unsigned seed)
{
    std::mt19937 source(seed);
    int const keys = static_cast<int>(levels_of_keys.size());
    table t(n, keys + 1);
    for (int j = 0; j < keys; ++j) t.cnames[j] = "k" + itot(j + 1);
    t.cnames[keys] = "x";
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < keys; ++j)
            t.cell[i][j] = itot(static_cast<int>(
                source() % static_cast<unsigned>(levels_of_keys[static_cast<std::size_t>(j)])));
        t.cell[i][keys] = itot(static_cast<int>(source() % 1000));
    }
    return t;
}

TEST(GroupBy, AgreesWithAMapOfTheRows)
{
    // Six keys of some 2,000 levels each have more combinations than 64 bits can number.
    std::vector<std::vector<int>> const shapes = {
        {1}, {7}, {3, 4}, {40, 2, 5}, {3000, 3000, 3000, 3000, 3000, 3000}};
    for (auto const& shape : shapes) {
        table const t = sample(4000, shape, 3);
        int const k = t.cols - 1;
        // The last key decides first.
        std::map<std::vector<std::string>, std::vector<int>> wanted;
        for (int i = 0; i < t.rows; ++i) {
            std::vector<std::string> key;
            for (int j = k - 1; j >= 0; --j) key.push_back(t.cell[i][j].str);
            wanted[key].push_back(i);
        }
        table names(1, k);
        for (int j = 0; j < k; ++j) names.cell[0][j] = t.cnames[j];
        table keys;
        Groups const groups(t.group_by(names, keys));
        table const sums = t.summarise(names, "n=count(x)", count, "s=sum(x)", sum);
        table stepped = keys;
        table::summarise_stp(stepped, groups.get(), "n=count(x)", count);
        table::summarise_stp(stepped, groups.get(), "s=sum(x)", sum);
        EXPECT_EQ(show(stepped), show(sums));
        ASSERT_EQ(keys.rows, static_cast<int>(wanted.size()));
        int g = 0;
        for (auto const& [key, members] : wanted) {
            double s = 0;
            for (int j = 0; j < k; ++j)
                ASSERT_EQ(keys.cell[g][j], Text(key[static_cast<std::size_t>(k - 1 - j)]));
            ASSERT_EQ(groups[g].rows, static_cast<int>(members.size()));
            for (int i = 0; i < groups[g].rows; ++i) {
                int const from = members[static_cast<std::size_t>(i)];
                for (int j = 0; j <= k; ++j) ASSERT_EQ(groups[g].cell[i][j], t.cell[from][j]);
                s += ttod(t.cell[from][k]);
            }
            ASSERT_EQ(sums.cell[g][k], dtot(static_cast<double>(members.size()), 0));
            ASSERT_EQ(sums.cell[g][k + 1], dtot(s, 0));
            ++g;
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
    EXPECT_EQ(show(rows({{"k", "x"}, {"a", "1"}}).summarise(c("k"), "v=var(x)", var)),
              "1x2 k v | .: a .");
}

TEST(Summarise, TakesTenFormulasInTheirOrder)
{
    table const t = rows({{"k", "x"}, {"a", "3"}, {"a", "5"}});
    table const r = t.summarise(c("k"), "a=(x)", sum, "b=(x)", mean, "c=(x)", (varnow::min),
                                "d=(x)", (varnow::max), "e=(x)", count, "f=(x)", prod, "g=(x)",
                                sumsqr, "h=(x)", median, "i=(x)", var, "j=(x)", mode);
    EXPECT_EQ(show(r), "1x11 k a b c d e f g h i j | .: a 8.000000 4.000000 3.000000 5.000000"
                       " 2.000000 15.000000 34.000000 4.000000 2.000000 3.000000");
}

std::string calls;
matrix notes(matrix const& m)
{
    calls += show(m) + ";";
    return sum(m);
}

TEST(Summarise, HandsOverTheColumnOfEachGroupWithItsNames)
{
    std::string const wanted = "3x1 AGE | .: 30 | third: 20.5 | .: 50;2x1 AGE | .: 40 | .: .;"
                               "3x1 year | .: 2002 | third: 2001 | .: 2002;"
                               "2x1 year | .: 2001 | .: 2001;";
    calls = "";
    people().summarise(c("sex"), "a=(AGE)", notes, "b=(year)", notes);
    EXPECT_EQ(calls, wanted);

    calls = "";
    table result;
    Groups const groups(people().group_by("sex", result));
    table::summarise_stp(result, groups.get(), "a=(AGE)", notes);
    table::summarise_stp(result, groups.get(), "b=(year)", notes);
    EXPECT_EQ(calls, wanted);
}

TEST(Summarise, TakesTheColumnBetweenTheFirstParentheses)
{
    table t = rows({{"k", "a=b", "", "(x"}, {"a", "1", "2", "3"}});
    EXPECT_EQ(show(t.summarise(c("k"), "x=f(a=b)", sum, "=()", sum, "y=((x)", sum)),
              "1x4 k x . y | .: a 1.000000 2.000000 3.000000");
}

matrix two(matrix const&)
{
    return matrix("1 2");
}

TEST(SummariseDeathTest, RefusesFormulasThatSayNothing)
{
    table const t = people();
    char const* const routine = "table summarise(table,Text,matrix f(matrix))";
    for (char const* formula :
         {"count(age)", "a(b)=c", "a=b)c(", "n=count age)", "n=count(age", "(a=b)", "n", "="}) {
        SCOPED_TRACE(formula);
        EXPECT_REFUSAL(t.summarise(c("sex"), "n=(age)", count, formula, nullptr), "TABLE", routine,
                       "nieprawidlowa formula");
    }
    EXPECT_REFUSAL_DETAIL(t.summarise(c("sex"), "n=count(height)", nullptr), "TABLE", routine,
                          "brak funkcji", "n=count(height)");
    EXPECT_REFUSAL(t.summarise(c("sex"), "n=count(height)", count), "TABLE",
                   "table operator [](Text)", "nie znaleziono kolumny");
    EXPECT_REFUSAL(t.summarise(c("sex"), "n=two(age)", two), "MATRIX", "operator double()",
                   "konwersja niemozliwa");
}

TEST(GroupByDeathTest, RefusesKeysThatAreNotThere)
{
    table const t = people(), none(0, 2), stacked(2, 1);
    table keys;
    char const* const by_several = "table* group_by(table,int,table)";
    char const* const not_row = "pierwszy argument ma byc wektorem wierszowym";
    char const* const no_column = "nie znaleziono kolumny";
    EXPECT_REFUSAL(t.group_by(stacked, keys), "TABLE", by_several, not_row);
    EXPECT_REFUSAL(t.summarise(stacked, "n", count), "TABLE",
                   "table summarise(table,Text,matrix f(matrix),...)", not_row);
    EXPECT_REFUSAL_DETAIL(t.group_by(c("sex", "height"), keys), "TABLE", by_several, no_column,
                          "height");
    EXPECT_REFUSAL_DETAIL(t.group_by("height", keys), "TABLE", "table* group_by(Text,table)",
                          no_column, "height");
    EXPECT_REFUSAL_DETAIL(t.summarise(c("height"), "n", nullptr), "TABLE", by_several, no_column,
                          "height");
    table empty = t.row(1);
    empty.resize(0, 3);
    EXPECT_REFUSAL(empty.group_by("age", keys), "TABLE", "table levels(data)", "puste dane");
    EXPECT_REFUSAL(empty.summarise(c("age")), "TABLE", "table levels(data)", "puste dane");
}

} // namespace
