// The kernels for every processor.
#include "runtime/kernels/simd/levels.hpp"
#define ZENT_LEVEL baseline
#define ZENT_VECTOR_BYTES 16
#include "runtime/kernels/simd/level.hpp"

namespace zent::fast {

const Kernels<float> baseline_f = baseline::table<float>;
const Kernels<double> baseline_d = baseline::table<double>;
const Kernels<zent_f_complex> baseline_c = baseline::table<zent_f_complex>;
const Kernels<zent_d_complex> baseline_z = baseline::table<zent_d_complex>;

}  // namespace zent::fast
