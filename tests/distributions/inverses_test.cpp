// Inverses return to their argument, distribution functions are monotone, tails reach the smallest numbers, and the branches that
// are approximations stay within their known distance of the true distribution.
#include "reference.hpp"

namespace {

using namespace distributions_test;

const double probabilities[] = {
    1e-300, 1e-100, 1e-30, 1e-12, 1e-5,  1e-3,     0.01,     0.1, 0.25, 0.4999, 0x1.fffffffffffffp-2, 0.5, 0x1.0000000000001p-1,
    0.6,    0.75,   0.9,   0.99,  0.999, 1 - 1e-7, 1 - 1e-12};

// F(x) = p to 100 epsilon of the argument: x may move by that much, and p may be rounded.
template <class Real, class F, class Inverse>
void round_trip(F f, Inverse inverse, double least, double most, const std::string& name, double slack = 0) {
  const Real epsilon = std::numeric_limits<Real>::epsilon();
  for (double probability : probabilities) {
    const Real p = static_cast<Real>(probability);
    if (p < std::numeric_limits<Real>::min() || p >= 1 || p < least || p > most) continue;
    const Real x = inverse(p);
    EXPECT_TRUE(zents_n1rty(1) == 0 || zents_n1rcd(1) == STAT_LARGE_ARG_WARN) << name << " p " << p << ": " << zents_n1rcd(1);
    const Real reach = 100 * epsilon * std::abs(x), rounding = 2 * epsilon * (p + static_cast<Real>(slack));
    EXPECT_LE(f(x - reach) - rounding, p) << name << " p " << p << " x " << x;
    EXPECT_GE(f(x + reach) + rounding, p) << name << " p " << p << " x " << x;
  }
}

template <class Real>
class InverseDistributions : public testing::Test {};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(InverseDistributions, Forms);

template <class Real>
const auto form(auto single, auto real) {
  if constexpr (std::is_same_v<Real, float>) {
    return single;
  } else {
    return real;
  }
}
#define FORM(name) form<Real>(zents_f_##name, zents_d_##name)

TYPED_TEST(InverseDistributions, RoundTrip) {
  using Real = TypeParam;
  be_quiet();
  const bool is_single = sizeof(Real) == sizeof(float);
  round_trip<Real>(FORM(normal_cdf), FORM(normal_inverse_cdf), 0, 1, "normal");
  for (double freedom : {0.5, 1.0, 2.0, 3.5, 12.0, 25.0, 25.5, 40.0, 65.0, 65.5, 300.0, 1e6}) {
    const Real df = static_cast<Real>(freedom);
    round_trip<Real>([=](Real x) { return FORM(chi_squared_cdf)(x, df); },
                     [=](Real p) { return FORM(chi_squared_inverse_cdf)(p, df); }, is_single && df < 1 ? 2e-3 : 1e-3,
                     df > 65 ? 1 - 1e-6 : 1, "chi-squared " + std::to_string(df), df > 25 ? 2000 : 8);
  }
  for (double freedom : {1.0, 1.0625, 1.5, 2.0, 3.0, 4.0, 7.0, 19.0, 20.0, 21.5, 100.0, 1e5, 1e12}) {
    const Real df = static_cast<Real>(freedom);
    round_trip<Real>([=](Real t) { return FORM(t_cdf)(t, df); }, [=](Real p) { return FORM(t_inverse)(p, df); },
                     is_single ? 1e-35 : 0, 1, "t " + std::to_string(df));
  }
  for (double pin : {0.05, 0.5, 1.0, 2.5, 40.0, 3000.0}) {
    for (double qin : {0.05, 0.5, 1.0, 3.0, 70.0, 1e5}) {
      const Real a = static_cast<Real>(pin), b = static_cast<Real>(qin);
      const std::string name = std::to_string(a) + " " + std::to_string(b);
      // Quantiles below the smallest number, and those of F above the largest share below 1, are out of reach.
      const double least = is_single ? (a < 0.1 ? 0.3 : a < 1 ? 1e-3 : a == 1 ? 1e-30 : 0) : a < 1 ? 1e-5 : 1e-200;
      const double most = b < 1 ? (is_single && b < 0.1 && a > 1 ? 0.3 : 0.9) : 1;
      round_trip<Real>([=](Real x) { return x > 0 ? x < 1 ? FORM(beta_cdf)(x, a, b) : 1 : 0; },
                       [=](Real p) { return FORM(beta_inverse_cdf)(p, a, b); }, least, 1, "beta " + name);
      round_trip<Real>([=](Real x) { return FORM(F_cdf)(x, 2 * a, 2 * b); },
                       [=](Real p) { return FORM(F_inverse_cdf)(p, 2 * a, 2 * b); }, least, most, "F " + name);
    }
  }
}

TYPED_TEST(InverseDistributions, RoundTripOfTheNonCentralOnes) {
  using Real = TypeParam;
  be_quiet();
  for (double freedom : {0.5, 3.0, 50.0}) {
    for (double noncentrality : {0.0, 0.01, 2.0, 30.0, 2000.0}) {
      const Real df = static_cast<Real>(freedom), lambda = static_cast<Real>(noncentrality);
      round_trip<Real>([=](Real x) { return FORM(non_central_chi_sq)(x, df, lambda); },
                       [=](Real p) { return FORM(non_central_chi_sq_inv)(p, df, lambda); },
                       sizeof(Real) == sizeof(float) ? 1e-8 : 1e-30, 1,
                       "non-central chi-squared " + std::to_string(df) + " " + std::to_string(lambda), 4);
    }
  }
  for (long df : {1L, 2L, 5L, 30L, 1000L}) {
    for (double noncentrality : {-3.0, 0.0, 0.5, 8.0}) {
      const Real delta = static_cast<Real>(noncentrality);
      round_trip<Real>([=](Real x) { return FORM(non_central_t_cdf)(x, df, delta); },
                       [=](Real p) { return FORM(non_central_t_inv_cdf)(p, df, delta); }, 1e-5, 1,
                       "non-central t " + std::to_string(df) + " " + std::to_string(delta), 4);
    }
  }
}

TEST(DistributionInverses, NonCentralEndWhereTheSumStopsShortOfP) {
  be_quiet();
  EXPECT_NEAR(zents_f_non_central_chi_sq_inv(1 - 0x1p-24F, 10, 20000), 21600, 300);
  EXPECT_EQ(zents_n1rty(1), 0);
}

// Far out with one parameter beyond the working range: F is then 1/chi-squared.
TEST(DistributionInverses, FarTailOfFWithAVastParameter) {
  be_quiet();
  EXPECT_NEAR(zents_d_F_inverse_cdf(1e-300, 1e300, 1) / 0.00072786951080774975, 1, 1e-13);
  EXPECT_EQ(zents_n1rty(1), 0);
  EXPECT_NEAR(zents_d_F_cdf(1 / 1400.0, 1e300, 1) / 2.101014516264217495e-306, 1, 1e-12);
}

// A sweep over neighbouring numbers around points where branches meet.
template <class F>
void expect_monotone(F f, double at, double slack, const std::string& name) {
  double x = at;
  for (int i = 0; i < 100; ++i) x = std::nextafter(x, -1e308);
  double previous = f(x);
  for (int i = 0; i < 200; ++i) {
    x = std::nextafter(x, 1e308);
    const double value = f(x);
    EXPECT_GE(value, previous - slack) << name << " at " << x;
    previous = value;
  }
}

TEST(DistributionInverses, MonotoneInStepsOfOneUlp) {
  be_quiet();
  // A rounding error or two where each branch rounds on its own; the last digits of the methods where two branches meet.
  for (double x : {-37.0, -5.5, -2.82842712474619, -1.4142135623730951, -0.1, 0.7, 1.4142135623730951, 3.0}) {
    expect_monotone(zents_d_normal_cdf, x, 3 * 0x1p-52 * zents_d_normal_cdf(x), "normal");
  }
  for (double x : {0.5, 10.0, 26.0, 40.0}) {
    expect_monotone([](double v) { return zents_d_chi_squared_cdf(v, 40); }, x, 1e-12, "chi-squared");
    expect_monotone([](double v) { return zents_d_gamma_cdf(v, 40); }, x, 2e-15, "gamma");
  }
  for (double df : {3.0, 9.0, 10.0, 19.0}) {
    for (double t : {1.0, 2.0, std::sqrt(df), -2.0, -std::sqrt(df)}) {
      expect_monotone([=](double v) { return zents_d_t_cdf(v, df); }, t, 2e-15, "t");
    }
  }
  expect_monotone([](double v) { return zents_d_F_cdf(v, 7, 4); }, 1, 2e-15, "F");
}

TEST(DistributionInverses, SingleChiSquaredStaysAProbability) {
  be_quiet();
  for (float x = 24; x < 26; x += 0.001F) {
    for (float df : {0.5F, 1.0F, 2.0F}) EXPECT_LE(zents_f_chi_squared_cdf(x, df), 1) << x << " " << df;
  }
}

TEST(DistributionInverses, TailsToTheSmallestNumbers) {
  be_quiet();
  EXPECT_NEAR(zents_d_normal_cdf(-37.5) / 4.6053530095819548e-308, 1, 1e-12);
  EXPECT_NEAR(zents_d_t_cdf(-1e300, 1) * M_PI * 1e300, 1, 1e-13);
  EXPECT_NEAR(zents_d_t_cdf(-1e102, 3) / (2 * std::sqrt(3) / M_PI * 1e-306), 1, 1e-12);  // 2 sqrt(3)/(pi t^3)
  EXPECT_NEAR(zents_d_non_central_t_cdf(-1e300, 1, 0) * M_PI * 1e300, 1, 1e-12);
  EXPECT_NEAR(zents_d_non_central_t_cdf(-1e30, 1, 1) / 6.6476127657940128547e-32, 1, 1e-12);
  EXPECT_NEAR(zents_d_binomial_pdf(0, 10000000000000, 1e-12) / 4.5399929762257861e-5, 1, 1e-14);
  EXPECT_NEAR(zents_d_F_cdf(1e-300, 2, 2), 1e-300, 1e-313);
  EXPECT_NEAR(zents_d_F_cdf(1e-30, 20, 2) / 1e-290, 1, 1e-12);  // (10 F)^10
}

TEST(DistributionInverses, ApproximationsStayNearTheTruth) {
  be_quiet();
  // Above 65 degrees of freedom the transform of Wilson and Hilferty.
  for (auto [df, bound] : {std::pair{65.5, 1.8e-4}, {100.0, 1.2e-4}, {200.0, 6e-5}, {1000.0, 1.1e-5}}) {
    double worst = 0;
    for (double z = -4; z <= 4; z += 0.05) {
      const double x = df + z * std::sqrt(2 * df);
      worst = std::fmax(worst, std::abs(zents_d_chi_squared_cdf(x, df) - zents_d_gamma_cdf(x / 2, df / 2)));
    }
    EXPECT_LE(worst, bound) << df;
    EXPECT_GE(worst, bound / 3) << df << ": the transform is not in use";
  }
  // The expansion of Student's t for large degrees of freedom at those that are not whole.
  for (auto [df, bound] : {std::pair{1.05, 1.2e-2}, {2.05, 2e-4}, {5.05, 2e-7}, {10.05, 5e-10}, {20.5, 2e-11}}) {
    for (double t = 0.1; t * t < df; t += 0.1) {
      const double area = zents_d_beta_incomplete(df / (df + t * t), df / 2, 0.5) / 2;
      EXPECT_NEAR(zents_d_t_cdf(t, df), 1 - area, bound) << df << " " << t;
    }
  }
}

// The last number below 1 is within reach: the sum of all terms stops a few epsilon short of it.
TEST(DistributionInverses, NonCentralTNextToOne) {
  be_quiet();
  const double p = 1 - 0x1p-53, t = zents_d_non_central_t_inv_cdf(p, 617, -2.125);
  EXPECT_EQ(zents_n1rcd(1), 0);
  EXPECT_NEAR(t, 6.2127138307989790, 0.1);
  EXPECT_EQ(zents_d_non_central_t_cdf(t, 617, -2.125), p);
}

}  // namespace
