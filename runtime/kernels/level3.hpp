// Matrix-matrix primitives and the moves of whole matrices, column-major.
#pragma once

#include "runtime/kernels/level2.hpp"

namespace zent::kernel {

// Element (i, j) of op(A).
template <Op op, class T>
T element(const T* a, long lda, long i, long j) {
  if constexpr (op == Op::none) {
    return a[i + j * lda];
  } else if constexpr (op == Op::transpose) {
    return a[j + i * lda];
  } else {
    return conj(a[j + i * lda]);
  }
}

// Calls body with the operation as a compile-time constant. Real elements know two operations only.
template <class T, class Body>
void with_op(Op op, Body body) {
  if (op == Op::none) {
    body(std::integral_constant<Op, Op::none>{});
  } else if (op == Op::transpose || !ComplexRecord<T>) {
    body(std::integral_constant<Op, Op::transpose>{});
  } else if constexpr (ComplexRecord<T>) {
    body(std::integral_constant<Op, Op::conjugate>{});
  }
}

template <Op op_a, Op op_b, class T>
void add_product(long m, long n, long k, T alpha, const T* a, long lda, const T* b, long ldb, T* c, long ldc) {
  for (long j = 0; j < n; ++j) {
    T* column = c + j * ldc;
    if constexpr (op_a == Op::none) {
      for (long l = 0; l < k; ++l) {
        const T factor = alpha * element<op_b>(b, ldb, l, j);
        for (long i = 0; i < m; ++i) column[i] += factor * a[i + l * lda];
      }
    } else {
      for (long i = 0; i < m; ++i) {
        T sum{};
        for (long l = 0; l < k; ++l) sum += element<op_a>(a, lda, i, l) * element<op_b>(b, ldb, l, j);
        column[i] += alpha * sum;
      }
    }
  }
}

// C := alpha op(A) op(B) + beta C, op(A) m by k, op(B) k by n.
template <class T>
void gemm(char transa, char transb, long m, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb,
          Scalar<T> beta, T* c, long ldc) {
  if (m < 1 || n < 1) return;
  for (long j = 0; j < n; ++j) scale_or_clear(m, beta, Strided<T>(m, c + j * ldc, 1));
  if (k < 1 || alpha == T{}) return;
  with_op<T>(op_of<T>(transa), [&](auto op_a) {
    with_op<T>(op_of<T>(transb), [&](auto op_b) { add_product<op_a(), op_b()>(m, n, k, alpha, a, lda, b, ldb, c, ldc); });
  });
}

// Solves X op(A) = B, X over B. A column of B needs only those columns of X that stand on one side of it.
template <Op op, class T>
void solve_from_right(bool upper, bool unit, long m, long n, const T* a, long lda, T* b, long ldb) {
  const bool forward = upper == (op == Op::none);
  for (long step = 0; step < n; ++step) {
    const long j = forward ? step : n - 1 - step;
    T* column = b + j * ldb;
    const long first = forward ? 0 : j + 1, last = forward ? j : n;
    for (long k = first; k < last; ++k) {
      const T factor = element<op>(a, lda, k, j);
      for (long i = 0; i < m; ++i) column[i] -= factor * b[i + k * ldb];
    }
    if (unit) continue;
    const T pivot = element<op>(a, lda, j, j);
    for (long i = 0; i < m; ++i) column[i] = column[i] / pivot;
  }
}

// Solves op(A) X = alpha B (side L) or X op(A) = alpha B (side R), A triangular, X over B.
template <class T>
void trsm(char side, char uplo, char transa, char diag, long m, long n, Scalar<T> alpha, const T* a, long lda, T* b, long ldb) {
  if (m < 1 || n < 1) return;
  for (long j = 0; j < n; ++j) scale_or_clear(m, alpha, Strided<T>(m, b + j * ldb, 1));
  if (alpha == T{}) return;
  if (is_flag(side, 'L')) {
    for (long j = 0; j < n; ++j) trsv(uplo, transa, diag, m, a, lda, b + j * ldb, 1);
  } else {
    with_op<T>(op_of<T>(transa),
               [&](auto op) { solve_from_right<op()>(is_flag(uplo, 'U'), is_flag(diag, 'U'), m, n, a, lda, b, ldb); });
  }
}

// B := A' A in full, A m by n; both triangles come out equal bit for bit.
template <class T>
void gram(long m, long n, const T* a, long lda, T* b, long ldb) {
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i <= j; ++i) {
      b[i + j * ldb] = dotc(m, a + i * lda, 1, a + j * lda, 1);
      b[j + i * ldb] = conj(b[i + j * ldb]);
    }
  }
}

// Copies the upper triangle onto the lower one.
template <class T>
void mirror_upper(long n, T* a, long lda) {
  for (long j = 0; j < n; ++j) {
    for (long i = j + 1; i < n; ++i) a[i + j * lda] = a[j + i * lda];
  }
}

// Row-major m by n into column-major; the arrays must not overlap.
template <class T>
void transpose(long m, long n, const T* a, T* b) {
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < m; ++i) b[i + j * m] = a[i * n + j];
  }
}

template <class T>
void transpose_square(long n, T* a) {
  for (long j = 1; j < n; ++j) {
    for (long i = 0; i < j; ++i) std::swap(a[i + j * n], a[j + i * n]);
  }
}

// Row-major m by n into column-major in the same memory, cycle by cycle of the permutation. A cycle is moved when its smallest
// position comes up; finding out whether a position is the smallest of its cycle takes the place of a mark for each element.
template <class T>
void transpose_in_place(long m, long n, T* a) {
  const auto source = [m, n](long position) { return (position % m) * n + position / m; };
  long left = m * n;
  for (long start = 0; left > 0; ++start) {
    long position = source(start);
    while (position > start) position = source(position);
    if (position < start) continue;
    const T held = a[start];
    for (long to = start;; to = position) {
      position = source(to);
      --left;
      a[to] = position == start ? held : a[position];
      if (position == start) break;
    }
  }
}

}  // namespace zent::kernel
