// What the products of dense, band and coordinate matrices share: the text of the operation, and the operands.
#pragma once

#include <algorithm>
#include <type_traits>

#include "math/optional_argument.hpp"
#include "runtime/envelope.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::products {

using kernel::Op;

// One factor of a product: 'a', 'b' or 'x', plain or transposed.
struct Factor {
  char name;
  Op op;
};
struct Operation {
  Factor left, right;

  bool names(char name) const {
    return left.name == name || right.name == name;
  }
  bool vector() const {
    return right.name == 'x';
  }
};

// A reader of the text that passes over blanks and case.
struct Text {
  const char* next;

  char peek() {
    while (*next == ' ' || *next == '\t') ++next;
    return *next >= 'A' && *next <= 'Z' ? static_cast<char>(*next + ('a' - 'A')) : *next;
  }
  bool take(const char* word) {
    Text ahead = *this;
    for (; *word != '\0'; ++word, ++ahead.next) {
      if (ahead.peek() != *word) return false;
    }
    *this = ahead;
    return true;
  }
};

inline bool read_factor(Text& text, Factor& factor) {
  factor.op = Op::none;
  if (text.take("ctrans(")) {
    factor.op = Op::conjugate;
  } else if (text.take("trans(")) {
    factor.op = Op::transpose;
  }
  factor.name = text.peek();
  if (factor.name != 'a' && factor.name != 'b' && factor.name != 'x') return false;
  ++text.next;
  return factor.op == Op::none || text.take(")");
}

// False, with 1078 raised, for a text that is no product of these.
inline bool read_operation(const char* text, Operation& operation) {
  if (text == nullptr) {
    raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {"operation"}});
    return false;
  }
  Text reader{text};
  const bool right = read_factor(reader, operation.left) && reader.take("*") && read_factor(reader, operation.right) &&
                     reader.peek() == '\0' && operation.left.name != 'x' &&
                     (operation.right.name != 'x' || operation.right.op == Op::none);
  if (!right) raise<Math>(5, MATH_INVALID_MULT_STRING, {.l = {text}});
  return right;
}

// A matrix operand; `lower` and `upper` are the codiagonals of a band, `count` the elements of a coordinate form.
template <class E>
struct Matrix {
  bool given = false;
  long rows = 0, columns = 0, lower = 0, upper = 0, count = 0;
  const E* data = nullptr;

  long rows_of(Op op) const {
    return op == Op::none ? rows : columns;
  }
  long columns_of(Op op) const {
    return op == Op::none ? columns : rows;
  }
};

// E is the element of a matrix, T that of a vector.
template <class E, class T>
struct Operands {
  Matrix<E> a, b;
  bool x_given = false;
  long nx = 0;
  const T* x = nullptr;
  bool user_given = false;
  void* user = nullptr;

  const Matrix<E>& matrix(const Factor& factor) const {
    return factor.name == 'a' ? a : b;
  }
};

enum class Form { dense, band, coordinate };

template <Form form, class E>
void read_matrix(Options& list, const char* name, const char* option, Matrix<E>& matrix) {
  matrix.given = true;
  matrix.rows = list.integer();
  matrix.columns = list.integer();
  if constexpr (form == Form::band) {
    matrix.lower = list.integer();
    matrix.upper = list.integer();
  }
  if constexpr (form == Form::coordinate) matrix.count = list.integer();
  matrix.data = list.pointer<const E>();
  if (form != Form::coordinate || matrix.count > 0) not_null(matrix.data, name, option);
}

// The options that all forms have; false for any other code.
template <Form form, class E, class T>
bool read_common(int code, Options& list, Operands<E, T>& operands) {
  if (code == ZENT_A_MATRIX) {
    read_matrix<form>(list, "a", "ZENT_A_MATRIX", operands.a);
  } else if (code == ZENT_B_MATRIX) {
    read_matrix<form>(list, "b", "ZENT_B_MATRIX", operands.b);
  } else if (code == ZENT_X_VECTOR) {
    operands.x_given = true;
    operands.nx = list.integer();
    operands.x = not_null(list.pointer<const T>(), "x", "ZENT_X_VECTOR");
  } else if (code == ZENT_RETURN_USER) {
    operands.user_given = true;
    operands.user = not_null(list.pointer<void>(), "result", "ZENT_RETURN_USER");
  } else {
    return false;
  }
  return true;
}

template <class E>
bool sizes_fit(const Matrix<E>& matrix) {
  if (matrix.rows < 1) {
    raise<Math>(5, MATH_M_GT_ZERO, {.i = {matrix.rows}});
  } else if (matrix.columns < 1) {
    raise<Math>(5, MATH_N_GT_ZERO, {.i = {matrix.columns}});
  }
  return !failed<Math>();
}

// All operands that the operation names are there, and their sizes go together. `text` is what the user wrote.
template <class E, class T>
bool operands_fit(const char* text, const Operation& operation, const Operands<E, T>& operands) {
  const bool missing = (operation.names('a') && !operands.a.given) || (operation.names('b') && !operands.b.given) ||
                       (operation.names('x') && !operands.x_given);
  if (missing) {
    raise<Math>(5, MATH_MAT_MUL_UNDEFINED, {.l = {text}});
    return false;
  }
  const Matrix<E>& left = operands.matrix(operation.left);
  if (!sizes_fit(left)) return false;
  if (!operation.vector() && !sizes_fit(operands.matrix(operation.right))) return false;
  const long inner = operation.vector() ? operands.nx : operands.matrix(operation.right).rows_of(operation.right.op);
  if (left.columns_of(operation.left.op) == inner) return true;
  raise<Math>(5, MATH_MATMUL_DIM_MISMATCH_2, {.i = {left.columns_of(operation.left.op), inner}, .l = {text}});
  return false;
}

// The caller's storage or a new one of `count` elements; null with 201 raised.
template <class R>
R* storage(void* user, long count, const char* name) {
  R* product = user != nullptr ? static_cast<R*>(user) : result<Math, R>(count);
  if (product == nullptr) raise_out_of_memory<Math>({count}, {name});
  return product;
}

}  // namespace zent::products

// The four forms of a product; `worker` takes the text and the options, R is what the entry returns.
#define ZENT_PRODUCT_FORM(name, P, R, worker)                                                                     \
  extern "C" R* zent_##P##_##name(const char* operation, ...) {                                                   \
    ZENT_OPTIONS(options, operation, 1);                                                                          \
    R* product = zent::public_call<zent::Math>("zent_" #P "_" #name, [&] { return worker(operation, options); }); \
    ZENT_OPTIONS_END(options);                                                                                    \
    return product;                                                                                               \
  }
