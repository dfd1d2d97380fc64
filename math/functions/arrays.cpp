// Element loops: inlined ones for the functions with a plain form, any other function by its address.
#include "math/functions/arrays.hpp"

#include "math/functions/beta.hpp"
#include "math/functions/elliptic.hpp"
#include "math/functions/erf.hpp"
#include "math/functions/incomplete_beta.hpp"
#include "math/functions/incomplete_gamma.hpp"
#include "zent/bessel.h"
#include "zent/functions.h"

namespace zent::functions {

namespace {

// The last element goes through the function itself, so that the error state is that of its call.
template <class Real, class Function, class Plain, class... Arrays>
void loop(Function function, Plain plain, long n, Real* out, const Arrays*... in) {
  for (long i = 0; i + 1 < n; ++i) {
    Real value;
    out[i] = plain(in[i]..., value) ? value : function(in[i]...);  // out may be one of the arguments
  }
  if (n > 0) out[n - 1] = function(in[n - 1]...);
}

template <class Real>
struct Forms {
  using One = Real (*)(Real);
  using Two = Real (*)(Real, Real);
  using Three = Real (*)(Real, Real, Real);
};

template <class Real>
void each(void* function, int arguments, long n, const Real* x, const Real* y, const Real* z, Real* out) {
  using F = Forms<Real>;
  for (long i = 0; i < n; ++i) {
    out[i] = arguments == 1   ? reinterpret_cast<typename F::One>(function)(x[i])
             : arguments == 2 ? reinterpret_cast<typename F::Two>(function)(x[i], y[i])
                              : reinterpret_cast<typename F::Three>(function)(x[i], y[i], z[i]);
  }
}

#define ONE(name)                                                                             \
  if (function == reinterpret_cast<void*>(PREFIX(name))) {                                    \
    return loop(                                                                              \
        PREFIX(name), [](auto a, auto& value) { return plain_##name(a, value); }, n, out, x); \
  }
#define TWO(name)                                                                                           \
  if (function == reinterpret_cast<void*>(PREFIX(name))) {                                                  \
    return loop(                                                                                            \
        PREFIX(name), [](auto a, auto b, auto& value) { return plain_##name(a, b, value); }, n, out, x, y); \
  }
#define THREE(name)                                                                                                       \
  if (function == reinterpret_cast<void*>(PREFIX(name))) {                                                                \
    return loop(                                                                                                          \
        PREFIX(name), [](auto a, auto b, auto c, auto& value) { return plain_##name(a, b, c, value); }, n, out, x, y, z); \
  }
#define ALL                   \
  ONE(erf)                    \
  ONE(erfc)                   \
  ONE(erf_inverse)            \
  ONE(erfc_inverse)           \
  ONE(gamma)                  \
  ONE(log_gamma)              \
  TWO(beta)                   \
  TWO(log_beta)               \
  TWO(gamma_incomplete)       \
  THREE(beta_incomplete)      \
  ONE(elliptic_integral_K)    \
  ONE(elliptic_integral_E)    \
  THREE(elliptic_integral_RF) \
  TWO(elliptic_integral_RC)   \
  THREE(elliptic_integral_RD)

}  // namespace

void apply(void* function, int arguments, long n, const double* x, const double* y, const double* z, double* out) {
#define PREFIX(name) zent_d_##name
  ALL
#undef PREFIX
      each(function, arguments, n, x, y, z, out);
}
void apply(void* function, int arguments, long n, const float* x, const float* y, const float* z, float* out) {
#define PREFIX(name) zent_f_##name
  ALL
#undef PREFIX
      each(function, arguments, n, x, y, z, out);
}

}  // namespace zent::functions
