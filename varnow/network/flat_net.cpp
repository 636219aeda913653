#include <varnow/network/flat_net.h>

#include <varnow/network/activation_kernels.h>
#include <varnow/network/machine.h>
#include <varnow/sparse/threshold.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

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

INLINE bool all_finite(double const* w, std::size_t count)
{
    double total = 0.0; // of a number that is not finite NaN
#pragma omp simd reduction(+ : total)
    for (std::size_t k = 0; k < count; ++k) total += w[k] * 0.0;
    return total == 0.0;
}

INLINE double kept(double v)
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
    double* of_pattern = nullptr;
    finite = all_finite(in.values, at(std::max(in.nnz, 0)));
    for (int k = 0, last = 0; k < in.nnz; ++k) {
        int const p = in.rowidx[k] - 1;
        if (p >= n) continue;
        if (p + 1 != last) {
            of_pattern = &x[at(p / lanes) * at(width) * lanes + at(p % lanes)];
            last = p + 1;
        }
        of_pattern[at(in.colidx[k] - 1) * lanes] = in.values[k];
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
    block(flat_net const& f, flat_weights w)
        : finite(all_finite(w.w1, f.entry.size()) && all_finite(w.w2, f.w2_unit.size())),
          w1(f.entry.size()),
          z(at(f.n_hid) * lanes),
          h(z.size()),
          d(z.size())
    {
        for (std::size_t c = 0; c < w1.size(); ++c) w1[c] = w.w1[f.entry[c]];
    }

    bool finite;            // all weights of connections
    std::vector<double> w1; // by unit and input
    std::vector<double> z;  // sums of the hidden units, 0 where nothing is stored
    std::vector<double> h;  // activations, 0 likewise
    std::vector<double> d;  // deltas, 0 likewise
    double y[lanes];
};

// One term w x[0], ..., w x[lanes - 1] of sums; where `stored` is 0, x is not stored.
struct term
{
    double const *x, *stored;
    double w;
};

using cells = double __attribute__((vector_size(64)));
using cell_bits = std::int64_t __attribute__((vector_size(64)));

INLINE void drop_small(cells& v)
{
    auto const no_sign = std::numeric_limits<std::int64_t>::max();
    v = (cells)((cell_bits)v & no_sign) <= threshold ? cells{} : v;
}

// The sums of terms, beside each other, with a bias where there is one: as a matrix of sums drops
// small values, so does the matrix with the biases added. An x that is not stored is 0, which
// matters only where a weight is not finite: there it makes no term.
template <class Terms>
INLINE void add_terms(int count, bool finite, Terms const& terms, double const* bias, double* s)
{
    constexpr int width = sizeof(cells) / sizeof(double), parts = lanes / width;
    if (finite) {
        cells sum[parts] = {};
        for (int c = 0; c < count; ++c) {
            term const t = terms(c);
            for (int k = 0; k < parts; ++k) {
                cells x;
                std::memcpy(&x, t.x + k * width, sizeof x);
                sum[k] += x * t.w;
            }
        }
        for (int k = 0; k < parts; ++k) {
            drop_small(sum[k]);
            if (bias) {
                sum[k] += *bias;
                drop_small(sum[k]);
            }
            std::memcpy(s + k * width, &sum[k], sizeof(cells));
        }
    } else {
        std::fill(s, s + lanes, 0.0);
        for (int c = 0; c < count; ++c)
            for (int l = 0; l < lanes; ++l)
                if (terms(c).stored[l] != 0.0) s[l] += terms(c).x[l] * terms(c).w;
        for (int l = 0; l < lanes; ++l) {
            s[l] = kept(s[l]);
            if (bias) s[l] = kept(s[l] + *bias);
        }
    }
}

INLINE void hidden_sums(flat_net const& f, flat_weights w, double const* x, block& b)
{
    int const* const input = f.input.data();
    double const* const w1 = b.w1.data();
    double* z = b.z.data();
    for (int j = 0; j < f.n_hid; ++j, z += lanes) {
        int const from = f.first[at(j)], bias = f.b1_entry[at(j)];
        auto const terms = [&](int c) -> term {
            double const* const of_input = x + at(input[from + c]) * lanes;
            return {of_input, of_input, w1[from + c]};
        };
        add_terms(f.first[at(j) + 1] - from, b.finite, terms, bias < 0 ? nullptr : w.b1 + bias, z);
    }
}

INLINE void output_sums(flat_net const& f, flat_weights w, block const& b, double* z)
{
    int const* const unit = f.w2_unit.data();
    auto const terms = [&](int c) -> term {
        std::size_t const from = at(unit[c]) * lanes;
        return {&b.h[from], &b.z[from], w.w2[c]};
    };
    add_terms(static_cast<int>(f.w2_unit.size()), b.finite, terms, f.b2_entry < 0 ? nullptr : w.b2,
              z);
}

INLINE void forward(flat_net const& f, flat_weights w, double const* x, block& b)
{
    hidden_sums(f, w, x, b);
    activate_stored(b.z.data(), static_cast<int>(b.z.size()), f.act_hid, b.h.data());
    double z[lanes];
    output_sums(f, w, b, z);
    activate_stored(z, lanes, f.act_out, b.y);
}

