// The kernel layer of the mathematics half.
#include "runtime/kernels/rotation.hpp"
#include "runtime/kernels/support.hpp"
#include "zent.h"

namespace zent {
namespace {
using Half = Math;
}

extern "C" {
#define ZENT_HALF(name) zent_##name
#include "runtime/kernels/entries.inc"
#undef ZENT_HALF
}

}  // namespace zent
