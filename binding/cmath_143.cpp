// FMINV: minimum of a function of many variables.
#include "binding/optimize_positions.hpp"

namespace zent::binding {

namespace {

enum {
  function = 2,
  variables,
  guess,
  gradient,
  xscale,
  fscale,
  grad_tol,
  step_tol,
  rel_fcn_tol,
  max_step,
  good_digit,
  max_itn,
  max_fcn,
  max_grad,
  init_hessian,
  fvalue,
  solution,
  position_count
};

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"F", Kind::required, Type::text, "name of the function: a number from N numbers"},
    {"N", Kind::required, Type::integer, "count of variables"},
    guess_position,
    {"GRAD", Kind::optional, Type::text, "name of its gradient; default differences"},
    xscale_position,
    {"FSCALE", Kind::optional, Type::real, "size of the function; default 1", ZENT_FSCALE_ADR, Pass::address},
    grad_tol_position,
    step_tol_position,
    {"REL_FCN_TOL", Kind::optional, Type::real, "tolerance of the change of the function", ZENT_REL_FCN_TOL_ADR, Pass::address},
    max_step_position,
    {"GOOD_DIGIT", Kind::optional, Type::integer, "good digits of the function", ZENT_GOOD_DIGIT, Pass::value},
    max_itn_position,
    max_fcn_position,
    {"MAX_GRAD", Kind::optional, Type::integer, "limit of gradients; default 400", ZENT_MAX_GRAD, Pass::value},
    {"INIT_HESSIAN", Kind::optional, Type::integer, "0 identity, 1 scaled by the function", ZENT_INIT_HESSIAN, Pass::value},
    {"FVALUE", Kind::output, Type::real, "receives the function value"},
    {"X", Kind::required, Type::real, "receives the minimum point, N"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine, s_idUserRoutine_2;

template <class Real>
Real fminv_fcn(long n, Real* x) {
  UserCall<1> call(s_idUserRoutine);
  call.vector(n, x);
  return call.result<Real>(Machine<double>::not_a_number);
}
template <class Real>
void fminv_grad(long n, Real* x, Real* g) {
  call_vector_or_none(s_idUserRoutine_2, n, x, n, g);
}

template <class Real>
void call(const Arguments& a, void* library) {
  Real value = 0;
  Words words;
  words.add(fminv_fcn<Real>).add(a.integer(variables));
  a.add_options(words);
  if (a.present[gradient]) words.option(ZENT_GRAD).add(fminv_grad<Real>);
  words.option(ZENT_FVALUE, static_cast<const void*>(&value)).option(ZENT_RETURN_USER, a.data[solution]).end();
  const Slot outer = occupy(s_idUserRoutine, a, function), outer_2 = occupy(s_idUserRoutine_2, a, gradient);
  const bool done = run_with(a, outer, outer_2, [&] { words.call<void*>(library); });
  if (done && a.count_given > fvalue) a.store(fvalue, a.real_type(), value);
}

}  // namespace

const Routine routine_143 = {143, "FMINV", true, position_count, positions};

long mathstat_143(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FMINV");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_143, argc, argv, a)) return 0;
  const long n = a.integer(variables);
  for (int k : {good_digit, max_itn, max_fcn, max_grad, init_hessian}) {
    if (!fits_option(a, k)) return 0;
  }
  for (int k : {guess, xscale, solution}) {
    if (!holds(a, k, n)) return 0;
  }
  if (a.is_double()) {
    call<double>(a, reinterpret_cast<void*>(zent_d_min_uncon_multivar));
  } else {
    call<float>(a, reinterpret_cast<void*>(zent_f_min_uncon_multivar));
  }
  return 0;
}

}  // namespace zent::binding
