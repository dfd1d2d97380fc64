// Quadrature rules on one interval: Gauss-Kronrod pairs (Kronrod 1965), with a weight function, on the transformed infinite
// range, and the degree 24 Chebyshev expansion of Clenshaw and Curtis (1960).
#pragma once

#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "math/quadrature/integrand.hpp"
#include "runtime/machine.hpp"

namespace zent::quadrature {

// What one application of a rule gives: the integral, an estimate of its error, and the rule applied to |f| and to |f - mean f|.
template <class Real>
struct Estimate {
  Real result, abserr, resabs, resasc;
};

// Tables, each literal rounded once to its precision.
template <class Real, int points>
struct Kronrod;
template <class Real>
struct Patterson;
template <class Real>
struct Chebyshev24;

#define ZENT_QUADRATURE_TABLES(points)      \
  template <>                               \
  struct Kronrod<ZENT_TABLE_REAL, points> { \
    using Real = ZENT_TABLE_REAL;           \
    static constexpr int half = points / 2, gauss = half / 2;

#define V(x) x
#define ZENT_TABLE_REAL double
#include "math/quadrature/rule_tables.inc"
#undef V
#undef ZENT_TABLE_REAL

#define V(x) x##F
#define ZENT_TABLE_REAL float
#include "math/quadrature/rule_tables.inc"
#undef V
#undef ZENT_TABLE_REAL
#undef ZENT_QUADRATURE_TABLES

// The raw difference of two rules made an error: small against the variation of f it counts with power 1.5, and it never falls
// below what rounding alone does.
template <class Real>
inline Real scaled_error(Real error, Real resabs, Real resasc) {
  using M = Machine<Real>;
  if (resasc != 0 && error != 0) {
    const Real ratio = 200 * error / resasc;
    const Real scaled = ratio * std::sqrt(ratio);
    error = scaled < 1 ? resasc * scaled : scaled >= 1 ? resasc : scaled;  // the last one keeps a not-a-number
  }
  constexpr Real floor = 50 * M::epsilon;
  if (resabs > M::smallest / floor && error < floor * resabs) error = floor * resabs;
  return error;
}

// An estimate with a value that is infinite or not a number: the interval comes to be halved first, and says nothing about
// rounding.
template <class Real>
inline Estimate<Real> settled(const Estimate<Real>& e) {
  if (e.abserr <= Machine<Real>::largest && std::fabs(e.result) <= Machine<Real>::largest) [[likely]]
    return e;
  return {e.result, Machine<Real>::largest, 0, Machine<Real>::largest};
}

// The error that is allowed. A result that is not finite allows none in proportion to it.
template <class Real>
inline Real tolerance(Real err_abs, Real err_rel, Real result) {
  const Real relative = err_rel * std::fabs(result);
  return relative > err_abs && relative <= Machine<Real>::largest ? relative : err_abs;
}

// As many numbers as the machine works on at once, and how they are read from arrays of them, or the last ones one by one.
template <class Real>
struct Lanes {
  typedef Real type __attribute__((vector_size(16)));
  typedef std::conditional_t<sizeof(Real) == 8, long, int> bits __attribute__((vector_size(16)));
  static constexpr int width = 16 / sizeof(Real);

