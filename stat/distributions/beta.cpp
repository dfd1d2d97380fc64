// Beta and F distribution functions.
#include "stat/distributions/beta.hpp"

#include "zent/distributions.h"

#define ZENT_FORM(P, Real)                                \
  ZENT_THREE(P, Real, beta_cdf, Real, Real, Real)         \
  ZENT_THREE(P, Real, beta_inverse_cdf, Real, Real, Real) \
  ZENT_THREE(P, Real, F_cdf, Real, Real, Real)            \
  ZENT_THREE(P, Real, F_inverse_cdf, Real, Real, Real)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM

namespace {

// The support function shows one name for both precisions.
template <class Real>
Real betin(Real p, Real pin, Real qin) {
  return zent::distributions::entry<Real>(
      "zents_betin", [=](Real& value) { return zent::distributions::plain_beta_inverse_cdf(p, pin, qin, value); },
      [=] { return zent::distributions::l_beta_inverse_cdf(p, pin, qin); });
}

}  // namespace

extern "C" float zents_betin(float p, float pin, float qin) {
  return betin(p, pin, qin);
}
extern "C" double zents_dbetin(double p, double pin, double qin) {
  return betin(p, pin, qin);
}
