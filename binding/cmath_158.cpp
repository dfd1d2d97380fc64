// LUSOL, CHSOL, CHNNDSOL: the solution of a dense system, from the matrix or from a factor of it.
#include "binding/dense_positions.hpp"

namespace zent::binding {

namespace {

enum {
  selector = 2,
  order,
  matrix,
  right_side,
  solution,
  condition,
  transpose,
  inverse,
  tolerance,
  pivots,
  factor,
  position_count
};

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9; CHNNDSOL 4 or 5"},
    status_position,
    {"SELECTOR", Kind::required, Type::integer, "0 LUSOL, 1 CHSOL, 2 CHNNDSOL"},
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::optional, Type::field, "N by N; not needed with a factor"},
    {"B", Kind::required, Type::field, "right-hand side, N"},
    {"X", Kind::required, Type::field, "receives the solution, N"},
    {"CONDITION", Kind::optional, Type::any, "receives the condition number, a real", ZENT_CONDITION, Pass::address},
    {"TRANSPOSE", Kind::optional, Type::any, "LUSOL: present for the transposed system", ZENT_TRANSPOSE, Pass::flag},
    {"INVERSE", Kind::optional, Type::field, "receives the inverse, N by N", ZENT_INVERSE_USER, Pass::address},
    {"TOLERANCE", Kind::optional, Type::any, "CHNNDSOL: tolerance, a real", ZENT_TOLERANCE_ADR, Pass::address},
    {"PIVOTS", Kind::optional, Type::integer, "LUSOL: the pivots that belong to the factor, N"},
    {"FACTOR", Kind::optional, Type::field, "the factor of an earlier call, N by N: nothing is factored then"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

constexpr const char* labels[] = {"LUSOL", "CHSOL", "CHNNDSOL"};

}  // namespace

const Routine routine_158 = {158, "LUSOL, CHSOL, CHNNDSOL", true, position_count, positions};

long mathstat_158(int argc, ORV_VARIABLE** argv, char*) {
  const long kind = dense_selector(argc, argv, selector);
  Routine routine = routine_158;
  if (kind >= 0) routine.label = labels[kind];
  const long failed = cmast_init(routine.label);
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine, argc, argv, arguments)) return 0;
  void* const function = kind < 0 ? nullptr : dense_forms[kind].at(arguments.precision);
  if (function == nullptr) return 0;
  const long n = arguments.integer(order), elements = dense_area(n);
  const bool factored = arguments.present[factor];
  if (kind == 0 && factored && !arguments.present[pivots]) {
    refuse("LUSOL: argument PIVOTS must be given with FACTOR");
    return 0;
  }
  if (!holds(arguments, matrix, elements) || !holds(arguments, right_side, n) || !holds(arguments, solution, n) ||
      !holds(arguments, inverse, elements) || !holds(arguments, factor, elements) || !holds(arguments, pivots, n) ||
      !is_real(arguments, condition) || !is_real(arguments, tolerance)) {
    return 0;
  }
  // Pivots steer interchanges: a number that is no row would reach beyond the solution.
  for (long k = 0; kind == 0 && factored && k < n; ++k) {
    const long row = arguments.array<long>(pivots)[k];
    if (row >= k + 1 && row <= n) continue;
    refuse("LUSOL: argument PIVOTS must be as LUFAC gave it");
    return 0;
  }
  Words words;
  words.add(n).add(arguments.present[matrix] ? arguments.data[matrix] : nullptr).add(arguments.data[right_side]);
  words.option(ZENT_RETURN_USER, arguments.data[solution]);
  arguments.add_options(words);
  if (factored) {
    words.option(ZENT_SOLVE_ONLY).option(ZENT_FACTOR_USER);
    if (kind == 0) words.add(arguments.data[pivots]);
    words.add(arguments.data[factor]);
  }
  words.end();
  words.call<void*>(function);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
