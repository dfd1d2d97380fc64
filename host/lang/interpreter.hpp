// Runs programs of the language.
//
// All values that live while other code of a program runs (local variables, operands, arguments) stand on one stack of the
// interpreter, and the C++ frames hold only pointers into it. A library that traps a fault inside a user routine jumps over the
// frames of the interpreter; whoever called the library then unwinds the stack to where it stood, and nothing is lost.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/lang/ast.hpp"
#include "host/lang/parser.hpp"
#include "host/module.hpp"

namespace orv {

class Interpreter;

// Arguments of a builtin: positional ones, and the keywords that it names in its table row (undefined if not given).
struct Arguments {
  Interpreter& interpreter;
  const Builtin& builtin;
  Value* positional;
  int count;
  Value* keywords;

  Value& operator[](int k) const {
    return positional[k];
  }
};

struct Builtin {
  const char* name;
  int least, most;  // positional arguments
  std::vector<std::string> keywords;
  void (*run)(const Arguments& arguments, Value& result);
  const char* usage;
  const char* summary;
  bool undefined_allowed = false;  // arguments may be variables without a value
};
const std::map<std::string, Builtin, std::less<>>& builtins();
bool is_elementwise(const std::string& name);

// [a, b, ...]: scalars make a vector, arrays of one shape are stacked along a new first dimension.
Value stack_values(std::span<const Value> values);
// A structure of upper-case fields; equal shapes share one definition.
Value build_structure(const std::vector<std::pair<std::string, Value>>& fields);
// Sets a field; one that is new or of another shape makes a new structure.
void set_field(Value& structure, const std::string& name, const Value& value);

// Thrown by exit().
struct Exit {
  int status;
};

// The fields NAME, MESSAGE, FILE, LINE that a catch sees.
Value error_value(const Error& error);

class Interpreter {
 public:
  using Printer = void (*)(void* context, std::string_view text);

  Interpreter();
  ~Interpreter();
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  // Runs the text of a script or one input of a session. With `echo` the value of an expression statement is printed.
  void run(std::string_view text, const std::string& file, int first_line = 1, bool echo = false);
  void run_file(const std::string& path);
  void set_global(const std::string& name, Value value);
  Value global(const std::string& name);

  void set_printer(Printer printer, void* context);
  void print(std::string_view text) const;
  void set_path(std::vector<std::string> folders);          // where routine files are looked for
  void set_module_path(std::vector<std::string> folders) {  // where load_module looks for a name without a folder
    module_path_ = std::move(folders);
  }
  void load_module(const std::string& name);
  std::string help(const std::string& name);  // "" for the list of all
  [[noreturn]] void exit(int status);
  void names_changed() {  // what a name means may be different now
    ++epoch_;
  }

  // Set from a signal handler: the next loop turn or call throws.
  static void interrupt();
  static void check_interrupt();
  static bool take_interrupt();

  // Whether the text is the beginning of something that goes on in the next line.
  bool needs_more(std::string_view text);

  // For the module's calls of user routines.
  Value call_from_module(const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments);

  long stack_in_use() const {
    return top_ - stack_;
  }

 private:
  enum class Flow { next, break_, continue_, return_ };
  struct Number {
    bool real;
    double d;
    long i;
  };
  struct State {  // what a jump or an exception has to put back
    Value* top;
    Value* base;
    Value* result;
    const Unit* unit;
    int depth;
    int module_depth;
  };

  struct Range {
    bool real;
    double first, step;
    long whole_first, whole_step, count;
  };

  // stack
  Value* push();
  void unwind(Value* top);
  State state() const {
    return {top_, base_, result_, unit_, depth_, module_depth_};
  }
  void restore(const State& s);

  // statements
  Flow run_block(const Block& block);
  Flow run_statement(const Stmt& s);
  Flow run_if(const Stmt& s);
  Flow run_while(const Stmt& s);
  Flow run_for(const Stmt& s);
  Flow run_for_range(const Stmt& s);
  Flow run_try(const Stmt& s);
  bool run_guarded(const Block& block, Flow& flow, Value& error);
  [[noreturn]] void run_throw(const Stmt& s);
  void run_expression(const Stmt& s);
  void run_assign(const Stmt& s);
  bool turn(const Stmt& s, Flow& flow);
  void assign(const Expr& target, Value& value);
  void store_part(Value& whole, const Expr& target, Value& value);
  Value& slot_of(const Expr& variable) const {
    return variable.kind == ExprKind::local ? base_[variable.slot] : *variable.global;
  }

  // expressions
  bool quick(const Expr& e, Number& n) const;
  bool quick_binary(Binary op, const Number& a, const Number& b, Number& r) const;
  bool quick_compare(const Expr& e, bool& truth) const;
  bool condition(const Expr& e);
  void evaluate(const Expr& e, Value& result);
  void evaluate_fully(const Expr& e, Value& result);
  const Value& variable(const Expr& e) const;
  void evaluate_logical(const Expr& e, Value& result);
  void evaluate_range(const Expr& e, Value& result);
  void evaluate_array(const Expr& e, Value& result);
  void evaluate_structure(const Expr& e, Value& result);
  Range range_of(const Expr& e);
  void evaluate_index(const Expr& e, Value& result);
  void push_subscripts(const Expr& e);
  static std::vector<Subscript> subscripts(const Expr& e, const Value& array, const Value* parts);

  // calls
  void call(const Expr& e, Value& result, bool as_statement);
  void resolve(const Expr& e);
  void call_user(const Expr& e, const Function& f, Value& result);
  void run_routine(const Function& f, Value* frame, Value& result);
  static std::size_t parameter_of(const Expr& e, const Function& f, std::size_t argument);
  void run_function(const Function& f, Value* frame, Value& result);
  void argument_value(const Expr& argument, bool undefined_allowed, Value& slot);
  void call_builtin(const Expr& e, const Builtin& builtin, Value& result);
  void call_elementwise(const Expr& e, Value& result);
  void call_module(const Expr& e);
  Value run_from_module(const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments);
  const Function* routine_for_module(const char* name);
  void enter();

  // routine layer
  Program parse_program(std::string_view text, const std::string& file, int first_line);
  const Function* load_routine(const std::string& name);
  void define(std::unique_ptr<Function> function, std::map<std::string, const Function*, std::less<>>& table);
  const std::string* keep_file_name(const std::string& file);

  Value* stack_ = nullptr;
  Value* end_ = nullptr;
  Value* top_ = nullptr;
  Value* base_ = nullptr;  // locals of the running function
  Value* result_ = nullptr;
  const Unit* unit_ = nullptr;
  int depth_ = 0;
  int module_depth_ = 0;  // module calls that call each other through user functions
  bool echo_ = false;
  bool exiting_ = false;
  int exit_status_ = 0;
  const char* stack_limit_ = nullptr;  // of the machine stack

  std::unordered_map<std::string, std::unique_ptr<Value>> globals_;
  std::vector<std::unique_ptr<Function>> functions_;  // every definition ever made: a redefined one may still be running
  Unit session_;
  std::deque<Unit> units_;
  std::map<std::string, const Function*, std::less<>> routines_;  // loaded from the path
  std::deque<std::string> file_names_;
  std::vector<std::string> path_;
  std::vector<std::string> module_path_;
  long epoch_ = 0;
  const Function* last_called_ = nullptr;  // by a module
  long last_epoch_ = -1;
  Printer printer_ = nullptr;
  void* printer_context_ = nullptr;
};

}  // namespace orv
