// Product Gauss integration over a box.
#include <algorithm>
#include <cstring>

#include "math/quadrature/hyper_rect_box.hpp"
#include "math/quadrature/hyper_rect_tables.hpp"
#include "runtime/envelope.hpp"

namespace zent::hyper_rect {

namespace {

inline constexpr long most_dimensions = 20, most_levels = 8;

// The rule with 2^level points laid into every dimension: ascending abscissas and weights of the unit half-length.
template <class Real>
struct Line {
  long points;
  Real node[1 << most_levels], weight[1 << most_levels];

  void set(long level) {
    points = 1L << level;
    const long half = points / 2;
    const double *nodes = t + half - 1, *weights = w + half - 1;
    for (long j = 0; j < half; ++j) {
      node[half + j] = static_cast<Real>(nodes[j]);
      node[half - 1 - j] = -node[half + j];
      weight[half + j] = weight[half - 1 - j] = static_cast<Real>(weights[j]);
    }
  }
};

template <class Real>
struct Box {
  long ndim;
  Real center[most_dimensions], half[most_dimensions];
  Real volume;

  Box(long n, const Real* a, const Real* b) : ndim(n), volume(1) {
    for (long d = 0; d < n; ++d) {
      center[d] = a[d] / 2 + b[d] / 2;
      half[d] = b[d] / 2 - a[d] / 2;
      volume *= half[d];
    }
  }
};

// The sum of the product rule by an odometer, the last dimension fastest. The sum over a line goes with the line's weight into
// the sum of the dimension before it, so the rounding errors grow with the length of a line only.
template <class Real>
Real l_product(const Request<Real>& q, const Box<Real>& box, const Line<Real>& line) {
  const long last = box.ndim - 1;
  long index[most_dimensions] = {};
  Real sum[most_dimensions] = {}, x[most_dimensions], handed[most_dimensions];
  for (long d = 0; d <= last; ++d) x[d] = box.center[d] + box.half[d] * line.node[0];
  for (;;) {
    for (long i = 0; i < line.points; ++i) {
      x[last] = box.center[last] + box.half[last] * line.node[i];
      std::memcpy(handed, x, sizeof(Real) * static_cast<std::size_t>(box.ndim));
      sum[last] += line.weight[i] * q.at(box.ndim, handed);
      if (q.given_up()) return Machine<Real>::not_a_number;
    }
    long d = last;
    while (d > 0) {
      sum[d - 1] += line.weight[index[d - 1]] * sum[d];
      sum[d] = 0;
      --d;
      if (++index[d] < line.points) break;
      index[d] = 0;
      x[d] = box.center[d] + box.half[d] * line.node[0];
      if (d == 0) return sum[0];
    }
    if (last == 0) return sum[0];
    x[d] = box.center[d] + box.half[d] * line.node[index[d]];
  }
}

// Would the products up to this level take more evaluations than allowed? In logarithms, since their number may overflow.
bool beyond(long level, long ndim, long max_evals) {
  const double n = static_cast<double>(ndim);
  return std::log(std::ldexp(2.0, static_cast<int>(level))) * n - std::log(std::ldexp(1.0, static_cast<int>(ndim)) - 1) >
         std::log(static_cast<double>(max_evals));
}

template <class Real>
Real l_q3nd(const Request<Real>& q, long ndim, const Real* a, const Real* b) {
  const Box<Real> box(ndim, a, b);
  Line<Real> line;
  Real abserr = Machine<Real>::largest, before = 0;
  for (long level = 1; level <= most_levels && !beyond(level, ndim, q.max_evals); ++level) {
    line.set(level);
    const Real value = box.volume * l_product(q, box, line);
    if (q.given_up()) return Machine<Real>::not_a_number;
    if (level > 1) abserr = std::abs(value - before);
    if (q.err_est != nullptr) *q.err_est = abserr;
    if (!std::isfinite(value)) break;
    if (level > 1 && q.reached(abserr, value)) return value;
    before = value;
  }
  if (q.err_est != nullptr) *q.err_est = abserr;
  raise<Math>(4, MATH_NOT_CONVERGENT, {.i = {q.max_evals}});
  return Machine<Real>::not_a_number;
}

template <class Real>
Real l_int_fcn_hyper_rect(Real (*fcn)(long, Real*), long ndim, const Real* a, const Real* b, Options& options) {
  const Real tolerance = std::sqrt(Machine<Real>::epsilon);
  Request<Real> q = {.fcn = fcn, .err_abs = tolerance, .err_rel = tolerance, .max_evals = 1000000};
  while (const int code = options.code()) {
    if (!take_option(code, options, q) && !options.unknown<Math>(code)) break;
  }
  const bool served = ndim >= 1 && ndim <= most_dimensions;
  if (!served) raise<Math>(5, MATH_DIM_OF_HYPER_REC, {.i = {ndim}});
  check_request(q, a, b);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  if (std::log(static_cast<double>(q.max_evals)) > static_cast<double>(ndim) * std::log(256.0)) {
    raise<Math>(3, MATH_MAX_EVALS_TOO_LARGE, {.i = {q.max_evals, ndim}});
  }
  return l_q3nd(q, ndim, a, b);
}

}  // namespace

}  // namespace zent::hyper_rect

#define ZENT_FORM(P, Real)                                                                                    \
  extern "C" Real zent_##P##_int_fcn_hyper_rect(Real (*fcn)(long, Real*), long ndim, Real* a, Real* b, ...) { \
    ZENT_OPTIONS(options, b, 4);                                                                              \
    Real value = zent::public_call<zent::Math>("zent_" #P "_int_fcn_hyper_rect", [&] {                        \
      return zent::hyper_rect::l_int_fcn_hyper_rect<Real>(fcn, ndim, a, b, options);                          \
    });                                                                                                       \
    ZENT_OPTIONS_END(options);                                                                                \
    return value;                                                                                             \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
