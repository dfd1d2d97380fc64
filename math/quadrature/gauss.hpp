// Gauss rules from the recurrence of the orthogonal polynomials.
#pragma once

#include <cmath>
#include <type_traits>

#include "math/eigen/tridiagonal.hpp"
#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::gauss {

enum Weight { legendre = 1, chebyshev_second, chebyshev_first, jacobi, hermite, cosh, laguerre };

// One precision more than the rule has: the eigenvalues of a Laguerre matrix carry an error of its norm, which is far more than
// the rounding of its small ones, and the weights at its great ones lie far below the smallest single number.
template <class Real>
using Wide = std::conditional_t<std::is_same_v<Real, float>, double, long double>;

struct Family {
  int weight;
  double alpha, beta;

  bool on_line() const {
    return weight == hermite || weight == cosh;
  }
  double left() const {
    return weight == laguerre ? 0 : -1;
  }
  double right() const {
    return weight == laguerre ? Machine<double>::infinity : 1;
  }
  bool symmetric() const {
    return weight != laguerre && (weight != jacobi || alpha == beta);
  }
};

// The symmetric tridiagonal matrix of the family: diagonal a[0] to a[n-1] and b[1] to b[n-1] beside it.
template <class Real>
void l_recurrence(const Family& f, long n, Real* a, Real* b) {
  const Real alpha = static_cast<Real>(f.alpha), beta = static_cast<Real>(f.beta), sum = alpha + beta;
  const Real half_pi = static_cast<Real>(1.57079632679489661923132169163975144L);
  for (long j = 0; j < n; ++j) {
    const Real k = static_cast<Real>(j);
    Real square = 0;
    a[j] = 0;
    switch (f.weight) {
      case legendre:
        square = k * k / ((2 * k - 1) * (2 * k + 1));
        break;
      case chebyshev_second:
        square = Real(0.25);
        break;
      case chebyshev_first:
        square = j == 1 ? Real(0.5) : Real(0.25);
        break;
      case hermite:
        square = k / 2;
        break;
      case cosh:
        square = half_pi * k * (half_pi * k);
        break;
      case laguerre:
        a[j] = 2 * k + alpha + 1;
        square = k * (k + alpha);
        break;
      default: {
        const Real middle = 2 * k + sum;
        if (j == 0) {
          a[j] = (beta - alpha) / (sum + 2);
        } else {
          a[j] = (beta - alpha) / middle * (sum / (middle + 2));
        }
        if (j == 1) {  // (k + sum) / (middle - 1) is 1 here, also where both are 0
          square = 4 * ((1 + alpha) / middle) * ((1 + beta) / middle) / (middle + 1);
        } else if (j > 1) {
          square = 4 * k * ((k + alpha) / middle) * ((k + beta) / middle) * ((k + sum) / ((middle - 1) * (middle + 1)));
        }
      }
    }
    b[j] = j == 0 ? 0 : std::sqrt(square);
  }
}

// What Stirling's formula leaves of the logarithm of the gamma function.
inline long double l_stirling_rest(long double z) {
  constexpr long double half_log_two_pi = 0.918938533204672741780329736405617640L;
  if (z < 20) return std::lgamma(z) - ((z - 0.5L) * std::log(z) - z + half_log_two_pi);
  const long double u = 1 / (z * z);
  return (1 / 12.0L - u * (1 / 360.0L - u * (1 / 1260.0L - u * (1 / 1680.0L - u * (1 / 1188.0L - u * (691 / 360360.0L)))))) / z;
}

// 2^(a + b - 1) beta(a, b) for great a + b, where logarithms of gamma functions would take each other's digits away.
inline long double l_jacobi_mass(long double a, long double b) {
  constexpr long double half_pi = 1.57079632679489661923132169163975144L;
  const long double sum = a + b, skew = (a - b) / sum;
  const auto twice_part = [&](long double x, long double excess) {  // log(2 x / sum)
    return std::abs(excess) < 0.5L ? std::log1p(excess) : std::log(2 * (x / sum));
  };
  const long double rest = l_stirling_rest(a) + l_stirling_rest(b) - l_stirling_rest(sum);
  return std::exp(a * twice_part(a, skew) + b * twice_part(b, -skew) + rest) * std::sqrt(half_pi / a * (sum / b));
}

