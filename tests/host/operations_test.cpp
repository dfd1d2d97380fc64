// The operations that a module calls, through a small module that is linked into this program.
#include <gtest/gtest.h>

#include <cstring>

#include "binding/orv_host.h"
#include "host/module.hpp"
#include "host/orv_embed.h"

namespace {

using orv::Error;
using orv::Value;

ORV_MSG_BLOCK block;
ORV_ERRSTATE saved;
const char* long_text = "";
double library_data[3] = {1, 2, 3};

long raise_library_error(int, ORV_VARIABLE**, char*) {
  ORV_Gettmp();  // abandoned
  ORV_VARIABLE* array;
  ORV_MakeTempVector(ORV_TYP_STRING, 10, 0, &array);
  ORV_MessageSyscode2FromBlock(block, 0, 1, 0, ORV_MSG_SAVE, &saved, "LABEL", "Fatal", "MATH_BAD_CONST_NAME", long_text);
  ORV_MessageThrowErrstate(ORV_MSG_RAISE, &saved);
  return 0;
}

long note(int, ORV_VARIABLE**, char*) {
  ORV_MessageFromBlock(block, -1, ORV_MSG_INFO, "100%s %n");
  return 0;
}

// Argument 0: name of a function; 1: receives the sum of what it returns for the library's array.
long call_function(int, ORV_VARIABLE** argv, char*) {
  const ORV_IDENT ident = ORV_IdentHash(ORV_VarGetString(argv[0]), 0, 1, 2, 0);
  jmp_buf* before = ORV_MessageGJE();
  jmp_buf own;
  if (setjmp(own) != 0) {
    ORV_MessageSJE(before);
    longjmp(*before, 1);
  }
  ORV_MessageSJE(&own);
  const long dims[1] = {3};
  ORV_VARIABLE* x = ORV_ImportArray(1, dims, ORV_TYP_DOUBLE, library_data, nullptr, nullptr);
  ORV_CALLREC rec{};
  rec.kind = 1;
  rec.argc = 1;
  rec.ident = ident;
  rec.argv = &x;
  ORV_InterpCallFromSysproc(&rec);
  ORV_VARIABLE* converted = ORV_VarTypeConvert(rec.result, ORV_TYP_DOUBLE);
  long n;
  void* data;
  ORV_VarGetData(converted, &n, &data, 0);
  double sum = 0;
  for (long k = 0; k < n; ++k) sum += static_cast<double*>(data)[k];
  if (converted != rec.result && (converted->flags & ORV_V_TEMP)) ORV_Deltmp(converted);
  if (rec.result->flags & ORV_V_TEMP) ORV_Deltmp(rec.result);
  if (x->flags & ORV_V_TEMP) ORV_Deltmp(x);
  ORV_Deltmp(x);  // once too often
  ORV_MessageSJE(before);
  ORV_StoreScalar(argv[1], ORV_TYP_DOUBLE, &sum);
  return 0;
}

long deliver(int, ORV_VARIABLE** argv, char*) {
  const long dims[2] = {2, 2};
  ORV_VARIABLE* temporary;
  auto* data = static_cast<long*>(ORV_MakeTempArray(ORV_TYP_INT64, 2, dims, 0, &temporary));
  for (long k = 0; k < 4; ++k) data[k] = k;
  ORV_VarCopy(temporary, argv[0]);
  ORV_SDEF def = ORV_MakeStruct("TEST_C_ELEM", nullptr);
  auto* bytes = static_cast<char*>(ORV_MakeTempStructVector(def, 2, &temporary, 0));
  const long row = 5;
  std::memcpy(bytes + 24, &row, sizeof row);
  ORV_VarCopy(temporary, argv[1]);
  return 0;
}

long read_undefined(int, ORV_VARIABLE** argv, char*) {
  ORV_DoubleScalar(argv[1]);
  return 0;
}

int load() {
  const struct {
    const char* name;
    int type;
  } elements[] = {{"TEST_F_ELEM", ORV_TYP_FLOAT},
                  {"TEST_D_ELEM", ORV_TYP_DOUBLE},
                  {"TEST_C_ELEM", ORV_TYP_COMPLEX},
                  {"TEST_Z_ELEM", ORV_TYP_DCOMPLEX}};
  for (const auto& element : elements) {
    const ORV_STRUCT_TAG tags[] = {{"ROW", nullptr, ORV_TYP_INT64, 0},
                                   {"COL", nullptr, ORV_TYP_INT64, 0},
                                   {"VAL", nullptr, element.type, 0},
                                   {nullptr, nullptr, 0, 0}};
    ORV_MakeStruct(element.name, tags);
  }
  const ORV_MSG_ROW rows[] = {{"TEST_LIBRARY", "E: ZENT_%s: %s: %s: %s"}, {"TEST_ERROR", "E: %s."}};
  block = ORV_MessageDefineBlock("TEST", 2, rows);
  const ORV_SYSRTN table[] = {{raise_library_error, "T_RAISE", 0, 2, 0, nullptr},
                              {note, "T_NOTE", 0, 0, 0, nullptr},
                              {call_function, "T_CALL", 2, 2, 0, nullptr},
                              {deliver, "T_DELIVER", 2, 2, 0, nullptr},
                              {read_undefined, "T_UNDEF", 2, 2, 0, nullptr}};
  return ORV_SysRtnAdd(table, 0, 5);
}

class Operations : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    orv::register_module(load);
  }
  void SetUp() override {
    before_ = orv::live_temporaries();
  }
  void TearDown() override {
    EXPECT_EQ(orv::live_temporaries(), before_);
    EXPECT_EQ(ORV_MessageGJE(), nullptr);
    orv::set_user_routine_handler(nullptr, nullptr);
    orv::set_information_sink(nullptr, nullptr);
  }

 private:
  long before_ = 0;
};

