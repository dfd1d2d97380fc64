// What the public transforms share: options, checks, results.
#pragma once

#include "math/optional_argument.hpp"
#include "math/transform/core.hpp"
#include "math/transform/prepared.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::transform {

template <class T>
struct RealOfElement {
  using type = T;
};
template <>
struct RealOfElement<zent_f_complex> {
  using type = float;
};
template <>
struct RealOfElement<zent_d_complex> {
  using type = double;
};

template <class Element>
struct TransformOptions {
  bool backward = false;
  typename RealOfElement<Element>::type* params = nullptr;
  Element* result = nullptr;
};

template <class Element>
TransformOptions<Element> read_options(Options& list, bool with_backward) {
  using Real = typename RealOfElement<Element>::type;
  TransformOptions<Element> options;
  for (int code; (code = list.code()) != 0;) {
    if (code == ZENT_BACKWARD && with_backward) {
      options.backward = true;
    } else if (code == ZENT_PARAMS) {
      options.params = not_null(list.pointer<Real>(), "params", "ZENT_PARAMS");
    } else if (code == ZENT_RETURN_USER) {
      options.result = not_null(list.pointer<Element>(), "result", "ZENT_RETURN_USER");
    } else if (!list.unknown<Math>(code)) {
      break;
    }
  }
  return options;
}

template <class Element>
bool arguments_hold(long n, const Element* p) {
  if (p == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"p"}});
  if (n < 1) raise<Math>(5, MATH_SEQUENCE_LENGTH, {.i = {n}});
  return !failed<Math>();
}

// The caller's array or a new one; then the work, which tells whether it had the memory it needs.
template <class Element, class Work>
Element* deliver(Element* users, long n, long count, Work work) {
  using Real = typename RealOfElement<Element>::type;
  start_of_call<Real>();
  Element* q = users != nullptr ? users : result<Math, Element>(count);
  if (q == nullptr || !work(q)) {
    raise_out_of_memory<Math>({n}, {"n"});
    q = nullptr;
  } else if (users == nullptr) {
    keep<Math>(q);
  }
  end_of_call<Real>();
  return q;
}

}  // namespace zent::transform
