// The finished wrappers through the host: good values, errors, and vectors that no caller should pass.
#include <bit>
#include <cmath>
#include <cstdarg>
#include <random>

#include "binding/positions.hpp"
#include "binding/predict_info.hpp"
#include "binding/words.hpp"
#include "tests/binding/module.hpp"
#include "tests/support/failing_allocation.hpp"

namespace {

using namespace binding_test;

Value precision(int type) {
  return Value::integer(type);
}

TEST(Constant, ValuesInBothPrecisionsAndUnits) {
  std::vector<Value> a{precision(5), Value::integer(9), Value::text("speed of light"), Value(), Value::real(0)};
  a[2] = Value::text("c");
  ASSERT_EQ(error_of("MATHSTAT_124", a), "");
  EXPECT_EQ(a[4].to_real(), 299792458.0);
  EXPECT_EQ(a[1].to_integer(), 0);
  a[3] = Value::text("KM/S");
  ASSERT_EQ(error_of("MATHSTAT_124", a), "");
  EXPECT_DOUBLE_EQ(a[4].to_real(), 299792.458);
  a[3] = Value::text("");  // an empty string is an argument that is not there
  ASSERT_EQ(error_of("MATHSTAT_124", a), "");
  EXPECT_EQ(a[4].to_real(), 299792458.0);
  a[0] = precision(4);
  a[4] = Value();  // left to the routine
  ASSERT_EQ(error_of("MATHSTAT_124", a), "");
  EXPECT_EQ(a[4].type(), ORV_TYP_FLOAT);
  EXPECT_EQ(a[4].to_real(), static_cast<double>(299792458.0F));
}

TEST(Constant, AnUnknownNameIsTheLibrarysErrorAndLeavesTheResult) {
  std::vector<Value> a{precision(5), Value::integer(9), Value::text("NO_SUCH_THING"), Value(), Value::real(-3.5)};
  const std::string error = error_of("MATHSTAT_124", a);
  EXPECT_NE(error.find("ZENT_CONSTANT: Terminal error: MATH_BAD_CONST_NAME"), std::string::npos) << error;
  EXPECT_EQ(a[4].to_real(), -3.5);
}

TEST(Dates, BothWays) {
  std::vector<Value> a{precision(5),       Value::integer(9),    Value::integer(15),
                       Value::integer(10), Value::integer(1582), Value::integer(0)};
  ASSERT_EQ(error_of("MATHSTAT_130", a), "");
  EXPECT_EQ(a[5].to_integer(), -115860);  // Julian day number 2299160.5 less 2415020.5
  std::vector<Value> b{precision(5), Value::integer(9), Value::integer(-115861), Value(), Value::integer(0), Value()};
  ASSERT_EQ(error_of("MATHSTAT_131", b), "");
  EXPECT_EQ(b[3].to_integer(), 4);  // the day before the reform
  EXPECT_EQ(b[4].to_integer(), 10);
  EXPECT_EQ(b[5].to_integer(), 1582);
  a[2] = Value::integer(10);
  EXPECT_NE(error_of("MATHSTAT_130", a).find("ZENT_DATETODAYS: Terminal error: MATH_YEAR_1582"), std::string::npos);
}

TEST(MachineConstants, FillWhatTheOutputHolds) {
  std::vector<Value> a{precision(5), Value::integer(9), Value::array(ORV_TYP_DOUBLE, {12})};
  ASSERT_EQ(error_of("MATHSTAT_159", a), "");
  EXPECT_EQ(a[2].as<double>()[0], 0x1p-1022);
  EXPECT_EQ(a[2].as<double>()[3], 0x1p-52);
  EXPECT_EQ(std::bit_cast<unsigned long>(a[2].as<double>()[5]), 0x7FFFFFFFFFFFFFFFul);
  EXPECT_EQ(a[2].as<double>()[7], -HUGE_VAL);
  EXPECT_EQ(a[2].as<double>()[8], 0.0);
  a[0] = precision(4);
  EXPECT_NE(error_of("MATHSTAT_159", a).find("RESULT"), std::string::npos);
  a[2] = Value::array(ORV_TYP_FLOAT, {2});
  ASSERT_EQ(error_of("MATHSTAT_159", a), "");
  EXPECT_EQ(a[2].as<float>()[1], 0x1.fffffep127F);
  a[0] = precision(9);
  EXPECT_EQ(error_of("MATHSTAT_159", a), "");  // what is neither double nor integer is single
  a[0] = precision(14);
  a[2] = Value::array(ORV_TYP_INT64, {13});
  ASSERT_EQ(error_of("MATHSTAT_159", a), "");
  EXPECT_EQ(a[2].as<long>()[0], 8);
  EXPECT_EQ(a[2].as<long>()[5], 2147483647);
  EXPECT_EQ(a[2].as<long>()[12], 1024);
}

long prime(long n, long selector) {
  std::vector<Value> a{Value::integer(n), Value::integer(selector), Value(), Value()};
  EXPECT_EQ(error_of("MATHSTAT_313", a), "") << n;
  return a[2].to_integer();
}

TEST(Primes, AgreeWithASieveAndWithKnownLargeValues) {
  std::vector<bool> composite(20000);
  for (long p = 2; p < 20000; ++p) {
    for (long m = 2 * p; m < 20000 && !composite[static_cast<size_t>(p)]; m += p) composite[static_cast<size_t>(m)] = true;
  }
  for (long n = -3; n < 20000; ++n) ASSERT_EQ(prime(n, 1), n >= 2 && !composite[static_cast<size_t>(n)]) << n;
  const std::pair<long, long> next[] = {
      {-5, 2}, {2, 2}, {3, 3}, {8, 11}, {7920, 7927}, {4294967296, 4294967311}, {9223372036854775644, 9223372036854775783}};
  for (const auto& [n, p] : next) EXPECT_EQ(prime(n, 0), p) << n;
  // Strong pseudoprimes to many bases, a square, a Mersenne prime and a product of two 31-bit primes.
  for (long n :
       {3215031751L, 3474749660383L, 341550071728321L, 3825123056546413051L, 9223372030926249001L, 4611686014132420609L}) {
    EXPECT_EQ(prime(n, 1), 0) << n;
  }
  EXPECT_EQ(prime(2305843009213693951, 1), 1);
  std::vector<Value> beyond{Value::integer(9223372036854775784), Value::integer(0), Value(), Value()};
  EXPECT_NE(error_of("MATHSTAT_313", beyond).find("9223372036854775784"), std::string::npos);
  EXPECT_FALSE(beyond[2].defined());
}

// Any vector ends in a result or an error with a text, and a later good call is not touched by it.
TEST(Vectors, RandomOnesNeverHarmTheProcess) {
  std::mt19937 random(20240607);
  const auto any = [&]() -> Value {
    const int types[] = {ORV_TYP_BYTE,   ORV_TYP_FLOAT,    ORV_TYP_DOUBLE, ORV_TYP_COMPLEX,
                         ORV_TYP_STRING, ORV_TYP_DCOMPLEX, ORV_TYP_INT64};
    const int type = types[random() % 7];
    switch (random() % 8) {
      case 0:
        return Value();
      case 1:
        return Value::text("");
      case 2:
        return Value::text("PI");
      case 3:
        return Value::array(type, {static_cast<long>(random() % 20 + 1)});
      case 4:
        return Value::integer(static_cast<long>(random() % 4000) - 2000);
      case 5:
        return Value::integer(random() % 2 ? 5 : 4);
      case 6:
        return Value::real(0.5);
      default:
        return Value::zero(type);
    }
  };
  const std::pair<const char*, int> routines[] = {
      {"MATHSTAT_124", 5}, {"MATHSTAT_130", 6}, {"MATHSTAT_131", 6}, {"MATHSTAT_159", 3}, {"MATHSTAT_313", 4}};
  long errors = 0, good = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto& [name, count] = routines[random() % 5];
    std::vector<Value> arguments;
    for (int k = 0; k < count; ++k) arguments.push_back(k < 2 && random() % 2 ? Value::integer(random() % 2 ? 5 : 4) : any());
    const std::string error = error_of(name, arguments);
    ASSERT_NE(error, "(no text)");
    (error.empty() ? good : errors) += 1;
  }
  EXPECT_GT(errors, 1000);
  EXPECT_GT(good, 100);
  EXPECT_EQ(prime(97, 1), 1);
}

