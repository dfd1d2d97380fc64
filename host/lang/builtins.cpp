// The functions that are part of the language.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>

#include "host/lang/format.hpp"
#include "host/lang/interpreter.hpp"

namespace orv {
namespace {

[[noreturn]] void expected(const Arguments& a, const std::string& what) {
  throw Error("ERROR", std::string(a.builtin.name) + " expected " + what);
}

int type_code(const Arguments& a, const Value& keyword, int otherwise) {
  if (!keyword.defined()) return otherwise;
  const std::string name = keyword.to_text();
  for (int code : {ORV_TYP_BYTE, ORV_TYP_FLOAT, ORV_TYP_DOUBLE, ORV_TYP_COMPLEX, ORV_TYP_STRING, ORV_TYP_DCOMPLEX, ORV_TYP_INT64})
    if (type_name(code) == name) return code;
  expected(a, "type= to be \"byte\", \"integer\", \"float\", \"double\", \"" + type_name(ORV_TYP_COMPLEX) + "\", \"" +
                  type_name(ORV_TYP_DCOMPLEX) + "\" or \"string\", found \"" + name + "\"");
}

Dims shape_of(const Arguments& a, int first) {
  Dims dims;
  for (int k = first; k < a.count; ++k)
    for (long j = 0; j < a[k].count(); ++j) {
      const long extent = a[k].element(j).to_integer();
      if (extent < 0) expected(a, "extents of at least 0, found " + std::to_string(extent));
      dims.push_back(extent);
    }
  return dims;
}

// ---- Output and errors ----

void print(const Arguments& a, Value&) {
  std::string line;
  for (int k = 0; k < a.count; ++k)
    line += (k ? " " : "") + (a[k].is_text() && !a[k].is_array() ? a[k].to_text() : to_display(a[k]));
  a.interpreter.print(line + "\n");
}
void help(const Arguments& a, Value&) {
  a.interpreter.print(a.interpreter.help(a.count ? a[0].to_text() : ""));
}
void exit_(const Arguments& a, Value&) {
  a.interpreter.exit(a.count ? static_cast<int>(a[0].to_integer()) : 0);
}
void assert_(const Arguments& a, Value&) {
  bool holds = true;
  for (long k = 0; k < a[0].count(); ++k) holds = holds && a[0].element(k).to_bool();
  if (!holds) throw Error("ASSERTION", a.count > 1 ? a[1].to_text() : "the assertion does not hold");
}
void fault(const Arguments& a, Value&) {
  const std::string_view name = [&]() -> std::string_view {
    const std::string text = a[0].to_text();
    return text == "segv" ? "segv" : text == "ill" ? "ill" : "";
  }();
  if (name.empty()) expected(a, "\"segv\" or \"ill\"");
  std::fflush(stdout);
  std::raise(name == "segv" ? SIGSEGV : SIGILL);
}

// ---- Making arrays ----

void zeros(const Arguments& a, Value& result) {
  result = Value::array(type_code(a, a.keywords[0], ORV_TYP_DOUBLE), shape_of(a, 0));
}
void ones(const Arguments& a, Value& result) {
  const int type = type_code(a, a.keywords[0], ORV_TYP_DOUBLE);
  if (type == ORV_TYP_STRING) expected(a, "a type of numbers");
  result = Value::array(type, shape_of(a, 0));
  for (long k = 0; k < result.count(); ++k) result.set_element(k, Value::integer(1));
}
void identity(const Arguments& a, Value& result) {
  const long n = a[0].to_integer();
  result = Value::array(ORV_TYP_DOUBLE, {n, n});
  auto* data = static_cast<double*>(result.writable());
  for (long k = 0; k < n; ++k) data[k * n + k] = 1;
}
void linspace(const Arguments& a, Value& result) {
  const double first = a[0].to_real();
  const double last = a[1].to_real();
  const long n = a[2].to_integer();
  if (n < 2) expected(a, "at least 2 values, found " + std::to_string(n));
  result = Value::array(ORV_TYP_DOUBLE, {n});
  auto* data = static_cast<double*>(result.writable());
  for (long k = 0; k < n; ++k)
    data[k] = k == n - 1 ? last : first + (last - first) * (static_cast<double>(k) / static_cast<double>(n - 1));
}
void concat(const Arguments& a, Value& result) {
  std::vector<Value> items;
  for (int k = 0; k < a.count; ++k)
    for (long j = 0; j < a[k].count(); ++j) items.push_back(a[k].element(j));
  result = stack_values(items);
}
void reshape(const Arguments& a, Value& result) {
  result = a[0].reshaped(shape_of(a, 1));
}
void transpose(const Arguments& a, Value& result) {
  const Dims& dims = a[0].dims();
  if (dims.size() != 2) expected(a, "a matrix, found " + describe(a[0]));
  result = Value::array(a[0].type(), {dims[1], dims[0]});
  for (long i = 0; i < dims[0]; ++i)
    for (long j = 0; j < dims[1]; ++j) result.set_element(j * dims[0] + i, a[0].element(i * dims[1] + j));
}
void complex_(const Arguments& a, Value& result) {
  Value i = Value::zero(ORV_TYP_DCOMPLEX);
  i.variable()->value.dcmp = {0, 1};
  result = apply(Binary::add, a[0], apply(Binary::multiply, a[1], i));
}
void convert(const Arguments& a, Value& result) {
  result = a[0].converted(type_code(a, a[1], 0));
}

// ---- Asking about values ----

void defined(const Arguments& a, Value& result) {
  result = Value::boolean(a[0].defined());
}
void type(const Arguments& a, Value& result) {
  result = Value::text(type_name(a[0].type()));
}
void size(const Arguments& a, Value& result) {
  result = Value::integer(a[0].count());
}
void shape(const Arguments& a, Value& result) {
  const Dims& dims = a[0].dims();
  result = Value::array(ORV_TYP_INT64, {static_cast<long>(dims.size())});
  std::copy(dims.begin(), dims.end(), static_cast<long*>(result.writable()));
}
void len(const Arguments& a, Value& result) {
  result = Value::integer(a[0].is_text() && !a[0].is_array() ? static_cast<long>(a[0].to_text().size()) : a[0].count());
}
void tags(const Arguments& a, Value& result) {
  if (a[0].type() != ORV_TYP_STRUCT) expected(a, "a structure, found " + describe(a[0]));
  std::vector<Value> names;
  for (const std::string& name : a[0].tags()) names.push_back(Value::text(name));
  result = stack_values(names);
}

// ---- Reductions ----

void sum(const Arguments& a, Value& result) {
  const bool small = a[0].type() == ORV_TYP_BYTE;
  Value total = Value::integer(0);
  if (a[0].type() == ORV_TYP_DOUBLE) {
    double s = 0;
    const double* x = a[0].as<double>();
    for (long k = 0; k < a[0].count(); ++k) s += x[k];
    total = Value::real(s);
  } else {
    if (!small && a[0].type() != ORV_TYP_INT64) total = Value::zero(a[0].type());
    for (long k = 0; k < a[0].count(); ++k) total = apply(Binary::add, total, a[0].element(k));
  }
  result = std::move(total);
}
void extreme(const Arguments& a, Value& result, Binary better) {
  bool first = true;
  for (int k = 0; k < a.count; ++k)
    for (long j = 0; j < a[k].count(); ++j) {
      Value candidate = a[k].element(j);
      if (first || apply(better, candidate, result).to_bool()) result = std::move(candidate);
      first = false;
    }
  if (first) expected(a, "at least one element");
}
void min_(const Arguments& a, Value& result) {
  extreme(a, result, Binary::less);
}
void max_(const Arguments& a, Value& result) {
  extreme(a, result, Binary::greater);
}
void all(const Arguments& a, Value& result) {
  bool truth = true;
  for (long k = 0; k < a[0].count(); ++k) truth = truth && a[0].element(k).to_bool();
  result = Value::boolean(truth);
}
void any(const Arguments& a, Value& result) {
  bool truth = false;
  for (long k = 0; k < a[0].count(); ++k) truth = truth || a[0].element(k).to_bool();
  result = Value::boolean(truth);
}

// ---- Text ----

template <class Change>
void change_text(const Arguments& a, Value& result, const Change& change) {
  if (!a[0].is_text()) expected(a, "a text, found " + describe(a[0]));
  result = a[0];
  for (long k = 0; k < result.count(); ++k) {
    std::string text = a[0].is_array() ? a[0].element(k).to_text() : a[0].to_text();
    for (char& c : text) c = change(c);
    if (a[0].is_array()) {
      result.set_element(k, Value::text(text));
    } else {
      result = Value::text(text);
    }
  }
}
void upper(const Arguments& a, Value& result) {
  change_text(a, result, [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
}
void lower(const Arguments& a, Value& result) {
  change_text(a, result, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
}
void text(const Arguments& a, Value& result) {
  result = Value::text(a[0].is_text() && !a[0].is_array() ? a[0].to_text() : to_display(a[0]));
}
void format(const Arguments& a, Value& result) {
  result =
      Value::text(format_text(a[0].to_text(), std::span<const Value>(a.positional + 1, static_cast<std::size_t>(a.count - 1))));
}

// ---- The rest ----

void load(const Arguments& a, Value&) {
  a.interpreter.load_module(a[0].to_text());
}
void time_(const Arguments&, Value& result) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  result = Value::real(std::chrono::duration<double>(now).count());
}
void atan2_(const Arguments& a, Value& result) {
  result = Value::real(std::atan2(a[0].to_real(), a[1].to_real()));
}

}  // namespace

const std::map<std::string, Builtin, std::less<>>& builtins() {
  constexpr int many = 255;
  static const Builtin rows[] = {
      {"all", 1, 1, {}, all, "all(x)", "whether no element is 0"},
      {"any", 1, 1, {}, any, "any(x)", "whether some element is not 0"},
      {"assert", 1, 2, {}, assert_, "assert(condition, text)", "throws the error ASSERTION when the condition does not hold"},
      {"atan2", 2, 2, {}, atan2_, "atan2(y, x)", "the angle of the point (x, y)"},
      {"complex", 2, 2, {}, complex_, "complex(re, im)", "a complex number"},
      {"concat", 1, many, {}, concat, "concat(a, b, ...)", "the elements of all arguments as one vector"},
      {"convert", 2, 2, {}, convert, "convert(x, \"type\")", "x as another type"},
      {"defined", 1, 1, {}, defined, "defined(x)", "whether the variable has a value", true},
      {"exit", 0, 1, {}, exit_, "exit(status = 0)", "ends the program"},
      {"fault", 1, 1, {}, fault, "fault(\"segv\" or \"ill\")", "raises that signal, to try what a crash in a user function does"},
      {"format", 1, many, {}, format, "format(\"%.6g\", x, ...)", "numbers and texts in the notation of printf"},
      {"help", 0, 1, {}, help, "help \"name\"", "what a routine does; without a name: all routines"},
      {"identity", 1, 1, {}, identity, "identity(n)", "the identity matrix"},
      {"len", 1, 1, {}, len, "len(x)", "characters of a text, elements of an array"},
      {"linspace", 3, 3, {}, linspace, "linspace(first, last, n)", "n doubles at equal distance"},
      {"load_module", 1, 1, {}, load, "load_module(\"path\")", "loads a module; its procedures can be called then"},
      {"lower", 1, 1, {}, lower, "lower(text)", "the text in lower case"},
      {"max", 1, many, {}, max_, "max(x, ...)", "the largest of all elements"},
      {"min", 1, many, {}, min_, "min(x, ...)", "the smallest of all elements"},
      {"ones", 1, 8, {"type"}, ones, "ones(n, m, ..., type = \"double\")", "an array of ones"},
      {"print", 0, many, {}, print, "print a, b, ...", "prints values with a blank between, and a newline"},
      {"quit", 0, 1, {}, exit_, "quit(status = 0)", "ends the program"},
      {"reshape", 2, 9, {}, reshape, "reshape(x, n, m, ...)", "the same elements in another shape"},
      {"shape", 1, 1, {}, shape, "shape(x)", "the extents of an array"},
      {"size", 1, 1, {}, size, "size(x)", "the number of elements"},
      {"count", 1, 1, {}, size, "count(x)", "the number of elements"},
      {"sum", 1, 1, {}, sum, "sum(x)", "the sum of all elements"},
      {"tags", 1, 1, {}, tags, "tags(s)", "the names of the fields of a structure"},
      {"text", 1, 1, {}, text, "text(x)", "what print shows, as a text"},
      {"time", 0, 0, {}, time_, "time()", "seconds since 1970"},
      {"transpose", 1, 1, {}, transpose, "transpose(a)", "the transposed matrix"},
      {"type", 1, 1, {}, type, "type(x)", "the name of the type", true},
      {"upper", 1, 1, {}, upper, "upper(text)", "the text in upper case"},
      {"zeros", 1, 8, {"type"}, zeros, "zeros(n, m, ..., type = \"double\")", "an array of zeros"},
  };
  static const auto table = [] {
    std::map<std::string, Builtin, std::less<>> m;
    for (const Builtin& row : rows) m.emplace(row.name, row);
    return m;
  }();
  return table;
}

bool is_elementwise(const std::string& name) {
  Value ignored;
  try {
    return elementwise(name, Value::real(0.5), ignored);
  } catch (const Error&) {
    return true;  // known, and particular about its argument
  }
}

}  // namespace orv
