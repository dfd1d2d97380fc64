// NLINLSQ: nonlinear least squares.
#include "binding/optimize_positions.hpp"

namespace zent::binding {

namespace {

enum {
  function = 2,
  residuals,
  variables,
  guess,
  jacobian,
  xscale,
  fscale,
  grad_tol,
  step_tol,
  rel_fcn_tol,
  abs_fcn_tol,
  max_step,
  trust,
  tolerance,
  good_digit,
  max_itn,
  max_fcn,
  max_jacobian,
  intern_scale,
  bounds,
  fvec,
  fjac,
  rank,
  covariance,
  r_factor,
  solution,
  position_count
};

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"F", Kind::required, Type::text, "name of the function: M residuals from N numbers"},
    {"M", Kind::required, Type::integer, "count of residuals"},
    {"N", Kind::required, Type::integer, "count of variables"},
    guess_position,
    {"JACOBIAN", Kind::optional, Type::text, "name of a function with M by N derivatives; default differences"},
    xscale_position,
    {"FSCALE", Kind::optional, Type::real, "size of the sum of squares; default 1", ZENT_FSCALE_ADR, Pass::address},
    grad_tol_position,
    step_tol_position,
    {"REL_FCN_TOL", Kind::optional, Type::real, "tolerance of the change of the sum", ZENT_REL_FCN_TOL_ADR, Pass::address},
    {"ABS_FCN_TOL", Kind::optional, Type::real, "tolerance of half the sum", ZENT_ABS_FCN_TOL_ADR, Pass::address},
    max_step_position,
    {"TRUST_REGION", Kind::optional, Type::real, "first radius", ZENT_TRUST_REGION_ADR, Pass::address},
    {"TOLERANCE", Kind::optional, Type::real, "for the rank", ZENT_TOLERANCE_ADR, Pass::address},
    {"GOOD_DIGIT", Kind::optional, Type::integer, "good digits of the residuals", ZENT_GOOD_DIGIT, Pass::value},
    max_itn_position,
    max_fcn_position,
    {"MAX_JACOBIAN", Kind::optional, Type::integer, "limit of Jacobians; default 400", ZENT_MAX_JACOBIAN, Pass::value},
    {"INTERN_SCALE", Kind::optional, Type::any, "scales come from the Jacobian", ZENT_INTERN_SCALE, Pass::flag},
    {"BOUNDS", Kind::optional, Type::real, "2 by N: lower bounds, upper bounds; not available yet"},
    {"FVEC", Kind::optional, Type::real, "receives the residuals, M", ZENT_FVEC_USER, Pass::address},
    {"FJAC", Kind::optional, Type::real, "receives the Jacobian, M by N", ZENT_FJAC_USER, Pass::address},
    {"RANK", Kind::output, Type::integer, "receives the rank of the Jacobian"},
    {"COVARIANCE", Kind::optional, Type::real, "receives the covariances of the solution, N by N", ZENT_COVARIANCE_USER,
     Pass::address},
    {"R_FACTOR", Kind::optional, Type::real, "receives R, N by N, of the Jacobian", ZENT_R_FACTOR_USER, Pass::address},
    {"X", Kind::required, Type::real, "receives the solution, N"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count && position_count == 28);

ORV_IDENT s_idUserRoutine, s_idUserRoutine_2;

template <class Real>
void nlinlsq_fcn(long m, long n, Real* x, Real* f) {
  call_vector_or_none(s_idUserRoutine, n, x, m, f);
}
template <class Real>
void nlinlsq_jacobian(long m, long n, Real* x, Real* jac) {
  call_vector_or_none(s_idUserRoutine_2, n, x, m * n, jac);
}

template <class Real>
void call(const Arguments& a, void* library) {
  long rank_found = 0;
  Words words;
  words.add(nlinlsq_fcn<Real>).add(a.integer(residuals)).add(a.integer(variables));
  a.add_options(words);
  if (a.present[jacobian]) words.option(ZENT_JACOBIAN).add(nlinlsq_jacobian<Real>);
  words.option(ZENT_JACOBIAN_RANK, static_cast<const void*>(&rank_found)).option(ZENT_RETURN_USER, a.data[solution]).end();
  const Slot outer = occupy(s_idUserRoutine, a, function), outer_2 = occupy(s_idUserRoutine_2, a, jacobian);
  const bool done = run_with(a, outer, outer_2, [&] { words.call<void*>(library); });
  if (done && a.count_given > rank) a.store(rank, ORV_TYP_INT64, rank_found);
}

bool acceptable(const Arguments& a) {
  if (a.present[bounds]) return refuse("NLINLSQ: the form with bounds (argument BOUNDS) is not available");
  for (int k : {good_digit, max_itn, max_fcn, max_jacobian}) {
    if (!fits_option(a, k)) return false;
  }
  const long m = a.integer(residuals), n = a.integer(variables);
  for (int k : {guess, xscale, solution}) {
    if (!holds(a, k, n)) return false;
  }
  return holds(a, fvec, m) && holds(a, fjac, m, n) && holds(a, covariance, n, n) && holds(a, r_factor, n, n);
}

}  // namespace

const Routine routine_163 = {163, "NLINLSQ", true, position_count, positions};

long mathstat_163(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("NLINLSQ");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_163, argc, argv, a) || !acceptable(a)) return 0;
  if (a.is_double()) {
    call<double>(a, reinterpret_cast<void*>(zent_d_nonlin_least_squares));
  } else {
    call<float>(a, reinterpret_cast<void*>(zent_f_nonlin_least_squares));
  }
  return 0;
}

}  // namespace zent::binding
