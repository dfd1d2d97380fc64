// Gamma function, its logarithm and the correction of Stirling's formula in the mathematics half.
#include "math/functions/gamma.hpp"

#include "zent/functions.h"

#define ZENT_FORM(P, Real)                            \
  extern "C" Real zent_##P##_gamma(Real x) {          \
    return zent::functions::gamma<zent::Math>(x);     \
  }                                                   \
  extern "C" Real zent_##P##_log_gamma(Real x) {      \
    return zent::functions::log_gamma<zent::Math>(x); \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM

extern "C" float zent_r9lgmc(float x) {
  return zent::functions::d9lgmc<zent::Math>(x);
}
extern "C" double zent_d9lgmc(double x) {
  return zent::functions::d9lgmc<zent::Math>(x);
}
