// Every allocation of a call made to fail in turn.
#pragma once

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"

namespace failing {

// Fails the k-th allocation for k = 1, 2, ... until the call goes through: each time an error and no block lost. `run` returns
// the result, null on failure, which is freed here, or whether there is one; at least `least` calls fail, and `spare` allocations
// may be done without.
template <class Run>
void survive(Run run, int least, int spare = 0) {
  be_quiet();
  zent_find_message(MATH_OUT_OF_MEMORY_1);  // the catalogue is read once
  int failures = 0;
  for (long k = 1;; ++k) {
    const long before = live_blocks();
    arm(k);
    const auto result = run();
    const bool delivered = static_cast<bool>(result);
    const bool through = !struck();
    arm(0);
    if (delivered && !through) --spare;
    if (!delivered) {
      EXPECT_GE(zent_error_code(), MATH_OUT_OF_MEMORY_1);
      EXPECT_LE(zent_error_code(), MATH_OUT_OF_MEMORY_3);
      EXPECT_EQ(zent_error_type(), 5);
      ++failures;
    }
    if constexpr (std::is_pointer_v<decltype(+result)>) zent_free_allocated_memory(result);
    EXPECT_EQ(live_blocks(), before) << k;
    if (through) {
      EXPECT_TRUE(delivered);
      break;
    }
  }
  EXPECT_GE(failures, least);
  EXPECT_GE(spare, 0);
}

}  // namespace failing
