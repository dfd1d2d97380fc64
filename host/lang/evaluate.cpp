// Expressions.
#include <cmath>

#include "host/lang/interpreter.hpp"

namespace orv {
namespace {

constexpr long longest_range = 1L << 31;

std::string upper(std::string_view name) {
  std::string s(name);
  for (char& c : s)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return s;
}

}  // namespace

// ---- Numbers without values: scalars of the two common types. False means that the general way has to do it. ----

bool Interpreter::quick(const Expr& e, Number& n) const {
  switch (e.kind) {
    case ExprKind::constant:
      n = {e.constant.type() == ORV_TYP_DOUBLE, e.number, e.whole};
      return true;
    case ExprKind::local:
    case ExprKind::global: {
      const Value& v = slot_of(e);
      if (v.is_array()) return false;
      const int type = v.type();
      if (type == ORV_TYP_DOUBLE) {
        n = {true, *v.as<double>(), 0};
        return true;
      }
      if (type != ORV_TYP_INT64) return false;
      const long whole = *v.as<long>();
      n = {false, static_cast<double>(whole), whole};
      return true;
    }
    case ExprKind::unary: {
      if (e.unary != Unary::negate || !quick(*e.kids[0], n)) return false;
      if (!n.real && __builtin_sub_overflow(0L, n.i, &n.i)) return false;
      n.d = -n.d;
      return true;
    }
    case ExprKind::binary: {
      Number a, b;
      return quick(*e.kids[0], a) && quick(*e.kids[1], b) && quick_binary(e.binary, a, b, n);
    }
    default:
      return false;
  }
}

bool Interpreter::quick_binary(Binary op, const Number& a, const Number& b, Number& r) const {
  if (!a.real && !b.real) {
    r.real = false;
    const bool overflow = op == Binary::add        ? __builtin_add_overflow(a.i, b.i, &r.i)
                          : op == Binary::subtract ? __builtin_sub_overflow(a.i, b.i, &r.i)
                          : op == Binary::multiply ? __builtin_mul_overflow(a.i, b.i, &r.i)
                                                   : true;
    r.d = static_cast<double>(r.i);
    return !overflow;
  }
  r.real = true;
  switch (op) {
    case Binary::add:
      r.d = a.d + b.d;
      return true;
    case Binary::subtract:
      r.d = a.d - b.d;
      return true;
    case Binary::multiply:
      r.d = a.d * b.d;
      return true;
    case Binary::divide:
      r.d = a.d / b.d;
      return true;
    case Binary::power:
      r.d = std::pow(a.d, b.d);
      return true;
    default:
      return false;
  }
}

bool Interpreter::quick_compare(const Expr& e, bool& truth) const {
  if (e.kind != ExprKind::binary || !e.pure) return false;
  Number a, b;
  if (e.binary < Binary::equal || e.binary > Binary::greater_equal) return false;
  if (!quick(*e.kids[0], a) || !quick(*e.kids[1], b)) return false;
  const bool whole = !a.real && !b.real;
  switch (e.binary) {
    case Binary::equal:
      truth = whole ? a.i == b.i : a.d == b.d;
      return true;
    case Binary::not_equal:
      truth = whole ? a.i != b.i : a.d != b.d;
      return true;
    case Binary::less:
      truth = whole ? a.i < b.i : a.d < b.d;
      return true;
    case Binary::less_equal:
      truth = whole ? a.i <= b.i : a.d <= b.d;
      return true;
    case Binary::greater:
      truth = whole ? a.i > b.i : a.d > b.d;
      return true;
    default:
      truth = whole ? a.i >= b.i : a.d >= b.d;
      return true;
  }
}

bool Interpreter::condition(const Expr& e) {
  bool truth = false;
  if (quick_compare(e, truth)) return truth;
  Value* const mark = top_;
  Value& value = *push();
  evaluate(e, value);
  if (value.is_array() && value.count() != 1)
    throw Error("ERROR", "a condition expected one value, found " + describe(value) + "; use all() or any()");
  truth = value.to_bool();
  unwind(mark);
  return truth;
}

// ---- Values. The result is a slot of the stack that no expression can see. ----

const Value& Interpreter::variable(const Expr& e) const {
  const Value& v = slot_of(e);
  if (!v.defined()) throw Error("ERROR", "'" + e.name + "' is not defined");
  return v;
}

void Interpreter::evaluate(const Expr& e, Value& result) {
  Number n;
  if (e.pure && quick(e, n)) {
    result = n.real ? Value::real(n.d) : Value::integer(n.i);
    return;
  }
  evaluate_fully(e, result);
}

void Interpreter::evaluate_fully(const Expr& e, Value& result) {
  switch (e.kind) {
    case ExprKind::constant:
      result = e.constant;
      return;
    case ExprKind::none:
      result = Value();
      return;
    case ExprKind::local:
    case ExprKind::global:
      result = variable(e);
      return;
    case ExprKind::unary:
      e.pure ? evaluate_fully(*e.kids[0], result) : evaluate(*e.kids[0], result);
      result = apply(e.unary, result);
      return;
    case ExprKind::binary: {
      e.pure ? evaluate_fully(*e.kids[0], result) : evaluate(*e.kids[0], result);
      Value* const mark = top_;
      Value& right = *push();
      e.pure ? evaluate_fully(*e.kids[1], right) : evaluate(*e.kids[1], right);
      result = apply(e.binary, result, right);
      unwind(mark);
      return;
    }
    case ExprKind::logical_and:
    case ExprKind::logical_or:
      return evaluate_logical(e, result);
    case ExprKind::range:
      return evaluate_range(e, result);
    case ExprKind::array:
      return evaluate_array(e, result);
    case ExprKind::structure:
      return evaluate_structure(e, result);
    case ExprKind::index:
      return evaluate_index(e, result);
    case ExprKind::field:
      evaluate(*e.kids[0], result);
      if (result.type() != ORV_TYP_STRUCT)
        throw Error("ERROR", "'." + e.name + "' expected a structure, found " + describe(result));
      result = result.tag(upper(e.name));
      return;
    case ExprKind::call:
      call(e, result, false);
      if (!result.defined()) throw Error("ERROR", "'" + e.name + "' returned no value");
      return;
  }
}

// Scalars decide early; arrays are combined element by element.
void Interpreter::evaluate_logical(const Expr& e, Value& result) {
  const bool is_and = e.kind == ExprKind::logical_and;
  evaluate(*e.kids[0], result);
  if (!result.is_array() && result.to_bool() != is_and) {
    result = Value::boolean(!is_and);
    return;
  }
  Value* const mark = top_;
  Value& right = *push();
  evaluate(*e.kids[1], right);
  result = apply(is_and ? Binary::logical_and : Binary::logical_or, result, right);
  unwind(mark);
}

Interpreter::Range Interpreter::range_of(const Expr& e) {
  if (!e.kids[0] || !e.kids[1]) throw Error("ERROR", "a range needs a first and a last value here");
  Value* const mark = top_;
  Value* const parts[] = {push(), push(), push()};
  *parts[2] = Value::integer(1);
  bool whole = true;
  for (int k = 0; k < 3; ++k) {
    if (e.kids[static_cast<std::size_t>(k)]) evaluate(*e.kids[static_cast<std::size_t>(k)], *parts[k]);
    if (parts[k]->is_text() || parts[k]->count() != 1)
      throw Error("ERROR", "a range expected numbers, found " + describe(*parts[k]));
    whole = whole && (parts[k]->type() == ORV_TYP_INT64 || parts[k]->type() == ORV_TYP_BYTE);
  }
  Range r{};
  r.real = !whole;
  if (whole) {
    r.whole_first = parts[0]->to_integer();
    r.whole_step = parts[2]->to_integer();
    const long last = parts[1]->to_integer();
    if (r.whole_step == 0) throw Error("ERROR", "the step of a range must not be 0");
    const bool runs = r.whole_step > 0 ? r.whole_first <= last : r.whole_first >= last;
    const __int128 span = static_cast<__int128>(last) - r.whole_first;
    const __int128 count = runs ? span / r.whole_step + 1 : 0;
    r.count = count > longest_range ? longest_range + 1 : static_cast<long>(count);
  } else {
    r.first = parts[0]->to_real();
    r.step = parts[2]->to_real();
    const double steps = (parts[1]->to_real() - r.first) / r.step;
    if (r.step == 0 || !std::isfinite(steps)) throw Error("ERROR", "a range expected finite values and a step that is not 0");
    // The last value counts although rounding left the quotient a little short of it.
    const double whole_steps = std::floor(steps + 1e-10 * std::max(1.0, std::fabs(steps)));
    r.count = whole_steps < 0                                     ? 0
              : whole_steps >= static_cast<double>(longest_range) ? longest_range + 1
                                                                  : static_cast<long>(whole_steps) + 1;
  }
  if (r.count > longest_range) throw Error("ERROR", "the range has more than 2^31 values");
  unwind(mark);
  return r;
}

void Interpreter::evaluate_range(const Expr& e, Value& result) {
  const Range r = range_of(e);
  result = Value::array(r.real ? ORV_TYP_DOUBLE : ORV_TYP_INT64, {r.count});
  void* data = result.writable();
  for (long k = 0; k < r.count; ++k) {
    if (r.real) {
      static_cast<double*>(data)[k] = r.first + static_cast<double>(k) * r.step;
    } else {
      static_cast<long*>(data)[k] = r.whole_first + k * r.whole_step;
    }
  }
}

void Interpreter::evaluate_array(const Expr& e, Value& result) {
  Value* const mark = top_;
  for (const ExprPtr& kid : e.kids) evaluate(*kid, *push());
  result = stack_values(std::span<const Value>(mark, e.kids.size()));
  unwind(mark);
}

void Interpreter::evaluate_structure(const Expr& e, Value& result) {
  Value* const mark = top_;
  for (const ExprPtr& kid : e.kids) evaluate(*kid, *push());
  const std::span<Value> values(mark, e.kids.size());
  std::vector<std::pair<std::string, Value>> fields;
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (!values[k].defined()) throw Error("ERROR", "the field '" + e.names[k] + "' has no value");
    fields.emplace_back(upper(e.names[k]), values[k]);
  }
  result = build_structure(fields);
  unwind(mark);
}

