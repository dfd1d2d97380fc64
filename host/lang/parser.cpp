#include "host/lang/parser.hpp"

#include <limits>
#include <numbers>
#include <set>
#include <unordered_map>

namespace orv {
namespace {

constexpr int deepest_nesting = 200;      // statements and expressions inside each other
constexpr int deepest_expression = 1000;  // operators chained in one expression
constexpr std::size_t most_arguments = 255;

const std::set<std::string, std::less<>> reserved = {
    "if",        "else", "end", "while", "for", "break", "continue", "return", "try", "catch", "throw", "function",
    "procedure", "mod",  "and", "or",    "not", "true",  "false",    "none",   "pi",  "inf",   "nan",   "global"};

struct Scope {
  std::unordered_map<std::string, int> slots;
  std::set<std::string, std::less<>> globals;
  std::size_t parameters = 0;
};

class Parser {
 public:
  Parser(std::vector<Token> tokens, const std::string& file, const std::function<Value*(const std::string&)>& global)
      : tokens_(std::move(tokens)), file_(file), global_(global) {}

  Program run() {
    program_.body.file = &file_;
    for (;;) {
      skip_newlines();
      if (peek().kind == Tok::end) break;
      if (is("function") || is("procedure")) {
        function();
      } else {
        statement(program_.body);
      }
      end_of_statement();
    }
    return std::move(program_);
  }

 private:
  // ---- tokens ----
  const Token& peek(std::size_t ahead = 0) const {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
  }
  const Token& take() {
    const Token& token = peek();
    if (at_ + 1 < tokens_.size()) ++at_;
    return token;
  }
  bool is(std::string_view text) const {
    return (peek().kind == Tok::name || peek().kind == Tok::op) && peek().text == text;
  }
  bool accept(std::string_view text) {
    if (!is(text)) return false;
    take();
    return true;
  }
  static std::string found(const Token& token) {
    switch (token.kind) {
      case Tok::end:
        return "the end of the text";
      case Tok::newline:
        return token.text == ";" ? "';'" : "the end of the line";
      case Tok::string:
        return "a string";
      default:
        return "'" + token.text + "'";
    }
  }
  [[noreturn]] void fail(const Token& token, const std::string& message) const {
    throw SyntaxError(file_, token.line, token.column, message, token.kind == Tok::end);
  }
  [[noreturn]] void expected(const std::string& what) const {
    fail(peek(), "expected " + what + ", found " + found(peek()));
  }
  void expect(std::string_view text) {
    if (!accept(text)) expected("'" + std::string(text) + "'");
  }
  void skip_newlines() {
    while (peek().kind == Tok::newline) take();
  }
  void end_of_statement() {
    if (peek().kind != Tok::newline && peek().kind != Tok::end) expected("the end of the statement");
  }
  std::string new_name(const char* what) {
    if (peek().kind != Tok::name) expected(what);
    if (reserved.count(peek().text)) fail(peek(), "'" + peek().text + "' is a word of the language; expected " + what);
    return take().text;
  }

  struct Nesting {
    explicit Nesting(Parser& parser) : parser_(parser) {
      if (++parser_.nesting_ > deepest_nesting)
        parser_.fail(parser_.peek(), "the program is nested deeper than " + std::to_string(deepest_nesting) + " levels");
    }
    ~Nesting() {
      --parser_.nesting_;
    }
    Nesting(const Nesting&) = delete;
    Parser& parser_;
  };

