#include "tests/binding_returns/stand_in.hpp"

#include <cstdarg>
#include <cstring>
#include <deque>
#include <map>
#include <set>

namespace stand_in {

constexpr unsigned char array_flag = 4;

ORV_VARIABLE array(int type, Array& content) {
  ORV_VARIABLE v{};
  v.type = static_cast<unsigned char>(type);
  v.flags = array_flag;
  v.value.arr = &content;
  return v;
}
ORV_VARIABLE integer(long value) {
  ORV_VARIABLE v{};
  v.type = ORV_TYP_INT64;
  v.value.l64 = value;
  return v;
}
ORV_VARIABLE real(double value) {
  ORV_VARIABLE v{};
  v.type = ORV_TYP_DOUBLE;
  v.value.d = value;
  return v;
}
ORV_VARIABLE text(const char* value) {
  ORV_VARIABLE v{};
  v.type = ORV_TYP_STRING;
  v.value.str = {static_cast<int>(std::strlen(value)), const_cast<char*>(value)};
  return v;
}

namespace {

void raise(const std::string& what) {
  ++raises;
  last = what;
}

std::string filled(const char* format, va_list values) {
  std::string result;
  for (; *format; ++format) {
    if (format[0] == '%' && format[1] == 's') {
      const char* value = va_arg(values, const char*);
      result += value ? value : "";
      ++format;
    } else {
      result += *format;
    }
  }
  return result;
}

// Nothing is given back before the process ends: only the count of live temporaries falls.
std::deque<ORV_VARIABLE> variables;
std::deque<Array> arrays;
std::deque<std::vector<char>> blocks;

ORV_VARIABLE* temporary(const ORV_VARIABLE& v) {
  ++live;
  variables.push_back(v);
  variables.back().flags |= ORV_V_TEMP;
  return &variables.back();
}

void* make(int type, long n, ORV_VARIABLE** out) {
  if (no_memory) return raise("no memory"), nullptr;
  blocks.emplace_back(static_cast<size_t>(n) * 16 + 1);
  arrays.push_back({n, blocks.back().data()});
  *out = temporary(array(type, arrays.back()));
  return arrays.back().data;
}

}  // namespace
}  // namespace stand_in

using namespace stand_in;

struct ORV_MSG_BLOCK_ {
  std::vector<ORV_MSG_ROW> rows;
};

