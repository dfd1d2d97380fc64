// Gauss rules: exactness for every weight, fixed points, published values, refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

using Wide = long double;

struct Rule {
  std::vector<double> x, w;
};

enum Weight { legendre = 1, second, first, jacobi, hermite, hyperbolic, laguerre };

Rule rule(long n, int weight, double alpha, double beta, std::vector<double> fixed = {}) {
  Rule r{std::vector<double>(n), std::vector<double>(n)};
  zent_dg2rul(n, weight, alpha, beta, static_cast<long>(fixed.size()), fixed.data(), r.x.data(), r.w.data());
  return r;
}

// 4 k! beta(k + 1), the integral of |x|^k / cosh(x).
Wide secant_moment(int k) {
  static std::vector<Wide> known(200);
  if (k == 0) return M_PIl;
  if (known[k] != 0) return known[k];
  Wide sum = 0;
  for (long j = k < 4 ? 200000 : 3000; j-- > 0;) sum += (j % 2 ? -1 : 1) * std::pow(Wide(2 * j + 1), -Wide(k + 1));
  return known[k] = 4 * std::tgamma(Wide(k + 1)) * sum;
}

// The integral of w(x) times x^k, or (1 + x)^k on (-1, 1), where it has no cancellation.
Wide moment(int weight, Wide alpha, Wide beta, int k) {
  switch (weight) {
    case laguerre:
      return std::tgamma(alpha + 1 + k);
    case hermite:
      return k % 2 ? 0 : std::tgamma(Wide(k + 1) / 2);
    case hyperbolic:
      return k % 2 ? 0 : secant_moment(k);
    default:
      if (weight == legendre) alpha = beta = 0;
      if (weight == first) alpha = beta = -0.5L;
      if (weight == second) alpha = beta = 0.5L;
      return std::exp2(alpha + beta + k + 1) *
             std::exp(std::lgamma(alpha + 1) + std::lgamma(beta + k + 1) - std::lgamma(alpha + beta + k + 2));
  }
}

void expect_exact(const Rule& r, int weight, double alpha, double beta, int degree) {
  const bool finite = weight <= jacobi;
  for (int k = 0; k <= degree; ++k) {
    Wide sum = 0, size = 0;
    for (std::size_t i = 0; i < r.x.size(); ++i) {
      const Wide term = r.w[i] * std::pow(Wide(r.x[i]) + (finite ? 1 : 0), Wide(k));
      sum += term;
      size += std::abs(term);
    }
    ASSERT_LE(std::abs(sum - moment(weight, alpha, beta, k)), 2e-16L * (20 + k) * size)
        << "weight " << weight << " n " << r.x.size() << " degree " << k;
  }
}

struct Case {
  int weight;
  double alpha, beta;
};
class GaussRule : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Weights, GaussRule,
                         testing::Values(Case{legendre, 0, 0}, Case{second, 0, 0}, Case{first, 0, 0}, Case{jacobi, 1.5, -0.75},
                                         Case{jacobi, -0.5, -0.5}, Case{jacobi, -0.25, 0.25}, Case{jacobi, 30, 4},
                                         Case{jacobi, -0.99, -0.98}, Case{hermite, 0, 0}, Case{hyperbolic, 0, 0},
                                         Case{laguerre, 0, 0}, Case{laguerre, -0.9, 0}, Case{laguerre, 12.5, 0}));

TEST_P(GaussRule, IntegratesPolynomials) {
  be_quiet();
  const Case c = GetParam();
  for (int n = 1; n <= 100; n += n < 12 ? 1 : 22) {
    const Rule r = rule(n, c.weight, c.alpha, c.beta);
    ASSERT_EQ(zent_error_code(), 0);
    for (int i = 1; i < n; ++i) ASSERT_LT(r.x[i - 1], r.x[i]);
    expect_exact(r, c.weight, c.alpha, c.beta, 2 * n - 1);
    if (c.weight == hermite || c.weight == hyperbolic) continue;
    const double left = c.weight == laguerre ? 0 : -1;
    for (double point : {left, left - 0.5}) {
      const Rule f = rule(n, c.weight, c.alpha, c.beta, {point});
      EXPECT_EQ(f.x[0], point);
      expect_exact(f, c.weight, c.alpha, c.beta, 2 * n - 2);
    }
    if (c.weight == laguerre) continue;
    expect_exact(rule(n, c.weight, c.alpha, c.beta, {1.25}), c.weight, c.alpha, c.beta, 2 * n - 2);
    if (n < 2) continue;
    for (double point : {-1.0, -1.75}) {
      const Rule f = rule(n, c.weight, c.alpha, c.beta, {1, point});
      EXPECT_EQ(f.x[0], point);
      EXPECT_EQ(f.x[n - 1], 1);
      expect_exact(f, c.weight, c.alpha, c.beta, 2 * n - 3);
    }
  }
}

