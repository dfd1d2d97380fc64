// The register kernels of the iteration beside their plain versions, and the iterations when they do not converge.
#include <gtest/gtest.h>

#include "math/eigen/gen_common.hpp"
#include "math/eigen/genvalues.hpp"
#include "tests/eigen/gen_matrices.hpp"

namespace {

using namespace general;

template <class Real>
class Chains : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Chains, Reals);

TYPED_TEST(Chains, AgreeWithPlainOnes) {
  using Real = TypeParam;
  std::mt19937 g(1);
  std::uniform_real_distribution<double> d(-1, 1);
  const auto number = [&] { return static_cast<Real>(d(g)); };
  for (long count : {1, 2, 3, 7, 8, 13, 14, 15, 31}) {
    for (long width : {0, 1, 3, 8, 15, 16, 17, 40, 83}) {
      for (bool pair : {false, true}) {
        const long lines = count + (pair ? 1 : 2), guard = 3;
        vector<zent::eigen::Step<Real>> steps(count);
        for (auto& s : steps) s = {number(), number(), pair && &s == &steps.back() ? 0 : number(), number(), number()};
        if (pair) steps.back().r = 0;
        vector<Real> a((width + guard) * (lines + guard));
        for (Real& x : a) x = number();
        vector<Real> b = a;
        const long tall = width + guard, flat = lines + guard;
        zent::eigen::chain_columns(count, pair, steps.data(), width, a.data(), tall);
        zent::eigen::chain_columns_plain(count, pair, steps.data(), width, b.data(), tall);
        double size = 1;
        for (Real x : b) size = std::max<double>(size, std::abs(x));
        for (unsigned long k = 0; k < a.size(); ++k) ASSERT_NEAR(a[k], b[k], 100 * eps<Real> * size) << count << " " << width;
        b = a;
        zent::eigen::chain_rows(count, pair, steps.data(), width, a.data(), flat);
        zent::eigen::chain_rows_plain(count, pair, steps.data(), width, b.data(), flat);
        for (Real x : b) size = std::max<double>(size, std::abs(x));
        for (unsigned long k = 0; k < a.size(); ++k) ASSERT_NEAR(a[k], b[k], 100 * eps<Real> * size) << count << " " << width;
      }
    }
  }
}

TYPED_TEST(Chains, RunsAreChainsOneAfterTheOther) {
  using Real = TypeParam;
  std::mt19937 g(2);
  std::uniform_real_distribution<double> d(-1, 1);
  for (long columns : {1, 7, 16, 33, 64, 70}) {
    const long rows = 21, lda = 25;
    vector<zent::eigen::Step<Real>> steps(40);
    for (auto& s : steps) s = {Real(d(g)), Real(d(g)), Real(d(g)), Real(d(g)), Real(d(g))};
    steps[19].r = steps[19].z = steps[39].r = steps[39].z = steps[10].r = steps[10].z = 0;
    const zent::eigen::Run<Real> run[] = {
        {0, 20, 0, 20, steps.data()}, {9, 11, 2, 20, steps.data()}, {3, 1, 3, 4, steps.data() + 39}};
    vector<Real> a(lda * columns), buffer(rows * zent::eigen::buffer_width);
    for (Real& x : a) x = Real(d(g));
    vector<Real> b = a;
    zent::eigen::runs_rows(3, run, rows, columns, a.data(), lda, buffer.data());
    for (const auto& r : run) zent::eigen::chain_rows_plain(r.count, true, r.steps, columns, b.data() + r.start, lda);
    double size = 1;
    for (Real x : b) size = std::max<double>(size, std::abs(x));
    for (unsigned long k = 0; k < a.size(); ++k) ASSERT_NEAR(a[k], b[k], 1000 * eps<Real> * size) << columns << " " << k;
  }
}

// The block of the first three rows never splits; the value below it was found before. Values alone end with a warning and what
// there is, vectors with an error.
TYPED_TEST(Chains, IterationsThatDoNotConverge) {
  using Real = TypeParam;
  using C = zent::eigen::ComplexOf<Real>;
  using zent::Math;
  be_quiet();
  const long n = 4;
  vector<Real> h(n * n, std::numeric_limits<Real>::quiet_NaN());
  for (long i = 0; i < n; ++i) h[i + 3 * n] = h[3 + i * n] = i == 3 ? 9 : 0;
  vector<Real> copy = h, wr(n), wi(n), z(n * n), y(n * n), buffer(n * zent::eigen::buffer_width);
  vector<zent::eigen::Step<Real>> steps(zent::eigen::Batch<Real>::step_room(n));
  bool done = true;
  zent::public_call<Math>("test", [&] { zent::eigen::l_e5lrg<Math>(n, n, copy.data(), wr.data(), wi.data()); });
  EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_GEN);
  EXPECT_EQ(zent_error_type(), 3);
  EXPECT_EQ(wr[3], 9);
  copy = h;
  zent::public_call<Math>("test", [&] {
    done = zent::eigen::l_e5crh<Math>(n, 0, n - 1, copy.data(), n, wr.data(), wi.data(), z.data(), n, y.data(), steps.data(),
                                      buffer.data());
  });
  EXPECT_FALSE(done);
  EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_GEN);
  EXPECT_EQ(zent_error_type(), 4);
  for (bool vectors : {false, true}) {
    vector<C> complex_h(n * n), w(n), q(n * n);
    for (long i = 0; i < n * n; ++i) complex_h[i] = {h[i], 0};
    zent::public_call<Math>("test", [&] {
      done = zent::eigen::l_e3cch<Math>(n, 0, n - 1, complex_h.data(), n, w.data(), vectors ? q.data() : nullptr, n);
    });
    EXPECT_FALSE(done);
    EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_GEN);
    EXPECT_EQ(zent_error_type(), vectors ? 4 : 3);
    EXPECT_EQ(w[3].re, 9);
  }
}

TEST(General, SizesOfTheWorkerForVectors) {
  be_quiet();
  const auto code = [](long n, long lda, long ldevec) {
    zent::public_call<zent::Math>("test", [&] { zent::eigen::check_sizes(n, lda, ldevec); });
    return zent_error_code();
  };
  EXPECT_EQ(code(0, 3, 3), MATH_MATRIX_ORDER_TOO_SMALL);
  EXPECT_EQ(code(3, 2, 3), MATH_LDA_VALUE_TOO_SMALL);
  EXPECT_EQ(code(3, 3, 2), MATH_LDEVEC_VALUE_TOO_SMALL);
  EXPECT_EQ(code(3, 3, 3), 0);
}

}  // namespace
