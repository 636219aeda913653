#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <cstring>

// A function compiled for a target that has fused operations gets them unless told otherwise.
#if defined(__clang__)
#pragma clang fp contract(off)
#elif defined(__GNUC__)
#pragma GCC optimize("fp-contract=off")
#endif

#define VARNOW_INLINE inline __attribute__((always_inline))
// Unrolled late, a tile would go through memory on its way into registers.
#define VARNOW_UNROLL _Pragma("GCC unroll 8")

namespace varnow::detail {

namespace {

using std::ptrdiff_t;

typedef double v2 __attribute__((vector_size(16)));
typedef double v4 __attribute__((vector_size(32)));
typedef double v8 __attribute__((vector_size(64)));

// A vector among cells, at any address.
template <class V> struct __attribute__((packed, may_alias)) lanes
{
    V v;
};
template <class V> VARNOW_INLINE lanes<V> const* at(double const* p)
{
    return reinterpret_cast<lanes<V> const*>(p);
}
template <class V> VARNOW_INLINE lanes<V>* at(double* p)
{
    return reinterpret_cast<lanes<V>*>(p);
}

// Puts a number into all cells of a vector, as if it were a whole one: some machines do that within
// the load, but spend a step of their multipliers on others.
template <class V> VARNOW_INLINE void fill_lanes(V& x, double const* p)
{
    typedef long long whole __attribute__((vector_size(sizeof(V))));
    long long bits;
    std::memcpy(&bits, p, sizeof bits);
    x = reinterpret_cast<V>(whole{} + bits);
}

constexpr int most_rows = 8;  // of a tile, on any machine
constexpr int most_vec = 8;   // cells of a vector, on any machine
constexpr int tile_vecs = 3;  // across a tile
constexpr int panel_vecs = 4; // across a panel

// c[r][v] += a[k * a_step + r] * b[k * b_step + v] over a tile held in registers.
// clang-format off
template <class V, int Rows, int Vecs>
VARNOW_INLINE void tile(int depth, double const* a, ptrdiff_t a_step, double const* b,
                        ptrdiff_t b_step, double* const* c, ptrdiff_t first)
{
    constexpr int width = sizeof(V) / sizeof(double);
    V s[Rows][Vecs];
    VARNOW_UNROLL for (int r = 0; r < Rows; ++r)
        VARNOW_UNROLL for (int v = 0; v < Vecs; ++v)
            s[r][v] = at<V>(c[r] + first + v * width)->v;
    for (int k = 0; k < depth; ++k, a += a_step, b += b_step) {
        V y[Vecs];
        VARNOW_UNROLL for (int v = 0; v < Vecs; ++v)
            y[v] = at<V>(b + v * width)->v;
        VARNOW_UNROLL for (int r = 0; r < Rows; ++r)
        {
            V x;
            fill_lanes(x, a + r);
            VARNOW_UNROLL for (int v = 0; v < Vecs; ++v)
                s[r][v] += x * y[v];
        }
    }
    VARNOW_UNROLL for (int r = 0; r < Rows; ++r)
        VARNOW_UNROLL for (int v = 0; v < Vecs; ++v)
            at<V>(c[r] + first + v * width)->v = s[r][v];
}
// clang-format on

template <class V, int Rows>
VARNOW_INLINE void some_vecs(int vecs, int depth, double const* a, ptrdiff_t a_step,
                             double const* b, ptrdiff_t b_step, double* const* c, ptrdiff_t first)
{
    switch (vecs) {
    case 1:
        return tile<V, Rows, 1>(depth, a, a_step, b, b_step, c, first);
    case 2:
        return tile<V, Rows, 2>(depth, a, a_step, b, b_step, c, first);
    default:
        return tile<V, Rows, 3>(depth, a, a_step, b, b_step, c, first);
    }
}

template <class V>
VARNOW_INLINE void panel_tile(int depth, double const* row, double const* panel, ptrdiff_t step,
                              double* s)
{
    tile<V, 1, panel_vecs>(depth, row, 1, panel, step, &s, 0);
}

VARNOW_INLINE void multiple(int n, double x, double const* __restrict from, double* __restrict to)
{
    for (int j = 0; j < n; ++j) to[j] += x * from[j];
}

// clang-format off
template <class V>
VARNOW_INLINE void projection(int n, double const* x, double const* d, double const* y,
                              double* panel, double* next_d)
{
    constexpr int width = sizeof(V) / sizeof(double);
    V off[panel_vecs], sum[panel_vecs];
    VARNOW_UNROLL for (int v = 0; v < panel_vecs; ++v) {
        off[v] = at<V>(d + v * width)->v;
        sum[v] = at<V>(next_d + v * width)->v;
    }
    for (int i = 0; i < n; ++i, panel += panel_vecs * width)
        VARNOW_UNROLL for (int v = 0; v < panel_vecs; ++v) {
            V const left = at<V>(panel + v * width)->v - x[i] * off[v];
            at<V>(panel + v * width)->v = left;
            sum[v] += y[i] * left;
        }
    VARNOW_UNROLL for (int v = 0; v < panel_vecs; ++v)
        at<V>(next_d + v * width)->v = sum[v];
}
// clang-format on

// The loops above as compiled for one kind of machine; `vec` is the length of its vectors.
struct machine
{
    int vec;
    int rows;
    void (*tile)(int, int, double const*, ptrdiff_t, double const*, ptrdiff_t, double* const*,
                 ptrdiff_t);
    void (*panel)(int, double const*, double const*, ptrdiff_t, double*);
    void (*multiple)(int, double, double const*, double*);
    void (*projection)(int, double const*, double const*, double const*, double*, double*);

