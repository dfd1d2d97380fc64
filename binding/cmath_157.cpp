// LUFAC, CHFAC, CHNNDFAC: the factorization of a dense matrix.
#include "binding/dense_positions.hpp"

namespace zent::binding {

namespace {

enum { selector = 2, order, matrix, pivots, factor, condition, transpose, inverse, tolerance, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9; CHNNDFAC 4 or 5"},
    status_position,
    {"SELECTOR", Kind::required, Type::integer, "0 LUFAC, 1 CHFAC, 2 CHNNDFAC"},
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "N by N"},
    {"PIVOTS", Kind::optional, Type::integer, "LUFAC: receives N pivots"},
    {"FACTOR", Kind::required, Type::field, "receives the factor, N by N"},
    {"CONDITION", Kind::optional, Type::any, "receives the condition number, a real", ZENT_CONDITION, Pass::address},
    {"TRANSPOSE", Kind::optional, Type::any, "LUFAC: present for the transpose", ZENT_TRANSPOSE, Pass::flag},
    {"INVERSE", Kind::optional, Type::field, "receives the inverse, N by N", ZENT_INVERSE_USER, Pass::address},
    {"TOLERANCE", Kind::optional, Type::any, "CHNNDFAC: tolerance, a real", ZENT_TOLERANCE_ADR, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

constexpr const char* labels[] = {"LUFAC", "CHFAC", "CHNNDFAC"};

}  // namespace

const Routine routine_157 = {157, "LUFAC, CHFAC, CHNNDFAC", true, position_count, positions};

long mathstat_157(int argc, ORV_VARIABLE** argv, char*) {
  const long kind = dense_selector(argc, argv, selector);
  Routine routine = routine_157;
  if (kind >= 0) routine.label = labels[kind];
  const long failed = cmast_init(routine.label);
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine, argc, argv, arguments)) return 0;
  void* const function = kind < 0 ? nullptr : dense_forms[kind].at(arguments.precision);
  if (function == nullptr) return 0;
  const long n = arguments.integer(order), elements = dense_area(n);
  if (kind == 0 && !arguments.present[pivots]) {
    refuse("LUFAC: argument PIVOTS must be an array of N integers");
    return 0;
  }
  if (!holds(arguments, matrix, elements) || !holds(arguments, pivots, n) || !holds(arguments, factor, elements) ||
      !holds(arguments, inverse, elements) || !is_real(arguments, condition) || !is_real(arguments, tolerance)) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[matrix]).add(0L).option(ZENT_FACTOR_ONLY).option(ZENT_FACTOR_USER);
  if (kind == 0) words.add(arguments.data[pivots]);
  words.add(arguments.data[factor]);
  arguments.add_options(words);
  words.end();
  words.call<void*>(function);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
