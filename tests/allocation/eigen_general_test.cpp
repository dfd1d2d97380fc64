// Every allocation of a call fails once: the call ends with an error, nothing is lost, and the next one works.
#include <gtest/gtest.h>

#include "tests/eigen/gen_matrices.hpp"
#include "tests/support/failing_allocation.hpp"

namespace {

using namespace general;

template <class Call>
void fail_each(long least, Call call) {
  be_quiet();
  double element = 1;
  zent_d_eig_gen(0, &element, 0);  // the first error loads the catalogue, once for the process
  ASSERT_TRUE(call());
  const long before = failing::live_blocks();
  long k = 1;
  for (;; ++k) {
    failing::arm(k);
    const bool done = call();
    const bool struck = failing::struck();
    failing::arm(0);
    EXPECT_EQ(failing::live_blocks(), before) << k;
    if (!struck) {
      EXPECT_TRUE(done);
      break;
    }
    EXPECT_TRUE(!done || zent_error_code() == 0) << k;  // the sort manages without
  }
  EXPECT_GT(k, least);
  EXPECT_TRUE(call());
}

TEST(GeneralAllocation, EveryFailureIsAnError) {
  const auto a = random_matrix<double>(40), b = random_matrix<double>(40, 2);
  fail_each(4, [&] {
    complex<double>* w = Form<double>::eig(40, a.a.data(), 0);
    const bool done = w != nullptr;
    EXPECT_TRUE(done || zent_error_code() == MATH_OUT_OF_MEMORY_1);
    zent_free_allocated_memory(w);
    return done;
  });
  fail_each(8, [&] {
    complex<double>* v = nullptr;
    complex<double>* w = Form<double>::eig(40, a.a.data(), ZENT_VECTORS, &v, 0);
    const bool done = w != nullptr;
    EXPECT_EQ(v != nullptr, done);
    EXPECT_TRUE(done || zent_error_code() == MATH_OUT_OF_MEMORY_1);
    zent_free_allocated_memory(w);
    zent_free_allocated_memory(v);
    return done;
  });
  fail_each(6, [&] {
    complex<double>* v = nullptr;
    vector<complex<double>> alpha(40);
    vector<double> beta(40);
    Form<double>::geneig(40, a.a.data(), b.a.data(), alpha.data(), beta.data(), ZENT_VECTORS, &v, 0);
    const bool done = v != nullptr;
    EXPECT_TRUE(done || zent_error_code() == MATH_OUT_OF_MEMORY_1);
    zent_free_allocated_memory(v);
    return done;
  });
}

TEST(GeneralAllocation, AnOrderBeyondAllMemory) {
  be_quiet();
  double a = 1;
  for (long n : {1L << 31, 1L << 62}) {
    EXPECT_EQ(zent_d_eig_gen(n, &a, 0), nullptr);
    EXPECT_NE(zent_error_code(), 0);
  }
}

}  // namespace
