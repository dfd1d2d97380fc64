// All zeros of a real polynomial: the three-stage algorithm with quadratic factors (Jenkins and Traub 1970; Jenkins 1975, ACM
// Transactions on Mathematical Software 1).
#pragma once

#include "math/roots/poly_scale.hpp"

namespace zent::roots {

template <class Real>
class RealPolynomial {
 public:
  using W = Wide<Real>;
  using C = std::conditional_t<std::is_same_v<Real, float>, zent_f_complex, zent_d_complex>;
  static constexpr Real eta = Machine<Real>::epsilon;

  template <class Half>
  bool allocate(long degree) {
    const long n = degree + 1;
    a_ = scratch<Half, W>(3 * n);
    exponent_ = scratch<Half, int>(n);
    p_ = scratch<Half, Real>(6 * n);
    if (a_ == nullptr || exponent_ == nullptr || p_ == nullptr) return false;
    b_ = a_ + n;
    c_ = b_ + n;
    qp_ = p_ + n;
    k_ = qp_ + n;
    qk_ = k_ + n;
    saved_ = qk_ + n;
    start_ = saved_ + n;
    return true;
  }

  // Coefficients come with the constant first; neither end is 0. False when zeros are missing.
  bool l_zporc(long degree, const Real* coef, ZeroList<C>& list) {
    for (long i = 0; i <= degree; ++i) a_[i] = static_cast<W>(coef[degree - i]);
    left_ = degree;
    StartDirection<Real> direction;
    while (left_ > 2) {
      if (!next_zero(direction)) return false;
      take(list);
      // A zero at the origin turns up where the constant has vanished in the deflation.
      for (; left_ > 0 && a_[left_] == 0; --left_) list.add({0, 0});
    }
    if (left_ > 0) {
      Pair pair = l_z3lrc(left_, a_);
      for (long i = 0; i < left_; ++i) list.add({static_cast<Real>(pair.re[i]), static_cast<Real>(pair.im[i])});
    }
    return true;
  }

 private:
  struct Pair {  // two zeros, the smaller first, or one
    W re[2], im[2];
  };
  enum class Kind { by_c, by_d, factor };  // how the next K is computed; `factor`: the quadratic almost divides K

  // Zeros of a polynomial of degree 1 or 2, coefficients leading first.
  static Pair l_z3lrc(long degree, const W* a) {
    Pair z = {};
    if (degree == 1 || a[2] == 0) {
      z.re[degree - 1] = -a[1] / a[0];
      return z;
    }
    // Scaled by powers of two: the variable so that first and last coefficient are alike, then both to the size of 1.
    const int e0 = exponent_of(a[0]), e2 = exponent_of(a[2]);
    const int k = (e2 - e0) / 2;
    const W c0 = shifted(a[0], -e0), c1 = shifted(a[1], -e0 - k), c2 = shifted(a[2], -e0 - 2 * k);
    const W half = c1 / 2;
    const W discriminant = discriminant_of(c0, half, c2);
    if (discriminant < 0) {
      z.re[0] = z.re[1] = shifted(-half / c0, k);
      z.im[0] = shifted(std::sqrt(-discriminant) / c0, k);
      if (z.im[0] < 0) z.im[0] = -z.im[0];
      z.im[1] = -z.im[0];
    } else {
      const W root = std::sqrt(discriminant);
      const W large = half < 0 ? root - half : -(root + half);
      z.re[1] = shifted(large / c0, k);
      z.re[0] = large == 0 ? 0 : shifted(c2 / large, k);
    }
    return z;
  }

  bool next_zero(StartDirection<Real>& direction) {
    for (long i = 0; i <= left_; ++i) exponent_[i] = exponent_of(a_[i]);
    const long k = variable_exponent(left_, exponent_);
    for (int wider = 0; wider <= last_widening; wider += widening_step) {
      make_image(k + wider);
      if (solve_image(direction)) return true;
      if (dropped_ == 0) return false;
    }
    return false;
  }

