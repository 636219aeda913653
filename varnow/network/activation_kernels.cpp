#include <varnow/network/activation_kernels.h>

#include <varnow/containers/exponential.h>
#include <varnow/network/machine.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(VARNOW_MACHINES)
#include <immintrin.h>
#define WIDE_PART WIDE INLINE
#endif

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

// A sum with it ends in the nearest whole number, which makes the exponent of a power of 2 when
// its last bits are shifted up. 2046 is twice the exponent of 1.
constexpr double to_exponent = 6755399441055744.0 + 1023.0;
constexpr int exponent_bits = 52;
constexpr std::uint64_t twice_one = std::uint64_t{2046} << exponent_bits;

// Of 1 / ln 2, ln 2 in two parts, and the rational approximation, in ascending order.
constexpr double per_ln2 = 1.44269504088896338700e+00, ln2_high = 6.93147180369123816490e-01,
                 ln2_low = 1.90821492927058770002e-10, half_ln2 = 0.3465735912322998;
constexpr double Q1 = -3.33333333333331316428e-02, Q2 = 1.58730158725481460165e-03,
                 Q3 = -7.93650757867487942473e-05, Q4 = 4.00821782732936239552e-06,
                 Q5 = -2.01099218183624371326e-07;

// Below the first the power of 2 stays below 20, from the second on the result is 1.
constexpr double far_off = 6.75, all_one = 20.0;

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
// With `near` |x| is below far_off.
template <bool fused, bool near> INLINE double tanh_of(double x)
{
    double const magnitude = std::fabs(x),
                 v = near ? magnitude : pick(magnitude >= all_one, all_one, magnitude);
    bool const large = v >= 1.0;
    double const size = v + v, a = pick(large, size, -size);

    auto const ma = [](double p, double q, double s) __attribute__((always_inline))
    {
        return multiply_add<fused>(p, q, s);
    };
    bool const no_power = size < half_ln2;
    double const shifted = pick(no_power, to_exponent, ma(per_ln2, a, to_exponent));
    double const k = shifted - to_exponent;
    double const high = ma(-ln2_high, k, a), low = k * ln2_low;
    double const r = high - low, c = (high - r) - low;

    double const half = 0.5 * r, s = r * half, s2 = s * s, s4 = s2 * s2;
    double const q1 = ma(s, Q1, 1.0), q2 = ma(s, Q3, Q2), q3 = ma(s, Q5, Q4);
    double const q = ma(s4, q3, ma(s2, q2, q1)), t = ma(-q, half, 3.0);
    double const e = s * ((q - t) / ma(-r, t, 6.0));
    double const rest = pick(no_power, ma(r, e, -s), ma(r, e - c, -c) - s), d = rest - r;

    // Of a negative a take 0 at k = 0, a half at -1 and 1 below.
    double const up = from_bits(bits_of(shifted) << exponent_bits),
                 down = from_bits(twice_one - bits_of(up));
    bool const below = k < -1.0;
    double const add = pick(large, 1.0 - down, pick(below, 1.0, 0.0));
    double const take = pick(large, 0.0, pick(below, 1.0, -0.5 * k));
    double power = ma(add - d, up, -take);
    if constexpr (!near) power = pick(k >= 20.0, ((r - (rest + down)) + 1.0) * up, power);

    double const quotient = pick(large, 2.0, -power) / (power + 2.0);
    return std::copysign(pick(large, 1.0 - quotient, quotient), x);
}

// Two registers of eight: the steps of one fill the waits of the other.
struct pair
{
    __m512d v[2];
};
struct pair_mask
{
    __mmask8 m[2];
};

#define BINARY(name, instruction)                                                                  \
    WIDE_PART pair name(pair a, pair b)                                                            \
    {                                                                                              \
        return {instruction(a.v[0], b.v[0]), instruction(a.v[1], b.v[1])};                         \
    }
BINARY(operator+, _mm512_add_pd)
BINARY(operator-, _mm512_sub_pd)
BINARY(operator*, _mm512_mul_pd)
BINARY(operator/, _mm512_div_pd)
#undef BINARY

