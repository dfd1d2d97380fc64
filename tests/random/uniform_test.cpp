// Streams against a second formulation: exact 64-bit integer arithmetic, and the shift register bit by bit.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

#include "math/random/saved_stream.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

constexpr std::uint64_t m = 2147483647;

template <class Half, class Real>
struct Form;
#define FORM(Name, H, D, T, last)            \
  struct Name {                              \
    using Real = T;                          \
    static constexpr long generators = last; \
    static void draw(long n, T* r) {         \
      H##_##D##rnun(n, r);                   \
    }                                        \
    static void seed(long s) {               \
      H##_random_seed_set(s);                \
    }                                        \
    static long seed() {                     \
      return H##_random_seed_get();          \
    }                                        \
    static void option(long g) {             \
      H##_random_option(g);                  \
    }                                        \
    static long error() {                    \
      return H##_error_code();               \
    }                                        \
  };
FORM(MathSingle, zent, , float, 6)
FORM(MathDouble, zent, d, double, 6)
FORM(StatSingle, zents, , float, 7)
FORM(StatDouble, zents, d, double, 7)
#undef FORM

float float_scale() {
  const std::uint32_t bits = 0x2FFFFFFF;
  float scale;
  std::memcpy(&scale, &bits, sizeof scale);
  return scale;
}

void output(std::uint64_t s, float& r) {
  r = static_cast<float>(static_cast<double>(float_scale()) * static_cast<double>(s));
}
void output(std::uint64_t s, double& r) {
  r = static_cast<double>(s) * 4.656612875245797e-10;
}

// A congruential generator with its shuffle table, one 64-bit remainder at a time.
template <class Real>
struct Congruential {
  std::uint64_t state, multiplier;
  std::vector<Real> table;

  std::uint64_t step() {
    return state = state * multiplier % m;
  }
  Real draw(bool shuffled) {
    if (shuffled && table.empty()) {
      for (int k = 0; k < 128; ++k) table.push_back(static_cast<Real>(static_cast<double>(step()) / 2147483647.0));
    }
    Real r;
    output(step(), r);
    if (shuffled) std::swap(r, table[state % 128]);
    return r;
  }
};

template <class F>
class Streams : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
using Forms = ::testing::Types<MathSingle, MathDouble, StatSingle, StatDouble>;
TYPED_TEST_SUITE(Streams, Forms);

const std::uint64_t multipliers[] = {0, 16807, 16807, 397204094, 397204094, 950706376, 950706376};

TYPED_TEST(Streams, UnshuffledMillionForExtremeSeeds) {
  using Real = typename TypeParam::Real;
  for (long generator : {1L, 3L, 5L}) {
    TypeParam::option(generator);
    for (long seed : {1L, 2L, 123457L, 2147483645L, 2147483646L}) {
      TypeParam::seed(seed);
      Congruential<Real> second{static_cast<std::uint64_t>(seed), multipliers[generator], {}};
      std::vector<Real> r(200000);
      TypeParam::draw(static_cast<long>(r.size()), r.data());
      for (std::size_t k = 0; k < r.size(); ++k) ASSERT_EQ(r[k], second.draw(false)) << generator << " " << seed << " " << k;
      EXPECT_EQ(TypeParam::seed(), static_cast<long>(second.state));
    }
  }
}

// Tables are filled at the first use of a shuffled generator and kept: so this test is the first in its process to use one of the
// form.
TYPED_TEST(Streams, ShuffledAcrossBlocksOfEverySize) {
  using Real = typename TypeParam::Real;
  Congruential<Real> second{987654321, 0, {}};
  TypeParam::seed(987654321);
  for (long generator : {2L, 4L, 6L, 2L}) {  // the table goes on when the generator changes
    TypeParam::option(generator);
    second.multiplier = multipliers[generator];
    for (long n = 1; n <= 70; ++n) {
      std::vector<Real> r(n % 10 == 0 ? n * 100 + 3 : n);
      TypeParam::draw(static_cast<long>(r.size()), r.data());
      for (Real x : r) ASSERT_EQ(x, second.draw(true)) << generator << " " << n;
    }
  }
}

TYPED_TEST(Streams, SavedAndRestoredBySeed) {
  using Real = typename TypeParam::Real;
  TypeParam::option(3);
  TypeParam::seed(42);
  std::vector<Real> whole(5000), part(5000);
  TypeParam::draw(5000, whole.data());
  TypeParam::seed(42);
  long at = 0;
  for (long n = 1; at + n <= 5000; ++n) {
    TypeParam::draw(n, part.data() + at);
    at += n;
    TypeParam::seed(TypeParam::seed());
  }
  EXPECT_TRUE(std::equal(part.begin(), part.begin() + at, whole.begin()));
}

