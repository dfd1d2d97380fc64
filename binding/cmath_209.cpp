// SP_MVMULBAND: product of a band matrix and a vector.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { operation = 2, rows, lower, upper, matrix, vector, product, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"OPERATION", Kind::required, Type::text, "\"A*x\", \"trans(A)*x\" or \"ctrans(A)*x\""},
    {"NROW", Kind::required, Type::integer, "rows of the matrix; its columns follow from the size of A"},
    {"NLCA", Kind::required, Type::integer, "lower codiagonals"},
    {"NUCA", Kind::required, Type::integer, "upper codiagonals"},
    {"A", Kind::required, Type::field, "band storage, NLCA + NUCA + 1 rows"},
    {"X", Kind::required, Type::field, "the vector"},
    {"RESULT", Kind::required, Type::field, "receives the product"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(mat_mul_rect_band);

}  // namespace

const Routine routine_209 = {209, "SP_MVMULBAND", true, position_count, positions};

long mathstat_209(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_209, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  if (!multiplies_vector(arguments, operation) || !fits_option(arguments, rows) || !fits_option(arguments, lower) ||
      !fits_option(arguments, upper)) {
    return 0;
  }
  const long nrow = arguments.integer(rows), m = arguments.integer(lower) + arguments.integer(upper) + 1;
  const long ncol = m < 1 ? 0 : arguments.count[matrix] / m;
  if (ncol * m != arguments.count[matrix] || ncol != static_cast<int>(ncol) || arguments.count[vector] > 0x7fffffff) {
    refuse("SP_MVMULBAND: argument A must have NLCA + NUCA + 1 rows of equal length");
    return 0;
  }
  if (!holds(arguments, product, nrow + ncol - arguments.count[vector])) return 0;  // as long as the side that x is not
  Words words;
  words.add(arguments.text(operation)).option(ZENT_A_MATRIX, nrow, ncol, arguments.integer(lower), arguments.integer(upper));
  words.add(arguments.data[matrix]).option(ZENT_X_VECTOR, arguments.count[vector]).add(arguments.data[vector]);
  words.option(ZENT_RETURN_USER).add(arguments.data[product]);
  return finish(arguments, words, function);
}

}  // namespace zent::binding
