// Error functions of the mathematics half.
#include "math/functions/erf.hpp"

#include "zent/functions.h"

#define ZENT_FORM(P, Real)                               \
  extern "C" Real zent_##P##_erf(Real x) {               \
    return zent::functions::erf<zent::Math>(x);          \
  }                                                      \
  extern "C" Real zent_##P##_erfc(Real x) {              \
    return zent::functions::erfc<zent::Math>(x);         \
  }                                                      \
  extern "C" Real zent_##P##_erf_inverse(Real y) {       \
    return zent::functions::erf_inverse<zent::Math>(y);  \
  }                                                      \
  extern "C" Real zent_##P##_erfc_inverse(Real y) {      \
    return zent::functions::erfc_inverse<zent::Math>(y); \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
