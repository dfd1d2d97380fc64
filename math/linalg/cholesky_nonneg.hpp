// Cholesky factorization of a nonnegative definite matrix without pivoting, and solves with its possibly singular factor.
// Matrices are column-major, the factor R (A = R'R) is upper triangular, and a zero on its diagonal marks a dependent column.
#pragma once

#include "math/linalg/dense.hpp"
#include "runtime/checks.hpp"

namespace zent::linalg {

// The halves report alike under different numbers: the statistics half knows no names for these warnings and gives them number 1
// and no text, so that its callers can look at the number and say what it means to them.
template <class Half>
struct NonnegErrors {
  static constexpr long bad_tolerance = Half::is_math ? long{MATH_TOL_OUT_OF_RANGE} : long{STAT_ILLEGAL_TOL};

  static void warn(long number, const Values& values) {
    if constexpr (Half::is_math) {
      raise<Half>(3, number, values);
    } else {
      raise_text<Half>(3, 1, " ");
    }
  }
};

inline constexpr long nonneg_block = 32;

// Rows first to last - 1 of column j of R; what stands above them is known.
template <class Real>
void factor_rows(const Real* r, long ldr, long first, long last, Real threshold, Real* column, long j, long& flag) {
  for (long i = first; i < last; ++i) {
    const Real* left = r + i * ldr;
    const Real rest = column[i] - fast::dot(i - first, left + first, 1, column + first, 1);
    if (left[i] != 0) {
      column[i] = rest / left[i];
    } else {
      if ((flag == 0 || j < flag) && std::abs(rest) > threshold * fast::nrm2(i, left, 1)) flag = j + 1;
      column[i] = 0;
    }
  }
}

// r := factor, irank := number of columns that depend on none before them. The strict lower triangle comes out 0. True without a
// type 5 error: an indefinite matrix is a warning.
template <class Half, class Real>
bool l_chfac(long n, const Real* a, long lda, Real tol, long* irank, Real* r, long ldr) {
  long position = 0;
  c1dim<Half>(1, n, "n", lda, "lda", &position);
  c1dim<Half>(1, n, "*n", ldr, "ldr", &position);
  if (!(tol >= 0 && tol <= 1)) raise<Half>(5, NonnegErrors<Half>::bad_tolerance, {.r = {tol}});
  if (failed<Half>()) return false;
  copy_upper(n, a, lda, r, ldr);
  *irank = 0;
  long flag = 0;
  for (long c0 = 0; c0 < n; c0 += nonneg_block) {
    const long width = std::min(nonneg_block, n - c0);
    Real* panel = r + c0 * ldr;
    for (long r0 = 0; r0 < c0; r0 += nonneg_block) {  // blocks of rows above the diagonal block
      fast::gemm('T', 'N', nonneg_block, width, r0, -1, r + r0 * ldr, ldr, panel, ldr, 1, panel + r0, ldr);
      for (long j = 0; j < width; ++j) {
        Real* column = panel + j * ldr;
        const Real threshold = tol * std::sqrt(std::abs(column[c0 + j]));
        factor_rows(r, ldr, r0, r0 + nonneg_block, threshold, column, c0 + j, flag);
      }
    }
    // The diagonal stays as it is in a until its column is done: the tests are relative to it.
    for (long j = c0; j < c0 + width; ++j) {
      Real* column = r + j * ldr;
      const Real diagonal = column[j];
      for (long i = c0; i < j; ++i) column[i] -= fast::dot(c0, r + i * ldr, 1, column, 1);
      factor_rows(r, ldr, c0, j, tol * std::sqrt(std::abs(diagonal)), column, j, flag);
      Real s = diagonal - fast::dot(j, column, 1, column, 1);
      if (std::abs(s) <= tol * std::abs(diagonal)) {
        s = 0;
      } else if (s < 0) {
        s = 0;
        if (flag == 0 || j < flag) flag = j + 1;
      } else {
        ++*irank;
      }
      column[j] = std::sqrt(s);
    }
  }
  if (flag != 0) NonnegErrors<Half>::warn(MATH_NOT_NONNEG_DEFINITE, {.i = {flag}, .r = {tol}});
  clear_below_diagonal(n, r, ldr);
  return true;
}

// Type 5 with the first element below the diagonal that is not 0; false then.
template <class Half, class Real>
bool l_c1r(long n, const Real* r, long ldr) {
  for (long j = 0; j < n; ++j) {
    for (long i = j + 1; i < n; ++i) {
      if (r[i + j * ldr] == 0) continue;
      if constexpr (Half::is_math) {
        raise<Half>(5, MATH_ROW_ELMNTS_MUST_BE_ZERO, {.i = {i + 1, j + 1}, .r = {r[i + j * ldr]}});
      } else {
        raise_text<Half>(5, MATH_ROW_ELMNTS_MUST_BE_ZERO, "The matrix is not upper triangular.");
      }
      return false;
    }
  }
  return true;
}

template <class Half, class Real>
void solve_singular(long n, const Real* r, long ldr, long rhs, Real* x) {
  for (long i = n - 1; i >= 0; --i) {
    const Real* column = r + i * ldr;
    if (column[i] != 0) {
      x[i] = x[i] / column[i];
      fast::axpy(i, -x[i], column, 1, x, 1);
    } else {
      if (x[i] != 0) NonnegErrors<Half>::warn(MATH_INCONSISTENT_EQUATIONS, {.i = {i + 1, rhs + 1}, .r = {x[i]}});
      x[i] = 0;
    }
  }
}

template <class Half, class Real>
void solve_singular_transposed(long n, const Real* r, long ldr, Real* x) {
  for (long i = 0; i < n; ++i) {
    const Real* column = r + i * ldr;
    const Real d = x[i] - fast::dot(i, column, 1, x, 1);
    if (column[i] != 0) {
      x[i] = d / column[i];
      continue;
    }
    Real size = std::abs(x[i]);
    for (long k = 0; k < i; ++k) size += std::abs(column[k] * x[k]);
    if (std::abs(d) > 200 * Machine<Real>::epsilon * size) {
      NonnegErrors<Half>::warn(MATH_INCONSISTENT_EQUATIONS_2, {.i = {i + 1}});
    }
    x[i] = 0;
  }
}

// rinv := generalized inverse of R, whose rows and columns of zero diagonal entries are 0.
template <class Real>
void invert_singular(long n, const Real* r, long ldr, Real* rinv, long ldrinv) {
  for (long j = 0; j < n; ++j) {
    if (r != rinv || ldr != ldrinv) std::memmove(rinv + j * ldrinv, r + j * ldr, sizeof(Real) * (j + 1));
  }
  clear_below_diagonal(n, rinv, ldrinv);
  for (long k = 0; k < n; ++k) {
    Real* column = rinv + k * ldrinv;
    if (column[k] == 0) {
      std::fill(column, column + k, Real{0});
      for (long j = k; j < n; ++j) rinv[k + j * ldrinv] = 0;
      continue;
    }
    column[k] = 1 / column[k];
    fast::scal(k, -column[k], column, 1);
    for (long j = k + 1; j < n; ++j) {
      Real* right = rinv + j * ldrinv;
      const Real factor = right[k];
      right[k] = 0;
      fast::axpy(k + 1, factor, column, 1, right, 1);
    }
  }
}

// Solves R x = b (ipath 1, 3) or R'x = b (2, 4) for nb right-hand sides; 3 and 4 give the inverse of R too, in rinv. irank:
// nonzero diagonal entries. Inconsistent equations are warned of. True without a type 5 error.
template <class Half, class Real>
bool l_girts(long n, const Real* r, long ldr, long nb, const Real* b, long ldb, long ipath, long* irank, Real* x, long ldx,
             Real* rinv, long ldrinv) {
  long position = 0;
  c1dim<Half>(1, n, "n", ldr, "ldr", &position);
  c1iarg<Half>(nb, "nb", 0, -1, &position);
  if (nb > 0) {
    c1dim<Half>(1, n, "*n", ldb, "ldb", &position);
    c1dim<Half>(1, n, "*n", ldx, "ldx", &position);
  }
  c1iarg<Half>(ipath, "ipath", 1, 4, &position);
  if (ipath == 3 || ipath == 4) c1dim<Half>(1, n, "*n", ldrinv, "ldrinv", &position);
  if (failed<Half>() || !l_c1r<Half>(n, r, ldr)) return false;
  *irank = 0;
  for (long i = 0; i < n; ++i) *irank += r[i + i * ldr] != 0;
  const bool transposed = ipath % 2 == 0;
  for (long k = 0; k < nb; ++k) {
    Real* column = x + k * ldx;
    if (column != b + k * ldb) std::memmove(column, b + k * ldb, sizeof(Real) * n);
    if (*irank == n) {
      fast::trsv('U', transposed ? 'T' : 'N', 'N', n, r, ldr, column, 1);
    } else if (transposed) {
      solve_singular_transposed<Half>(n, r, ldr, column);
    } else {
      solve_singular<Half>(n, r, ldr, k, column);
    }
  }
  if (ipath > 2) invert_singular(n, r, ldr, rinv, ldrinv);
  return true;
}

// Both in frames of their own, so that a caller can ask for the type and number of what they raised.
template <class Half, class Real>
bool chfac(long n, const Real* a, long lda, Real tol, long* irank, Real* r, long ldr) {
  const char* name =
      Half::is_math ? frame_name<Real>("zent_chfac", "zent_dchfac", "") : frame_name<Real>("zents_chfac", "zents_dchfac", "");
  push<Half>(name);
  const bool done = l_chfac<Half>(n, a, lda, tol, irank, r, ldr);
  pop<Half>(name);
  return done;
}

template <class Half, class Real>
bool girts(long n, const Real* r, long ldr, long nb, const Real* b, long ldb, long ipath, long* irank, Real* x, long ldx,
           Real* rinv, long ldrinv) {
  const char* name =
      Half::is_math ? frame_name<Real>("zent_girts", "zent_dgirts", "") : frame_name<Real>("zents_girts", "zents_dgirts", "");
  push<Half>(name);
  const bool done = l_girts<Half>(n, r, ldr, nb, b, ldb, ipath, irank, x, ldx, rinv, ldrinv);
  pop<Half>(name);
  return done;
}

}  // namespace zent::linalg
