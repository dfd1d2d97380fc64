// Sequences of Bessel functions I, J, K, Y of complex argument.
#include "math/functions/bessel_arrays.hpp"
#include "math/functions/bessel_core.hpp"
#include "math/functions/bessel_real.hpp"
#include "runtime/options.hpp"
#include "zent/bessel.h"
#include "zent/option_codes.h"

namespace zent {
namespace {

using functions::Complex;
using functions::Run;
using functions::Scaled;

enum class Kind { i, j, k, y };

inline constexpr double greatest_order = 1e7;

template <class Real>
struct SequenceOptions {
  Complex<Real>* user = nullptr;
};

// Any other code counts as the third argument, wherever it stands.
template <class Real>
SequenceOptions<Real> parse(Options& options) {
  SequenceOptions<Real> o;
  for (int code; (code = options.code()) != 0;) {
    if (code == ZENT_RETURN_USER) {
      o.user = options.pointer<Complex<Real>>();
    } else {
      raise<Math>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, 3}});
      if (code < 0) break;
    }
  }
  return o;
}

// The orders xnu + k as a fraction of at most 1/2 either way and a whole part.
template <class Real>
struct Order {
  Real fraction;
  long whole;
};

template <class Real>
Complex<Real> conjugate_if(bool condition, Complex<Real> z) {
  return condition ? Complex<Real>{z.re, -z.im} : z;
}

// i^k z as a factor.
template <class Record>
auto turned(Record z, long k) {
  using Real = decltype(z.re);
  return Scaled<Record>{functions::quarter_turns<Real>(z, k), 0};
}

// Every worker stores n values of its function; argument and orders are valid and z is not 0.

// I: from the right half plane by I(-w) = exp(+-i pi nu) I(w).
template <class Real>
void l_c3is(Order<Real> order, Complex<Real> z, long n, Complex<Real>* out) {
  const bool left = z.re < 0;
  const Complex<Real> w = left ? Complex<Real>{-z.re, -z.im} : z;
  const Real side = std::signbit(z.im) ? -1 : 1;
  functions::l_ratios<Real>(order.fraction + static_cast<Real>(order.whole), w, n, out);
  const Complex<Real> unit = functions::turn<Real>(side * order.fraction);
  Run<Complex<Real>> run(order.fraction, order.whole, w);
  for (long k = 0; k < n; ++k) {
    Scaled<Complex<Real>> value = run.value_i(out[k]);
    if (left) value = value * turned(unit, 2 * (order.whole + k));
    out[k] = plain(value);
    if (k + 1 < n) run.step(order.fraction + static_cast<Real>(order.whole + k + 1));
  }
}

// K: in the left half plane K(-w) = exp(-+i pi nu) K(w) -+ i pi I(w).
template <class Real>
void l_c2ks(Order<Real> order, Complex<Real> z, long n, Complex<Real>* out) {
  const bool left = z.re < 0;
  const Complex<Real> w = left ? Complex<Real>{-z.re, -z.im} : z;
  const Real side = std::signbit(z.im) ? -1 : 1, pi = static_cast<Real>(3.14159265358979323846);
  if (left) functions::l_ratios<Real>(order.fraction + static_cast<Real>(order.whole), w, n, out);
  const Complex<Real> unit = functions::turn<Real>(-side * order.fraction);
  Run<Complex<Real>> run(order.fraction, order.whole, w);
  for (long k = 0; k < n; ++k) {
    Scaled<Complex<Real>> value = run.value_k();
    if (left) {
      value = value * turned(unit, 2 * (order.whole + k)) + run.value_i(out[k]) * functions::scaled(Complex<Real>{0, -side * pi});
    }
    out[k] = plain(value);
    if (k + 1 < n) run.step(order.fraction + static_cast<Real>(order.whole + k + 1));
  }
}

// J(z) = exp(i pi nu / 2) I(-i z) in the upper half plane; conjugates below.
template <class Real>
void l_cbjs(Order<Real> order, Complex<Real> z, long n, Complex<Real>* out) {
  const bool below = std::signbit(z.im);
  const Complex<Real> w = {std::abs(z.im), -z.re};
  functions::l_ratios<Real>(order.fraction + static_cast<Real>(order.whole), w, n, out);
  const Complex<Real> unit = functions::turn<Real>(order.fraction / 2);
  Run<Complex<Real>> run(order.fraction, order.whole, w);
  for (long k = 0; k < n; ++k) {
    out[k] = conjugate_if<Real>(below, plain(run.value_i(out[k]) * turned(unit, order.whole + k)));
    if (k + 1 < n) run.step(order.fraction + static_cast<Real>(order.whole + k + 1));
  }
}

