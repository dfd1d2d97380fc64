#include "host/lang/lexer.hpp"

#include <cerrno>
#include <charconv>
#include <cstdlib>

namespace orv {
namespace {

constexpr std::size_t deepest_nesting = 200;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool starts_name(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

class Lexer {
 public:
  Lexer(std::string_view text, const std::string& file, int first_line) : text_(text), file_(file), line_(first_line) {}

  std::vector<Token> run() {
    while (at_ < text_.size()) next();
    if (!open_.empty())
      throw SyntaxError(file_, open_.back().line, open_.back().column, "'" + open_.back().text + "' is never closed", true);
    start(Tok::newline);
    start(Tok::end);
    return std::move(tokens_);
  }

 private:
  [[noreturn]] void fail(const std::string& message) const {
    throw SyntaxError(file_, line_, column(), message);
  }
  int column() const {
    return static_cast<int>(at_ - line_start_) + 1;
  }
  char peek(std::size_t ahead = 0) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }
  Token& start(Tok kind) {
    Token& token = tokens_.emplace_back();
    token.kind = kind;
    token.line = line_;
    token.column = column();
    return token;
  }

  void next() {
    const char c = peek();
    if (c == '\n') {
      if (open_.empty()) start(Tok::newline).text = "end of line";
      ++at_;
      ++line_;
      line_start_ = at_;
    } else if (c == ' ' || c == '\t' || c == '\r') {
      ++at_;
    } else if (c == '/' && peek(1) == '/') {
      while (at_ < text_.size() && text_[at_] != '\n') ++at_;
    } else if (starts_name(c)) {
      name();
    } else if (is_digit(c) || (c == '.' && is_digit(peek(1)) && !after_operand())) {
      number();
    } else if (c == '"') {
      string();
    } else {
      op();
    }
  }

  // A point after an operand selects a field, so "s.1" is not s followed by 0.1.
  bool after_operand() const {
    if (tokens_.empty()) return false;
    const Token& last = tokens_.back();
    return last.kind == Tok::name || last.text == ")" || last.text == "]";
  }

  void name() {
    Token& token = start(Tok::name);
    while (starts_name(peek()) || is_digit(peek())) {
      const char c = text_[at_++];
      token.text += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }

  void number() {
    Token& token = start(Tok::integer);
    const std::size_t begin = at_;
    while (is_digit(peek())) ++at_;
    if (peek() == '.') {
      token.kind = Tok::real;
      ++at_;
      while (is_digit(peek())) ++at_;
    }
    if (peek() == 'e' || peek() == 'E') {
      const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
      if (is_digit(peek(sign))) {
        token.kind = Tok::real;
        at_ += sign;
        while (is_digit(peek())) ++at_;
      }
    }
    token.text = std::string(text_.substr(begin, at_ - begin));
    errno = 0;
    token.number = std::strtod(token.text.c_str(), nullptr);
    if (errno == ERANGE && token.number > 1) fail("the number " + token.text + " is too large");
    if (peek() == 'f' && !starts_name(peek(1)) && !is_digit(peek(1))) {
      token.kind = Tok::single;
      ++at_;
    } else if (peek() == 'i' && !starts_name(peek(1)) && !is_digit(peek(1))) {
      token.kind = Tok::imaginary;
      ++at_;
    } else if (token.kind == Tok::integer) {
      const auto end = token.text.data() + token.text.size();
      if (std::from_chars(token.text.data(), end, token.whole).ec != std::errc())
        fail("the integer " + token.text + " does not fit into 64 bits; write " + token.text + ".0 for a double");
    }
    if (starts_name(peek())) fail("a number is followed by '" + std::string(1, peek()) + "'; expected an operator");
  }

  void string() {
    Token& token = start(Tok::string);
    ++at_;
    for (;;) {
      if (at_ >= text_.size() || peek() == '\n')
        fail("the string that starts in column " + std::to_string(token.column) + " has no closing quote");
      const char c = text_[at_++];
      if (c == '"') return;
      if (c == '\0') fail("a string cannot hold a zero byte");
      token.text += c == '\\' ? escape() : c;
    }
  }

  char escape() {
    const char c = peek();
    ++at_;
    switch (c) {
      case 'n':
        return '\n';
      case 't':
        return '\t';
      case 'r':
        return '\r';
      case '\\':
      case '"':
        return c;
      case 'x': {
        int code = 0;
        if (at_ + 2 <= text_.size() && std::from_chars(&text_[at_], &text_[at_] + 2, code, 16).ptr == &text_[at_] + 2 &&
            code > 0) {
          at_ += 2;
          return static_cast<char>(code);
        }
        fail("\\x is followed by two hexadecimal digits that are not 00");
      }
      default:
        fail("unknown escape; expected one of \\n \\t \\r \\\\ \\\" \\xHH");
    }
  }

  void op() {
    static constexpr std::string_view two[] = {"==", "!=", "<=", ">=", "**"};
    for (std::string_view candidate : two) {
      if (text_.substr(at_, 2) != candidate) continue;
      start(Tok::op).text = candidate;
      at_ += 2;
      return;
    }
    const char c = peek();
    static constexpr std::string_view single = "+-*/^<>=#()[]{},:.";
    if (c == ';') {
      start(Tok::newline).text = ";";
    } else if (single.find(c) != std::string_view::npos) {
      start(Tok::op).text = std::string(1, c);
      bracket(c);
    } else {
      static constexpr char digits[] = "0123456789abcdef";
      const auto code = static_cast<unsigned char>(c);
      const bool plain = code >= 0x20 && code < 0x7f;
      fail(plain ? "unexpected character '" + std::string(1, c) + "'"
                 : std::string("unexpected byte 0x") + digits[code >> 4] + digits[code & 15]);
    }
    ++at_;
  }

  void bracket(char c) {
    if (c == '(' || c == '[' || c == '{') {
      if (open_.size() >= deepest_nesting) fail("brackets are nested deeper than " + std::to_string(deepest_nesting));
      open_.push_back(tokens_.back());
    } else if (c == ')' || c == ']' || c == '}') {
      const char wanted = open_.empty() ? '\0' : open_.back().text[0] == '(' ? ')' : open_.back().text[0] == '[' ? ']' : '}';
      if (c != wanted)
        fail(wanted ? std::string("expected '") + wanted + "', found '" + c + "'" : std::string("'") + c + "' closes nothing");
      open_.pop_back();
    }
  }

  std::string_view text_;
  const std::string& file_;
  std::size_t at_ = 0;
  std::size_t line_start_ = 0;
  int line_;
  std::vector<Token> tokens_;
  std::vector<Token> open_;
};

}  // namespace

std::vector<Token> tokenize(std::string_view text, const std::string& file, int first_line) {
  return Lexer(text, file, first_line).run();
}

}  // namespace orv
