// Cholesky factorization of a symmetric or Hermitian positive definite matrix, its solves, condition estimate and inverse.
// Matrices are column-major; only the upper triangle of A is read, and the factor R (A = R^H R) is mirrored onto the lower one.
#pragma once

#include "math/linalg/dense.hpp"

namespace zent::linalg {

inline constexpr long cholesky_leaf = 24;

// Factors the leading n by n block of the upper triangle. 0, or the order (from 1, behind `before`) of the first leading
// submatrix without a factor.
template <class T>
long factor_cholesky(long n, T* a, long lda, long before = 0) {
  using Real = RealOf<T>;
  if (n > cholesky_leaf) {
    const long m = (n / 2 + cholesky_leaf - 1) / cholesky_leaf * cholesky_leaf;
    T* above = a + m * lda;
    T* corner = above + m;
    if (const long stop = factor_cholesky(m, a, lda, before)) return stop;
    fast::trsm('L', 'U', 'C', 'N', m, n - m, from_real<T>(1), a, lda, above, lda);
    fast::syrk('U', 'C', n - m, m, Real{-1}, above, lda, Real{1}, corner, lda);
    return factor_cholesky(n - m, corner, lda, before + m);
  }
  for (long j = 0; j < n; ++j) {
    T* column = a + j * lda;
    Real rest = kernel::real(column[j]);
    for (long i = 0; i < j; ++i) {
      const T* left = a + i * lda;
      T sum = column[i];
      for (long k = 0; k < i; ++k) sum += -conj(left[k]) * column[k];
      column[i] = (1 / kernel::real(left[i])) * sum;
      rest -= kernel::real(conj(column[i]) * column[i]);
    }
    if (rest <= 0) return before + j + 1;
    column[j] = from_real<T>(std::sqrt(rest));
  }
  return 0;
}

// The largest column sum of moduli, from the upper triangle alone. sums: n elements of work.
template <class T>
RealOf<T> symmetric_norm(long n, const T* a, long lda, RealOf<T>* sums) {
  using Real = RealOf<T>;
  for (long j = 0; j < n; ++j) {
    const T* column = a + j * lda;
    Real sum = 0;
    for (long i = 0; i < j; ++i) {
      const Real size = abs1(column[i]);
      sums[i] += size;
      sum += size;
    }
    sums[j] = sum + abs1(column[j]);
  }
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    if (sums[j] > norm || sums[j] != sums[j]) norm = sums[j];
  }
  return norm;
}

// An imaginary part on the diagonal of a Hermitian matrix is an error; false then.
template <class Half, class T>
bool check_real_diagonal(long n, const T* a, long lda) {
  if constexpr (kernel::ComplexRecord<T>) {
    for (long j = 0; j < n; ++j) {
      const auto imaginary = a[j + j * lda].im;
      if (imaginary != 0) {
        raise<Half>(4, MATH_HERMITIAN_DIAG_REAL, {.i = {j}, .r = {imaginary}});
        return false;
      }
    }
  }
  return true;
}

// fac := Cholesky factor of a, in full. The arrays may be the same. Also a factorization that stopped is mirrored.
template <class Half, class T>
bool lftds(long n, const T* a, long lda, T* fac, long ldfac) {
  const char* name = frame_name<T>("zent_lftds", "zent_dlftds", "l_lftdh");
  push<Half>(name);
  bool done = check_factor_sizes<Half>(n, lda, ldfac);
  if (done) {
    copy_upper(n, a, lda, fac, ldfac);
    done = check_real_diagonal<Half>(n, fac, ldfac);
    const long stop = done ? factor_cholesky(n, fac, ldfac) : 0;
    mirror_upper_conjugated(n, fac, ldfac);
    if (stop != 0) raise<Half>(4, MATH_NONPOSITIVE_MATRIX, {.i = {stop}});
    done = done && stop == 0;
  }
  pop<Half>(name);
  return done;
}

// The same with the reciprocal condition number. w: n elements of work.
template <class Half, class T>
bool l_l2cds(long n, const T* a, long lda, T* fac, long ldfac, RealOf<T>* rcond, T* w) {
  using Real = RealOf<T>;
  const char* name = frame_name<T>("l_l2cds", "l_l2cds", "l_l2cdh");
  push<Half>(name);
  *rcond = 0;
  const Real anorm = symmetric_norm(n, a, lda, reinterpret_cast<Real*>(w));
  const bool done = lftds<Half>(n, a, lda, fac, ldfac);
  if (done) {
    growth_vector(n, w, [&](long j) { return fac + j + j * ldfac; });  // the mirrored column is the row of R, conjugated
    normalise(n, w);
    Real ynorm = 1;
    bounded_solve_upper(n, fac, ldfac, w, ynorm);
    normalise(n, w);
    ynorm = 1;
    bounded_solve_upper_transposed(n, fac, ldfac, w, ynorm);
    ynorm *= normalise(n, w);
    bounded_solve_upper(n, fac, ldfac, w, ynorm);
    ynorm *= normalise(n, w);
    *rcond = anorm != 0 ? ynorm / anorm : 0;
    warn_ill_conditioned<Half>(*rcond);
  }
  pop<Half>(name);
  return done;
}

