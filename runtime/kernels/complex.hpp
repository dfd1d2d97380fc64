// Arithmetic on the complex records of the interface, and the few operations that let one template serve real and complex
// elements.
#pragma once

#include <cmath>
#include <concepts>
#include <type_traits>

#include "zent/base.h"

namespace zent::kernel {

template <class T>
concept ComplexRecord = std::same_as<T, zent_f_complex> || std::same_as<T, zent_d_complex>;

template <class T>
struct RealPart {
  using type = T;
};
template <>
struct RealPart<zent_f_complex> {
  using type = float;
};
template <>
struct RealPart<zent_d_complex> {
  using type = double;
};
template <class T>
using RealOf = typename RealPart<T>::type;

// Keeps a scalar argument out of the deduction of T, so that gemv('n', m, n, 1, a, ...) works for every element type.
template <class T>
using Scalar = std::type_identity_t<T>;

}  // namespace zent::kernel

// The records live in the global namespace; operators beside them are found from everywhere. Products follow the textbook
// formula: no second look at infinite operands, which costs a branch for each product.
template <zent::kernel::ComplexRecord C>
constexpr C operator+(C a, C b) {
  return {a.re + b.re, a.im + b.im};
}
template <zent::kernel::ComplexRecord C>
constexpr C operator-(C a, C b) {
  return {a.re - b.re, a.im - b.im};
}
template <zent::kernel::ComplexRecord C>
constexpr C operator-(C a) {
  return {-a.re, -a.im};
}
template <zent::kernel::ComplexRecord C>
constexpr C operator*(C a, C b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <zent::kernel::ComplexRecord C>
constexpr C operator*(zent::kernel::RealOf<C> a, C b) {
  return {a * b.re, a * b.im};
}
// Smith's division (1962): scaled by the larger part of the divisor, so its square is never formed.
template <zent::kernel::ComplexRecord C>
C operator/(C a, C b) {
  if (std::abs(b.re) >= std::abs(b.im)) {
    const auto ratio = b.im / b.re;
    const auto scale = b.re + b.im * ratio;
    return {(a.re + a.im * ratio) / scale, (a.im - a.re * ratio) / scale};
  }
  const auto ratio = b.re / b.im;
  const auto scale = b.re * ratio + b.im;
  return {(a.re * ratio + a.im) / scale, (a.im * ratio - a.re) / scale};
}
template <zent::kernel::ComplexRecord C>
constexpr C& operator+=(C& a, C b) {
  return a = a + b;
}
template <zent::kernel::ComplexRecord C>
constexpr C& operator-=(C& a, C b) {
  return a = a - b;
}
template <zent::kernel::ComplexRecord C>
constexpr bool operator==(C a, C b) {
  return a.re == b.re && a.im == b.im;
}

namespace zent::kernel {

template <class T>
constexpr T conj(T a) {
  if constexpr (ComplexRecord<T>) {
    return {a.re, -a.im};
  } else {
    return a;
  }
}

template <class T>
constexpr RealOf<T> real(T a) {
  if constexpr (ComplexRecord<T>) {
    return a.re;
  } else {
    return a;
  }
}

template <class T>
constexpr T from_real(RealOf<T> a) {
  if constexpr (ComplexRecord<T>) {
    return {a, 0};
  } else {
    return a;
  }
}

// |re| + |im|: the cheap modulus by which the index of the largest element and the sum of moduli go.
template <class T>
RealOf<T> abs1(T a) {
  if constexpr (ComplexRecord<T>) {
    return std::abs(a.re) + std::abs(a.im);
  } else {
    return std::abs(a);
  }
}

}  // namespace zent::kernel