TEST(PredictInfo, CheckIsTheSignedSumInOrderAndInSinglePrecision) {
  const unsigned char bytes[] = {1, 255, 128, 127, 200};  // 1 - 1 - 128 + 127 - 56
  EXPECT_EQ(zent::binding::predict_info_check(bytes, 5), -57.0F);
  const std::vector<signed char> many(200000, 127);  // 2^24 is passed: sums of single precision stop being exact
  float expected = 0;
  for (int i = 0; i < 200000; ++i) expected += 127.0F;
  EXPECT_EQ(zent::binding::predict_info_check(many.data(), 200000), expected);
}

// ---- The call of 61 words ---------------------------------------------------------------------------------------------------

double mixed(double a, long n, double b, const long* x, double c, int code, ...) {
  va_list list;
  va_start(list, code);
  const int value = va_arg(list, int);
  double* const address = va_arg(list, double*);
  double sum = a + 10 * b + 100 * c + 1000.0 * static_cast<double>(n) + static_cast<double>(*x) + code + value + *address;
  for (int k = 0; k < 55; ++k) sum += static_cast<double>(va_arg(list, long));
  va_end(list);
  return sum;
}
float in_single(float a, long n, float b) {
  return a * static_cast<float>(n) + b;
}
long second(long, long b, ...) {
  return b;
}

