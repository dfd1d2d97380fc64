// The kernel layer of the statistics half.
#include "runtime/kernels/rotation.hpp"
#include "runtime/kernels/support.hpp"
#include "zents.h"

namespace zent {
namespace {
using Half = Stat;
}

extern "C" {
#define ZENT_HALF(name) zents_##name
#include "runtime/kernels/entries.inc"
#undef ZENT_HALF
}

}  // namespace zent
