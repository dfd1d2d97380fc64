// Conversions between the types of values.
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "host/internal.hpp"

namespace orv {

namespace {

using detail::text_of;
using Wide = std::complex<double>;

[[noreturn]] void fail(const std::string& found, int to, const char* why) {
  throw Error("ERROR", "Cannot convert " + found + " to " + type_name(to) + ": " + why + ".");
}

bool blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

double parse_real(const ORV_STRING& s, int to) {
  const std::string text(text_of(s));
  char* end = nullptr;
  const double x = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || !blank(end)) fail("\"" + text + "\"", to, "it is not a number");
  return x;
}

bool parse_integer(const ORV_STRING& s, long& k) {
  const std::string text(text_of(s));
  char* end = nullptr;
  errno = 0;
  k = std::strtol(text.c_str(), &end, 10);
  return end != text.c_str() && blank(end) && errno == 0;
}

long integer_of(double x, int to, bool strict) {
  if (!(x >= -9223372036854775808.0 && x < 9223372036854775808.0)) fail(detail::format_real(x), to, "it is out of range");
  if (strict && x != std::trunc(x)) fail(detail::format_real(x), to, "it is not a whole number");
  return static_cast<long>(x);
}

// One element as a wide number; integers beyond 2^53 take their own way below.
Wide wide(int type, const void* data, long k, int to) {
  switch (type) {
    case ORV_TYP_BYTE:
      return static_cast<double>(static_cast<const unsigned char*>(data)[k]);
    case ORV_TYP_INT64:
      return static_cast<double>(static_cast<const long*>(data)[k]);
    case ORV_TYP_FLOAT:
      return static_cast<double>(static_cast<const float*>(data)[k]);
    case ORV_TYP_DOUBLE:
      return static_cast<const double*>(data)[k];
    case ORV_TYP_COMPLEX:
      return Wide(static_cast<const std::complex<float>*>(data)[k]);
    case ORV_TYP_DCOMPLEX:
      return static_cast<const Wide*>(data)[k];
    case ORV_TYP_STRING:
      return parse_real(static_cast<const ORV_STRING*>(data)[k], to);
    default:
      fail(type_name(type), to, "there is no such conversion");
  }
}

double real_part(Wide z, int to, bool strict) {
  if (strict && z.imag() != 0) {
    fail("(" + detail::format_real(z.real()) + "," + detail::format_real(z.imag()) + ")", to, "the imaginary part would be lost");
  }
  return z.real();
}

long whole(int type, const void* data, long k, int to, bool strict) {
  if (type == ORV_TYP_INT64) return static_cast<const long*>(data)[k];
  if (type == ORV_TYP_BYTE) return static_cast<const unsigned char*>(data)[k];
  long parsed;
  if (type == ORV_TYP_STRING && parse_integer(static_cast<const ORV_STRING*>(data)[k], parsed)) return parsed;
  return integer_of(real_part(wide(type, data, k, to), to, strict), to, strict);
}

std::string text_form(int type, const void* data, long k) {
  switch (type) {
    case ORV_TYP_BYTE:
      return std::to_string(static_cast<const unsigned char*>(data)[k]);
    case ORV_TYP_INT64:
      return std::to_string(static_cast<const long*>(data)[k]);
    case ORV_TYP_FLOAT:
      return detail::format_real(static_cast<const float*>(data)[k]);
    case ORV_TYP_DOUBLE:
      return detail::format_real(static_cast<const double*>(data)[k]);
    case ORV_TYP_COMPLEX: {
      const ORV_COMPLEX z = static_cast<const ORV_COMPLEX*>(data)[k];
      return "(" + detail::format_real(z.re) + "," + detail::format_real(z.im) + ")";
    }
    case ORV_TYP_DCOMPLEX: {
      const ORV_DCOMPLEX z = static_cast<const ORV_DCOMPLEX*>(data)[k];
      return "(" + detail::format_real(z.re) + "," + detail::format_real(z.im) + ")";
    }
    default:
      fail(type_name(type), ORV_TYP_STRING, "there is no such conversion");
  }
}

void convert_one(int from, const void* source, int to, void* target, long k, bool strict) {
  switch (to) {
    case ORV_TYP_BYTE: {
      const long value = whole(from, source, k, to, strict);
      if (value < 0 || value > 255) fail(std::to_string(value), to, "it is not between 0 and 255");
      static_cast<unsigned char*>(target)[k] = static_cast<unsigned char>(value);
      break;
    }
    case ORV_TYP_INT64:
      static_cast<long*>(target)[k] = whole(from, source, k, to, strict);
      break;
    case ORV_TYP_FLOAT:
      static_cast<float*>(target)[k] = static_cast<float>(real_part(wide(from, source, k, to), to, strict));
      break;
    case ORV_TYP_DOUBLE:
      static_cast<double*>(target)[k] = real_part(wide(from, source, k, to), to, strict);
      break;
    case ORV_TYP_COMPLEX:
      static_cast<std::complex<float>*>(target)[k] = std::complex<float>(wide(from, source, k, to));
      break;
    case ORV_TYP_DCOMPLEX:
      static_cast<Wide*>(target)[k] = wide(from, source, k, to);
      break;
    case ORV_TYP_STRING:
      detail::store_text(static_cast<ORV_STRING*>(target)[k], text_form(from, source, k));
      break;
    default:
      fail(type_name(from), to, "there is no such conversion");
  }
}

const Value& single(const Value& value, const char* wanted) {
  if (!value.defined()) detail::throw_undefined(&value.raw());
  if (value.count() != 1) throw Error("ERROR", std::string("Expected ") + wanted + ", found " + describe(value) + ".");
  return value;
}

}  // namespace

