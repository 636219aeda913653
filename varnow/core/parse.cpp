#include <varnow/core/parse.h>

#include <varnow/core/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace varnow {
namespace detail {

namespace {

// All exact as doubles.
double const powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

__extension__ typedef unsigned __int128 wide;

std::uint64_t const whole_powers_of_ten[] = {1u,
                                             10u,
                                             100u,
                                             1000u,
                                             10000u,
                                             100000u,
                                             1000000u,
                                             10000000u,
                                             100000000u,
                                             1000000000u,
                                             10000000000u,
                                             100000000000u,
                                             1000000000000u,
                                             10000000000000u,
                                             100000000000000u,
                                             1000000000000000u,
                                             10000000000000000u,
                                             100000000000000000u,
                                             1000000000000000000u,
                                             10000000000000000000u};

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// The digits that eight bytes start with, and how many there are, at most `limit`.
struct digit_run
{
    std::uint64_t value;
    int length;

    digit_run(char const* p, std::ptrdiff_t limit)
    {
        std::uint64_t bytes;
        std::memcpy(&bytes, p, 8);
        bytes ^= 0x3030303030303030; // digits become 0 to 9
        // The high bit of every byte above 9, exact up to the first one.
        std::uint64_t const other = ((bytes + 0x7676767676767676) | bytes) & 0x8080808080808080;
        length = other ? __builtin_ctzll(other) / 8 : 8;
        if (length > limit) length = static_cast<int>(limit);
        if (length == 0) {
            value = 0;
            return;
        }
        // With zeros in front there are always eight; they are joined two by two.
        bytes <<= 8 * (8 - length);
        bytes = (bytes & 0x0F0F0F0F0F0F0F0F) * (10 * 0x100 + 1) >> 8;
        bytes = (bytes & 0x00FF00FF00FF00FF) * (100 * 0x10000 + 1) >> 16;
        value = (bytes & 0x0000FFFF0000FFFF) * (10000 * 0x100000000 + 1) >> 32;
    }
};

// Passes the digits at p, adding them to the mantissa, which wraps round after 19 of them.
__attribute__((always_inline)) inline char const*
scan_digits(char const* p, char const* end, char const* readable, std::uint64_t& mantissa)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    while (readable - p >= 8 && p < end) {
        digit_run const run(p, end - p);
        mantissa = mantissa * whole_powers_of_ten[run.length] + run.value;
        p += run.length;
        if (run.length < 8) return p;
    }
#endif
    for (; p < end && is_digit(*p); ++p) mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
    return p;
}

// 2^127 / 10^k, with the power of ten shifted until its first bit is set; there is none for k 0.
struct inverse_powers
{
    std::uint64_t at[20];
    constexpr inverse_powers() : at()
    {
        std::uint64_t power = 1;
        for (int k = 1; k < 20; ++k) {
            power *= 10;
            at[k] =
                static_cast<std::uint64_t>((wide(1) << 127) / (power << __builtin_clzll(power)));
        }
    }
};
constexpr inverse_powers inverse;

// n / 10^k rounded once, for n above 0 and k from 1 to 19.
double quotient(std::uint64_t n, int k)
{
    // With the first bit of both set the quotient has 63 or 64 bits, of which a double keeps 53.
    std::uint64_t const d = whole_powers_of_ten[k];
    int const n_shift = __builtin_clzll(n), d_shift = __builtin_clzll(d);
    n <<= n_shift;
    // The product is below the quotient by less than 2, which decides unless the bits to drop lie
    // about the middle.
    std::uint64_t q = static_cast<std::uint64_t>(wide(n) * inverse.at[k] >> 64);
    int const dropped = 11 - __builtin_clzll(q);
    std::uint64_t const middle = 1ULL << (dropped - 1), rest = q & (2 * middle - 1);
    if (rest == middle || rest + 1 == middle) {
        wide const dividend = wide(n) << 63;
        q = static_cast<std::uint64_t>(dividend / (d << d_shift));
        // The last bit stands for the whole remainder.
        q |= dividend != wide(q) * (d << d_shift);
    }
    std::uint64_t const scale = static_cast<std::uint64_t>(1023 + d_shift - n_shift - 63) << 52;
    double power_of_two;
    std::memcpy(&power_of_two, &scale, 8);
    return static_cast<double>(q) * power_of_two;
}

// For what the short way can't do: from_chars on a copy with a point, since it knows no comma.
bool parse_long(char const* begin, char const* end, char const* point, double& x)
{
    std::string copy;
    if (point && *point == ',') {
        copy.assign(begin, end);
        copy[static_cast<std::size_t>(point - begin)] = '.';
        begin = copy.data();
        end = begin + copy.size();
    }
    return std::from_chars(begin, end, x).ec == std::errc();
}

} // namespace

bool parse_plain(char const* begin, char const* end, bool comma, double& x, char const* readable)
{
    char const* p = begin;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    bool const negative = p < end && *p == '-';
    p += negative || (p < end && *p == '+');

    char const* const number = p;
    std::uint64_t mantissa = 0;
    p = scan_digits(p, end, readable, mantissa);
    std::ptrdiff_t digits = p - number, decimals = 0;
    if (p < end) {
        bool const hexadecimal = digits == 1 && *number == '0' && (*p | 32) == 'x';
        bool const word = digits == 0 && ((*p | 32) == 'i' || (*p | 32) == 'n');
        if (hexadecimal || word) return false;
    }
    char const* point = nullptr;
    if (p < end && (*p == '.' || (comma && *p == ','))) {
        point = p;
        p = scan_digits(p + 1, end, readable, mantissa);
        decimals = p - point - 1;
        digits += decimals;
    }
    if (digits == 0) {
        x = 0;
        return true;
    }

    std::ptrdiff_t exponent = 0;
    if (p < end && (*p == 'e' || *p == 'E')) {
        char const* q = p + 1;
        bool const down = q < end && *q == '-';
        if (q < end && (*q == '-' || *q == '+')) ++q;
        if (q < end && is_digit(*q)) {
            for (; q < end && is_digit(*q); ++q)
                exponent = std::min<std::ptrdiff_t>(exponent * 10 + (*q - '0'), 100000);
            if (down) exponent = -exponent;
            p = q;
        }
    }
    exponent -= decimals;

    // One exact integer and one exact power of ten: the single rounding is the right one.
    if (digits <= 19 && mantissa <= 1ULL << 53 && exponent >= -22 && exponent <= 22) {
        x = static_cast<double>(mantissa);
        x = exponent < 0 ? x / powers_of_ten[-exponent] : x * powers_of_ten[exponent];
    } else if (digits <= 19 && mantissa > 0 && exponent < 0 && exponent >= -19) {
        x = quotient(mantissa, static_cast<int>(-exponent));
    } else if (!parse_long(number, p, point, x)) {
        return false;
    }
    x = std::copysign(x, negative ? -1.0 : 1.0);
    return true;
}

double parse_by_c_library(char const* s)
{
    char* end;
    double const x = std::strtod(s, &end);
    // Where there is no number, some libraries give a sign to the zero.
    return end == s ? 0.0 : x;
}

double parse_double(char const* begin, char const* end, bool comma)
{
    double x;
    if (point_locale() && parse_plain(begin, end, comma, x)) return x;
    std::string copy(begin, end);
    if (comma) std::replace(copy.begin(), copy.end(), ',', '.');
    return parse_by_c_library(copy.c_str());
}

} // namespace detail
} // namespace varnow
