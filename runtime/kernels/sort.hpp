// Stable ascending sort of reals, optionally with an index vector carried along. Not-a-numbers go to the end in the order in
// which they came; equal values, zeros of both signs among them, keep their order.
#pragma once

#include <utility>

namespace zent::kernel {

// A strict weak order for every input, so that no not-a-number can lead the sort astray.
template <class Real>
bool precedes(Real a, Real b) {
  return a < b || (b != b && a == a);
}

// The values to sort and the indices that go with them, or null.
template <class Real>
struct Keys {
  Real* value;
  long* index;

  void set(long to, const Keys& other, long from) const {
    value[to] = other.value[from];
    if (index != nullptr) index[to] = other.index[from];
  }
  void swap(long i, long j) const {
    std::swap(value[i], value[j]);
    if (index != nullptr) std::swap(index[i], index[j]);
  }
  void reverse(long first, long last) const {
    for (; first < --last; ++first) swap(first, last);
  }
  // First position in [first, last) whose value comes after x: strictly, or from the first equal one on.
  long bound(long first, long last, Real x, bool strictly) const {
    while (first < last) {
      const long middle = first + (last - first) / 2;
      if (strictly ? precedes(x, value[middle]) : !precedes(value[middle], x)) {
        last = middle;
      } else {
        first = middle + 1;
      }
    }
    return first;
  }
};

template <class Real>
void insertion_sort(const Keys<Real>& keys, long first, long last) {
  for (long i = first + 1; i < last; ++i) {
    const Real value = keys.value[i];
    const long index = keys.index != nullptr ? keys.index[i] : 0;
    long j = i;
    for (; j > first && precedes(value, keys.value[j - 1]); --j) keys.set(j, keys, j - 1);
    keys.value[j] = value;
    if (keys.index != nullptr) keys.index[j] = index;
  }
}

// Merges two sorted neighbours; the left one moves to the work memory first.
template <class Real>
void merge(const Keys<Real>& keys, long first, long middle, long last, const Keys<Real>& work) {
  const long length = middle - first;
  for (long i = 0; i < length; ++i) work.set(i, keys, first + i);
  long left = 0, right = middle;
  for (long to = first; left < length; ++to) {
    if (right < last && precedes(keys.value[right], work.value[left])) {
      keys.set(to, keys, right++);
    } else {
      keys.set(to, work, left++);
    }
  }
}

// The same without work memory: cut the longer part in the middle, find the place of its cut in the other one, rotate what lies
// between, and merge both sides. The depth of the recursion is logarithmic.
template <class Real>
void merge_in_place(const Keys<Real>& keys, long first, long middle, long last) {
  while (first < middle && middle < last && precedes(keys.value[middle], keys.value[middle - 1])) {
    if (last - first == 2) return keys.swap(first, middle);
    long left_cut = 0, right_cut = 0;
    if (middle - first > last - middle) {
      left_cut = first + (middle - first) / 2;
      right_cut = keys.bound(middle, last, keys.value[left_cut], false);
    } else {
      right_cut = middle + (last - middle) / 2;
      left_cut = keys.bound(first, middle, keys.value[right_cut], true);
    }
    keys.reverse(left_cut, middle);
    keys.reverse(middle, right_cut);
    keys.reverse(left_cut, right_cut);
    const long new_middle = left_cut + (right_cut - middle);
    merge_in_place(keys, first, left_cut, new_middle);
    first = new_middle;
    middle = right_cut;
  }
}

// Below this length nothing but insertion runs, and no work memory is used.
inline constexpr long sort_run = 24;

// Sorts n values, and the index vector with them unless it is null. Work memory of n values and, with an index vector, n indices
// makes it faster; null is allowed for either and changes nothing in the result.
template <class Real>
void stable_sort(long n, Real* value, long* index, Real* work_value, long* work_index) {
  const Keys<Real> keys{value, index};
  const Keys<Real> work{work_value, work_index};
  const bool buffered = work_value != nullptr && (index == nullptr || work_index != nullptr);
  for (long first = 0; first < n; first += sort_run) insertion_sort(keys, first, first + sort_run < n ? first + sort_run : n);
  for (long width = sort_run; width < n; width *= 2) {
    for (long first = 0; first + width < n; first += 2 * width) {
      const long middle = first + width;
      const long last = middle + width < n ? middle + width : n;
      if (!precedes(value[middle], value[middle - 1])) continue;
      if (buffered) {
        merge(keys, first, middle, last, work);
      } else {
        merge_in_place(keys, first, middle, last);
      }
    }
  }
}

}  // namespace zent::kernel
