// The table of routines, the error tables and their look-ups, the ring of labels, and the routing of messages by type.
#include <algorithm>
#include <cstring>
#include <set>

#include "binding/position_registry.hpp"
#include "tests/binding/module.hpp"
#include "zent.h"
#include "zents.h"

namespace {

using namespace binding_test;
using zent::binding::ErrorHalf;
using zent::binding::position_registry;

TEST(Table, HasTheRowsOfTheReferenceWithTheirCountsAndHalves) {
  const auto rows = position_registry();
  ASSERT_EQ(rows.size(), 149u);
  long stat = 0, math = 0;
  for (const auto& row : rows) {
    stat += row.half == ErrorHalf::stat;
    math += row.half == ErrorHalf::math;
    EXPECT_EQ(row.least_positions == row.most_positions, row.number != 135) << row.number;
    if (row.number == 166) {
      EXPECT_EQ(row.half, ErrorHalf::stat);
    }  // a math function, yet the other error state
    if (row.number == 250) {
      EXPECT_EQ(row.half, ErrorHalf::math);
    }
    if (row.number == 284) {
      EXPECT_EQ(row.most_positions, 44);
    }
    if (row.routine == nullptr) continue;
    EXPECT_EQ(row.routine->number, row.number);
    EXPECT_EQ(row.routine->position_count, row.most_positions) << row.number;
    // A routine with several labels, or none, goes by its number in the table.
    const bool by_number = std::strncmp(row.label, "MATHSTAT_", 9) == 0;
    EXPECT_TRUE(by_number || std::strcmp(row.routine->label, row.label) == 0) << row.number;
    std::set<std::string> names;
    for (int k = 0; k < row.routine->position_count; ++k) {
      const std::string name = row.routine->positions[k].name;
      EXPECT_TRUE(name == "UNUSED" || names.insert(name).second) << row.number << " " << name;
    }
  }
  EXPECT_EQ(stat, 83);
  EXPECT_EQ(math, 63);
  load();
  EXPECT_TRUE(orv::has_procedure("MATHSTAT_100"));
  EXPECT_TRUE(orv::has_procedure("MATHSTAT_501"));
  EXPECT_FALSE(orv::has_procedure("MATHSTAT_225"));
}

TEST(Table, ARoutineWithoutItsFunctionSaysSo) {
  std::vector<Value> arguments(21);
  const std::string error = error_of("MATHSTAT_100", arguments);
  EXPECT_NE(error.find("ZENT Error: ALLBEST is not available."), std::string::npos) << error;
}

TEST(Table, PageNamesEveryRoutineAndMeasuresItself) {
  const long length = cmast_routines_page(nullptr, 0);
  std::string page(static_cast<size_t>(length) + 1, '#');
  EXPECT_EQ(cmast_routines_page(page.data(), length + 1), length);
  EXPECT_EQ(page.back(), '\0');
  for (const auto& row : position_registry())
    EXPECT_NE(page.find("## MATHSTAT_" + std::to_string(row.number)), std::string::npos);
  EXPECT_NE(page.find("| 1 | `STATUS` | output | integer |  |"), std::string::npos);
  EXPECT_NE(page.find("| 6 | `UNUSED` | optional | any |  | not looked at |"), std::string::npos);
  char small[8];
  std::memset(small, '#', sizeof small);
  EXPECT_EQ(cmast_routines_page(small, 4), length);
  EXPECT_EQ(small[4], '#');
}

TEST(Structures, SparseElementsHaveTheLibrarysSizes) {
  load();
  const std::pair<const char*, long> sizes[] = {
      {"ZENT_F_SP_ELEM", 24}, {"ZENT_D_SP_ELEM", 24}, {"ZENT_C_SP_ELEM", 24}, {"ZENT_Z_SP_ELEM", 32}};
  for (const auto& [name, size] : sizes) {
    Value pair = Value::structure(ORV_MakeStruct(name, nullptr), 2);
    long count = 0;
    void* data = nullptr;
    ORV_VarGetData(pair.variable(), &count, &data, 0);
    ASSERT_EQ(count, 2) << name;
    static_cast<long*>(data)[0] = 11;
    *reinterpret_cast<long*>(static_cast<char*>(data) + size) = 22;
    EXPECT_EQ(pair.tag("ROW", 0).to_integer(), 11) << name;
    EXPECT_EQ(pair.tag("ROW", 1).to_integer(), 22) << name;
  }
}

struct NumberCase {
  long number, is_math, from_zent, expected;
};

TEST(ErrorTables, NumbersBothWaysFirstRowWins) {
  const NumberCase cases[] = {{101, 1, 1, 10002},
                              {10002, 1, 0, 101},
                              {15016, 1, 1, 10898},
                              {50000, 1, 1, 10973},
                              {65000, 0, 1, 21059},
                              {21059, 0, 0, 65000},
                              {65109, 0, 1, 21079},
                              {65110, 0, 1, 21080},
                              {21168, 0, 0, cmast_err_number_from_name(cmast_err_name_from_number(21168, 0, 0), 0, 1)},
                              {102, 2, 1, 20002},
                              {102, 0, 1, 20002},
                              {102, 1, 1, 10003},
                              {1, 1, 1, -1},
                              {499, 1, 1, -1},
                              {499, 0, 1, -1},
                              {10972, 1, 0, -1},
                              {10888, 1, 0, -1}};
  for (const auto& c : cases) EXPECT_EQ(cmast_zent_num_tarn_num(c.number, c.is_math, c.from_zent), c.expected) << c.number;
  EXPECT_STREQ(cmast_err_name_from_number(65000, 0, 1), "STAT_INADEQUATE_SPACE");
  EXPECT_STREQ(cmast_err_name_from_number(65000, 1, 1), "<unknown error>");
  EXPECT_EQ(cmast_err_number_from_name("STAT_BAD_RATE_FCN2", 0, 0), 21080);
  EXPECT_EQ(cmast_err_number_from_name("MATH_LIFE_LE_ZERO", 1, 0), 10898);
  EXPECT_EQ(cmast_err_number_from_name("MATH_MONTH_BTN_1_12", 1, 0), 10899);
  EXPECT_EQ(cmast_err_number_from_name("MATH_LIFE_LE_ZERO", 0, 0), -1);
}

// Tarn numbers count up by one from row to row; everything else is one of the known exceptions, and those three stand twice.
TEST(ErrorTables, TarnNumbersCountUpButForTheKnownExceptions) {
  std::multiset<long> math, stat;
  long next = 10002;
  for (const auto& row : cmath_err_table) {
    if (std::strcmp(row.name, "MATH_RETURN_STRING_ONLY") == 0) next = 10973;
    const long expected = next == 10888 ? 10898 : next == 10889 ? 10899 : next;
    EXPECT_EQ(row.tarn, expected) << row.name;
    math.insert(row.tarn);
    ++next;
  }
  next = 20002;
  for (const auto& row : cstat_err_table) {
    EXPECT_EQ(row.tarn, next == 21158 ? 21168 : next) << row.name;
    stat.insert(row.tarn);
    ++next;
  }
  EXPECT_EQ(math.count(10898), 2u);
  EXPECT_EQ(math.count(10899), 2u);
  EXPECT_EQ(stat.count(21168), 2u);
  EXPECT_TRUE(std::is_sorted(std::begin(cmath_err_table), std::end(cmath_err_table),
                             [](const auto& a, const auto& b) { return a.number < b.number; }));
}

TEST(Ring, WrapsBothWaysAndCutsLabelsAtFifteen) {
  const long before = curr_fcn_idx;
  for (int k = 0; k < 23; ++k) cmast_push_fcn_name(k == 22 ? "SIXTEEN_CHARS_16" : "FACTOR_ANALYSIS");
  EXPECT_EQ(curr_fcn_idx, (before + 23) % 10);
  EXPECT_STREQ(curr_fcn_name[curr_fcn_idx], "SIXTEEN_CHARS_1");
  EXPECT_STREQ(curr_fcn_name[(curr_fcn_idx + 9) % 10], "FACTOR_ANALYSIS");
  for (int k = 0; k < 23; ++k) cmast_pop_fcn_name();
  EXPECT_EQ(curr_fcn_idx, before);
}

// A public function of either half that ends with one error of the type.
void raise_in(bool math, long type, long number) {
  if (math) {
    zent_e1psh("zent_test");
    zent_ermes(type, number);
    zent_e1pop("zent_test");
  } else {
    zents_e1psh("zents_test");
    zents_ermes(type, number);
    zents_e1pop("zents_test");
  }
}

class Bridge : public testing::TestWithParam<std::tuple<bool, int>> {};

TEST_P(Bridge, RoutesEachTypeAsItsSeverityAsks) {
  load();
  const auto [math, type] = GetParam();
  static bool is_math;
  static long level;
  is_math = math;
  level = type;
  const long number = math ? 12001 : 102;
  const long before = curr_fcn_idx;
  // A host procedure of the test's own, so that a throw has somewhere to go.
  static const ORV_PROC wrapper = [](int, ORV_VARIABLE** argv, char*) -> long {
    cmast_init("BRIDGE");
    raise_in(is_math, level, is_math ? 12001 : 102);
    long code = 0, count = 0;
    void* status = nullptr;
    ORV_VarGetData(argv[0], &count, &status, 0);
    cmast_opi_clear_errors(is_math, &code, static_cast<int*>(status), 1);
    return 0;
  };
  static const ORV_SYSRTN row[] = {{wrapper, "BRIDGE_TEST", 1, 1, 0, nullptr}};
  static const int added = ORV_SysRtnAdd(row, 0, 1);
  ASSERT_EQ(added, 1);
  information.clear();
  std::vector<Value> arguments{Value::integer(7)};
  const std::string error = error_of("BRIDGE_TEST", arguments);
  const char* const words[] = {"", "Note", "Alert", "Warning", "Fatal error", "Terminal error", "Warning", "Fatal error"};
  const std::string head =
      std::string("ZENT Error: ZENT_BRIDGE: ") + words[type] + ": " + (math ? "MATH_YEAR_0" : "STAT_MAJOR_VIOLATION");
  const bool printed = type <= 3, thrown = type == 4 || type == 5 || type == 7;
  EXPECT_EQ(information.find(head) != std::string::npos, printed) << information;
  EXPECT_EQ(error.find(head) != std::string::npos, thrown) << error;
  EXPECT_EQ(error.empty(), !thrown);
  EXPECT_EQ(arguments[0].to_integer(), 0);
  EXPECT_EQ(cmast_opi_err_code, cmast_zent_num_tarn_num(number, math, 1));
  EXPECT_EQ(curr_fcn_idx, before);
  EXPECT_EQ(math ? zent_n1rty(1) : zents_n1rty(1), thrown ? 0 : type);
}
INSTANTIATE_TEST_SUITE_P(TypesOfBothHalves, Bridge, testing::Combine(testing::Bool(), testing::Range(1, 8)));

}  // namespace