#define TERNARY(name, instruction)                                                                 \
    WIDE_PART pair name(pair a, pair b, pair c)                                                    \
    {                                                                                              \
        return {instruction(a.v[0], b.v[0], c.v[0]), instruction(a.v[1], b.v[1], c.v[1])};         \
    }
TERNARY(multiply_add, _mm512_fmadd_pd)
TERNARY(multiply_less, _mm512_fmsub_pd)
TERNARY(less_product, _mm512_fnmadd_pd)
#undef TERNARY

WIDE_PART pair both(double x)
{
    return {_mm512_set1_pd(x), _mm512_set1_pd(x)};
}
WIDE_PART pair magnitudes(pair a)
{
    return {_mm512_abs_pd(a.v[0]), _mm512_abs_pd(a.v[1])};
}
WIDE_PART pair with_sign(pair a, pair of)
{
    __m512d const sign = _mm512_set1_pd(-0.0);
    for (int i = 0; i < 2; ++i)
        a.v[i] = _mm512_or_pd(_mm512_andnot_pd(sign, a.v[i]), _mm512_and_pd(sign, of.v[i]));
    return a;
}
// A NaN stays.
WIDE_PART pair at_most(double limit, pair a)
{
    __m512d const b = _mm512_set1_pd(limit);
    return {_mm512_maskz_min_pd(0xff, b, a.v[0]), _mm512_maskz_min_pd(0xff, b, a.v[1])};
}
WIDE_PART pair_mask operator<(pair a, double limit)
{
    __m512d const b = _mm512_set1_pd(limit);
    return {_mm512_cmp_pd_mask(a.v[0], b, _CMP_LT_OQ), _mm512_cmp_pd_mask(a.v[1], b, _CMP_LT_OQ)};
}
WIDE_PART pair pick(pair_mask first, pair a, pair b)
{
    return {_mm512_mask_blend_pd(first.m[0], b.v[0], a.v[0]),
            _mm512_mask_blend_pd(first.m[1], b.v[1], a.v[1])};
}
WIDE_PART pair_mask operator!(pair_mask a)
{
    return {static_cast<__mmask8>(~a.m[0]), static_cast<__mmask8>(~a.m[1])};
}
// At the places of the mask: a with the other sign; a b + c; a + b; a - b. At the others a, c, b,
// a.
WIDE_PART pair negative_at(pair_mask at, pair a)
{
    __m512d const sign = _mm512_set1_pd(-0.0);
    return {_mm512_mask_xor_pd(a.v[0], at.m[0], a.v[0], sign),
            _mm512_mask_xor_pd(a.v[1], at.m[1], a.v[1], sign)};
}
WIDE_PART pair multiply_add_at(pair_mask at, pair a, pair b, pair c)
{
    return {_mm512_mask3_fmadd_pd(a.v[0], b.v[0], c.v[0], at.m[0]),
            _mm512_mask3_fmadd_pd(a.v[1], b.v[1], c.v[1], at.m[1])};
}
WIDE_PART pair add_at(pair_mask at, pair a, pair b)
{
    return {_mm512_mask_add_pd(b.v[0], at.m[0], a.v[0], b.v[0]),
            _mm512_mask_add_pd(b.v[1], at.m[1], a.v[1], b.v[1])};
}
WIDE_PART pair less_at(pair_mask at, pair a, pair b)
{
    return {_mm512_mask_sub_pd(a.v[0], at.m[0], a.v[0], b.v[0]),
            _mm512_mask_sub_pd(a.v[1], at.m[1], a.v[1], b.v[1])};
}

