// Eigenvalues and eigenvectors of general matrices.
#include "math/eigen/balance.hpp"
#include "math/eigen/gen_common.hpp"
#include "math/eigen/genvalues.hpp"
#include "math/eigen/hessenberg.hpp"
#include "runtime/kernels/support.hpp"

namespace zent::eigen {

namespace {

// The matrix in work, and what the computation leaves in it.
template <class T>
struct General {
  using Real = kernel::RealOf<T>;
  using C = ComplexFor<T>;
  static constexpr bool complex = kernel::ComplexRecord<T>;

  long n;
  T *h, *z, *y, *work;  // matrix; transformation and then vectors; both only with vectors: y n by n, work for the reduction
  Real *balance, *wr, *wi, *buffer;
  Step<Real>* steps;
  C* w;
  long* index;
  Real scale;  // what the balanced matrix was multiplied by

  bool allocate(long order, bool vectors) {
    n = order;
    long size = 0;
    if (__builtin_mul_overflow(n, n, &size)) return false;
    h = scratch<Math, T>(size);
    balance = scratch<Math, Real>(3 * n);
    w = scratch<Math, C>(2 * n);
    index = scratch<Math, long>(n);
    z = vectors ? scratch<Math, T>(size) : nullptr;
    y = vectors ? scratch<Math, T>(size) : nullptr;
    work = vectors ? scratch<Math, T>(hessenberg_work(n)) : nullptr;
    const bool batches = vectors && !complex;
    steps = batches ? scratch<Math, Step<Real>>(Batch<Real>::step_room(n)) : nullptr;
    buffer = batches ? scratch<Math, Real>(buffer_width * n) : nullptr;
    wr = balance + n;
    wi = wr + n;
    return h && balance && w && index && (!vectors || (z && y && work)) && (!batches || (steps && buffer));
  }

  void join_values() {
    if constexpr (!complex) {
      for (long i = 0; i < n; ++i) w[i] = {wr[i], wi[i]};
    }
  }

  // Balances the matrix. Of one that was graded over more than the range of squares only tiny elements may be left.
  Block balance_matrix(bool scaling) {
    const Block block = l_e9crg(n, h, n, balance, scaling);
    scale = range_scale(largest_part(n, h, n));
    for (long i = 0; i < n * n && scale != 1; ++i) h[i] = scale * h[i];
    return block;
  }

  // Values alone. Only the block that balancing leaves is reduced; the others stand on the diagonal.
  void l_e3lrg() {
    const Block block = balance_matrix(true);
    const long size = block.high - block.low + 1;
    T* active = h + block.low + block.low * n;
    l_e4lrg(size, active, n);
    if constexpr (complex) {
      l_e3cch<Math>(size, 0, size - 1, active, n, w + block.low, static_cast<T*>(nullptr), 0);
    } else {
      l_e5lrg<Math>(n, size, active, wr + block.low, wi + block.low);
    }
    for (long i = 0; i < n; ++i) {
      if (i >= block.low && i <= block.high) continue;
      if constexpr (complex) {
        w[i] = h[i + i * n];
      } else {
        wr[i] = h[i + i * n];
        wi[i] = 0;
      }
    }
    join_values();
  }

  // Values and vectors; false after an error. `wide` tells whether balancing scaled by more than a digit or two, yet not by so
  // much that the matrix could not do without. With `scaling` false only its exchanges are made.
  bool l_e8crg(bool scaling, bool& wide) {
    const Block block = balance_matrix(scaling);
    Real least = 1, most = 1;
    for (long i = block.low; i <= block.high; ++i) {
      least = std::fmin(least, balance[i]);
      most = std::fmax(most, balance[i]);
    }
    wide = most / least > 64 && scale == 1;
    l_eacrg(n, block.low, block.high, h, n, work);
    l_ebcrg(n, block.low, block.high, h, n, z, n, work);
    if constexpr (complex) {
      if (!l_e3cch<Math>(n, block.low, block.high, h, n, w, z, n)) return false;
      l_e3lcg(n, h, n, w, z, n, y);
    } else {
      if (!l_e5crh<Math>(n, block.low, block.high, h, n, wr, wi, z, n, y, steps, buffer)) return false;
      join_values();
    }
    l_e6crg(n, block, balance, n, z, n);
    return true;
  }

  // Largest residual of the vectors in z for the matrix a, column-major, each relative to its vector and to the matrix. Uses y.
  Real residual(const T* a) const {
    constexpr T one = kernel::from_real<T>(1);
    fast::gemm('N', 'N', n, n, n, one, a, n, z, n, T{}, y, n);
    const Real norm = fast::nrm2(n * n, a, 1);
    Real worst = 0;
    for (long k = 0; k < n; ++k) {
      const T* x = z + k * n;
      T* r = y + k * n;
      long columns = 1;
      if constexpr (complex) {
        fast::axpy(n, -w[k], x, 1, r, 1);
      } else {
        fast::axpy(n, -wr[k], x, 1, r, 1);
        if (wi[k] != 0) {  // a (u + iv) = (wr + i wi) (u + iv)
          columns = 2;
          fast::axpy(n, wi[k], x + n, 1, r, 1);
          fast::axpy(n, -wr[k], x + n, 1, r + n, 1);
          fast::axpy(n, -wi[k], x, 1, r + n, 1);
          ++k;
        }
      }
      const Real size = fast::nrm2(columns * n, x, 1) * norm;
      if (size > 0) worst = std::fmax(worst, fast::nrm2(columns * n, r, 1) / size);
    }
    return worst;
  }

