// Parts of the error stack that only the runtime itself and its exported names use.
#pragma once

#include <cstdarg>

#include "runtime/error.hpp"

namespace zent {

// Value k of the next message; other k than 1 to 9 are ignored.
template <class Half>
void store_integer(long k, long value) {
  if (k >= 1 && k < value_count) error_state<Half>.i[k] = value;
}
template <class Half>
void store_real(long k, double value) {
  if (k >= 1 && k < value_count) error_state<Half>.r[k] = value;
}
template <class Half>
void store_complex(long k, zent_d_complex value) {
  if (k >= 1 && k < value_count) error_state<Half>.c[k] = value;
}
template <class Half>
void store_text(long k, const char* text) {
  if (k < 0 && k > -value_count) k = -k;
  if (k >= 1 && k < value_count) error_state<Half>.l[k] = text;
}

// Hands the message in the buffer to the checksum hook and, if asked, to the print procedure.
template <class Half>
void announce(const char* routine, long type, long number, bool print);

// Type and number of level 0 or 1; another level ends the process.
template <class Half>
long error_type_word(long level);
template <class Half>
long error_number_word(long level);

// The public ways to the settings; see the public header.
template <class Half>
void error_options(const char* name, int code, va_list list);
template <class Half>
void error_flags(const char* name, long type, long* print, long* stop);

}  // namespace zent
