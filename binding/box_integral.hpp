// What INTFCNHYPER and INTFCN_QMC share: the integral of a user's function of a vector over a box.
#pragma once

#include "binding/optimize_positions.hpp"
#include "binding/routines.hpp"

namespace zent::binding::box {

enum { name = 2, ndim, a, b, err_abs, err_rel, max_evals, own };

inline constexpr Position function_position = {"FCN", Kind::required, Type::text,
                                               "name of the user's function of a vector of NDIM elements"};
inline constexpr Position lower_position = {"A", Kind::required, Type::real, "NDIM lower limits"};
inline constexpr Position upper_position = {"B", Kind::required, Type::real, "NDIM upper limits"};
inline constexpr Position err_abs_position = {"ERR_ABS",        Kind::optional, Type::real, "absolute tolerance",
                                              ZENT_ERR_ABS_ADR, Pass::address};
inline constexpr Position err_rel_position = {"ERR_REL",        Kind::optional, Type::real, "relative tolerance",
                                              ZENT_ERR_REL_ADR, Pass::address};
inline constexpr Position result_position = {"RESULT", Kind::output, Type::real, "scalar: the integral"};
inline constexpr Position err_est_position = {"ERR_EST",    Kind::output, Type::real, "scalar: estimate of its error",
                                              ZENT_ERR_EST, Pass::address};

template <class Real>
using Integral = Real (*)(Real (*)(long, Real*), long, Real*, Real*, ...);

// A user's function in its slot, which is a static of the unit.
template <ORV_IDENT& slot, class Real>
Real user_function(long n, Real* x) {
  return UserCall<1>(slot).vector(n, x).template result<Real>();
}

template <ORV_IDENT& slot, class Real>
void integrate(const Arguments& arguments, Integral<Real> library, int result) {
  Words words;
  words.add(user_function<slot, Real>).add(arguments.integer(ndim)).add(arguments.data[a]).add(arguments.data[b]);
  arguments.add_options(words);
  words.end();
  const Slot outer = occupy(slot, arguments, name);
  Real value = 0;
  const auto put_back = [&] { outer.put_back(); };
  if (!guarded([&] { value = words.call<Real>(reinterpret_cast<void*>(library)); }, put_back)) return;
  put_back();
  long code;
  if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0) arguments.store(result, arguments.real_type(), value);
}

// The wrapper. All positions from MAX_EVALS up to RESULT are integers by value.
template <ORV_IDENT& slot>
long wrapper(const Routine& routine, int argc, ORV_VARIABLE** argv, int result, Integral<float> single, Integral<double> real) {
  const long failed = cmast_init(routine.label);
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine, argc, argv, arguments)) return 0;
  for (int k = max_evals; k < result; ++k) {
    if (!fits_option(arguments, k)) return 0;
  }
  for (int k : {a, b}) {
    if (!holds(arguments, k, arguments.integer(ndim))) return 0;
  }
  if (arguments.is_double()) {
    integrate<slot>(arguments, real, result);
  } else {
    integrate<slot>(arguments, single, result);
  }
  return 0;
}

}  // namespace zent::binding::box
