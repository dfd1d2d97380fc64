// Singular values of a real bidiagonal matrix by implicitly shifted QR steps, in the manner of LINPACK's; rotations of the
// vectors are collected and applied many at a time.
#pragma once

#include <cmath>
#include <limits>

#include "math/linalg/qr_reflectors.hpp"
#include "runtime/kernels/rotation.hpp"
#include "runtime/machine.hpp"

namespace zent::linalg {

// The rotation that takes (f, g) to (r, 0), as rotg gives it: r has the sign of the larger. Returns r.
template <class Real>
inline Real rotation(Real f, Real g, Real& c, Real& s) {
  constexpr Real low = sizeof(Real) == 4 ? Real(1e-15) : Real(1e-140), high = 1 / low;
  const Real size_f = std::abs(f), size_g = std::abs(g);
  if (size_f > low && size_g > low && size_f < high && size_g < high) {
    const Real r = std::copysign(std::sqrt(f * f + g * g), size_f > size_g ? f : g);
    c = f / r;
    s = g / r;
    return r;
  }
  kernel::rotg(&f, &g, &c, &s);
  return f;
}

// The kernel turns strips of 256 bytes of rows best, and the pieces of an odd rest cost as much as a strip each.
template <class T>
constexpr long filled_rows(long rows) {
  constexpr long strip = 256 / static_cast<long>(sizeof(T));
  const long rest = rows % strip;
  return rest > strip / 4 ? rows - rest + strip : rows;
}

// Sequences of rotations of neighbouring columns that wait for U and V, on the columns first .. first + width - 1.
template <class T>
struct RotationBatch {
  using Real = RealOf<T>;
  static constexpr long capacity = 32;

  long u_ld, v_ld;     // leading dimensions; all rows are turned, those that only fill up too
  T *u, *v;            // null: not wanted
  Real* coefficients;  // words(order)
  long order;
  long first = 0, width = 0, count = 0;

  static constexpr long words(long order) {
    return 4 * capacity * order;
  }
  Real* sequence(int which) const {
    return coefficients + which * capacity * order + count * (width - 1);
  }

  void flush() {
    if (count == 0) return;
    const long held = count;
    count = 0;
    if (v != nullptr) fast::rot_columns(false, held, v_ld, width, sequence(0), sequence(1), v + first * v_ld, v_ld);
    if (u != nullptr) fast::rot_columns(false, held, u_ld, width, sequence(2), sequence(3), u + first * u_ld, u_ld);
  }

  // Room for a sequence on columns low .. high; what it leaves out of the batch's columns is not turned.
  void open(long low, long high) {
    if (u == nullptr && v == nullptr) return;
    const bool fits = count > 0 && count < capacity && low >= first && high < first + width && 2 * (high - low + 1) > width;
    if (!fits) {
      flush();
      first = low;
      width = high - low + 1;
    }
    for (int which = 0; which < 4; ++which) {
      Real* const c = sequence(which);
      const Real idle = which % 2 == 0 ? 1 : 0;
      for (long k = first; k < low; ++k) c[k - first] = idle;
      for (long k = high; k < first + width - 1; ++k) c[k - first] = idle;
    }
    ++count;
  }
  // Rotation k of the sequence opened last.
  void set(bool left, long k, Real c, Real s) {
    if ((left ? u : v) == nullptr) return;
    const int which = left ? 2 : 0;
    const long at = k - first - (width - 1);
    sequence(which)[at] = c;
    sequence(which + 1)[at] = s;
  }
  void now(bool left, long i, long j, Real c, Real s) {
    T* const x = left ? u : v;
    const long ld = left ? u_ld : v_ld;
    if (x != nullptr) fast::rot(ld, x + i * ld, 1, x + j * ld, 1, c, s);
  }
};

template <class T>
struct SingularValues {
  using Real = RealOf<T>;
  static constexpr long most_steps = 30, late_steps = 29, patient_steps = 10;

  long order;   // number of values here, min(m + 1, n)
  Real *s, *e;  // diagonal and superdiagonal, `order` elements each
  Real anorm;
  RotationBatch<T>* batch;
  long* column;  // column[k]: where the vectors of value k stand
  bool* turned;  // the right vector of value k is to be negated

