// LUFAC, CHFAC, CHNNDFAC: the factorization of a dense matrix.
#include "binding/dense_positions.hpp"

namespace zent::binding {

namespace {

enum { pivots = DenseCall::matrix + 1, factor, condition, transpose, inverse, tolerance, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9; CHNNDFAC 4 or 5"},
    status_position,
    {"SELECTOR", Kind::required, Type::integer, "0 LUFAC, 1 CHFAC, 2 CHNNDFAC"},
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "N by N"},
    {"PIVOTS", Kind::optional, Type::integer, "LUFAC: receives N pivots"},
    {"FACTOR", Kind::required, Type::field, "receives the factor, N by N"},
    condition_position,
    {"TRANSPOSE", Kind::optional, Type::any, "LUFAC: present for the transpose", ZENT_TRANSPOSE, Pass::flag},
    {"INVERSE", Kind::optional, Type::field, "receives the inverse, N by N", ZENT_INVERSE_USER, Pass::address},
    {"TOLERANCE", Kind::optional, Type::any, "CHNNDFAC: tolerance, a real", ZENT_TOLERANCE_ADR, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

constexpr const char* labels[] = {"LUFAC", "CHFAC", "CHNNDFAC"};

}  // namespace

const Routine routine_157 = {157, "LUFAC, CHFAC, CHNNDFAC", true, position_count, positions};

long mathstat_157(int argc, ORV_VARIABLE** argv, char*) {
  DenseCall call;
  const long failed = call.open(routine_157, labels, argc, argv);
  if (failed != 0 || call.function == nullptr) return failed;
  const Arguments& arguments = call.arguments;
  const long n = call.n();
  if (call.kind == 0 && !arguments.present[pivots]) {
    refuse("LUFAC: argument PIVOTS must be an array of N integers");
    return 0;
  }
  if (!holds_square(arguments, call.matrix, n) || !holds(arguments, pivots, n) || !holds_square(arguments, factor, n) ||
      !call.options_fit(condition, transpose, inverse, tolerance)) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[call.matrix]).add(0L).option(ZENT_FACTOR_ONLY);
  call.add_factor(words, pivots, factor);
  arguments.add_options(words);
  return finish(arguments, words, call.function);
}

}  // namespace zent::binding
