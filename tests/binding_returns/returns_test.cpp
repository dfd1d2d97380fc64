// Wrappers and helpers over a host whose raises come back, with allocations that fail.
#include <gtest/gtest.h>

#include <cstring>

#include "binding/callback.hpp"
#include "binding/words.hpp"
#include "tests/binding_returns/stand_in.hpp"
#include "tests/support/failing_allocation.hpp"
#include "zent/records.h"

namespace {

using namespace zent::binding;
using stand_in::integer;
using stand_in::real;
using stand_in::text;

class Returning : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(ORV_Load(), 1);
    stand_in::raises = 0;
    stand_in::user = nullptr;
    row_ = curr_fcn_idx;
    live_ = stand_in::live;
  }
  void TearDown() override {
    stand_in::no_memory = false;
    cmath_continue_on_error = 0;
    EXPECT_EQ(curr_fcn_idx, row_);
    EXPECT_EQ(stand_in::live, live_);
  }
  // Calls a routine with a copy of each pointer; undefined variables fill up to its count.
  static long call(int number, std::vector<ORV_VARIABLE>& arguments) {
    const std::string name = "MATHSTAT_" + std::to_string(number);
    for (const ORV_SYSRTN& row : stand_in::rows) {
      if (name != row.name) continue;
      arguments.resize(row.max_args);
      std::vector<ORV_VARIABLE*> argv;
      for (ORV_VARIABLE& v : arguments) argv.push_back(&v);
      return row.handler(row.max_args, argv.data(), nullptr);
    }
    ADD_FAILURE() << name;
    return -1;
  }

 private:
  long row_ = 0, live_ = 0;
};

TEST_F(Returning, LoadingAnswersForTheStepThatFailed) {
  EXPECT_EQ(stand_in::rows.size(), 149u);
  for (const ORV_SYSRTN& row : stand_in::rows) EXPECT_TRUE(row.flags == 0 && row.extra == nullptr) << row.name;
  stand_in::rows.clear();
  stand_in::no_block = true;
  EXPECT_EQ(ORV_Load(), 0);
  EXPECT_TRUE(stand_in::rows.empty());
  stand_in::no_block = false;
  stand_in::no_table = true;
  EXPECT_EQ(ORV_Load(), 0);
  stand_in::no_table = false;
  EXPECT_EQ(ORV_Load(), 1);
}

TEST_F(Returning, EveryRoutineSurvivesMissingArguments) {
  for (const ORV_SYSRTN& row : std::vector<ORV_SYSRTN>(stand_in::rows)) {
    std::vector<ORV_VARIABLE> arguments;
    stand_in::raises = 0;
    EXPECT_EQ(call(std::atoi(row.name + 9), arguments), 0) << row.name;
    EXPECT_EQ(stand_in::raises, 1) << row.name;
  }
}

TEST_F(Returning, WrongTypesInEveryPositionOfTheFinishedOnes) {
  long numbers[4] = {};
  stand_in::Array none{0, numbers}, some{4, numbers};
  for (int number : {124, 130, 131, 159, 313}) {
    for (size_t k = 0; k < 6; ++k) {
      const ORV_VARIABLE wrong[] = {
          text("x"),     text(""), real(0.5), stand_in::array(ORV_TYP_INT64, none), stand_in::array(ORV_TYP_COMPLEX, some),
          ORV_VARIABLE{}};
      for (const ORV_VARIABLE& v : wrong) {
        std::vector<ORV_VARIABLE> arguments = {integer(5), integer(9), integer(1), integer(1), integer(1900), integer(0)};
        if (number == 124) arguments[2] = text("PI"), arguments[3] = text("1"), arguments[4] = real(0);
        arguments[k] = v;
        EXPECT_EQ(call(number, arguments), 0);
      }
    }
  }
}

