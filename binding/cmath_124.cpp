// CONSTANT: a mathematical or physical constant, in a unit of the caller's choice.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { name = 2, unit, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"NAME", Kind::required, Type::text, "name of the constant, case, blanks and underscores ignored"},
    {"UNIT", Kind::optional, Type::text, "unit expression such as \"km/hour\", or \"SI\"; default: the unit of the table"},
    {"RESULT", Kind::output, Type::real, "value, a scalar"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_124 = {124, "CONSTANT", true, position_count, positions};

long mathstat_124(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("CONSTANT");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_124, argc, argv, arguments)) return 0;
  long code;
  if (arguments.is_double()) {
    const double value = zent_d_constant(arguments.text(name), arguments.text(unit));
    if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0) arguments.store(result, ORV_TYP_DOUBLE, value);
  } else {
    const float value = zent_f_constant(arguments.text(name), arguments.text(unit));
    if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0) arguments.store(result, ORV_TYP_FLOAT, value);
  }
  return 0;
}

}  // namespace zent::binding
