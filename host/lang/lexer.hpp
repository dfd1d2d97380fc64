// Text of a program to tokens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/value.hpp"

namespace orv {

enum class Tok { end, newline, name, integer, real, single, imaginary, string, op };

struct Token {
  Tok kind = Tok::end;
  std::string text;  // names in lower case; strings after their escapes; operators as written
  double number = 0;
  long whole = 0;
  int line = 0;
  int column = 0;
};

// A syntax error. `incomplete` tells an interactive reader that more lines could complete the text.
class SyntaxError : public Error {
 public:
  SyntaxError(const std::string& file_, int line_, int column_, const std::string& message, bool incomplete_ = false)
      : Error("SYNTAX", message), incomplete(incomplete_) {
    file = file_;
    line = line_;
    column = column_;
  }
  bool incomplete;
};

// A newline inside round, square or curly brackets does not end a statement and gives no token.
std::vector<Token> tokenize(std::string_view text, const std::string& file, int first_line = 1);

}  // namespace orv
