// DATETODAYS: a calendar date as days after 1 January 1900.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { day = 2, month, year, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"DAY", Kind::required, Type::integer, "day of the month, from 1"},
    {"MONTH", Kind::required, Type::integer, "1 to 12"},
    {"YEAR", Kind::required, Type::integer, "year; there is no year 0, -1 is the year before 1"},
    {"RESULT", Kind::output, Type::integer, "days after 1 January 1900, a scalar"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_130 = {130, "DATETODAYS", true, position_count, positions};

long mathstat_130(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("DATETODAYS");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_130, argc, argv, arguments)) return 0;
  const long days = zent_date_to_days(arguments.integer(day), arguments.integer(month), arguments.integer(year));
  arguments.store(result, ORV_TYP_INT64, days);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
