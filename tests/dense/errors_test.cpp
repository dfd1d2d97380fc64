// Every refusal by number, with A and the caller's outputs untouched; the support routines' own.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "tests/dense/forms.hpp"

namespace {

double a[4], b[2], x[2], factor[4], inverse[4], condition;
long pvt[2];
double* const none = nullptr;

enum Function { gen, pd, nn };
template <class... Arguments>
double* call(Function function, long n, double* matrix, double* right, Arguments... arguments) {
  const auto target = function == gen ? zent_d_lin_sol_gen : function == pd ? zent_d_lin_sol_posdef : zent_d_lin_sol_nonnegdef;
  return target(n, matrix, right, arguments...);
}

struct Case {
  const char* what;
  long number[3];  // gen, pd, nn; -1: not of this function
  std::function<double*(Function)> run;
};

const Case cases[] = {
    {"unknown option", {103, 103, 11001}, [](Function f) { return call(f, 2, a, b, 9999, 0); }},
    {"negative option", {103, 103, 11001}, [](Function f) { return call(f, 2, a, b, -1, ZENT_CONDITION); }},
    {"null x", {104, 104, 104}, [](Function f) { return call(f, 2, a, b, ZENT_RETURN_USER, none, 0); }},
    {"null inverse", {104, 104, 104}, [](Function f) { return call(f, 2, a, b, ZENT_INVERSE_USER, none, 0); }},
    {"null condition", {104, 104, -1}, [](Function f) { return call(f, 2, a, b, ZENT_CONDITION, none, 0); }},
    {"null factor", {-1, 104, 104}, [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_USER, none, 0); }},
    {"null factor of gen", {105, -1, -1}, [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_USER, pvt, none, 0); }},
    {"null pivots", {104, -1, -1}, [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_USER, none, factor, 0); }},
    {"transpose", {-1, 103, 11001}, [](Function f) { return call(f, 2, a, b, ZENT_TRANSPOSE, 0); }},
    {"tolerance", {103, 103, -1}, [](Function f) { return call(f, 2, a, b, ZENT_TOLERANCE_ADR, 0); }},
    {"condition of nn", {-1, -1, 11001}, [](Function f) { return call(f, 2, a, b, ZENT_CONDITION, &condition, 0); }},
    {"null a", {150, 6002, 150}, [](Function f) { return call(f, 2, none, b, 0); }},
    {"null b", {150, 6002, 150}, [](Function f) { return call(f, 2, a, none, 0); }},
    {"n 0", {1010, 1010, 1010}, [](Function f) { return call(f, 0, a, b, 0); }},
    {"n -3", {1010, 1010, 1010}, [](Function f) { return call(f, -3, a, b, 0); }},
    {"a_col_dim", {1014, 1014, 601}, [](Function f) { return call(f, 2, a, b, ZENT_A_COL_DIM, 1, 0); }},
    {"fac_col_dim", {1014, 1014, 1062}, [](Function f) { return call(f, 2, a, b, ZENT_FAC_COL_DIM, 1, 0); }},
    {"inv_col_dim",
     {1014, 1014, 1062},
     [](Function f) { return call(f, 2, a, b, ZENT_INV_COL_DIM, 1, ZENT_INVERSE_USER, inverse, 0); }},
    {"two onlys",
     {1091, 1091, 1091},
     [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_ONLY, ZENT_INVERSE_ONLY, ZENT_INVERSE_USER, inverse, 0); }},
    {"solve without factor", {1027, 1027, 1027}, [](Function f) { return call(f, 2, a, b, ZENT_SOLVE_ONLY, 0); }},
    {"solve with condition",
     {1038, -1, -1},
     [](Function f) { return call(f, 2, a, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pvt, factor, ZENT_CONDITION, &condition, 0); }},
    {"solve with condition, pd",
     {-1, 1038, -1},
     [](Function f) { return call(f, 2, a, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor, ZENT_CONDITION, &condition, 0); }},
    {"inverse nowhere", {1039, 0, 1039}, [](Function f) { return call(f, 2, a, b, ZENT_INVERSE_ONLY, 0); }},
    {"factor nowhere", {1040, 0, 1040}, [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_ONLY, 0); }},
    {"inverse without a",
     {150, -1, -1},
     [](Function f) {
       return call(f, 2, none, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pvt, factor, ZENT_INVERSE_USER, inverse, 0);
     }},
    {"inverse without a, pd",
     {-1, 6002, -1},
     [](Function f) { return call(f, 2, none, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor, ZENT_INVERSE_USER, inverse, 0); }},
    {"solve and inverse",
     {-1, -1, 1092},
     [](Function f) { return call(f, 2, a, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor, ZENT_INVERSE_USER, inverse, 0); }},
    {"factor and inverse",
     {-1, -1, 1093},
     [](Function f) { return call(f, 2, a, b, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, factor, ZENT_INVERSE_USER, inverse, 0); }},
    {"inverse and factor",
     {-1, -1, 1094},
     [](Function f) { return call(f, 2, a, b, ZENT_INVERSE_ONLY, ZENT_FACTOR_USER, factor, ZENT_INVERSE_USER, inverse, 0); }},
    {"singular",
     {1004, 1018, 1051},
     [](Function f) {
       for (double& element : a) element = 1;
       return call(f, 2, a, b, ZENT_RETURN_USER, x, 0);
     }},
    {"zero factor",
     {1004, -1, -1},
     [](Function f) { return call(f, 2, none, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pvt, factor, 0); }},
    {"zero factor, pd",
     {-1, 1009, -1},
     [](Function f) { return call(f, 2, none, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor, 0); }},
    {"no memory", {1010, 1010, 1010}, [](Function f) { return call(f, -5, a, b, ZENT_A_COL_DIM, 9, 0); }},
};

