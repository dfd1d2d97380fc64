// SVDCOMP: the singular value decomposition.
#include <algorithm>

#include "binding/dense_positions.hpp"
#include "runtime/machine.hpp"

namespace zent::binding {

namespace {

enum { n_rows = 2, n_columns, matrix, values, tolerance, rank, left, right, inverse, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the elements: 4, 5, 6 or 9"},
    status_position,
    {"M", Kind::required, Type::integer, "rows of the matrix"},
    {"N", Kind::required, Type::integer, "columns of the matrix"},
    {"A", Kind::required, Type::field, "M by N"},
    {"S", Kind::required, Type::any, "receives the singular values, reals, min(M, N)"},
    {"TOLERANCE", Kind::optional, Type::any, "for the rank, a real: absolute, or, below 0, relative; default 100 precisions"},
    {"RANK", Kind::output, Type::integer, "receives the number of singular values above the tolerance"},
    {"U", Kind::optional, Type::field, "receives the left vectors, M by min(M, N)", ZENT_U_USER, Pass::address},
    {"V", Kind::optional, Type::field, "receives the right vectors, N by min(M, N)", ZENT_V_USER, Pass::address},
    {"INVERSE", Kind::optional, Type::field, "receives the generalized inverse, N by M", ZENT_INVERSE_USER, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(lin_svd_gen);

}  // namespace

const Routine routine_193 = {193, "SVDCOMP", true, position_count, positions};

long mathstat_193(int argc, ORV_VARIABLE** argv, char*) {
  Arguments a;
  void* function;
  const long failed = open_call(routine_193, forms, argc, argv, a, function);
  if (failed != 0 || function == nullptr) return failed;
  if (!is_real(a, values) || !is_real(a, tolerance)) return 0;
  const long m = a.integer(n_rows), n = a.integer(n_columns), least = std::min(m, n);
  if (!holds(a, matrix, m, n) || !holds(a, values, least) || !holds(a, left, m, least) || !holds(a, right, n, least) ||
      !holds(a, inverse, n, m)) {
    return 0;
  }
  const DefaultTolerance standard = {100 * Machine<double>::epsilon, 100 * Machine<float>::epsilon};
  long found = 0;
  Words words;
  words.add(m).add(n).add(a.data[matrix]).option(ZENT_RETURN_USER, a.data[values]);
  words.option(ZENT_RANK_ADR, standard.address(a, tolerance), static_cast<const void*>(&found));
  a.add_options(words);
  words.end();
  words.call<void*>(function);
  long code;
  if (cmast_opi_clear_errors(1, &code, a.status, 1) == 0 && a.count_given > rank) a.store(rank, ORV_TYP_INT64, found);
  return 0;
}

}  // namespace zent::binding
