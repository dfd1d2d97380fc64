// Eigenvalues and vectors of symmetric definite pencils: A x = lambda B x.
#include "math/eigen/sym_options.hpp"

namespace zent::eigen {

namespace {

constexpr long block_width = 64;

// B = L L' over the lower triangle, block by block. Returns 0, or the order of the first leading submatrix that is not positive
// definite.
template <class Real>
long factor(long n, Real* b) {
  for (long k = 0; k < n; k += block_width) {
    const long width = std::min(block_width, n - k), rest = n - k - width;
    Real* corner = b + k * (n + 1);
    for (long j = 0; j < width; ++j) {
      Real* column = corner + j * (n + 1);
      for (long p = 0; p < j; ++p) fast::axpy(width - j, -corner[j + p * n], corner + j + p * n, 1, column, 1);
      if (!(column[0] > 0) || !(column[0] <= Machine<Real>::largest)) return k + j + 1;
      fast::scal(width - j, 1 / std::sqrt(column[0]), column, 1);
    }
    if (rest < 1) continue;
    Real* below = corner + width;
    fast::trsm('R', 'L', 'T', 'N', rest, width, 1, corner, n, below, n);
    fast::syrk('L', 'N', rest, width, -1, below, n, 1, corner + width * (n + 1), n);
  }
  return 0;
}

// As the workers for pencils ask, whoever calls them.
void check_pencil(long n, long lda, long ldb) {
  if (lda < n) {
    raise<Math>(5, MATH_LDA_VALUE_TOO_SMALL, {.i = {lda, n}});
  } else if (ldb < n) {
    raise<Math>(5, MATH_NEED_LDB_GE_MATRIX_ORDER, {.i = {ldb, n}});
  }
}

// Factor of b over its column-major lower triangle; raises the error that the caller sees.
template <class Real>
bool l_lftds(long n, Real* b) {
  const long order = factor(n, b);
  if (order == 0) return true;
  raise<Math>(4, MATH_SUBMATRIX_NOT_POS_DEFINITE, {.i = {order}});
  raise<Math>(4, MATH_MATRIX_B_NOT_POS_DEFINITE);
  return false;
}

// Scales the n by n lower triangle to a largest modulus near 1 and returns the exponent of the power of two that undoes it;
// matrices near the ends of the range could overflow or vanish in the factor or in the reduction.
template <class Real>
int normalise(long n, Real* a) {
  const Real largest = largest_modulus(n, a, n);
  if (largest == 0 || !(largest <= Machine<Real>::largest)) return 0;
  const Real by = scale_factor(largest);
  for (long j = 0; j < n && by != 1; ++j) fast::scal(n - j, by, a + j * (n + 1), 1);
  return -std::ilogb(by);
}

// A := inverse of L times A times inverse of L', in full.
template <class Real>
void reduce_pencil(long n, Real* a, const Real* b) {
  for (long j = 0; j < n; ++j) {
    for (long i = j + 1; i < n; ++i) a[j + i * n] = a[i + j * n];
  }
  fast::trsm('L', 'L', 'N', 'N', n, n, 1, b, n, a, n);
  fast::trsm('R', 'L', 'T', 'N', n, n, 1, b, n, a, n);
}

// Values by decreasing magnitude and the vectors x = inverse of L' times y, normed.
template <class Real>
bool l_g3csp(Problem<Real>& p, const Real* b, Real* eval, Real* evec, long ldevec) {
  const long n = p.n;
  Real* v = scratch<Math, Real>(n * n);
  Real* key = scratch<Math, Real>(n);
  long* order = scratch<Math, long>(n);
  if (!v || !key || !order || !unsorted_vectors<Math>(p, v, n)) return false;
  if (p.finite) fast::trsm('L', 'L', 'T', 'N', n, n, 1, b, n, v, n);
  for (long j = 0; j < n; ++j) {
    Real* column = v + j * n;
    const Real top = std::abs(column[fast::iamax(n, column, 1) - 1]);
    if (top > 0) fast::scal(n, 1 / top, column, 1);  // an element that is not finite has become a not-a-number by now
    const Real norm = fast::nrm2(n, column, 1);
    if (norm > 0) fast::scal(n, 1 / norm, column, 1);
  }
  order_by_magnitude<Math>(n, p.d, key, order);
  for (long i = 0; i < n; ++i) eval[i] = p.d[order[i]];
  turn_vectors(n, n, v, n);
  store_vectors(n, n, v, n, order, evec, ldevec);
  return true;
}

template <class Real>
Real* l_eig_symgen(long n, const Real* a, const Real* b, Options& list) {
  SymmetricOptions<Real> options = {.pencil = true};
  parse_symmetric(n, list, options);
  check_symmetric<Real>(n, a, b, options);
  if (!failed<Math>()) check_pencil(n, options.a_col_dim, options.b_col_dim);
  if (failed<Math>()) return nullptr;
  const bool vectors = options.to_user || options.to_library;
  Problem<Real> problem;
  Real* eval = options.eval_user != nullptr ? options.eval_user : result<Math, Real>(n);
  Real* evec = !vectors ? nullptr : options.to_user ? options.vectors_user : result<Math, Real>(square(n));
  Real* work_a = scratch<Math, Real>(square(n));
  Real* work_b = scratch<Math, Real>(square(n));
  bool enough = eval && (evec || !vectors) && work_a && work_b && make_problem<Math>(n, work_a, n, problem);
  if (enough) {
    copy_lower(n, b, options.b_col_dim, work_b);
    const int exponent_b = normalise(n, work_b);
    if (!l_lftds(n, work_b)) return nullptr;
    copy_lower(n, a, options.a_col_dim, work_a);
    const int exponent_a = normalise(n, work_a);
    reduce_pencil(n, work_a, work_b);
    enough =
        vectors ? l_g3csp(problem, work_b, eval, evec, options.to_user ? options.evec_col_dim : n) : l_e4lsf<Math>(problem, eval);
    for (long i = 0; enough && i < n; ++i) eval[i] = std::ldexp(eval[i], exponent_a - exponent_b);
  }
  if (!enough) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  return hand_over(options, eval, n, evec);
}

}  // namespace

}  // namespace zent::eigen

#define ZENT_FORM(P, Real)                                                                                         \
  extern "C" Real* zent_##P##_eig_symgen(long n, Real* a, Real* b, ...) {                                          \
    ZENT_OPTIONS(options, b, 3);                                                                                   \
    Real* eval = zent::public_call<zent::Math>("zent_" #P "_eig_symgen",                                           \
                                               [&] { return zent::eigen::l_eig_symgen<Real>(n, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                     \
    return eval;                                                                                                   \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
