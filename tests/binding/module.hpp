// The module in this program, called through the host, with user routines written in C++.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "binding/cmast.h"
#include "host/module.hpp"

extern "C" int probe_load(void);

namespace binding_test {

using orv::Value;

// What the user functions of a test are: the name decides.
using UserFunction = Value (*)(std::span<ORV_VARIABLE*>);
inline std::map<std::string, UserFunction> user_functions;
inline std::string information;  // everything printed since it was cleared

inline Value run_user(void*, const char* name, bool, std::span<ORV_VARIABLE*> arguments) {
  return user_functions.at(name)(arguments);
}

inline void load() {
  static const bool loaded = [] {
    orv::set_information_sink([](void*, const char* text) { information += std::string(text) + "\n"; }, nullptr);
    orv::set_user_routine_handler(run_user, nullptr);
    orv::register_module(ORV_Load);
    orv::register_module(probe_load);
    return true;
  }();
  (void)loaded;
}

// The message of the error that a call ends with; "" for one without.
inline std::string error_of(std::string_view routine, std::vector<Value>& values) {
  load();
  std::vector<Value*> arguments;
  for (Value& value : values) arguments.push_back(&value);
  try {
    orv::call_procedure(routine, arguments);
  } catch (const orv::Error& error) {
    return error.what()[0] != '\0' ? error.what() : "(no text)";
  }
  return "";
}

}  // namespace binding_test
