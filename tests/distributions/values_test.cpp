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
BOTH_FORMS(binomial_cdf, 8, 0, 0)
BOTH_FORMS(binomial_pdf, 8, 0, 0)
BOTH_FORMS(poisson_cdf, 8, 0, 0)
BOTH_FORMS(poisson_pdf, 8, 0, 0)
BOTH_FORMS(hyper_cdf, 64, 0, 0)
BOTH_FORMS(hypergeometric_pdf, 64, 0, 0)
BOTH_FORMS(non_central_chi_sq, 8, 0, 0)
BOTH_FORMS(non_central_t_cdf, 16, 0, 0)

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

// Both forms at arguments that single precision holds, as values and bounds in units of epsilon; 0: that form is out of range.
struct Pair {
  double found;
  float single;
  double value, bound, single_bound;
};
#define BOTH(name, value, bound, single_bound, ...)                                      \
  Pair {                                                                                 \
    zents_d_##name(__VA_ARGS__), zents_f_##name(__VA_ARGS__), value, bound, single_bound \
  }

TEST(DistributionValues, LongSumsDifferencesAndTails) {
  be_quiet();
  const Pair pairs[] = {
      // many terms
      BOTH(poisson_cdf, 0.9999998270074022045853, 4, 4, 764039, 759593.5),
      BOTH(binomial_cdf, 0.6857279841716137840297, 8, 8, 8, 30007, 0x1p-12F),
      BOTH(binomial_pdf, 0.01407794035704846658148, 16, 16, 6, 8525, 0x1p-12F),
      BOTH(hyper_cdf, 0.9027618495104173493662, 32, 32, 20100, 40000, 50000, 100000),
      BOTH(hypergeometric_pdf, 0.002238337664953525019517, 64, 64, 20100, 40000, 50000, 100000),
      BOTH(hyper_cdf, 0.001117259736865760041027, 40, 4, 66483, 342986, 215602, 1102514),
      BOTH(hypergeometric_pdf, 1.920446722976747927127e-5, 40, 4, 66483, 342986, 215602, 1102514),
      BOTH(hyper_cdf, 0.03379140989934956573609, 40, 4, 7797, 9390, 44644, 53354),
      BOTH(hyper_cdf, 0.184416642132252944, 16, 2, 3189, 10938, 5131, 17453),
      BOTH(hypergeometric_pdf, 2.73137574394103447e-10, 24, 2, 534, 19891, 16474, 482477),
      BOTH(hyper_cdf, 8.67361737988373456e-14, 64, 2, 19999, 20000, (1L << 60) - 5, 1L << 60),
      BOTH(hyper_cdf, 0.229635375545999617843, 50, 2, 155405802, 315979230, 412534967, 838759713),
      // many factors that hardly differ
      BOTH(hypergeometric_pdf, 8425.0 / 18219, 4, 2, 9794, 18218, 9794, 18219),
      BOTH(hyper_cdf, 0.9999892564077502297916, 2, 2, 0, 8785, 1161567, 949804408821709),
      // next to the smallest numbers
      BOTH(poisson_cdf, 7.510648569979156481223e-308, 1000, 0, 24, 813.25),
      BOTH(poisson_cdf, 1.341236099487366275734e-37, 5000, 5000, 5644, 6658.5),
      BOTH(poisson_cdf, 1.281759231314744205341e-38, 100, 100, 0, 87.25),
      // powers far from the mean, whose exponents have more digits than the precision
      BOTH(gamma_cdf, 5.659706250618085220509e-291, 60, 0, 0x1p-28F, 30.5),
      BOTH(poisson_pdf, 1.121979735774185181992e-146, 24, 0, 12, 0x1p-38F),
      BOTH(binomial_pdf, 1.994485103460806079482e-7, 2, 2, 1, 6853, 0x1p-35F),
      BOTH(binomial_pdf, 8.431436827424192078052e-231, 16, 0, 40, 30000, 0x1p-30F),
      BOTH(binomial_pdf, 0.09295332562787747934067, 2, 2, 18, 35261279, 5.24744791619014e-07F),
      // above the mean
      BOTH(poisson_cdf, 0.989201056133572864816, 3, 3, 69, 0x1.a1ba56p+5F),
      BOTH(poisson_cdf, 0.9999968285985227287903, 3, 3, 92, 0x1.bdd698p+5F),
      // from a weight whose central distribution underflows
      BOTH(non_central_chi_sq, 1.75922512506995857631e-28, 100, 100, 0x1p-22F, 0.75, 116.09375),
      BOTH(non_central_chi_sq, 1.154178720383912966882e-37, 200, 2, 0.130859375, 35.75, 0.4375),
      // beyond the shape, for a small argument
      BOTH(gamma_cdf, 0.7031407119397479648251, 4, 4, 1.375, 1.125),
      BOTH(chi_squared_cdf, 0.009287490303909651488609, 2e5, 600, 28.75, 49),
      // sums that cancel
      BOTH(non_central_t_cdf, 0.002382927982772814887082, 64, 64, -6.75, 104, -3.625),
      BOTH(non_central_t_cdf, 0.005593267204702846135268, 64, 64, -7, 364, -4.375),
      BOTH(non_central_t_cdf, 0.9979633761204771793957, 8, 8, 7.75, 343, 4.75),
      BOTH(non_central_t_cdf, 2.126022741708892093826e-9, 64, 64, -0.375, 325, 5.5),
      BOTH(non_central_t_cdf, 0.9999985311660226559361, 8, 8, 3, 5, -3),
      BOTH(non_central_t_cdf, 1.162608511372693500769e-10, 64, 64, 0.5, 2, 7),
      BOTH(non_central_t_cdf, 5.92170817816131024e-52, 200, 0, -5.90625, 150, 10),
      BOTH(non_central_t_cdf, 3.90663019453297603e-37, 200, 4, -4, 150, 9),
      // from areas that underflow
      BOTH(non_central_t_cdf, 3.58077898021796197136e-306, 500, 0, -3.1875, 514, 34.375),
      // from a first term that underflows
      BOTH(non_central_t_cdf, 3.770088955752127559555e-30, 16, 4, 7.75, 29, 25),
      BOTH(non_central_t_cdf, 7.545206392035358201864e-217, 100, 0, 100, 150, 316),
  };
  for (const Pair& pair : pairs) {
    EXPECT_NEAR(pair.found / pair.value, 1, pair.bound * 0x1p-52) << &pair - pairs;
    if (pair.single_bound > 0) {
      EXPECT_NEAR(pair.single / pair.value, 1, pair.single_bound * 0x1p-23) << &pair - pairs;
    }
  }
}

// Large Poisson parameters around the mean have an expansion of their own; the gamma distribution takes the series and the
// fraction.
TEST(DistributionValues, PoissonAroundLargeMeans) {
  be_quiet();
  for (long a : {200, 201, 257, 1000, 20011, 1000003}) {
    const double mean = static_cast<double>(a), bound = (4 + 2 * std::sqrt(mean)) * 0x1p-52;
    for (int i = -330; i <= 330; ++i) {
      for (double d : {i * 1e-3, i * 0.03 / std::sqrt(mean), i * 1e-9}) {
        const double theta = mean * (1 + d);
        EXPECT_NEAR(zents_d_poisson_cdf(a - 1, theta) + zents_d_gamma_cdf(theta, mean), 1, bound) << a << " " << d;
      }
    }
  }
}

}  // namespace
