#include <varnow/network/activation_kernels.h>

#include <varnow/containers/exponential.h>
#include <varnow/network/machine.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace varnow::detail {

namespace {

using kernel = void (*)(double const* z, int n, double* y);

struct kernels
{
    kernel tanh, finish_logistic;
};

void tanh_one_by_one(double const* z, int n, double* y)
{
    for (int i = 0; i < n; ++i) y[i] = std::tanh(z[i]);
}

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

// From exp(-z) in y.
INLINE void logistic_of_powers(double const* z, int n, double* y)
{
#pragma omp simd
    for (int i = 0; i < n; ++i) y[i] = pick(z[i] == 0.0, 0.0, 1.0 / (1.0 + y[i]));
}

void plain_logistic(double const* z, int n, double* y)
{
    logistic_of_powers(z, n, y);
}

#if defined(VARNOW_MACHINES)

INLINE double power_of_2(double k)
{
    constexpr double to_last_bits = 6755399441055744.0; // a sum with it ends in the whole number
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

WIDE void wide_fused(double const* z, int n, double* y)
{
    tanh_side_by_side<true>(z, n, y);
}
WIDE void wide_plain(double const* z, int n, double* y)
{
    tanh_side_by_side<false>(z, n, y);
}
NARROW void narrow_fused(double const* z, int n, double* y)
{
    tanh_side_by_side<true>(z, n, y);
}
NARROW void narrow_plain(double const* z, int n, double* y)
{
    tanh_side_by_side<false>(z, n, y);
}

WIDE void wide_logistic(double const* z, int n, double* y)
{
    logistic_of_powers(z, n, y);
}
NARROW void narrow_logistic(double const* z, int n, double* y)
{
    logistic_of_powers(z, n, y);
}

// Whether a kernel gives what the C library at hand does, by a hundred thousand numbers of all
// sizes: where operations differ in one place, about one in 5,000 results does.
bool agrees(kernel candidate)
{
    constexpr int count = 256, rounds = 400;
    double z[count] = {0.0, -0.0, NAN, INFINITY, -INFINITY, 1.0, -1.0, 22.0, 1e-300}, y[count];
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
        for (int i = 0; i < count; ++i)
            if (bits_of(y[i]) != bits_of(std::tanh(z[i])) && z[i] == z[i]) return false;
    }
    return true;
}

kernel first_that_agrees(kernel a, kernel b)
{
    return agrees(a) ? a : agrees(b) ? b : tanh_one_by_one;
}

kernels best_kernels()
{
    switch (machine_at_hand()) {
    case wide_machine: {
        static kernels const best = {first_that_agrees(wide_fused, wide_plain), wide_logistic};
        return best;
    }
    case narrow_machine: {
        static kernels const best = {first_that_agrees(narrow_fused, narrow_plain),
                                     narrow_logistic};
        return best;
    }
    default:
        return {tanh_one_by_one, plain_logistic};
    }
}

#else

kernels best_kernels()
{
    return {tanh_one_by_one, plain_logistic};
}

#endif

} // namespace

void activate_stored(double const* z, int n, int code, double* y)
{
    switch (code) {
    case 1:
        for (int i = 0; i < n; ++i) y[i] = -z[i];
        exponentials(n, y, y);
        best_kernels().finish_logistic(z, n, y);
        break;
    case 2:
        best_kernels().tanh(z, n, y);
        break;
    default:
        std::copy_n(z, n, y);
    }
}

} // namespace varnow::detail
