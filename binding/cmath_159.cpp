// MACHINE: the table of machine constants.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { result = 2, position_count };
constexpr long real_constants = 8, integer_constants = 13;

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "5 double, 4 single, 14 the integer constants"},
    status_position,
    {"RESULT", Kind::output, Type::any,
     "array of that type: smallest and largest number, smallest and largest spacing, log10 of 2, not-a-number, both infinities; "
     "or 13 integers. Its length says how many are wanted"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class T>
void fill(const Arguments& arguments, T (*constant)(long), long first, long limit) {
  const long n = arguments.count[result] < limit ? arguments.count[result] : limit;
  for (long i = 0; i < n; ++i) arguments.array<T>(result)[i] = constant(first + i);
}

}  // namespace

const Routine routine_159 = {159, "MACHINE", true, position_count, positions};

long mathstat_159(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("MACHINE");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_159, argc, argv, arguments)) return 0;
  const int real_type = arguments.is_double() ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT;
  const int type = arguments.precision == ORV_TYP_INT64 ? ORV_TYP_INT64 : real_type;
  if (arguments.variable[result]->type != type) {
    refuse("MACHINE: argument RESULT must be an array of the type that PRECISION asks for");
    return 0;
  }
  if (type == ORV_TYP_INT64) {
    fill(arguments, zent_i_machine, 0, integer_constants);
  } else if (type == ORV_TYP_DOUBLE) {
    fill(arguments, zent_d_machine, 1, real_constants);
  } else {
    fill(arguments, zent_f_machine, 1, real_constants);
  }
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
