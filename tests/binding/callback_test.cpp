// User functions: results of both precisions, wrong ones, and ten thousand that fail in the middle of the library.
#include "binding/callback.hpp"

#include <malloc.h>

#include <cmath>
#include <csignal>
#include <list>
#include <numeric>

#include "tests/binding/module.hpp"
#include "tests/support/crash.hpp"
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
Value null_write(std::span<ORV_VARIABLE*>) {
  crash();
  return Value::real(0);
}
Value illegal_instruction(std::span<ORV_VARIABLE*>) {
  __asm__ volatile("ud2");
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
    user_functions = {{"FAIL", fail},     {"FAULT", fault},         {"NULL_WRITE", null_write}, {"ILLEGAL", illegal_instruction},
                      {"SQUARE", square}, {"THREE", three_numbers}, {"DOUBLED", doubled}};
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

class Fault : public Callback, public testing::WithParamInterface<const char*> {};

TEST_P(Fault, IsAnErrorOfTheLibrary) {
  struct sigaction before, after;
  sigaction(SIGSEGV, nullptr, &before);
  auto first = integral_of(GetParam());
  error_of("PROBE_1", first);
  const long heap = heap_in_use();
  const long row = curr_fcn_idx;
  for (int round = 0; round < 10000; ++round) {
    auto a = integral_of(GetParam(), 3);
    const std::string error = error_of("PROBE_1", a);
    ASSERT_NE(error.find("MATH_MAJOR_VIOLATION"), std::string::npos) << error;
    ASSERT_EQ(a[6].to_real(), -1.0);
  }
  EXPECT_LT(heap_in_use() - heap, 10000);
  EXPECT_EQ(curr_fcn_idx, row);
  sigaction(SIGSEGV, nullptr, &after);
  EXPECT_EQ(before.sa_handler, after.sa_handler);
}

INSTANTIATE_TEST_SUITE_P(RaisedAndReal, Fault, testing::Values("fault", "null_write", "illegal"));

// ---- Routines called from user functions ------------------------------------------------------------------------------------

ORV_IDENT plain_routine;

// Calls a user function directly, without a library function and its trap around it; so there is no error state to read either.
long plain_call(int, ORV_VARIABLE** argv, char*) {
  cmast_init("PLAIN");
  plain_routine = zent::binding::user_routine(argv[0]);
  double result = 0;
  if (!zent::binding::guarded([&] { result = zent::binding::call_scalar<double>(plain_routine, 2.0); })) return 0;
  cmast_pop_fcn_name();
  ORV_StoreScalar(argv[1], ORV_TYP_DOUBLE, &result);
  return 0;
}

// Argument 1: gets the sum of the outputs of the procedure whose name is argument 0.
long procedure_call(int, ORV_VARIABLE** argv, char*) {
  cmast_init("OUTPUTS");
  plain_routine = zent::binding::user_routine(argv[0]);
  double one = 0, two[2] = {};
  const bool done = zent::binding::guarded([&] {
    const double x[] = {3, 4};
    zent::binding::UserCall<4> call(plain_routine);
    call.scalar(1.0).vector(2, x).output().output().procedure();
    if (call.get(2, 1, &one) && call.get(3, 2, two)) call.finish();
  });
  if (!done) return 0;
  cmast_pop_fcn_name();
  const double sum = one + two[0] + two[1];
  ORV_StoreScalar(argv[1], ORV_TYP_DOUBLE, &sum);
  return 0;
}

void add_routines() {
  static const ORV_SYSRTN rows[] = {{plain_call, "PLAIN_CALL", 2, 2, 0, nullptr}, {procedure_call, "OUTPUTS", 2, 2, 0, nullptr}};
  ORV_SysRtnAdd(rows, 0, 2);
}

// A fault abandons the frames of user functions, so these keep what they own elsewhere.
std::vector<Value>& held(std::vector<Value> values) {
  static std::list<std::vector<Value>> all;
  return all.emplace_back(std::move(values));
}

void call_inside(const char* routine, std::vector<Value>& values) {
  Value* arguments[8];
  for (std::size_t k = 0; k < values.size(); ++k) arguments[k] = &values[k];
  orv::call_procedure(routine, std::span(arguments, values.size()));
}

Value plain_fault(std::span<ORV_VARIABLE*>) {
  std::vector<Value>& a = held({Value::text("null_write"), Value()});
  call_inside("PLAIN_CALL", a);
  return a[1];
}

// The fault passes over the inner routine; the outer one's error must not go to the buffer that the inner one left behind.
TEST_F(Callback, AFaultInAnInnerRoutineWithoutATrapEndsTheOuterOne) {
  add_routines();
  user_functions["PLAIN_FAULT"] = plain_fault;
  for (int round = 0; round < 100; ++round) {
    auto a = integral_of("plain_fault");
    const std::string error = error_of("PROBE_1", a);
    ASSERT_NE(error.find("MATH_MAJOR_VIOLATION"), std::string::npos) << error;
    auto good = integral_of("square");
    ASSERT_EQ(error_of("PROBE_1", good), "");
  }
}

long deepest = 0;

Value deeper(std::span<ORV_VARIABLE*>) {
  if (--deepest == 0) crash();
  std::vector<Value>& a = held({Value::integer(5), Value::integer(9), Value::text("deeper"), Value::real(0), Value::real(3),
                                Value::integer(1), Value::real(-1)});
  call_inside("PROBE_1", a);
  return a[6];
}

// Deeper than the traps that can be armed and than the ring of labels.
TEST_F(Callback, AFaultInDeepNestingComesBackThroughEveryRoutine) {
  user_functions["DEEPER"] = deeper;
  zent_trap_state before, after;
  zent_trap_mark(&before);
  const long row = curr_fcn_idx;
  for (long depth : {14, 15, 16, 40, 14}) {
    deepest = depth;
    auto a = integral_of("deeper");
    const std::string error = error_of("PROBE_1", a);
    ASSERT_NE(error.find("MATH_MAJOR_VIOLATION"), std::string::npos) << error;
    for (long k = 1; k < depth; ++k) zent_e1pop("probe_d_integral");
    EXPECT_EQ(curr_fcn_idx, row);
    auto good = integral_of("square");
    ASSERT_EQ(error_of("PROBE_1", good), "");
  }
  zent_trap_mark(&after);
  EXPECT_EQ(before.trap_depth, after.trap_depth);
  EXPECT_EQ(before.jump_depth, after.jump_depth);
  EXPECT_EQ(orv::live_temporaries(), 0);
}

std::string seen_inside;

bool with_fatal = false;

// A routine with a note, and one with an error that the user function catches.
Value innermost(std::span<ORV_VARIABLE*>) {
  information.clear();
  std::vector<Value> early{Value::integer(5), Value::integer(0),   Value::integer(1),
                           Value::integer(1), Value::integer(-50), Value()};
  call_inside("MATHSTAT_130", early);
  seen_inside = information;
  if (!with_fatal) return Value::real(1);
  std::vector<Value> unknown{Value::integer(5), Value::integer(0), Value::text("NOTHING"), Value(), Value()};
  try {
    call_inside("MATHSTAT_124", unknown);
  } catch (const orv::Error& error) {
    seen_inside += error.what();
  }
  return Value::real(1);
}
Value inner(std::span<ORV_VARIABLE*> arguments) {
  std::vector<Value> a{Value::integer(5), Value::integer(0), Value::text("innermost"), Value::real(0),
                       Value::real(3),    Value::integer(2), Value::real(-1)};
  call_inside("PROBE_1", a);
  EXPECT_EQ(a[6].to_real(), 3.0);
  return doubled(arguments);
}

TEST_F(Callback, ErrorsOfNestedRoutinesAreDeliveredWhenTheInnerRoutineReturns) {
  user_functions["INNERMOST"] = innermost;
  user_functions["INNER"] = inner;
  const long row = curr_fcn_idx, live = orv::live_temporaries();
  Value x = Value::array(ORV_TYP_DOUBLE, {1});
  std::vector<Value> a{Value::integer(5), Value::integer(9), Value::text("inner"), x, Value::array(ORV_TYP_DOUBLE, {1})};
  with_fatal = false;
  EXPECT_EQ(error_of("PROBE_2", a), "");
  EXPECT_NE(seen_inside.find("ZENT_DATETODAYS: Note: MATH_YEAR_45: "), std::string::npos) << seen_inside;
  EXPECT_EQ(curr_fcn_idx, row);
  // A terminal error that the user function caught is over.
  with_fatal = true;
  const char* const text = "ZENT_CONSTANT: Terminal error: MATH_BAD_CONST_NAME: ";
  EXPECT_EQ(error_of("PROBE_2", a), "");
  EXPECT_NE(seen_inside.find(text), std::string::npos) << seen_inside;
  EXPECT_EQ(orv::live_temporaries(), live);
}

Value outputs(std::span<ORV_VARIABLE*> arguments) {
  orv::assign(arguments[2], Value::integer(5));
  orv::assign(arguments[3], orv::view(arguments[1]));
  return Value();
}
Value one_output(std::span<ORV_VARIABLE*> arguments) {
  orv::assign(arguments[2], Value::real(5));
  return Value();
}
Value short_output(std::span<ORV_VARIABLE*> arguments) {
  orv::assign(arguments[2], Value::array(ORV_TYP_FLOAT, {1}));
  orv::assign(arguments[3], Value::real(1));
  return Value();
}

TEST_F(Callback, OutputsOfProcedures) {
  add_routines();
  user_functions["OUT"] = outputs;
  user_functions["ONE"] = one_output;
  user_functions["SHORT"] = short_output;
  long heap = 0;
  for (int round = 0; round < 1001; ++round) {
    if (round == 1) heap = heap_in_use();
    std::vector<Value> a{Value::text("out"), Value()};
    ASSERT_EQ(error_of("OUTPUTS", a), "");
    ASSERT_EQ(a[1].to_real(), 12.0);
    a[0] = Value::text("one");
    ASSERT_NE(error_of("OUTPUTS", a).find("Variable is undefined"), std::string::npos);
    a[0] = Value::text("short");
    ASSERT_NE(error_of("OUTPUTS", a).find("Incorrect number of elements"), std::string::npos);
  }
  EXPECT_LT(heap_in_use() - heap, 1000);
  EXPECT_EQ(orv::live_temporaries(), 0);
}

}  // namespace
