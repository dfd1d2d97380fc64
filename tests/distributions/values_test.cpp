// Distribution functions against 25 digits and more, and the identities between them.
#include "reference.hpp"

namespace {

using namespace distributions_test;

// Bounds in units of epsilon times the condition number; in the second pair in units of epsilon, for the methods that take
// differences from 1 or sum many terms.
#define BOTH_FORMS(name, bound, absolute, single_absolute)          \
  TEST(DistributionValues, name) {                                  \
    expect_accurate(#name, zents_d_##name, bound, absolute);        \
    expect_accurate(#name, zents_f_##name, bound, single_absolute); \
  }
BOTH_FORMS(normal_cdf, 8, 0, 0)
BOTH_FORMS(bivariate_normal_cdf, 32, 0, 0)
BOTH_FORMS(chi_squared_cdf, 16, 2500, 64)
BOTH_FORMS(gamma_cdf, 8, 0, 0)
BOTH_FORMS(t_cdf, 8, 0, 0)
BOTH_FORMS(F_cdf, 24, 0, 0)
BOTH_FORMS(beta_cdf, 8, 0, 0)
BOTH_FORMS(binomial_cdf, 16, 0, 0)
BOTH_FORMS(binomial_pdf, 64, 0, 0)
BOTH_FORMS(poisson_cdf, 64, 0, 0)
BOTH_FORMS(poisson_pdf, 8, 0, 0)
BOTH_FORMS(hyper_cdf, 64, 0, 0)
BOTH_FORMS(hypergeometric_pdf, 64, 0, 0)
BOTH_FORMS(non_central_chi_sq, 16, 0, 0)
BOTH_FORMS(non_central_t_cdf, 64, 0, 0)

}  // namespace
