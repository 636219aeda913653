#include <varnow/containers/gzstream_windows.h>

gzstreambuf* gzstreambuf::open(char const* name, int mode)
{
    bool const writes = (mode & std::ios::out) != 0;
    if (is_open() || writes == ((mode & std::ios::in) != 0)) return nullptr;
    file_ = gzopen(name, writes ? "wb" : "rb");
    writes_ = writes;
    setg(nullptr, nullptr, nullptr);
    if (writes && file_) setp(bytes_.data(), bytes_.data() + bytes_.size());
    return file_ ? this : nullptr;
}

gzstreambuf* gzstreambuf::close()
{
    if (!is_open()) return nullptr;
    bool const written = sync() == 0;
    bool const closed = gzclose(file_) == Z_OK;
    file_ = nullptr;
    setp(nullptr, nullptr);
    return written && closed ? this : nullptr;
}

gzstreambuf::int_type gzstreambuf::underflow()
{
    if (!is_open() || writes_) return traits_type::eof();
    int const n = gzread(file_, bytes_.data(), static_cast<unsigned>(bytes_.size()));
    if (n <= 0) return traits_type::eof();
    setg(bytes_.data(), bytes_.data(), bytes_.data() + n);
    return traits_type::to_int_type(bytes_[0]);
}

gzstreambuf::int_type gzstreambuf::overflow(int_type c)
{
    if (!is_open() || !writes_ || sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

int gzstreambuf::sync()
{
    if (!is_open() || !writes_ || pptr() == pbase()) return 0;
    int const n = static_cast<int>(pptr() - pbase());
    if (gzwrite(file_, pbase(), static_cast<unsigned>(n)) != n) return -1;
    setp(pbase(), epptr());
    return 0;
}
