// Prime numbers: the least prime that is not below n, and the test whether n is prime.
#include <cstdio>

#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum { number, selector, result, unused, position_count };

constexpr Position positions[] = {
    {"N", Kind::required, Type::any, "a whole number"},
    {"SELECTOR", Kind::optional, Type::any, "0 or undefined: least prime not below N; else: 1 if N is prime, 0 if it is not"},
    {"RESULT", Kind::output, Type::any,
     "64-bit integer scalar. The least prime not below a number under 2 is 2; none is below 2"},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

constexpr long largest_prime = 9223372036854775783;  // 2^63 - 25: no later 63-bit number is prime

using Word = unsigned long;

Word multiply(Word a, Word b, Word modulus) {
  return static_cast<Word>(static_cast<unsigned __int128>(a) * b % modulus);
}

Word power(Word base, Word exponent, Word modulus) {
  Word value = 1;
  for (base %= modulus; exponent != 0; exponent >>= 1) {
    if (exponent & 1) value = multiply(value, base, modulus);
    base = multiply(base, base, modulus);
  }
  return value;
}

// Miller-Rabin. No composite below 3.3e24 passes for all of the first 13 primes as bases (Sorenson and Webster 2015), and no
// 64-bit one for the first 12, so the answer is certain.
bool passes(Word n, Word base, Word odd, int twos) {
  Word x = power(base, odd, n);
  if (x == 1 || x == n - 1) return true;
  for (int k = 1; k < twos; ++k) {
    x = multiply(x, x, n);
    if (x == n - 1) return true;
  }
  return false;
}

bool is_prime(long value) {
  if (value < 2) return false;
  const auto n = static_cast<Word>(value);
  constexpr Word bases[] = {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37};
  for (const Word p : bases) {
    if (n % p == 0) return n == p;
  }
  const int twos = __builtin_ctzl(n - 1);
  for (const Word p : bases) {
    if (!passes(n, p, (n - 1) >> twos, twos)) return false;
  }
  return true;
}

long next_prime(long n) {
  if (n <= 2) return 2;
  long candidate = n | 1;
  while (!is_prime(candidate)) candidate += 2;
  return candidate;
}

}  // namespace

const Routine routine_313 = {313, "MATHSTAT_313", false, position_count, positions};

// Nothing of the library is called, so there is no label and no error state.
long mathstat_313(int, ORV_VARIABLE** argv, char*) {
  if (argv[number]->type == ORV_TYP_UNDEF) {
    ORV_MessageVE_UNDEFVAR(argv[number], ORV_MSG_RAISE);
    return 0;
  }
  const long n = ORV_MEMINTScalar(argv[number]);
  const long test = argv[selector]->type == ORV_TYP_UNDEF ? 0 : ORV_MEMINTScalar(argv[selector]);
  if (test == 0 && n > largest_prime) {
    char text[96];
    std::snprintf(text, sizeof text, "No 64-bit prime is as large as %ld", n);
    raise_error(text);
    return 0;
  }
  const long value = test == 0 ? next_prime(n) : is_prime(n);
  ORV_StoreScalar(argv[result], ORV_TYP_INT64, &value);
  return 0;
}

}  // namespace zent::binding

extern "C" long nextPrime(long n) {
  return n > zent::binding::largest_prime ? 0 : zent::binding::next_prime(n);
}

extern "C" long isPrime(long n) {
  return zent::binding::is_prime(n);
}
