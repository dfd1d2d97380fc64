// MATRIX_NORM of a band matrix.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, lower, upper, one_norm, inf_norm, symmetric, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::real, "band storage, NLCA + NUCA + 1 by N; with SYMMETRIC NUCA + 1 by N"},
    {"NLCA", Kind::required, Type::integer, "lower codiagonals"},
    {"NUCA", Kind::required, Type::integer, "upper codiagonals"},
    {"ONE_NORM", Kind::optional, Type::any, "present: largest column sum", ZENT_ONE_NORM, Pass::flag},
    {"INF_NORM", Kind::optional, Type::any, "present: largest row sum; default: Frobenius norm", ZENT_INF_NORM, Pass::flag},
    {"SYMMETRIC", Kind::optional, Type::any, "present: the upper half alone is stored", ZENT_SYMMETRIC, Pass::flag},
    {"RESULT", Kind::output, Type::real, "the norm"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_217 = {217, "MATRIX_NORM", true, position_count, positions};

long mathstat_217(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("MATRIX_NORM");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_217, argc, argv, arguments)) return 0;
  const long n = arguments.integer(order), nlca = arguments.integer(lower), nuca = arguments.integer(upper);
  if (!holds(arguments, matrix, band_area(n, arguments.present[symmetric] ? 0 : nlca, nuca))) return 0;
  Words words;
  words.add(n).add(arguments.data[matrix]).add(nlca).add(nuca);
  arguments.add_options(words);
  words.end();
  store_norm(arguments, words, zent_f_matrix_norm_band, zent_d_matrix_norm_band, result, 1);
  return 0;
}

}  // namespace zent::binding
