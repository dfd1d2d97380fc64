// Errors, alerts and the odd arguments of the error, gamma and beta functions, and the series support.
#include <bit>

#include "reference.hpp"

namespace {

using namespace functions_test;

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Condition {
  double value;  // not-a-number: the failure value
  long type, number;
};

template <class Real>
void expect(Real found, long type, long number, Condition wanted, const std::string& what) {
  if (std::isnan(wanted.value)) {
    EXPECT_TRUE(is_failure(found)) << what;
  } else if (std::isinf(wanted.value)) {
    EXPECT_EQ(found, wanted.value) << what;
  } else {
    EXPECT_NEAR(found, wanted.value, 1e-5 * std::abs(wanted.value)) << what;
  }
  EXPECT_EQ(type, wanted.type) << what;
  EXPECT_EQ(number, wanted.number) << what;
}

#define NONE std::nan("")

// The call is made before the error words are read: an argument list alone would leave the order open.
template <class Real>
struct Made {
  Real value;
  long type, number;
};
#define MATH(call)                                                                  \
  ([&] {                                                                            \
    const auto v = call;                                                            \
    return Made<std::remove_const_t<decltype(v)>>{v, zent_n1rty(1), zent_n1rcd(1)}; \
  }())
#define STAT(call)                                                                    \
  ([&] {                                                                              \
    const auto v = call;                                                              \
    return Made<std::remove_const_t<decltype(v)>>{v, zents_n1rty(1), zents_n1rcd(1)}; \
  }())
#define EXPECT_MADE(half, call, ...)                                           \
  {                                                                            \
    const auto made = half(call);                                              \
    expect(made.value, made.type, made.number, Condition{__VA_ARGS__}, #call); \
  }

TEST(Errors, OfTheErrorFunctions) {
  be_quiet();
  EXPECT_MADE(MATH, zent_d_erfc(30), 0, 2, MATH_LARGE_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_f_erfc(12), 0, 2, MATH_LARGE_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d_erfc(infinity), 0, 2, MATH_LARGE_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d_erfc(-infinity), 2, 0, 0);
  EXPECT_MADE(MATH, zent_d_erfc(26.5), zent_d_erfc(26.5), 0, 0);
  EXPECT_MADE(MATH, zent_d_erf(infinity), 1, 0, 0);
  EXPECT_MADE(MATH, zent_d_erf_inverse(1), NONE, 4, MATH_REAL_OUT_OF_RANGE);
  EXPECT_MADE(MATH, zent_d_erf_inverse(-infinity), NONE, 4, MATH_REAL_OUT_OF_RANGE);
  EXPECT_MADE(MATH, zent_d_erf_inverse(1 - 0x1p-50), 5.68612844131, 3, MATH_LARGE_ABS_ARG_WARN);
  for (double y : {0.0, -1.0, 2.0, 3.0, infinity}) {
    EXPECT_MADE(MATH, zent_d_erfc_inverse(y), NONE, 4, MATH_REAL_OUT_OF_RANGE);
    EXPECT_MADE(STAT, zents_d_erfc_inverse(y), NONE, 4, STAT_REAL_OUT_OF_RANGE);
  }
  EXPECT_MADE(MATH, zent_d_erfc_inverse(2 - 0x1p-50), -5.68612844131, 3, MATH_LARGE_ARG_WARN);
  EXPECT_MADE(STAT, zents_d_erfc_inverse(2 - 0x1p-50), -5.68612844131, 3, STAT_LARGE_ARG_WARN);
  EXPECT_MADE(MATH, zent_d_erfc_inverse(0x1p-1074), 27.2132932108, 0, 0);
}

TEST(Errors, OfGamma) {
  be_quiet();
  EXPECT_MADE(MATH, zent_d_gamma(0), NONE, 5, MATH_ARG_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma(-0.0), NONE, 5, MATH_ARG_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma(-1), NONE, 5, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(MATH, zent_d_gamma(-10), NONE, 5, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(MATH, zent_d_gamma(-11), NONE, 4, MATH_NEAR_NEG_INT_FATAL);
  EXPECT_MADE(MATH, zent_d_gamma(-170), NONE, 4, MATH_NEAR_NEG_INT_FATAL);
  EXPECT_MADE(MATH, zent_d_gamma(-1.0000000001), 1e10, 3, MATH_NEAR_NEG_INT_WARN);
  EXPECT_MADE(MATH, zent_d_gamma(-12 - 0x1p-30), -0x1p30 / 479001600, 3, MATH_NEAR_NEG_INT_WARN);
  EXPECT_MADE(MATH, zent_d_gamma(1e-308), NONE, 4, MATH_ZERO_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_gamma(-1e-320), -infinity, 0, 0);  // the guard looks at the fraction, which is 1 here
  EXPECT_MADE(MATH, zent_d_gamma(171.7), NONE, 4, MATH_LARGE_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_gamma(infinity), NONE, 4, MATH_LARGE_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_gamma(-171.5), 0, 2, MATH_SMALL_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d_gamma(-infinity), 0, 2, MATH_SMALL_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_f_gamma(36), NONE, 4, MATH_LARGE_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_f_gamma(-3), NONE, 5, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(STAT, zents_d_gamma(0), NONE, 5, STAT_ARG_ZERO);
  EXPECT_MADE(MATH, zent_d_log_gamma(0), NONE, 5, MATH_ARG_ZERO);
  EXPECT_MADE(MATH, zent_d_log_gamma(-4), NONE, 5, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(MATH, zent_d_log_gamma(-11), NONE, 4, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(MATH, zent_d_log_gamma(-0x1p60), NONE, 4, MATH_NEGATIVE_INTEGER);
  EXPECT_MADE(MATH, zent_d_log_gamma(1e-310), NONE, 4, MATH_ZERO_ARG_OVERFLOW);  // through gamma, which overflows
  EXPECT_MADE(MATH, zent_d_log_gamma(infinity), NONE, 4, MATH_LARGE_ABS_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_log_gamma(-12 - 0x1p-40), 40 * std::log(2.0) - std::log(479001600.0), 3, MATH_NEAR_NEG_INT_WARN);
  EXPECT_MADE(MATH, zent_d9lgmc(9.99), NONE, 4, MATH_SMALL_ARGUMENT);
  EXPECT_MADE(MATH, zent_d9lgmc(1e307), 0, 2, MATH_LARGE_ARG_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d9lgmc(1e9), 1 / 12e9, 0, 0);
  EXPECT_MADE(STAT, zents_r9lgmc(10), 0.0083305634, 0, 0);
}

TEST(Errors, OfBetaAndTheIncompleteForms) {
  be_quiet();
  EXPECT_MADE(MATH, zent_d_beta(0, 1), NONE, 5, MATH_BETA_NEG_ARG);
  EXPECT_MADE(MATH, zent_d_beta(1, -2), NONE, 5, MATH_BETA_NEG_ARG);
  EXPECT_MADE(MATH, zent_d_beta(1000, 1000), 0, 2, MATH_BETA_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d_beta(1e-310, 1), NONE, 4, MATH_ZERO_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_beta(infinity, 1), 0, 2, MATH_BETA_UNDERFLOW);
  EXPECT_MADE(MATH, zent_d_log_beta(0, 1), NONE, 5, MATH_BOTH_ARGS_ARE_LT_ZERO);
  EXPECT_MADE(MATH, zent_d_log_beta(1e-310, 1), NONE, 4, MATH_ZERO_ARG_OVERFLOW);
  EXPECT_MADE(MATH, zent_d_log_beta(20, 1e307), zent_d_log_gamma(20) - 20 * std::log(1e307), 0, 0);
  EXPECT_MADE(STAT, zents_d_log_beta(-1, 1), NONE, 5, STAT_BOTH_ARGS_ARE_LT_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(0, 1), NONE, 5, MATH_FIRST_ARG_LT_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(1, -1), NONE, 5, MATH_SECOND_ARG_LT_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(-1, -1), NONE, 5, MATH_SECOND_ARG_LT_ZERO);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(300, 250), NONE, 4, MATH_X_AND_A_ARE_TOO_LARGE);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(200, 1e300), NONE, 4, MATH_X_AND_A_ARE_TOO_LARGE);
  EXPECT_MADE(MATH, zent_d_gamma_incomplete(700, 700), NONE, 4, MATH_NO_CONV_200_CF_TERMS);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(1.5, 1, 1), NONE, 5, MATH_REAL_OUT_OF_RANGE);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(0.5, 0, 1), NONE, 5, MATH_BETA_NEG_ARG);
  EXPECT_MADE(STAT, zents_f_beta_incomplete(-1, 1, 1), NONE, 5, STAT_REAL_OUT_OF_RANGE);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(0, 3, 4), 0, 0, 0);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(1, 3, 4), 1, 0, 0);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(0.5, infinity, 4), 0, 0, 0);
  EXPECT_MADE(MATH, zent_d_beta_incomplete(0.5, 1e300, 4), 0, 0, 0);
}

