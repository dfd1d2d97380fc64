// Gamma, chi-squared and non-central chi-squared distribution functions.
#include "stat/distributions/noncentral.hpp"
#include "zent/distributions.h"

#define ZENT_FORM(P, Real)                                  \
  ZENT_TWO(P, Real, gamma_cdf, Real, Real)                  \
  ZENT_TWO(P, Real, chi_squared_cdf, Real, Real)            \
  ZENT_TWO(P, Real, chi_squared_inverse_cdf, Real, Real)    \
  ZENT_THREE(P, Real, non_central_chi_sq, Real, Real, Real) \
  ZENT_THREE(P, Real, non_central_chi_sq_inv, Real, Real, Real)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
