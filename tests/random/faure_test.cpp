#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

TEST(Faure, DefaultsOfSmallDimensions) {
  be_quiet();
  const struct {
    long d, base, digits, skip;
  } cases[] = {{1, 2, 30, 1 << 14}, {2, 2, 30, 1 << 14}, {3, 3, 19, 6561}, {4, 5, 13, 3125}, {40, 41, 5, 41}};
  for (const auto& c : cases) {
    zents_faure* f = zents_faure_sequence_init(c.d, 0);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->base, c.base);
    EXPECT_EQ(f->n_digits, c.digits);
    EXPECT_EQ(f->skip, c.skip);
    EXPECT_EQ(f->scale, std::pow(static_cast<double>(c.base), static_cast<double>(c.digits)));
    zents_faure_sequence_free(f);
  }
}

// The first base^k points of every coordinate, counted from the sequence's start, fall one into each interval of length base^-k,
// and of two coordinates one into each elementary box; so do the following ones.
TEST(Faure, IsStratified) {
  be_quiet();
  for (long d = 1; d <= 40; ++d) {
    zent_faure* f = zent_faure_sequence_init(d, 0);
    ASSERT_NE(f, nullptr);
    const long base = f->base, n = base * base;
    std::fill_n(f->counter, f->n_digits, 0);  // back to the start, whose point is the origin
    std::fill_n(f->digits, f->n_digits * d, 0);
    std::vector<double> points(n * d, 0.0);
    for (long k = 1; k < n; ++k) ASSERT_NE(zent_d_faure_next_point(f, ZENT_RETURN_USER, &points[k * d], 0), nullptr);
    for (long s = 0; s < d; ++s) {
      std::vector<int> line(n), square(n);
      const long other = (s + 1) % d;
      for (long k = 0; k < n; ++k) {
        ++line[static_cast<long>(std::floor(points[k * d + s] * n + 1e-9))];
        const long i = static_cast<long>(points[k * d + s] * base + 1e-9),
                   j = static_cast<long>(points[k * d + other] * base + 1e-9);
        ++square[i * base + j];
      }
      EXPECT_EQ(*std::max_element(line.begin(), line.end()), 1) << d << " " << s;
      if (d > 1) {
        EXPECT_EQ(*std::max_element(square.begin(), square.end()), 1) << d << " " << s;
      }
    }
    zent_faure_sequence_free(f);
  }
}

// Star discrepancy in the square, estimated on a grid of boxes.
double discrepancy(const std::vector<double>& p, long n) {
  double worst = 0;
  for (int a = 1; a <= 32; ++a) {
    for (int b = 1; b <= 32; ++b) {
      long inside = 0;
      for (long k = 0; k < n; ++k) inside += p[2 * k] < a / 32.0 && p[2 * k + 1] < b / 32.0;
      worst = std::max(worst, std::fabs(static_cast<double>(inside) / n - a * b / 1024.0));
    }
  }
  return worst;
}

TEST(Faure, IsMoreEvenThanRandomPoints) {
  be_quiet();
  const long n = 5000;
  std::vector<double> even(2 * n), random(2 * n);
  zents_faure* f = zents_faure_sequence_init(2, 0);
  for (long k = 0; k < n; ++k) zents_d_faure_next_point(f, ZENTS_RETURN_USER, &even[2 * k], 0);
  zents_faure_sequence_free(f);
  zents_random_seed_set(12345);
  zents_drnun(2 * n, random.data());
  EXPECT_LT(discrepancy(even, n), 0.25 * discrepancy(random, n));
}

// Digit t after n steps from the definition: the sum over k of (how often the carry has stopped at k) C(k, t) s^(k - t).
TEST(Faure, AMillionPointsFollowTheDefinition) {
  be_quiet();
  const long d = 5, base = 5, n = 13;
  zents_faure* f = zents_faure_sequence_init(d, 0);
  long pascal[n][n] = {};
  for (long k = 0; k < n; ++k) {
    for (long t = 0; t <= k; ++t) pascal[k][t] = t == 0 ? 1 : (pascal[k - 1][t - 1] + pascal[k - 1][t]) % base;
  }
  double x[d];
  for (long step = 3125 + 1; step <= 1200000; ++step) {
    ASSERT_EQ(zents_d_faure_next_point(f, ZENTS_RETURN_USER, x, 0), x);
    if (step % 997 != 0 && step > 3140) continue;
    for (long s = 0; s < d; ++s) {
      double expected = 0, weight = 1;
      for (long t = 0; t < n; ++t) {
        long digit = 0, power = 1, count = step;
        for (long k = 0; k < t; ++k) count /= base;
        for (long k = t; k < n; ++k, count /= base, power = power * s % base)
          digit += (count - count / base) % base * pascal[k][t] * power;
        expected += static_cast<double>(digit % base) * (weight /= base);
      }
      ASSERT_NEAR(x[s], expected, 1e-15) << step << " " << s;
    }
  }
  zents_faure_sequence_free(f);
}

