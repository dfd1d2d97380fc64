// Singular value decomposition: options, checks, vectors, rank and generalized inverse.
#include "math/linalg/svd.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "math/linalg/dense.hpp"
#include "math/linalg/svd_bidiagonal.hpp"
#include "math/linalg/svd_iteration.hpp"
#include "math/optional_argument.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent/least_squares.h"
#include "zent/option_codes.h"

namespace zent::linalg {

namespace {

// One of the three matrices that a call can hand over.
template <class T>
struct Output {
  T** address = nullptr;
  T* storage = nullptr;
  long col_dim;
  bool wanted = false;

  void library(Options& options) {
    address = options.pointer<T*>();
    storage = nullptr;
    wanted = true;
  }
  void user(Options& options, const char* argument, const char* option) {
    storage = not_null(options.pointer<T>(), argument, option);
    address = nullptr;
    wanted = true;
  }
  bool obtain(long rows, long meaningful) {
    if (address != nullptr) {
      storage = result<Math, T>(area(rows, col_dim));
      if (storage != nullptr) clear_columns(rows, meaningful, storage, col_dim);
    }
    return !wanted || storage != nullptr;
  }
  void hand_over() const {
    if (address == nullptr) return;
    *address = storage;
    keep<Math>(storage);
  }
};

template <class T>
struct Decomposition {
  using Real = RealOf<T>;
  long m, n;
  const T* a;
  long a_col_dim;
  Output<T> u, v, inverse;
  Real tol = 100 * Machine<Real>::epsilon;
  long* rank = nullptr;
  Real* s = nullptr;
};

template <class T>
bool parse(Decomposition<T>& p, Options& options) {
  using Real = RealOf<T>;
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_A_COL_DIM:
        p.a_col_dim = options.integer();
        break;
      case ZENT_RANK:
        p.tol = options.real<Real>();
        p.rank = options.pointer<long>();
        break;
      case ZENT_RANK_ADR:
        p.tol = *options.pointer<Real>();
        p.rank = options.pointer<long>();
        break;
      case ZENT_U:
        p.u.library(options);
        break;
      case ZENT_U_USER:
        p.u.user(options, "U", "ZENT_U_USER");
        break;
      case ZENT_U_COL_DIM:
        p.u.col_dim = options.integer();
        break;
      case ZENT_V:
        p.v.library(options);
        break;
      case ZENT_V_USER:
        p.v.user(options, "V", "ZENT_V_USER");
        break;
      case ZENT_V_COL_DIM:
        p.v.col_dim = options.integer();
        break;
      case ZENT_INVERSE:
        p.inverse.library(options);
        break;
      case ZENT_INVERSE_USER:
        p.inverse.user(options, "gen_inva", "ZENT_INVERSE_USER");
        break;
      case ZENT_INV_COL_DIM:
        p.inverse.col_dim = options.integer();
        break;
      case ZENT_RETURN_USER:
        p.s = not_null(options.pointer<Real>(), "S", "ZENT_RETURN_USER");
        break;
      default:
        raise<Math>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
        return false;
    }
  }
  return true;
}

template <class T>
void check_dimension(const Output<T>& output, long needed, const char* array, const char* name) {
  if (output.wanted && output.col_dim < needed) {
    raise<Math>(5, MATH_COLUMN_DIM_ERROR, {.i = {output.col_dim, needed}, .l = {array, name}});
  }
}

template <class T>
bool acceptable(const Decomposition<T>& p) {
  if (p.a == nullptr) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"A"}});
  if (p.m < 1) raise<Math>(5, MATH_NEED_NUM_ROWS_GT_ZERO, {.i = {p.m}});
  if (p.n < 1) raise<Math>(5, MATH_NEED_NUM_COLS_GT_ZERO, {.i = {p.n}});
  if (failed<Math>()) return false;
  if (p.a_col_dim < p.n) raise<Math>(5, MATH_COLUMN_DIM_ERROR, {.i = {p.a_col_dim, p.n}, .l = {"A", "nca"}});
  check_dimension(p.u, std::min(p.m, p.n), "U", "min(nra,nca)");
  check_dimension(p.v, std::min(p.m, p.n), "V", "min(nra,nca)");
  check_dimension(p.inverse, p.m, "gen_inva", "nra");
  return !failed<Math>();
}

