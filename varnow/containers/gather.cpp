#include <varnow/containers/gather.h>

#include <varnow/containers/product_kernel.h>

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#define VARNOW_AVX512 __attribute__((target("avx512f")))
#define VARNOW_AVX512_PART VARNOW_AVX512 inline __attribute__((always_inline))
#endif

namespace varnow::detail {

namespace {

constexpr int stretch = 128;

// The exchanges of a stretch do not touch what it has yet to compare, so the comparisons can all
// come first, without a branch to mispredict.
template <class W> inline int gather_stretch(W* a, int i, int n, int last, W limit)
{
    unsigned char below[stretch];
    int found = 0;
    for (int k = 0; k < n; ++k) {
        below[found] = static_cast<unsigned char>(k);
        found += a[i + k] < limit;
    }
    for (int k = 0; k < found; ++k) std::swap(a[++last], a[i + below[k]]);
    return last;
}

template <class W> int gather_plainly(W* a, int left, int right, W limit)
{
    int last = left;
    for (int i = left + 1; i <= right; i += stretch)
        last = gather_stretch(a, i, std::min(stretch, right - i + 1), last, limit);
    return last;
}

#if defined(__x86_64__)

// A register of words; `front` moves those of a mask together, `spread` puts the first of `from` in
// the places of a mask.
template <class W> struct lanes;
template <> struct lanes<std::uint64_t>
{
    using mask = __mmask8;
    static VARNOW_AVX512_PART __m512i all(std::uint64_t x)
    {
        return _mm512_set1_epi64(static_cast<long long>(x));
    }
    static VARNOW_AVX512_PART mask below(__m512i v, __m512i limit)
    {
        return _mm512_cmplt_epu64_mask(v, limit);
    }
    static VARNOW_AVX512_PART __m512i front(mask m, __m512i v)
    {
        return _mm512_maskz_compress_epi64(m, v);
    }
    static VARNOW_AVX512_PART __m512i spread(__m512i v, mask m, __m512i from)
    {
        return _mm512_mask_expand_epi64(v, m, from);
    }
};
template <> struct lanes<std::uint32_t>
{
    using mask = __mmask16;
    static VARNOW_AVX512_PART __m512i all(std::uint32_t x)
    {
        return _mm512_set1_epi32(static_cast<int>(x));
    }
    static VARNOW_AVX512_PART mask below(__m512i v, __m512i limit)
    {
        return _mm512_cmplt_epu32_mask(v, limit);
    }
    static VARNOW_AVX512_PART __m512i front(mask m, __m512i v)
    {
        return _mm512_maskz_compress_epi32(m, v);
    }
    static VARNOW_AVX512_PART __m512i spread(__m512i v, mask m, __m512i from)
    {
        return _mm512_mask_expand_epi32(v, m, from);
    }
};

// Between `last` and i stand the words found not below the limit. Each exchange brings the first of
// them behind the others, so as many steps as a register has lanes take as many of the first as
// there are words below. These wait apart until none is read near their places: a load behind a
// store that it overlaps in part is slow.
template <class W> VARNOW_AVX512_PART int gather_by_registers(W* a, int left, int right, W limit)
{
    using L = lanes<W>;
    constexpr int width = 64 / sizeof(W), most = 512;
    int i = left + 1, last = left;
    for (; right - i + 1 >= width && i - 1 - last < width; i += width)
        last = gather_stretch(a, i, width, last, limit);
    __m512i const limits = L::all(limit);
    W waiting[most + width];
    while (right - i + 1 >= width) {
        W const* const first = a + last + 1;
        int found = 0;
        for (; right - i + 1 >= width && found <= most; i += width) {
            __m512i const v = _mm512_loadu_si512(a + i);
            typename L::mask const below = L::below(v, limits);
            __m512i const moved = _mm512_loadu_si512(first + found);
            _mm512_storeu_si512(a + i, L::spread(v, below, moved));
            _mm512_storeu_si512(waiting + found, L::front(below, v));
            found += __builtin_popcount(below);
        }
        std::copy(waiting, waiting + found, a + last + 1);
        last += found;
    }
    return gather_stretch(a, i, right - i + 1, last, limit);
}

VARNOW_AVX512 int gather_widely(std::uint64_t* a, int left, int right, std::uint64_t limit)
{
    return gather_by_registers(a, left, right, limit);
}
VARNOW_AVX512 int gather_widely(std::uint32_t* a, int left, int right, std::uint32_t limit)
{
    return gather_by_registers(a, left, right, limit);
}

#else

template <class W> int gather_widely(W* a, int left, int right, W limit)
{
    return gather_plainly(a, left, right, limit);
}

#endif

template <class W> int gather(W* a, int left, int right, W limit)
{
    // A vector of 8 cells is one of AVX-512. Short stretches don't repay the start.
    if (right - left >= stretch && vector_cells() == 8) return gather_widely(a, left, right, limit);
    return gather_plainly(a, left, right, limit);
}

} // namespace

int gather_below(std::uint64_t* a, int left, int right, std::uint64_t limit)
{
    return gather(a, left, right, limit);
}

int gather_below(std::uint32_t* a, int left, int right, std::uint32_t limit)
{
    return gather(a, left, right, limit);
}

} // namespace varnow::detail