TEST(Refusals, ByNumber) {
  be_quiet();
  for (const Case& each : cases) {
    for (Function function : {gen, pd, nn}) {
      if (each.number[function] < 0) continue;
      a[0] = a[3] = 2, a[1] = a[2] = 1;
      b[0] = 1, b[1] = 2;
      pvt[0] = 1, pvt[1] = 2;
      std::memset(factor, 0, sizeof factor);
      std::memset(inverse, 0, sizeof inverse);
      condition = -1;
      double* result = each.run(function);
      EXPECT_EQ(error_number(), each.number[function]) << each.what << " of " << function;
      EXPECT_TRUE(error_type() <= 3 || result == nullptr) << each.what;
      EXPECT_EQ(condition, -1) << each.what;
      EXPECT_TRUE(a[0] == a[3] && a[1] == 1 && a[2] == 1) << each.what;
    }
  }
}

// Orders whose arrays no machine holds.
TEST(Refusals, Memory) {
  be_quiet();
  double* out = nullptr;
  const int huge = 2147483647;
  // A machine may have room for a factor of one row as wide as this.
  double* x = zent_d_lin_sol_gen(1, a, b, ZENT_FAC_COL_DIM, huge, 0);
  EXPECT_EQ(x == nullptr, error_number() == 201);
  zent_free_allocated_memory(x);
  const long n = 1L << 62;
  EXPECT_EQ(zent_d_lin_sol_gen(n, a, nullptr, ZENT_A_COL_DIM, huge, ZENT_INVERSE_ONLY, ZENT_INVERSE, &out, 0), nullptr);
  EXPECT_EQ(error_number(), 1014);
}

TEST(Refusals, OfTheSupportRoutines) {
  be_quiet();
  double m[] = {1, 1, 1, 1}, fac[4], scale[2], work[2], rcond = -1, right[2] = {1, 1};
  const auto number = [](auto run) {
    zent_e1psh("probe");
    run();
    const long code = zent_n1rcd(1);
    zent_e1pop("probe");
    return code;
  };
  EXPECT_EQ(number([&] { zent_dl2trg(0, m, 2, fac, 2, pvt, scale); }), 1010);
  EXPECT_EQ(number([&] { zent_dl2trg(2, m, 1, fac, 2, pvt, scale); }), 1011);
  EXPECT_EQ(number([&] { zent_dl2trg(2, m, 2, fac, 1, pvt, scale); }), 1012);
  EXPECT_EQ(number([&] { zent_dl2trg(2, m, 2, fac, 2, pvt, scale); }), 1004);
  EXPECT_EQ(number([&] { zent_dl2crg(2, m, 2, fac, 2, pvt, &rcond, work); }), 1004);
  EXPECT_EQ(rcond, 0);
  const double good[] = {2, 1, 1, 2};
  EXPECT_EQ(number([&] { zent_dl2crg(2, good, 2, fac, 2, pvt, &rcond, work); }), 0);
  EXPECT_EQ(rcond, 1.0 / 3);  // norms 3 and 1
  EXPECT_EQ(number([&] { zent_dlfsrg(2, fac, 2, pvt, right, 3, work); }), 1033);
  EXPECT_EQ(number([&] { zent_dlfsrg(2, fac, 2, pvt, right, 1, work); }), 0);
  EXPECT_DOUBLE_EQ(work[0] + work[1], 2.0 / 3);
  EXPECT_EQ(number([&] { zent_dlftds(2, m, 2, fac, 2); }), 1018);
  EXPECT_EQ(number([&] { zent_dlftds(2, m, 1, fac, 2); }), 1011);
  EXPECT_EQ(number([&] { zent_dlslrt(0, m, 2, right, 1, work); }), 1001);
  EXPECT_EQ(number([&] { zent_dlslrt(2, m, 1, right, 1, work); }), 1011);
  EXPECT_EQ(number([&] { zent_dlslrt(2, m, 2, right, 0, work); }), 1034);
  const double triangle[] = {2, 4, 3, 0};
  EXPECT_EQ(number([&] { zent_dlslrt(2, triangle, 2, right, 1, work); }), 1009);
  const double t[] = {2, 4, 3, 5};  // rows (2, 3), (4, 5)
  const double expected[4][2] = {{0.5, -0.2}, {0.2, 0.2}, {0.1, 0.2}, {0.5, -0.1}};
  for (long path = 1; path <= 4; ++path) {
    EXPECT_EQ(number([&] { zent_dlslrt(2, t, 2, right, path, work); }), 0);
    EXPECT_NEAR(work[0], expected[path - 1][0], 1e-15) << path;
    EXPECT_NEAR(work[1], expected[path - 1][1], 1e-15) << path;
  }
}

}  // namespace
