// Nonlinear least squares on the classic problems, what is told about the solution, and the steps as other families call them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "tests/optimize/support.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

template <class T>
const problems::Problem<T>* current;
long calls;

template <class T>
void residuals(long m, long n, T* x, T* f) {
  ++calls;
  current<T>->residuals(m, n, x, f);
}
template <class... Options>
double* solve(void (*f)(long, long, double*, double*), long m, long n, Options... options) {
  return zent_d_nonlin_least_squares(f, m, n, options..., 0);
}
template <class... Options>
float* solve(void (*f)(long, long, float*, float*), long m, long n, Options... options) {
  return zent_f_nonlin_least_squares(f, m, n, options..., 0);
}

template <class T>
double half_sum(const std::vector<T>& f) {
  double sum = 0;
  for (T v : f) sum += static_cast<double>(v) * static_cast<double>(v);
  return sum / 2;
}

template <class T>
class NonlinearLeastSquares : public testing::Test {
 public:
  NonlinearLeastSquares() {
    be_quiet();
    calls = 0;
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(NonlinearLeastSquares, Forms);

TYPED_TEST(NonlinearLeastSquares, SolvesTheClassicProblemsOrSaysWhyNot) {
  using T = TypeParam;
  constexpr bool single = std::is_same_v<T, float>;
  const auto run = [](const auto& p, const auto& wide, double, const std::vector<T>& start) {
    current<T> = &p;
    std::vector<T> x(p.n), f(p.m), first(p.m), again(p.m);
    p.residuals(p.m, p.n, start.data(), first.data());
    T* const given =
        solve(residuals<T>, p.m, p.n, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x.data(), ZENT_FVEC_USER, f.data());
    const long code = zent_error_code();
    if (given == nullptr) {
      // in single precision the squares of the Jacobian may overflow
      EXPECT_TRUE(code == MATH_NAN_NOT_ALLOWED || (single && code == MATH_EXCEEDED_MAX_LOOP_COUNTER)) << code;
      return false;
    }
    p.residuals(p.m, p.n, x.data(), again.data());
    EXPECT_EQ(f, again);
    const double f2 = half_sum(f);
    EXPECT_LE(f2, half_sum(first) * (1 + 1e-6));
    if (code == 0 && !single && f2 >= 1e-10) {
      EXPECT_LE(problems::steepness(wide, std::vector<double>(x.begin(), x.end())), 1e-4);
    }
    return problems::is_minimum(p, 2 * f2, single ? 1e-2 : 1e-4, single ? 1e-4 : 1e-7);
  };
  problems::solves_from_near_and_far<T>({single ? 20 : 23, single ? 18 : 20, single ? 11 : 20}, run);
}

// y = a + b t: what is told must be what linear regression tells.
constexpr long points = 9;
template <class T>
void line(long m, long, T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = static_cast<T>(i), y = 2 + 3 * t + (i % 2 == 0 ? T(0.25) : T(-0.25));
    f[i] = x[0] + x[1] * t - y;
  }
}
template <class T>
void line_jacobian(long m, long n, T*, T* jac) {
  for (long i = 0; i < m; ++i) {
    jac[i * n] = 1;
    jac[i * n + 1] = static_cast<T>(i);
  }
}

TYPED_TEST(NonlinearLeastSquares, TellsTheJacobianItsFactorRankAndCovariance) {
  using T = TypeParam;
  const double bound = std::is_same_v<T, float> ? 4e-3 : 1e-6;
  // sums of 1, t, t^2 and y, t y
  long double s0 = 0, s1 = 0, s2 = 0, y0 = 0, y1 = 0, squares = 0;
  for (long i = 0; i < points; ++i) {
    const long double y = 2 + 3 * i + (i % 2 == 0 ? 0.25L : -0.25L);
    s0 += 1, s1 += i, s2 += i * i, y0 += y, y1 += i * y;
  }
  const long double determinant = s0 * s2 - s1 * s1, a = (s2 * y0 - s1 * y1) / determinant, b = (s0 * y1 - s1 * y0) / determinant;
  for (long i = 0; i < points; ++i) squares += problems::square(a + b * i - (2 + 3 * i + (i % 2 == 0 ? 0.25L : -0.25L)));
  const long double variance = squares / (points - 2);
  const long double covariance[] = {s2 / determinant * variance, -s1 / determinant * variance, s0 / determinant * variance};
  for (bool with_jacobian : {false, true}) {
    T *fvec = nullptr, *fjac = nullptr, r[2 * 3] = {-77, -77, -77, -77, -77, -77}, *cov = nullptr;
    long rank = -1;
    T* const x = with_jacobian ? solve(line<T>, points, 2, ZENT_JACOBIAN, line_jacobian<T>, ZENT_FVEC, &fvec, ZENT_FJAC, &fjac,
                                       ZENT_FJAC_COL_DIM, 4, ZENT_JACOBIAN_RANK, &rank, ZENT_COVARIANCE, &cov,
                                       ZENT_COVARIANCE_COL_DIM, 3, ZENT_R_FACTOR_USER, r, ZENT_R_FACTOR_COL_DIM, 3)
                               : solve(line<T>, points, 2, ZENT_FVEC, &fvec, ZENT_FJAC, &fjac, ZENT_FJAC_COL_DIM, 4,
                                       ZENT_JACOBIAN_RANK, &rank, ZENT_COVARIANCE, &cov, ZENT_COVARIANCE_COL_DIM, 3,
                                       ZENT_R_FACTOR_USER, r, ZENT_R_FACTOR_COL_DIM, 3);
    ASSERT_NE(x, nullptr);
    EXPECT_NEAR(x[0], a, bound);
    EXPECT_NEAR(x[1], b, bound);
    EXPECT_EQ(rank, 2);
    for (long i = 0; i < points; ++i) {
      EXPECT_NEAR(fvec[i], x[0] + x[1] * static_cast<T>(i) - (2 + 3 * static_cast<T>(i) + (i % 2 == 0 ? T(0.25) : T(-0.25))),
                  bound);
      EXPECT_NEAR(fjac[i * 4], 1, bound);
      EXPECT_NEAR(fjac[i * 4 + 1], i, 10 * bound);
      EXPECT_EQ(fjac[i * 4 + 3], T(0));
    }
    EXPECT_NEAR(r[0] * r[0], s0, 100 * bound);
    EXPECT_NEAR(r[0] * r[1], s1, 100 * bound);
    EXPECT_NEAR(r[1] * r[1] + r[4] * r[4], s2, 1000 * bound);
    EXPECT_EQ(r[3], T(0));
    EXPECT_EQ(r[2], T(-77));
    EXPECT_NEAR(cov[0], covariance[0], bound * 10);
    EXPECT_NEAR(cov[1], covariance[1], bound * 10);
    EXPECT_EQ(cov[1], cov[3]);
    EXPECT_NEAR(cov[4], covariance[2], bound * 10);
    for (T* p : {x, fvec, fjac, cov}) zent_free_allocated_memory(p);
  }
}

void dependent(long m, long, double* x, double* f) {  // x0 + x1 counts, x2 alone does not
  for (long i = 0; i < m; ++i)
    f[i] = (x[0] + x[1]) * static_cast<double>(i + 1) - 6 * static_cast<double>(i + 1) + (i % 2 ? 1 : -1);
}
void square_root(long, long, double* x, double* f) {  // not a number for x < 0, and the first steps go there
  f[0] = std::sqrt(x[0]) - 2;
  f[1] = 0.1 * (x[0] - 4);
}
void undefined(long, long, double*, double* f) {
  f[0] = NAN;
  f[1] = 1;
}
void zero(long m, long, double*, double* f) {
  ++calls;
  for (long i = 0; i < m; ++i) f[i] = 0;
}
void wrong_jacobian(long, long, double*, double* jac) {
  jac[0] = jac[1] = NAN;
}
TEST(NonlinearLeastSquaresEdges, RankDomainAndZero) {
  be_quiet();
  double x[3], cov[9], start[] = {400, 1, 1};
  long rank = -1;
  ASSERT_EQ(
      zent_d_nonlin_least_squares(dependent, 6, 3, ZENT_RETURN_USER, x, ZENT_JACOBIAN_RANK, &rank, ZENT_COVARIANCE_USER, cov, 0),
      x);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(rank, 1);
  EXPECT_NEAR(x[0] + x[1], 6 - 3.0 / 91, 1e-5);  // sum of i (-1)^i is 3, of i^2 is 91
  EXPECT_EQ(x[2], 0);
  EXPECT_EQ(std::count(cov, cov + 9, 0.0), 8);
  for (double first : {400.0, 1e-8, 0.0, 1e6}) {
    start[0] = first;
    ASSERT_EQ(zent_d_nonlin_least_squares(square_root, 2, 1, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0), x) << first;
    EXPECT_NEAR(x[0], 4, 1e-3) << first;
  }
  EXPECT_EQ(zent_d_nonlin_least_squares(undefined, 2, 1, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_NAN_NOT_ALLOWED);
  EXPECT_EQ(zent_d_nonlin_least_squares(square_root, 2, 1, ZENT_XGUESS, start, ZENT_JACOBIAN, wrong_jacobian, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_NAN_NOT_ALLOWED);
  calls = 0;
  EXPECT_EQ(zent_d_nonlin_least_squares(zero, 4, 3, ZENT_XGUESS, start, ZENT_RETURN_USER, x, ZENT_JACOBIAN_RANK, &rank, 0), x);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(calls, 4);
  EXPECT_EQ(rank, 0);
}

TYPED_TEST(NonlinearLeastSquares, RefusesRepairsAndStops) {
  using T = TypeParam;
  const auto all = problems::all<T>();
  current<T> = &all[0];
  const T start[] = {T(-1.2), 1}, bad_scale[] = {1, -2};
  T reference[2], x[2], cov[4];
  const auto refused = [&](long m, long n, long number, auto... options) {
    EXPECT_EQ(solve(residuals<T>, m, n, options...), nullptr);
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 5);
  };
  refused(0, 1, MATH_NEED_POSITIVE_NUM_FCNS);
  refused(2, 0, MATH_N_MUST_BE_POSITIVE);
  refused(1, 2, MATH_TOO_MANY_VARIABLES);
  refused(2, 2, MATH_COLUMN_DIM_ERROR, ZENT_COVARIANCE_USER, cov, ZENT_COVARIANCE_COL_DIM, 1);
  refused(2, 2, MATH_UNKNOWN_OPTION, 4711);
  refused(2, 2, MATH_OPTIONAL_ARG_NULL_1, ZENT_XGUESS, static_cast<T*>(nullptr));
  EXPECT_EQ(calls, 0);
  const auto with = [&](auto... options) {
    return solve(residuals<T>, 2, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, options...);
  };
  with();
  std::copy(x, x + 2, reference);
  const auto same = [&](long number) {
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 6);
    EXPECT_EQ(x[0], reference[0]);
    EXPECT_EQ(x[1], reference[1]);
  };
  const T negative = -1;
  with(ZENT_ABS_FCN_TOL_ADR, &negative), same(MATH_NEGATIVE_ABS_FCN_TOL);
  with(ZENT_TRUST_REGION_ADR, &negative), same(MATH_NEED_NONNEGATIVE_DELTA);
  with(ZENT_MAX_STEP, -2.0), same(MATH_NEED_NONNEGATIVE_STEPMX);
  with(ZENT_MAX_JACOBIAN, -1), same(MATH_NEED_POSITIVE_MAXJAC);
  with(ZENT_XSCALE, bad_scale);
  EXPECT_EQ(zent_error_code(), MATH_NEED_POSITIVE_XSCALE_ELEM);
  for (double none : {-9999.0, -999.0}) {
    with(ZENT_MAX_STEP, none, ZENT_TRUST_REGION, none);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_EQ(x[0], reference[0]);
  }
  with(ZENT_MAX_ITN, 2);
  EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_ITN);
  with(ZENT_MAX_FUNCTION_CALLS, 3);
  EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_FCN_EVAL);
  with(ZENT_MAX_JACOBIAN, 2);
  EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_JACOBIAN_EVAL);
  with(ZENT_MAX_STEP, 1e-3);
  EXPECT_EQ(zent_error_code(), MATH_UNBOUNDED);
  with(ZENT_INTERN_SCALE);
  EXPECT_NEAR(x[0], 1, 1e-3);
}

