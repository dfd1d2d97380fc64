// The rules, the building blocks and the tables behind the integrators.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "math/quadrature/adaptive_weighted.hpp"
#include "math/quadrature/oscillatory.hpp"
#include "math/quadrature/smooth.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

using namespace zent::quadrature;

template <class T>
class Rules : public testing::Test {
 protected:
  static constexpr double unit = sizeof(T) == sizeof(float) ? 6e-8 : 1.1e-16;
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Rules, Reals);

// Legendre polynomials: the rule is exact up to its degree, where every one but the first has integral 0, and not beyond it.
template <class Real>
Real legendre(int n, Real x) {
  Real p = 1, q = 0;
  for (int k = 0; k < n; ++k) {
    const Real next = (static_cast<Real>(2 * k + 1) * x * p - static_cast<Real>(k) * q) / static_cast<Real>(k + 1);
    q = p;
    p = next;
  }
  return p;
}
int degree;
template <class Real>
Real polynomial(Real x, void*) {
  return legendre(degree, x);
}

template <class Real, class Apply>
void expect_degree(Apply apply, int exact, double rounding) {
  for (degree = 0; degree <= exact; ++degree) EXPECT_NEAR(apply(), degree == 0 ? 2 : 0, rounding) << degree << " of " << exact;
  degree = exact + 1 + (exact + 1) % 2;  // odd ones vanish by symmetry
  EXPECT_GT(std::fabs(apply()), sizeof(Real) == sizeof(double) ? 1e-12 : 0) << exact;
}

TYPED_TEST(Rules, ExactForPolynomials) {
  using Real = TypeParam;
  const auto f = bare_integrand<zent::Math, Real>(polynomial<Real>, nullptr);
  const double rounding = 12 * this->unit;
  // A pair of 2 n + 1 points integrates degree 3 n + 1, and by symmetry one more if that is even.
  const int exact[] = {23, 31, 47, 61, 77, 91};
  for (long rule = 1; rule <= 6; ++rule) {
    expect_degree<Real>([&] { return l_rule(f, Real(-1), Real(1), rule).result; }, exact[rule - 1], rounding);
  }
  // The nested rules: run to the one wanted by a tolerance that only it can reach, or that none can.
  degree = 3;
  EXPECT_EQ(l_q3ng(f, Real(-1), Real(1), Real(1e-3), Real(0)).neval, 21);
  const auto last = [&] { return l_q3ng(f, Real(-1), Real(1), Real(-1), Real(0)); };
  EXPECT_EQ(last().neval, 87);
  expect_degree<Real>([&] { return last().result; }, 131, rounding);
}

// Each nested rule by its own weights: to its degree.
TYPED_TEST(Rules, NestedWeights) {
  using Real = TypeParam;
  using T = Patterson<Real>;
  const auto sum = [](int n, std::initializer_list<std::pair<const Real*, int>> nodes, std::initializer_list<const Real*> weights,
                      const Real* centre) {
    double s = centre == nullptr ? 0 : *centre * legendre<Real>(n, 0);
    auto w = weights.begin();
    const Real* weight = *w;
    int left = -1;
    for (const auto& [x, count] : nodes) {
      for (int j = 0; j < count; ++j) {
        if (left == 0) weight = *++w;
        s += 2 * static_cast<double>(*weight++) * static_cast<double>(legendre<Real>(n, x[j]));
        --left;
      }
      left = 0;
    }
    return s;
  };
  for (int n = 0; n <= 18; n += 2) EXPECT_NEAR(sum(n, {{T::x1, 5}}, {T::w10}, nullptr), n == 0 ? 2 : 0, 8 * this->unit) << n;
  for (int n = 0; n <= 30; n += 2) {
    EXPECT_NEAR(sum(n, {{T::x1, 5}, {T::x2, 5}}, {T::w21a, T::w21b}, &T::w21b[5]), n == 0 ? 2 : 0, 8 * this->unit) << n;
  }
}

