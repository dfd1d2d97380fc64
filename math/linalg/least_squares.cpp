// Linear least squares by QR with column pivoting: options, checks, and the order of the work.
#include "zent/least_squares.h"

#include <algorithm>
#include <cmath>

#include "math/linalg/dense.hpp"
#include "math/linalg/qr.hpp"
#include "math/linalg/qr_reflectors.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent/option_codes.h"

namespace zent::linalg {

namespace {

template <class Real>
struct LeastSquares {
  long m, n;
  Real *a, *b;
  long a_col_dim, fac_col_dim, q_col_dim;
  bool factor_only = false, solve_only = false, factor_user = false;
  Real** qraux_out = nullptr;
  Real** qr_out = nullptr;
  Real* qraux = nullptr;
  Real* qr = nullptr;
  Real tol = std::sqrt(Machine<Real>::epsilon);
  long* kbasis = nullptr;
  long* pvt = nullptr;
  Real** residual_out = nullptr;
  Real* residual = nullptr;
  Real** q_out = nullptr;
  Real* q = nullptr;
  Real* x = nullptr;

  bool wants_q() const {
    return q_out != nullptr || q != nullptr;
  }
};

template <class T>
T* required_storage(Options& options, const char* argument, const char* option, long number = MATH_OPTIONAL_ARG_NULL_1) {
  T* const storage = options.pointer<T>();
  if (storage == nullptr) raise<Math>(5, number, {.l = {argument, option}});
  return storage;
}

// False when the walk met a code that no option has.
template <class Real>
bool parse(LeastSquares<Real>& p, Options& options) {
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_A_COL_DIM:
        p.a_col_dim = options.integer();
        break;
      case ZENT_FACTOR:
        p.qraux_out = options.pointer<Real*>();
        p.qr_out = options.pointer<Real*>();
        p.qraux = p.qr = nullptr;
        p.factor_user = false;
        break;
      case ZENT_FAC_COL_DIM:
        p.fac_col_dim = options.integer();
        break;
      case ZENT_FACTOR_ONLY:
        p.factor_only = true;
        break;
      case ZENT_SOLVE_ONLY:
        p.solve_only = true;
        break;
      case ZENT_FACTOR_USER:
        p.qraux = required_storage<Real>(options, "qraux", "ZENT_FACTOR_USER");
        p.qr = required_storage<Real>(options, "qr", "ZENT_FACTOR_USER");
        p.factor_user = true;
        p.qraux_out = p.qr_out = nullptr;
        break;
      case ZENT_BASIS:
        p.tol = options.real<Real>();
        p.kbasis = options.pointer<long>();
        break;
      case ZENT_BASIS_ADR:
        p.tol = *options.pointer<Real>();
        p.kbasis = options.pointer<long>();
        break;
      case ZENT_PIVOT:
        p.pvt = required_storage<long>(options, "ipvt", "ZENT_PIVOT");
        break;
      case ZENT_RESIDUAL:
        p.residual_out = options.pointer<Real*>();
        p.residual = nullptr;
        break;
      case ZENT_RESIDUAL_USER:
        p.residual = required_storage<Real>(options, "res", "ZENT_RESIDUAL_USER");
        p.residual_out = nullptr;
        break;
      case ZENT_Q:
        p.q_out = options.pointer<Real*>();
        p.q = nullptr;
        break;
      case ZENT_Q_USER:
        p.q = required_storage<Real>(options, "q", "ZENT_Q_USER", MATH_OPTIONAL_ARG_NULL_2);
        p.q_out = nullptr;
        break;
      case ZENT_Q_COL_DIM:
        p.q_col_dim = options.integer();
        break;
      case ZENT_RETURN_USER:
        p.x = required_storage<Real>(options, "x", "ZENT_RETURN_USER");
        break;
      default:
        raise<Math>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
        return false;
    }
  }
  return true;
}

template <class Real>
bool acceptable(LeastSquares<Real>& p) {
  if (p.a == nullptr && !p.solve_only) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (p.b == nullptr && !p.factor_only) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"b"}});
  if (p.m <= 0 || p.n <= 0) raise<Math>(5, MATH_NEED_NRA_AND_NCA_GT_ZERO, {.i = {p.m, p.n}});
  if (p.n > p.a_col_dim) raise<Math>(5, MATH_NEED_COL_A_LT_DIM, {.i = {p.n, p.a_col_dim}});
  if (p.fac_col_dim < p.n) raise<Math>(5, MATH_NEED_QT_GT_NUM_COL, {.i = {p.n, p.fac_col_dim}});
  if (p.q_col_dim < p.m) raise<Math>(5, MATH_NEED_Q_GT_NUM_COL, {.i = {p.m, p.q_col_dim}});
  if (p.factor_only && p.solve_only) raise<Math>(5, MATH_BAD_SOLVE_FACTOR);
  if (failed<Math>()) return false;
  if (p.factor_only && p.qr_out == nullptr && !p.factor_user) raise<Math>(5, MATH_SPECIFY_FACTOR_ONLY);
  if (p.solve_only && p.kbasis == nullptr) raise<Math>(5, MATH_BASIS_SOLVE_ONLY);
  if (p.solve_only && !p.factor_user) raise<Math>(5, MATH_SPECIFY_SOLVE_ONLY);
  if (failed<Math>()) return false;
  if (p.factor_user && p.qr == p.a) p.fac_col_dim = std::max(p.fac_col_dim, p.a_col_dim);
  return true;
}

