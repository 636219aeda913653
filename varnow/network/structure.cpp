#include <varnow/network/neural_net.h>

#include <varnow/containers/matrix_special.h>
#include <varnow/models/discrimination.h>
#include <varnow/models/param_start.h>
#include <varnow/network/checks.h>
#include <varnow/network/flat_net.h>
#include <varnow/numerics/statistics.h>
#include <varnow/sparse/generator.h>

#include <cmath>
#include <iostream>

namespace varnow {

namespace {

using detail::refuse_net;

double const first_step = 0.001;

char const* name_of(int code)
{
    char const* const names[] = {"undefined", "logistic", "tanhyp", "linear"};
    return code >= 0 && code <= 3 ? names[code] : nullptr;
}

double no_activation(int code, char const* of_unknown)
{
    char const* const routine = code == 0 ? "double activation(double,int)" : of_unknown;
    refuse_net(routine, code == 0 ? "undefined activation function" : "unknow activation function");
    return 0.0;
}

} // namespace

double activation(double x, int code)
{
    switch (code) {
    case 1:
        return 1.0 / (1.0 + std::exp(-x));
    case 2:
        return std::tanh(x);
    case 3:
        return x;
    default:
        return no_activation(code, "double activation(double,int)");
    }
}

double d_activation(double y, int code)
{
    switch (code) {
    case 1:
        return y * (1.0 - y);
    case 2:
        return 1.0 - y * y;
    case 3:
        return 1.0;
    default:
        return no_activation(code, "double d_activation(double,int)");
    }
}

Text act_name(int code)
{
    char const* const name = name_of(code);
    if (!name) refuse_net("Text act_name(int)", "unknow activation function");
    return name ? name : "";
}

neural_net::neural_net() : neural_net(0, 0, 0, 0) {}

neural_net::neural_net(int inputs_, int hidden, int act_hidden, int act_output)
    : n_patterns{0, 0, 0},
      n_in(inputs_),
      n_hid(hidden),
      act_hid(act_hidden),
      act_out(act_output),
      grad_norm2(0.0),
      lambda(0.0),
      tau(0.0),
      rep_total(0)
{
}

void neural_net::set_activ_fun(int act_hidden, int act_output)
{
    act_hid = act_hidden;
    act_out = act_output;
}

void neural_net::reset()
{
    for (sparse* d : {&dw1, &db1, &dw2, &db2}) d->zeros();
    grad_norm2 = 0.0;
    lambda = tau = first_step;
}

void neural_net::init_vars()
{
    struct
    {
        sparse& weights;
        sparse* work[4];
    } const layers[] = {{w1, {&gw1, &dw1, &sw1, &tw1}},
                        {b1, {&gb1, &db1, &sb1, &tb1}},
                        {w2, {&gw2, &dw2, &sw2, &tw2}},
                        {b2, {&gb2, &db2, &sb2, &tb2}}};
    for (auto const& layer : layers)
        for (sparse* work : layer.work) {
            *work = spzeros(layer.weights.rows, layer.weights.cols);
            work->synch(layer.weights);
        }
    int const P = gw1.nnz + gb1.nnz + gw2.nnz + gb2.nnz;
    grad_vec = step_vec = zeros(P, 1);
    unit_mat = eye(P);
    outer_mat = zeros(P, P);
    grad_norm2 = 0.0;
    lambda = tau = first_step;
    w1.mkindex();
    w2.mkindex();
}

namespace {

void make_empty(neural_net& net)
{
    net.w1 = spempty(net.n_in, net.n_hid);
    net.b1 = spempty(1, net.n_hid);
    net.w2 = spempty(net.n_hid, 1);
    net.b2 = spempty(1, 1);
}

bool outside(int position, int size)
{
    return position < 1 || position > size;
}

} // namespace

void neural_net::init(double scale)
{
    w1 = sprand(n_in, n_hid) * scale;
    b1 = sprand(1, n_hid) * scale;
    w2 = sprand(n_hid, 1) * scale;
    b2 = sprand(1, 1) * scale;
    init_vars();
}

void neural_net::init_simply(double scale)
{
    make_empty(*this);
    for (int i = 1; i <= n_in; ++i) {
        b1(1, i) = detail::sparse_draw() * scale;
        w1(i, i) = detail::sparse_draw() * scale;
    }
    b2(1, 1) = detail::sparse_draw() * scale;
    for (int i = 1; i <= n_in; ++i) w2(i, 1) = detail::sparse_draw() * scale;
    init_vars();
}

void neural_net::init_single_input(int input, int count, int first, double scale)
{
    if (outside(input, n_in) || (count > 0 && (outside(first, n_hid) || count > n_hid - first + 1)))
        return refuse_net("init_single_input(int,int,int,double)", "indeks poza zakresem");
    make_empty(*this);
    for (int k = 0; k < count; ++k) w1(input, first + k) = detail::sparse_draw() * scale;
    b2(1, 1) = detail::sparse_draw() * scale;
    for (int k = 0; k < count; ++k) {
        b1(1, first + k) = detail::sparse_draw() * scale;
        w2(first + k, 1) = detail::sparse_draw() * scale;
    }
    init_vars();
}

namespace {

matrix targets(neural_net const& net, int s)
{
    matrix t(net.n_patterns[s], 1);
    for (int p = 0; p < t.rows; ++p) t.cell[p][0] = net.outputs[s].get(p + 1, 1);
    return t;
}

// Gives the net the curve that start(x, t) finds for one input: p(1) tanh(p(2) x + p(3)) + p(4).
template <class F>
void init_curve(neural_net& net, int input, int hidden, char const* routine, F start)
{
    if (outside(input, net.n_in) || outside(hidden, net.n_hid))
        return refuse_net(routine, "indeks poza zakresem");
    if (!detail::patterns_fit(net, 0, routine)) return;
    matrix x(net.n_patterns[0], 1);
    for (int p = 0; p < x.rows; ++p) x.cell[p][0] = net.inputs[0].get(p + 1, input);
    matrix const curve = start(x, targets(net, 0));
    make_empty(net);
    net.w2(hidden, 1) = curve(1);
    net.w1(input, hidden) = curve(2);
    net.b1(1, hidden) = curve(3);
    net.b2(1, 1) = curve(4);
    net.init_vars();
}

} // namespace

void neural_net::init_binfun(int input, int hidden)
{
    double const tanh_1 = 0.7615941559557649;
    init_curve(*this, input, hidden, "init_binfun(int,int)",
               [=](matrix const& x, matrix const& t) -> matrix {
                   matrix const p = param_start_B(x, t);
                   return ~c((p(2) - p(1)) / tanh_1, 1.0, 0.0, p(1));
               });
}

void neural_net::init_confun(int input, int hidden)
{
    init_curve(*this, input, hidden, "init_confun(int,int)",
               [](matrix const& x, matrix const& t) { return param_start_C(x, t, 0); });
}

void neural_net::set_patterns(matrix const& in, matrix const& out, int set)
{
    char const* const routine = "set_patterns(matrix,matrix,int)";
    if (!detail::set_exists(set, routine)) return;
    if (in.rows != out.rows || out.cols != 1)
        return refuse_net(routine, "niezgodne wymiary macierzy");
    inputs[set] = in;
    outputs[set] = out;
    n_patterns[set] = in.rows;
    inputs[set].mkindex();
    outputs[set].mkindex();
    if (set == 0) normal_rep();
}

void neural_net::datainfo() const
{
    std::cout << "patterns: " << n_patterns[0] << " " << n_patterns[1] << " " << n_patterns[2]
              << "\n";
}

void neural_net::structure() const
{
    std::cout << "layer size: " << n_in << " " << n_hid << " 1\n"
              << "activation: " << act_name(act_hid) << " " << act_name(act_out) << "\n"
              << "parameters: " << gw1.nnz << " " << gb1.nnz << " " << gw2.nnz << " " << gb2.nnz
              << "\n";
}

void neural_net::resizec(int inputs_, int hidden)
{
    if (inputs_ < n_in || hidden < n_hid) return refuse_net("resizec(int,int)", "incorrect size");
    n_in = inputs_;
    n_hid = hidden;
    w1.resizec(n_in, n_hid);
    b1.resizec(1, n_hid);
    w2.resizec(n_hid, 1);
    b2.resizec(1, 1);
    init_vars();
}

double neural_net::value(sparse const& x) const
{
    if (!detail::weights_fit(*this, "double value(sparse)")) return __NAN<double>();
    sparse const h = forall(mul(x, w1) + b1, activation, act_hid);
    return forall(mul(h, w2) + b2, activation, act_out);
}

namespace {

// Values of a set as numbers; without any behind a refusal and for no patterns.
bool find_values(neural_net const& net, int s, char const* routine, matrix& y)
{
    if (!detail::set_exists(s, routine)) return false;
    y = matrix(0, 1);
    if (net.n_patterns[s] == 0) return true;
    if (!detail::set_fits(net, s, routine)) return false;
    detail::flat_patterns const patterns(net, s);
    std::vector<double> values(patterns.target.size());
    flat_outputs(detail::flat_net(net), detail::weights_of(net), patterns, values.data());
    y = matrix(patterns.n, 1);
    for (int p = 0; p < y.rows; ++p) y.cell[p][0] = values[static_cast<std::size_t>(p)];
    return true;
}

} // namespace

matrix neural_net::values(int s) const
{
    matrix y;
    find_values(*this, s, "matrix values(int)", y);
    return y;
}

double neural_net::error(int s) const
{
    matrix y;
    if (!find_values(*this, s, "double error(int)", y)) return __NAN<double>();
    matrix const t = targets(*this, s);
    double total = 0.0;
    for (int p = 0; p < y.rows; ++p) {
        double const e = t.cell[p][0] - y.cell[p][0];
        total += e * e;
    }
    return total / n_patterns[s];
}

double neural_net::corr(int s) const
{
    matrix y;
    if (!find_values(*this, s, "double corr(int)", y)) return __NAN<double>();
    return cor(targets(*this, s), y);
}

double neural_net::AR(int s) const
{
    matrix y;
    if (!find_values(*this, s, "double AR(int)", y)) return __NAN<double>();
    return varnow::AR(y, targets(*this, s), 1.0, 1, 0, 0);
}

} // namespace varnow
