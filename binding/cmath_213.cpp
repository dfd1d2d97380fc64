// ELRJ: Carlson's elliptic integral of the third kind, element by element.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { x = 2, y, z, rho, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"X", Kind::required, Type::real, "first argument of each element; their number is the number of elements"},
    {"Y", Kind::required, Type::real, "second argument"},
    {"Z", Kind::required, Type::real, "third argument"},
    {"RHO", Kind::required, Type::real, "fourth argument"},
    {"RESULT", Kind::output, Type::real, "array of as many values"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

// One call for each element: a failing one leaves a not-a-number, and the error of the last is the one that is thrown.
template <class Real>
void run(Real (*function)(Real, Real, Real, Real), const Arguments& a) {
  Real* out = a.array<Real>(result);
  for (long k = 0; k < a.count[x]; ++k) {
    out[k] = function(a.array<Real>(x)[k], a.array<Real>(y)[k], a.array<Real>(z)[k], a.array<Real>(rho)[k]);
  }
}

}  // namespace

const Routine routine_213 = {213, "ELRJ", true, position_count, positions};

long mathstat_213(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("ELRJ");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_213, argc, argv, arguments)) return 0;
  for (int k : {y, z, rho, result}) {
    if (arguments.data[k] != nullptr && arguments.count[k] >= arguments.count[x]) continue;
    refuse(k == result ? "ELRJ: argument RESULT must have as many elements as X"
                       : "ELRJ: arguments Y, Z and RHO must have as many elements as X");
    return 0;
  }
  if (arguments.is_double()) {
    run(zent_d_elliptic_integral_RJ, arguments);
  } else {
    run(zent_f_elliptic_integral_RJ, arguments);
  }
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
