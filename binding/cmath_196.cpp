// ZEROFCN: real zeros of the user's function of one variable.
#include "binding/optimize_positions.hpp"

namespace zent::binding {

namespace {

enum { fcn = 2, err_abs, err_rel, eta, eps, num_roots, info, guess, max_evals, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"F", Kind::required, Type::text, "name of the user's function of one number"},
    {"ERR_ABS", Kind::optional, Type::real, "a zero is where the value is below this", ZENT_ERR_ABS_ADR, Pass::address},
    {"ERR_REL", Kind::optional, Type::real, "or where a step is at most this, relative", ZENT_ERR_REL_ADR, Pass::address},
    {"ETA", Kind::optional, Type::real, "distance by which a point is moved away from an earlier zero", ZENT_ETA_ADR,
     Pass::address},
    {"EPS", Kind::optional, Type::real, "points this close to an earlier zero are moved", ZENT_EPS_ADR, Pass::address},
    {"NUM_ROOTS", Kind::optional, Type::integer, "how many zeros; default 1", ZENT_NUM_ROOTS, Pass::value},
    {"INFO", Kind::optional, Type::integer, "receives the evaluations of each zero, an array of NUM_ROOTS", ZENT_INFO_USER,
     Pass::address},
    {"XGUESS", Kind::optional, Type::real, "first guesses, NUM_ROOTS values; default 0", ZENT_XGUESS, Pass::address},
    {"MAX_EVALS", Kind::optional, Type::integer, "limit of evaluations for each zero; default 100", ZENT_MAX_ITN, Pass::value},
    {"RESULT", Kind::output, Type::real, "the zeros, an array of NUM_ROOTS", ZENT_RETURN_USER, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

double d_zerofcn_fcn(double x) {
  return call_scalar_or_none<double>(s_idUserRoutine, x);
}
float f_zerofcn_fcn(float x) {
  return call_scalar_or_none<float>(s_idUserRoutine, x);
}

// The library trusts the sizes that it is told. A count below 1 is for the library to refuse.
const char* refusal(const Arguments& arguments) {
  const long n = arguments.present[num_roots] ? arguments.integer(num_roots) : 1;
  if (!arguments.present[result] || arguments.count[result] < n) return "ZEROFCN: argument RESULT must have NUM_ROOTS elements";
  if (arguments.present[info] && arguments.count[info] < n) return "ZEROFCN: argument INFO must have NUM_ROOTS elements";
  if (arguments.present[guess] && arguments.count[guess] < n) return "ZEROFCN: argument XGUESS must have NUM_ROOTS elements";
  return nullptr;
}

}  // namespace

const Routine routine_196 = {196, "ZEROFCN", true, position_count, positions};

long mathstat_196(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("ZEROFCN");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_196, argc, argv, arguments)) return 0;
  const char* const why = refusal(arguments);
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  if (!fits_option(arguments, num_roots) || !fits_option(arguments, max_evals)) return 0;
  Words words;
  if (arguments.is_double()) {
    words.add(d_zerofcn_fcn);
  } else {
    words.add(f_zerofcn_fcn);
  }
  arguments.add_options(words);
  words.end();
  void* const function =
      arguments.is_double() ? reinterpret_cast<void*>(zent_d_zeros_fcn) : reinterpret_cast<void*>(zent_f_zeros_fcn);
  const Slot outer = occupy(s_idUserRoutine, arguments, fcn);
  run_with(arguments, outer, outer, [&] { words.call<void*>(function); });
  return 0;
}

}  // namespace zent::binding
