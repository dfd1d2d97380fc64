// Temporaries: variables that live from the operation that makes them to ORV_Deltmp, or to the end of the call that abandoned
// them.
#include <cstdint>
#include <cstdlib>
#include <unordered_set>

#include "host/internal.hpp"

namespace orv {
namespace detail {
namespace {

struct Node {
  ORV_VARIABLE variable;  // first: the module's pointer is the node's
  Node* previous;
  Node* next;
  unsigned long serial;  // 0: free
};

// Nodes are never given back, so that a pointer to a released one can still be looked at.
constexpr size_t chunk_bytes = 1 << 14;
constexpr size_t chunk_nodes = chunk_bytes / sizeof(Node);

struct Pool {
  Node* newest = nullptr;  // live ones, newest first through previous
  Node* free_first = nullptr;
  Node* free_last = nullptr;
  unsigned long serial = 0;
  long live = 0;
  uintptr_t last_chunk = 0;
  std::unordered_set<uintptr_t> chunks;
} pool;

// Reuse in order of release: a variable released twice by mistake is then seldom somebody else's already.
void put_free(Node* node) {
  node->serial = 0;
  node->next = nullptr;
  (pool.free_last ? pool.free_last->next : pool.free_first) = node;
  pool.free_last = node;
}

void grow() {
  void* memory = std::aligned_alloc(chunk_bytes, chunk_bytes);
  if (!memory) throw std::bad_alloc();
  std::memset(memory, 0, chunk_bytes);
  pool.chunks.insert(reinterpret_cast<uintptr_t>(memory));
  for (size_t k = 0; k < chunk_nodes; ++k) put_free(static_cast<Node*>(memory) + k);
}

Node* node_of(const ORV_VARIABLE* variable) {
  const uintptr_t address = reinterpret_cast<uintptr_t>(variable);
  const uintptr_t chunk = address & ~static_cast<uintptr_t>(chunk_bytes - 1);
  if (chunk != pool.last_chunk) {
    if (!pool.chunks.count(chunk)) return nullptr;
    pool.last_chunk = chunk;
  }
  if ((address - chunk) % sizeof(Node) != 0) return nullptr;
  Node* node = reinterpret_cast<Node*>(address);
  return node->serial ? node : nullptr;
}

void release(Node* node) {
  (node->next ? node->next->previous : pool.newest) = node->previous;
  if (node->previous) node->previous->next = node->next;
  clear(node->variable);
  node->variable.flags = 0;
  --pool.live;
  put_free(node);
}

}  // namespace

ORV_VARIABLE* new_temporary() {
  if (!pool.free_first) grow();
  Node* node = pool.free_first;
  pool.free_first = node->next;
  if (!pool.free_first) pool.free_last = nullptr;
  node->variable = {};
  node->variable.flags = ORV_V_TEMP;
  node->serial = ++pool.serial;
  node->next = nullptr;
  node->previous = pool.newest;
  if (pool.newest) pool.newest->next = node;
  pool.newest = node;
  ++pool.live;
  return &node->variable;
}

bool is_temporary(const ORV_VARIABLE* variable) noexcept {
  return variable && node_of(variable) != nullptr;
}

void release_temporary(ORV_VARIABLE* variable) noexcept {
  Node* node = variable ? node_of(variable) : nullptr;
  if (!node) return;
  if (has_block(node->variable)) {
    Block& block = *block_of(node->variable);
    if (block.borrowed && block.references > 1) {
      try {
        detach(block);
      } catch (...) {
        forget(block);
      }
    }
  }
  release(node);
}

unsigned long temporary_mark() noexcept {
  return pool.serial;
}

void release_to_mark(unsigned long mark) noexcept {
  while (pool.newest && pool.newest->serial > mark) {
    Node* node = pool.newest;
    if (has_block(node->variable) && block_of(node->variable)->references > 1) forget(*block_of(node->variable));
    release(node);
  }
}

}  // namespace detail

long live_temporaries() {
  return detail::pool.live;
}

}  // namespace orv
