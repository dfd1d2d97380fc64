// Values and vectors of a triangular pencil, and of a quasi-triangular real one.
#pragma once

#include "math/eigen/gencomplex.hpp"
#include "math/eigen/genvectors.hpp"
#include "math/eigen/qz.hpp"

namespace zent::eigen {

// A 2 by 2 block at row k of a real pencil has complex values. Both take the weight beta = |B x|, x the unit vector of the first.
template <class Real>
void pair_values(const Pencil<Real>& p, long k, ComplexOf<Real>* alpha, Real* beta) {
  using C = ComplexOf<Real>;
  const long n = p.n;
  const Real* a = p.a + k + k * n;
  const Real* b = p.b + k + k * n;
  const Corner<Real> m = corner(p, k, k + 1);
  const Real half = (m.m11 - m.m22) / 2, square = half * half + m.m12 * m.m21;
  const C value{m.m22 + half, std::sqrt(std::abs(square))};
  // The second row of A - value B: a21 x1 + (a22 - value b22) x2 = 0, and a21 is not zero.
  C x1 = (-(1 / a[1])) * C{a[n + 1] - value.re * b[n + 1], -value.im * b[n + 1]}, x2{1, 0};
  const Real length = std::hypot(modulus(x1), Real(1));
  x1 = (1 / length) * x1;
  x2.re = 1 / length;
  const Real weight = std::hypot(modulus(b[0] * x1 + b[n] * x2), std::abs(b[n + 1] * x2.re));
  alpha[0] = weight * value;
  alpha[1] = {alpha[0].re, -alpha[0].im};
  beta[0] = beta[1] = weight;
}

template <class T>
void l_g5crg(const Pencil<T>& p, ComplexOf<kernel::RealOf<T>>* alpha, kernel::RealOf<T>* beta) {
  const long n = p.n;
  for (long k = 0; k < n; ++k) {
    const T a = p.a[k + k * n], b = p.b[k + k * n];
    if constexpr (kernel::ComplexRecord<T>) {
      beta[k] = modulus(b);
      alpha[k] = beta[k] == 0 ? a : (1 / beta[k]) * (a * kernel::conj(b));
    } else if (k + 1 < n && p.a[k + 1 + k * n] != 0) {
      pair_values(p, k, alpha + k, beta + k);
      ++k;
    } else {
      beta[k] = std::abs(b);
      alpha[k] = {b < 0 ? -a : a, 0};
    }
  }
}

// The combination beta A - alpha B, of which a vector is the null space: E is the type of alpha and of the vector.
template <class T, class E>
struct Combination {
  using Real = kernel::RealOf<T>;
  const Pencil<T>* p;
  E alpha;
  Real beta;
  Real negligible;

