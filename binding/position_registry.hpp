// Every routine with its positions, for the reference page and for tests that walk all of them.
#pragma once

#include <span>

#include "binding/positions.hpp"

namespace zent::binding {

struct RegistryEntry {
  int number;
  const char* label;
  int least_positions, most_positions;
  ErrorHalf half;          // whose error state is read on the way out
  const Routine* routine;  // null while the routine is not available
};

// All 149 in the order of the routine table.
std::span<const RegistryEntry> position_registry();

}  // namespace zent::binding

/* The reference page as Markdown, a section for each routine. Returns its length in bytes without the terminator; writes at most
   size bytes, terminated, so a call with size 0 measures. Exported. */
extern "C" ZENT_API long cmast_routines_page(char* page, long size);
