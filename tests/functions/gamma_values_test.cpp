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
BOTH_FORMS(beta_incomplete)

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

struct BetaRow {
  double x, a, b, value;
};
TEST(Values, IncompleteBetaFarFromTheOrdinary) {
  be_quiet();
  // Values in 50 digits: power series, and the incomplete gamma function or exponential for a parameter beyond 1e16.
  const BetaRow rows[] = {
      {3e-9, 2, 1e9, 0.8008517274247114555},  // beyond the mean, where 1 - x has lost digits of x
      {0.0014, 4500, 3.25e6, 0.79991926815322256629},
      {6e-14, 0.65, 7e13, 0.99387512557327279},
      {0.007, 232.5, 36500, 0.94387558252609463062},
      {1e-9, 0.25, 1.5e9, 0.96658355585804804803},
      {2.3188240916624002e-4, 1.0520550384201699, 4642.2300692114304, 0.63764324520191185},  // long finite sums
      {0.0010127522060905776, 3.008709704510621, 3095.465506481914, 0.60489876261954922},
      {1e-300, 0.001, 2e17, 0.521856809235906973},  // vast parameters
      {1e-300, 0.5, 1e300, 0.842700792949714869},
      {1e-200, 2, 1.5e200, 0.442174599628925428},
      {0x1p-1074, 2.3e-308, 1e16, 1},
  };
  for (const BetaRow& row : rows) {
    const double bound = 2e-15 + 4e-16 * std::sqrt(row.a);
    EXPECT_NEAR(zent_d_beta_incomplete(row.x, row.a, row.b), row.value, bound) << row.x;
    EXPECT_NEAR(zents_d_beta_incomplete(row.x, row.a, row.b), row.value, bound) << row.x;
    EXPECT_EQ(zent_error_code(), 0);
  }
  EXPECT_NEAR(zent_f_beta_incomplete(9.8248961e-07F, 0.0924676806F, 1105976.12F), 0.98068698, 1e-6);
}

TEST(Values, IncompleteBetaWithItsMassAtTheEnds) {
  be_quiet();
  // 40 digits of the power series. Both parameters small, where the complement of a share would keep few digits.
  const BetaRow rows[] = {
      {0.998, 0.00095, 0.0004, 0.29804242123955777711},  {0.9997, 0.00034, 2.8e-06, 0.0081905526826496066076},
      {0.94, 0.1, 0.014, 0.15424074317634124911},        {0.992, 0.0085, 0.00018, 0.021584181994224539166},
      {3e-05, 3.5e-05, 3.6e-05, 0.50685747139396744813}, {0.52, 1e-09, 1e-12, 0.00099900099908096166282},
  };
  for (const BetaRow& row : rows) {
    EXPECT_NEAR(zent_d_beta_incomplete(row.x, row.a, row.b) / row.value, 1, 2e-15) << row.x << " " << row.a << " " << row.b;
    EXPECT_NEAR(zents_d_beta_incomplete(1 - row.x, row.b, row.a), 1 - row.value, 1e-15) << row.x;
  }
}

TEST(Values, IncompleteBetaWithOneSmallParameter) {
  be_quiet();
  // 40 digits of mpmath. A fraction from the far end, or an exponential of a long logarithm, would lose some hundred epsilon.
  const BetaRow rows[] = {
      {2.1e-05, 0.04, 0.76, 0.63792754848441485417},
      {1.35e-4, 0.05, 0.5, 0.59990162902030516502},
      {0.5, 2, 1e-250, 1.9314718055994531985e-251},
      {0.9, 30, 1e-250, 1.1368048359887806101e-252},
      {0.016, 1e-200, 7.5, 1},
      {0.016, 1e-200, 75, 1},
  };
  for (const BetaRow& row : rows) {
    EXPECT_NEAR(zent_d_beta_incomplete(row.x, row.a, row.b) / row.value, 1, 3e-15) << row.x << " " << row.a << " " << row.b;
  }
  EXPECT_NEAR(zent_f_beta_incomplete(2.0603e-05F, 0.039756F, 0.75929F), 0.6391484, 1e-6);
}

TEST(Values, BetaOfASmallAndALargeParameter) {
  be_quiet();
  EXPECT_NEAR(zent_d_beta(200, 1e-290) / 1e290, 1, 1e-15);
  EXPECT_NEAR(zent_d_beta(1e-6, 1e100) / 999769.19091637407547, 1, 2e-15);
  EXPECT_NEAR(zent_f_beta(4e-29F, 55) / 2.5e28, 1, 4e-7);
}

TEST(Values, EllipticIntegralsAtTheEndsOfTheirRanges) {
  be_quiet();
  // RC of arguments whose ratio overflows: log(2 sqrt(x/y))/sqrt(x).
  EXPECT_NEAR(zent_d_elliptic_integral_RC(3e307, 0x1p-1074) * std::sqrt(3e307) / 726.90930106017064378, 1, 1e-14);
  EXPECT_NEAR(zent_d_elliptic_integral_RC(-0.0, 4), std::acos(-1.0) / 4, 1e-15);
  EXPECT_NEAR(zent_d_elliptic_integral_K(1 - 0x1p-53), std::log(0x1p57) / 2, 1e-14);
  EXPECT_NEAR(zent_d_elliptic_integral_E(1 - 0x1p-53), 1 + 0x1p-54 * (std::log(4 * 0x1p26 * std::sqrt(2.0)) - 0.5), 3e-16);
  EXPECT_NEAR(zent_d_elliptic_integral_E(0.9999), 1.0002745824306629377, 3e-16);
}

TEST(Values, IncompleteGammaApproachesGammaAndStaysFinite) {
  be_quiet();
  EXPECT_NEAR(zent_d_gamma_incomplete(100, 200) / 9.3326215443944152682e155, 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(120, 400) / zent_d_gamma(120), 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(80, 1000) / zent_d_gamma(80), 1, 1e-13);
  EXPECT_NEAR(zent_d_gamma_incomplete(171, 1000) / zent_d_gamma(171), 1, 1e-13);
  // The power overflows, the value does not.
  EXPECT_NEAR(zent_d_gamma_incomplete(171.6, 170) / 7.31640939414130015e307, 1, 1e-12);
  EXPECT_NEAR(zent_d_gamma_incomplete(171.6, 172) / 8.28332434967464829e307, 1, 1e-12);
  EXPECT_NEAR(zent_d_gamma_incomplete(172, 100) / 5.07352927722749678e298, 1, 1e-12);
  EXPECT_NEAR(zent_f_gamma_incomplete(35, 36) / 1.73745481359100041e38, 1, 2e-5);
  EXPECT_EQ(zent_d_gamma_incomplete(0.5, std::numeric_limits<double>::infinity()), zent_d_gamma(0.5));
  EXPECT_EQ(zent_d_gamma_incomplete(1, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
}

TEST(Values, SignsOfZero) {
  be_quiet();
  EXPECT_TRUE(std::signbit(zent_d_erf_inverse(-0.0)));
  EXPECT_TRUE(std::signbit(zent_f_erf(-0.0F)));
  EXPECT_FALSE(std::signbit(zent_d_log_gamma(1)));
  EXPECT_FALSE(std::signbit(zent_d_log_gamma(2)));
  EXPECT_FALSE(std::signbit(zent_d_beta_incomplete(-0.0, 2, 3)));
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
