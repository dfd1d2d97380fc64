// A collection of integrands with known integrals: the result is within the tolerance, or an error says why not.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

using Function = std::function<double(double)>;
const double pi = std::numbers::pi, e = std::numbers::e, gamma = std::numbers::egamma, infinity = HUGE_VAL;

double call(double x, void* data) {
  return (*static_cast<Function*>(data))(x);
}

struct Found {
  double value = -1, error = -1;
  long evaluations = -1, intervals = -1, number = 0;
};

// One member with its fixed arguments, tolerances 0 and rel.
using Member = std::function<Found(Function&, double abs, double rel)>;

#define USUAL                                                                                                            \
  ZENT_FCN_W_DATA, call, &f, ZENT_ERR_ABS, abs, ZENT_ERR_REL, rel, ZENT_ERR_EST, &r.error, ZENT_N_EVALS, &r.evaluations, \
      ZENT_N_SUBINTER, &r.intervals, 0
#define MEMBER(call_text)                    \
  [=](Function& f, double abs, double rel) { \
    Found r;                                 \
    r.value = call_text;                     \
    r.number = zent_error_code();            \
    return r;                                \
  }
double (*const none)(double) = nullptr;

Member sing(double a, double b) {
  return MEMBER(zent_d_int_fcn_sing(none, a, b, USUAL));
}
Member plain(double a, double b, int rule = 2) {
  return MEMBER(zent_d_int_fcn(none, a, b, ZENT_RULE, rule, USUAL));
}
Member points(double a, double b, std::vector<double> p) {
  return MEMBER(zent_d_int_fcn_sing_pts(none, a, b, static_cast<long>(p.size()), const_cast<double*>(p.data()), USUAL));
}
Member inf(double bound, long interval) {
  return MEMBER(zent_d_int_fcn_inf(none, bound, interval, USUAL));
}
Member trig(double a, double b, long weight, double omega) {
  return MEMBER(zent_d_int_fcn_trig(none, a, b, weight, omega, USUAL));
}
Member alg_log(double a, double b, long weight, double alpha, double beta) {
  return MEMBER(zent_d_int_fcn_alg_log(none, a, b, weight, alpha, beta, USUAL));
}
Member cauchy(double a, double b, double c) {
  return MEMBER(zent_d_int_fcn_cauchy(none, a, b, c, USUAL));
}
Member smooth(double a, double b) {
  return [=](Function& f, double abs, double rel) {
    Found r;
    r.value = zent_d_int_fcn_smooth(none, a, b, ZENT_FCN_W_DATA, call, &f, ZENT_ERR_ABS, abs, ZENT_ERR_REL, rel, ZENT_ERR_EST,
                                    &r.error, 0);
    r.number = zent_error_code();
    return r;
  };
}
Member fourier(double a, long weight, double omega) {
  return [=](Function& f, double abs, double) {
    Found r;
    r.value = zent_d_int_fcn_fourier(none, a, weight, omega, ZENT_FCN_W_DATA, call, &f, ZENT_ERR_ABS, abs > 0 ? abs : 1e-9,
                                     ZENT_ERR_EST, &r.error, ZENT_N_EVALS, &r.evaluations, 0);
    r.number = zent_error_code();
    return r;
  };
}

struct Case {
  const char* name;
  Member member;
  Function f;
  double exact;
  double rel = 1e-9;
};

