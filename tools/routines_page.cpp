// Prints docs/routines.md: every routine of the module with its argument positions.
#include <cstdio>
#include <string>

#include "binding/position_registry.hpp"

int main() {
  std::string page(static_cast<std::size_t>(cmast_routines_page(nullptr, 0)) + 1, '\0');
  const long length = cmast_routines_page(page.data(), static_cast<long>(page.size()));
  return std::fwrite(page.data(), 1, static_cast<std::size_t>(length), stdout) == static_cast<std::size_t>(length) ? 0 : 1;
}
