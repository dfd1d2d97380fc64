// Uniform streams, one for each half: state, seeds, generators, shuffle tables. The statistics half also has the shift register.
#pragma once

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <type_traits>

#include "math/random/lanes.hpp"
#include "math/random/shift_register.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"
#include "zents.h"

namespace zent::uniform {

inline constexpr double modulus = 2147483647.0;
inline constexpr double state_scale = 4.656612875245797e-10;  // the double nearest 1 / modulus
inline constexpr long shuffle_size = 128;
inline constexpr long block_size = 1024;  // states computed at a time
inline constexpr long shift_register_option = 7;

template <class Half>
inline constexpr bool has_shift_register = std::is_same_v<Half, Stat>;

struct Common {
  long needs_init;
  long seeded;
  double modulus;
  double reciprocal;
  double seed_value;
  float float_scale;
  long seed;
  long generator_option;
  long table_ready[2];  // shuffle tables, single and double
  long gfsr_ready;
  ShiftRegister gfsr;
};

template <class Real>
struct Shuffle {
  Real table[shuffle_size];
  long needs_first_touch;
  long table_needs_first_touch;
};

// A record of the half that lives as long as the process, made at its first use; null when there is no memory for it.
template <class Half, class Record>
struct Store {
  static inline long key = 0, once_key = 0;
  static void allocatekey() {
    if constexpr (std::is_same_v<Half, Math>) {
      zent_key_create(&key, std::free);
    } else {
      zents_key_create(&key, std::free);
    }
  }
  static Record* get(bool* fresh) {
    constexpr bool math = std::is_same_v<Half, Math>;
    if (once_key == 0) math ? zent_once(&once_key, allocatekey) : zents_once(&once_key, allocatekey);
    void* record = math ? zent_getspecific(key) : zents_getspecific(key);
    *fresh = record == nullptr;
    if (record == nullptr) {
      record = std::calloc(1, sizeof(Record));
      if (record == nullptr || (math ? zent_setspecific(key, record) : zents_setspecific(key, record)) != 0) {
        std::free(record);
        raise<Half>(5, MATH_OUT_OF_MEMORY);
        return nullptr;
      }
    }
    return static_cast<Record*>(record);
  }
};

// A time of day in UTC, 2 to 235960.
inline long clock_seed() {
  const std::time_t now = std::time(nullptr);
  const std::tm* day = std::gmtime(&now);
  if (day == nullptr) day = std::localtime(&now);
  const long value = day == nullptr ? 0 : day->tm_hour * 10000L + day->tm_min * 100L + day->tm_sec + 1;
  return value < 2 ? 123457 : value;
}

template <class Half>
void store_seed(Common& common, long seed) {
  common.seed = seed;
  common.seed_value = static_cast<double>(seed);
}

// Scales that keep single-precision output below 1, whatever the rounding of the reciprocal.
inline void set_scales(Common& common) {
  common.reciprocal = 1.0 / common.modulus;
  while (common.reciprocal * 2147483646.0 >= 1.0) common.reciprocal *= 1.0 - Machine<double>::spacing;
  common.float_scale = static_cast<float>(common.reciprocal);
  while (common.float_scale * 2147483648.0F >= 1.0F) common.float_scale *= 1.0F - Machine<float>::spacing;
}

// The setup that everything goes through: arg -2 nothing more, -1 seeded, 0 seeded from the clock if need be, above 0 the
// generator.
template <class Half>
Common* l_r1int(long arg) {
  bool fresh = false;
  Common* common = Store<Half, Common>::get(&fresh);
  if (common == nullptr) return nullptr;
  if (fresh) common->needs_init = 1;
  if (common->needs_init != 0) {
    common->generator_option = 1;
    common->table_ready[0] = common->table_ready[1] = 0;
    common->modulus = arg == shift_register_option ? 2147483648.0 : modulus;
    set_scales(*common);
    common->needs_init = 0;
  }
  if (arg == -1) {
    common->seeded = 1;
  } else if (arg == 0 && common->seeded == 0) {
    store_seed<Half>(*common, clock_seed());
    common->seeded = 1;
  } else if (arg > 0) {
    common->generator_option = arg;
  }
  return common;
}

inline unsigned multiplier(long generator_option) {
  return generator_option <= 2 ? 16807U : generator_option <= 4 ? 397204094U : 950706376U;
}

template <class Real>
double output_scale(const Common& common) {
  return std::is_same_v<Real, float> ? static_cast<double>(common.float_scale) : state_scale;
}

template <class Real>
long& table_ready(Common& common) {
  return common.table_ready[std::is_same_v<Real, double>];
}

// The state as a residue: words of a shift register's table that the caller has set may be longer than 31 bits.
inline unsigned residue(const Common& common) {
  return static_cast<unsigned>(common.seed % congruential_modulus);
}

// The first contents are quotients where later ones are products: their last bits differ, and streams depend on it.
template <class Half, class Real>
void fill_table(Common& common, Shuffle<Real>& shuffle) {
  int states[shuffle_size];
  congruential_states(residue(common), multiplier(common.generator_option), shuffle_size, states);
  for (long k = 0; k < shuffle_size; ++k) {
    shuffle.table[k] = static_cast<Real>(states[k] / (std::is_same_v<Real, float> ? common.modulus : modulus));
  }
  store_seed<Half>(common, states[shuffle_size - 1]);
  table_ready<Real>(common) = 1;
}

template <class Half, class Real>
Shuffle<Real>* shuffle_record() {
  bool fresh = false;
  Shuffle<Real>* shuffle = Store<Half, Shuffle<Real>>::get(&fresh);
  if (shuffle != nullptr && fresh) shuffle->needs_first_touch = shuffle->table_needs_first_touch = 1;
  return shuffle;
}

// State and shuffle record; the stream is seeded at the record's first touch of the kind that `touch` tells.
template <class Half, class Real>
bool ready(Common*& common, Shuffle<Real>*& shuffle, long Shuffle<Real>::*touch) {
  shuffle = shuffle_record<Half, Real>();
  common = shuffle == nullptr ? nullptr : l_r1int<Half>(shuffle->*touch != 0 ? 0 : -2);
  if (common == nullptr) return false;
  shuffle->*touch = 0;
  return true;
}

template <class Half, class Real>
void congruential_block(Common& common, Shuffle<Real>& shuffle, long n, Real* r) {
  const bool shuffled = common.generator_option % 2 == 0;
  const double scale = output_scale<Real>(common);
  if (shuffled && table_ready<Real>(common) == 0) fill_table<Half>(common, shuffle);
  int states[block_size];
  for (long done = 0; done < n;) {
    const long part = n - done < block_size ? n - done : block_size;
    congruential_states(residue(common), multiplier(common.generator_option), part, states);
    scale_states(states, part, scale, r + done);
    for (long k = done; shuffled && k < done + part; ++k) {
      Real& entry = shuffle.table[states[k - done] % shuffle_size];
      const Real next = r[k];
      r[k] = entry;
      entry = next;
    }
    store_seed<Half>(common, states[part - 1]);
    done += part;
  }
}

template <class Half, class Real>
void shift_register_draw(Common& common, long n, Real* r) {
  if (common.gfsr_ready == 0) {
    build_shift_register(static_cast<unsigned>(common.seed), common.gfsr);
    common.gfsr_ready = 1;
  }
  Real scale;
  if constexpr (std::is_same_v<Real, float>) {
    scale = common.float_scale;
  } else {
    scale = common.reciprocal;
  }
  store_seed<Half>(common, draw_shift_register(common.gfsr, n, scale, r));
}

// Fills an array: what every sampler of the half calls. False after an error.
template <class Half, class Real>
bool fill(long n, Real* r) {
  Common* common = nullptr;
  Shuffle<Real>* shuffle = nullptr;
  if (!ready<Half>(common, shuffle, &Shuffle<Real>::needs_first_touch)) return false;
  if (has_shift_register<Half> && common->generator_option == shift_register_option) {
    shift_register_draw<Half>(*common, n, r);
  } else {
    congruential_block<Half>(*common, *shuffle, n, r);
  }
  return true;
}

template <class Half>
void check_count(long n, const char* name) {
  long position = 0;
  if constexpr (std::is_same_v<Half, Math>) {
    zent_c1iarg(n, name, 1, -1, &position);
  } else {
    zents_c1iarg(n, name, 1, -1, &position);
  }
}

template <class Half, class Real>
void l_rnun(long n, Real* r) {
  check_count<Half>(n, "nr");
  if (!failed<Half>() && r == nullptr) raise<Half>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"r"}});
  if (!failed<Half>()) fill<Half>(n, r);
}

