// Normal distribution functions.
#include "stat/distributions/normal.hpp"

#include "zent/distributions.h"

#define ZENT_FORM(P, Real)              \
  ZENT_ONE(P, Real, normal_cdf)         \
  ZENT_ONE(P, Real, normal_inverse_cdf) \
  ZENT_THREE(P, Real, bivariate_normal_cdf, Real, Real, Real)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