  // ---- expressions ----
  static ExprPtr make(ExprKind kind) {
    auto e = std::make_unique<Expr>();
    e->kind = kind;
    return e;
  }
  void adopt(Expr& parent, ExprPtr kid) {
    if (kid) {
      parent.depth = std::max(parent.depth, kid->depth + 1);
      if (parent.depth > deepest_expression)
        fail(peek(), "the expression chains more than " + std::to_string(deepest_expression) + " operators");
    }
    parent.kids.push_back(std::move(kid));
  }
  ExprPtr variable(const std::string& name) {
    ExprPtr e;
    if (!scope_ || scope_->globals.count(name)) {
      e = make(ExprKind::global);
      e->global = global_(name);
    } else {
      e = make(ExprKind::local);
      e->slot = scope_->slots.emplace(name, static_cast<int>(scope_->slots.size())).first->second;
      e->parameter = static_cast<std::size_t>(e->slot) < scope_->parameters;
    }
    e->name = name;
    e->pure = true;
    return e;
  }
  static ExprPtr constant(Value value) {
    ExprPtr e = make(ExprKind::constant);
    e->constant = std::move(value);
    e->pure = !e->constant.is_array() && (e->constant.type() == ORV_TYP_DOUBLE || e->constant.type() == ORV_TYP_INT64);
    if (e->pure) e->number = e->constant.to_real();
    if (e->pure && e->constant.type() == ORV_TYP_INT64) e->whole = e->constant.to_integer();
    return e;
  }
  ExprPtr binary(Binary op, ExprPtr left, ExprPtr right) {
    ExprPtr e = make(ExprKind::binary);
    e->binary = op;
    e->pure = left->pure && right->pure;
    adopt(*e, std::move(left));
    adopt(*e, std::move(right));
    return e;
  }

  ExprPtr expression() {
    const Nesting nesting(*this);
    return disjunction();
  }
  ExprPtr disjunction() {
    ExprPtr left = conjunction();
    while (accept("or")) {
      ExprPtr e = make(ExprKind::logical_or);
      adopt(*e, std::move(left));
      adopt(*e, conjunction());
      left = std::move(e);
    }
    return left;
  }
  ExprPtr conjunction() {
    ExprPtr left = negation();
    while (accept("and")) {
      ExprPtr e = make(ExprKind::logical_and);
      adopt(*e, std::move(left));
      adopt(*e, negation());
      left = std::move(e);
    }
    return left;
  }
  ExprPtr negation() {
    if (!accept("not")) return comparison();
    const Nesting nesting(*this);
    ExprPtr e = make(ExprKind::unary);
    e->unary = Unary::logical_not;
    adopt(*e, negation());
    return e;
  }
  ExprPtr comparison() {
    static const std::unordered_map<std::string, Binary> table = {{"==", Binary::equal},  {"!=", Binary::not_equal},
                                                                  {"<", Binary::less},    {"<=", Binary::less_equal},
                                                                  {">", Binary::greater}, {">=", Binary::greater_equal}};
    ExprPtr left = range();
    while (peek().kind == Tok::op && table.count(peek().text)) {
      const Binary op = table.at(take().text);
      left = binary(op, std::move(left), range());
    }
    return left;
  }
  bool range_part_left_out() const {
    return subscript_ && (is(",") || is("]") || is(":"));
  }
  ExprPtr range() {
    ExprPtr first = subscript_ && is(":") ? nullptr : sum();
    if (!is(":")) return first;
    ExprPtr e = make(ExprKind::range);
    adopt(*e, std::move(first));
    expect(":");
    adopt(*e, range_part_left_out() ? nullptr : sum());
    adopt(*e, accept(":") ? sum() : nullptr);
    return e;
  }
  ExprPtr sum() {
    ExprPtr left = product();
    while (is("+") || is("-")) {
      const Binary op = take().text == "+" ? Binary::add : Binary::subtract;
      left = binary(op, std::move(left), product());
    }
    return left;
  }
  ExprPtr product() {
    static const std::unordered_map<std::string, Binary> table = {{"*", Binary::multiply},
                                                                  {"/", Binary::divide},
                                                                  {"mod", Binary::modulo},
                                                                  {"#", Binary::matrix_multiply},
                                                                  {"**", Binary::matrix_multiply}};
    ExprPtr left = signed_operand();
    while ((peek().kind == Tok::op || peek().kind == Tok::name) && table.count(peek().text)) {
      const Binary op = table.at(take().text);
      left = binary(op, std::move(left), signed_operand());
    }
    return left;
  }
  ExprPtr signed_operand() {
    if (!is("-") && !is("+")) return power();
    const Nesting nesting(*this);
    if (take().text == "+") return signed_operand();
    ExprPtr e = make(ExprKind::unary);
    ExprPtr operand = signed_operand();
    e->pure = operand->pure;
    adopt(*e, std::move(operand));
    return e;
  }
  ExprPtr power() {
    ExprPtr base = postfix();
    if (!accept("^")) return base;
    const Nesting nesting(*this);
    return binary(Binary::power, std::move(base), signed_operand());
  }

