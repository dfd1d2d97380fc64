// General band systems: the public solver and the solution from a factor.
#include <algorithm>

#include "math/linalg/band.hpp"

namespace zent::band {

namespace {

template <class T>
struct GeneralOptions : BandOptions<T> {
  bool transpose = false;
  long** give_pivots = nullptr;
  long* pivots = nullptr;
  long block = 0;
};

template <class T>
GeneralOptions<T> read_options(Options& list) {
  GeneralOptions<T> options;
  while (const int code = list.code()) {
    switch (code) {
      case ZENT_TRANSPOSE:
        options.transpose = true;
        break;
      case ZENT_FACTOR:
        options.give_pivots = list.pointer<long*>();
        options.give_factor = list.pointer<T*>();
        options.factor_user = false;
        options.pivots = nullptr;
        options.factor = nullptr;
        break;
      case ZENT_FACTOR_USER:
        options.pivots = list.pointer<long>();
        options.factor = list.pointer<T>();
        options.factor_user = true;
        options.give_pivots = nullptr;
        options.give_factor = nullptr;
        not_null(options.pivots, "ipvt", "ZENT_FACTOR");
        if (options.factor == nullptr) raise<Math>(5, MATH_OPTIONAL_ARG_NULL_2, {.l = {"factor", "ZENT_FACTOR"}});
        break;
      case ZENT_BLOCKING_FACTOR:
        options.block = std::clamp(list.integer(), 1L, 32L);
        break;
      default:
        if (!read_band_option(code, list, options) && !list.unknown<Math>(code)) return options;
    }
  }
  return options;
}

template <class T>
bool arguments_fit(long n, const T* a, long nlca, long nuca, const T* b, const GeneralOptions<T>& options) {
  if (!check_band_arguments(n, a, b, options)) return false;
  if (nlca < 0 || nlca >= n) {
    raise<Math>(5, MATH_LOWER_CODIAGONALS, {.i = {nlca, n}});
  } else if (nuca < 0 || nuca >= n) {
    raise<Math>(5, MATH_UPPER_CODIAGONALS, {.i = {nuca, n}});
  }
  return !failed<Math>();
}

// Column sums with the row limits of the lower codiagonals on both sides. Where nlca and nuca differ these are not the limits of
// the storage: a few corner columns lose elements of the matrix or read corners outside it.
struct NormOfColumns {
  template <class T>
  ZENT_BAND_INLINE static RealOf<T> run(long n, const T* a, long nlca, long nuca) {
    constexpr long tile = 256;
    RealOf<T> norm = 0, sums[tile];
    for (long first = 0; first < n; first += tile) {
      const long last = first + tile < n ? first + tile : n;
      for (long j = 0; j < tile; ++j) sums[j] = 0;
      for (long r = 0; r <= nlca + nuca; ++r) {
        const long from = first > nlca - r ? first : nlca - r, to = last < nlca + n - r ? last : nlca + n - r;
        for (long j = from; j < to; ++j) sums[j - first] += magnitude(a[r * n + j]);
      }
      for (long j = 0; j < last - first; ++j) norm = sums[j] > norm ? sums[j] : norm;
    }
    return norm;
  }
};

// Storage for pivots and factor where the caller gives none, in memory that can be handed over.
template <class T>
bool provide_factor(long n, long nlca, long nuca, GeneralOptions<T>& options) {
  if (options.factor_user) return true;
  long rows = nuca + 1, count = 0;
  const bool countable = !__builtin_add_overflow(rows, nlca, &rows) && !__builtin_add_overflow(rows, nlca, &rows) &&
                         !__builtin_mul_overflow(rows, n, &count);
  if (countable) options.factor = result<Math, T>(count);
  if (options.factor == nullptr) {
    raise_out_of_memory<Math>({nlca, nuca, n}, {"nlca", "nuca", "n"});
    return false;
  }
  options.pivots = result<Math, long>(n);
  if (options.pivots == nullptr) raise_out_of_memory<Math>({n}, {"n"});
  return options.pivots != nullptr;
}

// A matrix whose storage is also that of the factor is copied away first.
template <class T>
const T* apart_from_factor(long n, const T* a, long nlca, long nuca, const T* factor) {
  if (a != factor) return a;
  const long count = (nlca + nuca + 1) * n;
  T* copy = scratch<Math, T>(count);
  if (copy == nullptr) {
    raise_out_of_memory<Math>({nlca, nuca, n}, {"nlca", "nuca", "n"});
  } else {
    std::copy_n(a, count, copy);
  }
  return copy;
}

// Factors, and leaves false behind when that failed.
template <class T>
bool factor_matrix(long n, const T* a, long nlca, long nuca, GeneralOptions<T>& options) {
  if (!provide_factor(n, nlca, nuca, options)) return false;
  const T* matrix = apart_from_factor(n, a, nlca, nuca, options.factor);
  if (matrix == nullptr) return false;
  l_l2trb<T>(n, matrix, n, 1, nlca, nuca, options.factor, 2 * nlca + nuca + 1, options.pivots, options.block);
  return !fatal_stands<Math>();
}

template <class T>
T* l_lin_sol_gen_band(long n, T* a, long nlca, long nuca, T* b, Options& list) {
  GeneralOptions<T> options = read_options<T>(list);
  if (!arguments_fit(n, a, nlca, nuca, b, options)) return nullptr;
  if (options.factor_only && options.solve_only) return nullptr;
  const bool estimate = !options.solve_only && (!options.factor_only || options.condition != nullptr);
  const RealOf<T> norm = estimate ? run_for_processor<NormOfColumns>(n, static_cast<const T*>(a), nlca, nuca) : 0;
  if (!options.solve_only && !factor_matrix(n, a, nlca, nuca, options)) return nullptr;
  T* x = options.x;
  if (!options.factor_only) {
    if (x == nullptr) x = result<Math, T>(n);
    if (x == nullptr) {
      raise_out_of_memory<Math>({n}, {"n"});
      return nullptr;
    }
    l_lfsrb<T>(n, options.factor, 2 * nlca + nuca + 1, nlca, nuca, options.pivots, b, options.transpose ? 2 : 1, x);
    if (fatal_stands<Math>()) return nullptr;
  }
  if (estimate) {
    l_report_condition(norm, l_condition_higham<T>(n, options.factor, 2 * nlca + nuca + 1, nlca, nuca, options.pivots, norm),
                       options.condition);
  }
  if (fatal_stands<Math>()) return nullptr;
  if (!options.solve_only && options.give_factor != nullptr) {
    *options.give_factor = options.factor;  // before they are kept: a bad address must not cost them
    *options.give_pivots = options.pivots;
    keep<Math>(options.factor);
    keep<Math>(options.pivots);
  }
  if (options.factor_only) return nullptr;
  keep<Math>(x);
  return x;
}

template <class T>
void l_ccbcb(long n, const T* a, long lda, long nlca, long nuca, T* b, long ldb, long nlcb, long nucb) {
  if (n < 1) raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  if (failed<Math>()) return;
  const long needed = nlca + nuca + 1, needed_b = nlcb + nucb + 1;
  if (nlca < 0 || nlca >= n) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NLCA_LT_N, {.i = {nlca, n}});
  } else if (nuca < 0 || nuca >= n) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NUCA_LT_N, {.i = {nuca, n}});
  } else if (lda < needed) {
    raise<Math>(5, MATH_LEADING_DIM_OF_A_TOO_SMALL, {.i = {lda, needed}});
  } else if (nlcb < nlca || nlcb >= n) {
    raise<Math>(5, MATH_NEED_NLCA_LE_NLCB_LT_N, {.i = {nlcb, nlca, n}});
  } else if (nucb < nuca || nucb >= n) {
    raise<Math>(5, MATH_NEED_NUCA_LE_NUCB_LT_N, {.i = {nucb, nuca, n}});
  } else if (ldb < needed_b) {
    raise<Math>(5, MATH_LEADING_DIM_OF_B_TOO_SMALL, {.i = {ldb, needed_b}});
  } else {
    for (long j = 0; j < n; ++j) {
      std::fill_n(b + j * ldb, needed_b, T{});
      const long from = std::max(-nuca, -j), to = std::min(nlca, n - 1 - j);
      std::copy(a + j * lda + nuca + from, a + j * lda + nuca + to + 1, b + j * ldb + nucb + from);
    }
  }
}

}  // namespace

}  // namespace zent::band

