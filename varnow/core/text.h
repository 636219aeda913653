// The text value: an exact-size byte string, and the conversions between texts and numbers.
#pragma once

#include <varnow/core/export.h>

#include <cstdio>
#include <cstring>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>

namespace varnow {

namespace detail {

/// The buffer of every empty text; shared, never released, never written.
VARNOW_API extern char empty_text[1];

/// A buffer of len + 1 bytes, len at least 1, and its release; `len` decides which pool it is from.
VARNOW_API char* new_text(int len);
VARNOW_API void free_text(char* str, int len) noexcept;

template <class S> using if_number = std::enable_if_t<std::is_arithmetic<S>::value, int>;

} // namespace detail

/// A text of bytes in an 8-bit code page. Owns its buffer and copies deeply.
/// All positions count from 1, and a failed search gives -1.
/// A zero byte inside a text counts in `len`; comparisons and searches see it, while copying,
/// joining and stream output stop there and leave the rest of the buffer zero.
class VARNOW_API Text
{
public:
    int len; ///< number of characters, the terminator not counted
    char*
        str; ///< len + 1 bytes, str[len] == 0; never null but in a text that was moved from by hand

    Text() noexcept : len(0), str(detail::empty_text) {}
    Text(char const* s) : len(0), str(detail::empty_text) { assign(s, std::strlen(s)); }
    /// One character, also the zero byte.
    Text(char c) : len(1), str(detail::new_text(1))
    {
        str[0] = c;
        str[1] = 0;
    }
    Text(int i);
    Text(long i);
    /// Any other whole number.
    template <class I, std::enable_if_t<std::is_integral<I>::value, int> = 0>
    Text(I i) : Text(std::to_string(i))
    {
    }
    /// Twelve decimals; the empty text for NaN; infinities as the C library prints them.
    Text(double d);
    Text(std::string const& s) : len(0), str(detail::empty_text) { assign(s.data(), s.size()); }
    /// The first n bytes at s, zero bytes included.
    Text(char const* s, std::size_t n) : len(0), str(detail::empty_text) { assign(s, n); }
    Text(Text const& b) : len(b.len), str(detail::empty_text)
    {
        if (len > 0) copy_from(b);
    }
    Text(Text&& b) noexcept : len(b.len), str(b.str)
    {
        b.len = 0;
        b.str = detail::empty_text;
    }
    ~Text()
    {
        if (str != detail::empty_text) release();
    }

    Text& operator=(Text const& b)
    {
        if (len == 0 && b.len == 0 && str) return *this;
        return replace_by(b);
    }
    Text& operator=(Text&& b) noexcept
    {
        std::swap(len, b.len);
        std::swap(str, b.str);
        return *this;
    }
    Text& operator=(char const* s);
    /// As the constructor writes it; without this form a plain 0 would be taken for a null pointer.
    template <class S, detail::if_number<S> = 0> Text& operator=(S x) { return *this = Text(x); }
    Text& operator+=(Text const& b);

    /// The number that the text holds, as `ttod` reads it.
    operator double() const;

    int exist(char c) const;
    int firstpos(char c) const;
    int lastpos(char c) const;
    /// Position of the k-th c from the left, or -1.
    int nthpos(char c, int k) const;
    int exist(Text const& s) const;
    int firstpos(Text const& s) const;
    int lastpos(Text const& s) const;
    /// The i-th character as a text; the empty text outside 1 to len.
    Text letter(int i) const;

