// The error bridge: messages of the library become messages of the host.
#include <cstring>

#include "binding/cmast.h"

namespace {

// A list that lost a row would leave nulls at the end of its table.
constexpr long math_rows = 0
#define E(name, number, tarn) +1
#include "zent/math_errors.def"
#undef E
    ;
constexpr long stat_rows = 0
#define E(name, number, tarn) +1
#define REPEAT E
#include "zent/stat_errors.def"
#undef E
#undef REPEAT
    ;
static_assert(math_rows == cmath_err_table_rows && stat_rows == cstat_err_table_rows);

constexpr const char* err_name[] = {nullptr,       "Note",           "Alert",   "Warning",
                                    "Fatal error", "Terminal error", "Warning", "Fatal error"};

// An error of the error system itself ends the process, so it has to be shown at once.
constexpr long internal_error = 8;

const char* type_text(long type) {
  return type >= 0 && type < internal_error ? err_name[type] : "Terminal error";
}

// The first row wins: later rows of a number that stands twice are never found by it.
template <class Matches>
const cmast_err_row* find_row(long is_math, Matches matches) {
  const cmast_err_row* const table = is_math == 1 ? cmath_err_table : cstat_err_table;
  const long rows = is_math == 1 ? cmath_err_table_rows : cstat_err_table_rows;
  for (long k = 0; k < rows; ++k) {
    if (matches(table[k])) return &table[k];
  }
  return nullptr;
}

}  // namespace

extern "C" {

const cmast_err_row cmath_err_table[cmath_err_table_rows] = {
#define E(name, number, tarn) {#name, number, tarn},
#include "zent/math_errors.def"
#undef E
};
const cmast_err_row cstat_err_table[cstat_err_table_rows] = {
#define E(name, number, tarn) {#name, number, tarn},
#define REPEAT E
#include "zent/stat_errors.def"
#undef E
#undef REPEAT
};

const char* cmast_err_name_from_number(long number, long is_math, long use_zent_number) {
  const auto* const row =
      find_row(is_math, [=](const cmast_err_row& r) { return (use_zent_number != 0 ? r.number : r.tarn) == number; });
  return row != nullptr ? row->name : "<unknown error>";
}

long cmast_zent_num_tarn_num(long number, long is_math, long from_zent) {
  const auto* const row =
      find_row(is_math, [=](const cmast_err_row& r) { return (from_zent != 0 ? r.number : r.tarn) == number; });
  if (row == nullptr) return -1;
  return from_zent != 0 ? row->tarn : row->number;
}

long cmast_err_number_from_name(const char* name, long is_math, long want_zent) {
  if (name == nullptr) return -1;
  const auto* const row = find_row(is_math, [=](const cmast_err_row& r) { return std::strcmp(r.name, name) == 0; });
  if (row == nullptr) return -1;
  return want_zent != 0 ? row->number : row->tarn;
}

void ORV_ZENT_err_print_proc(long type, long number, const char* /*frame*/, const char* text, long is_stat) {
  const long is_math = is_stat == 0;
  const char* const label = curr_fcn_name[curr_fcn_idx];
  const char* const name = cmast_err_name_from_number(number, is_math, 1);
  if (type <= 3 || type == internal_error) {
    ORV_MessageFromBlock(_ORV_orv_zent_msg_block, ORV_M_ZENT_LIBRARYERROR, ORV_MSG_INFO, label, type_text(type), name, text);
  } else {
    ORV_MessageSyscode2FromBlock(_ORV_orv_zent_msg_block, ORV_M_ZENT_LIBRARYERROR, 1, 0, ORV_MSG_SAVE, &errState, label,
                                 type_text(type), name, text);
  }
  cmast_opi_err_code = cmast_zent_num_tarn_num(number, is_math, 1);
}

void cmath_err_print_proc(long type, long number, const char* frame, const char* text) {
  ORV_ZENT_err_print_proc(type, number, frame, text, 0);
}

void cstat_err_print_proc(long type, long number, const char* frame, const char* text) {
  ORV_ZENT_err_print_proc(type, number, frame, text, 1);
}
}