extern "C" {

void ORV_VarGetData(ORV_VARIABLE* v, long* count, void** data, int) {
  if (v->type == ORV_TYP_UNDEF) return raise("undefined");  // nothing is stored
  *count = v->flags & array_flag ? static_cast<Array*>(v->value.arr)->count : 1;
  *data = v->flags & array_flag ? static_cast<Array*>(v->value.arr)->data : &v->value;
}
char* ORV_VarGetString(ORV_VARIABLE* v) {
  static char empty[1] = "";
  if (v->type != ORV_TYP_STRING || (v->flags & array_flag)) return raise("not a string"), empty;
  return v->value.str.len > 0 ? v->value.str.text : empty;
}
ORV_VARIABLE* ORV_VarTypeConvert(ORV_VARIABLE* v, int type) {
  if (v->type == type) return v;
  raise("no conversion");
  return nullptr;
}
void ORV_VarCopy(ORV_VARIABLE* source, ORV_VARIABLE* target) {
  *target = *source;  // the contents stay where they are
  target->flags &= static_cast<unsigned char>(~ORV_V_TEMP);
  --live;
}
void* ORV_MakeTempArray(int type, int n_dims, const long* dims, int, ORV_VARIABLE** v) {
  long n = 1;
  for (int k = 0; k < n_dims; ++k) n *= dims[k];
  return make(type, n, v);
}
void* ORV_MakeTempVector(int type, long n, int, ORV_VARIABLE** v) {
  return make(type, n, v);
}
void* ORV_MakeTempStructVector(ORV_SDEF, long, ORV_VARIABLE**, int) {
  return raise("no structures"), nullptr;
}
ORV_SDEF ORV_MakeStruct(const char*, const ORV_STRUCT_TAG*) {
  return nullptr;
}
void* ORV_StructGetTagAddress(ORV_VARIABLE*, const char*, int, int, void*) {
  return raise("no such tag"), nullptr;
}
ORV_IDENT ORV_StructTagIdentHash(const char* tag) {
  return tag;
}
ORV_VARIABLE* ORV_ImportArray(int n_dims, const long* dims, int type, void* data, void (*)(void*), ORV_SDEF) {
  if (no_memory) return raise("no memory"), nullptr;
  arrays.push_back({n_dims == 1 ? dims[0] : 0, data});
  return temporary(array(type, arrays.back()));
}
ORV_VARIABLE* ORV_Gettmp(void) {
  return temporary({});
}
void ORV_Deltmp(ORV_VARIABLE*) {
  --live;
}
void ORV_Delvar(ORV_VARIABLE* v) {
  *v = {};
}
void* ORV_GetScratch(ORV_VARIABLE** v, long n, long) {
  return make(ORV_TYP_BYTE, n, v);
}
void ORV_StoreScalar(ORV_VARIABLE* v, int type, const void* value) {
  *v = {};
  v->type = static_cast<unsigned char>(type);
  std::memcpy(&v->value, value, static_cast<size_t>(ORV_TypeSizeFunc(type)));
}
void ORV_StrStore(ORV_STRING*, const char*) {}
double ORV_DoubleScalar(ORV_VARIABLE* v) {
  if (v->type != ORV_TYP_DOUBLE || (v->flags & array_flag)) return raise("not a double"), 0;
  return v->value.d;
}
long ORV_MEMINTScalar(ORV_VARIABLE* v) {
  if (v->type != ORV_TYP_INT64 || (v->flags & array_flag)) return raise("not an integer"), 0;
  return v->value.l64;
}
long ORV_TypeSizeFunc(int type) {
  const std::map<int, long> sizes = {{1, 1}, {4, 4}, {5, 8}, {6, 8}, {7, 16}, {9, 16}, {14, 8}};
  return sizes.count(type) ? sizes.at(type) : 0;
}
ORV_IDENT ORV_IdentHash(const char* name, int, int, int, int) {
  static std::set<std::string> names;
  return names.insert(name).first->c_str();
}
void ORV_InterpCallFromSysproc(ORV_CALLREC* rec) {
  rec->result = user ? user(rec) : nullptr;
}
ORV_MSG_BLOCK ORV_MessageDefineBlock(const char*, int n, const ORV_MSG_ROW* messages) {
  static ORV_MSG_BLOCK_ block;
  block.rows.assign(messages, messages + n);
  return no_block ? nullptr : &block;
}
void ORV_MessageFromBlock(ORV_MSG_BLOCK block, int code, int action, ...) {
  va_list values;
  va_start(values, action);
  const std::string what = block ? filled(block->rows[static_cast<size_t>(-code)].format, values) : "";
  va_end(values);
  if (action == ORV_MSG_INFO) {
    information += what;
  } else {
    raise(what);
  }
}
void ORV_MessageSyscode2FromBlock(ORV_MSG_BLOCK block, int code, int, int, int, ORV_ERRSTATE* state, ...) {
  va_list values;
  va_start(values, state);
  const std::string what = filled(block->rows[static_cast<size_t>(-code)].format, values);
  va_end(values);
  ORV_StrBase_strlcpy(state->text, what.c_str(), sizeof state->text);
}
void ORV_MessageThrowErrstate(int, ORV_ERRSTATE* state) {
  raise(state->text);
}
void ORV_MessageVE_UNDEFVAR(ORV_VARIABLE*, int) {
  raise("undefined");
}
jmp_buf* ORV_MessageGJE(void) {
  return buffer;
}
void ORV_MessageSJE(jmp_buf* to) {
  buffer = to;
}
long ORV_StrBase_strlcpy(char* target, const char* from, long size) {
  std::strncpy(target, from, static_cast<size_t>(size - 1));
  target[size - 1] = 0;
  return static_cast<long>(std::strlen(from));
}
int ORV_SysRtnAdd(const ORV_SYSRTN* added, int is_function, int n) {
  if (no_table || is_function != 0) return 0;
  rows.assign(added, added + n);
  return 1;
}
}
