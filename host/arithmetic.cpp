// Arithmetic, comparisons and elementwise functions.
#include <cmath>
#include <type_traits>

#include "host/internal.hpp"

namespace orv {
namespace {

using Single = std::complex<float>;
using Wide = std::complex<double>;

template <class T>
constexpr int code = std::is_same_v<T, unsigned char> ? ORV_TYP_BYTE
                     : std::is_same_v<T, long>        ? ORV_TYP_INT64
                     : std::is_same_v<T, float>       ? ORV_TYP_FLOAT
                     : std::is_same_v<T, double>      ? ORV_TYP_DOUBLE
                     : std::is_same_v<T, Single>      ? ORV_TYP_COMPLEX
                                                      : ORV_TYP_DCOMPLEX;
template <class T>
constexpr bool is_complex = std::is_same_v<T, Single> || std::is_same_v<T, Wide>;

const char* symbol(Binary op) {
  constexpr const char* symbols[] = {"+", "-", "*", "/", "mod", "^", "==", "!=", "<", "<=", ">", ">=", "and", "or", "#"};
  return symbols[static_cast<int>(op)];
}

[[noreturn]] void no_operation(Binary op, const Value& a, const Value& b) {
  throw Error("ERROR", std::string("There is no ") + symbol(op) + " between " + describe(a) + " and " + describe(b) + ".");
}

bool is_comparison(Binary op) {
  return op >= Binary::equal && op <= Binary::greater_equal;
}

// The shape of the result; throws when neither operand is a scalar and the shapes differ.
const Dims& common_dims(Binary op, const Value& a, const Value& b) {
  if (a.is_array() && b.is_array() && a.dims() != b.dims()) {
    throw Error("ERROR", std::string("The shapes of ") + symbol(op) + " differ: " + describe(a) + " and " + describe(b) + ".");
  }
  return a.is_array() ? a.dims() : b.dims();
}

int common_type(Binary op, const Value& a, const Value& b) {
  for (const Value* v : {&a, &b}) {
    if (!v->defined()) detail::throw_undefined(&v->raw());
    if (v->type() == ORV_TYP_STRUCT || v->is_text()) no_operation(op, a, b);
  }
  const auto complex = [](int type) { return type == ORV_TYP_COMPLEX || type == ORV_TYP_DCOMPLEX; };
  const auto wide = [](int type) { return type == ORV_TYP_DOUBLE || type == ORV_TYP_DCOMPLEX; };
  if (complex(a.type()) || complex(b.type())) return wide(a.type()) || wide(b.type()) ? ORV_TYP_DCOMPLEX : ORV_TYP_COMPLEX;
  if (wide(a.type()) || wide(b.type())) return ORV_TYP_DOUBLE;
  return a.type() == ORV_TYP_FLOAT || b.type() == ORV_TYP_FLOAT ? ORV_TYP_FLOAT : ORV_TYP_INT64;
}

Value blank(int type, const Dims& dims) {
  return dims.empty() ? Value::zero(type) : Value::array(type, dims);
}

// Applies f to the elements of both; a scalar stands still.
template <class Result, class T, class F>
Value combine(const Value& a, const Value& b, const Dims& dims, F f) {
  Value result = blank(code<Result>, dims);
  auto* out = static_cast<Result*>(result.writable());
  const T* x = a.as<T>();
  const T* y = b.as<T>();
  const long n = result.count();
  const long dx = a.is_array(), dy = b.is_array();
  for (long k = 0; k < n; ++k) out[k] = f(x[k * dx], y[k * dy]);
  return result;
}

template <class T>
T power(T x, T y) {
  if (y == T(2)) return x * x;
  return std::pow(x, y);
}

template <class T>
Value arithmetic_of(Binary op, const Value& a, const Value& b, const Dims& dims) {
  switch (op) {
    case Binary::add:
      return combine<T, T>(a, b, dims, [](T x, T y) { return x + y; });
    case Binary::subtract:
      return combine<T, T>(a, b, dims, [](T x, T y) { return x - y; });
    case Binary::multiply:
      return combine<T, T>(a, b, dims, [](T x, T y) { return x * y; });
    case Binary::divide:
      return combine<T, T>(a, b, dims, [](T x, T y) { return x / y; });
    case Binary::power:
      return combine<T, T>(a, b, dims, [](T x, T y) { return power(x, y); });
    case Binary::modulo:
      if constexpr (!is_complex<T>) return combine<T, T>(a, b, dims, [](T x, T y) { return std::fmod(x, y); });
      [[fallthrough]];
    default:
      no_operation(op, a, b);
  }
}

// False: the result does not fit.
bool integer_power(long x, long y, long& out) {
  long result = 1;
  while (y > 0) {
    if ((y & 1) && __builtin_mul_overflow(result, x, &result)) return false;
    y >>= 1;
    if (y > 0 && __builtin_mul_overflow(x, x, &x)) return false;
  }
  out = result;
  return true;
}

Value integer_arithmetic(Binary op, const Value& a, const Value& b, const Dims& dims) {
  bool fits = op != Binary::divide;
  Value result;
  const auto run = [&](auto f) { result = combine<long, long>(a, b, dims, f); };
  switch (op) {
    case Binary::add:
      run([&](long x, long y) {
        long z;
        fits &= !__builtin_add_overflow(x, y, &z);
        return z;
      });
      break;
    case Binary::subtract:
      run([&](long x, long y) {
        long z;
        fits &= !__builtin_sub_overflow(x, y, &z);
        return z;
      });
      break;
    case Binary::multiply:
      run([&](long x, long y) {
        long z;
        fits &= !__builtin_mul_overflow(x, y, &z);
        return z;
      });
      break;
    case Binary::power:
      run([&](long x, long y) {
        long z = 0;
        fits = fits && y >= 0 && integer_power(x, y, z);
        return z;
      });
      break;
    case Binary::modulo:
      run([](long x, long y) {
        if (y == 0) throw Error("ERROR", "Remainder of a division by 0.");
        return y == -1 ? 0 : x % y;
      });
      break;
    default:
      break;
  }
  if (fits) return result;
  return arithmetic_of<double>(op, a.converted(ORV_TYP_DOUBLE), b.converted(ORV_TYP_DOUBLE), dims);
}

template <class T, class A>
Value ordered(Binary op, const Value& a, const Value& b, const Dims& dims, A) {
  using Byte = unsigned char;
  switch (op) {
    case Binary::equal:
      return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) == A()(y); });
    case Binary::not_equal:
      return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) != A()(y); });
    default:
      break;
  }
  if constexpr (!is_complex<T>) {
    switch (op) {
      case Binary::less:
        return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) < A()(y); });
      case Binary::less_equal:
        return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) <= A()(y); });
      case Binary::greater:
        return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) > A()(y); });
      default:
        return combine<Byte, T>(a, b, dims, [](const T& x, const T& y) -> Byte { return A()(x) >= A()(y); });
    }
  }
  no_operation(op, a, b);
}

