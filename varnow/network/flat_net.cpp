#include <varnow/network/flat_net.h>

#include <varnow/network/activation_kernels.h>
#include <varnow/sparse/threshold.h>

#include <algorithm>
#include <cmath>

namespace varnow::detail {

namespace {

std::size_t at(int k)
{
    return static_cast<std::size_t>(k);
}

// The places in the list of a row or column of weights, by position; `unit` takes the positions.
std::vector<int> entries_of(sparse const& s, int const* position, int count, std::vector<int>& unit)
{
    std::vector<int> entry(at(count), -1);
    for (int k = 0; k < s.nnz; ++k) {
        entry[at(position[k] - 1)] = k;
        unit.push_back(position[k] - 1);
    }
    return entry;
}

double kept(double v)
{
    return is_kept(v) ? v : 0.0;
}

} // namespace

flat_patterns::flat_patterns(neural_net const& net, int set)
    : n(net.n_patterns[set]), width(net.n_in)
{
    x.resize(at((n + lanes - 1) / lanes) * at(width) * lanes);
    target.resize(at(n));
    sparse const &in = net.inputs[set], &out = net.outputs[set];
    for (int k = 0; k < in.nnz; ++k) {
        int const p = in.rowidx[k] - 1, i = in.colidx[k] - 1;
        if (p < n) x[(at(p / lanes) * at(width) + at(i)) * lanes + at(p % lanes)] = in.values[k];
    }
    for (int k = 0; k < out.nnz; ++k)
        if (out.rowidx[k] <= n) target[at(out.rowidx[k] - 1)] = out.values[k];
}

flat_net::flat_net(neural_net const& net)
    : n_in(net.n_in),
      n_hid(net.n_hid),
      act_hid(net.act_hid),
      act_out(net.act_out),
      first(at(n_hid) + 1),
      row(at(n_in) + 1),
      b2_entry(net.b2.nnz > 0 ? 0 : -1)
{
    sparse const& w1 = net.w1;
    int const count = std::max(w1.nnz, 0);
    for (int k = 0; k < count; ++k) {
        ++first[at(w1.colidx[k])];
        ++row[at(w1.rowidx[k])];
        unit.push_back(w1.colidx[k] - 1);
    }
    for (int j = 0; j < n_hid; ++j) first[at(j) + 1] += first[at(j)];
    for (int i = 0; i < n_in; ++i) row[at(i) + 1] += row[at(i)];
    input.resize(at(count));
    entry.resize(at(count));
    std::vector<int> next = first;
    for (int k = 0; k < count; ++k) {
        int const place = next[at(unit[at(k)])]++;
        input[at(place)] = w1.rowidx[k] - 1;
        entry[at(place)] = k;
    }
    b1_entry = entries_of(net.b1, net.b1.colidx, n_hid, b1_unit);
    w2_entry = entries_of(net.w2, net.w2.rowidx, n_hid, w2_unit);
}

namespace {

// One block of patterns on its way through the net.
struct block
{
    explicit block(flat_net const& f) : z(at(f.n_hid) * lanes), h(z.size()), d(z.size()) {}

