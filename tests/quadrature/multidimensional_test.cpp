// Integrals over plane regions and boxes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/crash.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

long calls;
const double inf = std::numeric_limits<double>::infinity();

// Products of exp(-x), whose integral over [0, 1]^n is (1 - 1/e)^n.
template <class Real>
Real decay(long n, Real* x) {
  ++calls;
  Real s = 0;
  for (long i = 0; i < n; ++i) s += x[i];
  for (long i = 0; i < n; ++i) x[i] = -7;  // the point is the function's to destroy
  return std::exp(-s);
}
double decay_integral(long n) {
  return std::pow(1 - std::exp(-1.0), static_cast<double>(n));
}

TEST(HyperRect, IntegratesAndCounts) {
  be_quiet();
  for (long n = 1; n <= 5; ++n) {
    std::vector<double> a(n, 0), b(n, 1);
    double estimate = -1;
    calls = 0;
    const double v =
        zent_d_int_fcn_hyper_rect(decay<double>, n, a.data(), b.data(), ZENT_MAX_EVALS, 2000000, ZENT_ERR_EST, &estimate, 0);
    EXPECT_LE(zent_error_type(), 3);
    EXPECT_NEAR(v, decay_integral(n), 1e-14);
    EXPECT_LT(estimate, 1.5e-8);
    // Of exp the rules with 4 and 8 points a side agree, those with 2 and 4 do not.
    EXPECT_EQ(calls, (1L << n) + (1L << 2 * n) + (1L << 3 * n)) << n;
    std::vector<float> fa(n, 0), fb(n, 1);
    EXPECT_NEAR(zent_f_int_fcn_hyper_rect(decay<float>, n, fa.data(), fb.data(), 0), decay_integral(n), 2e-6) << n;
  }
}

TEST(HyperRect, IsExactForPolynomialsOfEachRule) {
  be_quiet();
  // Degree 2^(k+1) - 1 in each variable, on a box turned around in the second one.
  static int degree;
  double a[] = {0, 2, -1}, b[] = {2, 0, 1};
  for (int k = 2; k <= 5; ++k) {
    degree = (1 << k) - 2;
    const auto f = [](long, double* x) {
      return std::pow(x[0] / 2, degree) * std::pow(x[1] / 2, degree + 1) * std::pow(x[2], degree);
    };
    const double v = zent_d_int_fcn_hyper_rect(f, 3L, a, b, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 1e-13, ZENT_MAX_EVALS, 16000000, 0);
    EXPECT_EQ(zent_error_type(), 0) << k;
    const double expected = 2.0 / (degree + 1) * (-2.0 / (degree + 2)) * (2.0 / (degree + 1));
    EXPECT_NEAR(v / expected, 1, 1e-13) << k;
  }
}

TEST(HyperRect, StaysWithinItsBudget) {
  be_quiet();
  const auto kink = [](long, double* x) { return ++calls, std::abs(x[0] - 0.3) < 0.1 ? 1.0 : 0.0; };
  double a[20] = {}, b[20], estimate = -1;
  for (double& x : b) x = 1;
  const auto ends = [&](long n, int max_evals, long expected) {
    calls = 0;
    estimate = -1;
    EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(kink, n, a, b, ZENT_ERR_EST, &estimate, ZENT_MAX_EVALS, max_evals,
                                                     ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 1e-12, 0)));
    EXPECT_EQ(zent_error_code(), MATH_NOT_CONVERGENT);
    EXPECT_EQ(zent_error_type(), 4);
    EXPECT_EQ(calls, expected) << n << " " << max_evals;
  };
  ends(1, 256, 254);  // 2^(k+1) is the count that is tested
  ends(1, 255, 126);
  ends(1, 1000, 510);  // all rules
  ends(2, 1000, 4 + 16 + 64 + 256);
  EXPECT_GT(estimate, 0);
  EXPECT_LT(estimate, 1);
  ends(2, 1, 0);
  EXPECT_EQ(estimate, std::numeric_limits<double>::max());
  ends(10, 1000000, 1024);
  ends(20, 1000000, 0);
  // 4030 by itself is a warning.
  const auto one = [](long, double*) { return 1.0; };
  EXPECT_EQ(zent_d_int_fcn_hyper_rect(one, 1L, a, b, ZENT_MAX_EVALS, 257, 0), 1);
  EXPECT_EQ(zent_error_code(), MATH_MAX_EVALS_TOO_LARGE);
  EXPECT_EQ(zent_d_int_fcn_hyper_rect(one, 2L, a, b, ZENT_MAX_ITN, 65536, 0), 1);
  EXPECT_EQ(zent_error_code(), 0);
}

