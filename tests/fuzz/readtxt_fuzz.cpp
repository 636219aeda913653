// readtxt of any bytes as matrix and as table; what was read is written and read again.
#include <tests/fuzz/refusing.h>

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

#include <cstdlib>

using namespace varnow;

namespace {

template <class A> void read(scratch_file const& file, choices from)
{
    unsigned const flags = from.next();
    int const rownames = flags & 1, header = flags >> 1 & 1, quotes = flags >> 2 & 1;
    char const sep = static_cast<char>(from.next());
    A a(static_cast<int>(flags >> 4), 2), b;
    try {
        a.readtxt(file.with(from.rest()), 0, rownames, header, quotes, sep, 1);
        // Names and cells are texts of the file, so that a usual separator brings the sizes back.
        bool const usual = sep == '\t' || sep == ';' || sep == '|';
        char const* const name = file.with("");
        if (!usual || a.cols == 0 || a.writetxt(name, 0, rownames, header, quotes, sep) != 0)
            return;
        b.readtxt(name, 0, rownames, header, quotes, sep, 1);
        if (a.rows != b.rows || a.cols != b.cols) std::abort();
    } catch (refusal const&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static scratch_file const file;
    read<matrix>(file, {data, size});
    read<table>(file, {data, size});
    return 0;
}
