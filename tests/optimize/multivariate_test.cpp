// Minimization of functions of many variables on the classic problems, near and far from their minima, and what the options do.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "math/optimize/secant_update.hpp"
#include "tests/optimize/support.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

template <class T>
const problems::Problem<T>* current;
long calls;

template <class T>
T objective(long, T* x) {
  ++calls;
  return problems::sum_of_squares(*current<T>, x);
}

template <class... Options>
double* minimize(double (*f)(long, double*), long n, Options... options) {
  return zent_d_min_uncon_multivar(f, n, options..., 0);
}
template <class... Options>
float* minimize(float (*f)(long, float*), long n, Options... options) {
  return zent_f_min_uncon_multivar(f, n, options..., 0);
}

template <class T>
class Multivariate : public testing::Test {
 public:
  Multivariate() {
    be_quiet();
    calls = 0;
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(Multivariate, Forms);

// Each run ends at a point with a small gradient, or tells why not; it never climbs.
TYPED_TEST(Multivariate, SolvesTheClassicProblemsOrSaysWhyNot) {
  using T = TypeParam;
  constexpr bool single = std::is_same_v<T, float>;
  const auto solve = [](const auto& p, const auto& wide, double factor, const std::vector<T>& start) {
    current<T> = &p;
    std::vector<T> x(p.n, T(-77));
    T f = 0;
    T* const given = minimize(objective<T>, p.n, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x.data(), ZENT_FVALUE, &f);
    const long code = zent_error_code();
    const T first = problems::sum_of_squares(p, start.data());
    if (given == nullptr) {
      EXPECT_TRUE(code == MATH_FALSE_CONVERGENCE || code == MATH_NAN_NOT_ALLOWED) << code;
      EXPECT_EQ(code == MATH_NAN_NOT_ALLOWED, !std::isfinite(first));
      return false;
    }
    EXPECT_EQ(given, x.data());
    EXPECT_EQ(f, problems::sum_of_squares(p, x.data()));
    EXPECT_LE(f, first);
    if (code == 0 && !single) {
      EXPECT_LE(problems::steepness(wide, std::vector<double>(x.begin(), x.end())), factor > 50 ? 1e-2 : 1e-5);
    }
    return problems::is_minimum(p, static_cast<double>(f), single ? 1e-2 : 1e-4, single ? 1e-3 : 1e-5);
  };
  problems::solves_from_near_and_far<T>({21, single ? 10 : 17, single ? 5 : 11}, solve);
}

// f = sum c_j (x_j - j / 10)^2 / 2 + sum (x_j - j / 10)^4, of any size.
double weights[40];
template <class T>
T bowl(long n, T* x) {
  ++calls;
  T f = 0;
  for (long j = 0; j < n; ++j) {
    const T d = x[j] - static_cast<T>(j) / 10;
    f += static_cast<T>(weights[j]) * d * d / 2 + d * d * d * d;
  }
  return f;
}
template <class T>
void bowl_gradient(long n, T* x, T* g) {
  for (long j = 0; j < n; ++j) {
    const T d = x[j] - static_cast<T>(j) / 10;
    g[j] = static_cast<T>(weights[j]) * d + 4 * d * d * d;
  }
}

TYPED_TEST(Multivariate, AnyCountOfVariablesWithAndWithoutGradient) {
  using T = TypeParam;
  for (double& w : weights) w = 2;
  for (long n : {1, 2, 17, 40}) {
    for (bool with_gradient : {false, true}) {
      T* const x = with_gradient ? minimize(bowl<T>, n, ZENT_GRAD, bowl_gradient<T>) : minimize(bowl<T>, n);
      ASSERT_NE(x, nullptr);
      EXPECT_LE(zent_error_type(), 3) << zent_error_code();
      for (long j = 0; j < n; ++j) EXPECT_NEAR(x[j], static_cast<double>(j) / 10, sizeof(T) == 4 ? 0.05 : 1e-4) << n;
      zent_free_allocated_memory(x);
    }
  }
}

TYPED_TEST(Multivariate, BadSettingsAreReplacedAndTold) {
  using T = TypeParam;
  for (double& w : weights) w = 2;
  T reference[3], x[3];
  minimize(bowl<T>, 3, ZENT_RETURN_USER, reference);
  const T bad_scale[] = {1, 0, -1};
  const auto same = [&](long number) {
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 6);
    for (long j = 0; j < 3; ++j) EXPECT_EQ(x[j], reference[j]) << number;
  };
  const auto with = [&](auto... options) { return minimize(bowl<T>, 3, ZENT_RETURN_USER, x, options...); };
  with(ZENT_XSCALE, bad_scale), same(MATH_NEED_POSITIVE_XSCALE_ELEM);
  with(ZENT_FSCALE, 0.0), same(MATH_NEED_POSITIVE_FSCALE_ELEM);
  with(ZENT_GOOD_DIGIT, 0), same(MATH_NEED_POSITIVE_NDIGIT);
  with(ZENT_MAX_ITN, 0), same(MATH_NEED_POSITIVE_MXITER);
  with(ZENT_MAX_FUNCTION_CALLS, -5), same(MATH_NEED_POSITIVE_MAXFCN);
  with(ZENT_MAX_GRAD, 0), same(MATH_NEED_POSITIVE_MAXJAC);
  with(ZENT_GRAD_TOL, -1.0), same(MATH_NEED_POSITIVE_GRADTL);
  with(ZENT_STEP_TOL, static_cast<double>(NAN)), same(MATH_NEGATIVE_STEP_TOL);
  with(ZENT_REL_FCN_TOL, -1.0), same(MATH_NEGATIVE_REL_FCN_TOL);
  with(ZENT_MAX_STEP, 0.0), same(MATH_NEED_NONNEGATIVE_STEPMX);
  with(ZENT_MAX_STEP, -9999.0);
  EXPECT_EQ(zent_error_code(), 0);
}

TYPED_TEST(Multivariate, OptionsByValueAndAddress) {
  using T = TypeParam;
  const auto all = problems::all<T>();
  current<T> = &all[0];
  const T start[] = {T(-1.2), 1};
  const auto run = [&](T* x, auto... options) {
    calls = 0;
    minimize(objective<T>, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, options...);
    return calls;
  };
  problems::each_option_steers<T>({{ZENT_FSCALE, ZENT_FSCALE_ADR, 1000},
                                   {ZENT_GRAD_TOL, ZENT_GRAD_TOL_ADR, T(0.5)},
                                   {ZENT_STEP_TOL, ZENT_STEP_TOL_ADR, T(0.1)},
                                   {ZENT_REL_FCN_TOL, ZENT_REL_FCN_TOL_ADR, 2},
                                   {ZENT_MAX_STEP, ZENT_MAX_STEP_ADR, T(0.125)}},
                                  run);
}

TYPED_TEST(Multivariate, LimitsGiveTheBestPointSoFar) {
  using T = TypeParam;
  const auto all = problems::all<T>();
  current<T> = &all[0];
  const T start[] = {T(-1.2), 1};
  T x[2], f = 0;
  const auto ends = [&](long number, auto... options) {
    ASSERT_EQ(minimize(objective<T>, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, ZENT_FVALUE, &f, options...), x);
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 3);
    EXPECT_LT(f, T(24.2));
  };
  ends(MATH_TOO_MANY_ITN, ZENT_MAX_ITN, 3);
  ends(MATH_TOO_MANY_FCN_EVAL, ZENT_MAX_FUNCTION_CALLS, 9);
  ends(MATH_TOO_MANY_GRAD_EVAL, ZENT_MAX_GRAD, 4);
  ends(MATH_UNBOUNDED, ZENT_MAX_STEP, 1e-3);
}

