// The dump of a matrix inside an open stream.
#include <varnow/containers/bindump.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace varnow {

namespace {

bool is_space(int c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The byte behind white space, which stays in the stream.
int peek_behind_space(std::FILE* f)
{
    int c;
    do c = std::getc(f);
    while (is_space(c));
    std::ungetc(c, f);
    return c;
}

// Whether a length stands next, as each name begins with one.
bool at_length(std::FILE* f)
{
    int const c = peek_behind_space(f);
    return c >= '0' && c <= '9';
}

// The largest number has 309 digits before the point.
constexpr int longest = 400;

template <class T> bool read_token(std::FILE* f, T& x)
{
    peek_behind_space(f);
    char token[longest];
    int length = 0, c;
    while ((c = std::getc(f)) != EOF && !is_space(c)) {
        if (length == longest) return false;
        token[length++] = static_cast<char>(c);
    }
    std::ungetc(c, f);
    peek_behind_space(f);
    char const *const end = token + length, *const begin = token + (length > 0 && *token == '+');
    auto const [stop, error] = std::from_chars(begin, end, x);
    return error == std::errc() && stop == end;
}

// Containers grow with what the file delivers, so that damaged sizes cost no memory.
bool read_name(std::FILE* f, std::vector<Text>& names)
{
    if (!at_length(f)) return false;
    names.emplace_back();
    names.back().read(f);
    return names.back().len == 0 || !std::feof(f);
}

void move_names(std::vector<Text>& from, Text* to)
{
    std::move(from.begin(), from.end(), to);
}

} // namespace

namespace detail {

void write_number(std::FILE* f, double x)
{
    char text[longest];
    char* const end = std::to_chars(text, text + longest, x, std::chars_format::fixed, 6).ptr;
    *end = ' ';
    std::fwrite(text, 1, static_cast<std::size_t>(end + 1 - text), f);
}

bool read_number(std::FILE* f, double& x)
{
    return read_token(f, x);
}
bool read_number(std::FILE* f, int& x)
{
    return read_token(f, x);
}

bool read_dump(std::FILE* f, matrix& m)
{
    int r, c;
    if (!read_number(f, r) || !read_number(f, c) || r < 0 || c < 0) return false;
    std::vector<Text> columns, names;
    std::vector<double> cells;
    for (int j = 0; j < c; ++j)
        if (!read_name(f, columns)) return false;
    for (int i = 0; i < r; ++i) {
        if (!read_name(f, names)) return false;
        for (int j = 0; j < c; ++j) {
            double x;
            if (!read_number(f, x)) return false;
            cells.push_back(x);
        }
    }
    m.resize(r, c);
    move_names(columns, m.cnames);
    move_names(names, m.rnames);
    for (int i = 0; i < r; ++i)
        std::copy_n(cells.begin() + static_cast<std::ptrdiff_t>(i) * c, c, m.cell[i]);
    return true;
}

} // namespace detail

void matrix::writebin(std::FILE* f) const
{
    std::fprintf(f, "%d %d ", rows, cols);
    for (int j = 0; j < cols; ++j) cnames[j].write(f);
    for (int i = 0; i < rows; ++i) {
        rnames[i].write(f);
        for (int j = 0; j < cols; ++j) detail::write_number(f, cell[i][j]);
    }
}

void matrix::readbin(std::FILE* f)
{
    if (!detail::read_dump(f, *this))
        errormessage("MATRIX", "void readbin(FILE*)", "nieprawidlowa zawartosc pliku", "");
}

} // namespace varnow