struct Sum {
  double operator()(long n, double* x) const {
    double s = 0;
    for (long i = 0; i < n; ++i) s += (static_cast<double>(i) + 1) * x[i];
    return s * s;
  }
};

// The estimate after n points from the sequence itself.
template <class F>
double faure_mean(F f, long ndim, long n, long skip) {
  zent_faure* s =
      skip < 0 ? zent_faure_sequence_init(ndim, 0) : zent_faure_sequence_init(ndim, ZENT_SKIP, static_cast<int>(skip), 0);
  std::vector<double> x(ndim);
  double sum = 0;
  for (long k = 0; k < n; ++k) sum += f(ndim, zent_d_faure_next_point(s, ZENT_RETURN_USER, x.data(), 0));
  zent_faure_sequence_free(s);
  return sum / static_cast<double>(n);
}

TEST(QuasiMonteCarlo, IsTheMeanOverTheSequence) {
  be_quiet();
  std::vector<double> a(6, 0), b(6, 1);
  for (long skip : {-1, 3, 5000}) {
    calls = 0;
    double estimate = -1;
    const auto f = [](long n, double* x) { return ++calls, Sum()(n, x); };
    const double v = zent_d_int_fcn_qmc(f, 6L, a.data(), b.data(), ZENT_ERR_EST, &estimate, ZENT_SKIP,
                                        static_cast<int>(skip < 0 ? -999 : skip), 0);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_EQ(calls % 1000, 0);
    EXPECT_GE(calls, 2000);
    EXPECT_NEAR(v, faure_mean(Sum(), 6, calls, skip), 1e-11);
    EXPECT_NEAR(v, 441.0 / 4 + 91.0 / 12, 0.02 * v);  // mean^2 + variance
    EXPECT_LE(estimate, 1e-4 * v);
    EXPECT_GE(estimate, 0);
  }
  // A box turned around in one dimension, and the single form.
  double lower[] = {1, 0}, upper[] = {0, 3};
  const auto g = [](long, double* x) { return x[0] * x[1]; };
  EXPECT_NEAR(zent_d_int_fcn_qmc(g, 2L, lower, upper, ZENT_ERR_REL, 1e-7, 0), -2.25, 2e-3);
  float fa[] = {0, 0, 0}, fb[] = {1, 1, 1};
  EXPECT_NEAR(zent_f_int_fcn_qmc(decay<float>, 3L, fa, fb, ZENT_ERR_REL, 1e-6, 0), decay_integral(3), 1e-3);
}

TEST(QuasiMonteCarlo, Ends) {
  be_quiet();
  double a[] = {-1, -1}, b[] = {1, 1}, estimate = -1;
  static double value;
  const auto f = [](long, double*) { return ++calls, value; };
  for (double bad : {static_cast<double>(NAN), inf}) {
    value = bad;
    calls = 0;
    EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(f, 2L, a, b, 0)));
    EXPECT_EQ(zent_error_code(), MATH_NOT_CONVERGENT);
    EXPECT_EQ(calls, 2000);
  }
  value = 0;
  EXPECT_EQ(zent_d_int_fcn_qmc(f, 2L, a, b, ZENT_ERR_EST, &estimate, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(estimate, 0);
  const auto odd = [](long, double* x) { return ++calls, x[0]; };
  calls = 0;
  EXPECT_NEAR(zent_d_int_fcn_qmc(odd, 2L, a, b, 0), 0, 0.02);
  EXPECT_LT(calls, 100000);
  for (long most : {1, 999, 1000, 2500}) {
    calls = 0;
    EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(odd, 2L, a, b, ZENT_MAX_EVALS, static_cast<int>(most), ZENT_ERR_ABS, 0.0,
                                              ZENT_ERR_REL, 0.0, ZENT_ERR_EST, &estimate, 0)));
    EXPECT_EQ(zent_error_code(), MATH_NOT_CONVERGENT);
    EXPECT_EQ(calls, 1000 + most);
  }
}

double triangle_low(double) {
  return 0;
}
double triangle_high(double x) {
  return x;
}

