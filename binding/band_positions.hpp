// What the wrappers of the band solvers, the norms and the products share.
#pragma once

#include <cstring>

#include "binding/dense_positions.hpp"

namespace zent::binding {

inline constexpr Position type_position = {"PRECISION", Kind::required, Type::precision,
                                           "type code of the elements: 4, 5, 6 or 9"};

// rows * n, or 0 where the library refuses the sizes before it looks at an array.
inline long band_area(long n, long lower, long upper, long further_rows = 0) {
  if (n < 1 || lower < 0 || lower >= n || upper < 0 || upper >= n) return 0;
  long rows = 0, elements = 0;
  const bool too_many = __builtin_add_overflow(lower + 1, upper, &rows) || __builtin_add_overflow(rows, further_rows, &rows) ||
                        __builtin_mul_overflow(rows, n, &elements);
  return too_many ? 0x7fffffffffffffff : elements;
}

// Options carry 32-bit integers: a greater one must not come out as another number.
inline bool fits_option(const Arguments& arguments, int k) {
  if (!arguments.present[k] || arguments.integer(k) == static_cast<int>(arguments.integer(k))) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s does not fit in 32 bits", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

// A product of two matrices has a size of its own, and the caller's result is as long as a vector. What is no product at all is
// left to the library.
inline bool multiplies_vector(const Arguments& arguments, int operation) {
  const char* const text = arguments.text(operation);
  if (std::strchr(text, '*') == nullptr || std::strpbrk(text, "xX") != nullptr) return true;
  static char message[160];
  std::snprintf(message, sizeof message, "%s: argument %s must be the product of a matrix and x", arguments.routine->label,
                arguments.routine->positions[operation].name);
  return refuse(message);
}

// An array of sparse elements lies in memory as the library has it: row, column, value.
inline bool is_coordinate(const Arguments& arguments, int k) {
  if (!arguments.present[k]) return true;
  constexpr const char* tags[] = {"ROW", "COL", "VAL"};
  const char* const base = arguments.array<char>(k);
  bool fits = true;
  for (int t = 0; t < 3; ++t) {
    const void* address = ORV_StructGetTagAddress(arguments.variable[k], tags[t], 0, 1, nullptr);
    fits = fits && address == base + 8 * t;
  }
  if (fits) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s must be an array of structures with the tags ROW, COL and VAL",
                arguments.routine->label, arguments.routine->positions[k].name);
  return refuse(text);
}

// Calls a norm of the right precision, clears the error state of that half and stores the norm.
template <class Single, class Double>
void store_norm(const Arguments& arguments, const Words& words, Single* single, Double* real, int result, long is_math) {
  long code;
  if (arguments.is_double()) {
    const double norm = words.call<double>(reinterpret_cast<void*>(real));
    if (cmast_opi_clear_errors(is_math, &code, arguments.status, 1) == 0) arguments.store(result, ORV_TYP_DOUBLE, norm);
  } else {
    const float norm = words.call<float>(reinterpret_cast<void*>(single));
    if (cmast_opi_clear_errors(is_math, &code, arguments.status, 1) == 0) arguments.store(result, ORV_TYP_FLOAT, norm);
  }
}

}  // namespace zent::binding