TEST_P(GaussRule, FailsOneDegreeFurther) {  // so the test above can tell
  const Case c = GetParam();
  const Rule r = rule(3, c.weight, c.alpha, c.beta);
  Wide sum = 0;
  for (int i = 0; i < 3; ++i) sum += r.w[i] * std::pow(Wide(r.x[i]) + (c.weight <= jacobi ? 1 : 0), Wide(6));
  EXPECT_GT(std::abs(sum / moment(c.weight, c.alpha, c.beta, 6) - 1), 1e-7L);
}

TEST_P(GaussRule, SingleFormIsTheDoubleOneRounded) {
  const Case c = GetParam();
  for (long n : {1, 7, 40, 300}) {
    const float alpha = static_cast<float>(c.alpha), beta = static_cast<float>(c.beta);
    std::vector<float> x(n), w(n);
    zent_g2rul(n, c.weight, alpha, beta, 0, nullptr, x.data(), w.data());
    const Rule r = rule(n, c.weight, alpha, beta);
    for (long i = 0; i < n; ++i) {
      ASSERT_NEAR(x[i], r.x[i], 1.2e-7 * std::abs(r.x[i])) << n;
      ASSERT_NEAR(w[i], r.w[i], 1.2e-7 * r.w[i] + 1e-45) << n;
    }
  }
}

// To 20 digits from the closed forms of the weights, at 60 digits.
TEST(GaussRules, ArePreciseInSmallWeightsToo) {
  be_quiet();
  const auto near = [](double x, double expected) { EXPECT_NEAR(x, expected, 3e-15 * std::abs(expected)); };
  Rule r = rule(100, laguerre, 0, 0);
  near(r.x[0], 0.014386146995419669464);
  near(r.w[0], 0.036392605883401356537);
  near(r.x[99], 374.9841128343426787);
  near(r.w[99], 3.2465651634358090752e-162);
  r = rule(100, hermite, 0, 0);
  near(r.x[99], 13.406487338144910138);
  near(r.w[0], 5.9080678650312068153e-79);
  near(r.x[50], 0.11079587242243948289);
  near(r.w[50], 0.21889262958743912506);
  r = rule(30, jacobi, -0.75, 1.5);
  near(r.x[29], 0.99941204817820847823);
  near(r.w[29], 2.8474780522817955947);
  near(r.x[1], -0.96885232395418927266);
  near(r.w[1], 0.000084744966044289227815);
  r = rule(20, jacobi, -0.99999, -0.25, {1});  // where nearly all of the weight is
  near(r.x[18], 0.99230828504876548549);
  near(r.w[18], 2.1571994038460345243);
  r = rule(20, jacobi, -0.25, -0.99999, {1, -1});
  near(r.x[1], -0.99189317415607400547);
  near(r.w[1], 2.157163983575570688);
  r = rule(2, jacobi, 1e6, 1.02e6);  // 2^2020001 beta(1000001, 1020001)
  EXPECT_NEAR((r.w[0] + r.w[1]) / 1.7642048766359879394e+40, 1, 3e-15);
  r = rule(3000, laguerre, -0.99, 0);  // whose first points lie far below the rounding errors of the matrix
  EXPECT_NEAR(std::accumulate(r.w.begin(), r.w.end(), 0.0L) / 99.432585119150603714L, 1, 1e-14);
  for (long n : {1, 2, 9, 1000}) {
    r = rule(n, first, 0, 0);
    const Rule s = rule(n, second, 0, 0);
    for (long i = 0; i < n; ++i) {
      EXPECT_NEAR(r.x[i], -std::cos(M_PI * (2 * i + 1) / (2 * n)), 5e-16);
      EXPECT_NEAR(r.w[i], M_PI / n, 5e-14 / n);
      const double angle = M_PI * (i + 1) / (n + 1);
      EXPECT_NEAR(s.x[i], -std::cos(angle), 5e-16);
      EXPECT_NEAR(s.w[i], M_PI / (n + 1) * std::sin(angle) * std::sin(angle), 5e-14 / n);
    }
  }
}

