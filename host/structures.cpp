// Definitions of structures, and their tags.
#include <algorithm>
#include <map>
#include <memory>

#include "host/internal.hpp"

namespace orv {

namespace {

// Definitions live as long as the process; equal unnamed ones are one, so that making them again and again costs no memory.
struct Registry {
  std::map<std::string, ORV_SDEF> named;
  std::map<std::string, ORV_SDEF> unnamed;  // by layout
  std::vector<std::unique_ptr<ORV_SDEF_>> all;
};

Registry& registry() {
  static auto* const instance = new Registry;
  return *instance;
}

long alignment_of(int type, ORV_SDEF definition) {
  switch (type) {
    case ORV_TYP_BYTE:
      return 1;
    case ORV_TYP_FLOAT:
    case ORV_TYP_COMPLEX:
      return 4;
    case ORV_TYP_STRUCT:
      return definition->alignment;
    default:
      return 8;
  }
}

long round_up(long n, long alignment) {
  return (n + alignment - 1) / alignment * alignment;
}

void add_tag(ORV_SDEF_& definition, std::string_view name, int type, bool scalar, const Dims& dims, ORV_SDEF inner) {
  const ORV_IDENT ident = detail::intern(name);
  if (!*ident) throw Error("ERROR", "A tag of a structure needs a name.");
  for (const auto& tag : definition.tags) {
    if (tag.name == ident) throw Error("ERROR", std::string("The tag ") + ident + " stands twice in a structure.");
  }
  const long size = detail::element_size(type, inner);
  if (size <= 0) throw Error("ERROR", std::string("The tag ") + ident + " cannot be of type " + type_name(type) + ".");
  const long count = scalar ? 1 : detail::checked_count(dims, size);
  const long alignment = alignment_of(type, inner);
  const long offset = round_up(definition.size, alignment);
  definition.tags.push_back({ident, type, scalar, dims, count, offset, inner});
  if (__builtin_add_overflow(offset, count * size, &definition.size)) throw Error("ERROR", "The structure is too large.");
  definition.alignment = std::max(definition.alignment, alignment);
  definition.owns_memory |= type == ORV_TYP_STRING || (inner && inner->owns_memory);
}

std::string layout_of(const ORV_SDEF_& definition) {
  std::string text;
  for (const auto& tag : definition.tags) {
    text += std::string(tag.name) + ":" + std::to_string(tag.type) + (tag.scalar ? "" : detail::shape_text(tag.dims));
    if (tag.definition) text += "@" + std::to_string(reinterpret_cast<size_t>(tag.definition));
    text += ";";
  }
  return text;
}

ORV_SDEF enter(std::unique_ptr<ORV_SDEF_> definition) {
  if (definition->tags.empty()) throw Error("ERROR", "A structure needs at least one tag.");
  definition->size = round_up(definition->size, definition->alignment);
  Registry& r = registry();
  const std::string layout = layout_of(*definition);
  const std::string name = definition->name;
  auto& names = name.empty() ? r.unnamed : r.named;
  const auto found = names.find(name.empty() ? layout : name);
  if (found != names.end()) {
    if (layout_of(*found->second) != layout)
      throw Error("ERROR", "The structure " + name + " is already defined with other tags.");
    return found->second;
  }
  r.all.push_back(std::move(definition));
  return names[name.empty() ? layout : name] = r.all.back().get();
}

ORV_SDEF make_struct(const char* name, const ORV_STRUCT_TAG* tags) {
  const std::string upper_name = name ? detail::upper(name) : std::string();
  if (!tags) {
    const auto found = registry().named.find(upper_name);
    if (found == registry().named.end()) throw Error("ERROR", "The structure " + upper_name + " is not defined.");
    return found->second;
  }
  auto definition = std::make_unique<ORV_SDEF_>();
  definition->name = upper_name;
  for (; tags->name; ++tags) {
    const Dims dims = tags->dims ? Dims(tags->dims + 1, tags->dims + 1 + std::max(0L, tags->dims[0])) : Dims();
    const bool known = tags->type > 0 && tags->type < 256 && tags->type != ORV_TYP_STRUCT;
    add_tag(*definition, tags->name, known ? static_cast<int>(tags->type) : ORV_TYP_UNDEF, dims.empty(), dims, nullptr);
  }
  return enter(std::move(definition));
}

detail::Block& structure_block(const ORV_VARIABLE& v) {
  if (v.type != ORV_TYP_STRUCT || !detail::has_block(v)) {
    throw Error("ERROR", "Expected a structure, found " + describe(Value::sharing(v)) + ".");
  }
  return *detail::block_of(v);
}

void check_element(const detail::Block& block, long k) {
  if (k < 0 || k >= block.count) {
    throw Error("ERROR", "Subscript " + std::to_string(k) + " is out of range for a structure of " + std::to_string(block.count) +
                             " elements.");
  }
}

}  // namespace

const ORV_SDEF_::Tag& detail::find_tag(ORV_SDEF definition, std::string_view name) {
  const std::string wanted = upper(name);
  for (const auto& tag : definition->tags) {
    if (wanted == tag.name) return tag;
  }
  std::string known;
  for (const auto& tag : definition->tags) known += (known.empty() ? "" : ", ") + std::string(tag.name);
  throw Error("ERROR", "The structure has no tag " + wanted + "; its tags are " + known + ".");
}

ORV_SDEF define_structure(const std::vector<std::pair<std::string, Value>>& tags) {
  auto definition = std::make_unique<ORV_SDEF_>();
  for (const auto& [name, value] : tags) {
    if (!value.defined()) throw Error("ERROR", "The tag " + detail::upper(name) + " is undefined.");
    add_tag(*definition, name, value.type(), !value.is_array(), value.dims(), value.definition());
  }
  return enter(std::move(definition));
}

ORV_SDEF Value::definition() const {
  return type() == ORV_TYP_STRUCT ? structure_block(v_).definition : nullptr;
}

std::vector<std::string> Value::tags() const {
  std::vector<std::string> names;
  for (const auto& tag : structure_block(v_).definition->tags) names.emplace_back(tag.name);
  return names;
}

Value Value::tag(std::string_view name, long k) const {
  const detail::Block& block = structure_block(v_);
  check_element(block, k);
  const auto& tag = detail::find_tag(block.definition, name);
  Value result;
  if (tag.type == ORV_TYP_STRUCT) {
    detail::set_block(result.v_, detail::new_block(tag.type, tag.dims, tag.definition, tag.scalar), tag.scalar);
  } else {
    result = tag.scalar ? zero(tag.type) : array(tag.type, tag.dims);
  }
  detail::copy_elements(tag.type, tag.definition, result.writable(), block.data + k * block.element_size + tag.offset, tag.count);
  return result;
}

void Value::set_tag(std::string_view name, const Value& value, long k) {
  check_element(structure_block(v_), k);
  const auto& tag = detail::find_tag(definition(), name);
  const Value source = detail::convert(value, tag.type, true);
  const bool spread = !source.is_array() && source.count() == 1;
  if ((!spread && source.count() != tag.count) || (tag.type == ORV_TYP_STRUCT && source.definition() != tag.definition)) {
    throw Error("ERROR", std::string("The tag ") + tag.name + " holds " + type_name(tag.type) +
                             (tag.scalar ? "" : detail::shape_text(tag.dims)) + ", found " + describe(value) + ".");
  }
  char* target = static_cast<char*>(writable()) + k * structure_block(v_).element_size + tag.offset;
  const long size = detail::element_size(tag.type, tag.definition);
  detail::destroy_elements(tag.type, tag.definition, target, tag.count);
  for (long i = 0; spread && i < tag.count; ++i)
    detail::copy_elements(tag.type, tag.definition, target + i * size, source.data(), 1);
  if (!spread) detail::copy_elements(tag.type, tag.definition, target, source.data(), tag.count);
}

}  // namespace orv

