// Any bytes into the parser: it throws a SyntaxError or gives a tree, and nothing else.
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "host/lang/parser.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string file = "fuzz";
  static std::deque<orv::Value> globals;
  globals.clear();
  try {
    orv::parse(std::string_view(reinterpret_cast<const char*>(data), size), file,
               [](const std::string&) { return &globals.emplace_back(); });
  } catch (const orv::SyntaxError&) {
  }
  return 0;
}
