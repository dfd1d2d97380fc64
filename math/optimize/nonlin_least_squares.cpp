// Nonlinear least squares: options, checks, reports, and what is told about the solution.
#include "math/optimize/common_options.hpp"
#include "math/optimize/covariance.hpp"
#include "math/optimize/reports.hpp"
#include "math/optimize/sum_of_squares.hpp"
#include "runtime/envelope.hpp"
#include "runtime/kernels/rotation.hpp"
#include "zent/optimize.h"

namespace zent::optimize {

namespace {

// A further result: library storage handed over through `out`, or the storage of the caller, n or m rows of `dim`.
template <class Real>
struct Output {
  Real** out = nullptr;
  Real* user = nullptr;
  long dim = 0;
  Real* to = nullptr;

  void library(Options& options) {
    out = options.pointer<Real*>();
    user = nullptr;
  }
  void of_caller(Options& options, const char* argument, const char* option) {
    user = storage<Real>(options, argument, option);
    out = nullptr;
  }
  bool wanted() const {
    return out != nullptr || user != nullptr;
  }
  bool obtain(long rows) {
    if (!wanted()) return true;
    long area = 0;
    to = user;
    if (user == nullptr && !__builtin_mul_overflow(rows, dim, &area)) to = result<Math, Real>(area);
    return to != nullptr;
  }
  // element(i, j) for rows by columns, 0 behind them in library storage.
  template <class Element>
  void fill(long rows, long columns, Element element) const {
    if (to == nullptr) return;
    for (long i = 0; i < rows; ++i) {
      for (long j = 0; j < columns; ++j) to[i * dim + j] = element(i, j);
      if (out != nullptr) std::fill(to + i * dim + columns, to + (i + 1) * dim, Real(0));
    }
  }
  void hand_over() const {
    if (out == nullptr) return;
    *out = to;
    keep<Math>(to);
  }
};

template <class Real>
struct LeastSquaresOptions {
  Common<Real> common;
  Residuals<Math, Real> fcn, jacobian;
  Real tolerance = std::sqrt(Machine<Real>::epsilon);
  long* rank = nullptr;
  Output<Real> fvec, fjac, covariance, r_factor;
};

template <class Real>
bool parse_output(LeastSquaresOptions<Real>& p, int code, Options& options) {
  switch (code) {
    case ZENT_FVEC:
      p.fvec.library(options);
      return true;
    case ZENT_FVEC_USER:
      p.fvec.of_caller(options, "fvec", "ZENT_FVEC_USER");
      return true;
    case ZENT_FJAC:
      p.fjac.library(options);
      return true;
    case ZENT_FJAC_USER:
      p.fjac.of_caller(options, "fjac", "ZENT_FJAC_USER");
      return true;
    case ZENT_FJAC_COL_DIM:
      p.fjac.dim = options.integer();
      return true;
    case ZENT_JACOBIAN_RANK:
      p.rank = options.pointer<long>();
      return true;
    case ZENT_COVARIANCE:
      p.covariance.library(options);
      return true;
    case ZENT_COVARIANCE_USER:
      p.covariance.of_caller(options, "covariance", "ZENT_COVARIANCE_USER");
      return true;
    case ZENT_COVARIANCE_COL_DIM:
      p.covariance.dim = options.integer();
      return true;
    case ZENT_R_FACTOR:
      p.r_factor.library(options);
      return true;
    case ZENT_R_FACTOR_USER:
      p.r_factor.of_caller(options, "r", "ZENT_R_FACTOR_USER");
      return true;
    case ZENT_R_FACTOR_COL_DIM:
      p.r_factor.dim = options.integer();
      return true;
    default:
      return false;
  }
}

template <class Real>
void parse(LeastSquaresOptions<Real>& p, Options& options) {
  using Function = void (*)(long, long, Real*, Real*);
  using FunctionWithData = void (*)(long, long, Real*, Real*, void*);
  Record<Real>& record = p.common.record;
  while (const int code = options.code()) {
    if (p.common.take(code, options) || parse_output(p, code, options)) continue;
    switch (code) {
      case ZENT_ABS_FCN_TOL:
        record.abs_fcn_tol = options.real<Real>();
        break;
      case ZENT_ABS_FCN_TOL_ADR:
        record.abs_fcn_tol = *options.pointer<Real>();
        break;
      case ZENT_TRUST_REGION:
        record.trust = options.real<Real>();
        break;
      case ZENT_TRUST_REGION_ADR:
        record.trust = *options.pointer<Real>();
        break;
      case ZENT_TOLERANCE:
        p.tolerance = options.real<Real>();
        break;
      case ZENT_TOLERANCE_ADR:
        p.tolerance = *options.pointer<Real>();
        break;
      case ZENT_MAX_JACOBIAN:
        record.max_grad = options.integer();
        break;
      case ZENT_INTERN_SCALE:
        record.intern_scale = true;
        break;
      case ZENT_JACOBIAN:
        p.jacobian.plain = options.function<Function>();
        break;
      case ZENT_JACOBIAN_W_DATA:
        p.jacobian.with_data = options.function<FunctionWithData>();
        p.jacobian.data = options.pointer<void>();
        break;
      case ZENT_FCN_W_DATA:
        p.fcn.with_data = options.function<FunctionWithData>();
        p.fcn.data = options.pointer<void>();
        break;
      default:
        if (!options.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
void check(const LeastSquaresOptions<Real>& p, long m, long n) {
  if (!p.fcn.given()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (m < 1) raise<Math>(5, MATH_NEED_POSITIVE_NUM_FCNS, {.i = {m}});
  if (n < 1) raise<Math>(5, MATH_N_MUST_BE_POSITIVE, {.i = {n}});
  if (m >= 1 && n >= 1 && m < n) raise<Math>(5, MATH_TOO_MANY_VARIABLES, {.i = {m, n}});
  const auto columns = [n](const Output<Real>& output, const char* name) {
    if (output.wanted() && output.dim < n) raise<Math>(5, MATH_COLUMN_DIM_ERROR, {.i = {output.dim, n}, .l = {name, "n"}});
  };
  columns(p.fjac, "fjac");
  columns(p.covariance, "covariance");
  columns(p.r_factor, "r");
}

// R^T R = J^T J in the order of the variables: the pivoted factor with its columns put back, made triangular again.
template <class Real>
void fold_pivots(const TrustStep<Math, Real>& step, Real* folded) {
  const long n = step.n;
  std::fill(folded, folded + n * n, Real(0));
  for (long i = 0; i < n; ++i) {
    for (long k = i; k < n; ++k) folded[i * n + step.pvt[k]] = step.r[i * n + k];
  }
  for (long j = 0; j < n; ++j) {
    for (long i = n - 1; i > j; --i) {
      Real* const upper = folded + (i - 1) * n;
      Real* const lower = upper + n;
      if (lower[j] == 0) continue;
      Real a = upper[j], b = lower[j], c, s;
      kernel::rotg(&a, &b, &c, &s);
      kernel::rot(n - j, upper + j, 1, lower + j, 1, c, s);
      lower[j] = 0;
    }
  }
}

template <class Real>
void report_solution(LeastSquaresOptions<Real>& p, SumOfSquares<Math, Real>& solver) {
  const long m = solver.m, n = solver.n;
  TrustStep<Math, Real>& step = solver.step;
  p.fvec.fill(1, m, [&](long, long i) { return solver.fvec[i]; });
  p.fjac.fill(m, n, [&](long i, long j) { return solver.fjac[i + j * m]; });
  if (p.rank == nullptr && !p.covariance.wanted() && !p.r_factor.wanted()) return;
  step.factor(solver.fjac, m);
  const Real threshold = p.tolerance * std::abs(step.r[0]);
  long rank = 0;
  while (rank < n && std::abs(step.r[rank * n + rank]) > threshold) ++rank;
  if (p.rank != nullptr) *p.rank = rank;
  Real* const work = step.s;
  if (p.covariance.wanted()) {
    for (long i = 0; i < rank; ++i) {
      for (long j = i; j < rank; ++j) work[i + j * rank] = step.r[i * n + j];
    }
    rcovb(rank, work, rank, 2 * solver.f2 / static_cast<Real>(std::max(m - rank, 1L)), work, rank);
    p.covariance.fill(n, n, [](long, long) { return Real(0); });
    for (long i = 0; i < rank; ++i) {
      for (long j = 0; j < rank; ++j) p.covariance.to[step.pvt[i] * p.covariance.dim + step.pvt[j]] = work[i + j * rank];
    }
  }
  if (p.r_factor.wanted()) {
    fold_pivots(step, work);
    p.r_factor.fill(n, n, [&](long i, long j) { return work[i * n + j]; });
  }
}

template <class Real>
Real* l_nonlin_least_squares(LeastSquaresOptions<Real> p, long m, long n, Options& options) {
  p.fjac.dim = p.covariance.dim = p.r_factor.dim = n;
  p.fvec.dim = m;
  parse(p, options);
  check(p, m, n);
  if (failed<Math>()) return nullptr;
  Record<Real>& record = p.common.record;
  Real* const xscale = p.common.scales(n);
  Real* const x = xscale == nullptr ? nullptr : p.common.result_storage(n);
  SumOfSquares<Math, Real> solver = {
      .residuals = p.fcn, .jacobian = p.jacobian, .record = &record, .m = m, .n = n, .xscale = xscale};
  if (x == nullptr || !solver.obtain() || !p.fvec.obtain(1) || !p.fjac.obtain(m) || !p.covariance.obtain(n) ||
      !p.r_factor.obtain(n)) {
    raise_out_of_memory<Math>({m, n}, {"m", "n"});
    return nullptr;
  }
  repair_record<Math>(n, xscale, record);
  p.common.start(n, solver.x);
  const long ended = solver.minimize();
  if (stands_above<Math>(3) || !l_u18nf<Math>(ended, record)) return nullptr;
  std::copy(solver.x, solver.x + n, x);
  report_solution(p, solver);
  for (const Output<Real>& output : {p.fvec, p.fjac, p.covariance, p.r_factor}) output.hand_over();
  keep<Math>(x);
  return x;
}

}  // namespace

}  // namespace zent::optimize

#define ZENT_FORM(P, Real)                                                                                       \
  extern "C" Real* zent_##P##_nonlin_least_squares(void (*fcn)(long, long, Real*, Real*), long m, long n, ...) { \
    ZENT_OPTIONS(options, n, 3);                                                                                 \
    Real* x = zent::public_call<zent::Math>("zent_" #P "_nonlin_least_squares", [&] {                            \
      zent::optimize::LeastSquaresOptions<Real> p;                                                               \
      p.fcn.plain = fcn;                                                                                         \
      return zent::optimize::l_nonlin_least_squares<Real>(p, m, n, options);                                     \
    });                                                                                                          \
    ZENT_OPTIONS_END(options);                                                                                   \
    return x;                                                                                                    \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
