// Powell's hybrid method: Newton steps within a trust region, bent towards the gradient where they leave it; between Jacobians
// the QR factors follow the steps by rank-one updates (Powell 1970; Broyden 1965; More, Garbow and Hillstrom 1980).
#pragma once

#include <algorithm>
#include <cmath>

#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"
#include "runtime/user_call.hpp"

namespace zent::roots {

template <class Real>
struct System {
  using Plain = void (*)(long, Real*, Real*);
  using WithData = void (*)(long, Real*, Real*, void*);
  Plain plain = nullptr, jacobian = nullptr;
  WithData with_data = nullptr, jacobian_with_data = nullptr;
  void *data = nullptr, *jacobian_data = nullptr;

  bool has_jacobian() const {
    return jacobian != nullptr || jacobian_with_data != nullptr;
  }
  // A fatal error that came out of a function is the end: what is not a number ends every search.
  void evaluate(long n, Real* x, Real* f) const {
    user_call<Math>([&] { with_data != nullptr ? with_data(n, x, f, data) : plain(n, x, f); });
    if (stands_above<Math>(3)) [[unlikely]]
      f[0] = Machine<Real>::not_a_number;
  }
  void differentiate(long n, Real* x, Real* fjac) const {
    user_call<Math>(
        [&] { jacobian_with_data != nullptr ? jacobian_with_data(n, x, fjac, jacobian_data) : jacobian(n, x, fjac); });
    if (stands_above<Math>(3)) [[unlikely]]
      fjac[0] = Machine<Real>::not_a_number;
  }
};

// A plane rotation of each of the n - 1 leading columns with the last one.
template <class Real>
struct Turn {
  Real c, s;
};

enum class Ending { none, converged, limit, tolerance, standstill };

// Short vectors are the rule here: below this length a loop in place costs less than the call of a kernel.
inline constexpr long short_vector = 12;

template <class Real>
inline Real dot(long n, const Real* x, const Real* y) {
  if (n > short_vector) return fast::dot(n, x, 1, y, 1);
  Real sum = 0;
  for (long i = 0; i < n; ++i) sum += x[i] * y[i];
  return sum;
}
template <class Real>
inline void add(long n, Real a, const Real* x, Real* y) {
  if (n > short_vector) return fast::axpy(n, a, x, 1, y, 1);
  for (long i = 0; i < n; ++i) y[i] += a * x[i];
}
template <class Real>
inline Real norm(long n, const Real* x) {
  const Real squares = dot(n, x, x);
  constexpr Real low = Machine<Real>::smallest / (Machine<Real>::epsilon * Machine<Real>::epsilon);
  return squares >= low && squares <= Machine<Real>::largest ? std::sqrt(squares) : fast::nrm2(n, x, 1);
}
template <class Real>
inline bool all_finite(long n, const Real* x) {
  Real zero = 0;  // 0 times what is not finite is not 0
  for (long i = 0; i < n; ++i) zero += 0 * x[i];
  return zero == 0;
}

template <class Real>
class Hybrid {
 public:
  static constexpr Real eps = Machine<Real>::epsilon;

  // One block for all arrays; false when there is no memory or its size overflows.
  bool allocate(const System<Real>& system, long n) {
    long square, total;
    if (__builtin_mul_overflow(n, n, &square) || __builtin_mul_overflow(square, 4, &total)) return false;
    const long packed = (n % 2 == 0) ? n / 2 * (n + 1) : (n + 1) / 2 * n;
    Real* at = scratch<Math, Real>(square + packed + 8 * n + (system.has_jacobian() ? square : 0));
    turn_v_ = scratch<Math, Turn<Real>>(2 * n);
    if (at == nullptr || turn_v_ == nullptr) return false;
    turn_w_ = turn_v_ + n;
    system_ = &system;
    n_ = n;
    for (Real** array : {&x, &f, &diag_, &qtf_, &p_, &trial_, &work_, &trial_f_}) {
      *array = at;
      at += n;
    }
    q_ = at;
    r_ = q_ + square;
    fjac_ = r_ + packed;
    return true;
  }

  Real *x, *f;  // start and result, and f there

  // `limit` bounds the calls of the function.
  Ending run(Real err_rel, long limit) {
    l_start();
    if (!std::isfinite(fnorm_)) return Ending::standstill;
    for (;;) {
      if (!(system_->has_jacobian() ? l_user_jacobian() : l_n4qnf())) return Ending::standstill;
      l_n5qnf();
      if (first_) {
        for (long j = 0; j < n_; ++j) diag_[j] = work_[j] == 0 ? 1 : work_[j];
        xnorm_ = scaled_norm(x);
        delta_ = xnorm_ == 0 ? factor : factor * xnorm_;
      }
      for (long j = 0; j < n_; ++j) diag_[j] = std::fmax(diag_[j], work_[j]);
      l_n6qnf();
      bool renew = false;
      for (bool fresh = true; !renew; fresh = false) {
        const Ending ending = l_n3qnf(err_rel, limit, fresh, renew);
        if (ending != Ending::none) return ending;
      }
    }
  }

