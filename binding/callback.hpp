// User functions: calls from the library into a routine of the host's language, and the way back when it fails.
//
// A wrapper keeps the identifier of the user's routine in a static of its unit, one for each slot, and gives the library a
// function of its own for each slot and precision, which goes through UserCall. Around the library call stands guarded().
#pragma once

#include <setjmp.h>

#include <cstring>
#include <type_traits>

#include "binding/cmast.h"
#include "zent.h"
#include "zents.h"

namespace zent::binding {

template <class Real>
inline constexpr int real_type_code = std::is_same_v<Real, double> ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT;

// The identifier under which the host finds the user's routine.
inline ORV_IDENT user_routine(ORV_VARIABLE* name) {
  return ORV_IdentHash(ORV_VarGetString(name), 0, 1, 2, 0);
}

// One call of a user routine with up to `most` arguments. No destructor: a host error leaves by a jump, and the temporaries of
// the abandoned call are the host's to reclaim.
template <int most>
class UserCall {
 public:
  explicit UserCall(ORV_IDENT routine) : routine_(routine) {}
  UserCall(const UserCall&) = delete;
  UserCall& operator=(const UserCall&) = delete;

  UserCall& scalar(double x) {
    ORV_VARIABLE& variable = local();
    variable.type = ORV_TYP_DOUBLE;
    variable.value.d = x;
    return *this;
  }
  UserCall& scalar(float x) {
    ORV_VARIABLE& variable = local();
    variable.type = ORV_TYP_FLOAT;
    variable.value.f = x;
    return *this;
  }
  UserCall& scalar(long x) {
    ORV_VARIABLE& variable = local();
    variable.type = ORV_TYP_INT64;
    variable.value.l64 = x;
    return *this;
  }
  // The library's own array, not copied: the routine sees it only during the call.
  UserCall& array(int n_dims, const long* dims, int type, const void* data) {
    argument_[count_++] = ORV_ImportArray(n_dims, dims, type, const_cast<void*>(data), nullptr, nullptr);
    return *this;
  }
  template <class Real>
  UserCall& vector(long n, const Real* x) {
    return array(1, &n, real_type_code<Real>, x);
  }
  // An output of a procedure, undefined until the routine sets it.
  UserCall& output() {
    local();
    return *this;
  }

  // Calls a function and takes its result as a scalar; `none` where there is none, from a host that returns.
  template <class Real>
  Real result(double none = 0) {
    ORV_VARIABLE* const value = call(1);
    const double number = value != nullptr ? ORV_DoubleScalar(value) : none;
    if (value != nullptr && (value->flags & ORV_V_TEMP)) ORV_Deltmp(value);
    release_arguments();
    return static_cast<Real>(number);
  }

  // Calls a function and copies its n elements. Any other count raises the message for it; false then, from a host that returns.
  template <class Real>
  bool result(long n, Real* out) {
    ORV_VARIABLE* const value = call(1);
    const bool fits = value != nullptr && copy(value, n, out);
    if (value != nullptr && (value->flags & ORV_V_TEMP)) ORV_Deltmp(value);
    release_arguments();
    return fits || wrong_count();
  }

  // Calls a procedure. Its outputs are then read one by one with get(), and finish() releases all arguments.
  void procedure() {
    call(0);
  }
  template <class Real>
  bool get(int argument, long n, Real* out) {
    ORV_VARIABLE* const value = argument_[argument];
    if (value == nullptr) return false;
    if (value->type == ORV_TYP_UNDEF) {
      finish();
      ORV_MessageVE_UNDEFVAR(value, ORV_MSG_RAISE);
      return false;
    }
    if (copy(value, n, out)) return true;
    finish();
    return wrong_count();
  }
  void finish() {
    release_arguments();
  }

 private:
  ORV_VARIABLE& local() {
    ORV_VARIABLE& variable = local_[count_];
    argument_[count_++] = &variable;
    return variable;
  }

