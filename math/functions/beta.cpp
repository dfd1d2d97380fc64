// The beta function, its logarithm and its incomplete form in the mathematics half.
#include "math/functions/beta.hpp"

#include "math/functions/incomplete_beta.hpp"
#include "zent/functions.h"

#define ZENT_FORM(P, Real)                                             \
  extern "C" Real zent_##P##_beta(Real a, Real b) {                    \
    return zent::functions::beta<zent::Math>(a, b);                    \
  }                                                                    \
  extern "C" Real zent_##P##_log_beta(Real a, Real b) {                \
    return zent::functions::log_beta<zent::Math>(a, b);                \
  }                                                                    \
  extern "C" Real zent_##P##_beta_incomplete(Real x, Real a, Real b) { \
    return zent::functions::beta_incomplete<zent::Math>(x, a, b);      \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
