// Tokens to the tree.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/lang/ast.hpp"
#include "host/lang/lexer.hpp"

namespace orv {

// Parses a program. `file` must outlive the tree. `global` gives the storage of a variable at the top level; its address must
// stay valid as long as the tree. Throws SyntaxError.
Program parse(std::string_view text, const std::string& file, const std::function<Value*(const std::string&)>& global,
              int first_line = 1);

}  // namespace orv