  E at(long i, long j) const {
    const T* a = p->a + i + j * p->n;
    const T* b = p->b + i + j * p->n;
    return beta * E(from(*a)) - alpha * from(*b);
  }
  static E from(T x) {
    if constexpr (std::is_same_v<T, E>) {
      return x;
    } else {
      return kernel::from_real<E>(x);
    }
  }
  E divisor(E d) const {
    return kernel::abs1(d) <= negligible ? kernel::from_real<E>(negligible) : d;
  }
  // x[0 .. count) -= value times column j.
  void subtract(long count, long j, E value, E* x) const {
    const T* a = p->a + j * p->n;
    const T* b = p->b + j * p->n;
    const E va = beta * value, vb = alpha * value;
    for (long i = 0; i < count; ++i) {
      if constexpr (std::is_same_v<T, E>) {
        x[i] = x[i] - (va * a[i] - vb * b[i]);
      } else {
        x[i] = x[i] - (a[i] * va - b[i] * vb);
      }
    }
  }
};

template <class E>
void keep_in_range(E value, long last, E* x) {
  using Real = kernel::RealOf<E>;
  const Real size = kernel::abs1(value);
  if (size > 1 && Machine<Real>::epsilon * size * size > 1) fast::scal(last + 1, 1 / size, x, 1);
}

// Rows i and i + 1 together, by elimination with the larger pivot.
template <class T, class E>
void solve_block(const Combination<T, E>& c, long i, E* x) {
  E a11 = c.at(i, i), a12 = c.at(i, i + 1), a21 = c.at(i + 1, i), a22 = c.at(i + 1, i + 1), f = x[i], g = x[i + 1];
  if (kernel::abs1(a21) > kernel::abs1(a11)) {
    std::swap(a11, a21);
    std::swap(a12, a22);
    std::swap(f, g);
  }
  const E ratio = a21 / c.divisor(a11);
  x[i + 1] = (g - ratio * f) / c.divisor(a22 - ratio * a12);
  x[i] = (f - a12 * x[i + 1]) / c.divisor(a11);
}

// The vector of value k (of the pair at k - 1 and k when pair is set) in x[0 .. n), zero on entry.
template <class T, class E>
void pencil_vector(const Combination<T, E>& c, long k, bool pair, E* x) {
  const Pencil<T>& p = *c.p;
  const long n = p.n;
  x[k] = kernel::from_real<E>(1);
  if (c.beta == 0 && c.alpha == E{}) return;  // a singular pencil: any vector will do
  long i = k - 1;
  if (pair) {
    x[k - 1] = -(c.at(k, k) / c.at(k, k - 1));
    const E value = x[k - 1];
    c.subtract(k - 1, k, x[k], x);
    c.subtract(k - 1, k - 1, value, x);
    i = k - 2;
  } else {
    c.subtract(k, k, x[k], x);
  }
  for (; i >= 0; --i) {
    if (i > 0 && p.a[i + (i - 1) * n] != T{}) {
      --i;
      solve_block(c, i, x);
      keep_in_range(x[i + 1], k, x);
      keep_in_range(x[i], k, x);
      c.subtract(i, i + 1, x[i + 1], x);
      c.subtract(i, i, x[i], x);
    } else {
      x[i] = x[i] / c.divisor(c.at(i, i));
      keep_in_range(x[i], k, x);
      c.subtract(i, i, x[i], x);
    }
  }
}

// Largest magnitudes of both matrices, for what counts as zero in a combination.
template <class T>
kernel::RealOf<T> combination_limit(const Pencil<T>& p, kernel::RealOf<T> alpha, kernel::RealOf<T> beta) {
  using Real = kernel::RealOf<T>;
  return std::fmax(beta * p.eps_a + alpha * p.eps_b, Machine<Real>::smallest / Machine<Real>::epsilon);
}

// All vectors of the triangular pencil into y: complex ones whole, those of a real pencil as real and imaginary columns. `work`
// has n complex elements.
template <class T>
void l_g6crg(const Pencil<T>& p, const ComplexOf<kernel::RealOf<T>>* alpha, const kernel::RealOf<T>* beta, T* y,
             ComplexOf<kernel::RealOf<T>>* work) {
  using Real = kernel::RealOf<T>;
  using C = ComplexOf<Real>;
  const long n = p.n;
  for (long i = 0; i < n * n; ++i) y[i] = T{};
  for (long k = n - 1; k >= 0; --k) {
    const Real size = std::fmax(modulus(alpha[k]), beta[k]), factor = size > 0 ? 1 / size : 1;
    const Real weight = factor * beta[k];
    const Real limit = combination_limit(p, factor * modulus(alpha[k]), weight);
    if constexpr (kernel::ComplexRecord<T>) {
      pencil_vector(Combination<T, C>{&p, factor * alpha[k], weight, limit}, k, false, y + k * n);
    } else if (alpha[k].im == 0) {
      pencil_vector(Combination<T, Real>{&p, factor * alpha[k].re, weight, limit}, k, false, y + k * n);
    } else {  // the first of the pair
      for (long i = 0; i < n; ++i) work[i] = {};
      pencil_vector(Combination<T, C>{&p, factor * alpha[k - 1], weight, limit}, k, true, work);
      --k;
      for (long i = 0; i < n; ++i) {
        y[i + k * n] = work[i].re;
        y[i + (k + 1) * n] = work[i].im;
      }
    }
  }
}

}  // namespace zent::eigen
