// FMIN: minimum of a function of one variable, with its derivative or without.
#include "binding/optimize_positions.hpp"

namespace zent::binding {

namespace {

enum {
  function = 2,
  lower,
  upper,
  derivative,
  guess,
  accuracy,
  step,
  max_fcn,
  grad_tol,
  err_rel,
  fvalue,
  gvalue,
  solution,
  position_count
};

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"F", Kind::required, Type::text, "name of the function of one number"},
    {"A", Kind::required, Type::real, "lower end of the interval"},
    {"B", Kind::required, Type::real, "upper end"},
    {"GRAD", Kind::optional, Type::text, "name of its derivative; without it values alone are used"},
    {"XGUESS", Kind::optional, Type::real, "start; default the middle"},
    {"ERR_ABS", Kind::optional, Type::real, "accuracy of x, without GRAD; default 1e-4"},
    {"STEP", Kind::optional, Type::real, "first step, without GRAD; default 0.01 of the longer side"},
    {"MAX_FCN", Kind::optional, Type::integer, "limit of function values; default 1000"},
    {"GRAD_TOL", Kind::optional, Type::real, "tolerance of the derivative, with GRAD; default 1e-4"},
    {"ERR_REL", Kind::optional, Type::real, "relative accuracy of x, with GRAD; default the square root of the precision"},
    {"FVALUE", Kind::output, Type::real, "receives the function value"},
    {"GVALUE", Kind::output, Type::real, "receives the derivative, with GRAD"},
    {"X", Kind::output, Type::real, "receives the minimum point"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine, s_idUserRoutine_2;

double d_fmin_fcn(double x) {
  return call_scalar_or_none<double>(s_idUserRoutine, x);
}
float f_fmin_fcn(float x) {
  return call_scalar_or_none<float>(s_idUserRoutine, x);
}
double d_fmin_grad(double x) {
  return call_scalar_or_none<double>(s_idUserRoutine_2, x);
}
float f_fmin_grad(float x) {
  return call_scalar_or_none<float>(s_idUserRoutine_2, x);
}

template <class Real>
void options_of(const Arguments& a, Words& words, Real* value, Real* slope) {
  const bool with_slope = a.present[derivative];
  const auto address = [&](int code, int k) {
    if (a.present[k]) words.option(code, a.data[k]);
  };
  address(ZENT_XGUESS_ADR, guess);
  if (with_slope) {
    address(ZENT_GRAD_TOL_ADR, grad_tol);
    address(ZENT_ERR_REL_ADR, err_rel);
    words.option(ZENT_GVALUE, static_cast<const void*>(slope));
  } else {
    address(ZENT_ERR_ABS_ADR, accuracy);
    address(ZENT_STEP_ADR, step);
  }
  if (a.present[max_fcn]) words.option(ZENT_MAX_FUNCTION_CALLS, a.integer(max_fcn));
  words.option(ZENT_FVALUE, static_cast<const void*>(value)).end();
}

template <class Real>
struct Calls;
template <>
struct Calls<double> {
  static constexpr auto fcn = d_fmin_fcn, grad = d_fmin_grad;
  static void* of_values() {
    return reinterpret_cast<void*>(zent_d_min_uncon);
  }
  static void* of_slopes() {
    return reinterpret_cast<void*>(zent_d_min_uncon_deriv);
  }
};
template <>
struct Calls<float> {
  static constexpr auto fcn = f_fmin_fcn, grad = f_fmin_grad;
  static void* of_values() {
    return reinterpret_cast<void*>(zent_f_min_uncon);
  }
  static void* of_slopes() {
    return reinterpret_cast<void*>(zent_f_min_uncon_deriv);
  }
};

template <class Real>
void call(const Arguments& a) {
  using C = Calls<Real>;
  const bool with_slope = a.present[derivative];
  Real x = 0, value = 0, slope = 0;
  Words words;
  words.add(C::fcn);
  if (with_slope) words.add(C::grad);
  options_of(a, words, &value, &slope);
  const Slot outer = occupy(s_idUserRoutine, a, function), outer_2 = occupy(s_idUserRoutine_2, a, derivative);
  const bool done = run_with(a, outer, outer_2, [&] {
    x = words.call<Real>(with_slope ? C::of_slopes() : C::of_values(), *a.array<Real>(lower), *a.array<Real>(upper));
  });
  if (!done) return;
  const int type = a.real_type();
  if (a.count_given > fvalue) a.store(fvalue, type, value);
  if (a.count_given > gvalue && with_slope) a.store(gvalue, type, slope);
  if (a.count_given > solution) a.store(solution, type, x);
}

}  // namespace

const Routine routine_142 = {142, "FMIN", true, position_count, positions};

long mathstat_142(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FMIN");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_142, argc, argv, a) || !fits_option(a, max_fcn)) return 0;
  a.is_double() ? call<double>(a) : call<float>(a);
  return 0;
}

}  // namespace zent::binding