// The integral of the weight function.
inline long double l_mass(const Family& f) {
  constexpr long double pi = 3.14159265358979323846264338327950288L;
  const long double alpha = f.alpha, beta = f.beta;
  switch (f.weight) {
    case legendre:
      return 2;
    case chebyshev_second:
      return pi / 2;
    case chebyshev_first:
    case cosh:
      return pi;
    case hermite:
      return std::sqrt(pi);
    case laguerre:
      return std::tgamma(alpha + 1);
    default:
      if (alpha + beta < 1000) {
        return std::exp2(alpha + beta + 1) * std::tgamma(alpha + 1) / std::tgamma(alpha + beta + 2) * std::tgamma(beta + 1);
      }
      return l_jacobi_mass(alpha + 1, beta + 1);
  }
}

// The last pivot of J - x of order m, so that its inverse is the last element of the inverse matrix. x lies outside the interval,
// or at its end, where all pivots have one sign. At an end of (-1, 1) it is known, where a weight that gathers there would leave
// the recurrence few digits.
template <class Real>
Real l_last_pivot(const Family& f, long m, const Real* a, const Real* b, Real x) {
  if (f.weight == jacobi && (x == 1 || x == -1)) {
    const Real k = static_cast<Real>(m), near = static_cast<Real>(x > 0 ? f.alpha : f.beta);
    const Real sum = static_cast<Real>(f.alpha) + static_cast<Real>(f.beta);
    const Real rest = m == 1 ? Real(1) : (k + sum) / (2 * k - 1 + sum);
    return -2 * x * (k + near) / (2 * k + sum) * rest;
  }
  Real pivot = a[0] - x;
  for (long k = 1; k < m; ++k) pivot = a[k] - x - b[k] * (b[k] / pivot);
  return pivot;
}

// Changes the last row of the matrix so that it has the fixed points as eigenvalues.
template <class Real>
void l_fix(const Family& f, long n, long count, const Real* fixed, bool symmetric, Real* a, Real* b) {
  if (count == 1) {
    a[n - 1] = n == 1 ? fixed[0] : fixed[0] + b[n - 1] * (b[n - 1] / l_last_pivot(f, n - 1, a, b, fixed[0]));
    return;
  }
  const Real low = std::min(fixed[0], fixed[1]), high = std::max(fixed[0], fixed[1]);
  const Real at_low = l_last_pivot(f, n - 1, a, b, low), at_high = l_last_pivot(f, n - 1, a, b, high);
  // a - b^2 / at = point at both; the pivots are positive at the low point and negative at the high one.
  const Real part = (high - low) / (at_low - at_high);
  a[n - 1] = symmetric ? 0 : low - part * at_high;
  b[n - 1] = std::sqrt(part * at_low) * std::sqrt(-at_high);
}

template <class Real>
struct Sum {
  Real weight;      // relative to the mass: 1 / sum of p_k(x)^2 over k below n
  Real correction;  // of x, from the Rayleigh quotient of the vector p
};

// The orthonormal polynomials at x by their recurrence, which is stable in this direction. They are scaled down together before
// they overflow.
template <class Real>
Sum<Real> l_sum(long n, const Real* a, const Real* b, const Real* inverse, Real x) {
  constexpr int step = std::is_same_v<Real, double> ? 200 : 3000;
  const Real limit = std::ldexp(Real(1), step), down = std::ldexp(Real(1), -step);
  Real before = 0, p = 1, sum = 1;
  long scaled = 0;
  for (long k = 1; k < n; ++k) {
    const Real next = ((x - a[k - 1]) * p - b[k - 1] * before) * inverse[k];
    before = p;
    p = next;
    if (!(std::abs(p) < limit)) [[unlikely]] {
      if (!std::isfinite(p)) break;
      before *= down;
      p *= down;
      sum = sum * down * down;
      ++scaled;
    }
    sum += p * p;
  }
  const Real rest = (x - a[n - 1]) * p - b[n - 1] * before;
  return {static_cast<Real>(std::scalbln(1 / sum, -2 * step * scaled)), -rest * (p / sum)};
}

// The eigenvalues of the matrix are the points. False without memory; 4039 when the iteration is slow.
template <class Real>
bool l_points(long n, const Real* a, const Real* b, Real* x) {
  if constexpr (std::is_same_v<Real, double>) {
    for (long k = 0; k < n; ++k) x[k] = a[k];
    return eigen::tridiagonal_values<Math, double>(n, x, b + 1);
  } else {
    double* d = scratch<Math, double>(n);
    double* e = scratch<Math, double>(n);
    if (d == nullptr || e == nullptr) return false;
    for (long k = 0; k < n; ++k) d[k] = static_cast<double>(a[k]);
    for (long k = 1; k < n; ++k) e[k - 1] = static_cast<double>(b[k]);
    if (!eigen::tridiagonal_values<Math, double>(n, d, e)) return false;
    for (long k = 0; k < n; ++k) x[k] = static_cast<Real>(d[k]);
    return true;
  }
}

