// Systems of equations: the collection of test systems from near and far, options, errors, functions that misbehave.
#include "tests/roots/systems.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/quiet.hpp"

namespace {

float* solve(void (*f)(long, float*, float*), long n, auto... rest) {
  return zent_f_zeros_sys_eqn(f, n, rest..., 0);
}
double* solve(void (*f)(long, double*, double*), long n, auto... rest) {
  return zent_d_zeros_sys_eqn(f, n, rest..., 0);
}

template <class Real>
Real norm_at(const systems::Problem<Real>& p, std::vector<Real> x) {
  std::vector<Real> f(p.n);
  p.f(p.n, x.data(), f.data());
  Real largest = 0;
  for (Real v : f) largest = std::max(largest, std::isfinite(v) ? std::abs(v) : std::numeric_limits<Real>::infinity());
  return largest;
}

template <class T>
class Systems : public testing::Test {
 public:
  Systems() {
    be_quiet();
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(Systems, Forms);

// Newton's correction by a Jacobian of central differences tells how far the zero is, whatever the scale of the equations.
double distance_to_zero(const systems::Problem<double>& p, std::vector<double> x) {
  const long n = p.n;
  std::vector<double> j(n * n), f(n), ahead(n), behind(n);
  for (long k = 0; k < n; ++k) {
    const double kept = x[k], h = 1e-6 * std::max(1.0, std::abs(kept));
    x[k] = kept + h;
    p.f(n, x.data(), ahead.data());
    x[k] = kept - h;
    p.f(n, x.data(), behind.data());
    x[k] = kept;
    for (long i = 0; i < n; ++i) j[i * n + k] = (ahead[i] - behind[i]) / (2 * h);
  }
  p.f(n, x.data(), f.data());
  for (long k = 0; k < n; ++k) {  // elimination with row exchanges
    long top = k;
    for (long i = k; i < n; ++i) top = std::abs(j[i * n + k]) > std::abs(j[top * n + k]) ? i : top;
    for (long c = 0; c < n; ++c) std::swap(j[k * n + c], j[top * n + c]);
    std::swap(f[k], f[top]);
    for (long i = k + 1; i < n; ++i) {
      const double factor = j[i * n + k] / j[k * n + k];
      for (long c = k; c < n; ++c) j[i * n + c] -= factor * j[k * n + c];
      f[i] -= factor * f[k];
    }
  }
  double distance = 0, size = 0;
  for (long k = n - 1; k >= 0; --k) {
    for (long c = k + 1; c < n; ++c) f[k] -= j[k * n + c] * f[c];
    f[k] /= j[k * n + k];
    distance = std::max(distance, std::abs(f[k]));
    size = std::max(size, std::abs(x[k]));
  }
  return distance / std::max(size, 1e-3);
}

TEST(Collection, IsSolvedOrRefusedWithAReason) {
  be_quiet();
  int solved = 0, warned = 0;
  for (const auto& p : systems::collection<double>()) {
    for (double scale : {1.0, 10.0, 100.0}) {
      SCOPED_TRACE(p.name + " " + std::to_string(p.n) + " x " + std::to_string(scale));
      std::vector<double> start = p.start, x(p.n);
      for (double& s : start) s *= scale;
      double fnorm = -1;
      ASSERT_EQ(solve(p.f, p.n, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x.data(), ZENT_FNORM, &fnorm), x.data());
      const long code = zent_error_code();
      std::vector<double> f(p.n);
      p.f(p.n, x.data(), f.data());
      double sum = 0;
      for (double v : f) sum += v * v;
      EXPECT_EQ(fnorm, sum) << "the values at the point returned";
      if (code == 0) {
        EXPECT_LT(distance_to_zero(p, x), 1e-5);
        ++solved;
      } else {
        EXPECT_TRUE(code >= MATH_TOO_MANY_FCN_EVALS && code <= MATH_NO_PROGRESS) << code;
        EXPECT_EQ(zent_error_type(), 3);
        ++warned;
      }
    }
  }
  EXPECT_GE(solved, 45);
  EXPECT_EQ(solved + warned, 66);
}

// Standard starts with a regular zero nearby, in both precisions.
TYPED_TEST(Systems, StandardStarts) {
  const TypeParam tolerance = sizeof(TypeParam) == 4 ? TypeParam(2e-2) : TypeParam(1e-6);
  for (const auto& p : systems::collection<TypeParam>()) {
    if (p.name == "powell badly scaled" || p.name == "watson" || p.name == "chebyquad" || p.name == "trigonometric") continue;
    SCOPED_TRACE(p.name);
    std::vector<TypeParam> start = p.start;
    TypeParam* x = solve(p.f, p.n, ZENT_XGUESS, start.data());
    ASSERT_NE(x, nullptr);
    EXPECT_LT(norm_at(p, std::vector<TypeParam>(x, x + p.n)), tolerance);
    EXPECT_EQ(start, p.start);
    zent_free_allocated_memory(x);
  }
}

template <class Real>
struct Watched {
  long calls = 0, jacobians = 0;
  Real worst = std::numeric_limits<Real>::quiet_NaN();  // value outside the domain
};

// exp(x0) = 2, x0 x1 = 1.
template <class Real>
void pair(long, Real* x, Real* f, void* data) {
  ++static_cast<Watched<Real>*>(data)->calls;
  f[0] = std::exp(x[0]) - 2;
  f[1] = x[0] * x[1] - 1;
}
template <class Real>
void pair_jacobian(long, Real* x, Real* fjac, void* data) {
  ++static_cast<Watched<Real>*>(data)->jacobians;
  fjac[0] = std::exp(x[0]);
  fjac[1] = 0;
  fjac[2] = x[1];
  fjac[3] = x[0];
}
template <class Real>
void plain_pair(long n, Real* x, Real* f) {
  Watched<Real> w;
  pair<Real>(n, x, f, &w);
}
template <class Real>
void plain_jacobian(long n, Real* x, Real* fjac) {
  Watched<Real> w;
  pair_jacobian<Real>(n, x, fjac, &w);
}

TYPED_TEST(Systems, OptionsByValueAndAddress) {
  using Real = TypeParam;
  Watched<Real> w;
  Real start[2] = {1, 1}, x[2], tight = 10 * std::numeric_limits<Real>::epsilon();
  const Real zero = std::log(Real(2)), close = 100 * std::numeric_limits<Real>::epsilon();
  void (*none)(long, Real*, Real*) = nullptr;
  const auto expect_zero = [&](const Real* at) {
    ASSERT_NE(at, nullptr);
    EXPECT_NEAR(at[0], zero, close);
    EXPECT_NEAR(at[1], 1 / zero, 4 * close);
  };
  expect_zero(solve(none, 2, ZENT_FCN_W_DATA, pair<Real>, &w, ZENT_JACOBIAN_W_DATA, pair_jacobian<Real>, &w, ZENT_XGUESS, start,
                    ZENT_ERR_REL_ADR, &tight, ZENT_RETURN_USER, x));
  EXPECT_GT(w.jacobians, 0);
  EXPECT_LT(w.calls, 20);
  expect_zero(solve(plain_pair<Real>, 2, ZENT_XGUESS, start, ZENT_JACOBIAN, plain_jacobian<Real>, ZENT_ERR_REL, double(tight),
                    ZENT_RETURN_USER, x));
  expect_zero(solve(plain_pair<Real>, 2, ZENT_XGUESS, start, ZENT_ERR_REL, double(tight), ZENT_MAX_ITN, 40, ZENT_RETURN_USER, x));
  // The limit counts calls of the function alone with a Jacobian, and n + 1 times as many without.
  for (int number : {ZENT_MAX_EVALS, ZENT_MAX_ITN}) {
    w = {};
    solve(none, 2, ZENT_FCN_W_DATA, pair<Real>, &w, ZENT_XGUESS, start, ZENT_JACOBIAN, plain_jacobian<Real>, number, 3,
          ZENT_RETURN_USER, x);
    EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_FCN_EVALS);
    EXPECT_EQ(w.calls, 3);
    w = {};
    solve(none, 2, ZENT_FCN_W_DATA, pair<Real>, &w, ZENT_XGUESS, start, number, 2, ZENT_RETURN_USER, x);
    EXPECT_EQ(zent_error_code(), MATH_TOO_MANY_FCN_EVALS);
    EXPECT_EQ(w.calls, 6);
  }
  solve(plain_pair<Real>, 2, ZENT_XGUESS, start, ZENT_ERR_REL, 0.0, ZENT_RETURN_USER, x);
  EXPECT_TRUE(zent_error_code() == MATH_NO_BETTER_POINT || zent_error_code() == 0);
  expect_zero(x);
}

// At the exact zero: one Jacobian and one step.
TYPED_TEST(Systems, StartAtTheZero) {
  using Real = TypeParam;
  Real start[2] = {1, 1}, fnorm = 1;
  Real* x = solve(systems::square<Real, problems::rosenbrock<Real>>, 2, ZENT_XGUESS, start, ZENT_FNORM, &fnorm);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(fnorm, 0);
  EXPECT_EQ(x[0], 1);
  EXPECT_EQ(x[1], 1);
  zent_free_allocated_memory(x);
}

// sqrt(x0) = 3, log(x1) = 1 from afar: the first steps leave the domain.
template <class Real>
void half_plane(long, Real* x, Real* f, void* data) {
  auto* w = static_cast<Watched<Real>*>(data);
  ++w->calls;
  f[0] = x[0] < 0 ? w->worst : std::sqrt(x[0]) - 3;
  f[1] = x[1] <= 0 ? w->worst : std::log(x[1]) - 1;
}
TYPED_TEST(Systems, PartsOfTheDomainWithoutAValue) {
  using Real = TypeParam;
  void (*none)(long, Real*, Real*) = nullptr;
  using Limits = std::numeric_limits<Real>;
  for (Real worst : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
    Watched<Real> w;
    w.worst = worst;
    Real start[2] = {200, 60}, x[2];
    solve(none, 2, ZENT_FCN_W_DATA, half_plane<Real>, &w, ZENT_XGUESS, start, ZENT_RETURN_USER, x);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_NEAR(x[0], 9, 9e-3);
    EXPECT_NEAR(x[1], std::exp(1.0), 3e-3);
    // The start itself outside, or at an edge so that only backward differences serve.
    start[0] = -1;
    solve(none, 2, ZENT_FCN_W_DATA, half_plane<Real>, &w, ZENT_XGUESS, start, ZENT_RETURN_USER, x);
    EXPECT_EQ(zent_error_code(), MATH_NO_PROGRESS);
    EXPECT_EQ(x[0], -1);
  }
}
template <class Real>
void below_one(long, Real* x, Real* f) {
  f[0] = x[0] > 1 ? std::numeric_limits<Real>::quiet_NaN() : x[0] * x[0] - Real(0.25);
}
template <class Real>
void nan_jacobian(long, Real*, Real* fjac) {
  fjac[0] = std::numeric_limits<Real>::quiet_NaN();
}
TYPED_TEST(Systems, DifferencesAtAnEdge) {
  using Real = TypeParam;
  Real start[1] = {1}, x[1];
  solve(below_one<Real>, 1, ZENT_XGUESS, start, ZENT_RETURN_USER, x);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_NEAR(x[0], 0.5, 1e-4);
  solve(below_one<Real>, 1, ZENT_XGUESS, start, ZENT_JACOBIAN, nan_jacobian<Real>, ZENT_RETURN_USER, x);
  EXPECT_EQ(zent_error_code(), MATH_NO_PROGRESS);
}

TYPED_TEST(Systems, BadArguments) {
  using Real = TypeParam;
  void (*none)(long, Real*, Real*) = nullptr;
  Real minus = -1, no_number = std::numeric_limits<Real>::quiet_NaN(), x[2] = {7, 7};
  const auto code = [](const Real* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    return zent_error_code();
  };
  EXPECT_EQ(code(solve(none, 2)), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(solve(plain_pair<Real>, 0)), MATH_NUMBER_EQUN_UNKN_LT_1);
  EXPECT_EQ(code(solve(plain_pair<Real>, 2, ZENT_ERR_REL_ADR, &minus, ZENT_RETURN_USER, x)), MATH_ERRREL_LESS_THAN_ZERO);
  EXPECT_EQ(code(solve(plain_pair<Real>, 2, ZENT_ERR_REL_ADR, &no_number)), MATH_ERRREL_LESS_THAN_ZERO);
  EXPECT_EQ(code(solve(plain_pair<Real>, 2, ZENT_MAX_EVALS, 0)), MATH_ITMAX_LESS_THAN_ZERO);
  EXPECT_EQ(code(solve(plain_pair<Real>, 2, -5)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(solve(plain_pair<Real>, 1L << 62)), MATH_OUT_OF_MEMORY_1);
  EXPECT_EQ(x[0], 7);
}

// The function solves another system at each call.
void nested(long, double* x, double* f) {
  double start[2] = {x[0], 1}, inner[2];
  zent_d_zeros_sys_eqn(plain_pair<double>, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, inner, 0);
  f[0] = x[0] - 2 * inner[0];
}
// An error of an inner call that nobody deals with ends the outer one, wherever it happens.
long sound_calls;
void breaking(long, double* x, double* f) {
  if (sound_calls-- <= 0) zent_d_zeros_sys_eqn(plain_pair<double>, -1, 0);
  f[0] = x[0] * x[0] - 2;
}
TEST(NestedSystems, TheSameRoutineInsideItself) {
  be_quiet();
  double x[1] = {}, start[1] = {1};
  ASSERT_EQ(zent_d_zeros_sys_eqn(nested, 1, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0), x);
  EXPECT_EQ(zent_error_type(), 0);
  EXPECT_NEAR(x[0], 2 * std::log(2.0), 1e-7);
}
TEST(NestedSystems, FatalErrorInsideEndsTheSearch) {
  be_quiet();
  for (long sound = 0; sound < 4; ++sound) {
    sound_calls = sound;
    double x[1], start[1] = {1};
    EXPECT_EQ(zent_d_zeros_sys_eqn(breaking, 1, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0), nullptr);
    EXPECT_EQ(zent_error_code(), MATH_NUMBER_EQUN_UNKN_LT_1);
    EXPECT_EQ(sound_calls, -1);
  }
}

}  // namespace