TEST(WordsOfACall, KeepTheOrderOfIntegersAndOfReals) {
  const long x = 40000;
  double far = 0.5;
  zent::binding::Words words;
  words.add(7).add(&x).option(300, -2L, &far);
  for (int k = 0; k < 55; ++k) words.add(static_cast<long>(k));
  EXPECT_EQ(words.call<double>(reinterpret_cast<void*>(mixed), 1.0, 2.0, 3.0), 321 + 7000 + 40000 + 300 - 2 + 0.5 + 55 * 27.0);
  words.end();
  EXPECT_EQ(words.count(), 61);
  zent::binding::Words single;
  single.add(3).end();
  EXPECT_EQ(single.call<float>(reinterpret_cast<void*>(in_single), 2.0F, 0.25F), 6.25F);
  const long raw[61] = {1, -9};
  EXPECT_EQ(cmast_call_void_fcn(reinterpret_cast<void*>(second), raw), -9);
  EXPECT_EQ(cmast_call_mem32bit_fcn(reinterpret_cast<void*>(second), raw), reinterpret_cast<void*>(-9L));
}

TEST(WordsOfACall, OptionsFollowTheTableAndLeaveOutWhatIsAbsent) {
  load();
  using namespace zent::binding;
  static constexpr Position positions[] = {
      precision_position,
      status_position,
      {"FLAG", Kind::optional, Type::integer, "", 101, Pass::flag},
      {"COUNT", Kind::optional, Type::integer, "", 102, Pass::value},
      {"LOW", Kind::optional, Type::real, "", 103, Pass::address},
      {"HIGH", Kind::optional, Type::real, "", continues, Pass::address},
      {"OWN", Kind::optional, Type::integer, ""},
      {"OUT", Kind::output, Type::real, "", 104, Pass::address},
  };
  static const Routine routine = {999, "OPTIONS", true, 8, positions};
  static Words words;
  static Arguments arguments;
  static const ORV_PROC wrapper = [](int argc, ORV_VARIABLE** argv, char*) -> long {
    cmast_init("OPTIONS");
    words = Words();
    if (!read_arguments(routine, argc, argv, arguments)) return 0;
    arguments.add_options(words);
    words.end();
    cmast_pop_fcn_name();
    return 0;
  };
  static const ORV_SYSRTN row[] = {{wrapper, "OPTIONS", 8, 8, 0, nullptr}};
  ASSERT_EQ(ORV_SysRtnAdd(row, 0, 1), 1);
  const auto words_are = [](std::vector<long> expected) {
    return std::vector<long>(words.data(), words.data() + words.count()) == expected;
  };
  const auto address = [](int k) { return reinterpret_cast<long>(arguments.data[k]); };
  std::vector<Value> a{precision(5),   Value::integer(0), Value::integer(1), Value::integer(-7),
                       Value::real(1), Value::real(2),    Value::integer(3), Value::real(4)};
  ASSERT_EQ(error_of("OPTIONS", a), "");
  EXPECT_TRUE(words_are({101, 102, -7, 103, address(4), address(5), 104, address(7), 0}));
  a[2] = a[4] = a[7] = Value();  // a further value goes with the option that it belongs to
  ASSERT_EQ(error_of("OPTIONS", a), "");
  EXPECT_TRUE(words_are({102, -7, 0}));
  a[3] = a[5] = a[6] = Value();
  ASSERT_EQ(error_of("OPTIONS", a), "");
  EXPECT_TRUE(words_are({0}));
  a[0] = precision(4);
  a[4] = Value::real(1);
  EXPECT_NE(error_of("OPTIONS", a).find("OPTIONS: argument LOW must be single precision, not double precision"),
            std::string::npos);
}

