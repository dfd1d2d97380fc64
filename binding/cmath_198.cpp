// ZEROSYS: a zero of a system of equations that the user's function computes.
#include "binding/optimize_positions.hpp"

namespace zent::binding {

namespace {

enum { fcn = 2, unknowns, err_rel, guess, max_evals, jacobian, fnorm, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"F", Kind::required, Type::text, "name of the user's function: takes N unknowns, returns N values"},
    {"N", Kind::required, Type::integer, "number of equations and unknowns"},
    {"ERR_REL", Kind::optional, Type::real, "stopping tolerance of the relative step", ZENT_ERR_REL_ADR, Pass::address},
    {"XGUESS", Kind::optional, Type::real, "start, N values; default 0", ZENT_XGUESS, Pass::address},
    {"MAX_EVALS", Kind::optional, Type::integer, "limit of calls, times N + 1 without JACOBIAN; default 200", ZENT_MAX_ITN,
     Pass::value},
    {"JACOBIAN", Kind::optional, Type::text, "name of the user's function for the N by N derivatives, a row for each equation"},
    {"FNORM", Kind::optional, Type::real, "receives the sum of squares of the values at the result", ZENT_FNORM, Pass::address},
    {"RESULT", Kind::output, Type::real, "the solution, an array of N", ZENT_RETURN_USER, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine, s_idUserRoutine_2;

void d_zerosys_fcn(long n, double* x, double* f) {
  call_vector_or_none(s_idUserRoutine, n, x, n, f);
}
void f_zerosys_fcn(long n, float* x, float* f) {
  call_vector_or_none(s_idUserRoutine, n, x, n, f);
}
void d_zerosys_jac(long n, double* x, double* fjac) {
  call_vector_or_none(s_idUserRoutine_2, n, x, n * n, fjac);
}
void f_zerosys_jac(long n, float* x, float* fjac) {
  call_vector_or_none(s_idUserRoutine_2, n, x, n * n, fjac);
}

// The library trusts the sizes that it is told. A count below 1 is for the library to refuse.
const char* refusal(const Arguments& arguments) {
  const long n = arguments.integer(unknowns);
  if (!arguments.present[result] || arguments.count[result] < n) return "ZEROSYS: argument RESULT must have N elements";
  if (arguments.present[guess] && arguments.count[guess] < n) return "ZEROSYS: argument XGUESS must have N elements";
  return nullptr;
}

Words words_of(const Arguments& arguments) {
  const bool in_double = arguments.is_double();
  Words words;
  if (in_double) {
    words.add(d_zerosys_fcn);
  } else {
    words.add(f_zerosys_fcn);
  }
  arguments.add_value(words, unknowns);
  arguments.add_options(words);
  if (arguments.present[jacobian]) {
    if (in_double) {
      words.option(ZENT_JACOBIAN, d_zerosys_jac);
    } else {
      words.option(ZENT_JACOBIAN, f_zerosys_jac);
    }
  }
  words.end();
  return words;
}

}  // namespace

const Routine routine_198 = {198, "ZEROSYS", true, position_count, positions};

long mathstat_198(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("ZEROSYS");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_198, argc, argv, arguments)) return 0;
  const char* const why = refusal(arguments);
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  if (!fits_option(arguments, max_evals)) return 0;
  const Words words = words_of(arguments);
  void* const function =
      arguments.is_double() ? reinterpret_cast<void*>(zent_d_zeros_sys_eqn) : reinterpret_cast<void*>(zent_f_zeros_sys_eqn);
  const Slot outer = occupy(s_idUserRoutine, arguments, fcn), outer_2 = occupy(s_idUserRoutine_2, arguments, jacobian);
  run_with(arguments, outer, outer_2, [&] { words.call<void*>(function); });
  return 0;
}

}  // namespace zent::binding
