// Matrices for comparing fast routines with plain loops, bit for bit.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/product_kernel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace varnow::test {

/// Runs the kernel of every kind of machine up to this one.
template <class F> void on_every_machine(F check)
{
    for (int cells : {2, 4, 8}) {
        SCOPED_TRACE(testing::Message() << "vectors of " << cells << " cells");
        detail::limit_vectors(cells);
        check();
    }
}

/// Equal to the last bit, the sign of zero included; a NaN equals any NaN.
inline bool same_bits(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool same_bits(Text const& a, Text const& b)
{
    return a == b;
}

inline testing::AssertionResult same_bits(data<double> const& a, data<double> const& b)
{
    if (a.rows != b.rows || a.cols != b.cols)
        return testing::AssertionFailure()
               << a.rows << " x " << a.cols << " against " << b.rows << " x " << b.cols;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            if (!same_bits(a.cell[i][j], b.cell[i][j]))
                return testing::AssertionFailure() << "at " << i + 1 << ", " << j + 1 << ": "
                                                   << a.cell[i][j] << " against " << b.cell[i][j];
    return testing::AssertionSuccess();
}

/// Normal numbers whose rows do not stand in order in memory; with `specials` of all cells being
/// zeros of both signs, infinities or NaN.
inline matrix scattered(int rows, int cols, unsigned seed, double specials = 0)
{
    std::mt19937 source(seed);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    double const infinity = std::numeric_limits<double>::infinity();
    double const special[] = {0.0, -0.0, 0.0, -0.0, infinity, -infinity, std::nan("")};
    matrix m(rows, cols);
    for (int i = 0; i + 1 < rows; i += 2) std::swap(m.cell[i], m.cell[rows - 1 - i]);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j)
            m.cell[i][j] = uniform(source) < specials ? special[source() % std::size(special)]
                                                      : normal(source);
    return m;
}

} // namespace varnow::test
