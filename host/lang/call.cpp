// Calls: of routines of the language, builtins and module procedures, and from modules.
#include <alloca.h>

#include <cstring>

#include "host/lang/interpreter.hpp"

namespace orv {
namespace {

constexpr int deepest_call = 2000;

std::string lower(std::string_view name) {
  std::string s(name);
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return s;
}

bool is_variable(const Expr& e) {
  return e.kind == ExprKind::local || e.kind == ExprKind::global;
}

std::string counted(long n, const char* what) {
  return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
}

const Function* named(const std::string& name, const Unit& unit) {
  const auto found = unit.find(name);
  return found == unit.end() ? nullptr : found->second;
}

}  // namespace

// A library may end the process when its own stack of calls is full, so the language stops well before that.
constexpr int deepest_module_call = 50;

void Interpreter::enter() {
  check_interrupt();
  if (depth_ >= deepest_call || static_cast<const char*>(__builtin_frame_address(0)) < stack_limit_) {
    throw Error("ERROR", "calls are nested too deep (" + std::to_string(depth_) + " levels, at most " +
                             std::to_string(deepest_call) + ")");
  }
  ++depth_;
}

// A routine file keeps its meaning whatever the session defines: there the session comes last.
void Interpreter::resolve(const Expr& e) {
  using Target = Expr::Target;
  e.function = named(e.name, unit_ ? *unit_ : session_);
  e.builtin = nullptr;
  if (e.function) {
    e.target = Target::user;
  } else if (const auto found = builtins().find(e.name); found != builtins().end()) {
    e.target = Target::builtin;
    e.builtin = &found->second;
  } else if (is_elementwise(e.name)) {
    e.target = Target::elementwise;
  } else if (has_procedure(e.name)) {
    e.target = Target::module;
  } else {
    e.function = load_routine(e.name);
    if (!e.function) e.function = named(e.name, session_);
    e.target = Target::user;
    if (!e.function) throw Error("ERROR", "there is no function or procedure '" + e.name + "'");
  }
  e.epoch = epoch_;
}

void Interpreter::call(const Expr& e, Value& result, bool as_statement) {
  if (e.epoch != epoch_) resolve(e);
  switch (e.target) {
    case Expr::Target::user:
      if (e.function->is_procedure && !as_statement)
        throw Error("ERROR", "'" + e.name + "' is a procedure and has no value; call it as a statement");
      return call_user(e, *e.function, result);
    case Expr::Target::builtin:
      return call_builtin(e, *e.builtin, result);
    case Expr::Target::elementwise:
      return call_elementwise(e, result);
    default:
      if (!as_statement)
        throw Error("ERROR", "'" + e.name +
                                 "' is a procedure of a module: call it as a statement, results come back through its arguments");
      return call_module(e);
  }
}

// A variable without a value is an error, unless it takes an output or hands on a parameter that was not given.
void Interpreter::argument_value(const Expr& argument, bool undefined_allowed, Value& slot) {
  if (argument.kind == ExprKind::none) return;
  if (!is_variable(argument)) return evaluate(argument, slot);
  slot = undefined_allowed || argument.parameter ? slot_of(argument) : variable(argument);
}

std::size_t Interpreter::parameter_of(const Expr& e, const Function& f, std::size_t argument) {
  const std::string& keyword = e.names[argument];
  if (keyword.empty()) return argument;
  for (std::size_t k = 0; k < f.parameters.size(); ++k) {
    if (f.parameters[k].name != keyword) continue;
    if (k < argument && e.names[k].empty()) throw Error("ERROR", "'" + f.name + "' got its argument '" + keyword + "' twice");
    return k;
  }
  std::string known;
  for (const Parameter& p : f.parameters) known += (known.empty() ? "" : ", ") + p.name;
  throw Error("ERROR",
              "'" + f.name + "' has no argument '" + keyword + "'; expected one of: " + (known.empty() ? "(none)" : known));
}

void Interpreter::call_user(const Expr& e, const Function& f, Value& result) {
  const std::size_t n = e.kids.size();
  if (n > f.parameters.size()) {
    throw Error("ERROR", "'" + f.name + "' expected at most " + counted(static_cast<long>(f.parameters.size()), "argument") +
                             ", found " + std::to_string(n));
  }
  Value* const frame = top_;
  for (int k = 0; k < f.slots; ++k) push();
  bool outputs = false;
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t p = parameter_of(e, f, k);
    const bool output = f.parameters[p].output;
    if (output && e.kids[k]->kind != ExprKind::none && !e.kids[k]->assignable())
      throw Error("ERROR", "the argument '" + f.parameters[p].name + "' of '" + f.name + "' is an output; expected a variable");
    argument_value(*e.kids[k], output, frame[p]);
    outputs = outputs || output;
  }
  if (f.unit && !unit_) {
    run_routine(f, frame, result);
  } else {
    run_function(f, frame, result);
  }
  for (std::size_t k = 0; outputs && k < n; ++k) {
    const std::size_t p = parameter_of(e, f, k);
    if (f.parameters[p].output && e.kids[k]->kind != ExprKind::none) assign(*e.kids[k], frame[p]);
  }
  unwind(frame);
}

