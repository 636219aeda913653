// Internal: activations of many units at once.
#pragma once

// One body, compiled for several instruction sets, chosen when the library is loaded. Contraction
// is off, so all give the same results.
#if defined(__x86_64__) && defined(__linux__) && !defined(__clang__) &&                            \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define VARNOW_CLONES __attribute__((target_clones("default", "avx2", "arch=skylake-avx512")))
#else
#define VARNOW_CLONES
#endif

namespace varnow::detail {

/// y = activation(z, code), or 0 where z is 0, which stands for a unit that is not stored.
/// - code: 1 to 3
void activate_stored(double const* z, int n, int code, double* y);

} // namespace varnow::detail
