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
    {"CONDITION", Kind::optional, Type::any, "receives the condition number, a real", ZENT_CONDITION, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_BAND_FORMS(lin_sol_posdef_band);

}  // namespace

const Routine routine_202 = {202, "SP_BDPDFAC", true, position_count, positions};

long mathstat_202(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("SP_BDPDFAC");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_202, argc, argv, arguments)) return 0;
  void* const function = forms.at(arguments.precision);
  if (function == nullptr) return 0;
  const long n = arguments.integer(order), ncoda = arguments.integer(codiagonals), elements = band_area(n, 0, ncoda);
  if (!holds(arguments, matrix, elements) || !holds(arguments, factor, elements) || !is_real(arguments, condition)) return 0;
  Words words;
  words.add(n).add(arguments.data[matrix]).add(ncoda).add(0L).option(ZENT_FACTOR_ONLY);
  words.option(ZENT_FACTOR_USER).add(arguments.data[factor]);
  arguments.add_options(words);
  words.end();
  words.call<void*>(function);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
