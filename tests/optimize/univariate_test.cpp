// Minima of functions of one variable: known ones, ends of the interval, undefined values, options, errors, calls inside calls.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

std::function<double(double)> current, current_slope;
long calls;

template <class T>
struct Call {
  static T f(T x) {
    ++calls;
    return static_cast<T>(current(static_cast<double>(x)));
  }
  static T g(T x) {
    return static_cast<T>(current_slope(static_cast<double>(x)));
  }
};
template <class... Options>
double values(double, double a, double b, Options... options) {
  return zent_d_min_uncon(Call<double>::f, a, b, options..., 0);
}
template <class... Options>
float values(float, float a, float b, Options... options) {
  return zent_f_min_uncon(Call<float>::f, a, b, options..., 0);
}
template <class... Options>
double slopes(double, double a, double b, Options... options) {
  return zent_d_min_uncon_deriv(Call<double>::f, Call<double>::g, a, b, options..., 0);
}
template <class... Options>
float slopes(float, float a, float b, Options... options) {
  return zent_f_min_uncon_deriv(Call<float>::f, Call<float>::g, a, b, options..., 0);
}

template <class T>
class Univariate : public testing::Test {
 public:
  Univariate() {
    be_quiet();
    calls = 0;
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(Univariate, Forms);

struct Known {
  std::function<double(double)> f, g;
  double a, b, x;
};
const Known known[] = {
    {[](double x) { return std::exp(x) - 5 * x; }, [](double x) { return std::exp(x) - 5; }, -20, 20, std::log(5.0)},
    {[](double x) { return std::cos(x); }, [](double x) { return -std::sin(x); }, 0.5, 6, 3.14159265358979},
    {[](double x) { return (x - 2) * (x - 2); }, [](double x) { return 2 * (x - 2); }, -100, 3, 2},
    {[](double x) { return -x * std::exp(-x); }, [](double x) { return (x - 1) * std::exp(-x); }, -1, 5, 1},
    {[](double x) { return x * x * x * x + x; }, [](double x) { return 4 * x * x * x + 1; }, -3, 3, -std::cbrt(0.25)},
    {[](double x) { return std::abs(x - 0.3) + 0.1 * x; }, [](double x) { return (x < 0.3 ? -1 : 1) + 0.1; }, -1, 1, 0.3},
    {[](double x) { return x < 0.2 ? NAN : x - std::log(x); }, [](double x) { return 1 - 1 / x; }, -8, 12, 1},
};

TYPED_TEST(Univariate, FindsKnownMinima) {
  using T = TypeParam;
  for (const Known& k : known) {
    SCOPED_TRACE(k.x);
    current = k.f;
    current_slope = k.g;
    const T a = static_cast<T>(k.a), b = static_cast<T>(k.b);
    T f = 0, g = 0;
    calls = 0;
    const T xacc = std::is_same_v<T, float> ? T(1e-3) : T(1e-6);  // float values do not tell points closer by
    const T x = values(T(), a, b, ZENT_ERR_ABS_ADR, &xacc, ZENT_FVALUE, &f);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(x, k.x, 2 * xacc);
    EXPECT_EQ(f, Call<T>::f(x));
    EXPECT_LT(calls, 70);
    calls = 0;
    const T y = slopes(T(), a, b, ZENT_FVALUE, &f, ZENT_GVALUE, &g);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(y, k.x, 5e-4);
    EXPECT_EQ(f, Call<T>::f(y));
    EXPECT_EQ(g, Call<T>::g(y));
    EXPECT_LT(calls, 60);
  }
}

TYPED_TEST(Univariate, KeepsItsAccuracyWhereverTheMinimumIs) {
  using T = TypeParam;
  std::mt19937 engine(3);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int k = 0; k < 300; ++k) {
    const double c = 5 * u(engine), width = std::exp(2 * u(engine)), skew = u(engine);
    current = [=](double x) { return std::exp((x - c) / width) * (1 + skew / 2) + std::exp(-(x - c) / width) * (1 - skew / 2); };
    current_slope = [=](double x) {
      return (std::exp((x - c) / width) * (1 + skew / 2) - std::exp(-(x - c) / width) * (1 - skew / 2)) / width;
    };
    const double minimum = c + width / 2 * std::log((1 - skew / 2) / (1 + skew / 2));
    const T guess = static_cast<T>(7 * u(engine));
    const double bound = std::is_same_v<T, float> ? 5e-3 : 1.1e-4;
    EXPECT_NEAR(values(T(), T(-8), T(8), ZENT_XGUESS, static_cast<double>(guess)), minimum, bound * std::max(1.0, width));
    EXPECT_NEAR(slopes(T(), T(-8), T(8), ZENT_XGUESS_ADR, &guess), minimum, 1e-3 * std::max(1.0, width * width));
    EXPECT_EQ(zent_error_code(), 0);
  }
}

TYPED_TEST(Univariate, EndsOfTheInterval) {
  using T = TypeParam;
  for (double sign : {1.0, -1.0}) {
    current = [=](double x) { return sign * x; };
    current_slope = [=](double) { return sign; };
    const T end = sign > 0 ? T(-3) : T(4);
    EXPECT_EQ(values(T(), T(-3), T(4)), end);
    EXPECT_EQ(zent_error_code(), MATH_MIN_AT_BOUND);
    EXPECT_EQ(values(T(), T(-3), T(4), ZENT_XGUESS, static_cast<double>(end)), end);
    EXPECT_EQ(zent_error_code(), MATH_MIN_AT_BOUND);
    EXPECT_EQ(slopes(T(), T(-3), T(4)), end);
    EXPECT_EQ(zent_error_code(), sign > 0 ? MATH_MIN_AT_LOWERBOUND : MATH_MIN_AT_UPPERBOUND);
  }
  current = [](double x) { return (x - 1) * (x - 1); };  // the first step points outside
  EXPECT_NEAR(values(T(), T(-3), T(4), ZENT_XGUESS, -3.0, ZENT_STEP, -1.0), 1, 1e-3);
  EXPECT_NEAR(values(T(), T(-3), T(4), ZENT_XGUESS, 4.0, ZENT_STEP, 1.0), 1, 1e-3);
  current = [](double x) { return (x - 3.98) * (x - 3.98); };  // just inside
  EXPECT_NEAR(values(T(), T(-3), T(4)), 3.98, 1e-3);
  EXPECT_EQ(zent_error_code(), 0);
  // A step of the whole distance to an end that rounding takes past it.
  current = [](double x) { return x; };
  EXPECT_EQ(values(T(), T(1e-30), T(2), ZENT_XGUESS, 1.0, ZENT_STEP, -1.0), T(1e-30));
  EXPECT_EQ(zent_error_code(), MATH_MIN_AT_BOUND);
}

TYPED_TEST(Univariate, StartsWhereThereIsNoValue) {
  using T = TypeParam;
  current = [](double x) { return x < 0.2 ? NAN : x - std::log(x); };
  for (double guess : {-8.0, -3.0, 0.1}) {
    EXPECT_NEAR(values(T(), T(-8), T(12), ZENT_XGUESS, guess), 1, 3e-3);
    EXPECT_EQ(zent_error_code(), 0);
  }
}

TYPED_TEST(Univariate, TheFirstStepChoosesTheValley) {
  using T = TypeParam;
  current = [](double x) { return (x * x - 1) * (x * x - 1); };
  EXPECT_NEAR(values(T(), T(-3), T(3), ZENT_STEP, 0.25), 1, 2e-3);
  EXPECT_NEAR(values(T(), T(-3), T(3), ZENT_STEP, -0.25), -1, 2e-3);
}

TYPED_TEST(Univariate, RefusesWhatMakesNoSense) {
  using T = TypeParam;
  current = [](double x) { return x * x; };
  current_slope = [](double x) { return 2 * x; };
  T f = 77;
  const auto refused = [&](T x, long number) {
    EXPECT_TRUE(std::isnan(x));
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 5);
    EXPECT_EQ(f, T(77));
  };
  refused(values(T(), T(0), T(1), ZENT_XGUESS, 2.0, ZENT_FVALUE, &f), MATH_INIT_GUESS_OUT_BOUNDS);
  refused(values(T(), T(1), T(0), ZENT_FVALUE, &f), MATH_INIT_GUESS_OUT_BOUNDS);
  refused(values(T(), T(0), T(NAN), ZENT_FVALUE, &f), MATH_INIT_GUESS_OUT_BOUNDS);
  refused(values(T(), T(-INFINITY), T(1), ZENT_FVALUE, &f), MATH_INIT_GUESS_OUT_BOUNDS);
  refused(values(T(), T(0), T(1), ZENT_ERR_ABS, 2.0, ZENT_FVALUE, &f), MATH_INTERVAL_TOO_SMALL);
  refused(values(T(), T(1), T(1), ZENT_FVALUE, &f), MATH_INTERVAL_TOO_SMALL);
  refused(values(T(), T(0), T(1), ZENT_FVALUE, &f, ZENT_GRAD_TOL, 1.0), MATH_UNKNOWN_OPTION);
  refused(slopes(T(), T(0), T(1), ZENT_XGUESS, -1.0, ZENT_FVALUE, &f), MATH_NEED_A_LE_XGUESS_LE_B);
  refused(slopes(T(), T(1), T(1), ZENT_FVALUE, &f), MATH_INTERVAL_TOO_SMALL);
  refused(slopes(T(), T(0), T(1), ZENT_STEP, 1.0), MATH_UNKNOWN_OPTION);
  EXPECT_TRUE(std::isnan(zent_d_min_uncon(nullptr, 0, 1, 0)));
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(calls, 0);
}

