// All zeros of a complex polynomial: the three-stage algorithm with linear factors (Jenkins and Traub 1970; 1972, Communications
// of the ACM 15, algorithm 419).
#pragma once

#include "math/roots/poly_scale.hpp"

namespace zent::roots {

template <class C>
class ComplexPolynomial {
 public:
  using Real = kernel::RealOf<C>;
  using W = Wide<Real>;
  using WC = WideComplex<W>;
  static constexpr Real eta = Machine<Real>::epsilon;
  static constexpr Real product_error = Real(2.8284271247461903) * eta;  // of a complex product, relative

  template <class Half>
  bool allocate(long degree) {
    const long n = degree + 1;
    a_ = scratch<Half, WC>(n);
    exponent_ = scratch<Half, int>(n);
    p_ = scratch<Half, C>(5 * n);
    modulus_ = scratch<Half, Real>(n);
    if (a_ == nullptr || exponent_ == nullptr || p_ == nullptr || modulus_ == nullptr) return false;
    qp_ = p_ + n;
    h_ = qp_ + n;
    qh_ = h_ + n;
    saved_ = qh_ + n;
    return true;
  }

  // Coefficients come with the constant first; neither end is 0. False when zeros are missing.
  bool l_zpocc(long degree, const C* coef, ZeroList<C>& list) {
    for (long i = 0; i <= degree; ++i) a_[i] = {static_cast<W>(coef[degree - i].re), static_cast<W>(coef[degree - i].im)};
    left_ = degree;
    StartDirection<Real> direction;
    while (left_ > 2) {
      C zero;
      if (!next_zero(direction, zero)) return false;
      take(zero, list);
      for (; left_ > 0 && is_zero(a_[left_]); --left_) list.add({0, 0});
    }
    WC z[2];
    if (left_ == 2) l_z4lrc(z);
    if (left_ == 1) z[0] = -a_[1] / a_[0];
    for (long i = 0; i < left_; ++i) list.add(narrow(z[i]));
    return true;
  }

 private:
  static bool is_zero(WC a) {
    return a.re == 0 && a.im == 0;
  }
  static WC scaled(WC a, int k) {
    return {shifted(a.re, k), shifted(a.im, k)};
  }
  static C narrow(WC a) {
    return {static_cast<Real>(a.re), static_cast<Real>(a.im)};
  }
  static int exponent_of_both(WC a) {
    return std::max(exponent_of(a.re), exponent_of(a.im));
  }
  // The square of a part beyond these limits would not be in range.
  static Real modulus(C a) {
    constexpr Real low = Real(sizeof(Real) == 8 ? 1e-140 : 1e-15), high = Real(sizeof(Real) == 8 ? 1e140 : 1e15);
    const Real most = std::fmax(std::abs(a.re), std::abs(a.im));
    if (most > low && most < high) return std::sqrt(a.re * a.re + a.im * a.im);
    return std::hypot(a.re, a.im);
  }

  // Both zeros of a quadratic, the smaller first, from the one that needs no difference.
  void l_z4lrc(WC* z) const {
    const int e0 = exponent_of_both(a_[0]), e2 = exponent_of_both(a_[2]), k = (e2 - e0) / 2;
    const WC c0 = scaled(a_[0], -e0), c2 = scaled(a_[2], -e0 - 2 * k), half = scaled(a_[1], -e0 - k - 1);
    const WC product = c0 * c2;
    const WC root = root_of(WC{(half.re - half.im) * (half.re + half.im) - product.re, 2 * half.re * half.im - product.im});
    const bool along = half.re * root.re + half.im * root.im >= 0;
    const WC large = -(along ? half + root : half - root);
    z[1] = scaled(large / c0, k);
    z[0] = is_zero(large) ? WC{0, 0} : scaled(c2 / large, k);
  }

