// Student's t and non-central t distribution functions.
#include "stat/distributions/noncentral.hpp"
#include "zent/distributions.h"

#define ZENT_FORM(P, Real)                                 \
  ZENT_TWO(P, Real, t_cdf, Real, Real)                     \
  ZENT_TWO(P, Real, t_inverse, Real, Real)                 \
  ZENT_THREE(P, Real, non_central_t_cdf, Real, long, Real) \
  ZENT_THREE(P, Real, non_central_t_inv_cdf, Real, long, Real)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
