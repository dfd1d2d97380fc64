// Products of dense matrices, row-major.
#include "math/linalg/products.hpp"

namespace zent::products {

namespace {

struct ColumnDimensions {
  long a = -1, b = -1, product = -1;  // -1: not given
};

constexpr char flag(Op op) {
  return op == Op::none ? 'N' : op == Op::transpose ? 'T' : 'C';
}

// Row-major storage is the transpose of what the kernels see, so they are asked for the transposed product: of A x with the flag
// of the other kind, of A B as B' A'. For a conjugate transpose no single flag is left, hence the copy.
template <class T>
bool conjugate_vector(long n, const T*& x) {
  T* copy = scratch<Math, T>(n);
  if (copy == nullptr) {
    raise_out_of_memory<Math>({n}, {"nx"});
    return false;
  }
  for (long i = 0; i < n; ++i) copy[i] = kernel::conj(x[i]);
  x = copy;
  return true;
}

template <class T>
T* matrix_by_vector(const Operation& operation, const Operands<T, T>& operands, const ColumnDimensions& dims) {
  const Matrix<T>& a = operands.matrix(operation.left);
  const long ld = operation.left.name == 'a' ? dims.a : dims.b, rows = a.rows_of(operation.left.op);
  T* y = storage<T>(operands.user, rows, "nrow");
  if (y == nullptr) return nullptr;
  const T* x = operands.x;
  const T one = kernel::from_real<T>(1);
  const bool conjugated = operation.left.op == Op::conjugate && kernel::ComplexRecord<T>;
  if (conjugated && !conjugate_vector(operands.nx, x)) return nullptr;
  fast::gemv(operation.left.op == Op::none ? 'T' : 'N', a.columns, a.rows, one, a.data, ld, x, 1, T{}, y, 1);
  for (long i = 0; conjugated && i < rows; ++i) y[i] = kernel::conj(y[i]);
  return y;
}

template <class T>
T* matrix_by_matrix(const Operation& operation, const Operands<T, T>& operands, const ColumnDimensions& dims) {
  const Matrix<T>&a = operands.matrix(operation.left), &b = operands.matrix(operation.right);
  const long lda = operation.left.name == 'a' ? dims.a : dims.b, ldb = operation.right.name == 'a' ? dims.a : dims.b;
  const long m = a.rows_of(operation.left.op), k = a.columns_of(operation.left.op), n = b.columns_of(operation.right.op);
  const long ldc = dims.product < 0 ? n : dims.product;
  if (ldc < n) {
    raise<Math>(5, MATH_BAD_RESULT_COL_DIM, {.i = {ldc, n}});
    return nullptr;
  }
  long count = 0;
  if (__builtin_mul_overflow(m, ldc, &count)) count = -1;  // more than there can be
  T* c = storage<T>(operands.user, count, "nrow");
  if (c == nullptr) return nullptr;
  if (operands.user == nullptr && ldc > n) {
    for (long i = 0; i < m; ++i) std::fill_n(c + i * ldc + n, ldc - n, T{});
  }
  // C' = op(B)' op(A)', and the kernels see A' and B'.
  fast::gemm(flag(operation.right.op), flag(operation.left.op), n, m, k, kernel::from_real<T>(1), b.data, ldb, a.data, lda, T{},
             c, ldc);
  return c;
}

template <class T>
bool column_dimensions_fit(const Operation& operation, const Operands<T, T>& operands, ColumnDimensions& dims) {
  if (dims.a < 0) dims.a = operands.a.columns;
  if (dims.b < 0) dims.b = operands.b.columns;
  if (operation.names('a') && dims.a < operands.a.columns) {
    raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {operands.a.columns, dims.a}, .l = {"a"}});
  } else if (operation.names('b') && dims.b < operands.b.columns) {
    raise<Math>(5, MATH_COL_DIM_LESS_ORDER, {.i = {operands.b.columns, dims.b}, .l = {"b"}});
  }
  return !failed<Math>();
}

template <class T>
T* l_mat_mul_rect(const char* text, Options& list) {
  Operands<T, T> operands;
  ColumnDimensions dims;
  while (const int code = list.code()) {
    if (code == ZENT_A_COL_DIM) {
      dims.a = std::max(0L, list.integer());
    } else if (code == ZENT_B_COL_DIM) {
      dims.b = std::max(0L, list.integer());
    } else if (code == ZENT_RETURN_COL_DIM) {
      dims.product = std::max(0L, list.integer());
    } else if (!read_common<Form::dense>(code, list, operands) && !list.unknown<Math>(code)) {
      break;
    }
  }
  Operation operation;
  if (!read_operation(text, operation) || failed<Math>()) return nullptr;
  if (!operands_fit(text, operation, operands) || !column_dimensions_fit(operation, operands, dims)) return nullptr;
  T* product = operation.vector() ? matrix_by_vector(operation, operands, dims) : matrix_by_matrix(operation, operands, dims);
  if (product != nullptr && operands.user == nullptr) keep<Math>(product);
  return product;
}

}  // namespace

}  // namespace zent::products

ZENT_PRODUCT_FORM(mat_mul_rect, f, float, zent::products::l_mat_mul_rect<float>)
ZENT_PRODUCT_FORM(mat_mul_rect, d, double, zent::products::l_mat_mul_rect<double>)
ZENT_PRODUCT_FORM(mat_mul_rect, c, zent_f_complex, zent::products::l_mat_mul_rect<zent_f_complex>)
ZENT_PRODUCT_FORM(mat_mul_rect, z, zent_d_complex, zent::products::l_mat_mul_rect<zent_d_complex>)
