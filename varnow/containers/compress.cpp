#include <varnow/containers/compress.h>

#include <varnow/containers/temporary_file.h>
#include <varnow/core/platform.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <varnow/containers/gzstream_windows.h>
#else
#include <gzstream.h>
#endif

namespace varnow {

namespace {

namespace fs = std::filesystem;

int failed(char const* action, char const* name)
{
    std::cerr << std::string("ERROR: ") + action + " file `" + name + "' failed.\n";
    return 1;
}

// A file in the making. It stands beside its place until it is whole; a device, a pipe or a link is
// written straight.
class new_file
{
public:
    explicit new_file(char const* name)
        : name_(name), beside_(replaceable(name)), draft_(beside_ ? detail::draft_name(name_) : "")
    {
    }
    char const* place() const { return beside_ ? draft_.name() : name_.c_str(); }
    bool finish() const
    {
        return !beside_ || platform::replace_file(draft_.name(), name_.c_str()) == 0;
    }

private:
    static bool replaceable(char const* name)
    {
        std::error_code ignored;
        fs::file_type const type = fs::symlink_status(name, ignored).type();
        return type == fs::file_type::not_found || type == fs::file_type::regular;
    }

    std::string const name_;
    bool const beside_;
    detail::temporary_file const draft_;
};

void copy(std::istream& from, std::ostream& to)
{
    std::vector<char> block(1 << 16);
    do {
        from.read(block.data(), static_cast<std::streamsize>(block.size()));
        to.write(block.data(), from.gcount());
    } while (from && to);
}

// Whether a file unpacks without an error to its end. The stream takes damage for the end of the
// data, and lets pass as it is what was never packed.
bool unpacks(char const* name)
{
    std::error_code ignored;
    fs::file_type const type = fs::status(name, ignored).type();
    if (type != fs::file_type::regular) return type != fs::file_type::directory;
    gzFile const f = gzopen(name, "rb");
    if (!f) return false;
    std::vector<char> block(1 << 16);
    int n;
    do n = gzread(f, block.data(), static_cast<unsigned>(block.size()));
    while (n > 0);
    bool const sound = n == 0 && !gzdirect(f);
    return gzclose(f) == Z_OK && sound;
}

} // namespace

int gzip(char const* in, char const* out)
{
    std::ifstream plain(in, std::ios::binary);
    if (!plain.is_open()) return failed("Opening", in);
    new_file const made(out);
    ogzstream packed(made.place());
    if (!packed.rdbuf()->is_open()) return failed("Opening", out);
    copy(plain, packed);
    if (plain.bad()) return failed("Reading", in);
    packed.close();
    return packed.good() && made.finish() ? 0 : failed("Writing", out);
}

int gunzip(char const* in, char const* out)
{
    igzstream packed(in);
    if (!packed.rdbuf()->is_open()) return failed("Opening", in);
    if (!unpacks(in)) return failed("Reading", in);
    new_file const made(out);
    std::ofstream plain(made.place(), std::ios::binary);
    if (!plain.is_open()) return failed("Opening", out);
    copy(packed, plain);
    packed.close();
    if (packed.bad()) return failed("Reading", in);
    plain.close();
    return plain.good() && made.finish() ? 0 : failed("Writing", out);
}

template <class T>
int write_data(data<T> const& object, char const* name, int gz, int show, int rownames, int header,
               int quotes, char sep, char dec, int fatal)
{
    if (!gz) {
        object.swritetxt(name, show, rownames, header, quotes, sep, dec, 1);
        return 0;
    }
    std::string const packed = std::string(name) + ".gz";
    detail::temporary_file const plain(platform::temporary_name());
    if (object.writetxt(plain.name(), show, rownames, header, quotes, sep, dec, fatal) != 0)
        return 1;
    return gzip(plain.name(), packed.c_str());
}

template <class T>
int read_data(data<T>& object, char const* name, int gz, int show, int rownames, int header,
              int quotes, char sep, int fatal)
{
    if (!gz) {
        object.sreadtxt(name, show, rownames, header, quotes, sep, 1);
        return 0;
    }
    std::string const packed = std::string(name) + ".gz";
    detail::temporary_file const plain(platform::temporary_name());
    int const result = gunzip(packed.c_str(), plain.name());
    // The name was made with an empty file.
    if (result != 0) plain.remove();
    object.readtxt(plain.name(), show, rownames, header, quotes, sep, fatal);
    return result;
}

#define INSTANCES(T)                                                                               \
    template int write_data(data<T> const&, char const*, int, int, int, int, int, char, char,      \
                            int);                                                                  \
    template int read_data(data<T>&, char const*, int, int, int, int, int, char, int);
INSTANCES(double)
INSTANCES(Text)
#undef INSTANCES

} // namespace varnow
