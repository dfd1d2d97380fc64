// The integrators beyond their values: options, errors, counts, lists, functions that fail or integrate in their turn, both
// forms.
#include "math/quadrature/int_fcn.hpp"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <limits>
#include <numbers>
#include <numeric>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zent/quadrature_stat.h"
#include "zents.h"

namespace {

const double pi = std::numbers::pi;
double one(double) {
  return 1;
}
double root(double x) {
  return std::sqrt(x);
}
double wave(double x) {
  return std::cos(90 * x);
}
double cusp(double x) {
  return std::sqrt(std::fabs(x - 0.4));
}
double decay(double x) {
  return std::exp(-x);
}
double identity_with(double x, void* data) {
  return x * *static_cast<double*>(data);
}
double (*const none)(double) = nullptr;

class IntFcn : public testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};

template <class Real>
bool is_library_nan(Real x) {
  const Real nan = zent::Machine<Real>::not_a_number;
  return std::memcmp(&x, &nan, sizeof x) == 0;
}

#define REFUSES(call, number, type)                \
  {                                                \
    EXPECT_TRUE(is_library_nan(call)) << #call;    \
    EXPECT_EQ(zent_error_code(), number) << #call; \
    EXPECT_EQ(zent_error_type(), type) << #call;   \
  }

TEST_F(IntFcn, ChecksItsArguments) {
  double p[1] = {0.5};
  REFUSES(zent_d_int_fcn(none, 0, 1, 0), 6002, 5);
  REFUSES(zent_d_int_fcn_smooth(none, 0, 1, 0), 6002, 5);
  REFUSES(zent_d_int_fcn_sing_pts(one, 0, 1, 0, nullptr, 0), 6002, 5);
  REFUSES(zent_d_int_fcn_sing_pts(one, 0, 1, -1, p, 0), 4013, 5);
  REFUSES(zent_d_int_fcn(one, 0, 1, ZENT_MAX_SUBINTER, 0, 0), 4001, 5);
  REFUSES(zent_d_int_fcn(one, 0, 1, ZENT_RULE, 0, 0), 4002, 5);
  REFUSES(zent_d_int_fcn(one, 0, 1, ZENT_RULE, 7, 0), 4002, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_ERR_ABS, -1.0, 0), 4003, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_ERR_ABS, NAN, 0), 4003, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_ERR_REL, -1.0, 0), 4004, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_ERR_ABS, -1.0, ZENT_ERR_REL, 2.0, 0), 4006, 5);  // the last one stands
  REFUSES(zent_d_int_fcn_smooth(one, 0, 1, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 0.0, 0), 4005, 5);
  REFUSES(zent_d_int_fcn_inf(one, 0, 1, 0), 4012, 5);
  REFUSES(zent_d_int_fcn_inf(one, 0, 2, 0), 4012, 5);
  REFUSES(zent_d_int_fcn_inf(one, 0, 8, 0), 4012, 5);
  REFUSES(zent_d_int_fcn_trig(one, 0, 1, 1, 1, 0), 4015, 5);
  REFUSES(zent_d_int_fcn_trig(one, 0, 1, ZENT_COS, 1, ZENT_MAX_MOMENTS, 0, 0), 4014, 5);
  REFUSES(zent_d_int_fcn_fourier(one, 0, ZENT_COS, 1, ZENT_MAX_CYCLES, 2, 0), 4016, 5);
  REFUSES(zent_d_int_fcn_fourier(one, 0, ZENT_COS, 1, ZENT_ERR_ABS, 0.0, 0), 4003, 5);
  REFUSES(zent_d_int_fcn_fourier(decay, 0, ZENT_COS, 1, ZENT_ERR_REL, 0.1, 0), 103, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 0, 1, 5, 0, 0, 0), 4020, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 0, 1, 1, -1, 0, 0), 4021, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 0, 1, 1, 0, -1, 0), 4022, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 1, 1, 1, 0, 0, 0), 4023, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 1, 0, 1, 0, 0, ZENT_ERR_REL, 1.0, 0), 4006, 5);
  REFUSES(zent_d_int_fcn_alg_log(one, 0, 1, 1, 0, 0, ZENT_MAX_SUBINTER, 1, 0), 4007, 5);
  REFUSES(zent_d_int_fcn_cauchy(one, 0, 1, 0, 0), 4024, 5);
  REFUSES(zent_d_int_fcn_cauchy(one, 0, 1, 1, 0), 4025, 5);
  REFUSES(zent_d_int_fcn_smooth(one, 0, 1, ZENT_MAX_SUBINTER, 5, 0), 103, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_RULE, 2, 0), 103, 5);
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, -1), 103, 5);
  REFUSES(zent_f_int_fcn(nullptr, 0, 1, 0), 6002, 5);
  REFUSES(zent_d_int_fcn(one, 0, 1, ZENT_MAX_SUBINTER, 1, 0), 4007, 4);  // also when the result is good
  REFUSES(zent_d_int_fcn_sing(one, 0, 1, ZENT_MAX_SUBINTER, 1, 0), 4007, 5);
  REFUSES(zent_d_int_fcn_cauchy(one, 0, 1, 0.5, ZENT_MAX_SUBINTER, 1, 0), 4007, 5);
  REFUSES(zent_d_int_fcn_trig(one, 0, 1, ZENT_SIN, 50, ZENT_MAX_SUBINTER, 1, 0), 4007, 5);
  REFUSES(zent_d_int_fcn_inf(decay, 0, ZENT_BOUND_INF, ZENT_MAX_SUBINTER, 1, 0), 4007, 5);
  EXPECT_NEAR(zent_d_int_fcn_cauchy(one, 0, 1, 0.25, ZENT_RULE, 99, 0), std::log(3.0), 1e-8);
}