TEST(Errors, NotANumberComesBackWithoutAMessage) {
  be_quiet();
  const double x = std::bit_cast<double>(0xFFF8000000001234);  // its bits survive
  const auto same = [&](double y) { return std::bit_cast<unsigned long>(y) == 0xFFF8000000001234 && zent_error_code() == 0; };
  EXPECT_TRUE(same(zent_d_erf(x)) && same(zent_d_erfc(x)) && same(zent_d_erf_inverse(x)) && same(zent_d_erfc_inverse(x)));
  EXPECT_TRUE(same(zent_d_gamma(x)) && same(zent_d_log_gamma(x)) && same(zent_d9lgmc(x)));
  EXPECT_TRUE(same(zent_d_beta(x, 1)) && same(zent_d_beta(1, x)) && same(zent_d_log_beta(x, 1)) && same(zent_d_log_beta(-1, x)));
  EXPECT_TRUE(same(zent_d_gamma_incomplete(x, 1)) && same(zent_d_gamma_incomplete(1, x)));
  EXPECT_TRUE(same(zent_d_beta_incomplete(x, 1, 1)) && same(zent_d_beta_incomplete(0.5, x, 1)) &&
              same(zent_d_beta_incomplete(0.5, 1, x)));
}

TEST(Errors, AGoodCallClearsTheWordsOfABadOne) {
  be_quiet();
  zent_d_gamma(0);
  EXPECT_EQ(zent_error_code(), MATH_ARG_ZERO);
  zent_d_gamma(5);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(zent_n1rty(1), 0);
  zent_e1psh("outer");  // inside a frame the words of level 0 are the frame's own
  zent_ermes(3, MATH_CHEBY_RANGE);
  zent_d_erf(0.5);
  EXPECT_EQ(zent_n1rty(0), 3);
  EXPECT_EQ(zent_n1rcd(0), MATH_CHEBY_RANGE);
  EXPECT_EQ(zent_n1rty(1), 0);
  zent_e1pop("outer");
}

