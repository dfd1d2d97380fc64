// Statements, and what an interpreter keeps.
#include "host/lang/interpreter.hpp"

#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace orv {
namespace {

constexpr long stack_slots = 1L << 20;
volatile std::sig_atomic_t interrupted = 0;

void print_to_stdout(void*, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

// The routines of the language must not exhaust the machine's stack: where the guard stands.
const char* machine_stack_limit() {
  rlimit limit{};
  std::size_t size = std::size_t{8} << 20;
  if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
    size = std::min<std::size_t>(limit.rlim_cur, std::size_t{64} << 20);
  const char* here = static_cast<const char*>(__builtin_frame_address(0));
  return here - size / 4 * 3;
}

}  // namespace

Value error_value(const Error& error) {
  static const ORV_SDEF definition = define_structure(
      {{"NAME", Value::text("")}, {"MESSAGE", Value::text("")}, {"FILE", Value::text("")}, {"LINE", Value::integer(0)}});
  Value v = Value::structure(definition, -1);
  v.set_tag("NAME", Value::text(error.name.empty() ? "ERROR" : error.name));
  v.set_tag("MESSAGE", Value::text(error.what()));
  v.set_tag("FILE", Value::text(error.file));
  v.set_tag("LINE", Value::integer(error.line));
  return v;
}

Interpreter::Interpreter() : stack_limit_(machine_stack_limit()), printer_(print_to_stdout) {
  stack_ = static_cast<Value*>(std::malloc(stack_slots * sizeof(Value)));
  if (!stack_) throw Error("ERROR", "not enough memory for the stack of the interpreter");
  end_ = stack_ + stack_slots;
  top_ = base_ = stack_;
  set_user_routine_handler(
      [](void* self, const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments) {
        return static_cast<Interpreter*>(self)->call_from_module(name, is_function, arguments);
      },
      this);
}

Interpreter::~Interpreter() {
  set_user_routine_handler(nullptr, nullptr);
  unwind(stack_);
  std::free(stack_);
}

Value* Interpreter::push() {
  if (top_ == end_) throw Error("ERROR", "the stack of the interpreter is full: too many values are in use at once");
  return new (top_++) Value;
}
void Interpreter::unwind(Value* top) {
  while (top_ > top) (--top_)->~Value();
}
void Interpreter::restore(const State& s) {
  unwind(s.top);
  base_ = s.base;
  result_ = s.result;
  unit_ = s.unit;
  depth_ = s.depth;
  module_depth_ = s.module_depth;
}

void Interpreter::interrupt() {
  interrupted = 1;
}
bool Interpreter::take_interrupt() {
  const bool was = interrupted != 0;
  interrupted = 0;
  return was;
}
void Interpreter::check_interrupt() {
  if (interrupted && take_interrupt()) throw Error("INTERRUPTED", "interrupted");
}

void Interpreter::exit(int status) {
  exiting_ = true;
  exit_status_ = status;
  throw Exit{status};
}

void Interpreter::set_printer(Printer printer, void* context) {
  printer_ = printer ? printer : print_to_stdout;
  printer_context_ = context;
}
void Interpreter::print(std::string_view text) const {
  printer_(printer_context_, text);
}
void Interpreter::set_global(const std::string& name, Value value) {
  auto& slot = globals_[name];
  if (!slot) slot = std::make_unique<Value>();
  *slot = std::move(value);
}
Value Interpreter::global(const std::string& name) {
  const auto found = globals_.find(name);
  return found == globals_.end() ? Value() : *found->second;
}

const std::string* Interpreter::keep_file_name(const std::string& file) {
  for (const std::string& known : file_names_)
    if (known == file) return &known;
  return &file_names_.emplace_back(file);
}

Program Interpreter::parse_program(std::string_view text, const std::string& file, int first_line) {
  return parse(
      text, *keep_file_name(file),
      [this](const std::string& name) {
        auto& slot = globals_[name];
        if (!slot) slot = std::make_unique<Value>();
        return slot.get();
      },
      first_line);
}

bool Interpreter::needs_more(std::string_view text) {
  try {
    parse_program(text, "input", 1);
  } catch (const SyntaxError& e) {
    return e.incomplete;
  }
  return false;
}

void Interpreter::run(std::string_view text, const std::string& file, int first_line, bool echo) {
  Program program = parse_program(text, file, first_line);
  for (auto& f : program.functions) define(std::move(f), session_);
  const State before = state();
  const bool outer_echo = echo_;
  echo_ = echo;
  try {
    run_block(program.body);
  } catch (...) {
    restore(before);
    echo_ = outer_echo;
    throw;
  }
  restore(before);
  echo_ = outer_echo;
}

void Interpreter::run_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  if (!in || !(text << in.rdbuf())) throw Error("ERROR", "cannot read the file '" + path + "'");
  run(text.str(), path);
}

