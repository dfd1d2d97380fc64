// SP_BDPDFAC: Cholesky factorization of a positive definite band matrix.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, codiagonals, factor, condition, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "upper half in band storage, NCODA + 1 by N"},
    {"NCODA", Kind::required, Type::integer, "upper codiagonals"},
    {"FACTOR", Kind::required, Type::field, "receives the factor, NCODA + 1 by N"},
    condition_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(lin_sol_posdef_band);

}  // namespace

const Routine routine_202 = {202, "SP_BDPDFAC", true, position_count, positions};

long mathstat_202(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_202, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  const long n = arguments.integer(order), ncoda = arguments.integer(codiagonals), elements = band_area(n, 0, ncoda);
  if (!holds(arguments, matrix, elements) || !holds(arguments, factor, elements) || !is_real(arguments, condition)) return 0;
  Words words;
  words.add(n).add(arguments.data[matrix]).add(ncoda).add(0L).option(ZENT_FACTOR_ONLY);
  words.option(ZENT_FACTOR_USER).add(arguments.data[factor]);
  arguments.add_options(words);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