struct Same {
  template <class T>
  const T& operator()(const T& x) const {
    return x;
  }
};
struct Text {
  std::string_view operator()(const ORV_STRING& s) const {
    return detail::text_of(s);
  }
};

Value text_operation(Binary op, const Value& a, const Value& b) {
  if (!a.is_text() || !b.is_text() || (op != Binary::add && !is_comparison(op))) no_operation(op, a, b);
  const Dims& dims = common_dims(op, a, b);
  if (is_comparison(op)) return ordered<ORV_STRING>(op, a, b, dims, Text());
  Value result = blank(ORV_TYP_STRING, dims);
  auto* out = static_cast<ORV_STRING*>(result.writable());
  for (long k = 0; k < result.count(); ++k) {
    const auto x = detail::text_of(a.as<ORV_STRING>()[a.is_array() ? k : 0]);
    const auto y = detail::text_of(b.as<ORV_STRING>()[b.is_array() ? k : 0]);
    detail::store_text(out[k], std::string(x).append(y));
  }
  return result;
}

Value truth(const Value& v) {
  if (!v.defined()) detail::throw_undefined(&v.raw());
  if (v.type() == ORV_TYP_STRUCT) throw Error("ERROR", "Expected truth values, found " + describe(v) + ".");
  if (v.is_text()) {
    Value result = blank(ORV_TYP_BYTE, v.dims());
    for (long k = 0; k < v.count(); ++k) static_cast<unsigned char*>(result.writable())[k] = v.as<ORV_STRING>()[k].len > 0;
    return result;
  }
  return apply(Binary::not_equal, v, Value::integer(0));
}

