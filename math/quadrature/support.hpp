// The building blocks under their public names, for both halves.
#pragma once

#include "math/quadrature/adaptive_extrapolated.hpp"

namespace zent::quadrature {

// Lists of the caller.
template <class Real>
Subintervals<Real> lists_of(long limit, Real* alist, Real* blist, Real* rlist, Real* elist, long* iord) {
  Subintervals<Real> s{};
  s.alist = alist;
  s.blist = blist;
  s.rlist = rlist;
  s.elist = elist;
  s.iord = iord;
  s.limit = limit;
  return s;
}

template <class Real>
void store_estimate(const Estimate<Real>& e, Real* result, Real* abserr, Real* resabs, Real* resasc) {
  *result = e.result;
  *abserr = e.abserr;
  *resabs = e.resabs;
  *resasc = e.resasc;
}

template <class Real>
void store_outcome(const Outcome<Real>& o, Real* result, Real* abserr, long* neval, long* ier, long* last) {
  *result = o.result;
  *abserr = o.abserr;
  *neval = o.neval;
  *ier = o.ier;
  *last = o.last;
}

}  // namespace zent::quadrature

#define ZENT_QUADRATURE_SUPPORT(Half, P, Real)                                                                               \
  extern "C" void P##q4ng(Real* epmach, Real* uflow, Real* oflow) {                                                          \
    *epmach = zent::Machine<Real>::epsilon;                                                                                  \
    *uflow = zent::Machine<Real>::smallest;                                                                                  \
    *oflow = zent::Machine<Real>::largest;                                                                                   \
  }                                                                                                                          \
  extern "C" void P##q9ag(Real (*f)(Real, void*), void* ctx, Real a, Real b, Real* result, Real* abserr, Real* resabs,       \
                          Real* resasc) {                                                                                    \
    const auto g = zent::quadrature::bare_integrand<Half>(f, ctx);                                                           \
    zent::quadrature::store_estimate(zent::quadrature::l_kronrod<21>(g, a, b), result, abserr, resabs, resasc);              \
  }                                                                                                                          \
  extern "C" void P##q10g(long limit, long last, long* maxerr, Real* errmax, Real* elist, long* iord, long* nrmax) {         \
    zent::quadrature::l_q10g(limit, last, maxerr, errmax, elist, iord, nrmax);                                               \
  }                                                                                                                          \
  extern "C" void P##q4awo(long* n, Real* epstab, Real* result, Real* abserr, Real* res3la, long* nres) {                    \
    zent::quadrature::l_q4awo(n, epstab, result, abserr, res3la, nres);                                                      \
  }                                                                                                                          \
  extern "C" void P##q3agi(Real (*f)(Real, void*), void* ctx, Real bound, long inf, Real errabs, Real errrel, long limit,    \
                           Real* result, Real* abserr, long* neval, long* ier, Real* alist, Real* blist, Real* rlist,        \
                           Real* elist, long* iord, long* last) {                                                            \
    auto s = zent::quadrature::lists_of(limit, alist, blist, rlist, elist, iord);                                            \
    const auto g = zent::quadrature::bare_integrand<Half>(f, ctx);                                                           \
    zent::quadrature::store_outcome(zent::quadrature::l_q3agi(g, bound, inf, errabs, errrel, s), result, abserr, neval, ier, \
                                    last);                                                                                   \
  }
