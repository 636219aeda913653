// Writing delimited text, and the forms of reading and writing that wait for other processes.
#include <varnow/containers/data.h>
#include <varnow/containers/temporary_file.h>
#include <varnow/coordination/progress.h>
#include <varnow/core/console.h>
#include <varnow/core/format.h>
#include <varnow/core/platform.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace varnow {

namespace {

// A text file that is written in large pieces.
class text_sink
{
public:
    explicit text_sink(char const* name)
        : file_(std::fopen(name, "wt")), buffer_(std::size_t(1) << 16)
    {
    }
    bool is_open() const { return file_ != nullptr; }

    // Room for n more characters; `taken` tells the end of what was put there.
    char* room(std::size_t n)
    {
        if (n > buffer_.size() - used_) {
            flush();
            if (n > buffer_.size()) buffer_.resize(n);
        }
        return &buffer_[used_];
    }
    void taken(char const* end) { used_ = static_cast<std::size_t>(end - buffer_.data()); }

    // False when anything was not written.
    bool close()
    {
        flush();
        bool const sound = !std::ferror(file_.get());
        return std::fclose(file_.release()) == 0 && sound;
    }

private:
    void flush()
    {
        std::fwrite(buffer_.data(), 1, used_, file_.get());
        used_ = 0;
    }

    struct closer
    {
        void operator()(std::FILE* f) const { std::fclose(f); }
    };
    std::unique_ptr<std::FILE, closer> file_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
};

// Writes the fields of lines, each with what stands around it.
class line_writer
{
public:
    line_writer(text_sink& sink, int quotes, char sep, char dec)
        : sink_(sink),
          quotes_(quotes != 0),
          sep_(sep),
          dec_(dec),
          other_(dec == '.' ? ',' : '.'),
          point_(detail::point_locale())
    {
    }

    void name(Text const& x, bool last)
    {
        field(text_length(x), last,
              [&](char* to) { return std::copy_n(x.str, text_length(x), to); });
    }

    // The cells' decimal signs are made those of the file, in texts as well as in numbers.
    void cell(Text const& x, bool last)
    {
        std::size_t const n = text_length(x);
        field(n, last,
              [&](char* to) { return std::replace_copy(x.str, x.str + n, to, other_, dec_); });
    }
    void cell(double x, bool last)
    {
        field(detail::fixed_room(6), last, [&](char* to) {
            if (x != x) return to;
            char* const end = detail::format_fixed(to, x, 6, point_);
            if (dec_ != '.' || !point_) std::replace(to, end, other_, dec_);
            return end;
        });
    }

private:
    // What a C string of the text holds.
    static std::size_t text_length(Text const& x)
    {
        return x.str ? ::strnlen(x.str, static_cast<std::size_t>(x.len)) : 0;
    }

    template <class F> void field(std::size_t most, bool last, F content)
    {
        char* to = sink_.room(most + 3);
        if (quotes_) *to++ = '"';
        to = content(to);
        if (quotes_) *to++ = '"';
        *to++ = last ? '\n' : sep_;
        sink_.taken(to);
    }

    text_sink& sink_;
    bool const quotes_;
    char const sep_, dec_, other_;
    bool const point_;
};

// The name with an underscore before the file's own name.
std::string underscored(std::string name)
{
#if defined(_WIN32)
    std::size_t const folder = name.find_last_of("/\\:");
#else
    std::size_t const folder = name.rfind('/');
#endif
    return name.insert(folder == std::string::npos ? 0 : folder + 1, "_");
}

template <class F> void until(F succeeds, int wait)
{
    while (!succeeds()) {
        if (wait > 0)
            sleep(wait);
        else // on Windows those who try without a pause keep the file from each other
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// Puts a file in its place. When it is gone, another process has moved it there.
bool moved(std::string const& from, std::string const& to)
{
    std::error_code ignored;
    return platform::replace_file(from.c_str(), to.c_str()) == 0 ||
           std::filesystem::symlink_status(from, ignored).type() ==
               std::filesystem::file_type::not_found;
}

} // namespace

template <class T>
int data<T>::writetxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                      char dec, int fatal) const
{
    auto refuse = [name](char const* why) {
        errormessage<T>("int writetxt(char *)", why, Text("plik: ") + name);
        return 1;
    };
    auto not_written = [&] { return fatal ? refuse("nieudane otwarcie pliku do zapisu") : 1; };

    text_sink sink(name);
    if (!sink.is_open()) return not_written();
    if (dec != '.' && dec != ',') {
        sink.close();
        return refuse("oczekiwany separator dziesietny '.' lub ','");
    }
    progress steps(rows);
    if (show) steps.position();
    line_writer line(sink, quotes, sep, dec);
    if (header) {
        if (rownames) line.name("ROWNAME", cols == 0);
        for (int j = 0; j < cols; ++j) line.name(cnames[j], j == cols - 1);
    }
    for (int i = 0; i < rows; ++i) {
        if (rownames) line.name(rnames[i], cols == 0);
        for (int j = 0; j < cols; ++j) line.cell(cell[i][j], j == cols - 1);
        if (show) steps.update();
    }
    return sink.close() ? 0 : not_written();
}

template <class T>
void data<T>::sreadtxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                       int wait)
{
    until([&] { return readtxt(name, show, rownames, header, quotes, sep, 0) == 0; }, wait);
}

template <class T>
void data<T>::lreadtxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                       int wait)
{
    // The name may be one of the object's own texts.
    std::string const file = name, held = underscored(file);
    auto take = [&] { return std::rename(file.c_str(), held.c_str()) == 0; };
    until(take, wait);
    // A writer that hands a newer file over meanwhile takes the held one along; then the newer one
    // is taken.
    auto read = [&] {
        if (readtxt(held.c_str(), show, rownames, header, quotes, sep, 0) == 0) return true;
        take();
        return false;
    };
    until(read, wait);
    until([&] { return moved(held, file); }, wait);
}

template <class T>
void data<T>::swritetxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                        char dec, int wait) const
{
    until([&] { return writetxt(name, show, rownames, header, quotes, sep, dec, 0) == 0; }, wait);
}

template <class T>
void data<T>::ulwritetxt(char const* name, int show, int rownames, int header, int quotes, char sep,
                         char dec, int wait) const
{
    // A reader may hold a file under the name with the underscore, and puts back what it finds
    // there: what comes to stand there must be whole already.
    std::string const held = underscored(name);
    detail::temporary_file const draft(detail::draft_name(held));
    swritetxt(draft.name(), show, rownames, header, quotes, sep, dec, wait);
    until([&] { return platform::replace_file(draft.name(), held.c_str()) == 0; }, wait);
    until([&] { return moved(held, name); }, wait);
}

#define INSTANCES(T)                                                                               \
    template int data<T>::writetxt(char const*, int, int, int, int, char, char, int) const;        \
    template void data<T>::sreadtxt(char const*, int, int, int, int, char, int);                   \
    template void data<T>::lreadtxt(char const*, int, int, int, int, char, int);                   \
    template void data<T>::swritetxt(char const*, int, int, int, int, char, char, int) const;      \
    template void data<T>::ulwritetxt(char const*, int, int, int, int, char, char, int) const;
INSTANCES(double)
INSTANCES(Text)
#undef INSTANCES

} // namespace varnow
