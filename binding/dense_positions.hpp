// What the wrappers of the dense solvers share: a label that an argument chooses, four element types, arrays of told sizes.
#pragma once

#include "binding/least_squares_positions.hpp"

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

// The forms of one function, as the value of a DenseForms.
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

// Names a call, reads its arguments and finds the function of its precision; null after an argument that is refused, and without
// any word for a precision that has no function. What is not 0 the wrapper returns.
inline long open_call(const Routine& routine, const DenseForms& forms, int argc, ORV_VARIABLE** argv, Arguments& arguments,
                      void*& function) {
  function = nullptr;
  const long failed = cmast_init(routine.label);
  if (failed != 0) return failed;
  if (argc > 0 && argv[0]->type == ORV_TYP_INT64) {
    long count = 0;
    void* data = nullptr;
    ORV_VarGetData(argv[0], &count, &data, 0);
    if (count > 0 && data != nullptr && forms.at(*static_cast<const int*>(data)) == nullptr) return 0;
  }
  if (read_arguments(routine, argc, argv, arguments)) function = forms.at(arguments.precision);
  return 0;
}

inline constexpr Position condition_position = {
    "CONDITION", Kind::optional, Type::any, "receives the condition number, a real", ZENT_CONDITION, Pass::address};

// Refuses a given array of fewer than n by n elements.
inline bool holds_square(const Arguments& arguments, int k, long n) {
  return holds(arguments, k, n, n);
}

// A real of the computation's precision, also beside complex elements.
inline bool is_real(const Arguments& arguments, int k) {
  if (!arguments.present[k]) return true;
  if (arguments.variable[k]->type == arguments.real_type()) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s must be real, in the precision of the computation", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

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

// A call of a routine with three labels, one for each kind of matrix.
struct DenseCall {
  static constexpr int selector = 2;  // the positions that both such routines begin with
  static constexpr int order = 3;
  static constexpr int matrix = 4;

  long kind = -1;  // 0 general, 1 positive definite, 2 nonnegative definite
  void* function = nullptr;
  Routine routine;  // under the label of the kind
  Arguments arguments;

  // As open_call; a selector that is none is passed over in silence too, unless it is of a wrong type.
  long open(const Routine& table, const char* const (&labels)[3], int argc, ORV_VARIABLE** argv) {
    constexpr DenseForms none = {};
    kind = dense_selector(argc, argv, selector);
    routine = table;
    if (kind >= 0) routine.label = labels[kind];
    const bool unknown = kind < 0 && argc > selector && argv[selector]->type == ORV_TYP_INT64;
    const long failed = open_call(routine, unknown ? none : dense_forms[kind < 0 ? 0 : kind], argc, argv, arguments, function);
    if (kind < 0) function = nullptr;
    return failed;
  }
  long n() const {
    return arguments.integer(order);
  }
  // The library does not know how many words follow an option of other kinds, so that is refused here.
  bool goes(int k, bool with_kind) const {
    if (!arguments.present[k] || with_kind) return true;
    static char text[160];
    std::snprintf(text, sizeof text, "%s: argument %s does not go with this routine", routine.label, routine.positions[k].name);
    return refuse(text);
  }
  bool options_fit(int condition, int transpose, int inverse, int tolerance) const {
    return goes(condition, kind < 2) && goes(transpose, kind == 0) && goes(tolerance, kind == 2) &&
           is_real(arguments, condition) && is_real(arguments, tolerance) && holds_square(arguments, inverse, n());
  }
  // The option with which a factor goes in and out: general ones have pivots.
  void add_factor(Words& words, int pivots, int factor) const {
    words.option(ZENT_FACTOR_USER);
    if (kind == 0) words.add(arguments.data[pivots]);
    words.add(arguments.data[factor]);
  }
};

// Calls a solver for what it writes into its arguments, and leaves the wrapper.
inline long finish(const Arguments& arguments, Words& words, void* function) {
  words.end();
  words.call<void*>(function);
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