// The column-major arrays of one call.
template <class T>
struct Workspace {
  using Real = RealOf<T>;
  T *a, *p, *se, *blocks, *u, *v;
  Real *heads, *values, *sums, *coefficients;
  long* column;
  bool* turned;
  long u_ld, v_ld;

  bool obtain(long m, long n, long job) {
    const bool want_u = job / 10 != 0, want_v = job % 10 != 0;
    a = scratch<Math, T>(area(m, n));
    p = scratch<Math, T>(area(std::min(m, n), n));
    if (a == nullptr || p == nullptr) return false;  // with these the sizes below fit a long
    const long order = std::min(m + 1, n);
    se = scratch<Math, T>(2 * order);
    blocks = scratch<Math, T>(std::max(Bidiagonal<T>::words(m, n), reflector_words<T>(std::max(m, n), order)));
    heads = scratch<Math, Real>(2 * order);
    values = scratch<Math, Real>(2 * order);
    sums = scratch<Math, Real>(m);
    column = scratch<Math, long>(order);
    turned = scratch<Math, bool>(order);
    const bool vectors = want_u || want_v;
    u_ld = filled_rows<T>(m);
    v_ld = filled_rows<T>(n);
    u = want_u ? scratch<Math, T>(u_ld * order) : nullptr;
    v = want_v ? scratch<Math, T>(v_ld * order) : nullptr;
    coefficients = vectors ? scratch<Math, Real>(RotationBatch<T>::words(order)) : nullptr;
    return se != nullptr && blocks != nullptr && heads != nullptr && values != nullptr && sums != nullptr && column != nullptr &&
           turned != nullptr && (!want_u || u != nullptr) && (!want_v || v != nullptr) && (!vectors || coefficients != nullptr);
  }
};

// The largest sum of moduli of a row; a not-a-number stays. sums: m elements of work memory.
template <class T>
RealOf<T> largest_row_sum(long m, long n, const T* a, RealOf<T>* sums) {
  std::fill(sums, sums + m, RealOf<T>(0));
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < m; ++i) sums[i] += modulus(a[i + j * m]);
  }
  RealOf<T> largest = 0;
  for (long i = 0; i < m; ++i) {
    if (!(sums[i] <= largest)) largest = sums[i];
  }
  return largest;
}

// Sums and products of extreme elements would overflow or lose digits: such a matrix is scaled by a power of two, which changes
// nothing else. Returns the exponent by which the values are to be scaled back.
template <class T>
int scale_extremes(long m, long n, T* a) {
  using Real = RealOf<T>;
  constexpr int limit = std::numeric_limits<Real>::max_exponent * 3 / 4;
  Real largest = 0;
  for (long k = 0; k < m * n; ++k) largest = std::max(largest, kernel::abs1(a[k]));
  if constexpr (kernel::ComplexRecord<T>) {  // the sum of the parts may overflow where they do not
    if (std::isinf(largest)) largest = Machine<Real>::largest;
  }
  if (largest == 0 || !std::isfinite(largest)) return 0;
  const int exponent = std::ilogb(largest);
  if (std::abs(exponent) < limit) return 0;
  for (long k = 0; k < m * n; ++k) {
    if constexpr (kernel::ComplexRecord<T>) {
      a[k] = {std::scalbn(a[k].re, -exponent), std::scalbn(a[k].im, -exponent)};
    } else {
      a[k] = std::scalbn(a[k], -exponent);
    }
  }
  return exponent;
}

