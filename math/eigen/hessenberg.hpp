// Reductions of a general matrix to upper Hessenberg form, by panels: the columns of a panel are brought up to date one by one,
// the rest of the matrix by products of blocks. Column-major throughout.
#pragma once

#include <cmath>

#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"

namespace zent::eigen {

inline constexpr long panel_width = 32;

// Similarity by eliminations with exchanges (Wilkinson 1965): afterwards the matrix is Hessenberg, everything below the first
// subdiagonal is zero. An elimination adds to the one column to its right, so only this column has to see the matrix at once;
// the rows below follow as in a blocked LU factorization.
template <class T>
void l_e4lrg(long n, T* a, long lda) {
  for (long k = 0; k < n - 2; k += panel_width) {
    const long end = k + panel_width < n - 2 ? k + panel_width : n - 2;
    for (long c = k; c < end; ++c) {
      T* column = a + c * lda;
      for (long i = k; i < c; ++i) {  // the panel's eliminations so far, on this column
        fast::axpy(n - 2 - i, -column[i + 1], a + i + 2 + i * lda, 1, column + i + 2, 1);
      }
      long pivot = c + 1;
      for (long i = c + 2; i < n; ++i) {
        if (kernel::abs1(column[i]) > kernel::abs1(column[pivot])) pivot = i;
      }
      if (column[pivot] == T{}) continue;  // the multipliers below are the zeros that stand there
      if (pivot != c + 1) {
        fast::swap(n - k, a + c + 1 + k * lda, lda, a + pivot + k * lda, lda);
        fast::swap(n, a + (c + 1) * lda, 1, a + pivot * lda, 1);
      }
      for (long i = c + 2; i < n; ++i) column[i] = column[i] / column[c + 1];
      fast::gemv('N', n, n - 2 - c, kernel::from_real<T>(1), a + (c + 2) * lda, lda, column + c + 2, 1, kernel::from_real<T>(1),
                 a + (c + 1) * lda, 1);
    }
    const long width = end - k, below = n - 1 - end, right = n - end;
    T* lower = a + k + 1 + k * lda;  // unit lower trapezoid of multipliers, rows k + 1 on
    T* rest = a + k + 1 + end * lda;
    fast::trsm('L', 'L', 'N', 'U', width, right, kernel::from_real<T>(1), lower, lda, rest, lda);
    fast::gemm('N', 'N', below, right, width, kernel::from_real<T>(-1), lower + width, lda, rest, lda, kernel::from_real<T>(1),
               rest + width, lda);
    for (long c = k; c < end; ++c) {
      for (long i = c + 2; i < n; ++i) a[i + c * lda] = T{};
    }
  }
}

// The reflection I - tau (1, v)(1, v)^H whose conjugate transpose takes x to (beta, 0, ...), beta real; v replaces x[1 .. n).
template <class T>
T reflection(long n, T* x, kernel::RealOf<T>& beta) {
  using Real = kernel::RealOf<T>;
  const Real tail = fast::nrm2(n - 1, x + 1, 1), re = kernel::real(x[0]);
  Real im = 0;
  if constexpr (kernel::ComplexRecord<T>) im = x[0].im;
  beta = re;
  if (tail == 0 && im == 0) return T{};
  beta = std::hypot(std::hypot(re, im), tail);
  if (beta < Machine<Real>::smallest / Machine<Real>::epsilon) {  // the reciprocals below could overflow
    constexpr Real up = 1 / (Machine<Real>::smallest * 4);
    for (long i = 0; i < n; ++i) x[i] = up * x[i];
    const T tau = reflection(n, x, beta);
    beta /= up;
    return tau;
  }
  if (re > 0) beta = -beta;
  T factor{};
  T tau{};
  if constexpr (kernel::ComplexRecord<T>) {
    tau = {(beta - re) / beta, -im / beta};
    factor = T{1, 0} / T{re - beta, im};
  } else {
    tau = (beta - re) / beta;
    factor = 1 / (re - beta);
  }
  for (long i = 1; i < n; ++i) x[i] = factor * x[i];
  return tau;
}

// Work memory of the unitary reduction of order n, in elements: triangles of all panels, then the arrays of one panel.
inline long hessenberg_work(long n) {
  const long panels = n / panel_width + 1;
  return panels * panel_width * panel_width + 3 * n * panel_width;
}

// Similarity by reflections within the block [low, high], applied to the columns right of it and the rows above too. The vectors
// of the reflections stay below the subdiagonal; work keeps the triangle T of each panel, Q = product of (I - V T V^H).
template <class T>
void l_eacrg(long n, long low, long high, T* a, long lda, T* work) {
  const T one = kernel::from_real<T>(1), minus = kernel::from_real<T>(-1);
  const long rows = high + 1, panels = n / panel_width + 1;
  T* y = work + panels * panel_width * panel_width;  // Y = A V T, rows by width
  T* v = y + n * panel_width;                        // V with its unit diagonal and zeros, rows k + 1 .. high
  T* w = v + n * panel_width;
  T* t = work;
  for (long k = low; k < high - 1; k += panel_width, t += panel_width * panel_width) {
    const long width = k + panel_width < high - 1 ? panel_width : high - 1 - k;
    const long size = high - k;  // rows of V
    for (long i = 0; i < size * width; ++i) v[i] = T{};
    for (long j = 0; j < width; ++j) {
      const long c = k + j;
      T* column = a + c * lda;
      if (j > 0) {
        for (long i = 0; i < j; ++i) {  // from the right: row c of V
          fast::axpy(rows, -kernel::conj(v[j - 1 + i * size]), y + i * n, 1, column, 1);
        }
        fast::gemv('C', size, j, one, v, size, column + k + 1, 1, T{}, w, 1);
        for (long i = j - 1; i >= 0; --i) {  // w := T^H w, T upper
          T sum{};
          for (long l = 0; l <= i; ++l) sum += kernel::conj(t[l + i * panel_width]) * w[l];
          w[i] = sum;
        }
        fast::gemv('N', size, j, minus, v, size, w, 1, one, column + k + 1, 1);
      }
      kernel::RealOf<T> beta;
      const T tau = reflection(high - c, column + c + 1, beta);
      T* vj = v + j * size;
      vj[j] = one;
      for (long i = c + 2; i <= high; ++i) vj[i - k - 1] = column[i];
      column[c + 1] = kernel::from_real<T>(beta);
      // Y_j = tau (A v_j - Y V^H v_j), and the new column of T.
      fast::gemv('N', rows, high - c, one, a + (c + 1) * lda, lda, vj + j, 1, T{}, y + j * n, 1);
      fast::gemv('C', size, j, one, v, size, vj, 1, T{}, w, 1);
      fast::gemv('N', rows, j, minus, y, n, w, 1, one, y + j * n, 1);
      for (long i = 0; i < rows; ++i) y[i + j * n] = tau * y[i + j * n];
      for (long i = 0; i < j; ++i) {
        T sum{};
        for (long l = i; l < j; ++l) sum += t[i + l * panel_width] * w[l];
        t[i + j * panel_width] = -tau * sum;
      }
      t[j + j * panel_width] = tau;
      for (long i = j + 1; i < width; ++i) t[i + j * panel_width] = T{};
    }
    const long next = k + width;
    fast::gemm('N', 'C', rows, high + 1 - next, width, minus, y, n, v + width - 1, size, one, a + next * lda, lda);
    T* rest = a + k + 1 + next * lda;
    fast::gemm('C', 'N', width, n - next, size, one, v, size, rest, lda, T{}, y, panel_width);
    fast::trmm('U', 'C', 'N', width, n - next, t, panel_width, y, panel_width);
    fast::gemm('N', 'N', size, n - next, width, minus, v, size, y, panel_width, one, rest, lda);
  }
}

// Q of the reduction, n by n, and the matrix cleared below its subdiagonal. Uses the triangles that l_eacrg left in work.
template <class T>
void l_ebcrg(long n, long low, long high, T* a, long lda, T* q, long ldq, T* work) {
  const T one = kernel::from_real<T>(1), minus = kernel::from_real<T>(-1);
  const long panels = n / panel_width + 1;
  T* v = work + panels * panel_width * panel_width;
  T* w = v + n * panel_width;
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n; ++i) q[i + j * ldq] = i == j ? one : T{};
  }
  const long columns = high - 1 - low;
  for (long p = columns < 1 ? -1 : (columns - 1) / panel_width; p >= 0; --p) {
    const long k = low + p * panel_width, size = high - k;
    const long width = k + panel_width < high - 1 ? panel_width : high - 1 - k;
    const T* t = work + p * panel_width * panel_width;
    for (long j = 0; j < width; ++j) {
      for (long i = 0; i < size; ++i) v[i + j * size] = i < j ? T{} : i == j ? one : a[k + 1 + i + (k + j) * lda];
      for (long i = k + j + 2; i <= high; ++i) a[i + (k + j) * lda] = T{};
    }
    T* block = q + k + 1 + (k + 1) * ldq;
    fast::gemm('C', 'N', width, size, size, one, v, size, block, ldq, T{}, w, panel_width);
    fast::trmm('U', 'N', 'N', width, size, t, panel_width, w, panel_width);
    fast::gemm('N', 'N', size, size, width, minus, v, size, w, panel_width, one, block, ldq);
  }
}

}  // namespace zent::eigen
