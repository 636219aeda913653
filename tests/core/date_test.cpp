#include "tests/support/refusal.h"

#include <varnow/containers/data.h>
#include <varnow/core/date.h>

#include <climits>
#include <cmath>
#include <ctime>
#include <sstream>

using namespace varnow;

namespace {

long month_length(long y, long m)
{
    bool const leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    long const lengths[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[m - 1];
}

} // namespace

TEST(Date, CountsEveryDayOfTheCalendarOnceAndInOrder)
{
    long g = 578027;
    for (long y = 1582; y <= 2900; ++y)
        for (long m = y == 1582 ? 10 : 1; m <= 12; ++m) {
            for (long k = 1; k <= month_length(y, m); ++k, ++g) {
                ASSERT_EQ(legald({y, m, k}), g);
                sdate const s = dtf(g);
                ASSERT_TRUE(s.year == y && s.month == m && s.day == k) << g;
            }
            for (long k : {0L, -1L, month_length(y, m) + 1, 32L, LONG_MAX, LONG_MIN})
                ASSERT_EQ(islegald({y, m, k}), 0) << y << ' ' << m << ' ' << k;
        }
    EXPECT_EQ(gday({1970, 1, 1}), 719468);
    for (long m : {0L, 13L, -3L, LONG_MAX, LONG_MIN}) EXPECT_EQ(islegald({2024, m, 1}), 0) << m;
    for (long y : {1581L, 0L, -2024L, LONG_MAX, LONG_MIN}) EXPECT_EQ(islegald({y, 1, 1}), 0) << y;
}

TEST(Date, ReadsTextsWithAnyOfThreeSeparatorsAndGivesItsParts)
{
    for (char const* s : {"2024-02-29", "2024/02/29", "2024.02/29", "2024.02.29"})
        for (date const& x : {date(s), date(Text(s)), TtoU<Text, date>(s), d(s)})
            EXPECT_EQ(datot(x), "2024-2-29");
    date x;
    x = "2024-07-05";
    long y, m, k;
    x.ymd(y, m, k);
    EXPECT_TRUE(y == 2024 && m == 7 && k == 5);
    EXPECT_TRUE(year(x) == 2024 && month(x) == 7 && day(x) == 5);
    EXPECT_DOUBLE_EQ(double(x), 2024.07);
    for (long i = 1; i <= 12; ++i) EXPECT_EQ(dtoda(double(date(1999, i, 28))), date(1999, i, 1));
    EXPECT_EQ(today().number, date(1970, 1, 1).number + std::time(nullptr) / 86400);
    std::istringstream in(" 1999-12-31 2000.01.01 ");
    std::ostringstream out;
    while (in >> x) out << x << ' ';
    EXPECT_EQ(out.str(), "1999-12-31 2000-1-1 ");
    sdate const unchecked = ttosd("20x4-99-1z");
    EXPECT_TRUE(unchecked.year == 20 && unchecked.month == 99 && unchecked.day == 1);
}

TEST(Date, MovesByDaysAndComparesInOrdinaryExpressions)
{
    date const x("2024-02-28");
    short const two = 2;
    EXPECT_EQ(x + 1, "2024-02-29");
    EXPECT_EQ(x + two, "2024-03-01");
    EXPECT_EQ(x - 28L, Text("2024-01-31"));
    EXPECT_EQ(dmod(x, -366), date("2023-02-27"));
    EXPECT_EQ((x + 1000u) - x, 1000);
    EXPECT_EQ(x - "2024-02-01", 27);
    EXPECT_TRUE(x == "2024-02-28" && x != x + 1 && x < x + 1 && x <= x && x > x - 1 && x >= x);
    EXPECT_TRUE("2024-02-27" < x && Text("2024.02.28") == x);
    EXPECT_TRUE(x == 2024.02 && 2024.1 > x && x < 2025 && x != 0); // as the number of its month
    EXPECT_EQ((date() - 5).number, -5);                            // unchecked
    EXPECT_EQ((date() + LONG_MIN) - LONG_MIN, date());
}

TEST(Date, MovesByMonthsToTheLastDayThatThereIs)
{
    // From the 31st of January 2000, and the 10th, by counting months.
    for (long n = -400; n <= 400; ++n) {
        long const months = 2000 * 12 + n, y = months / 12, m = months % 12 + 1;
        EXPECT_EQ(mmod("2000-01-10", n), date(y, m, 10)) << n;
        EXPECT_EQ(mmod("2000-01-31", n), date(y, m, month_length(y, m))) << n;
        EXPECT_EQ(ymlast(date(y, m, 3)), date(y, m, month_length(y, m))) << n;
    }
    EXPECT_EQ(mmod("2024-05-31", -3), "2024-02-29");
    EXPECT_EQ(mmod("1582-12-31", -2), "1582-10-31");
    EXPECT_EQ(ymod("2024-02-28", -1), "2023-02-28");
    EXPECT_EQ(ymod("2024-02-29", 4), "2028-02-29");
    EXPECT_EQ(ymfirst("2024-02-29"), "2024-02-01");
}

TEST(DateDeathTest, RefusesTextsOfAnotherForm)
{
    auto refuses = [](char const* text, std::string const& why) {
        EXPECT_REFUSAL_DETAIL(date x(text), "DATE", "sdate ttosd(Text)",
                              "zly format tekstowy daty, nieprawidlow" + why,
                              "oczekiwany YYYY-MM-DD, YYYY.MM.DD lub YYYY/MM/DD");
    };
    for (char const* x : {"", "2024-2-29", "2024-02-029"}) refuses(x, "a dlugosc");
    for (char const* x : {"2024:02-29", "2024-02,29", "2024-0229 ", "2024\25502-29"})
        refuses(x, "y separator");
}

TEST(DateDeathTest, RefusesDatesThatTheCalendarDoesNotHave)
{
    auto refuses = [](auto call, std::string const& why) {
        EXPECT_REFUSAL(call(), "DATE", "long legald(sdate)", why);
    };
    refuses([] { d("2023-02-29"); }, "nieprawidlowa data: 2023-2-29");
    refuses([] { date(2024, 13, 1); }, "nieprawidlowa data: 2024-13-1");
    refuses([] { date(LONG_MAX, 1, 1); },
            "nieprawidlowa data: " + std::to_string(LONG_MAX) + "-1-1");
    refuses([] { ymod("2024-02-29", 1); }, "nieprawidlowa data: 2025-2-29");
    refuses([] { dtoda(2024.13); }, "nieprawidlowa data: 2024-13-1");
    void (*const early[])() = {[] { d("1582-09-30"); },
                               [] { date(LONG_MIN, 1, 1); },
                               [] { dtoda(NAN); },
                               [] { mmod("1582-10-31", -1); },
                               [] { mmod("2024-01-31", LONG_MIN); },
                               [] { ymlast(date()); },
                               [] { ymfirst(d("1582-10-01") - 1); }};
    for (auto call : early) refuses(call, "data wczesniejsza niz poczatek kalendarza");
}
