// Sequences of Bessel functions when memory ends. Links with the failing allocator.
#include <gtest/gtest.h>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

TEST(BesselAllocation, NothingLeaksAndTheNextCallWorks) {
  be_quiet();
  const double order = 0.25;
  const zent_d_complex z = {-1, 2};
  zent_z_bessel_Jx_adr(&order, &z, 0, 0);  // the first message reads the catalogue, which stays
  for (auto f : {zent_z_bessel_Ix_adr, zent_z_bessel_Jx_adr, zent_z_bessel_Kx_adr, zent_z_bessel_Yx_adr}) {
    zent_free_allocated_memory(f(&order, &z, 3, 0));
    const long before = failing::live_blocks();
    failing::arm(1);
    EXPECT_EQ(f(&order, &z, 3, 0), nullptr);
    EXPECT_TRUE(failing::struck());
    failing::arm(0);
    EXPECT_EQ(zent_error_code(), 201);
    EXPECT_EQ(failing::live_blocks(), before);
    const zent_d_complex far = {1e-3, 0};  // an error behind the allocation frees the values
    f(&order, &far, 500, 0);
    EXPECT_EQ(zent_error_code(), 14004);
    EXPECT_EQ(failing::live_blocks(), before);
    zent_d_complex* values = f(&order, &z, 3, 0);
    EXPECT_NE(values, nullptr);
    zent_free_allocated_memory(values);
  }
}

}  // namespace
