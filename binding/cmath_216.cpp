// MATRIX_NORM of a sparse matrix in coordinate form.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { rows = 2, columns, count, matrix, one_norm, inf_norm, symmetric, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"NROW", Kind::required, Type::integer, "rows of the matrix"},
    {"NCOL", Kind::required, Type::integer, "columns of the matrix"},
    {"NZ", Kind::required, Type::integer, "elements of A that count"},
    {"A", Kind::required, Type::structure,
     "array of ZENT_D_SP_ELEM, or ZENT_F_SP_ELEM in single; tags of other types are misread"},
    {"ONE_NORM", Kind::optional, Type::any, "present: largest column sum", ZENT_ONE_NORM, Pass::flag},
    {"INF_NORM", Kind::optional, Type::any, "present: largest row sum; default: Frobenius norm", ZENT_INF_NORM, Pass::flag},
    {"SYMMETRIC", Kind::optional, Type::any, "present: of each pair of mirror images one is given", ZENT_SYMMETRIC, Pass::flag},
    {"RESULT", Kind::output, Type::real, "the norm"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_216 = {216, "MATRIX_NORM", true, position_count, positions};

long mathstat_216(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("MATRIX_NORM");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_216, argc, argv, arguments)) return 0;
  if (!is_coordinate(arguments, matrix) || !holds(arguments, matrix, arguments.integer(count))) return 0;
  Words words;
  words.add(arguments.integer(rows)).add(arguments.integer(columns)).add(arguments.integer(count)).add(arguments.data[matrix]);
  arguments.add_options(words);
  words.end();
  store_norm(arguments, words, zent_f_matrix_norm_coordinate, zent_d_matrix_norm_coordinate, result, 1);
  return 0;
}

}  // namespace zent::binding
