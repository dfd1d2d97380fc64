// What is integrated: a function of the user with or without data, or one of the library's own.
#pragma once

#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/user_call.hpp"

namespace zent::quadrature {

template <class Half, class Real>
struct Integrand {
  using half = Half;
  using real = Real;
  Real (*plain)(Real);
  Real (*with_data)(Real, void*);  // used when not null
  void* data;
  bool framed;                     // the integrator has a frame, marked while f runs; the support routines have none
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
    if (framed) enter_user<Half>();
  }
  void end() const {
    if (framed) leave_user<Half>(frame);
  }
  // The function raised a fatal error, and further calls would only repeat it.
  bool given_up() const {
    return framed && fatal_stands<Half>();
  }
};

template <class Half, class Real>
constexpr Integrand<Half, Real> user_integrand(Real (*f)(Real), Real (*with_data)(Real, void*) = nullptr, void* data = nullptr) {
  return {f, with_data, data, true};
}
template <class Half, class Real>
constexpr Integrand<Half, Real> bare_integrand(Real (*f)(Real, void*), void* data) {
  return {nullptr, f, data, false};
}

}  // namespace zent::quadrature
