// The choice of a level.
#include "runtime/kernels/fast.hpp"
#include "runtime/kernels/simd/levels.hpp"

namespace zent::fast {

alignas(64) unsigned char pack_a[pack_a_bytes];
alignas(64) unsigned char pack_b[pack_b_bytes];

// Set before anything runs, so that no call finds it empty; the processor is asked a little later.
InUse in_use = {&baseline_f, &baseline_d, &baseline_c, &baseline_z};

namespace {

bool available(Level wanted) {
  if (wanted == Level::baseline) return true;
#ifdef ZENT_WIDE_LEVELS
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (wanted == Level::avx2) return avx2;
  return avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

const InUse* tables(Level wanted) {
  static constexpr InUse all[] = {
      {&baseline_f, &baseline_d, &baseline_c, &baseline_z},
#ifdef ZENT_WIDE_LEVELS
      {&avx2_f, &avx2_d, &avx2_c, &avx2_z},
      {&avx512_f, &avx512_d, &avx512_c, &avx512_z},
#endif
  };
  return &all[static_cast<int>(wanted)];
}

__attribute__((constructor)) void use_best_level() {
  if (!use_level(Level::avx512)) use_level(Level::avx2);
}

}  // namespace

Level level() {
#ifdef ZENT_WIDE_LEVELS
  if (in_use.d == &avx512_d) return Level::avx512;
  if (in_use.d == &avx2_d) return Level::avx2;
#endif
  return Level::baseline;
}

bool use_level(Level wanted) {
  if (!available(wanted)) return false;
  in_use = *tables(wanted);
  return true;
}

}  // namespace zent::fast
