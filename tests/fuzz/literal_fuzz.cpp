// The matrix literal, made new and assigned.
#include <tests/fuzz/refusing.h>

#include <varnow/containers/matrix.h>

#include <cmath>
#include <cstdlib>

using namespace varnow;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const literal(reinterpret_cast<char const*>(data), size);
    try {
        matrix const made(literal.c_str());
        matrix assigned(made.rows, 3);
        assigned = literal.c_str();
        if (made.rows != assigned.rows || made.cols != assigned.cols) std::abort();
        for (int i = 0; i < made.rows; ++i)
            for (int j = 0; j < made.cols; ++j) {
                double const x = made.cell[i][j], y = assigned.cell[i][j];
                if (x != y && !(std::isnan(x) && std::isnan(y))) std::abort();
            }
    } catch (refusal const&) {
    }
    return 0;
}
