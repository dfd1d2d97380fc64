// What the units of the host share: the memory behind variables, temporaries, and errors on their way out of a module.
#pragma once

#include <cstring>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.hpp"

// A module finds the operations in the program that loads it, so they stay visible in a tree that hides everything else.
#define ORV_SERVED extern "C" __attribute__((visibility("default")))

struct ORV_SDEF_ {
  struct Tag {
    ORV_IDENT name;
    int type;
    bool scalar;
    orv::Dims dims;
    long count;
    long offset;
    ORV_SDEF definition;  // of a tag that is a structure itself
  };
  std::string name;  // empty: unnamed
  std::vector<Tag> tags;
  long size = 0;
  long alignment = 1;
  bool owns_memory = false;  // strings among the tags
};

namespace orv::detail {

// Flags of a variable that only the host looks at. A structure scalar has a block without the array flag.
enum : unsigned char { flag_array = 4, flag_structure = 32 };

// Data of an array or a structure, shared by reference count. Borrowed data belong to somebody else and end without notice.
struct Block {
  long references = 1;
  int type = 0;
  long count = 0;
  long element_size = 0;
  char* data = nullptr;
  void (*release)(void*) = nullptr;  // null: free(), unless borrowed
  bool borrowed = false;
  ORV_SDEF definition = nullptr;
  Dims dims;
};

inline bool has_block(const ORV_VARIABLE& v) {
  return (v.flags & (flag_array | flag_structure)) != 0;
}
inline Block* block_of(const ORV_VARIABLE& v) {
  return static_cast<Block*>(v.value.arr);
}

// Extents multiplied, and checked together with the size of an element. Throws Error.
long checked_count(const Dims& dims, long element_size);
long element_size(int type, ORV_SDEF definition);
Block* new_block(int type, const Dims& dims, ORV_SDEF definition, bool scalar = false);  // zeroed
Block* clone(const Block& source);
void drop(Block* block) noexcept;
void detach(Block& block);                 // borrowed data become the block's own copy
void forget(Block& block) noexcept;        // the same when the borrowed data may be gone already: zeros
void make_unique(ORV_VARIABLE& variable);  // its data are shared with nobody afterwards
void set_block(ORV_VARIABLE& variable, Block* block, bool scalar) noexcept;

// Elements with the memory behind them. The target of a copy holds zeros.
void copy_elements(int type, ORV_SDEF definition, void* target, const void* source, long n);
void destroy_elements(int type, ORV_SDEF definition, void* data, long n) noexcept;
void convert_elements(int from, const void* source, int to, void* target, long n, bool strict);

void store_text(ORV_STRING& target, std::string_view text);  // the old text is freed, the new may be part of it
inline std::string_view text_of(const ORV_STRING& s) {
  return s.len > 0 ? std::string_view(s.text, static_cast<size_t>(s.len)) : std::string_view();
}

void clear(ORV_VARIABLE& variable) noexcept;                              // undefined afterwards; stays a temporary if it was one
void share(const ORV_VARIABLE& source, ORV_VARIABLE& target);             // the target held nothing
void move_contents(ORV_VARIABLE& source, ORV_VARIABLE& target) noexcept;  // likewise

ORV_VARIABLE* new_temporary();
bool is_temporary(const ORV_VARIABLE* variable) noexcept;
void release_temporary(ORV_VARIABLE* variable) noexcept;
unsigned long temporary_mark() noexcept;
void release_to_mark(unsigned long mark) noexcept;

Value convert(const Value& value, int type, bool strict);  // strict: an imaginary part or a fraction that would be lost throws
std::string format_real(double x);
std::string format_real(float x);
std::string upper(std::string_view text);
ORV_IDENT intern(std::string_view name);
const ORV_SDEF_::Tag& find_tag(ORV_SDEF definition, std::string_view name);
std::string shape_text(const Dims& dims);  // "[3,4]", "scalar"
[[noreturn]] void throw_undefined(const ORV_VARIABLE* variable);

// ---- Errors leave a module's frames by a jump; what they say waits here until the jump has landed. ----
void set_pending(const Error& error) noexcept;
void set_pending(const char* text) noexcept;
Error take_pending();
[[noreturn]] void raise_pending();
jmp_buf* jump_buffer() noexcept;
void set_jump_buffer(jmp_buf* buffer) noexcept;
// Calls in progress, so that a jump never goes to the buffer of one that a trapped signal has thrown away.
size_t enter_call(const void* frame, jmp_buf* buffer);  // its depth, for leave_call
void leave_call(size_t depth) noexcept;
void emit_information(const char* text);

// Runs the body and keeps what it throws. The frames that jump afterwards hold nothing with a destructor.
template <class Body>
bool attempt(const Body& body) noexcept {
  try {
    body();
    return true;
  } catch (const Error& error) {
    set_pending(error);
  } catch (const std::bad_alloc&) {
    set_pending("Unable to allocate memory.");
  } catch (const std::exception& error) {
    set_pending(error.what());
  } catch (...) {
    set_pending("Unknown error.");
  }
  return false;
}

template <class Body>
void serve(const Body& body) {
  if (!attempt(body)) raise_pending();
}

// Routines in C that orv_embed.h registers; they are found before those of the user-routine handler.
bool call_native(ORV_IDENT name, std::span<ORV_VARIABLE*> arguments, Value& result);

}  // namespace orv::detail
