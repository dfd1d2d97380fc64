// The variable-length call: integer and pointer arguments as 61 machine words, real arguments beside them.
#pragma once

#include <type_traits>
#include <utility>

#include "binding/raise.hpp"

namespace zent::binding {

inline constexpr int word_count = 61;

// Reals travel in registers of their own, so a call keeps its order when the integers and pointers come as words and the fixed
// reals stand in front of them. The words behind the terminator are never looked at by the function called.
template <class Result, class... Reals, std::size_t... k>
Result call_words(void* function, const long* words, std::index_sequence<k...>, Reals... reals) {
  static_assert(sizeof...(Reals) <= 8, "further reals would go to the stack, behind the words");
  static_assert((std::is_floating_point_v<Reals> && ...), "integers and pointers are words");
  using Function = Result (*)(Reals..., long, ...);
  return reinterpret_cast<Function>(function)(reals..., words[k]...);
}

// The argument words of one call: the head, then codes and values of options, then end().
class Words {
 public:
  Words& add(long value) {
    if (count_ < word_count) {
      words_[count_++] = value;
    } else if (!overflowed_) {
      overflowed_ = true;
      raise_error("Too many options are given in one call");
    }
    return *this;
  }
  Words& add(const void* address) {
    return add(reinterpret_cast<long>(address));
  }
  template <class Result, class... Parameters>
  Words& add(Result (*function)(Parameters...)) {
    return add(reinterpret_cast<long>(function));
  }
  template <class... Values>
  Words& option(int code, Values... values) {
    add(static_cast<long>(code));
    (add(values), ...);
    return *this;
  }
  Words& end() {
    return add(0L);
  }

  int count() const {
    return count_;
  }
  const long* data() const {
    return words_;
  }

  // Calls the function with fixed real arguments `reals` (double, or float in the single forms), in their order. A call whose
  // words overflowed is not made, which only a host that returns from a raise can see.
  template <class Result, class... Reals>
  Result call(void* function, Reals... reals) const {
    if (overflowed_) return Result();
    return call_words<Result>(function, words_, std::make_index_sequence<word_count>(), reals...);
  }
  template <class Result, class Returned, class... Parameters, class... Reals>
  Result call(Returned (*function)(Parameters..., ...), Reals... reals) const {
    return call<Result>(reinterpret_cast<void*>(function), reals...);
  }

 private:
  long words_[word_count] = {};
  int count_ = 0;
  bool overflowed_ = false;
};

}  // namespace zent::binding
