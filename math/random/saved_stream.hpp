// The caller's stream around draws of the library's own.
#pragma once

#include "math/random/uniform.hpp"

namespace zent::uniform {

// All that a draw in one precision changes: seed, generator and shuffle table.
template <class Real>
struct SavedStream {
  Common common;
  Shuffle<Real> shuffle;
};

// Keeps the stream of the half as it is now, seeded from the clock if it was not seeded yet. False without memory.
template <class Half, class Real>
bool save_stream(SavedStream<Real>& saved) {
  Common* common = nullptr;
  Shuffle<Real>* shuffle = nullptr;
  if (!ready<Half>(common, shuffle, &Shuffle<Real>::needs_first_touch) || l_r1int<Half>(0) == nullptr) return false;
  saved = {*common, *shuffle};
  return true;
}

// The stream goes on as if nothing had been drawn since it was saved.
template <class Half, class Real>
void restore_stream(const SavedStream<Real>& saved) {
  Common* common = nullptr;
  Shuffle<Real>* shuffle = nullptr;
  if (!ready<Half>(common, shuffle, &Shuffle<Real>::needs_first_touch)) return;
  *common = saved.common;
  *shuffle = saved.shuffle;
}

}  // namespace zent::uniform
