// The routine table.
#include <cstdio>

#include "binding/routines.hpp"

namespace {

using namespace zent::binding;

struct Row {
  int number;
  const char* label;
  int least, most;
};

constexpr Row rows[] = {
#define BUILT(number, label, least, most, half) {number, label, least, most},
#define PENDING BUILT
#include "binding/routines.def"
#undef BUILT
#undef PENDING
};
constexpr int row_count = sizeof rows / sizeof rows[0];

constexpr bool ascending() {
  for (int k = 1; k < row_count; ++k) {
    if (rows[k].number <= rows[k - 1].number) return false;
  }
  return true;
}
constexpr bool fixed_counts_but_one() {
  for (const Row& row : rows) {
    const bool one = row.number == 135;
    if (one ? row.least != 7 || row.most != 9 : row.least != row.most) return false;
    if (row.most > most_positions) return false;
  }
  return true;
}
static_assert(row_count == 149 && ascending() && fixed_counts_but_one());

// A routine whose library function does not exist yet.
template <int number>
long not_available(int, ORV_VARIABLE**, char*) {
  const char* label = "";
  for (const Row& row : rows) {
    if (row.number == number) label = row.label;
  }
  char text[64];
  std::snprintf(text, sizeof text, "%s is not available", label);
  raise_error(text);
  return 0;
}

constexpr ORV_SYSRTN table[] = {
#define BUILT(number, label, least, most, half) {mathstat_##number, "MATHSTAT_" #number, least, most, 0, nullptr},
#define PENDING(number, label, least, most, half) {not_available<number>, "MATHSTAT_" #number, least, most, 0, nullptr},
#include "binding/routines.def"
#undef BUILT
#undef PENDING
};

}  // namespace

extern "C" int _ORV_orv_zent_rtn_init(void) {
  return ORV_SysRtnAdd(table, 0, row_count);
}
