// Plain versions of the block primitives that factorizations and rotations rest on, column-major.
#pragma once

#include "runtime/kernels/level3.hpp"
#include "runtime/kernels/rotation.hpp"

namespace zent::kernel {

// C := alpha op(A) op(A)^H + beta C in one triangle, C n by n, op(A) n by k; trans 'N' takes A itself, 'C' (or 'T') its conjugate
// transpose. The diagonal of a Hermitian C comes out real.
template <class T>
void syrk(char uplo, char trans, long n, long k, RealOf<T> alpha, const T* a, long lda, RealOf<T> beta, T* c, long ldc) {
  const Columns columns = triangle(is_flag(uplo, 'U'), n, ldc);
  const bool plain = is_flag(trans, 'N');
  for (long j = 0; j < n; ++j) {
    for (long i = columns.first(j); i < columns.last(j); ++i) {
      T sum{};
      for (long l = 0; l < k; ++l) {
        sum += plain ? a[i + l * lda] * conj(a[j + l * lda]) : conj(a[l + i * lda]) * a[l + j * lda];
      }
      const T old = beta == 0 ? T{} : beta * c[i + j * ldc];
      c[i + j * ldc] = alpha * sum + old;
    }
    c[j + j * ldc] = from_real<T>(real(c[j + j * ldc]));
  }
}

// C := alpha A B^H + conj(alpha) B A^H + beta C in one triangle, A and B n by k (trans 'N').
template <class T>
void syr2k(char uplo, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb, RealOf<T> beta, T* c,
           long ldc) {
  const Columns columns = triangle(is_flag(uplo, 'U'), n, ldc);
  for (long j = 0; j < n; ++j) {
    for (long i = columns.first(j); i < columns.last(j); ++i) {
      T sum{};
      for (long l = 0; l < k; ++l) {
        sum += alpha * (a[i + l * lda] * conj(b[j + l * ldb])) + conj(alpha) * (b[i + l * ldb] * conj(a[j + l * lda]));
      }
      const T old = beta == 0 ? T{} : beta * c[i + j * ldc];
      c[i + j * ldc] = sum + old;
    }
    c[j + j * ldc] = from_real<T>(real(c[j + j * ldc]));
  }
}

// B := op(A) B, A m by m triangular, B m by n.
template <class T>
void trmm(char uplo, char trans, char diag, long m, long n, const T* a, long lda, T* b, long ldb) {
  const bool upper = is_flag(uplo, 'U'), unit = is_flag(diag, 'U');
  with_op<T>(op_of<T>(trans), [&](auto op) {
    const bool forward = upper == (op() == Op::none);
    for (long j = 0; j < n; ++j) {
      T* x = b + j * ldb;
      for (long step = 0; step < m; ++step) {
        const long i = forward ? step : m - 1 - step;
        T sum = unit ? x[i] : element<op()>(a, lda, i, i) * x[i];
        for (long l = forward ? i + 1 : 0; l < (forward ? m : i); ++l) sum += element<op()>(a, lda, i, l) * x[l];
        x[i] = sum;
      }
    }
  });
}

// A sequence of rotations of neighbouring columns of the m by n matrix V: for k = 0 .. n-2 ascending (or descending, when
// `backward`) columns (k, k+1) become (c[k] v_k + s[k] v_k+1, c[k] v_k+1 - s[k] v_k). `sweeps` such sequences are applied one
// after the other, the coefficients of sweep p at c + p * (n - 1).
template <class T>
void rot_columns(bool backward, long sweeps, long m, long n, const RealOf<T>* c, const RealOf<T>* s, T* v, long ldv) {
  for (long p = 0; p < sweeps; ++p, c += n - 1, s += n - 1) {
    for (long step = 0; step < n - 1; ++step) {
      const long k = backward ? n - 2 - step : step;
      rot(m, v + k * ldv, 1, v + (k + 1) * ldv, 1, c[k], s[k]);
    }
  }
}

}  // namespace zent::kernel