// ---- Subscripts ----

void Interpreter::push_subscripts(const Expr& e) {
  for (std::size_t k = 1; k < e.kids.size(); ++k) {
    const Expr& kid = *e.kids[k];
    if (kid.kind != ExprKind::range) {
      evaluate(kid, *push());
      continue;
    }
    for (const ExprPtr& part : kid.kids) {
      Value& slot = *push();
      if (part) evaluate(*part, slot);
    }
  }
}

namespace {

long resolved(const Value& v, long extent) {
  if (v.is_text() || v.is_array()) throw Error("ERROR", "a subscript expected whole numbers, found " + describe(v));
  const long k = v.to_integer();
  const long from_start = k < 0 ? k + extent : k;
  if (from_start < 0 || from_start >= extent) {
    throw Error("ERROR", "the subscript " + std::to_string(k) + " is outside an extent of " + std::to_string(extent));
  }
  return from_start;
}

Subscript range_subscript(const Value* parts, long extent) {
  Subscript s;
  s.kind = Subscript::range;
  s.step = parts[2].defined() ? parts[2].to_integer() : 1;
  if (s.step == 0) throw Error("ERROR", "the step of a range must not be 0");
  if (extent == 0 && !parts[0].defined() && !parts[1].defined()) {
    s.kind = Subscript::all;
    return s;
  }
  s.first = parts[0].defined() ? resolved(parts[0], extent) : s.step > 0 ? 0 : extent - 1;
  s.last = parts[1].defined() ? resolved(parts[1], extent) : s.step > 0 ? extent - 1 : 0;
  return s;
}

Subscript list_subscript(const Value& v, long extent) {
  Subscript s;
  s.kind = Subscript::list;
  const bool mask = v.type() == ORV_TYP_BYTE;
  if (mask && v.count() != extent)
    throw Error("ERROR",
                "a mask of " + std::to_string(v.count()) + " elements selects from an extent of " + std::to_string(extent));
  for (long k = 0; k < v.count(); ++k) {
    if (!mask) {
      s.indices.push_back(resolved(v.element(k), extent));
    } else if (v.as<unsigned char>()[k]) {
      s.indices.push_back(k);
    }
  }
  return s;
}

Value substring(const Value& text, const Subscript& s) {
  const std::string whole = text.to_text();
  if (s.kind == Subscript::all) return text;
  std::string part;
  const auto take = [&](long k) { part += whole[static_cast<std::size_t>(k)]; };
  if (s.kind == Subscript::single) take(s.first);
  if (s.kind == Subscript::range)
    for (long k = s.first; s.step > 0 ? k <= s.last : k >= s.last; k += s.step) take(k);
  if (s.kind == Subscript::list)
    for (long k : s.indices) take(k);
  return Value::text(part);
}

}  // namespace