TEST_F(Operations, LibraryErrorsCarryTheirNameAndAreCutSafely) {
  const std::string text(10000, 'x');
  for (const std::string& value : {std::string("percent %s %n"), text}) {
    long_text = value.c_str();
    try {
      orv::call_procedure("t_raise", {});
      FAIL();
    } catch (const Error& error) {
      EXPECT_EQ(error.name, "MATH_BAD_CONST_NAME");
      const std::string expected = "E: ZENT_LABEL: Fatal: MATH_BAD_CONST_NAME: " + value;
      EXPECT_EQ(expected.compare(0, std::strlen(error.what()), error.what()), 0);
      EXPECT_EQ(std::strlen(error.what()) == expected.size(), expected.size() < 4000) << std::strlen(error.what());
    }
  }
}

TEST_F(Operations, InformationGoesToTheSink) {
  std::string text;
  orv::set_information_sink([](void* to, const char* what) { *static_cast<std::string*>(to) = what; }, &text);
  orv::call_procedure("T_NOTE", {});
  EXPECT_EQ(text, "E: 100%s %n.");
}

TEST_F(Operations, ArgumentsAreChecked) {
  Value a, b;
  Value* one[] = {&a};
  EXPECT_THROW(orv::call_procedure("T_CALL", one), Error);
  EXPECT_THROW(orv::call_procedure("T_NOWHERE", {}), Error);
  Value* two[] = {&a, &b};
  try {
    orv::call_procedure("T_UNDEF", two);
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "Variable is undefined: argument 2 of T_UNDEF");
  }
}

struct Keep {
  Value kept;
  int depth = 0;
};

Value user_routine(void* context, const char* name, bool, std::span<ORV_VARIABLE*> arguments) {
  auto* keep = static_cast<Keep*>(context);
  const std::string routine = name;
  if (routine == "FAIL") throw Error("MINE", "failed in the user function");
  if (routine == "NEST" && keep->depth++ < 5) {
    Value f = Value::text(keep->depth < 5 ? "nest" : "fail"), out;
    Value* call[] = {&f, &out};
    orv::call_procedure("T_CALL", call);
  }
  keep->kept = orv::view(arguments[0]);
  return apply(orv::Binary::multiply, keep->kept, Value::integer(2));
}

TEST_F(Operations, UserFunctionsSeeTheLibrarysArrayAndMayKeepIt) {
  Keep keep;
  orv::set_user_routine_handler(user_routine, &keep);
  Value f = Value::text("double_it"), sum;
  Value* arguments[] = {&f, &sum};
  orv::call_procedure("T_CALL", arguments);
  EXPECT_EQ(sum.to_real(), 12);
  library_data[0] = 99;
  EXPECT_EQ(keep.kept.as<double>()[0], 1) << "a kept value does not follow the library's memory";
  library_data[0] = 1;
}

TEST_F(Operations, ErrorsThroughNestedCallsComeBackWhole) {
  for (int k = 0; k < 1000; ++k) {
    Keep keep;
    orv::set_user_routine_handler(user_routine, &keep);
    Value f = Value::text("nest"), sum;
    Value* arguments[] = {&f, &sum};
    try {
      orv::call_procedure("T_CALL", arguments);
      FAIL();
    } catch (const Error& error) {
      ASSERT_EQ(error.name, "MINE");
      ASSERT_STREQ(error.what(), "failed in the user function");
      ASSERT_FALSE(sum.defined());
    }
  }
}

