// All position tables in one list, and the reference page made from it.
#include "binding/position_registry.hpp"

#include <cstdarg>
#include <cstdio>

#include "binding/routines.hpp"

namespace zent::binding {

namespace {

constexpr RegistryEntry entries[] = {
#define BUILT(number, label, least, most, half) {number, label, least, most, ErrorHalf::half, &routine_##number},
#define PENDING(number, label, least, most, half) {number, label, least, most, ErrorHalf::half, nullptr},
#include "binding/routines.def"
#undef BUILT
#undef PENDING
};

constexpr const char* kind_names[] = {"required", "optional", "output"};
constexpr const char* type_names[] = {"integer", "integer", "integer",   "real", "real or complex", "complex", "integer",
                                      "string",  "byte",    "structure", "any"};
static_assert(sizeof type_names / sizeof type_names[0] == static_cast<std::size_t>(Type::any) + 1, "one name for each type");
constexpr const char* half_names[] = {"none", "math", "stat", "by its own table"};

// Appends to a buffer that may be too small, and counts on.
struct Page {
  char* text;
  long size;
  long length;

  __attribute__((format(printf, 2, 3))) void add(const char* format, ...) {
    va_list values;
    va_start(values, format);
    const bool room = length < size;
    length += std::vsnprintf(room ? text + length : nullptr, room ? static_cast<std::size_t>(size - length) : 0, format, values);
    va_end(values);
  }
};

void add_positions(Page& page, const Routine& routine) {
  page.add("\n| position | argument | kind | type | option | meaning |\n|---|---|---|---|---|---|\n");
  bool open = false;
  for (int k = 0; k < routine.position_count; ++k) {
    const Position& position = routine.positions[k];
    page.add("| %d | `%s` | %s | %s | ", k, position.name, kind_names[static_cast<int>(position.kind)],
             type_names[static_cast<int>(position.type)]);
    if (position.option > 0) page.add("%d", position.option);
    if (position.option == continues && open) page.add("(further value)");
    open = position.option != 0;
    page.add(" | %s |\n", position.meaning);
  }
}

}  // namespace

std::span<const RegistryEntry> position_registry() {
  return entries;
}

}  // namespace zent::binding

extern "C" long cmast_routines_page(char* text, long size) {
  using namespace zent::binding;
  Page page{text, text == nullptr ? 0 : size, 0};
  page.add("# Routines of the module\n\nGenerated from the position tables of the binding; do not edit.\n");
  for (const RegistryEntry& entry : entries) {
    page.add("\n## MATHSTAT_%d\n\n", entry.number);
    if (entry.routine == nullptr) {
      page.add("Not available yet.\n");
      continue;
    }
    page.add("Label: %s. Error state: %s.\n", entry.routine->label, half_names[static_cast<int>(entry.half)]);
    add_positions(page, *entry.routine);
  }
  return page.length;
}
