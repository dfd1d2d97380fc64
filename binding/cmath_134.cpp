// EIGSYMGEN: eigenvalues and vectors of a symmetric definite pencil.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { order = 2, a, b, values, vectors, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrices"},
    {"A", Kind::required, Type::real, "symmetric matrix, n by n; its lower triangle is read"},
    {"B", Kind::required, Type::real, "symmetric positive definite matrix, n by n; its lower triangle is read"},
    {"VALUES", Kind::output, Type::real, "the n eigenvalues, an array of the caller's", ZENT_RETURN_USER, Pass::address},
    {"VECTORS", Kind::optional, Type::real, "receives the eigenvectors in its columns, n by n", ZENT_VECTORS_USER, Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

// The library trusts the sizes that it is told; the arrays tell their own.
bool holds(const Arguments& arguments, int k, long n, bool square) {
  const long count = arguments.count[k];
  return n < 1 || (n <= count && (!square || n <= count / n));
}

}  // namespace

const Routine routine_134 = {134, "EIGSYMGEN", true, position_count, positions};

long mathstat_134(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("EIGSYMGEN");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_134, argc, argv, arguments)) return 0;
  const long n = arguments.integer(order);
  if (!holds(arguments, a, n, true) || !holds(arguments, b, n, true) || !arguments.present[values] ||
      !holds(arguments, values, n, false) || (arguments.present[vectors] && !holds(arguments, vectors, n, true))) {
    refuse("EIGSYMGEN: an array is smaller than the order N asks for");
    return 0;
  }
  Words words;
  arguments.add_value(words, order);
  arguments.add_address(words, a);
  arguments.add_address(words, b);
  arguments.add_options(words);
  words.end();
  if (arguments.is_double()) {
    words.call<double*>(reinterpret_cast<void*>(zent_d_eig_symgen));
  } else {
    words.call<float*>(reinterpret_cast<void*>(zent_f_eig_symgen));
  }
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
