// LUSOL, CHSOL, CHNNDSOL: the solution of a dense system, from the matrix or from a factor of it.
#include "binding/dense_positions.hpp"

namespace zent::binding {

namespace {

enum { right_side = DenseCall::matrix + 1, solution, condition, transpose, inverse, tolerance, pivots, factor, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9; CHNNDSOL 4 or 5"},
    status_position,
    {"SELECTOR", Kind::required, Type::integer, "0 LUSOL, 1 CHSOL, 2 CHNNDSOL"},
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::optional, Type::field, "N by N; not needed with a factor"},
    {"B", Kind::required, Type::field, "right-hand side, N"},
    {"X", Kind::required, Type::field, "receives the solution, N"},
    condition_position,
    {"TRANSPOSE", Kind::optional, Type::any, "LUSOL: present for the transposed system", ZENT_TRANSPOSE, Pass::flag},
    {"INVERSE", Kind::optional, Type::field, "receives the inverse, N by N", ZENT_INVERSE_USER, Pass::address},
    {"TOLERANCE", Kind::optional, Type::any, "CHNNDSOL: tolerance, a real", ZENT_TOLERANCE_ADR, Pass::address},
    {"PIVOTS", Kind::optional, Type::integer, "LUSOL: the pivots that belong to the factor, N"},
    {"FACTOR", Kind::optional, Type::field, "the factor of an earlier call, N by N: nothing is factored then"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

constexpr const char* labels[] = {"LUSOL", "CHSOL", "CHNNDSOL"};

// Pivots steer interchanges: a number that is no row would reach beyond the solution.
bool pivots_fit(const Arguments& arguments, long n) {
  if (!arguments.present[pivots]) return refuse("LUSOL: argument PIVOTS must be given with FACTOR");
  if (!holds(arguments, pivots, n)) return false;
  for (long k = 0; k < n; ++k) {
    const long row = arguments.array<long>(pivots)[k];
    if (row < k + 1 || row > n) return refuse("LUSOL: argument PIVOTS must be as LUFAC gave it");
  }
  return true;
}

}  // namespace

const Routine routine_158 = {158, "LUSOL, CHSOL, CHNNDSOL", true, position_count, positions};

long mathstat_158(int argc, ORV_VARIABLE** argv, char*) {
  DenseCall call;
  const long failed = call.open(routine_158, labels, argc, argv);
  if (failed != 0 || call.function == nullptr) return failed;
  const Arguments& arguments = call.arguments;
  const long n = call.n();
  const bool factored = arguments.present[factor];
  if (!holds_square(arguments, call.matrix, n) || !holds(arguments, right_side, n) || !holds(arguments, solution, n) ||
      !call.options_fit(condition, transpose, inverse, tolerance) || !holds_square(arguments, factor, n) ||
      (call.kind == 0 && factored && !pivots_fit(arguments, n))) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[call.matrix]).add(arguments.data[right_side]);
  words.option(ZENT_RETURN_USER, arguments.data[solution]);
  arguments.add_options(words);
  if (factored) {
    words.option(ZENT_SOLVE_ONLY);
    call.add_factor(words, pivots, factor);
  }
  return finish(arguments, words, call.function);
}

}  // namespace zent::binding