    int cols() const { return tile_vecs * vec; }
};

// clang-format off
#define VARNOW_MACHINE(name, V, ROWS, TARGET)                                                          \
    TARGET void name##_tile(int vecs, int depth, double const* a, ptrdiff_t a_step, double const* b,   \
                            ptrdiff_t b_step, double* const* c, ptrdiff_t first)                       \
    { some_vecs<V, ROWS>(vecs, depth, a, a_step, b, b_step, c, first); }                               \
    TARGET void name##_panel(int depth, double const* row, double const* panel, ptrdiff_t step,        \
                             double* s)                                                                \
    { panel_tile<V>(depth, row, panel, step, s); }                                                     \
    TARGET void name##_multiple(int n, double x, double const* from, double* to)                       \
    { multiple(n, x, from, to); }                                                                      \
    TARGET void name##_projection(int n, double const* x, double const* d, double const* y,            \
                                  double* panel, double* next_d)                                       \
    { projection<V>(n, x, d, y, panel, next_d); }                                                      \
    constexpr machine name{sizeof(V) / sizeof(double), ROWS, name##_tile, name##_panel,                \
                           name##_multiple, name##_projection};
// clang-format on
VARNOW_MACHINE(baseline, v2, 3, )
#if defined(__x86_64__)
VARNOW_MACHINE(avx2, v4, 4, __attribute__((target("avx2"))))
VARNOW_MACHINE(avx512, v8, 8, __attribute__((target("avx512f"))))
#endif
#undef VARNOW_MACHINE

// Cross-products read the rows of a tile out of a panel packed for its columns.
constexpr bool rows_divide_cols(machine const& m)
{
    return tile_vecs * m.vec % m.rows == 0 && m.rows <= most_rows && m.vec <= most_vec;
}
static_assert(rows_divide_cols(baseline), "rows of a tile straddle panels");
#if defined(__x86_64__)
static_assert(rows_divide_cols(avx2) && rows_divide_cols(avx512), "rows of a tile straddle panels");
#endif

machine const* best_machine(int most_vec_cells)
{
#if defined(__x86_64__)
    if (most_vec_cells >= avx512.vec && __builtin_cpu_supports("avx512f")) return &avx512;
    if (most_vec_cells >= avx2.vec && __builtin_cpu_supports("avx2")) return &avx2;
#endif
    static_cast<void>(most_vec_cells);
    return &baseline;
}

machine const*& chosen_machine()
{
    static machine const* chosen = best_machine(most_vec);
    return chosen;
}

machine const& this_machine()
{
    return *chosen_machine();
}

// A slice of the operand, lanes first to first + count over k from `from` on, packed to out[k *
// width + lane] with lanes beyond count 0. Lanes lie along the rows, or across them.
template <class F>
void pack_along(double const* const* row, int first, int count, int width, int from, int depth,
                double* out, F f)
{
    for (int k = 0; k < depth; ++k, out += width) {
        double const* const cells = row[from + k] + first;
        for (int l = 0; l < count; ++l) out[l] = f(cells[l], l);
        for (int l = count; l < width; ++l) out[l] = 0;
    }
}

void pack_across(double const* const* row, int first, int count, int width, int from, int depth,
                 double* out, double sign)
{
    for (int l = 0; l < width; ++l)
        if (l < count) {
            double const* const cells = row[l] + first + from;
            for (int k = 0; k < depth; ++k)
                out[static_cast<ptrdiff_t>(k) * width + l] = sign * cells[k];
        } else {
            for (int k = 0; k < depth; ++k) out[static_cast<ptrdiff_t>(k) * width + l] = 0;
        }
}

// Lanes lane to lane + count of an operand; `along` when a row holds the lanes of one k.
void pack(factor f, bool along, int lane, int count, int width, int from, int depth, double sign,
          double* out)
{
    if (along)
        pack_along(f.row, f.first + lane, count, width, from, depth, out,
                   [sign](double x, int) { return sign * x; });
    else
        pack_across(f.row + lane, f.first, count, width, from, depth, out, sign);
}

// One tile of the result, through a copy where it does not fill its vectors or its rows.
void one_tile(machine const& cpu, int depth, double const* a, ptrdiff_t a_step, double const* b,
              ptrdiff_t b_step, int rows, int cols, double* const* c, ptrdiff_t first)
{
    int const vecs = (cols + cpu.vec - 1) / cpu.vec, width = vecs * cpu.vec;
    if (rows == cpu.rows && cols == width) {
        cpu.tile(vecs, depth, a, a_step, b, b_step, c, first);
        return;
    }
    double copy[most_rows][tile_vecs * most_vec];
    double* line[most_rows];
    for (int r = 0; r < cpu.rows; ++r) {
        line[r] = copy[r];
        std::fill(copy[r], copy[r] + width, 0.0);
        if (r < rows) std::copy(c[r] + first, c[r] + first + cols, copy[r]);
    }
    cpu.tile(vecs, depth, a, a_step, b, b_step, line, 0);
    for (int r = 0; r < rows; ++r) std::copy(copy[r], copy[r] + cols, c[r] + first);
}

int blocks(int n, int size)
{
    return (n + size - 1) / size;
}

constexpr int block_depth = 256, block_rows = 128, block_cols = 2016;

void tiled(machine const& cpu, double sign, int m, int n, int depth, factor a, factor b,
           double* const* c, int first, part wanted)
{
    int const width = cpu.cols();
    ptrdiff_t const most_depth = std::min(depth, block_depth);
    work_space const packed_a(blocks(std::min(m, block_rows), cpu.rows) * cpu.rows * most_depth);
    work_space const packed_b(blocks(std::min(n, block_cols), width) * width * most_depth);
    for (int j0 = 0; j0 < n; j0 += block_cols)
        for (int k0 = 0; k0 < depth; k0 += block_depth) {
            int const j1 = std::min(n, j0 + block_cols), deep = std::min(depth - k0, block_depth);
            for (int j = j0; j < j1; j += width)
                pack(b, !b.turned, j, std::min(width, j1 - j), width, k0, deep, 1.0,
                     packed_b + (j - j0) * deep);
            for (int i0 = 0; i0 < m; i0 += block_rows) {
                int const i1 = std::min(m, i0 + block_rows);
                if (wanted == part::upper && j1 <= i0) break;
                for (int i = i0; i < i1; i += cpu.rows)
                    pack(a, a.turned, i, std::min(cpu.rows, i1 - i), cpu.rows, k0, deep, sign,
                         packed_a + (i - i0) * deep);
                for (int j = j0; j < j1; j += width) {
                    int const last = wanted == part::upper ? std::min(i1, j + width) : i1;
                    for (int i = i0; i < last; i += cpu.rows)
                        one_tile(cpu, deep, packed_a + (i - i0) * deep, cpu.rows,
                                 packed_b + (j - j0) * deep, width, std::min(cpu.rows, i1 - i),
                                 std::min(width, j1 - j), c + i, first + j);
                }
            }
        }
}

// s[l] += x[k] * L(k, l) for the `count` lanes of an operand, whose rows hold the lanes of one k,
// or the k of one lane.
void thin(machine const& cpu, int count, int from, int depth, factor f, bool along, double const* x,
          double* s)
{
    if (along) {
        for (int k = 0; k < depth; ++k) cpu.multiple(count, x[k], f.row[from + k] + f.first, s);
        return;
    }
    constexpr int together = 8;
    int l = 0;
    for (; l + together <= count; l += together) {
        double t[together];
        double const* cells[together];
        for (int r = 0; r < together; ++r) {
            t[r] = s[l + r];
            cells[r] = f.row[l + r] + f.first + from;
        }
        for (int k = 0; k < depth; ++k)
            for (int r = 0; r < together; ++r) t[r] += cells[r][k] * x[k];
        std::copy(t, t + together, s + l);
    }
    for (; l < count; ++l) {
        double const* const cells = f.row[l] + f.first + from;
        double t = s[l];
        for (int k = 0; k < depth; ++k) t += cells[k] * x[k];
        s[l] = t;
    }
}

constexpr int thin_side = 3, thin_depth = 64;

// A product with a side of at most thin_side: its lanes are taken out, the other operand is read
// where it lies.
void thinly(machine const& cpu, double sign, int m, int n, int depth, factor a, factor b,
            double* const* c, int first)
{
    bool const by_rows = m <= n;
    factor const slim = by_rows ? a : b, broad = by_rows ? b : a;
    bool const slim_along = by_rows ? a.turned : !b.turned;
    bool const broad_along = by_rows ? !b.turned : a.turned;
    int const lanes = by_rows ? m : n, count = by_rows ? n : m;
    work_space const sums(static_cast<ptrdiff_t>(lanes) * count);
    auto const cell = [&](int lane, int l) -> double& {
        return by_rows ? c[lane][first + l] : c[l][first + lane];
    };
    for (int lane = 0; lane < lanes; ++lane)
        for (int l = 0; l < count; ++l)
            sums[lane * static_cast<ptrdiff_t>(count) + l] = cell(lane, l);
    double x[thin_depth];
    for (int k0 = 0; k0 < depth; k0 += thin_depth)
        for (int lane = 0; lane < lanes; ++lane) {
            int const deep = std::min(depth - k0, thin_depth);
            pack(slim, slim_along, lane, 1, 1, k0, deep, sign, x);
            thin(cpu, count, k0, deep, broad, broad_along, x,
                 sums + lane * static_cast<ptrdiff_t>(count));
        }
    for (int lane = 0; lane < lanes; ++lane)
        for (int l = 0; l < count; ++l)
            cell(lane, l) = sums[lane * static_cast<ptrdiff_t>(count) + l];
}

} // namespace

