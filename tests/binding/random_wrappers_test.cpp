// The random wrappers through the host: streams, tables and Faure states as its variables.
#include <algorithm>
#include <cmath>

#include "tests/binding/module.hpp"
#include "zents.h"

namespace {

using namespace binding_test;

std::vector<Value> vector_of(std::size_t n, int precision = 5) {
  std::vector<Value> a(n);
  a[0] = Value::integer(precision);
  a[1] = Value::integer(9);
  return a;
}

std::vector<double> draw(long n, int precision = 5) {
  std::vector<Value> a = vector_of(36, precision);
  a[3] = Value::integer(n);
  a[4] = Value::array(precision == 5 ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT, {n});
  EXPECT_EQ(error_of("MATHSTAT_181", a), "");
  std::vector<double> x;
  for (long k = 0; k < n; ++k) x.push_back(a[4].element(k).to_real());
  return x;
}

// set option, set seed, get seed, get option, substream seed; -1 leaves one out.
struct Options {
  long set_option = -1, set_seed = -1;
  bool get_seed = false, get_option = false;
  long substream = -1;
};
std::vector<Value> randomopt(const Options& o, std::string* error = nullptr) {
  std::vector<Value> a = vector_of(7);
  if (o.set_option >= 0) a[2] = Value::integer(o.set_option);
  if (o.set_seed >= 0) a[3] = Value::integer(o.set_seed);
  if (o.get_seed) a[4] = Value::integer(-7);
  if (o.get_option) a[5] = Value::integer(-7);
  if (o.substream >= 0) a[6] = Value::integer(o.substream);
  const std::string text = error_of("MATHSTAT_182", a);
  if (error != nullptr) {
    *error = text;
  } else {
    EXPECT_EQ(text, "");
  }
  return a;
}

TEST(Random, StreamOfASeedInBothPrecisions) {
  randomopt({.set_option = 1, .set_seed = 1});
  const std::vector<double> x = draw(3);
  EXPECT_EQ(x[0], 16807 * 4.656612875245797e-10);
  EXPECT_EQ(x[1], 282475249 * 4.656612875245797e-10);
  randomopt({.set_seed = 1});
  EXPECT_NEAR(draw(1, 4)[0], 16807.0 / 2147483647, 1e-12);
  std::vector<Value> a = vector_of(36);
  a[3] = Value::integer(4);
  a[4] = Value::array(ORV_TYP_DOUBLE, {3});
  EXPECT_NE(error_of("MATHSTAT_181", a).find("RESULT"), std::string::npos);
  a[3] = Value::integer(0);
  EXPECT_NE(error_of("MATHSTAT_181", a).find("n_random"), std::string::npos);
}

TEST(RandomOpt, WorksInItsOwnOrder) {
  randomopt({.set_option = 3, .set_seed = 77});
  // Both are read before they are set, and the substream is that of the generator before.
  std::vector<Value> a = randomopt({.set_option = 5, .set_seed = 78, .get_seed = true, .get_option = true});
  EXPECT_EQ(a[4].to_integer(), 77);
  EXPECT_EQ(a[5].to_integer(), 3);
  a = randomopt({.set_option = 1, .set_seed = 5, .get_seed = true, .substream = 9});
  randomopt({.set_option = 5, .set_seed = 9});
  draw(100000);
  EXPECT_EQ(randomopt({.get_seed = true})[4].to_integer(), a[4].to_integer());

  // A failure ends the work: neither seed nor generator is set behind it.
  randomopt({.set_option = 2, .set_seed = 123});
  std::string error;
  randomopt({.set_option = 4, .set_seed = 6, .get_seed = true, .substream = 9}, &error);
  EXPECT_NE(error.find("STAT_NO_SHUFFLE_SUBSTREAM"), std::string::npos) << error;
  a = randomopt({.get_seed = true, .get_option = true});
  EXPECT_EQ(a[4].to_integer(), 123);
  EXPECT_EQ(a[5].to_integer(), 2);
  randomopt({.set_option = 8}, &error);
  EXPECT_NE(error.find("generator_option"), std::string::npos) << error;
  randomopt({.set_seed = 2147483647});  // out of range: nothing happens
  EXPECT_EQ(randomopt({.get_seed = true})[4].to_integer(), 123);
  randomopt({.set_option = 1});
}

// get table, set table, get register, set register.
std::string table(int position, Value& value, int precision = 5) {
  std::vector<Value> a = vector_of(7, precision);
  a[static_cast<std::size_t>(position)] = value;
  const std::string error = error_of("MATHSTAT_301", a);
  value = a[static_cast<std::size_t>(position)];
  return error;
}

TEST(RandomTable, SeedAndTableAreTheStream) {
  for (int precision : {4, 5}) {
    randomopt({.set_option = 4, .set_seed = 4711});
    draw(500, precision);
    Value saved = Value::array(precision == 5 ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT, {128});
    ASSERT_EQ(table(2, saved, precision), "");
    const long seed = randomopt({.get_seed = true})[4].to_integer();
    const std::vector<double> first = draw(300, precision);
    EXPECT_NE(draw(300, precision), first);
    randomopt({.set_seed = seed});
    ASSERT_EQ(table(3, saved, precision), "");
    EXPECT_EQ(draw(300, precision), first);
  }
  randomopt({.set_option = 7, .set_seed = 4711});
  draw(5);
  Value words = Value::array(ORV_TYP_INT64, {1565});
  ASSERT_EQ(table(4, words), "");
  const std::vector<double> first = draw(2000);
  ASSERT_EQ(table(5, words), "");
  EXPECT_EQ(draw(2000), first);
  words.set_element(3, Value::integer(0));
  EXPECT_NE(table(5, words).find("STAT_NONPOSITIVE_TABLE"), std::string::npos);
  words.set_element(0, Value::integer(0));
  EXPECT_EQ(table(5, words), "");
  randomopt({.set_option = 1});

  Value other = Value::array(ORV_TYP_DOUBLE, {127});
  EXPECT_NE(table(3, other).find("128"), std::string::npos);
  EXPECT_NE(table(2, other).find("128"), std::string::npos);
  other = Value::array(ORV_TYP_DOUBLE, {128});
  other.set_element(0, Value::real(0.5));
  EXPECT_NE(table(3, other).find("STAT_STRICTLY_POS_TABLE_ELMNTS"), std::string::npos);
}

Value faure_init(long d, std::string* error = nullptr, Value base = Value(), Value skip = Value()) {
  std::vector<Value> a = vector_of(12);
  a[2] = Value::integer(d);
  a[3] = base;
  a[4] = skip;
  const std::string text = error_of("MATHSTAT_314", a);
  if (error != nullptr) {
    *error = text;
  } else {
    EXPECT_EQ(text, "");
  }
  return a[5];
}

Value next_points(Value& state, long n, std::string* error = nullptr, int precision = 5) {
  std::vector<Value> a = vector_of(14, precision);
  a[2] = std::move(state);
  a[3] = Value::integer(n);
  a[5] = Value::integer(-1);
  const std::string text = error_of("MATHSTAT_315", a);
  state = std::move(a[2]);
  if (error != nullptr) {
    *error = text;
  } else {
    EXPECT_EQ(text, "");
  }
  return a[4];
}

TEST(Faure, PointsAreThoseOfTheLibraryAndACopyOfTheStateComesBack) {
  for (long d : {1L, 2L, 7L, 40L}) {
    zents_faure* sequence = zents_faure_sequence_init(d, 0);
    Value state = faure_init(d);
    ASSERT_EQ(state.type(), ORV_TYP_BYTE);
    std::vector<double> x(static_cast<std::size_t>(50 * d));
    for (long k = 0; k < 50; ++k) zents_d_faure_next_point(sequence, ZENTS_RETURN_USER, &x[static_cast<std::size_t>(k * d)], 0);
    next_points(state, 20);
    Value copy = state;
    const Value rest = next_points(state, 30);
    ASSERT_EQ(rest.dims(), (orv::Dims{30, d}));
    EXPECT_TRUE(std::equal(x.begin() + 20 * d, x.end(), rest.as<double>()));
    const Value again = next_points(copy, 30, nullptr, 4);
    ASSERT_EQ(again.type(), ORV_TYP_FLOAT);
    for (long k = 0; k < 30 * d; ++k) ASSERT_EQ(again.as<float>()[k], static_cast<float>(rest.as<double>()[k]));
    zents_faure_sequence_free(sequence);
  }
}

TEST(Faure, AChangedStateIsRefused) {
  const Value good = faure_init(3);
  std::string error;
  for (long k = 0; k < good.count(); ++k) {
    Value state = good;
    state.set_element(k, Value::integer(good.element(k).to_integer() ^ 1));
    next_points(state, 1, &error);
    ASSERT_NE(error.find("STATE is not valid"), std::string::npos) << k;
  }
  for (long n : {1L, 8L, 64L, good.count() - 1, good.count() + 8}) {
    Value state = Value::array(ORV_TYP_BYTE, {n});
    for (long k = 0; k < std::min(n, good.count()); ++k) state.set_element(k, good.element(k));
    next_points(state, 1, &error);
    EXPECT_NE(error.find("STATE is not valid"), std::string::npos) << n;
  }
  Value state = good;
  next_points(state, 0, &error);
  EXPECT_NE(error.find("NPOINTS"), std::string::npos);
  next_points(state, 1);
}

TEST(Faure, RefusedArgumentsLeaveTheStateUndefined) {
  std::string error;
  EXPECT_FALSE(faure_init(3, &error, Value::integer(4)).defined());
  EXPECT_NE(error.find("ZENT_FAURE_INIT: Terminal error"), std::string::npos) << error;
  EXPECT_NE(error.find("The base 4 does not serve 3 dimensions"), std::string::npos) << error;
  faure_init(3, &error, Value(), Value::integer(0));
  EXPECT_NE(error.find("The number of points to skip is 0"), std::string::npos) << error;
  faure_init(3, &error, Value::integer(4294967296 + 5));
  EXPECT_NE(error.find("32 bits"), std::string::npos) << error;
  faure_init(0, &error);
  EXPECT_NE(error.find("n_dimensions"), std::string::npos) << error;
}

}  // namespace
