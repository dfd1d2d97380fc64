// Systems of linear equations with a general dense matrix.
#include "math/linalg/dense_options.hpp"
#include "math/linalg/lu_rows.hpp"

namespace zent::linalg {

namespace {

template <class T>
void parse(Options& options, DenseOptions<T>& o) {
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_TRANSPOSE:
        o.transpose = true;
        break;
      case ZENT_FACTOR:
        o.factor_storage = Storage::library;
        o.pvt_out = options.pointer<long*>();
        o.factor_out = options.pointer<T*>();
        break;
      case ZENT_FACTOR_USER:
        o.factor_storage = Storage::user;
        o.pvt = options.pointer<long>();
        o.factor = options.pointer<T>();
        not_null(o.pvt, "ipvt", "ZENT_FACTOR");
        if (o.factor == nullptr) raise<Math>(5, MATH_OPTIONAL_ARG_NULL_2, {.l = {"factor", "ZENT_FACTOR"}});
        break;
      default:
        if (!read_dense_option(code, options, o) && !read_condition_option(code, options, o) && !options.unknown<Math>(code)) {
          return;
        }
    }
  }
}

template <class T>
bool check(long n, const T* a, const T* b, const DenseOptions<T>& o) {
  if (!check_arguments(a, b, o, o.needs_matrix(), MATH_UNEXPECTED_NULL_POINTER) || !check_dimensions(n, o)) return false;
  if (!check_only_options(o)) return false;
  if (o.inverse_only && !o.wants_inverse()) {
    raise<Math>(5, MATH_INVERSE_ONLY_SPECIFIER);
  } else if (o.factor_only && !o.wants_factor()) {
    raise<Math>(5, MATH_FACTOR_ONLY_SPECIFIER);
  }
  return !failed<Math>();
}

// Column-major A in the place of b, which may be that of a.
template <class T>
void load_transposed(long n, const T* a, long lda, T* b, long ldb) {
  if (a != b) return copy_transposed(n, a, lda, b, ldb);
  copy_columns(n, a, lda, b, ldb);
  transpose_leading(n, b, ldb);
}

struct GeneralKernels {
  // Still in the kernels' orientation.
  template <class T>
  static bool factor(long n, const T* a, DenseOptions<T>& o) {
    T* work = scratch<Math, T>(n);
    if (o.factor_storage != Storage::user) {
      o.factor = result<Math, T>(area(n, o.fac_col_dim));
      o.pvt = result<Math, long>(n);
    }
    if (work == nullptr || o.factor == nullptr || o.pvt == nullptr) return no_memory<T>(n);
    load_transposed(n, a, o.a_col_dim, o.factor, o.fac_col_dim);
    o.factor_by_columns = true;
    RealOf<T> rcond = 0;
    const bool estimates = !o.factor_only || o.condition != nullptr;
    if (!factor_loaded<Math, T>(n, o.factor, o.fac_col_dim, o.pvt, estimates ? &rcond : nullptr, work)) return false;
    if (o.condition != nullptr) *o.condition = condition_number(rcond);
    return true;
  }

  template <class T>
  static bool solve(long n, const T* b, DenseOptions<T>& o) {
    if (!o.return_user) o.x = result<Math, T>(n);
    if (o.x == nullptr) return no_memory<T>(n);
    return o.solve_only ? solve_row_major<Math>(n, o.factor, o.fac_col_dim, o.pvt, b, o.transpose, o.x)
                        : lfsrg<Math>(n, o.factor, o.fac_col_dim, o.pvt, b, o.transpose ? 2L : 1L, o.x);
  }

  // With an inverse alone the kernels see A. Behind a solution they see the row-major array as the transpose of A, whose inverse
  // in their orientation is the row-major inverse.
  template <class T>
  static bool invert(long n, const T* a, DenseOptions<T>& o) {
    if (o.inverse_storage == Storage::library) o.inverse = result<Math, T>(area(n, o.inv_col_dim));
    T* work = scratch<Math, T>(area(n, std::min(n, inverse_block)));
    long* pvt = scratch<Math, long>(n);
    if (o.inverse == nullptr || work == nullptr || pvt == nullptr) return no_memory<T>(n);
    const long ld = o.inv_col_dim;
    if (o.inverse_only) {
      load_transposed(n, a, o.a_col_dim, o.inverse, ld);
    } else {
      copy_columns(n, a, o.a_col_dim, o.inverse, ld);
    }
    RealOf<T> rcond = 0;
    const bool done = l_l2nrg<Math>(n, o.inverse, ld, pvt, &rcond, work);
    if (o.inverse_only) {
      transpose_leading(n, o.inverse, ld);
      if (done && o.condition != nullptr) *o.condition = condition_number(rcond);
    }
    return done;
  }
};

template <class T>
T* l_lin_sol_gen(long n, T* a, T* b, Options& options) {
  DenseOptions<T> o(n);
  parse(options, o);
  return check(n, a, b, o) ? run_dense<GeneralKernels>(n, a, b, o) : nullptr;
}

}  // namespace

}  // namespace zent::linalg

ZENT_DENSE_FORM(lin_sol_gen, f, float)
ZENT_DENSE_FORM(lin_sol_gen, d, double)
ZENT_DENSE_FORM(lin_sol_gen, c, zent_f_complex)
ZENT_DENSE_FORM(lin_sol_gen, z, zent_d_complex)

#define ZENT_FORM(p, Real)                                                                                                    \
  extern "C" void zent_##p##l2trg(long n, const Real* a, long lda, Real* fac, long ldfac, long* pvt, Real* scale) {           \
    zent::linalg::l2trg<zent::Math>(n, a, lda, fac, ldfac, pvt, scale);                                                       \
  }                                                                                                                           \
  extern "C" void zent_##p##l2crg(long n, const Real* a, long lda, Real* fac, long ldfac, long* pvt, Real* rcond, Real* wk) { \
    zent::linalg::l2crg<zent::Math>(n, a, lda, fac, ldfac, pvt, rcond, wk);                                                   \
  }                                                                                                                           \
  extern "C" void zent_##p##lfsrg(long n, const Real* fac, long ldfac, const long* pvt, const Real* b, long ipath, Real* x) { \
    zent::linalg::lfsrg<zent::Math>(n, fac, ldfac, pvt, b, ipath, x);                                                         \
  }
ZENT_FORM(, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
