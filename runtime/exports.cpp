// The C names of the runtime, stamped for both halves.
#include <cstdarg>
#include <cstdlib>

#include "runtime/checks.hpp"
#include "runtime/envelope.hpp"
#include "runtime/error_stack.hpp"
#include "runtime/keys.hpp"
#include "runtime/machine.hpp"
#include "zent.h"
#include "zents.h"

using namespace zent;

namespace {

constexpr MachineTable machine_table = {
    {Machine<float>::smallest, Machine<float>::largest, Machine<float>::spacing, Machine<float>::epsilon, Machine<float>::log10_2,
     Machine<float>::not_a_number, Machine<float>::infinity, -Machine<float>::infinity},
    {Machine<double>::smallest, Machine<double>::largest, Machine<double>::spacing, Machine<double>::epsilon,
     Machine<double>::log10_2, Machine<double>::not_a_number, Machine<double>::infinity, -Machine<double>::infinity}};

constexpr long integer_table[13] = {8, 2, 15, 32767, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};

// The bounds of an index into one of the tables.
template <class Half>
bool index_in_range(long low, long high, long n) {
  if (n >= low && n <= high) return true;
  push<Half>("l_machine");
  raise<Half>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {low, high, n}, .l = {"n"}});
  pop<Half>("l_machine");
  return false;
}

template <class Half, class Real>
Real machine_constant(const Real (&table)[8], long n) {
  return index_in_range<Half>(1, 8, n) ? table[n - 1] : failure_value<Real>();
}

template <class Half>
long integer_constant(long n) {
  return index_in_range<Half>(0, 12, n) ? integer_table[n] : 0;
}

}  // namespace

#define ZENT_TAG Math
#define ZENT_HALF(name) zent_##name
#include "runtime/exports.inc"
#undef ZENT_HALF
#undef ZENT_TAG

#define ZENT_TAG Stat
#define ZENT_HALF(name) zents_##name
#include "runtime/exports.inc"
#undef ZENT_HALF
#undef ZENT_TAG
