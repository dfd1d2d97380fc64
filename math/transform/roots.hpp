// Roots of unity to the last digit, for any order, without a sine for each.
#pragma once

#include <cmath>
#include <numbers>

namespace zent::transform {

struct Root {
  long double re, im;
};

// 2 pi k / n for 0 <= k < n brought into the first octant in integers, so that nothing is lost in its rounding.
struct Octant {
  bool lower, left, steep;  // below the real axis, left of the imaginary axis, nearer to that one: mirrored each time
  long quarter;             // the angle in units of a quarter of 2 pi / n, in which the mirror images stay integers

  constexpr Octant(long k, long n) : lower(2 * k > n), left(false), steep(false), quarter(0) {
    if (lower) k = n - k;
    left = 4 * k > n;
    quarter = left ? 2 * n - 4 * k : 4 * k;
    steep = 2 * quarter > n;
    if (steep) quarter = n - quarter;
  }
  // From the root of the angle in the first octant.
  Root restored(long double c, long double s) const {
    const long double re = steep ? s : c, im = steep ? c : s;
    return {left ? -re : re, lower ? -im : im};
  }
};

// exp(2 pi i k / n) for 0 <= k < n.
inline Root root_of_unity(long k, long n) {
  const Octant octant(k, n);
  const long double angle =
      std::numbers::pi_v<long double> * static_cast<long double>(octant.quarter) / (2 * static_cast<long double>(n));
  return octant.restored(std::cos(angle), std::sin(angle));
}

// All of them from two short tables of the first octant, where the product of a coarse and a fine root loses nothing to
// cancellation: it has ten bits to spare, so the rounded result is right to within one unit in the last place.
class Roots {
 public:
  static constexpr long longest = 1L << 60;
  static constexpr long fine_count(long n) {
    long b = 1;
    while (b * b < n) b *= 2;
    return b;
  }
  static constexpr long storage(long n) {  // roots that `memory` must hold; below 0: more than there can be
    if (n > longest) return -1;
    return fine_count(n) + n / fine_count(n) + 1;
  }

  Roots(long n, Root* memory) : n_(n), mask_(fine_count(n) - 1), fine_(memory), coarse_(memory + mask_ + 1) {
    while ((1L << shift_) <= mask_) ++shift_;
    for (long k = 0; k <= mask_ && k <= n / 2; ++k) fine_[k] = root_of_unity(k, 4 * n);
    for (long k = 0; k <= (n / 2) >> shift_; ++k) coarse_[k] = root_of_unity(k << shift_, 4 * n);
  }
  template <class Real>
  void get(long k, Real* pair) const {
    const Octant octant(k, n_);
    const Root a = coarse_[octant.quarter >> shift_], b = fine_[octant.quarter & mask_];
    const Root root = octant.restored(a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re);
    pair[0] = static_cast<Real>(root.re);
    pair[1] = static_cast<Real>(root.im);
  }

 private:
  long n_, mask_;
  int shift_ = 0;
  Root* fine_;
  Root* coarse_;
};

}  // namespace zent::transform
