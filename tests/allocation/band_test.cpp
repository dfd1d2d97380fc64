// Every allocation of the band solvers, the norms and the products made to fail in turn: an error, no block lost, the matrix as
// it was, and the next call works.
#include "tests/band/forms.hpp"
#include "tests/support/survive.hpp"

namespace band_test {
namespace {

TEST(BandAllocation, IsCheckedEverywhere) {
  Band<double> m(200, 40, 40);
  std::vector<double> b = random_vector<double>(200), factor(121 * 200), definite(41 * 200);
  std::fill(definite.begin() + 40 * 200, definite.end(), 100.0);
  std::vector<long> pivots(200);
  const std::vector<double> kept = m.a;
  failing::survive([&] { return zent_d_lin_sol_gen_band(200L, m.a.data(), 40L, 40L, b.data(), 0); }, 4);
  EXPECT_TRUE(same(kept, m.a.data()));
  failing::survive(
      [&] {
        std::copy(kept.begin(), kept.end(), factor.begin());
        return zent_d_lin_sol_gen_band(200L, factor.data(), 40L, 40L, b.data(), ZENT_FACTOR_USER, pivots.data(), factor.data(),
                                       0);
      },
      2);
  failing::survive(
      [&] {
        double* rows = nullptr;
        double* x = zent_d_lin_sol_posdef_band(200L, definite.data(), 40L, b.data(), ZENT_FACTOR, &rows, 0);
        EXPECT_EQ(x == nullptr, rows == nullptr);
        zent_free_allocated_memory(rows);
        return x;
      },
      4, 1);
  Zent_d_sparse_elem e[] = {{0, 0, 1}, {1, 0, 2}};
  failing::survive([&] { return zent_d_mat_mul_rect_coordinate("A*trans(A)", ZENT_A_MATRIX, 2, 2, 2, e, 0); }, 6);
  failing::survive([&] { return zent_d_mat_mul_rect_band("A*A", ZENT_A_MATRIX, 200, 200, 40, 40, m.a.data(), 0); }, 1);
  failing::survive([&] { return zent_d_mat_mul_rect("A*A", ZENT_A_MATRIX, 14, 14, m.a.data(), 0); }, 1);
  failing::arm(1);
  EXPECT_TRUE(std::isnan(zent_d_matrix_norm_coordinate(2L, 2L, 2L, e, ZENT_ONE_NORM, 0)));
  EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
  failing::arm(0);
}

// A bad address for the pivots that the library would hand over ends in the trap, and nothing is lost.
TEST(BandAllocation, ABadAddressLosesNothing) {
  be_quiet();
  double a[] = {2, 2, 2}, b[] = {1, 1, 1}, *factor = nullptr;
  zent_find_message(MATH_MAJOR_VIOLATION);
  const long before = failing::live_blocks();
  EXPECT_EQ(zent_d_lin_sol_gen_band(3L, a, 0L, 0L, b, ZENT_FACTOR, reinterpret_cast<long**>(64), &factor, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_MAJOR_VIOLATION);
  EXPECT_EQ(failing::live_blocks(), before);
}

}  // namespace
}  // namespace band_test
