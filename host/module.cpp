// Modules: loading, the registered procedures, and calls in both directions.
#include "host/module.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "host/internal.hpp"

namespace orv {
namespace {

struct Procedure {
  ORV_PROC handler;
  int min_args, max_args;
};

struct Hash {
  using is_transparent = void;
  size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>()(text);
  }
};
using Procedures = std::unordered_map<std::string, Procedure, Hash, std::equal_to<>>;

Procedures& procedures() {
  static auto* const table = new Procedures;
  return *table;
}

UserRoutine user_routine = nullptr;
void* user_context = nullptr;

// Who was called last with which variables: names an undefined one that the called routine should have set.
struct Called {
  const char* name = nullptr;
  int argc = 0;
  const ORV_VARIABLE* arguments[16] = {};
};
Called called_routine, called_procedure;

void note_call(Called& called, const char* name, int argc, ORV_VARIABLE** argv) {
  called.name = name;
  called.argc = std::min(argc, 16);
  std::copy_n(argv, called.argc, called.arguments);
}

const Procedures::value_type* find_procedure(std::string_view name) {
  const auto exact = procedures().find(name);
  if (exact != procedures().end()) return &*exact;
  const auto found = procedures().find(detail::upper(name));
  return found == procedures().end() ? nullptr : &*found;
}

// The frame that a jump lands in: it and everything below it hold nothing with a destructor. False: an error is pending.
__attribute__((noinline)) bool protected_call(long (*call)(void*), void* context, long* result) {
  jmp_buf buffer;
  const size_t depth = detail::enter_call(__builtin_frame_address(0), &buffer);
  if (setjmp(buffer) == 0) {
    *result = call(context);
    detail::leave_call(depth);
    return true;
  }
  detail::leave_call(depth);
  return false;
}

void start_module(int (*load)(), const std::string& path) {
  long accepted = 0;
  const unsigned long mark = detail::temporary_mark();
  const bool returned = protected_call([](void* entry) { return static_cast<long>(reinterpret_cast<int (*)()>(entry)()); },
                                       reinterpret_cast<void*>(load), &accepted);
  detail::release_to_mark(mark);
  if (!returned) throw detail::take_pending();
  if (accepted != 1) throw Error("ERROR", "The module " + path + " did not start.");
}

struct Invocation {
  ORV_PROC handler;
  int argc;
  ORV_VARIABLE** argv;
};

long invoke(void* context) {
  const auto* call = static_cast<const Invocation*>(context);
  return call->handler(call->argc, call->argv, nullptr);
}

void check_argument_count(const Procedures::value_type& procedure, size_t found) {
  const auto& [name, row] = procedure;
  if (found >= static_cast<size_t>(row.min_args) && found <= static_cast<size_t>(row.max_args)) return;
  std::string wanted = std::to_string(row.min_args);
  if (row.max_args != row.min_args) wanted += " to " + std::to_string(row.max_args);
  throw Error("ERROR", name + " takes " + wanted + " arguments, found " + std::to_string(found) + ".");
}

// A value that the routine kept would lose borrowed data when the library goes on.
void settle_borrowed(int argc, ORV_VARIABLE** argv) {
  for (int k = 0; k < argc; ++k) {
    if (!detail::has_block(*argv[k])) continue;
    detail::Block* block = detail::block_of(*argv[k]);
    if (!block->borrowed || block->references == 1) continue;
    // The library's variable keeps its own memory; everybody else gets the copy.
    auto own = std::make_unique<detail::Block>(*block);
    own->references = 1;
    detail::detach(*block);
    --block->references;
    argv[k]->value.arr = own.release();
  }
}

void call_user_routine(ORV_CALLREC* rec) {
  const std::span<ORV_VARIABLE*> arguments(rec->argv, static_cast<size_t>(std::max(rec->argc, 0)));
  note_call(called_routine, rec->ident, rec->argc, rec->argv);
  Value result;
  try {
    if (!detail::call_native(rec->ident, arguments, result)) {
      if (!user_routine) throw Error("ERROR", std::string("The routine ") + rec->ident + " is not defined.");
      result = user_routine(user_context, rec->ident, rec->kind == 1, arguments);
    }
  } catch (...) {
    settle_borrowed(rec->argc, rec->argv);
    throw;
  }
  settle_borrowed(rec->argc, rec->argv);
  if (rec->kind != 1) return;
  if (!result.defined()) throw Error("ERROR", std::string("The function ") + rec->ident + " returned no value.");
  ORV_VARIABLE* temporary = detail::new_temporary();
  result.give_to(*temporary);
  rec->result = temporary;
  // The next call's undefined outputs are looked up after it has returned, so its own notes have to stand.
  note_call(called_routine, rec->ident, rec->argc, rec->argv);
}

// Programs link the host as an archive and a module calls these only later: without this no linker would take the units along.
__attribute__((used))
const void* const served[] = {reinterpret_cast<const void*>(&ORV_VarGetData), reinterpret_cast<const void*>(&ORV_MakeStruct),
                              reinterpret_cast<const void*>(&ORV_MessageDefineBlock), reinterpret_cast<const void*>(&ORV_Gettmp)};

}  // namespace