TEST(GaussRules, TakeTheirWeightsAsOptions) {
  be_quiet();
  const long n = 6;
  double both[] = {0.5, 2}, one = 1.5, low = -1, high = 1.5;
  std::vector<double> x(n), w(n);
  const auto same = [&](const Rule& r) {
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_EQ(x, r.x);
    EXPECT_EQ(w, r.w);
  };
  const auto call = [&](auto... options) { zent_d_gauss_quad_rule(n, x.data(), w.data(), options..., 0); };
  call();
  same(rule(n, legendre, 0, 0));
  call(ZENT_CHEBYSHEV_FIRST);
  same(rule(n, first, 0, 0));
  call(ZENT_CHEBYSHEV_SECOND);
  same(rule(n, second, 0, 0));
  call(ZENT_HERMITE);
  same(rule(n, hermite, 0, 0));
  call(ZENT_JACOBI_WEIGHT, 0.5, 2.0, ZENT_FIXED_POINT, 1.5);
  same(rule(n, jacobi, 0.5, 2, {1.5}));
  call(ZENT_JACOBI_ADR, both, ZENT_FIXED_POINT_ADR, &high);
  same(rule(n, jacobi, 0.5, 2, {1.5}));
  call(ZENT_GEN_LAGUERRE, 1.5);
  same(rule(n, laguerre, 1.5, 0));
  call(ZENT_HERMITE, ZENT_GEN_LAGUERRE_ADR, &one);
  same(rule(n, laguerre, 1.5, 0));
  call(ZENT_COSH, 3.0, ZENT_CHEBYSHEV_FIRST, ZENT_COSH, 0.0);
  same(rule(n, hyperbolic, 0, 0));
  call(ZENT_TWO_FIXED_POINTS, 1.5, -1.0);
  same(rule(n, legendre, 0, 0, {-1, 1.5}));
  call(ZENT_TWO_FIXED_POINTS_ADR, &low, &high);
  same(rule(n, legendre, 0, 0, {-1, 1.5}));
}

TEST(GaussRules, RefuseWhatIsNotARule) {
  be_quiet();
  const double inf = std::numeric_limits<double>::infinity();
  struct Refusal {
    long n;
    int weight;
    double alpha, beta;
    std::vector<double> fixed;
    long number;
  };
  const Refusal refusals[] = {
      {0, legendre, 0, 0, {}, 4027},
      {3, 0, 0, 0, {}, 4033},
      {3, 8, 0, 0, {}, 4033},
      {3, jacobi, -1, 0, {}, 4034},
      {3, jacobi, 0, NAN, {}, 4034},
      {3, laguerre, inf, 0, {}, 4034},
      {3, legendre, 0, 0, {1, 2, 3}, 4035},
      {1, legendre, 0, 0, {-1, 1}, 4036},
      {3, hermite, 0, 0, {0}, 4042},
      {3, hyperbolic, 0, 0, {0}, 4042},
      {3, laguerre, 0, 0, {-1, 0}, 4040},
      {3, legendre, 0, 0, {0.5}, 4038},
      {3, laguerre, 0, 0, {2}, 4038},
      {3, legendre, 0, 0, {0.5, 1}, 4043},
      {3, legendre, 0, 0, {1, 0}, 4044},
      {3, legendre, 0, 0, {1, 2}, 4045},
      {3, legendre, 0, 0, {-1, -1}, 4045},
      {3, legendre, 0, 0, {NAN}, 4041},
      {3, legendre, 0, 0, {inf, -1}, 4041},
      {3, legendre, 0, 0, {1e16}, 4041},  // beside which the other points have no digits
      {3, laguerre, 0, 0, {-1e200}, 4041},
      {8, first, 0, 0, {-1e200}, 4041},  // points that fall together still have weights that add up
  };
  for (const Refusal& c : refusals) {
    std::vector<double> x(8, 7), w(8, 8), fixed = c.fixed;
    zent_e1psh("refusal");
    zent_dg2rul(c.n, c.weight, c.alpha, c.beta, static_cast<long>(fixed.size()), fixed.data(), x.data(), w.data());
    EXPECT_EQ(zent_n1rcd(0), c.number);
    EXPECT_EQ(zent_n1rty(0), 5);
    zent_e1pop("refusal");
    EXPECT_EQ(x, std::vector<double>(8, 7));
    EXPECT_EQ(w, std::vector<double>(8, 8));
  }
  double x[3] = {7, 7, 7}, w[3];
  zent_d_gauss_quad_rule(3L, x, nullptr, 0);
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  zent_d_gauss_quad_rule(3L, x, w, 77, 0);
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(x[0], 7);
}

}  // namespace