void product(sum how, int m, int n, int depth, factor a, factor b, double* const* c, int first,
             part wanted)
{
    if (m < 1 || n < 1) return;
    if (how == sum::set)
        for (int i = 0; i < m; ++i) std::fill(c[i] + first, c[i] + first + n, 0.0);
    // A difference is the sum with the negated term, to the last bit.
    double const sign = how == sum::subtract ? -1 : 1;
    if (std::min(m, n) <= thin_side)
        thinly(this_machine(), sign, m, n, depth, a, b, c, first);
    else
        tiled(this_machine(), sign, m, n, depth, a, b, c, first, wanted);
}

// The panels of columns, packed once, serve as both operands.
void crossproduct(double const* const* rows, int n, int own, double const* shift, double* const* c,
                  std::initializer_list<double const* const*> beside)
{
    constexpr int deep = 64;
    machine const& cpu = this_machine();
    int const k = own + static_cast<int>(beside.size());
    int const width = cpu.cols(), side = blocks(k, width) * width;
    ptrdiff_t const line = side;
    work_space const sums(line * side), packed(line * deep);
    std::fill(sums + 0, sums + line * side, 0.0);
    double* into[most_rows];
    for (int r = 0; r < n; r += deep) {
        int const depth = std::min(deep, n - r);
        for (int j = 0; j < k; j += width) {
            int const count = std::max(0, std::min(width, own - j));
            if (shift)
                pack_along(rows, j, count, width, r, depth, packed + j * deep,
                           [from = shift + j](double x, int l) { return x - from[l]; });
            else
                pack_along(rows, j, count, width, r, depth, packed + j * deep,
                           [](double x, int) { return x; });
        }
        int bound = own;
        for (double const* const* column : beside) {
            double* out = packed + (bound / width * deep * width + bound % width);
            for (int i = r; i < r + depth; ++i, out += width) *out = column ? column[i][0] : 1;
            ++bound;
        }
        for (int j = 0; j < k; j += width)
            for (int i = 0; i < std::min(k, j + width); i += cpu.rows) {
                int const skip = std::max(0, (i - j) / cpu.vec), first = j + skip * cpu.vec;
                for (int t = 0; t < cpu.rows; ++t) into[t] = sums + (i + t) * line;
                cpu.tile(blocks(std::min(width, k - j), cpu.vec) - skip, depth,
                         packed + (i / width * deep * width + i % width), width,
                         packed + (j * deep + skip * cpu.vec), width, into, first);
            }
    }
    for (int i = 0; i < k; ++i) std::copy(sums + (i * line + i), sums + (i * line + k), c[i] + i);
    mirror(c, k);
}

void mirror(double* const* c, int n)
{
    for (int i = 1; i < n; ++i)
        for (int j = 0; j < i; ++j) c[i][j] = c[j][i];
}

void add_multiple(int n, double x, double const* from, double* to)
{
    this_machine().multiple(n, x, from, to);
}

void limit_vectors(int cells)
{
    chosen_machine() = best_machine(cells);
}

int vector_cells()
{
    return this_machine().vec;
}

int panel_width()
{
    return panel_vecs * this_machine().vec;
}

void add_panel(int depth, double const* row, double const* panel, double* s)
{
    this_machine().panel(depth, row, panel, panel_width(), s);
}

void add_windows(int depth, double const* w, double const* x, double* s)
{
    this_machine().panel(depth, w, x, 1, s);
}

void project_panel(int n, double const* x, double const* d, double const* y, double* panel,
                   double* next_d)
{
    this_machine().projection(n, x, d, y, panel, next_d);
}

} // namespace varnow::detail