// What a routine file raises on purpose is about its caller's arguments, so it is told with the caller's place.
void Interpreter::run_routine(const Function& f, Value* frame, Value& result) {
  try {
    run_function(f, frame, result);
  } catch (Error& e) {
    if (e.name != "ERROR" && !e.name.empty() && e.name != "INTERRUPTED") {
      e.line = 0;
      e.file.clear();
    }
    throw;
  }
}

void Interpreter::run_function(const Function& f, Value* frame, Value& result) {
  enter();
  Value* const base = base_;
  Value* const outer_result = result_;
  const Unit* const unit = unit_;
  base_ = frame;
  result_ = &result;
  unit_ = f.unit;
  for (std::size_t k = 0; k < f.parameters.size(); ++k) {
    const Parameter& p = f.parameters[k];
    if (frame[k].defined() || p.output) continue;
    if (!p.fallback) throw Error("ERROR", "'" + f.name + "' needs its argument '" + p.name + "'");
    evaluate(*p.fallback, frame[k]);
  }
  run_block(f.body);
  base_ = base;
  result_ = outer_result;
  unit_ = unit;
  --depth_;
}

void Interpreter::call_builtin(const Expr& e, const Builtin& builtin, Value& result) {
  Value* const mark = top_;
  const std::size_t n = e.kids.size();
  int count = 0;
  while (static_cast<std::size_t>(count) < n && e.names[static_cast<std::size_t>(count)].empty()) ++count;
  if (count < builtin.least || count > builtin.most)
    throw Error("ERROR", "expected " + std::string(builtin.usage) + ", found " + counted(count, "argument"));
  for (int k = 0; k < count; ++k) argument_value(*e.kids[static_cast<std::size_t>(k)], builtin.undefined_allowed, *push());
  Value* const keywords = top_;
  for (std::size_t k = 0; k < builtin.keywords.size(); ++k) push();
  for (std::size_t k = static_cast<std::size_t>(count); k < n; ++k) {
    std::size_t at = 0;
    while (at < builtin.keywords.size() && builtin.keywords[at] != e.names[k]) ++at;
    if (at == builtin.keywords.size())
      throw Error("ERROR", "'" + e.name + "' has no keyword '" + e.names[k] + "'; expected " + builtin.usage);
    argument_value(*e.kids[k], false, keywords[at]);
  }
  builtin.run(Arguments{*this, builtin, mark, count, keywords}, result);
  unwind(mark);
}

void Interpreter::call_elementwise(const Expr& e, Value& result) {
  if (e.kids.size() != 1 || !e.names[0].empty())
    throw Error("ERROR", "'" + e.name + "' expected 1 argument, found " + std::to_string(e.kids.size()));
  Value* const mark = top_;
  Value& argument = *push();
  evaluate(*e.kids[0], argument);
  elementwise(e.name, argument, result);
  unwind(mark);
}

