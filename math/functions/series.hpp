// Chebyshev series: how many terms a precision needs, and their value. The tables are types (math/functions/tables/*.inc, written
// by tools/series_*.py), so that the counts, and the power form that the fast evaluation uses, are found by the compiler.
#pragma once

#include <bit>
#include <type_traits>

#include "runtime/envelope.hpp"
#include "runtime/machine.hpp"

namespace zent::series {

template <class Real>
constexpr Real magnitude(Real x) {
  return x < 0 ? -x : x;
}

// The number of leading terms whose tail sums to at most eta, counted from 1; n when even the last term alone exceeds it. The sum
// runs in single precision for both forms: it only has to find a size.
template <class Real>
constexpr long count_terms(const Real* series, long n, Real eta) {
  float sum = 0;
  long i = n;
  for (; i > 1; --i) {
    sum += magnitude(static_cast<float>(series[i - 1]));
    if (static_cast<Real>(sum) > eta) break;
  }
  return i;
}

// Clenshaw's recurrence; the first coefficient counts half.
template <class Real>
constexpr Real clenshaw(const Real* series, long n, Real x) {
  const Real twice = 2 * x;
  Real b0 = 0, b1 = 0, b2 = 0;
  for (long i = n - 1; i >= 0; --i) {
    b2 = b1;
    b1 = b0;
    b0 = twice * b1 - b2 + series[i];
  }
  return (b0 - b2) / 2;
}

// A table is a struct with `real[]` and `single[]`. Counts and power form of its leading terms for one precision.
template <class Table, class Real>
struct Series {
  static constexpr const Real* coefficients() {
    if constexpr (std::is_same_v<Real, float>) {
      return Table::single;
    } else {
      return Table::real;
    }
  }
  static constexpr long length() {
    if constexpr (std::is_same_v<Real, float>) {
      return static_cast<long>(sizeof Table::single / sizeof(float));
    } else {
      return static_cast<long>(sizeof Table::real / sizeof(double));
    }
  }
  static constexpr long terms = count_terms(coefficients(), length(), static_cast<Real>(0.1) * Machine<Real>::spacing);
  static_assert(terms < length());  // a count of the whole table would be error 9005

