// Options, checks and workers of the public functions for symmetric and Hermitian matrices.
#pragma once

#include "math/eigen/sym_paths.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::eigen {

template <class T>
struct SymmetricOptions {
  using Real = RealOf<T>;
  bool pencil;  // b is given: there is no range
  long a_col_dim = 0, b_col_dim = 0, evec_col_dim = 0;
  T** vectors = nullptr;
  T* vectors_user = nullptr;
  bool to_library = false, to_user = false, range = false;
  Real elow = 0, ehigh = 0;
  long* number = nullptr;
  Real* eval_user = nullptr;
};

// Options of a range; false when the code is none of them.
template <class T>
bool parse_range_option(int code, Options& list, SymmetricOptions<T>& options) {
  using Real = RealOf<T>;
  switch (code) {
    case ZENT_RANGE:
      options.elow = list.real<Real>();
      options.ehigh = list.real<Real>();
      options.range = true;
      return true;
    case ZENT_RANGE_ADR:
      options.elow = *list.pointer<Real>();
      options.ehigh = *list.pointer<Real>();
      options.range = true;
      return true;
    case ZENT_RETURN_NUMBER:
      options.number = list.pointer<long>();
      return true;
    default:
      return false;
  }
}

template <class T>
void parse_symmetric(long n, Options& list, SymmetricOptions<T>& options) {
  options.a_col_dim = options.b_col_dim = options.evec_col_dim = n;
  while (const int code = list.code()) {
    switch (code) {
      case ZENT_A_COL_DIM:
        options.a_col_dim = list.integer();
        continue;
      case ZENT_VECTORS:
        options.vectors = list.pointer<T*>();
        options.to_library = true;
        options.to_user = false;
        continue;
      case ZENT_VECTORS_USER:
        options.vectors_user = list.pointer<T>();
        options.to_user = true;
        options.to_library = false;
        continue;
      case ZENT_EVECU_COL_DIM:
        options.evec_col_dim = list.integer();
        continue;
      case ZENT_RETURN_USER:
        options.eval_user = list.pointer<RealOf<T>>();
        continue;
      default:
        break;
    }
    if (options.pencil && code == ZENT_B_COL_DIM) {
      options.b_col_dim = list.integer();
    } else if (options.pencil || !parse_range_option(code, list, options)) {
      if (!list.unknown<Math>(code)) break;
    }
  }
  if (options.vectors != nullptr) *options.vectors = nullptr;
}

// The first fault found is the one reported; b is null where there is no second matrix.
template <class T>
void check_symmetric(long n, const T* a, const T* b, const SymmetricOptions<T>& options) {
  if (failed<Math>()) return;
  const auto short_columns = [n](long columns, const char* name) {
    if (n > columns && !failed<Math>()) raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {n, columns}, .l = {name}});
  };
  if (a == nullptr || (options.pencil && b == nullptr)) {
    raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {a == nullptr ? "a" : "b"}});
  } else if (options.to_user && options.vectors_user == nullptr) {
    raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {"evecu", "ZENT_VECTORS_USER"}});
  } else if (options.to_library && options.vectors == nullptr) {
    raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {"evec", "ZENT_VECTORS"}});
  } else if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  } else {
    short_columns(options.a_col_dim, "a");
    if (options.pencil) short_columns(options.b_col_dim, "b");
    short_columns(options.evec_col_dim, "evecu");
    if (failed<Math>() || !options.range) return;
    if (options.to_user) {
      raise<Math>(5, MATH_USE_MATH_VECTORS_OPTION);
    } else {
      check_range<Math>(n, n, n, options.elow, options.ehigh, n);
    }
  }
}

// The lower triangle of a row-major matrix as that of a column-major one, in tiles that stay in the cache.
template <class T>
void copy_lower(long n, const T* a, long a_col_dim, T* work) {
  constexpr long tile = 16;
  for (long first = 0; first < n; first += tile) {
    const long last = std::min(first + tile, n);
    for (long i = first; i < n; ++i) {
      for (long j = first; j < std::min(last, i + 1); ++j) work[i + j * n] = a[i * a_col_dim + j];
    }
  }
}

// The paths. eval has room for n. Vectors asked for without storage of the caller's come in *evec, not kept yet.
template <class T>
bool run_symmetric(Problem<T>& p, const SymmetricOptions<T>& options, RealOf<T>* eval, long* neval, T** evec) {
  const bool vectors = options.to_user || options.to_library;
  *neval = p.n;
  if (options.range) {
    return vectors ? l_e3fsf<Math>(p, options.elow, options.ehigh, p.n, eval, neval, evec)
                   : l_e5bsf<Math>(p, options.elow, options.ehigh, eval, neval);
  }
  if (!vectors) return l_e4lsf<Math>(p, eval);
  *evec = options.to_user ? options.vectors_user : result<Math, T>(p.n * p.n);
  return *evec != nullptr && l_e5csf<Math>(p, eval, *evec, options.to_user ? options.evec_col_dim : p.n);
}

// Results go to the caller only now that nothing can fail any more.
template <class T>
RealOf<T>* hand_over(const SymmetricOptions<T>& options, RealOf<T>* eval, long neval, T* evec) {
  if (options.number != nullptr) *options.number = neval;
  if (options.to_library) {
    keep<Math>(evec);
    *options.vectors = evec;
  }
  if (options.eval_user == nullptr) keep<Math>(eval);
  return eval;
}

template <class T>
RealOf<T>* l_eig_sym(long n, const T* a, Options& list) {
  using Real = RealOf<T>;
  SymmetricOptions<T> options = {.pencil = false};
  parse_symmetric(n, list, options);
  check_symmetric<T>(n, a, nullptr, options);
  if (failed<Math>()) return nullptr;
  if constexpr (kernel::ComplexRecord<T>) {
    for (long i = 0; i < n; ++i) {
      const Real imaginary = a[i * (options.a_col_dim + 1)].im;
      if (imaginary == 0) continue;
      raise<Math>(4, MATH_HERMITIAN_DIAG_REAL, {.i = {i}, .r = {static_cast<double>(imaginary)}});
      return nullptr;
    }
  }
  Problem<T> problem;
  long neval = 0;
  T* evec = nullptr;
  Real* eval = options.eval_user != nullptr ? options.eval_user : result<Math, Real>(n);
  T* work = scratch<Math, T>(square(n));
  if (eval == nullptr || work == nullptr || !make_problem<Math>(n, work, n, problem)) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  copy_lower(n, a, options.a_col_dim, work);
  if (!run_symmetric(problem, options, eval, &neval, &evec)) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  return hand_over(options, eval, neval, evec);
}

}  // namespace zent::eigen

// Two forms: the letter of the name, the element and the type of the values.
#define ZENT_SYMMETRIC_FORM(P, name, T, Real)                                                                                   \
  extern "C" Real* zent_##P##_##name(long n, T* a, ...) {                                                                       \
    ZENT_OPTIONS(options, a, 2);                                                                                                \
    Real* eval = zent::public_call<zent::Math>("zent_" #P "_" #name, [&] { return zent::eigen::l_eig_sym<T>(n, a, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                  \
    return eval;                                                                                                                \
  }
