// Internal: the gzip streams of the Windows build, where the system packages none. On other systems
// classes of these names come from <gzstream.h>.
#pragma once

#include <array>
#include <istream>
#include <ostream>
#include <streambuf>

#include <zlib.h>

/// The bytes of one packed file, read or written.
class gzstreambuf : public std::streambuf
{
public:
    gzstreambuf() = default;
    gzstreambuf(gzstreambuf const&) = delete;
    gzstreambuf& operator=(gzstreambuf const&) = delete;
    ~gzstreambuf() override { close(); }

    bool is_open() const { return file_ != nullptr; }
    /// Null on failure, as for the buffers of the standard library.
    gzstreambuf* open(char const* name, int mode);
    gzstreambuf* close();

protected:
    int_type underflow() override;
    int_type overflow(int_type c) override;
    int sync() override;

private:
    gzFile file_ = nullptr;
    bool writes_ = false;
    std::array<char, 1 << 14> bytes_;
};

namespace varnow::detail {

/// A standard stream over a packed file; a failed open sets the fail bit.
template <class Stream, int Mode> class gz_stream : public Stream
{
public:
    gz_stream() : Stream(nullptr) { std::ios::rdbuf(&buffer_); }
    explicit gz_stream(char const* name, int mode = Mode) : gz_stream() { open(name, mode); }

    gzstreambuf* rdbuf() { return &buffer_; }
    void open(char const* name, int mode = Mode)
    {
        if (!buffer_.open(name, mode)) this->setstate(std::ios::failbit);
    }
    void close()
    {
        if (buffer_.is_open() && !buffer_.close()) this->setstate(std::ios::badbit);
    }

private:
    gzstreambuf buffer_;
};

} // namespace varnow::detail

using igzstream = varnow::detail::gz_stream<std::istream, std::ios::in>;
using ogzstream = varnow::detail::gz_stream<std::ostream, std::ios::out>;
