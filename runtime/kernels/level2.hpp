// Matrix-vector primitives, column-major, dense and banded. The routines of symmetric matrices take a Hermitian one when the
// elements are complex. Flags are the letters of the BLAS in either case; nothing is checked.
#pragma once

#include <algorithm>

#include "runtime/kernels/level1.hpp"

namespace zent::kernel {

enum class Op { none, transpose, conjugate };

// Compares a flag with a capital letter.
constexpr bool is_flag(char flag, char letter) {
  return flag == letter || flag == letter + ('a' - 'A');
}

template <class T>
constexpr Op op_of(char flag) {
  if (is_flag(flag, 'T')) return Op::transpose;
  if (is_flag(flag, 'C')) return ComplexRecord<T> ? Op::conjugate : Op::transpose;
  return Op::none;
}

template <class T>
T conj_if(bool wanted, T a) {
  return wanted ? conj(a) : a;
}

// Which part of each column of a matrix is stored, and where: column j holds rows first(j) to last(j) - 1, row i at
// origin(j) + i. Band storage slides column j up by j rows.
struct Columns {
  long rows, lda, above, below;
  bool band;

  long first(long j) const {
    return std::max(0L, j - above);
  }
  long last(long j) const {
    return std::min(rows, j + below + 1);
  }
  long origin(long j) const {
    return band ? j * lda + above - j : j * lda;
  }
};

inline Columns full_matrix(long m, long n, long lda) {
  return {.rows = m, .lda = lda, .above = n, .below = m, .band = false};
}
inline Columns band_matrix(long m, long kl, long ku, long lda) {
  return {.rows = m, .lda = lda, .above = ku, .below = kl, .band = true};
}
inline Columns triangle(bool upper, long n, long lda) {
  return {.rows = n, .lda = lda, .above = upper ? n : 0, .below = upper ? 0 : n, .band = false};
}
inline Columns band_triangle(bool upper, long n, long k, long lda) {
  return {.rows = n, .lda = lda, .above = upper ? k : 0, .below = upper ? 0 : k, .band = true};
}

// y := beta y, where 0 overwrites whatever was there.
template <class T>
void scale_or_clear(long n, T beta, Strided<T> y) {
  if (beta == from_real<T>(1)) return;
  for (long i = 0; i < n; ++i) y[i] = beta == T{} ? T{} : beta * y[i];
}

template <class T>
void multiply(const Columns& columns, Op op, long m, long n, T alpha, const T* a, const T* x, long incx, T beta, T* y,
              long incy) {
  if (m < 1 || n < 1) return;
  const bool plain = op == Op::none;
  const long length_x = plain ? n : m, length_y = plain ? m : n;
  const Strided u(length_x, x, incx);
  const Strided v(length_y, y, incy);
  scale_or_clear(length_y, beta, v);
  if (alpha == T{}) return;
  for (long j = 0; j < n; ++j) {
    const T* column = a + columns.origin(j);
    const long first = columns.first(j), last = columns.last(j);
    if (plain) {
      const T factor = alpha * u[j];
      for (long i = first; i < last; ++i) v[i] += factor * column[i];
    } else {
      T sum{};
      for (long i = first; i < last; ++i) sum += conj_if(op == Op::conjugate, column[i]) * u[i];
      v[j] += alpha * sum;
    }
  }
}

// y := alpha op(A) x + beta y.
template <class T>
void gemv(char trans, long m, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y,
          long incy) {
  multiply(full_matrix(m, n, lda), op_of<T>(trans), m, n, alpha, a, x, incx, beta, y, incy);
}

template <class T>
void gbmv(char trans, long m, long n, long kl, long ku, Scalar<T> alpha, const T* a, long lda, const T* x, long incx,
          Scalar<T> beta, T* y, long incy) {
  multiply(band_matrix(m, kl, ku, lda), op_of<T>(trans), m, n, alpha, a, x, incx, beta, y, incy);
}

// Each stored element off the diagonal is used twice, once for its mirror image. The imaginary part of the diagonal is not read.
template <class T>
void multiply_hermitian(const Columns& columns, long n, T alpha, const T* a, const T* x, long incx, T beta, T* y, long incy) {
  if (n < 1) return;
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  scale_or_clear(n, beta, v);
  if (alpha == T{}) return;
  for (long j = 0; j < n; ++j) {
    const T* column = a + columns.origin(j);
    const T factor = alpha * u[j];
    T sum{};
    for (long i = columns.first(j); i < columns.last(j); ++i) {
      if (i == j) continue;
      v[i] += factor * column[i];
      sum += conj(column[i]) * u[i];
    }
    v[j] += real(column[j]) * factor + alpha * sum;
  }
}

// y := alpha A x + beta y with one triangle of A stored.
template <class T>
void symv(char uplo, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y, long incy) {
  multiply_hermitian(triangle(is_flag(uplo, 'U'), n, lda), n, alpha, a, x, incx, beta, y, incy);
}

template <class T>
void sbmv(char uplo, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y,
          long incy) {
  multiply_hermitian(band_triangle(is_flag(uplo, 'U'), n, k, lda), n, alpha, a, x, incx, beta, y, incy);
}

// A := alpha x y' + A.
template <class T>
void geru(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  if (m < 1 || n < 1 || alpha == T{}) return;
  const Strided u(m, x, incx);
  const Strided v(n, y, incy);
  for (long j = 0; j < n; ++j) {
    const T factor = alpha * v[j];
    for (long i = 0; i < m; ++i) a[i + j * lda] += u[i] * factor;
  }
}

// A := alpha x conj(y)' + A.
template <class T>
void gerc(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  if (m < 1 || n < 1 || alpha == T{}) return;
  const Strided u(m, x, incx);
  const Strided v(n, y, incy);
  for (long j = 0; j < n; ++j) {
    const T factor = alpha * conj(v[j]);
    for (long i = 0; i < m; ++i) a[i + j * lda] += u[i] * factor;
  }
}

template <class T>
void ger(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  static_assert(!ComplexRecord<T>, "say geru or gerc");
  geru(m, n, alpha, x, incx, y, incy, a, lda);
}

// A := alpha x conj(x)' + A in one triangle. The diagonal comes out real.
template <class T>
void syr(char uplo, long n, RealOf<T> alpha, const T* x, long incx, T* a, long lda) {
  if (n < 1 || alpha == 0) return;
  const Columns columns = triangle(is_flag(uplo, 'U'), n, lda);
  const Strided u(n, x, incx);
  for (long j = 0; j < n; ++j) {
    T* column = a + columns.origin(j);
    const T factor = alpha * conj(u[j]);
    for (long i = columns.first(j); i < columns.last(j); ++i) column[i] += u[i] * factor;
    column[j] = from_real<T>(real(column[j]));
  }
}

// A := alpha x conj(y)' + conj(alpha) y conj(x)' + A in one triangle. The diagonal comes out real.
template <class T>
void syr2(char uplo, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  if (n < 1 || alpha == T{}) return;
  const Columns columns = triangle(is_flag(uplo, 'U'), n, lda);
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  for (long j = 0; j < n; ++j) {
    T* column = a + columns.origin(j);
    const T factor_x = alpha * conj(v[j]);
    const T factor_y = conj(alpha * u[j]);
    for (long i = columns.first(j); i < columns.last(j); ++i) column[i] += u[i] * factor_x + v[i] * factor_y;
    column[j] = from_real<T>(real(column[j]));
  }
}

// Solves op(A) x = b by substitution, x over b. An element that is 0 already stays 0 under A itself, whatever the diagonal holds.
template <class T>
void substitute(const Columns& columns, bool upper, Op op, bool unit, long n, const T* a, T* x, long incx) {
  const Strided v(n, x, incx);
  const bool backward = upper == (op == Op::none);
  const bool conjugate = op == Op::conjugate;
  for (long step = 0; step < n; ++step) {
    const long j = backward ? n - 1 - step : step;
    const T* column = a + columns.origin(j);
    const long first = upper ? columns.first(j) : j + 1, last = upper ? j : columns.last(j);
    if (op == Op::none) {
      if (v[j] == T{}) continue;
      if (!unit) v[j] = v[j] / column[j];
      for (long i = first; i < last; ++i) v[i] -= v[j] * column[i];
    } else {
      T rest = v[j];
      for (long i = first; i < last; ++i) rest -= conj_if(conjugate, column[i]) * v[i];
      v[j] = unit ? rest : rest / conj_if(conjugate, column[j]);
    }
  }
}

// x := inverse of op(A) times x, A triangular.
template <class T>
void trsv(char uplo, char trans, char diag, long n, const T* a, long lda, T* x, long incx) {
  const bool upper = is_flag(uplo, 'U');
  substitute(triangle(upper, n, lda), upper, op_of<T>(trans), is_flag(diag, 'U'), n, a, x, incx);
}

template <class T>
void tbsv(char uplo, char trans, char diag, long n, long k, const T* a, long lda, T* x, long incx) {
  const bool upper = is_flag(uplo, 'U');
  substitute(band_triangle(upper, n, k, lda), upper, op_of<T>(trans), is_flag(diag, 'U'), n, a, x, incx);
}

}  // namespace zent::kernel
