// The text file and the console forms.
#include <varnow/sparse/sparse.h>

#include <varnow/core/format.h>
#include <varnow/core/messages.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace varnow {

namespace {

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using file = std::unique_ptr<std::FILE, closer>;

// False when the file can't be opened; a directory opens on some systems, and only reading fails.
bool read_whole(char const* name, std::string& text)
{
    file const f(std::fopen(name, "rt"));
    if (!f) return false;
    char block[1 << 16];
    while (std::size_t const n = std::fread(block, 1, sizeof block, f.get())) text.append(block, n);
    return !std::ferror(f.get());
}

// Words between white space, read as numbers. Once a word is none, or there is none, all fails.
class words
{
public:
    explicit words(std::string const& text)
        : at_(text.c_str()), end_(at_ + text.size()), point_(detail::point_locale())
    {
    }

    bool next(int& n)
    {
        if (!find()) return false;
        begin_ += *begin_ == '+' && begin_ + 1 < at_ && begin_[1] != '-';
        auto const r = std::from_chars(begin_, at_, n);
        return r.ec == std::errc() && r.ptr == at_;
    }

    bool next(double& x)
    {
        if (!find()) return false;
        if (point_) {
            auto const r = std::from_chars(begin_, at_, x);
            if (r.ec == std::errc() && r.ptr == at_) return true;
        }
        // What overflows, signs with "+", hexadecimal numbers, another decimal sign.
        char* stop;
        x = std::strtod(begin_, &stop);
        return stop == at_;
    }

private:
    static bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    bool find()
    {
        begin_ = std::find_if_not(at_, end_, is_space);
        at_ = std::find_if(begin_, end_, is_space);
        return begin_ < at_;
    }

    char const* begin_ = nullptr;
    char const* at_;
    char const* end_;
    bool point_;
};

// False where the text is no matrix. A count of -1 stands for an undefined pattern.
bool parse(std::string const& text, sparse& s)
{
    words w(text);
    int rows, cols, count;
    if (!w.next(rows) || !w.next(cols) || !w.next(count)) return false;
    std::int64_t const room = std::int64_t(rows) * cols;
    if (rows < 0 || cols < 0 || room > INT_MAX || count < -1 || count > room) return false;
    s.resize(rows, cols);
    for (int k = 0; k < count; ++k) {
        int i, j;
        if (!w.next(i) || !w.next(j) || !w.next(s.values[k])) return false;
        if (i < 1 || i > rows || j < 1 || j > cols) return false;
        s.rowidx[k] = i;
        s.colidx[k] = j;
        if (k > 0 && (i < s.rowidx[k - 1] || (i == s.rowidx[k - 1] && j <= s.colidx[k - 1])))
            s.sorted = 0;
    }
    s.nnz = count;
    return true;
}

// printf's "%d %d %g\n" in `line`, of which it returns the end.
char* put_line(char (&line)[64], int i, int j, double x, bool point)
{
    constexpr int whole = 11, decimal = 24;
    char* p = std::to_chars(line, line + whole, i).ptr;
    *p++ = ' ';
    p = std::to_chars(p, p + whole, j).ptr;
    *p++ = ' ';
    if (point)
        p = std::to_chars(p, p + decimal, x, std::chars_format::general, 6).ptr;
    else
        p += std::snprintf(p, decimal, "%g", x);
    *p++ = '\n';
    return p;
}

// How the values of a matrix are printed.
struct number_form
{
    explicit number_form(sparse const& s)
    {
        double least = NAN, most = NAN;
        for (int k = 0; k < s.nnz; ++k) {
            least = std::fmin(least, s.values[k]);
            most = std::fmax(most, s.values[k]);
            whole = whole && std::floor(s.values[k]) == s.values[k];
        }
        width = std::max(digits(least), digits(most));
    }

    void print(double x, char const* end) const
    {
        // The sum prints -0.0 without its sign.
        if (whole)
            std::printf("%*.0f %s", width, x + 0.0, end);
        else
            std::printf("%*.3f %s", width + 4, x, end);
    }

    bool whole = true;
    int width;

private:
    static int digits(double x)
    {
        double const size = std::isfinite(x) ? std::fmax(std::fabs(x), 1.0) : 1.0;
        return static_cast<int>(std::floor(std::log10(size))) + 1 + (x < 0);
    }
};

} // namespace

int sparse::readtxt(char const* name, int fatal)
{
    auto const refuse = [name](char const* why) {
        errormessage("SPARSE", "int readtxt(char *)", why, Text("plik: ") + name);
        return 1;
    };
    std::string text;
    if (!read_whole(name, text)) return fatal ? refuse("nieudane otwarcie pliku do odczytu") : 1;
    sparse read;
    bool good = false;
    try {
        good = parse(text, read);
    } catch (std::bad_alloc const&) {
        // Sizes beyond all memory.
    }
    if (!good) return refuse("nieprawidlowa zawartosc pliku");
    *this = std::move(read);
    return 0;
}

int sparse::writetxt(char const* name, int fatal) const
{
    bool written = false;
    if (file f{std::fopen(name, "wt")}) {
        std::fprintf(f.get(), "%d %d %d\n", rows, cols, nnz);
        bool const point = detail::point_locale();
        char line[64];
        for (int k = 0; k < nnz; ++k) {
            char const* const end = put_line(line, rowidx[k], colidx[k], values[k], point);
            std::fwrite(line, 1, static_cast<std::size_t>(end - line), f.get());
        }
        bool const failed = std::ferror(f.get()) != 0;
        written = std::fclose(f.release()) == 0 && !failed;
    }
    if (written) return 0;
    if (fatal)
        errormessage("SPARSE", "int writetxt(char *)", "nieudane otwarcie pliku do zapisu",
                     Text("plik: ") + name);
    return 1;
}

void sparse::display(char const* name) const
{
    std::printf("\n%s:\n", name);
    if (nnz < 0) return;
    number_form const form(*this);
    matrix const whole = rows > 0 && cols > 0 ? matrix(*this) : matrix();
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) form.print(whole.cell[i][j], "");
        std::printf("\n");
    }
}

void sparse::list(char const* name) const
{
    std::printf("\nlist(%s):\n", name);
    number_form const form(*this);
    for (int k = 0; k < nnz; ++k) {
        std::printf("%d %d ", rowidx[k], colidx[k]);
        form.print(values[k], "\n");
    }
}

void sparse::index(char const* name) const
{
    std::printf("\nindex(%s):\n", name);
    if (!indexed) std::printf("-\n");
    for (int i = 1; indexed && i <= rows; ++i)
        std::printf("%i: %i %i\n", i, row_begin[i], row_end[i]);
}

} // namespace varnow