// The arrays of one call: column-major work, and what the caller receives.
template <class Real>
struct Arrays {
  Real* qr = nullptr;  // column-major, leading dimension m
  Real* qraux = nullptr;
  Real* x = nullptr;
  Real* residual = nullptr;
  long* pvt = nullptr;
  long kbasis = 0;
};

template <class T>
bool obtained(const T* array) {
  if (array == nullptr) raise<Math>(5, MATH_OUT_OF_MEMORY);
  return array != nullptr;
}

template <class Real>
bool obtain_solution(const LeastSquares<Real>& p, Arrays<Real>& w) {
  w.x = p.x != nullptr ? p.x : result<Math, Real>(p.n);
  if (!obtained(w.x)) return false;
  if (p.residual != nullptr) {
    w.residual = p.residual;
  } else {
    w.residual = p.residual_out != nullptr ? result<Math, Real>(p.m) : scratch<Math, Real>(p.m);
  }
  return obtained(w.residual);
}

// Whether the norm of a vector is beyond the numbers, or so near that sums with it could be, while its elements are not.
template <class Real>
bool too_long(long n, const Real* x) {
  if (fast::nrm2(n, x, 1) < Machine<Real>::largest / 8) return false;
  return std::all_of(x, x + n, [](Real element) { return std::isfinite(element); });
}

template <class Real>
bool has_long_column(long m, long n, const Real* a) {
  if (fast::nrm2(m * n, a, 1) < Machine<Real>::largest / 8) return false;
  for (long j = 0; j < n; ++j) {
    if (too_long(m, a + j * m)) return true;
  }
  return false;
}

// The scaling of vectors of m elements that are too long, as an exponent.
int room_for(long m) {
  return 4 + std::ilogb(static_cast<double>(m)) / 2;
}

template <class Real>
void scale(int exponent, long n, Real* x) {
  for (long k = 0; k < n && exponent != 0; ++k) x[k] = std::scalbn(x[k], exponent);
}

// On the columns of the basis of an earlier factor. x stays in the order of the factor but for the exchanges.
template <class Real>
bool solve_with_factor(const LeastSquares<Real>& p, Arrays<Real>& w) {
  const long given = *p.kbasis, kbasis = std::min({given, p.m, p.n});
  const bool with_residual = p.residual != nullptr || p.residual_out != nullptr;
  if (!obtain_solution(p, w)) return false;
  const long columns = p.wants_q() ? p.n : std::max(kbasis, 1L);
  w.qr = scratch<Math, Real>(area(p.m, columns));
  Real* const qty = scratch<Math, Real>(p.m);
  Real* const x = scratch_zero<Math, Real>(p.n);
  if (!obtained(w.qr) || !obtained(qty) || !obtained(x)) return false;
  turn(columns, p.m, p.qr, p.fac_col_dim, w.qr, p.m);
  w.qraux = p.qraux;
  std::copy(p.b, p.b + p.m, qty);
  const int shift = too_long(p.m, qty) ? room_for(p.m) : 0;
  scale(-shift, p.m, qty);
  lqrsl<Math, Real>(p.m, kbasis, w.qr, p.m, w.qraux, qty, nullptr, qty, x, qty, nullptr, with_residual ? 110 : 100);
  if (fatal_stands<Math>()) return false;
  scale(shift, p.n, x);
  for (long i = 0; p.pvt != nullptr && i < kbasis - 1; ++i) {
    if (p.pvt[i] >= 1 && p.pvt[i] <= kbasis) std::swap(x[i], x[p.pvt[i] - 1]);
  }
  std::copy(x, x + p.n, w.x);
  if (with_residual) {
    scale(shift, p.m, qty);
    std::copy(qty, qty + p.m, w.residual);
  }
  return true;
}

// Along every (n + 1)-th element of the column-major factor, which is its diagonal when m = n.
template <class Real>
long count_factored(long m, long n, const Real* qr, Real tol) {
  const Real threshold = std::abs(qr[0]) * tol;
  long count = 0;
  for (long at = 0; count < std::min(m, n) && at < m * n && !(std::abs(qr[at]) <= threshold); at += n + 1) ++count;
  return count;
}

