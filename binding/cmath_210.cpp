// SP_MVMULCOORD: product of a sparse matrix in coordinate form and a vector.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { operation = 2, rows, columns, matrix, vector, product, symmetric, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"OPERATION", Kind::required, Type::text, "\"A*x\", \"trans(A)*x\" or \"ctrans(A)*x\""},
    {"NROW", Kind::required, Type::integer, "rows of the matrix"},
    {"NCOL", Kind::required, Type::integer, "columns of the matrix"},
    {"A", Kind::required, Type::structure,
     "array of ZENT_D_SP_ELEM, or of the elements of another PRECISION; tags of other types are misread"},
    {"X", Kind::required, Type::field, "the vector"},
    {"RESULT", Kind::required, Type::field, "receives the product"},
    {"SYMMETRIC", Kind::optional, Type::any, "present: of each pair of mirror images one is given", ZENT_SYMMETRIC, Pass::flag},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(mat_mul_rect_coordinate);

}  // namespace

const Routine routine_210 = {210, "SP_MVMULCOORD", true, position_count, positions};

long mathstat_210(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_210, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  if (!is_coordinate(arguments, matrix) || !multiplies_vector(arguments, operation)) return 0;
  if (!fits_option(arguments, rows) || !fits_option(arguments, columns)) return 0;
  const long nrow = arguments.integer(rows), ncol = arguments.integer(columns);
  if (arguments.count[vector] > 0x7fffffff || arguments.count[matrix] > 0x7fffffff) {
    refuse("SP_MVMULCOORD: an argument has more elements than fit in 32 bits");
    return 0;
  }
  if (!holds(arguments, product, nrow + ncol - arguments.count[vector])) return 0;  // as long as the side that x is not
  Words words;
  words.add(arguments.text(operation)).option(ZENT_A_MATRIX, nrow, ncol, arguments.count[matrix]).add(arguments.data[matrix]);
  words.option(ZENT_X_VECTOR, arguments.count[vector]).add(arguments.data[vector]);
  words.option(ZENT_RETURN_USER).add(arguments.data[product]);
  arguments.add_options(words);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