TEST(TwoDimensions, IntegratesBetweenCurves) {
  be_quiet();
  const auto f = [](double x, double y) { return ++calls, std::exp(x + y); };
  const double e = std::exp(1.0), exact = (e - 1) * (e - 1) / 2;  // over the triangle y < x
  for (int rule = 1; rule <= 6; ++rule) {
    long evaluations = 0, intervals = 0;
    double estimate = -1;
    calls = 0;
    const double v = zent_d_int_fcn_2d(f, triangle_low, triangle_high, 0.0, 1.0, ZENT_RULE, rule, ZENT_N_EVALS, &evaluations,
                                       ZENT_N_SUBINTER, &intervals, ZENT_ERR_EST, &estimate, 0);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(v, exact, 1e-13);
    EXPECT_EQ(calls, evaluations);
    EXPECT_EQ(calls, 21 * (rule == 1 ? 15 : 10 * rule + 1));  // one application outside, 21 points inside
    EXPECT_EQ(intervals, 1);
    EXPECT_GE(estimate, 0);
    EXPECT_LT(estimate, 1e-8);
  }
  EXPECT_NEAR(zent_d_int_fcn_2d(f, triangle_high, triangle_low, 0.0, 1.0, 0), -exact, 1e-13);
  EXPECT_NEAR(zent_d_int_fcn_2d(f, triangle_low, triangle_high, 1.0, 0.0, 0), -exact, 1e-13);
  const auto single = [](float x, float y) { return std::exp(x + y); };
  EXPECT_NEAR(zent_f_int_fcn_2d(
                  single, [](float) { return 0.0F; }, [](float x) { return x; }, 0.0F, 1.0F, 0),
              exact, 2e-6);
  // A half disc: the outer integrand has the singularity of a root at both ends.
  long intervals = 0, order[500];
  double errors[500];
  const auto arc = [](double x) { return std::sqrt(std::max(0.0, 1 - x * x)); };
  double scale = 2;
  const auto with_data = [](double, double, void* p) { return *static_cast<double*>(p); };
  const double half_disc = zent_d_int_fcn_2d(nullptr, triangle_low, arc, -1.0, 1.0, ZENT_FCN_W_DATA,
                                             static_cast<double (*)(double, double, void*)>(with_data), &scale, ZENT_N_SUBINTER,
                                             &intervals, ZENT_ERR_LIST, errors, ZENT_ERR_ORDER, order, 0);
  EXPECT_NEAR(half_disc, M_PI, 2e-7);
  ASSERT_GT(intervals, 4);
  for (long k = 1; k < intervals; ++k) {
    ASSERT_GE(order[k], 1);
    ASSERT_LE(order[k], intervals);
    EXPECT_GE(errors[order[k - 1] - 1], errors[order[k] - 1]);
  }
}

TEST(TwoDimensions, FailsWithAReason) {
  be_quiet();
  const auto step = [](double, double y) { return ++calls, y > 0.3123 ? 1.0 : 0.0; };
  const auto none = [](double, double) { return ++calls, static_cast<double>(NAN); };
  const auto peak = [](double x, double) { return ++calls, 1 / std::sqrt(std::abs(x - 1.0 / 3)); };
  const auto unit = [](double) { return 1.0; };
  const auto ends = [&](auto f, long number, long type, auto... options) {
    calls = 0;
    EXPECT_TRUE(std::isnan(zent_d_int_fcn_2d(f, triangle_low, unit, 0.0, 1.0, options..., 0)));
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), type);
    return calls;
  };
  EXPECT_EQ(ends(step, MATH_MAX_STEPS_ALLOWED, 4), 87);  // no call after it
  EXPECT_EQ(ends(none, MATH_MAX_STEPS_ALLOWED, 4), 87);
  EXPECT_EQ(ends(peak, MATH_MAX_SUBINTERVALS, 5, ZENT_MAX_SUBINTER, 4), 7 * 21 * 21);
  EXPECT_EQ(ends(step, MATH_MAX_SUBINTER_SMALL, 5, ZENT_MAX_SUBINTER, 0), 0);
  EXPECT_EQ(ends(step, MATH_RULE_SMALL, 5, ZENT_RULE, 7), 0);
  EXPECT_EQ(ends(step, MATH_ERR_ABS_SMALL, 5, ZENT_ERR_ABS, -1.0), 0);
  EXPECT_EQ(ends(step, MATH_ERR_REL_SMALL, 5, ZENT_ERR_REL, -1.0), 0);
  EXPECT_EQ(ends(step, MATH_ERR_REL_BIG, 5, ZENT_ERR_REL, 1.0), 0);
  EXPECT_EQ(ends(step, MATH_ERR_TOL_ZERO, 5, ZENT_ERR_REL, 0.0, ZENT_ERR_ABS, 0.0), 0);
  EXPECT_EQ(ends(step, MATH_UNKNOWN_OPTION, 5, ZENT_MAX_MOMENTS, -1), 0);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_2d(step, nullptr, unit, 0.0, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
}