INLINE double slope(double y, int code)
{
    return code == 1 ? y * (1.0 - y) : code == 2 ? 1.0 - y * y : 1.0;
}

// The deltas of the hidden units; a product that is not stored leaves 0.
INLINE void hidden_deltas(flat_net const& f, flat_weights w, double const* delta, double const* z,
                          double const* h, double* d)
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

INLINE void find_outputs(flat_net const& f, flat_weights w, flat_patterns const& p, double* y)
{
    block b(f, w);
    for (int from = 0; from < p.n; from += lanes) {
        forward(f, w, p.x.data() + at(from) * at(p.width), b);
        std::copy_n(b.y, std::min(lanes, p.n - from), y + from);
    }
}

INLINE double find_errors(flat_net const& f, flat_weights w, flat_patterns const& p,
                          double const* rep, double enough, double* y)
{
    block b(f, w);
    double const* const target = p.target.data();
    double total = 0.0;
    for (int from = 0; from < p.n && !(total >= enough); from += lanes) {
        forward(f, w, p.x.data() + at(from) * at(p.width), b);
        int const count = std::min(lanes, p.n - from);
        std::copy_n(b.y, count, y + from);
        double sum = total;
        for (int l = 0; l < count; ++l) {
            double const e = target[from + l] - b.y[l];
            if (rep[from + l] > 0.0) sum += rep[from + l] * (e * e);
        }
        total = sum;
    }
    return total;
}

// Room behind the last unit, so that a vector may begin at any of them.
constexpr std::size_t room = sizeof(cells) / sizeof(double);

INLINE void by_pattern(std::vector<double> const& by_unit, std::vector<double>& to)
{
    std::size_t const units = by_unit.size() / lanes;
    for (std::size_t j = 0; j < units; ++j)
        for (std::size_t l = 0; l < lanes; ++l) to[l * units + j] = by_unit[j * lanes + l];
}

bool follow_each_other(int const* unit, int count)
{
    return count > 0 && unit[count - 1] - unit[0] == count - 1;
}

// g[k] += the terms of entry k, in the order of the patterns, for entries of units that follow each
// other: term(l, v) makes them from the values v of the units for pattern l.
template <class Used, class Term>
INLINE void add_together(int count, double const* v, int units, int patterns, double* g,
                         Used const& used, Term const& term)
{
    for (int k = 0; k < count; k += static_cast<int>(room)) {
        std::size_t const left = at(count - k);
        cells sum = {};
        left < room ? std::memcpy(&sum, g + k, left * sizeof *g)
                    : std::memcpy(&sum, g + k, sizeof sum);
        for (int l = 0; l < patterns; ++l) {
            if (!used(l)) continue;
            cells c;
            std::memcpy(&c, v + at(l) * at(units) + k, sizeof c);
            term(l, c);
            sum += c;
        }
        left < room ? std::memcpy(g + k, &sum, left * sizeof *g)
                    : std::memcpy(g + k, &sum, sizeof sum);
    }
}

// The patterns of a block in the gradient, beside each other or pattern by pattern.
struct slopes
{
    slopes(flat_net const& f, flat_weights w) : b(f, w), h(b.h.size() + room), d(b.d.size() + room)
    {
    }

    block b;
    std::vector<double> h, d; // by pattern
    double r[lanes];          // weights of the patterns
    double rd[lanes];         // times their deltas
    int count;
    bool plain; // every pattern counts, weights and deltas being finite
};

constexpr auto every = [](int) { return true; };

INLINE void add_output_gradient(flat_net const& f, slopes const& s, flat_gradient g)
{
    auto const used = [&](int l) { return s.r[l] > 0.0; };
    int const* const unit = f.w2_unit.data();
    int const entries = static_cast<int>(f.w2_unit.size());
    if (follow_each_other(unit, entries) && all_finite(s.rd, at(s.count))) {
        add_together(entries, s.h.data() + unit[0], f.n_hid, s.count, g.w2, used,
                     [&](int l, cells& c) { c *= s.rd[l]; });
    } else {
        for (int k = 0; k < entries; ++k)
            for (int l = 0; l < s.count; ++l) {
                std::size_t const u = at(unit[k]) * lanes + at(l);
                if (used(l) && s.b.z[u] != 0.0) g.w2[k] += s.rd[l] * s.b.h[u];
            }
    }
    if (f.b2_entry < 0) return;
    double sum = *g.b2;
    for (int l = 0; l < s.count; ++l)
        if (used(l)) sum += s.rd[l];
    *g.b2 = sum;
}

