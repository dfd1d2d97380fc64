// Sine and cosine transforms, each one real transform of a neighbouring length (Dollimore 1973; Swarztrauber 1982).
#include "math/transform/public.hpp"

namespace zent::transform {

namespace {

// p into q, which may be the same array. Without memory false.
template <class Real>
bool sine_transform(long n, const Real* w, const Real* p, Real* q) {
  constexpr Real root3 = static_cast<Real>(1.7320508075688772);
  if (n == 1) {
    q[0] = 2 * p[0];
    return true;
  }
  if (n == 2) {
    const Real sum = p[0] + p[1], difference = p[0] - p[1];
    q[0] = root3 * sum;
    q[1] = root3 * difference;
    return true;
  }
  Real* x = scratch<Math, Real>(n + 1);
  if (x == nullptr) return false;
  x[0] = 0;
  for (long k = 1; k <= n / 2; ++k) {
    const Real t1 = p[k - 1] - p[n - k], t2 = (p[k - 1] + p[n - k]) * w[k - 1];
    x[k] = t1 + t2;
    x[n + 1 - k] = t2 - t1;
  }
  if (n % 2 != 0) x[(n + 1) / 2] = 4 * p[(n - 1) / 2];
  if (!real_transform(n + 1, x, x, false)) return false;
  q[0] = x[0] / 2;
  for (long i = 2; i < n; i += 2) {
    q[i - 1] = -x[i];
    q[i] = x[i - 1] + q[i - 2];
  }
  if (n % 2 == 0) q[n - 1] = -x[n];
  return true;
}

template <class Real>
bool cosine_transform(long n, const Real* w, const Real* p, Real* q) {
  if (n == 1) {
    q[0] = p[0];
    return true;
  }
  if (n <= 3) {
    const Real sum = p[0] + p[n - 1], difference = p[0] - p[n - 1], middle = n == 3 ? 2 * p[1] : 0;
    q[0] = sum + middle;
    q[1] = difference;
    if (n == 3) q[2] = sum - middle;
    return true;
  }
  Real c1 = p[0] - p[n - 1];
  if (q != p) {
    for (long k = 0; k < n; ++k) q[k] = p[k];
  }
  q[0] += q[n - 1];
  for (long k = 1; k < n / 2; ++k) {
    const long kc = n - 1 - k;
    const Real t1 = q[k] + q[kc], difference = q[k] - q[kc];
    c1 += w[kc] * difference;
    const Real t2 = w[k] * difference;
    q[k] = t1 - t2;
    q[kc] = t1 + t2;
  }
  if (n % 2 != 0) q[n / 2] += q[n / 2];
  if (!real_transform(n - 1, q, q, false)) return false;
  Real before = q[1];
  q[1] = c1;
  for (long i = 3; i < n; i += 2) {
    const Real x = q[i];
    q[i] = q[i - 2] - q[i - 1];
    q[i - 1] = before;
    before = x;
  }
  if (n % 2 != 0) q[n - 1] = before;
  return true;
}

template <class Real>
struct Sine {
  static constexpr auto weights = prepared_sine<Real>;
  static constexpr auto run = sine_transform<Real>;
};
template <class Real>
struct Cosine {
  static constexpr auto weights = prepared_cosine<Real>;
  static constexpr auto run = cosine_transform<Real>;
};

template <class Kind, class Real>
Real* l_fft_trigonometric(long n, Real* p, Options& list) {
  const auto options = read_options<Real>(list, false);
  if (failed<Math>() || !arguments_hold(n, p)) return nullptr;
  if (options.params == nullptr && n < 2) {
    raise<Math>(5, MATH_SEQUENCE_LENGTH, {.i = {n}});
    return nullptr;
  }
  return deliver(options.result, n, n, [&](Real* q) {
    const Real* w = options.params;
    if (w == nullptr && n > 2) w = Kind::weights(n);
    return (w != nullptr || n <= 2) && Kind::run(n, w, p, q);
  });
}

template <class Kind, class Real>
void in_place(long n, Real* x, const Real* params) {
  void* const mark = scratch_mark<Math>();
  start_of_call<Real>();
  if (!Kind::run(n, params, x, x)) raise_out_of_memory<Math>({n}, {"n"});
  end_of_call<Real>();
  if (scratch_mark<Math>() != mark) scratch_release<Math>(mark);
}

}  // namespace

}  // namespace zent::transform

using namespace zent;
using namespace zent::transform;

#define ZENT_FORM(P, Real, PREFIX)                                                                                           \
  extern "C" Real* zent_##P##_fft_sine(long n, Real* p, ...) {                                                               \
    ZENT_OPTIONS(options, p, 2);                                                                                             \
    Real* q = public_call<Math>("zent_" #P "_fft_sine", [&] { return l_fft_trigonometric<Sine<Real>>(n, p, options); });     \
    ZENT_OPTIONS_END(options);                                                                                               \
    return q;                                                                                                                \
  }                                                                                                                          \
  extern "C" Real* zent_##P##_fft_cosine(long n, Real* p, ...) {                                                             \
    ZENT_OPTIONS(options, p, 2);                                                                                             \
    Real* q = public_call<Math>("zent_" #P "_fft_cosine", [&] { return l_fft_trigonometric<Cosine<Real>>(n, p, options); }); \
    ZENT_OPTIONS_END(options);                                                                                               \
    return q;                                                                                                                \
  }                                                                                                                          \
  extern "C" void zent_##PREFIX##f2int(long n, Real* x, Real* params) {                                                      \
    in_place<Sine<Real>>(n, x, params);                                                                                      \
  }                                                                                                                          \
  extern "C" void zent_##PREFIX##f2ost(long n, Real* x, Real* params) {                                                      \
    in_place<Cosine<Real>>(n, x, params);                                                                                    \
  }
ZENT_FORM(f, float, )
ZENT_FORM(d, double, d)
#undef ZENT_FORM