TEST_F(IntFcn, ReadsItsOptions) {
  double two = 2, tolerance = 1e-3, error = -1;
  long n = 0;
  EXPECT_NEAR(zent_d_int_fcn_smooth(none, 0, 1, ZENT_FCN_W_DATA, identity_with, &two, 0), 1, 1e-15);
  EXPECT_NEAR(zent_d_int_fcn(root, 0, 1, ZENT_ERR_ABS_ADR, &tolerance, ZENT_ERR_REL_ADR, &tolerance, ZENT_ERR_EST, &error,
                             ZENT_N_EVALS, &n, 0),
              2 / 3.0, 1e-3);
  long usual = 0;
  zent_d_int_fcn(root, 0, 1, ZENT_N_EVALS, &usual, 0);
  EXPECT_LT(n, usual);
  EXPECT_GT(error, 0);
  EXPECT_LT(error, 1e-3);
}

// a = b, reversed ends, and break points that cannot be.
TEST_F(IntFcn, TakesOddRanges) {
  double p[3] = {0.2, 0.6, 0.4}, outside[1] = {2}, error = -1;
  EXPECT_EQ(zent_d_int_fcn_sing(root, 2, 2, 0), 0);
  EXPECT_EQ(zent_d_int_fcn(root, 2, 2, 0), 0);
  EXPECT_EQ(zent_d_int_fcn_trig(root, 2, 2, ZENT_COS, 3, 0), 0);
  EXPECT_EQ(zent_d_int_fcn_cauchy(root, 2, 2, 1, 0), 0);
  EXPECT_EQ(zent_d_int_fcn_smooth(root, 2, 2, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_cauchy(one, inf, inf, 1, 0)));
  EXPECT_NE(zent_error_code(), 0);  // equal, but nothing that has an integral
  EXPECT_NEAR(zent_d_int_fcn_sing_pts(one, 1, 0, 3, p, 0), -1, 1e-15);
  EXPECT_EQ(zent_d_int_fcn_sing_pts(one, 0, 1, 1, outside, ZENT_ERR_EST, &error, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(zent_d_int_fcn_sing_pts(one, 0, 1, 3, p, ZENT_MAX_SUBINTER, 2, 0), 0);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_NEAR(zent_d_int_fcn_fourier(decay, 5, ZENT_SIN, 0, 0), 1, 1e-8);  // from 0, whatever a is
  // Far too wide: area and errors fall by a hundred powers of ten, and what is left of the first ones is not taken for the sum.
  const auto bell = [](double x) { return std::exp(-x * x); };
  REFUSES(zent_d_int_fcn_alg_log(bell, -1, 1e100, ZENT_ALG_LEFT_LOG, 0, 0.3, ZENT_ERR_ABS, 1e-4, ZENT_ERR_REL, 1e-5,
                                 ZENT_MAX_SUBINTER, 132, 0),
          4007, 5);
  // The integral itself is beyond the largest number, which is no reason to trust it.
  zent_d_int_fcn_alg_log([](double x) { return x; }, 0.5, 1e300, ZENT_ALG_LEFT_LOG, 0, 0, 0);
  EXPECT_NE(zent_error_code(), 0);
}

// The formulas for the calls of f, with every rule.
TEST_F(IntFcn, CountsEvaluations) {
  double p[2] = {0.4, 0.7};
  long calls, n;
  for (int rule = 1; rule <= 6; ++rule) {
    EXPECT_NEAR(zent_d_int_fcn(cusp, 0, 1, ZENT_RULE, rule, ZENT_N_EVALS, &calls, ZENT_N_SUBINTER, &n, 0),
                2 / 3.0 * (std::pow(0.4, 1.5) + std::pow(0.6, 1.5)), 1e-8);
    EXPECT_GT(n, 5);
    EXPECT_EQ(calls, rule == 1 ? 30 * (n - 1) + 15 : (10 * rule + 1) * (2 * n - 1)) << rule;
  }
  zent_d_int_fcn_sing(cusp, 0, 1, ZENT_N_EVALS, &calls, ZENT_N_SUBINTER, &n, 0);
  EXPECT_EQ(calls, 42 * n - 21);
  zent_d_int_fcn_sing_pts(cusp, 0, 1, 2, p, ZENT_N_EVALS, &calls, ZENT_N_SUBINTER, &n, 0);
  EXPECT_EQ(calls, 63 + 42 * (n - 3));
  zent_d_int_fcn_inf(decay, 0, ZENT_BOUND_INF, ZENT_N_EVALS, &calls, ZENT_N_SUBINTER, &n, 0);
  EXPECT_EQ(calls, 30 * n - 15);
  zent_d_int_fcn_inf(wave, 0, ZENT_INF_INF, ZENT_MAX_SUBINTER, 7, ZENT_N_EVALS, &calls, ZENT_N_SUBINTER, &n, 0);
  EXPECT_EQ(n, 7);  // written although the limit was reached
  EXPECT_EQ(calls, 2 * (30 * n - 15));
}

// The lists: one error for each subinterval, together the estimate, in falling order, all of them also past the half of the
// limit.
TEST_F(IntFcn, ListsErrors) {
  for (int limit : {11, 12, 13, 17, 20, 25, 500}) {
    std::vector<double> list(limit, -1);
    std::vector<long> order(limit, -7);
    double estimate = 0;
    long n = 0;
    zent_d_int_fcn(cusp, 0, 1, ZENT_ERR_LIST, list.data(), ZENT_ERR_ORDER, order.data(), ZENT_ERR_EST, &estimate, ZENT_N_SUBINTER,
                   &n, ZENT_MAX_SUBINTER, limit, ZENT_ERR_REL, 1e-10, ZENT_ERR_ABS, 0.0, 0);
    ASSERT_GT(n, 9);
    EXPECT_NEAR(std::accumulate(list.begin(), list.begin() + n, 0.0), estimate, 1e-12);
    for (long k = 1; k < n; ++k) EXPECT_GE(list[order[k - 1] - 1], list[order[k] - 1]) << limit << " " << k;
    std::vector<long> sorted(order.begin(), order.begin() + n);
    std::sort(sorted.begin(), sorted.end());
    for (long k = 0; k < n; ++k) EXPECT_EQ(sorted[k], k + 1);
    EXPECT_TRUE(std::all_of(order.begin() + n, order.end(), [](long k) { return k == -7; }));
  }
  // More intervals at the start than the limit: no entry past it is touched.
  double p[3] = {0.2, 0.5, 0.7}, list[4] = {0, 0, 0, 99};
  long order[4] = {0, 0, 0, 99};
  REFUSES(zent_d_int_fcn_sing_pts(wave, 0, 1, 3, p, ZENT_MAX_SUBINTER, 3, ZENT_ERR_LIST, list, ZENT_ERR_ORDER, order, 0), 4007,
          5);
  EXPECT_EQ(list[3], 99);
  EXPECT_EQ(order[3], 99);
}

TEST_F(IntFcn, FewMomentsAreEnough) {
  const auto f = [](double x) { return 1 / (0.001 + x * x); };
  double reference = 0;
  for (int rows : {21, 4, 2, 1}) {
    const double v =
        zent_d_int_fcn_trig(f, -1, 2, ZENT_COS, 100, ZENT_MAX_MOMENTS, rows, ZENT_ERR_REL, 1e-11, ZENT_ERR_ABS, 0.0, 0);
    EXPECT_EQ(zent_error_code(), 0);
    if (rows == 21) reference = v;
    EXPECT_NEAR(v, reference, 1e-12 * std::fabs(reference));
  }
  EXPECT_NEAR(reference, 4.197811655428914486, 1e-10);
}

// Warnings come with a value.
TEST_F(IntFcn, WarnsOfRounding) {
  double error = 0;
  EXPECT_NEAR(zent_d_int_fcn_sing(root, 0, 1, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 1e-17, ZENT_ERR_EST, &error, 0), 2 / 3.0, 1e-14);
  EXPECT_EQ(zent_error_type(), 3);
  EXPECT_GE(zent_error_code(), 4008);
  EXPECT_LE(zent_error_code(), 4010);
  EXPECT_LT(error, 1e-12);
  // The half line that stands for a frequency of 0 has no relative tolerance, and the message says so.
  static std::string text;
  zent_error_options(
      ZENT_SET_PRINT, 3, 1, ZENT_ERROR_PRINT_PROC, +[](long, long, const char*, const char* t) { text = t; }, 0);
  const auto noisy = [](double x) { return std::exp(-x) * (1 + 1e-6 * std::sin(1e9 * x)); };
  EXPECT_NEAR(zent_d_int_fcn_fourier(noisy, 0, ZENT_COS, 0, ZENT_ERR_ABS, 1e-14, 0), 1, 1e-5);
  EXPECT_EQ(zent_error_code(), 4008);
  zent_error_options(ZENT_SET_PRINT, 3, 0, ZENT_ERROR_PRINT_PROC, nullptr, 0);
  EXPECT_NE(text.find("err_rel = 0.0"), std::string::npos) << text;
}

double refused_machine(double x) {
  return x > 0.9 ? zent_d_machine(99) : x;
}
double nested(double x) {
  double data = x;
  return zent_d_int_fcn_sing(none, 0, x, ZENT_FCN_W_DATA, identity_with, &data, 0);  // x^3 / 2
}
double nested_warning(double x) {
  return zent_d_int_fcn_sing(root, 0, 1, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 1e-17, 0) + x;
}

long printed_numbers[100], printed_count;
void count_prints(long, long number, const char*, const char*) {
  if (printed_count < 100) printed_numbers[printed_count++] = number;
}

TEST_F(IntFcn, FunctionsThatFailOrIntegrate) {
  EXPECT_NEAR(zent_d_int_fcn(nested, 0, 2, 0), 2, 1e-12);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_NEAR(zent_d_int_fcn_inf([](double x) { return nested(std::exp(-x)); }, 0, ZENT_BOUND_INF, 0), 1 / 6.0, 1e-10);
  EXPECT_NEAR(zent_d_int_fcn_smooth(nested_warning, 0, 1, 0), 2 / 3.0 + 0.5, 1e-12);
  // An error of f shows as f's, once for each call; the integral is lost, and no more than one rule goes on.
  zent_error_options(ZENT_SET_PRINT, 5, 1, ZENT_ERROR_PRINT_PROC, count_prints, 0);
  printed_count = 0;
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn_sing(refused_machine, 0, 1, 0)));
  EXPECT_EQ(zent_error_code(), 132);
  EXPECT_GE(printed_count, 1);
  EXPECT_LE(printed_count, 21);
  for (long k = 0; k < printed_count; ++k) EXPECT_EQ(printed_numbers[k], 132);
  zent_error_options(ZENT_SET_PRINT, 5, 0, ZENT_ERROR_PRINT_PROC, nullptr, 0);
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn_cauchy(refused_machine, 0, 1, 0.3, 0)));
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn_smooth(refused_machine, 0, 1, 0)));
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn_alg_log(refused_machine, 0, 1, 1, 0.5, 0, 0)));
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn_fourier(refused_machine, 0, ZENT_COS, 1, 0)));
  EXPECT_EQ(zent_error_code(), 132);
}

