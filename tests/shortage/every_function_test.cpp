// Fails the first, second, ... allocation of every public function that takes memory, each time in a fresh process, because the
// catalogue and the keys take theirs once. After a failure: the function's failure value, an error or a documented fallback, no
// block lost, and the next call works.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

void be_silent() {
  be_quiet();
  std::freopen("/dev/null", "w", stderr);
}

// Each returns true when the outcome is a right one: `failed` tells whether an allocation was made to fail.
bool constant(bool failed) {
  const double x = zent_d_constant("SPEEDLIGHT", "km/s");
  if (failed && zent_error_code() != 0) return std::isnan(x) && zent_error_code() == MATH_OUT_OF_MEMORY_1;
  return x == 299792.458;
}
bool message(bool failed) {
  const char* text = zent_find_message(MATH_BAD_CONST_NAME);
  return (failed && std::strcmp(text, "Error code 12111.") == 0) || std::strlen(text) > 20;
}
bool stat_message(bool failed) {
  const char* text = zents_find_message(STAT_OUT_OF_MEMORY);
  return (failed && std::strcmp(text, "Error code 200.") == 0) || std::strlen(text) > 20;
}
bool error_path(bool failed) {
  zent_error_options(ZENT_ERROR_MSG_PATH, "/nowhere/", ZENT_ERROR_MSG_NAME, "nothing.bin", 0);
  return zent_error_code() == 0 || (failed && zent_error_code() == MATH_OUT_OF_MEMORY_1);
}
bool streams(bool) {
  FILE* stream = nullptr;
  zent_umach(3, &stream);
  return stream == stderr || stream == nullptr;
}
bool keys(bool) {
  long key = 0, status = 0;
  int value = 0;
  for (int k = 0; k < 200 && status == 0; ++k) {
    zent_key_create(&key, nullptr);
    status = zent_setspecific(key, &value);
  }
  return failing::struck() ? status == 12 : status == 0 && zent_getspecific(key) == &value;
}
bool transposition(bool) {  // falls back to cycles in place
  double a[] = {1, 2, 3, 4, 5, 6};
  zent_d_m1ran(2, 3, a, a);
  const double expected[] = {1, 4, 2, 5, 3, 6};
  return std::memcmp(a, expected, sizeof a) == 0;
}
bool sorting(bool) {
  double x[600], sorted[600];
  long permutation[600];
  for (long k = 0; k < 600; ++k) x[k] = static_cast<double>(k * 7919 % 600), permutation[k] = k;
  zents_dsvrgp(600, x, sorted, permutation);
  for (long k = 0; k < 600; ++k) {
    if (sorted[k] != static_cast<double>(k) || x[permutation[k]] != sorted[k]) return false;
  }
  return true;
}
bool dates(bool) {
  long day = 0, month = 0, year = 0;
  zent_days_to_date(zent_date_to_days(29, 2, 2000), &day, &month, &year);
  return day == 29 && month == 2 && year == 2000;
}

// What is made for the caller or not at all; the streams' own records come at the first use.
bool no_memory(bool failed) {
  return failed && zents_error_code() == STAT_OUT_OF_MEMORY;
}
bool uniform(bool failed) {
  float* single = zents_f_random_uniform(3, 0);
  const bool first = single != nullptr || no_memory(failed);
  double* x = zents_d_random_uniform(3, 0);
  const bool right = first && (x != nullptr || no_memory(failed));
  zents_free_allocated_memory(single);
  zents_free_allocated_memory(x);
  return right;
}
bool random_tables(bool failed) {
  double* table = nullptr;
  long* words = nullptr;
  zents_d_random_table_get(&table, 0);
  const bool first = table != nullptr || no_memory(failed);
  zents_random_GFSR_table_get(&words, 0);
  const bool right = first && (words != nullptr || no_memory(failed));
  zents_free_allocated_memory(table);
  zents_free_allocated_memory(words);
  return right;
}
bool faure(bool failed) {
  zents_faure* sequence = zents_faure_sequence_init(3, 0);
  if (sequence == nullptr) return no_memory(failed);
  double* point = zents_d_faure_next_point(sequence, 0);
  const bool right = point != nullptr ? point[0] >= 0 && point[0] < 1 : no_memory(failed);
  zents_free_allocated_memory(point);
  zents_faure_sequence_free(sequence);
  return right;
}

struct Function {
  const char* name;
  bool (*run)(bool failed);
  bool once;  // what it takes stays for the life of the process
};

void PrintTo(const Function& function, std::ostream* out) {
  *out << function.name;
}

class EveryAllocation : public ::testing::TestWithParam<Function> {};

// 0: no allocation failed; 1: failed and right; above: what was wrong.
int outcome(const Function& function, long k) {
  be_silent();
  if (!function.once) {  // the once-only memory of the runtime and the catalogues
    function.run(false);
    zent_find_message(MATH_OUT_OF_MEMORY);
    zents_find_message(STAT_OUT_OF_MEMORY);
  }
  const long before = failing::live_blocks();
  failing::arm(k);
  const bool right = function.run(k != 0);
  const bool struck = failing::struck();
  failing::arm(0);
  if (!right) return 2;
  if (!function.once && failing::live_blocks() != before) return 3;
  if (!function.once && !function.run(false)) return 4;
  return struck ? 1 : 0;
}

TEST_P(EveryAllocation, FailsInTurn) {
  int status = 1;
  long k = 1;
  for (; status == 1 && k < 1000; ++k) {
    const pid_t child = fork();
    if (child == 0) _exit(outcome(GetParam(), k));
    int result = 0;
    waitpid(child, &result, 0);
    ASSERT_TRUE(WIFEXITED(result)) << "allocation " << k << " ended the process";
    status = WEXITSTATUS(result);
    ASSERT_LE(status, 1) << "allocation " << k;
  }
  EXPECT_LT(k, 1000);
}

const Function functions[] = {
    {"constant", constant, false},    {"message", message, true},    {"stat_message", stat_message, true},
    {"error_path", error_path, true}, {"streams", streams, true},    {"keys", keys, true},
    {"m1ran", transposition, false},  {"svrgp", sorting, false},     {"dates", dates, false},
    {"uniform", uniform, false},      {"first_draw", uniform, true}, {"random_tables", random_tables, false},
    {"faure", faure, false},
};

INSTANTIATE_TEST_SUITE_P(Library, EveryAllocation, ::testing::ValuesIn(functions),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
