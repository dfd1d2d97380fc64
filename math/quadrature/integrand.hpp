// What is integrated: a function of the user with or without data, or one of the library's own.
#pragma once

#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/user_call.hpp"

namespace zent::quadrature {

// Who stands behind the function. An error of the user's function shows as its own while the frame is marked; a function of the
// library runs in the frame of the integrator; `bare` serves the support routines, which have no frame at all.
enum class Origin : unsigned char { user, library, bare };

// A fatal or terminal error stands in the current frame: the integral is lost.
template <class Half>
inline bool lost() {
  return error_state<Half>.type_word[0] > 3;
}

template <class Half, class Real>
struct Integrand {
  using half = Half;
  using real = Real;
  Real (*plain)(Real);
  Real (*with_data)(Real, void*);  // used when not null
  void* data;
  Origin origin;
  mutable Frame* frame = nullptr;  // of the integrator, while f runs

  // Frames that one call abandoned must neither add up with those of the next nor catch its errors.
  Real operator()(Real x) const {
    const Real value = with_data != nullptr ? with_data(x, data) : plain(x);
    back_to<Half>(frame);
    return value;
  }
  // Around a group of calls within which the library itself raises nothing.
  void begin() const {
    frame = error_state<Half>.top;
    if (origin == Origin::user) enter_user<Half>();
  }
  void end() const {
    if (origin == Origin::user) leave_user<Half>(frame);
  }
  // The function raised a fatal error, and further calls would only repeat it.
  bool given_up() const {
    return origin != Origin::bare && lost<Half>();
  }
};

template <class Half, class Real>
constexpr Integrand<Half, Real> user_integrand(Real (*f)(Real), Real (*with_data)(Real, void*) = nullptr, void* data = nullptr) {
  return {f, with_data, data, Origin::user};
}
template <class Half, class Real>
constexpr Integrand<Half, Real> library_integrand(Real (*f)(Real, void*), void* data) {
  return {nullptr, f, data, Origin::library};
}
template <class Half, class Real>
constexpr Integrand<Half, Real> bare_integrand(Real (*f)(Real, void*), void* data) {
  return {nullptr, f, data, Origin::bare};
}

}  // namespace zent::quadrature
