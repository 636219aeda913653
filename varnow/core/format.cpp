#include <varnow/core/format.h>

#include <varnow/core/platform.h>

#include <algorithm>
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

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

// The eight digits of n as bytes 0 to 9, the first one lowest; all are split at once.
std::uint64_t eight_digits(std::uint32_t n)
{
    std::uint64_t x = n / 10000 | std::uint64_t(n % 10000) << 32;
    std::uint64_t const hundreds = (x * 5243 >> 19) & 0x0000007F0000007F;
    x = hundreds | (x - 100 * hundreds) << 16;
    std::uint64_t const tens = (x * 103 >> 10) & 0x000F000F000F000F;
    return tens | (x - 10 * tens) << 8;
}

#endif

// The digits of n before `end`, which has room for 20; returns their begin.
char* put_before(char* end, std::uint64_t n)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    if (n < 10000000000000000u) {
        std::uint64_t const high = eight_digits(static_cast<std::uint32_t>(n / 100000000)),
                            low = eight_digits(static_cast<std::uint32_t>(n % 100000000)),
                            zeros = 0x3030303030303030;
        std::uint64_t const texts[2] = {high | zeros, low | zeros};
        std::memcpy(end - 16, texts, 16);
        std::uint64_t const first = high ? high : low | 1ULL << 56;
        return end - (high ? 16 : 8) + __builtin_ctzll(first) / 8;
    }
#endif
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
        // Half to even, without a branch that nobody can predict.
        wide const half = wide(1) << (shift - 1), odd = product >> shift & 1;
        whole = (product + (half - 1) + odd) >> shift;
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
    char const* const begin = put_before(end, n);
    return std::copy(begin, static_cast<char const*>(end), to);
}

char* format_fixed(char* to, double x, int decimals, bool point)
{
    std::uint64_t n;
    if (!point || decimals < 0 || decimals > most_decimals || !std::isfinite(x) ||
        !scaled(x, decimals, n))
        return to + std::snprintf(to, fixed_room(decimals), "%.*f", decimals, x);
    *to = '-';
    to += std::signbit(x);
    // Twenty digits, and room behind them: both parts are copied in one piece of fixed length,
    // since `to` has the room. A value below 1 needs zeros in front.
    char digits[20 + 24];
    std::memset(digits, '0', sizeof digits);
    char* const end = digits + 20;
    char* const middle = end - decimals;
    char* const begin = std::min(put_before(end, n), middle - 1);
    std::memcpy(to, begin, 24);
    to += middle - begin;
    if (decimals == 0) return to;
    *to++ = '.';
    std::memcpy(to, middle, 16);
    return to + decimals;
}

} // namespace detail
} // namespace varnow
