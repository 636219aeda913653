#include "tests/sparse/show.h"
#include "tests/support/folder.h"
#include "tests/support/output.h"
#include "tests/support/words.h"

#include <cmath>

namespace varnow::test {
namespace {

TEST(SparseFile, KeepsThePatternAndSixDigits)
{
    folder const f;
    std::string const name = f.path("m");
    shown const cases[] = {
        {listed(2, 3, {{1, 2, 1.23456789}, {1, 3, 0}, {2, 1, -1e-20}}),
         "2 3 3\n1 2 1.23457\n1 3 0\n2 1 -1e-20\n", "2x3 (1,2)1.23457 (1,3). (2,1)-1e-20"},
        {listed(1, 2, {{1, 1, std::nan("")}, {1, 2, -INFINITY}}), "1 2 2\n1 1 nan\n1 2 -inf\n",
         "1x2 (1,1)NaN (1,2)-inf"},
        {sparse(2, 3), "2 3 -1\n", "2x3 ?"},
        {spempty(4, 1), "4 1 0\n", "4x1"},
        {sparse(), "0 0 0\n", "0x0"},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(c.s.writetxt(name.c_str()), 0);
        EXPECT_EQ(f.text("m"), c.first);
        sparse s = sptest(2, 3);
        s.mkindex();
        EXPECT_EQ(s.readtxt(name.c_str(), 0), 0);
        EXPECT_EQ(show(s) + show_index(s), c.second + std::string("-"));
    }
    sparse s = sptest(2, 2);
    EXPECT_EQ(s.readtxt(f.path("none").c_str(), 0), 1);
    EXPECT_EQ(s.readtxt(f.make_folder("folder").c_str(), 0), 1);
    EXPECT_EQ(s.writetxt(f.path("none/m").c_str(), 0), 1);
    EXPECT_EQ(show(s), show(sptest(2, 2)));
}

TEST(SparseFile, TakesAnyBlanksBetweenNumbers)
{
    folder const f;
    sparse s;
    s.readtxt(f.put("m", "\n +2\t2 2 \r\n1 1\n\n+.5e1 2 2 1e999 behind").c_str());
    EXPECT_EQ(show(s), "2x2 (1,1)5 (2,2)inf");
}

// A search in such a list ends at the first entry that is not before the one in search.
TEST(SparseFileDeathTest, TakesUnsortedAndRepeatedEntriesAsTheyCome)
{
    folder const f;
    sparse s;
    s.readtxt(f.put("m", "3 2 4\n2 2 5\n1 1 3\n2 2 6\n1 2 7\n").c_str());
    EXPECT_EQ(show(s), "3x2 (2,2)5 (1,1)3 (2,2)6 (1,2)7");
    EXPECT_EQ(s.get(1, 1), 0.0);
    EXPECT_EQ(s.get(2, 2), 5.0);
    // Whole operations see one entry a position, the last.
    EXPECT_EQ(show(s + spempty(3, 2)), "3x2 (1,1)3 (1,2)7 (2,2)6");
    EXPECT_EQ(show(mul(speye(3, 3), s)), "3x2 (1,1)3 (1,2)7 (2,2)6");
    EXPECT_EQ(show(row(s, 1)), "1x2 (1,1)3 (1,2)7");
    for (bool indexed : {false, true}) {
        sparse t = s;
        if (indexed) t.mkindex();
        t(2, 2) += 1;
        EXPECT_EQ(show(t), "3x2 (2,2)6 (1,1)3 (2,2)6 (1,2)7");
        t.resizec(4, 2);
        EXPECT_EQ(show(~t), "2x4 (1,1)3 (2,1)7 (2,2)6");
        for (int i = 1; i <= 4; ++i) t(i, 2) += 1;
        EXPECT_LE(t.nnz, 8);
        t.unpack();
        EXPECT_EQ(t.nnz, 8);
    }
    // Repeated positions leave no room for others.
    s.readtxt(f.put("m", "1 2 2\n1 1 5\n1 1 5\n").c_str());
    EXPECT_REFUSAL_DETAIL(s(1, 2) = 1, "SPARSE", "double & operator ()(int,int)",
                          "powtorzone pozycje", " ( 1 , 2 )");
}

TEST(SparseFileDeathTest, RefusesWhatIsNoMatrix)
{
    folder const f;
    sparse s;
    std::string const bad =
        "|2 2|2 2 x|-1 2 0|2 -1 0|-2 -2 1 1 1 1|1 1 2 1 1 5 1 1 5|2 2 -2|65536 65536 0|"
        "99999999999 1 0|2 2 1|2 2 2 1 1 1|2 2 1 1 1|2 2 1 0 1 5|2 2 1 1 3 5|"
        "2 2 1 3 1 5|2 2 1 1 -1 5|2 2 1 1 1 x|2 2 1 1 1 5x|2 2 1 1.5 1 5|"
        "2 2 2 1 1 5 1 x 5|+-2 2 0|";
    for (std::string const& text : split(bad, '|')) {
        SCOPED_TRACE(text);
        std::string const name = f.put("m", text);
        EXPECT_REFUSAL_DETAIL(s.readtxt(name.c_str(), 0), "SPARSE", "int readtxt(char *)",
                              "nieprawidlowa zawartosc pliku", "plik: " + name);
    }
    std::string const none = f.path("none/m");
    EXPECT_REFUSAL_DETAIL(s.readtxt(none.c_str()), "SPARSE", "int readtxt(char *)",
                          "nieudane otwarcie pliku do odczytu", "plik: " + none);
    EXPECT_REFUSAL_DETAIL(s.writetxt(none.c_str()), "SPARSE", "int writetxt(char *)",
                          "nieudane otwarcie pliku do zapisu", "plik: " + none);
}

TEST(SparseConsole, PrintsWholeNumbersOthersAndTheIndex)
{
    shown const cases[] = {
        {listed(2, 2, {{1, 2, -12}, {2, 1, 7}}), "\nm:\n  0 -12 \n  7   0 \n",
         "\nlist(m):\n1 2 -12 \n2 1   7 \n"},
        {listed(2, 2, {{1, 2, 9.5}, {2, 2, 100}}), "\nm:\n  0.000   9.500 \n  0.000 100.000 \n",
         "\nlist(m):\n1 2   9.500 \n2 2 100.000 \n"},
        {listed(1, 2, {{1, 1, 0.25}, {1, 2, std::nan("")}}), "\nm:\n0.250   nan \n",
         "\nlist(m):\n1 1 0.250 \n1 2   nan \n"},
        {listed(1, 1, {{1, 1, 1e10}}), "\nm:\n10000000000 \n", "\nlist(m):\n1 1 10000000000 \n"},
        {spempty(2, 3), "\nm:\n0 0 0 \n0 0 0 \n", "\nlist(m):\n"},
        {sparse(2, 3), "\nm:\n", "\nlist(m):\n"},
        {sparse(), "\nm:\n", "\nlist(m):\n"},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(printed([&] { c.s.display("m"); }), c.first);
        EXPECT_EQ(printed([&] { c.s.list("m"); }), c.second);
    }
    sparse s = listed(3, 2, {{1, 1, 1}, {3, 2, 1}});
    EXPECT_EQ(printed([&] { s.index("a"); }), "\nindex(a):\n-\n");
    s.mkindex();
    EXPECT_EQ(printed([&] { s.index("b"); }), "\nindex(b):\n1: 0 1\n2: -1 -1\n3: 1 2\n");
}

} // namespace
} // namespace varnow::test
