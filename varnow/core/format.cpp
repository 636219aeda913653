#include <varnow/core/format.h>

#include <varnow/core/platform.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace varnow {
namespace detail {

namespace {

__extension__ typedef unsigned __int128 wide;

int const most_decimals = 12;
std::uint64_t const powers_of_ten[most_decimals + 1] = {
    1u,        10u,        100u,        1000u,        10000u,        100000u,       1000000u,
    10000000u, 100000000u, 1000000000u, 10000000000u, 100000000000u, 1000000000000u};

struct digit_pairs
{
    char at[200];
    constexpr digit_pairs() : at()
    {
        for (int i = 0; i < 100; ++i) {
            at[2 * i] = static_cast<char>('0' + i / 10);
            at[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
constexpr digit_pairs pairs;

// The digits of n before `end`; returns their begin.
char* put_before(char* end, std::uint64_t n)
{
    while (n >= 100) {
        end -= 2;
        std::memcpy(end, pairs.at + 2 * (n % 100), 2);
        n /= 100;
    }
    if (n >= 10) {
        end -= 2;
        std::memcpy(end, pairs.at + 2 * n, 2);
    } else {
        *--end = static_cast<char>('0' + n);
    }
    return end;
}

// |x| times 10^decimals, rounded half to even as the C library does; false beyond 63 bits.
bool scaled(double x, int decimals, std::uint64_t& result)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, 8);
    int const exponent = static_cast<int>(bits >> 52 & 0x7FF);
    std::uint64_t const fraction = bits & 0xFFFFFFFFFFFFF;
    // x = mantissa * 2^-shift; both are exact, and so is the product with the power of ten, which
    // has at most 93 bits.
    wide const product =
        wide(exponent ? fraction | 1ULL << 52 : fraction) * powers_of_ten[decimals];
    int const shift = 1075 - (exponent ? exponent : 1);
    wide whole;
    if (shift <= 0) {
        if (shift < -10) return false;
        whole = product << -shift;
    } else if (shift > 94) {
        whole = 0;
    } else {
        whole = product >> shift;
        wide const rest = product - (whole << shift), half = wide(1) << (shift - 1);
        if (rest > half || (rest == half && (whole & 1))) ++whole;
    }
    result = static_cast<std::uint64_t>(whole);
    return whole >> 63 == 0;
}

} // namespace

bool point_locale()
{
    return std::strcmp(platform::decimal_point(), ".") == 0;
}

char* put_digits(char* to, std::uint64_t n)
{
    char digits[20];
    char* const end = digits + sizeof digits;
    char* const begin = put_before(end, n);
    std::size_t const size = static_cast<std::size_t>(end - begin);
    std::memcpy(to, begin, size);
    return to + size;
}

char* format_fixed(char* to, double x, int decimals, bool point)
{
    std::uint64_t n;
    if (!point || decimals < 0 || decimals > most_decimals || !std::isfinite(x) ||
        !scaled(x, decimals, n))
        return to + std::snprintf(to, fixed_room(decimals), "%.*f", decimals, x);
    if (std::signbit(x)) *to++ = '-';
    std::uint64_t const one = powers_of_ten[decimals];
    // Small values have fewer digits than there are decimals.
    char digits[24];
    char* const end = digits + sizeof digits;
    char* begin = put_before(end, n);
    char* const middle = end - decimals;
    if (n < one) {
        while (begin > middle - 1) *--begin = '0';
    }
    std::size_t const before = static_cast<std::size_t>(middle - begin);
    std::memcpy(to, begin, before);
    to += before;
    if (decimals > 0) {
        *to++ = '.';
        std::memcpy(to, middle, static_cast<std::size_t>(decimals));
        to += decimals;
    }
    return to;
}

} // namespace detail
} // namespace varnow
