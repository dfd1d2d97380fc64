// The generalized Faure sequence, one record for each sequence; the same code serves both halves.
#pragma once

#include <cmath>
#include <type_traits>

#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"
#include "zents.h"

namespace zent::faure {

// In which the halves differ: error numbers and option codes.
template <class Half>
struct Names;
template <>
struct Names<Math> {
  using Record = zent_faure;
  static constexpr int base = ZENT_BASE, skip = ZENT_SKIP, return_user = ZENT_RETURN_USER, return_skip = ZENT_RETURN_SKIP;
  static constexpr long bad_skip = MATH_SKIP_NEG, bad_base = MATH_BASE_NOT_PRIME;
};
template <>
struct Names<Stat> {
  using Record = zents_faure;
  static constexpr int base = ZENTS_BASE, skip = ZENTS_SKIP, return_user = ZENTS_RETURN_USER, return_skip = ZENTS_RETURN_SKIP;
  static constexpr long bad_skip = 11401, bad_base = 11402;
};

inline bool is_prime(long n) {
  if (n < 2) return false;
  if (n % 2 == 0) return n == 2;
  for (long divisor = 3; divisor <= n / divisor; divisor += 2) {
    if (n % divisor == 0) return false;
  }
  return true;
}

inline long next_prime(long n) {
  if (n <= 2) return 2;
  for (n |= 1; !is_prime(n); n += 2) {
  }
  return n;
}

// All tables hold residues modulo the base, but for the binomial coefficients, which stay below 2^30.
template <class Record>
void compute_parameters(Record& f, long* inverse) {
  const long d = f.n_dimensions, n = f.n_digits, base = f.base;
  // Inverses of the dimensions' numbers alone, by the recurrence inv[i] = -(base / i) inv[base mod i]: a base may be far greater.
  for (long i = 0; i < d; ++i) inverse[i] = i < 2 ? i : (base - base / i) * inverse[base % i] % base;
  for (long s = 0; s < d; ++s) {
    f.powers[n * d + s] = 1;
    f.powers[s] = 0;  // never used: row 0 only rounds up the count of rows
    for (long r = 1; r < n; ++r) {
      f.powers[(n + r) * d + s] = s * f.powers[(n + r - 1) * d + s] % base;
      f.powers[(n - r) * d + s] = inverse[s] * f.powers[(n - r + 1) * d + s] % base;
    }
  }
  for (long i = 0; i < n; ++i) {
    long* row = f.binomial + i * n;
    row[0] = 1;
    for (long j = 0; j + 1 < n; ++j) row[j + 1] = (i - j) * row[j] / (j + 1);
  }
  for (long k = 0; k < n; ++k) {
    for (long t = 0; t < n; ++t) {
      for (long s = 0; s < d; ++s) {
        f.increments[(k * n + t) * d + s] = f.powers[(n + k - t) * d + s] * (f.binomial[k * n + t] % base) % base;
      }
    }
  }
}

// One more in the counter. Where the carry stops says which column of the generator matrix is added to the digits.
template <class Record>
void l_next(Record& f) {
  long k = 0;
  while (k < f.n_digits && ++f.counter[k] == f.base) f.counter[k++] = 0;
  const long size = f.n_digits * f.n_dimensions;
  if (k == f.n_digits) {  // all points have been given: the sequence restarts
    for (long i = 0; i < size; ++i) f.digits[i] = 0;
    return;
  }
  const long* increment = f.increments + k * size;
  for (long i = 0; i < size; ++i) {
    const long digit = f.digits[i] + increment[i];
    f.digits[i] = digit - (digit >= f.base ? f.base : 0);
  }
}

// The state after `count` steps from the start: the carry has stopped count / base^k - count / base^(k+1) times at digit k.
template <class Record>
void l_skip(Record& f, long count) {
  const long size = f.n_digits * f.n_dimensions;
  count %= static_cast<long>(f.scale);
  for (long k = 0; k < f.n_digits; ++k) {
    const long higher = count / f.base, times = (count - higher) % f.base;
    f.counter[k] = count % f.base;
    for (long i = 0; i < size; ++i) f.digits[i] = (f.digits[i] + times * f.increments[k * size + i]) % f.base;
    count = higher;
  }
}

template <class Record, class Real>
void l_next_point(Record& f, Real* point) {
  l_next(f);
  for (long s = 0; s < f.n_dimensions; ++s) {
    long v = 0;
    for (long t = 0; t < f.n_digits; ++t) v = v * f.base + f.digits[s + t * f.n_dimensions];
    point[s] = static_cast<Real>(static_cast<double>(v) / f.scale);
  }
}

template <class Half>
void l_check(long n_dimensions, bool base_given, long base, bool skip_given, long skip) {
  if constexpr (std::is_same_v<Half, Math>) {
    if (n_dimensions < 1) raise<Half>(5, MATH_DIM_OF_HYPER_REC_0, {.i = {n_dimensions}});
  } else {
    long position = 0;
    zents_c1iarg(n_dimensions, "n_dimensions", 1, -1, &position);
  }
  if (failed<Half>()) return;
  if (base_given && (base < n_dimensions || !is_prime(base))) {
    raise<Half>(5, Names<Half>::bad_base, {.i = {base, n_dimensions}});
  } else if (skip_given && skip < 1) {
    raise<Half>(5, Names<Half>::bad_skip, {.i = {skip}});
  }
}

// The record with its arrays, zeroed; null when there is no memory or the sizes overflow.
template <class Half>
typename Names<Half>::Record* l_record(long d, long n) {
  using Record = typename Names<Half>::Record;
  long size = 0, table = 0;
  if (__builtin_mul_overflow(d, n, &size) || __builtin_mul_overflow(size, n, &table)) return nullptr;
  Record* f = result<Half, Record>(1);
  if (f == nullptr) return nullptr;
  *f = {0, result<Half, long>(size), d, n, 0, result<Half, long>(n), result<Half, long>(n * n), result<Half, long>(2 * size),
        0, result<Half, long>(table)};
  if (!f->digits || !f->counter || !f->binomial || !f->powers || !f->increments) return nullptr;
  for (long i = 0; i < size; ++i) f->digits[i] = 0;
  for (long i = 0; i < n; ++i) f->counter[i] = 0;
  return f;
}

template <class Half>
typename Names<Half>::Record* l_faure_sequence_init(long n_dimensions, Options& options) {
  bool base_given = false, skip_given = false;
  long base = 0, skip = 0;
  while (const int code = options.code()) {
    if (code == Names<Half>::base) {
      base = options.integer();
      base_given = true;
    } else if (code == Names<Half>::skip) {
      skip = options.integer();
      skip_given = true;
    } else {
      raise<Half>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
      if (code < 0) break;
    }
  }
  l_check<Half>(n_dimensions, base_given, base, skip_given, skip);
  if (failed<Half>()) return nullptr;
  // A base beyond 2^31 - 1 has no digit to give; the dimension that asks for it could not be allocated either.
  if (!base_given) base = n_dimensions > 2147483647 ? 0 : next_prime(n_dimensions);
  const long n = base == 0 ? 0 : static_cast<long>(std::log(2147483647.0) / std::log(static_cast<double>(base)));
  auto* f = n < 1 ? nullptr : l_record<Half>(n_dimensions, n);
  long* inverse = f == nullptr ? nullptr : scratch<Half, long>(n_dimensions);
  if (inverse == nullptr) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return nullptr;
  }
  f->base = base;
  f->scale = std::pow(static_cast<double>(base), static_cast<double>(n));
  compute_parameters(*f, inverse);
  f->skip = skip_given ? skip : static_cast<long>(std::pow(static_cast<double>(base), static_cast<double>(n / 2 - 1)));
  l_skip(*f, f->skip);
  for (void* array : {static_cast<void*>(f->digits), static_cast<void*>(f->counter), static_cast<void*>(f->binomial),
                      static_cast<void*>(f->powers), static_cast<void*>(f->increments), static_cast<void*>(f)}) {
    keep<Half>(array);
  }
  return f;
}