  // Without the leading terms that do not matter for the zeros of least modulus.
  void make_image(long k) {
    shift_ = k;
    ImageScale<W> scale(left_, k, image_exponent(left_, k, exponent_));
    for (long i = left_; i >= 0; --i) p_[i] = static_cast<Real>(scale.apply(a_[i]));
    for (long i = 0; i <= left_; ++i) qp_[i] = std::abs(p_[i]);
    dropped_ = negligible_terms(left_, qp_);
    n_ = left_ - dropped_;
    for (long i = 0; i <= n_ && dropped_ > 0; ++i) p_[i] = p_[i + dropped_];
  }

  // False if nothing was found, or a zero so far out that a term left out may matter.
  bool solve_image(StartDirection<Real>& direction) {
    if (n_ > 2) {
      if (!find(direction)) return false;
    } else {
      W small[3];
      for (long i = 0; i <= n_; ++i) small[i] = static_cast<W>(p_[i]);
      const Pair pair = l_z3lrc(n_, small);
      set_zero(pair.re[0], pair.im[0]);
      if (pair.im[0] != 0) {
        count_ = 2;
        re_[1] = re_[0];
        im_[1] = -im_[0];
      }
    }
    bool inside = true;
    for (int i = 0; i < count_; ++i) {
      inside = inside && std::abs(re_[i]) <= image_radius && std::abs(im_[i]) <= image_radius;
    }
    return inside || dropped_ == 0;
  }
  void set_zero(W re, W im) {
    count_ = 1;
    re_[0] = static_cast<Real>(re);
    im_[0] = static_cast<Real>(im);
  }

  // Stages 1 to 3 on the image: one zero or two in re, im.
  bool find(StartDirection<Real>& direction) {
    for (long i = 0; i <= n_; ++i) qp_[i] = std::abs(p_[i]);
    const Real bound = cauchy_bound(n_, qp_);
    no_shift();
    for (long i = 0; i < n_; ++i) start_[i] = k_[i];
    for (int turn = 1; turn <= 20; ++turn) {
      direction.rotate();
      sr_ = bound * direction.x;
      u_ = -2 * sr_;
      v_ = bound * bound;
      if (l_z4orc(20 * turn)) return true;
      for (long i = 0; i < n_; ++i) k_[i] = start_[i];
    }
    return rescue(direction, bound);
  }
  bool rescue(StartDirection<Real>& direction, Real bound) {
    const W tolerance = 4 * static_cast<W>(eta);
    const auto at = [this](long i) { return WideComplex<W>{static_cast<W>(p_[i]), 0}; };
    for (int turn = 0; turn < 20; ++turn) {
      direction.rotate();
      WideComplex<W> z = {static_cast<W>(bound * direction.x), static_cast<W>(bound * direction.y)};
      if (!laguerre(n_, at, tolerance, z)) continue;
      WideComplex<W> real = {z.re, 0};
      const bool on_axis = std::abs(z.im) <= tolerance * std::abs(z.re) ||
                           (std::abs(z.im) < std::abs(z.re) / 64 && laguerre(n_, at, tolerance, real) && real.im == 0);
      set_zero(on_axis ? real.re : z.re, on_axis ? 0 : z.im);
      if (!on_axis) {
        count_ = 2;
        re_[1] = re_[0];
        im_[1] = -im_[0];
      }
      return true;
    }
    return false;
  }

  void no_shift() {
    const long n = n_;
    for (long i = 0; i < n; ++i) k_[i] = static_cast<Real>(n - i) * p_[i] / static_cast<Real>(n);
    bool zero_k = k_[n - 1] == 0;
    for (int step = 0; step < 5; ++step) {
      if (!zero_k) {
        const Real t = -p_[n] / k_[n - 1];
        for (long j = n - 1; j > 0; --j) k_[j] = t * k_[j - 1] + p_[j];
        k_[0] = p_[0];
        zero_k = std::abs(k_[n - 1]) <= std::abs(p_[n - 1]) * eta * 10;
      } else {
        for (long j = n - 1; j > 0; --j) k_[j] = k_[j - 1];
        k_[0] = 0;
        zero_k = k_[n - 1] == 0;
      }
    }
  }

