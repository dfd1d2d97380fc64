// I and K of complex argument with real part >= 0, for a run of orders.
#pragma once

#include "math/functions/bessel_scaled.hpp"
#include "math/functions/series.hpp"

namespace zent::functions {

#include "math/functions/tables/bessel_temme.inc"

// Above this modulus Hankel's expansion has all digits, as long as the order is not great too: its smallest term is about exp(-2
// |z|).
template <class Real>
inline constexpr Real hankel_modulus = static_cast<Real>(std::numeric_limits<Real>::digits * 0.3466 + 1.6);

// Exponents of z this far below 0 stay apart from the numbers that a recurrence steps through.
inline constexpr long far_from_one = 30;

// Neighbouring orders of K exp(z), or of Y, k0 2^(exponent - lift) and k1 2^exponent. They part by as much as 1/z, which near z =
// 0 can be more than one exponent holds: the lift is half of it.
template <class T>
struct KPair {
  using Real = kernel::RealOf<T>;
  T k0, k1;
  long exponent, lift = 0;

  void rescale() {
    const Real size = larger_part<Real>(k1);
    if (!(size > 1024 && size <= Machine<Real>::largest)) return;
    const int k = Exponents<Real>::of(size);
    k0 = Exponents<Real>::shift(k0, -k);
    k1 = Exponents<Real>::shift(k1, -k);
    exponent += k;
  }
};

// The pair near z = 0.
template <class T>
KPair<T> pair_near_zero(Scaled<T> k0, Scaled<T> k1, Scaled<T> z) {
  const long lift = z.exponent < -far_from_one ? -z.exponent / 2 : 0;
  const int shift = static_cast<int>(std::max(k0.exponent - k1.exponent + lift, -20000L));
  return {Exponents<kernel::RealOf<T>>::shift(k0.value, shift), k1.value, k1.exponent, lift};
}

// sinh, cosh and the exponentials of both signs: none is the difference of two others.
template <class Real>
struct Hyperbolic {
  Complex<Real> sh, ch, up, down;
  explicit Hyperbolic(Complex<Real> s) {
    const Real a = std::sinh(s.re), b = std::cosh(s.re), c = std::cos(s.im), d = std::sin(s.im), e = std::exp(s.re);
    sh = {a * c, b * d};
    ch = {b * c, a * d};
    up = {e * c, e * d};
    down = {c / e, -d / e};
  }
};

// True where Temme's series serves: its terms cancel like exp(|z| + Re z).
template <class Real>
bool l_near_zero(Complex<Real> z) {
  const Real size = modulus<Real>(z);
  return size <= static_cast<Real>(2.5) && size + z.re <= 3;
}

// 1/Gamma(1 + mu) as even - mu odd, both of them even functions.
template <class Real>
struct GammaParts {
  Real even, odd;
};
template <class Real>
GammaParts<Real> gamma_parts(Real mu) {
  const Real square = mu * mu;
  Real even = 0, odd = 0;
  const auto* e = series::Series<lv_temme_even, Real>::coefficients();
  const auto* o = series::Series<lv_temme_odd, Real>::coefficients();
  for (long k = series::Series<lv_temme_even, Real>::length() - 1; k >= 0; --k) {
    even = even * square + e[k];
    odd = odd * square + o[k];
  }
  return {even, odd};
}

// The orders mu and mu + 1 near z = 0, |mu| <= 1/2. N. M. Temme, J. Comput. Phys. 19 (1975).
template <class Real>
KPair<Complex<Real>> l_temme(Real mu, Complex<Real> z) {
  using C = Complex<Real>;
  const Real pi = static_cast<Real>(3.14159265358979323846), square = mu * mu;
  const auto [even, odd] = gamma_parts(mu);
  const Scaled<C> unit = scaled(z);
  const bool tiny = unit.exponent < 60 - Exponents<Real>::bias;  // then the half of z would lose digits
  const C log_unit = logarithm<Real>(tiny ? unit.value : C{z.re / 2, z.im / 2});
  const Real apart = static_cast<Real>(tiny ? 1 - unit.exponent : 0);
  const C log_inverse = {apart * Log2<Real>::high + (apart * Log2<Real>::low - log_unit.re), -log_unit.im};
  const C sigma = mu * log_inverse;
  const Hyperbolic<Real> h(sigma);
  const C ratio = larger_part<Real>(sigma) > Machine<Real>::smallest ? h.sh / sigma : C{1, 0};
  const Real reflection = mu == 0 ? 1 : pi * mu / std::sin(pi * mu);
  C f = reflection * (odd * h.ch + even * (ratio * log_inverse));
  C p = Real(0.5) / (even - mu * odd) * h.up, q = Real(0.5) / (even + mu * odd) * h.down;
  const C quarter = {(z.re / 2) * (z.re / 2) - (z.im / 2) * (z.im / 2), 2 * (z.re / 2) * (z.im / 2)};
  C c = {1, 0}, sum = f, next = p;
  for (long k = 1; k < 500; ++k) {
    const Real r = static_cast<Real>(k);
    f = (1 / (r * r - square)) * (r * f + p + q);
    p = (1 / (r - mu)) * p;
    q = (1 / (r + mu)) * q;
    c = (1 / r) * (c * quarter);
    const C term = c * f;
    sum += term;
    next += c * (p - r * f);
    if (kernel::abs1(term) < kernel::abs1(sum) * Machine<Real>::spacing / 4) break;
  }
  const Scaled<C> ez = exponential<Real>(z, 1);  // comes last: |z| <= 2.5
  return pair_near_zero(scaled(sum) * ez, scaled(Real(2) * next) * inverse(unit) * ez, unit);
}

// The same further out, by Steed's evaluation of the second continued fraction and the sum that normalizes it.
// I. J. Thompson, A. R. Barnett, Comput. Phys. Commun. 47 (1987).
template <class T>
struct Steed {
  T h, s;
};
template <class T, class Real>
Steed<T> l_steed_sums(Real a1, T z) {
  const T one = number<T>(1), two = number<T>(2);
  T b = Real(2) * (one + z), d = divided(one, b), h = d, delta = d, q1 = number<T>(0), q2 = one;
  Real a = -a1, c = a1;
  T q = number<T>(c), s = one + q * delta;
  for (long i = 2; i < 20000; ++i) {
    a -= static_cast<Real>(2 * (i - 1));
    c = -a * c / static_cast<Real>(i);
    const T q_new = (1 / a) * (q1 - b * q2);
    q1 = q2;
    q2 = q_new;
    q += c * q_new;
    b += two;
    d = divided(one, b + a * d);
    delta = (b * d - one) * delta;
    h += delta;
    const T term = q * delta;
    s += term;
    if (kernel::abs1(term) < kernel::abs1(s) * Machine<Real>::spacing / 4) break;
  }
  return {h, s};
}

template <class Real>
KPair<Complex<Real>> l_steed(Real mu, Complex<Real> z) {
  using C = Complex<Real>;
  const Real a1 = Real(0.25) - mu * mu, pi_2 = static_cast<Real>(1.57079632679489661923);
  Steed<C> sums;
  if (z.im == 0) {
    const Steed<Real> real = l_steed_sums(a1, z.re);
    sums = {{real.h, 0}, {real.s, 0}};
  } else {
    sums = l_steed_sums(a1, z);
  }
  const C k0 = square_root<Real>(C{pi_2, 0} / z) / sums.s;
  const C k1 = k0 * ((C{mu + Real(0.5), 0} + z - a1 * sums.h) / z);
  return {k0, k1, 0};
}

// exp(-z) I sqrt(2 pi z) by Hankel's expansion: the growing part, and the falling one where it counts.
template <class Real>
Complex<Real> l_hankel(Real nu, Complex<Real> z) {
  using C = Complex<Real>;
  const Real four = 4 * nu * nu;
  const C inverse_z = C{0.125, 0} / z;
  C term = {1, 0}, growing = {1, 0}, falling = {1, 0};
  Real sign = -1;
  for (long k = 1; k < 100; ++k, sign = -sign) {
    const Real j = static_cast<Real>(2 * k - 1);
    term = ((four - j * j) / static_cast<Real>(k)) * (term * inverse_z);
    growing += sign * term;
    falling += term;
    if (kernel::abs1(term) < Machine<Real>::spacing / 8) break;
  }
  if (z.im == 0 || z.re > 20) return growing;
  const Real side = z.im > 0 ? 1 : -1;
  return growing + turn<Real>(side * (nu + Real(0.5))) * plain(exponential<Real>(C{2 * z.re, 2 * z.im}, -1)) * falling;
}

// I of order nu over I of order nu - 1, from the ratio above it. At a zero of the lower order the divisor may cancel to nothing;
// what rounding can hide there stands in for it.
// With z = u x and the ratio u r for a unit u of the given square the same holds for x and r.
template <class T, class Real>
T l_next_ratio(Real nu, T z, T ratio, Real square = 1) {
  T product = z * ratio;
  if constexpr (!kernel::ComplexRecord<T>) product *= square;
  const T divisor = number<T>(2 * nu) + product;
  return divided(z, divisor == number<T>(0) ? number<T>(nu * Machine<Real>::spacing) : divisor);
}

// True where the continued fraction would need about |z| steps: z is great against the order nu and so near the imaginary axis
// that no solution of the recurrence dies away up to there. The recurrence then runs forward as well as backward, from an order
// `start` at which Hankel's expansion serves. Each order lets the solutions part by the factor exp(2 Re asinh(nu / z)).
template <class Real>
bool l_turns(Real nu, Complex<Real> z, Real size, Real& start) {
  const Real most = 1;
  if (size < hankel_modulus<Real> || 2 * nu > size) return false;
  Real parted = 0;
  constexpr int parts = 8;
  for (int k = 0; k < parts; ++k) {
    const Real order = nu * (static_cast<Real>(k) + Real(0.5)) / parts;
    const Complex<Real> w = Complex<Real>{order, 0} / z, root = square_root<Real>(Complex<Real>{1, 0} + w * w);
    parted += 2 * std::abs(logarithm<Real>(w + root).re) * nu / parts;
  }
  if (!(parted < most)) return false;
  const Real low = std::floor(std::sqrt(2 * size) - 2);
  start = nu - std::ceil(nu - low);
  return start >= 0 && start < nu;
}

// That ratio by the continued fraction, from the order at which the denominators are so great that what lies beyond does not
// count.
template <class T, class Real>
T l_fraction(Real nu, T z, Real square) {
  const T inverse_z = number<T>(2) / z;
  T before = number<T>(1), now = (nu + 1) * inverse_z;
  const Real wanted = 100 * std::max(kernel::abs1(now), Real(1)) / Machine<Real>::spacing;
  long j = 1;
  for (; kernel::abs1(now) * kernel::abs1(before) < wanted; ++j) {
    const T next = (nu + static_cast<Real>(j + 1)) * (inverse_z * now) + square * before;
    before = now;
    now = next;
  }
  T r = number<T>(0);
  for (; j >= 0; --j) r = l_next_ratio(nu + static_cast<Real>(j + 1), z, r, square);
  return r;
}

// I of order nu + 1 over I of order nu, the start of the backward recurrence.
template <class Real>
Complex<Real> l_c4is(Real nu, Complex<Real> z) {
  using C = Complex<Real>;
  const Real size = modulus<Real>(z);
  if (size >= hankel_modulus<Real> && 2 * size >= (nu + 1) * (nu + 1)) {
    const C low = l_hankel<Real>(nu, z);
    return l_hankel<Real>(nu + 1, z) / (low == C{0, 0} ? C{Machine<Real>::spacing, 0} : low);
  }
  Real start;
  if (l_turns<Real>(nu, z, size, start)) {
    C r = l_c4is<Real>(start, z);
    for (Real order = start + 1; order <= nu; order += 1) {
      r = C{1, 0} / (r == C{0, 0} ? C{Machine<Real>::spacing, 0} : r) - (2 * order) * (C{1, 0} / z);
    }
    return r;
  }
  if (z.im == 0) return {l_fraction<Real, Real>(nu, z.re, 1), 0};
  if (z.re == 0) return {0, l_fraction<Real, Real>(nu, z.im, -1)};
  return l_fraction<C, Real>(nu, z, 1);
}

// a b - 1 for b close to 1/a, to nearly all digits: the products in two parts, the great terms first.
template <class Real>
Complex<Real> product_less_one(Complex<Real> a, Complex<Real> b) {
  const Real p = a.re * b.re, q = -a.im * b.im, s = a.re * b.im, t = a.im * b.re;
  const Real low = std::fma(a.re, b.re, -p) + std::fma(-a.im, b.im, -q);
  const Real sum = p > q ? (p - 1) + q : (q - 1) + p;
  return {sum + low, (s + t) + (std::fma(a.re, b.im, -s) + std::fma(a.im, b.re, -t))};
}

template <class Real>
Real product_less_one(Real a, Real b) {
  return std::fma(a, b, Real(-1));
}

// I (from given ratios) and K of the orders mu + first, mu + first + 1, ..., one after the other; or J and Y of a real argument.
template <class T>
struct Run {
  using Real = kernel::RealOf<T>;