  struct Power {
    Real c[terms];
  };
  // From the double table for both precisions, in extended arithmetic: T(k+1) = 2x T(k) - T(k-1).
  static constexpr Power make_power() {
    long double sum[terms] = {}, t0[terms] = {}, t1[terms] = {};
    t0[0] = 1;
    if (terms > 1) t1[terms > 1 ? 1 : 0] = 1;
    for (long k = 0; k < terms; ++k) {
      const long double c = static_cast<long double>(Table::real[k]) / (k == 0 ? 2 : 1);
      for (long i = 0; i <= k; ++i) sum[i] += c * t0[i];
      long double next[terms] = {};
      for (long i = 0; i < terms; ++i) next[i] = (i > 0 ? 2 * t1[i - 1] : 0) - t0[i];
      for (long i = 0; i < terms; ++i) {
        t0[i] = t1[i];
        t1[i] = next[i];
      }
    }
    Power p = {};
    for (long i = 0; i < terms; ++i) p.c[i] = static_cast<Real>(sum[i]);
    return p;
  }
  static constexpr Power power = make_power();
};

// Value of c[first] + c[first+1] x + ... (n terms) by halves, which shortens the chain of dependent operations: the powers of x
// stand in square[k] = x^(2^k).
template <long first, long n, class Real>
[[gnu::always_inline]] inline Real by_halves(const Real* c, const Real* square) {
  if constexpr (n == 1) {
    return c[first];
  } else if constexpr (n == 2) {
    return c[first] + c[first + 1] * square[0];
  } else {
    constexpr long low = static_cast<long>(std::bit_floor(static_cast<unsigned long>(n - 1)));
    constexpr int level = std::countr_zero(static_cast<unsigned long>(low));
    return by_halves<first, low>(c, square) + by_halves<first + low, n - low>(c, square) * square[level];
  }
}

template <long n, class Real>
[[gnu::always_inline]] inline Real polynomial(const Real* c, Real x) {
  Real square[7];
  square[0] = x;
  constexpr int levels = std::bit_width(static_cast<unsigned long>(n > 1 ? n - 1 : 1));
  static_assert(levels <= 7);
  for (int k = 1; k < levels; ++k) square[k] = square[k - 1] * square[k - 1];
  return by_halves<0, n>(c, square);
}

// Two neighbouring coefficients at a time: a polynomial in x^2 whose coefficients are pairs takes half of the operations.
// The even and the odd part meet last, so whatever cancels between them keeps its rounding errors.
using Pair = double __attribute__((vector_size(16)));

template <long first, long count, long n>
[[gnu::always_inline]] inline Pair pairs_by_halves(const double* c, const Pair* square) {
  if constexpr (count == 1 && 2 * first + 1 == n) {
    return Pair{c[n - 1], 0};
  } else if constexpr (count == 1) {
    Pair pair;
    __builtin_memcpy(&pair, c + 2 * first, sizeof pair);
    return pair;
  } else {
    constexpr long low = static_cast<long>(std::bit_floor(static_cast<unsigned long>(count - 1)));
    constexpr int level = std::countr_zero(static_cast<unsigned long>(low));
    return pairs_by_halves<first, low, n>(c, square) + pairs_by_halves<first + low, count - low, n>(c, square) * square[level];
  }
}

template <long n, class Real>
[[gnu::always_inline]] inline Real paired_polynomial(const Real* c, Real x) {
  if constexpr (!std::is_same_v<Real, double> || n < 6) {
    return polynomial<n>(c, x);
  } else {
    constexpr long count = (n + 1) / 2;
    constexpr int levels = std::bit_width(static_cast<unsigned long>(count - 1));
    static_assert(levels <= 7);
    Pair square[levels];
    square[0] = Pair{x, x} * Pair{x, x};
    for (int k = 1; k < levels; ++k) square[k] = square[k - 1] * square[k - 1];
    const Pair sum = pairs_by_halves<0, count, n>(c, square);
    return sum[0] + sum[1] * x;
  }
}

// The series by Clenshaw's recurrence, for x known to lie in -1 to 1: no frame, no checks.
template <class Table, class Real>
inline Real chebyshev(Real x) {
  using S = Series<Table, Real>;
  return clenshaw(S::coefficients(), S::terms, x);
}

// The same value (to rounding) from the power form, several times as fast. For series whose terms fall by 2.5 or more a step,
// as those of all smooth functions here do: the power form then cancels nothing.
template <class Table, class Real>
[[gnu::always_inline]] inline Real evaluate(Real x) {
  using S = Series<Table, Real>;
  return polynomial<S::terms>(S::power.c, x);
}

// The same in pairs, for a series whose even and odd part do not cancel, or that is small beside what it is added to.
template <class Table, class Real>
[[gnu::always_inline]] inline Real evaluate_in_pairs(Real x) {
  using S = Series<Table, Real>;
  return paired_polynomial<S::terms>(S::power.c, x);
}

// The public forms with their checks. Both precisions show one name.
template <class Half>
inline constexpr const char* csevl_name = Half::is_math ? "zent_csevl" : "zents_csevl";
template <class Half>
inline constexpr const char* initds_name = Half::is_math ? "zent_initds" : "zents_initds";

template <class Half, class Real>
Real l_csevl(const Real* series, long n, Real x) {
  if (n < 1) {
    raise<Half>(5, MATH_CHEBY_NEG_TERMS, {.i = {n}});
    return Machine<Real>::not_a_number;
  }
  if (n > 1000) {
    raise<Half>(5, MATH_CHEBY_TOO_MANY_TERMS, {.i = {n}});
    return Machine<Real>::not_a_number;
  }
  const Real limit = static_cast<Real>(1.1);
  if (x < -limit || x > limit) raise<Half>(3, MATH_CHEBY_RANGE, {.r = {static_cast<double>(x)}});
  return clenshaw(series, n, x);
}

template <class Half, class Real>
long l_initds(const Real* series, long n, Real eta) {
  if (n < 1) {
    raise<Half>(5, MATH_CHEBY_EVAL_TERMS, {.i = {n}});
    return 0;
  }
  const long i = count_terms(series, n, eta);
  if (i == n && static_cast<Real>(magnitude(static_cast<float>(series[n - 1]))) > eta) {
    raise<Half>(5, MATH_CHEBY_EVAL_TOL);
    return 0;
  }
  return i;
}

template <class Half, class Real>
Real csevl(const Real* series, long n, Real x) {
  return public_call<Half>(csevl_name<Half>, [=] { return l_csevl<Half>(series, n, x); });
}
template <class Half, class Real>
long initds(const Real* series, long n, Real eta) {
  return public_call<Half>(initds_name<Half>, [=] { return l_initds<Half>(series, n, eta); });
}

}  // namespace zent::series