  bool next_zero(StartDirection<Real>& direction, C& zero) {
    for (long i = 0; i <= left_; ++i) exponent_[i] = exponent_of_both(a_[i]);
    const long k = variable_exponent(left_, exponent_);
    for (int wider = 0; wider <= last_widening; wider += widening_step) {
      make_image(k + wider);
      if (solve_image(direction, zero)) return true;
      if (dropped_ == 0) return false;
    }
    return false;
  }

  // Without the leading terms that do not matter for the zeros of least modulus.
  void make_image(long k) {
    shift_ = k;
    ImageScale<W> scale(left_, k, image_exponent(left_, k, exponent_));
    for (long i = left_; i >= 0; --i) p_[i] = narrow(scale.apply(a_[i]));
    for (long i = 0; i <= left_; ++i) modulus_[i] = std::fmax(std::abs(p_[i].re), std::abs(p_[i].im));
    dropped_ = negligible_terms(left_, modulus_);
    n_ = left_ - dropped_;
    for (long i = 0; i <= n_ && dropped_ > 0; ++i) p_[i] = p_[i + dropped_];
  }

  // False if nothing was found, or a zero so far out that a term left out may matter.
  bool solve_image(StartDirection<Real>& direction, C& zero) {
    if (n_ == 1) {
      zero = -p_[1] / p_[0];
    } else if (!find(direction, zero)) {
      return false;
    }
    return dropped_ == 0 || (std::abs(zero.re) <= image_radius && std::abs(zero.im) <= image_radius);
  }

  // Two passes of nine starts each.
  bool find(StartDirection<Real>& direction, C& zero) {
    for (long i = 0; i <= n_; ++i) modulus_[i] = modulus(p_[i]);
    const Real bound = cauchy_bound(n_, modulus_);
    for (int pass = 0; pass < 2; ++pass) {
      no_shift();
      for (int turn = 1; turn <= 9; ++turn) {
        direction.rotate();
        s_ = {bound * direction.x, bound * direction.y};
        if (l_z3occ(10 * turn, zero)) return true;
      }
    }
    const auto at = [this](long i) { return WC{static_cast<W>(p_[i].re), static_cast<W>(p_[i].im)}; };
    for (int turn = 0; turn < 20; ++turn) {
      direction.rotate();
      WC z = {static_cast<W>(bound * direction.x), static_cast<W>(bound * direction.y)};
      if (!laguerre(n_, at, 4 * static_cast<W>(eta), z)) continue;
      zero = narrow(z);
      return true;
    }
    return false;
  }

  void no_shift() {
    const long n = n_;
    for (long i = 0; i < n; ++i) h_[i] = (static_cast<Real>(n - i) / static_cast<Real>(n)) * p_[i];
    for (int step = 0; step < 5; ++step) {
      if (modulus(h_[n - 1]) > eta * 10 * modulus(p_[n - 1])) {
        const C t = -p_[n] / h_[n - 1];
        for (long j = n - 1; j > 0; --j) h_[j] = t * h_[j - 1] + p_[j];
        h_[0] = p_[0];
      } else {
        for (long j = n - 1; j > 0; --j) h_[j] = h_[j - 1];
        h_[0] = C{};
      }
    }
  }

  // Fixed shift until the sequence passes the weak test twice in a row; then the variable shift.
  bool l_z3occ(int limit, C& zero) {
    value_ = horner(n_, p_, qp_);
    bool test = true, passed = false;
    bool vanished = next_t();
    for (int j = 1; j <= limit; ++j) {
      const C old_t = t_;
      l_z5occ(vanished);
      vanished = next_t();
      zero = s_ + t_;
      if (vanished || !test || j == limit) continue;
      if (modulus(t_ - old_t) >= Real(0.5) * modulus(zero)) {
        passed = false;
      } else if (!passed) {
        passed = true;
      } else {
        const C kept = s_;
        for (long i = 0; i < n_; ++i) saved_[i] = h_[i];
        if (l_z4occ(zero)) return true;
        test = false;
        for (long i = 0; i < n_; ++i) h_[i] = saved_[i];
        s_ = kept;
        value_ = horner(n_, p_, qp_);
        vanished = next_t();
      }
    }
    return l_z4occ(zero);
  }

