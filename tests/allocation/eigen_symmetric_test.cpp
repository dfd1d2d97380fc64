// The symmetric solvers with the first, second, ... allocation failing: the documented error, nothing lost, outputs as they were.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

constexpr long n = 40;
std::vector<double> a(n*n), b(n*n);
std::vector<zent_d_complex> h(n* n);
double low = -1, high = 1;
long number;

using Vectors = double*;
using ComplexVectors = zent_d_complex*;

struct Case {
  const char* name;
  long least;  // allocations
  double* (*run)(Vectors* v, ComplexVectors* z);
};

const Case cases[] = {
    {"values", 6, [](Vectors*, ComplexVectors*) { return zent_d_eig_sym(n, a.data(), 0); }},
    {"vectors", 10, [](Vectors* v, ComplexVectors*) { return zent_d_eig_sym(n, a.data(), ZENT_VECTORS, v, 0); }},
    {"range", 6,
     [](Vectors*, ComplexVectors*) {
       return zent_d_eig_sym(n, a.data(), ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &number, 0);
     }},
    {"range_vectors", 10,
     [](Vectors* v, ComplexVectors*) {
       return zent_d_eig_sym(n, a.data(), ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &number, ZENT_VECTORS, v, 0);
     }},
    {"hermitian_vectors", 10, [](Vectors*, ComplexVectors* z) { return zent_z_eig_herm(n, h.data(), ZENT_VECTORS, z, 0); }},
    {"hermitian_range_vectors", 10,
     [](Vectors*, ComplexVectors* z) {
       return zent_z_eig_herm(n, h.data(), ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &number, ZENT_VECTORS, z, 0);
     }},
    {"pencil", 6, [](Vectors*, ComplexVectors*) { return zent_d_eig_symgen(n, a.data(), b.data(), 0); }},
    {"pencil_vectors", 10,
     [](Vectors* v, ComplexVectors*) { return zent_d_eig_symgen(n, a.data(), b.data(), ZENT_VECTORS, v, 0); }},
};

class SymmetricAllocation : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    be_quiet();
    zent_find_message(MATH_OUT_OF_MEMORY);  // the first error loads the catalogue, once for the process
    zents_find_message(STAT_OUT_OF_MEMORY);
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j <= i; ++j) {
        const double x = std::sin(static_cast<double>(7 * i + 3 * j));
        a[i * n + j] = x;
        b[i * n + j] = i == j;
        h[i * n + j] = {x, i == j ? 0 : 0.3};
      }
    }
  }
};

TEST_P(SymmetricAllocation, EveryFailureIsAnError) {
  const Case& c = GetParam();
  long k = 0;
  for (bool struck = true; struck; ++k) {
    Vectors v = nullptr;
    ComplexVectors z = nullptr;
    number = -1;
    double before[3], after[3];
    zent_random_seed_set(5);
    zent_drnun(3, before);
    zent_random_seed_set(5);
    const long live = failing::live_blocks();
    failing::arm(k);  // 0, the first time round: none, and the state that stays is made
    double* values = c.run(&v, &z);
    struck = k == 0 || failing::struck();
    failing::arm(0);
    if (values == nullptr) {
      EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1) << k;
      EXPECT_EQ(zent_error_type(), 5) << k;
      EXPECT_TRUE(v == nullptr && z == nullptr && number == -1) << k;
    } else {
      EXPECT_EQ(zent_error_code(), 0) << k;  // the sort manages without
    }
    zent_free_allocated_memory(values);
    zent_free_allocated_memory(v);
    zent_free_allocated_memory(z);
    if (k > 0) {
      EXPECT_EQ(failing::live_blocks(), live) << k;
    }
    zent_drnun(3, after);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(after[i], before[i]) << k;
  }
  EXPECT_GT(k - 2, c.least);
}
INSTANTIATE_TEST_SUITE_P(All, SymmetricAllocation, testing::ValuesIn(cases),
                         [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST_F(SymmetricAllocation, OfTheStatisticsHalf) {
  std::vector<double> values(n), vectors(n * n);
  bool struck = true;
  for (long k = 0; struck; ++k) {
    values[0] = 1e9;
    const long live = failing::live_blocks();
    failing::arm(k);
    zents_de5csf(n, a.data(), n, values.data(), vectors.data(), n);
    struck = k == 0 || failing::struck();
    failing::arm(0);
    if (k > 0) {
      EXPECT_EQ(failing::live_blocks(), live) << k;
    }
    if (zents_error_code() == 0) {
      EXPECT_LT(values[0], 1e3) << k;
    } else {
      EXPECT_EQ(zents_error_code(), STAT_OUT_OF_MEMORY) << k;
      EXPECT_EQ(values[0], 1e9) << k;
    }
  }
}

// Squares of these orders overflow, to 0 among others.
TEST_F(SymmetricAllocation, AnOrderBeyondAllMemory) {
  for (long order : {1L << 31, 1L << 32, (1L << 32) + 1, 1L << 62}) {
    double* v = a.data();
    EXPECT_EQ(zent_d_eig_sym(order, a.data(), ZENT_VECTORS, &v, 0), nullptr);
    EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
    EXPECT_EQ(v, nullptr);
    EXPECT_EQ(zent_d_eig_symgen(order, a.data(), b.data(), 0), nullptr);
    EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
  }
}

}  // namespace
