// User functions: results of both precisions, wrong ones, and ten thousand that fail in the middle of the library.
#include <malloc.h>

#include <cmath>
#include <csignal>
#include <numeric>

#include "tests/binding/module.hpp"
#include "zent.h"

namespace {

using namespace binding_test;

double real_of(std::span<ORV_VARIABLE*> arguments) {
  return ORV_DoubleScalar(arguments[0]);
}

Value fail(std::span<ORV_VARIABLE*>) {
  throw orv::Error("the user's function gives up");
}
Value fault(std::span<ORV_VARIABLE*>) {
  std::raise(SIGSEGV);
  return Value::real(0);
}
Value square(std::span<ORV_VARIABLE*> arguments) {
  return Value::real(real_of(arguments) * real_of(arguments));
}
Value three_numbers(std::span<ORV_VARIABLE*>) {
  return Value::array(ORV_TYP_DOUBLE, {3});
}
Value doubled(std::span<ORV_VARIABLE*> arguments) {
  long n = 0;
  void* data = nullptr;
  ORV_VarGetData(arguments[0], &n, &data, 0);
  Value result = Value::array(ORV_TYP_DOUBLE, {n});
  for (long k = 0; k < n; ++k) {
    const double x = arguments[0]->type == ORV_TYP_DOUBLE ? static_cast<double*>(data)[k] : static_cast<float*>(data)[k];
    static_cast<double*>(result.writable())[k] = 2 * x;
  }
  return result;
}

class Callback : public testing::Test {
 protected:
  void SetUp() override {
    load();
    user_functions = {{"FAIL", fail}, {"FAULT", fault}, {"SQUARE", square}, {"THREE", three_numbers}, {"DOUBLED", doubled}};
  }
  static std::vector<Value> integral_of(const char* name, long n = 1000) {
    return {Value::integer(5), Value::integer(9), Value::text(name), Value::real(0),
            Value::real(3),    Value::integer(n), Value::real(-1)};
  }
};

TEST_F(Callback, ScalarFunctionsInBothPrecisions) {
  auto a = integral_of("square");
  ASSERT_EQ(error_of("PROBE_1", a), "");
  EXPECT_NEAR(a[6].to_real(), 9.0, 3 * 9e-6 / 6 + 1e-12);  // error of the rule: (b - a) h^2 f'' / 12
  for (int k : {3, 4, 6}) a[static_cast<size_t>(k)] = a[static_cast<size_t>(k)].converted(ORV_TYP_FLOAT);
  a[0] = Value::integer(4);
  ASSERT_EQ(error_of("PROBE_1", a), "");
  EXPECT_EQ(a[6].type(), ORV_TYP_FLOAT);
  EXPECT_NEAR(a[6].to_real(), 9.0, 1e-3);
  a[5] = Value::integer(0);
  EXPECT_NE(error_of("PROBE_1", a).find("ZENT_PROBE_1: Terminal error: MATH_INTEGER_OUT_OF_RANGE"), std::string::npos);
}

TEST_F(Callback, ArrayFunctions) {
  for (int type : {ORV_TYP_DOUBLE, ORV_TYP_FLOAT}) {
    Value x = Value::array(type, {4});
    for (long k = 0; k < 4; ++k) x.set_element(k, Value::real(static_cast<double>(k) + 0.5));
    std::vector<Value> a{Value::integer(type), Value::integer(9), Value::text("doubled"), x, Value::array(type, {4})};
    ASSERT_EQ(error_of("PROBE_2", a), "");
    for (long k = 0; k < 4; ++k) EXPECT_EQ(a[4].element(k).to_real(), 2 * static_cast<double>(k) + 1);
    a[2] = Value::text("three");
    EXPECT_NE(error_of("PROBE_2", a).find("Incorrect number of elements for user-supplied routine."), std::string::npos);
  }
}

long heap_in_use() {
  const struct mallinfo2 now = mallinfo2();
  return static_cast<long>(now.uordblks + now.hblkhd);
}

// The frames of an abandoned call stay on the error stack for good, two hundred in all; the test drops them as it goes.
void drop_frames(const std::string& error) {
  if (!error.empty()) zent_e1pop("probe_d_integral");
}

TEST_F(Callback, HostErrorsLeaveTheTrapsTheRingAndTheHeapAsTheyWere) {
  zent_trap_state before, after;
  auto a = integral_of("fail");
  drop_frames(error_of("PROBE_1", a));
  zent_trap_mark(&before);
  const long row = curr_fcn_idx;
  const long heap = heap_in_use();
  for (int round = 0; round < 10000; ++round) {
    auto b = integral_of("fail");
    const std::string error = error_of("PROBE_1", b);
    ASSERT_NE(error.find("gives up"), std::string::npos) << error;
    drop_frames(error);
  }
  EXPECT_LT(heap_in_use() - heap, 10000);  // less than a byte a round
  zent_trap_mark(&after);
  EXPECT_EQ(before.trap_depth, after.trap_depth);
  EXPECT_EQ(before.jump_depth, after.jump_depth);
  EXPECT_EQ(before.scratch, after.scratch);
  EXPECT_EQ(curr_fcn_idx, row);
  auto good = integral_of("square");
  EXPECT_EQ(error_of("PROBE_1", good), "");
}

TEST_F(Callback, FaultsAreErrorsOfTheLibrary) {
  struct sigaction before, after;
  sigaction(SIGSEGV, nullptr, &before);
  auto first = integral_of("fault");
  error_of("PROBE_1", first);
  const long heap = heap_in_use();
  const long row = curr_fcn_idx;
  for (int round = 0; round < 10000; ++round) {
    auto a = integral_of("fault", 3);
    const std::string error = error_of("PROBE_1", a);
    ASSERT_NE(error.find("MATH_MAJOR_VIOLATION"), std::string::npos) << error;
    ASSERT_EQ(a[6].to_real(), -1.0);
  }
  EXPECT_LT(heap_in_use() - heap, 10000);
  EXPECT_EQ(curr_fcn_idx, row);
  sigaction(SIGSEGV, nullptr, &after);
  EXPECT_EQ(before.sa_handler, after.sa_handler);
}

}  // namespace
