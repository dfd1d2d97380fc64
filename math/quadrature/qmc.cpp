// Quasi-Monte Carlo integration over a box, on the points of a Faure sequence.
#include <algorithm>
#include <cstring>

#include "math/quadrature/hyper_rect_box.hpp"
#include "math/random/faure.hpp"
#include "runtime/envelope.hpp"

namespace zent::hyper_rect {

namespace {

inline constexpr long own_choice = -999;              // of base and skip: the sequence's
inline constexpr long settling = 1000, block = 1000;  // points before the fit begins, and between two tests

// The record in the work memory of this call, so that a host error inside the user's function cannot lose it.
zent_faure* l_start(long ndim, long base, long skip) {
  faure::l_check<Math>(ndim, base != own_choice, base, skip != own_choice, skip);
  if (failed<Math>()) return nullptr;
  if (base == own_choice) base = ndim > 2147483647 ? 0 : faure::next_prime(ndim);
  const long digits = base == 0 ? 0 : static_cast<long>(std::log(2147483647.0) / std::log(static_cast<double>(base)));
  zent_faure* f = digits < 1 ? nullptr : faure::l_record<Math>(ndim, digits);
  long* inverse = f == nullptr ? nullptr : scratch<Math, long>(ndim);
  if (inverse == nullptr) {
    raise_out_of_memory<Math>({ndim}, {"ndim"});
    return nullptr;
  }
  f->base = base;
  f->scale = std::pow(static_cast<double>(base), static_cast<double>(digits));
  faure::compute_parameters(*f, inverse);
  f->skip =
      skip != own_choice ? skip : static_cast<long>(std::pow(static_cast<double>(base), static_cast<double>(digits / 2 - 1)));
  faure::l_skip(*f, f->skip);
  return f;
}

// The line through the estimates over u = 1/n.
struct Fit {
  double u = 0, e = 0, uu = 0, ue = 0;
  long m = 0;

  void add(double reciprocal, double estimate) {
    u += reciprocal;
    e += estimate;
    uu += reciprocal * reciprocal;
    ue += reciprocal * estimate;
    ++m;
  }
  // The slope over the count, relative to the intercept. While that is no better than a hundredth, the slope stands for itself:
  // of an integral of 0 both become small together, and their ratio never does.
  double error() const {
    const double count = static_cast<double>(m);
    const double slope = (count * ue - u * e) / (count * uu - u * u), intercept = (e - u * slope) / count;
    const double share = std::abs(slope / count);
    return std::abs(intercept) <= 100 * share ? share : share / std::abs(intercept);
  }
};

// x holds ndim numbers.
template <class Real>
Real l_q3nd(const Request<Real>& q, long ndim, const Real* a, const Real* b, zent_faure& sequence, Real* x) {
  double volume = 1, sum = 0;
  for (long d = 0; d < ndim; ++d) volume *= static_cast<double>(b[d]) - static_cast<double>(a[d]);
  Fit fit;
  for (long n = 1;; ++n) {
    faure::l_next_point(sequence, x);
    for (long d = 0; d < ndim; ++d) x[d] = a[d] + (b[d] - a[d]) * x[d];
    sum += static_cast<double>(q.at(ndim, x));
    if (q.given_up()) return Machine<Real>::not_a_number;
    if (n <= settling) continue;
    const double reciprocal = 1 / static_cast<double>(n), estimate = volume * sum * reciprocal;
    fit.add(reciprocal, estimate);
    const bool last = fit.m >= q.max_evals, test = n % block == 0;
    if (!last && !test) continue;
    const Real abserr = static_cast<Real>(fit.error()), value = static_cast<Real>(estimate);
    if (q.err_est != nullptr) *q.err_est = abserr;
    if (last || !std::isfinite(estimate)) break;
    if (q.reached(abserr, value)) return value;
  }
  raise<Math>(4, MATH_NOT_CONVERGENT, {.i = {q.max_evals}});
  return Machine<Real>::not_a_number;
}

template <class Real>
Real l_int_fcn_qmc(Real (*fcn)(long, Real*), long ndim, const Real* a, const Real* b, Options& options) {
  Request<Real> q = {.fcn = fcn, .err_abs = Real(1e-4), .err_rel = Real(1e-4), .max_evals = 2147483647};
  long base = own_choice, skip = own_choice;
  while (const int code = options.code()) {
    if (code == ZENT_BASE) {
      base = options.integer();
    } else if (code == ZENT_SKIP) {
      skip = options.integer();
    } else if (!take_option(code, options, q) && !options.unknown<Math>(code)) {
      break;
    }
  }
  check_request(q, a, b);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  zent_faure* sequence = l_start(ndim, base, skip);
  if (sequence == nullptr) return Machine<Real>::not_a_number;
  Real* x = scratch<Math, Real>(ndim);
  if (x == nullptr) {
    raise_out_of_memory<Math>({ndim}, {"ndim"});
    return Machine<Real>::not_a_number;
  }
  return l_q3nd(q, ndim, a, b, *sequence, x);
}

}  // namespace

}  // namespace zent::hyper_rect

#define ZENT_FORM(P, Real)                                                                                                       \
  extern "C" Real zent_##P##_int_fcn_qmc(Real (*fcn)(long, Real*), long ndim, Real* a, Real* b, ...) {                           \
    ZENT_OPTIONS(options, b, 4);                                                                                                 \
    Real value = zent::public_call<zent::Math>("zent_" #P "_int_fcn_qmc",                                                        \
                                               [&] { return zent::hyper_rect::l_int_fcn_qmc<Real>(fcn, ndim, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                   \
    return value;                                                                                                                \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
