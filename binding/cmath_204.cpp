// SP_BDSOL: solution of a general band system.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { order = 2, matrix, lower, upper, right, solution, condition, transpose, pivots, factor, block, reserved, position_count };

constexpr Position positions[] = {
    type_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::optional, Type::field, "band storage, NLCA + NUCA + 1 by N; not needed with PIVOTS and FACTOR"},
    {"NLCA", Kind::required, Type::integer, "lower codiagonals"},
    {"NUCA", Kind::required, Type::integer, "upper codiagonals"},
    {"B", Kind::required, Type::field, "right-hand side, N elements"},
    {"X", Kind::required, Type::field, "receives the solution, N elements"},
    condition_position,
    {"TRANSPOSE", Kind::optional, Type::any, "present for the (conjugate) transpose", ZENT_TRANSPOSE, Pass::flag},
    {"PIVOTS", Kind::optional, Type::integer, "what SP_BDFAC gave, with FACTOR"},
    {"FACTOR", Kind::optional, Type::field, "what SP_BDFAC gave, with PIVOTS"},
    {"BLOCK", Kind::optional, Type::integer, "columns factored together, 1 to 32; default: the bandwidth decides",
     ZENT_BLOCKING_FACTOR, Pass::value},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count && reserved + 1 == position_count);

const DenseForms forms = ZENT_DENSE_FORMS(lin_sol_gen_band);

// Pivots that name a row outside the band would be followed into foreign memory.
bool pivots_fit(const Arguments& arguments, long n, long nlca) {
  const long* const pivot = arguments.array<long>(pivots);
  for (long k = 0; arguments.present[pivots] && k < n; ++k) {
    const long reach = nlca < n - (k + 1) ? k + 1 + nlca : n;
    if (pivot[k] < k + 1 || pivot[k] > reach) return refuse("SP_BDSOL: argument PIVOTS is not what SP_BDFAC gave");
  }
  return true;
}

}  // namespace

const Routine routine_204 = {204, "SP_BDSOL", true, position_count, positions};

long mathstat_204(int argc, ORV_VARIABLE** argv, char*) {
  Arguments arguments;
  void* function;
  const long failed = open_call(routine_204, forms, argc, argv, arguments, function);
  if (failed != 0 || function == nullptr) return failed;
  const long n = arguments.integer(order), nlca = arguments.integer(lower), nuca = arguments.integer(upper);
  if (!holds(arguments, matrix, band_area(n, nlca, nuca)) || !holds(arguments, right, n) || !holds(arguments, solution, n) ||
      !holds(arguments, pivots, n) || !holds(arguments, factor, band_area(n, nlca, nuca, nlca)) ||
      !is_real(arguments, condition) || !fits_option(arguments, block) || !pivots_fit(arguments, n, nlca)) {
    return 0;
  }
  Words words;
  words.add(n).add(arguments.data[matrix]).add(nlca).add(nuca).add(arguments.data[right]);
  words.option(ZENT_RETURN_USER).add(arguments.data[solution]);
  arguments.add_options(words);
  if (arguments.present[factor]) {
    words.option(ZENT_SOLVE_ONLY).option(ZENT_FACTOR_USER).add(arguments.data[pivots]).add(arguments.data[factor]);
  }
  return finish(arguments, words, function);
}

}  // namespace zent::binding
