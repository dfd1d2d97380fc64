// Systems of linear equations with a symmetric or Hermitian positive definite dense matrix.
#include "math/linalg/cholesky.hpp"
#include "math/linalg/dense_options.hpp"

namespace zent::linalg {

namespace {

template <class T>
void parse(Options& options, DenseOptions<T>& o) {
  while (const int code = options.code()) {
    if (code == ZENT_CONDITION) {
      o.condition = options.pointer<RealOf<T>>();
      null_value(o.condition, "cond", "ZENT_CONDITION");
    } else if (!read_dense_option(code, options, o) && !read_symmetric_factor_option(code, options, o) &&
               !options.unknown<Math>(code)) {
      return;
    }
  }
}

template <class T>
bool check(long n, const T* a, const T* b, const DenseOptions<T>& o) {
  if (a == nullptr && o.needs_matrix()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"a"}});
  if (b == nullptr && !o.factor_only && !o.inverse_only) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"b"}});
  return !failed<Math>() && check_dimensions(n, o) && check_only_options(o);
}

// The kernels see the row-major array as its transpose, so its lower triangle is the upper one that they read. Without memory for
// the estimate's vector the call just ends.
template <class T>
bool factor(long n, T* a, DenseOptions<T>& o) {
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
bool solve(long n, const T* b, DenseOptions<T>& o) {
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
bool invert(long n, const T* a, DenseOptions<T>& o) {
  if (o.inverse_storage == Storage::library) o.inverse = result<Math, T>(area(n, o.inv_col_dim));
  T* work = scratch<Math, T>(n);
  if (o.inverse == nullptr || work == nullptr) {
    raise_out_of_memory<Math>({n}, {"n"});
    return false;
  }
  RealOf<T> rcond = 0;
  const bool done = l_l2nds<Math, T>(n, a, o.a_col_dim, o.inverse, o.inv_col_dim, &rcond, work);
  if (done && o.inverse_only && o.condition != nullptr) *o.condition = condition_number(rcond);
  return done;
}

template <class T>
void hand_over(long n, const DenseOptions<T>& o, bool factored) {
  if (factored && o.factor_storage == Storage::library) {
    clear_unused_columns(n, o.factor, o.fac_col_dim);
    keep<Math>(*o.factor_out = o.factor);
  }
  if (o.inverse_storage == Storage::library) {
    clear_unused_columns(n, o.inverse, o.inv_col_dim);
    keep<Math>(*o.inverse_out = o.inverse);
  }
  if (o.x != nullptr && !o.return_user) keep<Math>(o.x);
}

template <class T>
T* l_lin_sol_posdef(long n, T* a, T* b, Options& options) {
  DenseOptions<T> o(n);
  parse(options, o);
  if (!check(n, a, b, o)) return nullptr;
  if (o.factor_storage == Storage::user && o.factor == a) o.fac_col_dim = std::max(o.a_col_dim, o.fac_col_dim);
  const bool factors = !o.inverse_only && !o.solve_only, solves = !o.inverse_only && !o.factor_only;
  // The inverse needs A, so a factor that takes its place comes second.
  const bool in_place = factors && o.factor_storage == Storage::user && o.factor == a;
  bool done = !(in_place && o.wants_inverse()) || invert(n, a, o);
  if (done && factors) done = factor(n, a, o);
  if (done && solves) done = solve(n, b, o);
  if (done && o.wants_inverse() && !in_place) done = invert(n, a, o);
  if (!done) return nullptr;
  hand_over(n, o, factors);
  return solves ? o.x : nullptr;
}

}  // namespace

}  // namespace zent::linalg

#define ZENT_FORM(P, T)                                                                                        \
  extern "C" T* zent_##P##_lin_sol_posdef(long n, T* a, T* b, ...) {                                           \
    ZENT_OPTIONS(options, b, 3);                                                                               \
    T* x = zent::public_call<zent::Math>("zent_" #P "_lin_sol_posdef",                                         \
                                         [&] { return zent::linalg::l_lin_sol_posdef<T>(n, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                 \
    return x;                                                                                                  \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
ZENT_FORM(c, zent_f_complex)
ZENT_FORM(z, zent_d_complex)
#undef ZENT_FORM

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