// Phases move from the bidiagonal to the vectors.
template <class T>
void make_real(long m, long n, long order, T* s, T* e, const Workspace<T>& w) {
  for (long k = 0; k < order; ++k) {
    const auto size = modulus(s[k]);
    if (size != 0) {
      const T phase = phase_of(s[k]);
      s[k] = {size, 0};
      if (k + 1 < order) e[k] = e[k] * kernel::conj(phase);
      if (w.u != nullptr) fast::scal(m, phase, w.u + k * w.u_ld, 1);
    }
    if (k + 1 == order) return;
    const auto off = modulus(e[k]);
    if (off == 0) continue;
    const T phase = kernel::conj(phase_of(e[k]));
    e[k] = {off, 0};
    s[k + 1] = s[k + 1] * phase;
    if (w.v != nullptr) fast::scal(n, phase, w.v + (k + 1) * w.v_ld, 1);
  }
}

// Values and vectors of the matrix in w.a, in descending order through w.column. False when a value does not converge.
template <class T>
bool l_l3vrr(long m, long n, RealOf<T> anorm, Workspace<T>& w) {
  using Real = RealOf<T>;
  const long order = std::min(m + 1, n);
  Real* const s = w.values;
  Real* const e = w.values + order;
  const Bidiagonal<T> form = {.m = m,
                              .n = n,
                              .a = w.a,
                              .p = w.p,
                              .head_v = w.heads,
                              .head_u = w.heads + order,
                              .s = w.se,
                              .e = w.se + order,
                              .work = w.blocks};
  form.reduce();
  if (w.u != nullptr) {
    accumulate_reflectors(m, form.column_count(), 0, w.a, m, form.head_v, Real(0), w.u, w.u_ld, order, w.blocks);
    for (long k = 0; k < order; ++k) std::fill(w.u + k * w.u_ld + m, w.u + (k + 1) * w.u_ld, T{});
  }
  if (w.v != nullptr) {
    accumulate_reflectors(n, form.row_count(), 1, w.p, n, form.head_u, Real(0), w.v, w.v_ld, order, w.blocks);
    for (long k = 0; k < order; ++k) std::fill(w.v + k * w.v_ld + n, w.v + (k + 1) * w.v_ld, T{});
  }
  if constexpr (kernel::ComplexRecord<T>) make_real(m, n, order, form.s, form.e, w);
  bool finite = true;
  for (long k = 0; k < order; ++k) {
    s[k] = kernel::real(form.s[k]);
    e[k] = kernel::real(form.e[k]);
    finite = finite && std::isfinite(s[k]) && std::isfinite(e[k]);
  }
  RotationBatch<T> batch = {.u_ld = w.u_ld, .v_ld = w.v_ld, .u = w.u, .v = w.v, .coefficients = w.coefficients, .order = order};
  const SingularValues<T> values = {
      .order = order, .s = s, .e = e, .anorm = anorm, .batch = &batch, .column = w.column, .turned = w.turned};
  const long left = finite ? values.find() : order;
  if (left != 0) raise<Math>(4, MATH_SLOWCONVERGENT_MATRIX, {.i = {left + 1, std::min(m, n)}});
  return left == 0;
}

// to (rows by count, row-major) receives the columns column[k] of x, some of them negated.
template <class T>
void deliver(long rows, long count, const T* x, long ldx, const long* column, const bool* turned, T* to, long col_dim) {
  constexpr long tile = 16;
  for (long i0 = 0; i0 < rows; i0 += tile) {
    const long i1 = std::min(i0 + tile, rows);
    for (long k0 = 0; k0 < count; k0 += tile) {
      const long k1 = std::min(k0 + tile, count);
      for (long k = k0; k < k1; ++k) {
        const T* const from = x + column[k] * ldx;
        const RealOf<T> sign = turned != nullptr && turned[k] ? -1 : 1;
        for (long i = i0; i < i1; ++i) to[i * col_dim + k] = sign * from[i];
      }
    }
  }
}

