// The kernels for processors with AVX2 and FMA.
#include "runtime/kernels/simd/levels.hpp"

#ifdef ZENT_WIDE_LEVELS
// Whatever stands above was compiled for every processor; from here on functions are for this level only.
#pragma GCC target("avx2,fma")
#define ZENT_LEVEL avx2
#define ZENT_VECTOR_BYTES 32
#include "runtime/kernels/simd/level.hpp"

namespace zent::fast {

const Kernels<float> avx2_f = avx2::table<float>;
const Kernels<double> avx2_d = avx2::table<double>;
const Kernels<zent_f_complex> avx2_c = avx2::table<zent_f_complex>;
const Kernels<zent_d_complex> avx2_z = avx2::table<zent_d_complex>;

}  // namespace zent::fast

#endif