Value logical(Binary op, const Value& a, const Value& b) {
  const Value x = truth(a), y = truth(b);
  const Dims& dims = common_dims(op, a, b);
  using Byte = unsigned char;
  if (op == Binary::logical_and) return combine<Byte, Byte>(x, y, dims, [](Byte p, Byte q) -> Byte { return p & q; });
  return combine<Byte, Byte>(x, y, dims, [](Byte p, Byte q) -> Byte { return p | q; });
}

// Rows times columns; false when a sum of integers does not fit.
template <class T>
bool multiply_into(const T* a, const T* b, T* c, long m, long k, long n) {
  bool fits = true;
  for (long i = 0; i < m; ++i) {
    for (long l = 0; l < k; ++l) {
      for (long j = 0; j < n; ++j) {
        if constexpr (std::is_same_v<T, long>) {
          long product;
          fits &= !__builtin_mul_overflow(a[i * k + l], b[l * n + j], &product);
          fits &= !__builtin_add_overflow(c[i * n + j], product, &c[i * n + j]);
        } else {
          c[i * n + j] += a[i * k + l] * b[l * n + j];
        }
      }
    }
  }
  return fits;
}

Value matrix_product(const Value& a, const Value& b) {
  int type = common_type(Binary::matrix_multiply, a, b);
  const Dims &p = a.dims(), &q = b.dims();
  if (p.empty() || q.empty() || p.size() > 2 || q.size() > 2) no_operation(Binary::matrix_multiply, a, b);
  if (p.back() != q.front()) {
    throw Error("ERROR", "The inner extents of a matrix product differ: " + describe(a) + " and " + describe(b) + ".");
  }
  Dims dims;
  if (p.size() == 2) dims.push_back(p[0]);
  if (q.size() == 2) dims.push_back(q[1]);
  const long m = p.size() == 2 ? p[0] : 1, k = p.back(), n = q.size() == 2 ? q[1] : 1;
  for (;;) {
    const Value x = a.converted(type), y = b.converted(type);
    Value c = blank(type, dims);
    const auto run = [&]<class T>(T) { return multiply_into(x.as<T>(), y.as<T>(), static_cast<T*>(c.writable()), m, k, n); };
    bool fits = true;
    switch (type) {
      case ORV_TYP_INT64:
        fits = run(0L);
        break;
      case ORV_TYP_FLOAT:
        run(0.0f);
        break;
      case ORV_TYP_DOUBLE:
        run(0.0);
        break;
      case ORV_TYP_COMPLEX:
        run(Single());
        break;
      default:
        run(Wide());
    }
    if (fits) return c;
    type = ORV_TYP_DOUBLE;
  }
}

bool real_scalar(const Value& v) {
  return v.raw().type == ORV_TYP_DOUBLE && v.raw().flags == 0;
}

template <class T>
Value map_same(const Value& v, T (*f)(T)) {
  Value result = blank(code<T>, v.dims());
  auto* out = static_cast<T*>(result.writable());
  for (long k = 0; k < result.count(); ++k) out[k] = f(v.as<T>()[k]);
  return result;
}

template <class R, class T, class F>
Value map_to(const Value& v, F f) {
  Value result = blank(code<R>, v.dims());
  auto* out = static_cast<R*>(result.writable());
  for (long k = 0; k < result.count(); ++k) out[k] = static_cast<R>(f(v.as<T>()[k]));
  return result;
}

struct Function {
  const char* name;
  float (*single)(float);
  double (*real)(double);
  Single (*single_complex)(const Single&);
  Wide (*complex)(const Wide&);
};

#define ORV_FUNCTION(name, call)                                                                 \
  {                                                                                              \
    name, [](float x) { return std::call(x); }, [](double x) { return std::call(x); },           \
        [](const Single& z) { return std::call(z); }, [](const Wide& z) { return std::call(z); } \
  }
#define ORV_REAL_FUNCTION(name, call)                                                                   \
  {                                                                                                     \
    name, [](float x) { return std::call(x); }, [](double x) { return std::call(x); }, nullptr, nullptr \
  }
