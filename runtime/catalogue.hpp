// Reader of the message catalogue: texts and names of error numbers in one binary file for each half.
#pragma once

#include "runtime/half.hpp"

namespace zent {

inline constexpr long fallback_bytes = 96;  // holds the longest notice with a number of 20 characters
inline constexpr long name_bytes = 32;  // the longest error name has 31 characters

// What the error state keeps of the catalogue: the last record read and where to look for the file.
struct CatalogueView {
  char* path;             // search path, or null for the environment's
  const char* file;       // file name
  char fallback[fallback_bytes];
  char name[name_bytes];
  const char* reason;
  long index;             // of the cached record, -1 without one
  char* record;           // allocated at the first read
  long record_capacity;
  long number;            // cached error number, -1 without one
};

template <class Half>
const char* find_message(long number);
template <class Half>
const char* find_name(long number);

}  // namespace zent
