// sparse::readtxt of any bytes, and what works on a list that may be out of order.
#include <tests/fuzz/refusing.h>

#include <varnow/sparse/sparse.h>

#include <cstdio>

using namespace varnow;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static scratch_file const file;
    choices choose(data, size);
    int const i = static_cast<int>(choose.next() % 8), j = static_cast<int>(choose.next() % 8);
    std::string const text = choose.rest();
    // Large matrices take their memory, whatever they hold.
    long long rows, cols;
    if (std::sscanf(text.c_str(), "%18lld%18lld", &rows, &cols) == 2 &&
        (rows > 1000 || cols > 1000))
        return 0;
    try {
        sparse s;
        s.readtxt(file.with(text));
        sparse const t = s;
        static_cast<void>(t + ~~t);
        static_cast<void>(mul(t, ~t));
        if (i % 2 == 0) s.mkindex();
        for (int k = 1; k <= s.rows; ++k) row(s, k);
        s(i, j) += 1;
        s.synch(t);
        s.unpack();
        if (s.nnz != s.rows * s.cols) __builtin_trap();
    } catch (refusal const&) {
    }
    return 0;
}
