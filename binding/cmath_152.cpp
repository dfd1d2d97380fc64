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
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_152, dense_forms[0], argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  if (!arguments.present[inverse]) {
    refuse("INV: argument INVERSE must be an array of N by N elements");
    return 0;
  }
  const long n = arguments.integer(order);
  if (!holds_square(arguments, matrix, n) || !holds_square(arguments, inverse, n)) return 0;
  Words words;
  words.add(n).add(arguments.data[matrix]).add(0L);
  words.option(ZENT_INVERSE_ONLY).option(ZENT_INVERSE_USER, arguments.data[inverse]);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