// Row-major inverse = column-major conj(U) S^-1 V^T, over the arrays of the decomposition, which are free by now.
template <class T>
void deliver_inverse(const Decomposition<T>& p, const Workspace<T>& w, long rank) {
  const long m = p.m, n = p.n;
  T* const left = w.a;   // m by rank
  T* const right = w.p;  // n by rank
  for (long k = 0; k < rank; ++k) {
    const T* const u = w.u + w.column[k] * w.u_ld;
    const T* const v = w.v + w.column[k] * w.v_ld;
    for (long i = 0; i < m; ++i) left[i + k * m] = kernel::conj(u[i]);
    std::copy(v, v + n, right + k * n);
    scale_vector(n, w.turned[k] ? -w.values[k] : w.values[k], right + k * n);
  }
  const T one = kernel::from_real<T>(1);
  fast::gemm('N', 'T', m, n, rank, one, left, m, right, n, T{}, p.inverse.storage, p.inverse.col_dim);
}

template <class T>
RealOf<T>* l_lin_svd_gen(long m, long n, const T* a, Options& options) {
  using Real = RealOf<T>;
  const long least = std::min(m, n);
  Decomposition<T> p = {
      .m = m, .n = n, .a = a, .a_col_dim = n, .u = {.col_dim = least}, .v = {.col_dim = least}, .inverse = {.col_dim = m}};
  if (!parse(p, options) || !acceptable(p)) return nullptr;
  const long job = svd_job(p.u.wanted || p.inverse.wanted, p.v.wanted || p.inverse.wanted);
  Workspace<T> w;
  Real* const s = p.s != nullptr ? p.s : result<Math, Real>(least);
  if (s == nullptr || !p.u.obtain(m, least) || !p.v.obtain(n, least) || !w.obtain(m, n, job)) {
    raise<Math>(5, MATH_OUT_OF_MEMORY_2, {.i = {m, n}, .l = {"nra", "nca"}});
    return nullptr;
  }
  if (!p.inverse.obtain(n, m)) {
    raise<Math>(5, MATH_NO_SPACE_FOR_INVERSE, {.i = {n, p.inverse.col_dim}, .l = {"nca", "gen_inva_col_dim"}});
    return nullptr;
  }
  if (!acceptable_svd<Math>(m, n, m, w.u_ld, w.v_ld, job)) return nullptr;
  turn(n, m, a, p.a_col_dim, w.a, m);
  const int exponent = scale_extremes(m, n, w.a);
  const Real anorm = largest_row_sum(m, n, w.a, w.sums);
  if (!l_l3vrr(m, n, anorm, w)) return nullptr;
  long rank = 0;
  if (p.tol < 0) {
    while (rank < least && !(w.values[rank] <= -p.tol * anorm)) ++rank;
  }
  for (long k = 0; exponent != 0 && k < least; ++k) w.values[k] = std::scalbn(w.values[k], exponent);
  if (!(p.tol < 0)) {
    while (rank < least && !(w.values[rank] <= p.tol)) ++rank;
  }
  if (p.u.wanted) deliver<T>(m, least, w.u, w.u_ld, w.column, nullptr, p.u.storage, p.u.col_dim);
  if (p.v.wanted) deliver<T>(n, least, w.v, w.v_ld, w.column, w.turned, p.v.storage, p.v.col_dim);
  if (p.inverse.wanted) deliver_inverse(p, w, rank);
  std::copy(w.values, w.values + least, s);
  if (p.rank != nullptr) *p.rank = rank;
  p.u.hand_over();
  p.v.hand_over();
  p.inverse.hand_over();
  if (p.s == nullptr) keep<Math>(s);
  return s;
}

}  // namespace

}  // namespace zent::linalg

#define ZENT_FORM(P, T, Real)                                                                                                    \
  extern "C" Real* zent_##P##_lin_svd_gen(long m, long n, T* a, ...) {                                                           \
    ZENT_OPTIONS(options, a, 3);                                                                                                 \
    Real* s =                                                                                                                    \
        zent::public_call<zent::Math>("zent_" #P "_lin_svd_gen", [&] { return zent::linalg::l_lin_svd_gen(m, n, a, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                   \
    return s;                                                                                                                    \
  }
ZENT_FORM(f, float, float)
ZENT_FORM(d, double, double)
ZENT_FORM(c, zent_f_complex, float)
ZENT_FORM(z, zent_d_complex, double)
#undef ZENT_FORM
