// The options that the three dense solvers have in common, and their tests.
#pragma once

#include "math/linalg/dense.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::linalg {

// How storage for an output was asked for.
enum class Storage { none, library, user };

template <class T>
struct DenseOptions {
  using Real = RealOf<T>;
  long a_col_dim, fac_col_dim, inv_col_dim;
  bool transpose = false, factor_only = false, solve_only = false, inverse_only = false;
  bool fac_col_dim_given = false;
  Storage factor_storage = Storage::none, inverse_storage = Storage::none;
  long** pvt_out = nullptr;  // general matrices
  T** factor_out = nullptr;
  long* pvt = nullptr;
  T* factor = nullptr;
  T** inverse_out = nullptr;
  T* inverse = nullptr;
  bool return_user = false;
  T* x = nullptr;
  Real* condition = nullptr;
  Real tolerance = 100 * Machine<Real>::epsilon;

  explicit DenseOptions(long n) : a_col_dim(n), fac_col_dim(n), inv_col_dim(n) {}

  bool wants_factor() const {
    return factor_storage != Storage::none;
  }
  bool wants_inverse() const {
    return inverse_storage != Storage::none;
  }
  bool needs_matrix() const {  // a factor serves for a solution, but not for an inverse
    return !solve_only || wants_inverse();
  }
  int only_options() const {
    return factor_only + solve_only + inverse_only;
  }
};

inline void null_value(const void* value, const char* argument, const char* option) {
  if (value == nullptr) raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {argument, option}});
}

// The options of which all three functions know: false for another code.
template <class T>
bool read_dense_option(int code, Options& options, DenseOptions<T>& o) {
  switch (code) {
    case ZENT_A_COL_DIM:
      o.a_col_dim = options.integer();
      return true;
    case ZENT_FAC_COL_DIM:
      o.fac_col_dim = options.integer();
      o.fac_col_dim_given = true;
      return true;
    case ZENT_INV_COL_DIM:
      o.inv_col_dim = options.integer();
      return true;
    case ZENT_FACTOR_ONLY:
      o.factor_only = true;
      return true;
    case ZENT_SOLVE_ONLY:
      o.solve_only = true;
      return true;
    case ZENT_INVERSE_ONLY:
      o.inverse_only = true;
      return true;
    case ZENT_INVERSE:
      o.inverse_storage = Storage::library;
      o.inverse_out = options.pointer<T*>();
      return true;
    case ZENT_INVERSE_USER:
      o.inverse_storage = Storage::user;
      o.inverse = options.pointer<T>();
      null_value(o.inverse, "inva", "ZENT_INVERSE_USER");
      return true;
    case ZENT_RETURN_USER:
      o.return_user = true;
      o.x = options.pointer<T>();
      null_value(o.x, "x", "ZENT_RETURN_USER");
      return true;
    default:
      return false;
  }
}

// The symmetric solvers' factor, which has no pivots.
template <class T>
bool read_symmetric_factor_option(int code, Options& options, DenseOptions<T>& o) {
  if (code == ZENT_FACTOR) {
    o.factor_storage = Storage::library;
    o.factor_out = options.pointer<T*>();
    return true;
  }
  if (code != ZENT_FACTOR_USER) return false;
  o.factor_storage = Storage::user;
  o.factor = options.pointer<T>();
  null_value(o.factor, "factor", "ZENT_FACTOR_USER");
  return true;
}

// Order and column dimensions; false after an error.
template <class T>
bool check_dimensions(long n, const DenseOptions<T>& o) {
  if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
    return false;
  }
  bool right = true;
  const auto check = [&](long dimension, const char* array) {
    if (n <= dimension) return;
    raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {n, dimension}, .l = {array}});
    right = false;
  };
  check(o.a_col_dim, "a");
  check(o.fac_col_dim, "factor");
  if (o.wants_inverse()) check(o.inv_col_dim, "inva");
  return right;
}

// "Only" options against each other and against the solution's condition number; false after an error.
template <class T>
bool check_only_options(const DenseOptions<T>& o) {
  long number = 0;
  if (o.only_options() > 1) {
    number = MATH_BAD_SOLVE_FACTOR_INVERSE;
  } else if (o.solve_only && o.factor_storage != Storage::user) {
    number = MATH_SPECIFY_SOLVE_ONLY;
  } else if (o.solve_only && o.condition != nullptr) {
    number = MATH_CONDITION_ONLY_SPECIFIER;
  }
  if (number != 0) raise<Math>(5, number);
  return number == 0;
}

}  // namespace zent::linalg
