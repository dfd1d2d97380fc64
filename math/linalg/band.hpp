// Factorizations and solutions on column-major band storage, and what both public solvers share. All of it belongs to the
// mathematics half.
#pragma once

#include <cmath>

#include "math/linalg/band_isa.hpp"
#include "math/optional_argument.hpp"
#include "runtime/envelope.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::band {

using kernel::abs1;
using kernel::RealOf;

// The smallest number that can be inverted without overflow.
template <class Real>
constexpr Real safe_minimum() {
  return 1 > Machine<Real>::smallest * Machine<Real>::largest ? 1 / Machine<Real>::largest : Machine<Real>::smallest;
}

template <class T>
RealOf<T> magnitude(T x) {
  if constexpr (kernel::ComplexRecord<T>) {
    return std::hypot(x.re, x.im);
  } else {
    return std::abs(x);
  }
}

// +1 or -1; for complex elements the point of the unit circle in the same direction.
template <class T>
T direction(T x) {
  if constexpr (kernel::ComplexRecord<T>) {
    const RealOf<T> size = magnitude(x);
    if (!(size > 0)) return {1, 0};
    return {x.re / size, x.im / size};
  } else {
    return static_cast<T>(2 * static_cast<int>(x >= 0) - 1);
  }
}

// What both solvers take; the factor options differ.
template <class T>
struct BandOptions {
  bool factor_only = false, solve_only = false, factor_user = false;
  T** give_factor = nullptr;
  T* factor = nullptr;
  T* x = nullptr;
  RealOf<T>* condition = nullptr;
};

// False for another code.
template <class T>
bool read_band_option(int code, Options& list, BandOptions<T>& options) {
  switch (code) {
    case ZENT_FACTOR_ONLY:
      options.factor_only = true;
      return true;
    case ZENT_SOLVE_ONLY:
      options.solve_only = true;
      return true;
    case ZENT_RETURN_USER:
      options.x = list.pointer<T>();
      not_null(options.x, "x", "ZENT_RETURN_USER");
      return true;
    case ZENT_CONDITION:
      options.condition = list.pointer<RealOf<T>>();
      not_null(options.condition, "cond", "ZENT_CONDITION");
      return true;
    default:
      return false;
  }
}

// The tests before those of the codiagonals; false after an error.
template <class T>
bool check_band_arguments(long n, const T* a, const T* b, const BandOptions<T>& options) {
  if (a == nullptr && !options.solve_only) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (b == nullptr && !options.factor_only) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"b"}});
  if (failed<Math>()) return false;
  if (options.solve_only && options.condition != nullptr) {
    raise<Math>(5, MATH_CONDITION_ONLY_SPECIFIER);
  } else if (options.factor_only && !options.factor_user && options.give_factor == nullptr) {
    raise<Math>(5, MATH_FACTOR_ONLY_SPECIFIER);
  } else if (options.solve_only && !options.factor_user) {
    raise<Math>(5, MATH_SPECIFY_SOLVE_ONLY);
  } else if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  }
  return !failed<Math>();
}

// LU factorization with partial pivoting of the band matrix in a (element (r, j) of its storage at a + r * row_step + j *
// column_step; corners are not read) into fac: ldfac >= 2 nlca + nuca + 1 rows, U above and on row nlca + nuca, negated
// multipliers below it. block 0 lets the bandwidth choose. Work memory may fall short: then the columns go one by one.
// Errors: 1010, 1074, 1075, 1076 (lda, only of column-major input), 1077; 1004 for a pivot that has no safe reciprocal.
template <class T>
void l_l2trb(long n, const T* a, long row_step, long column_step, long nlca, long nuca, T* fac, long ldfac, long* pvt,
             long block);

// Solution with that factor, ipath 1 plain, 2 transposed (conjugated). x may be b.
template <class T>
void l_lfsrb(long n, const T* fac, long ldfac, long nlca, long nuca, const long* pvt, const T* b, long ipath, T* x);

// Cholesky factorization of the upper half, fac may be a, and the solution with it, x may be b.
template <class T>
void l_lftqs(long n, const T* a, long lda, long ncoda, T* fac, long ldfac);
template <class T>
void l_lfsqs(long n, const T* fac, long ldfac, long ncoda, const T* b, T* x);

// The solution with a factor in rows of n.
template <class T>
void l_lfsqs_rows(long n, const T* fac, long ncoda, const T* b, T* x);

// The rows by n array between row-major and column-major with leading dimension ld, tile by tile: plainly where there are few
// rows for the kernel's squares.
constexpr long transposed_tile = 64, least_for_squares = 8;
template <class T>
void rows_to_columns(long rows, long n, const T* a, T* b, long ld) {
  for (long first = 0; first < n; first += transposed_tile) {
    const long last = first + transposed_tile < n ? first + transposed_tile : n;
    if (rows >= least_for_squares) {
      fast::kernels<T>().transpose(false, last - first, rows, a + first, n, b + first * ld, ld);
      continue;
    }
    for (long r = 0; r < rows; ++r) {
      for (long j = first; j < last; ++j) b[j * ld + r] = a[r * n + j];
    }
  }
}
template <class T>
void columns_to_rows(long rows, long n, const T* b, long ld, T* a) {
  for (long first = 0; first < n; first += transposed_tile) {
    const long last = first + transposed_tile < n ? first + transposed_tile : n;
    if (rows >= least_for_squares) {
      fast::kernels<T>().transpose(false, rows, last - first, b + first * ld, ld, a + first, n);
      continue;
    }
    for (long r = 0; r < rows; ++r) {
      for (long j = first; j < last; ++j) a[r * n + j] = b[j * ld + r];
    }
  }
}