 private:
  static constexpr Real factor = 100;

  Real scaled_norm(const Real* v) {
    Real squares = 0;
    for (long j = 0; j < n_; ++j) {
      const Real d = diag_[j] * v[j];
      squares += d * d;
    }
    constexpr Real low = Machine<Real>::smallest / (eps * eps);
    if (squares >= low && squares <= Machine<Real>::largest) return std::sqrt(squares);
    for (long j = 0; j < n_; ++j) work_[j] = diag_[j] * v[j];
    return fast::nrm2(n_, work_, 1);
  }
  long row(long i) const {  // where row i of the packed triangle starts; its first element is the diagonal
    return i * (2 * n_ - i + 1) / 2;
  }

  void l_start() {
    system_->evaluate(n_, x, f);
    calls_ = 1;
    fnorm_ = norm(n_, f);
  }

  // Forward differences into the columns of q. Where f is not finite the point behind is tried. False when it is not either.
  bool l_n4qnf() {
    const Real step = std::sqrt(eps);
    for (long j = 0; j < n_; ++j) {
      const Real kept = x[j];
      Real h = step * std::abs(kept);
      if (h == 0) h = step;
      Real* column = q_ + j * n_;
      for (int side = 0; side < 2; ++side, h = -h) {
        x[j] = kept + h;
        system_->evaluate(n_, x, column);
        x[j] = kept;
        ++calls_;
        for (long i = 0; i < n_; ++i) column[i] = (column[i] - f[i]) / h;
        if (all_finite(n_, column)) break;
        if (side == 1 || stands_above<Math>(3)) return false;
      }
    }
    return true;
  }

  bool l_user_jacobian() {
    system_->differentiate(n_, x, fjac_);
    if (!all_finite(n_ * n_, fjac_)) return false;
    for (long i = 0; i < n_; ++i) {
      for (long j = 0; j < n_; ++j) q_[i + j * n_] = fjac_[i * n_ + j];
    }
    return true;
  }

  // Householder QR of the Jacobian in q: reflectors below the diagonal, R in packed rows, the columns' norms in `work`, Q'f in
  // qtf.
  void l_n5qnf() {
    for (long i = 0; i < n_; ++i) qtf_[i] = f[i];
    for (long j = 0; j < n_; ++j) work_[j] = norm(n_, q_ + j * n_);
    for (long j = 0; j < n_; ++j) {
      Real* v = q_ + j + j * n_;
      const long rest = n_ - j;
      Real length = norm(rest, v);
      if (length != 0) {
        if (v[0] < 0) length = -length;
        for (long i = 0; i < rest; ++i) v[i] /= length;
        v[0] += 1;
        for (long k = j + 1; k < n_; ++k) reflect(rest, v, q_ + j + k * n_);
        reflect(rest, v, qtf_ + j);
      }
      trial_[j] = -length;
    }
    Real* out = r_;
    for (long i = 0; i < n_; ++i) {
      *out++ = trial_[i];
      for (long j = i + 1; j < n_; ++j) *out++ = q_[i + j * n_];
    }
  }
  static void reflect(long n, const Real* v, Real* y) {
    add(n, -dot(n, v, y) / v[0], v, y);
  }

  // Q itself in place of its reflectors.
  void l_n6qnf() {
    for (long j = n_ - 1; j >= 0; --j) {
      Real* v = trial_f_;
      Real* column = q_ + j * n_;
      for (long i = j; i < n_; ++i) v[i] = column[i];
      for (long i = 0; i < n_; ++i) column[i] = 0;
      column[j] = 1;
      if (v[j] == 0) continue;
      for (long k = j; k < n_; ++k) reflect(n_ - j, v + j, q_ + j + k * n_);
    }
  }

