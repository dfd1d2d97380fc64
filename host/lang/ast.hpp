// The tree that the interpreter walks. Variables are resolved to slots while parsing, so nothing is looked up by name when it
// runs.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/value.hpp"

namespace orv {

struct Function;
struct Builtin;
struct Expr;
struct Stmt;
using ExprPtr = std::unique_ptr<Expr>;

enum class ExprKind {
  constant,
  none,
  local,
  global,
  unary,
  binary,
  logical_and,
  logical_or,
  range,
  array,
  structure,
  index,
  field,
  call
};

struct Expr {
  ExprKind kind = ExprKind::none;
  bool pure = false;       // only numbers, variables and arithmetic: may be evaluated twice
  bool parameter = false;  // a variable that is a parameter of its function: may be handed on when it was not given
  int depth = 1;
  Value constant;
  double number = 0;  // of a constant integer or double
  long whole = 0;
  int slot = 0;             // local
  Value* global = nullptr;  // global
  Unary unary = Unary::negate;
  Binary binary = Binary::add;
  std::string name;                // variable, field, routine
  std::vector<ExprPtr> kids;       // operands, elements, arguments; range: first, last, step (null when left out)
  std::vector<std::string> names;  // structure: tags; call: keyword of each argument, empty if positional
  // What the routine name of a call meant when it was last looked up, valid while the interpreter's epoch is the same.
  enum class Target { unknown, user, builtin, elementwise, module };
  mutable Target target = Target::unknown;
  mutable long epoch = -1;
  mutable const Function* function = nullptr;
  mutable const Builtin* builtin = nullptr;

  // A variable, or an element or field of one.
  bool assignable() const {
    const Expr* at = this;
    while (at->kind == ExprKind::index || at->kind == ExprKind::field) at = at->kids[0].get();
    return at->kind == ExprKind::local || at->kind == ExprKind::global;
  }
};

enum class StmtKind { expression, assign, if_, while_, for_, break_, continue_, return_, try_, throw_ };

struct Block {
  const std::string* file = nullptr;
  std::vector<std::unique_ptr<Stmt>> statements;
};

struct Stmt {
  StmtKind kind = StmtKind::expression;
  int line = 0;
  ExprPtr target;  // assignment; loop variable; variable of catch
  ExprPtr value;
  std::vector<ExprPtr> conditions;  // if: one for each block but a last else
  std::vector<Block> blocks;
};

struct Parameter {
  std::string name;
  bool output = false;
  ExprPtr fallback;
};

// The functions of one file of the routine layer see each other first.
using Unit = std::map<std::string, const Function*, std::less<>>;

struct Function {
  std::string name;
  std::string upper_name;
  bool is_procedure = false;
  std::vector<Parameter> parameters;
  int slots = 0;  // parameters first
  Block body;
  int line = 0;
  const Unit* unit = nullptr;  // null for functions of a script or a session
};

struct Program {
  Block body;
  std::vector<std::unique_ptr<Function>> functions;
};

}  // namespace orv