// At most one option is read and no terminator behind it. The mathematics half takes the statistics half's code as well.
template <class Half, class Real>
Real* l_random_uniform(long n, Options& options) {
  Real* user = nullptr;
  const int code = options.code();
  if (code == ZENTS_RETURN_USER || (std::is_same_v<Half, Math> && code == ZENT_RETURN_USER)) {
    user = options.pointer<Real>();
  } else if (code != 0) {
    raise<Half>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
  }
  check_count<Half>(n, "n_random");
  if (failed<Half>()) return nullptr;
  Real* r = user != nullptr ? user : result<Half, Real>(n);
  if (r == nullptr) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return nullptr;
  }
  if (!fill<Half>(n, r)) return nullptr;
  if (user == nullptr) keep<Half>(r);
  return r;
}

template <class Half>
void l_random_seed_set(long seed) {
  if (static_cast<unsigned long>(seed) > 2147483646UL) {
    l_r1int<Half>(0);
  } else if (Common* common = l_r1int<Half>(seed == 0 ? -2 : -1)) {
    store_seed<Half>(*common, seed == 0 ? clock_seed() : seed);
  }
}

template <class Half>
void l_random_option(long generator_option) {
  long position = 0;
  if constexpr (std::is_same_v<Half, Math>) {
    zent_c1iarg(generator_option, "generator_option", 1, 6, &position);
  } else {
    zents_c1iarg(generator_option, "generator_option", 1, 7, &position);
  }
  if (!failed<Half>()) l_r1int<Half>(generator_option);
}

