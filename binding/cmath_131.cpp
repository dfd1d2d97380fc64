// DAYSTODATE: the calendar date of a day counted from 1 January 1900.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { days = 2, day, month, year, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"DAYS", Kind::required, Type::integer, "days after 1 January 1900, negative before it"},
    {"DAY", Kind::output, Type::integer, "day of the month, a scalar"},
    {"MONTH", Kind::output, Type::integer, "1 to 12, a scalar"},
    {"YEAR", Kind::output, Type::integer, "year, negative before year 1, a scalar"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_131 = {131, "DAYSTODATE", true, position_count, positions};

long mathstat_131(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("DAYSTODATE");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_131, argc, argv, arguments)) return 0;
  long date[3];  // an error leaves what the caller had
  for (int k = 0; k < 3; ++k) date[k] = arguments.present[day + k] ? arguments.integer(day + k) : 0;
  zent_days_to_date(arguments.integer(days), &date[0], &date[1], &date[2]);
  for (int k = 0; k < 3; ++k) arguments.store(day + k, ORV_TYP_INT64, date[k]);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