TYPED_TEST(NonlinearLeastSquares, OptionsByValueAndAddress) {
  using T = TypeParam;
  const auto all = problems::all<T>();
  current<T> = &all[0];
  const T start[] = {T(-1.2), 1};
  const auto run = [&](T* x, auto... options) {
    calls = 0;
    solve(residuals<T>, 2, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, options...);
    return calls;
  };
  problems::each_option_steers<T>({{ZENT_FSCALE, ZENT_FSCALE_ADR, T(1e9)},
                                   {ZENT_GRAD_TOL, ZENT_GRAD_TOL_ADR, T(5)},
                                   {ZENT_STEP_TOL, ZENT_STEP_TOL_ADR, 1},
                                   {ZENT_REL_FCN_TOL, ZENT_REL_FCN_TOL_ADR, 2},
                                   {ZENT_ABS_FCN_TOL, ZENT_ABS_FCN_TOL_ADR, 1},
                                   {ZENT_MAX_STEP, ZENT_MAX_STEP_ADR, T(0.125)},
                                   {ZENT_TRUST_REGION, ZENT_TRUST_REGION_ADR, T(0.125)}},
                                  run);
  T x[2];
  const T wide = 2;  // no column is independent
  long rank = -1, rank_by_address = -1;
  run(x, ZENT_TOLERANCE, static_cast<double>(wide), ZENT_JACOBIAN_RANK, &rank);
  run(x, ZENT_TOLERANCE_ADR, &wide, ZENT_JACOBIAN_RANK, &rank_by_address);
  EXPECT_TRUE(rank == 0 && rank_by_address == 0);
}

