// Reduction to upper bidiagonal form by reflections from both sides, column-major, real and complex elements.
//
// From the left H = I - v v^H / v[0] clears column k below the diagonal, from the right I - u u^H / u[0] clears row k behind the
// superdiagonal; v[0] and u[0] are real, between 1 and 2, and 0 stands for no reflection.
#pragma once

#include <cmath>

#include "math/linalg/qr_reflectors.hpp"
#include "runtime/machine.hpp"

namespace zent::linalg {

template <class Real>
Real modulus(Real a) {
  return std::abs(a);
}
inline float modulus(zent_f_complex a) {
  return std::hypot(a.re, a.im);
}
inline double modulus(zent_d_complex a) {
  return std::hypot(a.re, a.im);
}

// z / |z|, of modulus 1 also when z is subnormal; 1 for 0.
template <class T>
T phase_of(T z) {
  if constexpr (kernel::ComplexRecord<T>) {
    using Real = RealOf<T>;
    constexpr Real low = Machine<Real>::smallest / Machine<Real>::epsilon;
    if (kernel::abs1(z) < low) z = (1 / Machine<Real>::epsilon / Machine<Real>::epsilon) * z;
    const Real size = modulus(z);
    if (size == 0) return {1, 0};
    return {z.re / size, z.im / size};
  } else {
    return z < 0 ? T(-1) : T(1);
  }
}

// x := x / divisor, also where the inverse of a tiny divisor overflows.
template <class T>
void scale_vector(long n, RealOf<T> divisor, T* x) {
  const RealOf<T> inverse = 1 / divisor;
  if (std::isfinite(inverse)) return fast::scal(n, inverse, x, 1);
  for (long i = 0; i < n; ++i) {
    if constexpr (kernel::ComplexRecord<T>) {
      x[i] = {x[i].re / divisor, x[i].im / divisor};
    } else {
      x[i] = x[i] / divisor;
    }
  }
}

// Makes x the vector of its reflection and returns the element that the reflection leaves, which has the phase of -x[0]. A vector
// of norm 0 has no reflection.
template <class T>
T make_reflection(long n, T* x) {
  using Real = RealOf<T>;
  constexpr Real low = Machine<Real>::smallest / Machine<Real>::epsilon, up = 1 / Machine<Real>::epsilon / Machine<Real>::epsilon;
  Real length = fast::nrm2(n, x, 1), back = 1;
  if (length == 0) return T{};
  if (length < low) {  // digits that subnormal numbers lack would be missing in the vector, which must be of norm 1
    fast::scal(n, up, x, 1);
    length = fast::nrm2(n, x, 1);
    back = 1 / up;
  }
  const T phase = phase_of(x[0]);
  scale_vector(n, length, x);
  if constexpr (kernel::ComplexRecord<T>) {
    if (!(phase.re == 1 && phase.im == 0)) fast::scal(n, kernel::conj(phase), x, 1);
    x[0] = {1 + x[0].re, 0};
  } else {
    if (phase < 0) fast::scal(n, phase, x, 1);
    x[0] += 1;
  }
  return -((length * back) * phase);
}

template <class T>
struct Bidiagonal {
  using Real = RealOf<T>;
  static constexpr long nb = reflector_block;

  long m, n;
  T* a;          // m by n, leading dimension m; receives the vectors v
  T* p;          // n by row_count: the vectors u, vector k from row k + 1 on
  Real* head_v;  // column_count
  Real* head_u;  // row_count
  T* s;          // diagonal, min(m + 1, n)
  T* e;          // superdiagonal, min(m + 1, n)
  T* work;       // words(m, n) elements

  long column_count() const {
    return std::min(m - 1, n);
  }
  long row_count() const {
    return std::max(0L, std::min(n - 2, m));
  }
  static constexpr long words(long m, long n) {
    return nb * (m + n) + std::max(m, n) + 2 * nb;
  }
  T* at(long i, long j) const {
    return a + i + j * m;
  }
  static T one() {
    return kernel::from_real<T>(1);
  }
  static void conjugate(long count, T* x, long inc) {
    if constexpr (kernel::ComplexRecord<T>) {
      for (long i = 0; i < count; ++i) x[i * inc] = kernel::conj(x[i * inc]);
    }
  }
  // to := conj(from), `from` strided.
  static void gather(long count, const T* from, long inc, T* to) {
    for (long i = 0; i < count; ++i) to[i] = kernel::conj(from[i * inc]);
  }

  void reflect_column(long k) const {
    s[k] = make_reflection(m - k, at(k, k));
    head_v[k] = kernel::real(*at(k, k));
  }
  // p(k+1.., k) holds the conjugated row.
  void reflect_row(long k) const {
    T* const u = p + (k + 1) + k * n;
    e[k] = kernel::conj(make_reflection(n - k - 1, u));
    head_u[k] = kernel::real(*u);
  }