  // Fixed shift, `limit` steps at most, until the sequence of linear or of quadratic factors settles; then the variable shift.
  bool l_z4orc(int limit) {
    Real beta_v = Real(0.25), beta_s = Real(0.25), old_s = sr_, old_v = v_, old_tv = 0, old_ts = 0;
    divide(n_, p_, qp_, a_rem_, b_rem_);
    Kind kind = l_z7orc();
    for (int j = 1; j <= limit; ++j) {
      l_z8orc(kind);
      kind = l_z7orc();
      Real uu, vv;
      estimate(kind, uu, vv);
      const Real ss = k_[n_ - 1] != 0 ? -p_[n_] / k_[n_ - 1] : 0;
      Real tv = 1, ts = 1;
      if (j != 1 && kind != Kind::factor) {
        if (vv != 0) tv = std::abs((vv - old_v) / vv);
        if (ss != 0) ts = std::abs((ss - old_s) / ss);
        const Real tvv = tv < old_tv ? tv * old_tv : 1, tss = ts < old_ts ? ts * old_ts : 1;
        const bool v_settles = tvv < beta_v, s_settles = tss < beta_s;
        if (v_settles || s_settles) {
          if (variable_shift(uu, vv, ss, v_settles, s_settles, s_settles && (!v_settles || tss < tvv), beta_v, beta_s))
            return true;
          divide(n_, p_, qp_, a_rem_, b_rem_);
          kind = l_z7orc();
        }
      }
      old_v = vv;
      old_s = ss;
      old_tv = tv;
      old_ts = ts;
    }
    return false;
  }

  // Linear and quadratic iteration in turns, each tried once where its sequence settles; puts shift and K back if both fail.
  bool variable_shift(Real uu, Real vv, Real s, bool v_settles, bool s_settles, bool linear, Real& beta_v, Real& beta_s) {
    const Real kept_u = u_, kept_v = v_;
    bool v_tried = false, s_tried = false;
    for (long i = 0; i < n_; ++i) saved_[i] = k_[i];
    for (;;) {
      if (linear) {
        bool pair_nearby = false;
        if (l_z6orc(s, pair_nearby)) return true;
        s_tried = true;
        beta_s /= 4;
        linear = false;
        if (pair_nearby) {
          uu = -(s + s);
          vv = s * s;
        } else {
          restore(kept_u, kept_v);
          if (!v_settles || v_tried) return false;
        }
      } else {
        if (l_z5orc(uu, vv)) return true;
        v_tried = true;
        beta_v /= 4;
        restore(kept_u, kept_v);
        if (s_tried || !s_settles) return false;
        linear = true;
      }
    }
  }
  void restore(Real u, Real v) {
    u_ = u;
    v_ = v;
    for (long i = 0; i < n_; ++i) k_[i] = saved_[i];
  }

