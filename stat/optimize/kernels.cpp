// The steps of nonlinear least squares as the families of the statistics half call them.
#include "math/optimize/covariance.hpp"
#include "math/optimize/record.hpp"
#include "math/optimize/trust_step.hpp"
#include "runtime/envelope.hpp"
#include "zent/optimize.h"

ZENT_RCOVB_ENTRIES(zents)

namespace zent::optimize {

namespace {

void l_u5lsf(long m, long n, double* xscale, double* fscale, long* iparam, double* rparam) {
  if (m < 1) raise<Stat>(5, MATH_NEED_POSITIVE_NUM_FCNS, {.i = {m}});
  if (n < 1) raise<Stat>(5, MATH_N_MUST_BE_POSITIVE, {.i = {n}});
  if (m >= 1 && n >= 1 && m < n) raise<Stat>(5, MATH_TOO_MANY_VARIABLES, {.i = {m, n}});
  if (failed<Stat>()) return;
  Record<double> record;
  record.ndigit = iparam[0];
  record.max_itn = iparam[1];
  record.max_fcn = iparam[2];
  record.max_grad = iparam[3];
  record.fscale = *fscale;
  double* const tolerances[] = {&record.grad_tol,       &record.step_tol, &record.rel_fcn_tol, &record.abs_fcn_tol,
                                &record.false_conv_tol, &record.max_step, &record.trust};
  for (long k = 0; k < 7; ++k) *tolerances[k] = rparam[k];
  repair_record<Stat>(n, xscale, record);
  for (long k = 0; k < 7; ++k) rparam[k] = *tolerances[k];
  *fscale = record.fscale;
  iparam[0] = record.ndigit;
  iparam[1] = record.max_itn;
  iparam[2] = record.max_fcn;
  iparam[3] = record.max_grad;
}

}  // namespace

}  // namespace zent::optimize

using zent::Stat;

extern "C" void zents_du4lsf(long, long n, const double* x, const double* xscale, double* rparam) {
  zent::scalar_call<Stat>("zents_du4lsf", [=] {
    if (!zent::optimize::given(rparam[5])) rparam[5] = zent::optimize::default_max_step(n, x, xscale);
  });
}
extern "C" void zents_du5lsf(long m, long n, double* xscale, double* fscale, long* iparam, double* rparam) {
  zent::scalar_call<Stat>("zents_du5lsf", [=] { zent::optimize::l_u5lsf(m, n, xscale, fscale, iparam, rparam); });
}
extern "C" void zents_du7lsf(long m, long n, const double* fvec, const double* fjac, long ldfjac, const double* xscale,
                             double* delta, double* alpha, double* step) {
  zent::scalar_call<Stat>("zents_du7lsf",
                          [=] { zent::optimize::l_u7lsf<Stat>(m, n, fvec, fjac, ldfjac, xscale, delta, alpha, step); });
}
extern "C" void zents_du8lsf(long n, const double* r, long ldr, const double* qtb, const double* diag, double* x) {
  zent::scalar_call<Stat>("zents_du8lsf", [=] { zent::optimize::l_u8lsf<Stat>(n, r, ldr, qtb, diag, x); });
}
