// Norms of vectors and of matrices in dense, band and coordinate form.
#include <algorithm>
#include <cmath>

#include "math/optional_argument.hpp"
#include "runtime/envelope.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent {

namespace {

enum class Norm { two, one, infinity };

constexpr long tile = 256;  // sums kept at a time

// The larger of two norms; a not-a-number outlasts every other.
template <class Real>
Real larger(Real a, Real b) {
  return std::isnan(a) || a >= b ? a : b;
}

template <class Real>
Real largest_of(const Real* sums, long n, Real norm) {
  for (long k = 0; k < n; ++k) norm = larger(norm, sums[k]);
  return norm;
}

struct NormOptions {
  Norm norm = Norm::two;
  bool symmetric = false;
  long col_dim = 0;
};

NormOptions read_options(Options& list, bool takes_col_dim, bool takes_symmetric, long n) {
  NormOptions options{.col_dim = n};
  while (const int code = list.code()) {
    if (code == ZENT_ONE_NORM) {
      options.norm = Norm::one;
    } else if (code == ZENT_INF_NORM) {
      options.norm = Norm::infinity;
    } else if (code == ZENT_SYMMETRIC && takes_symmetric) {
      options.symmetric = true;
    } else if (code == ZENT_A_COL_DIM && takes_col_dim) {
      options.col_dim = list.integer();
    } else if (!list.unknown<Math>(code)) {
      break;
    }
  }
  return options;
}

template <class Real>
struct VectorOptions {
  Norm norm = Norm::two;
  long* index = nullptr;
  const Real* second = nullptr;
};

template <class Real>
VectorOptions<Real> read_vector_options(Options& list) {
  VectorOptions<Real> options;
  while (const int code = list.code()) {
    if (code == ZENT_ONE_NORM) {
      options.norm = Norm::one;
    } else if (code == ZENT_INF_NORM) {
      options.norm = Norm::infinity;
      options.index = list.pointer<long>();
    } else if (code == ZENT_SECOND_VECTOR) {
      options.second = not_null(list.pointer<const Real>(), "y", "ZENT_SECOND_VECTOR");
    } else if (!list.unknown<Math>(code)) {
      break;
    }
  }
  return options;
}

template <class Real>
Real l_vector_norm(long n, const Real* x, Options& list) {
  const VectorOptions<Real> options = read_vector_options<Real>(list);
  if (n < 1) raise<Math>(5, MATH_INEQUALITY_VIOLATION_3, {.i = {n, 1}, .l = {"n"}});
  if (x == nullptr) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"x"}});
  if (failed<Math>()) return failure_value<Real>();
  const Real* y = options.second;
  const auto element = [=](long i) { return y != nullptr ? x[i] - y[i] : x[i]; };
  if (options.norm == Norm::two) {
    if (y == nullptr) return fast::nrm2(n, x, 1);
    kernel::SumOfSquares<Real> squares;
    for (long i = 0; i < n; ++i) squares.add(element(i));
    return squares.root();
  }
  Real norm = 0;
  if (options.norm == Norm::one) {
    for (long i = 0; i < n; ++i) norm += std::abs(element(i));
    return norm;
  }
  long best = 0;
  norm = std::abs(element(0));
  for (long i = 1; i < n; ++i) {
    const Real size = std::abs(element(i));
    if (larger(norm, size) == norm || std::isnan(norm)) continue;
    norm = size;
    best = i;
  }
  if (options.index != nullptr) *options.index = best;
  return norm;
}

