// Real zeros of a function of one variable.
#include <cmath>

#include "math/roots/search_options.hpp"
#include "runtime/envelope.hpp"
#include "runtime/user_call.hpp"
#include "zent.h"

namespace zent::roots {

namespace {

template <class Real>
struct Function {
  Real (*plain)(Real);
  Real (*with_data)(Real, void*);
  void* data;

  // A terminal error came out of the function: the searches end without further calls, and nothing is returned.
  static bool lost() {
    return stands_above<Math>(4);
  }
  Real operator()(Real x) const {
    if (lost()) [[unlikely]]
      return Machine<Real>::not_a_number;
    return user_call<Math>([&] { return with_data != nullptr ? with_data(x, data) : plain(x); });
  }
};

template <class Real>
struct FunctionOptions : SearchOptions<Real> {
  Real err_abs = this->err_rel, eps = this->err_rel, eta = Real(0.01);
  long num_roots = 1;
  long** info_pointer = nullptr;
  long* info_user = nullptr;
};

template <class Real>
void parse(Options& list, Function<Real>& fcn, FunctionOptions<Real>& o) {
  while (const int code = list.code()) {
    if (o.take(code, list)) continue;
    switch (code) {
      case ZENT_ERR_ABS:
        o.err_abs = list.real<Real>();
        break;
      case ZENT_ERR_ABS_ADR:
        o.err_abs = *list.pointer<Real>();
        break;
      case ZENT_ETA:
        o.eta = list.real<Real>();
        break;
      case ZENT_ETA_ADR:
        o.eta = *list.pointer<Real>();
        break;
      case ZENT_EPS:
        o.eps = list.real<Real>();
        break;
      case ZENT_EPS_ADR:
        o.eps = *list.pointer<Real>();
        break;
      case ZENT_NUM_ROOTS:
        o.num_roots = list.integer();
        break;
      case ZENT_INFO_USER_PTR:
        o.info_pointer = list.pointer<long*>();
        break;
      case ZENT_INFO_USER:
        o.info_user = list.pointer<long>();
        break;
      case ZENT_FCN_W_DATA:
        fcn.with_data = list.function<Real (*)(Real, void*)>();
        fcn.data = list.pointer<void>();
        break;
      default:
        if (!list.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
void check(const Function<Real>& fcn, const FunctionOptions<Real>& o) {
  long position = 0;
  if (fcn.plain == nullptr && fcn.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  zent_c1iarg(o.num_roots, "num_roots", 1, -1, &position);
  zent_c1iarg(o.max_evals, "max_evals", 1, -1, &position);
}

// The search for one zero: the last three points through their deflated values, the step h to the newest and its ratio lambda to
// the step before.
template <class Real>
class Search {
 public:
  Search(const Function<Real>& fcn, const FunctionOptions<Real>& options, const Real* found, long n_found, Real guess)
      : fcn_(fcn), o_(options), found_(found), n_found_(n_found), guess_(guess) {}

  // False when the limit came first; `point` and `count` tell the outcome either way.
  bool run() {
    start(0);
    for (;;) {
      if (count + 1 >= o_.max_evals || Function<Real>::lost()) return false;
      Real deflated;
      const Real f = fcn_(point);
      if (!deflate(f, deflated)) continue;
      ++count;
      nudges_ = 0;
      if (std::abs(f) < o_.err_abs && std::abs(deflated) < o_.err_abs) return true;
      if (n_points_ < 3) {
        if (!collect(deflated)) continue;
      } else if (!(std::abs(deflated) < std::abs(10 * value_[2])) || !std::isfinite(deflated)) {
        lambda_ /= 2;
        h_ /= 2;
        point -= h_;
        continue;
      } else {
        value_[0] = value_[1];
        value_[1] = value_[2];
        value_[2] = deflated;
      }
      step();
      if (std::abs(h_) <= std::abs(point) * o_.err_rel) return true;
    }
  }

  Real point = 0;
  long count = 0;

 private:
  void start(int k) {
    constexpr Real offset[3] = {-1, 1, 0}, factor[3] = {Real(0.9), Real(1.1), 1};
    point = guess_ != 0 ? guess_ * factor[k] : offset[k];
  }

  // Divides by the distances to the zeros before. False when the point is too close to one of them and has been moved. Moving is
  // free as long as it can help: as many times in a row as there are zeros.
  bool deflate(Real f, Real& deflated) {
    deflated = f;
    for (long j = 0; j < n_found_; ++j) {
      const Real distance = point - found_[j];
      if (std::abs(distance) < o_.eps) {
        const Real moved = point + o_.eta;
        if (moved == point || nudges_ >= o_.num_roots) {
          ++count;
        } else {
          ++nudges_;
        }
        point = moved;
        return false;
      }
      deflated /= distance;
    }
    return true;
  }

  // One of the first three points. True when all three stand. Where the value is not finite another point is tried: in place of
  // the first two on the other side of the guess, half as far; in place of the guess halfway to the first.
  bool collect(Real deflated) {
    if (!std::isfinite(deflated)) {
      point = n_points_ < 2 ? guess_ - (point - guess_) / 2 : point + (place_[0] - point) / 2;
      drawn_ = true;
      return false;
    }
    place_[n_points_] = point;
    value_[n_points_++] = deflated;
    if (n_points_ < 3) {
      start(n_points_);
      return false;
    }
    lambda_ = Real(-0.5);
    h_ = guess_ != 0 ? Real(-0.1) * guess_ : -1;
    const Real first = place_[1] - place_[0], second = place_[2] - place_[1];
    if (drawn_ && first != 0 && second != 0) {
      h_ = second;
      lambda_ = second / first;
    }
    return true;
  }

  // To the nearer zero of the parabola through the three points, or to its vertex.
  void step() {
    // The step depends on ratios of the values alone: a common power of two keeps their squares in range.
    const Real top = std::fmax(std::abs(value_[0]), std::fmax(std::abs(value_[1]), std::abs(value_[2])));
    const int shift = top > 0 ? -std::ilogb(top) : 0;
    const Real f0 = std::ldexp(value_[0], shift), f1 = std::ldexp(value_[1], shift), f2 = std::ldexp(value_[2], shift);
    const Real den = 1 + lambda_;
    const Real g = f0 * lambda_ * lambda_ - f1 * den * den + f2 * (den + lambda_);
    const Real discriminant = g * g - 4 * f2 * lambda_ * den * (f0 * lambda_ - f1 * den + f2);
    const Real root = discriminant <= 0 ? 0 : std::sqrt(discriminant);
    Real den2 = std::abs(g - root) > std::abs(g + root) ? g - root : g + root;
    if (den2 == 0) den2 = std::ldexp(Real(1), shift);  // the 1 of the values as they were
    const Real lambda = -2 * den * f2 / den2, h = h_ * lambda;
    if (std::isfinite(lambda) && std::isfinite(point + h)) {
      lambda_ = lambda;
      h_ = h;
    } else {
      lambda_ = Real(-0.5);  // halfway back
      h_ /= -2;
    }
    point += h_;
  }

  const Function<Real>& fcn_;
  const FunctionOptions<Real>& o_;
  const Real* found_;
  long n_found_;
  Real guess_;
  long nudges_ = 0;
  int n_points_ = 0;
  bool drawn_ = false;
  Real place_[3] = {}, value_[3] = {};
  Real lambda_ = 0, h_ = 0;
};

template <class Real>
void l_zreal(const Function<Real>& fcn, const FunctionOptions<Real>& o, long* info, Real* roots) {
  for (long k = 0; k < o.num_roots; ++k) {
    Search<Real> search(fcn, o, roots, k, o.guess != nullptr ? o.guess[k] : 0);
    const bool converged = search.run();
    roots[k] = search.point;
    info[k] = converged ? search.count : o.max_evals + 1;
    if (Function<Real>::lost()) return;
    if (!converged) raise<Math>(3, MATH_NO_CONVERGE_MAX_ITER, {.i = {o.max_evals, o.num_roots}});
  }
}

template <class Real>
Real* l_zeros_fcn(Real (*plain)(Real), Options& list) {
  Function<Real> fcn = {plain, nullptr, nullptr};
  FunctionOptions<Real> o = {{.max_evals = 100}};
  parse(list, fcn, o);
  check(fcn, o);
  if (failed<Math>()) return nullptr;
  Real* roots = o.user != nullptr ? o.user : result<Math, Real>(o.num_roots);
  long* info = o.info_pointer != nullptr ? result<Math, long>(o.num_roots) : scratch<Math, long>(o.num_roots);
  // Guesses and zeros may share the caller's storage.
  Real* guess = o.guess == nullptr ? nullptr : scratch<Math, Real>(o.num_roots);
  if (roots == nullptr || info == nullptr || (o.guess != nullptr && guess == nullptr)) {
    raise_out_of_memory<Math>({o.num_roots}, {"num_roots"});
    return nullptr;
  }
  for (long k = 0; k < o.num_roots && guess != nullptr; ++k) guess[k] = o.guess[k];
  o.guess = guess;
  l_zreal(fcn, o, info, roots);
  if (fcn.lost()) return nullptr;
  for (long k = 0; k < o.num_roots && o.info_user != nullptr; ++k) o.info_user[k] = info[k];
  if (o.info_pointer != nullptr) {
    keep<Math>(info);
    *o.info_pointer = info;
  }
  if (o.user == nullptr) keep<Math>(roots);
  return roots;
}

}  // namespace

}  // namespace zent::roots

#define ZENT_FORM(P, Real)                                                                                                    \
  extern "C" Real* zent_##P##_zeros_fcn(Real (*fcn)(Real), ...) {                                                             \
    ZENT_OPTIONS(options, fcn, 1);                                                                                            \
    Real* x = zent::public_call<zent::Math>("zent_" #P "_zeros_fcn", [&] { return zent::roots::l_zeros_fcn(fcn, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                \
    return x;                                                                                                                 \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