  // The step p within the trust region, bent from the Gauss-Newton direction towards the scaled gradient.
  void l_n7qnf() {
    for (long k = n_ - 1; k >= 0; --k) {
      const Real* r = r_ + row(k);
      Real pivot = r[0];
      if (pivot == 0) {
        for (long i = 0; i <= k; ++i) pivot = std::fmax(pivot, std::abs(r_[row(i) + k - i]));
        pivot = pivot == 0 ? eps : eps * pivot;
      }
      p_[k] = (qtf_[k] - dot(n_ - k - 1, r + 1, p_ + k + 1)) / pivot;
    }
    const Real newton = scaled_norm(p_);
    if (newton <= delta_) return;
    Real* g = trial_;
    for (long i = 0; i < n_; ++i) g[i] = 0;
    for (long j = 0; j < n_; ++j) add(n_ - j, qtf_[j], r_ + row(j), g + j);
    for (long j = 0; j < n_; ++j) g[j] /= diag_[j];
    const Real gnorm = norm(n_, g);
    Real cauchy = 0, alpha = delta_ / newton;
    if (gnorm != 0) {
      for (long j = 0; j < n_; ++j) g[j] = (g[j] / gnorm) / diag_[j];
      for (long i = 0; i < n_; ++i) work_[i] = dot(n_ - i, r_ + row(i), g + i);
      const Real length = norm(n_, work_);
      cauchy = (gnorm / length) / length;
      alpha = 0;
      if (cauchy < delta_) {
        const Real bnorm = norm(n_, qtf_), ratio = delta_ / newton, part = cauchy / delta_;
        const Real rest = 1 - part * part;
        Real t = (bnorm / gnorm) * (bnorm / newton) * part;
        t = t - ratio * part * part + std::sqrt((t - ratio) * (t - ratio) + (1 - ratio * ratio) * rest);
        alpha = ratio * rest / t;
      }
    }
    const Real gradient = (1 - alpha) * std::fmin(cauchy, delta_);
    const bool usable = std::isfinite(newton) && std::isfinite(alpha);
    for (long j = 0; j < n_; ++j) p_[j] = usable ? gradient * g[j] + alpha * p_[j] : std::fmin(cauchy, delta_) * g[j];
  }

  // One inner step: trial point, trust region, tests, update of the factors. The second failure in a row asks for a new Jacobian;
  // further ones do not, since the next would be the same.
  Ending l_n3qnf(Real err_rel, long limit, bool fresh, bool& renew) {
    l_n7qnf();
    for (long j = 0; j < n_; ++j) {
      p_[j] = -p_[j];
      trial_[j] = x[j] + p_[j];
    }
    const Real pnorm = scaled_norm(p_);
    if (!std::isfinite(pnorm)) return Ending::standstill;
    if (iteration_ == 1) delta_ = std::fmin(delta_, pnorm);
    first_ = false;
    system_->evaluate(n_, trial_, trial_f_);
    ++calls_;
    const Real fnorm = norm(n_, trial_f_);
    if (!std::isfinite(fnorm)) return l_outside(err_rel, limit, pnorm);

    const Real quotient = fnorm / fnorm_;
    const Real actual = fnorm < fnorm_ ? 1 - quotient * quotient : -1;
    for (long i = 0; i < n_; ++i) work_[i] = qtf_[i] + dot(n_ - i, r_ + row(i), p_ + i);
    const Real linear = norm(n_, work_);
    const Real linear_quotient = linear / fnorm_;
    const Real predicted = linear < fnorm_ ? 1 - linear_quotient * linear_quotient : 0;
    const Real ratio = predicted > 0 ? actual / predicted : 0;
    if (ratio < Real(0.1)) {
      successes_ = 0;
      renew = ++failures_ == 2;
      delta_ /= 2;
    } else {
      failures_ = 0;
      ++successes_;
      if (ratio >= Real(0.5) || successes_ > 1) delta_ = std::fmax(delta_, pnorm / Real(0.5));
      if (std::abs(ratio - 1) <= Real(0.1)) delta_ = pnorm / Real(0.5);
    }
    const bool accepted = ratio >= Real(0.0001);
    const Ending ending = l_test(err_rel, limit, fresh, accepted, pnorm, fnorm, actual);
    if (ending != Ending::none || renew) return ending;
    if (pnorm == 0) return Ending::standstill;
    // qtf + R p stands in `work`: the part of the new f that the factors did not foresee enters by a rank-one change.
    for (long j = 0; j < n_; ++j) {
      const Real sum = dot(n_, q_ + j * n_, trial_f_);
      work_[j] = (sum - work_[j]) / pnorm;
      p_[j] = diag_[j] * ((diag_[j] * p_[j]) / pnorm);
      if (accepted) qtf_[j] = sum;
    }
    l_n8qnf(p_, work_, trial_);
    l_n9qnf();
    return Ending::none;
  }

