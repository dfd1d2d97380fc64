#include "runtime/scratch.hpp"

#if defined(__linux__)
#include <sys/mman.h>
#endif

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

// Asks for large pages for fresh memory, which may be null. A factor is written once and read a few times, so that the first
// touches of small pages could cost as much as the arithmetic.
void* in_large_pages(void* memory, std::size_t bytes) {
#if defined(__linux__)
  constexpr std::uintptr_t small_page = 4096;
  constexpr std::size_t large_page = 2 << 20;
  if (memory == nullptr || bytes < 2 * large_page) return memory;
  const auto first = (reinterpret_cast<std::uintptr_t>(memory) + small_page - 1) / small_page * small_page;
  const auto last = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / small_page * small_page;
  [[maybe_unused]] const int advised = madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
  return memory;
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
  const std::size_t whole = sizeof(Block) + alignment - 1 + bytes;
  void* memory = in_large_pages(std::malloc(whole), whole);
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
  void* result = in_large_pages(std::malloc(bytes), bytes);
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
