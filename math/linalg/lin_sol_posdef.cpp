// Systems of linear equations with a symmetric or Hermitian positive definite dense matrix.
#include "math/linalg/cholesky.hpp"
#include "math/linalg/dense_options.hpp"

namespace zent::linalg {

namespace {

template <class T>
void parse(Options& options, DenseOptions<T>& o) {
  while (const int code = options.code()) {
    if (!read_dense_option(code, options, o) && !read_condition_option(code, options, o) &&
        !read_symmetric_factor_option(code, options, o) && !options.unknown<Math>(code)) {
      return;
    }
  }
}

template <class T>
bool check(long n, const T* a, const T* b, const DenseOptions<T>& o) {
  return check_arguments(a, b, o, o.needs_matrix(), MATH_REQ_ARGUMENT_IS_NULL) && check_dimensions(n, o) && check_only_options(o);
}

struct DefiniteKernels {
  // The kernels see the row-major array as its transpose, so its lower triangle is the upper one that they read. Without memory
  // for the estimate's vector the call just ends.
  template <class T>
  static bool factor(long n, const T* a, DenseOptions<T>& o) {
    if (o.factor_storage != Storage::user) o.factor = result<Math, T>(area(n, o.fac_col_dim));
    if (o.factor == nullptr) {
      raise<Math>(5, MATH_NO_MEM_FOR_FAC);
      return false;
    }
    const long lda = o.a_col_dim;
    if (o.factor_only && o.condition == nullptr) return lftds<Math, T>(n, a, lda, o.factor, o.fac_col_dim);
    T* work = scratch<Math, T>(n);
    if (work == nullptr) return false;
    RealOf<T> rcond = 0;
    const bool done = l_l2cds<Math, T>(n, a, lda, o.factor, o.fac_col_dim, &rcond, work);
    if (done && o.condition != nullptr) *o.condition = condition_number(rcond);
    return done;
  }

  // The transpose that the kernels see is the conjugate of A: conj(A) conj(x) = conj(b).
  template <class T>
  static bool solve(long n, const T* b, DenseOptions<T>& o) {
    if (!o.return_user) o.x = result<Math, T>(n);
    if (o.x == nullptr) {
      raise<Math>(5, MATH_NO_MEM_FOR_SYS);
      return false;
    }
    for (long i = 0; i < n; ++i) o.x[i] = conj(b[i]);
    if (!lslrt<Math, T>(n, o.factor, o.fac_col_dim, o.x, 4, o.x)) return false;
    if (!lslrt<Math, T>(n, o.factor, o.fac_col_dim, o.x, 2, o.x)) return false;
    for (long i = 0; i < n; ++i) o.x[i] = conj(o.x[i]);
    return true;
  }

  template <class T>
  static bool invert(long n, const T* a, DenseOptions<T>& o) {
    if (o.inverse_storage == Storage::library) o.inverse = result<Math, T>(area(n, o.inv_col_dim));
    T* work = scratch<Math, T>(n);
    if (o.inverse == nullptr || work == nullptr) return no_memory<T>(n);
    RealOf<T> rcond = 0;
    const bool done = l_l2nds<Math, T>(n, a, o.a_col_dim, o.inverse, o.inv_col_dim, &rcond, work);
    if (done && o.inverse_only && o.condition != nullptr) *o.condition = condition_number(rcond);
    return done;
  }
};

template <class T>
T* l_lin_sol_posdef(long n, T* a, T* b, Options& options) {
  DenseOptions<T> o(n);
  parse(options, o);
  return check(n, a, b, o) ? run_dense<DefiniteKernels>(n, a, b, o) : nullptr;
}

}  // namespace

}  // namespace zent::linalg

ZENT_DENSE_FORM(lin_sol_posdef, f, float)
ZENT_DENSE_FORM(lin_sol_posdef, d, double)
ZENT_DENSE_FORM(lin_sol_posdef, c, zent_f_complex)
ZENT_DENSE_FORM(lin_sol_posdef, z, zent_d_complex)

#define ZENT_FORM(p, Real)                                                                               \
  extern "C" void zent_##p##lftds(long n, const Real* a, long lda, Real* fac, long ldfac) {              \
    zent::linalg::lftds<zent::Math>(n, a, lda, fac, ldfac);                                              \
  }                                                                                                      \
  extern "C" void zent_##p##lslrt(long n, const Real* a, long lda, const Real* b, long ipath, Real* x) { \
    zent::linalg::lslrt<zent::Math>(n, a, lda, b, ipath, x);                                             \
  }
ZENT_FORM(, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
