// Values of the host: a variable as a module sees it, owned.
#pragma once

#include <complex>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "binding/orv_host.h"

namespace orv {

// An error of the host or of a program in its language. The place is filled by the innermost statement that it passes.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& message) : std::runtime_error(message) {}
  Error(std::string name_, const std::string& message) : std::runtime_error(message), name(std::move(name_)) {}

  std::string name;  // symbolic: "MATH_BAD_CONST_NAME" for an error of a module, "ERROR" or the like for one of the host
  std::string file;
  int line = 0;
  int column = 0;
};

using Dims = std::vector<long>;  // extents, the last one varies fastest (row-major)

// One variable: undefined, a scalar, or an array of any rank. Copies share array data until one of them writes.
class Value {
 public:
  Value();
  Value(const Value&);
  Value(Value&&) noexcept;
  Value& operator=(Value);
  ~Value();

  static Value real(double);
  static Value integer(long);
  static Value boolean(bool b);  // a byte scalar, 1 or 0
  static Value text(std::string_view);
  static Value zero(int type);                          // scalar 0, "" of that type
  static Value array(int type, const Dims& dims);       // zeroed
  static Value structure(ORV_SDEF definition, long n);  // zeroed vector of n structures; n < 0: one structure as a scalar

  int type() const;  // ORV_TYP_*
  bool defined() const;
  bool is_array() const;
  bool is_text() const;      // a string, scalar or array
  const Dims& dims() const;  // empty for a scalar
  long count() const;        // 1 for a scalar, 0 when undefined
  const void* data() const;  // first element; strings are ORV_STRING elements
  void* writable();          // the same after making the data this value's own
  template <class T>
  const T* as() const {
    return static_cast<const T*>(data());
  }

  // Conversions. They throw Error with what was expected and what was found.
  Value converted(int type) const;  // same dims
  double to_real() const;           // a scalar, or an array of one element
  long to_integer() const;          // must be whole: 2.5 throws
  bool to_bool() const;             // scalar, not zero; a string is true when not empty
  std::string to_text() const;      // a string scalar
  std::vector<std::string> to_texts() const;

  Value element(long k) const;                    // flat index from 0, a scalar
  void set_element(long k, const Value& scalar);  // converts to this type
  Value reshaped(const Dims& dims) const;

  // Structures: tag names are upper case. tag() copies the tag's data out (scalar or array, of element k for a vector of
  // structures).
  ORV_SDEF definition() const;
  std::vector<std::string> tags() const;
  Value tag(std::string_view name, long k = 0) const;
  void set_tag(std::string_view name, const Value& value, long k = 0);

  // The variable itself, as a module is handed it; the module may change it in place. Its array data are made this value's own
  // first.
  ORV_VARIABLE* variable();
  // Takes over a temporary that a module or a user function returned (consumed), or copies one that is not a temporary.
  static Value adopt(ORV_VARIABLE*);
  // The variable as it is, possibly sharing its data; for reading.
  const ORV_VARIABLE& raw() const {
    return v_;
  }
  // A value that shares the data of a variable, and giving up the contents to a variable that held nothing.
  static Value sharing(const ORV_VARIABLE&);
  void give_to(ORV_VARIABLE& target);

 private:
  ORV_VARIABLE v_;
};

// Defines an unnamed structure at run time from tags and example values (type and dims are taken from them).
ORV_SDEF define_structure(const std::vector<std::pair<std::string, Value>>& tags);

std::string type_name(int type);       // "double", "integer", ...
std::string describe(const Value&);    // "double[3,4]", "string", "undefined": for error messages
std::string to_display(const Value&);  // what print shows

// ---- Arithmetic with broadcasting of scalars; types rise byte < integer < float < double, and to complex as needed ----

enum class Binary {
  add,
  subtract,
  multiply,
  divide,
  modulo,
  power,
  equal,
  not_equal,
  less,
  less_equal,
  greater,
  greater_equal,
  logical_and,
  logical_or,
  matrix_multiply
};
enum class Unary { negate, logical_not };
// Bytes count as integers. The quotient of two integers is always a double. Sums, differences, products, remainders and powers
// with exponents from 0 of integers stay integers, unless one of the results is too large: then all of them are doubles. A
// remainder has the sign of the dividend; a remainder of integers by 0 throws. Strings: + joins, comparisons are by bytes.
// Comparisons and logical operations give bytes.
Value apply(Binary, const Value&, const Value&);
Value apply(Unary, const Value&);

// One subscript of an index expression.
struct Subscript {
  enum Kind { all, single, range, list } kind = all;
  long first = 0, last = -1, step = 1;  // range, inclusive; negative values already resolved by the caller against the extent
  std::vector<long> indices;            // list
};
Value index(const Value& array, const std::vector<Subscript>& subscripts);
void assign_index(Value& array, const std::vector<Subscript>& subscripts, const Value& value);

// Elementwise function of the language: abs, sqrt, exp, log, log10, sin, cos, tan, asin, acos, atan, sinh, cosh, tanh, floor,
// ceil, round, real, imag, conj, ... Returns false when there is none of that name.
bool elementwise(std::string_view name, const Value& argument, Value& result);

}  // namespace orv