// Y = i (J - H), H(z) = 2/(pi i) exp(-i pi nu / 2) K(-i z) being Hankel's function, in the upper half plane; conjugates below.
template <class Real>
void l_c2ys(Order<Real> order, Complex<Real> z, long n, Complex<Real>* out) {
  const bool below = std::signbit(z.im), real = z.im == 0 && z.re > 0;
  const Complex<Real> w = {std::abs(z.im), -z.re};
  const Real two_over_pi = static_cast<Real>(0.63661977236758134308);
  if (!real) functions::l_ratios<Real>(order.fraction + static_cast<Real>(order.whole), w, n, out);
  const Complex<Real> unit = functions::turn<Real>(order.fraction / 2), back = {unit.re, -unit.im};
  Run<Complex<Real>> run(order.fraction, order.whole, w);
  for (long k = 0; k < n; ++k) {
    // i times -H is -2/pi exp(-i pi nu / 2) K; for real z the real part of it is Y.
    Scaled<Complex<Real>> value = run.value_k() * turned(-two_over_pi * back, -(order.whole + k));
    if (!real) value = value + run.value_i(out[k]) * turned(unit, order.whole + k + 1);
    out[k] = conjugate_if<Real>(below, plain(value));
    if (k + 1 < n) run.step(order.fraction + static_cast<Real>(order.whole + k + 1));
  }
}

// I for positive x so great against the orders that its own expansion serves.
template <class Real>
void l_far_real_i(Real nu, Real x, long n, Complex<Real>* out) {
  const Real root = 1 / std::sqrt(static_cast<Real>(6.28318530717958647693) * x);
  const Scaled<Real> size = functions::exponential(x) * functions::scaled(root);
  for (long k = 0; k < n; k += 2) {
    const auto [low, high] = functions::l_hankel_sums<Real, Real>(nu + static_cast<Real>(k), -x);
    out[k] = {plain(size * functions::scaled(low)), 0};
    if (k + 1 < n) out[k + 1] = {plain(size * functions::scaled(high)), 0};
  }
}

// All kinds for positive x. K and Y run forward from two low orders, and so does J while the orders stay below x; I, and J
// beyond, come from their ratios.
template <class Real>
void l_real_sequence(Kind kind, Order<Real> order, Real x, long n, Complex<Real>* out) {
  const bool first_kind = kind == Kind::i || kind == Kind::j;
  const Real square = kind == Kind::i || kind == Kind::k ? 1 : -1;
  const Real nu = order.fraction + static_cast<Real>(order.whole), last = nu + static_cast<Real>(n - 1);
  if (kind == Kind::i && x >= functions::hankel_modulus<Real> && 2 * x >= (last + 1) * (last + 1)) {
    return l_far_real_i(nu, x, n, out);
  }
  const bool forward = !first_kind || (kind == Kind::j && x > functions::near_end(square) && last <= x);
  if (!forward) {
    Real ratio = functions::l_real_fraction(last, x, square);
    out[n - 1].re = ratio;
    for (long k = n - 2; k >= 0; --k) {
      out[k].re = ratio = functions::l_next_ratio(nu + static_cast<Real>(k + 1), x, ratio, square);
    }
  }
  const long skip = functions::orders_to_skip(x, order.whole);
  functions::Start<Real> start;
  if (first_kind && forward) {
    start = {functions::l_waves(order.fraction, skip, x).j, {1, 0}};
  } else {
    start = functions::l_start(order.fraction, skip, x, square, first_kind);
  }
  Run<Real> run(order.fraction + static_cast<Real>(skip), order.whole - skip, x, start.factor, start.factor, start.pair, square);
  for (long k = 0; k < n; ++k) {
    out[k] = {plain(forward ? run.value_k() : run.value_i(out[k].re)), 0};
    if (k + 1 < n) run.step(nu + static_cast<Real>(k + 1));
  }
}

