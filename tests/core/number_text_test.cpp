// Numbers to texts and back, against the C library.
#include <tests/support/bits.h>
#include <tests/support/number.h>
#include <tests/support/words.h>

#include <varnow/core/format.h>
#include <varnow/core/parse.h>
#include <varnow/core/text.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>

using namespace varnow;
using test::same_bits;
using test::split;

namespace {

std::string printed(double x, int decimals)
{
    char buffer[1500];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, x);
    return buffer;
}

std::string formatted(double x, int decimals)
{
    char buffer[detail::fixed_room(20)];
    return std::string(buffer, detail::format_fixed(buffer, x, decimals));
}

void expect_read_as_by_the_c_library(std::string const& s)
{
    double const expected = test::standard_atof(s.c_str());
    EXPECT_TRUE(same_bits(detail::parse_double(s.data(), s.data() + s.size()), expected)) << s;
    // The same with digits behind the end, which don't belong to it.
    std::string const longer = s + "98765432";
    char const* const begin = longer.data();
    double in_buffer;
    if (!detail::parse_plain(begin, begin + s.size(), false, in_buffer, begin + longer.size()))
        return;
    EXPECT_TRUE(same_bits(in_buffer, expected)) << s;
}

std::mt19937_64 generator(20240705);

// Doubles of every magnitude, and some near the values that occur in files.
std::vector<double> samples()
{
    std::vector<double> r;
    for (std::string const& s : split(
             "0 -0 1 -1 0.5 1.5 2.5 0.125 0.375 1e-7 5e-7 9.9999995 0.9999995 999999.9999995 1e15 "
             "9007199254740993 1e18 9.3e12 9.2e18 1e19 1e22 1e300 1.7976931348623157e308 "
             "2.2250738585072014e-308 4.9e-324 -4.9e-324 inf -inf 9223372036854.775 "
             "9223372036854.776 9223372.036854775",
             ' '))
        r.push_back(test::standard_atof(s.c_str()));
    for (int i = 0; i < 200000; ++i) {
        std::uint64_t const bits = generator();
        double any;
        std::memcpy(&any, &bits, sizeof any);
        r.push_back(any);
        double const unit = static_cast<double>(generator() >> 11) * 0x1p-53;
        r.push_back((unit - 0.5) * std::pow(10, i % 20));
        // Ties: odd multiples of a power of two below one.
        r.push_back(std::ldexp(static_cast<double>(generator() % 2000001), -(i % 20)));
    }
    return r;
}

} // namespace

TEST(NumberText, PrintsEveryDoubleAsTheCLibraryDoes)
{
    int i = 0;
    for (double x : samples()) {
        if (std::isnan(x)) continue;
        int const decimals = i++ % 15;
        ASSERT_EQ(formatted(x, decimals), printed(x, decimals)) << decimals;
        ASSERT_EQ(formatted(x, 6), printed(x, 6));
    }
}

TEST(NumberText, ReadsEveryNumberAsTheCLibraryDoes)
{
    for (std::string const& s :
         split("| |+|-|.|-.|e5|.e5|1|-0|+7|+-7|--7|-x|-ix|1d5| \t\n\v\f\r12|1.|.5|5.e1|1e|1e+|1e-x|"
               "1e5x|1E5|12abc|1 2|1..2|0x1F|-0X1p3|0x|00x1|5x2|inf|-Infinity|infx|NAN|nan(12)|in|"
               "n|abc|1,5|0e999999999999|1e999999999999|1e-999999999999|1e309|-1e400|1e-320|"
               "4.9e-324|2e-324|2.2250738585072011e-308|1.7976931348623159e308|"
               "0.000000000000000000000000000000000012345|9007199254740993|9007199254740992.5|"
               "4503599627370496.5|4503599627370497.5|9007199254740993.0|12345678901234567890|"
               "123456789012345678901234567890|0.1234567890123456789012345|"
               "00000000000000000000000001.5|1e22|1e23|123e-22|123e-23|8.5e22|"
               "1000000000000000000000000e-24|100000000000000016777215|100000000000000016777216",
               '|'))
        expect_read_as_by_the_c_library(s);
    char buffer[400];
    int i = 0;
    for (double x : samples()) {
        char const* const formats[] = {"%.17g", "%.6f", "%.15g", "%g", "%.20e", "%a"};
        std::snprintf(buffer, sizeof buffer, formats[i++ % 6], x);
        expect_read_as_by_the_c_library(buffer);
        if (HasFailure()) return;
    }
}