// Variables go by reference; the module may define and change them.
void Interpreter::call_module(const Expr& e) {
  const State before = state();
  const std::size_t n = e.kids.size();
  auto** arguments = static_cast<Value**>(alloca((n + 1) * sizeof(Value*)));
  for (std::size_t k = 0; k < n; ++k) {
    if (!e.names[k].empty())
      throw Error("ERROR", "'" + e.name + "' is a procedure of a module and takes positional arguments only");
    if (is_variable(*e.kids[k])) {
      arguments[k] = &slot_of(*e.kids[k]);
    } else {
      arguments[k] = push();
      argument_value(*e.kids[k], true, *arguments[k]);
    }
  }
  if (module_depth_ >= deepest_module_call)
    throw Error("ERROR", "calls of modules are nested too deep (at most " + std::to_string(deepest_module_call) + " levels)");
  enter();
  ++module_depth_;
  const State inside = state();
  try {
    call_procedure(e.name, std::span<Value*>(arguments, n));
  } catch (const Error&) {
    restore(inside);
    if (exiting_) throw Exit{exit_status_};
    throw;
  }
  // A fault that the module trapped has jumped over frames of this interpreter: their values are still on the stack.
  restore(before);
}

// ---- From modules ----

const Function* Interpreter::routine_for_module(const char* name) {
  if (last_called_ && last_epoch_ == epoch_ && std::strcmp(last_called_->upper_name.c_str(), name) == 0) return last_called_;
  const std::string plain = lower(name);
  const auto found = session_.find(plain);
  const Function* f = found != session_.end() ? found->second : nullptr;
  if (!f && !is_elementwise(plain)) f = load_routine(plain);
  last_called_ = f;
  last_epoch_ = epoch_;
  return f;
}

Value Interpreter::call_from_module(const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments) {
  const State before = state();
  try {
    Value result = run_from_module(name, is_function, arguments);
    restore(before);
    return result;
  } catch (const Error&) {
    restore(before);
    throw;
  } catch (const Exit&) {
    restore(before);
    throw Error("EXIT", "the program ends");  // the module is left in order, then call_module goes on with it
  }
}

Value Interpreter::run_from_module(const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments) {
  const Function* f = routine_for_module(name);
  const std::size_t n = arguments.size();
  if (!f) {
    Value result;
    const std::string plain = lower(name);
    if (!is_function || n != 1 || !is_elementwise(plain)) throw Error("ERROR", "the user routine '" + plain + "' is not defined");
    elementwise(plain, view(arguments[0]), result);
    return result;
  }
  if (f->is_procedure == is_function)
    throw Error("ERROR",
                "'" + f->name + "' is a " + (is_function ? "procedure; expected a function" : "function; expected a procedure"));
  if (n > f->parameters.size())
    throw Error("ERROR", "the user routine '" + f->name + "' is called with " + counted(static_cast<long>(n), "argument") +
                             ", but it has " + counted(static_cast<long>(f->parameters.size()), "parameter"));
  Value& result = *push();
  Value* const frame = top_;
  for (int k = 0; k < f->slots; ++k) push();
  for (std::size_t k = 0; k < n; ++k) {
    const ORV_VARIABLE& v = *arguments[k];
    if (v.type == ORV_TYP_DOUBLE && (v.flags & ~ORV_V_TEMP) == 0) {
      frame[k] = Value::real(v.value.d);
    } else if (v.type != ORV_TYP_UNDEF) {
      frame[k] = view(arguments[k]);
    }
  }
  run_function(*f, frame, result);
  for (std::size_t k = 0; k < n; ++k)
    if (f->parameters[k].output && frame[k].defined()) orv::assign(arguments[k], frame[k]);
  if (is_function && !result.defined()) throw Error("ERROR", "the user function '" + f->name + "' returned no value");
  return std::move(result);
}

}  // namespace orv
