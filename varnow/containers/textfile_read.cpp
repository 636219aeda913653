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
    static constexpr std::size_t block_size = std::size_t(1) << 16, slack = 64;

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

// Bit k says whether p[k] is one of the characters, for 64 bytes.
template <class... C> inline std::uint64_t places(char const* p, C... c)
{
    std::uint64_t found = 0;
#if defined(__SSE2__)
    for (int k = 0; k < 64; k += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(p + k));
        __m128i any = _mm_setzero_si128();
        ((any = _mm_or_si128(any, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)))), ...);
        found |= std::uint64_t(static_cast<unsigned>(_mm_movemask_epi8(any))) << k;
    }
#else
    for (int k = 0; k < 64; ++k) found |= std::uint64_t(((p[k] == c) || ...)) << k;
#endif
    return found;
}

// The bits of those of 64 bytes at p that stand before the end.
inline std::uint64_t inside(char const* p, char const* end)
{
    return end - p < 64 ? (std::uint64_t(1) << (end - p)) - 1 : ~std::uint64_t(0);
}

// The bits below the lowest one.
inline std::uint64_t below_lowest(std::uint64_t bits)
{
    return bits ^ (bits - 1) ^ (bits & (~bits + 1));
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
            std::uint64_t ends = places(p, '\n') & inside(p, source.end());
            std::uint64_t seps = sep == '\n' ? 0 : places(p, sep) & inside(p, source.end());
            for (; ends; ends &= ends - 1) {
                std::uint64_t const before = below_lowest(ends);
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

// Up to seven digits at p, eight bytes of which can be read; their number goes to n. More than
// seven give n = 8. The digits are joined pairwise: 8 to 4 to 2 to 1 numbers.
std::uint64_t short_digits(char const* p, int& n)
{
    constexpr std::uint64_t each = 0x0101010101010101;
    std::uint64_t v;
    std::memcpy(&v, p, 8);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    v = __builtin_bswap64(v);
#endif
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
    std::uint64_t const negative = *p == '-';
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
    // Signs are hard to foretell: no jump.
    std::uint64_t bits;
    std::memcpy(&bits, &x, 8);
    bits ^= negative << 63;
    std::memcpy(&x, &bits, 8);
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
          comma_(f.sep == ',' ? '.' : ',')
    {
        if (!f.header) clear(a.cnames, a.cols);
        if (!f.rownames) clear(a.rnames, a.rows);
    }

    // The message proper of a refusal, or null.
    char const* fill(byte_source& source)
    {
        while (!done() && source.next()) block(source.begin(), source.end());
        if (!refusal_)
            while (row_ < a_.rows) finish_line();
        return refusal_;
    }

private:
    static constexpr bool numbers = std::is_same<T, double>::value;

    int first_col() const { return f_.rownames ? -1 : 0; }

    static void clear(Text* names, int n)
    {
        for (int i = 0; i < n; ++i)
            if (names[i].len != 0) names[i] = Text();
    }

    bool done() const { return refusal_ || (row_ >= a_.rows && !header_); }

    // Finds the ends of all fields in 64 bytes at once, so that one field need not wait for the
    // last one. What follows the last end is kept for the next block.
    void block(char const* p, char const* const end)
    {
        char const* field = p;
        bool plain = true;
        cells next = length_ == 0 ? cells_here() : cells{};
        for (; p < end; p += 64) {
            std::uint64_t ends = places(p, f_.sep, '\n') & inside(p, end);
            // Numbers have their own look at what stands between.
            std::uint64_t others = numbers ? 0 : places(p, f_.quote, '\r', '\0');
            for (; ends; ends &= ends - 1) {
                char const* const field_end = p + __builtin_ctzll(ends);
                std::uint64_t const before = below_lowest(ends);
                plain = plain && !(others & before);
                others &= ~before;
                bool const set =
                    next.at < next.end && plain && set_plain(*next.at, field, field_end);
                next.at += set;
                if (!set || *field_end == '\n') {
                    leave(next);
                    if (set)
                        finish_line();
                    else
                        take(field, field_end);
                    if (done()) return;
                    next = cells_here();
                }
                plain = true;
                field = field_end + 1;
            }
            plain = plain && !others;
        }
        leave(next);
        add(field, end);
    }

    // The cells of the row from the one at hand on; none where a name stands.
    struct cells
    {
        T* at = nullptr;
        T* end = nullptr;
    };
    cells cells_here() const
    {
        if (header_ || col_ < 0 || col_ > a_.cols) return {};
        return {a_.cell[row_] + col_, a_.cell[row_] + a_.cols};
    }

    void leave(cells const& next)
    {
        if (next.at) col_ = static_cast<int>(next.at - a_.cell[row_]);
    }

    // A field, or what the buffer lacks of it.
    void take(char const* p, char const* const end)
    {
        bool const cell = !header_ && col_ >= 0 && col_ < a_.cols;
        if (!cell || length_ > 0 || !set_cell(a_.cell[row_][col_], p, end)) {
            add(p, end);
            if (refusal_) return;
            if (cell)
                set_cell(a_.cell[row_][col_]);
            else if (Text* const name = name_here())
                set_name(*name);
            length_ = 0;
        }
        ++col_;
        if (*end == '\n') finish_line();
    }

    // Where the row or column name at hand goes, if it goes anywhere.
    Text* name_here() const
    {
        if (!header_) return col_ < 0 ? &a_.rnames[row_] : nullptr;
        return col_ >= 0 && col_ < a_.cols ? &a_.cnames[col_] : nullptr;
    }

    // A cell from a field all of whose characters count; false for what only the buffer can take.
    bool set_plain(T& x, char const* p, char const* end) const
    {
        std::size_t const n = static_cast<std::size_t>(end - p);
        if constexpr (numbers) {
            if (!point_) return false;
            if (short_decimal(p, comma_, x) == end) return true;
            if (n > 0) {
                return n < 64 && !(places(p, f_.quote, '\r') & inside(p, end)) &&
                       detail::parse_plain(p, end, f_.sep != ',', x, end + 8);
            }
            x = __NAN<T>();
        } else {
            if (n > longest_field) return false;
            set_text(x, p, n);
        }
        return true;
    }

    // The same for a field that may be quoted and end in a CR.
    bool set_cell(T& x, char const* p, char const* end) const
    {
        if (p < end && *p == f_.quote) ++p;
        if (p < end && end[-1] == '\r') --end;
        if (p < end && end[-1] == f_.quote) --end;
        if (!numbers)
            for (char const* q = p; q < end; ++q)
                if (*q == f_.quote || *q == '\r' || *q == 0) return false;
        return set_plain(x, p, end);
    }

    // A cell from the buffer.
    void set_cell(T& x)
    {
        if (length_ == 0)
            x = __NAN<T>();
        else if constexpr (std::is_same<T, Text>::value)
            set_name(x);
        else {
            buffer_[length_] = 0;
            x = StoT<double>(buffer_);
        }
    }

    // The buffered field counts up to its first zero byte.
    void set_name(Text& to)
    {
        buffer_[length_] = 0;
        set_text(to, buffer_, std::strlen(buffer_));
    }

    // Adds to the buffered field.
    void add(char const* p, char const* end)
    {
        for (; p < end; ++p) {
            if (*p == '\r' || *p == f_.quote) continue;
            if (length_ == longest_field) {
                refusal_ =
                    header_ ? "nazwa kolumny ma zbyt wiele znakow" : "tekst ma zbyt wiele znakow";
                return;
            }
            buffer_[length_++] = header_ ? *p : commod<T>(*p);
        }
    }

    void finish_line()
    {
        if (!header_) {
            for (int j = std::max(col_, 0); j < a_.cols; ++j) a_.cell[row_][j] = __NAN<T>();
            if (col_ < 0) a_.rnames[row_] = Text();
            ++row_;
            if (steps_) steps_->update();
        }
        header_ = 0;
        col_ = first_col();
    }

    data<T>& a_;
    line_format const f_;
    progress* const steps_;
    int header_; // 1 while the first line is read
    int row_ = 0;
    int col_; // -1 is the row name
    bool const point_;
    char const comma_;
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
    line_format format = {rownames != 0, header >= 1, sep == '\r' ? '\n' : sep,
                          quotes && sep != '"' ? '"' : no_char};

    file_shape const shape = measure(source, format.sep);
    if (source.failed()) return not_opened();
    // What no line end closes is no header either.
    if (shape.lines == 0) format.header = 0;
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
