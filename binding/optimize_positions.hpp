// What the wrappers of minimization and of root finding share.
#pragma once

#include <cmath>
#include <cstdio>

#include "binding/callback.hpp"
#include "binding/least_squares_positions.hpp"
#include "runtime/machine.hpp"

namespace zent::binding {

// Integer options are read in 32 bits: a greater one must not come out as another number.
inline bool fits_option(const Arguments& arguments, int k) {
  if (!arguments.present[k] || arguments.integer(k) == static_cast<int>(arguments.integer(k))) return true;
  static char text[120];
  std::snprintf(text, sizeof text, "%s: argument %s does not fit in 32 bits", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

// Where the host returned from raising a user function's error, the values are none.
template <class Real>
Real call_scalar_or_none(ORV_IDENT routine, Real x) {
  UserCall<1> call(routine);
  call.scalar(x);
  return call.template result<Real>(Machine<double>::not_a_number);
}
template <class Real>
void call_vector_or_none(ORV_IDENT routine, long n, const Real* x, long m, Real* out) {
  if (call_vector<Real>(routine, n, x, m, out)) return;
  for (long i = 0; i < m; ++i) out[i] = Machine<Real>::not_a_number;
}

// A user's routine in its static for the time of a call; a call inside the user's routine puts the outer one back.
struct Slot {
  ORV_IDENT* slot;
  ORV_IDENT outer;

  void put_back() const {
    *slot = outer;
  }
};
inline Slot occupy(ORV_IDENT& slot, const Arguments& arguments, int k) {
  const Slot before = {&slot, slot};
  if (arguments.present[k]) slot = user_routine(arguments.variable[k]);
  return before;
}

// The library call `body` with the user's routines in their slots. False where it failed: then nothing is left to do.
template <class Body>
bool run_with(const Arguments& arguments, const Slot& first, const Slot& second, const Body& body) {
  const auto put_back = [&] {
    first.put_back();
    second.put_back();
  };
  if (!guarded(body, put_back)) return false;
  put_back();
  long code;
  return cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0;
}

// Positions of the searches in many variables.
inline constexpr Position guess_position = {"XGUESS",    Kind::optional, Type::real, "start, N; default 0",
                                            ZENT_XGUESS, Pass::address};
inline constexpr Position xscale_position = {
    "XSCALE", Kind::optional, Type::real, "N inverse sizes of the variables; default 1", ZENT_XSCALE, Pass::address};
inline constexpr Position grad_tol_position = {"GRAD_TOL",        Kind::optional, Type::real, "tolerance of the scaled gradient",
                                               ZENT_GRAD_TOL_ADR, Pass::address};
inline constexpr Position step_tol_position = {"STEP_TOL",        Kind::optional, Type::real, "tolerance of the scaled step",
                                               ZENT_STEP_TOL_ADR, Pass::address};
inline constexpr Position max_step_position = {"MAX_STEP",        Kind::optional, Type::real, "longest scaled step",
                                               ZENT_MAX_STEP_ADR, Pass::address};
inline constexpr Position max_itn_position = {"MAX_ITN",    Kind::optional, Type::integer, "limit of iterations; default 100",
                                              ZENT_MAX_ITN, Pass::value};
inline constexpr Position max_fcn_position = {
    "MAX_FCN", Kind::optional, Type::integer, "limit of function values; default 400", ZENT_MAX_FUNCTION_CALLS, Pass::value};

}  // namespace zent::binding