// Host, binding and library share the allocations here.
TEST(Allocations, FailInTurnAndEndInAnErrorOrTheResult) {
  load();
  const std::pair<const char*, std::vector<Value>> calls[] = {
      {"MATHSTAT_124", {precision(5), Value::integer(9), Value::text("C"), Value::text("KM/HOUR"), Value()}},
      {"MATHSTAT_131", {precision(5), Value::integer(9), Value::integer(-1), Value(), Value(), Value()}},
      {"MATHSTAT_159", {precision(5), Value::integer(9), Value::array(ORV_TYP_DOUBLE, {8})}},
      {"MATHSTAT_313", {Value::integer(90), Value::integer(0), Value(), Value()}}};
  for (const auto& [name, values] : calls) {
    bool struck = true;
    for (long k = 1; struck && k < 100; ++k) {
      std::vector<Value> a = values, again = values;
      failing::arm(k);
      const std::string error = error_of(name, a);
      struck = failing::struck();
      failing::arm(0);
      EXPECT_TRUE(struck || error.empty()) << name << ": " << error;
      EXPECT_EQ(error_of(name, again), "") << name << " after " << k;
    }
    EXPECT_FALSE(struck) << name;
  }
}

TEST(WordsOfACall, TheSixtySecondIsAnError) {
  load();
  static const ORV_PROC wrapper = [](int, ORV_VARIABLE**, char*) -> long {
    zent::binding::Words words;
    for (int k = 0; k < 62; ++k) words.add(1L);
    return 0;
  };
  static const ORV_SYSRTN row[] = {{wrapper, "SIXTY_TWO", 0, 0, 0, nullptr}};
  ASSERT_EQ(ORV_SysRtnAdd(row, 0, 1), 1);
  std::vector<Value> none;
  EXPECT_NE(error_of("SIXTY_TWO", none).find("ZENT Error: Too many options"), std::string::npos);
}

TEST(ElementLoops, StepEveryArrayByTheElementSize) {
  const double a[] = {1, 4, 9}, b[] = {2, 3, 4}, c[] = {10, 20, 30};
  double out[4] = {0, 0, 0, -1};
  const auto bytes = [](const double* x) { return reinterpret_cast<const char*>(x); };
  char* const to = reinterpret_cast<char*>(out);
  cmast_call_spcl_fcn1_d([](double x) { return std::sqrt(x); }, 3, 8, bytes(a), to);
  EXPECT_EQ(out[2], 3.0);
  cmast_call_spcl_fcn2_d([](double x, double y) { return x - y; }, 3, 8, bytes(a), bytes(b), to);
  EXPECT_EQ(out[0], -1.0);
  cmast_call_spcl_fcn3_d([](double x, double y, double z) { return x * y + z; }, 3, 8, bytes(a), bytes(b), bytes(c), to);
  EXPECT_EQ(out[1], 32.0);
  EXPECT_EQ(out[3], -1.0);
}

}  // namespace
