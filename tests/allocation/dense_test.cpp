// The dense solvers with the first, second, ... allocation failing: the documented error, nothing lost, A and outputs as they
// were.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

struct Case {
  const char* name;
  std::vector<long> numbers;                       // errors that a failure may end in; 0: a slower way to the same result
  std::function<double*(double**, double**)> run;  // may store further results of the library
};

double a[9] = {4, 1, 2, 1, 5, 3, 2, 3, 6}, b[3] = {1, 2, 3};
long* rows = nullptr;

const Case cases[] = {
    {"gen", {0, 201}, [](double**, double**) { return zent_d_lin_sol_gen(3, a, b, 0); }},
    {"gen_all",
     {0, 201},
     [](double** factor, double** inverse) {
       return zent_d_lin_sol_gen(3, a, b, ZENT_FACTOR, &rows, factor, ZENT_INVERSE, inverse, 0);
     }},
    {"gen_inverse",
     {0, 201},
     [](double**, double** inverse) { return zent_d_lin_sol_gen(3, a, nullptr, ZENT_INVERSE_ONLY, ZENT_INVERSE, inverse, 0); }},
    // 0 with null: without the estimate's work vector the call ends without a word
    {"posdef", {0, 1035, 1036}, [](double**, double**) { return zent_d_lin_sol_posdef(3, a, b, 0); }},
    {"posdef_all",
     {0, 201, 1035, 1036},
     [](double** factor, double** inverse) {
       return zent_d_lin_sol_posdef(3, a, b, ZENT_FACTOR, factor, ZENT_INVERSE, inverse, 0);
     }},
    {"nonnegdef", {1047}, [](double**, double**) { return zent_d_lin_sol_nonnegdef(3, a, b, 0); }},
    {"nonnegdef_all",
     {1047},
     [](double** factor, double** inverse) {
       return zent_d_lin_sol_nonnegdef(3, a, b, ZENT_FACTOR, factor, ZENT_INVERSE, inverse, 0);
     }},
};

TEST(Dense, EveryAllocationFailsInTurn) {
  be_quiet();
  for (long number : {201, 1035, 1036, 1047}) zent_find_message(number);
  double kept[9];
  std::memcpy(kept, a, sizeof a);
  for (const Case& each : cases) {
    for (long k = 1;; ++k) {
      ASSERT_LT(k, 30) << each.name;
      double *factor = nullptr, *inverse = nullptr;
      rows = nullptr;
      const long before = failing::live_blocks();
      failing::arm(k);
      double* x = each.run(&factor, &inverse);
      const bool struck = failing::struck();
      failing::arm(0);
      const long number = zent_error_code();
      EXPECT_EQ(std::memcmp(a, kept, sizeof a), 0);
      EXPECT_TRUE(struck || number == 0) << each.name;
      bool known = !struck;
      for (long one : each.numbers) known = known || one == number;
      EXPECT_TRUE(known) << each.name << " allocation " << k << " error " << number;
      EXPECT_TRUE(number == 0 || (x == nullptr && factor == nullptr && inverse == nullptr && rows == nullptr)) << each.name;
      for (double* p : {x, factor, inverse}) zent_free_allocated_memory(p);
      zent_free_allocated_memory(rows);
      EXPECT_EQ(failing::live_blocks(), before) << each.name << " allocation " << k;
      if (!struck) break;
    }
  }
}

// A factor in the place of A, in wider rows: A stays as it was until there is memory for the factorization.
TEST(Dense, NoMemoryForAFactorInPlace) {
  be_quiet();
  using Solver = double* (*)(long, double*, double*, ...);
  for (const Solver solver : {zent_d_lin_sol_gen, zent_d_lin_sol_posdef}) {
    double place[15] = {4, 1, 2, 1, 5, 3, 2, 3, 6}, kept[15];
    long pvt[3];
    std::memcpy(kept, place, sizeof place);
    failing::arm(1);
    if (solver == zent_d_lin_sol_gen) {
      EXPECT_EQ(solver(3, place, b, ZENT_A_COL_DIM, 3, ZENT_FACTOR_USER, pvt, place, ZENT_FAC_COL_DIM, 5, 0), nullptr);
    } else {
      EXPECT_EQ(solver(3, place, b, ZENT_A_COL_DIM, 3, ZENT_FACTOR_USER, place, ZENT_FAC_COL_DIM, 5, 0), nullptr);
    }
    EXPECT_TRUE(failing::struck());
    failing::arm(0);
    EXPECT_EQ(std::memcmp(place, kept, sizeof place), 0);
  }
}

}  // namespace
