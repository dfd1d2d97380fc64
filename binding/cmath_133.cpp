// EIG: eigenvalues and vectors of a general, symmetric or Hermitian matrix.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { order = 2, a, values, vectors, symmetric, low, high, number, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the matrix: 5 double, 4 single, 9 and 6 complex"},
    status_position,
    {"N", Kind::required, Type::integer, "order of the matrix"},
    {"A", Kind::required, Type::field, "matrix, n by n; of a symmetric or Hermitian one the lower triangle is read"},
    {"VALUES", Kind::output, Type::any, "the n eigenvalues, an array of the caller's: complex, or real with SYMMETRIC",
     ZENT_RETURN_USER, Pass::address},
    {"VECTORS", Kind::optional, Type::any,
     "receives the eigenvectors in its columns, n by n: complex, or of the type of A with SYMMETRIC", ZENT_VECTORS_USER,
     Pass::address},
    {"SYMMETRIC", Kind::optional, Type::any, "present: A is symmetric, or Hermitian if complex"},
    {"ELOW", Kind::optional, Type::any, "with SYMMETRIC and without VECTORS: lower end of the range of eigenvalues wanted, real",
     ZENT_RANGE_ADR, Pass::address},
    {"EHIGH", Kind::optional, Type::any, "upper end of the range, real", continues, Pass::address},
    {"NUMBER", Kind::optional, Type::integer, "with SYMMETRIC: receives the number of eigenvalues found", ZENT_RETURN_NUMBER,
     Pass::address},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

// Rows: general, symmetric or Hermitian; columns: single, double and their complex types.
void* const functions[2][4] = {{reinterpret_cast<void*>(zent_f_eig_gen), reinterpret_cast<void*>(zent_d_eig_gen),
                                reinterpret_cast<void*>(zent_c_eig_gen), reinterpret_cast<void*>(zent_z_eig_gen)},
                               {reinterpret_cast<void*>(zent_f_eig_sym), reinterpret_cast<void*>(zent_d_eig_sym),
                                reinterpret_cast<void*>(zent_c_eig_herm), reinterpret_cast<void*>(zent_z_eig_herm)}};

int column_of(int precision) {
  switch (precision) {
    case ORV_TYP_FLOAT:
      return 0;
    case ORV_TYP_DOUBLE:
      return 1;
    case ORV_TYP_COMPLEX:
      return 2;
    case ORV_TYP_DCOMPLEX:
      return 3;
    default:
      return -1;
  }
}

// The library trusts the sizes and types that it is told; the variables tell their own.
bool holds(const Arguments& arguments, int k, int type, long n, bool square) {
  const long count = arguments.count[k];
  return arguments.variable[k]->type == type && (n < 1 || (n <= count && (!square || n <= count / n)));
}

const char* refusal(const Arguments& arguments, int column, bool hermitian, long n) {
  const bool single = column % 2 == 0;
  const int real = single ? ORV_TYP_FLOAT : ORV_TYP_DOUBLE, complex = single ? ORV_TYP_COMPLEX : ORV_TYP_DCOMPLEX;
  if (!holds(arguments, a, column < 2 ? real : complex, n, true)) return "EIG: argument A is smaller than the order N asks for";
  if (!arguments.present[values] || !holds(arguments, values, hermitian ? real : complex, n, false)) {
    return "EIG: argument VALUES must be an array of N values, real with SYMMETRIC and else complex";
  }
  if (arguments.present[vectors] && !holds(arguments, vectors, hermitian && column < 2 ? real : complex, n, true)) {
    return "EIG: argument VECTORS must be an N by N array, real for a real matrix with SYMMETRIC and else complex";
  }
  if (arguments.present[low] != arguments.present[high]) return "EIG: arguments ELOW and EHIGH must be given together";
  if (!hermitian && (arguments.present[low] || arguments.present[number])) {
    return "EIG: arguments ELOW, EHIGH and NUMBER need SYMMETRIC";
  }
  if (arguments.present[low] && !(holds(arguments, low, real, 1, false) && holds(arguments, high, real, 1, false))) {
    return "EIG: arguments ELOW and EHIGH must be real, of the precision of the matrix";
  }
  return nullptr;
}

}  // namespace

const Routine routine_133 = {133, "EIG", true, position_count, positions};

long mathstat_133(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("EIG");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_133, argc, argv, arguments)) return 0;
  const int column = column_of(arguments.precision);
  if (column < 0) {
    refuse("EIG: argument PRECISION must be 4, 5, 6 or 9");
    return 0;
  }
  const bool hermitian = arguments.present[symmetric];
  const char* why = refusal(arguments, column, hermitian, arguments.integer(order));
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  Words words;
  arguments.add_value(words, order);
  arguments.add_address(words, a);
  arguments.add_options(words);
  words.end();
  words.call<void*>(functions[hermitian][column]);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
