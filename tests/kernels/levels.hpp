// What the tests of the fast primitives share: every level that this processor has, one after the other.
#pragma once

#include "forms.hpp"
#include "runtime/kernels/fast.hpp"

namespace fast = zent::fast;
namespace kernel = zent::kernel;

inline void use_best_level() {
  if (!fast::use_level(fast::Level::avx512) && !fast::use_level(fast::Level::avx2)) fast::use_level(fast::Level::baseline);
}

template <class Body>
void at_every_level(Body body) {
  for (fast::Level level : {fast::Level::baseline, fast::Level::avx2, fast::Level::avx512}) {
    if (!fast::use_level(level)) continue;
    ASSERT_EQ(fast::level(), level);
    SCOPED_TRACE("level " + std::to_string(static_cast<int>(level)));
    body();
    if (testing::Test::HasFailure()) return;
  }
}
