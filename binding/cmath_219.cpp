// FCN_DERIV: a derivative of a user function.
#include "binding/callback.hpp"
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

double d_fcn_deriv_fcn(double at) {
  return call_scalar<double>(s_idUserRoutine, at);
}
float f_fcn_deriv_fcn(float at) {
  return call_scalar<float>(s_idUserRoutine, at);
}

}  // namespace

const Routine routine_219 = {219, "FCN_DERIV", true, position_count, positions};

long mathstat_219(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FCN_DERIV");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_219, argc, argv, arguments)) return 0;
  const bool wide = arguments.is_double();
  Words words;
  if (wide) {
    words.add(d_fcn_deriv_fcn);
  } else {
    words.add(f_fcn_deriv_fcn);
  }
  if (arguments.present[order] && arguments.integer(order) != static_cast<int>(arguments.integer(order))) {
    refuse("FCN_DERIV: argument ORDER does not fit in 32 bits");
    return 0;
  }
  arguments.add_options(words);
  words.end();
  // A user function that differentiates in its turn comes back to its own identifier.
  const ORV_IDENT outer = s_idUserRoutine;
  double in_double = 0;
  float in_single = 0;
  s_idUserRoutine = user_routine(argv[name]);
  const bool done = guarded(
      [&] {
        if (wide) {
          in_double = words.call<double>(reinterpret_cast<void*>(zent_d_fcn_derivative), *arguments.array<double>(x));
        } else {
          in_single = words.call<float>(reinterpret_cast<void*>(zent_f_fcn_derivative), *arguments.array<float>(x));
        }
      },
      [&] { s_idUserRoutine = outer; });
  if (!done) return 0;
  s_idUserRoutine = outer;
  long code;
  if (cmast_opi_clear_errors(1, &code, arguments.status, 1) != 0) return 0;
  if (wide) {
    arguments.store(result, ORV_TYP_DOUBLE, in_double);
  } else {
    arguments.store(result, ORV_TYP_FLOAT, in_single);
  }
  return 0;
}

}  // namespace zent::binding