  // index[k]: where the k-th largest value stands. The sort is stable, so a conjugate pair keeps its order.
  void sort() {
    for (long i = 0; i < n; ++i) {
      index[i] = i;
      balance[i] = -modulus(w[i]);
    }
    kernel::sort_with_index<Math>(n, balance, balance, index);
  }

  void export_values(Real factor, C* values) const {
    for (long k = 0; k < n; ++k) values[k] = factor * ((1 / scale) * w[index[k]]);
  }
  void export_vectors(C* vectors, long ld) const {
    for (long k = 0; k < n; ++k) {
      const long from = index[k];
      const T* v = z + from * n;
      C* column = vectors + k;
      if constexpr (complex) {
        export_column(n, v, w + n, column, ld);
      } else {
        const Real sign = w[from].im;
        const Real* re = sign < 0 ? v - n : v;
        export_column(n, re, sign == 0 ? nullptr : re + n, sign < 0, w + n, column, ld);
      }
    }
  }
};

template <class C>
void fill_nan(long rows, long columns, C* v, long ld) {
  constexpr auto nan = Machine<kernel::RealOf<C>>::not_a_number;
  for (long i = 0; i < rows; ++i) {
    for (long j = 0; j < columns; ++j) v[i * ld + j] = {nan, nan};
  }
}

// Scaling can enlarge the rounding errors of the vectors, above all of matrices that are Hessenberg already (Watkins 2006): where
// it did, once more without. False after an error.
template <class T>
bool values_and_vectors(General<T>& g, const T* a, long ld, kernel::RealOf<T> factor) {
  using Real = kernel::RealOf<T>;
  bool wide = false;
  import_matrix(g.n, a, ld, factor, g.h);
  if (!g.l_e8crg(true, wide)) return false;
  if (!wide) return true;
  import_matrix(g.n, a, ld, factor, g.h);
  if (!(g.residual(g.h) > 4 * std::sqrt(static_cast<Real>(g.n)) * Machine<Real>::epsilon)) return true;
  return g.l_e8crg(false, wide);
}

template <class T>
ComplexFor<T>* l_eig_gen(long n, const T* a, Options& options) {
  using Real = kernel::RealOf<T>;
  using C = ComplexFor<T>;
  const GeneralOptions<T> o = general_options<T>(n, false, options);
  if (o.vectors != nullptr) *o.vectors = nullptr;
  require(a, "a");
  check_general(n, false, o);
  const bool wanted = o.wants_vectors();
  if (wanted && !failed<Math>()) check_sizes(n, o.a_col_dim, o.vector_row(n));
  if (failed<Math>()) return nullptr;
  General<T> g;
  C* values = o.values_user != nullptr ? o.values_user : result<Math, C>(n);
  C* vectors = wanted && values != nullptr ? vector_storage(n, o) : nullptr;
  if (values == nullptr || (wanted && vectors == nullptr) || !g.allocate(n, wanted)) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  const Real largest = largest_part(n, a, o.a_col_dim);
  if (largest > Machine<Real>::largest) {
    fill_nan(1, n, values, n);
    if (wanted) fill_nan(n, n, vectors, o.vector_row(n));
  } else {
    const Real factor = range_scale(largest);
    if (!wanted) {
      import_matrix(n, a, o.a_col_dim, factor, g.h);
      g.l_e3lrg();
    } else if (!values_and_vectors(g, a, o.a_col_dim, factor)) {
      return nullptr;
    }
    g.sort();
    g.export_values(1 / factor, values);
    if (wanted) g.export_vectors(vectors, o.vector_row(n));
  }
  if (o.values_user == nullptr) keep<Math>(values);
  if (o.wants_library) {
    keep<Math>(vectors);
    *o.vectors = vectors;
  }
  return values;
}

}  // namespace

}  // namespace zent::eigen

#define ZENT_FORM(P, T, C)                                                                                                   \
  extern "C" C* zent_##P##_eig_gen(long n, T* a, ...) {                                                                      \
    ZENT_OPTIONS(options, a, 2);                                                                                             \
    C* values = zent::public_call<zent::Math>("zent_" #P "_eig_gen", [&] { return zent::eigen::l_eig_gen(n, a, options); }); \
    ZENT_OPTIONS_END(options);                                                                                               \
    return values;                                                                                                           \
  }
ZENT_FORM(f, float, zent_f_complex)
ZENT_FORM(d, double, zent_d_complex)
ZENT_FORM(c, zent_f_complex, zent_f_complex)
ZENT_FORM(z, zent_d_complex, zent_d_complex)
#undef ZENT_FORM