TEST_F(Returning, AnErrorIsThrownOnceAndTheStatusFollowsTheSetting) {
  for (long go_on : {0L, 1L}) {
    cmath_continue_on_error = go_on;
    std::vector<ORV_VARIABLE> a = {integer(5), integer(9), text("NOTHING"), ORV_VARIABLE{}, real(-3.5)};
    stand_in::raises = 0;
    EXPECT_EQ(call(124, a), 0);
    EXPECT_EQ(stand_in::raises, 1);
    EXPECT_NE(stand_in::last.find("ZENT_CONSTANT: Terminal error: MATH_BAD_CONST_NAME: "), std::string::npos) << stand_in::last;
    EXPECT_EQ(a[4].value.d, -3.5);
    EXPECT_EQ(a[1].value.l, go_on);
  }
  std::vector<ORV_VARIABLE> good = {integer(5), integer(9), text("PI"), ORV_VARIABLE{}, real(0)};
  stand_in::raises = 0;
  call(124, good);
  EXPECT_EQ(stand_in::raises, 0);
  EXPECT_EQ(good[4].value.d, 3.141592653589793);
  EXPECT_EQ(cmast_opi_err_code, 0);
}

// Each allocation fails in turn: an error or the result, and nothing is kept.
TEST_F(Returning, AllocationsOfAWrapperFailInTurn) {
  const auto run = [] {
    std::vector<ORV_VARIABLE> a = {integer(5), integer(9), text("C"), text("KM/HOUR"), real(-1)};
    stand_in::raises = 0;
    EXPECT_EQ(call(124, a), 0);
    EXPECT_EQ(stand_in::raises == 0, a[4].value.d > 0) << stand_in::last;
    if (stand_in::raises == 0) {
      EXPECT_NEAR(a[4].value.d, 1079252848.8, 1e-3);
    }
    return stand_in::raises;
  };
  std::vector<ORV_VARIABLE> unknown = {integer(5), integer(9), text("?"), ORV_VARIABLE{}, real(0)};
  call(124, unknown);  // opens the catalogue for good
  run();
  const long blocks = failing::live_blocks();
  bool struck = true;
  for (long k = 1; struck && k < 100; ++k) {
    failing::arm(k);
    run();
    struck = failing::struck();
    failing::arm(0);
    EXPECT_EQ(failing::live_blocks(), blocks) << k;
    EXPECT_EQ(run(), 0) << k;
  }
  EXPECT_FALSE(struck);
}

TEST_F(Returning, AUserCallThatCannotBeMadeGivesNothing) {
  const ORV_IDENT routine = ORV_IdentHash("F", 0, 1, 2, 0);
  const double x[] = {1, 2};
  double out[2] = {7, 7};
  long calls = 0;
  stand_in::user = [&](ORV_CALLREC*) { return ++calls, nullptr; };
  EXPECT_EQ(call_scalar<double>(routine, 1.0), 0.0);
  EXPECT_FALSE(call_vector<double>(routine, 2, x, 2, out));
  EXPECT_EQ(calls, 2);
  stand_in::no_memory = true;
  EXPECT_FALSE(call_vector<double>(routine, 2, x, 2, out));
  EXPECT_EQ(calls, 2) << "there is no argument to call it with";
  EXPECT_EQ(out[1], 7.0);
}

TEST_F(Returning, WrongResultsOfUserRoutines) {
  const ORV_IDENT routine = ORV_IdentHash("F", 0, 1, 2, 0);
  const double x[] = {1, 2};
  double out[2] = {7, 7};
  static double three[3];
  static stand_in::Array content{3, three};
  stand_in::user = [](ORV_CALLREC*) {
    ORV_VARIABLE* const v = ORV_Gettmp();
    *v = stand_in::array(ORV_TYP_DOUBLE, content);
    v->flags |= ORV_V_TEMP;
    return v;
  };
  EXPECT_FALSE(call_vector<double>(routine, 2, x, 2, out));
  EXPECT_EQ(stand_in::last, "Incorrect number of elements for user-supplied routine.");
  EXPECT_EQ(call_scalar<double>(routine, 1.0), 0.0);
  stand_in::raises = 0;
  stand_in::user = [](ORV_CALLREC* rec) {
    EXPECT_EQ(rec->kind, 0);
    EXPECT_EQ(rec->argc, 3);
    *rec->argv[1] = real(2.5);
    return nullptr;
  };
  UserCall<3> procedure(routine);
  procedure.scalar(1.0).output().output().procedure();
  EXPECT_TRUE(procedure.get(1, 1, out));
  EXPECT_EQ(out[0], 2.5);
  EXPECT_FALSE(procedure.get(2, 1, out + 1));
  EXPECT_EQ(stand_in::raises, 1);
  EXPECT_EQ(stand_in::last, "undefined");
}