// A great base costs no more than its dimensions: nothing grows with the base alone.
TEST(Faure, TakesTheGreatestBases) {
  be_quiet();
  for (int base : {2147483647, 1000003}) {
    zents_faure* f = zents_faure_sequence_init(3, ZENTS_BASE, base, ZENTS_SKIP, 7, 0);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->powers[(f->n_digits - 1) * 3 + 2] * 2 % base, f->n_digits > 1 ? 1 : 0);  // a half of 1
    double x[3];
    for (int k = 8; k < 20; ++k) {
      ASSERT_EQ(zents_d_faure_next_point(f, ZENTS_RETURN_USER, x, 0), x);
      for (double v : x) EXPECT_NEAR(v, k / static_cast<double>(base), 1e-15);
    }
    zents_faure_sequence_free(f);
  }
}

// Skipping is the same as walking; and the sequence starts again when the counter has run through.
TEST(Faure, SkipsAndRestarts) {
  be_quiet();
  for (long d : {1L, 3L, 7L}) {
    zents_faure* walked = zents_faure_sequence_init(d, ZENTS_SKIP, 1, 0);
    int at = 1;
    float point[7];
    for (int skip = 2; skip < 4000; skip += 271) {
      zents_faure* jumped = zents_faure_sequence_init(d, ZENTS_SKIP, skip, 0);
      for (; at < skip; ++at) zents_f_faure_next_point(walked, ZENTS_RETURN_USER, point, 0);
      EXPECT_TRUE(std::equal(walked->counter, walked->counter + walked->n_digits, jumped->counter)) << d << " " << skip;
      EXPECT_TRUE(std::equal(walked->digits, walked->digits + walked->n_digits * d, jumped->digits)) << d << " " << skip;
      zents_faure_sequence_free(jumped);
    }
    zents_faure_sequence_free(walked);
  }
  zents_faure* last = zents_faure_sequence_init(1, ZENTS_BASE, 46337, ZENTS_SKIP, 46337 * 46337 - 1, 0);
  ASSERT_NE(last, nullptr);
  double x = 1;
  zents_d_faure_next_point(last, ZENTS_RETURN_USER, &x, 0);
  EXPECT_EQ(x, 0.0);
  zents_faure_sequence_free(last);
}

TEST(Faure, RefusesBadArguments) {
  be_quiet();
  EXPECT_EQ(zents_faure_sequence_init(3, ZENTS_BASE, 4, 0), nullptr);
  EXPECT_EQ(zents_error_code(), 11402);
  EXPECT_EQ(zents_faure_sequence_init(3, ZENTS_BASE, 2, 0), nullptr);
  EXPECT_EQ(zents_error_code(), 11402);
  EXPECT_EQ(zents_faure_sequence_init(3, ZENTS_SKIP, 0, 0), nullptr);
  EXPECT_EQ(zents_error_code(), 11401);
  EXPECT_EQ(zents_faure_sequence_init(0, 0), nullptr);
  EXPECT_EQ(zents_error_code(), STAT_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(zents_faure_sequence_init(0, ZENTS_BASE, 4, ZENTS_SKIP, 0, 0), nullptr);  // the first error stands
  EXPECT_EQ(zents_error_code(), STAT_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(zents_d_faure_next_point(nullptr, 0), nullptr);
  EXPECT_EQ(zents_error_code(), STAT_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(zents_faure_sequence_init(2, 5, 0), nullptr);
  EXPECT_EQ(zents_error_code(), STAT_ILLEGAL_OPT_ARG);
  EXPECT_EQ(zent_faure_sequence_init(3, ZENT_BASE, 9, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_BASE_NOT_PRIME);
  EXPECT_EQ(zent_faure_sequence_init(3, ZENT_SKIP, -1, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_SKIP_NEG);
  EXPECT_EQ(zent_faure_sequence_init(-2, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_DIM_OF_HYPER_REC_0);
  EXPECT_EQ(zent_faure_sequence_init(1L << 40, 0), nullptr);  // no base has a digit for it
  EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY);
  zents_faure* f = zents_faure_sequence_init(2, 0);
  EXPECT_EQ(zents_d_faure_next_point(f, 1, 0), nullptr);
  long skip = 0;
  double x[2];
  EXPECT_EQ(zents_d_faure_next_point(f, ZENTS_RETURN_USER, x, ZENTS_RETURN_SKIP, &skip, 0), x);
  EXPECT_EQ(skip, f->skip);
  zents_faure_sequence_free(f);
  zents_faure_sequence_free(nullptr);
}

}  // namespace