  // Quadratic iteration from x^2 + u x + v.
  bool l_z5orc(Real u, Real v) {
    bool tried = false;
    Real old_size = 0, change = 0;
    u_ = u;
    v_ = v;
    for (int j = 0;;) {
      const Real half = u_ / 2,
                 discriminant = static_cast<Real>(static_cast<W>(half) * static_cast<W>(half) - static_cast<W>(v_));
      const Real root = std::sqrt(std::abs(discriminant)), far = half < 0 ? root - half : -(root + half);
      const bool complex = discriminant < 0;
      const Real im = complex ? root : 0, other = complex ? -half : far, re = complex ? -half : far == 0 ? 0 : v_ / far;
      // Real zeros of unlike size are left to the linear iteration.
      if (!(std::abs(std::abs(re) - std::abs(other)) <= Real(0.01) * std::abs(other))) return false;
      divide(n_, p_, qp_, a_rem_, b_rem_);
      const Real size = std::abs(a_rem_ - re * b_rem_) + std::abs(im * b_rem_);
      const Real zm = std::sqrt(std::abs(v_)), t = -re * b_rem_;
      Real error = 2 * std::abs(qp_[0]);
      for (long i = 1; i < n_; ++i) error = error * zm + std::abs(qp_[i]);
      error = error * zm + std::abs(a_rem_ + t);
      error = 9 * eta * error - 7 * eta * (std::abs(a_rem_ + t) + std::abs(b_rem_) * zm) + 2 * eta * std::abs(t);
      if (size <= 20 * error) {
        count_ = 2;
        re_[0] = re;
        re_[1] = other;
        im_[0] = im;
        im_[1] = -im;
        return true;
      }
      if (++j > 20) return false;
      if (j >= 2 && change <= Real(0.01) && size >= old_size && !tried) {
        // A cluster holds the iteration up: fixed-shift steps away from it.
        change = std::sqrt(std::fmax(change, eta));
        u_ -= u_ * change;
        v_ += v_ * change;
        divide(n_, p_, qp_, a_rem_, b_rem_);
        for (int i = 0; i < 5; ++i) l_z8orc(l_z7orc());
        tried = true;
        j = 0;
      }
      old_size = size;
      l_z8orc(l_z7orc());
      Real next_u, next_v;
      estimate(l_z7orc(), next_u, next_v);
      if (next_v == 0 || !std::isfinite(next_u) || !std::isfinite(next_v)) return false;
      change = std::abs((next_v - v_) / next_v);
      u_ = next_u;
      v_ = next_v;
    }
  }

  // Linear iteration from s. Where it stalls, a pair of close zeros may be near: s tells where.
  bool l_z6orc(Real& start, bool& pair_nearby) {
    Real s = start, t = 0, old_size = 0;
    for (int j = 0;;) {
      Real value = p_[0];
      qp_[0] = value;
      for (long i = 1; i <= n_; ++i) qp_[i] = value = value * s + p_[i];
      const Real size = std::abs(value), ms = std::abs(s);
      Real error = Real(0.5) * std::abs(qp_[0]);
      for (long i = 1; i <= n_; ++i) error = error * ms + std::abs(qp_[i]);
      if (size <= 20 * eta * (2 * error - size)) {
        set_zero(static_cast<W>(s), 0);
        return true;
      }
      if (++j > 10 || !std::isfinite(s)) return false;
      if (j >= 2 && std::abs(t) <= Real(0.001) * std::abs(s - t) && size >= old_size) {
        pair_nearby = true;
        start = s;
        return false;
      }
      old_size = size;
      Real at = k_[0];
      qk_[0] = at;
      for (long i = 1; i < n_; ++i) qk_[i] = at = at * s + k_[i];
      if (std::abs(at) > std::abs(k_[n_ - 1]) * 10 * eta) {
        t = -value / at;
        k_[0] = qp_[0];
        for (long i = 1; i < n_; ++i) k_[i] = t * qk_[i - 1] + qp_[i];
      } else {
        k_[0] = 0;
        for (long i = 1; i < n_; ++i) k_[i] = qk_[i - 1];
      }
      at = k_[0];
      for (long i = 1; i < n_; ++i) at = at * s + k_[i];
      t = std::abs(at) > std::abs(k_[n_ - 1]) * 10 * eta ? -value / at : 0;
      s += t;
    }
  }

  // Division by x^2 + u x + v: quotient, and the remainder b (x + u) + a.
  void divide(long degree, const Real* from, Real* quotient, Real& a, Real& b) const {
    Real older = from[0], newer = from[1] - u_ * older;
    quotient[0] = older;
    quotient[1] = newer;
    for (long i = 2; i <= degree; ++i) {
      const Real next = from[i] - u_ * newer - v_ * older;
      quotient[i] = next;
      older = newer;
      newer = next;
    }
    a = newer;
    b = older;
  }