  ExprPtr postfix() {
    ExprPtr e = primary();
    for (;;) {
      if (is("[")) {
        take();
        ExprPtr indexed = make(ExprKind::index);
        adopt(*indexed, std::move(e));
        subscripts(*indexed);
        e = std::move(indexed);
      } else if (accept(".")) {
        if (peek().kind != Tok::name) expected("the name of a field");
        ExprPtr field = make(ExprKind::field);
        field->name = take().text;
        adopt(*field, std::move(e));
        e = std::move(field);
      } else {
        return e;
      }
    }
  }
  void subscripts(Expr& indexed) {
    const bool outer = subscript_;
    do {
      subscript_ = true;
      adopt(indexed, expression());
    } while (accept(","));
    subscript_ = outer;
    expect("]");
  }

  ExprPtr primary() {
    const Token& token = peek();
    switch (token.kind) {
      case Tok::integer:
        return constant(Value::integer(take().whole));
      case Tok::real:
        return constant(Value::real(take().number));
      case Tok::single:
        return constant(Value::real(take().number).converted(ORV_TYP_FLOAT));
      case Tok::imaginary:
        return imaginary(take().number);
      case Tok::string:
        return constant(Value::text(take().text));
      case Tok::name:
        return named();
      default:
        break;
    }
    const bool outer = subscript_;
    subscript_ = false;
    ExprPtr e;
    if (accept("(")) {
      e = expression();
      expect(")");
    } else if (accept("[")) {
      e = make(ExprKind::array);
      while (!is("]")) {
        adopt(*e, expression());
        if (!accept(",")) break;
      }
      expect("]");
    } else if (accept("{")) {
      e = structure();
    } else {
      expected("a value");
    }
    subscript_ = outer;
    return e;
  }
  static ExprPtr imaginary(double part) {
    Value v = Value::zero(ORV_TYP_DCOMPLEX);
    v.variable()->value.dcmp = {0, part};
    return constant(std::move(v));
  }
  ExprPtr structure() {
    ExprPtr e = make(ExprKind::structure);
    while (!is("}")) {
      if (peek().kind != Tok::name) expected("the name of a field");
      for (const std::string& name : e->names)
        if (name == peek().text) fail(peek(), "the field '" + name + "' stands twice");
      e->names.push_back(take().text);
      expect(":");
      adopt(*e, expression());
      if (!accept(",")) break;
    }
    if (e->kids.empty()) expected("a field such as name: value");
    expect("}");
    return e;
  }

  ExprPtr named() {
    const Token token = peek();
    if (token.text == "true" || token.text == "false") {
      take();
      return constant(Value::boolean(token.text == "true"));
    }
    if (token.text == "pi" || token.text == "inf" || token.text == "nan") {
      take();
      if (token.text == "pi") return constant(Value::real(std::numbers::pi));
      using Limits = std::numeric_limits<double>;
      return constant(Value::real(token.text == "inf" ? Limits::infinity() : Limits::quiet_NaN()));
    }
    if (token.text == "none") {
      take();
      return make(ExprKind::none);
    }
    if (reserved.count(token.text)) expected("a value");
    take();
    return is("(") ? call(token.text) : variable(token.text);
  }
  ExprPtr call(const std::string& name) {
    ExprPtr e = make(ExprKind::call);
    e->name = name;
    expect("(");
    const bool outer = subscript_;
    subscript_ = false;
    while (!is(")")) {
      argument(*e);
      if (!accept(",")) break;
    }
    subscript_ = outer;
    expect(")");
    return e;
  }
  void argument(Expr& e) {
    if (e.kids.size() >= most_arguments) fail(peek(), "a call has at most " + std::to_string(most_arguments) + " arguments");
    std::string keyword;
    if (peek().kind == Tok::name && peek(1).kind == Tok::op && peek(1).text == "=") {
      keyword = take().text;
      for (const std::string& name : e.names)
        if (name == keyword) fail(peek(), "the keyword '" + keyword + "' stands twice");
      take();
    } else if (!e.names.empty() && !e.names.back().empty()) {
      fail(peek(), "positional arguments stand before keywords");
    }
    e.names.push_back(keyword);
    adopt(e, expression());
  }

