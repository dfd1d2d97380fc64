// The opaque record that carries a regression from one routine to the next: its check.
#pragma once

namespace zent::binding {

// Sum of the payload's bytes, each taken signed, in order and in single precision: small sums lose no change to rounding.
inline float predict_info_check(const void* payload, long bytes) {
  const auto* const byte = static_cast<const signed char*>(payload);
  float sum = 0.0F;
  for (long i = 0; i < bytes; ++i) sum += static_cast<float>(byte[i]);
  return sum;
}

}  // namespace zent::binding
