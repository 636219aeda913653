#include <varnow/core/date.h>

#include <varnow/containers/data.h>
#include <varnow/core/messages.h>

#include <cmath>
#include <ctime>
#include <istream>
#include <limits>
#include <ostream>

namespace varnow {

namespace {

// Wide enough for every step of the calendar's arithmetic on any long.
__extension__ typedef __int128 wide;

long const calendar_begin = 578027; // 1582-10-01

long narrow(wide x)
{
    using limits = std::numeric_limits<long>;
    if (x < limits::min()) return limits::min();
    if (x > limits::max()) return limits::max();
    return static_cast<long>(x);
}

// A double's whole part; 0 for NaN, and the nearest long for what is too large.
long whole(double x)
{
    if (std::isnan(x)) return 0;
    if (std::fabs(x) < 1e9) return static_cast<long>(x);
    return x < 0 ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
}

wide days_before_year(wide y)
{
    return 365 * y + y / 4 - y / 100 + y / 400;
}

bool is_separator(char c)
{
    return c >= '-' && c <= '/';
}

int number_at(Text const& t, int from, int n)
{
    return ttoi(Text(t.str + from - 1, static_cast<std::size_t>(n)));
}

bool survives_rebuilding(sdate const& s, long g)
{
    sdate const back = dtf(g);
    return back.year == s.year && back.month == s.month && back.day == s.day;
}

Text text_of(sdate const& s)
{
    return ltot(s.year) + "-" + ltot(s.month) + "-" + ltot(s.day);
}

// The date with the day lowered to what the month has. Day 1 is the end of it: it is illegal only
// before the calendar's beginning.
date last_possible(sdate s)
{
    while (s.day > 1 && !islegald(s)) --s.day;
    return date(s.year, s.month, s.day);
}

} // namespace

sdate ttosd(Text const& t)
{
    auto refuse = [](char const* why) {
        errormessage("DATE", "sdate ttosd(Text)", why,
                     "oczekiwany YYYY-MM-DD, YYYY.MM.DD lub YYYY/MM/DD");
        return sdate{0, 0, 0};
    };
    if (t.len != 10) return refuse("zly format tekstowy daty, nieprawidlowa dlugosc");
    if (!is_separator(t.str[4]) || !is_separator(t.str[7]))
        return refuse("zly format tekstowy daty, nieprawidlowy separator");
    return {number_at(t, 1, 4), number_at(t, 6, 2), number_at(t, 9, 2)};
}

long gday(sdate const& s)
{
    wide const m = (wide(s.month) + 9) % 12;
    wide const y = s.year - m / 10;
    return narrow(days_before_year(y) + (m * 306 + 5) / 10 + s.day - 1);
}

sdate dtf(long g)
{
    wide y = (wide(10000) * g + 14780) / 3652425;
    wide r = g - days_before_year(y);
    if (r < 0) {
        --y;
        r = g - days_before_year(y);
    }
    wide const k = (100 * r + 52) / 3060;
    return {narrow(y + (k + 2) / 12), narrow((k + 2) % 12 + 1), narrow(r - (k * 306 + 5) / 10 + 1)};
}

long legald(sdate const& s)
{
    auto refuse = [](Text const& why) {
        errormessage("DATE", "long legald(sdate)", why, "");
        return 0L;
    };
    long const g = gday(s);
    if (g < calendar_begin) return refuse("data wczesniejsza niz poczatek kalendarza");
    if (!survives_rebuilding(s, g)) return refuse("nieprawidlowa data: " + text_of(s));
    return g;
}

int islegald(sdate const& s)
{
    long const g = gday(s);
    return g >= calendar_begin && survives_rebuilding(s, g);
}

date::date(char const* s) : number(legald(ttosd(s))) {}

date::date(Text const& s) : number(legald(ttosd(s))) {}

date::date(long y, long m, long d) : number(legald({y, m, d})) {}

date& date::operator=(char const* s)
{
    return *this = date(s);
}

void date::ymd(long& y, long& m, long& d) const
{
    sdate const s = dtf(number);
    y = s.year;
    m = s.month;
    d = s.day;
}

date::operator double() const
{
    sdate const s = dtf(number);
    return static_cast<double>(s.year) + static_cast<double>(s.month) / 100;
}

date d(char const* s)
{
    return date(s);
}

long day(date const& x)
{
    return dtf(x.number).day;
}

long month(date const& x)
{
    return dtf(x.number).month;
}

long year(date const& x)
{
    return dtf(x.number).year;
}

Text datot(date const& x)
{
    return text_of(dtf(x.number));
}

date dtoda(double x)
{
    double const year = std::trunc(x);
    return date(whole(year), whole(std::floor((x - year) * 100 + 0.5)), 1);
}

date today()
{
    return date(1970, 1, 1) + std::time(nullptr) / 3600 / 24;
}

date ymfirst(date const& x)
{
    sdate const s = dtf(x.number);
    return date(s.year, s.month, 1);
}

date ymlast(date const& x)
{
    sdate const s = dtf(x.number);
    return last_possible({s.year, s.month, 31});
}

date dmod(date const& x, long n)
{
    date r = x;
    r.number = detail::wrapping_minus(x.number, detail::wrapping_minus(0, n));
    return r;
}

date mmod(date const& x, long n)
{
    sdate const from = dtf(x.number);
    wide year = from.year, month = wide(from.month) + n;
    if (month >= 13) {
        year += (month - 13) / 12 + 1;
        month = (month - 1) % 12 + 1;
    } else if (month < 1) {
        year += month / 12 - 1;
        month = month % 12 + 12;
    }
    return last_possible({narrow(year), narrow(month), from.day});
}

date ymod(date const& x, long n)
{
    sdate const s = dtf(x.number);
    return date(narrow(wide(s.year) + n), s.month, s.day);
}

std::ostream& operator<<(std::ostream& o, date const& x)
{
    return o << datot(x);
}

std::istream& operator>>(std::istream& i, date& x)
{
    Text word;
    if (i >> word) x = date(word);
    return i;
}

template <> date TtoU<Text, date>(Text x)
{
    return date(x);
}

} // namespace varnow