  ORV_VARIABLE* call(unsigned char kind) {
    for (int k = 0; k < count_; ++k) {
      if (argument_[k] == nullptr) return nullptr;  // not made: only a host that returns from a raise lets this be seen
    }
    ORV_CALLREC record;
    std::memset(&record, 0, sizeof record);
    record.kind = kind;
    record.argc = count_;
    record.ident = routine_;
    record.argv = argument_;
    // Where the routine returns, what failed inside it the script has caught, or the host would have abandoned the library call:
    // nothing that climbed into the frame of that call counts.
    zent_frame_state math, stat;
    zent_frame_mark(&math);
    zents_frame_mark(&stat);
    ORV_InterpCallFromSysproc(&record);
    zent_frame_release(&math);
    zents_frame_release(&stat);
    return record.result;
  }

  template <class Real>
  static bool copy(ORV_VARIABLE* value, long n, Real* out) {
    ORV_VARIABLE* const converted = ORV_VarTypeConvert(value, real_type_code<Real>);
    if (converted == nullptr) return false;
    long count = 0;
    void* data = nullptr;
    ORV_VarGetData(converted, &count, &data, 0);
    const bool fits = count == n && (n == 0 || data != nullptr);
    if (fits && n > 0) std::memcpy(out, data, static_cast<std::size_t>(n) * sizeof(Real));
    if (converted != value && (converted->flags & ORV_V_TEMP)) ORV_Deltmp(converted);
    return fits;
  }

  static bool wrong_count() {
    ORV_MessageFromBlock(_ORV_orv_zent_msg_block, ORV_M_ZENT_WRGNUMELEM, ORV_MSG_RAISE);
    return false;
  }

  void release_arguments() {
    for (int k = 0; k < count_; ++k) {
      ORV_VARIABLE* const variable = argument_[k];
      if (variable == nullptr) continue;
      if (variable->flags & ORV_V_DYNAMIC) {
        ORV_Delvar(variable);
      } else if (variable->flags & ORV_V_TEMP) {
        ORV_Deltmp(variable);
      }
    }
    count_ = 0;
  }

  ORV_IDENT routine_;
  int count_ = 0;
  ORV_VARIABLE* argument_[most] = {};
  ORV_VARIABLE local_[most] = {};
};

// A user function of scalars.
template <class Real, class... Arguments>
Real call_scalar(ORV_IDENT routine, Arguments... x) {
  UserCall<sizeof...(Arguments)> call(routine);
  (call.scalar(x), ...);
  return call.template result<Real>();
}

// A user function of a vector of n with m results.
template <class Real>
bool call_vector(ORV_IDENT routine, long n, const Real* x, long m, Real* out) {
  UserCall<1> call(routine);
  call.vector(n, x);
  return call.template result<Real>(m, out);
}

// Runs a library call that may enter user functions. A host error in one of them jumps here: the traps, jump buffers and work
// memory of the library calls it passed over are put back, the wrapper's label is popped, `cleanup` runs, and the error goes on
// to the host. The frames stay on the library's error stack. False when there is nowhere to go on to: the wrapper then returns 0
// at once.
//
// `body` and `cleanup` capture by reference; what `cleanup` reads of the body's work must be volatile.
template <class Body, class Cleanup>
__attribute__((noinline)) bool guarded(Body&& body, Cleanup&& cleanup) {
  static_assert(std::is_trivially_destructible_v<std::remove_reference_t<Body>> &&
                std::is_trivially_destructible_v<std::remove_reference_t<Cleanup>>);
  struct {
    jmp_buf* saved;
    zent_trap_state math, stat;
    jmp_buf here;
  } state;
  state.saved = ORV_MessageGJE();
  zent_trap_mark(&state.math);
  zents_trap_mark(&state.stat);
  const int value = setjmp(state.here);
  if (value == 0) {
    ORV_MessageSJE(&state.here);
    body();
    ORV_MessageSJE(state.saved);
    return true;
  }
  ORV_MessageSJE(state.saved);
  zent_trap_release(&state.math);
  zents_trap_release(&state.stat);
  cmast_pop_fcn_name();
  cleanup();
  if (state.saved != nullptr) longjmp(*state.saved, value);
  return false;
}

template <class Body>
bool guarded(Body&& body) {
  return guarded(body, [] {});
}

}  // namespace zent::binding
