#include <varnow/core/text.h>

#include <varnow/core/format.h>
#include <varnow/core/messages.h>
#include <varnow/core/parse.h>
#include <varnow/core/platform.h>
#include <varnow/core/scalar.h>
#include <varnow/core/textbuild.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <istream>
#include <limits>
#include <new>
#include <ostream>
#include <string_view>

namespace varnow {

namespace {

using detail::blank_text;
using detail::each_byte;

std::string_view view(Text const& x)
{
    return {x.str, static_cast<std::size_t>(x.len)};
}

// Positions of a search count from 1; nothing found is -1.
int position(std::size_t found)
{
    return found == std::string_view::npos ? -1 : static_cast<int>(found) + 1;
}

Text decimal(long i)
{
    char digits[24];
    char* to = digits;
    auto magnitude = static_cast<std::uint64_t>(i);
    if (i < 0) {
        *to++ = '-';
        magnitude = 0 - magnitude;
    }
    to = detail::put_digits(to, magnitude);
    return Text(digits, static_cast<std::size_t>(to - digits));
}

Text fixed(double x, int decimals)
{
    if (std::isnan(x)) return Text();
    if (decimals <= 12) {
        char digits[detail::fixed_room(12)];
        char const* const end = detail::format_fixed(digits, x, decimals);
        return Text(digits, static_cast<std::size_t>(end - digits));
    }
    int const n = std::snprintf(nullptr, 0, "%.*f", decimals, x);
    if (n < 0) throw std::bad_alloc();
    Text r = blank_text(static_cast<std::size_t>(n));
    std::snprintf(r.str, static_cast<std::size_t>(n) + 1, "%.*f", decimals, x);
    return r;
}

bool is_space(int c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int skip_space(std::FILE* f)
{
    int c;
    do c = std::getc(f);
    while (is_space(c));
    return c;
}

// A decimal number and the white space behind it; -1 where none stands. Too large numbers end at
// INT_MAX - 1.
int read_length(std::FILE* f)
{
    int c = skip_space(f);
    bool const negative = c == '-';
    if (c == '-' || c == '+') c = std::getc(f);
    if (c < '0' || c > '9') {
        std::ungetc(c, f);
        return -1;
    }
    long long n = 0;
    for (; c >= '0' && c <= '9'; c = std::getc(f))
        n = std::min<long long>(n * 10 + (c - '0'), INT_MAX - 1);
    if (is_space(c)) c = skip_space(f);
    std::ungetc(c, f);
    return static_cast<int>(negative ? -n : n);
}

} // namespace

Text::Text(int i) : Text(decimal(i)) {}

Text::Text(long i) : Text(decimal(i)) {}

Text::Text(double d) : Text(fixed(d, 12)) {}

Text::operator double() const
{
    return ttod(*this);
}

int Text::exist(char c) const
{
    return firstpos(c) > 0;
}

int Text::firstpos(char c) const
{
    return position(view(*this).find(c));
}

int Text::lastpos(char c) const
{
    return position(view(*this).rfind(c));
}

int Text::nthpos(char c, int k) const
{
    if (k < 1) return -1;
    std::string_view const x = view(*this);
    std::size_t at = x.find(c);
    while (--k > 0 && at != x.npos) at = x.find(c, at + 1);
    return position(at);
}

int Text::exist(Text const& s) const
{
    return firstpos(s) > 0;
}

int Text::firstpos(Text const& s) const
{
    return s.len == 0 ? -1 : position(view(*this).find(view(s)));
}

int Text::lastpos(Text const& s) const
{
    return s.len == 0 ? -1 : position(view(*this).rfind(view(s)));
}

Text Text::letter(int i) const
{
    return i < 1 || i > len ? Text() : Text(str[i - 1]);
}

void Text::read(std::FILE* f)
{
    *this = Text();
    int const wanted = read_length(f);
    // The buffer grows with what the file delivers, so that a damaged length costs no memory.
    std::string bytes;
    for (std::size_t step = 1 << 16; wanted > 0 && bytes.size() < std::size_t(wanted); step *= 2) {
        std::size_t const had = bytes.size(), ask = std::min(step, std::size_t(wanted) - had);
        bytes.resize(had + ask);
        std::size_t const got = std::fread(&bytes[had], 1, ask, f);
        bytes.resize(had + got);
        if (got < ask) break;
    }
    assign(bytes.data(), bytes.size());
}

void Text::write(std::FILE* f) const
{
    std::fprintf(f, "%d ", len);
    std::fwrite(str, 1, static_cast<std::size_t>(len), f);
}

void Text::read_file(char const* name)
{
    *this = Text(varnow::read_file(name));
}

std::string read_file(char const* name)
{
    auto refuse = [name] {
        errormessage("TEXT", "read_file(char*)", "Nieudane otwarcie pliku:", name);
        return std::string();
    };
    std::FILE* f = std::fopen(name, "rt");
    if (!f) return refuse();
    std::string content;
    char block[1 << 14];
    bool at_end = false;
    while (!at_end) {
        std::size_t const got = std::fread(block, 1, sizeof block, f);
        char* const end = std::find(block, block + got, '\xFF');
        at_end = got < sizeof block || end < block + got;
        content.append(block, std::remove(block, end, '\r'));
    }
    // A directory opens on some systems, and only reading fails.
    bool const failed = std::ferror(f) != 0;
    std::fclose(f);
    return failed ? refuse() : content;
}

Text read_file(Text const& name)
{
    return Text(read_file(name.str));
}

std::ostream& operator<<(std::ostream& o, Text const& a)
{
    if (a.str)
        o << a.str;
    else
        o.setstate(std::ios_base::badbit);
    return o;
}

std::istream& operator>>(std::istream& i, Text& a)
{
    std::string word;
    i >> word;
    a = word.c_str();
    return i;
}

Text itot(int i)
{
    return decimal(i);
}

Text ltot(long i)
{
    return decimal(i);
}

Text dtot(double x, int n)
{
    return fixed(x, n < 1 ? 6 : n);
}

Text dtotl(double x)
{
    return fixed(x, 12);
}

Text dtots(double x)
{
    return fixed(x, 2);
}

Text fperc(double x, int n)
{
    double const scale = powi(10, n);
    return dtot(std::floor(x * 100 * scale + 0.5) / scale, n);
}

Text fperc2(double x, int n)
{
    return std::isnan(x) ? Text() : fperc(x, n) + "%";
}

int ttoi(Text const& x)
{
    return std::atoi(x.str);
}

double ttod(Text const& x)
{
    double const missing = std::numeric_limits<double>::quiet_NaN();
    if (x.len == 0) return missing;
    std::string_view const point = platform::decimal_point();
    if (point != "." && point != ",") return missing;
    // Both signs become the locale's, so a plain number reads the same in either locale.
    double number;
    if (detail::parse_plain(x.str, x.str + x.len, true, number, detail::readable_end(x)))
        return number;
    return detail::parse_by_c_library((point == "." ? com2dot(x) : dot2com(x)).str);
}

Text replace(Text const& x, char a, char b)
{
    return each_byte(x, [a, b](char c) { return c == a ? b : c; });
}

Text replace(Text const& x, Text const& a, Text const& b)
{
    if (a.len == 0 || a.len > x.len) return x;
    std::string_view const text = view(x), old = view(a);
    std::size_t count = 0;
    for (std::size_t at = text.find(old); at != text.npos; at = text.find(old, at + old.size()))
        ++count;
    if (count == 0) return x;
    Text r = blank_text(text.size() - count * old.size() + count * view(b).size());
    char* to = r.str;
    std::size_t from = 0;
    for (; count > 0; --count) {
        std::size_t const at = text.find(old, from);
        to = std::copy(text.begin() + from, text.begin() + at, to);
        to = std::copy(b.str, b.str + b.len, to);
        from = at + old.size();
    }
    std::copy(text.begin() + from, text.end(), to);
    return r;
}

Text dot2com(Text const& x)
{
    return replace(x, '.', ',');
}

Text com2dot(Text const& x)
{
    return replace(x, ',', '.');
}

Text to_upper(Text const& x)
{
    return each_byte(x, [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
}

Text to_lower(Text const& x)
{
    return each_byte(x, [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
}

} // namespace varnow
