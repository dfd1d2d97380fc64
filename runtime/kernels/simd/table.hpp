// What a processor level implements: the inner loops, on contiguous vectors and column-major matrices. Everything above them
// (strides, letters, recursion over blocks) is common to all levels and stands in runtime/kernels/fast_*.cpp.
#pragma once

#include "runtime/kernels/level2.hpp"

namespace zent::fast {

using kernel::Op;
using kernel::RealOf;

// The divisor of one column in a triangular solve, in the shape of Smith's division: x / p = (direct x - cross i x) / scale. Real
// divisors have direct = 1, cross = 0.
template <class Real>
struct Divisor {
  Real direct, cross, scale;
};

// Largest triangle that solve_rows takes, and the order of those that substitute takes.
constexpr long solve_block = 32;
constexpr int substitute_order = 8;

// Elements that no vector exceeds.
constexpr long padding = 16;

// Buffers of the products, one set for the process as the library runs in one thread. They stay untouched, and so unmapped, until
// a product is large enough to be packed.
constexpr long pack_a_bytes = 1L << 20, pack_b_bytes = 6L << 20;
alignas(64) extern unsigned char pack_a[pack_a_bytes];
alignas(64) extern unsigned char pack_b[pack_b_bytes];

template <class T>
struct Kernels {
  using Real = RealOf<T>;

  void (*axpy)(long n, T alpha, const T* x, T* y);
  void (*scal)(long n, T alpha, T* x);
  T (*dot)(bool conjugate, long n, const T* x, const T* y);
  // The plain sum: it may overflow, underflow or be a not-a-number, which the caller finds out.
  Real (*sum_of_squares)(long n, const T* x);
  Real (*asum)(long n, const T* x);
  void (*rot)(long n, T* x, T* y, Real c, Real s);
  void (*swap)(long n, T* x, T* y);
  long (*iamax)(long n, const T* x);

  // y += sum of factors[j] a_j
  void (*add_columns)(long m, long n, const T* a, long lda, const T* factors, T* y);
  // sums[j] = a_j' x or conj(a_j)' x
  void (*dot_columns)(bool conjugate, long m, long n, const T* a, long lda, const T* x, T* sums);
  // a_j += factors[j] x
  void (*add_outer)(long m, long n, const T* x, const T* factors, T* a, long lda);
  // Of a Hermitian matrix of order n, one triangle stored, columns j to j + count - 1 off the diagonal:
  // y += sum of factors[c] a_c, sums[c] = conj(a_c)' x. Behind x and y `padding` more elements are 0 and there to be written.
  void (*mirror_columns)(bool upper, long n, long j, long count, const T* a, long lda, const T* factors, const T* x, T* y,
                         T* sums);

  void (*gemm)(Op op_a, Op op_b, long m, long n, long k, T alpha, const T* a, long lda, const T* b, long ldb, T beta, T* c,
               long ldc);
  // Solves X T = B over B, B m by n with n up to solve_block, T upper triangular with T(k, j) at t[k + j * n]; the diagonal is
  // taken from `divisors`, or is 1 when that is null. With keep_zeros an element that is 0 stays 0 whatever its divisor.
  void (*solve_rows)(bool keep_zeros, long m, long n, const T* t, const Divisor<Real>* divisors, T* b, long ldb);
  // kernel::rot_columns for the columns v, v + ldv, ...; ldv and step, the distance of neighbouring coefficients, may be
  // negative.
  void (*rotate)(long sweeps, long m, long n, const Real* c, const Real* s, Real sign, long step, T* v, long ldv);

  // B(j, i) = A(i, j) or its conjugate, A m by n; no overlap.
  void (*transpose)(bool conjugate, long m, long n, const T* a, long lda, T* b, long ldb);
  void (*transpose_square)(long n, T* a, long lda);

  // Solves for substitute_order unknowns, x[i * step], in the order 0, 1, ...: element (i, j) of the triangle, i > j, is
  // t[i * row + j * column], conjugated on demand. With keep_zeros an unknown that is 0 stays so, and its column is not read.
  void (*substitute)(bool conjugate, bool keep_zeros, const T* t, long row, long column, const Divisor<Real>* divisors, T* x,
                     long step);
};

}  // namespace zent::fast
