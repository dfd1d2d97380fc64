// Positive definite band systems: the public solver.
#include <algorithm>

#include "math/linalg/band.hpp"

namespace zent::band {

namespace {

// The factor here is row-major.
template <class T>
BandOptions<T> read_options(Options& list) {
  BandOptions<T> options;
  while (const int code = list.code()) {
    if (code == ZENT_FACTOR) {
      options.give_factor = list.pointer<T*>();
      options.factor_user = false;
      options.factor = nullptr;
    } else if (code == ZENT_FACTOR_USER) {
      options.factor = list.pointer<T>();
      options.factor_user = true;
      options.give_factor = nullptr;
      not_null(options.factor, "factor", "ZENT_FACTOR_USER");
    } else if (!read_band_option(code, list, options) && !list.unknown<Math>(code)) {
      break;
    }
  }
  return options;
}

template <class T>
bool arguments_fit(long n, const T* a, long ncoda, const T* b, const BandOptions<T>& options) {
  if (!check_band_arguments(n, a, b, options)) return false;
  if (ncoda < 0 || ncoda >= n) raise<Math>(5, MATH_UPPER_CODIAGONALS, {.i = {ncoda, n}});
  return !failed<Math>();
}

template <class T>
bool diagonal_is_real(long n, const T* a, long ncoda) {
  if constexpr (kernel::ComplexRecord<T>) {
    const T* diagonal = a + ncoda * n;
    for (long j = 0; j < n; ++j) {
      if (diagonal[j].im == 0) continue;
      raise<Math>(4, MATH_HERMITIAN_DIAG_REAL, {.i = {j}, .r = {static_cast<double>(diagonal[j].im)}});
      return false;
    }
  }
  return true;
}

// Column sums of the stored half and of its mirror image.
struct SymmetricNorm {
  template <class T>
  ZENT_BAND_INLINE static RealOf<T> run(long n, const T* a, long ncoda) {
    constexpr long tile = 256;
    RealOf<T> norm = 0, sums[tile];
    for (long first = 0; first < n; first += tile) {
      const long last = first + tile < n ? first + tile : n;
      for (long j = 0; j < tile; ++j) sums[j] = 0;
      for (long d = 0; d <= ncoda; ++d) {
        const T* row = a + (ncoda - d) * n;
        for (long j = first > d ? first : d; j < last; ++j) sums[j - first] += magnitude(row[j]);
        const long to = d == 0 ? first : last < n - d ? last : n - d;
        for (long j = first; j < to; ++j) sums[j - first] += magnitude(row[j + d]);
      }
      for (long j = 0; j < last - first; ++j) norm = sums[j] > norm ? sums[j] : norm;
    }
    return norm;
  }
};

// The factor back to the caller, in rows. It is his also after a warning.
template <class T>
bool hand_over_factor(long n, const T* columns, long ncoda, const BandOptions<T>& options) {
  T* rows = options.factor;
  if (options.give_factor != nullptr) rows = result<Math, T>((ncoda + 1) * n);
  if (rows == nullptr) {
    if (options.give_factor == nullptr) return true;
    raise_out_of_memory<Math>({ncoda, n}, {"ncoda", "n"});
    return false;
  }
  columns_to_rows(ncoda + 1, n, columns, ncoda + 1, rows);
  if (options.give_factor != nullptr) {
    *options.give_factor = rows;
    keep<Math>(rows);
  }
  return true;
}

template <class T>
T* solve_only(long n, long ncoda, const T* b, const BandOptions<T>& options) {
  T* x = options.x != nullptr ? options.x : result<Math, T>(n);
  if (x == nullptr) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  l_lfsqs_rows<T>(n, options.factor, ncoda, b, x);
  if (fatal_stands<Math>()) return nullptr;
  keep<Math>(x);
  return x;
}

template <class T>
T* l_lin_sol_posdef_band(long n, T* a, long ncoda, T* b, Options& list) {
  const BandOptions<T> options = read_options<T>(list);
  if (!arguments_fit(n, a, ncoda, b, options)) return nullptr;
  if (options.factor_only && options.solve_only) return nullptr;
  if (options.solve_only) return solve_only(n, ncoda, b, options);
  if (!diagonal_is_real(n, a, ncoda)) return nullptr;
  long count = 0;
  T* columns = __builtin_mul_overflow(ncoda + 1, n, &count) ? nullptr : scratch<Math, T>(count);
  if (columns == nullptr) {
    raise_out_of_memory<Math>({ncoda, n}, {"ncoda", "n"});
    return nullptr;
  }
  T* x = options.x;
  if (x == nullptr && !options.factor_only) x = result<Math, T>(n);
  if (x == nullptr && !options.factor_only) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  rows_to_columns(ncoda + 1, n, a, columns, ncoda + 1);
  const bool estimate = !options.factor_only || options.condition != nullptr;
  const RealOf<T> norm = estimate ? run_for_processor<SymmetricNorm>(n, static_cast<const T*>(a), ncoda) : 0;
  l_lftqs<T>(n, columns, ncoda + 1, ncoda, columns, ncoda + 1);
  if (!fatal_stands<Math>() && !options.factor_only) l_lfsqs<T>(n, columns, ncoda + 1, ncoda, b, x);
  if (!fatal_stands<Math>() && estimate) {
    l_report_condition(norm, l_condition_higham<T>(n, columns, ncoda + 1, ncoda, norm), options.condition);
  }
  if (fatal_stands<Math>() || !hand_over_factor(n, columns, ncoda, options)) return nullptr;
  if (options.factor_only) return nullptr;
  keep<Math>(x);
  return x;
}

}  // namespace

}  // namespace zent::band

#define ZENT_FORM(P, T)                                                                                                  \
  extern "C" T* zent_##P##_lin_sol_posdef_band(long n, T* a, long ncoda, T* b, ...) {                                    \
    ZENT_OPTIONS(options, b, 4);                                                                                         \
    T* x = zent::public_call<zent::Math>("zent_" #P "_lin_sol_posdef_band",                                              \
                                         [&] { return zent::band::l_lin_sol_posdef_band<T>(n, a, ncoda, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                           \
    return x;                                                                                                            \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
ZENT_FORM(c, zent_f_complex)
ZENT_FORM(z, zent_d_complex)
#undef ZENT_FORM

extern "C" void zent_lftqs(long n, float* a, long lda, long ncoda, float* fac, long ldfac) {
  zent::band::l_lftqs(n, a, lda, ncoda, fac, ldfac);
}
extern "C" void zent_dlftqs(long n, double* a, long lda, long ncoda, double* fac, long ldfac) {
  zent::band::l_lftqs(n, a, lda, ncoda, fac, ldfac);
}
extern "C" void zent_lfsqs(long n, float* fac, long ldfac, long ncoda, float* b, float* x) {
  zent::band::l_lfsqs(n, fac, ldfac, ncoda, b, x);
}
extern "C" void zent_dlfsqs(long n, double* fac, long ldfac, long ncoda, double* b, double* x) {
  zent::band::l_lfsqs(n, fac, ldfac, ncoda, b, x);
}
