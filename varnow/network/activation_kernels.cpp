#include <varnow/network/activation_kernels.h>

#include <varnow/network/machine.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace varnow::detail {

namespace {

using kernel = void (*)(double const* z, int n, double* y);

void tanh_one_by_one(double const* z, int n, double* y)
{
    for (int i = 0; i < n; ++i) y[i] = std::tanh(z[i]);
}

void logistic_one_by_one(double const* z, int n, double* y)
{
    for (int i = 0; i < n; ++i) y[i] = z[i] == 0.0 ? 0.0 : 1.0 / (1.0 + std::exp(-z[i]));
}

#if defined(VARNOW_MACHINES)

INLINE std::uint64_t bits_of(double x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof x);
    return bits;
}

INLINE double from_bits(std::uint64_t bits)
{
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// A choice without a branch, which would keep the loop from becoming vectors.
INLINE double pick(bool first, double a, double b)
{
    std::uint64_t const mask = -static_cast<std::uint64_t>(first);
    return from_bits((bits_of(a) & mask) | (bits_of(b) & ~mask));
}

constexpr double to_last_bits = 6755399441055744.0; // a sum with it ends in the whole number

INLINE double power_of_2(double k)
{
    return from_bits(bits_of(k + (to_last_bits + 1023.0)) << 52);
}

template <bool fused> INLINE double multiply_add(double a, double b, double c)
{
    if constexpr (fused)
        return __builtin_fma(a, b, c);
    else
        return a * b + c;
}

// The hyperbolic tangent by t = exp(a) - 1 with a = 2|x| from 1 on and a = -2|x| below: as 1 - 2 /
// (t + 2) and -t / (t + 2). With a = k ln 2 + r, exp(r) - 1 follows from a rational approximation,
// and the power of 2 comes in where that loses the fewest digits. The constants and the order of
// the operations are those of the C libraries that descend from Sun's, in which some have fused
// operations: so the results are theirs to the last bit.
//
// With `near` |x| is below 6.5.
template <bool fused, bool near> INLINE double tanh_of(double x)
{
    double const magnitude = std::fabs(x),
                 v = near ? magnitude : pick(magnitude < 22.0, magnitude, 22.0);
    bool const large = v >= 1.0;
    double const size = v + v, a = pick(large, size, -size);

    // k is 0 up to half of ln 2, and 1 up to three halves of it, each to 20 bits.
    bool const no_power = size < 0.3465735912322998;
    double k = static_cast<int>(1.44269504088896338700e+00 * a + std::copysign(0.5, a));
    k = pick(size < 1.0397205352783203, -1.0, k);
    k = pick(no_power, 0.0, k);
    double const high = a - k * 6.93147180369123816490e-01, low = k * 1.90821492927058770002e-10;
    double const r = high - low, c = (high - r) - low;

    auto const ma = [](double p, double q, double s) __attribute__((always_inline))
    {
        return multiply_add<fused>(p, q, s);
    };
    double const half = 0.5 * r, s = r * half, s2 = s * s, s4 = s2 * s2;
    double const q1 = ma(s, -3.33333333333331316428e-02, 1.0);
    double const q2 = ma(s, -7.93650757867487942473e-05, 1.58730158725481460165e-03);
    double const q3 = ma(s, -2.01099218183624371326e-07, 4.00821782732936239552e-06);
    double const q = ma(s4, q3, ma(s2, q2, q1)), t = ma(-q, half, 3.0);
    double const e = s * ((q - t) / ma(-r, t, 6.0));
    double const rest = pick(no_power, ma(r, e, -s), ma(r, e - c, -c) - s), d = rest - r;

    // Of a negative a take 0 at k = 0, a half at -1 and 1 below.
    double const up = power_of_2(k), down = power_of_2(-k);
    bool const below = k < -1.0;
    double const add = pick(large, 1.0 - down, pick(below, 1.0, 0.0));
    double const take = pick(large, 0.0, pick(below, 1.0, -0.5 * k));
    double power = (add - d) * up - take;
    if constexpr (!near) {
        power = pick(k >= 20.0, ((r - (rest + down)) + 1.0) * up, power);
        power = pick(k > 56.0, (1.0 - d) * up - 1.0, power);
    }

    double const quotient = pick(large, 2.0, -power) / (power + 2.0);
    double const y = pick(large, 1.0 - quotient, quotient);
    if constexpr (near) return std::copysign(y, x);
    return pick(x != x, x, std::copysign(pick(magnitude >= 22.0, 1.0, y), x));
}

// 2^(i / 128) as H (1 + T), with H the nearest double: T, and the bits of H less i in the place of
// what is added to them for a power.
struct powers_of_2
{
    powers_of_2()
    {
        twofold root = {2.0, 0.0}, roots[7];
        for (int k = 6; k >= 0; --k) roots[k] = root = square_root(root);
        for (unsigned i = 0; i < 128; ++i) {
            twofold power = {1.0, 0.0};
            for (unsigned k = 0; k < 7; ++k)
                if (i >> k & 1u) power = product(power, roots[k]);
            tail[i] = power.low / power.high;
            head[i] = bits_of(power.high) - (std::uint64_t(i) << 45);
        }
    }

    double tail[128];
    std::uint64_t head[128];

private:
    // A sum of two numbers, the second below the last bit of the first.
    struct twofold
    {
        double high, low;
    };
    static twofold sum(double large, double small)
    {
        double const s = large + small;
        return {s, small - (s - large)};
    }
    static twofold product(twofold a, twofold b)
    {
        double const p = a.high * b.high;
        return sum(p, std::fma(a.high, b.high, -p) + a.high * b.low + a.low * b.high);
    }
    static twofold square_root(twofold a)
    {
        double const s = std::sqrt(a.high);
        return sum(s, (std::fma(-s, s, a.high) + a.low) / (2.0 * s));
    }
};

// The exponential function as x = k ln 2 / 128 + r, by the table and a polynomial: the constants
// and operations of the C libraries that have it from Arm's routines. For |x| from 2^-54 to 512.
template <bool fused>
INLINE double exp_of(double x, double const* __restrict tails,
                     std::uint64_t const* __restrict heads)
{
    auto const ma = [](double p, double q, double s) __attribute__((always_inline))
    {
        return multiply_add<fused>(p, q, s);
    };
    double const sum = ma(0x1.71547652b82fep7, x, to_last_bits), k = sum - to_last_bits;
    std::uint64_t const bits = bits_of(sum), i = bits & 127u;
    double const r = ma(k, -0x1.cf79abc9e3b39p-47, ma(k, -0x1.62e42fefa0000p-8, x)), r2 = r * r;
    double const low = ma(r, 0x1.555555555543cp-3, 0x1.ffffffffffdbdp-2);
    double const high = ma(r, 0x1.1111167a4d017p-7, 0x1.55555cf172b91p-5);
    double const rest = ma(r2 * r2, high, ma(r2, low, tails[i] + r));
    double const power = from_bits(heads[i] + (bits << 45));
    return ma(power, rest, power);
}

constexpr int stretch = 64;

template <bool fused> INLINE void tanh_side_by_side(double const* z, int n, double* y)
{
    for (int from = 0; from < n; from += stretch) {
        int const end = n - from < stretch ? n : from + stretch;
        int far = 0;
#pragma omp simd reduction(+ : far)
        for (int i = from; i < end; ++i) far += !(std::fabs(z[i]) < 6.5);
        if (far == 0) {
#pragma omp simd
            for (int i = from; i < end; ++i) y[i] = tanh_of<fused, true>(z[i]);
            continue;
        }
#pragma omp simd
        for (int i = from; i < end; ++i) y[i] = tanh_of<fused, false>(z[i]);
    }
}

template <bool fused>
INLINE void logistic_side_by_side(double const* __restrict z, int n, double* __restrict y)
{
    static powers_of_2 const powers;
    double const* const tails = powers.tail;
    std::uint64_t const* const heads = powers.head;
    for (int from = 0; from < n; from += stretch) {
        int const end = n - from < stretch ? n : from + stretch;
        int far = 0;
#pragma omp simd reduction(+ : far)
        for (int i = from; i < end; ++i) far += !(std::fabs(z[i]) < 512.0);
        if (far == 0) {
#pragma omp simd
            for (int i = from; i < end; ++i)
                y[i] = pick(z[i] == 0.0, 0.0, 1.0 / (1.0 + exp_of<fused>(-z[i], tails, heads)));
        } else {
            logistic_one_by_one(z + from, end - from, y + from);
        }
    }
}

// clang-format off
#define KERNELS(f)                                                                                     \
    WIDE void f##_wide_fused(double const* z, int n, double* y) { f##_side_by_side<true>(z, n, y); }    \
    WIDE void f##_wide_plain(double const* z, int n, double* y) { f##_side_by_side<false>(z, n, y); }   \
    NARROW void f##_narrow_fused(double const* z, int n, double* y) { f##_side_by_side<true>(z, n, y); } \
    NARROW void f##_narrow_plain(double const* z, int n, double* y) { f##_side_by_side<false>(z, n, y); }
KERNELS(tanh) KERNELS(logistic)
#undef KERNELS
    // clang-format on

    // Whether a kernel gives what the C library at hand does, by a hundred thousand numbers of all
    // sizes: where operations differ in one place, about one in 5,000 results does.
    bool agrees(kernel candidate, kernel reference)
{
    constexpr int count = 256, rounds = 400;
    double z[count] = {0.0, -0.0, NAN, INFINITY, -INFINITY, 1.0, -1.0, 22.0, 1e-300};
    double y[count], expected[count];
    double u = 0.1;
    for (int round = 0; round < rounds; ++round) {
        for (int i = round == 0 ? 9 : 0; i < count; ++i) {
            u = u * 997.0 - std::floor(u * 997.0);
            double const size = i % 4 == 0   ? (round % 2 ? 6.0 : 25.0) * u
                                : i % 4 == 1 ? std::exp2(-40.0 * u)
                                             : 2.0 * u;
            z[i] = i & 4 ? -size : size;
        }
        candidate(z, count, y);
        reference(z, count, expected);
        for (int i = 0; i < count; ++i)
            if (bits_of(y[i]) != bits_of(expected[i]) && z[i] == z[i]) return false;
    }
    return true;
}

// The first of two kernels for a wide machine and two for a narrow one that runs here and agrees.
kernel best(kernel const (&candidates)[4], kernel reference)
{
    machine const at_hand = machine_at_hand();
    if (at_hand != any_machine)
        for (int k = at_hand == wide_machine ? 0 : 2; k < 4; ++k)
            if (agrees(candidates[k], reference)) return candidates[k];
    return reference;
}

kernel best_tanh()
{
    return best({tanh_wide_fused, tanh_wide_plain, tanh_narrow_fused, tanh_narrow_plain},
                tanh_one_by_one);
}
kernel best_logistic()
{
    return best(
        {logistic_wide_fused, logistic_wide_plain, logistic_narrow_fused, logistic_narrow_plain},
        logistic_one_by_one);
}

#else

kernel best_tanh()
{
    return tanh_one_by_one;
}
kernel best_logistic()
{
    return logistic_one_by_one;
}

#endif

} // namespace

void activate_stored(double const* z, int n, int code, double* y)
{
    static kernel const all_tanh = best_tanh(), all_logistic = best_logistic();
    if (code == 1)
        all_logistic(z, n, y);
    else if (code == 2)
        all_tanh(z, n, y);
    else
        std::copy_n(z, n, y);
}

} // namespace varnow::detail
