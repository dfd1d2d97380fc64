// The statistics half's own copies of what its distributions integrate with: the building blocks, and the three integrators as
// l_int_fcn<Stat>, l_int_fcn_sing_pts<Stat> and l_int_fcn_inf<Stat>.
#include "math/quadrature/support.hpp"

#include "math/quadrature/int_fcn.hpp"
#include "zent/quadrature_stat.h"

ZENT_QUADRATURE_SUPPORT(zent::Stat, zents_, float)
ZENT_QUADRATURE_SUPPORT(zent::Stat, zents_d, double)

namespace zent::quadrature {

#define ZENT_FORM(Real)                                                                                                \
  template Real l_int_fcn<Stat, Real>(Real(*)(Real), Real, Real, const IntOptions<Real>&);                             \
  template Real l_int_fcn_sing_pts<Stat, Real>(Real(*)(Real), Real, Real, long, const Real*, const IntOptions<Real>&); \
  template Real l_int_fcn_inf<Stat, Real>(Real(*)(Real), Real, long, const IntOptions<Real>&);
ZENT_FORM(float)
ZENT_FORM(double)

}  // namespace zent::quadrature