double plane(long, double* x) {
  return -x[0] + 0.5 * x[1];
}
double cliff(long, double* x) {
  return x[0] > 3 ? -std::numeric_limits<double>::infinity() : -x[0];
}
double half_defined(long, double* x) {  // not a number left of 0.1, infinite right of 50; minimum 1 at 1
  return x[0] < 0.1 ? NAN : x[0] > 50 ? INFINITY : x[0] - std::log(x[0]) + x[1] * x[1];
}
double constant(long, double*) {
  ++calls;
  return 3;
}
void uphill(long, double* x, double* g) {
  g[0] = -2 * x[0];
}
double square_of(long, double* x) {
  return x[0] * x[0] + 1;
}
double enormous(long, double* x) {  // the square of its gradient is out of range
  return std::exp(x[0]) - x[0] + 1e300 * (x[1] - 2) * (x[1] - 2);
}
TEST(MultivariateEdges, HardFunctions) {
  be_quiet();
  double x[2], start[] = {40, 3};
  zent_d_min_uncon_multivar(plane, 2, ZENT_RETURN_USER, x, 0);
  EXPECT_EQ(zent_error_code(), MATH_UNBOUNDED);
  zent_d_min_uncon_multivar(cliff, 1, ZENT_RETURN_USER, x, 0);
  EXPECT_EQ(zent_error_code(), MATH_UNBOUNDED);
  for (double first : {40.0, 49.999999999, 0.1, 0.100000001}) {
    start[0] = first;
    ASSERT_EQ(zent_d_min_uncon_multivar(half_defined, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0), x) << first;
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(x[0], 1, 1e-4);
  }
  start[0] = 0;
  x[0] = 5;
  EXPECT_EQ(zent_d_min_uncon_multivar(half_defined, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_NAN_NOT_ALLOWED);
  EXPECT_EQ(x[0], 5);
  ASSERT_EQ(zent_d_min_uncon_multivar(enormous, 2, ZENT_RETURN_USER, x, 0), x);
  EXPECT_NEAR(x[1], 2, 1e-4);
  calls = 0;
  EXPECT_EQ(zent_d_min_uncon_multivar(constant, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, ZENT_INIT_HESSIAN, 1, 0), x);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(calls, 3);
  start[0] = 1;
  zent_d_min_uncon_multivar(square_of, 1, ZENT_XGUESS, start, ZENT_GRAD, uphill, ZENT_RETURN_USER, x, 0);
  EXPECT_EQ(zent_error_code(), MATH_NO_FURTHER_PROGRESS);
  EXPECT_EQ(x[0], 1);
  EXPECT_EQ(zent_d_min_uncon_multivar(square_of, 1, ZENT_XGUESS, start, ZENT_GRAD, uphill, ZENT_STEP_TOL, 0.0, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_FALSE_CONVERGENCE);
  EXPECT_EQ(zent_d_min_uncon_multivar(plane, 0, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_N_MUST_BE_POSITIVE);
  EXPECT_EQ(zent_d_min_uncon_multivar(nullptr, 2, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(zent_d_min_uncon_multivar(plane, 2, -7, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(zent_d_min_uncon_multivar(plane, 1L << 40, 0), nullptr);
  EXPECT_EQ(zent_error_type(), 5);
}

std::vector<double> seen;
double watched(long, double* x) {
  seen.push_back(x[0]);
  seen.push_back(x[1]);
  return std::exp(x[0]) - x[0] + 3 * x[1] * x[1] + x[0] * x[1];
}
TEST(MultivariateEdges, EndsWithCentralDifferences) {
  be_quiet();
  double start[] = {2, 3}, x[2];
  zent_d_min_uncon_multivar(watched, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0);
  const double* last = seen.data() + seen.size() - 8;  // x + h, x - h for each variable
  for (long j = 0; j < 2; ++j) {
    EXPECT_NEAR((last[4 * j + j] + last[4 * j + 2 + j]) / 2, x[j], 1e-12);
    EXPECT_NEAR(std::abs(last[4 * j + j] - x[j]), std::cbrt(1e-15) * std::max(1.0, std::abs(x[j])), 1e-9);
    EXPECT_EQ(last[4 * j + 1 - j], x[1 - j]);
  }
  EXPECT_NEAR(std::abs(seen[2] - 2), 2 * std::sqrt(1e-15), 1e-12);  // the first ones are forward
  EXPECT_EQ(seen[5] - 3 > 0, true);
  EXPECT_EQ(seen[4], 2);
}

double stretched(long, double* x) {  // sizes 1e6 and 1e-6
  const double u = x[0] * 1e-6 - 1, v = x[1] * 1e6 - 2;
  return 100 * (v - u * u) * (v - u * u) + (1 - u) * (1 - u);
}
TEST(MultivariateEdges, ScalesMakeUpForSizes) {
  be_quiet();
  const double scale[] = {1e-6, 1e6}, start[] = {0, 2e-6};
  double x[2];
  zent_d_min_uncon_multivar(stretched, 2, ZENT_XGUESS, start, ZENT_XSCALE, scale, ZENT_INIT_HESSIAN, 1, ZENT_RETURN_USER, x, 0);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_NEAR(x[0], 2e6, 2e3);
  EXPECT_NEAR(x[1], 3e-6, 6e-9);
}

// The factor after an update is that of the BFGS formula.
TYPED_TEST(Multivariate, UpdatesOfTheFactorFollowTheFormula) {
  using T = TypeParam;
  std::mt19937 engine(5);
  std::uniform_real_distribution<double> u(-1, 1);
  for (long n : {1, 2, 5, 23}) {
    std::vector<T> r(n * n), s(n), y(n), g(n), g_new(n), t(n), w(n), ones(n, T(1));
    for (long i = 0; i < n; ++i) {
      for (long j = i; j < n; ++j) r[i * n + j] = static_cast<T>(j == i ? 2 + u(engine) : u(engine) / static_cast<double>(n));
      s[i] = static_cast<T>(u(engine));
      g[i] = g_new[i] = 1;
    }
    std::vector<long double> h(n * n), hs(n);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < n; ++j)
        for (long k = 0; k <= std::min(i, j); ++k) h[i * n + j] += static_cast<long double>(r[k * n + i]) * r[k * n + j];
    for (long i = 0; i < n; ++i) y[i] = s[i] * static_cast<T>(1.5 + u(engine));
    long double shs = 0, ys = 0;
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) hs[i] += h[i * n + j] * s[j];
      shs += hs[i] * s[i];
      ys += static_cast<long double>(y[i]) * s[i];
    }
    zent::optimize::l_u8inf<T>(n, ones.data(), s.data(), y.data(), g.data(), g_new.data(), std::numeric_limits<T>::epsilon(),
                               true, r.data(), t.data(), w.data());
    const double bound = 200 * std::numeric_limits<T>::epsilon();
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) {
        long double updated = 0;
        for (long k = 0; k <= std::min(i, j); ++k) updated += static_cast<long double>(r[k * n + i]) * r[k * n + j];
        const long double expected = h[i * n + j] - hs[i] * hs[j] / shs + static_cast<long double>(y[i]) * y[j] / ys;
        EXPECT_NEAR(updated, expected, bound * 10) << n;
        EXPECT_TRUE(j >= i || r[i * n + j] == 0);
      }
    }
  }
}

}  // namespace