  long find_split(long hi, long steps) const {
    constexpr Real eps = Machine<Real>::epsilon;
    for (long l = hi - 1; l >= 0; --l) {
      const Real test = std::abs(s[l]) + std::abs(s[l + 1]);
      const Real with = test + std::abs(e[l]);
      if (std::abs(with - test) <= with * eps || (steps >= late_steps && std::abs(e[l]) <= eps * anorm)) {
        e[l] = 0;
        return l;
      }
    }
    return -1;
  }
  // The last negligible s[k] for k in l + 1 .. hi, set to 0; l if there is none.
  long find_zero(long l, long hi) const {
    for (long k = hi; k > l; --k) {
      Real t = 0;
      if (k != hi) t += std::abs(e[k]);
      if (k != l + 1) t += std::abs(e[k - 1]);
      if (std::abs(s[k]) + t == t) {
        s[k] = 0;
        return k;
      }
    }
    return l;
  }

  void clear_last(long l, long hi) const {
    batch->flush();
    Real f = e[hi - 1], c, sn;
    e[hi - 1] = 0;
    for (long k = hi - 1; k >= l; --k) {
      s[k] = rotation(s[k], f, c, sn);
      if (k != l) {
        f = -sn * e[k - 1];
        e[k - 1] *= c;
      }
      batch->now(false, k, hi, c, sn);
    }
  }
  void clear_row(long l, long hi) const {
    batch->flush();
    Real f = e[l - 1], c, sn;
    e[l - 1] = 0;
    for (long k = l; k <= hi; ++k) {
      s[k] = rotation(s[k], f, c, sn);
      f = -sn * e[k];
      e[k] *= c;
      batch->now(true, k, l - 1, c, sn);
    }
  }

  void step(long l, long hi, long steps) const {
    const Real scale = std::max({std::abs(s[hi]), std::abs(s[hi - 1]), std::abs(e[hi - 1]), std::abs(s[l]), std::abs(e[l])});
    const Real sm = s[hi] / scale, smm1 = s[hi - 1] / scale, emm1 = e[hi - 1] / scale, sl = s[l] / scale, el = e[l] / scale;
    const Real b = ((smm1 + sm) * (smm1 - sm) + emm1 * emm1) / 2;
    const Real c = (sm * emm1) * (sm * emm1);
    Real shift = 0;
    if (b != 0 || c != 0) {
      shift = std::sqrt(b * b + c);
      if (b < 0) shift = -shift;
      shift = c / (b + shift);
    }
    // The minus is this method's own. Where it makes f vanish, as on some matrices of small integers, the steps only go round in
    // a circle: a value that takes too long gets the plus of the later method.
    if (steps >= patient_steps) shift = -shift;
    Real f = (sl + sm) * (sl - sm) - shift, g = sl * el;
    batch->open(l, hi);
    for (long k = l; k < hi; ++k) {
      Real cs, sn;
      const Real r = rotation(f, g, cs, sn);
      if (k != l) e[k - 1] = r;
      f = cs * s[k] + sn * e[k];
      e[k] = cs * e[k] - sn * s[k];
      g = sn * s[k + 1];
      s[k + 1] *= cs;
      batch->set(false, k, cs, sn);
      s[k] = rotation(f, g, cs, sn);
      f = cs * e[k] + sn * s[k + 1];
      s[k + 1] = cs * s[k + 1] - sn * e[k];
      g = sn * e[k + 1];
      e[k + 1] *= cs;
      batch->set(true, k, cs, sn);
    }
    e[hi - 1] = f;
  }

  // Value `at` is done: made nonnegative and moved behind those that are not smaller.
  void settle(long at) const {
    turned[at] = s[at] < 0;
    s[at] = std::abs(s[at]);
    for (long k = at; k + 1 < order && s[k] < s[k + 1]; ++k) {
      std::swap(s[k], s[k + 1]);
      std::swap(column[k], column[k + 1]);
      std::swap(turned[k], turned[k + 1]);
    }
  }

  // 0, or the number of values left when one did not converge.
  long find() const {
    for (long k = 0; k < order; ++k) {
      column[k] = k;
      turned[k] = false;
    }
    long steps = 0, passes = 0;
    for (long hi = order - 1; hi >= 0; ++passes) {
      // The second test ends what an overflow could let go round for ever.
      if (steps > most_steps || passes > most_steps + 4 * order) return hi + 1;
      const long l = find_split(hi, steps);
      if (l == hi - 1) {
        settle(hi);
        --hi;
        steps = passes = 0;
        continue;
      }
      const long zero = find_zero(l, hi);
      if (zero == l) {
        step(l + 1, hi, steps);
        ++steps;
      } else if (zero == hi) {
        clear_last(l + 1, hi);
      } else {
        clear_row(zero + 1, hi);
      }
    }
    batch->flush();
    return 0;
  }
};

}  // namespace zent::linalg
