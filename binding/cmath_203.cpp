// SP_BDPDSOL: solution of a positive definite band system.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, codiagonals, right, solution, condition, factor, reserved, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::optional, Type::field, "upper half in band storage, NCODA + 1 by N; not needed with FACTOR"},
    {"NCODA", Kind::required, Type::integer, "upper codiagonals"},
    {"B", Kind::required, Type::field, "right-hand side, N elements"},
    {"X", Kind::required, Type::field, "receives the solution, N elements"},
    condition_position,
    {"FACTOR", Kind::optional, Type::field, "what SP_BDPDFAC gave"},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count && reserved + 1 == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(lin_sol_posdef_band);

}  // namespace

const Routine routine_203 = {203, "SP_BDPDSOL", true, position_count, positions};

long mathstat_203(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_203, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  const long n = arguments.integer(order), ncoda = arguments.integer(codiagonals), elements = band_area(n, 0, ncoda);
  if (!holds(arguments, matrix, elements) || !holds(arguments, factor, elements) || !holds(arguments, right, n) ||
      !holds(arguments, solution, n) || !is_real(arguments, condition)) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[matrix]).add(ncoda).add(arguments.data[right]);
  words.option(ZENT_RETURN_USER).add(arguments.data[solution]);
  arguments.add_options(words);
  if (arguments.present[factor]) words.option(ZENT_SOLVE_ONLY).option(ZENT_FACTOR_USER).add(arguments.data[factor]);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
