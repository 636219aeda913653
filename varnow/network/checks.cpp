#include <varnow/network/checks.h>

namespace varnow::detail {

void refuse_net(char const* routine, char const* why)
{
    errormessage("NEURAL_NET", routine, why, "");
}

namespace {

bool holds(bool condition, char const* routine, char const* otherwise)
{
    if (!condition) refuse_net(routine, otherwise);
    return condition;
}

bool has_shape(sparse const& s, int rows, int cols)
{
    return s.rows == rows && s.cols == cols;
}

bool alike(sparse const& a, sparse const& b)
{
    return has_shape(a, b.rows, b.cols) && a.nnz == b.nnz;
}

} // namespace

bool set_exists(int set, char const* routine)
{
    return holds(set >= 0 && set <= 2, routine, "numer zbioru poza zakresem");
}

bool weights_fit(neural_net const& net, char const* routine)
{
    int const in = net.n_in, hid = net.n_hid;
    return holds(has_shape(net.w1, in, hid) && has_shape(net.b1, 1, hid) &&
                     has_shape(net.w2, hid, 1) && has_shape(net.b2, 1, 1),
                 routine, "niezgodne wymiary macierzy wag");
}

bool patterns_fit(neural_net const& net, int set, char const* routine)
{
    int const n = net.n_patterns[set];
    sparse const &in = net.inputs[set], &out = net.outputs[set];
    return holds(
        n == 0 || (n > 0 && in.rows >= n && in.cols == net.n_in && out.rows >= n && out.cols == 1),
        routine, "niezgodne wymiary macierzy wzorcow");
}

bool set_fits(neural_net const& net, int set, char const* routine)
{
    if (!weights_fit(net, routine) || !patterns_fit(net, set, routine)) return false;
    for (int code : {net.act_hid, net.act_out}) {
        activation(0.0, code);
        if (code < 1 || code > 3) return false;
    }
    return true;
}

bool can_train(neural_net const& net, char const* routine)
{
    if (!set_fits(net, 0, routine)) return false;
    struct
    {
        sparse const &weights, &gradient, &direction, &step;
    } const layers[] = {{net.w1, net.gw1, net.dw1, net.sw1},
                        {net.b1, net.gb1, net.db1, net.sb1},
                        {net.w2, net.gw2, net.dw2, net.sw2},
                        {net.b2, net.gb2, net.db2, net.sb2}};
    for (auto const& layer : layers)
        for (sparse const* other : {&layer.gradient, &layer.direction, &layer.step})
            if (!holds(alike(layer.weights, *other), routine, "niezgodna dlugosc wypelnienia"))
                return false;
    return holds(net.rep.rows >= net.n_patterns[0] && (net.rep.cols > 0 || net.n_patterns[0] == 0),
                 routine, "niezgodna liczba wag wzorcow");
}

} // namespace varnow::detail
