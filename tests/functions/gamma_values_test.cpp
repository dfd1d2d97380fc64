// Values of the error, gamma and beta functions against 30 digits, and the identities that tie the halves and precisions
// together.
#include <bit>
#include <random>

#include "reference.hpp"

namespace {

using namespace functions_test;

#define BOTH_FORMS(name, ...)                             \
  TEST(Values, name) {                                    \
    expect_accurate(#name, zent_d_##name, ##__VA_ARGS__); \
    expect_accurate(#name, zent_f_##name, ##__VA_ARGS__); \
  }
BOTH_FORMS(erf)
BOTH_FORMS(erfc)
BOTH_FORMS(erf_inverse)
BOTH_FORMS(erfc_inverse)
BOTH_FORMS(gamma)
BOTH_FORMS(log_gamma)
BOTH_FORMS(beta)
BOTH_FORMS(log_beta)
BOTH_FORMS(gamma_incomplete)
BOTH_FORMS(beta_incomplete, 16)

TEST(Values, TheHalvesAgreeBitForBit) {
  be_quiet();
  std::mt19937 generator(7);
  std::uniform_real_distribution<double> uniform(0, 1);
  for (int i = 0; i < 2000; ++i) {
    const double x = 30 * uniform(generator), y = 12 * uniform(generator), z = uniform(generator);
    EXPECT_EQ(zents_d_erfc(y), zent_d_erfc(y));
    EXPECT_EQ(zents_d_erfc_inverse(2 * z), zent_d_erfc_inverse(2 * z));
    EXPECT_EQ(zents_d_gamma(x), zent_d_gamma(x));
    EXPECT_EQ(zents_d_log_gamma(x), zent_d_log_gamma(x));
    EXPECT_EQ(zents_d_log_beta(x, y), zent_d_log_beta(x, y));
    EXPECT_EQ(zents_d_beta_incomplete(z, x, y), zent_d_beta_incomplete(z, x, y));
    const float u = static_cast<float>(y), p = static_cast<float>(z);
    EXPECT_EQ(zents_f_erfc(u), zent_f_erfc(u));
    EXPECT_EQ(zents_f_log_gamma(u), zent_f_log_gamma(u));
    EXPECT_EQ(zents_f_beta_incomplete(p, u, u), zent_f_beta_incomplete(p, u, u));
  }
}

TEST(Values, InversesReturnToTheArgument) {
  be_quiet();
  for (double p = 1e-307; p < 1; p *= 3.7) {
    const double x = zent_d_erfc_inverse(p);
    EXPECT_NEAR(zent_d_erfc(x) / p, 1, 100 * 0x1p-52 * (1 + 2 * x * x)) << p;
    const double y = 1 - p;  // the other tail, while it exists
    if (y > 0.5 && y < 1) {
      EXPECT_NEAR(zent_d_erf(zent_d_erf_inverse(y)), y, 1e-15) << p;
    }
  }
}

TEST(Values, MonotoneInStepsOfOneUlpAcrossTheRanges) {
  be_quiet();
  // Where one series hands over to the next, the step must not be greater than rounding.
  for (double edge : {1.0, 2.0, -1.0, -2.0}) {
    double x = edge - 40 * 0x1p-52;
    double previous = zent_d_erfc(x);
    for (int i = 0; i < 160; ++i) {
      x = std::nextafter(x, 3.0);
      const double value = zent_d_erfc(x);
      EXPECT_LE(value, previous * (1 + 3 * 0x1p-52)) << x;
      previous = value;
    }
  }
  for (double edge : {10.0, 1.0, 2.0, 3.0}) {
    EXPECT_NEAR(zent_d_log_gamma(std::nextafter(edge, 11)), zent_d_log_gamma(edge), 1e-14) << edge;
    EXPECT_NEAR(zent_d_gamma(std::nextafter(edge, 11)) / zent_d_gamma(edge), 1, 1e-14) << edge;
  }
}

TEST(Values, IncompleteBetaIsADistribution) {
  be_quiet();
  // Parameters whose finite sums need blocks, and the reflection of the arguments.
  EXPECT_NEAR(zent_d_beta_incomplete(0.19, 10, 5000), 1, 1e-12);
  EXPECT_NEAR(zent_d_beta_incomplete(0.1, 10.5, 7000.5), 1, 1e-12);
  EXPECT_NEAR(zent_d_beta_incomplete(0.79, 5000, 5000), 1, 1e-12);
  EXPECT_NEAR(zent_d_beta_incomplete(0.5, 5000, 5000), 0.5, 1e-12);
  EXPECT_NEAR(zent_d_beta_incomplete(0.5, 20000.5, 20000.5), 0.5, 1e-11);
  for (double a : {0.3, 1.0, 4.5, 60.0, 900.0}) {
    for (double b : {0.2, 1.0, 7.25, 80.0}) {
      double previous = 0;
      for (int i = 1; i < 200; ++i) {
        const double x = i / 200.0;
        const double value = zent_d_beta_incomplete(x, a, b);
        EXPECT_GE(value, previous * (1 - 1e-12)) << x << " " << a << " " << b;
        EXPECT_NEAR(value + zent_d_beta_incomplete(1 - x, b, a), 1, 1e-12) << x << " " << a << " " << b;
        previous = value;
      }
    }
  }
}

TEST(Values, IncompleteGammaApproachesGammaAndStaysFinite) {
  be_quiet();
  EXPECT_NEAR(zent_d_gamma_incomplete(100, 200) / 9.3326215443944152682e155, 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(120, 400) / zent_d_gamma(120), 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(80, 1000) / zent_d_gamma(80), 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(171, 1000) / zent_d_gamma(171), 1, 1e-13);
  EXPECT_EQ(zent_d_gamma_incomplete(0.5, std::numeric_limits<double>::infinity()), zent_d_gamma(0.5));
  EXPECT_EQ(zent_d_gamma_incomplete(1, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
}

TEST(Values, BinomialCoefficients) {
  be_quiet();
  for (long n = 0; n <= 60; ++n) {
    for (long m = 1; m <= n; ++m) {  // Pascal's rule holds exactly below 2^53
      const double sum = m == n ? 1 : zents_d_binomial_coefficient(n - 1, m - 1) + zents_d_binomial_coefficient(n - 1, m);
      if (sum < 0x1p53) {
        EXPECT_EQ(zents_d_binomial_coefficient(n, m), sum) << n << " " << m;
      }
    }
    EXPECT_EQ(zents_f_binomial_coefficient(n, 0), 1);
  }
  EXPECT_NEAR(zents_d_binomial_coefficient(1029, 514) / 1.429820686498904e308, 1, 1e-14);
  EXPECT_EQ(zents_d_binomial_coefficient(4000000000, 2), 4000000000.0 * 3999999999.0 / 2);
  EXPECT_TRUE(is_failure(zents_d_binomial_coefficient(1030, 515)));
  EXPECT_EQ(zents_error_code(), STAT_BINOMIAL_OVERFLOW);
  EXPECT_TRUE(is_failure(zents_f_binomial_coefficient(200, 100)));
  EXPECT_TRUE(is_failure(zents_d_binomial_coefficient(3, 4)));
  EXPECT_EQ(zents_error_code(), STAT_INEQUALITY_VIOLATION_0);
}

}  // namespace