  Scaled<T> growing, falling;  // factors of I and of K: exp(z), exp(-z)
  KPair<T> k;
  Real square;  // -1 for J and Y, else 1: the sign in the recurrences
  Scaled<T> inverse_z;
  T factor, factor_low;  // 1/z and what its rounding lost, which would add up as a factor of every step

  Run(Real mu, long first, T z, Scaled<T> factor_i, Scaled<T> factor_k, KPair<T> start, Real sign)
      : growing(factor_i), falling(factor_k), k(start), square(sign) {
    const Scaled<T> s = scaled(z);
    inverse_z = inverse(s);
    const Real unit = std::scalbn(Real(1), static_cast<int>(inverse_z.exponent + s.exponent));
    factor_low = -(inverse_z.value * product_less_one<Real>(unit * inverse_z.value, s.value));
    factor = inverse_z.value;
    if (k.lift == 0) {
      const int shift = static_cast<int>(std::max(inverse_z.exponent, -20000L));
      factor = Exponents<Real>::shift(factor, shift);
      factor_low = Exponents<Real>::shift(factor_low, shift);
    }
    for (long j = 1; j <= first; ++j) step(mu + static_cast<Real>(j));
  }
  Run(Real mu, long first, T z) requires kernel::ComplexRecord<T>
      : Run(mu, first, z, exponential<Real>(z, 1), exponential<Real>(z, -1),
            l_near_zero<Real>(z) ? l_temme<Real>(mu, z) : l_steed<Real>(mu, z), 1) {}

