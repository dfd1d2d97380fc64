// INV: the inverse of a matrix.
#include "binding/dense_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, inverse, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9"},
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "N by N"},
    {"INVERSE", Kind::output, Type::field, "N by N, allocated by the caller"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_152 = {152, "INV", true, position_count, positions};

long mathstat_152(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("INV");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_152, argc, argv, arguments)) return 0;
  void* const function = dense_forms[0].at(arguments.precision);
  if (function == nullptr) return 0;
  if (!arguments.present[inverse]) {
    refuse("INV: argument INVERSE must be an array of N by N elements");
    return 0;
  }
  const long elements = dense_area(arguments.integer(order));
  if (!holds(arguments, matrix, elements) || !holds(arguments, inverse, elements)) return 0;
  Words words;
  words.add(arguments.integer(order)).add(arguments.data[matrix]).add(0L);
  words.option(ZENT_INVERSE_ONLY).option(ZENT_INVERSE_USER, arguments.data[inverse]).end();
  words.call<void*>(function);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