TEST(NumberText, WritesWholeNumbersOfEveryLength)
{
    EXPECT_EQ(itot(INT_MIN), "-2147483648");
    for (long m : {0L, LONG_MAX, LONG_MIN}) EXPECT_EQ(ltot(m), std::to_string(m).c_str());
    for (long n = 1, k = 0; k < std::numeric_limits<long>::digits10; ++k, n *= 10)
        for (long m : {n - 1, n, -n}) EXPECT_EQ(ltot(m), std::to_string(m).c_str());
}

TEST(NumberText, WritesDecimalsAndPercentsAsAsked)
{
    std::pair<Text, char const*> const cases[] = {
        {dtot(3.14159, 2), "3.14"},
        {dtot(2.5, 0), "2.500000"},
        {dtot(2.5, -3), "2.500000"},
        {dtotl(1.0 / 3), "0.333333333333"},
        // The double lies below 1.005, and 0.125 is rounded half up, where printf would give 0.12.
        {dtots(1.005), "1.00"},
        {fperc(0.00125, 2), "0.13"},
        {fperc(0.125, 1), "12.5"},
        {fperc(-0.00125, 2), "-0.12"},
        {fperc(0.126, 0), "13.000000"},
        {fperc(1.26, -1), "130.000000"},
        {fperc2(0.5, 1), "50.0%"}};
    for (auto const& [got, expected] : cases) EXPECT_EQ(got, expected);
    EXPECT_EQ(dtot(0.5, 1000).len, 1002);
    EXPECT_EQ(dtot(1e300, 0).len, 308); // 301 digits, the point and six decimals
    for (Text const& x : {dtot(NAN, 3), dtotl(-NAN), dtots(NAN), fperc(NAN, 2), fperc2(NAN, 2)})
        EXPECT_EQ(x.len, 0);
}

TEST(NumberText, ReadsACommaAsAPointAndAMissingTextAsAMissingNumber)
{
    std::pair<double, double> const cases[] = {
        {ttod(""), NAN},
        {static_cast<double>(Text()), NAN},
        {static_cast<double>(Text(" 7 ")), 7},
        {ttod("1,5"), 1.5},
        {ttod("-12345678901234567890,125e3"), -12345678901234567890.125e3},
        {ttod("1,234,5"), 1.234},
        {ttod("1.5,7"), 1.5},
        {ttod(",5x"), 0.5},
        {ttod("0x1,8"), 1.5},
        {ttod(Text("12\0003", 4)), 12},
        {ttoi(""), 0},
        {ttoi(" -12.9"), -12}};
    for (auto const& [got, expected] : cases) EXPECT_TRUE(same_bits(got, expected)) << expected;
}

TEST(NumberText, FollowsTheDecimalSignOfTheLocale)
{
    auto const comma = [] { return *std::localeconv()->decimal_point == ','; };
    for (char const* name :
         {"pl_PL.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8", "pl_PL", "Polish", "de-DE"})
        if (std::setlocale(LC_NUMERIC, name) && comma()) break;
    bool const found = comma();
    Text const written[] = {Text(0.5), dtot(1234.5, 2), dtotl(1.5)};
    double const number = ttod("1,5") + ttod("2.25") + ttod("0x1.8");
    char const plain[] = "1.5";
    double const as_atof = detail::parse_double(plain, plain + 3);
    double const expected = std::strtod(plain, nullptr);
    std::setlocale(LC_NUMERIC, "C");
    if (!found) GTEST_SKIP() << "no locale with a decimal comma";
    EXPECT_EQ(written[0], "0,500000000000");
    EXPECT_EQ(written[1], "1234,50");
    EXPECT_EQ(written[2], "1,500000000000");
    EXPECT_EQ(number, 5.25);
    EXPECT_EQ(as_atof, expected);
}
