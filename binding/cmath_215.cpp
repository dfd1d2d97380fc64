// MATRIX_NORM of a dense matrix.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { rows = 2, columns, matrix, one_norm, inf_norm, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"NROW", Kind::required, Type::integer, "rows of the matrix"},
    {"NCOL", Kind::required, Type::integer, "columns of the matrix"},
    {"A", Kind::required, Type::real, "NROW by NCOL"},
    {"ONE_NORM", Kind::optional, Type::any, "present: largest column sum", ZENT_ONE_NORM, Pass::flag},
    {"INF_NORM", Kind::optional, Type::any, "present: largest row sum; default: Frobenius norm", ZENT_INF_NORM, Pass::flag},
    {"RESULT", Kind::output, Type::real, "the norm"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_215 = {215, "MATRIX_NORM", true, position_count, positions};

long mathstat_215(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("MATRIX_NORM");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_215, argc, argv, arguments)) return 0;
  const long m = arguments.integer(rows), n = arguments.integer(columns);
  if (!holds(arguments, matrix, m, n)) return 0;
  Words words;
  words.add(m).add(n).add(arguments.data[matrix]);
  arguments.add_options(words);
  words.end();
  store_norm(arguments, words, zent_f_matrix_norm, zent_d_matrix_norm, result, 1);
  return 0;
}

}  // namespace zent::binding
