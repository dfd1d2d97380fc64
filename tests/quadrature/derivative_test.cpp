// Derivatives of user functions.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/crash.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

long calls;

struct Sample {
  const char* name;
  double (*f)(double);
  double x, expected[3];
};

// Expected values from the closed derivatives.
const Sample samples[] = {
    {"sin", [](double x) { return ++calls, std::sin(x); }, 1, {std::cos(1.0), -std::sin(1.0), -std::cos(1.0)}},
    {"sin far out", [](double x) { return ++calls, std::sin(x); }, 1e6, {std::cos(1e6), -std::sin(1e6), -std::cos(1e6)}},
    {"exp", [](double x) { return ++calls, std::exp(x); }, 20, {std::exp(20.0), std::exp(20.0), std::exp(20.0)}},
    {"log at a small place", [](double x) { return ++calls, std::log(x); }, 1e-8, {1e8, -1e16, 2e24}},
    {"cube", [](double x) { return ++calls, x * x * x; }, 1e5, {3e10, 6e5, 6}},
    {"pole nearby", [](double x) { return ++calls, 1 / x; }, -1e-3, {-1e6, -2e9, -6e12}},
    {"small",
     [](double x) { return ++calls, 1e-200 * std::tan(x); },
     0.25,
     {1.06519949673284989e-200, 5.4398017195889367e-201, 2.54710182010810055e-200}},
};

TEST(Derivative, IsWithinTheErrorAskedFor) {
  be_quiet();
  for (const Sample& s : samples) {
    for (int order = 1; order <= 3; ++order) {
      const double expected = s.expected[order - 1];
      calls = 0;
      const double d = zent_d_fcn_derivative(s.f, s.x, ZENT_ORDER, order, 0);
      EXPECT_EQ(zent_error_code(), 0);
      EXPECT_NEAR(d / expected, 1, 1.22e-4) << s.name << " " << order;
      EXPECT_LT(calls, 80) << s.name;
      const double best = zent_d_fcn_derivative(s.f, s.x, ZENT_ORDER, order, ZENT_RELATIVE_ERROR, 0.0, 0);
      EXPECT_NEAR(best / expected, 1, order == 1 ? 1e-10 : order == 2 ? 1e-8 : 1e-6) << s.name << " " << order;
    }
  }
}

TEST(Derivative, SingleForm) {
  be_quiet();
  const auto f = [](float x) { return std::exp(x) * x; };
  const float e = std::exp(0.5F), expected[] = {1.5F * e, 2.5F * e, 3.5F * e};
  for (int order = 1; order <= 3; ++order) {
    EXPECT_NEAR(zent_f_fcn_derivative(f, 0.5F, ZENT_ORDER, order, 0) / expected[order - 1], 1, 0.0186F) << order;
    EXPECT_NEAR(zent_f_fcn_derivative(f, 0.5F, ZENT_ORDER, order, ZENT_RELATIVE_ERROR, 0.0, 0) / expected[order - 1], 1,
                order == 1 ? 1e-5F : 2e-3F)
        << order;
  }
}

TEST(Derivative, VanishesWhereItShould) {
  be_quiet();
  for (int order = 1; order <= 3; ++order) {
    EXPECT_EQ(zent_d_fcn_derivative([](double) { return 5.0; }, 3.0, ZENT_ORDER, order, 0), 0);
    EXPECT_EQ(zent_d_fcn_derivative([](double) { return 0.0; }, 0.0, ZENT_ORDER, order, 0), 0);
  }
  EXPECT_EQ(zent_d_fcn_derivative([](double x) { return std::cos(x); }, 0.0, 0), 0);
}