const std::vector<Case> easy = {
    {"polynomial", plain(-1, 2, 1), [](double x) { return x * x * x - 2 * x + 1; }, 15.0 / 4 - 3 + 3},
    {"exp", smooth(0, 1), [](double x) { return std::exp(x); }, e - 1},
    {"backwards", sing(1, 0), [](double x) { return std::exp(x); }, 1 - e},
    {"runge", plain(-5, 5), [](double x) { return 1 / (1 + x * x); }, 2 * std::atan(5)},
    {"exp cos", smooth(0, 2 * pi), [](double x) { return std::exp(std::cos(x)); }, 7.954926521012845274513},
    {"log", sing(0, 1), [](double x) { return std::log(x); }, -1},
    {"root", sing(0, 1), [](double x) { return std::sqrt(x); }, 2.0 / 3},
    {"inverse root", sing(0, 1), [](double x) { return 1 / std::sqrt(x); }, 2},
    {"x^-0.9", sing(0, 1), [](double x) { return std::pow(x, -0.9); }, 10},
    {"log over root", sing(0, 1), [](double x) { return std::log(x) / std::sqrt(x); }, -4},
    {"both ends", sing(0, 1), [](double x) { return 1 / std::sqrt(x * (1 - x)); }, pi, 1e-7},
    {"log log", sing(0, 1), [](double x) { return std::log(-std::log(x)); }, -gamma},
    {"log^4", sing(0, 1), [](double x) { return std::pow(std::log(x), 4); }, 24},
    {"peak", plain(0, 1), [](double x) { return 1e-4 / (1e-8 + (x - 0.3) * (x - 0.3)); }, std::atan(0.7e4) + std::atan(0.3e4)},
    {"three peaks", points(0, 1, {0.6}),
     [](double x) {
       const auto sech = [](double t) { return 1 / std::cosh(t); };
       return std::pow(sech(10 * (x - 0.2)), 2) + std::pow(sech(100 * (x - 0.4)), 4) + std::pow(sech(1000 * (x - 0.6)), 6);
     },
     0.210802735500549277},
    {"step", plain(0, 1), [](double x) { return x < 1 / 3.0 ? 1.0 : 3.0; }, 1 / 3.0 + 2, 1e-8},
    {"waves", plain(0, 1, 6), [](double x) { return std::cos(200 * x); }, std::sin(200) / 200},
    {"fast waves", plain(0, pi, 6), [](double x) { return std::cos(100 * std::sin(x)); }, 0.0627874004914926936},
    {"kink", points(0, 1, {0.3}), [](double x) { return std::fabs(x - 0.3); }, 0.29},
    {"step at a point", points(0, 1, {0.7, 0.2}), [](double x) { return x < 0.2   ? 1.0
                                                                        : x < 0.7 ? -2.0
                                                                                  : 5.0; }, 0.7},
    {"inner log", points(0, 3, {1, std::sqrt(2)}),
     [](double x) { return x * x * x * std::log(std::fabs((x * x - 1) * (x * x - 2))); },
     61 * std::log(2) + 77 * std::log(7) / 4 - 27},
    {"inner roots", points(-1, 2, {0, 1}), [](double x) { return 1 / std::sqrt(std::fabs(x * (x - 1))); }, pi + 4 * std::asinh(1),
     1e-8},
    {"points backwards", points(1, -1, {0}), [](double x) { return 1 / std::sqrt(std::fabs(x)); }, -4, 1e-8},
    {"gauss", inf(0, ZENT_INF_INF), [](double x) { return std::exp(-x * x); }, std::sqrt(pi)},
    {"cauchy density", inf(7, ZENT_INF_INF), [](double x) { return 1 / (pi * (1 + x * x)); }, 1},
    {"exp tail", inf(2, ZENT_BOUND_INF), [](double x) { return std::exp(-x); }, std::exp(-2)},
    {"left tail", inf(-1, ZENT_INF_BOUND), [](double x) { return 1 / (x * x); }, 1},
    {"log rational", inf(0, ZENT_BOUND_INF), [](double x) { return std::log(x) / (1 + 100 * x * x); }, -pi* std::log(10) / 20},
    {"algebraic tail", inf(0, ZENT_BOUND_INF), [](double x) { return 1 / (std::sqrt(x) * (1 + x)); }, pi, 1e-8},
    {"planck", inf(0, ZENT_BOUND_INF), [](double x) { return x < 700 ? x * x * x / std::expm1(x) : 0; }, std::pow(pi, 4) / 15},
    {"cos exp", trig(0, 1, ZENT_COS, 10), [](double x) { return std::exp(x); },
     (e * (std::cos(10) + 10 * std::sin(10)) - 1) / 101},
    {"sin exp", trig(0, 2, ZENT_SIN, -300), [](double x) { return std::exp(x); },
     -(std::exp(2) * (std::sin(600) - 300 * std::cos(600)) + 300) / 90001},
    {"slow cos", trig(0, 1, ZENT_COS, 0.5), [](double x) { return x; }, 2 * std::sin(0.5) + 4 * (std::cos(0.5) - 1)},
    {"omega 0", trig(1, 2, ZENT_COS, 0), [](double x) { return 1 / x; }, std::log(2)},
    {"sin log", trig(0, 1, ZENT_SIN, 10 * pi), [](double x) { return x > 0 ? std::log(x) : 0; }, -0.128136848399167},
    {"sin in the middle", trig(-1, 1, ZENT_COS, 3), [](double x) { return std::cos(40 * x); },
     std::sin(43) / 43 + std::sin(37) / 37},
    {"fourier root", fourier(0, ZENT_COS, pi / 2), [](double x) { return x > 0 ? 1 / std::sqrt(x) : 0; }, 1, 1e-8},
    {"fourier exp", fourier(0, ZENT_SIN, 2), [](double x) { return std::exp(-x); }, 0.4, 1e-8},
    {"fourier rational", fourier(0, ZENT_COS, 3), [](double x) { return 1 / (1 + x * x); }, pi / 2 * std::exp(-3), 1e-8},
    {"sine integral", fourier(1, ZENT_SIN, 1), [](double x) { return 1 / x; }, 0.624713256427713604},
    {"cosine integral", fourier(1, ZENT_COS, 1), [](double x) { return 1 / x; }, -0.337403922900968135},
    {"negative omega", fourier(0, ZENT_SIN, -2), [](double x) { return std::exp(-x); }, -0.4, 1e-8},
    {"fourier omega 0", fourier(5, ZENT_COS, 0), [](double x) { return std::exp(-x); }, 1},
    {"left power", alg_log(0, 1, ZENT_ALG, -0.5, 0), [](double x) { return std::exp(x); }, 2.92530349181436},
    {"beta", alg_log(0, 1, ZENT_ALG, -0.9, -0.9), [](double) { return 1.0; },
     std::tgamma(0.1) * std::tgamma(0.1) / std::tgamma(0.2)},
    {"largest power", alg_log(0, 1, ZENT_ALG, 0.5, 1000), [](double) { return 1.0; }, 2.79724934559e-5},
    {"left log", alg_log(0, 1, ZENT_ALG_LEFT_LOG, 0, 0), [](double x) { return std::cos(x); }, -0.946083070367183},
    {"right log", alg_log(0, 1, ZENT_ALG_RIGHT_LOG, 0, 0), [](double x) { return x; }, -0.75},
    {"both logs", alg_log(0, 1, ZENT_ALG_LOG, 0, 0), [](double) { return 1.0; }, 2 - pi* pi / 6},
    {"log log^2", alg_log(0, 1, ZENT_ALG_LEFT_LOG, 0, 0),
     [](double x) { return x > 0 ? std::pow(1 + std::pow(std::log(x), 2), -2) : 0; }, -0.189275187882093321, 1e-8},
    {"shifted powers", alg_log(2, 5, ZENT_ALG, 1.5, 0.5), [](double) { return 1.0; },
     27 * std::tgamma(2.5) * std::tgamma(1.5) / std::tgamma(4)},
    {"principal value", cauchy(-1, 5, 0), [](double x) { return 1 / (5 * x * x * x + 6); }, std::log(125.0 / 631) / 18},
    {"pole off centre", cauchy(0, 3, 0.1), [](double x) { return x * x; }, 4.5 + 0.3 + 0.01 * std::log(29)},
    {"pole outside", cauchy(0, 1, 2), [](double) { return 1.0; }, -std::log(2)},
    {"hole in the middle", sing(-1, 1), [](double x) { return std::sin(x) / x; }, 2 * 0.946083070367183015},
    {"hole in the middle, plain", plain(-1, 1), [](double x) { return std::sin(x) / x; }, 2 * 0.946083070367183015},
    {"hole at an end", trig(0, 1, ZENT_COS, 30), [](double x) { return std::sin(x) / x; }, -0.02777373887516576427},
    {"singular in the middle", plain(-1, 1), [](double x) { return std::log(std::fabs(x)); }, -2, 1e-7},
    {"backwards pole", cauchy(1, -1, 0.5), [](double) { return 1.0; }, std::log(3)},
};