// A function without values has neither a zero nor a minimum.
TEST_F(Returning, SearchesFindNothingWhereTheUserRoutineFails) {
  stand_in::user = [](ORV_CALLREC*) { return nullptr; };
  long evaluations = 0;
  double at[2] = {7, 7};
  stand_in::Array info{1, &evaluations}, result{2, at};
  std::vector<ORV_VARIABLE> zero(12);
  zero[0] = integer(5), zero[1] = integer(9), zero[2] = text("F"), zero[8] = stand_in::array(ORV_TYP_INT64, info);
  zero[11] = stand_in::array(ORV_TYP_DOUBLE, result);
  EXPECT_EQ(call(196, zero), 0);
  EXPECT_EQ(evaluations, 101);
  std::vector<ORV_VARIABLE> least(19);
  least[0] = integer(5), least[1] = integer(9), least[2] = text("F"), least[3] = integer(2);
  at[0] = at[1] = 7;
  least[18] = stand_in::array(ORV_TYP_DOUBLE, result);
  EXPECT_EQ(call(143, least), 0);
  EXPECT_EQ(at[0], 7);
}

TEST_F(Returning, AHostErrorWithNowhereToGoEndsInTheWrapper) {
  cmast_init("OUTER");
  bool cleaned = false;
  stand_in::user = [](ORV_CALLREC*) -> ORV_VARIABLE* { longjmp(*stand_in::buffer, 1); };
  EXPECT_FALSE(guarded([] { call_scalar<double>(ORV_IdentHash("F", 0, 1, 2, 0), 1.0); }, [&] { cleaned = true; }));
  EXPECT_TRUE(cleaned);
  EXPECT_EQ(stand_in::buffer, nullptr);
}

long calls = 0;
long counted(long, ...) {
  return ++calls;
}

TEST_F(Returning, ACallWithTooManyWordsIsNotMade) {
  Words words;
  for (int k = 0; k < 70; ++k) words.add(1L);
  EXPECT_EQ(words.call<long>(reinterpret_cast<void*>(counted)), 0);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(stand_in::raises, 1);
}

TEST_F(Returning, StructuresWithoutMemoryOrTags) {
  long one[] = {1, 1}, knots_count[] = {2};
  double knots[] = {0, 1}, coef[] = {4}, *k = knots, *c = coef;
  const Zent_d_spline spline = {1, 1, one, one, knots_count, &k, &c};
  ORV_VARIABLE out[7] = {}, *argv[7];
  for (int i = 0; i < 7; ++i) argv[i] = &out[i];
  stand_in::no_memory = true;
  cmast_bspline_to_TVH(&spline, ORV_TYP_DOUBLE, argv);
  EXPECT_EQ(out[6].type, ORV_TYP_UNDEF);
  ORV_VARIABLE structure{};
  structure.type = ORV_TYP_STRUCT;
  EXPECT_EQ(cmast_tsdh_to_Cstruct(&structure, ORV_TYP_DOUBLE, 0), nullptr);
  EXPECT_NE(stand_in::last.find("not one of a spline"), std::string::npos);
  Zent_d_radial_fit fit = {};
  EXPECT_EQ(cmast_chk_radial_struct(&structure, ORV_TYP_DOUBLE, &fit), 0);
  cmast_radial_struct(&fit, ORV_TYP_DOUBLE, "F", &out[0]);
  EXPECT_NE(out[0].type, ORV_TYP_STRUCT);
}

}  // namespace
