// Vector primitives on strided arrays, real and complex. A negative increment walks the array from its far end; the routines of
// one vector that are older than that rule in the BLAS (scal, asum, iamax) do nothing, or yield 0, unless the increment is
// positive.
#pragma once

#include <limits>
#include <utility>

#include "runtime/kernels/complex.hpp"

namespace zent::kernel {

// Element i of a strided vector counts in the order of the walk, so element 0 of a negative increment is the last in memory.
template <class T>
class Strided {
 public:
  Strided(long n, T* x, long inc) : first_(inc < 0 && n > 0 ? x - (n - 1) * inc : x), inc_(inc) {}
  T& operator[](long i) const {
    return first_[i * inc_];
  }

 private:
  T* first_;
  long inc_;
};

template <class T>
void copy(long n, const T* x, long incx, T* y, long incy) {
  const Strided from(n, x, incx);
  const Strided to(n, y, incy);
  for (long i = 0; i < n; ++i) to[i] = from[i];
}

template <class T>
void swap(long n, T* x, long incx, T* y, long incy) {
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  for (long i = 0; i < n; ++i) std::swap(u[i], v[i]);
}

// The factor may be of the element type or, for complex elements, real.
template <class T, class Factor>
void scal(long n, Factor alpha, T* x, long incx) {
  if (incx < 1) return;
  const Strided v(n, x, incx);
  for (long i = 0; i < n; ++i) v[i] = alpha * v[i];
}

template <class T>
void axpy(long n, Scalar<T> alpha, const T* x, long incx, T* y, long incy) {
  if (alpha == T{}) return;
  const Strided from(n, x, incx);
  const Strided to(n, y, incy);
  for (long i = 0; i < n; ++i) to[i] += alpha * from[i];
}

template <class T>
T dotu(long n, const T* x, long incx, const T* y, long incy) {
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  T sum{};
  for (long i = 0; i < n; ++i) sum += u[i] * v[i];
  return sum;
}

// The first vector is conjugated.
template <class T>
T dotc(long n, const T* x, long incx, const T* y, long incy) {
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  T sum{};
  for (long i = 0; i < n; ++i) sum += conj(u[i]) * v[i];
  return sum;
}

template <class T>
T dot(long n, const T* x, long incx, const T* y, long incy) {
  static_assert(!ComplexRecord<T>, "say dotu or dotc");
  return dotu(n, x, incx, y, incy);
}

template <class T>
RealOf<T> asum(long n, const T* x, long incx) {
  if (incx < 1) return 0;
  const Strided v(n, x, incx);
  RealOf<T> sum = 0;
  for (long i = 0; i < n; ++i) sum += abs1(v[i]);
  return sum;
}

// 1-based position of the first element of largest modulus |re| + |im|; 0 if there is none. A not-a-number never replaces what
// was found before it, and stays when it comes first.
template <class T>
long iamax(long n, const T* x, long incx) {
  if (n < 1 || incx < 1) return 0;
  const Strided v(n, x, incx);
  long best = 0;
  RealOf<T> largest = abs1(v[0]);
  for (long i = 1; i < n; ++i) {
    const RealOf<T> size = abs1(v[i]);
    if (size > largest) {
      largest = size;
      best = i;
    }
  }
  return best + 1;
}

// 1-based position of the first not-a-number, or 0.
template <class Real>
long first_nan(long n, const Real* x, long incx) {
  const Strided v(n, x, incx);
  for (long i = 0; i < n; ++i) {
    if (std::isnan(v[i])) return i + 1;
  }
  return 0;
}

// Blue's one-pass sum of squares (ACM TOMS 4, 1978): elements whose squares would overflow or lose digits to underflow go scaled
// into accumulators of their own, so the norm is right whenever it can be represented.
template <class Real>
class SumOfSquares {
 public:
  void add(Real x) {
    const Real size = std::abs(x);
    if (size > big) {
      big_sum_ += (size * big_scale) * (size * big_scale);
    } else if (size < small) {
      small_sum_ += (size * small_scale) * (size * small_scale);
    } else {
      sum_ += size * size;
    }
  }

  Real root() const {
    // A not-a-number is neither big nor small, so it stands in the middle sum and must not be dropped with it.
    if (big_sum_ > 0) {
      const bool matters = sum_ > 0 || std::isnan(sum_);
      return std::sqrt(big_sum_ + (matters ? (sum_ * big_scale) * big_scale : 0)) / big_scale;
    }
    if (small_sum_ > 0) {
      const Real low = std::sqrt(small_sum_) / small_scale;
      if (!(sum_ > 0) && !std::isnan(sum_)) return low;
      const Real middle = std::sqrt(sum_);
      if (std::isnan(middle)) return middle;
      const Real larger = middle > low ? middle : low;
      const Real ratio = (middle > low ? low : middle) / larger;
      return larger * std::sqrt(1 + ratio * ratio);
    }
    return std::sqrt(sum_);
  }

 private:
  using Limits = std::numeric_limits<Real>;
  static constexpr int floor_half(int k) {
    return k >= 0 ? k / 2 : -((1 - k) / 2);
  }
  static constexpr Real power_of_two(int k) {
    Real result = 1;
    for (; k > 0; --k) result *= 2;
    for (; k < 0; ++k) result /= 2;
    return result;
  }
  // Squares between these bounds are normal numbers, and n of them sum without overflow for every n below 2^digits.
  static constexpr Real small = power_of_two(floor_half(Limits::min_exponent));
  static constexpr Real big = power_of_two(floor_half(Limits::max_exponent - Limits::digits + 1));
  static constexpr Real small_scale = power_of_two(-floor_half(Limits::min_exponent - Limits::digits));
  static constexpr Real big_scale = power_of_two(-floor_half(Limits::max_exponent + Limits::digits));

  Real big_sum_ = 0, sum_ = 0, small_sum_ = 0;
};

template <class T>
RealOf<T> nrm2(long n, const T* x, long incx) {
  const Strided v(n, x, incx);
  SumOfSquares<RealOf<T>> squares;
  for (long i = 0; i < n; ++i) {
    if constexpr (ComplexRecord<T>) {
      squares.add(v[i].re);
      squares.add(v[i].im);
    } else {
      squares.add(v[i]);
    }
  }
  return squares.root();
}

}  // namespace zent::kernel