std::string named(const testing::TestParamInfo<Case>& info) {
  std::string s;
  for (const char* p = info.param.name; *p != 0; ++p) s += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
  return s + "_" + std::to_string(info.index);
}

class Easy : public testing::TestWithParam<Case> {};

// Every call is counted, none is at an end or outside, the estimate bounds the error, and the error is below the tolerance.
TEST_P(Easy, WithinTheTolerance) {
  be_quiet();
  const Case& c = GetParam();
  long calls = 0;
  bool finite = true;
  Function f = [&](double x) {
    ++calls;
    finite = finite && std::isfinite(x);
    return c.f(x);
  };
  const Found r = c.member(f, 0, c.rel);
  EXPECT_EQ(r.number, 0);
  EXPECT_TRUE(finite);
  const double error = std::fabs(r.value - c.exact), allowed = c.rel * std::max(std::fabs(c.exact), 1e-300);
  EXPECT_LE(error, std::max(allowed, 1e-9 * (c.rel >= 1e-8))) << r.value;
  EXPECT_LE(error, std::max(r.error, 1e-15 * std::fabs(c.exact)));
  if (r.evaluations >= 0) {
    EXPECT_EQ(r.evaluations, calls);
  }
  // And with the defaults.
  EXPECT_NEAR(c.member(f, 1.5e-8, 1.5e-8).value, c.exact, 1.5e-8 * std::max(1.0, std::fabs(c.exact)));
}
INSTANTIATE_TEST_SUITE_P(Collection, Easy, testing::ValuesIn(easy), named);