// Badly scaled: solved with scales, longer steps and tolerances to fit.
TEST(NonlinearLeastSquaresEdges, ScaledProblems) {
  be_quiet();
  const auto all = problems::all<double>();
  const auto named = [&](const char* name) {
    for (const auto& p : all) {
      if (std::string(p.name) == name) current<double> = &p;
    }
    return current<double>->start;
  };
  std::vector<double> start = named("meyer"), f(16);
  double x[3];
  zent_d_nonlin_least_squares(residuals<double>, 16, 3, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x, ZENT_FVEC_USER, f.data(),
                              ZENT_INTERN_SCALE, ZENT_MAX_ITN, 400, ZENT_MAX_FUNCTION_CALLS, 2000, 0);
  EXPECT_NEAR(2 * half_sum(f), 87.9458552, 1e-5);
  start = named("brown badly scaled");
  const double scale[] = {1e-6, 1e6};
  ASSERT_EQ(zent_d_nonlin_least_squares(residuals<double>, 3, 2, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x, ZENT_XSCALE,
                                        scale, ZENT_GRAD_TOL, 1e-14, 0),
            x);
  EXPECT_NEAR(x[0], 1e6, 1e-2);
  EXPECT_NEAR(x[1], 2e-6, 1e-12);
}

void noisy(long m, long n, double* x, double* f, void* data) {
  *static_cast<long*>(data) += 1;
  line(m, n, x, f);
  double* const inner = zent_d_nonlin_least_squares(line<double>, points, 2, 0);  // calls inside calls
  for (long i = 0; i < m; ++i) f[i] += inner[0] - 2;
  zent_free_allocated_memory(inner);
}
TEST(NonlinearLeastSquaresEdges, CallsInsideCalls) {
  be_quiet();
  long count = 0;
  double* const x = zent_d_nonlin_least_squares(nullptr, points, 2, ZENT_FCN_W_DATA, noisy, &count, 0);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(zent_error_type(), 0);
  EXPECT_NEAR(x[1], 3, 0.1);
  EXPECT_GT(count, 3);
  zent_free_allocated_memory(x);
}
// An error of an inner call that nobody deals with ends the outer one, after whatever call it happened. The calls before it climb
// with a repaired argument, which hides nothing.
void breaking(long m, long n, double* x, double* f, void* sound_calls) {
  if ((*static_cast<long*>(sound_calls))-- <= 0) {
    zent_d_nonlin_least_squares(nullptr, 0, n, 0);
  } else {
    zent_free_allocated_memory(zent_d_nonlin_least_squares(line<double>, points, 2, ZENT_MAX_STEP, -1.0, 0));
  }
  line(m, n, x, f);
}
double breaking_norm(long n, double* x, void* sound_calls) {
  double f[points], sum = 0;
  breaking(points, n, x, f, sound_calls);
  for (double v : f) sum += v * v;
  return sum;
}
double breaking_parabola(double x, void* sound_calls) {
  double place[2] = {x, 0};
  return breaking_norm(2, place, sound_calls);
}
TEST(NonlinearLeastSquaresEdges, FatalErrorInsideEndsTheSearch) {
  be_quiet();
  for (long sound = 0; sound < 7; ++sound) {
    for (int solver = 0; solver < 3; ++solver) {
      long calls = sound;
      const double limit = sound % 2 == 0 ? 0.25 : -1;  // an argument that is repaired hides nothing
      if (solver == 0) {
        EXPECT_EQ(zent_d_nonlin_least_squares(nullptr, points, 2, ZENT_FCN_W_DATA, breaking, &calls, ZENT_MAX_STEP, limit, 0),
                  nullptr);
      } else if (solver == 1) {
        EXPECT_EQ(zent_d_min_uncon_multivar(nullptr, 2, ZENT_FCN_W_DATA, breaking_norm, &calls, ZENT_MAX_STEP, limit, 0),
                  nullptr);
      } else {
        EXPECT_TRUE(std::isnan(zent_d_min_uncon(nullptr, -9, 9, ZENT_FCN_W_DATA, breaking_parabola, &calls, 0)));
      }
      EXPECT_EQ(zent_error_type(), 5);
      EXPECT_EQ(calls, -1) << solver;  // nothing is called any more
    }
  }
}
TEST(NonlinearLeastSquaresEdges, RepairsInsideAreWarnings) {
  be_quiet();
  long calls = 1000;
  double* const x = zent_d_nonlin_least_squares(nullptr, points, 2, ZENT_FCN_W_DATA, breaking, &calls, 0);
  EXPECT_NE(x, nullptr);
  EXPECT_EQ(zent_error_type(), 6);
  EXPECT_EQ(zent_error_code(), MATH_NEED_NONNEGATIVE_STEPMX);
  zent_free_allocated_memory(x);
}