TEST(Derivative, TakesStepsByValueAndByAddress) {
  be_quiet();
  static double farthest;
  const auto f = [](double x) {
    farthest = std::max(farthest, std::abs(x - 2));
    return x * x;
  };
  double step = 0.25, error = 0.5;
  for (int form = 0; form < 2; ++form) {
    farthest = 0;
    const double d = form == 0 ? zent_d_fcn_derivative(f, 2.0, ZENT_INITIAL_STEP, 0.25, ZENT_RELATIVE_ERROR, 0.5, 0)
                               : zent_d_fcn_derivative(f, 2.0, ZENT_INITIAL_STEP_ADR, &step, ZENT_RELATIVE_ERROR_ADR, &error, 0);
    EXPECT_NEAR(d, 4, 1e-12);
    EXPECT_EQ(farthest, 0.25);
  }
  // Too small a step is all rounding errors, or nothing beside x: a larger one is found.
  for (double small : {1e-13, 3e-15, 1e-17, 1e-300}) {
    EXPECT_NEAR(zent_d_fcn_derivative([](double x) { return std::exp(x); }, 1.0, ZENT_INITIAL_STEP, small, 0), std::exp(1.0),
                1e-3)
        << small;
  }
  EXPECT_NEAR(zent_f_fcn_derivative([](float x) { return x * x; }, 100.0F, ZENT_INITIAL_STEP, 1e-4, 0), 200, 4);
  EXPECT_EQ(zent_d_fcn_derivative([](double x) { return 3 * x; }, 0.0, ZENT_INITIAL_STEP, 5e-324, 0), 3);  // its half is 0
  EXPECT_TRUE(
      std::isnan(zent_d_fcn_derivative([](double x) { return std::cos(x); }, 0.0, ZENT_ORDER, 2, ZENT_INITIAL_STEP, 1e-200, 0)));
  struct Data {
    double power;
  } data = {3};
  const auto with_data = [](double x, void* p) { return std::pow(x, static_cast<Data*>(p)->power); };
  EXPECT_NEAR(zent_d_fcn_derivative(nullptr, 2.0, ZENT_FCN_W_DATA, static_cast<double (*)(double, void*)>(with_data), &data, 0),
              12, 1e-6);
}

TEST(Derivative, SurvivesBadFunctions) {
  be_quiet();
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double) { return ++calls, static_cast<double>(NAN); }, 1.0, 0)));
  EXPECT_LT(calls, 300);
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double) { return ++calls, static_cast<double>(INFINITY); }, 0.0, 0)));
  EXPECT_LT(calls, 300);
  calls = 0;  // beside which no step is short
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double) { return ++calls, static_cast<double>(NAN); }, 5e-324, 0)));
  EXPECT_LT(calls, 3000);
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double x) { return std::sqrt(x); }, 0.0, 0)));
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double x) { return x; }, INFINITY, 0)));
  // Values out of all proportion at the first steps say nothing about the rounding errors of the later ones.
  for (double step : {1e300, 700.0}) {
    for (int order = 1; order <= 3; ++order) {
      const double v =
          zent_d_fcn_derivative([](double x) { return std::exp(-x); }, 1.0, ZENT_ORDER, order, ZENT_INITIAL_STEP, step, 0);
      EXPECT_NEAR(v, (order == 2 ? 1 : -1) * std::exp(-1), 1e-4) << step << " " << order;
    }
  }
  // Its error is the result's, and it is not asked again.
  calls = 0;
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double x) { return ++calls, x * zent_d_machine(9); }, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_INTEGER_OUT_OF_RANGE);
  EXPECT_LE(calls, 2);
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative([](double x) { return crash(), x; }, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_MAJOR_VIOLATION);
  // A derivative of a derivative.
  const auto inner = [](double x) {
    return zent_d_fcn_derivative([](double y) { return std::exp(2 * y); }, x, ZENT_RELATIVE_ERROR, 0.0, 0);
  };
  EXPECT_NEAR(zent_d_fcn_derivative(inner, 0.0, 0), 4, 1e-4);
  EXPECT_EQ(zent_error_code(), 0);
}

TEST(Derivative, RefusesBadArguments) {
  be_quiet();
  const auto f = [](double x) { return ++calls, x; };
  calls = 0;
  const auto refused = [&](long number, auto... options) {
    EXPECT_TRUE(std::isnan(zent_d_fcn_derivative(f, 1.0, options..., 0)));
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 5);
  };
  refused(MATH_INEQUALITY_VIOLATION_2, ZENT_ORDER, 0);
  refused(MATH_INEQUALITY_VIOLATION_2, ZENT_ORDER, 4);
  for (double step : {0.0, -1.0, static_cast<double>(NAN), std::numeric_limits<double>::infinity()}) {
    refused(MATH_REAL_OUT_OF_RANGE, ZENT_INITIAL_STEP, step);
  }
  refused(MATH_NEED_RARG_GE_ZERO, ZENT_RELATIVE_ERROR, -1e-3);
  refused(MATH_NEED_RARG_GE_ZERO, ZENT_INITIAL_STEP, -1.0, ZENT_RELATIVE_ERROR, static_cast<double>(NAN));  // the last one stands
  refused(MATH_UNKNOWN_OPTION, 12);
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(std::isnan(zent_d_fcn_derivative(nullptr, 1.0, 0)));
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
}

}  // namespace