// Integrals that a jump abandons, five deep at each call of an outer integrand that goes on.
jmp_buf out;
double leave(double, void* levels) {
  long less = *static_cast<long*>(levels) - 1;
  if (less == 0) longjmp(out, 1);
  return zent_d_int_fcn(none, 0, 1, ZENT_FCN_W_DATA, leave, &less, 0);
}
void abandon() {
  zent_trap_state trap;
  zent_trap_mark(&trap);
  long levels = 5;
  if (setjmp(out) == 0) {
    leave(0, &levels);
  } else {
    zent_trap_release(&trap);
  }
}
double careful(double x) {
  const volatile double kept = x;
  abandon();
  return kept;
}
double careful_in_plane(double x, double) {
  return careful(x);
}
double careful_at_first(double x) {
  static long calls = 0;
  if (++calls % 2 == 1) return careful(x);
  return zent_d_machine(99);
}

TEST_F(IntFcn, AbandonedCallsLeaveNothing) {
  const auto handler = std::signal(SIGSEGV, SIG_DFL);
  std::signal(SIGSEGV, handler);
  const auto zero = [](double) { return 0.0; };
  const auto one_high = [](double) { return 1.0; };
  std::size_t used = 0;
  for (int k = 0; k < 40; ++k) {
    EXPECT_NEAR(zent_d_int_fcn(careful, 0, 1, ZENT_RULE, 6, 0), 0.5, 1e-15);
    EXPECT_NEAR(zent_d_int_fcn_smooth(careful, 0, 1, 0), 0.5, 1e-15);
    EXPECT_NEAR(zent_d_int_fcn_alg_log(careful, 0, 1, ZENT_ALG, 1, 0, 0), 1 / 3.0, 1e-14);
    EXPECT_NEAR(zent_d_int_fcn_2d(careful_in_plane, zero, one_high, 0, 1, ZENT_RULE, 1, 0), 0.5, 1e-15);
    EXPECT_EQ(zent_error_code(), 0);
    const std::size_t now = mallinfo2().uordblks;
    if (k == 0) used = now;
    EXPECT_EQ(now, used);
  }
  EXPECT_EQ(zent::error_state<zent::Math>.top, zent::error_state<zent::Math>.frame);
  EXPECT_EQ(zent::error_state<zent::Math>.jump_depth, 0);
  EXPECT_EQ(std::signal(SIGSEGV, handler), handler);
  // What a later call of f raises reaches the integral, not the frames that an earlier one left.
  EXPECT_TRUE(is_library_nan(zent_d_int_fcn(careful_at_first, 0, 1, 0)));
  EXPECT_EQ(zent_error_code(), 132);
}

