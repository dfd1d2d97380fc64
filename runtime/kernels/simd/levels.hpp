// The levels that are built, and their tables.
#pragma once

#include "runtime/kernels/simd/table.hpp"

// Other levels than the baseline need target options for a part of a file, in GCC's spelling.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define ZENT_WIDE_LEVELS
#endif

namespace zent::fast {

#define ZENT_TABLES(level)                        \
  extern const Kernels<float> level##_f;          \
  extern const Kernels<double> level##_d;         \
  extern const Kernels<zent_f_complex> level##_c; \
  extern const Kernels<zent_d_complex> level##_z;
ZENT_TABLES(baseline)
#ifdef ZENT_WIDE_LEVELS
ZENT_TABLES(avx2)
ZENT_TABLES(avx512)
#endif
#undef ZENT_TABLES

}  // namespace zent::fast
