#include <varnow/core/textutils.h>

#include <varnow/core/textbuild.h>

#include <algorithm>

namespace varnow {

namespace {

struct polish_letter
{
    unsigned char latin2, console;
    char latin;
    unsigned unicode;
};

polish_letter const polish_letters[] = {
    {177, 165, 'a', 0x105}, {230, 134, 'c', 0x107}, {234, 169, 'e', 0x119}, {179, 136, 'l', 0x142},
    {241, 228, 'n', 0x144}, {243, 162, 'o', 0x0F3}, {182, 152, 's', 0x15B}, {188, 171, 'z', 0x17A},
    {191, 190, 'z', 0x17C}, {161, 164, 'A', 0x104}, {198, 143, 'C', 0x106}, {202, 168, 'E', 0x118},
    {163, 157, 'L', 0x141}, {209, 227, 'N', 0x143}, {211, 224, 'O', 0x0D3}, {166, 151, 'S', 0x15A},
    {172, 141, 'Z', 0x179}, {175, 189, 'Z', 0x17B},
};

// Null for any other byte.
polish_letter const* polish(char c)
{
    auto const byte = static_cast<unsigned char>(c);
    if (byte < 0x80) return nullptr;
    for (polish_letter const& p : polish_letters)
        if (p.latin2 == byte) return &p;
    return nullptr;
}

// Writes the one or two bytes of c behind `to` and returns their end.
char* put_utf8(char* to, char c)
{
    polish_letter const* const p = polish(c);
    if (!p) {
        *to++ = c;
    } else {
        *to++ = static_cast<char>(0xC0 | p->unicode >> 6);
        *to++ = static_cast<char>(0x80 | (p->unicode & 0x3F));
    }
    return to;
}

Text cut(Text const& x, int from, int n)
{
    return Text(x.str + from - 1, static_cast<std::size_t>(n));
}

char const paragraph[] =
    "Lorem ipsum dolor sit amet, consectetur adipiscing elit. Tabula numeros servat et lector "
    "ordinem videt. Primo linea brevis venit, deinde longior sequitur, ut pagina plena appareat. "
    "Verba hic nihil dicunt: locum tenent, donec scriptor sua ponat. Sic forma ante sensum "
    "probatur, et margo, et columna, et spatium inter litteras. ";

} // namespace

int c_digit(char c)
{
    return c >= '0' && c <= '9';
}

int c_numerical(char c)
{
    return c_digit(c) || c == '+' || c == ',' || c == '-' || c == '.' || c == 'E' || c == 'e';
}

int numerical(Text const& x)
{
    if (x.len == 0 || !std::all_of(x.str, x.str + x.len, c_numerical)) return 0;
    return x.len < 16 || x.exist(',') || x.exist('.');
}

int isdate(Text const& x)
{
    if (x.len != 10) return 0;
    for (int i = 0; i < 10; ++i) {
        char const c = x.str[i];
        if (i == 4 || i == 7 ? c < '-' || c > '/' : !c_digit(c)) return 0;
    }
    return 1;
}

Text part(Text const& x, int n)
{
    return subtext(x, 1, n);
}

Text subtext(Text const& x, int from, int n)
{
    if (x.len == 0 || n < 1) return Text();
    from = std::clamp(from, 1, x.len);
    return cut(x, from, std::min(n, x.len - from + 1));
}

Text endtext(Text const& x, int from)
{
    return subtext(x, from, x.len);
}

Text quote(Text const& x)
{
    Text r = detail::blank_text(static_cast<std::size_t>(x.len) + 2);
    std::copy(x.str, x.str + x.len, r.str + 1);
    r.str[0] = r.str[r.len - 1] = '"';
    return r;
}

Text lorem_ipsum(int n)
{
    if (n < 1) return Text();
    std::size_t const size = sizeof paragraph - 1;
    Text r = detail::blank_text(size * static_cast<std::size_t>(n));
    for (char* to = r.str; to < r.str + r.len; to += size) std::copy_n(paragraph, size, to);
    return r;
}

char replace_pl(char c)
{
    polish_letter const* const p = polish(c);
    return p ? p->latin : c;
}

char latin2_to_win1250(char c)
{
    polish_letter const* const p = polish(c);
    return p ? static_cast<char>(p->console) : c;
}

Text latin2_to_utf8(char c)
{
    return to_utf8(Text(c));
}

Text remove_pl(Text const& x)
{
    return detail::each_byte(x, replace_pl);
}

Text to_win1250(Text const& x)
{
    return detail::each_byte(x, latin2_to_win1250);
}

Text to_utf8(Text const& x)
{
    std::ptrdiff_t const letters = std::count_if(x.str, x.str + x.len, polish);
    Text r = detail::blank_text(static_cast<std::size_t>(x.len + letters));
    char* to = r.str;
    for (int i = 0; i < x.len; ++i) to = put_utf8(to, x.str[i]);
    return r;
}

} // namespace varnow