  // ---- statements ----
  Stmt& add(Block& block, StmtKind kind) {
    block.statements.push_back(std::make_unique<Stmt>());
    Stmt& s = *block.statements.back();
    s.kind = kind;
    s.line = peek().line;
    return s;
  }
  Block block() {
    const Nesting nesting(*this);
    Block b;
    b.file = &file_;
    for (;;) {
      skip_newlines();
      if (is("end") || is("else") || is("catch")) return b;
      if (peek().kind == Tok::end) expected("'end'");
      statement(b);
      end_of_statement();
    }
  }
  ExprPtr loop_condition() {
    ExprPtr e = expression();
    end_of_statement();
    return e;
  }

  void statement(Block& b) {
    const Token& token = peek();
    if (token.kind == Tok::name) {
      if (token.text == "if") return if_statement(b);
      if (token.text == "while") return while_statement(b);
      if (token.text == "for") return for_statement(b);
      if (token.text == "try") return try_statement(b);
      if (token.text == "break" || token.text == "continue") return jump(b);
      if (token.text == "return") return return_statement(b);
      if (token.text == "global") return global_statement();
      if (token.text == "throw") {
        Stmt& s = add(b, StmtKind::throw_);
        take();
        s.value = expression();
        return;
      }
      if (token.text == "function" || token.text == "procedure")
        fail(token, "a " + token.text + " is defined at the top level, not inside a block");
      if (token.text == "end" || token.text == "else" || token.text == "catch")
        fail(token, "'" + token.text + "' closes nothing");
    }
    simple(b);
  }
  // print and help take their arguments without brackets too: "print (1 + 2) * 3, x", but not in "print(1, x)".
  bool is_command() const {
    if (!is("print") && !is("help")) return false;
    const Token& after = peek(1);
    if (after.kind != Tok::op || after.text == "[" || after.text == "{" || after.text == "-" || after.text == "+") return true;
    if (after.text != "(") return false;
    std::size_t at = 1;
    for (int open = 0; peek(at).kind != Tok::end; ++at) {
      if (peek(at).kind != Tok::op) continue;
      if (peek(at).text == "(") ++open;
      if (peek(at).text == ")" && --open == 0) break;
    }
    return peek(at + 1).kind != Tok::newline && peek(at + 1).kind != Tok::end;
  }
  void simple(Block& b) {
    Stmt& s = add(b, StmtKind::expression);
    const Token& after = peek(1);
    const bool bare = after.kind == Tok::newline || after.kind == Tok::end;
    if (is_command() || (bare && (is("exit") || is("quit")))) {
      s.value = make(ExprKind::call);
      s.value->name = take().text;
      while (peek().kind != Tok::newline && peek().kind != Tok::end) {
        argument(*s.value);
        if (!accept(",")) break;
      }
      return;
    }
    const Token start = peek();
    s.value = expression();
    if (!is("=")) return;
    if (!s.value->assignable()) fail(start, "only a variable, an element or a field can be assigned to");
    take();
    s.kind = StmtKind::assign;
    s.target = std::move(s.value);
    s.value = expression();
  }
  void if_statement(Block& b) {
    Stmt& s = add(b, StmtKind::if_);
    take();
    s.conditions.push_back(loop_condition());
    s.blocks.push_back(block());
    while (accept("else")) {
      if (s.blocks.size() > s.conditions.size()) fail(peek(), "'else' stands after the last else");
      if (accept("if")) s.conditions.push_back(loop_condition());
      s.blocks.push_back(block());
    }
    expect("end");
  }
  Block loop_body() {
    ++loops_;
    Block body = block();
    --loops_;
    expect("end");
    return body;
  }
  void while_statement(Block& b) {
    Stmt& s = add(b, StmtKind::while_);
    take();
    s.value = loop_condition();
    s.blocks.push_back(loop_body());
  }
  void for_statement(Block& b) {
    Stmt& s = add(b, StmtKind::for_);
    take();
    s.target = variable(new_name("the name of the loop variable"));
    expect("in");
    s.value = loop_condition();
    s.blocks.push_back(loop_body());
  }
  void try_statement(Block& b) {
    Stmt& s = add(b, StmtKind::try_);
    take();
    s.blocks.push_back(block());
    expect("catch");
    if (peek().kind == Tok::name && !reserved.count(peek().text)) s.target = variable(take().text);
    end_of_statement();
    s.blocks.push_back(block());
    expect("end");
  }
  void jump(Block& b) {
    if (loops_ == 0) fail(peek(), "'" + peek().text + "' stands outside a loop");
    add(b, peek().text == "break" ? StmtKind::break_ : StmtKind::continue_);
    take();
  }
  void return_statement(Block& b) {
    Stmt& s = add(b, StmtKind::return_);
    if (!scope_) fail(peek(), "'return' stands outside a function");
    take();
    if (peek().kind == Tok::newline || peek().kind == Tok::end) return;
    if (in_procedure_) fail(peek(), "a procedure returns no value; use an output argument");
    s.value = expression();
  }
  void global_statement() {
    take();
    if (!scope_) fail(peek(), "'global' stands inside a function");
    do {
      const Token& token = peek();
      const std::string name = new_name("the name of a variable");
      if (scope_->slots.count(name)) fail(token, "'" + name + "' is already used as a local variable here");
      scope_->globals.insert(name);
    } while (accept(","));
  }