constexpr Function functions[] = {
    ORV_FUNCTION("sqrt", sqrt),        ORV_FUNCTION("exp", exp),        ORV_FUNCTION("log", log),
    ORV_FUNCTION("log10", log10),      ORV_FUNCTION("sin", sin),        ORV_FUNCTION("cos", cos),
    ORV_FUNCTION("tan", tan),          ORV_FUNCTION("asin", asin),      ORV_FUNCTION("acos", acos),
    ORV_FUNCTION("atan", atan),        ORV_FUNCTION("sinh", sinh),      ORV_FUNCTION("cosh", cosh),
    ORV_FUNCTION("tanh", tanh),        ORV_FUNCTION("asinh", asinh),    ORV_FUNCTION("acosh", acosh),
    ORV_FUNCTION("atanh", atanh),      ORV_REAL_FUNCTION("log2", log2), ORV_REAL_FUNCTION("log1p", log1p),
    ORV_REAL_FUNCTION("expm1", expm1), ORV_REAL_FUNCTION("cbrt", cbrt)};
constexpr Function roundings[] = {ORV_REAL_FUNCTION("floor", floor), ORV_REAL_FUNCTION("ceil", ceil),
                                  ORV_REAL_FUNCTION("round", round), ORV_REAL_FUNCTION("trunc", trunc)};
#undef ORV_FUNCTION
#undef ORV_REAL_FUNCTION

[[noreturn]] void no_function(std::string_view name, const Value& v) {
  throw Error("ERROR", "There is no " + std::string(name) + " of " + describe(v) + ".");
}

Value run_function(const Function& f, const Value& v) {
  switch (v.type()) {
    case ORV_TYP_FLOAT:
      return map_to<float, float>(v, f.single);
    case ORV_TYP_DOUBLE:
      return map_to<double, double>(v, f.real);
    case ORV_TYP_COMPLEX:
      if (f.single_complex) return map_to<Single, Single>(v, f.single_complex);
      break;
    case ORV_TYP_DCOMPLEX:
      if (f.complex) return map_to<Wide, Wide>(v, f.complex);
      break;
    default:
      return map_to<double, double>(v.converted(ORV_TYP_DOUBLE), f.real);
  }
  no_function(f.name, v);
}

Value magnitude(const Value& v) {
  switch (v.type()) {
    case ORV_TYP_BYTE:
      return v.converted(ORV_TYP_INT64);
    case ORV_TYP_INT64:
      for (long k = 0; k < v.count(); ++k) {
        if (v.as<long>()[k] == std::numeric_limits<long>::min()) return magnitude(v.converted(ORV_TYP_DOUBLE));
      }
      return map_to<long, long>(v, [](long x) { return x < 0 ? -x : x; });
    case ORV_TYP_FLOAT:
      return map_to<float, float>(v, [](float x) { return std::fabs(x); });
    case ORV_TYP_COMPLEX:
      return map_to<float, Single>(v, [](const Single& z) { return std::abs(z); });
    case ORV_TYP_DCOMPLEX:
      return map_to<double, Wide>(v, [](const Wide& z) { return std::abs(z); });
    default:
      return map_to<double, double>(v, [](double x) { return std::fabs(x); });
  }
}

// Parts of complex numbers; a real number is one without an imaginary part.
Value part(std::string_view name, const Value& v) {
  const bool single = v.type() == ORV_TYP_COMPLEX, complex = single || v.type() == ORV_TYP_DCOMPLEX;
  if (!complex && (name == "real" || name == "conj")) return v;
  if (!complex && name == "imag") return blank(v.type() == ORV_TYP_FLOAT ? ORV_TYP_FLOAT : ORV_TYP_DOUBLE, v.dims());
  if (!complex) return part(name, v.converted(v.type() == ORV_TYP_FLOAT ? ORV_TYP_COMPLEX : ORV_TYP_DCOMPLEX));
  const auto run = [&]<class R, class T>(R, T) {
    if (name == "real") return map_to<R, T>(v, [](const T& z) { return z.real(); });
    if (name == "imag") return map_to<R, T>(v, [](const T& z) { return z.imag(); });
    if (name == "arg") return map_to<R, T>(v, [](const T& z) { return std::arg(z); });
    return map_to<T, T>(v, [](const T& z) { return std::conj(z); });
  };
  return single ? run(0.0f, Single()) : run(0.0, Wide());
}

Value classify(std::string_view name, const Value& v) {
  const Value wide = v.converted(ORV_TYP_DCOMPLEX);
  if (name == "isnan") {
    return map_to<unsigned char, Wide>(wide, [](const Wide& z) { return std::isnan(z.real()) || std::isnan(z.imag()); });
  }
  return map_to<unsigned char, Wide>(wide, [](const Wide& z) { return std::isfinite(z.real()) && std::isfinite(z.imag()); });
}

}  // namespace

