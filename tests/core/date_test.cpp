#include <varnow/containers/data.h>
#include <varnow/core/date.h>

#include "tests/support/refusal.h"

#include <climits>
#include <cmath>
#include <ctime>
#include <sstream>

using namespace varnow;

namespace {

bool leap(long y)
{
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

long month_length(long y, long m)
{
    long const lengths[] = {31, leap(y) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[m - 1];
}

char const* const early = "data wczesniejsza niz poczatek kalendarza";
char const* const legal_routine = "long legald(sdate)";

} // namespace

TEST(Date, CountsEveryDayOfTheCalendarOnceAndInOrder)
{
    long g = 578027;
    for (long y = 1582; y <= 2900; ++y)
        for (long m = y == 1582 ? 10 : 1; m <= 12; ++m) {
            for (long k = 1; k <= month_length(y, m); ++k, ++g) {
                ASSERT_EQ(gday({y, m, k}), g);
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

TEST(Date, ReadsTextsWithAnyOfThreeSeparators)
{
    for (char const* s : {"2024-02-29", "2024/02/29", "2024.02/29", "2024.02.29"}) {
        EXPECT_EQ(datot(date(s)), "2024-2-29");
        EXPECT_EQ(datot(date(Text(s))), "2024-2-29");
        EXPECT_EQ((TtoU<Text, date>(s)), d(s));
    }
    date x;
    x = "2024-07-05";
    EXPECT_EQ(datot(x), "2024-7-5");
    std::istringstream in(" 1999-12-31 2000.01.01 ");
    std::ostringstream out;
    while (in >> x) out << x << ' ';
    EXPECT_EQ(out.str(), "1999-12-31 2000-1-1 ");
    sdate const unchecked = ttosd("20x4-99-1z");
    EXPECT_TRUE(unchecked.year == 20 && unchecked.month == 99 && unchecked.day == 1);
}

TEST(Date, GivesItsParts)
{
    date const x(2024, 7, 5);
    long y, m, k;
    x.ymd(y, m, k);
    EXPECT_TRUE(y == 2024 && m == 7 && k == 5);
    EXPECT_TRUE(year(x) == 2024 && month(x) == 7 && day(x) == 5);
    EXPECT_DOUBLE_EQ(double(x), 2024.07);
    EXPECT_EQ(dtoda(2024.07), date(2024, 7, 1));
    for (long i = 1; i <= 12; ++i) EXPECT_EQ(dtoda(double(date(1999, i, 28))), date(1999, i, 1));
    EXPECT_EQ(today().number, date(1970, 1, 1).number + std::time(nullptr) / 86400);
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
    struct
    {
        char const* from;
        long months;
        char const* to;
    } const cases[] = {
        {"2024-01-31", 1, "2024-02-29"},   {"2024-01-31", -2, "2023-11-30"},
        {"2023-01-31", 1, "2023-02-28"},   {"2024-01-31", 0, "2024-01-31"},
        {"2024-01-31", -1, "2023-12-31"},  {"2024-12-31", 1, "2025-01-31"},
        {"2024-12-15", 12, "2025-12-15"},  {"2024-12-15", 13, "2026-01-15"},
        {"2024-01-15", -12, "2023-01-15"}, {"2024-01-15", -13, "2022-12-15"},
        {"2024-05-31", -3, "2024-02-29"},  {"1582-12-31", -2, "1582-10-31"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(mmod(c.from, c.months), c.to) << c.from << ' ' << c.months;
    // Every month within some years, by counting months.
    for (long n = -400; n <= 400; ++n) {
        long const months = 2000 * 12 + n; // from January 2000
        EXPECT_EQ(mmod("2000-01-10", n), date(months / 12, months % 12 + 1, 10)) << n;
    }
    EXPECT_EQ(ymod("2024-02-28", -1), "2023-02-28");
    EXPECT_EQ(ymod("2024-02-29", 4), "2028-02-29");
    EXPECT_EQ(ymfirst("2024-02-29"), "2024-02-01");
    for (long m = 1; m <= 12; ++m)
        EXPECT_EQ(ymlast(date(2023, m, 3)), date(2023, m, month_length(2023, m)));
}

TEST(DateDeathTest, RefusesTextsOfAnotherForm)
{
    char const* const form = "oczekiwany YYYY-MM-DD, YYYY.MM.DD lub YYYY/MM/DD";
    for (char const* s : {"", "2024-2-29", "2024-02-029"})
        EXPECT_REFUSAL_DETAIL(date x(s), "DATE", "sdate ttosd(Text)",
                              "zly format tekstowy daty, nieprawidlowa dlugosc", form);
    for (char const* s : {"2024:02-29", "2024-02,29", "2024-0229 ",
                          "2024\xAD"
                          "02-29"})
        EXPECT_REFUSAL_DETAIL(date x(s), "DATE", "sdate ttosd(Text)",
                              "zly format tekstowy daty, nieprawidlowy separator", form);
}

TEST(DateDeathTest, RefusesDatesThatTheCalendarDoesNotHave)
{
    EXPECT_REFUSAL(d("2023-02-29"), "DATE", legal_routine, "nieprawidlowa data: 2023-2-29");
    EXPECT_REFUSAL(date(2024, 13, 1), "DATE", legal_routine, "nieprawidlowa data: 2024-13-1");
    EXPECT_REFUSAL(date(LONG_MAX, 1, 1), "DATE", legal_routine,
                   "nieprawidlowa data: " + std::to_string(LONG_MAX) + "-1-1");
    EXPECT_REFUSAL(ymod("2024-02-29", 1), "DATE", legal_routine, "nieprawidlowa data: 2025-2-29");
    EXPECT_REFUSAL(dtoda(2024.13), "DATE", legal_routine, "nieprawidlowa data: 2024-13-1");
}

TEST(DateDeathTest, RefusesWhatLiesBeforeTheCalendar)
{
    EXPECT_REFUSAL(d("1582-09-30"), "DATE", legal_routine, early);
    EXPECT_REFUSAL(date(LONG_MIN, 1, 1), "DATE", legal_routine, early);
    EXPECT_REFUSAL(dtoda(NAN), "DATE", legal_routine, early);
    EXPECT_REFUSAL(mmod("1582-10-31", -1), "DATE", legal_routine, early);
    EXPECT_REFUSAL(mmod("2024-01-31", LONG_MIN), "DATE", legal_routine, early);
    EXPECT_REFUSAL(ymlast(date()), "DATE", legal_routine, early);
    EXPECT_REFUSAL(ymfirst(d("1582-10-01") - 1), "DATE", legal_routine, early);
}