template <class Half>
long l_random_seed_get() {
  const Common* common = l_r1int<Half>(0);
  return common == nullptr ? 0 : common->seed;
}

// A table set by the caller. The statistics half stops at the first bad entry and leaves the table's state as it was; the
// mathematics half reports every one, stores the good ones and uses the table.
template <class Half, class Real>
void l_table_set(const Real* table) {
  Common* common = nullptr;
  Shuffle<Real>* shuffle = nullptr;
  if (table == nullptr) {
    raise<Half>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"table"}});
    return;
  }
  if (!ready<Half>(common, shuffle, &Shuffle<Real>::table_needs_first_touch)) return;
  if (!(table[0] > 0)) {
    table_ready<Real>(*common) = 0;
    return;
  }
  for (long k = 0; k < shuffle_size; ++k) {
    if (table[k] > 0 && table[k] < 1) {
      shuffle->table[k] = table[k];
    } else {
      raise<Half>(5, MATH_STRICTLY_POS_TABLE_ELMNTS, {.i = {k + 1}, .r = {static_cast<double>(table[k])}});
      if (std::is_same_v<Half, Stat>) return;
    }
  }
  table_ready<Real>(*common) = 1;
}

}  // namespace zent::uniform

// The entries of both halves, stamped by one unit each.
#define ZENT_UNIFORM_FORM(Half, H, P, D, Real)                                                                         \
  extern "C" Real* H##_##P##_random_uniform(long n_random, ...) {                                                      \
    ZENT_OPTIONS(options, n_random, 1);                                                                                \
    Real* r = zent::public_call<Half>(#H "_" #P "_random_uniform",                                                     \
                                      [&] { return zent::uniform::l_random_uniform<Half, Real>(n_random, options); }); \
    ZENT_OPTIONS_END(options);                                                                                         \
    return r;                                                                                                          \
  }                                                                                                                    \
  extern "C" void H##_##D##rnun(long nr, Real* r) {                                                                    \
    zent::public_call<Half>(#H "_" #D "rnun", [=] { zent::uniform::l_rnun<Half>(nr, r); });                            \
  }
#define ZENT_UNIFORM_HALF(Half, H)                                                                                  \
  ZENT_UNIFORM_FORM(Half, H, f, , float)                                                                            \
  ZENT_UNIFORM_FORM(Half, H, d, d, double)                                                                          \
  extern "C" long H##_random_seed_get() {                                                                           \
    return zent::scalar_call<Half>(#H "_random_seed_get", [] { return zent::uniform::l_random_seed_get<Half>(); }); \
  }                                                                                                                 \
  extern "C" void H##_random_seed_set(long seed) {                                                                  \
    zent::scalar_call<Half>(#H "_random_seed_set", [=] { zent::uniform::l_random_seed_set<Half>(seed); });          \
  }                                                                                                                 \
  extern "C" void H##_random_option(long generator_option) {                                                        \
    zent::scalar_call<Half>(#H "_random_option", [=] { zent::uniform::l_random_option<Half>(generator_option); });  \
  }                                                                                                                 \
  extern "C" void H##_r1int(long arg) {                                                                             \
    zent::uniform::l_r1int<Half>(arg);                                                                              \
  }                                                                                                                 \
  extern "C" long H##_r1clk() {                                                                                     \
    return zent::uniform::clock_seed();                                                                             \
  }
