// Complex and real transforms in one dimension.
#include "math/transform/public.hpp"

namespace zent::transform {

namespace {

template <class Complex>
Complex* l_fft_complex(long n, Complex* p, Options& list) {
  using Real = typename RealOfElement<Complex>::type;
  const auto options = read_options<Complex>(list, true);
  if (failed<Math>() || !arguments_hold(n, p)) return nullptr;
  return deliver(options.result, n, n, [&](Complex* q) {
    return transform(n, reinterpret_cast<const Real*>(p), reinterpret_cast<Real*>(q), options.backward);
  });
}

template <class Real>
Real* l_fft_real(long n, Real* p, Options& list) {
  const auto options = read_options<Real>(list, true);
  if (failed<Math>() || !arguments_hold(n, p)) return nullptr;
  return deliver(options.result, n, n, [&](Real* q) { return real_transform(n, p, q, options.backward); });
}

// The bare transforms, in place.
template <class Real>
void complex_in_place(long n, Real* c, bool backward) {
  start_of_call<Real>();
  if (!transform(n, c, c, backward)) raise_out_of_memory<Math>({n}, {"n"});
  end_of_call<Real>();
}
template <class Real>
void real_in_place(long n, Real* r, bool backward) {
  start_of_call<Real>();
  if (!real_transform(n, r, r, backward)) raise_out_of_memory<Math>({n}, {"n"});
  end_of_call<Real>();
}

// Scratch memory of a bare call that stands alone is given back at once.
template <class Body>
void bare(Body body) {
  void* const mark = scratch_mark<Math>();
  body();
  if (scratch_mark<Math>() != mark) scratch_release<Math>(mark);
}

}  // namespace

}  // namespace zent::transform

using namespace zent;
using namespace zent::transform;

#define ZENT_FORM(P, Complex, R, Real, PREFIX)                                                                        \
  extern "C" Complex* zent_##P##_fft_complex(long n, Complex* p, ...) {                                               \
    ZENT_OPTIONS(options, p, 2);                                                                                      \
    Complex* q = public_call<Math>("zent_" #P "_fft_complex", [&] { return l_fft_complex<Complex>(n, p, options); }); \
    ZENT_OPTIONS_END(options);                                                                                        \
    return q;                                                                                                         \
  }                                                                                                                   \
  extern "C" Real* zent_##R##_fft_real(long n, Real* p, ...) {                                                        \
    ZENT_OPTIONS(options, p, 2);                                                                                      \
    Real* q = public_call<Math>("zent_" #R "_fft_real", [&] { return l_fft_real<Real>(n, p, options); });             \
    ZENT_OPTIONS_END(options);                                                                                        \
    return q;                                                                                                         \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f3tcf(long n, Real* c, Real*) {                                                      \
    bare([&] { complex_in_place(n, c, false); });                                                                     \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f3tcb(long n, Real* c, Real*) {                                                      \
    bare([&] { complex_in_place(n, c, true); });                                                                      \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f3trf(long n, Real* r, Real*) {                                                      \
    bare([&] { real_in_place(n, r, false); });                                                                        \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f3trb(long n, Real* r, Real*) {                                                      \
    bare([&] { real_in_place(n, r, true); });                                                                         \
  }
ZENT_FORM(c, zent_f_complex, f, float, )
ZENT_FORM(z, zent_d_complex, d, double, d)
#undef ZENT_FORM
