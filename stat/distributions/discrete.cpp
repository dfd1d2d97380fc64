// Binomial, Poisson and hypergeometric distribution functions and probabilities.
#include "stat/distributions/discrete.hpp"

#include "zent/distributions.h"

#define ZENT_FORM(P, Real)                                                              \
  ZENT_THREE(P, Real, binomial_cdf, long, long, Real)                                   \
  ZENT_THREE(P, Real, binomial_pdf, long, long, Real)                                   \
  ZENT_TWO(P, Real, poisson_cdf, long, Real)                                            \
  ZENT_TWO(P, Real, poisson_pdf, long, Real)                                            \
  extern "C" Real zents_##P##_hyper_cdf(long k, long n, long m, long l) {               \
    using namespace zent::distributions;                                                \
    return hyper_entry<Real>("zents_" #P "_hyper_cdf", k, n, m, l, Kind::cdf);          \
  }                                                                                     \
  extern "C" Real zents_##P##_hypergeometric_pdf(long k, long n, long m, long l) {      \
    using namespace zent::distributions;                                                \
    return hyper_entry<Real>("zents_" #P "_hypergeometric_pdf", k, n, m, l, Kind::pdf); \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM

extern "C" float zents_binom(long n, long m) {
  return zent::scalar_call<zent::Stat>("zents_binom", [=] { return zent::functions::l_dbinom<zent::Stat, float>(n, m); });
}
extern "C" double zents_dbinom(long n, long m) {
  return zent::scalar_call<zent::Stat>("zents_binom", [=] { return zent::functions::l_dbinom<zent::Stat, double>(n, m); });
}
