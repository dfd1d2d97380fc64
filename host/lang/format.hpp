// Values made from parts: formatted text, array literals, structures.
#pragma once

#include <span>
#include <string>

#include "host/value.hpp"

namespace orv {

// printf for values: %d %i %u %x %X %o %c take whole numbers, %e %f %g %E %G numbers, %s anything. Elements of arrays count one
// by one. Numbers and kinds of the values are checked; throws Error.
std::string format_text(const std::string& format, std::span<const Value> values);

}  // namespace orv
