// Complex numbers with an exponent of their own, for recurrences that leave the range of the precision, and the few complex
// functions that the Bessel sequences need.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "runtime/kernels/complex.hpp"
#include "runtime/machine.hpp"

namespace zent::functions {

template <class Real>
using Complex = std::conditional_t<std::is_same_v<Real, float>, zent_f_complex, zent_d_complex>;

template <class Real>
Real larger_part(Complex<Real> z) {
  return std::max(std::abs(z.re), std::abs(z.im));
}
template <class Real>
Real larger_part(Real x) {
  return std::abs(x);
}

// std::ilogb and std::scalbn, without a call for all but denormal numbers and exponents at the ends of the range.
template <class Real>
struct Exponents {
  using Word = std::conditional_t<std::is_same_v<Real, float>, std::uint32_t, std::uint64_t>;
  static constexpr int digits = std::numeric_limits<Real>::digits - 1, bias = std::numeric_limits<Real>::max_exponent - 1;

  static int of(Real size) {
    const int e = static_cast<int>(std::bit_cast<Word>(size) >> digits);
    return e == 0 ? std::ilogb(size) : e - bias;
  }
  static Real power(int k) {
    return std::bit_cast<Real>(static_cast<Word>(k + bias) << digits);
  }
  static Complex<Real> shift(Complex<Real> z, int k) {
    if (k <= -bias || k > bias) return {std::scalbn(z.re, k), std::scalbn(z.im, k)};
    return {z.re * power(k), z.im * power(k)};
  }
  static Real shift(Real x, int k) {
    return k <= -bias || k > bias ? std::scalbn(x, k) : x * power(k);
  }
};

// a / b with one division, for denominators whose square is in range.
template <class Real>
Complex<Real> quotient(Complex<Real> a, Complex<Real> b) {
  const Real scale = 1 / (b.re * b.re + b.im * b.im);
  return {(a.re * b.re + a.im * b.im) * scale, (a.im * b.re - a.re * b.im) * scale};
}

// The same templates run over real numbers, where the argument is one, in a quarter of the time.
template <class T>
T number(kernel::RealOf<T> x) {
  if constexpr (kernel::ComplexRecord<T>) {
    return {x, 0};
  } else {
    return x;
  }
}
template <class T>
T divided(T a, T b) {
  if constexpr (kernel::ComplexRecord<T>) {
    return quotient<kernel::RealOf<T>>(a, b);
  } else {
    return a / b;
  }
}

// value 2^exponent
template <class T>
struct Scaled {
  using Real = kernel::RealOf<T>;
  T value;
  long exponent;

  // The larger part comes to lie between 1 and 2. Zeros, infinities and not-a-numbers stay.
  void normalize() {
    const Real size = larger_part<Real>(value);
    if (!(size > 0 && size <= Machine<Real>::largest)) return;
    const int k = Exponents<Real>::of(size);
    value = Exponents<Real>::shift(value, -k);
    exponent += k;
  }
};

template <class T>
Scaled<T> scaled(T z, long exponent = 0) {
  Scaled<T> s = {z, exponent};
  s.normalize();
  return s;
}
// Products and inverses of a few normalized values stay so close to 1 that they need no normalizing.
template <class T>
Scaled<T> operator*(Scaled<T> a, Scaled<T> b) {
  return {a.value * b.value, a.exponent + b.exponent};
}
template <class T>
Scaled<T> operator+(Scaled<T> a, Scaled<T> b) {
  using Real = kernel::RealOf<T>;
  if (larger_part<Real>(a.value) == 0) return b;
  if (larger_part<Real>(b.value) == 0) return a;
  if (a.exponent < b.exponent) std::swap(a, b);
  const int shift = static_cast<int>(std::max(b.exponent - a.exponent, -2000L));
  return scaled(a.value + Exponents<Real>::shift(b.value, shift), a.exponent);
}
template <class T>
Scaled<T> inverse(Scaled<T> a) {
  return {divided(number<T>(1), a.value), -a.exponent};
}

// The plain number: zero or infinite parts where the range ends.
template <class T>
T plain(Scaled<T> a) {
  const int e = static_cast<int>(std::clamp(a.exponent, -20000L, 20000L));
  return Exponents<kernel::RealOf<T>>::shift(a.value, e);
}

template <class Real>
Real modulus(Complex<Real> z) {
  return std::hypot(z.re, z.im);
}

// A root with a real part that is not negative.
template <class Real>
Complex<Real> square_root(Complex<Real> z) {
  const Real r = modulus<Real>(z);
  if (r == 0) return {0, z.im};
  const Real t = std::sqrt((std::abs(z.re) + r) / 2), u = std::abs(z.im) / (2 * t);
  return z.re >= 0 ? Complex<Real>{t, std::copysign(u, z.im)} : Complex<Real>{u, std::copysign(t, z.im)};
}

template <class Real>
Complex<Real> logarithm(Complex<Real> z) {
  return {std::log(modulus<Real>(z)), std::atan2(z.im, z.re)};
}

// log 2 in two pieces, so short a first one that its products with exponents are exact.
template <class Real>
struct Log2 {
  static constexpr bool single = std::is_same_v<Real, float>;
  static constexpr Real high = static_cast<Real>(single ? 0.693359375 : 0x1.62e42fee00000p-1);
  static constexpr Real low = static_cast<Real>(single ? -2.12194440054690583e-4 : 1.90821492927058770002e-10);
};

// exp(x). Nothing is lost for great x.
template <class Real>
Scaled<Real> exponential(Real x) {
  const Real k = std::nearbyint(x * static_cast<Real>(1.44269504088896340736));
  return {std::exp((x - k * Log2<Real>::high) - k * Log2<Real>::low), static_cast<long>(k)};
}
// exp(sign z), sign = 1 or -1.
template <class Real>
Scaled<Complex<Real>> exponential(Complex<Real> z, Real sign) {
  const Real b = sign * z.im;
  const Scaled<Real> size = exponential<Real>(sign * z.re);
  return {{size.value * std::cos(b), b == 0 ? b : size.value * std::sin(b)}, size.exponent};
}

// i^k z
template <class Real>
Complex<Real> quarter_turns(Complex<Real> z, long k) {
  switch (k & 3) {
    case 0:
      return z;
    case 1:
      return {-z.im, z.re};
    case 2:
      return {-z.re, -z.im};
    default:
      return {z.im, -z.re};
  }
}

// exp(i pi t), exact where t is a multiple of 1/2.
template <class Real>
Complex<Real> turn(Real t) {
  const Real reduced = t - 2 * std::nearbyint(t / 2);  // in -1 to 1
  const Real quarters = std::nearbyint(2 * reduced);
  const Real rest = static_cast<Real>(3.14159265358979323846) * (reduced - quarters / 2);
  return quarter_turns<Real>({std::cos(rest), std::sin(rest)}, static_cast<long>(quarters));
}

}  // namespace zent::functions
