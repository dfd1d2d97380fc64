// The special functions and distributions of one to three real arguments, element by element, chosen by a label.
#include <cstdio>
#include <cstring>

#include "binding/function_table.hpp"
#include "binding/routines.hpp"
#include "math/functions/arrays.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

namespace {

enum { first = 2, count, flag, label, result, second, third, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"X", Kind::required, Type::real, "first argument of each element"},
    {"COUNT", Kind::required, Type::integer, "number of elements"},
    {"FLAG", Kind::required, Type::any, "nonzero: the alternate function of the label (an inverse or a derivative)"},
    {"LABEL", Kind::required, Type::text, "name of the function, such as \"ERF\"; see docs/functions.md"},
    {"RESULT", Kind::output, Type::real, "array of COUNT elements"},
    {"Y", Kind::optional, Type::real, "second argument; counts as an argument array when the position is there"},
    {"Z", Kind::optional, Type::real, "third argument, likewise"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

// The one with that label. The whole table is looked at: the last match counts.
const FunctionRow* find(const char* text) {
  const FunctionRow* found = nullptr;
  for (const FunctionRow& row : cmast_spcl_fcn_table) {
    if (std::strcmp(row.label, text) == 0) found = &row;
  }
  return found;
}

bool refuse_135(const char* name, const char* why) {
  char text[128];
  std::snprintf(text, sizeof text, "%s: %s", name, why);
  return refuse(text);
}

// Flags come in any real number type; 32 bits decide for integers.
bool flag_is_number(const Arguments& a) {
  const int type = a.variable[flag]->type;
  return type == ORV_TYP_BYTE || type == ORV_TYP_FLOAT || type == ORV_TYP_DOUBLE || type == ORV_TYP_INT64;
}
bool flag_is_set(const Arguments& a) {
  switch (a.variable[flag]->type) {
    case ORV_TYP_BYTE:
      return *a.array<unsigned char>(flag) != 0;
    case ORV_TYP_FLOAT:
      return *a.array<float>(flag) != 0;
    case ORV_TYP_DOUBLE:
      return *a.array<double>(flag) != 0;
    default:
      return *a.array<int>(flag) != 0;
  }
}

// Every array must hold `n` elements: the loop steps through all of them.
bool fits(const Arguments& a, const FunctionRow& row, int arrays, long n) {
  if (arrays < row.arrays) return refuse_135(row.label, arrays == 1 ? "argument Y is missing" : "argument Z is missing");
  const int used[] = {first, second, third};
  for (int k = 0; k < row.arrays; ++k) {
    if (!a.present[used[k]]) return refuse_135(row.label, k == 1 ? "argument Y is missing" : "argument Z is missing");
    if (a.count[used[k]] < n) return refuse_135(row.label, "an argument has fewer elements than COUNT");
  }
  if (a.data[result] == nullptr) return refuse_135(row.label, "argument RESULT must be an array of COUNT elements");
  if (a.count[result] < n) return refuse_135(row.label, "argument RESULT has fewer elements than COUNT");
  return true;
}

template <class Real>
void run(const Arguments& a, void* function, int arrays, long n) {
  const Real* x = a.array<Real>(first);
  const Real* y = a.array<Real>(second);
  const Real* z = a.array<Real>(third);
  Real* const out = a.array<Real>(result);
  if (!distributions::apply(function, n, x, y, z, out)) functions::apply(function, arrays, n, x, y, z, out);
}

}  // namespace

const Routine routine_135 = {135, "MATHSTAT_135", true, position_count, positions};

long mathstat_135(int argc, ORV_VARIABLE** argv, char*) {
  const bool has_text = argc > label && argv[label]->type == ORV_TYP_STRING;
  const char* const text = has_text ? ORV_VarGetString(argv[label]) : routine_135.label;
  const long failed = cmast_init(text);
  if (failed != 0) return failed;
  const FunctionRow* const row = has_text ? find(text) : nullptr;
  if (has_text && row == nullptr) return 0;  // silently, like every table of kinds; the routine layer passes labels of the table
  Routine routine = routine_135;
  if (row != nullptr) routine.label = row->label;
  Arguments a;
  if (!read_arguments(routine, argc, argv, a)) return 0;
  if (!flag_is_number(a)) {
    refuse_135(row->label, "argument FLAG must be a number");
    return 0;
  }
  const bool other = flag_is_set(a);
  void* const function = a.is_double() ? (other ? row->other_real : row->real) : (other ? row->other_single : row->single);
  if (function == nullptr) {
    if (!other || row->has_other) refuse_135(row->label, "this function is not available");
    return 0;
  }
  const long n = a.integer(count);
  const int arrays = 1 + (argc > second ? 1 : 0) + (argc > third ? 1 : 0);
  if (!fits(a, *row, arrays, n)) return 0;
  if (a.is_double()) {
    run<double>(a, function, row->arrays, n);
  } else {
    run<float>(a, function, row->arrays, n);
  }
  long code;
  cmast_opi_clear_errors(row->is_math ? 1 : 0, &code, a.status, 1);
  return 0;
}

}  // namespace zent::binding
