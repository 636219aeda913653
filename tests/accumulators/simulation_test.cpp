#include <tests/support/bits.h>
#include <tests/support/folder.h>
#include <tests/support/output.h>
#include <tests/support/refusal.h>

#include <varnow/accumulators/simulation.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>

namespace {

using namespace varnow;
using test::same_bits;
using test::warned;

double const inf = INFINITY, nan = NAN;

simulation filled(std::initializer_list<double> values, simulation s = simulation(0, 10, 10))
{
    for (double x : values) s.add(x);
    return s;
}

// A file with no more of the first values than there are, every field another.
std::string const few = "2 1 0.500000 9.000000 8.000000 5.000000 13.000000 35.000000 97.000000 "
                        "2.000000 3.000000 1.500000 0.250000 "
                        "2 1 0 0 2.000000 0 3.000000 1 1 0 0 2.000000 ";

struct Simulation : testing::Test
{
    folder const files;
    // The file of s, which holds everything.
    std::string state(simulation const& s) const
    {
        s.save(Text(files.path("state")));
        return files.bytes("state");
    }
};

TEST_F(Simulation, AnswersFromItsSums)
{
    simulation const none, s = filled({4, 1, 10, 3, 2}), odd = filled({4, 0, -2}),
                           lost = filled({1, nan, 3}), up = filled({1, inf}),
                           both = filled({-inf, inf});
    // Of s the central moments are 10, 36 and 278.8.
    std::pair<double, double> const queries[] = {
        {s.length(), 5},         {(s.min)(), 1},
        {(s.max)(), 10},         {s.range(), 9},
        {s.sum(), 20},           {s.mean(), 4},
        {s.var(), 12.5},         {s.stdev(), std::sqrt(12.5)},
        {s.hmean(), 300. / 131}, {s.gmean(), std::pow(240, 0.2)},
        {s.kurtosis(), 3.152},   {s.skewness(), 1.2 * std::sqrt(2)},
        {s.mode(), 1},           {filled({7, 3, 7}).mode(), 7},
        {odd.hmean(), -12},      {odd.gmean(), std::pow(4, 1. / 3)},
        {lost.mean(), nan},      {lost.gmean(), std::cbrt(3)},
        {lost.var(), nan},       {lost.range(), 2},
        {lost.hmean(), nan},     {up.mean(), inf},
        {up.var(), nan},         {both.mean(), nan},
        {both.range(), inf},     {none.mean(), nan},
        {none.gmean(), nan},     {none.kurtosis(), nan},
    };
    for (auto const& [value, expected] : queries)
        EXPECT_TRUE(same_bits(value, expected) || std::fabs(value - expected) < 1e-12)
            << value << " for " << expected;
}

TEST_F(Simulation, CountsEachValueInOneCell)
{
    std::pair<double, int> const cases[] = {
        {-3, 1},     {0, 1},    {0.9, 1},  {1, 2},   {9.9, 10},     {10, 10},    {11, 10},
        {1e300, 10}, {inf, 10}, {-inf, 1}, {nan, 1}, {4.999999, 5}, {5e-324, 1}, {2147483648., 10},
        {-1e300, 1}};
    for (auto const& [x, cell] : cases) EXPECT_EQ(filled({x}).counts(cell), 1) << x;
    // Edges without a width lead to cells, too.
    for (auto edges : {simulation(1, 1, 3), simulation(nan, 1, 3), simulation(2, 1, 3)}) {
        simulation const s = filled({-1, 1, 2, nan, inf}, edges);
        EXPECT_EQ(s.counts(1) + s.counts(2) + s.counts(3), 5);
    }
    matrix const h = filled({-20, 1, 1, 1}, simulation(-8, 4, 3)).hist();
    EXPECT_TRUE(same_bits(h, matrix("2 0.25; 6 0; 10 0.75")));
}

TEST_F(Simulation, KeepsTheFirstValues)
{
    simulation s(0, 10, 2);
    for (int i = 1; i <= 20001; ++i) s.add(i);
    EXPECT_EQ(s.length(), 20001);
    EXPECT_EQ(s.first.rows, 20000);
    EXPECT_EQ(s.first(20000), 20000);
    s.reset();
    EXPECT_TRUE(state(s) == state(simulation(0, 10, 2)));
    s.n = INT_MAX - 1;
    EXPECT_EQ(warned([&] { s.add(1), s.add(1); }),
              "\nSIMULATION: void add(double)\nnastepne wartosci nie beda liczone\n\n");
    EXPECT_EQ(s.n, INT_MAX);
    EXPECT_EQ(s.sum(), 1);
}

TEST_F(Simulation, MergesLikeOneStream)
{
    for (int cut : {0, 1, 15000, 30000}) {
        simulation whole(0, 100, 7), a = whole, b = whole;
        whole.first.resizec(std::min(cut, 20000) + std::min(45000 - cut, 20000), 1);
        for (int i = 1; i <= 45000; ++i) {
            double const x = i % 64 - 20; // but for sinv and slog all sums are exact
            whole.add(x);
            (i <= cut ? a : b).add(x);
            if (i > cut && i <= cut + 20000) whole.first(std::min(cut, 20000) + i - cut) = x;
        }
        a += b;
        EXPECT_TRUE(state(a) == state(whole)) << cut;
    }
    simulation s = filled({3, 4}), empty;
    s += s;
    EXPECT_TRUE(state(s) == state(filled({3, 4, 3, 4})));
    s.add(4);
    EXPECT_EQ(s.mode(), 4);
    empty += s;
    EXPECT_TRUE(state(empty) == state(s));
}

TEST(SimulationDeathTest, RefusesWhatDoesNotFit)
{
    simulation many, one = filled({1});
    many.n = INT_MAX;
    for (simulation const& other :
         {simulation(0, 10, 9), simulation(1, 10, 10), simulation(0, 11, 10), simulation()})
        EXPECT_REFUSAL(one += other, "SIMULATION", "operator +=(simulation)",
                       "Niekompatybilna wielkosc histogramow");
    EXPECT_REFUSAL(many += filled({1}, simulation()), "SIMULATION", "operator +=(simulation)",
                   "przekroczona najwieksza liczba wartosci");
    EXPECT_REFUSAL(simulation(0, 1, -1), "SIMULATION", "simulation(double,double,int)",
                   "ujemna liczba przedzialow");
}

TEST_F(Simulation, ComesBackWithSixDecimals)
{
    simulation merged = filled({1}), to;
    for (int i = 0; i < 30000; ++i) merged.add(i);
    merged += merged;
    for (char const* locale : {"C", "pl_PL.UTF-8", "de_DE.UTF-8", "de_DE", "Polish_Poland.1250"}) {
        if (!std::setlocale(LC_NUMERIC, locale)) continue;
        std::string const head = "0 3 -0.500000 10.000000 3.500000 0.000000 0.000000 0.000000 "
                                 "0.000000 inf -inf 0.000000 0.000000 20000 1 0 0 0.000000 ";
        EXPECT_EQ(state(simulation(-0.5, 10, 3)).substr(0, head.size()), head) << locale;
        for (simulation const& from :
             {filled({0.1234567, nan, 1e22, -inf}), filled({}), simulation(), merged}) {
            to.load(Text(files.put("s", state(from))));
            EXPECT_TRUE(state(to) == state(from)) << locale;
            EXPECT_EQ(to.first(1), std::round(1e6 * from.first(1)) / 1e6);
        }
    }
    std::setlocale(LC_NUMERIC, "C");
    to.load(Text(files.put("s", few)));
    EXPECT_EQ(state(to), few);
    EXPECT_EQ(to.lo + to.hi * to.width, 72.5);
    EXPECT_EQ(to.s1 + to.s2 * to.s3 + to.s4 * to.min_x - to.max_x, 651);
    EXPECT_EQ(to.slog + 2 * to.sinv, 2);
    to.add(3);
    EXPECT_EQ(to.mode(), 3);
}

TEST_F(Simulation, LeavesTheObjectAloneWhenDamaged)
{
    simulation s = filled({3, 4});
    std::string const whole = state(s);
    auto expect_untouched = [&](std::string const& bytes) {
        std::string const path = files.put("s", bytes);
        EXPECT_EQ(warned([&] { s.load(Text(path)); }),
                  "\nSIMULATION: void load(Text)\nnieprawidlowa zawartosc pliku\nplik: " + path +
                      "\n");
        ASSERT_TRUE(state(s) == whole) << bytes.substr(0, 200);
    };
    std::pair<std::string, char const*> const changes[] = {
        {"2 1 ", "-2 1 "},
        {"2 1 ", "2147483648 1 "},
        {"2 1 ", "3 1 "},
        {"2 1 ", "2 -1 "},
        {"2 1 ", "2 2147483647 "},
        {"2 1 ", "2 2 "},
        {"9.000000", "9,000000"},
        {" 2 1 0 0 ", " 1 1 0 0 "},
        {" 2 1 0 0 ", " 2 1 0 0 0 "},
        {"2 1 0 0 2.000000 0 ", "2 2 0 0 0 2.000000 2.000000 0 2.000000 "},
        {" 1 1 0 0 ", " 2 1 0 0 "},
        {" 1 1 0 0 ", " 1 2 0 0 0 2.000000 "},
        {" 1 1 0 0 2", " 1 1 0 0 x"}};
    for (auto const& [from, to] : changes) {
        std::string bytes = few;
        expect_untouched(bytes.replace(bytes.find(from), from.size(), to));
    }
    for (std::size_t left = 0; left < few.size(); ++left) expect_untouched(few.substr(0, left));
    expect_untouched(few + "1 ");
    std::string longer = whole;
    expect_untouched(longer.replace(longer.find("20000 1 0 "), 10, "20001 1 0 0 3.000000 "));
    EXPECT_EQ(warned([&] {
                  s.load(Text(files.path("none")));
                  s.save(Text(files.path("no/such/folder")));
              }),
              "");
    EXPECT_TRUE(state(s) == whole);
}

} // namespace
