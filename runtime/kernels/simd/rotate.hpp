// Sequences of rotations of neighbouring columns. Several sequences run as one wave: sequence p works one column behind sequence
// p - 1, on values that are still in registers, so a column is loaded and stored once for all of them.
#pragma once

#include "runtime/kernels/simd/vector.hpp"

namespace zent::fast::ZENT_LEVEL {

// The coefficients of the fused sequences: those of sequence p at rotation k at [p * per_sweep + k * step].
template <class Real>
struct Coefficients {
  const Real *c, *s;
  Real sign;
  long step, per_sweep;
};

template <int sweeps, int vectors, class Last, class Real>
struct Wave {
  static constexpr int step = lanes<Real>;
  const Coefficients<Real>& f;
  Real* v;
  long ldv, n;
  Last last;
  Vector<Real> carry[sweeps * vectors];  // of sequence p: the column it will rotate next, half done
  Vector<Real> moving[vectors];          // the column handed from one sequence to the next

  template <class I>
  ZENT_INLINE auto piece(I i) const {
    if constexpr (i == vectors - 1) {
      return last;
    } else {
      return Whole<Real>{};
    }
  }
  ZENT_INLINE void load(long column) {
    unroll<vectors>([&](auto i) ZENT_FLAT { moving[i] = piece(i).load(v + column * ldv + i * step); });
  }
  ZENT_INLINE void store(long column) {
    unroll<vectors>([&](auto i) ZENT_FLAT { piece(i).store(v + column * ldv + i * step, moving[i]); });
  }
  // Sequence p rotates columns (k, k + 1): column k + 1 comes in, column k goes out.
  template <class P>
  ZENT_INLINE void rotate(P p, long k) {
    const Real sine = f.sign * f.s[p * f.per_sweep + k * f.step];
    const Vector<Real> c = broadcast<Real>(f.c[p * f.per_sweep + k * f.step]), s = broadcast<Real>(sine);
    unroll<vectors>([&](auto i) ZENT_FLAT {
      Vector<Real>& x = carry[p * vectors + i];
      const Vector<Real> y = moving[i];
      moving[i] = fma(s, y, c * x);
      x = fma(-s, x, c * y);
    });
  }
  // The wave where some sequences have not begun or are done. Column `next` comes in from memory.
  ZENT_INLINE void ragged(long next) {
    if (next < n) load(next);
    unroll<sweeps>([&](auto p) ZENT_FLAT {
      const long in = next - p;
      if (in == 0) {
        unroll<vectors>([&](auto i) ZENT_FLAT { carry[p * vectors + i] = moving[i]; });
      } else if (in > 0 && in < n) {
        rotate(p, in - 1);
      } else if (in == n) {
        unroll<vectors>([&](auto i) ZENT_FLAT { moving[i] = carry[p * vectors + i]; });
      }
    });
    if (next >= sweeps) store(next - sweeps);
  }
  ZENT_INLINE void run() {
    long next = 0;
    for (; next < sweeps; ++next) ragged(next);
    for (; next < n; ++next) {
      load(next);
      unroll<sweeps>([&](auto p) ZENT_FLAT { rotate(p, next - p - 1); });
      store(next - sweeps);
    }
    for (; next < n + sweeps; ++next) ragged(next);
  }
};

template <int sweeps, int vectors, bool partial, class Real>
void rotate_strip(const Coefficients<Real>& f, long n, Real* v, long ldv, long tail) {
  const auto last = piece_of<partial, Real>(tail);
  Wave<sweeps, vectors, decltype(last), Real> wave{f, v, ldv, n, last, {}, {}};
  wave.run();
}

// All sequences over one strip of rows, which stays in the cache meanwhile.
template <int vectors, bool partial, class Real>
void rotate_rows(long sweeps, Coefficients<Real> f, long n, Real* v, long ldv, long tail) {
  constexpr int fused = 4;
  for (; sweeps >= fused && n > fused; sweeps -= fused, f.c += fused * f.per_sweep, f.s += fused * f.per_sweep) {
    rotate_strip<fused, vectors, partial>(f, n, v, ldv, tail);
  }
  for (; sweeps > 0; --sweeps, f.c += f.per_sweep, f.s += f.per_sweep) rotate_strip<1, vectors, partial>(f, n, v, ldv, tail);
}

template <class T>
void rotate(long sweeps, long m, long n, const RealOf<T>* c, const RealOf<T>* s, RealOf<T> sign, long step, T* v, long ldv) {
  using Real = RealOf<T>;
  constexpr int vectors = ZENT_VECTOR_BYTES == 64 ? 4 : 2;
  constexpr long side = lanes<Real>;
  const Coefficients<Real> f{c, s, sign, step, n - 1};
  Real* rows = reals(v);
  long left = m * parts<T>;
  for (; left >= vectors * side; left -= vectors * side, rows += vectors * side) {
    rotate_rows<vectors, false>(sweeps, f, n, rows, ldv * parts<T>, 0);
  }
  for (; left >= side; left -= side, rows += side) rotate_rows<1, false>(sweeps, f, n, rows, ldv * parts<T>, 0);
  if (left > 0) rotate_rows<1, true>(sweeps, f, n, rows, ldv * parts<T>, left);
}

}  // namespace zent::fast::ZENT_LEVEL
