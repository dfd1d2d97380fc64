// Element loops over the distribution functions.
#include "stat/distributions/arrays.hpp"

#include "stat/distributions/noncentral.hpp"
#include "zent/distributions.h"

namespace zent::distributions {

namespace {

// The last element goes through the function itself, so that the error state is that of its call.
template <class Real, class Function, class Plain, class... Arguments>
void loop(Function function, Plain plain, long count, Real* out, const Arguments*... in) {
  for (long i = 0; i + 1 < count; ++i) {
    Real value = 0;
    out[i] = plain(in[i]..., value) ? value : function(in[i]...);
  }
  if (count > 0) out[count - 1] = function(in[count - 1]...);
}

template <class Real>
bool plain_hyper_cdf(long k, long n, long m, long l, Real& value) {
  return plain_hyper(k, n, m, l, Kind::cdf, value);
}

}  // namespace

#define ONE(P, name)                                                                                    \
  if (function == reinterpret_cast<void*>(zents_##P##_##name)) {                                        \
    loop(                                                                                               \
        zents_##P##_##name, [](auto a, auto& value) { return plain_##name(a, value); }, count, out, x); \
    return true;                                                                                        \
  }
#define TWO(P, name)                                                                                                  \
  if (function == reinterpret_cast<void*>(zents_##P##_##name)) {                                                      \
    loop(                                                                                                             \
        zents_##P##_##name, [](auto a, auto b, auto& value) { return plain_##name(a, b, value); }, count, out, x, y); \
    return true;                                                                                                      \
  }
#define THREE(P, name)                                                                                                          \
  if (function == reinterpret_cast<void*>(zents_##P##_##name)) {                                                                \
    loop(                                                                                                                       \
        zents_##P##_##name, [](auto a, auto b, auto c, auto& value) { return plain_##name(a, b, c, value); }, count, out, x, y, \
        z);                                                                                                                     \
    return true;                                                                                                                \
  }
#define THREE_OF(P, Real, name, A, B, C)                                                                                   \
  void name(long count, const A* a, const B* b, const C* c, Real* out) {                                                   \
    loop(                                                                                                                  \
        zents_##P##_##name, [](A u, B v, C w, Real& value) { return plain_##name(u, v, w, value); }, count, out, a, b, c); \
  }

#define ZENT_LOOPS(P, Real)                                                                                                    \
  THREE_OF(P, Real, binomial_cdf, long, long, Real)                                                                            \
  THREE_OF(P, Real, binomial_pdf, long, long, Real)                                                                            \
  THREE_OF(P, Real, non_central_t_cdf, Real, long, Real)                                                                       \
  THREE_OF(P, Real, non_central_t_inv_cdf, Real, long, Real)                                                                   \
  void poisson_cdf(long count, const long* k, const Real* theta, Real* out) {                                                  \
    loop(                                                                                                                      \
        zents_##P##_poisson_cdf, [](long u, Real v, Real& value) { return plain_poisson_cdf(u, v, value); }, count, out, k,    \
        theta);                                                                                                                \
  }                                                                                                                            \
  void hyper_cdf(long count, const long* k, const long* n, const long* m, const long* l, Real* out) {                          \
    loop(                                                                                                                      \
        zents_##P##_hyper_cdf, [](long u, long v, long w, long s, Real& value) { return plain_hyper_cdf(u, v, w, s, value); }, \
        count, out, k, n, m, l);                                                                                               \
  }                                                                                                                            \
  bool apply(void* function, long count, const Real* x, const Real* y, const Real* z, Real* out) {                             \
    ONE(P, normal_cdf)                                                                                                         \
    ONE(P, normal_inverse_cdf)                                                                                                 \
    TWO(P, chi_squared_cdf)                                                                                                    \
    TWO(P, chi_squared_inverse_cdf)                                                                                            \
    TWO(P, gamma_cdf)                                                                                                          \
    TWO(P, t_cdf)                                                                                                              \
    TWO(P, t_inverse)                                                                                                          \
    THREE(P, F_cdf)                                                                                                            \
    THREE(P, F_inverse_cdf)                                                                                                    \
    THREE(P, beta_cdf)                                                                                                         \
    THREE(P, beta_inverse_cdf)                                                                                                 \
    THREE(P, bivariate_normal_cdf)                                                                                             \
    THREE(P, non_central_chi_sq)                                                                                               \
    THREE(P, non_central_chi_sq_inv)                                                                                           \
    return false;                                                                                                              \
  }
ZENT_LOOPS(f, float)
ZENT_LOOPS(d, double)
#undef ZENT_LOOPS

}  // namespace zent::distributions
