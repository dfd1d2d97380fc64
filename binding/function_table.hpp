// The table of special functions and distributions by host label.
#pragma once

namespace zent::binding {

struct FunctionRow {
  const char* label;
  int arrays;  // argument arrays that the functions take
  void* single;
  void* real;
  void* other_single;  // the alternate functions, chosen by a flag; null without one
  void* other_real;
  bool has_other;
  bool is_math;  // whose error state the wrapper reads
};

inline constexpr int function_rows = 33;
extern const FunctionRow cmast_spcl_fcn_table[function_rows];

}  // namespace zent::binding