  // Takes an accepted point over and tells whether to stop. The later reason stands where several hold.
  Ending l_test(Real err_rel, long limit, bool fresh, bool accepted, Real pnorm, Real fnorm, Real actual) {
    if (accepted) {
      for (long j = 0; j < n_; ++j) {
        x[j] = trial_[j];
        f[j] = trial_f_[j];
      }
      // `work` is still needed: the norm of D x must not touch it unless it has to.
      Real squares = 0;
      for (long j = 0; j < n_; ++j) squares += (diag_[j] * x[j]) * (diag_[j] * x[j]);
      xnorm_ = std::sqrt(squares);
      if (!std::isfinite(xnorm_) || squares < Machine<Real>::smallest / eps) {
        for (long j = 0; j < n_; ++j) trial_[j] = diag_[j] * x[j];
        xnorm_ = fast::nrm2(n_, trial_, 1);
      }
      fnorm_ = fnorm;
      ++iteration_;
    }
    ++slow_steps_;
    if (actual >= Real(0.001)) slow_steps_ = 0;
    if (fresh) ++slow_jacobians_;
    if (actual >= Real(0.1)) slow_jacobians_ = 0;
    if (delta_ <= err_rel * xnorm_ || fnorm_ == 0) return Ending::converged;
    Ending ending = Ending::none;
    if (calls_ >= limit) ending = Ending::limit;
    if (Real(0.1) * std::fmax(Real(0.1) * delta_, pnorm) <= eps * xnorm_) ending = Ending::tolerance;
    if (slow_jacobians_ == 5 || slow_steps_ == 10) ending = Ending::standstill;
    return ending;
  }

  // f is not finite at the trial point, so it tells nothing about the Jacobian: only the trust region shrinks.
  Ending l_outside(Real err_rel, long limit, Real pnorm) {
    successes_ = 0;
    delta_ = std::fmin(delta_, pnorm) / 2;
    if (stands_above<Math>(3)) return Ending::standstill;
    if (calls_ >= limit) return Ending::limit;
    return delta_ <= std::fmax(err_rel, eps) * xnorm_ || delta_ == 0 ? Ending::standstill : Ending::none;
  }

  // R := R + v u', the triangle restored by two sweeps of rotations, which are left in the two lists of turns. w is work.
  void l_n8qnf(const Real* u, Real* v, Real* w) {
    const long last = n_ - 1;
    w[last] = r_[row(last)];
    for (long j = last - 1; j >= 0; --j) {
      w[j] = 0;
      turn_v_[j] = {1, 0};
      if (v[j] == 0) continue;
      const Turn<Real> t = turn(v[last], v[j]);
      v[last] = t.s * v[j] + t.c * v[last];
      turn_v_[j] = t;
      rotate(n_ - j, r_ + row(j), w + j, t.c, -t.s);
    }
    add(n_, v[last], u, w);
    for (long j = 0; j < last; ++j) {
      Real* r = r_ + row(j);
      turn_w_[j] = {1, 0};
      if (w[j] == 0) continue;
      turn_w_[j] = turn(r[0], w[j]);
      rotate(n_ - j, r, w + j, turn_w_[j].c, turn_w_[j].s);
    }
    r_[row(last)] = w[last];
  }
  static Turn<Real> turn(Real keep, Real drop) {
    if (std::abs(keep) < std::abs(drop)) {
      const Real cotangent = keep / drop, s = 1 / std::sqrt(1 + cotangent * cotangent);
      return {s * cotangent, s};
    }
    const Real tangent = drop / keep, c = 1 / std::sqrt(1 + tangent * tangent);
    return {c, c * tangent};
  }
  // x := c x + s y, y := c y - s x.
  static void rotate(long n, Real* __restrict x, Real* __restrict y, Real c, Real s) {
    if (n > short_vector) return fast::rot(n, x, 1, y, 1, c, s);
    for (long i = 0; i < n; ++i) {
      const Real t = c * x[i] + s * y[i];
      y[i] = c * y[i] - s * x[i];
      x[i] = t;
    }
  }

  // The same rotations on the columns of Q and on Q'f.
  void l_n9qnf() {
    const long last = n_ - 1;
    Real* bottom = q_ + last * n_;
    for (long j = last - 1; j >= 0; --j) {
      const Turn<Real> t = turn_v_[j];
      if (t.s == 0) continue;
      rotate(n_, q_ + j * n_, bottom, t.c, -t.s);
      rotate(1, qtf_ + j, qtf_ + last, t.c, -t.s);
    }
    for (long j = 0; j < last; ++j) {
      const Turn<Real> t = turn_w_[j];
      if (t.s == 0) continue;
      rotate(n_, q_ + j * n_, bottom, t.c, t.s);
      rotate(1, qtf_ + j, qtf_ + last, t.c, t.s);
    }
  }

  const System<Real>* system_;
  long n_, calls_ = 0;
  Real *diag_, *qtf_, *p_, *trial_, *work_, *trial_f_;
  Real *q_, *r_, *fjac_;
  Turn<Real>*turn_v_, *turn_w_;
  Real fnorm_ = 0, xnorm_ = 0, delta_ = 0;
  int successes_ = 0, failures_ = 0, slow_steps_ = 0, slow_jacobians_ = 0;
  long iteration_ = 1;  // one more than the points accepted
  bool first_ = true;
};

}  // namespace zent::roots
