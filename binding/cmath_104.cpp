// BESSI, BESSJ, BESSK, BESSY: sequences of Bessel functions of complex arguments.
#include <cstdio>
#include <cstring>

#include "binding/routines.hpp"
#include "math/functions/bessel_arrays.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { order = 2, argument, n_orders, n_elements, label, result, position_count };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the computation: 9 double precision complex, 6 single"},
    status_position,
    {"ORDER", Kind::required, Type::any, "the first order, a real scalar: double for precision 9, else float"},
    {"Z", Kind::required, Type::complex, "arguments"},
    {"NORDERS", Kind::required, Type::integer, "how many orders: ORDER, ORDER + 1, ..."},
    {"COUNT", Kind::required, Type::integer, "number of arguments"},
    {"LABEL", Kind::required, Type::text, "BESSI, BESSJ, BESSK or BESSY"},
    {"RESULT", Kind::output, Type::complex, "array of COUNT by NORDERS values"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

struct BesselRow {
  const char* label;
  zent_f_complex* (*c)(const float*, const zent_f_complex*, long, ...);
  zent_d_complex* (*z)(const double*, const zent_d_complex*, long, ...);
};
constexpr BesselRow cmast_bessel_fcn_table[] = {
    {"BESSI", zent_c_bessel_Ix_adr, zent_z_bessel_Ix_adr},
    {"BESSJ", zent_c_bessel_Jx_adr, zent_z_bessel_Jx_adr},
    {"BESSK", zent_c_bessel_Kx_adr, zent_z_bessel_Kx_adr},
    {"BESSY", zent_c_bessel_Yx_adr, zent_z_bessel_Yx_adr},
};

const BesselRow* find_row(const char* text) {
  const BesselRow* found = nullptr;
  for (const BesselRow& row : cmast_bessel_fcn_table) {
    if (std::strcmp(row.label, text) == 0) found = &row;
  }
  return found;
}

bool refuse_argument(const char* routine, const char* what) {
  char text[128];
  std::snprintf(text, sizeof text, "%s: argument %s", routine, what);
  return refuse(text);
}

bool valid(const Arguments& a, const char* routine, bool is_double) {
  if (a.variable[order]->type != (is_double ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT)) {
    return refuse_argument(routine, is_double ? "ORDER must be double precision" : "ORDER must be single precision");
  }
  const long count = a.integer(n_elements), n = a.integer(n_orders);
  if (count > a.count[argument]) return refuse_argument(routine, "COUNT is greater than the number of elements of Z");
  if (count < 1 || n < 1) return true;  // for the library to refuse, or nothing to write
  if (a.data[result] == nullptr || n > a.count[result] / count) {
    return refuse_argument(routine, "RESULT must have room for COUNT by NORDERS values");
  }
  return true;
}

// One call for each element, so the error of the last is the one that is thrown.
template <class Real, class Record>
void run(Record* (*function)(const Real*, const Record*, long, ...), const Arguments& a) {
  functions::apply(function, *a.array<const Real>(order), a.array<const Record>(argument), a.integer(n_elements),
                   a.integer(n_orders), a.array<Record>(result));
}

}  // namespace

const Routine routine_104 = {104, "MATHSTAT_104", true, position_count, positions};

long mathstat_104(int argc, ORV_VARIABLE** argv, char*) {
  const bool named = argc > label && argv[label]->type == ORV_TYP_STRING;
  const char* const text = named ? ORV_VarGetString(argv[label]) : routine_104.label;
  const long failed = cmast_init(text);
  if (failed != 0) return failed;
  Routine routine = routine_104;
  routine.label = text;
  Arguments arguments;
  if (!read_arguments(routine, argc, argv, arguments)) return 0;
  const BesselRow* row = find_row(text);
  if (row == nullptr) return 0;
  const bool is_double = arguments.precision == ORV_TYP_DCOMPLEX;
  if (!valid(arguments, text, is_double)) return 0;
  if (is_double) {
    run(row->z, arguments);
  } else {
    run(row->c, arguments);
  }
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