  // Variable shift from `zero`.
  bool l_z4occ(C& zero) {
    bool cluster = false;
    Real old_size = 0, change = 0;
    s_ = zero;
    for (int i = 1; i <= 10; ++i) {
      value_ = horner(n_, p_, qp_);
      const Real size = modulus(value_), ms = modulus(s_);
      if (size <= 20 * l_z10cc(ms, size)) {
        zero = s_;
        return true;
      }
      if (i > 1) {
        if (!cluster && size >= old_size && change < Real(0.05)) {
          // A cluster holds the iteration up: fixed-shift steps into it.
          cluster = true;
          const Real r = std::sqrt(std::fmax(change, eta));
          s_ = s_ * C{1 + r, r};
          value_ = horner(n_, p_, qp_);
          for (int j = 0; j < 5; ++j) l_z5occ(next_t());
          old_size = Machine<Real>::largest;
          advance(change);
          continue;
        }
        if (!(size * Real(0.1) <= old_size)) return false;
      }
      old_size = size;
      advance(change);
    }
    return false;
  }
  void advance(Real& change) {
    l_z5occ(next_t());
    if (next_t()) return;
    change = modulus(t_) / modulus(s_);
    s_ = s_ + t_;
  }

  // Value at s and the quotient.
  C horner(long degree, const C* from, C* quotient) const {
    C value = from[0];
    quotient[0] = value;
    for (long i = 1; i <= degree; ++i) quotient[i] = value = value * s_ + from[i];
    return value;
  }

  // t = -p(s) / h(s); true, and t = 0, where h(s) is 0 to rounding.
  bool next_t() {
    const C at = horner(n_ - 1, h_, qh_);
    const bool vanished = modulus(at) <= eta * 10 * modulus(h_[n_ - 1]);
    t_ = vanished ? C{} : -value_ / at;
    return vanished;
  }
  void l_z5occ(bool vanished) {
    h_[0] = vanished ? C{} : qp_[0];
    if (vanished) {
      for (long j = 1; j < n_; ++j) h_[j] = qh_[j - 1];
    } else {
      for (long j = 1; j < n_; ++j) h_[j] = t_ * qh_[j - 1] + qp_[j];
    }
  }

  // Bound of the rounding error of the value at s.
  Real l_z10cc(Real ms, Real size) const {
    Real e = modulus(qp_[0]) * product_error / (eta + product_error);
    for (long i = 0; i <= n_; ++i) e = e * ms + modulus(qp_[i]);
    return e * (eta + product_error) - size * product_error;
  }

  // The zero just found, back in x, sharpened on the master copy by Newton's method and divided out of it.
  void take(C zero, ZeroList<C>& list) {
    WC z = scaled({static_cast<W>(zero.re), static_cast<W>(zero.im)}, static_cast<int>(shift_));
    WC value, slope;
    evaluate(z, value, slope);
    for (int step = 0; step < sharpening_steps && !is_zero(value); ++step) {
      const WC change = value / slope, next = z - change;
      WC next_value, next_slope;
      evaluate(next, next_value, next_slope);
      if (!(size_of(change) <= size_of(z) / 8)) break;
      if (!(size_of(next_value) < size_of(value))) break;
      z = next;
      value = next_value;
      slope = next_slope;
    }
    list.add(narrow(z));
    for (long i = 1; i < left_; ++i) a_[i] = a_[i] + z * a_[i - 1];
    --left_;
  }
  void evaluate(WC z, WC& value, WC& slope) const {
    value = a_[0];
    slope = {0, 0};
    for (long i = 1; i <= left_; ++i) {
      slope = slope * z + value;
      value = value * z + a_[i];
    }
  }

  WC* a_;  // the master copy, leading coefficient first
  C *p_, *qp_, *h_, *qh_, *saved_;
  Real* modulus_;
  int* exponent_;
  long left_ = 0, n_ = 0, shift_ = 0, dropped_ = 0;
  C s_{}, t_{}, value_{};
};

}  // namespace zent::roots