Interpreter::Flow Interpreter::run_block(const Block& block) {
  const Stmt* at = nullptr;
  const auto place = [&](Error& e) {
    if (e.line != 0 || !at) return;
    e.file = *block.file;
    e.line = at->line;
  };
  try {
    for (const auto& s : block.statements) {
      at = s.get();
      const Flow flow = run_statement(*s);
      if (flow != Flow::next) return flow;
    }
  } catch (Error& e) {
    place(e);
    throw;
  } catch (const std::bad_alloc&) {
    Error e("ERROR", "not enough memory");
    place(e);
    throw e;
  } catch (const std::length_error&) {
    Error e("ERROR", "not enough memory: an array or text is too large");
    place(e);
    throw e;
  }
  return Flow::next;
}

Interpreter::Flow Interpreter::run_statement(const Stmt& s) {
  switch (s.kind) {
    case StmtKind::expression:
      run_expression(s);
      return Flow::next;
    case StmtKind::assign:
      run_assign(s);
      return Flow::next;
    case StmtKind::if_:
      return run_if(s);
    case StmtKind::while_:
      return run_while(s);
    case StmtKind::for_:
      return s.value->kind == ExprKind::range ? run_for_range(s) : run_for(s);
    case StmtKind::break_:
      return Flow::break_;
    case StmtKind::continue_:
      return Flow::continue_;
    case StmtKind::return_:
      if (s.value) evaluate(*s.value, *result_);
      return Flow::return_;
    case StmtKind::try_:
      return run_try(s);
    case StmtKind::throw_:
      run_throw(s);
  }
  return Flow::next;
}

void Interpreter::run_expression(const Stmt& s) {
  Value* const mark = top_;
  if (s.value->kind == ExprKind::call) {
    // A procedure has no value; a function's value is shown or dropped.
    Value& result = *push();
    call(*s.value, result, true);
    if (echo_ && depth_ == 0 && result.defined()) print(to_display(result) + "\n");
  } else {
    Value& result = *push();
    evaluate(*s.value, result);
    if (echo_ && depth_ == 0) print(to_display(result) + "\n");
  }
  unwind(mark);
}

void Interpreter::run_assign(const Stmt& s) {
  const Expr& target = *s.target;
  const bool variable = target.kind == ExprKind::local || target.kind == ExprKind::global;
  Number n;
  if (variable && s.value->pure && quick(*s.value, n)) {
    slot_of(target) = n.real ? Value::real(n.d) : Value::integer(n.i);
    return;
  }
  Value* const mark = top_;
  Value& value = *push();
  evaluate(*s.value, value);
  assign(target, value);
  unwind(mark);
}

Interpreter::Flow Interpreter::run_if(const Stmt& s) {
  for (std::size_t k = 0; k < s.conditions.size(); ++k)
    if (condition(*s.conditions[k])) return run_block(s.blocks[k]);
  if (s.blocks.size() > s.conditions.size()) return run_block(s.blocks.back());
  return Flow::next;
}

