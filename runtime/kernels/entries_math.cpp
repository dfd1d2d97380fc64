// The kernel layer of the mathematics half.
#include "runtime/kernels/rotation.hpp"
#include "runtime/kernels/support.hpp"
#include "zent.h"

// The entries stand outside the namespace: inside it they would not be the functions that the header declares and exports.
namespace {
using Half = zent::Math;
}
using namespace zent;

extern "C" {
#define ZENT_HALF(name) zent_##name
#include "runtime/kernels/entries.inc"
#undef ZENT_HALF
}
