// Systems of linear equations with a symmetric nonnegative definite dense matrix, solved in the generalized sense.
#include "math/linalg/cholesky.hpp"
#include "math/linalg/cholesky_entries.hpp"
#include "math/linalg/dense_options.hpp"

namespace zent::linalg {

namespace {

// Unlike its siblings this function gives up at the first unknown code.
template <class Real>
bool parse(Options& options, DenseOptions<Real>& o) {
  while (const int code = options.code()) {
    if (code == ZENT_TOLERANCE) {
      o.tolerance = options.real<Real>();
    } else if (code == ZENT_TOLERANCE_ADR) {
      const Real* tolerance = options.pointer<Real>();
      not_null(tolerance, "tolerance", "ZENT_TOLERANCE_ADR");
      if (tolerance != nullptr) o.tolerance = *tolerance;
    } else if (!read_dense_option(code, options, o) && !read_symmetric_factor_option(code, options, o)) {
      raise<Math>(5, MATH_ILLEGAL_OPT_ARG, {.i = {code, options.position}});
      return false;
    }
  }
  return true;
}

template <class Real>
bool check(long n, const Real* a, const Real* b, const DenseOptions<Real>& o) {
  if (!check_arguments(a, b, o, !o.solve_only, MATH_UNEXPECTED_NULL_POINTER)) return false;
  long number = 0;
  if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
    return false;
  } else if (o.only_options() > 1) {
    number = MATH_BAD_SOLVE_FACTOR_INVERSE;
  } else if (o.solve_only && o.factor_storage != Storage::user) {
    number = MATH_SPECIFY_SOLVE_ONLY;
  } else if (o.solve_only && o.wants_inverse()) {
    number = MATH_BAD_SOLVE_ONLY;
  } else if (o.factor_only && !o.wants_factor()) {
    number = MATH_FACTOR_ONLY_SPECIFIER;
  } else if (o.factor_only && o.wants_inverse()) {
    number = MATH_BAD_FACTOR_ONLY;
  } else if (o.inverse_only && !o.wants_inverse()) {
    number = MATH_INVERSE_ONLY_SPECIFIER;
  } else if (o.inverse_only && o.wants_factor()) {
    number = MATH_BAD_INVERSE_ONLY;
  }
  if (number != 0) {
    raise<Math>(5, number);
    return false;
  }
  const auto too_few = [n](long dimension, const char* array) {
    raise<Math>(5, MATH_COLUMN_DIM_ERROR, {.i = {dimension, n}, .l = {array, "n"}});
    return false;
  };
  if (o.wants_inverse() && o.inv_col_dim < n) return too_few(o.inv_col_dim, "inva");
  return o.fac_col_dim >= n || too_few(o.fac_col_dim, "factor");
}

template <class Real>
bool no_space() {
  raise<Math>(5, MATH_OUT_OF_SPACE);
  return false;
}

// R in `factor`, its leading dimension fac_col_dim, the other triangle 0. Behind solve only it is a copy: the caller's factor is
// mirrored.
template <class Real>
bool obtain_factor(long n, Real* a, DenseOptions<Real>& o, Real*& factor) {
  factor = o.factor;
  if (o.solve_only) {
    factor = scratch<Math, Real>(area(n, n));
    if (factor == nullptr) return no_space<Real>();
    for (long j = 0; j < n; ++j) std::memcpy(factor + j * n, o.factor + j * o.fac_col_dim, sizeof(Real) * (j + 1));
    clear_below_diagonal(n, factor, n);
    o.fac_col_dim = n;
    return true;
  }
  if (o.factor_storage == Storage::library) factor = o.factor = result<Math, Real>(area(n, o.fac_col_dim));
  if (o.factor_storage == Storage::none) factor = scratch<Math, Real>(area(n, o.fac_col_dim));
  if (factor == nullptr) return no_space<Real>();
  if (factor == a) o.fac_col_dim = std::max(o.fac_col_dim, o.a_col_dim);
  long irank = 0;
  return chfac<Math, Real>(n, a, o.a_col_dim, o.tolerance, &irank, factor, o.fac_col_dim);
}

template <class Real>
bool solve(long n, const Real* b, const Real* factor, DenseOptions<Real>& o) {
  const long passes = o.inverse_only ? 0 : 1;
  if (o.inverse_only) {
    b = nullptr;
  } else if (!o.return_user) {
    o.x = result<Math, Real>(n);
    if (o.x == nullptr) return no_space<Real>();
  }
  if (o.inverse_storage == Storage::library) {
    o.inverse = result<Math, Real>(area(n, o.inv_col_dim));
    if (o.inverse == nullptr) return no_space<Real>();
  }
  long irank = 0;
  const long first = o.wants_inverse() ? 4 : 2;
  if (!girts<Math, Real>(n, factor, o.fac_col_dim, passes, b, n, first, &irank, o.x, n, o.inverse, o.inv_col_dim)) return false;
  // The second pass would make the same triangular inverse once more.
  return passes == 0 || girts<Math, Real>(n, factor, o.fac_col_dim, 1, o.x, n, 1, &irank, o.x, n, nullptr, o.inv_col_dim);
}

template <class Real>
Real* l_lin_sol_nonnegdef(long n, Real* a, Real* b, Options& options) {
  DenseOptions<Real> o(n);
  if (!parse(options, o)) return nullptr;
  if (!o.wants_factor() && !o.fac_col_dim_given && o.wants_inverse()) o.fac_col_dim = o.inv_col_dim;
  if (!check(n, a, b, o)) return nullptr;
  Real* factor = nullptr;
  if (!obtain_factor(n, a, o, factor)) return nullptr;
  if (!o.factor_only && !solve(n, b, factor, o)) return nullptr;
  if (o.wants_inverse()) {
    // T T' of the triangular generalized inverse T.
    multiply_triangle(n, o.inverse, o.inv_col_dim);
    kernel::mirror_upper(n, o.inverse, o.inv_col_dim);
  }
  if (!o.solve_only && o.wants_factor()) kernel::mirror_upper(n, factor, o.fac_col_dim);
  hand_over(n, o);
  return o.solves() ? o.x : nullptr;
}

}  // namespace

}  // namespace zent::linalg

ZENT_DENSE_FORM(lin_sol_nonnegdef, f, float)
ZENT_DENSE_FORM(lin_sol_nonnegdef, d, double)

ZENT_NONNEG_ENTRIES(zent::Math, zent)