    std::vector<double> z; // sums of the hidden units, 0 where nothing is stored
    std::vector<double> h; // activations, 0 likewise
    std::vector<double> d; // deltas, 0 likewise
    double y[lanes];
};

// s += x * w where x is stored, which matters only where w is not finite.
inline void add_product(double const* x, double w, double* s)
{
    if (std::isfinite(w)) {
#pragma omp simd
        for (int l = 0; l < lanes; ++l) s[l] += x[l] * w;
    } else {
        for (int l = 0; l < lanes; ++l)
            if (x[l] != 0.0) s[l] += x[l] * w;
    }
}

// As a matrix of sums drops small values, so does the matrix with the biases added.
inline void finish_sums(double* s, double const* bias)
{
#pragma omp simd
    for (int l = 0; l < lanes; ++l) s[l] = kept(s[l]);
    if (!bias) return;
    double const b = *bias;
#pragma omp simd
    for (int l = 0; l < lanes; ++l) s[l] = kept(s[l] + b);
}

VARNOW_CLONES void hidden_sums(flat_net const& f, flat_weights w, double const* x, double* z)
{
    for (int j = 0; j < f.n_hid; ++j, z += lanes) {
        std::fill(z, z + lanes, 0.0);
        for (int c = f.first[at(j)]; c < f.first[at(j) + 1]; ++c)
            add_product(x + at(f.input[at(c)]) * lanes, w.w1[f.entry[at(c)]], z);
        int const bias = f.b1_entry[at(j)];
        finish_sums(z, bias < 0 ? nullptr : w.b1 + bias);
    }
}

VARNOW_CLONES void output_sums(flat_net const& f, flat_weights w, double const* h, double* z)
{
    std::fill(z, z + lanes, 0.0);
    for (std::size_t k = 0; k < f.w2_unit.size(); ++k)
        add_product(h + at(f.w2_unit[k]) * lanes, w.w2[k], z);
    finish_sums(z, f.b2_entry < 0 ? nullptr : w.b2);
}

void forward(flat_net const& f, flat_weights w, double const* x, block& b)
{
    hidden_sums(f, w, x, b.z.data());
    activate_stored(b.z.data(), static_cast<int>(b.z.size()), f.act_hid, b.h.data());
    double z[lanes];
    output_sums(f, w, b.h.data(), z);
    activate_stored(z, lanes, f.act_out, b.y);
}

inline double slope(double y, int code)
{
    return code == 1 ? y * (1.0 - y) : code == 2 ? 1.0 - y * y : 1.0;
}

// The deltas of the hidden units; a product that is not stored leaves 0.
VARNOW_CLONES void hidden_deltas(flat_net const& f, flat_weights w, double const* delta,
                                 double const* z, double const* h, double* d)
{
    for (std::size_t k = 0; k < f.w2_unit.size(); ++k) {
        std::size_t const from = at(f.w2_unit[k]) * lanes;
        double const v = w.w2[k];
        int const code = f.act_hid;
#pragma omp simd
        for (int l = 0; l < lanes; ++l) {
            double const product = delta[l] * v * slope(h[from + at(l)], code);
            d[from + at(l)] = z[from + at(l)] == 0.0 ? 0.0 : kept(product);
        }
    }
}

} // namespace

void flat_outputs(flat_net const& f, flat_weights w, flat_patterns const& p, double* y)
{
    block b(f);
    for (int from = 0; from < p.n; from += lanes) {
        forward(f, w, p.x.data() + at(from) * at(p.width), b);
        std::copy_n(b.y, std::min(lanes, p.n - from), y + from);
    }
}

namespace {

// Values of one pattern, unit by unit.
VARNOW_CLONES void gather(double const* of_lane, int units, double* to)
{
    for (int j = 0; j < units; ++j) to[j] = of_lane[at(j) * lanes];
}

VARNOW_CLONES void add_input_gradient(flat_net const& f, double const* x, double const* d, double r,
                                      double* g)
{
    for (int i = 0; i < f.n_in; ++i) {
        double const xi = x[at(i) * lanes];
        if (xi == 0.0) continue;
        int const begin = f.row[at(i)], end = f.row[at(i) + 1];
        if (begin == end) continue;
        int const start = f.unit[at(begin)];
        if (f.unit[at(end) - 1] - start == end - 1 - begin) {
            double const* const dense = d + start - begin;
#pragma omp simd
            for (int k = begin; k < end; ++k) g[k] += r * kept(xi * dense[k]);
        } else {
            for (int k = begin; k < end; ++k) g[k] += r * kept(xi * d[f.unit[at(k)]]);
        }
    }
}

} // namespace

double add_flat_gradient(flat_net const& f, flat_weights w, flat_patterns const& p,
                         double const* rep, bool train_hidden, flat_gradient g)
{
    block b(f);
    std::vector<double> of_unit(at(f.n_hid));
    double total = 0.0, delta[lanes];
    for (int from = 0; from < p.n; from += lanes) {
        double const* const x = p.x.data() + at(from) * at(p.width);
        int const count = std::min(lanes, p.n - from);
        forward(f, w, x, b);
        for (int l = 0; l < lanes; ++l) {
            double const e = l < count ? p.target[at(from + l)] - b.y[l] : 0.0;
            if (l < count && rep[from + l] > 0.0) total += e * e * rep[from + l];
            delta[l] = e * slope(b.y[l], f.act_out);
        }
        if (train_hidden) hidden_deltas(f, w, delta, b.z.data(), b.h.data(), b.d.data());
        for (int l = 0; l < count; ++l) {
            double const r = rep[from + l];
            if (!(r > 0.0)) continue;
            double const rd = r * delta[l];
            for (std::size_t k = 0; k < f.w2_unit.size(); ++k) {
                std::size_t const u = at(f.w2_unit[k]) * lanes + at(l);
                if (b.z[u] != 0.0) g.w2[k] += rd * b.h[u];
            }
            if (f.b2_entry >= 0) *g.b2 += rd;
            if (!train_hidden) continue;
            gather(b.d.data() + l, f.n_hid, of_unit.data());
            add_input_gradient(f, x + l, of_unit.data(), r, g.w1);
            for (std::size_t k = 0; k < f.b1_unit.size(); ++k)
                g.b1[k] += r * of_unit[at(f.b1_unit[k])];
        }
    }
    return total;
}

} // namespace varnow::detail
