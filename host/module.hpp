// Modules: loading one, the procedures and structures that it registered, calls in both directions.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.hpp"

namespace orv {

// Loads a shared object (its symbols are visible to modules loaded later) and calls its ORV_Load. Throws Error.
void load_module(const std::string& path);
// The same for a module that is linked into the program.
void register_module(int (*load)());

bool has_procedure(std::string_view name);  // any case
std::vector<std::string> procedure_names();

// Calls a registered procedure with the variables of the arguments; the procedure may change each of them. A host error raised on
// the way comes back as Error, whatever module frames it jumped over. Throws Error for an unknown name or a wrong argument count.
void call_procedure(std::string_view name, std::span<Value*> arguments);

// Who runs user routines for ORV_InterpCallFromSysproc: called with the routine's upper-case name and the caller's variables.
// It returns the function's result (ignored for procedures) and may throw Error.
using UserRoutine = Value (*)(void* context, const char* name, bool is_function, std::span<ORV_VARIABLE*> arguments);
void set_user_routine_handler(UserRoutine handler, void* context);

// Where information messages (notes, warnings) go; standard error at first.
using InformationSink = void (*)(void* context, const char* text);
void set_information_sink(InformationSink sink, void* context);

// Fast view of a variable of a module as a value without copying array data where that is possible.
// Data that belong to a library are borrowed: a value that still holds them when the call of the user routine ends gets a copy.
Value view(ORV_VARIABLE* variable);

// Stores a value in a variable of a module: how a user procedure delivers an output argument. A variable over a library's own
// memory takes the elements into that memory and must have as many; any other is replaced.
void assign(ORV_VARIABLE* variable, Value value);

// Temporaries that are alive now: for tests of leaks.
long live_temporaries();

}  // namespace orv
