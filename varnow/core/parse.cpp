#include <varnow/core/parse.h>

#include <varnow/core/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <system_error>

namespace varnow {
namespace detail {

namespace {

// All exact as doubles.
double const powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
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

bool parse_plain(char const* begin, char const* end, bool comma, double& x)
{
    char const* p = begin;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    bool const negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+')) ++p;
    char const* const number = p;

    // Up to 19 digits behind the leading zeros fit; with more the long way decides.
    std::uint64_t mantissa = 0;
    auto scan = [&] {
        char const* const first = p;
        for (; p < end && is_digit(*p); ++p)
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
        return p - first;
    };
    auto skip_zeros = [&] {
        while (p < end && *p == '0') ++p;
    };
    skip_zeros();
    std::ptrdiff_t digits = scan(), decimals = 0;
    bool any = p > number;
    if (p < end) {
        bool const hexadecimal = p == number + 1 && *number == '0' && (*p | 32) == 'x';
        bool const word = !any && ((*p | 32) == 'i' || (*p | 32) == 'n');
        if (hexadecimal || word) return false;
    }

    char const* point = nullptr;
    if (p < end && (*p == '.' || (comma && *p == ','))) {
        point = p++;
        if (digits == 0) skip_zeros();
        digits += scan();
        decimals = p - point - 1;
        any = any || decimals > 0;
    }
    if (!any) {
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
    } else if (!parse_long(number, p, point, x)) {
        return false;
    }
    if (negative) x = -x;
    return true;
}

double parse_double(char const* begin, char const* end, bool comma)
{
    double x;
    if (point_locale() && parse_plain(begin, end, comma, x)) return x;
    std::string copy(begin, end);
    if (comma) std::replace(copy.begin(), copy.end(), ',', '.');
    return std::strtod(copy.c_str(), nullptr);
}

} // namespace detail
} // namespace varnow