// Solves a triangular system, x := solution: ipath 1 lower, 2 upper, 3 lower transposed, 4 upper transposed (conjugated too).
template <class Half, class T>
bool lslrt(long n, const T* a, long lda, const T* b, long ipath, T* x) {
  const char* name = frame_name<T>("zent_lslrt", "zent_dlslrt", "l_lslct");
  push<Half>(name);
  bool done = false;
  if (n < 1) {
    raise<Half>(5, MATH_NUM_OF_EQUATIONS, {.i = {n}});
  } else if (n > lda) {
    raise<Half>(5, MATH_LDA_LESS_ORDER, {.i = {n, lda}});
  } else if (ipath < 1 || ipath > 4) {
    raise<Half>(5, MATH_IPATH_RANGE_4, {.i = {1, 4, ipath}});
  } else {
    done = true;
    for (long k = 0; done && k < n; ++k) {
      done = !(a[k + k * lda] == T{});
      if (!done) raise<Half>(4, MATH_SINGULAR_TRI_MATRIX, {.i = {k}});
    }
  }
  if (done) {
    if (x != b) std::memmove(x, b, sizeof(T) * n);
    fast::trsv(ipath % 2 == 1 ? 'L' : 'U', ipath > 2 ? 'C' : 'N', 'N', n, a, lda, x, 1);
  }
  pop<Half>(name);
  return done;
}

inline constexpr long product_leaf = 16;

// B := B U^H, B m by n, by halves.
template <class T>
void multiply_right(long m, long n, const T* u, long ldu, T* b, long ldb) {
  if (n > product_leaf) {
    const long half = n / 2;
    T* right = b + half * ldb;
    multiply_right(m, half, u, ldu, b, ldb);
    fast::gemm('N', 'C', m, half, n - half, from_real<T>(1), right, ldb, u + half * ldu, ldu, from_real<T>(1), b, ldb);
    multiply_right(m, n - half, u + half + half * ldu, ldu, right, ldb);
    return;
  }
  for (long j = 0; j < n; ++j) {
    T* column = b + j * ldb;
    fast::scal(m, conj(u[j + j * ldu]), column, 1);
    for (long k = j + 1; k < n; ++k) fast::axpy(m, conj(u[j + k * ldu]), b + k * ldb, 1, column, 1);
  }
}

// U := U U^H in the upper triangle, by halves.
template <class T>
void multiply_triangle(long n, T* u, long ldu) {
  if (n > product_leaf) {
    const long half = n / 2;
    T *above = u + half * ldu, *corner = above + half;
    multiply_triangle(half, u, ldu);
    fast::syrk('U', 'N', half, n - half, RealOf<T>{1}, above, ldu, RealOf<T>{1}, u, ldu);
    multiply_right(half, n - half, corner, ldu, above, ldu);
    multiply_triangle(n - half, corner, ldu);
    return;
  }
  for (long j = 0; j < n; ++j) {  // row i needs row i and those below it, column by column from the left
    for (long i = 0; i <= j; ++i) {
      T sum{};
      for (long k = j; k < n; ++k) sum += u[i + k * ldu] * conj(u[j + k * ldu]);
      u[i + j * ldu] = sum;
    }
  }
}

// The inverse in full, with the condition estimate; a badly conditioned matrix is warned of twice. w: n elements of work.
template <class Half, class T>
bool l_l2nds(long n, const T* a, long lda, T* inva, long ldinva, RealOf<T>* rcond, T* w) {
  const char* name = frame_name<T>("l_l2nds", "l_l2nds", "l_l2ndh");
  push<Half>(name);
  const bool done = l_l2cds<Half>(n, a, lda, inva, ldinva, rcond, w) && l_linrt<Half>(n, inva, ldinva, 2, inva, ldinva);
  if (done) {
    multiply_triangle(n, inva, ldinva);
    warn_ill_conditioned<Half>(*rcond);
    mirror_upper_conjugated(n, inva, ldinva);
  }
  pop<Half>(name);
  return done;
}

}  // namespace zent::linalg