// What comes in for the power of 2. A small argument has k from 0 down to -3, which the last three
// bits of `shifted` count from 7 down, as places of a table. For a large one 1 - 2^-k comes in,
// here behind the product with 2^k, where it is as exact.
struct powers
{
    pair add, take, up;
};
WIDE_PART powers powers_of(pair shifted, pair_mask small)
{
    __m512d const one = _mm512_set1_pd(1.0),
                  adds = _mm512_setr_pd(0.0, 0.0, 0.0, 0.0, 1.0, 1.0, 0.0, 0.0),
                  takes = _mm512_setr_pd(0.0, 0.0, 0.0, 0.0, 1.0, 1.0, 0.5, 0.0);
    pair_mask const large = !small;
    powers p;
    for (int i = 0; i < 2; ++i) {
        __m512i const place = _mm512_castpd_si512(shifted.v[i]);
        p.up.v[i] = _mm512_castsi512_pd(_mm512_maskz_slli_epi64(0xff, place, exponent_bits));
        p.add.v[i] = _mm512_maskz_permutexvar_pd(small.m[i], place, adds);
        p.take.v[i] = _mm512_mask_sub_pd(_mm512_maskz_permutexvar_pd(0xff, place, takes),
                                         large.m[i], one, p.up.v[i]);
    }
    return p;
}
WIDE_PART pair inverse_power(pair up)
{
    __m512i const twice = _mm512_set1_epi64(twice_one);
    for (__m512d& v : up.v)
        v = _mm512_castsi512_pd(_mm512_sub_epi64(twice, _mm512_castpd_si512(v)));
    return up;
}

// The fused tanh_of once more, by instructions that take the choices as masks and tables.
template <bool near> WIDE_PART pair tanh_of(pair x)
{
    pair const v = near ? magnitudes(x) : at_most(all_one, magnitudes(x)), size = v + v,
               one = both(1.0);
    pair_mask const small = v < 1.0, no_power = size < half_ln2;
    pair const a = negative_at(small, size);

    pair const shifted = multiply_add_at(!no_power, both(per_ln2), a, both(to_exponent));
    pair const k = shifted - both(to_exponent);
    pair const high = less_product(both(ln2_high), k, a), low = k * both(ln2_low);
    pair const r = high - low, c = (high - r) - low;

    pair const half = both(0.5) * r, s = r * half, s2 = s * s, s4 = s2 * s2;
    pair const q1 = multiply_add(s, both(Q1), one), q2 = multiply_add(s, both(Q3), both(Q2)),
               q3 = multiply_add(s, both(Q5), both(Q4));
    pair const q = multiply_add(s4, q3, multiply_add(s2, q2, q1)),
               t = less_product(q, half, both(3.0));
    pair const e = s * ((q - t) / less_product(r, t, both(6.0)));
    // Without a power c is 0.
    pair const rest = less_at(!no_power, multiply_less(r, e - c, pick(no_power, s, c)), s);

    powers const p = powers_of(shifted, small);
    pair power = multiply_less(p.add - (rest - r), p.up, p.take);
    if constexpr (!near)
        power = pick(k < 20.0, power, ((r - (rest + inverse_power(p.up))) + one) * p.up);
    // The sign is of no account.
    pair const quotient = pick(small, power, both(-2.0)) / (power + both(2.0));
    return with_sign(add_at(!small, one, quotient), x);
}

constexpr int stretch = 64;

template <bool fused> INLINE void tanh_side_by_side(double const* z, int n, double* y)
{
    for (int from = 0; from < n; from += stretch) {
        int const end = n - from < stretch ? n : from + stretch;
        int far = 0;
#pragma omp simd reduction(+ : far)
        for (int i = from; i < end; ++i) far += !(std::fabs(z[i]) < far_off);
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
    for (int from = 0; from < n; from += side_by_side) {
        pair const x = {_mm512_loadu_pd(z + from), _mm512_loadu_pd(z + from + 8)};
        pair_mask const near = magnitudes(x) < far_off;
        pair const found = (near.m[0] & near.m[1]) == 0xff ? tanh_of<true>(x) : tanh_of<false>(x);
        _mm512_storeu_pd(y + from, found.v[0]);
        _mm512_storeu_pd(y + from + 8, found.v[1]);
    }
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
