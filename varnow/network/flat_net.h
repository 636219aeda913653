// Internal: passes of a network over all patterns of a set, on flat arrays. Every sum has the terms
// and the order of the operations on `sparse` that define the network, so the results are the same
// to the last bit.
#pragma once

#include <varnow/network/neural_net.h>

#include <cstddef>
#include <vector>

namespace varnow::detail {

/// Patterns that stand beside each other in a block.
constexpr int lanes = 32;

struct flat_patterns
{
    flat_patterns(neural_net const& net, int set);

    /// Of input k of block b: `lanes` values from x[(b * width + k) * lanes] on, 0 where nothing is
    /// stored.
    std::vector<double> x;
    std::vector<double> target;
    int n, width;
    bool finite; ///< all inputs
};

/// Values of weights or gradients in the list order of the matrices.
template <class Number> struct flat_values
{
    Number *w1, *b1, *w2, *b2;
};
using flat_weights = flat_values<double const>;
using flat_gradient = flat_values<double>;

/// The pattern of the weights.
struct flat_net
{
    explicit flat_net(neural_net const& net);

    int n_in, n_hid, act_hid, act_out;
    /// Connections of hidden unit j: from first[j] to first[j + 1], by ascending input.
    std::vector<int> first, input, entry;
    /// Connections of input i, in list order: from row[i] to row[i + 1].
    std::vector<int> row, unit;
    /// Units of the entries of b1 and w2, and the entry of a unit, or -1.
    std::vector<int> b1_unit, w2_unit, b1_entry, w2_entry;
    int b2_entry;
};

/// The value of each pattern to y.
void flat_outputs(flat_net const& f, flat_weights w, flat_patterns const& p, double* y);

/// The same, and the sum of rep times squared errors over the patterns whose rep is above 0. It may
/// end early with what it has when that is `enough`: y is whole where the result is less.
double flat_errors(flat_net const& f, flat_weights w, flat_patterns const& p, double const* rep,
                   double enough, double* y);

/// Adds to g, for each pattern whose rep is above 0, rep times the error times the slopes of the
/// output; those of w1 and b1 with train_hidden only. Returns the sum of rep times squared errors.
double add_flat_gradient(flat_net const& f, flat_weights w, flat_patterns const& p,
                         double const* rep, bool train_hidden, flat_gradient g);

} // namespace varnow::detail