inline constexpr int corrections = 3;

// Points and weights in the wide precision. `fixed` points have the weights of exactly themselves.
template <class Real>
void l_polish(long n, const Real* a, const Real* b, const Real* inverse, Real mass, long count, const Real* fixed, bool symmetric,
              Real* x, Real* w) {
  for (long i = 0; i < count; ++i) {
    const bool low = count == 2 ? fixed[i] < fixed[1 - i] : std::abs(x[0] - fixed[0]) < std::abs(x[n - 1] - fixed[0]);
    x[low ? 0 : n - 1] = fixed[i];
  }
  for (long i = 0; i < n; ++i) {
    if (symmetric && 2 * i + 1 > n) {
      x[i] = -x[n - 1 - i];
      w[i] = w[n - 1 - i];
      continue;
    }
    bool known = symmetric && 2 * i + 1 == n;
    if (known) x[i] = 0;
    for (long k = 0; k < count; ++k) known = known || x[i] == fixed[k];
    // Where the eigenvalue is off by more than a part of the distance to the next one, the quotient may lead elsewhere.
    const Real room = n == 1 ? 0 : (i + 1 < n ? x[i + 1] - x[i] : x[i] - x[i - 1]) / 4;
    Sum<Real> s = l_sum(n, a, b, inverse, x[i]);
    for (int k = 0; k < corrections && !known; ++k) {
      if (!(std::abs(s.correction) <= room)) break;
      const Real old = x[i];
      x[i] += s.correction;
      if (x[i] == old) break;
      s = l_sum(n, a, b, inverse, x[i]);
      if (std::abs(x[i] - old) <= Real(1e-9) * room) break;  // the quotient's error falls at least quadratically
    }
    w[i] = mass * s.weight;
  }
}

// Whether the points are still apart and the weights add up to the mass, to half their digits. A fixed point far away takes those
// of the eigenvalues.
template <class Real, class W>
bool holds_together(long n, const W* x, const W* w, W mass) {
  W sum = 0;
  for (long i = 0; i < n; ++i) {
    if (i > 0 && x[i] <= x[i - 1]) return false;
    sum += w[i];
  }
  return !(std::abs(sum - mass) > static_cast<W>(std::sqrt(Machine<Real>::epsilon)) * mass);
}

inline void raise_no_memory(long n) {
  raise_out_of_memory<Math>({n}, {"n"});
}

// The rule, all arguments checked.
template <class Real>
void l_rule(const Family& family, long n, long count, const Real* fixed, Real* points, Real* weights) {
  using W = Wide<Real>;
  W* a = scratch<Math, W>(n);
  W* b = scratch<Math, W>(n);
  W* inverse = scratch<Math, W>(n);
  W* x = scratch<Math, W>(n);
  W* w = scratch<Math, W>(n);
  if (!a || !b || !inverse || !x || !w) return raise_no_memory(n);
  W place[2] = {};
  for (long i = 0; i < count; ++i) place[i] = static_cast<W>(fixed[i]);
  const bool symmetric = family.symmetric() && (count == 0 || (count == 2 && fixed[0] == -fixed[1]));
  l_recurrence(family, n, a, b);
  if (count > 0) l_fix(family, n, count, place, symmetric, a, b);
  for (long k = 0; k < n; ++k) inverse[k] = 1 / b[k];
  if (!std::isfinite(static_cast<double>(a[n - 1])) || !std::isfinite(static_cast<double>(b[n - 1]))) {
    raise<Math>(5, MATH_BAD_FIXED_POINT_VALUE);
    return;
  }
  if (!l_points(n, a, b, x)) return raise_no_memory(n);
  if (failed<Math>()) {
    raise<Math>(4, MATH_NO_CONVERGE_100_ITERATIONS);
    return;
  }
  const W mass = static_cast<W>(l_mass(family));
  l_polish(n, a, b, inverse, mass, count, place, symmetric, x, w);
  if (count > 0 && !holds_together<Real>(n, x, w, mass)) {
    raise<Math>(5, MATH_BAD_FIXED_POINT_VALUE);
    return;
  }
  for (long i = 0; i < n; ++i) {
    points[i] = static_cast<Real>(x[i]);
    weights[i] = static_cast<Real>(w[i]);
  }
}

}  // namespace zent::gauss
