// A last look at all zeros of a polynomial together. Dividing zeros out one by one can lose digits where many of them have like
// moduli, as on a circle. A zero whose residual in the polynomial given is not of the size of rounding errors is iterated
// further, by Newton's method with the other zeros divided out implicitly (Ehrlich 1967; Aberth 1973).
#pragma once

#include "math/roots/poly_scale.hpp"

namespace zent::roots {

template <class T>
class Refinement {
 public:
  using Real = kernel::RealOf<T>;
  using C = std::conditional_t<std::is_same_v<Real, float>, zent_f_complex, zent_d_complex>;
  using W = Wide<Real>;
  using WC = WideComplex<W>;
  static constexpr bool symmetric = !kernel::ComplexRecord<T>;  // zeros are real or come in conjugate pairs, which stand together

  template <class Half>
  bool allocate(long degree) {
    a_ = scratch<Half, WC>(2 * degree + 1);
    partner_ = scratch<Half, long>(degree);
    done_ = scratch<Half, bool>(degree);
    if (a_ == nullptr || partner_ == nullptr || done_ == nullptr) return false;
    z_ = a_ + degree + 1;
    return true;
  }

  // coef: constant first, neither end 0; the zeros in place.
  void run(long degree, const T* coef, C* zeros) {
    n_ = degree;
    for (long i = 0; i <= n_; ++i) a_[i] = widen(coef[n_ - i]);
    bool good = true;
    for (long k = 0; k < n_; ++k) {
      z_[k] = {static_cast<W>(zeros[k].re), static_cast<W>(zeros[k].im)};
      partner_[k] = k;
      if (symmetric && k > 0 && zeros[k].im != 0 && zeros[k - 1].im == -zeros[k].im && partner_[k - 1] == k - 1) {
        partner_[k] = k - 1;
        partner_[k - 1] = k;
        done_[k] = done_[k - 1];
        continue;
      }
      const bool ends = (z_[k].re == 0 && z_[k].im == 0) || !std::isfinite(zeros[k].re) || !std::isfinite(zeros[k].im);
      done_[k] = ends || evaluate<false>(z_[k], 4 * eta);
      good = good && done_[k];
    }
    if (good) return;
    for (int sweep = 1; sweep <= 500 && !improve(); ++sweep) {
      if (symmetric && sweep == 30) set_free();
    }
    if (symmetric) settle();
    store(zeros);
  }

 private:
  static constexpr W eta = static_cast<W>(Machine<Real>::epsilon);

  static WC widen(T a) {
    if constexpr (symmetric) {
      return {static_cast<W>(a), 0};
    } else {
      return {static_cast<W>(a.re), static_cast<W>(a.im)};
    }
  }
  // True when the residual at z is rounding; else, where asked for, p' / p, which may be 0. Beyond the unit circle the polynomial
  // is evaluated from its other end in 1 / z, so that no power is out of range.
  template <bool sloped>
  bool evaluate(WC z, W tolerance, WC* logarithmic = nullptr) const {
    const bool outside = z.re * z.re + z.im * z.im > 1;
    const WC y = outside ? WC{1, 0} / z : z;
    const W size = std::sqrt(y.re * y.re + y.im * y.im);
    const WC* at = outside ? a_ + n_ : a_;
    const long step = outside ? -1 : 1;
    WC value = *at, slope = {0, 0};
    W sum = std::abs(value.re) + std::abs(value.im);
    for (long i = 1; i <= n_; ++i) {
      at += step;
      if constexpr (sloped) slope = slope * y + value;
      value = value * y + *at;
      sum = sum * size + std::abs(at->re) + std::abs(at->im);
    }
    if (std::abs(value.re) + std::abs(value.im) <= tolerance * sum) return true;
    if constexpr (sloped) {
      const W n = static_cast<W>(n_);  // outside p(z) = z^n q(y)
      *logarithmic = outside ? y * ((WC{n * value.re, n * value.im} - y * slope) / value) : slope / value;
    }
    return false;
  }

  bool is_second(long k) const {  // of a pair
    return partner_[k] >= 0 && partner_[k] < k;
  }

  // One step of each zero that is not good yet; true when there is none.
  bool improve() {
    bool all = true;
    for (long k = 0; k < n_; ++k) {
      if (done_[k] || is_second(k)) continue;
      WC logarithmic, sum = {0, 0};
      if (evaluate<true>(z_[k], eta, &logarithmic)) {
        done_[k] = true;
        if (partner_[k] != free) done_[partner_[k]] = true;
        continue;
      }
      all = false;
      for (long j = 0; j < n_; ++j) {
        const WC distance = z_[k] - z_[j];
        if (j == k || (distance.re == 0 && distance.im == 0)) continue;
        if (!std::isfinite(distance.re + distance.im)) continue;  // from a zero out of range: its share is 0
        sum = sum + WC{1, 0} / distance;
      }
      WC change = WC{1, 0} / (logarithmic - sum);
      if (symmetric && partner_[k] == k) change.im = 0;
      if (!std::isfinite(change.re) || !std::isfinite(change.im)) continue;
      z_[k] = z_[k] - change;
      if (partner_[k] > k) z_[partner_[k]] = {z_[k].re, -z_[k].im};
    }
    return all;
  }

  static constexpr long free = -1;  // partner of a zero that moves on its own

  // What has not converged may have the wrong kind: two real zeros for a pair or the other way round. From here on these zeros
  // move each on its own in the plane.
  void set_free() {
    W side = W(1e-3);
    for (long k = 0; k < n_; ++k) {
      if (done_[k]) continue;
      if (partner_[k] == k) {
        z_[k].im = side * z_[k].re;
        side = -side;
      }
      partner_[k] = free;
    }
  }

  // Makes zeros that moved freely real where that is as good, and the others pairs.
  void settle() {
    for (long k = 0; k < n_; ++k) {
      const WC real = {z_[k].re, 0};
      if (partner_[k] != free || !(std::abs(z_[k].im) <= std::abs(z_[k].re) / 8) || !evaluate<false>(real, 4 * eta)) continue;
      z_[k] = real;
      partner_[k] = k;
    }
    for (long k = 0; k < n_; ++k) {
      if (partner_[k] != free) continue;
      long best = k;
      for (long j = k + 1; j < n_; ++j) {
        if (partner_[j] == free && (best == k || mirror_distance(k, j) < mirror_distance(k, best))) best = j;
      }
      partner_[k] = best;
      partner_[best] = k;
      z_[k].im = best == k ? 0 : (z_[k].im - z_[best].im) / 2;
      if (best != k) z_[best] = {z_[k].re, -z_[k].im};
    }
  }
  W mirror_distance(long k, long j) const {
    return std::hypot(z_[k].re - z_[j].re, z_[k].im + z_[j].im);
  }

  void store(C* zeros) const {
    long count = 0;
    for (long k = 0; k < n_; ++k) {
      if (is_second(k)) continue;
      const C z = {static_cast<Real>(z_[k].re), static_cast<Real>(z_[k].im)};
      if (partner_[k] == k) {
        zeros[count++] = z;
      } else {
        const Real im = std::abs(z.im);
        zeros[count++] = {z.re, im};
        zeros[count++] = {z.re, -im};
      }
    }
  }

  WC *a_, *z_;
  long* partner_;
  bool* done_;
  long n_ = 0;
};

}  // namespace zent::roots
