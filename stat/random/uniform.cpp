// Uniform streams of the statistics half: all seven generators, their tables, and substreams.
#include "math/random/uniform.hpp"

ZENT_UNIFORM_HALF(zent::Stat, zents)

namespace zent::uniform {
namespace {

constexpr long register_values = shift_register_words + 2;  // the words and the two cursors

// The only option of the get functions, read until 0.
template <class T>
T* l_return_user(Options& options) {
  T* user = nullptr;
  while (const int code = options.code()) {
    if (code == ZENTS_RETURN_USER) {
      user = options.pointer<T>();
    } else {
      raise<Stat>(5, STAT_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
      if (code < 0) break;
    }
  }
  return user;
}

// The caller's array or a new one that the caller of the library will own; null after an error. `out` receives it later.
template <class T>
T* l_destination(T** out, T* user, long n) {
  if (!failed<Stat>() && out == nullptr) raise<Stat>(5, STAT_UNEXPECTED_NULL_POINTER, {.l = {"table"}});
  if (failed<Stat>()) return nullptr;
  T* values = user != nullptr ? user : result<Stat, T>(n);
  if (values == nullptr) raise<Stat>(5, STAT_OUT_OF_MEMORY);
  return values;
}

template <class Real>
void l_table_get(Real** table, Options& options) {
  Real* values = l_destination(table, l_return_user<Real>(options), shuffle_size);
  Common* common = nullptr;
  Shuffle<Real>* shuffle = nullptr;
  if (values == nullptr || !ready<Stat>(common, shuffle, &Shuffle<Real>::table_needs_first_touch)) return;
  if (table_ready<Real>(*common) == 0) fill_table<Stat>(*common, *shuffle);
  for (long k = 0; k < shuffle_size; ++k) values[k] = shuffle->table[k];
  keep<Stat>(values);
  *table = values;
}

void l_gfsr_set(const long* table) {
  if (table == nullptr) {
    raise<Stat>(5, STAT_UNEXPECTED_NULL_POINTER, {.l = {"table"}});
    return;
  }
  Common* common = l_r1int<Stat>(-2);
  if (common == nullptr) return;
  if (table[0] < 1) {
    common->gfsr_ready = 0;
    return;
  }
  for (long k = 0; k < register_values; ++k) {
    if (table[k] < 1) {
      raise<Stat>(5, STAT_NONPOSITIVE_TABLE, {.i = {table[k], k + 1}});
      return;
    }
    if (k < shift_register_words) common->gfsr.table[k] = table[k];
  }
  common->gfsr.p = (table[shift_register_words] - 1) % shift_register_words + 1;
  common->gfsr.q = (table[shift_register_words + 1] - 1) % shift_register_words + 1;
  common->gfsr_ready = 1;
}

void l_gfsr_get(long** table, Options& options) {
  long* values = l_destination(table, l_return_user<long>(options), register_values);
  Common* common = values == nullptr ? nullptr : l_r1int<Stat>(0);
  if (common == nullptr) return;
  if (common->gfsr_ready == 0) {
    build_shift_register(static_cast<unsigned>(common->seed), common->gfsr);
    common->gfsr_ready = 1;
  }
  for (long k = 0; k < shift_register_words; ++k) values[k] = common->gfsr.table[k];
  values[shift_register_words] = common->gfsr.p;
  values[shift_register_words + 1] = common->gfsr.q;
  keep<Stat>(values);
  *table = values;
}

// 100,000 steps at once by a power of the multiplier, in factors whose products stay exact in double precision.
long l_substream(long seed) {
  const Common* common = l_r1int<Stat>(-2);
  if (common == nullptr) return seed;
  const double s = static_cast<double>(seed);
  double jump = s;
  switch (common->generator_option) {
    case 1:
      jump = std::fmod(std::fmod(s * 7163.0, modulus) * 6538.0, modulus);
      break;
    case 3:
      jump = std::fmod(std::fmod(s * 3457.0, modulus) * 480.0, modulus);
      break;
    case 5: {
      const double b = std::fmod(std::fmod(s * 32768.0, modulus) * 32768.0, modulus);
      jump = std::fmod(std::fmod(s * 22549.0, modulus) * 9190.0 + b, modulus);
      break;
    }
    case shift_register_option:
      raise<Stat>(5, STAT_NO_GFSR_SUBSTREAM, {.i = {common->generator_option}});
      return seed;
    default:
      raise<Stat>(5, STAT_NO_SHUFFLE_SUBSTREAM, {.i = {common->generator_option}});
      return seed;
  }
  return static_cast<long>(jump);
}

long l_option_get() {
  const Common* common = l_r1int<Stat>(-2);
  return common == nullptr ? 0 : common->generator_option;
}

}  // namespace
}  // namespace zent::uniform

extern "C" long zents_random_option_get() {
  return zent::scalar_call<zent::Stat>("zents_random_option_get", [] { return zent::uniform::l_option_get(); });
}
extern "C" long zents_random_substream_seed_get(long seed) {
  return zent::scalar_call<zent::Stat>("zents_random_substream_seed_get", [=] { return zent::uniform::l_substream(seed); });
}

// Both precisions carry the single form's name in their frames: messages have always shown it.
#define ZENT_FORM(P, Real)                                                                                             \
  extern "C" void zents_##P##_random_table_set(Real* table) {                                                          \
    zent::public_call<zent::Stat>("zents_f_random_table_set", [=] { zent::uniform::l_table_set<zent::Stat>(table); }); \
  }                                                                                                                    \
  extern "C" void zents_##P##_random_table_get(Real** table, ...) {                                                    \
    ZENT_OPTIONS(options, table, 1);                                                                                   \
    zent::public_call<zent::Stat>("zents_f_random_table_get", [&] { zent::uniform::l_table_get(table, options); });    \
    ZENT_OPTIONS_END(options);                                                                                         \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM

extern "C" void zents_random_GFSR_table_set(long* table) {
  zent::public_call<zent::Stat>("zents_random_GFSR_table_set", [=] { zent::uniform::l_gfsr_set(table); });
}
extern "C" void zents_random_GFSR_table_get(long** table, ...) {
  ZENT_OPTIONS(options, table, 1);
  zent::public_call<zent::Stat>("zents_random_GFSR_table_get", [&] { zent::uniform::l_gfsr_get(table, options); });
  ZENT_OPTIONS_END(options);
}
