// The options that the three dense solvers have in common, and their tests.
#pragma once

#include "math/linalg/dense.hpp"
#include "math/optional_argument.hpp"
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
  bool factor_by_columns = false;  // as the kernels see it: it still has to be turned for the caller
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
  bool factors() const {
    return !inverse_only && !solve_only;
  }
  bool solves() const {
    return !inverse_only && !factor_only;
  }
  int only_options() const {
    return factor_only + solve_only + inverse_only;
  }
};

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
      not_null(o.inverse, "inva", "ZENT_INVERSE_USER");
      return true;
    case ZENT_RETURN_USER:
      o.return_user = true;
      o.x = options.pointer<T>();
      not_null(o.x, "x", "ZENT_RETURN_USER");
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
  not_null(o.factor, "factor", "ZENT_FACTOR_USER");
  return true;
}

// The estimate of the condition number, which two of the functions give.
template <class T>
bool read_condition_option(int code, Options& options, DenseOptions<T>& o) {
  if (code != ZENT_CONDITION) return false;
  o.condition = options.pointer<RealOf<T>>();
  not_null(o.condition, "cond", "ZENT_CONDITION");
  return true;
}

// a and b where the call needs them; `number` is the error for a null one. False after any error so far.
template <class T>
bool check_arguments(const T* a, const T* b, const DenseOptions<T>& o, bool needs_matrix, long number) {
  if (a == nullptr && needs_matrix) raise<Math>(5, number, {.l = {"a"}});
  if (b == nullptr && !o.factor_only && !o.inverse_only) raise<Math>(5, number, {.l = {"b"}});
  return !failed<Math>();
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

template <class T>
bool no_memory(long n) {
  raise_out_of_memory<Math>({n}, {"n"});
  return false;
}

// What the library made for the caller becomes his.
template <class T>
void hand_over(long n, const DenseOptions<T>& o) {
  const bool gives_factor = o.factors() && o.factor_storage == Storage::library;
  const bool gives_inverse = o.inverse_storage == Storage::library;
  if (gives_factor) {
    clear_unused_columns(n, o.factor, o.fac_col_dim);
    *o.factor_out = o.factor;
    if (o.pvt != nullptr) *o.pvt_out = o.pvt;
  }
  if (gives_inverse) {
    clear_unused_columns(n, o.inverse, o.inv_col_dim);
    *o.inverse_out = o.inverse;
  }
  // Kept behind the last access to what the caller named: a bad address must not cost them.
  if (gives_factor) keep<Math>(o.factor);
  if (gives_factor) keep<Math>(o.pvt);
  if (gives_inverse) keep<Math>(o.inverse);
  if (o.x != nullptr && !o.return_user) keep<Math>(o.x);
}

// The worker behind the checks. `Kernels` are the factorization, the solution and the inverse of a kind of matrix, each false
// after an error.
template <class Kernels, class T>
T* run_dense(long n, T* a, const T* b, DenseOptions<T>& o) {
  const bool in_place = o.factor_storage == Storage::user && o.factor == a;
  if (in_place) o.fac_col_dim = std::max(o.a_col_dim, o.fac_col_dim);
  // The inverse needs A, so a factor that takes its place comes second.
  const bool inverse_first = o.wants_inverse() && o.factors() && in_place;
  bool done = !inverse_first || Kernels::invert(n, a, o);
  if (done && o.factors()) done = Kernels::factor(n, a, o);
  if (done && o.solves()) done = Kernels::solve(n, b, o);
  if (o.factor_by_columns && o.wants_factor()) transpose_leading(n, o.factor, o.fac_col_dim);
  if (done && o.wants_inverse() && !inverse_first) done = Kernels::invert(n, a, o);
  if (!done) return nullptr;
  hand_over(n, o);
  return o.solves() ? o.x : nullptr;
}

}  // namespace zent::linalg

// A form of a dense solver.
#define ZENT_DENSE_FORM(name, P, T)                                                                                          \
  extern "C" T* zent_##P##_##name(long n, T* a, T* b, ...) {                                                                 \
    ZENT_OPTIONS(options, b, 3);                                                                                             \
    T* x = zent::public_call<zent::Math>("zent_" #P "_" #name, [&] { return zent::linalg::l_##name<T>(n, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                               \
    return x;                                                                                                                \
  }