  // Scalars for the next K and for the estimate of the quadratic, in the form that divides by the larger remainder.
  Kind l_z7orc() {
    divide(n_ - 1, k_, qk_, c_rem_, d_rem_);
    if (std::abs(c_rem_) <= std::abs(k_[n_ - 1]) * 100 * eta && std::abs(d_rem_) <= std::abs(k_[n_ - 2]) * 100 * eta) {
      return Kind::factor;
    }
    if (std::abs(d_rem_) >= std::abs(c_rem_)) {
      const Real e = a_rem_ / d_rem_;
      f_ = c_rem_ / d_rem_;
      g_ = u_ * b_rem_;
      h_ = v_ * b_rem_;
      a3_ = (a_rem_ + g_) * e + h_ * (b_rem_ / d_rem_);
      a1_ = b_rem_ * f_ - a_rem_;
      a7_ = (f_ + u_) * a_rem_ + h_;
      return Kind::by_d;
    }
    const Real e = a_rem_ / c_rem_;
    f_ = d_rem_ / c_rem_;
    g_ = u_ * e;
    h_ = v_ * b_rem_;
    a3_ = a_rem_ * e + (h_ / c_rem_ + g_) * b_rem_;
    a1_ = b_rem_ - a_rem_ * f_;
    a7_ = a_rem_ + g_ * d_rem_ + h_ * f_;
    return Kind::by_c;
  }

  void l_z8orc(Kind kind) {
    if (kind == Kind::factor) {
      k_[0] = k_[1] = 0;
      for (long i = 2; i < n_; ++i) k_[i] = qk_[i - 2];
      return;
    }
    const Real reference = kind == Kind::by_c ? b_rem_ : a_rem_;
    if (std::abs(a1_) <= std::abs(reference) * eta * 10) {
      k_[0] = 0;
      k_[1] = -a7_ * qp_[0];
      for (long i = 2; i < n_; ++i) k_[i] = a3_ * qk_[i - 2] - a7_ * qp_[i - 1];
      return;
    }
    a7_ /= a1_;
    a3_ /= a1_;
    k_[0] = qp_[0];
    k_[1] = qp_[1] - a7_ * qp_[0];
    for (long i = 2; i < n_; ++i) k_[i] = a3_ * qk_[i - 2] - a7_ * qp_[i - 1] + qp_[i];
  }

  // The quadratic that K and p now point to; zeros where there is none.
  void estimate(Kind kind, Real& uu, Real& vv) const {
    uu = vv = 0;
    if (kind == Kind::factor) return;
    const bool by_d = kind == Kind::by_d;
    const Real a4 = by_d ? (a_rem_ + g_) * f_ + h_ : a_rem_ + u_ * b_rem_ + h_ * f_;
    const Real a5 = by_d ? (f_ + u_) * c_rem_ + v_ * d_rem_ : c_rem_ + (u_ + v_ * f_) * d_rem_;
    const Real b1 = -k_[n_ - 1] / p_[n_], b2 = -(k_[n_ - 2] + b1 * p_[n_ - 1]) / p_[n_];
    const Real c1 = v_ * b2 * a1_, c2 = b1 * a7_, c3 = b1 * b1 * a3_, c4 = c1 - c2 - c3;
    const Real divisor = a5 + b1 * a4 - c4;
    if (divisor == 0) return;
    uu = u_ - (u_ * (c3 + c2) + v_ * (b1 * a1_ + b2 * a7_)) / divisor;
    vv = v_ * (1 + c4 / divisor);
  }

