// Reading delimited text: one pass counts lines and fields, the next one fills the object, so that
// memory holds the object and one block of the file.
#include <varnow/containers/data.h>
#include <varnow/coordination/progress.h>
#include <varnow/core/format.h>
#include <varnow/core/parse.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace varnow {

namespace {

constexpr std::size_t longest_field = 255;

// A value for "no such character": a byte 0xFF never stands in a block.
constexpr char no_char = '\xFF';

// The bytes of a file, block by block and twice over, up to a byte 0xFF. Zero bytes stand behind
// each block, so that short looks ahead need no test.
class byte_source
{
public:
    explicit byte_source(char const* name)
        : file_(std::fopen(name, "rb")), buffer_(block_size + slack)
    {
        if (!file_) return;
        // Blocks are larger than the stream's own buffer.
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);
        seekable_ = std::fseek(file_.get(), 0, SEEK_CUR) == 0;
    }

    // Delivers the next block; false at the end, and when reading fails.
    bool next()
    {
        if (ended_ || !file_) return false;
        std::size_t const n = seekable_ ? fill(0) : fill_whole();
        begin_ = buffer_.data();
        end_ = static_cast<char*>(std::memchr(buffer_.data(), no_char, n));
        ended_ = end_ || !seekable_ || n < block_size;
        if (!end_) end_ = buffer_.data() + n;
        std::memset(end_, 0, slack);
        return begin_ < end_;
    }
    char const* begin() const { return begin_; }
    char const* end() const { return end_; }

    void rewind()
    {
        if (seekable_) std::fseek(file_.get(), 0, SEEK_SET);
        ended_ = false;
    }

    // A directory opens on some systems, and only reading fails.
    bool failed() const { return !file_ || std::ferror(file_.get()) != 0; }
    void close() { file_.reset(); }

private:
    static constexpr std::size_t block_size = std::size_t(1) << 18, slack = 64;

    std::size_t fill(std::size_t at)
    {
        return std::fread(&buffer_[at], 1, buffer_.size() - slack - at, file_.get());
    }

    // What cannot be read twice, a pipe for one, is kept.
    std::size_t fill_whole()
    {
        for (;;) {
            kept_ += fill(kept_);
            if (kept_ < buffer_.size() - slack) return kept_;
            buffer_.resize(2 * buffer_.size());
        }
    }

    struct closer
    {
        void operator()(std::FILE* f) const { std::fclose(f); }
    };
    std::unique_ptr<std::FILE, closer> file_;
    std::vector<char> buffer_;
    std::size_t kept_ = 0;
    char const* begin_ = nullptr;
    char* end_ = nullptr;
    bool seekable_ = false;
    bool ended_ = false;
};

// Bit k says whether p[k] is c, for 64 bytes.
std::uint64_t places(char const* p, char c)
{
    std::uint64_t found = 0;
#if defined(__SSE2__)
    __m128i const wanted = _mm_set1_epi8(c);
    for (int k = 0; k < 64; k += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(p + k));
        auto const mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
        found |= std::uint64_t(mask) << k;
    }
#else
    for (int k = 0; k < 64; ++k) found |= std::uint64_t(p[k] == c) << k;
#endif
    return found;
}

struct file_shape
{
    std::int64_t lines = 0;
    std::int64_t fields = 0;   // of each line
    std::int64_t bad_line = 0; // the first line of another count, or 0
};

// A line has one field more than it has separators, empty fields included.
file_shape measure(byte_source& source, char sep)
{
    file_shape shape;
    std::int64_t separators = 0;
    while (source.next())
        for (char const* p = source.begin(); p < source.end(); p += 64) {
            std::uint64_t const inside =
                source.end() - p < 64 ? (std::uint64_t(1) << (source.end() - p)) - 1 : ~0ULL;
            std::uint64_t ends = places(p, '\n') & inside;
            std::uint64_t seps = sep == '\n' ? 0 : places(p, sep) & inside;
            for (; ends; ends &= ends - 1) {
                std::uint64_t const before = (ends & (~ends + 1)) - 1;
                separators += __builtin_popcountll(seps & before);
                seps &= ~before;
                ++shape.lines;
                if (shape.lines == 1) shape.fields = separators + 1;
                if (separators + 1 != shape.fields) {
                    shape.bad_line = shape.lines;
                    return shape;
                }
                separators = 0;
            }
            separators += __builtin_popcountll(seps);
        }
    return shape;
}

// The first byte that ends a field or asks for a closer look. A zero byte stands at the end.
char const* next_special(char const* p, char sep, char quote)
{
#if defined(__SSE2__)
    auto const all = [](char c) { return _mm_set1_epi8(c); };
    for (;; p += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
        __m128i const ends =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, all(sep)), _mm_cmpeq_epi8(bytes, all('\n')));
        __m128i const others =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, all('\r')), _mm_cmpeq_epi8(bytes, all(0)));
        __m128i const any =
            _mm_or_si128(_mm_or_si128(ends, others), _mm_cmpeq_epi8(bytes, all(quote)));
        if (int const mask = _mm_movemask_epi8(any)) return p + __builtin_ctz(unsigned(mask));
    }