  // Both reflections of step k, each applied at once to all that is left.
  void step(long k) const {
    const long right = n - k - 1, below = m - k - 1;
    if (k < column_count()) {
      reflect_column(k);
      if (head_v[k] != 0 && right > 0) {
        fast::gemv('C', m - k, right, kernel::from_real<T>(-1 / head_v[k]), at(k, k + 1), m, at(k, k), 1, T{}, work, 1);
        fast::gerc(m - k, right, one(), at(k, k), 1, work, 1, at(k, k + 1), m);
      }
    }
    if (k >= row_count()) return;
    T* const u = p + (k + 1) + k * n;
    gather(right, at(k, k + 1), m, u);
    reflect_row(k);
    if (head_u[k] == 0 || below < 1) return;
    fast::gemv('N', below, right, kernel::from_real<T>(-1 / head_u[k]), at(k + 1, k + 1), m, u, 1, T{}, work, 1);
    fast::gerc(below, right, one(), work, 1, u, 1, at(k + 1, k + 1), m);
  }

  // Steps k0 .. k0 + nb - 1 without touching the matrix to the right of them, whose present value is A - V Y^H - X P^H; then
  // that.
  void panel(long k0) const {
    T* const y = work;                   // n by nb
    T* const x = work + nb * n;          // m by nb
    T* const aux = work + nb * (m + n);  // 2 nb
    const T minus = -one();
    for (long k = k0; k < k0 + nb; ++k) {
      const long done = k - k0, right = n - k - 1, below = m - k - 1;
      const T* const v0 = at(k, k0);
      gather(done, y + k, n, aux);
      fast::gemv('N', m - k, done, minus, v0, m, aux, 1, one(), at(k, k), 1);
      gather(done, p + k + k0 * n, n, aux);
      fast::gemv('N', m - k, done, minus, x + k, m, aux, 1, one(), at(k, k), 1);
      reflect_column(k);
      T* const yk = y + (k + 1) + done * n;
      if (head_v[k] == 0) {
        std::fill(yk, yk + right, T{});
      } else {
        const T scale = kernel::from_real<T>(1 / head_v[k]);
        fast::gemv('C', m - k, right, scale, at(k, k + 1), m, at(k, k), 1, T{}, yk, 1);
        fast::gemv('C', m - k, done, -scale, v0, m, at(k, k), 1, T{}, aux, 1);
        fast::gemv('N', right, done, one(), y + (k + 1), n, aux, 1, one(), yk, 1);
        fast::gemv('C', m - k, done, -scale, x + k, m, at(k, k), 1, T{}, aux, 1);
        fast::gemv('N', right, done, one(), p + (k + 1) + k0 * n, n, aux, 1, one(), yk, 1);
      }
      T* const u = p + (k + 1) + k * n;
      gather(right, at(k, k + 1), m, u);
      gather(done + 1, v0, m, aux);
      fast::gemv('N', right, done + 1, minus, y + (k + 1), n, aux, 1, one(), u, 1);
      gather(done, x + k, m, aux);
      fast::gemv('N', right, done, minus, p + (k + 1) + k0 * n, n, aux, 1, one(), u, 1);
      reflect_row(k);
      T* const xk = x + (k + 1) + done * m;
      if (head_u[k] == 0) {
        std::fill(xk, xk + below, T{});
        continue;
      }
      const T scale = kernel::from_real<T>(1 / head_u[k]);
      fast::gemv('N', below, right, scale, at(k + 1, k + 1), m, u, 1, T{}, xk, 1);
      fast::gemv('C', right, done + 1, -scale, y + (k + 1), n, u, 1, T{}, aux, 1);
      fast::gemv('N', below, done + 1, one(), at(k + 1, k0), m, aux, 1, one(), xk, 1);
      fast::gemv('C', right, done, -scale, p + (k + 1) + k0 * n, n, u, 1, T{}, aux, 1);
      fast::gemv('N', below, done, one(), x + (k + 1), m, aux, 1, one(), xk, 1);
    }
    const long end = k0 + nb;
    fast::gemm('N', 'C', m - end, n - end, nb, minus, at(end, k0), m, y + end, n, one(), at(end, end), m);
    fast::gemm('N', 'C', m - end, n - end, nb, minus, x + end, m, p + end + k0 * n, n, one(), at(end, end), m);
  }

  void reduce() const {
    const long columns = column_count(), rows = row_count(), order = std::min(m + 1, n);
    for (long k = 0; k < order; ++k) s[k] = e[k] = T{};
    // Below two blocks the matrix that is left is small enough for the plain step.
    long k = 0;
    for (; k + 2 * nb <= std::min(columns, rows); k += nb) panel(k);
    for (; k < std::max(columns, rows); ++k) step(k);
    if (columns < n) s[columns] = *at(columns, columns);
    if (m < order) s[order - 1] = T{};
    if (rows + 1 < order) e[rows] = *at(rows, order - 1);
    e[order - 1] = T{};
  }
};

}  // namespace zent::linalg