TYPED_TEST(Streams, SeedsAndOptionsOutOfRange) {
  TypeParam::option(1);
  TypeParam::seed(77);
  for (long bad : {2147483647L, -5L, -2147483648L, 4294967297L}) {
    TypeParam::seed(bad);
    EXPECT_EQ(TypeParam::error(), 0);
    EXPECT_EQ(TypeParam::seed(), 77);
  }
  for (long bad : {0L, TypeParam::generators + 1, -1L}) {
    TypeParam::option(bad);
    EXPECT_EQ(TypeParam::error(), MATH_INEQUALITY_VIOLATION_2);
  }
  typename TypeParam::Real r = -1;
  TypeParam::draw(0, &r);
  EXPECT_EQ(TypeParam::error(), MATH_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(r, -1);
  TypeParam::draw(1, &r);
  EXPECT_EQ(TypeParam::seed(), 77 * 16807);
  TypeParam::seed(0);  // the time of day
  EXPECT_GE(TypeParam::seed(), 2);
  EXPECT_LE(TypeParam::seed(), 235960);
}

TEST(Uniform, FirstDeviateOfSeedOne) {
  be_quiet();
  zents_random_option(1);
  zents_random_seed_set(1);
  double* r = zents_d_random_uniform(3, 0);
  EXPECT_EQ(r[0], 16807 * 4.656612875245797e-10);
  zents_random_seed_set(1);
  double user[3];
  EXPECT_EQ(zents_d_random_uniform(3, ZENTS_RETURN_USER, user), user);
  EXPECT_EQ(std::memcmp(user, r, sizeof user), 0);
  zent_random_seed_set(1);
  zent_random_option(1);
  double math[3];
  EXPECT_EQ(zent_d_random_uniform(3, ZENT_RETURN_USER, math), math);
  EXPECT_EQ(std::memcmp(math, r, sizeof user), 0);
  zents_free_allocated_memory(r);
  EXPECT_EQ(zents_d_random_uniform(3, 99, user), nullptr);
  EXPECT_EQ(zents_error_code(), STAT_ILLEGAL_OPT_ARG);
  EXPECT_EQ(zents_d_random_uniform(-1, 0), nullptr);
}

TEST(Uniform, HalvesDoNotDisturbEachOther) {
  be_quiet();
  zents_random_option(1);
  zents_random_seed_set(5);
  zent_random_option(3);
  zent_random_seed_set(6);
  double r[10];
  zent_drnun(10, r);
  EXPECT_EQ(zents_random_seed_get(), 5);
  zents_drnun(10, r);
  zent_random_seed_set(6);
  EXPECT_EQ(zent_random_seed_get(), 6);
}

TEST(Uniform, SubstreamIsAHundredThousandSteps) {
  be_quiet();
  for (long generator : {1L, 3L, 5L}) {
    zents_random_option(generator);
    for (long seed : {1L, 1234567L, 2147483646L}) {
      Congruential<double> second{static_cast<std::uint64_t>(seed), multipliers[generator], {}};
      for (int k = 0; k < 100000; ++k) second.step();
      EXPECT_EQ(zents_random_substream_seed_get(seed), static_cast<long>(second.state));
    }
  }
  for (long generator : {2L, 4L, 6L, 7L}) {
    zents_random_option(generator);
    EXPECT_EQ(zents_random_substream_seed_get(99), 99);
    EXPECT_EQ(zents_error_code(), generator == 7 ? STAT_NO_GFSR_SUBSTREAM : STAT_NO_SHUFFLE_SUBSTREAM);
  }
  zents_random_option(1);
}

// The register as bits: one sequence with b(n) = b(n - 32) xor b(n - 521), read in three phases that lie a fixed power of two
// apart; every bit of the words then obeys the long recurrence of 1563 and 1467.
TEST(ShiftRegister, ObeysItsRecurrenceAndStartsWithItsBits) {
  be_quiet();
  long reset[1565] = {0};
  zents_random_GFSR_table_set(reset);
  zents_random_option(7);
  zents_random_seed_set(20240229);
  std::vector<long> first(1565);
  long* table = first.data();
  zents_random_GFSR_table_get(&table, ZENTS_RETURN_USER, first.data(), 0);
  EXPECT_EQ(first[1563], 1);
  EXPECT_EQ(first[1564], 1468);

  // Bits of the first phase by the congruential start and the trinomial, in 32-bit arithmetic.
  std::vector<int> b(521);
  std::uint32_t x = 20240229;
  for (int& bit : b) {
    x *= 69069;
    bit = static_cast<std::int32_t>(x) > 0;
  }
  // Word w holds bits 32 (w - 1) + 1, ... of the interleaved sequence, which continues by the long recurrence; its third bits are
  // b.
  std::vector<int> t(1563 * 32);
  for (int w = 0; w < 1563; ++w) {
    for (int k = 0; k < 31; ++k) t[32 * w + k] = static_cast<int>(first[w] >> (30 - k) & 1);
  }
  for (int i = 0; i < 521; ++i) {
    if (3 * i % 32 != 31) {
      EXPECT_EQ(t[3 * i], b[i]) << i;
    }
  }
  for (std::size_t n = 1563; n < t.size(); ++n) {
    if (n % 32 == 31 || (n - 1563) % 32 == 31 || (n - 96) % 32 == 31) continue;  // the unweighted bit of a word
    ASSERT_EQ(t[n], t[n - 1563] ^ t[n - 96]) << n;
  }

  // A million words by the word recurrence, in blocks of every size.
  std::vector<long> words(first.begin(), first.begin() + 1563);
  const std::size_t total = 1000000;
  words.reserve(total + 1563);
  while (words.size() < total) words.push_back(words[words.size() - 1563] ^ words[words.size() - 96]);
  std::vector<double> r(4000);
  std::vector<float> f(4000);
  std::size_t at = 0;
  for (long n = 1; at + 4000 < total; n = n % 3999 + 1) {
    if (n % 2 == 0) {
      zents_drnun(n, r.data());
      for (long k = 0; k < n; ++k) ASSERT_EQ(r[k], static_cast<double>(words[at + k] | 1) * (1.0 / 2147483647.0)) << at + k;
    } else {
      zents_rnun(n, f.data());
      for (long k = 0; k < n; ++k) ASSERT_EQ(f[k], static_cast<float>(words[at + k] | 1) * float_scale()) << at + k;
    }
    at += n;
    ASSERT_EQ(zents_random_seed_get(), words[at - 1] | 1);
  }
  // A new seed changes nothing once the table stands.
  zents_random_seed_set(1);
  zents_drnun(1, r.data());
  EXPECT_EQ(r[0], static_cast<double>(words[at] | 1) * (1.0 / 2147483647.0));
  zents_random_option(1);
}

TEST(Tables, SetAndGet) {
  be_quiet();
  double good[128], got[128];
  double* out = got;
  for (int k = 0; k < 128; ++k) good[k] = (k + 0.5) / 128;
  zents_d_random_table_set(good);
  zents_d_random_table_get(&out, ZENTS_RETURN_USER, got, 0);
  EXPECT_EQ(std::memcmp(good, got, sizeof good), 0);

  double bad[128];
  for (int k = 0; k < 128; ++k) bad[k] = 0.25;
  bad[3] = 1.0;
  bad[5] = zents_d_machine(6);
  zents_d_random_table_set(bad);  // stops at the first bad entry
  EXPECT_EQ(zents_error_code(), STAT_STRICTLY_POS_TABLE_ELMNTS);
  zents_d_random_table_get(&out, ZENTS_RETURN_USER, got, 0);
  EXPECT_EQ(got[2], 0.25);
  EXPECT_EQ(got[3], good[3]);
  EXPECT_EQ(got[6], good[6]);

  // A first entry of 0 has the table rebuilt from the seed; a table of the library's own is the caller's.
  good[0] = 0;
  zents_d_random_table_set(good);
  zents_random_option(2);
  zents_random_seed_set(31);
  out = nullptr;
  zents_d_random_table_get(&out, 0);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(out[0], 31.0 * 16807 / 2147483647.0);
  zents_free_allocated_memory(out);
  out = nullptr;
  zents_d_random_table_get(&out, 4711, 0);
  EXPECT_EQ(zents_error_code(), STAT_ILLEGAL_OPT_ARG);
  EXPECT_EQ(out, nullptr);

  long words[1565];
  for (long& w : words) w = 7;
  words[1000] = 0;
  zents_random_GFSR_table_set(words);
  EXPECT_EQ(zents_error_code(), STAT_NONPOSITIVE_TABLE);
  words[1000] = 7;
  words[1563] = 1L << 40;  // indices beyond the table are reduced
  words[1564] = 999999;
  zents_random_GFSR_table_set(words);
  EXPECT_EQ(zents_error_code(), 0);
  zents_random_option(7);
  std::vector<double> r(5000);
  zents_drnun(5000, r.data());
  EXPECT_EQ(zents_error_code(), 0);
  words[0] = 0;
  zents_random_GFSR_table_set(words);
  zents_random_option(1);
}

// Draws of the library's own change nothing for the caller, whatever generator and seed they use in between.
TEST(Uniform, ASavedStreamGoesOn) {
  be_quiet();
  std::vector<double> first(300), own(500), then(300);
  for (long option = 1; option <= 6; ++option) {
    zent_random_option(option);
    zent_random_seed_set(90125);
    zent_drnun(300, first.data());
    zent::uniform::SavedStream<double> saved;
    ASSERT_TRUE((zent::uniform::save_stream<zent::Math, double>(saved)));
    zent_drnun(300, first.data());
    zent_random_seed_set(123457);
    zent_random_option(7 - option);
    zent_drnun(500, own.data());
    zent::uniform::restore_stream<zent::Math, double>(saved);
    zent_drnun(300, then.data());
    EXPECT_EQ(then, first) << option;
  }
  zent_random_option(1);
}

TEST(Tables, RefuseNullAndNaN) {
  be_quiet();
  zents_d_random_table_set(nullptr);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);
  zents_f_random_table_get(nullptr, 0);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);
  zents_random_GFSR_table_set(nullptr);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);
  zents_random_GFSR_table_get(nullptr, 0);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);
  zent_rnses(nullptr);
  EXPECT_EQ(zent_error_code(), MATH_UNEXPECTED_NULL_POINTER);
  zents_drnun(3, nullptr);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);

  // The mathematics half stores what is good and uses the table all the same.
  float table[128];
  for (int k = 0; k < 128; ++k) table[k] = 0.5F;
  table[7] = zent_f_machine(6);
  zent_rnses(table);
  EXPECT_EQ(zent_error_code(), MATH_STRICTLY_POS_TABLE_ELMNTS);
  zent_random_option(2);
  zent_random_seed_set(1);
  float x = 0;
  zent_rnun(1, &x);  // 16807 mod 128 is 39
  EXPECT_EQ(x, 0.5F);
  table[0] = zent_f_machine(6);  // not positive: the table is made anew
  zent_rnses(table);
  EXPECT_EQ(zent_error_code(), 0);
  zent_random_option(1);
}

