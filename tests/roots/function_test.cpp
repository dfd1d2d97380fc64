// Zeros of a function of one variable: known zeros, deflation, limits, options, functions that misbehave, failing allocations.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/quiet.hpp"

namespace {

float* find(float (*f)(float), auto... rest) {
  return zent_f_zeros_fcn(f, rest..., 0);
}
double* find(double (*f)(double), auto... rest) {
  return zent_d_zeros_fcn(f, rest..., 0);
}

template <class Real>
struct Recorded {
  Real (*f)(Real);
  std::vector<Real> points;
};
template <class Real>
Real record(Real x, void* data) {
  auto* r = static_cast<Recorded<Real>*>(data);
  r->points.push_back(x);
  return r->f(x);
}

template <class T>
class Zeros : public testing::Test {
 public:
  Zeros() {
    be_quiet();
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(Zeros, Forms);

template <class Real>
Real fixed(Real x) {
  return std::cos(x) - x;
}
template <class Real>
Real cubic(Real x) {  // 1, 2, 4
  return (x - 1) * (x - 2) * (x - 4);
}
template <class Real>
Real square(Real x) {
  return x * x - 2;
}
template <class Real>
Real fourfold(Real x) {  // a zero of order two at 1 and one at -3
  return (x - 1) * (x - 1) * (x + 3);
}

TYPED_TEST(Zeros, OrderOfTheFirstPoints) {
  using Real = TypeParam;
  Real (*none)(Real) = nullptr;
  Recorded<Real> r = {fixed<Real>, {}};
  Real x[1], guess[1] = {2};
  find(none, ZENT_FCN_W_DATA, record<Real>, &r, ZENT_RETURN_USER, x);
  ASSERT_GE(r.points.size(), 3u);
  EXPECT_EQ(std::vector<Real>(r.points.begin(), r.points.begin() + 3), (std::vector<Real>{-1, 1, 0}));
  EXPECT_NEAR(x[0], 0.7390851332151607, 4 * std::sqrt(std::numeric_limits<Real>::epsilon()));
  r.points.clear();
  long info[1];
  find(none, ZENT_FCN_W_DATA, record<Real>, &r, ZENT_XGUESS, guess, ZENT_INFO_USER, info, ZENT_RETURN_USER, x);
  EXPECT_EQ(r.points[0], 2 * Real(0.9));
  EXPECT_EQ(r.points[1], 2 * Real(1.1));
  EXPECT_EQ(r.points[2], 2);
  EXPECT_EQ(info[0], static_cast<long>(r.points.size()));
  // The parabola through three points of a parabola is the function: the fourth point is its zero.
  r = {square<Real>, {}};
  find(none, ZENT_FCN_W_DATA, record<Real>, &r, ZENT_XGUESS, guess, ZENT_RETURN_USER, x);
  ASSERT_GE(r.points.size(), 4u);
  EXPECT_NEAR(r.points[3], std::sqrt(2.0), 20 * std::numeric_limits<Real>::epsilon());
}

TYPED_TEST(Zeros, SeveralByDeflation) {
  using Real = TypeParam;
  const Real tolerance = 30 * std::sqrt(std::numeric_limits<Real>::epsilon());
  long* info = nullptr;
  Real* x = find(cubic<Real>, ZENT_NUM_ROOTS, 3, ZENT_INFO_USER_PTR, &info);
  ASSERT_NE(x, nullptr);
  ASSERT_NE(info, nullptr);
  std::vector<Real> sorted(x, x + 3);
  std::sort(sorted.begin(), sorted.end());
  EXPECT_NEAR(sorted[0], 1, tolerance);
  EXPECT_NEAR(sorted[1], 2, tolerance);
  EXPECT_NEAR(sorted[2], 4, tolerance);
  for (int k = 0; k < 3; ++k) EXPECT_TRUE(info[k] >= 1 && info[k] < 100) << info[k];
  zent_free_allocated_memory(x);
  zent_free_allocated_memory(info);
  // Guesses that are zeros found before, all three the same; guesses and result in one array.
  Real same[3] = {1, 1, 1};
  ASSERT_EQ(find(cubic<Real>, ZENT_NUM_ROOTS, 3, ZENT_XGUESS, same, ZENT_RETURN_USER, same), same);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_NEAR(same[0] + same[1] + same[2], 7, 3 * tolerance);
  EXPECT_NEAR(same[0] * same[1] * same[2], 8, 8 * tolerance);
  Real twice[3];
  find(fourfold<Real>, ZENT_NUM_ROOTS, 3, ZENT_RETURN_USER, twice);
  EXPECT_NEAR(twice[0] + twice[1] + twice[2], -1, 0.05);
}

// All options by value and by address steer the search in the same way.
TYPED_TEST(Zeros, OptionsByValueAndAddress) {
  using Real = TypeParam;
  Real (*none)(Real) = nullptr;
  Real abs = Real(1e-3), rel = Real(1e-5), eps = Real(0.25), eta = Real(0.5), guess[2] = {Real(2.2), Real(2.2)}, x[2], y[2];
  Recorded<Real> by_value = {cubic<Real>, {}}, by_address = by_value, plain = by_value;
  find(none, ZENT_FCN_W_DATA, record<Real>, &by_value, ZENT_NUM_ROOTS, 2, ZENT_XGUESS, guess, ZENT_ERR_ABS, double(abs),
       ZENT_ERR_REL, double(rel), ZENT_EPS, double(eps), ZENT_ETA, double(eta), ZENT_MAX_EVALS, 30, ZENT_RETURN_USER, x);
  find(none, ZENT_FCN_W_DATA, record<Real>, &by_address, ZENT_NUM_ROOTS, 2, ZENT_XGUESS, guess, ZENT_ERR_ABS_ADR, &abs,
       ZENT_ERR_REL_ADR, &rel, ZENT_EPS_ADR, &eps, ZENT_ETA_ADR, &eta, ZENT_MAX_ITN, 30, ZENT_RETURN_USER, y);
  EXPECT_EQ(by_value.points, by_address.points);
  EXPECT_EQ(x[0], y[0]);
  EXPECT_EQ(x[1], y[1]);
  find(none, ZENT_FCN_W_DATA, record<Real>, &plain, ZENT_NUM_ROOTS, 2, ZENT_XGUESS, guess, ZENT_RETURN_USER, y);
  EXPECT_NE(plain.points, by_value.points);
  // A point close to the first zero is moved by eta.
  const auto& p = by_value.points;
  bool moved = false;
  for (std::size_t k = 1; k < p.size(); ++k) moved = moved || (std::abs(p[k - 1] - x[0]) < eps && p[k] == p[k - 1] + eta);
  EXPECT_TRUE(moved);
}

template <class Real>
Real nothing(Real) {
  return std::numeric_limits<Real>::quiet_NaN();
}
TYPED_TEST(Zeros, LimitOfEvaluations) {
  using Real = TypeParam;
  Real (*none)(Real) = nullptr;
  for (int number : {ZENT_MAX_EVALS, ZENT_MAX_ITN}) {
    Recorded<Real> r = {nothing<Real>, {}};
    long info[2];
    Real x[2];
    ASSERT_EQ(
        find(none, ZENT_FCN_W_DATA, record<Real>, &r, number, 10, ZENT_NUM_ROOTS, 2, ZENT_INFO_USER, info, ZENT_RETURN_USER, x),
        x);
    EXPECT_EQ(zent_error_code(), MATH_NO_CONVERGE_MAX_ITER);
    EXPECT_EQ(zent_error_type(), 3);
    EXPECT_EQ(info[0], 11);
    EXPECT_EQ(info[1], 11);
    EXPECT_LE(r.points.size(), 20u);
  }
  // eta of 0 does not move a point away from the zero before it: the evaluations run out.
  Recorded<Real> r = {square<Real>, {}};
  Real guess[2] = {Real(1.5), Real(1.5)}, x[2], zero = 0, wide = 100;
  long info[2];
  find(none, ZENT_FCN_W_DATA, record<Real>, &r, ZENT_NUM_ROOTS, 2, ZENT_XGUESS, guess, ZENT_ETA_ADR, &zero, ZENT_EPS_ADR, &wide,
       ZENT_INFO_USER, info, ZENT_RETURN_USER, x);
  EXPECT_EQ(zent_error_code(), MATH_NO_CONVERGE_MAX_ITER);
  EXPECT_NEAR(x[0], std::sqrt(2.0), 1e-3);
  EXPECT_EQ(info[1], 101);
  EXPECT_LE(r.points.size(), 210u);
}

template <class Real>
Real right_half(Real x) {
  return x < 0 ? std::numeric_limits<Real>::quiet_NaN() : std::sqrt(x) - 2;
}
template <class Real>
Real logarithm(Real x) {
  return std::log(x) - 1;
}
template <class Real>
Real pole(Real x) {
  return 1 / x - Real(0.1);
}
template <class Real>
Real steep(Real x) {
  return Real(1e30) * (x * x * x - 8);
}
TYPED_TEST(Zeros, DifficultFunctions) {
  using Real = TypeParam;
  const struct {
    Real (*f)(Real);
    Real guess, zero;
  } cases[] = {{right_half<Real>, 30, 4},
               {right_half<Real>, 0, 4},
               {logarithm<Real>, 40, Real(2.718281828459045)},
               {logarithm<Real>, 0, Real(2.718281828459045)},
               {pole<Real>, 3, 10},
               {steep<Real>, 1, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "guess " << c.guess << " zero " << c.zero);
    Real guess = c.guess, x;
    find(c.f, ZENT_XGUESS, &guess, ZENT_RETURN_USER, &x);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(x, c.zero, c.zero * 10 * std::sqrt(std::numeric_limits<Real>::epsilon()));
  }
}

TYPED_TEST(Zeros, BadArguments) {
  using Real = TypeParam;
  Real (*none)(Real) = nullptr;
  const auto code = [](const Real* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    return zent_error_code();
  };
  EXPECT_EQ(code(find(none)), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(find(fixed<Real>, ZENT_NUM_ROOTS, 0)), MATH_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(code(find(fixed<Real>, ZENT_MAX_EVALS, -3)), MATH_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(code(find(fixed<Real>, 99999)), MATH_UNKNOWN_OPTION);
}

double half_of_inner(double x) {
  double inner;
  zent_d_zeros_fcn(square<double>, ZENT_XGUESS, &x, ZENT_RETURN_USER, &inner, 0);
  return x - inner / 2;
}
long calls_of_broken;
double broken(double x) {
  ++calls_of_broken;
  zent_d_zeros_fcn(nullptr, 0);
  return x - 3;
}
TEST(Nested, TheSameRoutineInsideItself) {
  be_quiet();
  double x, guess = 1;
  EXPECT_EQ(zent_d_zeros_fcn(half_of_inner, ZENT_XGUESS, &guess, ZENT_RETURN_USER, &x, 0), &x);
  EXPECT_EQ(zent_error_type(), 0);
  EXPECT_NEAR(x, std::sqrt(0.5), 1e-7);
}
TEST(Nested, TerminalErrorInsideEndsTheSearch) {
  be_quiet();
  calls_of_broken = 0;
  double x;
  EXPECT_EQ(zent_d_zeros_fcn(broken, ZENT_RETURN_USER, &x, ZENT_NUM_ROOTS, 1, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(calls_of_broken, 1);
}

}  // namespace
