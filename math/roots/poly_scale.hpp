// What the real and the complex polynomial solver share: a master copy of the polynomial in a wider type, in which it is
// deflated, and its image in working precision, in which the next zeros are sought.
//
// The image is taken in the variable y = x / 2^k, where k brings the lower bound of the zeros' moduli near 1, and is scaled so
// that the constant term is near 1. All coefficients are then at most about 1, whatever the spread of coefficients and zeros, and
// what underflows to 0 cannot matter near the zeros sought. Both scalings are by powers of two.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "runtime/kernels/complex.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::roots {

template <class Real>
struct WideType;
template <>
struct WideType<float> {
  using type = double;
};
template <>
struct WideType<double> {
  using type = long double;
};
template <class Real>
using Wide = typename WideType<Real>::type;

template <class W>
struct WideComplex {
  W re, im;
};
template <class W>
WideComplex<W> operator+(WideComplex<W> a, WideComplex<W> b) {
  return {a.re + b.re, a.im + b.im};
}
template <class W>
WideComplex<W> operator-(WideComplex<W> a, WideComplex<W> b) {
  return {a.re - b.re, a.im - b.im};
}
template <class W>
WideComplex<W> operator-(WideComplex<W> a) {
  return {-a.re, -a.im};
}
template <class W>
WideComplex<W> operator*(WideComplex<W> a, WideComplex<W> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class W>
WideComplex<W> operator/(WideComplex<W> a, WideComplex<W> b) {  // as kernel's, by Smith
  if (std::abs(b.re) >= std::abs(b.im)) {
    const W ratio = b.im / b.re, scale = b.re + b.im * ratio;
    return {(a.re + a.im * ratio) / scale, (a.im - a.re * ratio) / scale};
  }
  const W ratio = b.re / b.im, scale = b.re * ratio + b.im;
  return {(a.re * ratio + a.im) / scale, (a.im * ratio - a.re) / scale};
}
template <class W>
W size_of(WideComplex<W> a) {
  return std::hypot(a.re, a.im);
}
template <class W>
WideComplex<W> root_of(WideComplex<W> a) {
  const W size = size_of(a);
  if (size == 0) return {0, 0};
  if (a.re >= 0) {
    const W re = std::sqrt((size + a.re) / 2);
    return {re, a.im / (2 * re)};
  }
  const W im = std::copysign(std::sqrt((size - a.re) / 2), a.im);
  return {a.im / (2 * im), im};
}

// Binary exponent of the largest part, or one more where the part is next to a power of two; `none` for 0.
inline constexpr int no_exponent = std::numeric_limits<int>::min();
template <class W>
int exponent_of(W x) {
  const double size = std::abs(static_cast<double>(x));
  if (size >= std::numeric_limits<double>::min() && size <= std::numeric_limits<double>::max()) [[likely]]
    return static_cast<int>(std::bit_cast<unsigned long>(size) >> 52) - 1022;
  int e;
  if (x == 0) return no_exponent;
  std::frexp(x, &e);
  return e;
}

// 2^k x, rounded once as by ldexp, without the call.
template <class W>
W shifted(W x, int k) {
  if (k < -1000 || k > 1000) [[unlikely]]
    return std::ldexp(x, k);
  return x * static_cast<W>(std::bit_cast<double>(static_cast<unsigned long>(k + 1023) << 52));
}

// k of y = x / 2^k for exponents e[0 .. n] of the coefficients, leading one first; e[n] is not none.
inline long variable_exponent(long n, const int* e) {
  double least = 1e9;
  for (long i = 0; i < n; ++i) {
    if (e[i] == no_exponent) continue;
    least = std::fmin(least, static_cast<double>(e[n] - e[i]) / static_cast<double>(n - i));
  }
  return static_cast<long>(std::floor(least));
}

// The factors 2^(k (n - i) - e) of the image, for i = n, n - 1, ... in turn: by products while they stay in range.
template <class W>
class ImageScale {
 public:
  ImageScale(long n, long k, long e) : k_(k), power_(-e) {
    constexpr long room = std::numeric_limits<W>::max_exponent - 10;
    in_range_ = std::abs(k) < room && std::abs(power_) < room && std::abs(power_ + k * n) < room;
    if (!in_range_) return;
    factor_ = shifted(W(1), static_cast<int>(power_));
    step_ = shifted(W(1), static_cast<int>(k));
  }
  W apply(W a) {
    if (!in_range_) {
      const W scaled = a == 0 ? a : std::ldexp(a, static_cast<int>(power_));
      power_ += k_;
      return scaled;
    }
    const W scaled = a * factor_;
    factor_ *= step_;
    return scaled;
  }
  template <class Pair>
  Pair apply(Pair a) {
    if (in_range_) {
      const Pair scaled = {a.re * factor_, a.im * factor_};
      factor_ *= step_;
      return scaled;
    }
    const int power = static_cast<int>(power_);
    power_ += k_;
    return {std::ldexp(a.re, power), std::ldexp(a.im, power)};
  }

 private:
  long k_, power_;
  bool in_range_;
  W factor_ = 0, step_ = 0;
};

// Lower bound of the moduli of the zeros of the polynomial with coefficients of these moduli: the positive zero of the Cauchy
// polynomial, by Newton's method on the logarithms of its two sides, which comes down on it from above. For an image as described
// above; the result is above 0 and at most 4.
template <class Real>
Real cauchy_bound(long n, const Real* modulus) {
  double bound = 4;
  const double constant = static_cast<double>(modulus[n]);
  for (int step = 0; step < 60; ++step) {
    double sum = 0, slope = 0;
    for (long i = 0; i < n; ++i) {
      slope = slope * bound + sum;
      sum = sum * bound + static_cast<double>(modulus[i]);
    }
    slope = slope * bound + sum;  // of sum * bound
    sum *= bound;
    const double change = std::log(constant / sum) * sum / (slope * bound);
    bound *= std::exp(change);
    if (std::abs(change) <= 0.005) break;
  }
  return static_cast<Real>(bound);
}

// Leading terms of an image that together stay below the square of the rounding error wherever |y| is at most this can be left
// out: the zeros of least modulus are still zeros of the polynomial.
inline constexpr int image_radius = 4;

// How many leading coefficients of these moduli that is; the last two always stay.
template <class Real>
long negligible_terms(long n, const Real* modulus) {
  constexpr double eta = static_cast<double>(Machine<Real>::epsilon);
  const double limit = eta * eta * static_cast<double>(modulus[n]) / static_cast<double>(n + 1);
  long count = 0;
  for (; count < n - 1; ++count) {
    const double b = static_cast<double>(modulus[count]);
    if (b >= static_cast<double>(Machine<Real>::smallest) && std::ldexp(b, static_cast<int>(2 * (n - count))) > limit) break;
  }
  return count;
}

// The lower bound can lie below the zeros by a factor of 1.5 n. Where the image finds none within its radius, it is taken again
// with 2^k larger by these factors.
inline constexpr int last_widening = 8, widening_step = 2;

// The exponent that brings the largest coefficient of the image to 1.
inline long image_exponent(long n, long k, const int* e) {
  long most = e[n];
  for (long i = 0; i < n; ++i) {
    if (e[i] != no_exponent) most = std::max(most, e[i] + k * (n - i));
  }
  return most;
}

// Newton steps on the master copy for a zero just found. One or two do for a simple zero; at a multiple one each step takes a
// factor of about e from the residual that would be lost in the division.
inline constexpr int sharpening_steps = 40;

// The published iterations start at 94 degrees from each other.
template <class Real>
struct StartDirection {
  Real x = Real(0.70710678118654752440), y = -x;
  void rotate() {
    constexpr Real c = Real(-0.06975647374412530), s = Real(0.99756405025982425);
    const Real turned = c * x - s * y;
    y = s * x + c * y;
    x = turned;
  }
};

// Counts and results of one polynomial.
template <class C>
struct ZeroList {
  C* zeros;
  long count;
  void add(C zero) {
    zeros[count++] = zero;
  }
};

// What a * b lost in rounding, from halves of the factors (Dekker 1971).
template <class W>
W product_rest(W a, W b) {
  constexpr W splitter = static_cast<W>((1ULL << ((std::numeric_limits<W>::digits + 1) / 2)) + 1);
  const W ca = splitter * a, a1 = ca - (ca - a), a2 = a - a1;
  const W cb = splitter * b, b1 = cb - (cb - b), b2 = b - b1;
  return ((a1 * b1 - a * b) + a1 * b2 + a2 * b1) + a2 * b2;
}
// b^2 - a c with the digits that survive the difference.
template <class W>
W discriminant_of(W a, W b, W c) {
  return (b * b - a * c) + (product_rest(b, b) - product_rest(a, c));
}

// A zero of the image with coefficients at(0 .. n), leading first, where the three stages fail: Laguerre's method in the wide
// type from z on. False if the residual does not come down to `tolerance` times the sum of the moduli.
template <class W, class At>
bool laguerre(long n, At at, W tolerance, WideComplex<W>& z) {
  const W degree = static_cast<W>(n);
  for (int step = 1; step <= 100; ++step) {
    WideComplex<W> p = at(0), d = {0, 0}, h = {0, 0};
    const W size = size_of(z);
    W sum = size_of(p);
    for (long i = 1; i <= n; ++i) {
      h = h * z + d;
      d = d * z + p;
      p = p * z + at(i);
      sum = sum * size + size_of(at(i));
    }
    if (size_of(p) <= tolerance * sum) return true;
    const WideComplex<W> g = d / p, g2 = g * g, q = h / p;
    const WideComplex<W> inner = {g2.re - 2 * q.re, g2.im - 2 * q.im};
    const WideComplex<W> root =
        root_of(WideComplex<W>{(degree - 1) * (degree * inner.re - g2.re), (degree - 1) * (degree * inner.im - g2.im)});
    const WideComplex<W> plus = g + root, minus = g - root, divisor = size_of(plus) > size_of(minus) ? plus : minus;
    WideComplex<W> change = WideComplex<W>{degree, 0} / divisor;
    if (step % 10 == 0) change = {change.re / 4, change.im / 2};  // out of a cycle
    if (!std::isfinite(change.re) || !std::isfinite(change.im)) return false;
    z = z - change;
  }
  return false;
}

}  // namespace zent::roots
