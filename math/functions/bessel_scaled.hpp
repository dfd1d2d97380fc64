// Complex numbers with an exponent of their own, for recurrences that leave the range of the precision, and the few complex
// functions that the Bessel sequences need.
#pragma once

#include <algorithm>
#include <cmath>
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

// value 2^exponent
template <class Real>
struct Scaled {
  Complex<Real> value;
  long exponent;

  // The larger part comes to lie between 1 and 2. Zeros, infinities and not-a-numbers stay.
  void normalize() {
    const Real size = larger_part<Real>(value);
    if (!(size > 0 && size <= Machine<Real>::largest)) return;
    const int k = std::ilogb(size);
    value = {std::scalbn(value.re, -k), std::scalbn(value.im, -k)};
    exponent += k;
  }
};

template <class Real>
Scaled<Real> scaled(Complex<Real> z, long exponent = 0) {
  Scaled<Real> s = {z, exponent};
  s.normalize();
  return s;
}
template <class Real>
Scaled<Real> operator*(Scaled<Real> a, Scaled<Real> b) {
  return scaled<Real>(a.value * b.value, a.exponent + b.exponent);
}
template <class Real>
Scaled<Real> operator+(Scaled<Real> a, Scaled<Real> b) {
  if (larger_part<Real>(a.value) == 0) return b;
  if (larger_part<Real>(b.value) == 0) return a;
  if (a.exponent < b.exponent) std::swap(a, b);
  const int shift = static_cast<int>(std::max(b.exponent - a.exponent, -2000L));
  const Complex<Real> low = {std::scalbn(b.value.re, shift), std::scalbn(b.value.im, shift)};
  return scaled<Real>(a.value + low, a.exponent);
}
template <class Real>
Scaled<Real> inverse(Scaled<Real> a) {
  return scaled<Real>(Complex<Real>{1, 0} / a.value, -a.exponent);
}

// The plain number: zero or infinite parts where the range ends.
template <class Real>
Complex<Real> plain(Scaled<Real> a) {
  const int e = static_cast<int>(std::clamp(a.exponent, -20000L, 20000L));
  return {std::scalbn(a.value.re, e), std::scalbn(a.value.im, e)};
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

// exp(sign z), sign = 1 or -1. The exponent's part of log 2 goes in two pieces, so that nothing is lost for great real parts.
template <class Real>
Scaled<Real> exponential(Complex<Real> z, Real sign) {
  constexpr bool single = std::is_same_v<Real, float>;
  constexpr Real high = static_cast<Real>(single ? 0.693359375 : 0x1.62e42fee00000p-1);
  constexpr Real low = static_cast<Real>(single ? -2.12194440054690583e-4 : 1.90821492927058770002e-10);
  const Real a = sign * z.re, b = sign * z.im;
  const Real k = std::nearbyint(a * static_cast<Real>(1.44269504088896340736));
  const Real size = std::exp((a - k * high) - k * low);
  return {{size * std::cos(b), b == 0 ? b : size * std::sin(b)}, static_cast<long>(k)};
}

// exp(i pi t), exact where t is a multiple of 1/2.
template <class Real>
Complex<Real> turn(Real t) {
  const Real reduced = t - 2 * std::nearbyint(t / 2);  // in -1 to 1
  const Real quarters = std::nearbyint(2 * reduced);
  const Real rest = static_cast<Real>(3.14159265358979323846) * (reduced - quarters / 2);
  const Real c = std::cos(rest), s = std::sin(rest);
  switch (static_cast<int>(quarters) & 3) {
    case 0:
      return {c, s};
    case 1:
      return {-s, c};
    case 2:
      return {-c, -s};
    default:
      return {s, -c};
  }
}

}  // namespace zent::functions