template <class Real>
Real l_matrix_norm(long m, long n, const Real* a, Options& list) {
  const NormOptions options = read_options(list, true, false, n);
  if (a == nullptr) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (failed<Math>()) return failure_value<Real>();
  if (m < 1) {
    raise<Math>(5, MATH_M_GT_ZERO, {.i = {m}});
  } else if (n < 1) {
    raise<Math>(5, MATH_N_GT_ZERO, {.i = {n}});
  } else if (n > options.col_dim) {
    raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {n, options.col_dim}, .l = {"a"}});
  }
  if (failed<Math>()) return failure_value<Real>();
  Real norm = 0;
  if (options.norm == Norm::two) {
    kernel::SumOfSquares<Real> squares;
    for (long i = 0; i < m; ++i) squares.add(fast::nrm2(n, a + i * options.col_dim, 1));
    return squares.root();
  }
  if (options.norm == Norm::infinity) {
    for (long i = 0; i < m; ++i) norm = larger(norm, kernel::asum(n, a + i * options.col_dim, 1));
    return norm;
  }
  Real sums[tile];
  for (long first = 0; first < n; first += tile) {
    const long width = std::min(tile, n - first);
    std::fill_n(sums, width, Real{0});
    for (long i = 0; i < m; ++i) {
      for (long j = 0; j < width; ++j) sums[j] += std::abs(a[i * options.col_dim + first + j]);
    }
    norm = largest_of(sums, width, norm);
  }
  return norm;
}

// Sums over the columns or the rows of the band. A row of the storage is a codiagonal, `offset` = i - j; of a symmetric one every
// codiagonal counts for its mirror image as well.
template <class Real>
Real band_sums(long n, const Real* a, long nlca, long nuca, bool rows, bool symmetric) {
  Real norm = 0, sums[tile];
  for (long first = 0; first < n; first += tile) {
    const long last = std::min(n, first + tile);
    std::fill_n(sums, tile, Real{0});
    for (long offset = -nuca; offset <= nlca; ++offset) {
      const Real* codiagonal = a + (nuca + offset) * n;
      const long by_column_from = std::max(first, -offset), by_column_to = std::min(last, n - offset);
      const long by_row_from = std::max(first, offset), by_row_to = std::min(last, n + offset);
      if (!rows || symmetric) {
        for (long j = by_column_from; j < by_column_to; ++j) sums[j - first] += std::abs(codiagonal[j]);
      }
      if (rows || (symmetric && offset != 0)) {
        for (long i = by_row_from; i < by_row_to; ++i) sums[i - first] += std::abs(codiagonal[i - offset]);
      }
    }
    norm = largest_of(sums, last - first, norm);
  }
  return norm;
}

template <class Real>
Real l_matrix_norm_band(long n, const Real* a, long nlca, long nuca, Options& list) {
  const NormOptions options = read_options(list, false, true, n);
  if (options.symmetric) nlca = 0;
  if (a == nullptr) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (failed<Math>()) return failure_value<Real>();
  if (n < 1) {
    raise<Math>(5, MATH_N_GT_ZERO, {.i = {n}});
  } else if (nlca < 0 || nlca >= n) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NLCA_LT_N, {.i = {nlca, n}});
  } else if (nuca < 0 || nuca >= n) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NUCA_LT_N, {.i = {nuca, n}});
  }
  if (failed<Math>()) return failure_value<Real>();
  if (options.norm != Norm::two) {
    const bool rows = options.norm == Norm::infinity && !options.symmetric;
    return band_sums(n, a, nlca, nuca, rows, options.symmetric);
  }
  kernel::SumOfSquares<Real> squares;
  for (long offset = -nuca; offset <= nlca; ++offset) {
    const long from = std::max(0L, -offset), to = std::min(n, n - offset);
    const Real size = fast::nrm2(to - from, a + (nuca + offset) * n + from, 1);
    squares.add(size);
    if (options.symmetric && offset != 0) squares.add(size);
  }
  return squares.root();
}

