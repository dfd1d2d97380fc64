#include "host/lang/format.hpp"

#include <algorithm>
#include <cstdio>

#include "host/lang/interpreter.hpp"

namespace orv {
namespace {

constexpr int widest_field = 4096;

struct Field {
  std::string flags;  // with width and precision
  char conversion = 0;
};

Field read_field(const std::string& format, std::size_t& at) {
  Field field;
  const auto here = [&] { return at < format.size() ? format[at] : '\0'; };
  const auto number = [&](const char* what) {
    int value = 0;
    while (here() >= '0' && here() <= '9') {
      value = value * 10 + (here() - '0');
      if (value > widest_field)
        throw Error("ERROR", std::string("the ") + what + " of a format may be at most " + std::to_string(widest_field));
      field.flags += format[at++];
    }
  };
  while (std::string("-+ #0").find(here()) != std::string::npos && here()) {
    if (field.flags.find(here()) == std::string::npos) field.flags += here();
    ++at;
  }
  number("width");
  if (here() == '.') {
    field.flags += format[at++];
    number("precision");
  }
  field.conversion = here();
  if (!field.conversion || std::string("diuxXoceEfFgGs").find(field.conversion) == std::string::npos) {
    throw Error("ERROR", std::string("the format expected one of d i u x X o c e f g s after %, found ") +
                             (field.conversion ? "'" + std::string(1, field.conversion) + "'" : "its end"));
  }
  ++at;
  return field;
}

template <class T>
std::string printed(const std::string& format, T value) {
  const int n = std::snprintf(nullptr, 0, format.c_str(), value);
  if (n < 0) throw Error("ERROR", "the value cannot be formatted with " + format);
  std::string text(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(text.data(), text.size(), format.c_str(), value);
  text.pop_back();
  return text;
}

std::string one(const Field& field, const Value& v) {
  const std::string head = "%" + field.flags;
  switch (field.conversion) {
    case 's': {
      const std::string text = v.is_text() ? v.to_text() : to_display(v);
      return printed(head + "s", text.c_str());
    }
    case 'd':
    case 'i':
      return printed(head + "ld", v.to_integer());
    case 'c': {
      const long code = v.to_integer();
      if (code < 1 || code > 255) throw Error("ERROR", "%c expected a number from 1 to 255, found " + std::to_string(code));
      return printed(head + "c", static_cast<int>(code));
    }
    case 'u':
    case 'x':
    case 'X':
    case 'o':
      return printed(head + "l" + field.conversion, static_cast<unsigned long>(v.to_integer()));
    default:
      return printed(head + field.conversion, v.to_real());
  }
}

// The type that holds elements of both.
int joint_type(int a, int b) {
  if (a == b) return a;
  if (a == ORV_TYP_STRING || b == ORV_TYP_STRING || a == ORV_TYP_STRUCT || b == ORV_TYP_STRUCT) return ORV_TYP_UNDEF;
  const auto is_complex = [](int t) { return t == ORV_TYP_COMPLEX || t == ORV_TYP_DCOMPLEX; };
  const auto is_double = [](int t) { return t == ORV_TYP_DOUBLE || t == ORV_TYP_DCOMPLEX; };
  if (is_complex(a) || is_complex(b)) return is_double(a) || is_double(b) ? ORV_TYP_DCOMPLEX : ORV_TYP_COMPLEX;
  for (int t : {ORV_TYP_DOUBLE, ORV_TYP_FLOAT, ORV_TYP_INT64})
    if (a == t || b == t) return t;
  return ORV_TYP_BYTE;
}

}  // namespace

std::string format_text(const std::string& format, std::span<const Value> values) {
  std::vector<Value> flat;
  for (const Value& v : values) {
    if (!v.is_array()) flat.push_back(v);
    for (long k = 0; v.is_array() && k < v.count(); ++k) flat.push_back(v.element(k));
  }
  std::string result;
  std::size_t used = 0;
  for (std::size_t at = 0; at < format.size();) {
    if (format[at] != '%') {
      result += format[at++];
    } else if (at + 1 < format.size() && format[at + 1] == '%') {
      result += '%';
      at += 2;
    } else {
      const Field field = read_field(format, ++at);
      if (used == flat.size()) throw Error("ERROR", "the format takes more than the " + std::to_string(used) + " values given");
      result += one(field, flat[used++]);
    }
  }
  if (used != flat.size())
    throw Error("ERROR",
                "the format takes " + std::to_string(used) + " values, but " + std::to_string(flat.size()) + " are given");
  return result;
}

Value stack_values(std::span<const Value> values) {
  if (values.empty()) return Value::array(ORV_TYP_DOUBLE, {0});
  int type = values[0].type();
  for (const Value& v : values) {
    if (!v.defined()) throw Error("ERROR", "an element of the array is not defined");
    type = joint_type(type, v.type());
    if (type == ORV_TYP_UNDEF)
      throw Error("ERROR", "the elements of an array expected one kind, found " + describe(values[0]) + " and " + describe(v));
    if (v.dims() != values[0].dims())
      throw Error("ERROR", "the elements of an array expected one shape, found " + describe(values[0]) + " and " + describe(v));
  }
  Dims dims = values[0].dims();
  dims.insert(dims.begin(), static_cast<long>(values.size()));
  Value result =
      type == ORV_TYP_STRUCT ? Value::structure(values[0].definition(), dims[0]).reshaped(dims) : Value::array(type, dims);
  const long each = values[0].count();
  for (std::size_t k = 0; k < values.size(); ++k)
    for (long j = 0; j < each; ++j) result.set_element(static_cast<long>(k) * each + j, values[k].element(j));
  return result;
}

Value build_structure(const std::vector<std::pair<std::string, Value>>& fields) {
  // A definition lives as long as the program, so a loop that builds structures has to find its own again.
  static std::map<std::string, ORV_SDEF> known;
  std::string key;
  for (const auto& [name, value] : fields) {
    key += name + ":" + describe(value) + ";";
    if (value.type() == ORV_TYP_STRUCT) key += std::to_string(reinterpret_cast<std::uintptr_t>(value.definition())) + ";";
  }
  if (std::all_of(fields.begin(), fields.end(),
                  [](const auto& field) { return field.second.is_array() && field.second.count() == 0; }))
    throw Error("ERROR", "a structure expected at least one field that is not an empty array");
  ORV_SDEF& definition = known[key];
  if (!definition) definition = define_structure(fields);
  Value result = Value::structure(definition, -1);
  for (const auto& [name, value] : fields) result.set_tag(name, value);
  return result;
}

void set_field(Value& structure, const std::string& name, const Value& value) {
  if (structure.type() != ORV_TYP_STRUCT || structure.is_array())
    throw Error("ERROR", "'." + name + "' expected a structure, found " + describe(structure));
  if (!value.defined()) throw Error("ERROR", "the field '" + name + "' cannot be set to a value that is not defined");
  std::string tag = name;
  for (char& c : tag)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  std::vector<std::pair<std::string, Value>> fields;
  bool known = false;
  for (const std::string& other : structure.tags()) {
    const bool same = other == tag;
    fields.emplace_back(other, same ? value : structure.tag(other));
    if (!same) continue;
    known = true;
    const Value old = structure.tag(other);
    if (old.type() == value.type() && old.dims() == value.dims() && value.type() != ORV_TYP_STRUCT)
      return structure.set_tag(tag, value);
  }
  if (!known) fields.emplace_back(tag, value);
  structure = build_structure(fields);
}

}  // namespace orv
