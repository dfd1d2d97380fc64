// The tables of the init functions.
#include "math/transform/factors.hpp"
#include "math/transform/public.hpp"

namespace zent::transform {

namespace {

// n, the number of factors and the factors, as far as there is room.
template <class Real>
void store_factors(long n, const Factors& factors, Real* at, long room) {
  if (room > 0) at[0] = static_cast<Real>(n);
  if (room > 1) at[1] = static_cast<Real>(factors.count);
  for (int k = 0; k < factors.count && k + 2 < room && k < kept_factors; ++k) at[k + 2] = static_cast<Real>(factors.factor[k]);
}

template <class Real>
Real* new_table(long n, long length) {
  Real* table = result<Math, Real>(length);
  if (table == nullptr) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  for (long k = 0; k < length; ++k) table[k] = 0;
  return table;
}

bool length_holds(long n, long least) {
  if (n < least) raise<Math>(5, MATH_SEQUENCE_LENGTH, {.i = {n}});
  return n >= least;
}

template <class Real>
Real* finished(long n, Real* table, bool filled) {
  if (!filled) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  keep<Math>(table);
  return table;
}

template <class Real>
Real* complex_init(long n) {
  if (!length_holds(n, 1) || n == 1) return nullptr;
  Real* table = new_table<Real>(n, complex_table_length(n));
  if (table == nullptr) return nullptr;
  store_factors(n, complex_factors(n), table + 4 * n, 15);
  return finished(n, table, complex_twiddles(n, table + 2 * n));
}

// The real table of length n into `room` reals, the end cut off.
template <class Real>
bool fill_real_table(long n, Real* table, long room) {
  store_factors(n, real_factors(n), table + 2 * n, room - 2 * n);
  return n == 1 || real_twiddles(n, table + n);
}

template <class Real>
Real* real_init(long n) {
  if (!length_holds(n, 1) || n == 1) return nullptr;
  Real* table = new_table<Real>(n, real_table_length(n));
  if (table == nullptr) return nullptr;
  return finished(n, table, fill_real_table(n, table, real_table_length(n)));
}

template <class Real>
Real* sine_init(long n) {
  if (!length_holds(n, 2)) return nullptr;
  const long length = sine_table_length(n);
  Real* table = new_table<Real>(n, length);
  if (table == nullptr) return nullptr;
  return finished(n, table, sine_weights(n, table) && fill_real_table(n + 1, table + n / 2, length - n / 2));
}

template <class Real>
Real* cosine_init(long n) {
  if (!length_holds(n, 2)) return nullptr;
  Real* table = new_table<Real>(n, cosine_table_length(n));
  if (table == nullptr || n <= 3) return finished(n, table, table != nullptr);
  return finished(n, table, cosine_weights(n, table) && fill_real_table(n - 1, table + n, 2 * n + 13));
}

}  // namespace

}  // namespace zent::transform

using namespace zent;
using namespace zent::transform;

#define ZENT_FORM(P, R, Real)                                                                        \
  extern "C" Real* zent_##P##_fft_complex_init(long n) {                                             \
    return public_call<Math>("zent_" #P "_fft_complex_init", [&] { return complex_init<Real>(n); }); \
  }                                                                                                  \
  extern "C" Real* zent_##R##_fft_real_init(long n) {                                                \
    return public_call<Math>("zent_" #R "_fft_real_init", [&] { return real_init<Real>(n); });       \
  }                                                                                                  \
  extern "C" Real* zent_##R##_fft_sine_init(long n) {                                                \
    return public_call<Math>("zent_" #R "_fft_sine_init", [&] { return sine_init<Real>(n); });       \
  }                                                                                                  \
  extern "C" Real* zent_##R##_fft_cosine_init(long n) {                                              \
    return public_call<Math>("zent_" #R "_fft_cosine_init", [&] { return cosine_init<Real>(n); });   \
  }
ZENT_FORM(c, f, float)
ZENT_FORM(z, d, double)
#undef ZENT_FORM
