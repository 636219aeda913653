#include <varnow/network/neural_net.h>

#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/network/checks.h>
#include <varnow/network/flat_net.h>
#include <varnow/network/generator.h>
#include <varnow/numerics/brent.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>

namespace varnow {

namespace detail {

std::uint32_t network_state = 12345;

} // namespace detail

namespace {

using detail::refuse_net;

constexpr int most_doublings = 30, most_trials = 30;
constexpr double infinity = std::numeric_limits<double>::infinity(),
                 nan_value = std::numeric_limits<double>::quiet_NaN();

std::size_t at(int k)
{
    return static_cast<std::size_t>(k);
}

double added_powers(sparse const& s)
{
    double total = 0.0;
    for (int k = 0; k < s.nnz; ++k) total += std::pow(std::fabs(s.values[k]), 1.5);
    return total;
}

// The penalty on large weights, S / (K + S) but for a factor.
struct penalty
{
    penalty(neural_net const& net, sparse const& w1, sparse const& w2, sparse const& b1)
        : S(added_powers(w1) + added_powers(w2) + added_powers(b1)),
          D((net.n_in + 2.0) * net.n_hid + S)
    {
    }
    double value() const { return 0.33 * S / D; }
    void add_gradient(sparse const& w, sparse& g) const
    {
        for (int k = 0; k < w.nnz; ++k) {
            double const x = w.values[k], sign = (x > 0.0) - (x < 0.0);
            g.values[k] += 0.495 / D * sign * std::sqrt(std::fabs(x));
        }
    }

    double S, D;
};

int parameters(neural_net const& net)
{
    int P = 0;
    for (sparse const* g : {&net.gw1, &net.gb1, &net.gw2, &net.gb2}) P += std::max(g->nnz, 0);
    return P;
}

// Set 0 and the structure of the net, made ready once for the many passes of training.
class learning_set
{
public:
    explicit learning_set(neural_net& net)
        : net_(net), flat_(net), patterns_(net, 0), rep_(patterns_.target.size())
    {
        weigh_patterns();
    }
    void weigh_patterns()
    {
        for (int p = 0; p < patterns_.n; ++p) rep_[at(p)] = net_.rep.cell[p][0];
    }

    /// As error(0) and corr(0) of the net; after a step of a search its outputs are known.
    double error()
    {
        double total = 0.0;
        std::vector<double> const& y = outputs();
        for (std::size_t p = 0; p < y.size(); ++p) {
            double const e = patterns_.target[p] - y[p];
            total += e * e;
        }
        return total / patterns_.n;
    }
    double corr() { return cor(column(patterns_.target), column(outputs())); }

    /// The gradient but for its factor, unpenalised; returns the mean squared error.
    double make_gradient(bool train_hidden)
    {
        least_ = infinity;
        for (sparse* g : {&net_.gw1, &net_.gb1, &net_.gw2, &net_.gb2}) g->zeros();
        double const total =
            add_flat_gradient(flat_, detail::weights_of(net_), patterns_, rep_.data(), train_hidden,
                              {net_.gw1.values, net_.gb1.values, net_.gw2.values, net_.gb2.values});
        return total / net_.rep_total;
    }

    /// Trial weights: the weights less t times the direction.
    void try_along(double t)
    {
        net_.tw1 = spminus(net_.w1, net_.dw1, t);
        net_.tb1 = spminus(net_.b1, net_.db1, t);
        net_.tw2 = spminus(net_.w2, net_.dw2, t);
        net_.tb2 = spminus(net_.b2, net_.db2, t);
        copy_indexes();
    }
    /// Trial weights: the weights less the trial step.
    void try_step()
    {
        net_.tw1 = spminus(net_.w1, net_.sw1);
        net_.tb1 = spminus(net_.b1, net_.sb1);
        net_.tw2 = spminus(net_.w2, net_.sw2);
        net_.tb2 = spminus(net_.b2, net_.sb2);
        copy_indexes();
    }

    /// The error of trial weights; one above the limit may be any other such.
    double error_along(double t, int use_penalty, double limit = infinity)
    {
        try_along(t);
        return error_of_trial(use_penalty, limit);
    }
    double error_of_step(int use_penalty, double limit = infinity)
    {
        try_step();
        return error_of_trial(use_penalty, limit);
    }

    double least_along(double a, double b, double tol, int use_penalty, double& least)
    {
        int flag;
        return detail::brent_minimum([&](double t) { return error_along(t, use_penalty); }, a, b,
                                     tol, 500, flag, least);
    }