TYPED_TEST(Univariate, StopsAtItsLimits) {
  using T = TypeParam;
  current = [](double x) { return std::exp(x) - 5 * x; };
  current_slope = [](double x) { return std::exp(x) - 5; };
  for (int limit : {1, 2, 3, 7}) {
    calls = 0;
    T f = 0;
    values(T(), T(-20), T(20), ZENT_MAX_FUNCTION_CALLS, limit, ZENT_FVALUE, &f);
    EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_FCN_EVAL);
    EXPECT_EQ(calls, limit);
    EXPECT_LE(f, T(1));
  }
  slopes(T(), T(-20), T(20), ZENT_MAX_FUNCTION_CALLS, 2);
  EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_FCN_EVAL);
  current = [](double) { return NAN; };  // nowhere defined
  values(T(), T(-20), T(20));
  EXPECT_EQ(zent_error_code(), MATH_NO_MORE_PROGRESS);
  constexpr T far = std::numeric_limits<T>::max();  // the length of the interval overflows
  values(T(), -far, far);
  EXPECT_EQ(zent_error_code(), MATH_NO_MORE_PROGRESS);
  current = [](double x) { return (x - 0.1) * (x - 0.1); };  // no accuracy given: as far as rounding goes
  EXPECT_NEAR(values(T(), T(-1), T(1), ZENT_ERR_ABS, 0.0), 0.1, 1e3 * std::sqrt(std::numeric_limits<T>::epsilon()));
  EXPECT_LT(calls, 1200);
}

double inner_center;
double inner(double y) {
  return (y - inner_center) * (y - inner_center) + 1;
}
double outer(double x, void* data) {
  ++*static_cast<long*>(data);
  inner_center = x;
  double f = 0;
  zent_d_min_uncon(inner, x - 1, x + 2, ZENT_FVALUE, &f, 0);
  return f + (x - 0.5) * (x - 0.5);
}
TEST(UnivariateNested, CallsInsideCalls) {
  be_quiet();
  long count = 0;
  EXPECT_NEAR(zent_d_min_uncon(nullptr, -2, 2, ZENT_FCN_W_DATA, outer, &count, 0), 0.5, 1e-4);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_GT(count, 5);
}

}  // namespace