void load_module(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!library) {
    const char* reason = dlerror();
    throw Error("ERROR", "Cannot load the module " + path + ": " + (reason ? reason : "unknown reason"));
  }
  void* entry = dlsym(library, "ORV_Load");
  if (!entry) {
    dlclose(library);
    throw Error("ERROR", "Cannot load the module " + path + ": it has no ORV_Load");
  }
  start_module(reinterpret_cast<int (*)()>(entry), path);
}

void register_module(int (*load)()) {
  start_module(load, "that is linked in");
}

bool has_procedure(std::string_view name) {
  return find_procedure(name) != nullptr;
}

std::vector<std::string> procedure_names() {
  std::vector<std::string> names;
  for (const auto& [name, row] : procedures()) names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

void call_procedure(std::string_view name, std::span<Value*> arguments) {
  const auto* procedure = find_procedure(name);
  if (!procedure) throw Error("ERROR", "There is no procedure " + detail::upper(name) + ".");
  check_argument_count(*procedure, arguments.size());
  // On the stack unless there are unusually many: a fault that a module traps further out abandons this frame with what it owns.
  ORV_VARIABLE* few[64];
  std::vector<ORV_VARIABLE*> many(arguments.size() > std::size(few) ? arguments.size() : 0);
  ORV_VARIABLE** const variables = many.empty() ? few : many.data();
  const int count = static_cast<int>(arguments.size());
  for (int k = 0; k < count; ++k) variables[k] = arguments[static_cast<std::size_t>(k)]->variable();
  const Called outer_procedure = called_procedure;
  const Called outer_routine = called_routine;
  note_call(called_procedure, procedure->first.c_str(), count, variables);
  Invocation call{procedure->second.handler, count, variables};
  const unsigned long mark = detail::temporary_mark();
  long status = 0;
  const bool returned = protected_call(invoke, &call, &status);
  detail::release_to_mark(mark);
  called_procedure = outer_procedure;
  called_routine = outer_routine;
  if (!returned) throw detail::take_pending();
  if (status != 0) throw Error("ERROR", procedure->first + " failed with status " + std::to_string(status) + ".");
}

void set_user_routine_handler(UserRoutine handler, void* context) {
  user_routine = handler;
  user_context = context;
}

Value view(ORV_VARIABLE* variable) {
  return Value::sharing(*variable);
}

void assign(ORV_VARIABLE* variable, Value value) {
  if (detail::has_block(*variable) && detail::block_of(*variable)->borrowed) {
    detail::Block& block = *detail::block_of(*variable);
    if (value.type() == ORV_TYP_STRUCT || block.type == ORV_TYP_STRUCT || value.count() != block.count) {
      throw Error("ERROR", "Expected " + describe(Value::sharing(*variable)) + ", found " + describe(value) + ".");
    }
    const Value converted = detail::convert(value, block.type, true);
    std::memmove(block.data, converted.data(), static_cast<size_t>(block.count * block.element_size));
    return;
  }
  if (detail::has_block(value.raw()) && detail::block_of(value.raw())->borrowed) value.writable();
  detail::clear(*variable);
  value.give_to(*variable);
}

namespace detail {

void throw_undefined(const ORV_VARIABLE* variable) {
  for (const Called* called : {&called_routine, &called_procedure}) {
    for (int k = 0; variable && k < called->argc; ++k) {
      if (called->arguments[k] != variable) continue;
      throw Error("UNDEFVAR", "Variable is undefined: argument " + std::to_string(k + 1) + " of " + called->name);
    }
  }
  throw Error("UNDEFVAR", "Variable is undefined.");
}

}  // namespace detail
}  // namespace orv

ORV_SERVED void ORV_InterpCallFromSysproc(ORV_CALLREC* rec) {
  orv::detail::serve([&] {
    rec->result = nullptr;
    orv::call_user_routine(rec);
  });
}

ORV_SERVED int ORV_SysRtnAdd(const ORV_SYSRTN* rows, int is_function, int n) {
  if (is_function != 0 || n < 0 || (n > 0 && !rows)) return 0;
  for (int k = 0; k < n; ++k) {
    if (!rows[k].handler || !rows[k].name || !*rows[k].name || rows[k].min_args > rows[k].max_args) return 0;
  }
  const bool added = orv::detail::attempt([&] {
    for (int k = 0; k < n; ++k) {
      orv::procedures()[orv::detail::upper(rows[k].name)] = {rows[k].handler, rows[k].min_args, rows[k].max_args};
    }
  });
  return added ? 1 : 0;
}