// The quotient of a great state rounds up to 1 in single precision; a word longer than 31 bits leaves a seed that is reduced.
TEST(Tables, EndsOfTheRange) {
  be_quiet();
  zents_random_option(2);
  float table[128] = {}, *out = table;
  zents_f_random_table_set(table);
  zents_random_seed_set(739806647);  // 16807 times this is -1 modulo 2^31 - 1
  zents_f_random_table_get(&out, ZENTS_RETURN_USER, table, 0);
  EXPECT_EQ(table[0], 1.0F);
  std::vector<long> words(1565, (1L << 35) + 12345);
  words[1564] = 97;
  zents_random_GFSR_table_set(words.data());
  zents_random_option(7);
  double x = 0;
  zents_drnun(1, &x);
  EXPECT_EQ(zents_random_seed_get(), words[0]);
  zents_random_option(1);
  zents_drnun(1, &x);
  EXPECT_EQ(zents_random_seed_get(), static_cast<long>(static_cast<std::uint64_t>(words[0]) * 16807 % m));
  words[0] = 0;
  zents_random_GFSR_table_set(words.data());
}

// Only the very first touch can choose the other modulus, so this runs in a process of its own.
TEST(FirstTouchDeathTest, GeneratorSevenScalesByTheSecondModulus) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto scale_is = [](double reciprocal) {
    long table[1565], *out = table;
    double x = 0;
    zents_random_seed_set(5);
    zents_random_option(7);
    zents_random_GFSR_table_get(&out, ZENTS_RETURN_USER, table, 0);
    zents_drnun(1, &x);
    return x == static_cast<double>(table[0] | 1) * reciprocal;
  };
  EXPECT_EXIT((zents_random_option(7), std::exit(scale_is(0x1p-31) ? 0 : 1)), ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT((zents_random_option_get(), zents_random_option(7), std::exit(scale_is(1.0 / 2147483647.0) ? 0 : 1)),
              ::testing::ExitedWithCode(0), "");
}

}  // namespace