    /// Leaves cur_in, cur_hid and cur_delta as the pass over single patterns would.
    void show_last_pattern(bool train_hidden)
    {
        int p = patterns_.n;
        while (p > 0 && !(rep_[at(p - 1)] > 0.0)) --p;
        if (p == 0) return;
        net_.cur_in = row(net_.inputs[0], p);
        net_.cur_hid = forall(mul(net_.cur_in, net_.w1) + net_.b1, activation, net_.act_hid);
        double const y = net_.value(net_.cur_in);
        net_.cur_hid.T();
        if (!train_hidden) return;
        double const delta = (patterns_.target[at(p - 1)] - y) * d_activation(y, net_.act_out);
        net_.cur_delta = (delta * net_.w2) * forall(net_.cur_hid, d_activation, net_.act_hid);
        net_.cur_in.T();
        net_.cur_delta.T();
    }

private:
    void copy_indexes()
    {
        net_.tw1.cpyindex(net_.w1);
        net_.tw2.cpyindex(net_.w2);
    }

    // Outputs and the weights that gave them.
    struct pass
    {
        std::vector<double> w, y;
    };

    double find_errors(sparse const& w1, sparse const& b1, sparse const& w2, sparse const& b2,
                       double enough, pass& to)
    {
        to.y.resize(patterns_.target.size());
        to.w.clear();
        for (sparse const* s : {&w1, &b1, &w2, &b2})
            if (s->nnz > 0) to.w.insert(to.w.end(), s->values, s->values + s->nnz);
        return flat_errors(flat_, {w1.values, b1.values, w2.values, b2.values}, patterns_,
                           rep_.data(), enough, to.y.data());
    }

    bool belongs_to_net(pass const& known) const
    {
        double const* w = known.w.data();
        if (known.w.size() != at(parameters(net_))) return false;
        for (sparse const* s : {&net_.w1, &net_.b1, &net_.w2, &net_.b2}) {
            std::size_t const count = at(std::max(s->nnz, 0));
            if (count > 0 && std::memcmp(w, s->values, count * sizeof *w) != 0) return false;
            w += count;
        }
        return !known.w.empty();
    }

    std::vector<double> const& outputs()
    {
        if (!belongs_to_net(best_))
            find_errors(net_.w1, net_.b1, net_.w2, net_.b2, nan_value, best_);
        return best_.y;
    }

    static matrix column(std::vector<double> const& v)
    {
        matrix m(static_cast<int>(v.size()), 1);
        for (int p = 0; p < m.rows; ++p) m.cell[p][0] = v[at(p)];
        return m;
    }

    double error_of_trial(int use_penalty, double limit)
    {
        // Enough for a mean above the limit also behind the rounding, where that is no matter of
        // the smallest numbers. No sum reaches a NaN.
        double const enough = net_.rep_total > 0 && limit > 1e-290 && limit < infinity
                                  ? limit * net_.rep_total * (1.0 + 1e-12)
                                  : nan_value;
        double const total = find_errors(net_.tw1, net_.tb1, net_.tw2, net_.tb2, enough, last_);
        double error = total / net_.rep_total;
        if (total >= enough) return error;
        if (use_penalty) error += penalty(net_, net_.tw1, net_.tw2, net_.tb1).value();
        if (error <= least_) {
            least_ = error;
            std::swap(last_, best_);
        }
        return error;
    }