  // From the orders nu - 1, nu to nu, nu + 1.
  void step(Real nu) {
    const T next = (2 * nu) * (factor * k.k1 + factor_low * k.k1);
    if (k.lift == 0) {
      const T sum = next + signed_by(k.k0);
      k.k0 = k.k1;
      k.k1 = sum;
    } else {
      const int e = static_cast<int>(inverse_z.exponent), lift = static_cast<int>(k.lift);
      const T sum = next + signed_by(Exponents<Real>::shift(k.k0, -e - lift));
      k.k0 = Exponents<Real>::shift(k.k1, lift - e);
      k.k1 = sum;
      k.exponent += e;
    }
    k.rescale();
  }

  Scaled<T> value_k() const {
    return scaled(k.k0, k.exponent - k.lift) * falling;
  }
  // From the Wronskian: I (K of the next order + ratio K) = 1/z.
  Scaled<T> value_i(T ratio) const {
    T product = ratio * k.k0;
    if (k.lift != 0) product = Exponents<Real>::shift(product, static_cast<int>(-k.lift));
    return inverse_z * inverse(scaled(k.k1 + signed_by(product), k.exponent)) * growing;
  }

 private:
  T signed_by(T value) const {
    if constexpr (kernel::ComplexRecord<T>) {
      return value;
    } else {
      return square * value;
    }
  }
};

// The ratios of n orders from nu on, by backward recurrence.
template <class Real>
void l_ratios(Real nu, Complex<Real> z, long n, Complex<Real>* ratio) {
  using C = Complex<Real>;
  C r = l_c4is<Real>(nu + static_cast<Real>(n - 1), z);
  ratio[n - 1] = r;
  for (long j = n - 2; j >= 0; --j) {
    r = l_next_ratio(nu + static_cast<Real>(j + 1), z, r);
    ratio[j] = r;
  }
}

}  // namespace zent::functions
