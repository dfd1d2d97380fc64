// Gauss rules for the classical weights, with fixed points.
#include "math/quadrature/gauss.hpp"

#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::gauss {

namespace {

template <class Real>
struct Request {
  int weight = legendre;
  Real alpha = 0, beta = 0;
  long count = 0;
  Real fixed[2] = {};
};

template <class Real>
void read_options(Options& options, Request<Real>& q) {
  const auto parameters = [&](int weight, Real alpha, Real beta) {
    q.weight = weight;
    q.alpha = alpha;
    q.beta = beta;
  };
  const auto fix = [&](long count, Real first, Real second) {
    q.count = count;
    q.fixed[0] = first;
    q.fixed[1] = second;
  };
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_CHEBYSHEV_FIRST:
        parameters(chebyshev_first, 0, 0);
        break;
      case ZENT_CHEBYSHEV_SECOND:
        parameters(chebyshev_second, 0, 0);
        break;
      case ZENT_HERMITE:
        parameters(hermite, 0, 0);
        break;
      case ZENT_JACOBI_WEIGHT: {
        const Real alpha = options.real<Real>();
        parameters(jacobi, alpha, options.real<Real>());
        break;
      }
      case ZENT_JACOBI_ADR: {
        const Real* both = options.pointer<Real>();
        parameters(jacobi, both[0], both[1]);
        break;
      }
      case ZENT_GEN_LAGUERRE:
        parameters(laguerre, options.real<Real>(), 0);
        break;
      case ZENT_GEN_LAGUERRE_ADR:
        parameters(laguerre, *options.pointer<Real>(), 0);
        break;
      case ZENT_COSH:
        options.real<Real>();
        parameters(cosh, 0, 0);
        break;
      case ZENT_FIXED_POINT:
        fix(1, options.real<Real>(), 0);
        break;
      case ZENT_FIXED_POINT_ADR:
        fix(1, *options.pointer<Real>(), 0);
        break;
      case ZENT_TWO_FIXED_POINTS: {
        const Real first = options.real<Real>();
        fix(2, first, options.real<Real>());
        break;
      }
      case ZENT_TWO_FIXED_POINTS_ADR: {
        const Real first = *options.pointer<Real>();
        fix(2, first, *options.pointer<Real>());
        break;
      }
      default:
        if (!options.unknown<Math>(code)) return;
    }
  }
}

void check_parameter(double value, const char* name) {
  if (!(value > -1 && std::isfinite(value))) raise<Math>(5, MATH_WEIGHT_FCN_PARAMETER, {.r = {value}, .l = {name}});
}

// Where the fixed points may lie. Checks that need a valid earlier value are left out.
template <class Real>
void check_fixed(const Family& f, long count, const Real* fixed) {
  if (count == 0) return;
  if (f.on_line()) {
    raise<Math>(5, MATH_NO_FIXED_POINTS_ALLOWED);
    return;
  }
  if (count == 2 && f.weight == laguerre) {
    raise<Math>(5, MATH_NFIX_CANNOT_EQUAL_TWO);
    return;
  }
  double x[2] = {};
  bool inside[2] = {};
  for (long i = 0; i < count; ++i) {
    x[i] = static_cast<double>(fixed[i]);
    if (!std::isfinite(x[i])) {
      raise<Math>(5, MATH_BAD_FIXED_POINT_VALUE);
      return;
    }
    inside[i] = x[i] > f.left() && x[i] < f.right();
  }
  if (count == 1) {
    if (inside[0]) raise<Math>(5, MATH_FIXED_POINT_LOCATION, {.r = {x[0]}});
    return;
  }
  if (inside[0]) raise<Math>(5, MATH_A_MUST_BE_OUTSIDE_INTERVAL, {.r = {x[0]}});
  if (inside[1]) raise<Math>(5, MATH_B_MUST_BE_OUTSIDE_INTERVAL, {.r = {x[1]}});
  if (!inside[0] && !inside[1] && (x[0] <= f.left()) == (x[1] <= f.left())) {
    raise<Math>(5, MATH_A_AND_B_ON_OPPOSITE_SIDES, {.r = {x[0], x[1]}});
  }
}

template <class Real>
void l_g2rul(long n, int iweight, Real alpha, Real beta, long nfix, const Real* fixed, Real* points, Real* weights) {
  const Family f = {iweight, static_cast<double>(alpha), static_cast<double>(beta)};
  if (n < 1) raise<Math>(5, MATH_NUM_QUADRATURE_POINTS, {.i = {n}});
  const bool known = iweight >= legendre && iweight <= laguerre, countable = nfix >= 0 && nfix <= 2;
  if (!known) raise<Math>(5, MATH_IWEIGHT_OUT_OF_RANGE);
  if (!countable) raise<Math>(5, MATH_WRONG_NFIX_VALUE);
  if (iweight == jacobi || iweight == laguerre) check_parameter(f.alpha, "alpha");
  if (iweight == jacobi) check_parameter(f.beta, "beta");
  if (n >= 1 && countable && n < nfix) raise<Math>(5, MATH_NEED_MORE_QUAD_POINTS, {.i = {n, nfix}});
  if (nfix > 0 && fixed == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"qxfix"}});
  if (points == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"points"}});
  if (weights == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"weights"}});
  if (known && countable && fixed != nullptr) check_fixed(f, nfix, fixed);
  if (failed<Math>()) return;
  void* const mark = scratch_mark<Math>();
  l_rule(f, n, nfix, fixed, points, weights);
  scratch_release<Math>(mark);
}

template <class Real>
void l_gauss_quad_rule(long n, Real* points, Real* weights, Options& options) {
  Request<Real> q;
  read_options(options, q);
  l_g2rul(n, q.weight, q.alpha, q.beta, q.count, q.fixed, points, weights);
}

}  // namespace

}  // namespace zent::gauss

#define ZENT_FORM(P, Real, SUPPORT)                                                                                 \
  extern "C" void zent_##P##_gauss_quad_rule(long n, Real* points, Real* weights, ...) {                            \
    ZENT_OPTIONS(options, weights, 3);                                                                              \
    zent::public_call<zent::Math>("zent_" #P "_gauss_quad_rule",                                                    \
                                  [&] { zent::gauss::l_gauss_quad_rule<Real>(n, points, weights, options); });      \
    ZENT_OPTIONS_END(options);                                                                                      \
  }                                                                                                                 \
  extern "C" void SUPPORT(long n, int iweight, Real alpha, Real beta, long nfix, Real* qxfix, Real* qx, Real* qw) { \
    zent::gauss::l_g2rul<Real>(n, iweight, alpha, beta, nfix, qxfix, qx, qw);                                       \
  }
ZENT_FORM(f, float, zent_g2rul)
ZENT_FORM(d, double, zent_dg2rul)