  // The zeros just found, back in x, sharpened on the master copy and divided out of it.
  void take(ZeroList<C>& list) {
    const int k = static_cast<int>(shift_);
    if (count_ == 1) {
      W s = shifted(static_cast<W>(re_[0]), k);
      sharpen_zero(s);
      list.add({static_cast<Real>(s), 0});
      for (long i = 1; i < left_; ++i) a_[i] += s * a_[i - 1];
      left_ -= 1;
      return;
    }
    const W re0 = static_cast<W>(re_[0]), re1 = static_cast<W>(re_[1]), im = static_cast<W>(im_[0]);
    W r = shifted(re0 + re1, k), s = shifted(im != 0 ? -(re0 * re0 + im * im) : -re0 * re1, 2 * k);
    sharpen_pair(r, s);
    const W quadratic[3] = {1, -r, -s};
    const Pair z = l_z3lrc(2, quadratic);
    for (int i = 0; i < 2; ++i) list.add({static_cast<Real>(z.re[i]), static_cast<Real>(z.im[i])});
    a_[1] += r * a_[0];
    for (long i = 2; i < left_ - 1; ++i) a_[i] += r * a_[i - 1] + s * a_[i - 2];
    left_ -= 2;
  }

  // Newton's method as long as it makes the value smaller.
  void sharpen_zero(W& x) const {
    W value = 0, slope = 0;
    evaluate(x, value, slope);
    for (int step = 0; step < sharpening_steps && value != 0; ++step) {
      const W next = x - value / slope;
      W next_value, next_slope;
      evaluate(next, next_value, next_slope);
      if (!(std::abs(next - x) <= std::abs(x) / 8) || !(std::abs(next_value) < std::abs(value))) return;
      x = next;
      value = next_value;
      slope = next_slope;
    }
  }
  void evaluate(W x, W& value, W& slope) const {
    value = a_[0];
    slope = 0;
    for (long i = 1; i <= left_; ++i) {
      slope = slope * x + value;
      value = value * x + a_[i];
    }
  }

  // The same for the factor x^2 - r x - s (Bairstow's method).
  void sharpen_pair(W& r, W& s) {
    W best = double_division(r, s);
    for (int step = 0; step < sharpening_steps && best != 0; ++step) {
      const long n = left_;
      const W c1 = c_[n - 1], c2 = c_[n - 2], c3 = c_[n - 3];
      const W determinant = c2 * c2 - c1 * c3;
      const W dr = (b_[n] * c3 - b_[n - 1] * c2) / determinant, ds = (b_[n - 1] * c1 - b_[n] * c2) / determinant;
      const W scale = std::sqrt(std::abs(s));
      if (!(std::abs(dr) <= scale / 8) || !(std::abs(ds) <= std::abs(s) / 8)) return;
      const W size = double_division(r + dr, s + ds);
      if (!(size < best)) return;
      r += dr;
      s += ds;
      best = size;
    }
  }
  // Size of the remainder; leaves the quotients of the first and second division in b and c.
  W double_division(W r, W s) {
    const long n = left_;
    b_[0] = a_[0];
    b_[1] = a_[1] + r * b_[0];
    c_[0] = b_[0];
    c_[1] = b_[1] + r * c_[0];
    for (long i = 2; i <= n; ++i) {
      b_[i] = a_[i] + r * b_[i - 1] + s * b_[i - 2];
      c_[i] = b_[i] + r * c_[i - 1] + s * c_[i - 2];
    }
    return std::abs(b_[n]) + std::abs(b_[n - 1]) * std::sqrt(std::abs(s));
  }

  W *a_, *b_, *c_;                              // the master copy, leading coefficient first, and work
  Real *p_, *qp_, *k_, *qk_, *saved_, *start_;  // image, K, their quotients, copies of K
  int* exponent_;
  long left_ = 0, n_ = 0, shift_ = 0, dropped_ = 0;
  int count_ = 0;
  Real re_[2] = {}, im_[2] = {};
  Real sr_ = 0, u_ = 0, v_ = 0;
  Real a_rem_ = 0, b_rem_ = 0, c_rem_ = 0, d_rem_ = 0;
  Real a1_ = 0, a3_ = 0, a7_ = 0, f_ = 0, g_ = 0, h_ = 0;
};

}  // namespace zent::roots