template <class Element>
bool coordinates_fit(long m, long n, long nz, const Element* a, bool symmetric) {
  if (a == nullptr && nz > 0) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (failed<Math>()) return false;
  long positions = 0;
  if (m < 1) {
    raise<Math>(5, MATH_M_GT_ZERO, {.i = {m}});
  } else if (n < 1) {
    raise<Math>(5, MATH_N_GT_ZERO, {.i = {n}});
  } else if (symmetric && m != n) {
    raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {m, n, n}, .l = {"m"}});
  } else if (symmetric &&
             (nz < 0 ||
              (!__builtin_mul_overflow(n % 2 == 0 ? n / 2 : n, n % 2 == 0 ? n + 1 : n / 2 + 1, &positions) && nz > positions))) {
    raise<Math>(5, MATH_NZ_GE_ZERO_LT_NN, {.i = {nz, n}});
  } else if (nz < 0 || (!__builtin_mul_overflow(m, n, &positions) && nz > positions)) {
    raise<Math>(5, MATH_NZ_GE_ZERO_LT_MN, {.i = {nz, m, n}});
  }
  for (long k = 0; !failed<Math>() && k < nz; ++k) {
    if (a[k].row < 0 || a[k].row >= m) {
      raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {a[k].row, 0, m - 1}, .l = {"row"}});
    } else if (a[k].col < 0 || a[k].col >= n) {
      raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {a[k].col, 0, n - 1}, .l = {"col"}});
    }
  }
  return !failed<Math>();
}

template <class Real, class Element>
Real l_matrix_norm_coordinate(long m, long n, long nz, const Element* a, Options& list) {
  const NormOptions options = read_options(list, false, true, n);
  if (!coordinates_fit(m, n, nz, a, options.symmetric)) return failure_value<Real>();
  if (options.norm == Norm::two) {
    kernel::SumOfSquares<Real> squares;
    for (long k = 0; k < nz; ++k) {
      squares.add(a[k].val);
      if (options.symmetric && a[k].row != a[k].col) squares.add(a[k].val);
    }
    return squares.root();
  }
  const bool rows = options.norm == Norm::infinity;
  const long count = rows ? m : n;
  Real* sums = scratch_zero<Math, Real>(count);
  if (sums == nullptr) {
    raise_out_of_memory<Math>({count}, {rows ? "m" : "n"});
    return failure_value<Real>();
  }
  for (long k = 0; k < nz; ++k) {
    sums[rows ? a[k].row : a[k].col] += std::abs(a[k].val);
    if (options.symmetric && a[k].row != a[k].col) sums[rows ? a[k].col : a[k].row] += std::abs(a[k].val);
  }
  return largest_of(sums, count, Real{0});
}

}  // namespace

}  // namespace zent

#define ZENT_NORM_ENTRY(name, P, Real, last, fixed, parameters, worker)                                  \
  extern "C" Real zent_##P##_##name parameters {                                                         \
    ZENT_OPTIONS(options, last, fixed);                                                                  \
    const Real norm = zent::public_call<zent::Math>("zent_" #P "_" #name, [&] { return zent::worker; }); \
    ZENT_OPTIONS_END(options);                                                                           \
    return norm;                                                                                         \
  }
#define ZENT_FORM(P, Real)                                                                                           \
  ZENT_NORM_ENTRY(vector_norm, P, Real, x, 2, (long n, Real* x, ...), l_vector_norm<Real>(n, x, options))            \
  ZENT_NORM_ENTRY(matrix_norm, P, Real, a, 3, (long m, long n, Real* a, ...), l_matrix_norm<Real>(m, n, a, options)) \
  ZENT_NORM_ENTRY(matrix_norm_band, P, Real, nuca, 4, (long n, Real* a, long nlca, long nuca, ...),                  \
                  l_matrix_norm_band<Real>(n, a, nlca, nuca, options))                                               \
  ZENT_NORM_ENTRY(matrix_norm_coordinate, P, Real, a, 4, (long m, long n, long nz, Zent_##P##_sparse_elem* a, ...),  \
                  l_matrix_norm_coordinate<Real>(m, n, nz, a, options))
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
#undef ZENT_NORM_ENTRY