// Columns that are too long for the arithmetic are factored with the whole matrix scaled down by a power of two, and such a
// right-hand side likewise, by a small one that costs the other elements nothing. work: 3n elements.
template <class Real>
void factor_scaled(const LeastSquares<Real>& p, Arrays<Real>& w, Real* work) {
  const long m = p.m, n = p.n;
  const int room = room_for(m), shift = has_long_column(m, n, w.qr) ? room : 0;
  scale(-shift, m * n, w.qr);
  if (p.factor_only) {
    l2rrr<Math>(m, n, w.qr, m, true, w.pvt, w.qr, m, w.qraux, work + (2 * n - 1), work);
    if (p.kbasis != nullptr) w.kbasis = count_factored(m, n, w.qr, p.tol);
  } else {
    const int right_shift = too_long(m, w.residual) ? room : 0;
    scale(-right_shift, m, w.residual);
    l2qrr<Math>(m, n, w.qr, m, w.residual, p.tol, w.x, w.residual, &w.kbasis, w.qr, w.qraux, w.pvt, work);
    scale(right_shift - shift, n, w.x);
    scale(right_shift, m, w.residual);
  }
  for (long k = 0; k < n; ++k) scale(shift, std::min(k + 1, m), w.qr + k * m);
  if (n > m) scale(shift, n - m, w.qraux + m);  // norms, not heads
}

template <class Real>
bool factor_and_solve(const LeastSquares<Real>& p, Arrays<Real>& w) {
  const long m = p.m, n = p.n;
  w.qr = scratch<Math, Real>(area(m, n));
  w.qraux = p.factor_user ? p.qraux : p.qr_out != nullptr ? result<Math, Real>(n) : scratch<Math, Real>(n);
  w.pvt = p.pvt != nullptr ? p.pvt : scratch_zero<Math, long>(n);
  Real* const work = scratch<Math, Real>(area(3, n));
  if (!obtained(w.qr) || !obtained(w.qraux) || !obtained(w.pvt) || !obtained(work)) return false;
  if (!p.factor_only && !obtain_solution(p, w)) return false;
  turn(n, m, p.a, p.a_col_dim, w.qr, m);
  if (!p.factor_only && w.residual != p.b) std::copy(p.b, p.b + m, w.residual);
  factor_scaled(p, w, work);
  return error_state<Math>.type_word[0] <= 3;
}

template <class Real>
bool deliver_q(const LeastSquares<Real>& p, const Arrays<Real>& w, Real*& q) {
  const long m = p.m;
  Real* const columns = scratch<Math, Real>(area(m, m));
  q = p.q != nullptr ? p.q : result<Math, Real>(area(m, p.q_col_dim));
  if (columns == nullptr || q == nullptr || !l_l2err<Math>(m, p.n, w.qr, m, w.qraux, columns, m)) {
    raise<Math>(5, MATH_OUT_OF_MEMORY_FOR_Q);
    return false;
  }
  turn(m, m, columns, m, q, p.q_col_dim);
  clear_columns(m, m, q, p.q_col_dim);
  return true;
}

template <class Real>
Real* l_lin_least_squares_gen(long m, long n, Real* a, Real* b, Options& options) {
  LeastSquares<Real> p = {.m = m, .n = n, .a = a, .b = b, .a_col_dim = n, .fac_col_dim = n, .q_col_dim = m};
  if (!parse(p, options) || !acceptable(p)) return nullptr;
  if (p.residual_out != nullptr) *p.residual_out = nullptr;  // for the ways on which there is none
  Arrays<Real> w;
  if (!(p.solve_only ? solve_with_factor(p, w) : factor_and_solve(p, w))) return nullptr;
  Real* qr = nullptr;
  if (p.qr_out != nullptr && !p.solve_only) {
    qr = result<Math, Real>(area(m, p.fac_col_dim));
    if (!obtained(qr)) return nullptr;
    clear_columns(m, n, qr, p.fac_col_dim);
  } else if (p.factor_user && !p.solve_only) {
    qr = p.qr;
  }
  Real* q = nullptr;
  if (p.wants_q() && !deliver_q(p, w, q)) return nullptr;
  if (qr != nullptr) turn(m, n, w.qr, m, qr, p.fac_col_dim);
  if (p.kbasis != nullptr && !p.solve_only) *p.kbasis = w.kbasis;
  if (p.qr_out != nullptr && !p.solve_only) {
    *p.qr_out = qr;
    *p.qraux_out = w.qraux;
    keep<Math>(qr);
    keep<Math>(w.qraux);
  }
  if (p.q_out != nullptr) {
    *p.q_out = q;
    keep<Math>(q);
  }
  if (p.factor_only) return nullptr;
  if (p.residual_out != nullptr) {
    *p.residual_out = w.residual;
    keep<Math>(w.residual);
  }
  if (p.x == nullptr) keep<Math>(w.x);
  return w.x;
}

}  // namespace

}  // namespace zent::linalg

#define ZENT_FORM(P, Real)                                                                                               \
  extern "C" Real* zent_##P##_lin_least_squares_gen(long m, long n, Real* a, Real* b, ...) {                             \
    ZENT_OPTIONS(options, b, 4);                                                                                         \
    Real* x = zent::public_call<zent::Math>("zent_" #P "_lin_least_squares_gen",                                         \
                                            [&] { return zent::linalg::l_lin_least_squares_gen(m, n, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                           \
    return x;                                                                                                            \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
