// The two halves of the library as tag types: everything in which their runtimes differ.
#pragma once

namespace zent {

struct Stat;

struct Math {
  using Other = Stat;
  static constexpr bool is_math = true;
  static constexpr long id = 50002;
  static constexpr const char* catalogue_file = "zenterr.bin";
  static constexpr const char* catalogue_variable = "ZENTERRPATH";
};

struct Stat {
  using Other = Math;
  static constexpr bool is_math = false;
  static constexpr long id = 50020;
  static constexpr const char* catalogue_file = "zents_e.bin";
  static constexpr const char* catalogue_variable = "ZENTSERRPATH";
};

}  // namespace zent
