// QRFAC: the QR factorization of a matrix with column pivoting.
#include <cmath>

#include "binding/least_squares_positions.hpp"
#include "runtime/machine.hpp"

namespace zent::binding {

namespace {

enum { n_rows = 2, n_columns, matrix, qraux, factor, tolerance, basis, pivots, orthogonal, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"M", Kind::required, Type::integer, "rows of the matrix"},
    {"N", Kind::required, Type::integer, "columns of the matrix"},
    {"A", Kind::required, Type::real, "M by N"},
    {"QRAUX", Kind::required, Type::real, "receives the first elements of the reflections, N"},
    {"QR", Kind::required, Type::real, "receives the factor, M by N"},
    {"TOLERANCE", Kind::optional, Type::real, "for the count of basis columns; default the square root of the precision"},
    {"BASIS", Kind::output, Type::integer, "receives the count along every (N + 1)-th element of the column-major factor"},
    {"PIVOTS", Kind::optional, Type::integer, "N: > 0 first, < 0 last, 0 free; receives the order of the columns"},
    {"Q", Kind::optional, Type::real, "receives the orthogonal factor, M by M"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_176 = {176, "QRFAC", true, position_count, positions};

long mathstat_176(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("QRFAC");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_176, argc, argv, a)) return 0;
  const long m = a.integer(n_rows), n = a.integer(n_columns);
  if (!holds(a, matrix, m, n) || !holds(a, qraux, n) || !holds(a, factor, m, n) || !holds(a, pivots, n) ||
      !holds(a, orthogonal, m, m)) {
    return 0;
  }
  const DefaultTolerance standard = {std::sqrt(Machine<double>::epsilon), std::sqrt(Machine<float>::epsilon)};
  long kbasis = 0;
  Words words;
  words.add(m).add(n).add(a.data[matrix]).add(0L);
  words.option(ZENT_FACTOR_ONLY).option(ZENT_FACTOR_USER, a.data[qraux], a.data[factor]);
  words.option(ZENT_BASIS_ADR, standard.address(a, tolerance), static_cast<const void*>(&kbasis));
  if (a.present[pivots]) words.option(ZENT_PIVOT, a.data[pivots]);
  if (a.present[orthogonal]) words.option(ZENT_Q_USER, a.data[orthogonal]);
  words.end();
  words.call<void*>(a.is_double() ? reinterpret_cast<void*>(zent_d_lin_least_squares_gen)
                                  : reinterpret_cast<void*>(zent_f_lin_least_squares_gen));
  long code;
  if (cmast_opi_clear_errors(1, &code, a.status, 1) == 0 && a.count_given > basis) a.store(basis, ORV_TYP_INT64, kbasis);
  return 0;
}

}  // namespace zent::binding