template <class Real, class Evaluate, class Count>
void series_support(Evaluate evaluate, Count count) {
  const Real c[] = {2, Real(0.5), Real(0.25), Real(0.125)};
  for (double x : {-1.0, -0.3, 0.0, 0.7, 1.0}) {  // 1 + T1/2 + T2/4 + T3/8
    const double t = 1 + x / 2 + (2 * x * x - 1) / 4 + (4 * x * x * x - 3 * x) / 8;
    EXPECT_NEAR(evaluate(c, 4, static_cast<Real>(x)), t, 1e-6) << x;
  }
  const Real falling[] = {1, Real(1e-2), Real(1e-4), Real(1e-6)};
  EXPECT_EQ(count(falling, 4, Real(1e-5)), 3);
  EXPECT_EQ(count(falling, 4, Real(0.5)), 1);
  EXPECT_EQ(count(falling, 4, Real(5)), 1);
}

TEST(Series, ValueAndCount) {
  be_quiet();
  series_support<double>(zent_dcsevl, zent_initds);
  series_support<float>(zent_csevl, zent_inits);
  series_support<double>(zents_dcsevl, zents_initds);
  series_support<float>(zents_csevl, zents_inits);
  const double c[] = {2, 0.5};
  EXPECT_MADE(MATH, zent_dcsevl(c, 0, 0.5), NONE, 5, MATH_CHEBY_NEG_TERMS);
  EXPECT_MADE(MATH, zent_dcsevl(c, 1001, 0.5), NONE, 5, MATH_CHEBY_TOO_MANY_TERMS);
  EXPECT_MADE(MATH, zent_dcsevl(c, 2, 1.2), 1.6, 3, MATH_CHEBY_RANGE);
  EXPECT_MADE(STAT, zents_dcsevl(c, 2, -1.05), 0.475, 0, 0);
  EXPECT_MADE(MATH, static_cast<double>(zent_initds(c, 0, 1e-3)), 0, 5, MATH_CHEBY_EVAL_TERMS);
  EXPECT_MADE(MATH, static_cast<double>(zent_initds(c, 2, 1e-3)), 0, 5, MATH_CHEBY_EVAL_TOL);
  const double* const nowhere =
      reinterpret_cast<const double*>(8);  // a fault in the caller's array ends the call, not the process
  EXPECT_MADE(MATH, zent_dcsevl(nowhere, 3, 0.5), NONE, 5, MATH_MAJOR_VIOLATION);
  zents_initds(nowhere, 3, 0.5);
  EXPECT_EQ(zents_n1rcd(1), STAT_MAJOR_VIOLATION);
}

}  // namespace
