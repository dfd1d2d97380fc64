// Roots of unity to the last digit, for any order, without a sine for each.
#pragma once

#include <cmath>
#include <numbers>

namespace zent::transform {

struct Root {
  long double re, im;
};

// exp(2 pi i k / n) for 0 <= k < n. The angle is brought into the first octant in integers, so nothing is lost in its rounding.
inline Root root_of_unity(long k, long n) {
  const bool lower = 2 * k > n;  // below the real axis
  if (lower) k = n - k;
  const bool left = 4 * k > n;  // left of the imaginary axis: mirrored at it
  // Angles in units of a quarter of 2 pi / n, so that the mirror images stay integers.
  long quarter = left ? 2 * n - 4 * k : 4 * k;
  const bool steep = 2 * quarter > n;
  if (steep) quarter = n - quarter;
  const long double angle =
      std::numbers::pi_v<long double> * static_cast<long double>(quarter) / (2 * static_cast<long double>(n));
  long double c = std::cos(angle), s = std::sin(angle);
  if (steep) {
    const long double old = c;
    c = s;
    s = old;
  }
  return {left ? -c : c, lower ? -s : s};
}

// All of them from two short tables: exp(2 pi i k / n) is the product of a coarse and a fine one. The products are formed with
// eleven bits to spare, so the rounded result is right to within one unit in the last place.
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

  Roots(long n, Root* memory) : mask_(fine_count(n) - 1), fine_(memory), coarse_(memory + mask_ + 1) {
    while ((1L << shift_) <= mask_) ++shift_;
    for (long k = 0; k <= mask_ && k < n; ++k) fine_[k] = root_of_unity(k, n);
    for (long k = 0; k <= n >> shift_; ++k) coarse_[k] = root_of_unity((k << shift_) % n, n);
  }
  template <class Real>
  void get(long k, Real* pair) const {
    const Root a = coarse_[k >> shift_], b = fine_[k & mask_];
    pair[0] = static_cast<Real>(a.re * b.re - a.im * b.im);
    pair[1] = static_cast<Real>(a.re * b.im + a.im * b.re);
  }

 private:
  long mask_;
  int shift_ = 0;
  Root* fine_;
  Root* coarse_;
};

}  // namespace zent::transform
