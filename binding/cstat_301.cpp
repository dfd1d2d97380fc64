// RANDOM_TABLE: the shuffle table of a precision, and the table of the shift register.
#include <cstdio>

#include "binding/routines.hpp"
#include "zents.h"

namespace zent::binding {

namespace {

enum { get_table = 2, set_table, get_gfsr, set_gfsr, unused, position_count };
constexpr long shuffle_values = 128, register_values = 1565;

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"GET_TABLE", Kind::optional, Type::real, "array of 128 values that receives the shuffle table"},
    {"SET_TABLE", Kind::optional, Type::real, "128 values strictly between 0 and 1; a first value of 0 has the table rebuilt"},
    {"GET_GFSR", Kind::optional, Type::integer,
     "array of 1565 values that receives the table of generator 7 and its two indices"},
    {"SET_GFSR", Kind::optional, Type::integer, "1565 positive values; a first value of 0 has the table rebuilt"},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

bool has_length(const Arguments& a, int k, long length) {
  if (!a.present[k] || a.count[k] == length) return true;
  char text[96];
  std::snprintf(text, sizeof text, "RANDOM_TABLE: argument %s must have %ld elements, not %ld", positions[k].name, length,
                a.count[k]);
  return refuse(text);
}

template <class Real>
void work(const Arguments& a, void (*get)(Real**, ...), void (*set)(Real*)) {
  Real* table = nullptr;
  long* words = nullptr;
  if (a.present[get_table]) get(&table, ZENTS_RETURN_USER, a.array<Real>(get_table), 0);
  if (zents_n1rty(1) <= 3 && a.present[set_table]) set(a.array<Real>(set_table));
  if (zents_n1rty(1) <= 3 && a.present[get_gfsr])
    zents_random_GFSR_table_get(&words, ZENTS_RETURN_USER, a.array<long>(get_gfsr), 0);
  if (zents_n1rty(1) <= 3 && a.present[set_gfsr]) zents_random_GFSR_table_set(a.array<long>(set_gfsr));
}

}  // namespace

const Routine routine_301 = {301, "RANDOM_TABLE", true, position_count, positions};

long mathstat_301(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("RANDOM_TABLE");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_301, argc, argv, arguments)) return 0;
  for (int k : {get_table, set_table}) {
    if (!has_length(arguments, k, shuffle_values)) return 0;
  }
  for (int k : {get_gfsr, set_gfsr}) {
    if (!has_length(arguments, k, register_values)) return 0;
  }
  zents_random_option_get();  // no error of an earlier call stands for this one
  if (arguments.is_double()) {
    work(arguments, zents_d_random_table_get, zents_d_random_table_set);
  } else {
    work(arguments, zents_f_random_table_get, zents_f_random_table_set);
  }
  long code;
  cmast_opi_clear_errors(0, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