// One turn of a loop; false when the loop ends, with the flow that its statement has then.
bool Interpreter::turn(const Stmt& s, Flow& flow) {
  check_interrupt();
  flow = run_block(s.blocks[0]);
  if (flow == Flow::return_) return false;
  const bool goes_on = flow != Flow::break_;
  flow = Flow::next;
  return goes_on;
}

Interpreter::Flow Interpreter::run_while(const Stmt& s) {
  Flow flow = Flow::next;
  while (condition(*s.value) && turn(s, flow)) {
  }
  return flow;
}

Interpreter::Flow Interpreter::run_for(const Stmt& s) {
  Value* const mark = top_;
  Value& items = *push();
  evaluate(*s.value, items);
  Flow flow = Flow::next;
  const long count = items.count();
  if (!items.is_array()) {
    slot_of(*s.target) = items;
    turn(s, flow);
  } else {
    for (long k = 0; k < count; ++k) {
      slot_of(*s.target) = items.element(k);
      if (!turn(s, flow)) break;
    }
  }
  unwind(mark);
  return flow;
}

// A range is counted, not built.
Interpreter::Flow Interpreter::run_for_range(const Stmt& s) {
  const Range r = range_of(*s.value);
  Flow flow = Flow::next;
  for (long k = 0; k < r.count; ++k) {
    slot_of(*s.target) =
        r.real ? Value::real(r.first + static_cast<double>(k) * r.step) : Value::integer(r.whole_first + k * r.whole_step);
    if (!turn(s, flow)) break;
  }
  return flow;
}

// The error leaves its C++ handler before other code of the program runs, so that a jump never passes a handler.
bool Interpreter::run_guarded(const Block& block, Flow& flow, Value& error) {
  try {
    flow = run_block(block);
    return true;
  } catch (const Error& e) {
    if (e.name == "INTERRUPTED" || exiting_) throw;
    error = error_value(e);
    return false;
  }
}

Interpreter::Flow Interpreter::run_try(const Stmt& s) {
  Value* const mark = top_;
  Value& error = *push();
  const State inside = state();
  Flow flow = Flow::next;
  if (!run_guarded(s.blocks[0], flow, error)) {
    restore(inside);
    if (s.target) slot_of(*s.target) = error;
    flow = run_block(s.blocks[1]);
  }
  unwind(mark);
  return flow;
}

void Interpreter::run_throw(const Stmt& s) {
  Value& value = *push();
  evaluate(*s.value, value);
  if (value.is_text()) throw Error("THROWN", value.to_text());
  if (value.type() != ORV_TYP_STRUCT) throw Error("ERROR", "throw expected a text or a caught error, found " + describe(value));
  Error e("THROWN", "");
  std::string message;
  for (const std::string& tag : value.tags()) {
    if (tag == "NAME") e.name = value.tag(tag).to_text();
    if (tag == "MESSAGE") message = value.tag(tag).to_text();
    if (tag == "FILE") e.file = value.tag(tag).to_text();
    if (tag == "LINE") e.line = static_cast<int>(value.tag(tag).to_integer());
  }
  Error again(e.name, message);
  again.file = e.file;
  again.line = e.line;
  throw again;
}

void Interpreter::assign(const Expr& target, Value& value) {
  if (target.kind == ExprKind::local || target.kind == ExprKind::global) {
    slot_of(target) = std::move(value);
    return;
  }
  const Expr& base = *target.kids[0];
  if (base.kind == ExprKind::local || base.kind == ExprKind::global) {
    variable(base);
    store_part(slot_of(base), target, value);
    return;
  }
  Value* const mark = top_;
  Value& whole = *push();
  evaluate(base, whole);
  store_part(whole, target, value);
  assign(base, whole);
  unwind(mark);
}

void Interpreter::store_part(Value& whole, const Expr& target, Value& value) {
  if (target.kind == ExprKind::field) {
    set_field(whole, target.name, value);
    return;
  }
  Value* const mark = top_;
  push_subscripts(target);
  assign_index(whole, subscripts(target, whole, mark), value);
  unwind(mark);
}

}  // namespace orv