// Values at z = 0; false when one is infinite.
template <class Real>
bool l_at_zero(Kind kind, Real xnu, long n, Complex<Real>* out) {
  if (kind == Kind::k || kind == Kind::y || xnu < 0) return false;
  for (long k = 0; k < n; ++k) out[k] = {xnu + static_cast<Real>(k) == 0 ? Real(1) : Real(0), 0};
  return true;
}

// True where real values swing about 0: rounding may then make one of them vanish, which is no underflow.
template <class Real>
bool l_oscillates(Kind kind, Real xnu, Complex<Real> z, long n) {
  return z.im == 0 && (kind == Kind::y || (kind == Kind::j && xnu + static_cast<Real>(n - 1) <= std::abs(z.re)));
}

// How many values at the front are numbers of full precision: what overflows or underflows ends the count.
template <class Real>
long l_valid(long n, const Complex<Real>* out, bool may_vanish) {
  for (long k = 0; k < n; ++k) {
    const Real size = functions::larger_part<Real>(out[k]);
    if (may_vanish && size == 0) continue;
    if (!(size >= Machine<Real>::smallest && size <= Machine<Real>::largest)) return k;
    if (!(std::abs(out[k].re) + std::abs(out[k].im) <= 2 * size)) return k;
  }
  return n;
}

// Whole orders of I and J at negative x are real too: (-1)^nu times the value at -x.
template <class Real>
bool l_is_real(Kind kind, Order<Real> order, Complex<Real> z) {
  return z.im == 0 && (z.re > 0 || (order.fraction == 0 && (kind == Kind::i || kind == Kind::j)));
}

template <class Real>
void l_compute(Kind kind, Order<Real> order, Complex<Real> z, long n, Complex<Real>* out) {
  if (l_is_real(kind, order, z)) {
    l_real_sequence(kind, order, std::abs(z.re), n, out);
    for (long k = order.whole & 1 ? 0 : 1; z.re < 0 && k < n; k += 2) out[k].re = -out[k].re;
    return;
  }
  switch (kind) {
    case Kind::i:
      return l_c3is(order, z, n, out);
    case Kind::j:
      return l_cbjs(order, z, n, out);
    case Kind::k:
      return l_c2ks(order, z, n, out);
    case Kind::y:
      return l_c2ys(order, z, n, out);
  }
}

template <class Real>
Complex<Real>* l_bessel_sequence(Kind kind, Real xnu, Complex<Real> z, long n, const SequenceOptions<Real>& options) {
  if (n < 1) {
    if (kind == Kind::i || kind == Kind::k) return failed<Math>() ? nullptr : options.user;
    raise<Math>(5, MATH_FCN_VALUES, {.i = {n}});
  }
  const bool not_numbers = xnu != xnu || z.re != z.re || z.im != z.im;
  if (!not_numbers) {
    if (xnu <= Real(-0.5) || static_cast<double>(xnu) + static_cast<double>(n) - 1 > greatest_order) {
      raise<Math>(5, MATH_INPUT_ARG_XNU, {.r = {static_cast<double>(xnu)}});
    }
    const Real size = z.im == 0 ? std::abs(z.re) : functions::modulus<Real>(z), limit = 1 / Machine<Real>::epsilon;
    if (size > limit) raise<Math>(5, MATH_COMPLEX_ABS_VALUE, {.r = {static_cast<double>(size), static_cast<double>(limit)}});
  }
  if (failed<Math>()) return nullptr;
  Complex<Real>* const out = options.user != nullptr ? options.user : result<Math, Complex<Real>>(n);
  if (out == nullptr) {
    raise_out_of_memory<Math>({n}, {"values"});
    return nullptr;
  }
  if (not_numbers) {
    const Real value = xnu != xnu ? xnu : z.re != z.re ? z.re : z.im;
    for (long k = 0; k < n; ++k) out[k] = {value, value};
  } else if (z.re == 0 && z.im == 0) {
    if (!l_at_zero(kind, xnu, n, out)) {
      raise<Math>(5, MATH_COMPLEX_DIVIDE_BY_ZERO);
      return nullptr;
    }
  } else {
    const Real whole = std::round(xnu);
    const Order<Real> order = {xnu - whole, static_cast<long>(whole)};
    l_compute(kind, order, z, n, out);
    const long valid = l_valid<Real>(n, out, l_oscillates(kind, xnu, z, n));
    if (valid < n) {
      raise<Math>(4, MATH_FIRST_CBS_VALID, {.i = {valid, n}});
      return nullptr;
    }
  }
  if (options.user == nullptr) keep<Math>(out);
  return out;
}