// Every integrator inside the function of every other one, twice deep.
double nested(int kind);
int depth;
double inside(double x) {
  ++calls;
  if (depth >= 2) return x;
  ++depth;
  const double v = nested(static_cast<int>(calls % 3));
  --depth;
  return x * v;
}
double nested(int kind) {
  double a[] = {0, 0}, b[] = {1, 2};
  switch (kind) {
    case 0:
      return zent_d_int_fcn_2d([](double x, double y) { return inside(x) * y; }, triangle_low, triangle_high, 0.0, 2.0, ZENT_RULE,
                               1, ZENT_ERR_REL, 1e-6, 0) /
             2;  // 2: x^3 / 2 over 0 to 2
    case 1:
      return zent_d_int_fcn_hyper_rect([](long, double* x) { return inside(x[0]); }, 2L, a, b, ZENT_ERR_REL, 1e-6, 0);
    default:
      return zent_d_fcn_derivative([](double x) { return inside(x * x); }, 0.5, 0);
  }
}

TEST(Nesting, LeavesTheOuterIntegralAlone) {
  be_quiet();
  for (int kind = 0; kind < 3; ++kind) {
    depth = 0;
    EXPECT_NEAR(nested(kind), 1, 1e-5) << kind;
    EXPECT_LE(zent_error_type(), 3);
    EXPECT_EQ(depth, 0);
  }
}

TEST(UserErrors, ShowAsTheirOwn) {
  be_quiet();
  double a[] = {0, 0}, b[] = {1, 1};
  const auto fails = [](long, double* x) { return ++calls == 5 ? zent_d_machine(9) : x[0]; };
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(fails, 2L, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_INTEGER_OUT_OF_RANGE);
  EXPECT_EQ(calls, 5);
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(fails, 2L, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_INTEGER_OUT_OF_RANGE);
  EXPECT_EQ(calls, 5);
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_2d([](double x, double) { return ++calls == 5 ? zent_d_machine(9) : x; }, triangle_low,
                                           triangle_high, 0.0, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_INTEGER_OUT_OF_RANGE);
  EXPECT_EQ(calls, 21);
  const auto falls = [](long, double* x) { return crash(), x[0]; };
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(falls, 2L, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_MAJOR_VIOLATION);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(falls, 2L, a, b, 0)));
  EXPECT_TRUE(
      std::isnan(zent_d_int_fcn_2d([](double, double y) { return crash(), y; }, triangle_low, triangle_high, 0.0, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_MAJOR_VIOLATION);
  // A function that repairs its own error costs the call nothing but the value.
  const auto bad = [](long, double*) { return -inf; };
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(bad, 2L, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_NOT_CONVERGENT);
}

TEST(Boxes, RefuseBadArguments) {
  be_quiet();
  double a[21] = {}, b[21] = {};
  using Function = double (*)(double (*)(long, double*), long, double*, double*, ...);
  for (Function function : {zent_d_int_fcn_hyper_rect, zent_d_int_fcn_qmc}) {
    const auto refused = [&](long number, auto... options) {
      calls = 0;
      EXPECT_TRUE(std::isnan(function(decay<double>, 2L, a, b, options..., 0)));
      EXPECT_EQ(zent_error_code(), number);
      EXPECT_EQ(zent_error_type(), 5);
      EXPECT_EQ(calls, 0);
    };
    double minus = -1;
    refused(MATH_MAX_EIGEN_GT_ZERO, ZENT_MAX_EVALS, 0);
    refused(MATH_ERR_ABS_SMALL, ZENT_ERR_ABS_ADR, &minus);
    refused(MATH_ERR_REL_SMALL, ZENT_ERR_REL_ADR, &minus);
    refused(MATH_ERR_REL_SMALL, ZENT_ERR_REL, static_cast<double>(NAN));
    refused(MATH_UNKNOWN_OPTION, ZENT_RULE, -1);
    EXPECT_TRUE(std::isnan(function(nullptr, 2L, a, b, 0)));
    EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
    EXPECT_TRUE(std::isnan(function(decay<double>, 2L, a, nullptr, 0)));
    EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  }
  for (long n : {-1, 0, 21}) {
    EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(decay<double>, n, a, b, 0)));
    EXPECT_EQ(zent_error_code(), MATH_DIM_OF_HYPER_REC);
  }
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(decay<double>, 0L, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_DIM_OF_HYPER_REC_0);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(decay<double>, 1L << 60, a, b, 0)));
  EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(decay<double>, 3L, a, b, ZENT_BASE, 2, 0)));
  EXPECT_EQ(zent_error_code(), MATH_BASE_NOT_PRIME);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_qmc(decay<double>, 3L, a, b, ZENT_SKIP, 0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_SKIP_NEG);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_hyper_rect(decay<double>, 2L, a, b, ZENT_BASE, 7, 0)));
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(zent_d_int_fcn_qmc(decay<double>, 2L, a, b, 0), 0);  // an empty box
  EXPECT_EQ(zent_error_code(), 0);
}

}  // namespace
