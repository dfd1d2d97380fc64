// FCN_DERIV: a derivative of a user function.
#include "binding/optimize_positions.hpp"
#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum { name = 2, x, order, step, error, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"FCN", Kind::required, Type::text, "name of the user's function of one number"},
    {"X", Kind::required, Type::real, "scalar: where the derivative is wanted"},
    {"ORDER", Kind::optional, Type::integer, "order of the derivative, 1 to 3", ZENT_ORDER, Pass::value},
    {"INITIAL_STEP", Kind::optional, Type::real, "step of the first difference", ZENT_INITIAL_STEP_ADR, Pass::address},
    {"RELATIVE_ERROR", Kind::optional, Type::real, "relative error at which the search ends", ZENT_RELATIVE_ERROR_ADR,
     Pass::address},
    {"RESULT", Kind::output, Type::real, "scalar: the derivative"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

template <class Real>
Real fcn_deriv_fcn(Real at) {
  return call_scalar<Real>(s_idUserRoutine, at);
}

template <class Real>
void differentiate(const Arguments& arguments, Real (*library)(Real (*)(Real), Real, ...)) {
  Words words;
  words.add(fcn_deriv_fcn<Real>);
  arguments.add_options(words);
  words.end();
  // A user function that differentiates in its turn comes back to its own identifier.
  const Slot outer = occupy(s_idUserRoutine, arguments, name);
  Real value = 0;
  const auto put_back = [&] { outer.put_back(); };
  if (!guarded([&] { value = words.call<Real>(reinterpret_cast<void*>(library), *arguments.array<Real>(x)); }, put_back)) return;
  put_back();
  long code;
  if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0) arguments.store(result, arguments.real_type(), value);
}

}  // namespace

const Routine routine_219 = {219, "FCN_DERIV", true, position_count, positions};

long mathstat_219(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FCN_DERIV");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_219, argc, argv, arguments) || !fits_option(arguments, order)) return 0;
  if (arguments.is_double()) {
    differentiate<double>(arguments, zent_d_fcn_derivative);
  } else {
    differentiate<float>(arguments, zent_f_fcn_derivative);
  }
  return 0;
}

}  // namespace zent::binding
