// The statistics half's own copies of the error, gamma and beta functions, the series support, and binomial coefficients.
#include "zent/functions.h"

#include "math/functions/binomial.hpp"
#include "math/functions/erf.hpp"
#include "math/functions/incomplete_beta.hpp"

#define ZENT_FORM(P, Real)                                                                                   \
  extern "C" Real zents_##P##_erfc(Real x) {                                                                 \
    return zent::functions::erfc<zent::Stat>(x);                                                             \
  }                                                                                                          \
  extern "C" Real zents_##P##_erfc_inverse(Real y) {                                                         \
    return zent::functions::erfc_inverse<zent::Stat>(y);                                                     \
  }                                                                                                          \
  extern "C" Real zents_##P##_gamma(Real x) {                                                                \
    return zent::functions::gamma<zent::Stat>(x);                                                            \
  }                                                                                                          \
  extern "C" Real zents_##P##_log_gamma(Real x) {                                                            \
    return zent::functions::log_gamma<zent::Stat>(x);                                                        \
  }                                                                                                          \
  extern "C" Real zents_##P##_log_beta(Real a, Real b) {                                                     \
    return zent::functions::log_beta<zent::Stat>(a, b);                                                      \
  }                                                                                                          \
  extern "C" Real zents_##P##_beta_incomplete(Real x, Real a, Real b) {                                      \
    return zent::functions::beta_incomplete<zent::Stat>(x, a, b);                                            \
  }                                                                                                          \
  extern "C" Real zents_##P##_binomial_coefficient(long n, long m) {                                         \
    return zent::scalar_call<zent::Stat>("zents_" #P "_binomial_coefficient",                                \
                                         [=] { return zent::functions::l_dbinom<zent::Stat, Real>(n, m); }); \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM

extern "C" float zents_r9lgmc(float x) {
  return zent::functions::d9lgmc<zent::Stat>(x);
}
extern "C" double zents_d9lgmc(double x) {
  return zent::functions::d9lgmc<zent::Stat>(x);
}
extern "C" float zents_csevl(const float* series, long n, float x) {
  return zent::series::csevl<zent::Stat>(series, n, x);
}
extern "C" double zents_dcsevl(const double* series, long n, double x) {
  return zent::series::csevl<zent::Stat>(series, n, x);
}
extern "C" long zents_inits(const float* series, long n, float eta) {
  return zent::series::initds<zent::Stat>(series, n, eta);
}
extern "C" long zents_initds(const double* series, long n, double eta) {
  return zent::series::initds<zent::Stat>(series, n, eta);
}
