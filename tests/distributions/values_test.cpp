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

// A shape below 1 puts most of the area near 0: around the mean the smaller part is the upper one.
TEST(DistributionValues, AboveTheMeanOfASmallShape) {
  be_quiet();
  const double rows[][4] = {{1, 0.02, 1e4, 0.960346472605204381},
                            {0.5, 0.2, 1e4, 0.775531595417796998},
                            {2, 0.2, 40, 0.877394053938706036},
                            {0.75, 1, 6, 0.580246913580246914},
                            {4, 1.5, 400, 0.970290267326057141}};
  for (const auto& [F, dfn, dfd, value] : rows) EXPECT_NEAR(zents_d_F_cdf(F, dfn, dfd), value, 2e-15) << dfn << " " << dfd;
}

}  // namespace