float f_log(float x) {
  return std::log(x);
}
float f_decay(float x) {
  return std::exp(-x);
}
float f_one(float) {
  return 1;
}
float f_scaled(float x, void* data) {
  return x * *static_cast<float*>(data);
}

TEST_F(IntFcn, SinglePrecision) {
  float half = 0.5F, error = 0, tight = 1e-5F;
  float points[1] = {0};
  EXPECT_NEAR(zent_f_int_fcn_sing(f_log, 0, 1, ZENT_ERR_EST, &error, 0), -1, 4e-4);
  EXPECT_LE(error, 4e-4);
  EXPECT_NEAR(zent_f_int_fcn(f_decay, 0, 1, ZENT_RULE, 6, 0), 1 - std::exp(-1), 1e-6);
  EXPECT_NEAR(zent_f_int_fcn_sing_pts([](float x) { return 1 / std::sqrt(std::fabs(x)); }, -1, 4, 1, points, 0), 6, 3e-3);
  EXPECT_NEAR(zent_f_int_fcn_inf(f_decay, 1, ZENT_BOUND_INF, ZENT_ERR_REL_ADR, &tight, ZENT_ERR_ABS, 0.0, 0), std::exp(-1), 1e-5);
  EXPECT_NEAR(zent_f_int_fcn_trig(f_decay, 0, 2, ZENT_SIN, 50, ZENT_ERR_ABS, 1e-5, 0),
              (50 - std::exp(-2) * (std::sin(100) + 50 * std::cos(100))) / 2501, 1e-5);
  EXPECT_NEAR(zent_f_int_fcn_fourier(f_decay, 0, ZENT_COS, 2, 0), 0.2, 4e-4);
  EXPECT_NEAR(zent_f_int_fcn_alg_log(f_one, 0, 1, ZENT_ALG_LOG, 0, 0, 0), 2 - pi * pi / 6, 1e-4);
  EXPECT_NEAR(zent_f_int_fcn_cauchy(f_one, 0, 1, 0.25F, 0), std::log(3.0), 1e-3);
  EXPECT_NEAR(zent_f_int_fcn_smooth(nullptr, 0, 2, ZENT_FCN_W_DATA, f_scaled, &half, 0), 1, 1e-6);
  EXPECT_EQ(zent_error_code(), 0);
}

