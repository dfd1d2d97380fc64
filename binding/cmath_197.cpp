// ZEROPOLY: all zeros of a polynomial.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { ndeg = 2, coef, companion, result, unused, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the coefficients: 5 double, 4 single, 9 and 6 complex"},
    status_position,
    {"NDEG", Kind::required, Type::integer, "degree"},
    {"COEF", Kind::required, Type::field, "NDEG + 1 coefficients, that of the constant first"},
    {"COMPANION", Kind::optional, Type::any, "present: by the eigenvalues of the companion matrix", ZENT_COMPANION, Pass::flag},
    {"RESULT", Kind::output, Type::any, "the zeros, a complex array of NDEG", ZENT_RETURN_USER, Pass::address},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

void* function_of(int precision) {
  switch (precision) {
    case ORV_TYP_FLOAT:
      return reinterpret_cast<void*>(zent_f_zeros_poly);
    case ORV_TYP_DOUBLE:
      return reinterpret_cast<void*>(zent_d_zeros_poly);
    case ORV_TYP_COMPLEX:
      return reinterpret_cast<void*>(zent_c_zeros_poly);
    case ORV_TYP_DCOMPLEX:
      return reinterpret_cast<void*>(zent_z_zeros_poly);
    default:
      return nullptr;
  }
}

// The library trusts the sizes and types that it is told. A degree below 1 is for the library to refuse.
const char* refusal(const Arguments& arguments) {
  const long n = arguments.integer(ndeg);
  if (function_of(arguments.precision) == nullptr) return "ZEROPOLY: argument PRECISION must be 4, 5, 6 or 9";
  if (n >= arguments.count[coef]) return "ZEROPOLY: argument COEF must have NDEG + 1 elements";
  const int type = arguments.real_type() == ORV_TYP_DOUBLE ? ORV_TYP_DCOMPLEX : ORV_TYP_COMPLEX;
  if (!arguments.present[result] || arguments.count[result] < n || arguments.variable[result]->type != type) {
    return "ZEROPOLY: argument RESULT must be a complex array of NDEG elements";
  }
  return nullptr;
}

}  // namespace

const Routine routine_197 = {197, "ZEROPOLY", true, position_count, positions};

long mathstat_197(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("ZEROPOLY");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_197, argc, argv, arguments)) return 0;
  const char* const why = refusal(arguments);
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  Words words;
  arguments.add_value(words, ndeg);
  arguments.add_address(words, coef);
  arguments.add_options(words);
  words.end();
  words.call<void*>(function_of(arguments.precision));
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
