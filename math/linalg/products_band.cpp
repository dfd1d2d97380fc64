// Products of band matrices.
#include "math/linalg/products.hpp"

namespace zent::products {

namespace {

struct Codiagonals {
  long *lower = nullptr, *upper = nullptr;
};

template <class T>
bool band_fits(const Matrix<T>& a) {
  if (a.lower < 0 || a.lower >= a.rows) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NLCA_LT_N, {.i = {a.lower, a.rows}});
  } else if (a.upper < 0 || a.upper >= a.columns) {
    raise<Math>(5, MATH_NEED_ZERO_LE_NUCA_LT_N, {.i = {a.upper, a.columns}});
  }
  return !failed<Math>();
}

// A row of the storage is a codiagonal with i - j = offset; body gets the offset, the columns of it that lie in the matrix, and
// its elements by column.
template <class T, class Body>
void each_codiagonal(const Matrix<T>& a, Body body) {
  for (long offset = -a.upper; offset <= a.lower; ++offset) {
    const long from = std::max(0L, -offset), to = std::min(a.columns, a.rows - offset);
    body(offset, from, to, a.data + (a.upper + offset) * a.columns);
  }
}

template <class T>
T* matrix_by_vector(const Operation& operation, const Operands<T, T>& operands) {
  const Matrix<T>& a = operands.matrix(operation.left);
  const long rows = a.rows_of(operation.left.op);
  T* y = storage<T>(operands.user, rows, "nrow");
  if (y == nullptr) return nullptr;
  const T* x = operands.x;
  std::fill_n(y, rows, T{});
  constexpr long tile = 1024;  // keeps the tile of y near while the codiagonals go by
  for (long first = 0; first < a.columns; first += tile) {
    each_codiagonal(a, [&](long offset, long from, long to, const T* elements) {
      from = std::max(from, first);
      to = std::min(to, first + tile);
      if (operation.left.op == Op::none) {
        for (long j = from; j < to; ++j) y[j + offset] += elements[j] * x[j];
      } else {
        const bool conjugated = operation.left.op == Op::conjugate;
        for (long j = from; j < to; ++j) y[j] += kernel::conj_if(conjugated, elements[j]) * x[j + offset];
      }
    });
  }
  return y;
}

// Element (i, j) of op(A); inside the band only.
template <class T>
T element(const Matrix<T>& a, Op op, long i, long j) {
  if (op != Op::none) std::swap(i, j);
  return kernel::conj_if(op == Op::conjugate, a.data[(a.upper + i - j) * a.columns + j]);
}

template <class T>
T* matrix_by_matrix(const Operation& operation, const Operands<T, T>& operands, const Codiagonals& out) {
  const Matrix<T>&a = operands.matrix(operation.left), &b = operands.matrix(operation.right);
  const Op left = operation.left.op, right = operation.right.op;
  const long lower_a = left == Op::none ? a.lower : a.upper, upper_a = left == Op::none ? a.upper : a.lower;
  const long lower_b = right == Op::none ? b.lower : b.upper, upper_b = right == Op::none ? b.upper : b.lower;
  const long rows = a.rows_of(left), inner = a.columns_of(left), columns = b.columns_of(right);
  const long lower = std::min(lower_a + lower_b, rows - 1), upper = std::min(upper_a + upper_b, columns - 1);
  long count = 0;
  if (__builtin_mul_overflow(lower + upper + 1, columns, &count)) count = -1;
  T* c = storage<T>(operands.user, count, "ncol");
  if (c == nullptr) return nullptr;
  std::fill_n(c, count, T{});
  for (long k = 0; k < inner; ++k) {  // column k of the left factor times row k of the right one
    for (long i = std::max(0L, k - upper_a); i < std::min(rows, k + lower_a + 1); ++i) {
      const T factor = element(a, left, i, k);
      for (long j = std::max(0L, k - lower_b); j < std::min(columns, k + upper_b + 1); ++j) {
        c[(upper + i - j) * columns + j] += factor * element(b, right, k, j);
      }
    }
  }
  if (out.lower != nullptr) *out.lower = lower;
  if (out.upper != nullptr) *out.upper = upper;
  return c;
}

template <class T>
T* l_mat_mul_rect_band(const char* text, Options& list) {
  Operands<T, T> operands;
  Codiagonals out;
  while (const int code = list.code()) {
    if (code == ZENT_RETURN_CODIAGONALS) {
      out.lower = list.pointer<long>();
      out.upper = list.pointer<long>();
    } else if (!read_common<Form::band>(code, list, operands) && !list.unknown<Math>(code)) {
      break;
    }
  }
  Operation operation;
  if (!read_operation(text, operation) || failed<Math>() || !operands_fit(text, operation, operands)) return nullptr;
  if (!band_fits(operands.matrix(operation.left))) return nullptr;
  if (!operation.vector() && !band_fits(operands.matrix(operation.right))) return nullptr;
  T* product = operation.vector() ? matrix_by_vector(operation, operands) : matrix_by_matrix(operation, operands, out);
  if (product != nullptr && operands.user == nullptr) keep<Math>(product);
  return product;
}

}  // namespace

}  // namespace zent::products

ZENT_PRODUCT_FORM(mat_mul_rect_band, f, float, zent::products::l_mat_mul_rect_band<float>)
ZENT_PRODUCT_FORM(mat_mul_rect_band, d, double, zent::products::l_mat_mul_rect_band<double>)
ZENT_PRODUCT_FORM(mat_mul_rect_band, c, zent_f_complex, zent::products::l_mat_mul_rect_band<zent_f_complex>)
ZENT_PRODUCT_FORM(mat_mul_rect_band, z, zent_d_complex, zent::products::l_mat_mul_rect_band<zent_d_complex>)