// The statistics half: the same values, its own error state.
TEST_F(IntFcn, TheOtherHalf) {
  using namespace zent::quadrature;
  auto o = default_options<double>();
  double p[1] = {0.4};
  EXPECT_EQ(l_int_fcn<zent::Stat>(cusp, 0.0, 1.0, o), zent_d_int_fcn(cusp, 0, 1, 0));
  EXPECT_EQ(l_int_fcn_inf<zent::Stat>(decay, 0.0, long{ZENT_BOUND_INF}, o), zent_d_int_fcn_inf(decay, 0, ZENT_BOUND_INF, 0));
  EXPECT_EQ(l_int_fcn_sing_pts<zent::Stat>(cusp, 0.0, 1.0, 1L, p, o), zent_d_int_fcn_sing_pts(cusp, 0, 1, 1, p, 0));
  EXPECT_EQ(zents_n1rty(0), 0);
  o.max_subinter = 1;
  const char* frame = "frame";
  zents_e1psh(frame);
  EXPECT_TRUE(is_library_nan(l_int_fcn<zent::Stat>(cusp, 0.0, 1.0, o)));
  EXPECT_EQ(zents_n1rty(0), 4);
  zents_e1pop(frame);
  EXPECT_EQ(zents_error_code(), 4007);
  EXPECT_EQ(zent_error_code(), 0);

  const auto f = [](double x, void*) { return std::exp(-x); };
  std::vector<double> a(50), b(50), r(50), e(50);
  std::vector<long> order(50);
  double value[2], error[2];
  long calls, ier, last;
  zents_dq3agi(f, nullptr, 1, 1, 0, 1e-9, 50, &value[0], &error[0], &calls, &ier, a.data(), b.data(), r.data(), e.data(),
               order.data(), &last);
  EXPECT_EQ(ier, 0);
  EXPECT_EQ(calls, 30 * last - 15);
  EXPECT_NEAR(value[0], std::exp(-1), 1e-10);
  zent_dq3agi(f, nullptr, 1, 1, 0, 1e-9, 50, &value[1], &error[1], &calls, &ier, a.data(), b.data(), r.data(), e.data(),
              order.data(), &last);
  EXPECT_EQ(value[0], value[1]);
}

}  // namespace
