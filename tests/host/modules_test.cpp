// The modules of the build, loaded as a user loads them.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "host/module.hpp"
#include "tests/support/crash.hpp"

namespace {

using orv::Value;

std::string error_of(const char* routine, std::vector<Value>& values) {
  std::vector<Value*> arguments;
  for (Value& value : values) arguments.push_back(&value);
  try {
    orv::call_procedure(routine, arguments);
  } catch (const orv::Error& error) {
    return error.what();
  }
  return "";
}

Value run_user(void*, const char* name, bool, std::span<ORV_VARIABLE*> arguments) {
  if (std::string(name) == "BREAK") crash();
  return orv::apply(orv::Binary::multiply, orv::view(arguments[0]), Value::real(2));
}

TEST(Modules, TheModuleAndOneThatBuildsOnItLoadAndWorkTogether) {
  orv::load_module(ZENT_BUILD_DIR "/orv_zent.so");
  orv::load_module(ZENT_BUILD_DIR "/examples/orv_probe.so");
  std::vector<Value> date{Value::integer(5),  Value::integer(9),    Value::integer(31),
                          Value::integer(12), Value::integer(1899), Value()};
  ASSERT_EQ(error_of("MATHSTAT_130", date), "");
  EXPECT_EQ(date[5].to_integer(), -1);
  orv::set_user_routine_handler(run_user, nullptr);
  const auto integral = [](const char* function) {
    return std::vector<Value>{Value::integer(5), Value::integer(9),  Value::text(function), Value::real(0),
                              Value::real(3),    Value::integer(10), Value::real(-1)};
  };
  for (int round = 0; round < 3; ++round) {
    auto good = integral("twice");
    ASSERT_EQ(error_of("PROBE_1", good), "");
    EXPECT_DOUBLE_EQ(good[6].to_real(), 9.0);
    auto bad = integral("break");
    EXPECT_NE(error_of("PROBE_1", bad).find("ZENT_PROBE_1: Terminal error: MATH_MAJOR_VIOLATION: "), std::string::npos);
  }
  orv::set_user_routine_handler(nullptr, nullptr);
}

// Every name of a unit must be visible outside the module: one of each stands for the others.
TEST(Modules, TheModuleExportsTheLibrary) {
  orv::load_module(ZENT_BUILD_DIR "/orv_zent.so");
  for (const char* name : {"ORV_Load",
                           "cmast_init",
                           "cmath_err_table",
                           "nextPrime",
                           "zent_e1psh",
                           "zents_error_options",
                           "zent_find_message",
                           "zents_machine",
                           "zent_D_NUMBER",
                           "zents_set_signal",
                           "zent_key_create",
                           "zents_c1dim",
                           "zent_daxpy",
                           "zents_ztrsv",
                           "zent_isamax",
                           "zents_dsvrgp",
                           "zent_z_m1ran",
                           "zents_idanan",
                           "zent_d_constant",
                           "zent_days_to_date",
                           "zent_drnun",
                           "zents_f_random_uniform",
                           "zents_random_GFSR_table_get",
                           "zent_faure_sequence_init",
                           "zent_free_allocated_memory"}) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, name), nullptr) << name;
  }
}

TEST(Modules, WhatIsNoModuleIsRefused) {
  for (const auto& [path, why] : {std::pair("/nowhere/module.so", "Cannot load the module /nowhere/module.so: "),
                                  std::pair("libm.so.6", "it has no ORV_Load")}) {
    try {
      orv::load_module(path);
      ADD_FAILURE() << path;
    } catch (const orv::Error& error) {
      EXPECT_NE(std::string(error.what()).find(why), std::string::npos) << error.what();
    }
  }
}

}  // namespace