    neural_net& net_;
    detail::flat_net flat_;
    detail::flat_patterns patterns_;
    std::vector<double> rep_;
    pass last_, best_;
    double least_ = 0.0; // error of the best trial of a step
};

// Where the line search ended.
struct line_minimum
{
    double step, error;
};

line_minimum conjugate_search(neural_net& net, learning_set& set, int train_hidden, int use_penalty)
{
    double const n2 = sumsqr(net.gw1) + sumsqr(net.gb1) + sumsqr(net.gw2) + sumsqr(net.gb2);
    double const beta = net.grad_norm2 == 0.0 ? 0.0 : n2 / net.grad_norm2;
    net.grad_norm2 = n2;
    if (train_hidden) {
        net.dw1.addassign(beta, net.gw1);
        net.db1.addassign(beta, net.gb1);
    } else {
        net.dw1.zeros();
        net.db1.zeros();
    }
    net.dw2.addassign(beta, net.gw2);
    net.db2.addassign(beta, net.gb2);

    double s = net.tau, e = set.error_along(s, use_penalty);
    for (int k = 0; k < most_doublings; ++k) {
        s *= 2.0;
        double const before = e;
        e = set.error_along(s, use_penalty, before);
        if (!(e < before)) break;
    }
    double const a = s <= 2.0 * net.tau ? 0.0 : s * 0.25;
    line_minimum found;
    found.step = set.least_along(a, s, 1e-9, use_penalty, found.error);
    net.tau = found.step > 0.001 ? found.step : 0.001;
    return found;
}

void take_conjugate_step(neural_net& net, double step)
{
    net.w1.subassign(net.dw1, step);
    net.b1.subassign(net.db1, step);
    net.w2.subassign(net.dw2, step);
    net.b2.subassign(net.db2, step);
}

void prepare_damped_search(neural_net& net)
{
    int const P = parameters(net);
    net.grad_vec.resize(P, 1);
    net.step_vec.resize(P, 1);
    if (net.unit_mat.rows != P || net.unit_mat.cols != P) net.unit_mat = eye(P);
    net.weight2param(net.gw1, net.gb1, net.gw2, net.gb2, net.grad_vec);
    net.outer_mat = sqrT(net.grad_vec);
}

// step = m / l * ((unit - outer / c) * gradient), outer being symmetric: every sum runs with its
// index ascending, all of them side by side.
void make_damped_step(neural_net& net, double m, double l, double c)
{
    int const P = net.grad_vec.rows;
    std::vector<double> sum(at(P), 0.0);
    for (int k = 0; k < P; ++k) {
        double const *const unit = net.unit_mat.cell[k], *const outer = net.outer_mat.cell[k];
        double const g = net.grad_vec.cell[k][0];
        for (int i = 0; i < P; ++i) sum[at(i)] += (unit[i] - outer[i] / c) * g;
    }
    for (int i = 0; i < P; ++i) net.step_vec.cell[i][0] = m / l * sum[at(i)];
}

// Whether the search for a damping ended behind its best trial, whose step the gradients then hold,
// and the error of the last trial.
struct damped_result
{
    bool finished;
    double last_error;
};

// Errors above both m and `other` need not be known.
damped_result damped_search(neural_net& net, learning_set& set, double m, double other,
                            int use_penalty)
{
    prepare_damped_search(net);
    double const n2 = scsqr(net.grad_vec);
    double l = net.lambda, best = m, e = m;
    bool accepted = false, finished = false, growing = false;
    for (int k = 1; k <= most_trials && !finished; ++k) {
        make_damped_step(net, m, l, l + n2);
        net.param2weight(net.step_vec, net.sw1, net.sb1, net.sw2, net.sb2);
        e = set.error_of_step(use_penalty, std::max(best, other));
        if (k == 1) growing = !(best > e);
        if (best > e) {
            net.gw1 = net.sw1;
            net.gb1 = net.sb1;
            net.gw2 = net.sw2;
            net.gb2 = net.sb2;
            net.lambda = l;
            best = e;
            accepted = true;
        } else {
            // An improvement by the very last trial is given up.
            finished = accepted;
        }
        l = growing ? l * 10.0 : l / 10.0;
    }
    return {finished, e};
}

void take_damped_step(neural_net& net)
{
    net.w1.subassign(net.gw1);
    net.b1.subassign(net.gb1);
    net.w2.subassign(net.gw2);
    net.b2.subassign(net.gb2);
    net.dw1 = net.gw1;
    net.db1 = net.gb1;
    net.dw2 = net.gw2;
    net.db2 = net.gb2;
}

// What backprop does and returns.
int take_step(neural_net& net, learning_set& set, int use_cg, int use_gn, int train_hidden,
              int use_penalty)
{
    double m = set.make_gradient(train_hidden != 0);
    set.show_last_pattern(train_hidden != 0);
    for (sparse* g : {&net.gw1, &net.gb1, &net.gw2, &net.gb2}) *g *= -2.0;
    if (use_penalty) {
        penalty const p(net, net.w1, net.w2, net.b1);
        m += p.value();
        p.add_gradient(net.w1, net.gw1);
        p.add_gradient(net.b1, net.gb1);
        p.add_gradient(net.w2, net.gw2);
    }
    if (!use_cg && !use_gn) return 1;

    line_minimum line = {0.0, m};
    if (use_cg) line = conjugate_search(net, set, train_hidden, use_penalty);
    bool const line_gains = line.error < m;
    damped_result damped = {false, 0.0};
    if (use_gn) damped = damped_search(net, set, m, line.error, use_penalty);

    // The damped step is compared by its last trial, though the best one is taken. The errors are
    // known; the trial weights are left as if they had been found anew.
    if (use_cg) set.try_along(line.step);
    if (line_gains && damped.finished) set.try_step();
    if (line_gains && !(damped.finished && damped.last_error <= line.error)) {
        take_conjugate_step(net, line.step);
        return 0;
    }
    if (!use_gn) return 0;
    if (!damped.finished) {
        std::cout << "BACKPROP - STOP";
        return 1;
    }
    take_damped_step(net);
    return 0;
}

} // namespace

int neural_net::backprop(int use_cg, int use_gn, int train_hidden, int use_penalty)
{
    if (!detail::can_train(*this, "int backprop(int,int,int,int)")) return 1;
    learning_set set(*this);
    return take_step(*this, set, use_cg, use_gn, train_hidden, use_penalty);
}

double neural_net::error_tau(double t, int penalty)
{
    if (!detail::can_train(*this, "double error_tau(double,int)")) return __NAN<double>();
    return learning_set(*this).error_along(t, penalty);
}

double neural_net::error_mod(int penalty)
{
    if (!detail::can_train(*this, "double error_mod(int)")) return __NAN<double>();
    return learning_set(*this).error_of_step(penalty);
}

double neural_net::qmin_error_tau(double a, double b, double tol, int penalty)
{
    if (!detail::can_train(*this, "double qmin_error_tau(double,double,double,int)"))
        return __NAN<double>();
    double least;
    return learning_set(*this).least_along(a, b, tol, penalty, least);
}

namespace {

// Calls f(value, cell) for each pair of a stored value and its row of the column.
template <class F>
void pair_up(sparse& a, sparse& b, sparse& c, sparse& d, matrix& column, char const* routine, F f)
{
    sparse* const parts[] = {&a, &b, &c, &d};
    int const used = d.nnz == 1 ? 4 : 3;
    std::int64_t count = 0;
    for (int k = 0; k < used; ++k) count += std::max(parts[k]->nnz, 0);
    if (count > 0 && (column.cols < 1 || column.rows < count))
        return refuse_net(routine, "niezgodne wymiary macierzy");
    int i = 0;
    for (int k = 0; k < used; ++k)
        for (int n = 0; n < parts[k]->nnz; ++n) f(parts[k]->values[n], column.cell[i++][0]);
}

} // namespace

void neural_net::weight2param(sparse& a, sparse& b, sparse& c, sparse& d, matrix& column) const
{
    pair_up(a, b, c, d, column, "weight2param(sparse,sparse,sparse,sparse,matrix)",
            [](double& value, double& cell) { cell = value; });
}

void neural_net::param2weight(matrix& column, sparse& a, sparse& b, sparse& c, sparse& d) const
{
    pair_up(a, b, c, d, column, "param2weight(matrix,sparse,sparse,sparse,sparse)",
            [](double& value, double& cell) { value = cell; });
}

namespace {

// The best weights so far.
class best_weights
{
public:
    explicit best_weights(neural_net& net) : net_(net) { keep(); }
    void keep()
    {
        w1_ = net_.w1;
        b1_ = net_.b1;
        w2_ = net_.w2;
        b2_ = net_.b2;
    }
    void put_back() const
    {
        net_.w1 = w1_;
        net_.b1 = b1_;
        net_.w2 = w2_;
        net_.b2 = b2_;
    }

private:
    neural_net& net_;
    sparse w1_, b1_, w2_, b2_;
};

// The relative fall of the error from step to step, smoothed.
class smoothed_gain
{
public:
    explicit smoothed_gain(double error) : previous_(error) {}
    double after(double error)
    {
        gain_ = 0.75 * gain_ + 0.25 * (previous_ - error) / previous_;
        previous_ = error;
        return gain_;
    }

private:
    double previous_, gain_ = 0.0;
};

double quality(double c0, double c1)
{
    return c0 >= 0.0 && c1 >= 0.0 ? std::pow(c0 * c1, 0.5) : 0.0;
}

} // namespace

int neural_net::learn(int min_iter, int max_iter, int patience, double min_gain, int use_cg,
                      int use_gn, int train_hidden, int use_penalty)
{
    if (!detail::can_train(*this, "int learn(int,int,int,double,int,int,int,int)")) return 1;
    std::cout << "\nlearn\n";
    learning_set set(*this);
    best_weights kept(*this);
    double best = set.error();
    smoothed_gain gain(best);
    for (int i = 1, idle = 0; idle <= patience; ++i) {
        int const flag = take_step(*this, set, use_cg, use_gn, train_hidden, use_penalty);
        double const e = set.error(), g = gain.after(e);
        std::cout << i << " - " << e << " & " << g << std::endl;
        if (!flag && best > e) {
            kept.keep();
            best = e;
        }
        if (i >= max_iter) break;
        if (!flag && g >= min_gain)
            idle = 0;
        else if (flag || i > min_iter)
            ++idle;
    }
    kept.put_back();
    std::cout << best << "\n" << std::endl;
    return 1;
}

int neural_net::learn_and_valid(int min_iter, int max_iter, int patience, double min_gain,
                                int use_cg, int use_gn, int train_hidden)
{
    if (!detail::can_train(*this, "int learn_and_valid(int,int,int,double,int,int,int)")) return 1;
    std::cout << "\nlearn and valid\n";
    learning_set set(*this);
    best_weights kept(*this);
    double noted0 = set.corr(), noted1 = corr(1);
    double best = quality(noted0, noted1);
    smoothed_gain gain(set.error());
    bool found = noted0 > 0.0 && noted1 > 0.0;
    for (int i = 1, idle = 0; idle <= patience; ++i) {
        int const flag = take_step(*this, set, use_cg, use_gn, train_hidden, 0);
        double const c0 = set.corr(), c1 = corr(1), g = gain.after(set.error());
        double const q = quality(c0, c1), drop = best - q;
        std::cout << i << " - " << c0 << " $ " << c1 << " & " << g << " && " << drop << std::endl;
        if (i >= max_iter) break;
        bool const sound = !flag && c0 > 0.0 && c1 > 0.0;
        if (sound && q >= best) {
            kept.keep();
            best = q;
            noted0 = c0;
            noted1 = c1;
            found = true;
        }
        if (sound && drop <= 0.01 && g >= min_gain)
            idle = 0;
        else if (flag || i > min_iter)
            ++idle;
    }
    kept.put_back();
    std::cout << noted0 << " $ " << noted1 << "\n";
    if (!found) std::cout << "not found";
    std::cout << std::flush;
    return 1;
}

int neural_net::fit(int rounds, int use_cg, int use_gn, int train_hidden)
{
    constexpr int most_steps = 12;
    double const fraction = 1.5;
    if (!detail::can_train(*this, "int fit(int,int,int,int)")) return 1;
    std::cout << "\nfit\n";
    learning_set set(*this);
    best_weights kept(*this);
    double best = error_rep(fraction);
    for (int i = 1; i <= rounds; ++i) {
        int flag = 0;
        double e = best;
        for (int step = 1; step <= most_steps; ++step) {
            flag = take_step(*this, set, use_cg, use_gn, train_hidden, 0);
            e = error_rep(fraction);
            if (flag || !(e > best)) break;
        }
        std::cout << i << " - " << best << " & " << std::endl;
        if (!flag && best >= e) {
            kept.keep();
            best = e;
        } else {
            kept.put_back();
            random_rep(fraction);
            set.weigh_patterns();
        }
    }
    kept.put_back();
    return 1;
}

namespace {

// n * fraction, truncated; -1 behind a refusal.
int sample_size(int n, double fraction, char const* routine)
{
    double const size = n * fraction;
    if (size >= 0.0 && size < 2147483648.0) return static_cast<int>(size);
    refuse_net(routine, "niewlasciwa wielkosc proby");
    return -1;
}

int random_pattern(int n)
{
    return static_cast<int>(detail::random_step(detail::network_state) % static_cast<unsigned>(n));
}

} // namespace

void neural_net::random_rep(double fraction)
{
    int const n = n_patterns[0], size = sample_size(n, fraction, "random_rep(double)");
    if (size < 0) return;
    rep = zeros(n, 1);
    rep_total = size;
    for (int k = 0; k < size; ++k) rep.cell[random_pattern(n)][0] += 1.0;
}

void neural_net::normal_rep()
{
    rep = ones(n_patterns[0], 1);
    rep_total = n_patterns[0];
}

double neural_net::error_rep(double fraction) const
{
    constexpr int samples = 1000;
    int const n = n_patterns[0], size = sample_size(n, fraction, "double error_rep(double)");
    if (size < 0) return __NAN<double>();
    matrix const y = values(0);
    std::vector<double> squared(at(y.rows));
    for (int p = 0; p < y.rows; ++p) {
        double const e = outputs[0].get(p + 1, 1) - y.cell[p][0];
        squared[at(p)] = e * e;
    }
    matrix means(samples, 1);
    for (int i = 0; i < samples; ++i) {
        double total = 0.0;
        for (int k = 0; k < size; ++k) total += squared[at(random_pattern(n))];
        means.cell[i][0] = total / size;
    }
    return mean3n(means);
}

double mean3n(matrix& m)
{
    sort(m, Ascending);
    bool const column = m.cols <= m.rows;
    int const n = column ? m.rows : m.cols;
    double total = 0.0;
    for (int i = 0; i < n; ++i) total += (column ? m.cell[i][0] : m.cell[0][i]) * i / (n - 1);
    return 2.0 / n * total;
}

} // namespace varnow