// The step solves (J^T J + alpha D^2) p = -J^T f, with |D p| in its range.
TEST(TrustRegionKernels, StepsHaveTheirLength) {
  be_quiet();
  std::mt19937 engine(11);
  std::uniform_real_distribution<double> u(-1, 1);
  for (long n : {1, 2, 6, 20}) {
    for (bool deficient : {false, true}) {
      const long m = n + 5;
      std::vector<double> jac(m * n), f(m), d(n), p(n), g(n), diag(n), x(n);
      for (double& v : jac) v = u(engine);
      for (double& v : f) v = u(engine);
      for (double& v : d) v = std::exp(3 * u(engine));
      if (deficient && n > 1) std::copy(jac.begin(), jac.begin() + m, jac.begin() + (n - 1) * m);
      for (long j = 0; j < n; ++j)
        for (long i = 0; i < m; ++i) g[j] += jac[i + j * m] * f[i];
      for (double radius : {1e-6, 1e-2, 0.3, 1e9}) {
        double delta = radius, alpha = 0;
        zents_du7lsf(m, n, f.data(), jac.data(), m, d.data(), &delta, &alpha, p.data());
        EXPECT_EQ(zents_error_code(), 0);
        double length = 0;
        for (long j = 0; j < n; ++j) length = std::hypot(length, d[j] * p[j]);
        if (alpha == 0) {
          EXPECT_LE(length, 1.5 * radius);
          EXPECT_EQ(delta, std::min(radius, delta));
        } else if (!deficient) {
          EXPECT_GE(length, 0.75 * radius * (1 - 1e-12));
          EXPECT_LE(length, 1.5 * radius * (1 + 1e-12));
        }
        for (long j = 0; j < n; ++j) {
          double left = alpha * d[j] * d[j] * p[j] + g[j];
          for (long i = 0; i < m; ++i) {
            double row = 0;
            for (long k = 0; k < n; ++k) row += jac[i + k * m] * p[k];
            left += jac[i + j * m] * row;
          }
          EXPECT_NEAR(left, 0, 1e-9 * (1 + alpha * d[j] * d[j])) << n << " " << radius << " " << deficient;
        }
      }
      // |R x - b|^2 + |diag x|^2 with R in the upper triangle of jac
      for (long j = 0; j < n; ++j) diag[j] = j % 3 == 1 ? 0 : d[j], jac[j + j * m] += 3;
      zents_du8lsf(n, jac.data(), m, f.data(), diag.data(), x.data());
      for (long j = 0; j < n; ++j) {
        double left = diag[j] * diag[j] * x[j];
        for (long i = 0; i <= j; ++i) {
          double row = -f[i];
          for (long k = i; k < n; ++k) row += jac[i + k * m] * x[k];
          left += jac[i + j * m] * row;
        }
        EXPECT_NEAR(left, 0, 1e-10);
      }
    }
  }
}