// Vectors for the estimate: the one that the solutions turn, signs, and the reciprocals of a diagonal. False without memory.
template <class T>
bool obtain_estimate_work(long n, T*& x, bool*& signs, T*& reciprocals) {
  x = scratch<Math, T>(n);
  signs = scratch_zero<Math, bool>(n);
  reciprocals = scratch<Math, T>(n);
  if (x != nullptr && signs != nullptr && reciprocals != nullptr) return true;
  raise_out_of_memory<Math>({n}, {"n"});
  return false;
}

// The size of the estimate's vectors: for a matrix of large elements a power of 2 near its norm, lest the inverse's underflow,
// but with room above for the sums of a solution.
template <class Real>
Real estimate_unit(Real norm) {
  constexpr Real bound = Machine<Real>::largest / static_cast<Real>(1L << 32);
  if (!(norm > 1 && norm <= Machine<Real>::largest)) return 1;
  return std::ldexp(Real{1}, std::ilogb(norm < bound ? norm : bound));
}

// The 1-norm of the inverse by Hager's method in Higham's form, in exactly five passes; the estimate of the last one counts. The
// vector of a pass is fixed by the index that the pass before chose, so a repeated index closes a cycle: what the fifth pass
// would give is then known without running it. The solutions turn x into what they give, and signs is work.
// A Hermitian matrix has room for n in `image`, null else: the first solution is also that for signs which are all 1, so that it
// remains to solve for the differences from 1. These are few where the inverse decays, and often none. Only the place of the
// largest component matters, so all of it is halved: the solution for a difference of 2 might overflow.
template <class T, class Solve, class SolveTransposed>
RealOf<T> estimate_inverse_norm(long n, T* x, bool* signs, T* image, RealOf<T> norm, Solve solve,
                                SolveTransposed solve_transposed) {
  using Real = RealOf<T>;
  constexpr int passes = 5;
  const Real unit = estimate_unit(norm);
  Real estimate[passes] = {};
  long chosen[passes] = {};
  for (long i = 0; i < n; ++i) x[i] = kernel::from_real<T>(unit / static_cast<Real>(n));
  for (int pass = 0;; ++pass) {
    solve();
    for (long i = 0; i < n; ++i) estimate[pass] += magnitude(x[i]);
    if (pass == 0 && !std::isfinite(static_cast<Real>(n) * estimate[0])) image = nullptr;
    if (pass == 0 && image != nullptr) {
      for (long i = 0; i < n; ++i) image[i] = static_cast<Real>(n) / 2 * x[i];
    }
    estimate[pass] /= unit;
    if (pass == passes - 1) return estimate[pass];
    const T known = kernel::from_real<T>(image != nullptr ? 1 : 0);
    const Real size = image != nullptr ? unit / 2 : unit;
    long changed = 0, negative = 0;  // the same signs lead to the same index
    for (long i = 0; i < n; ++i) {
      const T sign = direction(x[i]);
      const bool positive = sign == kernel::from_real<T>(1);
      changed += positive != signs[i];
      negative += !positive;
      signs[i] = positive;
      x[i] = size * (sign - known);
    }
    if (kernel::ComplexRecord<T>) changed += negative;  // signs off the real line are not kept
    if (pass > 0 && changed == 0) return estimate[pass];
    if (image == nullptr || negative != 0) solve_transposed();
    for (long i = 0; image != nullptr && i < n; ++i) x[i] += image[i];
    chosen[pass] = fast::iamax(n, x, 1) - 1;
    for (int earlier = 0; earlier < pass; ++earlier) {
      if (chosen[earlier] != chosen[pass]) continue;
      const int period = pass - earlier;
      return estimate[earlier + 1 + (passes - 2 - pass) % period];
    }
    for (long i = 0; i < n; ++i) x[i] = T{};
    x[chosen[pass]] = kernel::from_real<T>(unit);
  }
}

// The 1-norm of the inverse from the factor of a matrix of the given norm. 201, and 0, without memory.
template <class T>
RealOf<T> l_condition_higham(long n, const T* fac, long ldfac, long nlca, long nuca, const long* pvt, RealOf<T> norm);
template <class T>
RealOf<T> l_condition_higham(long n, const T* fac, long ldfac, long ncoda, RealOf<T> norm);

// Warns when norm * inverse_norm is beyond 1/epsilon and stores the condition number where it was asked for. A product that is
// not a number counts as infinite. Nothing after an error of the estimate.
template <class Real>
void l_report_condition(Real norm, Real inverse_norm, Real* condition) {
  if (fatal_stands<Math>()) return;
  Real k = norm * inverse_norm;
  if (std::isnan(k)) k = Machine<Real>::infinity;
  if (k > 1 / Machine<Real>::epsilon) raise<Math>(3, MATH_ILL_CONDITIONED, {.r = {static_cast<double>(1 / k)}});
  if (condition != nullptr) *condition = k;
}

}  // namespace zent::band
