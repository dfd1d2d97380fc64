// Machine constants of both precisions, bit for bit.
#pragma once

#include <bit>

#include "zent/base.h"

namespace zent {

// The not-a-number of this library is the all-ones pattern: compare it by bits, never convert it between precisions.
template <class Real>
struct Machine;

template <>
struct Machine<float> {
  static constexpr float smallest = 0x1p-126F, largest = 0x1.fffffep127F;
  static constexpr float spacing = 0x1p-24F, epsilon = 0x1p-23F;
  static constexpr float log10_2 = std::bit_cast<float>(0x3E9A209B);
  static constexpr float not_a_number = std::bit_cast<float>(0x7FFFFFFF);
  static constexpr float infinity = std::bit_cast<float>(0x7F800000);
};

template <>
struct Machine<double> {
  static constexpr double smallest = 0x1p-1022, largest = 0x1.fffffffffffffp1023;
  static constexpr double spacing = 0x1p-53, epsilon = 0x1p-52;
  static constexpr double log10_2 = std::bit_cast<double>(0x3FD344133FD34413);
  static constexpr double not_a_number = std::bit_cast<double>(0x7FFFFFFFFFFFFFFF);
  static constexpr double infinity = std::bit_cast<double>(0x7FF0000000000000);
};

// The table behind f_machine and d_machine, exported as zent_machine and zents_machine.
using MachineTable = zent_machine_table;

// Result of a function that fails: null, 0, or the not-a-number of its precision.
template <class T>
constexpr T failure_value() {
  return T{};
}
template <>
constexpr float failure_value<float>() {
  return Machine<float>::not_a_number;
}
template <>
constexpr double failure_value<double>() {
  return Machine<double>::not_a_number;
}

template <class Half>
long imach(long n);
template <class Half>
void umach(long n, FILE** stream);

}  // namespace zent
