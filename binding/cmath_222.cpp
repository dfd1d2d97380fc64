// GENEIG: eigenvalues and vectors of a general pencil.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { order = 2, a, b, alpha, beta, vectors, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the matrices: 5 double, 4 single, 9 and 6 complex"},
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrices"},
    {"A", Kind::required, Type::field, "matrix, n by n"},
    {"B", Kind::required, Type::field, "matrix, n by n"},
    {"ALPHA", Kind::output, Type::any, "n complex values, an array of the caller's; the eigenvalues are ALPHA / BETA"},
    {"BETA", Kind::output, Type::any, "n real values, an array of the caller's; 0 marks an infinite eigenvalue"},
    {"VECTORS", Kind::optional, Type::any, "receives the eigenvectors in its columns, complex, n by n", ZENT_VECTORS_USER,
     Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

bool holds(const Arguments& arguments, int k, int type, long n, bool square) {
  const long count = arguments.count[k];
  return arguments.present[k] && arguments.variable[k]->type == type && (n < 1 || (n <= count && (!square || n <= count / n)));
}

void* function(int precision) {
  switch (precision) {
    case ORV_TYP_FLOAT:
      return reinterpret_cast<void*>(zent_f_geneig);
    case ORV_TYP_DOUBLE:
      return reinterpret_cast<void*>(zent_d_geneig);
    case ORV_TYP_COMPLEX:
      return reinterpret_cast<void*>(zent_c_geneig);
    case ORV_TYP_DCOMPLEX:
      return reinterpret_cast<void*>(zent_z_geneig);
    default:
      return nullptr;
  }
}

}  // namespace

const Routine routine_222 = {222, "GENEIG", true, position_count, positions};

long mathstat_222(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("GENEIG");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_222, argc, argv, arguments)) return 0;
  const int precision = arguments.precision;
  const bool single = precision == ORV_TYP_FLOAT || precision == ORV_TYP_COMPLEX;
  const int complex = single ? ORV_TYP_COMPLEX : ORV_TYP_DCOMPLEX;
  const long n = arguments.integer(order);
  const char* why = nullptr;
  if (function(precision) == nullptr) {
    why = "GENEIG: argument PRECISION must be 4, 5, 6 or 9";
  } else if (!holds(arguments, a, precision, n, true) || !holds(arguments, b, precision, n, true)) {
    why = "GENEIG: arguments A and B must be N by N";
  } else if (!holds(arguments, alpha, complex, n, false)) {
    why = "GENEIG: argument ALPHA must be a complex array of N values";
  } else if (!holds(arguments, beta, single ? ORV_TYP_FLOAT : ORV_TYP_DOUBLE, n, false)) {
    why = "GENEIG: argument BETA must be a real array of N values";
  } else if (arguments.present[vectors] && !holds(arguments, vectors, complex, n, true)) {
    why = "GENEIG: argument VECTORS must be a complex N by N array";
  }
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  Words words;
  arguments.add_value(words, order);
  for (int k : {a, b, alpha, beta}) arguments.add_address(words, k);
  arguments.add_options(words);
  words.end();
  words.call<void*>(function(precision));
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
