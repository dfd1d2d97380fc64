#include "runtime/scratch.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace zent {

namespace {

constexpr std::size_t alignment = 64;

// Newest first. Work memory stands behind its own header; a result is an allocation of its own, so that the caller can free it.
struct Block {
  Block* previous;
  void* result;
};

bool byte_count(long count, std::size_t size, std::size_t& bytes) {
  if (count < 0 || __builtin_mul_overflow(static_cast<std::size_t>(count), size, &bytes)) return false;
  if (bytes > PTRDIFF_MAX - sizeof(Block) - alignment) return false;
  if (bytes == 0) bytes = 1;  // null means failure
  return true;
}

template <class Half>
Block* link(void* memory) {
  Block* block = static_cast<Block*>(memory);
  *block = {static_cast<Block*>(scratch_newest<Half>), nullptr};
  scratch_newest<Half> = block;
  return block;
}

}  // namespace

template <class Half>
constinit void* ScratchStorage<Half>::newest = nullptr;

template <class Half>
void* scratch_bytes(long count, std::size_t size, bool zero) {
  std::size_t bytes;
  if (!byte_count(count, size, bytes)) return nullptr;
  void* memory = std::malloc(sizeof(Block) + alignment - 1 + bytes);
  if (memory == nullptr) return nullptr;
  const auto behind = reinterpret_cast<std::uintptr_t>(link<Half>(memory) + 1);
  void* aligned = reinterpret_cast<void*>((behind + alignment - 1) / alignment * alignment);
  if (zero) std::memset(aligned, 0, bytes);
  return aligned;
}

template <class Half>
void* result_bytes(long count, std::size_t size) {
  std::size_t bytes;
  if (!byte_count(count, size, bytes)) return nullptr;
  void* result = std::malloc(bytes);
  void* header = result == nullptr ? nullptr : std::malloc(sizeof(Block));
  if (header == nullptr) {
    std::free(result);
    return nullptr;
  }
  link<Half>(header)->result = result;
  return result;
}

template <class Half>
void keep(void* result) {
  if (result == nullptr) return;
  for (auto* block = static_cast<Block*>(scratch_newest<Half>); block != nullptr; block = block->previous) {
    if (block->result == result) {
      block->result = nullptr;
      return;
    }
  }
}

template <class Half>
void scratch_release(void* mark) {
  while (scratch_newest<Half> != nullptr && scratch_newest<Half> != mark) {
    auto* block = static_cast<Block*>(scratch_newest<Half>);
    scratch_newest<Half> = block->previous;
    std::free(block->result);
    std::free(block);
  }
}

#define ZENT_INSTANTIATE(Half)                                 \
  template void* ScratchStorage<Half>::newest;                 \
  template void* scratch_bytes<Half>(long, std::size_t, bool); \
  template void* result_bytes<Half>(long, std::size_t);        \
  template void keep<Half>(void*);                             \
  template void scratch_release<Half>(void*);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