  int j;
  type operator()(const Real* p) const {
    type v;
    std::memcpy(&v, p + j, sizeof v);
    return v;
  }
  static type absolute(type v) {
    return std::bit_cast<type>(std::bit_cast<bits>(v) & (sizeof(Real) == 8 ? ~(1L << 63) : 0x7FFFFFFF));
  }
};
template <class Real>
struct Single {
  int j;
  Real operator()(const Real* p) const {
    return p[j];
  }
  static Real absolute(Real x) {
    return std::fabs(x);
  }
};

// The sum of n terms: term(at) takes element j of an array x by at(x). Two strands of lanes, so that additions do not wait for
// each other.
template <class Real, int n, class Term>
inline Real lane_sum(Term term) {
  using L = Lanes<Real>;
  constexpr int pair = 2 * L::width, whole = n / L::width * L::width;
  typename L::type s{}, t{};
  for (int j = 0; j < n / pair * pair; j += pair) {
    s += term(L{j});
    t += term(L{j + L::width});
  }
  if constexpr (whole % pair != 0) s += term(L{whole - L::width});
  s += t;
  Real sum = s[0] + s[1];
  for (int k = 2; k < L::width; ++k) sum += s[k];
  for (int j = whole; j < n; ++j) sum += term(Single<Real>{j});
  return sum;
}

// The weights of the Gauss rule at the nodes of the Kronrod rule, 0 at those which are not its own.
template <class Real, int points>
struct GaussWeights {
  Real at[points / 2];
  constexpr GaussWeights() : at() {
    for (int j = 0; j < Kronrod<Real, points>::gauss; ++j) at[2 * j + 1] = Kronrod<Real, points>::wg[j];
  }
};
template <class Real, int points>
inline constexpr GaussWeights<Real, points> gauss_weights;

// Sums a Gauss-Kronrod pair over values at the centre and at h times the nodes to either side of it.
template <int points, class Real>
inline Estimate<Real> kronrod_sums(Real centre_value, const Real* left, const Real* right, Real h) {
  using T = Kronrod<Real, points>;
  constexpr int n = T::half;
  constexpr bool centre_in_gauss = n % 2 != 0;
  constexpr const Real* wg = gauss_weights<Real, points>.at;
  const Real kronrod = centre_value * T::wgk[n] + lane_sum<Real, n>([=](auto at) { return at(T::wgk) * (at(left) + at(right)); });
  const Real gauss = (centre_in_gauss ? centre_value * T::wg[T::gauss] : Real(0)) +
                     lane_sum<Real, n>([=](auto at) { return at(wg) * (at(left) + at(right)); });
  const Real absolute = T::wgk[n] * std::fabs(centre_value) +
                        lane_sum<Real, n>([=](auto at) { return at(T::wgk) * (at.absolute(at(left)) + at.absolute(at(right))); });
  const Real mean = kronrod / 2;
  const Real variation = T::wgk[n] * std::fabs(centre_value - mean) + lane_sum<Real, n>([=](auto at) {
                           return at(T::wgk) * (at.absolute(at(left) - mean) + at.absolute(at(right) - mean));
                         });
  const Real width = std::fabs(h);
  Estimate<Real> e{kronrod * h, std::fabs((kronrod - gauss) * h), absolute * width, variation * width};
  e.abserr = scaled_error(e.abserr, e.resabs, e.resasc);
  return settled(e);
}

// The pair with `points` nodes on [a, b]; `value` is called at the centre first, then from the ends inwards.
template <int points, class F, class Value, class Real = typename F::real>
inline Estimate<Real> kronrod_apply(const F& f, Real a, Real b, Value value) {
  using T = Kronrod<Real, points>;
  const Real centre = Real(0.5) * (a + b), h = Real(0.5) * (b - a);
  Real left[T::half], right[T::half];
  f.begin();
  const Real middle = value(centre);
  for (int j = 0; j < T::half; ++j) {
    left[j] = value(centre - h * T::xgk[j]);
    right[j] = value(centre + h * T::xgk[j]);
  }
  f.end();
  return kronrod_sums<points>(middle, left, right, h);
}

template <int points, class F, class Real = typename F::real>
[[gnu::noinline]] Estimate<Real> l_kronrod(const F& f, Real a, Real b) {
  return kronrod_apply<points>(f, a, b, [&f](Real x) { return f(x); });
}

// Rule 1 to 6: 15, 21, 31, 41, 51 or 61 points.
template <class F, class Real = typename F::real>
inline Estimate<Real> l_rule(const F& f, Real a, Real b, long rule) {
  switch (rule) {
    case 1:
      return l_kronrod<15>(f, a, b);
    case 2:
      return l_kronrod<21>(f, a, b);
    case 3:
      return l_kronrod<31>(f, a, b);
    case 4:
      return l_kronrod<41>(f, a, b);
    case 5:
      return l_kronrod<51>(f, a, b);
    default:
      return l_kronrod<61>(f, a, b);
  }
}

// 15 points on a part of (0, 1], to which x = bound + direction (1 - t) / t maps a half line; inf = 2 folds the whole line.
template <class F, class Real = typename F::real>
[[gnu::noinline]] Estimate<Real> l_q4agi(const F& f, Real bound, long inf, Real a, Real b) {
  const Real direction = inf < 0 ? Real(-1) : Real(1);
  return kronrod_apply<15>(f, a, b, [&f, bound, inf, direction](Real t) {
    const Real x = bound + direction * ((1 - t) / t);
    Real value = f(x);
    if (inf == 2) value += f(-x);
    return value / t / t;
  });
}

// 15 points for w(x) f(x), with a smooth weight function of up to four parameters and a code.
template <class Real>
struct Weight {
  Real (*w)(Real, Real, Real, Real, Real, long);
  Real p1, p2, p3, p4;
  long kp;
  Real operator()(Real x) const {
    return w(x, p1, p2, p3, p4, kp);
  }
};
template <class F, class W, class Real = typename F::real>
[[gnu::noinline]] Estimate<Real> l_q8awo(const F& f, const W& w, Real a, Real b) {
  return kronrod_apply<15>(f, a, b, [&f, &w](Real x) { return w(x) * f(x); });
}

// cos(k pi / 24) for any k >= 0.
template <class Real>
constexpr Real cosine24(int k) {
  k %= 48;
  if (k > 24) k = 48 - k;
  return k <= 12 ? Chebyshev24<Real>::cosine[k] : -Chebyshev24<Real>::cosine[24 - k];
}

// The points on [-1, 1].
template <class Real>
struct ChebyshevPoints {
  Real at[25];
  constexpr ChebyshevPoints() : at() {
    for (int j = 0; j <= 24; ++j) at[j] = cosine24<Real>(j);
  }
};
template <class Real>
inline constexpr ChebyshevPoints<Real> chebyshev_points;

// cos(j k pi / n) for the odd k up to n / 2, or for all k if n is odd; row j. Filled up to whole lanes.
template <class Real, int n>
struct CosineRows {
  static constexpr bool folds = n % 2 == 0;
  static constexpr int rows = folds ? n / 2 : n + 1, columns = folds ? (n / 2 + 1) / 2 : n + 1;
  static constexpr int width = Lanes<Real>::width, room = (columns + width - 1) / width * width;
  Real at[rows][room];
  constexpr CosineRows() : at() {
    for (int j = 0; j < rows; ++j) {
      for (int r = 0; r < columns; ++r) at[j][r] = cosine24<Real>(j * (folds ? 2 * r + 1 : r) * (24 / n));
    }
  }
};
template <class Real, int n>
inline constexpr CosineRows<Real, n> cosine_rows;

// Sums over f[j] cos(j k pi / n), j = 0 to n, for n = 24, 12, 6, 3, to c[stride k]: the even k are the sums of the folded values,
// and the odd k come in pairs k, n - k that share their products. Sums stay in lanes over all j.
template <int n, int stride = 1, class Real>
inline void cosine_sums(const Real* f, Real* c) {
  using L = Lanes<Real>;
  constexpr auto& table = cosine_rows<Real, n>;
  Real p[table.room], q[table.room];
  if constexpr (n % 2 != 0) {
    for (int r = 0; r < table.columns; r += L::width) {
      typename L::type sum{};
      for (int j = 0; j <= n; ++j) sum += f[j] * L{r}(table.at[j]);
      std::memcpy(p + r, &sum, sizeof sum);
    }
    for (int k = 0; k <= n; ++k) c[stride * k] = p[k];
  } else {
    constexpr int half = n / 2;
    Real even[half + 1], odd[half];
    for (int j = 0; j < half; ++j) {
      even[j] = f[j] + f[n - j];
      odd[j] = f[j] - f[n - j];
    }
    even[half] = f[half];
    for (int r = 0; r < table.columns; r += L::width) {
      typename L::type even_rows{}, odd_rows{};
      for (int j = 0; j < half; j += 2) even_rows += odd[j] * L{r}(table.at[j]);
      for (int j = 1; j < half; j += 2) odd_rows += odd[j] * L{r}(table.at[j]);
      const typename L::type low = even_rows + odd_rows, high = even_rows - odd_rows;
      std::memcpy(p + r, &low, sizeof low);
      std::memcpy(q + r, &high, sizeof high);
    }
    for (int r = 0; r < table.columns; ++r) {
      c[stride * (n - 2 * r - 1)] = q[r];
      c[stride * (2 * r + 1)] = p[r];
    }
    cosine_sums<half, 2 * stride>(even, c);
  }
}

// Chebyshev coefficients of degree 12 and 24 from values at cos(j pi / 24), j = 0 to 24, the first and last of them halved. On
// the coarser grid the coefficients k and 24 - k fall together, which gives the shorter series from the longer one.
template <class Real>
[[gnu::noinline]] void l_q7awo(const Real* f, Real* cheb12, Real* cheb24) {
  cosine_sums<24>(f, cheb24);
  constexpr Real scale = Real(1) / 12;
  for (int k = 0; k <= 24; ++k) cheb24[k] *= scale;
  cheb24[0] /= 2;
  cheb24[24] /= 2;
  for (int k = 0; k < 12; ++k) cheb12[k] = cheb24[k] + cheb24[24 - k];
  cheb12[12] = cheb24[12];
}

// The number next to x in the direction of the other end, which is finite.
inline double next_inside(double x, double to) {
  if (!(x < to || x > to)) return x;
  if (x == 0) return to > 0 ? 0x1p-1074 : -0x1p-1074;
  return std::bit_cast<double>(std::bit_cast<long>(x) + ((x < to) == (x > 0) ? 1 : -1));
}
inline float next_inside(float x, float to) {
  if (!(x < to || x > to)) return x;
  if (x == 0) return to > 0 ? 0x1p-149F : -0x1p-149F;
  return std::bit_cast<float>(std::bit_cast<int>(x) + ((x < to) == (x > 0) ? 1 : -1));
}

// Values at the 25 points of [a, b] for l_q7awo, from b down to a. The ends themselves are not touched, since f may be undefined
// there: the next number inside stands for each. Where f is singular its value is then large, and the interval will be halved.
template <class F, class Value, class Real = typename F::real>
inline void chebyshev_values(const F& f, Real a, Real b, Real* values, Value value) {
  const Real centre = Real(0.5) * (a + b), h = Real(0.5) * (b - a);
  const Real last = next_inside(b, a), first = next_inside(a, b);
  f.begin();
  values[0] = value(last) / 2;
  for (int j = 1; j < 24; ++j) values[j] = value(centre + h * chebyshev_points<Real>.at[j]);
  values[24] = value(first) / 2;
  f.end();
}

}  // namespace zent::quadrature
