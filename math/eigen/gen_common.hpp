// What the functions of general matrices and of general pencils share: their options, checks, scaling and the form of vectors.
#pragma once

#include <cmath>

#include "math/eigen/gencomplex.hpp"
#include "math/eigen/genvectors.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent/eigen_general.h"

namespace zent::eigen {

template <class T>
using ComplexFor = ComplexOf<kernel::RealOf<T>>;

template <class T>
struct GeneralOptions {
  long a_col_dim = 0, b_col_dim = 0, evecu_col_dim = 0;
  bool a_given = false, b_given = false, evecu_given = false;
  bool wants_library = false, wants_user = false;
  ComplexFor<T>** vectors = nullptr;
  ComplexFor<T>* vectors_user = nullptr;
  ComplexFor<T>* values_user = nullptr;

  bool wants_vectors() const {
    return wants_library || wants_user;
  }
  long vector_row(long n) const {  // row length of the vectors
    return wants_user ? evecu_col_dim : n;
  }
};

template <class T>
GeneralOptions<T> general_options(long n, bool pencil, Options& options) {
  GeneralOptions<T> o;
  while (const int code = options.code()) {
    if (code == ZENT_A_COL_DIM) {
      o.a_col_dim = options.integer();
      o.a_given = true;
    } else if (code == ZENT_B_COL_DIM && pencil) {
      o.b_col_dim = options.integer();
      o.b_given = true;
    } else if (code == ZENT_EVECU_COL_DIM) {
      o.evecu_col_dim = options.integer();
      o.evecu_given = true;
    } else if (code == ZENT_VECTORS) {
      o.vectors = options.pointer<ComplexFor<T>*>();
      o.wants_library = true;
      o.wants_user = false;
    } else if (code == ZENT_VECTORS_USER) {
      o.vectors_user = options.pointer<ComplexFor<T>>();
      o.wants_user = true;
      o.wants_library = false;
    } else if (code == ZENT_RETURN_USER && !pencil) {
      o.values_user = options.pointer<ComplexFor<T>>();
    } else if (code == ZENT_GENEIG_OPTION && pencil) {
      options.pointer<void>();
    } else if (!options.unknown<Math>(code)) {
      break;
    }
  }
  if (!o.a_given) o.a_col_dim = n;
  if (!o.b_given) o.b_col_dim = n;
  if (!o.evecu_given) o.evecu_col_dim = n;
  return o;
}

// Of several faults the first one found is reported.
inline void require(const void* p, const char* name) {
  if (p == nullptr && !failed<Math>()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {name}});
}

// The sizes and the storage for vectors; null arguments have been reported before.
template <class T>
void check_general(long n, bool pencil, const GeneralOptions<T>& o) {
  if (failed<Math>()) return;
  const auto short_columns = [n](long columns, const char* name) {
    if (n > columns && !failed<Math>()) raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {n, columns}, .l = {name}});
  };
  if (o.wants_user && o.vectors_user == nullptr) {
    raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {"evecu", "ZENT_VECTORS_USER"}});
  } else if (o.wants_library && o.vectors == nullptr) {
    raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {"evec", "ZENT_VECTORS"}});
  } else if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  } else {
    short_columns(o.a_col_dim, "a");
    if (pencil) short_columns(o.b_col_dim, "b");
    short_columns(o.evecu_col_dim, "evecu");
  }
}

// As the worker for values and vectors asks, whoever calls it.
inline void check_sizes(long n, long lda, long ldevec) {
  if (n < 1) {
    raise<Math>(5, MATH_MATRIX_ORDER_TOO_SMALL, {.i = {n}});
  } else if (lda < n) {
    raise<Math>(5, MATH_LDA_VALUE_TOO_SMALL, {.i = {lda, n}});
  } else if (ldevec < n) {
    raise<Math>(5, MATH_LDEVEC_VALUE_TOO_SMALL, {.i = {ldevec, n}});
  }
}

