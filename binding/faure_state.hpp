// A Faure sequence as a byte array in the host's hands: eight 64-bit words of head, then the record's arrays one after the other.
#pragma once

#include <cstring>

#include "binding/cmast.h"
#include "zents.h"

namespace zent::binding {

struct FaureHead {
  long mark;   // says that the bytes are a Faure sequence
  long size;   // of the whole array in bytes
  long check;  // over everything behind this word
  long skip, n_dimensions, n_digits, base;
  double scale;
};

inline constexpr long faure_mark = 0x3145525541465A4F;

inline long faure_words(long d, long n) {
  return n * d + n + n * n + 2 * n * d + n * n * d;
}

// A state that was changed on the way is found by its check.
inline long faure_check(const unsigned char* bytes, long size) {
  constexpr long head = 3 * sizeof(long);
  unsigned long sum = 14695981039346656037UL;
  for (long k = head; k < size; k += 8) {
    unsigned long word;
    std::memcpy(&word, bytes + k, sizeof word);
    sum = (sum ^ word) * 1099511628211UL;
  }
  return static_cast<long>(sum);
}

// The record's arrays inside the bytes, so that a step changes the state in place.
inline zents_faure faure_view(unsigned char* bytes) {
  const auto* head = reinterpret_cast<const FaureHead*>(bytes);
  long* words = reinterpret_cast<long*>(bytes + sizeof(FaureHead));
  const long d = head->n_dimensions, n = head->n_digits;
  zents_faure f = {head->skip, words, d, n, head->base, nullptr, nullptr, nullptr, head->scale, nullptr};
  f.counter = f.digits + n * d;
  f.binomial = f.counter + n;
  f.powers = f.binomial + n * n;
  f.increments = f.powers + 2 * n * d;
  return f;
}

inline bool faure_valid(const unsigned char* bytes, long size) {
  if (size < static_cast<long>(sizeof(FaureHead))) return false;
  const auto* head = reinterpret_cast<const FaureHead*>(bytes);
  const long d = head->n_dimensions, n = head->n_digits;
  if (head->mark != faure_mark || head->size != size || d < 1 || d > size || n < 1 || n > 31 || head->base < 2) return false;
  return size == static_cast<long>(sizeof(FaureHead) + sizeof(long) * faure_words(d, n)) &&
         head->check == faure_check(bytes, size);
}

}  // namespace zent::binding