ORV_SERVED ORV_SDEF ORV_MakeStruct(const char* name, const ORV_STRUCT_TAG* tags) {
  ORV_SDEF definition = nullptr;
  orv::detail::serve([&] { definition = orv::make_struct(name, tags); });
  return definition;
}

// Null for a tag that the structure does not have: the module knows better what is wrong with the structure as a whole.
ORV_SERVED void* ORV_StructGetTagAddress(ORV_VARIABLE* v, const char* tag, int, int, void*) {
  void* address = nullptr;
  orv::detail::serve([&] {
    orv::detail::Block& block = orv::structure_block(*v);
    orv::check_element(block, 0);
    for (const auto& known : block.definition->tags) {
      if (orv::detail::upper(tag) == known.name) address = block.data + known.offset;
    }
  });
  return address;
}

ORV_SERVED void* ORV_MakeTempStructVector(ORV_SDEF def, long n, ORV_VARIABLE** v, int) {
  void* data = nullptr;
  orv::detail::serve([&] {
    if (!def) throw orv::Error("ERROR", "The structure is not defined.");
    ORV_VARIABLE* const temporary = orv::detail::new_temporary();
    orv::detail::Block* block;
    try {
      block = orv::detail::new_block(ORV_TYP_STRUCT, {n}, def);
    } catch (...) {
      orv::detail::release_temporary(temporary);
      throw;
    }
    orv::detail::set_block(*temporary, block, false);
    *v = temporary;
    data = block->data;
  });
  return data;
}

ORV_SERVED ORV_IDENT ORV_StructTagIdentHash(const char* tag) {
  ORV_IDENT ident = nullptr;
  orv::detail::serve([&] { ident = orv::detail::intern(tag ? tag : ""); });
  return ident;
}