TYPED_TEST(Rules, EveryErrorEstimateIsScaled) {
  using Real = TypeParam;
  EXPECT_EQ(scaled_error(Real(0), Real(0), Real(1)), 0);
  EXPECT_EQ(scaled_error(Real(1), Real(1), Real(1)), 1);                                  // never above the variation
  EXPECT_NEAR(scaled_error(Real(1e-4), Real(1e-9), Real(1)), std::pow(0.02, 1.5), 1e-8);  // power 1.5 of 200 times
  EXPECT_EQ(scaled_error(Real(0), Real(1), Real(0)), 50 * zent::Machine<Real>::epsilon);  // and not below rounding
  EXPECT_EQ(scaled_error(Real(0), zent::Machine<Real>::smallest, Real(0)), 0);
}

TYPED_TEST(Rules, ChebyshevSeries) {
  using Real = TypeParam;
  for (int k = 0; k <= 24; ++k) {
    Real values[25], c12[13], c24[25];
    for (int j = 0; j <= 24; ++j) values[j] = static_cast<Real>(std::cos(j * k * M_PI / 24)) / (j % 24 == 0 ? 2 : 1);
    l_q7awo(values, c12, c24);
    for (int i = 0; i <= 24; ++i) EXPECT_NEAR(c24[i], i == k, 20 * this->unit) << k << " " << i;
    for (int i = 0; i <= 12; ++i) EXPECT_NEAR(c12[i], i == std::min(k, 24 - k), 20 * this->unit) << k << " " << i;
  }
}

// Moments of the weights, against sums over very many Chebyshev points.
template <class Weight>
double moment(int k, Weight weight) {
  double s = 0;
  const int n = 4000;  // x = cos t makes end-point powers smooth enough for the midpoint rule
  for (int j = 0; j < n; ++j) {
    const double t = (j + 0.5) * M_PI / n;
    s += weight(std::cos(t)) * std::cos(k * t) * std::sin(t);
  }
  return s * M_PI / n;
}

TYPED_TEST(Rules, OscillatoryMoments) {
  using Real = TypeParam;
  for (double p : {2.1, 5.0, 13.7, 23.9, 24.1, 40.0, 300.0, -7.0}) {
    Real m[25];
    oscillatory_moments(static_cast<Real>(p), m);
    for (int k = 0; k < 25; ++k) {
      const double q = static_cast<double>(static_cast<Real>(p));
      const double exact = moment(k, [&](double x) { return k % 2 == 0 ? std::cos(q * x) : std::sin(q * x); });
      EXPECT_NEAR(m[k], exact, 1e-6 + 400 * this->unit) << p << " " << k;
    }
  }
}

TYPED_TEST(Rules, AlgebraicLogarithmicMoments) {
  using Real = TypeParam;
  for (long weight : {both_logs, left_log, right_log}) {  // a single logarithm, and no power at the other end
    const bool left = weight != right_log, right = weight != left_log;
    AlgLogMoments<Real> m;
    l_q5aws(Real(left ? 1.5 : 0), Real(right ? 2 : 0), weight, m);
    for (int k = 0; k < 25; ++k) {
      const double near = 2e-6 + 1000 * this->unit;
      if (left) {
        EXPECT_NEAR(m.ri[k], moment(k, [](double x) { return std::pow(1 + x, 1.5); }), near) << k;
        EXPECT_NEAR(m.rg[k], moment(k, [](double x) { return std::pow(1 + x, 1.5) * std::log((1 + x) / 2); }), near) << k;
      }
      if (right) {
        EXPECT_NEAR(m.rj[k], moment(k, [](double x) { return std::pow(1 - x, 2); }), near) << k;
        EXPECT_NEAR(m.rh[k], moment(k, [](double x) { return std::pow(1 - x, 2) * std::log((1 - x) / 2); }), near) << k;
      }
    }
  }
}