TEST(TrustRegionKernels, RecordsAndCovariances) {
  be_quiet();
  double scale[] = {1, -1}, fscale = -1, x[] = {3, 4};
  long iparam[] = {0, 100, 400, 400, 0};
  double rparam[] = {1e-5, 1e-10, 1e-10, 1e-10, -1, -9999, -9999};
  zents_du5lsf(3, 2, scale, &fscale, iparam, rparam);
  EXPECT_EQ(zents_error_type(), 6);
  EXPECT_EQ(scale[1], 1);
  EXPECT_EQ(fscale, 1);
  EXPECT_EQ(iparam[0], 15);
  EXPECT_EQ(rparam[4], 100 * 2.220446049250313e-16);
  zents_du4lsf(3, 2, x, scale, rparam);
  EXPECT_EQ(rparam[5], 5000);
  zents_du5lsf(1, 2, scale, &fscale, iparam, rparam);
  EXPECT_EQ(zents_error_code(), MATH_TOO_MANY_VARIABLES);
  // R = [2 1 3; 0 0 5; 0 0 4]: its second row counts as 0. (R^T R)^-1 on 1 and 3: [[4, 6], [6, 25]]^-1
  const double r[] = {2, 0, 0, 1, 0, 0, 3, 5, 4};
  double c[9];
  zent_drcovb(3, r, 3, 64, c, 3);
  const double expected[] = {25, 0, -6, 0, 0, 0, -6, 0, 4};
  for (long k = 0; k < 9; ++k) EXPECT_NEAR(c[k], expected[k], 1e-13);
  float single[] = {2, 0, 4, 8};  // in place
  zents_rcovb(2, single, 2, 1, single, 2);
  EXPECT_NEAR(single[0], 0.25 + 0.0625, 1e-7);
  EXPECT_NEAR(single[1], -0.03125, 1e-7);
  EXPECT_EQ(single[1], single[2]);
  EXPECT_NEAR(single[3], 1 / 64.0, 1e-7);
}

}  // namespace
