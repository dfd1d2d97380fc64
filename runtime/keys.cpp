#include "runtime/keys.hpp"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace zent {

namespace {

constexpr long first_slots = 64;

struct KeyTable {
  long next;  // the key to hand out next
  long slots;
  void** value;
};

template <class Half>
constinit KeyTable keys{1, 0, nullptr};

template <class Half>
bool grow(long key) {
  KeyTable& table = keys<Half>;
  long slots = table.slots == 0 ? first_slots : table.slots;
  while (slots <= key) slots *= 2;
  if (slots == table.slots) return true;
  void* grown = std::realloc(table.value, static_cast<std::size_t>(slots) * sizeof(void*));
  if (grown == nullptr) return false;
  table.value = static_cast<void**>(grown);
  std::memset(table.value + table.slots, 0, static_cast<std::size_t>(slots - table.slots) * sizeof(void*));
  table.slots = slots;
  return true;
}

}  // namespace

template <class Half>
long key_create(long* key, void (*)(void*)) {
  *key = keys<Half>.next++;
  return 0;
}

template <class Half>
long set_specific(long key, void* value) {
  if (key < 1 || key >= keys<Half>.next) return 22;
  if (!grow<Half>(key)) return 12;
  keys<Half>.value[key] = value;
  return 0;
}

template <class Half>
void* get_specific(long key) {
  return key < 1 || key >= keys<Half>.slots ? nullptr : keys<Half>.value[key];
}

#define ZENT_INSTANTIATE(Half)                            \
  template long key_create<Half>(long*, void (*)(void*)); \
  template long set_specific<Half>(long, void*);          \
  template void* get_specific<Half>(long);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