Value apply(Binary op, const Value& a, const Value& b) {
  if (real_scalar(a) && real_scalar(b)) {
    const double x = a.raw().value.d, y = b.raw().value.d;
    switch (op) {
      case Binary::add:
        return Value::real(x + y);
      case Binary::subtract:
        return Value::real(x - y);
      case Binary::multiply:
        return Value::real(x * y);
      case Binary::divide:
        return Value::real(x / y);
      case Binary::power:
        return Value::real(power(x, y));
      case Binary::less:
        return Value::boolean(x < y);
      case Binary::greater:
        return Value::boolean(x > y);
      default:
        break;
    }
  }
  if (op == Binary::power && !a.is_array() && a.type() == ORV_TYP_DOUBLE && b.type() == ORV_TYP_INT64 && !b.is_array()) {
    return Value::real(power(a.raw().value.d, static_cast<double>(b.raw().value.l64)));
  }
  for (const Value* v : {&a, &b}) {
    if (!v->defined()) detail::throw_undefined(&v->raw());
  }
  if (op == Binary::logical_and || op == Binary::logical_or) return logical(op, a, b);
  if (op == Binary::matrix_multiply) return matrix_product(a, b);
  if (a.is_text() || b.is_text()) return text_operation(op, a, b);
  const int type = common_type(op, a, b);
  const Dims& dims = common_dims(op, a, b);
  const Value x = a.converted(type), y = b.converted(type);
  const bool compare = is_comparison(op);
  switch (type) {
    case ORV_TYP_INT64:
      return compare ? ordered<long>(op, x, y, dims, Same()) : integer_arithmetic(op, x, y, dims);
    case ORV_TYP_FLOAT:
      return compare ? ordered<float>(op, x, y, dims, Same()) : arithmetic_of<float>(op, x, y, dims);
    case ORV_TYP_DOUBLE:
      return compare ? ordered<double>(op, x, y, dims, Same()) : arithmetic_of<double>(op, x, y, dims);
    case ORV_TYP_COMPLEX:
      return compare ? ordered<Single>(op, x, y, dims, Same()) : arithmetic_of<Single>(op, x, y, dims);
    default:
      return compare ? ordered<Wide>(op, x, y, dims, Same()) : arithmetic_of<Wide>(op, x, y, dims);
  }
}

Value apply(Unary op, const Value& v) {
  if (op == Unary::logical_not) return apply(Binary::equal, truth(v), Value::boolean(false));
  switch (v.type()) {
    case ORV_TYP_FLOAT:
      return map_to<float, float>(v, [](float x) { return -x; });
    case ORV_TYP_DOUBLE:
      return map_to<double, double>(v, [](double x) { return -x; });
    case ORV_TYP_COMPLEX:
      return map_to<Single, Single>(v, [](const Single& z) { return -z; });
    case ORV_TYP_DCOMPLEX:
      return map_to<Wide, Wide>(v, [](const Wide& z) { return -z; });
    case ORV_TYP_BYTE:
    case ORV_TYP_INT64:
      return apply(Binary::subtract, Value::integer(0), v);
    case ORV_TYP_UNDEF:
      detail::throw_undefined(&v.raw());
    default:
      throw Error("ERROR", "There is no negative of " + describe(v) + ".");
  }
}

bool elementwise(std::string_view name, const Value& v, Value& result) {
  const auto check = [&] {
    if (!v.defined()) detail::throw_undefined(&v.raw());
    if (v.is_text() || v.type() == ORV_TYP_STRUCT) no_function(name, v);
  };
  for (const Function& f : functions) {
    if (name != f.name) continue;
    check();
    result = run_function(f, v);
    return true;
  }
  for (const Function& f : roundings) {
    if (name != f.name) continue;
    check();
    result = v.type() == ORV_TYP_BYTE || v.type() == ORV_TYP_INT64 ? v : run_function(f, v);
    return true;
  }
  if (name == "abs") {
    check();
    result = magnitude(v);
  } else if (name == "real" || name == "imag" || name == "conj" || name == "arg") {
    check();
    result = part(name, v);
  } else if (name == "isnan" || name == "isfinite") {
    check();
    result = classify(name, v);
  } else {
    return false;
  }
  return true;
}

}  // namespace orv
