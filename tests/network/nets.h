// Networks for tests.
#pragma once

#include "tests/support/output.h"

#include <varnow/containers/matrix_special.h>
#include <varnow/network/neural_net.h>
#include <varnow/sparse/generator.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace varnow::test {

/// Numbers around 0, about one of `every` exactly 0 and one of 20 too small to be stored.
inline matrix uneven(int rows, int cols, unsigned every, unsigned seed)
{
    std::mt19937 draw(seed);
    matrix m(rows, cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            double const x = (static_cast<int>(draw() % 2001) - 1000) / 400.0;
            m.cell[i][j] = draw() % every == 0 ? 0.0 : draw() % 20 == 0 ? x * 4e-16 : x;
        }
    return m;
}

/// Weights and set 0 with holes; 71 patterns, which is no whole number of blocks.
inline neural_net sparse_net(int n_in, int n_hid, int act_hid, int act_out, unsigned seed)
{
    neural_net net(n_in, n_hid, act_hid, act_out);
    net.w1 = uneven(n_in, n_hid, 3, seed);
    net.b1 = uneven(1, n_hid, 3, seed + 1);
    net.w2 = uneven(n_hid, 1, 4, seed + 2);
    net.b2 = uneven(1, 1, 3, seed + 3);
    net.init_vars();
    net.set_patterns(uneven(71, n_in, 4, seed + 4), uneven(71, 1, 5, seed + 5), 0);
    return net;
}

/// One weight, b2 = b, whose value every pattern gets; so the error is (mean - b)^2 + a rest.
inline neural_net constant_net(matrix const& targets, double b)
{
    neural_net net(1, 1, 2, 3);
    net.w1 = spempty(1, 1);
    net.b1 = spempty(1, 1);
    net.w2 = spempty(1, 1);
    net.b2 = spzeros(1, 1);
    net.b2[1] = b;
    net.init_vars();
    net.set_patterns(ones(targets.rows, 1), targets, 0);
    return net;
}

} // namespace varnow::test
