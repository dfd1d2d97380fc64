// The kernel layer of the statistics half.
#include "runtime/kernels/rotation.hpp"
#include "runtime/kernels/support.hpp"
#include "zents.h"

// The entries stand outside the namespace: inside it they would not be the functions that the header declares and exports.
namespace {
using Half = zent::Stat;
}
using namespace zent;

extern "C" {
#define ZENT_HALF(name) zents_##name
#include "runtime/kernels/entries.inc"
#undef ZENT_HALF
}