std::vector<Subscript> Interpreter::subscripts(const Expr& e, const Value& array, const Value* parts) {
  const std::size_t n = e.kids.size() - 1;
  const bool characters = array.is_text() && !array.is_array();
  if (!array.is_array() && !characters) throw Error("ERROR", "a subscript expected an array, found " + describe(array));
  const Dims& dims = array.dims();
  const bool flat = n == 1 && dims.size() != 1;
  if (!flat && n != dims.size()) {
    throw Error("ERROR", "expected " + std::to_string(dims.size()) + " subscripts (or one) for " + describe(array) + ", found " +
                             std::to_string(n));
  }
  std::vector<Subscript> result;
  for (std::size_t k = 0; k < n; ++k) {
    const long extent = characters ? static_cast<long>(array.to_text().size()) : flat ? array.count() : dims[k];
    if (e.kids[k + 1]->kind == ExprKind::range) {
      result.push_back(range_subscript(parts, extent));
      parts += 3;
    } else if (parts->is_array()) {
      result.push_back(list_subscript(*parts++, extent));
    } else {
      Subscript s;
      s.kind = Subscript::single;
      s.first = s.last = resolved(*parts++, extent);
      result.push_back(s);
    }
  }
  return result;
}

void Interpreter::evaluate_index(const Expr& e, Value& result) {
  evaluate(*e.kids[0], result);
  Value* const mark = top_;
  push_subscripts(e);
  const bool one = e.kids.size() == 2;
  if (one && result.is_array() && e.kids[1]->kind != ExprKind::range && !mark->is_array() && mark->type() == ORV_TYP_INT64) {
    result = result.element(resolved(*mark, result.count()));  // no list of subscripts for the common case
  } else {
    const std::vector<Subscript> list = subscripts(e, result, mark);
    if (!result.is_array()) {
      result = substring(result, list[0]);
    } else if (one && result.dims().size() != 1) {
      result = index(result.reshaped({result.count()}), list);
    } else {
      result = index(result, list);
    }
  }
  unwind(mark);
}

}  // namespace orv
