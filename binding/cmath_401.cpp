// INTFCN_QMC: integral of a user function over a box by quasi-Monte Carlo.
#include "binding/callback.hpp"
#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum { name = 2, ndim, a, b, err_abs, err_rel, max_evals, base, skip, result, err_est, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"FCN", Kind::required, Type::text, "name of the user's function of a vector of NDIM elements"},
    {"NDIM", Kind::required, Type::integer, "dimension, at least 1"},
    {"A", Kind::required, Type::real, "NDIM lower limits"},
    {"B", Kind::required, Type::real, "NDIM upper limits"},
    {"ERR_ABS", Kind::optional, Type::real, "absolute tolerance", ZENT_ERR_ABS_ADR, Pass::address},
    {"ERR_REL", Kind::optional, Type::real, "relative tolerance", ZENT_ERR_REL_ADR, Pass::address},
    {"MAX_EVALS", Kind::optional, Type::integer, "most calls of the function beyond the first 1000", ZENT_MAX_EVALS, Pass::value},
    {"BASE", Kind::optional, Type::integer, "base of the sequence: a prime, at least NDIM", ZENT_BASE, Pass::value},
    {"SKIP", Kind::optional, Type::integer, "points to leave out at the start, at least 1", ZENT_SKIP, Pass::value},
    {"RESULT", Kind::output, Type::real, "scalar: the integral"},
    {"ERR_EST", Kind::output, Type::real, "scalar: estimate of its error", ZENT_ERR_EST, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

double d_intfcn_qmc_fcn(long n, double* x) {
  return UserCall<1>(s_idUserRoutine).vector(n, x).result<double>();
}
float f_intfcn_qmc_fcn(long n, float* x) {
  return UserCall<1>(s_idUserRoutine).vector(n, x).result<float>();
}

const char* refusal(const Arguments& v) {
  const long n = v.integer(ndim);
  if (n >= 1 && (v.count[a] != n || v.count[b] != n)) return "INTFCN_QMC: arguments A and B must have NDIM elements";
  for (int k : {max_evals, base, skip}) {  // an option carries 32 bits
    if (v.present[k] && v.integer(k) != static_cast<int>(v.integer(k))) {
      return "INTFCN_QMC: an integer argument does not fit in 32 bits";
    }
  }
  return nullptr;
}

}  // namespace

const Routine routine_401 = {401, "INTFCN_QMC", true, position_count, positions};

long mathstat_401(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("INTFCN_QMC");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_401, argc, argv, arguments)) return 0;
  if (const char* text = refusal(arguments)) {
    refuse(text);
    return 0;
  }
  const bool wide = arguments.is_double();
  Words words;
  if (wide) {
    words.add(d_intfcn_qmc_fcn);
  } else {
    words.add(f_intfcn_qmc_fcn);
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
          in_double = words.call<double>(reinterpret_cast<void*>(zent_d_int_fcn_qmc));
        } else {
          in_single = words.call<float>(reinterpret_cast<void*>(zent_f_int_fcn_qmc));
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
