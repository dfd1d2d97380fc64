// Eigenvalues and eigenvectors of general pencils.
#include "math/eigen/gen_common.hpp"
#include "math/eigen/qz.hpp"
#include "math/eigen/qzvectors.hpp"

namespace zent::eigen {

namespace {

// What counts as zero beside a matrix: the machine epsilon times its Frobenius norm, which has room in the range it was scaled
// to.
template <class T>
kernel::RealOf<T> negligible(long n, const T* a) {
  return Machine<kernel::RealOf<T>>::epsilon * fast::nrm2(n * n, a, 1);
}

template <class T>
void export_pencil_vectors(long n, const ComplexFor<T>* alpha, const T* v, ComplexFor<T>* work, ComplexFor<T>* out, long ld) {
  for (long k = 0; k < n; ++k, v += n) {
    if constexpr (kernel::ComplexRecord<T>) {
      export_column(n, v, work, out + k, ld);
    } else {
      const auto sign = alpha[k].im;
      const T* re = sign < 0 ? v - n : v;
      export_column(n, re, sign == 0 ? nullptr : re + n, sign < 0, work, out + k, ld);
    }
  }
}

// Values in alpha and beta; with vectors, the columns of p.z times those of the triangle into `v`. False after an error.
template <class T>
bool l_g8crg(Pencil<T>& p, ComplexFor<T>* alpha, kernel::RealOf<T>* beta, T* v, ComplexFor<T>* work) {
  const long n = p.n;
  if (p.z != nullptr) {
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < n; ++i) p.z[i + j * n] = i == j ? kernel::from_real<T>(1) : T{};
    }
  }
  l_g3crg(p);
  if (!l_g4crg(p)) {
    raise<Math>(4, MATH_SLOW_CONVERGENCE_GEN, {.i = {50}});
    return false;
  }
  l_g5crg(p, alpha, beta);
  if (p.z == nullptr) return true;
  l_g6crg(p, alpha, beta, v, work);
  fast::gemm('N', 'N', n, n, n, kernel::from_real<T>(1), p.z, n, v, n, T{}, p.a, n);
  return true;
}

template <class T>
void l_geneig(long n, const T* a, const T* b, ComplexFor<T>* alpha, kernel::RealOf<T>* beta, Options& options) {
  using Real = kernel::RealOf<T>;
  using C = ComplexFor<T>;
  const GeneralOptions<T> o = general_options<T>(n, true, options);
  if (o.vectors != nullptr) *o.vectors = nullptr;
  require(a, "a");
  require(b, "b");
  require(alpha, "alpha");
  require(beta, "beta");
  check_general(n, true, o);
  if (failed<Math>()) return;
  const bool wanted = o.wants_vectors();
  long size = 0;
  const bool fits = !__builtin_mul_overflow(n, n, &size);
  Pencil<T> p{n, nullptr, nullptr, nullptr, 0, 0};
  p.a = fits ? scratch<Math, T>(size) : nullptr;
  p.b = fits ? scratch<Math, T>(size) : nullptr;
  p.z = fits && wanted ? scratch<Math, T>(size) : nullptr;
  T* v = fits && wanted ? scratch<Math, T>(size) : nullptr;
  C* values = fits ? scratch<Math, C>(2 * n) : nullptr;
  Real* weights = fits ? scratch<Math, Real>(n) : nullptr;
  C* vectors = fits && wanted ? vector_storage(n, o) : nullptr;
  if (!p.a || !p.b || !values || !weights || (wanted && (!p.z || !v || !vectors))) {
    raise_out_of_memory<Math>({n}, {"n"});
    return;
  }
  const Real largest_a = largest_part(n, a, o.a_col_dim), largest_b = largest_part(n, b, o.b_col_dim);
  constexpr Real nan = Machine<Real>::not_a_number;
  if (largest_a > Machine<Real>::largest || largest_b > Machine<Real>::largest) {
    for (long k = 0; k < n; ++k) {
      alpha[k] = {nan, nan};
      beta[k] = nan;
    }
    for (long i = 0; i < n && wanted; ++i) {
      for (long j = 0; j < n; ++j) vectors[i * o.vector_row(n) + j] = {nan, nan};
    }
  } else {
    const Real factor_a = range_scale(largest_a), factor_b = range_scale(largest_b);
    import_matrix(n, a, o.a_col_dim, factor_a, p.a);
    import_matrix(n, b, o.b_col_dim, factor_b, p.b);
    p.eps_a = negligible(n, p.a);
    p.eps_b = negligible(n, p.b);
    if (!l_g8crg(p, values, weights, v, values + n)) return;
    if (wanted) export_pencil_vectors(n, values, p.a, values + n, vectors, o.vector_row(n));
    for (long k = 0; k < n; ++k) {
      alpha[k] = (1 / factor_a) * values[k];
      beta[k] = weights[k] / factor_b;
    }
  }
  if (o.wants_library) {
    keep<Math>(vectors);
    *o.vectors = vectors;
  }
}

}  // namespace

}  // namespace zent::eigen

#define ZENT_FORM(P, T, C, Real)                                                                                        \
  extern "C" void zent_##P##_geneig(long n, T* a, T* b, C* alpha, Real* beta, ...) {                                    \
    ZENT_OPTIONS(options, beta, 5);                                                                                     \
    zent::public_call<zent::Math>("zent_" #P "_geneig", [&] { zent::eigen::l_geneig(n, a, b, alpha, beta, options); }); \
    ZENT_OPTIONS_END(options);                                                                                          \
  }
ZENT_FORM(f, float, zent_f_complex, float)
ZENT_FORM(d, double, zent_d_complex, double)
ZENT_FORM(c, zent_f_complex, zent_f_complex, float)
ZENT_FORM(z, zent_d_complex, zent_d_complex, double)
#undef ZENT_FORM