TEST_F(Operations, TemporariesMoveIntoArguments) {
  Value array, elements = Value::text("replaced");
  Value* arguments[] = {&array, &elements};
  orv::call_procedure("T_DELIVER", arguments);
  EXPECT_EQ(array.dims(), (orv::Dims{2, 2}));
  EXPECT_EQ(array.as<long>()[3], 3);
  EXPECT_EQ(elements.tag("ROW", 1).to_integer(), 5);
}

TEST(Structures, ElementsHaveTheSizeOfTheLibrarysRecords) {
  orv::register_module(load);
  const std::pair<const char*, long> sizes[] = {
      {"TEST_F_ELEM", 24}, {"TEST_D_ELEM", 24}, {"TEST_C_ELEM", 24}, {"test_z_elem", 32}};
  for (const auto& [name, size] : sizes) {
    Value two = Value::structure(ORV_MakeStruct(name, nullptr), 2);
    char* base = static_cast<char*>(ORV_StructGetTagAddress(two.variable(), "VAL", 0, 1, nullptr));
    EXPECT_EQ(base - static_cast<const char*>(two.data()), 16);
    *reinterpret_cast<float*>(base + size) = 1.5f;
    EXPECT_EQ(two.tag("ROW", 1).to_integer(), 0) << name;
    Value second = two.element(1);
    EXPECT_EQ(*static_cast<float*>(ORV_StructGetTagAddress(second.variable(), "val", 0, 1, nullptr)), 1.5f) << name;
  }
}

TEST(Variables, ReleasedTwiceOrNeverTemporary) {
  ORV_VARIABLE local{};
  ORV_Deltmp(&local);
  ORV_Delvar(&local);
  ORV_VARIABLE* v = ORV_Gettmp();
  ORV_STRING text{5, const_cast<char*>("hello")};
  ORV_StoreScalar(v, ORV_TYP_STRING, &text);
  EXPECT_STREQ(ORV_VarGetString(v), "hello");
  ORV_VarCopy(v, &local);
  ORV_Deltmp(v);
  ORV_Deltmp(v);
  EXPECT_STREQ(ORV_VarGetString(&local), "hello");
  EXPECT_TRUE(local.flags & ORV_V_DYNAMIC);
  ORV_Delvar(&local);
  ORV_Delvar(&local);
  EXPECT_EQ(local.type, ORV_TYP_UNDEF);
  EXPECT_EQ(ORV_IdentHash("myFunc", 0, 1, 2, 0), ORV_IdentHash("MYFUNC", 0, 1, 2, 0));
  char row[16];
  EXPECT_EQ(ORV_StrBase_strlcpy(row, "CONSTRAINED_NLP_LONG", 16), 20);
  EXPECT_STREQ(row, "CONSTRAINED_NLP");
}

TEST(Variables, AnErrorWithoutAJumpPointEndsTheProcessWithItsText) {
  ORV_VARIABLE undefined{};
  EXPECT_EXIT(ORV_DoubleScalar(&undefined), testing::ExitedWithCode(1), "Variable is undefined");
}

int c_routine(void* context, int, ORV_VARIABLE** argv, ORV_VARIABLE* result, char* error_text, size_t size) {
  double x = 0;
  if (*static_cast<int*>(context)) {
    std::snprintf(error_text, size, "no more");
    return 1;
  }
  const double* data = static_cast<double*>(orv_embed_data(argv[0]));
  for (long k = 0; k < orv_embed_count(argv[0]); ++k) x += data[k];
  return !orv_embed_set_real(result, x);
}

TEST(Embedding, CallsRoutinesInC) {
  orv::register_module(load);
  char text[8] = "";
  int fail = 0;
  ASSERT_TRUE(orv_embed_define("c_sum", c_routine, &fail));
  ORV_VARIABLE* argv[2] = {orv_embed_string("C_SUM"), orv_embed_undefined()};
  ASSERT_TRUE(orv_embed_call("t_call", 2, argv, text, sizeof text)) << text;
  double sum = 0;
  EXPECT_TRUE(orv_embed_to_real(argv[1], &sum, nullptr, 0));
  EXPECT_EQ(sum, 6);
  fail = 1;
  EXPECT_FALSE(orv_embed_call("t_call", 2, argv, text, sizeof text));
  EXPECT_STREQ(text, "no more");
  EXPECT_FALSE(orv_embed_load("/nowhere.so", text, sizeof text));
  EXPECT_STREQ(text, "Cannot ") << "cut to the room there is";
  EXPECT_TRUE(orv_embed_define("c_sum", nullptr, nullptr));
  for (ORV_VARIABLE* v : argv) orv_embed_release(v);
}

}  // namespace
