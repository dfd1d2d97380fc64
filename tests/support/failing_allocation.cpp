#include "tests/support/failing_allocation.hpp"

#include <cstddef>
#include <cstdint>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace failing {
namespace {

// Open addressing: blocks that the C library allocates inside itself are not seen, so frees must be matched with their blocks.
constexpr std::size_t slots = 1 << 16;
void* blocks[slots];
void* const removed = &blocks[0];
long live = 0, countdown = 0;
bool hit = false;

std::size_t place(const void* block) {
  return (reinterpret_cast<std::uintptr_t>(block) >> 4) * 0x9E3779B97F4A7C15u >> 48;
}

bool fails() {
  if (countdown == 0 || --countdown != 0) return false;
  hit = true;
  return true;
}

void* note(void* block) {
  if (block == nullptr) return block;
  std::size_t k = place(block);
  while (blocks[k] != nullptr && blocks[k] != removed) k = (k + 1) % slots;
  blocks[k] = block;
  ++live;
  return block;
}

void forget(void* block) {
  for (std::size_t k = place(block); block != nullptr && blocks[k] != nullptr; k = (k + 1) % slots) {
    if (blocks[k] != block) continue;
    blocks[k] = removed;
    --live;
    return;
  }
}

}  // namespace

void arm(long k) {
  countdown = k;
  hit = false;
}
bool struck() {
  return hit;
}
long live_blocks() {
  return live;
}

}  // namespace failing

extern "C" {
void* __wrap_malloc(std::size_t size) {
  return failing::fails() ? nullptr : failing::note(__real_malloc(size));
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return failing::fails() ? nullptr : failing::note(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
  if (failing::fails()) return nullptr;
  failing::forget(block);
  return failing::note(__real_realloc(block, size));
}
void __wrap_free(void* block) {
  failing::forget(block);
  __real_free(block);
}
}
