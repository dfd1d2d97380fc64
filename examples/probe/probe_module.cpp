// A small module with two routines that call a user function: how a wrapper with a callback is written, from the library function
// behind it to the row of the table. Load it after orv_zent.so, whose error stack, traps and helpers it uses.
//
//   PROBE_1, PRECISION, STATUS, FUNCTION, A, B, N, RESULT     integral of the function over [A, B] by N trapezoids
//   PROBE_2, PRECISION, STATUS, FUNCTION, X, RESULT           a function of a vector with as many results, applied to X
#include <csetjmp>

#include "binding/callback.hpp"
#include "binding/words.hpp"
#include "runtime/error.hpp"

namespace {

using zent::binding::call_scalar;
using zent::binding::call_vector;
using zent::binding::guarded;
using zent::binding::Words;

// ---- The library's side: knows nothing of the host -----------------------------------------------------------------------

// Runs the body under the signal trap, like every public function whose worker enters code of the caller.
template <class Body>
void trapped(Body body) {
  auto* const state = reinterpret_cast<zent::ErrorState*>(zent_err_init());
  if (zent_signal_trap_status() == 0 || state->jump_depth >= zent::jump_buffer_count) {
    body();
    return;
  }
  const long jump = state->jump_depth++;
  if (setjmp(state->jump[jump].buffer) == 0) {
    zent_set_signal(1);
    body();
  } else {
    zent_ermes(5, MATH_MAJOR_VIOLATION);
  }
  state->jump_depth = jump;
  zent_set_signal(0);
}

// Between "ON" and "OFF" the user's code runs: errors of library calls it makes are delivered to it, not at our end.
template <class Function, class... Arguments>
auto ask_user(Function function, Arguments... x) {
  zent_e1usr("ON");
  const auto result = function(x...);
  zent_e1usr("OFF");
  return result;
}

template <class Real>
Real trapezoid(Real (*f)(Real), Real a, Real b, long n) {
  const Real h = (b - a) / static_cast<Real>(n);
  Real sum = (ask_user(f, a) + ask_user(f, b)) / 2;
  for (long k = 1; k < n && zent_n1rty(1) < 4; ++k) sum += ask_user(f, a + static_cast<Real>(k) * h);
  return h * sum;
}

// The integral of f over [a, b] by the trapezoidal rule with n panels. Raises 132 for n < 1.
template <class Real>
Real integral(const char* frame, Real (*f)(Real), Real a, Real b, long n) {
  zent_e1psh(frame);
  volatile Real result = 0;
  if (n < 1) {
    zent_e1sti(1, 1);
    zent_e1sti(2, 1000000);
    zent_e1sti(3, n);
    zent_e1stl(1, "n");
    zent_ermes(5, MATH_INTEGER_OUT_OF_RANGE);
  } else {
    trapped([&] { result = trapezoid(f, a, b, n); });
  }
  zent_e1pop(frame);
  return result;
}

double d_integral(double a, double b, double (*f)(double), long n, ...) {
  return integral("probe_d_integral", f, a, b, n);
}
float f_integral(float a, float b, float (*f)(float), long n, ...) {
  return integral("probe_f_integral", f, a, b, n);
}

// out := f(x) for a function of n numbers with n results.
template <class Real>
void apply(const char* frame, bool (*f)(long, const Real*, Real*), long n, const Real* x, Real* out) {
  zent_e1psh(frame);
  trapped([&] { ask_user(f, n, x, out); });
  zent_e1pop(frame);
}

// ---- The binding's side ----------------------------------------------------------------------------------------------------

// One identifier for each routine and slot: a user function that calls the same routine again replaces it.
ORV_IDENT integral_routine, apply_routine;

double d_integral_fcn(double x) {
  return call_scalar<double>(integral_routine, x);
}
float f_integral_fcn(float x) {
  return call_scalar<float>(integral_routine, x);
}
template <class Real>
bool apply_fcn(long n, const Real* x, Real* out) {
  return call_vector<Real>(apply_routine, n, x, n, out);
}

struct Data {
  long count;
  void* pointer;
};

Data data_of(ORV_VARIABLE* variable) {
  Data data = {};
  ORV_VarGetData(variable, &data.count, &data.pointer, 0);
  return data;
}

bool is(ORV_VARIABLE* variable, int type, const char* message) {
  if (variable->type == type && data_of(variable).count > 0) return true;
  cmast_pop_fcn_name();
  ORV_MessageFromBlock(_ORV_orv_zent_msg_block, ORV_M_ZENT_ERROR, ORV_MSG_RAISE, message);
  return false;
}

template <class Real>
long run_integral(ORV_VARIABLE** argv, int* status) {
  constexpr int type = zent::binding::real_type_code<Real>;
  for (int k : {3, 4, 6}) {
    if (!is(argv[k], type, "PROBE_1: A, B and RESULT must be of the type that PRECISION says")) return 0;
  }
  if (!is(argv[5], ORV_TYP_INT64, "PROBE_1: N must be a 64-bit integer")) return 0;
  const Real a = *static_cast<Real*>(data_of(argv[3]).pointer), b = *static_cast<Real*>(data_of(argv[4]).pointer);
  const long n = *static_cast<long*>(data_of(argv[5]).pointer);
  auto* const out = static_cast<Real*>(data_of(argv[6]).pointer);
  integral_routine = zent::binding::user_routine(argv[2]);

  // Integers and pointers are words, in their order; the two fixed reals go beside them.
  Words words;
  Real result = 0;
  if constexpr (type == ORV_TYP_DOUBLE) {
    words.add(d_integral_fcn).add(n).end();
    if (!guarded([&] { result = words.call<double>(reinterpret_cast<void*>(d_integral), a, b); })) return 0;
  } else {
    words.add(f_integral_fcn).add(n).end();
    if (!guarded([&] { result = words.call<float>(reinterpret_cast<void*>(f_integral), a, b); })) return 0;
  }
  long code;
  if (cmast_opi_clear_errors(1, &code, status, 1) == 0) *out = result;
  return 0;
}

template <class Real>
long run_apply(ORV_VARIABLE** argv, int* status) {
  constexpr int type = zent::binding::real_type_code<Real>;
  for (int k : {3, 4}) {
    if (!is(argv[k], type, "PROBE_2: X and RESULT must be of the type that PRECISION says")) return 0;
  }
  const Data x = data_of(argv[3]), out = data_of(argv[4]);
  apply_routine = zent::binding::user_routine(argv[2]);
  const long n = x.count < out.count ? x.count : out.count;
  const bool done = guarded(
      [&] { apply("probe_apply", apply_fcn<Real>, n, static_cast<const Real*>(x.pointer), static_cast<Real*>(out.pointer)); });
  if (!done) return 0;
  long code;
  cmast_opi_clear_errors(1, &code, status, 1);
  return 0;
}

using Run = long (*)(ORV_VARIABLE**, int*);

// Clears nothing and owns nothing: a host error may leave by a jump from any line.
long enter(const char* label, ORV_VARIABLE** argv, Run in_double, Run in_single) {
  const long failed = cmast_init(label);
  if (failed != 0) return failed;
  if (!is(argv[0], ORV_TYP_INT64, "PRECISION must be a 64-bit integer")) return 0;
  if (!is(argv[1], ORV_TYP_INT64, "STATUS must be a 64-bit integer")) return 0;
  if (!is(argv[2], ORV_TYP_STRING, "FUNCTION must be the name of a function")) return 0;
  const int precision = *static_cast<int*>(data_of(argv[0]).pointer);
  auto* const status = static_cast<int*>(data_of(argv[1]).pointer);
  return precision == ORV_TYP_DOUBLE ? in_double(argv, status) : in_single(argv, status);
}

long probe_1(int, ORV_VARIABLE** argv, char*) {
  return enter("PROBE_1", argv, run_integral<double>, run_integral<float>);
}
long probe_2(int, ORV_VARIABLE** argv, char*) {
  return enter("PROBE_2", argv, run_apply<double>, run_apply<float>);
}

constexpr ORV_SYSRTN routines[] = {{probe_1, "PROBE_1", 7, 7, 0, nullptr}, {probe_2, "PROBE_2", 5, 5, 0, nullptr}};

}  // namespace

// A program that holds several modules renames their entry points.
#ifndef PROBE_LOAD
#define PROBE_LOAD ORV_Load
#endif
extern "C" ZENT_API int PROBE_LOAD(void) {
  return ORV_SysRtnAdd(routines, 0, 2);
}