template <class Half, class Real>
Real* l_faure_next_point(typename Names<Half>::Record* state, Options& options) {
  Real* user = nullptr;
  long* skip = nullptr;
  while (const int code = options.code()) {
    if (code == Names<Half>::return_user) {
      user = options.pointer<Real>();
    } else if (code == Names<Half>::return_skip) {
      skip = options.pointer<long>();
    } else {
      raise<Half>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
      if (code < 0) break;
    }
  }
  if (state == nullptr) raise<Half>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"state"}});
  if (failed<Half>()) return nullptr;
  Real* point = user != nullptr ? user : result<Half, Real>(state->n_dimensions);
  if (point == nullptr) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return nullptr;
  }
  l_next_point(*state, point);
  if (skip != nullptr) *skip = state->skip;
  if (user == nullptr) keep<Half>(point);
  return point;
}

template <class Record>
void l_free(Record* f, void (*release)(void*)) {
  if (f == nullptr) return;
  for (long* array : {f->digits, f->counter, f->binomial, f->powers, f->increments}) release(array);
  release(f);
}

}  // namespace zent::faure

// The entries of a half.
#define ZENT_FAURE_FORM(Half, H, P, Real)                                                                               \
  extern "C" Real* H##_##P##_faure_next_point(H##_faure* state, ...) {                                                  \
    ZENT_OPTIONS(options, state, 1);                                                                                    \
    Real* point = zent::public_call<Half>(#H "_" #P "_faure_next_point",                                                \
                                          [&] { return zent::faure::l_faure_next_point<Half, Real>(state, options); }); \
    ZENT_OPTIONS_END(options);                                                                                          \
    return point;                                                                                                       \
  }
#define ZENT_FAURE_HALF(Half, H)                                                                                             \
  ZENT_FAURE_FORM(Half, H, f, float)                                                                                         \
  ZENT_FAURE_FORM(Half, H, d, double)                                                                                        \
  extern "C" H##_faure* H##_faure_sequence_init(long n_dimensions, ...) {                                                    \
    ZENT_OPTIONS(options, n_dimensions, 1);                                                                                  \
    H##_faure* f = zent::public_call<Half>(#H "_faure_sequence_init",                                                        \
                                           [&] { return zent::faure::l_faure_sequence_init<Half>(n_dimensions, options); }); \
    ZENT_OPTIONS_END(options);                                                                                               \
    return f;                                                                                                                \
  }                                                                                                                          \
  extern "C" void H##_faure_sequence_free(H##_faure* state) {                                                                \
    zent::faure::l_free(state, H##_free_allocated_memory);                                                                   \
  }
