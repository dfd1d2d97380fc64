// QRSOL: least squares solution of a linear system, from the matrix or from a factor of it.
#include <cmath>

#include "binding/least_squares_positions.hpp"
#include "runtime/machine.hpp"

namespace zent::binding {

namespace {

enum { n_rows = 2, n_columns, matrix, right_side, solution, tolerance, basis, qraux, factor, pivots, residual, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"M", Kind::required, Type::integer, "rows of the matrix"},
    {"N", Kind::required, Type::integer, "columns of the matrix"},
    {"A", Kind::optional, Type::real, "M by N; not needed with a factor"},
    {"B", Kind::required, Type::real, "right-hand side, M"},
    {"X", Kind::required, Type::real, "receives the solution, N"},
    {"TOLERANCE", Kind::optional, Type::real, "for the count of basis columns; default the square root of the precision"},
    {"BASIS", Kind::output, Type::integer, "receives the count; with a factor, the number of its columns to be used"},
    {"QRAUX", Kind::optional, Type::real, "of an earlier factorization, N"},
    {"QR", Kind::optional, Type::real, "factor of an earlier factorization, M by N: nothing is factored then"},
    {"PIVOTS", Kind::optional, Type::integer,
     "N: > 0 first, < 0 last, 0 free; receives the order. With a factor: elements of X are exchanged one after the other"},
    {"RESIDUAL", Kind::optional, Type::real, "receives B - A X, M"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_177 = {177, "QRSOL", true, position_count, positions};

long mathstat_177(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("QRSOL");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_177, argc, argv, a)) return 0;
  const long m = a.integer(n_rows), n = a.integer(n_columns);
  const bool factored = a.present[factor];
  if (factored && (!a.present[qraux] || !a.present[basis])) {
    refuse("QRSOL: arguments QRAUX and BASIS must be given with QR");
    return 0;
  }
  if (!holds(a, matrix, m, n) || !holds(a, right_side, m) || !holds(a, solution, n) || !holds(a, qraux, n) ||
      !holds(a, factor, m, n) || !holds(a, pivots, n) || !holds(a, residual, m)) {
    return 0;
  }
  const DefaultTolerance standard = {std::sqrt(Machine<double>::epsilon), std::sqrt(Machine<float>::epsilon)};
  long kbasis = factored ? a.integer(basis) : 0;
  Words words;
  words.add(m).add(n).add(a.data[matrix]).add(a.data[right_side]);
  words.option(ZENT_RETURN_USER, a.data[solution]);
  words.option(ZENT_BASIS_ADR, standard.address(a, tolerance), static_cast<const void*>(&kbasis));
  if (factored) words.option(ZENT_SOLVE_ONLY).option(ZENT_FACTOR_USER, a.data[qraux], a.data[factor]);
  if (a.present[pivots]) words.option(ZENT_PIVOT, a.data[pivots]);
  if (a.present[residual]) words.option(ZENT_RESIDUAL_USER, a.data[residual]);
  words.end();
  words.call<void*>(a.is_double() ? reinterpret_cast<void*>(zent_d_lin_least_squares_gen)
                                  : reinterpret_cast<void*>(zent_f_lin_least_squares_gen));
  long code;
  if (cmast_opi_clear_errors(1, &code, a.status, 1) == 0 && !factored && a.count_given > basis) {
    a.store(basis, ORV_TYP_INT64, kbasis);
  }
  return 0;
}

}  // namespace zent::binding