#else
    while (*p != sep && *p != '\n' && *p != '\r' && *p != 0 && *p != quote) ++p;
    return p;
#endif
}

// Up to seven digits at p, eight bytes of which can be read; their number goes to n. More than
// seven give n = 8. The digits are joined pairwise: 8 to 4 to 2 to 1 numbers.
std::uint64_t short_digits(char const* p, int& n)
{
    constexpr std::uint64_t each = 0x0101010101010101;
    std::uint64_t v = 0;
    for (int k = 7; k >= 0; --k) v = v << 8 | static_cast<unsigned char>(p[k]);
    v ^= 0x30 * each;
    std::uint64_t const others = ((v + 0x76 * each) | v) & 0x80 * each;
    n = others ? __builtin_ctzll(others) / 8 : 8;
    if (n == 0) return 0;
    v <<= 64 - 8 * n;
    v = v * 10 + (v >> 8);
    std::uint64_t const pairs = 0x000000FF000000FF;
    return ((v & pairs) * 0x000F424000000064 + ((v >> 16) & pairs) * 0x0000271000000001) >> 32;
}

// A plain number of at most seven digits before and behind the point, which may be `point` or '.'.
// Both its parts and the power of ten are exact, so that the division rounds right. Returns the
// byte behind it, or null for any other form.
char const* short_decimal(char const* p, char point, double& x)
{
    static double const powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    static std::uint64_t const whole_powers[] = {1,     10,     100,     1000,
                                                 10000, 100000, 1000000, 10000000};
    bool const negative = *p == '-';
    p += negative;
    int n, decimals = 0;
    std::uint64_t mantissa = short_digits(p, n);
    if (n == 0 || n > 7) return nullptr;
    p += n;
    if (*p == '.' || *p == point) {
        std::uint64_t const fraction = short_digits(++p, decimals);
        if (decimals > 7) return nullptr;
        mantissa = mantissa * whole_powers[decimals] + fraction;
        p += decimals;
    }
    x = static_cast<double>(static_cast<std::int64_t>(mantissa)) / powers[decimals];
    if (negative) x = -x;
    return p;
}

void set_text(Text& to, char const* s, std::size_t n)
{
    if (n > 0 && static_cast<std::size_t>(to.len) == n)
        std::memcpy(to.str, s, n);
    else
        to = Text(s, n);
}

struct line_format
{
    int rownames;
    int header;
    char sep;   // '\n' where lines have one field
    char quote; // no_char where quotes are ordinary characters
};

