// Every allocation of the Fourier transforms fails once: error 201 and nothing lost, or the right answer; the input as it was,
// and the next call works.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

// Transforms keep what they prepared for a length until others come: after these, always the same number of blocks.
void push_out_what_is_kept() {
  std::vector<double> p(540);
  for (long n = 200; n < 270; ++n) {
    zent_z_fft_complex(n, reinterpret_cast<zent_d_complex*>(p.data()), ZENT_RETURN_USER, p.data(), 0);
  }
}

std::vector<double> values(long n) {
  std::vector<double> p(static_cast<std::size_t>(n));
  for (long k = 0; k < n; ++k) p[static_cast<std::size_t>(k)] = std::sin(static_cast<double>(k * k));
  return p;
}

struct Case {
  const char* name;
  long reals, n;
  std::function<double*(double*)> call;
};

zent_d_complex* z(double* p) {
  return reinterpret_cast<zent_d_complex*>(p);
}
double* r(zent_d_complex* p) {
  return reinterpret_cast<double*>(p);
}

TEST(TransformAllocation, AnErrorOrTheAnswerAndNothingLost) {
  be_quiet();
  const Case cases[] = {
      {"complex", 128, 64, [](double* p) { return r(zent_z_fft_complex(64, z(p), 0)); }},
      {"one large prime", 134, 67, [](double* p) { return r(zent_z_fft_complex(67, z(p), ZENT_BACKWARD, 0)); }},
      {"vectors beside a large prime", 2 * 8 * 131, 8 * 131, [](double* p) { return r(zent_z_fft_complex(8 * 131, z(p), 0)); }},
      {"two large primes", 2 * 67 * 71, 67 * 71, [](double* p) { return r(zent_z_fft_complex(67 * 71, z(p), 0)); }},
      {"real, even", 60, 60, [](double* p) { return zent_d_fft_real(60, p, 0); }},
      {"real, odd", 45, 45, [](double* p) { return zent_d_fft_real(45, p, ZENT_BACKWARD, 0); }},
      {"sine", 20, 20, [](double* p) { return zent_d_fft_sine(20, p, 0); }},
      {"cosine", 20, 20, [](double* p) { return zent_d_fft_cosine(20, p, 0); }},
      {"plane", 2 * 12 * 10, 12 * 10, [](double* p) { return r(zent_z_fft_2d_complex(12, 10, z(p), 0)); }},
      {"columns of a large prime", 2 * 67 * 4, 67 * 4, [](double* p) { return r(zent_z_fft_2d_complex(67, 4, z(p), 0)); }},
      {"complex table", 1, 30, [](double*) { return zent_z_fft_complex_init(30); }},
      {"real table", 1, 30, [](double*) { return zent_d_fft_real_init(30); }},
      {"sine table", 1, 30, [](double*) { return zent_d_fft_sine_init(30); }},
      {"cosine table", 1, 30, [](double*) { return zent_d_fft_cosine_init(30); }},
  };
  zent_d_fft_real(0, nullptr, 0);  // the catalogue's own memory comes with the first error
  zent_find_message(MATH_OUT_OF_MEMORY_1);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::vector<double> p = values(c.reals);
    std::vector<double> given = p;
    double* const plain = c.call(given.data());
    ASSERT_NE(plain, nullptr);
    const std::vector<double> expected(plain, plain + c.reals);
    zent_free_allocated_memory(plain);
    long failures = 0, k = 1;
    for (bool struck = true; struck; ++k) {
      ASSERT_LT(k, 100);
      push_out_what_is_kept();
      const long before = failing::live_blocks();
      failing::arm(k);
      double* const q = c.call(given.data());
      struck = failing::struck();
      failing::arm(0);
      EXPECT_EQ(given, p);
      if (q == nullptr) {
        ++failures;
        EXPECT_TRUE(struck);
        EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
        EXPECT_EQ(zent_error_type(), 5);
        double* const again = c.call(given.data());
        ASSERT_NE(again, nullptr) << k;
        EXPECT_EQ(std::vector<double>(again, again + c.reals), expected) << k;
        zent_free_allocated_memory(again);
      } else {
        EXPECT_EQ(std::vector<double>(q, q + c.reals), expected) << k;
        zent_free_allocated_memory(q);
      }
      push_out_what_is_kept();
      EXPECT_EQ(failing::live_blocks(), before) << k;
    }
    EXPECT_GE(failures, 2);
  }
}

}  // namespace