INLINE void add_hidden_gradient(flat_net const& f, slopes const& s, double const* x, bool finite,
                                flat_gradient g)
{
    for (int i = 0; i < f.n_in; ++i, x += lanes) {
        auto const used = [&](int l) { return s.r[l] > 0.0 && x[l] != 0.0; };
        int const from = f.row[at(i)], to = f.row[at(i) + 1], *const unit = f.unit.data();
        if (finite && follow_each_other(unit + from, to - from)) {
            double const* const d = s.d.data() + unit[from];
            auto const term = [&](int l, cells& c) {
                c *= x[l];
                drop_small(c);
                c *= s.r[l];
            };
            // Where all is plain, an x of 0 adds 0.
            if (s.plain)
                add_together(to - from, d, f.n_hid, s.count, g.w1 + from, every, term);
            else
                add_together(to - from, d, f.n_hid, s.count, g.w1 + from, used, term);
            continue;
        }
        for (int k = from; k < to; ++k)
            for (int l = 0; l < s.count; ++l) {
                double const v = s.b.d[at(unit[k]) * lanes + at(l)];
                if (used(l) && v != 0.0) g.w1[k] += s.r[l] * kept(x[l] * v);
            }
    }
    auto const used = [&](int l) { return s.r[l] > 0.0; };
    int const *const unit = f.b1_unit.data(), entries = static_cast<int>(f.b1_unit.size());
    if (follow_each_other(unit, entries)) {
        add_together(entries, s.d.data() + unit[0], f.n_hid, s.count, g.b1, used,
                     [&](int l, cells& c) { c *= s.r[l]; });
        return;
    }
    for (int k = 0; k < entries; ++k)
        for (int l = 0; l < s.count; ++l)
            if (used(l)) g.b1[k] += s.r[l] * s.b.d[at(unit[k]) * lanes + at(l)];
}

INLINE double add_gradient(flat_net const& f, flat_weights w, flat_patterns const& p,
                           double const* rep, bool train_hidden, flat_gradient g)
{
    slopes s(f, w);
    double const* const target = p.target.data();
    double total = 0.0, delta[lanes];
    for (int from = 0; from < p.n; from += lanes) {
        double const* const x = p.x.data() + at(from) * at(p.width);
        s.count = std::min(lanes, p.n - from);
        forward(f, w, x, s.b);
        double e[lanes] = {};
        for (int l = 0; l < s.count; ++l) e[l] = target[from + l] - s.b.y[l];
        std::fill(std::copy_n(rep + from, s.count, s.r), s.r + lanes, 0.0);
        for (int l = 0; l < lanes; ++l) {
            delta[l] = e[l] * slope(s.b.y[l], f.act_out);
            s.rd[l] = s.r[l] * delta[l];
        }
        double sum = total;
        for (int l = 0; l < s.count; ++l)
            if (s.r[l] > 0.0) sum += e[l] * e[l] * s.r[l];
        total = sum;
        by_pattern(s.b.h, s.h);
        add_output_gradient(f, s, g);
        if (!train_hidden) continue;
        hidden_deltas(f, w, delta, s.b.z.data(), s.b.h.data(), s.b.d.data());
        by_pattern(s.b.d, s.d);
        s.plain = std::all_of(s.r, s.r + s.count, [](double r) { return r > 0.0; }) &&
                  all_finite(s.r, lanes) && all_finite(s.b.d.data(), s.b.d.size());
        add_hidden_gradient(f, s, x, p.finite, g);
    }
    return total;
}

// clang-format off
#define PASSES(name, attribute)                                                                        \
    attribute void outputs_##name(flat_net const& f, flat_weights w, flat_patterns const& p, double* y) \
    { find_outputs(f, w, p, y); }                                                                      \
    attribute double errors_##name(flat_net const& f, flat_weights w, flat_patterns const& p,          \
                                   double const* rep, double enough, double* y)                        \
    { return find_errors(f, w, p, rep, enough, y); }                                                   \
    attribute double gradient_##name(flat_net const& f, flat_weights w, flat_patterns const& p,        \
                                     double const* rep, bool train_hidden, flat_gradient g)            \
    { return add_gradient(f, w, p, rep, train_hidden, g); }
PASSES(any, )
#if defined(VARNOW_MACHINES)
PASSES(narrow, NARROW)
PASSES(wide, WIDE)
#endif
#undef PASSES
// clang-format on

struct passes
{
    decltype(&outputs_any) outputs;
    decltype(&errors_any) errors;
    decltype(&gradient_any) gradient;
};

passes const& best_passes()
{
#if defined(VARNOW_MACHINES)
    static passes const all[] = {{outputs_any, errors_any, gradient_any},
                                 {outputs_narrow, errors_narrow, gradient_narrow},
                                 {outputs_wide, errors_wide, gradient_wide}};
    return all[machine_at_hand()];
#else
    static passes const only = {outputs_any, errors_any, gradient_any};
    return only;
#endif
}

} // namespace

void flat_outputs(flat_net const& f, flat_weights w, flat_patterns const& p, double* y)
{
    best_passes().outputs(f, w, p, y);
}

double flat_errors(flat_net const& f, flat_weights w, flat_patterns const& p, double const* rep,
                   double enough, double* y)
{
    return best_passes().errors(f, w, p, rep, enough, y);
}

double add_flat_gradient(flat_net const& f, flat_weights w, flat_patterns const& p,
                         double const* rep, bool train_hidden, flat_gradient g)
{
    return best_passes().gradient(f, w, p, rep, train_hidden, g);
}

} // namespace varnow::detail
