// Products of sparse matrices in coordinate form.
#include <bit>

#include "math/linalg/products.hpp"

namespace zent::products {

namespace {

// The value of an element; the complex records keep theirs in a structure of their own.
template <class T, class E>
T value(const E& element, Op op = Op::none) {
  return kernel::conj_if(op == Op::conjugate, std::bit_cast<T>(element.val));
}

template <class E>
bool elements_fit(const Matrix<E>& a) {
  long positions = 0;
  if (a.count < 0 || (!__builtin_mul_overflow(a.rows, a.columns, &positions) && a.count > positions)) {
    raise<Math>(5, MATH_NZ_GE_ZERO_LT_MN, {.i = {a.count, a.rows, a.columns}});
    return false;
  }
  for (long k = 0; k < a.count; ++k) {
    const E& element = a.data[k];
    if (element.row < 0 || element.row >= a.rows) {
      raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {element.row, 0, a.rows - 1}, .l = {"row"}});
      return false;
    }
    if (element.col < 0 || element.col >= a.columns) {
      raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {element.col, 0, a.columns - 1}, .l = {"col"}});
      return false;
    }
  }
  return true;
}

template <class T, class E>
T* matrix_by_vector(const Operation& operation, const Operands<E, T>& operands, bool symmetric) {
  const Matrix<E>& a = operands.matrix(operation.left);
  const Op op = operation.left.op;
  T* y = storage<T>(operands.user, a.rows_of(op), "nrow");
  if (y == nullptr) return nullptr;
  std::fill_n(y, a.rows_of(op), T{});
  for (long k = 0; k < a.count; ++k) {
    const E& element = a.data[k];
    if (op == Op::none) {
      y[element.row] += value<T>(element) * operands.x[element.col];
    } else {
      y[element.col] += value<T>(element, op) * operands.x[element.row];
    }
    if (symmetric && element.row != element.col) y[element.col] += value<T>(element) * operands.x[element.row];
  }
  return y;
}

// The elements of op(A) by rows: those of row i stand at order[start[i]] to order[start[i + 1] - 1].
struct Rows {
  long *start, *order;
};

template <class E>
Rows sort_by_rows(const Matrix<E>& a, Op op) {
  const long rows = a.rows_of(op);
  Rows sorted = {scratch_zero<Math, long>(rows + 2), scratch<Math, long>(a.count)};
  if (sorted.start == nullptr || sorted.order == nullptr) {
    raise_out_of_memory<Math>({a.count}, {"nz"});
    return {nullptr, nullptr};
  }
  const auto row = [&](long k) { return op == Op::none ? a.data[k].row : a.data[k].col; };
  long* const next = sorted.start + 1;  // counts one row late, so that the places come out as the starts
  for (long k = 0; k < a.count; ++k) ++next[row(k) + 1];
  for (long i = 0; i < rows; ++i) next[i + 1] += next[i];
  for (long k = 0; k < a.count; ++k) sorted.order[next[row(k)]++] = k;
  return sorted;
}

// Row by row, Gustavson's way (ACM TOMS 4, 1978): `seen` tells in which row a column was met last. With product null it counts.
template <class T, class E>
long multiply_rows(const Matrix<E>& a, Op left, const Rows& by_row_a, const Matrix<E>& b, Op right, const Rows& by_row_b,
                   long* seen, E* product) {
  long count = 0;
  for (long j = 0; j < b.columns_of(right); ++j) seen[j] = -1;
  for (long i = 0; i < a.rows_of(left); ++i) {
    const long row_start = count;
    for (long s = by_row_a.start[i]; s < by_row_a.start[i + 1]; ++s) {
      const E& u = a.data[by_row_a.order[s]];
      const long k = left == Op::none ? u.col : u.row;
      for (long t = by_row_b.start[k]; t < by_row_b.start[k + 1]; ++t) {
        const E& v = b.data[by_row_b.order[t]];
        const long j = right == Op::none ? v.col : v.row;
        const bool fresh = seen[j] < row_start;
        if (fresh) seen[j] = count++;
        if (product == nullptr) continue;
        E& w = product[seen[j]];
        if (fresh) {
          w.row = i;
          w.col = j;
        }
        const T sum = value<T>(u, left) * value<T>(v, right) + (fresh ? T{} : value<T>(w));
        w.val = std::bit_cast<decltype(w.val)>(sum);
      }
    }
  }
  return count;
}