// Tridiagonal equations with a known solution: rows are exchanged at every step, at some, at none.
TEST(Moments, EliminationExchangesRows) {
  for (double diagonal : {1e-3, 2.0, 1e3}) {
    using E = MomentEquations<double>;
    constexpr int n = E::equations;
    std::vector<double> exact(n);
    const auto lower = [](int k) { return 2 + std::sin(k); };
    const auto upper = [](int k) { return 1 + 0.5 * std::cos(k); };
    const auto middle = [diagonal](int k) { return diagonal * (k % 3 + 1); };
    for (int k = 0; k < n; ++k) exact[k] = std::cos(3.0 * k);
    const auto right = [&](int k) {
      return middle(k) * exact[k] + (k > 0 ? lower(k) * exact[k - 1] : 0) + (k < E::end ? upper(k) * exact[k + 1] : 0);
    };
    E e;
    e.row = {middle(0), upper(0), right(0)};
    for (int k = 0; k < E::end; ++k)
      e.eliminate(k, lower(k + 1), {middle(k + 1), k + 1 < E::end ? upper(k + 1) : 0, right(k + 1)});
    e.finish();
    for (int k = E::end - 1; k >= 0; --k) e.substitute(k);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(e.x[k], exact[k], 1e-9) << diagonal << " " << k;
  }
}

// The list of errors against a full sort, with ties; an interval goes below one of equal error on its way up and above on its way
// down.
TEST(List, StaysSorted) {
  const long limit = 60;
  std::vector<double> error(limit, 0);
  std::vector<long> order(limit, 0);
  long largest = 1, place = 1;
  double value = error[0] = 64;
  order[0] = 1;
  for (long last = 2; last <= limit; ++last) {
    const double parent = error[largest - 1];
    error[largest - 1] = parent * (last % 3 == 0 ? 0.5 : 0.25);
    error[last - 1] = parent * (last % 5 == 0 ? 0.125 : 0.25);
    if (error[last - 1] > error[largest - 1]) std::swap(error[last - 1], error[largest - 1]);
    zent_dq10g(limit, last, &largest, &value, error.data(), order.data(), &place);
    const long sorted = last > limit / 2 + 2 ? limit + 1 - last : last;
    std::vector<double> all(error.begin(), error.begin() + last);
    std::sort(all.rbegin(), all.rend());
    for (long k = 0; k < sorted; ++k) ASSERT_EQ(error[order[k] - 1], all[k]) << last << " " << k;
    EXPECT_EQ(value, all[0]);
  }
  double ties[4] = {1, 1, 2, 1};  // 2 was halved into 2 and 4, both equal to 1
  long list[4] = {2, 3, 1, 0}, first = 1, found = 2;
  double top = 0;
  zent_dq10g(10, 4, &found, &top, ties, list, &first);
  EXPECT_EQ(std::vector<long>(list, list + 4), (std::vector<long>{3, 2, 1, 4}));
  EXPECT_EQ(found, 3);
  EXPECT_EQ(top, 2);
}

// Partial sums of the alternating series of log 2: forty terms give all digits.
TEST(Epsilon, AcceleratesAnAlternatingSeries) {
  const double unset = std::nan("");
  double table[52], result = 0, error = 0, three[3] = {unset, unset, unset}, sum = 0;  // filled by the first three calls
  long n = 0, calls = 0;
  for (int k = 1; k <= 18; ++k) {
    table[n++] = sum += (k % 2 == 1 ? 1.0 : -1.0) / k;
    zent_dq4awo(&n, table, &result, &error, three, &calls);
    if (k < 4) {
      EXPECT_EQ(error, zent::Machine<double>::largest);
    } else {
      EXPECT_GE(error, std::fabs(result - std::log(2.0))) << k;
    }
  }
  EXPECT_NEAR(result, std::log(2.0), 1e-12);
  // A sequence that has converged says so, and goes on.
  n = calls = 0;
  for (int k = 0; k < 60; ++k) {
    table[n++] = 2;
    zent_dq4awo(&n, table, &result, &error, three, &calls);
    EXPECT_EQ(result, 2);
    ASSERT_LT(n, 51);
    EXPECT_EQ(table[n - 1], 2);
  }
  EXPECT_NEAR(error, 10 * zent::Machine<double>::epsilon, 1e-20);
}

}  // namespace
