// What the wrappers of the dense solvers share: a label that an argument chooses, four element types, arrays of told sizes.
#pragma once

#include <cstdio>

#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

// One column for each type code 4, 5, 6, 9; null for any other precision.
struct DenseForms {
  void* of[4];

  void* at(int precision) const {
    switch (precision) {
      case ORV_TYP_FLOAT:
        return of[0];
      case ORV_TYP_DOUBLE:
        return of[1];
      case ORV_TYP_COMPLEX:
        return of[2];
      case ORV_TYP_DCOMPLEX:
        return of[3];
      default:
        return nullptr;
    }
  }
};

#define ZENT_DENSE_FORMS(name)                                                                                                \
  {                                                                                                                           \
    {                                                                                                                         \
      reinterpret_cast<void*>(zent_f_##name), reinterpret_cast<void*>(zent_d_##name), reinterpret_cast<void*>(zent_c_##name), \
          reinterpret_cast<void*>(zent_z_##name)                                                                              \
    }                                                                                                                         \
  }

inline const DenseForms dense_forms[3] = {
    ZENT_DENSE_FORMS(lin_sol_gen),
    ZENT_DENSE_FORMS(lin_sol_posdef),
    {{reinterpret_cast<void*>(zent_f_lin_sol_nonnegdef), reinterpret_cast<void*>(zent_d_lin_sol_nonnegdef), nullptr, nullptr}},
};
#undef ZENT_DENSE_FORMS

// The selector at `position`, read before the table is because it chooses the label; -1 when it is none.
inline long dense_selector(int argc, ORV_VARIABLE** argv, int position) {
  if (argc <= position || argv[position]->type != ORV_TYP_INT64) return -1;
  long count = 0;
  void* data = nullptr;
  ORV_VarGetData(argv[position], &count, &data, 0);
  if (count < 1 || data == nullptr) return -1;
  const long selector = *static_cast<const long*>(data);
  return selector >= 0 && selector <= 2 ? selector : -1;
}

// Refuses an array of fewer than `needed` elements, or of an order too large to be one.
inline bool holds(const Arguments& arguments, int k, long needed) {
  if (!arguments.present[k] || arguments.count[k] >= needed) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s has fewer elements than the order N asks for", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

inline long dense_area(long n) {
  long elements = 0;
  return n < 1 ? 0 : __builtin_mul_overflow(n, n, &elements) ? 0x7fffffffffffffff : elements;
}

// A real of the computation's precision, also beside complex elements.
inline bool is_real(const Arguments& arguments, int k) {
  if (!arguments.present[k]) return true;
  const bool twice = arguments.precision == ORV_TYP_DOUBLE || arguments.precision == ORV_TYP_DCOMPLEX;
  if (arguments.variable[k]->type == (twice ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT)) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s must be real, in the precision of the computation", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

}  // namespace zent::binding