// Fills an object of the right sizes from the blocks of a file. A file that changes under our hands
// leaves missing cells, and what is too much is dropped.
template <class T> class filler
{
public:
    filler(data<T>& a, line_format const& f, progress* steps)
        : a_(a),
          f_(f),
          steps_(steps),
          header_(f.header),
          col_(first_col()),
          point_(detail::point_locale()),
          short_numbers_(point_ && !std::strchr("0123456789+-.", f.sep)),
          comma_(f.sep == ',' ? '.' : ',')
    {
        if (!f.header) clear(a.cnames, a.cols);
        if (!f.rownames) clear(a.rnames, a.rows);
    }

    // The message proper of a refusal, or null.
    char const* fill(byte_source& source)
    {
        while (!refusal_ && row_ < a_.rows + header_ && source.next()) {
            end_ = source.end();
            char const* p = source.begin();
            if (header_) p = header(p);
            while (p < end_ && row_ < a_.rows && !header_ && !refusal_) p = field(p);
        }
        if (!refusal_)
            while (row_ < a_.rows) finish_line();
        return refusal_;
    }

private:
    int first_col() const { return f_.rownames ? -1 : 0; }

    static void clear(Text* names, int n)
    {
        for (int i = 0; i < n; ++i)
            if (names[i].len != 0) names[i] = Text();
    }

    // Takes the next field up to the byte behind its end, or what the block holds of it.
    char const* field(char const* p)
    {
        if (length_ == 0 && col_ >= 0 && col_ < a_.cols)
            if (char const* const q = whole_field(p)) return finish_field(q);
        char const* const q = piece(p, [](char c) { return commod<T>(c); });
        if (refusal_ || q == end_) return end_;
        if (col_ < 0)
            name(a_.rnames[row_]);
        else if (col_ < a_.cols)
            cell();
        length_ = 0;
        return finish_field(q);
    }

    // A cell that stands in the block in one piece; its end, or null when it takes more than that.
    char const* whole_field(char const* p)
    {
        if (*p == f_.quote) ++p;
        T& x = a_.cell[row_][col_];
        if constexpr (std::is_same<T, double>::value) {
            if (short_numbers_)
                if (char const* const q = short_decimal(p, comma_, x))
                    if (char const* const end = delimiter(q)) return end;
        }
        char const* const q = next_special(p, f_.sep, f_.quote);
        char const* const end = delimiter(q);
        std::size_t const n = static_cast<std::size_t>(q - p);
        if (!end || n > longest_field) return nullptr;
        if (n == 0)
            x = __NAN<T>();
        else if constexpr (std::is_same<T, Text>::value)
            set_text(x, p, n);
        else if (!point_ || !detail::parse_plain(p, q, f_.sep != ',', x))
            return nullptr;
        return end;
    }

    // The delimiter at q, or behind the closing quote and the CR that stand there.
    char const* delimiter(char const* q) const
    {
        if (*q == f_.quote) ++q;
        if (*q == '\r') ++q;
        return q < end_ && (*q == f_.sep || *q == '\n') ? q : nullptr;
    }

    // Adds to the buffered field what the block holds of it; returns its delimiter, or the end.
    template <class F> char const* piece(char const* p, F filter)
    {
        for (; p < end_ && *p != f_.sep && *p != '\n'; ++p) {
            if (*p == '\r' || *p == f_.quote) continue;
            if (length_ == longest_field) {
                refusal_ =
                    header_ ? "nazwa kolumny ma zbyt wiele znakow" : "tekst ma zbyt wiele znakow";
                return end_;
            }
            buffer_[length_++] = filter(*p);
        }
        return p;
    }

    // The buffered field counts up to its first zero byte.
    void name(Text& to)
    {
        buffer_[length_] = 0;
        set_text(to, buffer_, std::strlen(buffer_));
    }

    void cell()
    {
        T& x = a_.cell[row_][col_];
        if (length_ == 0) {
            x = __NAN<T>();
            return;
        }
        if constexpr (std::is_same<T, Text>::value) {
            name(x);
        } else {
            buffer_[length_] = 0;
            x = StoT<double>(buffer_);
        }
    }

    char const* finish_field(char const* q)
    {
        ++col_;
        if (*q == '\n') finish_line();
        return q + 1;
    }

    void finish_line()
    {
        for (int j = std::max(col_, 0); j < a_.cols; ++j) a_.cell[row_][j] = __NAN<T>();
        if (col_ < 0) a_.rnames[row_] = Text();
        col_ = first_col();
        ++row_;
        if (steps_) steps_->update();
    }

    char const* header(char const* p)
    {
        while (p < end_ && !refusal_) {
            p = piece(p, [](char c) { return c; });
            if (refusal_ || p == end_) return end_;
            if (col_ >= 0 && col_ < a_.cols) name(a_.cnames[col_]);
            length_ = 0;
            ++col_;
            if (*p++ != '\n') continue;
            header_ = 0;
            col_ = first_col();
            break;
        }
        return p;
    }

    data<T>& a_;
    line_format const f_;
    progress* const steps_;
    int header_; // 1 while the first line is read
    int row_ = 0;
    int col_; // -1 is the row name
    bool const point_;
    bool const short_numbers_;
    char const comma_;
    char const* end_ = nullptr;
    char const* refusal_ = nullptr;
    std::size_t length_ = 0;
    char buffer_[longest_field + 1];
};

// Sizes that differ drop the cells first: two large objects may not fit side by side.
template <class T> void size_for(data<T>& a, int rows, int cols)
{
    if (a.rows != rows)
        a.resize(0, cols);
    else if (a.cols != cols)
        a.resize(rows, 0);
    a.resize(rows, cols);
}

int counted(std::int64_t n)
{
    if (n > INT_MAX) throw std::bad_array_new_length();
    return static_cast<int>(std::max<std::int64_t>(n, 0));
}

} // namespace

template <class T>
int data<T>::readtxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                     int fatal)
{
    // The name may be one of the object's own texts.
    Text const file = name;
    byte_source source(file.str);
    auto refuse = [&](Text const& why) {
        source.close();
        errormessage<T>("int readtxt(char *)", why, "plik: " + file);
        return 1;
    };
    auto not_opened = [&] { return fatal ? refuse("nieudane otwarcie pliku do odczytu") : 1; };
    line_format const format = {rownames != 0, header >= 1, sep == '\r' ? '\n' : sep,
                                quotes && sep != '"' ? '"' : no_char};

    file_shape const shape = measure(source, format.sep);
    if (source.failed()) return not_opened();
    if (shape.bad_line)
        return refuse("zmienna liczba elementow w wierszu: " +
                      Text(std::to_string(shape.bad_line)));
    size_for(*this, counted(shape.lines - format.header), counted(shape.fields - format.rownames));

    source.rewind();
    progress steps(rows);
    if (show) steps.position();
    filler<T> into(*this, format, show ? &steps : nullptr);
    if (char const* const why = into.fill(source)) return refuse(why);
    return source.failed() ? not_opened() : 0;
}

template int data<double>::readtxt(char const*, int, int, int, int, char, int);
template int data<Text>::readtxt(char const*, int, int, int, int, char, int);

} // namespace varnow
