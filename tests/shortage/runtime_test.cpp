// The runtime itself without memory: the growing message buffer, and results with their headers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "runtime/envelope.hpp"
#include "tests/support/failing_allocation.hpp"
#include "zent.h"
#include "zents.h"

namespace {

template <class Half>
class Shortage : public ::testing::Test {};
using Halves = ::testing::Types<zent::Math, zent::Stat>;
TYPED_TEST_SUITE(Shortage, Halves);

// Texts behind the first buffer need memory; each growth may be the one that fails.
template <class Half>
[[noreturn]] void grow(long k, bool again) {
  static const std::string text(100000, 'x');
  zent::error_state<Half>.traceback_flag[8] = true;
  if (again) {  // an exit handler that calls the library after the shortage
    std::atexit([] { zent::public_call<Half>("late", [] { zent::raise_text<Half>(6, 1, "still here"); }); });
  }
  failing::arm(k);
  zent::public_call<Half>("caller", [] { zent::raise_text<Half>(4, 7, text.c_str()); });
  std::_Exit(90);
}

TYPED_TEST(Shortage, MessageBufferEndsTheProcess) {
  const char* const notice = "INTERNAL Error from caller.  Out of(.|\n)*error handler(.|\n)*traceback(.|\n)*caller";
  for (long k = 1; k <= 3; ++k) EXPECT_EXIT(grow<TypeParam>(k, false), ::testing::ExitedWithCode(4), notice) << k;
  EXPECT_EXIT(grow<TypeParam>(2, true), ::testing::ExitedWithCode(4), "error handler(.|\n)*still here");
}

TYPED_TEST(Shortage, ResultsAndWorkMemory) {
  const long before = failing::live_blocks();
  for (long k = 1; k <= 3; ++k) {  // work memory, the result, its header
    double* kept = zent::public_call<TypeParam>("f", [k]() -> double* {
      failing::arm(k);
      double* work = zent::scratch<TypeParam, double>(10);
      double* result = zent::result<TypeParam, double>(10);
      failing::arm(0);
      EXPECT_EQ(work == nullptr, k == 1);
      EXPECT_EQ(result == nullptr, k != 1);
      if (result == nullptr) return nullptr;
      zent::keep<TypeParam>(result);
      return result;
    });
    EXPECT_EQ(failing::live_blocks(), before + (kept != nullptr ? 1 : 0)) << k;
    zent_free_allocated_memory(kept);
    EXPECT_EQ(failing::live_blocks(), before);
  }
}

// The text of an option is copied first: without memory the old setting stays. 0 when all is well; ends the process because the
// catalogue is opened once in it.
[[noreturn]] void set_texts() {
  zent_error_options(ZENT_SET_PRINT, 5, 0, ZENT_SET_STOP, 5, 0, ZENT_ERROR_MSG_PATH, "/first/", 0);
  zent_find_name(201);
  const long before = failing::live_blocks();
  int wrong = 0;
  for (int option : {ZENT_ERROR_MSG_PATH, ZENT_ERROR_MSG_NAME}) {
    failing::arm(1);
    zent_error_options(option, "/second/", 0);
    if (!failing::struck() || zent_error_code() != MATH_OUT_OF_MEMORY_1) wrong |= 1;
  }
  const auto& view = zent::error_state<zent::Math>.catalogue;
  if (std::string(view.path) != "/first/") wrong |= 2;
  if (std::string(view.file) != "zenterr.bin") wrong |= 4;
  if (failing::live_blocks() != before) wrong |= 8;
  std::_Exit(wrong);
}

TEST(ShortageOfOptions, OldTextsStay) {
  EXPECT_EXIT(set_texts(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
