// INTFCNHYPER: integral of a user function over a box by product Gauss rules.
#include "binding/callback.hpp"
#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum { name = 2, ndim, a, b, err_abs, err_rel, max_evals, result, err_est, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"FCN", Kind::required, Type::text, "name of the user's function of a vector of NDIM elements"},
    {"NDIM", Kind::required, Type::integer, "dimension, 1 to 20"},
    {"A", Kind::required, Type::real, "NDIM lower limits"},
    {"B", Kind::required, Type::real, "NDIM upper limits"},
    {"ERR_ABS", Kind::optional, Type::real, "absolute tolerance", ZENT_ERR_ABS_ADR, Pass::address},
    {"ERR_REL", Kind::optional, Type::real, "relative tolerance", ZENT_ERR_REL_ADR, Pass::address},
    {"MAX_EVALS", Kind::optional, Type::integer, "most calls of the function", ZENT_MAX_EVALS, Pass::value},
    {"RESULT", Kind::output, Type::real, "scalar: the integral"},
    {"ERR_EST", Kind::output, Type::real, "scalar: estimate of its error", ZENT_ERR_EST, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

double d_intfcnhyper_fcn(long n, double* x) {
  return UserCall<1>(s_idUserRoutine).vector(n, x).result<double>();
}
float f_intfcnhyper_fcn(long n, float* x) {
  return UserCall<1>(s_idUserRoutine).vector(n, x).result<float>();
}

const char* refusal(const Arguments& v) {
  const long n = v.integer(ndim);
  if (n >= 1 && (v.count[a] != n || v.count[b] != n)) return "INTFCNHYPER: arguments A and B must have NDIM elements";
  if (v.present[max_evals] && v.integer(max_evals) != static_cast<int>(v.integer(max_evals))) {
    return "INTFCNHYPER: argument MAX_EVALS does not fit in 32 bits";
  }
  return nullptr;
}

}  // namespace

const Routine routine_151 = {151, "INTFCNHYPER", true, position_count, positions};

long mathstat_151(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("INTFCNHYPER");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_151, argc, argv, arguments)) return 0;
  if (const char* text = refusal(arguments)) {
    refuse(text);
    return 0;
  }
  const bool wide = arguments.is_double();
  Words words;
  if (wide) {
    words.add(d_intfcnhyper_fcn);
  } else {
    words.add(f_intfcnhyper_fcn);
  }
  words.add(arguments.integer(ndim)).add(arguments.data[a]).add(arguments.data[b]);
  arguments.add_options(words);
  words.end();
  // A user function that integrates in its turn comes back to its own identifier.
  const ORV_IDENT outer = s_idUserRoutine;
  double in_double = 0;
  float in_single = 0;
  s_idUserRoutine = user_routine(argv[name]);
  const bool done = guarded(
      [&] {
        if (wide) {
          in_double = words.call<double>(reinterpret_cast<void*>(zent_d_int_fcn_hyper_rect));
        } else {
          in_single = words.call<float>(reinterpret_cast<void*>(zent_f_int_fcn_hyper_rect));
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
