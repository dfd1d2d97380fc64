// Binomial coefficients.
#pragma once

#include "math/functions/beta.hpp"

namespace zent::functions {

// n over m for 0 <= m <= n: exact in integers while the intermediate products fit, then a product in the precision (long double
// carries the rounding), then the beta function. Infinite beyond the largest number.
template <class Real>
inline Real binomial_value(long n, long m) {
  const long k = m < n - m ? m : n - m;
  unsigned long whole = 1;
  long i = 1;
  for (; i <= k; ++i) {
    unsigned long product;
    if (__builtin_mul_overflow(whole, static_cast<unsigned long>(n - k + i), &product)) break;
    whole = product / static_cast<unsigned long>(i);
  }
  long double value = static_cast<long double>(whole);
  const long double most = static_cast<long double>(Machine<Real>::largest);
  for (; i <= k && value <= most; ++i) value = value * static_cast<long double>(n - k + i) / static_cast<long double>(i);
  return value > most ? Machine<Real>::infinity : static_cast<Real>(value);
}

template <class Half, class Real>
Real l_dbinom(long n, long m) {
  if (m < 0 || m > n) {
    raise<Half>(5, STAT_INEQUALITY_VIOLATION_0, {.i = {m, n}});
    return Machine<Real>::not_a_number;
  }
  const Real value = binomial_value<Real>(n, m);
  if (value <= Machine<Real>::largest) return value;
  raise<Half>(5, STAT_BINOMIAL_OVERFLOW, {.i = {n, m}});
  return Machine<Real>::not_a_number;
}

}  // namespace zent::functions
