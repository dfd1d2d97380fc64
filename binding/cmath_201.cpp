// SP_BDFAC: LU factorization of a general band matrix.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, lower, upper, pivots, factor, condition, block, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "band storage, NLCA + NUCA + 1 by N"},
    {"NLCA", Kind::required, Type::integer, "lower codiagonals"},
    {"NUCA", Kind::required, Type::integer, "upper codiagonals"},
    {"PIVOTS", Kind::required, Type::integer, "receives N pivots"},
    {"FACTOR", Kind::required, Type::field, "receives the factor, (2 NLCA + NUCA + 1) N elements"},
    condition_position,
    {"BLOCK", Kind::optional, Type::integer, "columns factored together, 1 to 32; default: the bandwidth decides",
     ZENT_BLOCKING_FACTOR, Pass::value},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(lin_sol_gen_band);

}  // namespace

const Routine routine_201 = {201, "SP_BDFAC", true, position_count, positions};

long mathstat_201(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_201, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  const long n = arguments.integer(order), nlca = arguments.integer(lower), nuca = arguments.integer(upper);
  if (!holds(arguments, matrix, band_area(n, nlca, nuca)) || !holds(arguments, pivots, n) ||
      !holds(arguments, factor, band_area(n, nlca, nuca, nlca)) || !is_real(arguments, condition) ||
      !fits_option(arguments, block)) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[matrix]).add(nlca).add(nuca).add(0L).option(ZENT_FACTOR_ONLY);
  words.option(ZENT_FACTOR_USER).add(arguments.data[pivots]).add(arguments.data[factor]);
  arguments.add_options(words);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
