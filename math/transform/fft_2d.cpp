// The complex transform in two dimensions: every row, then every column.
#include "math/transform/public.hpp"

namespace zent::transform {

namespace {

template <class Complex>
struct PlaneOptions {
  bool backward = false;
  long p_col_dim, return_col_dim;
  Complex* result = nullptr;
};

template <class Complex>
PlaneOptions<Complex> read_plane_options(long ncol, Options& list) {
  using Real = typename RealOfElement<Complex>::type;
  PlaneOptions<Complex> options;
  options.p_col_dim = options.return_col_dim = ncol;
  for (int code; (code = list.code()) != 0;) {
    if (code == ZENT_BACKWARD) {
      options.backward = true;
    } else if (code == ZENT_PARAMS_2D) {
      // Read for their nulls: the transforms keep prepared roots of their own.
      not_null(list.pointer<Real>(), "params", "ZENT_PARAMS_2D");
      not_null(list.pointer<Real>(), "params", "ZENT_PARAMS_2D");
    } else if (code == ZENT_P_COL_DIM || code == ZENT_A_COL_DIM) {
      options.p_col_dim = list.integer();
    } else if (code == ZENT_RETURN_COL_DIM) {
      options.return_col_dim = list.integer();
    } else if (code == ZENT_RETURN_USER) {
      options.result = not_null(list.pointer<Complex>(), "result", "ZENT_RETURN_USER");
    } else if (!list.unknown<Math>(code)) {
      break;
    }
  }
  return options;
}

template <class Complex>
bool plane_holds(long nrow, long ncol, const Complex* p, const PlaneOptions<Complex>& options) {
  if (p == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"p"}});
  if (nrow < 1) raise<Math>(5, MATH_NEED_NRA_GT_ZERO, {.i = {nrow}});
  if (ncol < 1) raise<Math>(5, MATH_NEED_NCA_GT_ZERO, {.i = {ncol}});
  const auto wide_enough = [&](long dimension, const char* name) {
    if (dimension < ncol) raise<Math>(5, MATH_COL_DIM_LESS_COL, {.i = {ncol, dimension}, .l = {name}});
  };
  wide_enough(options.p_col_dim, "p");
  wide_enough(options.return_col_dim, "result");
  return !failed<Math>();
}

template <class Real>
bool transform_plane(long nrow, long ncol, const Real* p, long p_stride, Real* q, long q_stride, bool backward) {
  void* const mark = scratch_mark<Math>();
  for (long row = 0; row < nrow; ++row) {
    if (!transform(ncol, p + 2 * p_stride * row, q + 2 * q_stride * row, backward)) return false;
    if (scratch_mark<Math>() != mark) scratch_release<Math>(mark);
  }
  return nrow == 1 || transform_columns(nrow, ncol, q, q_stride, q, q_stride, backward);
}

template <class Complex>
Complex* l_fft_2d_complex(long nrow, long ncol, Complex* p, Options& list) {
  using Real = typename RealOfElement<Complex>::type;
  const auto options = read_plane_options<Complex>(ncol, list);
  if (failed<Math>() || !plane_holds(nrow, ncol, p, options)) return nullptr;
  // Into p itself with another column dimension the rows would overwrite each other before their turn: work on a copy.
  const bool shifted = options.result == p && options.return_col_dim != options.p_col_dim;
  const long stride = options.return_col_dim;
  const auto fits = [nrow](long dimension) {
    long bytes = 0;
    return !__builtin_mul_overflow(nrow, dimension, &bytes) && !__builtin_mul_overflow(bytes, sizeof(Complex), &bytes);
  };
  if (!fits(stride) || !fits(options.p_col_dim)) {
    raise_out_of_memory<Math>({nrow}, {"n"});
    return nullptr;
  }
  return deliver(options.result, nrow * ncol, nrow * stride, [&](Complex* q) {
    auto* in = reinterpret_cast<const Real*>(p);
    auto* out = reinterpret_cast<Real*>(q);
    long in_stride = options.p_col_dim;
    if (shifted) {
      Real* copy = scratch<Math, Real>(2 * nrow * ncol);
      if (copy == nullptr) return false;
      for (long row = 0; row < nrow; ++row) {
        for (long k = 0; k < 2 * ncol; ++k) copy[2 * ncol * row + k] = in[2 * in_stride * row + k];
      }
      in = copy;
      in_stride = ncol;
    }
    // The columns behind ncol of a new result are not left to chance.
    if (options.result == nullptr) {
      for (long row = 0; stride > ncol && row < nrow; ++row) {
        for (long k = 2 * ncol; k < 2 * stride; ++k) out[2 * stride * row + k] = 0;
      }
    }
    return transform_plane(nrow, ncol, in, in_stride, out, stride, options.backward);
  });
}

}  // namespace

}  // namespace zent::transform

using namespace zent;
using namespace zent::transform;

#define ZENT_FORM(P, Complex)                                                                                               \
  extern "C" Complex* zent_##P##_fft_2d_complex(long nrow, long ncol, Complex* p, ...) {                                    \
    ZENT_OPTIONS(options, p, 3);                                                                                            \
    Complex* q =                                                                                                            \
        public_call<Math>("zent_" #P "_fft_2d_complex", [&] { return l_fft_2d_complex<Complex>(nrow, ncol, p, options); }); \
    ZENT_OPTIONS_END(options);                                                                                              \
    return q;                                                                                                               \
  }
ZENT_FORM(c, zent_f_complex)
ZENT_FORM(z, zent_d_complex)
#undef ZENT_FORM