struct Hard {
  const char* name;
  Member member;
  Function f;
  std::vector<long> numbers;  // what may be raised
};

const std::vector<Hard> hard = {
    {"1/x", sing(0, 1), [](double x) { return 1 / x; }, {4007, 4009, 4011}},
    {"1/x inside", sing(-1, 2), [](double x) { return 1 / x; }, {4007, 4009, 4011}},
    {"1/x^2", sing(0, 1), [](double x) { return 1 / (x * x); }, {4007, 4009, 4011}},
    {"1/x plain", plain(0, 1), [](double x) { return 1 / x; }, {4007, 4009}},
    {"1/x tail", inf(1, ZENT_BOUND_INF), [](double x) { return 1 / x; }, {4007, 4009, 4011}},
    {"constant tail", inf(0, ZENT_INF_INF), [](double) { return 1.0; }, {4007, 4009, 4011}},
    {"pole at a point", points(-1, 2, {0}), [](double x) { return 1 / std::fabs(x); }, {4007, 4009, 4011}},
    {"noise",
     plain(0, 1),
     [](double x) {
       unsigned long bits;
       std::memcpy(&bits, &x, sizeof bits);
       bits *= 0x9E3779B97F4A7C15UL;
       return 1 + 1e-4 * (static_cast<double>(bits >> 40) / (1 << 24) - 0.5);
     },
     {4007, 4008}},
    {"noise extrapolated",
     sing(0, 1),
     [](double x) {
       unsigned long bits;
       std::memcpy(&bits, &x, sizeof bits);
       bits *= 0x9E3779B97F4A7C15UL;
       return 1 + 1e-4 * (static_cast<double>(bits >> 40) / (1 << 24) - 0.5);
     },
     {4007, 4008, 4010}},
    {"rough for nested rules", smooth(0, 1), [](double x) { return std::fabs(x - 0.3); }, {4026}},
    {"not a number", sing(0, 1), [](double) { return NAN; }, {4007, 4009}},
    {"not a number plain", plain(0, 1), [](double x) { return x > 0.7 ? NAN : x; }, {4007, 4009}},
    {"not a number points", points(0, 1, {0.5}), [](double x) { return x > 0.7 ? NAN : x; }, {4007, 4009}},
    {"not a number nested", smooth(0, 1), [](double) { return NAN; }, {4026}},
    {"not a number tail", inf(0, ZENT_BOUND_INF), [](double x) { return x > 3 ? NAN : 0; }, {4007, 4009}},
    {"not a number trig", trig(0, 1, ZENT_COS, 50), [](double x) { return x > 0.5 ? NAN : 1; }, {4007, 4009}},
    {"not a number weight", alg_log(0, 1, ZENT_ALG, 0.5, 0.5), [](double x) { return x > 0.5 ? NAN : 1; }, {4007, 4009}},
    {"not a number pole", cauchy(0, 1, 0.25), [](double x) { return x > 0.5 ? NAN : 1; }, {4007, 4009}},
    {"not a number fourier", fourier(0, ZENT_COS, 1), [](double x) { return x > 5 ? NAN : 1; }, {4017, 4018}},
    {"infinite", sing(0, 1), [](double x) { return x > 0.5 ? infinity : 1; }, {4007, 4009}},
    {"no decay", fourier(0, ZENT_COS, 1), [](double x) { return std::exp(x); }, {4017, 4018, 4019}},
};

class Refused : public testing::TestWithParam<Hard> {};

TEST_P(Refused, WithAnError) {
  be_quiet();
  const Hard& h = GetParam();
  Function f = h.f;
  const Found r = h.member(f, 0, 1e-9);
  EXPECT_TRUE(std::count(h.numbers.begin(), h.numbers.end(), r.number)) << r.number << " " << r.value << " +- " << r.error;
  if (zent_error_type() >= 4) {
    EXPECT_TRUE(std::isnan(r.value));
  }
}
INSTANTIATE_TEST_SUITE_P(Collection, Refused, testing::ValuesIn(hard));

}  // namespace