    /// File form: the length in decimal, one blank, the bytes. `read` skips white space behind the
    /// number, so a text that begins with white space does not come back as it was.
    /// At the end of the file, or where no length stands, `read` leaves the empty text; a file that
    /// ends early gives the bytes that were there.
    void read(FILE* f);
    void write(FILE* f) const;
    /// Replaces the text by a whole file, carriage returns dropped, up to a byte 0xFF if there is
    /// one.
    /// - refuses: a file that cannot be opened, class TEXT
    void read_file(char const* name);

private:
    void assign(char const* s, std::size_t n);
    void copy_from(Text const& b);
    void release() noexcept;
    Text& replace_by(Text const& b);
};

/// Short form of Text(s).
inline Text t(char const* s)
{
    return Text(s);
}

namespace detail {

VARNOW_API int less(Text const& a, Text const& b);

} // namespace detail

/// The content of a whole file as `Text::read_file` takes it.
VARNOW_API std::string read_file(char const* name);
VARNOW_API Text read_file(Text const& name);

VARNOW_API Text operator+(Text const& a, Text const& b);
VARNOW_API Text operator+(Text const& a, char const* b);
VARNOW_API Text operator+(char const* a, Text const& b);
inline Text operator+(Text const& a, char b)
{
    return a + Text(b);
}
inline Text operator+(char a, Text const& b)
{
    return Text(a) + b;
}
/// A number joins as the constructor of Text writes it.
template <class S, detail::if_number<S> = 0> Text operator+(Text const& a, S b)
{
    return a + Text(b);
}
template <class S, detail::if_number<S> = 0> Text operator+(S a, Text const& b)
{
    return Text(a) + b;
}

inline int operator==(Text const& a, Text const& b)
{
    if (a.len != b.len) return 0;
    // Most pairs of one length differ in their first byte.
    return a.len == 0 || (a.str[0] == b.str[0] &&
                          std::memcmp(a.str, b.str, static_cast<std::size_t>(a.len)) == 0);
}
inline int operator!=(Text const& a, Text const& b)
{
    return !(a == b);
}
/// Order by signed bytes: 0x80 and above stand before all of ASCII; a prefix stands first.
inline int operator<(Text const& a, Text const& b)
{
    // Most pairs differ in their first byte.
    if (a.len > 0 && b.len > 0 && a.str[0] != b.str[0])
        return static_cast<signed char>(a.str[0]) < static_cast<signed char>(b.str[0]);
    return detail::less(a, b);
}
inline int operator>(Text const& a, Text const& b)
{
    return b < a;
}
inline int operator<=(Text const& a, Text const& b)
{
    return !(b < a);
}
inline int operator>=(Text const& a, Text const& b)
{
    return !(a < b);
}

// Against a character or a C string a text compares as text, against a number as the number that it
// holds (the empty text is NaN).
// clang-format off
#define VARNOW_COMPARE(op)                                                                             \
    inline int operator op(Text const& a, char const* b) { return a op Text(b); }                      \
    inline int operator op(char const* a, Text const& b) { return Text(a) op b; }                      \
    inline int operator op(Text const& a, char b) { return a op Text(b); }                             \
    inline int operator op(char a, Text const& b) { return Text(a) op b; }                             \
    template <class S, detail::if_number<S> = 0> int operator op(Text const& a, S b)                   \
    { return static_cast<double>(a) op static_cast<double>(b); }                                       \
    template <class S, detail::if_number<S> = 0> int operator op(S a, Text const& b)                   \
    { return static_cast<double>(a) op static_cast<double>(b); }
VARNOW_COMPARE(==) VARNOW_COMPARE(!=) VARNOW_COMPARE(<) VARNOW_COMPARE(<=) VARNOW_COMPARE(>) VARNOW_COMPARE(>=)
#undef VARNOW_COMPARE
    // clang-format on

    VARNOW_API std::ostream&
    operator<<(std::ostream& o, Text const& a);
/// One word between white space, of any length.
VARNOW_API std::istream& operator>>(std::istream& i, Text& a);

/// Number to text; NaN, the missing number, gives the empty text, the missing text.
VARNOW_API Text itot(int i);
VARNOW_API Text ltot(long i);
/// n decimals; six for n below 1. Any magnitude comes out whole.
VARNOW_API Text dtot(double x, int n);
/// Twelve decimals.
VARNOW_API Text dtotl(double x);
/// Two decimals.
VARNOW_API Text dtots(double x);
/// x in percent, rounded half up to n decimals, printed as by dtot(value, n); so with six for n 0.
VARNOW_API Text fperc(double x, int n);
/// fperc and a percent sign.
VARNOW_API Text fperc2(double x, int n);

/// Text to number, by the C library; the empty text is NaN for ttod. Comma and point both serve as
/// the decimal sign.
VARNOW_API int ttoi(Text const& x);
VARNOW_API double ttod(Text const& x);

VARNOW_API Text replace(Text const& x, char a, char b);
/// Every occurrence of a made b, from the left, without overlaps; an empty a gives x.
VARNOW_API Text replace(Text const& x, Text const& a, Text const& b);
/// Every point made a comma, and every comma a point.
VARNOW_API Text dot2com(Text const& x);
VARNOW_API Text com2dot(Text const& x);
/// Byte by byte; Polish letters stay.
VARNOW_API Text to_upper(Text const& x);
VARNOW_API Text to_lower(Text const& x);

} // namespace varnow
