// Internal: what a network must hold before a pass; each is false behind a refusal.
#pragma once

#include <varnow/network/flat_net.h>

namespace varnow::detail {

void refuse_net(char const* routine, char const* why);
bool set_exists(int set, char const* routine);
/// Weights of the shapes that n_in and n_hid ask for.
bool weights_fit(neural_net const& net, char const* routine);
/// Enough patterns of the right width.
bool patterns_fit(neural_net const& net, int set, char const* routine);
/// Both, and known activations.
bool set_fits(neural_net const& net, int set, char const* routine);
/// All that a step needs.
bool can_train(neural_net const& net, char const* routine);

inline flat_weights weights_of(neural_net const& net)
{
    return {net.w1.values, net.b1.values, net.w2.values, net.b2.values};
}

} // namespace varnow::detail
