// Products of many reflections applied in blocks (compact WY form, Schreiber and Van Loan 1989), and the moves between row-major
// arrays of the interface and column-major ones.
#pragma once

#include <algorithm>

#include "runtime/kernels/complex.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/scratch.hpp"

namespace zent::linalg {

using kernel::RealOf;

inline constexpr long reflector_block = 32;

// Work memory of apply_reflectors for reflections of m rows and matrices of at most `columns` columns.
template <class T>
constexpr long reflector_words(long m, long columns) {
  return reflector_block * (m + columns + 2 * reflector_block);
}

// Copies vectors k0 .. k0 + count - 1 into p, m rows each, zeros above the heads. A vector without a reflection becomes 0.
template <class T>
void gather_reflectors(long m, long count, const T* v, long ldv, const RealOf<T>* head, RealOf<T> small, T* p, long ldp) {
  for (long k = 0; k < count; ++k) {
    T* column = p + k * ldp;
    const bool used = !(std::abs(head[k]) < small) && head[k] != 0;
    const long first = used ? k + 1 : m;
    for (long i = 0; i < std::min(first, m); ++i) column[i] = T{};
    for (long i = first; i < m; ++i) column[i] = v[i + k * ldv];
    if (used) column[k] = kernel::from_real<T>(head[k]);
  }
}

// The upper triangle t of H(0) .. H(count-1) = I - P t P^H; its strict lower triangle is zeroed.
template <class T>
void reflector_triangle(long m, long count, const T* p, long ldp, const RealOf<T>* head, RealOf<T> small, T* gram, T* t) {
  constexpr long ld = reflector_block;
  const T one = kernel::from_real<T>(1);
  fast::gemm('C', 'N', count, count, m, one, p, ldp, p, ldp, T{}, gram, ld);
  for (long k = 0; k < count; ++k) {
    for (long i = 0; i < count; ++i) t[i + k * ld] = T{};
    if (std::abs(head[k]) < small || head[k] == 0) continue;
    const RealOf<T> scale = 1 / head[k];
    for (long i = 0; i < k; ++i) {
      T sum{};
      for (long l = i; l < k; ++l) sum += t[i + l * ld] * gram[l + k * ld];
      t[i + k * ld] = -(scale * sum);
    }
    t[k + k * ld] = kernel::from_real<T>(scale);
  }
}

// Q := H(0) H(1) .. H(r-1) I, Q m by columns. Vector k starts in row k + shift of column k of v, its first element is head[k]; a
// head below small in magnitude stands for no reflection. work: reflector_words(m, columns).
template <class T>
void accumulate_reflectors(long m, long r, long shift, const T* v, long ldv, const RealOf<T>* head, RealOf<T> small, T* q,
                           long ldq, long columns, T* work) {
  constexpr long nb = reflector_block;
  const T one = kernel::from_real<T>(1);
  for (long j = 0; j < columns; ++j) {
    for (long i = 0; i < m; ++i) q[i + j * ldq] = T{};
    if (j < m) q[j + j * ldq] = one;
  }
  T* const panel = work;
  T* const product = panel + nb * m;
  T* const gram = product + nb * columns;
  T* const t = gram + nb * nb;
  for (long k0 = (r - 1) / nb * nb; r > 0 && k0 >= 0; k0 -= nb) {
    const long count = std::min(nb, r - k0), top = k0 + shift, rows = m - top, width = columns - top;
    if (width < 1) continue;
    gather_reflectors(rows, count, v + top + k0 * ldv, ldv, head + k0, small, panel, m);
    reflector_triangle(rows, count, panel, m, head + k0, small, gram, t);
    T* const block = q + top + top * ldq;
    fast::gemm('C', 'N', count, width, rows, one, panel, m, block, ldq, T{}, product, nb);
    fast::trmm('U', 'N', 'N', count, width, t, nb, product, nb);
    fast::gemm('N', 'N', rows, width, count, -one, panel, m, product, nb, one, block, ldq);
  }
}

// to[j + i * ldto] = from[i + j * ldfrom] for i < m, j < n: row-major to column-major and back.
template <class T>
void turn(long m, long n, const T* from, long ldfrom, T* to, long ldto) {
  if (ldfrom == m && ldto == n) return fast::transpose(n, m, from, to);
  constexpr long tile = 16;
  for (long j0 = 0; j0 < n; j0 += tile) {
    for (long i0 = 0; i0 < m; i0 += tile) {
      const long j1 = std::min(j0 + tile, n), i1 = std::min(i0 + tile, m);
      for (long i = i0; i < i1; ++i) {
        for (long j = j0; j < j1; ++j) to[j + i * ldto] = from[i + j * ldfrom];
      }
    }
  }
}

// A row-major array's columns from `first` to its column dimension become 0.
template <class T>
void clear_columns(long rows, long first, T* a, long col_dim) {
  for (long i = 0; i < rows && first < col_dim; ++i) std::fill(a + i * col_dim + first, a + (i + 1) * col_dim, T{});
}

}  // namespace zent::linalg
