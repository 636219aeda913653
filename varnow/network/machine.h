// Internal: how loops are compiled for several instruction sets and chosen by the machine at hand.
// Bodies are INLINE and get a function of their own for each set. Contraction is off, so all give
// the same results.
#pragma once

#include <varnow/containers/product_kernel.h>

#define INLINE inline __attribute__((always_inline))

#if defined(__x86_64__)
#define VARNOW_MACHINES
#define NARROW __attribute__((target("avx2,fma")))
#if defined(__clang__)
#define WIDE __attribute__((target("avx512f,avx512dq,avx512vl,fma")))
#else
#define WIDE __attribute__((target("avx512f,avx512dq,avx512vl,fma,prefer-vector-width=512")))
#endif
#endif

namespace varnow::detail {

enum machine { any_machine, narrow_machine, wide_machine };

/// As the product kernel's machine is limited, so is this one.
inline machine machine_at_hand()
{
#if defined(VARNOW_MACHINES)
    if (vector_cells() >= 4 && __builtin_cpu_supports("fma"))
        return vector_cells() == 8 && __builtin_cpu_supports("avx512dq") &&
                       __builtin_cpu_supports("avx512vl")
                   ? wide_machine
                   : narrow_machine;
#endif
    return any_machine;
}

} // namespace varnow::detail
