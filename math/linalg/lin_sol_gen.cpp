// Systems of linear equations with a general dense matrix.
#include "math/linalg/dense_options.hpp"
#include "math/linalg/lu.hpp"

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
        null_value(o.pvt, "ipvt", "ZENT_FACTOR");
        if (o.factor == nullptr) raise<Math>(5, MATH_OPTIONAL_ARG_NULL_2, {.l = {"factor", "ZENT_FACTOR"}});
        break;
      case ZENT_CONDITION:
        o.condition = options.pointer<RealOf<T>>();
        null_value(o.condition, "cond", "ZENT_CONDITION");
        break;
      default:
        if (!read_dense_option(code, options, o) && !options.unknown<Math>(code)) return;
    }
  }
}

template <class T>
bool check(long n, const T* a, const T* b, const DenseOptions<T>& o) {
  if (a == nullptr && o.needs_matrix()) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"a"}});
  if (b == nullptr && !o.factor_only && !o.inverse_only) raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"b"}});
  if (failed<Math>() || !check_dimensions(n, o) || !check_only_options(o)) return false;
  if (o.inverse_only && !o.wants_inverse()) {
    raise<Math>(5, MATH_INVERSE_ONLY_SPECIFIER);
  } else if (o.factor_only && !o.wants_factor()) {
    raise<Math>(5, MATH_FACTOR_ONLY_SPECIFIER);
  }
  return !failed<Math>();
}

template <class T>
bool no_memory(long n) {
  raise_out_of_memory<Math>({n}, {"n"});
  return false;
}

// Column-major A in the place of b, which may be that of a.
template <class T>
void load_transposed(long n, const T* a, long lda, T* b, long ldb) {
  if (a != b) return copy_transposed(n, a, lda, b, ldb);
  copy_columns(n, a, lda, b, ldb);
  transpose_leading(n, b, ldb);
}

// Factors A into the factor's storage, still in the kernels' orientation.
template <class T>
bool factor(long n, const T* a, T* work, DenseOptions<T>& o) {
  load_transposed(n, a, o.a_col_dim, o.factor, o.fac_col_dim);
  if (o.factor_only && o.condition == nullptr) {
    return factor_loaded<Math, T>(n, o.factor, o.fac_col_dim, o.pvt, nullptr, work);
  }
  RealOf<T> rcond = 0;
  const bool done = factor_loaded<Math, T>(n, o.factor, o.fac_col_dim, o.pvt, &rcond, work);
  if (done && o.condition != nullptr) *o.condition = condition_number(rcond);
  return done;
}

// Storage for the factor where the caller gives none.
template <class T>
bool provide_factor(long n, DenseOptions<T>& o) {
  if (o.factor_storage == Storage::user) return true;
  o.factor = result<Math, T>(area(n, o.fac_col_dim));
  o.pvt = result<Math, long>(n);
  return o.factor != nullptr && o.pvt != nullptr;
}

template <class T>
bool solve(long n, const T* b, DenseOptions<T>& o) {
  if (!o.return_user) o.x = result<Math, T>(n);
  if (o.x == nullptr) return no_memory<T>(n);
  return o.solve_only ? solve_row_major<Math>(n, o.factor, o.fac_col_dim, o.pvt, b, o.transpose, o.x)
                      : lfsrg<Math>(n, o.factor, o.fac_col_dim, o.pvt, b, o.transpose ? 2L : 1L, o.x);
}

// With an inverse alone the kernels see A. Behind a solution they see the row-major array as the transpose of A, whose inverse in
// their orientation is the row-major inverse.
template <class T>
bool invert(long n, const T* a, DenseOptions<T>& o) {
  if (o.inverse_storage == Storage::library) o.inverse = result<Math, T>(area(n, o.inv_col_dim));
  T* work = scratch<Math, T>(area(n, inverse_block));
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

template <class T>
void hand_over(long n, const DenseOptions<T>& o, bool factored) {
  if (factored && o.factor_storage == Storage::library) {
    clear_unused_columns(n, o.factor, o.fac_col_dim);
    keep<Math>(*o.factor_out = o.factor);
    keep<Math>(*o.pvt_out = o.pvt);
  }
  if (o.inverse_storage == Storage::library) {
    clear_unused_columns(n, o.inverse, o.inv_col_dim);
    keep<Math>(*o.inverse_out = o.inverse);
  }
  if (o.x != nullptr && !o.return_user) keep<Math>(o.x);
}

template <class T>
T* l_lin_sol_gen(long n, T* a, T* b, Options& options) {
  DenseOptions<T> o(n);
  parse(options, o);
  if (!check(n, a, b, o)) return nullptr;
  if (o.factor_storage == Storage::user && o.factor == a) o.fac_col_dim = std::max(o.a_col_dim, o.fac_col_dim);
  const bool factors = !o.inverse_only && !o.solve_only, solves = !o.inverse_only && !o.factor_only;
  if (!o.return_user) o.x = nullptr;
  // The inverse needs A, so a factor that takes its place comes second.
  const bool in_place = factors && o.factor_storage == Storage::user && o.factor == a;
  bool done = !(in_place && o.wants_inverse()) || invert(n, a, o);
  T* work = done && factors ? scratch<Math, T>(n) : nullptr;
  if (done && factors) done = (work != nullptr && provide_factor(n, o)) || no_memory<T>(n);
  const bool loads = done && factors;
  if (loads) done = factor(n, a, work, o);
  if (done && solves) done = solve(n, b, o);
  if (loads && o.wants_factor()) transpose_leading(n, o.factor, o.fac_col_dim);
  if (done && o.wants_inverse() && !in_place) done = invert(n, a, o);
  if (!done) return nullptr;
  hand_over(n, o, factors);
  return solves ? o.x : nullptr;
}

}  // namespace

}  // namespace zent::linalg

#define ZENT_FORM(P, T)                                                                                     \
  extern "C" T* zent_##P##_lin_sol_gen(long n, T* a, T* b, ...) {                                           \
    ZENT_OPTIONS(options, b, 3);                                                                            \
    T* x = zent::public_call<zent::Math>("zent_" #P "_lin_sol_gen",                                         \
                                         [&] { return zent::linalg::l_lin_sol_gen<T>(n, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                              \
    return x;                                                                                               \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
ZENT_FORM(c, zent_f_complex)
ZENT_FORM(z, zent_d_complex)
#undef ZENT_FORM

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