template <class T, class E>
E* matrix_by_matrix(const Operation& operation, const Operands<E, T>& operands, long* count_out) {
  const Matrix<E>&a = operands.matrix(operation.left), &b = operands.matrix(operation.right);
  const Rows by_row_a = sort_by_rows(a, operation.left.op), by_row_b = sort_by_rows(b, operation.right.op);
  const long columns = b.columns_of(operation.right.op);
  long* seen = scratch<Math, long>(columns);
  if (by_row_a.start == nullptr || by_row_b.start == nullptr || seen == nullptr) {
    if (!failed<Math>()) raise_out_of_memory<Math>({columns}, {"ncol"});
    return nullptr;
  }
  const auto run = [&](E* product) {
    return multiply_rows<T>(a, operation.left.op, by_row_a, b, operation.right.op, by_row_b, seen, product);
  };
  const long count = run(nullptr);
  E* product = storage<E>(operands.user, count, "nz");
  if (product == nullptr) return nullptr;
  run(product);
  if (count_out != nullptr) *count_out = count;
  return product;
}

template <class T, class E>
void* l_mat_mul_rect_coordinate(const char* text, Options& list) {
  Operands<E, T> operands;
  bool symmetric = false;
  long* count = nullptr;
  while (const int code = list.code()) {
    if (code == ZENT_SYMMETRIC) {
      symmetric = true;
    } else if (code == ZENT_RETURN_COUNT) {
      count = not_null(list.pointer<long>(), "count", "ZENT_RETURN_COUNT");
    } else if (!read_common<Form::coordinate>(code, list, operands) && !list.unknown<Math>(code)) {
      break;
    }
  }
  Operation operation;
  if (!read_operation(text, operation) || failed<Math>() || !operands_fit(text, operation, operands)) return nullptr;
  if (symmetric && (operation.left.op != Op::none || !operation.vector())) {
    raise<Math>(5, MATH_SYMMETRIC_TRANS);
    return nullptr;
  }
  if (symmetric && operands.matrix(operation.left).rows != operands.matrix(operation.left).columns) {
    const Matrix<E>& a = operands.matrix(operation.left);
    raise<Math>(5, MATH_MATMUL_DIM_MISMATCH_2, {.i = {a.columns, a.rows}, .l = {text}});
    return nullptr;
  }
  if (!elements_fit(operands.matrix(operation.left))) return nullptr;
  if (!operation.vector() && !elements_fit(operands.matrix(operation.right))) return nullptr;
  void* product = operation.vector() ? static_cast<void*>(matrix_by_vector(operation, operands, symmetric))
                                     : static_cast<void*>(matrix_by_matrix(operation, operands, count));
  if (product != nullptr && operands.user == nullptr) keep<Math>(product);
  return product;
}

}  // namespace

}  // namespace zent::products

namespace {
template <class T, class E>
void* worker(const char* operation, zent::Options& options) {
  return zent::products::l_mat_mul_rect_coordinate<T, E>(operation, options);
}
}  // namespace

ZENT_PRODUCT_FORM(mat_mul_rect_coordinate, f, void, (worker<float, Zent_f_sparse_elem>))
ZENT_PRODUCT_FORM(mat_mul_rect_coordinate, d, void, (worker<double, Zent_d_sparse_elem>))
ZENT_PRODUCT_FORM(mat_mul_rect_coordinate, c, void, (worker<zent_f_complex, Zent_c_sparse_elem>))
ZENT_PRODUCT_FORM(mat_mul_rect_coordinate, z, void, (worker<zent_d_complex, Zent_z_sparse_elem>))
