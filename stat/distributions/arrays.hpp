// Loops over arrays of arguments, element by element, for double and float. Most elements need no frame; results, messages and
// the error state left behind are those of one call for each element. The result may be one of the arguments.
#pragma once

namespace zent::distributions {

#define ZENT_LOOPS(Real)                                                                                 \
  void binomial_cdf(long count, const long* k, const long* n, const Real* p, Real* out);                 \
  void binomial_pdf(long count, const long* k, const long* n, const Real* p, Real* out);                 \
  void poisson_cdf(long count, const long* k, const Real* theta, Real* out);                             \
  void hyper_cdf(long count, const long* k, const long* n, const long* m, const long* l, Real* out);     \
  void non_central_t_cdf(long count, const Real* t, const long* df, const Real* delta, Real* out);       \
  void non_central_t_inv_cdf(long count, const Real* p, const long* df, const Real* delta, Real* out);   \
  /* The functions of reals alone, by their address; false, and nothing done, for any other function. */ \
  bool apply(void* function, long count, const Real* x, const Real* y, const Real* z, Real* out);
ZENT_LOOPS(double)
ZENT_LOOPS(float)
#undef ZENT_LOOPS

}  // namespace zent::distributions
