// Calendar dates as day numbers, in the proleptic Gregorian calendar from 1582-10-01.
#pragma once

#include <varnow/core/text.h>

namespace varnow {

/// A date taken apart.
struct sdate
{
    long year, month, day;
};

namespace detail {

/// a - b, wrapped round where the type ends.
inline long wrapping_minus(long a, long b)
{
    return static_cast<long>(static_cast<unsigned long>(a) - static_cast<unsigned long>(b));
}

} // namespace detail

/// The parts of a text of 10 characters with "-", "." or "/" in places 5 and 8; no other check.
/// - refuses: another length; another separator; class DATE
VARNOW_API sdate ttosd(Text const& t);
/// Day number without checks: 578027 for 1582-10-01, 719468 for 1970-01-01.
VARNOW_API long gday(sdate const& s);
/// The way back from a day number.
VARNOW_API sdate dtf(long g);
/// Day number of a legal date.
/// - refuses: a date before 1582-10-01; a date that the calendar doesn't have; class DATE
VARNOW_API long legald(sdate const& s);
/// 1 where legald would accept, otherwise 0.
VARNOW_API int islegald(sdate const& s);

/// A calendar date. The default one is no legal date. Reading a text or parts refuses as `ttosd`
/// and `legald` do; moving by days is not checked.
class VARNOW_API date
{
public:
    long number; ///< as gday counts

    date() : number(0) {}
    date(char const* s);
    date(Text const& s);
    date(long y, long m, long d);
    date& operator=(char const* s);

    void ymd(long& y, long& m, long& d) const;
    /// The year and a hundredth of the month: 2024.07 for any day in July 2024.
    operator double() const;
};

VARNOW_API date d(char const* s);

VARNOW_API long day(date const& x);
VARNOW_API long month(date const& x);
VARNOW_API long year(date const& x);
/// Year, month and day between "-", without leading zeros.
VARNOW_API Text datot(date const& x);
/// The first day of the month that a number such as 2024.07 stands for.
VARNOW_API date dtoda(double x);
/// The day by UTC.
VARNOW_API date today();
VARNOW_API date ymfirst(date const& x);
VARNOW_API date ymlast(date const& x);

/// Moves by n days, without a check.
VARNOW_API date dmod(date const& x, long n);
/// Moves by n months; a day that the new month lacks becomes its last one.
VARNOW_API date mmod(date const& x, long n);
/// Moves by n years; refuses 29 February of a year without one.
VARNOW_API date ymod(date const& x, long n);

// Templates, so that a date and a number of any integer type meet here and not as two doubles.
template <class N, std::enable_if_t<std::is_integral<N>::value, int> = 0>
date operator+(date const& x, N n)
{
    return dmod(x, static_cast<long>(n));
}
template <class N, std::enable_if_t<std::is_integral<N>::value, int> = 0>
date operator-(date const& x, N n)
{
    return dmod(x, detail::wrapping_minus(0, static_cast<long>(n)));
}
/// Days from b to a.
inline long operator-(date const& a, date const& b)
{
    return detail::wrapping_minus(a.number, b.number);
}

/// As datot writes.
VARNOW_API std::ostream& operator<<(std::ostream& o, date const& x);
/// A word as date(Text) reads it; where no word is left, x stays.
VARNOW_API std::istream& operator>>(std::istream& i, date& x);

// A text is compared as the date that it holds, a number with the date as a number (2024.07).
// clang-format off
#define VARNOW_COMPARE(op)                                                                             \
    inline int operator op(date const& a, date const& b) { return a.number op b.number; }              \
    inline int operator op(date const& a, Text const& b) { return a op date(b); }                      \
    inline int operator op(Text const& a, date const& b) { return date(a) op b; }                      \
    inline int operator op(date const& a, char const* b) { return a op date(b); }                      \
    inline int operator op(char const* a, date const& b) { return date(a) op b; }                      \
    template <class S, detail::if_number<S> = 0> int operator op(date const& a, S b)                   \
    { return static_cast<double>(a) op static_cast<double>(b); }                                       \
    template <class S, detail::if_number<S> = 0> int operator op(S a, date const& b)                   \
    { return static_cast<double>(a) op static_cast<double>(b); }
VARNOW_COMPARE(==) VARNOW_COMPARE(!=) VARNOW_COMPARE(<) VARNOW_COMPARE(<=) VARNOW_COMPARE(>) VARNOW_COMPARE(>=)
#undef VARNOW_COMPARE
// clang-format on

} // namespace varnow
