// Building blocks of the mathematics half.
#include "math/quadrature/support.hpp"

#include "math/quadrature/oscillatory.hpp"
#include "zent/quadrature.h"

ZENT_QUADRATURE_SUPPORT(zent::Math, zent_, float)
ZENT_QUADRATURE_SUPPORT(zent::Math, zent_d, double)

#define ZENT_FORM(P, Real)                                                                                                       \
  extern "C" void P##q3awo(Real (*f)(Real, void*), void* ctx, Real a, Real b, Real omega, long weight, Real errabs, Real errrel, \
                           long limit, long icall, long maxp1, Real* result, Real* abserr, long* neval, long* ier, long* last,   \
                           Real* alist, Real* blist, Real* rlist, Real* elist, long* iord, long* nnlog, long* momcom,            \
                           Real* chebmo) {                                                                                       \
    using namespace zent::quadrature;                                                                                            \
    auto s = lists_of(limit, alist, blist, rlist, elist, iord);                                                                  \
    MomentTable<Real> moments{chebmo, maxp1, icall > 1 ? *momcom : 0};                                                           \
    const auto g = bare_integrand<zent::Math>(f, ctx);                                                                           \
    store_outcome(l_q3awo(g, a, b, omega, weight, errabs, errrel, moments, nnlog, s), result, abserr, neval, ier, last);         \
    *momcom = moments.stored;                                                                                                    \
  }                                                                                                                              \
  extern "C" void P##q7awo(Real*, Real* fval, Real* cheb12, Real* cheb24) {                                                      \
    zent::quadrature::l_q7awo(fval, cheb12, cheb24);                                                                             \
  }                                                                                                                              \
  extern "C" void P##q8awo(Real (*f)(Real, void*), void* ctx, Real (*w)(Real, Real, Real, Real, Real, long), Real p1, Real p2,   \
                           Real p3, Real p4, long kp, Real a, Real b, Real* result, Real* abserr, Real* resabs, Real* resasc) {  \
    using namespace zent::quadrature;                                                                                            \
    const auto g = bare_integrand<zent::Math>(f, ctx);                                                                           \
    store_estimate(l_q8awo(g, Weight<Real>{w, p1, p2, p3, p4, kp}, a, b), result, abserr, resabs, resasc);                       \
  }
ZENT_FORM(zent_, float)
ZENT_FORM(zent_d, double)