  void function() {
    auto f = std::make_unique<Function>();
    f->line = peek().line;
    f->is_procedure = take().text == "procedure";
    f->name = new_name("the name of a routine");
    for (char c : f->name) f->upper_name += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    Scope scope;
    scope_ = &scope;
    const int outer_loops = loops_;
    loops_ = 0;
    in_procedure_ = f->is_procedure;
    expect("(");
    while (!is(")")) {
      parameter(*f);
      if (!accept(",")) break;
    }
    expect(")");
    f->body.file = &file_;
    if (!f->is_procedure && accept("=")) {
      add(f->body, StmtKind::return_).value = expression();
    } else {
      f->body = block();
      expect("end");
    }
    f->slots = static_cast<int>(scope.slots.size());
    scope_ = nullptr;
    loops_ = outer_loops;
    program_.functions.push_back(std::move(f));
  }
  void parameter(Function& f) {
    if (f.parameters.size() >= most_arguments)
      fail(peek(), "a routine has at most " + std::to_string(most_arguments) + " parameters");
    Parameter p;
    if (is("out") && peek(1).kind == Tok::name) {
      p.output = true;
      take();
    }
    const Token& token = peek();
    p.name = new_name("the name of a parameter");
    if (!scope_->slots.emplace(p.name, static_cast<int>(scope_->slots.size())).second)
      fail(token, "the parameter '" + p.name + "' stands twice");
    scope_->parameters = scope_->slots.size();
    if (accept("=")) p.fallback = expression();
    const bool gap = !p.fallback && !f.parameters.empty() && f.parameters.back().fallback && !f.parameters.back().output;
    if (gap && !p.output) fail(token, "the parameter '" + p.name + "' needs a default, for the one before it has one");
    // A default that used a later name would have taken a slot between the parameters.
    if (scope_->slots.size() != f.parameters.size() + 1)
      fail(token, "the default of '" + p.name + "' uses a variable that is not a parameter before it");
    f.parameters.push_back(std::move(p));
  }

  std::vector<Token> tokens_;
  const std::string& file_;
  const std::function<Value*(const std::string&)>& global_;
  std::size_t at_ = 0;
  int nesting_ = 0;
  int loops_ = 0;
  bool subscript_ = false;
  bool in_procedure_ = false;
  Scope* scope_ = nullptr;
  Program program_;
};

}  // namespace

Program parse(std::string_view text, const std::string& file, const std::function<Value*(const std::string&)>& global,
              int first_line) {
  return Parser(tokenize(text, file, first_line), file, global).run();
}

}  // namespace orv
