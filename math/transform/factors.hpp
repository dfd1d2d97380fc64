// Factorization of a length, and the layout of the tables that the transforms share.
#pragma once

namespace zent::transform {

// Enough for every length that a long can hold.
inline constexpr int most_factors = 64;

struct Factors {
  int count;
  long factor[most_factors];
};

// Divides by the four given divisors, then by 7, 9, 11, ..., each as often as it goes. A 2 that is not the first factor goes to
// the front.
inline Factors factorize(long n, const int (&first_divisors)[4]) {
  Factors f = {};
  long divisor = 0, left = n;
  for (int attempt = 0; left > 1; ++attempt) {
    divisor = attempt < 4 ? first_divisors[attempt] : divisor + 2;
    if (attempt == 4) divisor = 7;
    if (divisor > 5 && divisor > left / divisor) divisor = left;  // nothing smaller is left to find
    while (left % divisor == 0) {
      left /= divisor;
      f.factor[f.count++] = divisor;
      if (divisor != 2 || f.count == 1) continue;
      for (int k = f.count - 1; k > 0; --k) f.factor[k] = f.factor[k - 1];
      f.factor[0] = 2;
    }
  }
  return f;
}

inline Factors complex_factors(long n) {
  return factorize(n, {3, 4, 2, 5});
}
inline Factors real_factors(long n) {
  return factorize(n, {4, 2, 3, 5});
}

// Where things stand in a table made for length n. A table keeps at most this many factors; the transforms factor n afresh.
inline constexpr int kept_factors = 13;
inline constexpr long longest_table = 1L << 58;  // beyond, no memory could hold one: the length is then -1, as below 0
inline constexpr bool has_table(long n) {
  return n >= 0 && n <= longest_table;
}
inline constexpr long complex_table_length(long n) {
  return has_table(n) ? 4 * n + 15 : -1;
}
inline constexpr long real_table_length(long n) {
  return has_table(n) ? 2 * n + 15 : -1;
}
inline constexpr long sine_table_length(long n) {
  return has_table(n) ? (5 * n + 30) / 2 : -1;
}
inline constexpr long cosine_table_length(long n) {
  return has_table(n) ? 3 * n + 15 : -1;
}

}  // namespace zent::transform
