// The collection of test systems of More, Garbow and Hillstrom (1981, ACM Transactions on Mathematical Software 7), with their
// standard starts, as templates of the precision.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "tests/optimize/problems.hpp"

namespace systems {

template <class Real>
struct Problem {
  std::string name;
  long n;
  void (*f)(long, Real*, Real*);
  std::vector<Real> start;
};

// Those of the test problems of least squares that have as many residuals as unknowns.
template <class Real, void (*residuals)(long, long, const Real*, Real*)>
void square(long n, Real* x, Real* f) {
  residuals(n, n, x, f);
}

template <class Real>
struct F {
  static void wood(long, Real* x, Real* f) {
    const Real t1 = x[1] - x[0] * x[0], t2 = x[3] - x[2] * x[2];
    f[0] = -200 * x[0] * t1 - (1 - x[0]);
    f[1] = 200 * t1 + Real(20.2) * (x[1] - 1) + Real(19.8) * (x[3] - 1);
    f[2] = -180 * x[2] * t2 - (1 - x[2]);
    f[3] = 180 * t2 + Real(20.2) * (x[3] - 1) + Real(19.8) * (x[1] - 1);
  }
  static void watson(long n, Real* x, Real* f) {
    for (long k = 0; k < n; ++k) f[k] = 0;
    for (int i = 1; i <= 29; ++i) {
      const Real t = Real(i) / 29;
      Real sum1 = 0, sum2 = 0, power = 1;
      for (long j = 1; j < n; ++j, power *= t) sum1 += Real(j) * power * x[j];
      power = 1;
      for (long j = 0; j < n; ++j, power *= t) sum2 += power * x[j];
      const Real rest = sum1 - sum2 * sum2 - 1, twice = 2 * t * sum2;
      power = 1 / t;
      for (long k = 0; k < n; ++k, power *= t) f[k] += power * (Real(k) - twice) * rest;
    }
    const Real rest = x[1] - x[0] * x[0] - 1;
    f[0] += x[0] * (1 - 2 * rest);
    f[1] += rest;
  }
  static void brown(long n, Real* x, Real* f) {
    Real sum = -Real(n + 1), product = 1;
    for (long j = 0; j < n; ++j) {
      sum += x[j];
      product *= x[j];
    }
    for (long k = 0; k < n; ++k) f[k] = x[k] + sum;
    f[n - 1] = product - 1;
  }
  static void boundary_value(long n, Real* x, Real* f) {
    const Real h = 1 / Real(n + 1);
    for (long k = 0; k < n; ++k) {
      const Real t = x[k] + Real(k + 1) * h + 1;
      f[k] = 2 * x[k] - (k > 0 ? x[k - 1] : 0) - (k + 1 < n ? x[k + 1] : 0) + t * t * t * h * h / 2;
    }
  }
  static void integral(long n, Real* x, Real* f) {
    const Real h = 1 / Real(n + 1);
    for (long k = 0; k < n; ++k) {
      const Real tk = Real(k + 1) * h;
      Real below = 0, above = 0;
      for (long j = 0; j < n; ++j) {
        const Real tj = Real(j + 1) * h, t = x[j] + tj + 1, cube = t * t * t;
        if (j <= k) {
          below += tj * cube;
        } else {
          above += (1 - tj) * cube;
        }
      }
      f[k] = x[k] + h * ((1 - tk) * below + tk * above) / 2;
    }
  }
  static void trigonometric(long n, Real* x, Real* f) {
    Real sum = 0;
    for (long j = 0; j < n; ++j) sum += std::cos(x[j]);
    for (long k = 0; k < n; ++k) f[k] = Real(n + k + 1) - std::sin(x[k]) - sum - Real(k + 1) * std::cos(x[k]);
  }
  static void variably_dimensioned(long n, Real* x, Real* f) {
    Real sum = 0;
    for (long j = 0; j < n; ++j) sum += Real(j + 1) * (x[j] - 1);
    for (long k = 0; k < n; ++k) f[k] = x[k] - 1 + Real(k + 1) * sum * (1 + 2 * sum * sum);
  }
  static void broyden_tridiagonal(long n, Real* x, Real* f) {
    for (long k = 0; k < n; ++k) {
      f[k] = (3 - 2 * x[k]) * x[k] - (k > 0 ? x[k - 1] : 0) - (k + 1 < n ? 2 * x[k + 1] : 0) + 1;
    }
  }
  static void broyden_banded(long n, Real* x, Real* f) {
    for (long k = 0; k < n; ++k) {
      Real sum = 0;
      for (long j = std::max(0L, k - 5); j <= std::min(n - 1, k + 1); ++j) {
        if (j != k) sum += x[j] * (1 + x[j]);
      }
      f[k] = x[k] * (2 + 5 * x[k] * x[k]) + 1 - sum;
    }
  }
};

template <class Real>
std::vector<Problem<Real>> collection() {
  using Fn = F<Real>;
  std::vector<Problem<Real>> all = {
      {"rosenbrock", 2, square<Real, problems::rosenbrock<Real>>, {Real(-1.2), 1}},
      {"powell singular", 4, square<Real, problems::powell_singular<Real>>, {3, -1, 0, 1}},
      {"powell badly scaled", 2, square<Real, problems::powell_badly_scaled<Real>>, {0, 1}},
      {"wood", 4, Fn::wood, {-3, -1, -3, -1}},
      {"helical valley", 3, square<Real, problems::helical_valley<Real>>, {-1, 0, 0}},
  };
  const auto fill = [](long n, auto value) {
    std::vector<Real> x(n);
    for (long j = 0; j < n; ++j) x[j] = static_cast<Real>(value(j));
    return x;
  };
  for (long n : {6L, 9L}) all.push_back({"watson", n, Fn::watson, fill(n, [](long) { return 0.0; })});
  for (long n : {5L, 6L, 7L, 8L, 9L}) {
    all.push_back({"chebyquad", n, square<Real, problems::chebyquad<Real>>,
                   fill(n, [n](long j) { return double(j + 1) / double(n + 1); })});
  }
  for (long n : {10L, 30L, 40L}) all.push_back({"brown", n, Fn::brown, fill(n, [](long) { return 0.5; })});
  const auto grid = [](long n) {
    return [n](long j) {
      const double t = double(j + 1) / double(n + 1);
      return t * (t - 1);
    };
  };
  all.push_back({"boundary value", 10, Fn::boundary_value, fill(10, grid(10))});
  for (long n : {1L, 10L}) all.push_back({"integral", n, Fn::integral, fill(n, grid(n))});
  all.push_back({"trigonometric", 10, Fn::trigonometric, fill(10, [](long) { return 0.1; })});
  all.push_back({"variably dimensioned", 10, Fn::variably_dimensioned, fill(10, [](long j) { return 1 - 0.1 * double(j + 1); })});
  all.push_back({"broyden tridiagonal", 10, Fn::broyden_tridiagonal, fill(10, [](long) { return -1.0; })});
  all.push_back({"broyden banded", 10, Fn::broyden_banded, fill(10, [](long) { return -1.0; })});
  return all;
}

}  // namespace systems
