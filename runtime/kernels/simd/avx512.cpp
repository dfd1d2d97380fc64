// The kernels for processors with AVX-512.
#include "runtime/kernels/simd/levels.hpp"

#ifdef ZENT_WIDE_LEVELS
// Whatever stands above was compiled for every processor; from here on functions are for this level only.
#pragma GCC target("avx512f,avx512dq,avx512bw,avx512vl,avx2,fma")
#define ZENT_LEVEL avx512
#define ZENT_VECTOR_BYTES 64
#include "runtime/kernels/simd/level.hpp"

namespace zent::fast {

const Kernels<float> avx512_f = avx512::table<float>;
const Kernels<double> avx512_d = avx512::table<double>;
const Kernels<zent_f_complex> avx512_c = avx512::table<zent_f_complex>;
const Kernels<zent_d_complex> avx512_z = avx512::table<zent_d_complex>;

}  // namespace zent::fast

#endif
