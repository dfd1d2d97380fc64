// The primitives as the library uses them: the same arguments and semantics as the plain versions in zent::kernel, the same
// results to rounding, at the speed of the machine. The vector loops under them are chosen by the processor when the program
// starts; strides other than 1 are gathered first, or go the plain way where that costs more than it saves.
//
// Matrices that hold infinities or not-a-numbers may end in other infinities and not-a-numbers than with the plain versions; what
// those do not read (anything under beta = 0, A and B under alpha = 0, the other triangle, the padding) is not read here either.
#pragma once

#include "runtime/kernels/blocks.hpp"
#include "runtime/kernels/simd/table.hpp"

namespace zent::fast {

enum class Level { baseline, avx2, avx512 };

// The level in use, and a switch for tests and benchmarks: false, and no change, when the processor or the build lacks it.
Level level();
bool use_level(Level wanted);

struct InUse {
  const Kernels<float>* f;
  const Kernels<double>* d;
  const Kernels<zent_f_complex>* c;
  const Kernels<zent_d_complex>* z;
};
extern InUse in_use;

template <class T>
const Kernels<T>& kernels() {
  if constexpr (std::same_as<T, float>) {
    return *in_use.f;
  } else if constexpr (std::same_as<T, double>) {
    return *in_use.d;
  } else if constexpr (std::same_as<T, zent_f_complex>) {
    return *in_use.c;
  } else {
    return *in_use.z;
  }
}

using kernel::Scalar;

// Both vectors lie contiguous in memory and are walked the same way.
constexpr bool contiguous(long incx, long incy) {
  return (incx == 1 || incx == -1) && incx == incy;
}

template <class T>
void copy(long n, const T* x, long incx, T* y, long incy) {
  if (n < 1) return;
  if (incx != 1 || incy != 1) return kernel::copy(n, x, incx, y, incy);
  __builtin_memmove(y, x, static_cast<unsigned long>(n) * sizeof(T));
}

template <class T>
void swap(long n, T* x, long incx, T* y, long incy) {
  if (n < 1) return;
  contiguous(incx, incy) ? kernels<T>().swap(n, x, y) : kernel::swap(n, x, incx, y, incy);
}

template <class T, class Factor>
void scal(long n, Factor alpha, T* x, long incx) {
  if (n < 1) return;
  if (incx != 1) return kernel::scal(n, alpha, x, incx);
  if constexpr (kernel::ComplexRecord<T> && !kernel::ComplexRecord<Factor>) {
    using Real = RealOf<T>;
    kernels<Real>().scal(2 * n, static_cast<Real>(alpha), reinterpret_cast<Real*>(x));
  } else {
    kernels<T>().scal(n, static_cast<T>(alpha), x);
  }
}

template <class T>
void axpy(long n, Scalar<T> alpha, const T* x, long incx, T* y, long incy) {
  if (n < 1 || alpha == T{}) return;
  contiguous(incx, incy) ? kernels<T>().axpy(n, alpha, x, y) : kernel::axpy(n, alpha, x, incx, y, incy);
}

template <class T>
T dotu(long n, const T* x, long incx, const T* y, long incy) {
  if (n < 1) return T{};
  return contiguous(incx, incy) ? kernels<T>().dot(false, n, x, y) : kernel::dotu(n, x, incx, y, incy);
}
template <class T>
T dotc(long n, const T* x, long incx, const T* y, long incy) {
  if (n < 1) return T{};
  return contiguous(incx, incy) ? kernels<T>().dot(true, n, x, y) : kernel::dotc(n, x, incx, y, incy);
}
template <class T>
T dot(long n, const T* x, long incx, const T* y, long incy) {
  static_assert(!kernel::ComplexRecord<T>, "say dotu or dotc");
  return dotu(n, x, incx, y, incy);
}

template <class T>
RealOf<T> asum(long n, const T* x, long incx) {
  if (n < 1) return 0;
  return incx == 1 ? kernels<T>().asum(n, x) : kernel::asum(n, x, incx);
}

// The plain sum of squares serves when it is far from both ends of the range: what underflowed is then below its rounding.
template <class T>
RealOf<T> nrm2(long n, const T* x, long incx) {
  using Real = RealOf<T>;
  using Limits = std::numeric_limits<Real>;
  constexpr Real enough = Limits::min() / (Limits::epsilon() * Limits::epsilon());
  if (n < 1) return 0;
  if (incx == 1 || incx == -1) {
    const Real squares = kernels<T>().sum_of_squares(n, x);
    if (squares >= enough && squares <= Limits::max()) return std::sqrt(squares);
  }
  return kernel::nrm2(n, x, incx);
}

template <class T>
long iamax(long n, const T* x, long incx) {
  if (n < 1) return 0;
  return incx == 1 ? kernels<T>().iamax(n, x) : kernel::iamax(n, x, incx);
}

template <class T>
void rot(long n, T* x, long incx, T* y, long incy, RealOf<T> c, RealOf<T> s) {
  if (n < 1) return;
  contiguous(incx, incy) ? kernels<T>().rot(n, x, y, c, s) : kernel::rot(n, x, incx, y, incy, c, s);
}

// p as a divisor of many.
template <class T>
Divisor<RealOf<T>> divisor(T p) {
  if constexpr (kernel::ComplexRecord<T>) {
    if (std::abs(p.re) >= std::abs(p.im)) {
      const auto ratio = p.im / p.re;
      return {1, ratio, p.re + p.im * ratio};
    }
    const auto ratio = p.re / p.im;
    return {ratio, 1, p.re * ratio + p.im};
  } else {
    return {1, 0, p};
  }
}

// As kernel::rot_columns.
template <class T>
void rot_columns(bool backward, long sweeps, long m, long n, const RealOf<T>* c, const RealOf<T>* s, T* v, long ldv) {
  if (sweeps < 1 || m < 1 || n < 2) return;
  // Backward is forward on the columns in reverse order, where the two columns of a rotation change roles.
  if (backward) {
    kernels<T>().rotate(sweeps, m, n, c + (n - 2), s + (n - 2), -1, -1, v + (n - 1) * ldv, -ldv);
  } else {
    kernels<T>().rotate(sweeps, m, n, c, s, 1, 1, v, ldv);
  }
}

// Row-major m by n into column-major; the arrays must not overlap.
template <class T>
void transpose(long m, long n, const T* a, T* b) {
  if (m > 0 && n > 0) kernels<T>().transpose(false, n, m, a, n, b, m);
}
template <class T>
void transpose_square(long n, T* a) {
  if (n > 1) kernels<T>().transpose_square(n, a, n);
}

// Matrix-vector primitives (fast_vector.cpp).
template <class T>
void gemv(char trans, long m, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y,
          long incy);
template <class T>
void symv(char uplo, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y, long incy);
template <class T>
void geru(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda);
template <class T>
void gerc(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda);
template <class T>
void ger(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  static_assert(!kernel::ComplexRecord<T>, "say geru or gerc");
  geru(m, n, alpha, x, incx, y, incy, a, lda);
}
template <class T>
void syr(char uplo, long n, RealOf<T> alpha, const T* x, long incx, T* a, long lda);
template <class T>
void syr2(char uplo, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda);
template <class T>
void trsv(char uplo, char trans, char diag, long n, const T* a, long lda, T* x, long incx);

// Matrix-matrix primitives (fast_matrix.cpp, fast_triangle.cpp).
template <class T>
void gemm(char transa, char transb, long m, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb,
          Scalar<T> beta, T* c, long ldc);
template <class T>
void syrk(char uplo, char trans, long n, long k, RealOf<T> alpha, const T* a, long lda, RealOf<T> beta, T* c, long ldc);
template <class T>
void syr2k(char uplo, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb, RealOf<T> beta, T* c,
           long ldc);
template <class T>
void trsm(char side, char uplo, char transa, char diag, long m, long n, Scalar<T> alpha, const T* a, long lda, T* b, long ldb);
template <class T>
void trmm(char uplo, char trans, char diag, long m, long n, const T* a, long lda, T* b, long ldb);

}  // namespace zent::fast
