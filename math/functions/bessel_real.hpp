// The Bessel functions of positive argument, for a run of orders: the formulas of bessel_core.hpp in real arithmetic, with sums
// and recurrences no step of which waits for a division.
#pragma once

#include <cmath>

#include "math/functions/bessel_core.hpp"
#include "math/functions/bessel_parts.hpp"

namespace zent::functions {

// The orders mu and mu + 1 of K or of Y, and the factor of the functions wanted: of K or Y themselves, or of I or J, which follow
// from the Wronskian.
template <class Real>
struct Start {
  KPair<Real> pair;
  Scaled<Real> factor;
};

// Temme's series for K (square = 1) and -pi/2 Y (square = -1), |mu| <= 1/2; see l_temme.
template <class Real>
KPair<Real> l_near_pair(Real mu, Real x, Real square) {
  const Real pi = static_cast<Real>(3.14159265358979323846), half = x / 2, quarter = square * half * half;
  const auto [even, odd] = gamma_parts(mu);
  const Real log_inverse = -log_of_half(x), sigma = mu * log_inverse, size = std::abs(sigma);
  // exp(size), exp(size) - 1 and exp(-size); far from 1 by a power, for there the rounding of the exponent would show.
  const bool apart = size > 1;
  const Real grown = apart ? std::pow(x, -std::abs(mu)) * std::exp2(std::abs(mu)) : std::expm1(size);
  const Real large = apart ? grown : 1 + grown, more = apart ? grown - 1 : grown, small = 1 / large;
  const Real ratio = size > Machine<Real>::smallest ? (more + more * small) / (2 * size) : 1;
  const Real reflection = mu == 0 ? 1 : pi * mu / std::sin(pi * mu);
  const Real sine = square < 0 ? std::sin(pi / 2 * mu) : 0, twist = mu == 0 ? 0 : 2 * sine * (sine / mu);
  Real f = reflection * (odd * ((large + small) / 2) + even * (ratio * log_inverse));
  Real p = Real(0.5) / (even - mu * odd) * (sigma < 0 ? small : large);
  Real q = Real(0.5) / (even + mu * odd) * (sigma < 0 ? large : small);
  Real c = 1, sum = f + twist * q, next = p;
  for (long k = 1; k < 500; ++k) {
    const Real r = static_cast<Real>(k), inverse_product = 1 / ((r - mu) * (r + mu));
    f = (r * f + p + q) * inverse_product;
    p *= (r + mu) * inverse_product;
    q *= (r - mu) * inverse_product;
    c *= quarter / r;
    const Real g = f + twist * q, term = c * g;
    sum += term;
    next += c * (p - r * g);
    if (std::abs(term) < std::abs(sum) * Machine<Real>::spacing / 4) break;
  }
  const Scaled<Real> z = scaled(x);
  return pair_near_zero(scaled(sum), scaled(2 * next) * inverse(z), z);
}

// K of the orders mu and mu + 1, exp(z) sqrt(2 z / pi) times them.
template <class T>
struct Factors {
  T low, high;
};

// Those for z = x (T real) or z = -i x (T complex) by the recurrence that Steed's continued fraction stands for, run backward,
// with the sum that normalizes it (Temme 1975). The recurrence has solutions that part like exp(2 sqrt(8 n |z|) cos(arg z / 2)):
// that tells where to start. Real and imaginary part stand apart, so that the compiler does not pack them to take them apart
// again.
template <class T, class Real>
Factors<T> l_backward(Real mu, Real x) {
  constexpr bool turned = kernel::ComplexRecord<T>;
  constexpr Real bits = std::numeric_limits<Real>::digits + 3, parting = bits * bits * static_cast<Real>(turned ? 0.112 : 0.058);
  const Real square = mu * mu, twice = 2 * x;
  const long steps = static_cast<long>(parting / x + (turned ? 4 : bits / 6 + 1));
  Real r = static_cast<Real>(steps), a_above = square - (r + Real(0.5)) * (r + Real(0.5));
  Real z = Machine<Real>::smallest / (Machine<Real>::epsilon * Machine<Real>::epsilon), above = 0, sum = z;
  Real z_im = 0, above_im = 0, sum_im = 0;
  for (; r > 0; r -= 1) {
    const Real a = square - (r - Real(0.5)) * (r - Real(0.5)), weight = a / r;
    Real below = a_above * above + 2 * r * z;
    if constexpr (turned) {
      const Real below_im = (a_above * above_im + 2 * r * z_im) - twice * z;
      below += twice * z_im;
      sum_im = below_im - weight * sum_im;
      above_im = z_im;
      z_im = below_im;
    } else {
      below += twice * z;
    }
    sum = below - weight * sum;
    above = z;
    z = below;
    a_above = a;
  }
  if constexpr (turned) {
    const T first = {z, z_im}, low = first / T{sum, sum_im};
    const T rest = T{mu + Real(0.5), 0} + (square - Real(0.25)) * (T{above, above_im} / first);
    return {low, low + low * T{-rest.im / x, rest.re / x}};
  } else {
    const Real low = z / sum, rest = mu + Real(0.5) + (square - Real(0.25)) * (above / z);
    return {low, low + low * (rest / x)};
  }
}

// The same for any order nu and great x by Hankel's expansion. With -x (T real): exp(-x) sqrt(2 pi x) I.
template <class T, class Real>
Factors<T> l_hankel_sums(Real nu, Real x) {
  const Real four = 4 * nu * nu, four_next = 4 * (nu + 1) * (nu + 1), inverse_8x = Real(0.125) / x;
  const Real square = kernel::ComplexRecord<T> ? -1 : 1;
  Real term = 1, even = 1, odd = 0, term_next = 1, even_next = 1, odd_next = 0;
  for (Real k = 1; k < 100; k += 2) {
    const Real j = 2 * k - 1, l = j + 2, step = inverse_8x / k, turned_step = square * (inverse_8x / (k + 1));
    term *= (four - j * j) * step;
    term_next *= (four_next - j * j) * step;
    odd += term;
    odd_next += term_next;
    term *= (four - l * l) * turned_step;
    term_next *= (four_next - l * l) * turned_step;
    even += term;
    even_next += term_next;
    if (std::abs(term) + std::abs(term_next) < Machine<Real>::spacing / 8) break;
  }
  if constexpr (kernel::ComplexRecord<T>) {
    return {{even, odd}, {even_next, odd_next}};
  } else {
    return {even + odd, even_next + odd_next};
  }
}

// For orders that are odd multiples of 1/2 the expansion ends after a few terms, and is exact for any x.
template <class T, class Real>
Factors<T> l_factors(Real mu, Real x) {
  const bool near = x < hankel_modulus<Real> && std::abs(mu) != Real(0.5);
  return near ? l_backward<T, Real>(mu, x) : l_hankel_sums<T, Real>(mu, x);
}

// How many whole orders lie below those that Hankel's expansion still serves: recurrences may start above them.
template <class Real>
inline long orders_to_skip(Real x, long whole) {
  return x < hankel_modulus<Real> ? 0 : static_cast<long>(std::min(std::sqrt(2 * x) - 2, static_cast<Real>(whole)));
}

// The orders mu + skip and mu + skip + 1 of both J and Y, from Hankel's function.
template <class Real>
struct Waves {
  KPair<Real> j, y;
};
template <class Real>
Waves<Real> l_waves(Real mu, long skip, Real x) {
  using C = Complex<Real>;
  const Factors<C> f = l_factors<C, Real>(mu + static_cast<Real>(skip), x);
  const Real amplitude = std::sqrt(static_cast<Real>(0.63661977236758134308) / x);
  const C back = quarter_turns<Real>(turn<Real>(-(mu / 2 + Real(0.25))), -skip);
  const C wave = amplitude * (C{std::cos(x), std::sin(x)} * back);
  const C low = wave * f.low, high = wave * f.high;
  return {{low.re, high.im, 0}, {low.im, -high.re, 0}};
}

// I or J of order nu + 1 over that of order nu by the convergents of the continued fraction.
template <class Real>
Real l_real_fraction(Real nu, Real x, Real square) {
  const Real inverse_x = 2 / x, first = (nu + 1) * inverse_x, second = (nu + 2) * inverse_x;
  if (!(first * second < 100 / Machine<Real>::spacing)) return x / (2 * (nu + 1));
  const Real wanted = 100 * std::max(first, Real(1)) / Machine<Real>::spacing;
  Real above_before = 0, above = 1, below_before = 1, below = first;
  for (Real order = nu + 2; std::abs(below * below_before) < wanted; order += 1) {
    const Real b = order * inverse_x;
    const Real above_next = b * above + square * above_before, below_next = b * below + square * below_before;
    above_before = above, above = above_next;
    below_before = below, below = below_next;
  }
  return below == 0 ? 1 / Machine<Real>::spacing : above / below;  // at a zero of the lower order: as in l_next_ratio
}

// Up to here Temme's series serves: for larger x its terms cancel.
template <class Real>
inline Real near_end(Real square) {
  return square < 0 ? Real(2.5) : Real(1.5);
}

// Orders mu + skip and the next. For I and K (square = 1), or J and Y (square = -1); `first_kind` tells which of the two is
// wanted.
template <class Real>
Start<Real> l_start(Real mu, long skip, Real x, Real square, bool first_kind) {
  const Scaled<Real> one = {1, 0}, minus_two_over_pi = {static_cast<Real>(-0.63661977236758134308), 0};
  if (x <= near_end(square)) return {l_near_pair(mu, x, square), square < 0 && !first_kind ? minus_two_over_pi : one};
  if (square < 0) return {l_waves(mu, skip, x).y, first_kind ? minus_two_over_pi : one};
  const Factors<Real> f = l_factors<Real, Real>(mu + static_cast<Real>(skip), x);
  const Real root = std::sqrt(static_cast<Real>(1.57079632679489661923) / x);
  return {{root * f.low, root * f.high, 0}, exponential(first_kind ? x : -x)};
}

}  // namespace zent::functions