#define ZENT_FORM(P, T)                                                                                                    \
  extern "C" T* zent_##P##_lin_sol_gen_band(long n, T* a, long nlca, long nuca, T* b, ...) {                               \
    ZENT_OPTIONS(options, b, 5);                                                                                           \
    T* x = zent::public_call<zent::Math>("zent_" #P "_lin_sol_gen_band",                                                   \
                                         [&] { return zent::band::l_lin_sol_gen_band<T>(n, a, nlca, nuca, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                             \
    return x;                                                                                                              \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
ZENT_FORM(c, zent_f_complex)
ZENT_FORM(z, zent_d_complex)
#undef ZENT_FORM

extern "C" void zent_lfsrb(long n, float* fac, long ldfac, long nlca, long nuca, long* pvt, float* b, long ipath, float* x) {
  zent::band::l_lfsrb(n, fac, ldfac, nlca, nuca, pvt, b, ipath, x);
}
extern "C" void zent_dlfsrb(long n, double* fac, long ldfac, long nlca, long nuca, long* pvt, double* b, long ipath, double* x) {
  zent::band::l_lfsrb(n, fac, ldfac, nlca, nuca, pvt, b, ipath, x);
}
extern "C" void zent_ccbcb(long n, zent_f_complex* a, long lda, long nlca, long nuca, zent_f_complex* b, long ldb, long nlcb,
                           long nucb) {
  zent::band::l_ccbcb(n, a, lda, nlca, nuca, b, ldb, nlcb, nucb);
}
extern "C" void zent_dccbcb(long n, zent_d_complex* a, long lda, long nlca, long nuca, zent_d_complex* b, long ldb, long nlcb,
                            long nucb) {
  zent::band::l_ccbcb(n, a, lda, nlca, nuca, b, ldb, nlcb, nucb);
}