// The form with all arguments by value touches no memory of the caller without ZENT_RETURN_USER, and then needs no trap.
template <class Real>
Complex<Real>* l_call_by_value(Kind kind, Real xnu, Complex<Real> z, long n, Options& options) {
  const SequenceOptions<Real> parsed = parse<Real>(options);
  const auto body = [=] { return l_bessel_sequence<Real>(kind, xnu, z, n, parsed); };
  if (parsed.user == nullptr || trap_status<Math> == 0) return body();
  Complex<Real>* values = nullptr;
  envelope::run_trapped<Math>(values, body);
  return values;
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, Record, Letter, kind)                                                                               \
  extern "C" Record* zent_##P##_bessel_##Letter##x(Real xnu, Record z, long n, ...) {                                          \
    ZENT_OPTIONS(options, n, 3);                                                                                               \
    Record* values = zent::scalar_call<zent::Math>(                                                                            \
        "zent_" #P "_bessel_" #Letter "x", [&] { return zent::l_call_by_value<Real>(zent::Kind::kind, xnu, z, n, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                 \
    return values;                                                                                                             \
  }                                                                                                                            \
  extern "C" Record* zent_##P##_bessel_##Letter##x_adr(const Real* xnu, const Record* z, long n, ...) {                        \
    ZENT_OPTIONS(options, n, 3);                                                                                               \
    Record* values = zent::public_call<zent::Math>("zent_" #P "_bessel_" #Letter "x_adr", [&] {                                \
      return zent::l_bessel_sequence<Real>(zent::Kind::kind, *xnu, *z, n, zent::parse<Real>(options));                         \
    });                                                                                                                        \
    ZENT_OPTIONS_END(options);                                                                                                 \
    return values;                                                                                                             \
  }
#define ZENT_FORMS(Letter, kind)                    \
  ZENT_FORM(c, float, zent_f_complex, Letter, kind) \
  ZENT_FORM(z, double, zent_d_complex, Letter, kind)
ZENT_FORMS(I, i)
ZENT_FORMS(J, j)
ZENT_FORMS(K, k)
ZENT_FORMS(Y, y)
#undef ZENT_FORMS
#undef ZENT_FORM

namespace zent::functions {

namespace {

template <class Function, class Real>
void each(Function function, const Function* forms, const char* const* names, Real order, const Complex<Real>* z, long count,
          long n, Complex<Real>* out) {
  int kind = 0;
  while (kind < 3 && forms[kind] != function) ++kind;
  for (long k = 0; k < count; ++k) {
    const Complex<Real> argument = z[k];
    Complex<Real>* const row = n > 0 ? out + k * n : out;
    for (long j = 0; j < n; ++j) row[j] = {Machine<Real>::not_a_number, Machine<Real>::not_a_number};
    scalar_call<Math>(names[kind], [=] {
      return l_bessel_sequence<Real>(static_cast<Kind>(kind), order, argument, n, SequenceOptions<Real>{row});
    });
  }
}

}  // namespace

#define ZENT_LOOP(P, Real, Function)                                                                                   \
  void apply(Function function, Real order, const Complex<Real>* z, long count, long n, Complex<Real>* out) {          \
    static constexpr Function forms[] = {zent_##P##_bessel_Ix_adr, zent_##P##_bessel_Jx_adr, zent_##P##_bessel_Kx_adr, \
                                         zent_##P##_bessel_Yx_adr};                                                    \
    static constexpr const char* names[] = {"zent_" #P "_bessel_Ix_adr", "zent_" #P "_bessel_Jx_adr",                  \
                                            "zent_" #P "_bessel_Kx_adr", "zent_" #P "_bessel_Yx_adr"};                 \
    each(function, forms, names, order, z, count, n, out);                                                             \
  }
ZENT_LOOP(z, double, SequenceInDouble)
ZENT_LOOP(c, float, SequenceInSingle)
#undef ZENT_LOOP

}  // namespace zent::functions
