#include <tests/support/bits.h>
#include <tests/support/folder.h>
#include <tests/support/refusal.h>

#include <varnow/accumulators/simulation.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <initializer_list>
#include <sstream>
#include <string>

namespace {

using namespace varnow;
using test::same_bits;

double const inf = INFINITY, nan = NAN;

simulation filled(std::initializer_list<double> values, simulation s = simulation(0, 10, 10))
{
    for (double x : values) s.add(x);
    return s;
}

// Everything that a file holds, as one line.
std::string state(simulation const& s)
{
    std::ostringstream o;
    o.precision(17);
    o << s.n << ' ' << s.bins;
    for (double x : {s.lo, s.hi, s.width, s.s1, s.s2, s.s3, s.s4, s.min_x, s.max_x, s.slog, s.sinv})
        o << ' ' << x;
    for (matrix const* m : {&s.first, &s.counts}) {
        o << " of " << m->rows << ':';
        for (int i = 0; i < m->rows; ++i) o << ' ' << m->cell[i][0];
    }
    return o.str();
}

TEST(Simulation, AnswersFromItsSums)
{
    simulation const s = filled({4, 1, 10, 3, 2});
    struct
    {
        char const* query;
        double value, expected;
    } const queries[] = {
        {"length", double(s.length()), 5},
        {"min", (s.min)(), 1},
        {"max", (s.max)(), 10},
        {"range", s.range(), 9},
        {"sum", s.sum(), 20},
        {"mean", s.mean(), 4},
        {"gmean", s.gmean(), std::pow(240, 0.2)},
        {"hmean", s.hmean(), 300.0 / 131},
        {"var", s.var(), 12.5},
        {"stdev", s.stdev(), std::sqrt(12.5)},
        // central moments 10, 36 and 278.8
        {"skewness", s.skewness(), 1.2 * std::sqrt(2)},
        {"kurtosis", s.kurtosis(), 3.152},
        {"mode", s.mode(), 1},
        {"mode of repeats", filled({7, 3, 7}).mode(), 7},
        {"gmean beside others", filled({4, 0, -2}).gmean(), std::pow(4, 1.0 / 3)},
        {"hmean beside a zero", filled({4, 0, -2}).hmean(), -12},
    };
    for (auto const& q : queries) EXPECT_NEAR(q.value, q.expected, 1e-12) << q.query;
    simulation const none;
    for (double x : {none.mean(), none.var(), none.gmean(), none.hmean(), none.kurtosis()})
        EXPECT_TRUE(std::isnan(x));
}

TEST(Simulation, CountsEachValueInOneCell)
{
    struct
    {
        double x;
        int cell;
    } const cases[] = {{-3, 1},     {0, 1},        {0.9, 1},   {1, 2},
                       {9.9, 10},   {10, 10},      {11, 10},   {1e300, 10},
                       {inf, 10},   {-inf, 1},     {nan, 1},   {2147483648.0, 10},
                       {-1e300, 1}, {4.999999, 5}, {5e-324, 1}};
    for (auto const& c : cases) {
        simulation const s = filled({c.x});
        EXPECT_EQ(s.counts(c.cell), 1) << c.x;
        EXPECT_EQ(s.n, 1) << c.x;
    }
    // Edges without a width lead to cells, too.
    for (auto edges : {simulation(1, 1, 3), simulation(nan, 1, 3), simulation(2, 1, 3)}) {
        simulation const s = filled({-1, 1, 2, nan, inf}, edges);
        EXPECT_EQ(s.counts(1) + s.counts(2) + s.counts(3), 5);
    }
    matrix const h = filled({-20, 1, 1, 1}, simulation(-8, 4, 3)).hist();
    EXPECT_TRUE(same_bits(h, matrix("2 0.25; 6 0; 10 0.75")));
}

TEST(Simulation, TakesWhatIsNotFinite)
{
    simulation const s = filled({1, nan, 3}), up = filled({1, inf}), both = filled({-inf, inf});
    EXPECT_TRUE(std::isnan(s.mean()) && std::isnan(s.var()) && std::isnan(s.hmean()));
    EXPECT_DOUBLE_EQ(s.gmean(), std::cbrt(3));
    EXPECT_EQ(s.range(), 2);
    EXPECT_EQ(up.mean(), inf);
    EXPECT_TRUE(std::isnan(up.var()) && std::isnan(both.mean()));
    EXPECT_EQ(both.range(), inf);
}

TEST(Simulation, KeepsTheFirstValues)
{
    simulation s(0, 10, 2);
    for (int i = 1; i <= 20001; ++i) s.add(i);
    EXPECT_EQ(s.length(), 20001);
    EXPECT_EQ(s.first.rows, 20000);
    EXPECT_EQ(s.first(20000), 20000);
    s.reset();
    EXPECT_EQ(state(s), state(simulation(0, 10, 2)));
    s.n = INT_MAX - 1;
    testing::internal::CaptureStderr();
    s.add(1);
    s.add(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\nSIMULATION: void add(double)\nnastepne wartosci nie beda liczone\n\n");
    EXPECT_EQ(s.n, INT_MAX);
    EXPECT_EQ(s.sum(), 1);
}

TEST(Simulation, MergesLikeOneStream)
{
    for (int cut : {0, 1, 15000, 20000, 30000, 45000}) {
        SCOPED_TRACE(cut);
        simulation whole(0, 100, 7), a = whole, b = whole;
        for (int i = 1; i <= 45000; ++i) {
            double const x = i % 64; // all sums are exact
            whole.add(x);
            (i <= cut ? a : b).add(x);
        }
        whole.sinv = whole.slog = a.sinv = a.slog = b.sinv = b.slog = 0;
        a += b;
        int const stored = std::min(cut, 20000) + std::min(45000 - cut, 20000);
        ASSERT_EQ(a.first.rows, stored);
        EXPECT_EQ(a.first(stored), (b.n > 0 ? std::min(45000, cut + 20000) : 20000) % 64);
        whole.first = a.first;
        EXPECT_EQ(state(a), state(whole));
    }
    simulation s = filled({3, 4}), empty;
    s += s;
    EXPECT_EQ(s.n, 4);
    EXPECT_EQ(s.mean(), 3.5);
    EXPECT_EQ(s.mode(), 3);
    EXPECT_EQ(s.counts(4), 2);
    s.add(4);
    EXPECT_EQ(s.first.rows, 20000);
    EXPECT_EQ(s.first(5), 4);
    EXPECT_EQ(s.mode(), 4);
    empty += s;
    EXPECT_EQ(state(empty), state(s));
}

TEST(SimulationDeathTest, RefusesWhatDoesNotFit)
{
    char const* const histograms = "Niekompatybilna wielkosc histogramow";
    simulation many, few = filled({1});
    many.n = INT_MAX;
    struct
    {
        simulation a, b;
        char const* why;
    } const cases[] = {
        {few, filled({1}, simulation(0, 10, 9)), histograms},
        {few, filled({1}, simulation(1, 10, 10)), histograms},
        {few, filled({1}, simulation(0, 11, 10)), histograms},
        {few, simulation(), histograms},
        {many, filled({1}, simulation()), "przekroczona najwieksza liczba wartosci"},
    };
    for (auto const& c : cases) {
        simulation a = c.a;
        EXPECT_REFUSAL(a += c.b, "SIMULATION", "operator +=(simulation)", c.why);
    }
    EXPECT_REFUSAL(simulation(0, 1, -1), "SIMULATION", "simulation(double,double,int)",
                   "ujemna liczba przedzialow");
}

TEST(SimulationFile, ComesBackWithSixDecimals)
{
    folder const files;
    Text const path(files.path("s"));
    simulation const s = filled({0.1234567, nan, 1e22, -inf}), none;
    simulation merged = filled({1});
    for (int i = 0; i < 30000; ++i) merged.add(i);
    merged += merged;
    char const* const locales[] = {"C", "pl_PL.UTF-8", "de_DE.UTF-8", "de_DE",
                                   "Polish_Poland.1250"};
    for (char const* locale : locales) {
        if (!std::setlocale(LC_NUMERIC, locale)) continue;
        SCOPED_TRACE(locale);
        simulation(-0.5, 10, 3).save(path);
        std::string const head = "0 3 -0.500000 10.000000 3.500000 0.000000 0.000000 0.000000 "
                                 "0.000000 inf -inf 0.000000 0.000000 20000 1 0 0 0.000000 ";
        EXPECT_EQ(files.bytes("s").substr(0, head.size()), head);
        for (simulation const* from :
             std::initializer_list<simulation const*>{&s, &none, &merged}) {
            simulation to = filled({7});
            from->save(path);
            to.load(path);
            EXPECT_EQ(to.n, from->n);
            EXPECT_NEAR(to.slog, from->slog, 5e-7);
            EXPECT_EQ(to.first(1), std::round(1e6 * from->first(1)) / 1e6);
            EXPECT_EQ(to.first.rows, from->first.rows);
            EXPECT_TRUE(same_bits(to.counts, from->counts));
            EXPECT_TRUE(same_bits(to.s1, from->s1));
            EXPECT_EQ((to.min)(), (from->min)());
        }
    }
    std::setlocale(LC_NUMERIC, "C");
}

TEST(SimulationFile, LeavesTheObjectAloneWhenDamaged)
{
    folder const files;
    Text const path(files.path("s"));
    simulation s = filled({3, 4});
    s.save(path);
    std::string const whole = files.bytes("s"), before = state(s);
    char const* const changes[][2] = {
        {"2 10 ", "-2 10 "},
        {"2 10 ", "2147483648 10 "},
        {"2 10 ", "2 -10 "},
        {"2 10 ", "2 2147483647 "},
        {"2 10 ", "2 11 "},
        {"7.000000", "7,000000"},
        {" 20000 1 ", " 20001 1 "},
        {" 20000 1 ", " 2 1 "},
        {" 20000 1 ", " 10000 2 "},
        {" 10 1 0 0 ", " 11 1 0 0 "},
        {" 10 1 0 0 ", " 1 10 0 0 "},
        {"4.000000 0 0.", "4.x 0 0."},
        {"4.000000 0 0.", "4.000000 0 0 0."},
    };
    auto expect_untouched = [&](std::string const& bytes) {
        files.put("s", bytes);
        testing::internal::CaptureStderr();
        s.load(path);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "\nSIMULATION: void load(Text)\nnieprawidlowa zawartosc pliku\nplik: " +
                      std::string(path.str) + "\n");
        ASSERT_EQ(state(s), before);
    };
    for (auto const& [from, to] : changes) {
        SCOPED_TRACE(to);
        std::string bytes = whole;
        expect_untouched(bytes.replace(bytes.find(from), std::string(from).size(), to));
    }
    for (std::size_t missing : {1, 3, 12, 100, 100000, 219000, int(whole.size())}) {
        SCOPED_TRACE(missing);
        expect_untouched(whole.substr(0, whole.size() - missing));
    }
    expect_untouched(whole + "1");
    testing::internal::CaptureStderr();
    s.load(Text(files.path("none")));
    s.save(Text(files.path("no/such/folder")));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(state(s), before);
}

} // namespace