// Storage for n by n vectors: the caller's, whose rows have the column dimension, or new and n wide. Null after a failed
// allocation.
template <class T>
ComplexFor<T>* vector_storage(long n, const GeneralOptions<T>& o) {
  long size = 0;
  if (o.wants_user) return o.vectors_user;
  return __builtin_mul_overflow(n, n, &size) ? nullptr : result<Math, ComplexFor<T>>(size);
}

// Largest magnitude of a part of the row-major n by n array, not finite if one of them is not.
template <class T>
kernel::RealOf<T> largest_part(long n, const T* a, long ld) {
  using Real = kernel::RealOf<T>;
  constexpr long parts = sizeof(T) / sizeof(Real);
  Real largest = 0;
  for (long i = 0; i < n; ++i) {
    const Real* row = reinterpret_cast<const Real*>(a + i * ld);
    for (long j = 0; j < n * parts; ++j) {
      const Real size = std::abs(row[j]);
      if (!(size <= Machine<Real>::largest)) return Machine<Real>::infinity;
      if (size > largest) largest = size;
    }
  }
  return largest;
}

// A power of two that brings numbers up to `largest` into the middle of the exponent range, where products and squares of them
// have room; 1 when they are there already.
template <class Real>
Real range_scale(Real largest) {
  constexpr int room = sizeof(Real) == 4 ? 24 : 200, most = sizeof(Real) == 4 ? 120 : 1000;  // the reciprocal is finite too
  if (largest == 0) return 1;
  const int exponent = std::ilogb(largest);
  if (exponent >= -room && exponent <= room) return 1;
  return std::ldexp(Real(1), exponent < -most ? most : exponent > most ? -most : -exponent);
}

// The row-major array times a factor, column-major.
template <class T>
void import_matrix(long n, const T* a, long ld, kernel::RealOf<T> factor, T* to) {
  constexpr long tile = 16;
  for (long i0 = 0; i0 < n; i0 += tile) {
    for (long j0 = 0; j0 < n; j0 += tile) {
      for (long j = j0; j < n && j < j0 + tile; ++j) {
        for (long i = i0; i < n && i < i0 + tile; ++i) to[i + j * n] = factor * a[i * ld + j];
      }
    }
  }
}

// 2-norm 1, and the largest component, the first of equal ones, turned to be real.
template <class C>
void normalize_column(long n, C* v) {
  using Real = kernel::RealOf<C>;
  Real largest = 0;
  for (long i = 0; i < n; ++i) largest = std::fmax(largest, std::fmax(std::abs(v[i].re), std::abs(v[i].im)));
  if (!(largest > 0)) return;
  // Where the largest is near the ends of the exponent range its reciprocal would not be; halves of the exponent reach it.
  const int exponent = std::ilogb(largest);
  const Real down = std::ldexp(Real(1), -(exponent / 2)), rest = std::ldexp(Real(1), -(exponent - exponent / 2));
  Real sum = 0, top = -1;
  long at = 0;
  for (long i = 0; i < n; ++i) {
    v[i] = rest * (down * v[i]);
    const Real square = v[i].re * v[i].re + v[i].im * v[i].im;
    sum += square;
    if (square > top) {
      top = square;
      at = i;
    }
  }
  const Real size = modulus(v[at]), norm = std::sqrt(sum);
  const C turn{v[at].re / size / norm, -v[at].im / size / norm};
  const bool real = v[at].im == 0;
  for (long i = 0; i < n; ++i) v[i] = (real ? turn.re * v[i] : turn * v[i]) + C{};  // no zero keeps a minus sign
  v[at].im = 0;
}

// A column of the row-major result from a complex vector, and from the real columns re and im (null for a real vector). `work`
// has n elements.
template <class C>
void export_column(long n, const C* v, C* work, C* out, long ld) {
  for (long i = 0; i < n; ++i) work[i] = v[i];
  normalize_column(n, work);
  for (long i = 0; i < n; ++i) out[i * ld] = work[i];
}

template <class Real, class C>
void export_column(long n, const Real* re, const Real* im, bool conjugate, C* work, C* out, long ld) {
  for (long i = 0; i < n; ++i) work[i] = {re[i], im == nullptr ? 0 : conjugate ? -im[i] : im[i]};
  export_column(n, work, work, out, ld);
}

}  // namespace zent::eigen