void detail::convert_elements(int from, const void* source, int to, void* target, long n, bool strict) {
  if (from == ORV_TYP_INT64 && to == ORV_TYP_DOUBLE) {
    for (long k = 0; k < n; ++k) static_cast<double*>(target)[k] = static_cast<double>(static_cast<const long*>(source)[k]);
  } else if (from == ORV_TYP_FLOAT && to == ORV_TYP_DOUBLE) {
    for (long k = 0; k < n; ++k) static_cast<double*>(target)[k] = static_cast<double>(static_cast<const float*>(source)[k]);
  } else if (from == ORV_TYP_DOUBLE && to == ORV_TYP_FLOAT) {
    for (long k = 0; k < n; ++k) static_cast<float*>(target)[k] = static_cast<float>(static_cast<const double*>(source)[k]);
  } else {
    for (long k = 0; k < n; ++k) convert_one(from, source, to, target, k, strict);
  }
}

Value detail::convert(const Value& value, int type, bool strict) {
  if (!value.defined()) throw_undefined(&value.raw());
  if (value.type() == type) return value;
  if (type == ORV_TYP_STRUCT || ORV_TypeSizeFunc(type) == 0 || value.type() == ORV_TYP_STRUCT) {
    throw Error("ERROR", "Cannot convert " + describe(value) + " to " + type_name(type) + ".");
  }
  Value result = value.is_array() ? Value::array(type, value.dims()) : Value::zero(type);
  convert_elements(value.type(), value.data(), type, result.writable(), value.count(), strict);
  return result;
}

Value Value::converted(int type) const {
  return detail::convert(*this, type, false);
}

double Value::to_real() const {
  if (v_.type == ORV_TYP_DOUBLE && v_.flags == 0) return v_.value.d;
  single(*this, "a number");
  if (type() == ORV_TYP_STRUCT) throw Error("ERROR", "Expected a number, found " + describe(*this) + ".");
  return real_part(wide(type(), data(), 0, ORV_TYP_DOUBLE), ORV_TYP_DOUBLE, true);
}

long Value::to_integer() const {
  single(*this, "an integer");
  if (type() == ORV_TYP_STRUCT) throw Error("ERROR", "Expected an integer, found " + describe(*this) + ".");
  return whole(type(), data(), 0, ORV_TYP_INT64, true);
}

bool Value::to_bool() const {
  if (!defined()) detail::throw_undefined(&v_);
  if (is_array() || type() == ORV_TYP_STRUCT) throw Error("ERROR", "Expected a scalar condition, found " + describe(*this) + ".");
  if (is_text()) return v_.value.str.len > 0;
  return wide(type(), data(), 0, ORV_TYP_BYTE) != Wide(0);
}

std::string Value::to_text() const {
  if (!is_text() || count() != 1) throw Error("ERROR", "Expected a string, found " + describe(*this) + ".");
  return std::string(text_of(*as<ORV_STRING>()));
}

std::vector<std::string> Value::to_texts() const {
  if (!is_text()) throw Error("ERROR", "Expected strings, found " + describe(*this) + ".");
  std::vector<std::string> texts;
  for (long k = 0; k < count(); ++k) texts.emplace_back(text_of(as<ORV_STRING>()[k]));
  return texts;
}

}  // namespace orv
