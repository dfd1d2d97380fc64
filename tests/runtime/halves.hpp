// Both halves of the runtime behind one set of names, for tests typed over the half.
#pragma once

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "runtime/envelope.hpp"
#include "runtime/keys.hpp"
#include "runtime/options.hpp"
#include "zent.h"
#include "zents.h"

#define HALF(Api, Tag, P, U)                                                                                                \
  struct Api {                                                                                                              \
    using Half = zent::Tag;                                                                                                 \
    static constexpr long set_print = U##_SET_PRINT, get_print = U##_GET_PRINT, set_stop = U##_SET_STOP,                    \
                          get_stop = U##_GET_STOP, set_traceback = U##_SET_TRACEBACK, get_traceback = U##_GET_TRACEBACK,    \
                          set_file = U##_SET_ERROR_FILE, get_file = U##_GET_ERROR_FILE, print_proc = U##_ERROR_PRINT_PROC,  \
                          full_traceback = U##_FULL_TRACEBACK, library_id = U##_LIBRARY_ID, trapping = U##_SIGNAL_TRAPPING, \
                          message_path = U##_ERROR_MSG_PATH, message_name = U##_ERROR_MSG_NAME;                             \
    static constexpr auto e1sti = P##_e1sti;                                                                                \
    static constexpr auto e1std = P##_e1std;                                                                                \
    static constexpr auto e1str = P##_e1str;                                                                                \
    static constexpr auto e1stc = P##_e1stc;                                                                                \
    static constexpr auto e1stl = P##_e1stl;                                                                                \
    static constexpr auto ermes = P##_ermes;                                                                                \
    static constexpr auto e1mes = P##_e1mes;                                                                                \
    static constexpr auto e1psh = P##_e1psh;                                                                                \
    static constexpr auto e1pop = P##_e1pop;                                                                                \
    static constexpr auto e1usr = P##_e1usr;                                                                                \
    static constexpr auto n1rty = P##_n1rty;                                                                                \
    static constexpr auto n1rcd = P##_n1rcd;                                                                                \
    static constexpr auto error_type = P##_error_type;                                                                      \
    static constexpr auto error_code = P##_error_code;                                                                      \
    static constexpr auto options = P##_error_options;                                                                      \
    static constexpr auto e1pos = P##_e1pos;                                                                                \
    static constexpr auto checksum = P##_set_at_checksum;                                                                   \
    static constexpr auto key_create = P##_key_create;                                                                      \
    static constexpr auto setspecific = P##_setspecific;                                                                    \
    static constexpr auto getspecific = P##_getspecific;                                                                    \
    static constexpr auto f_machine = P##_f_machine;                                                                        \
    static constexpr auto d_machine = P##_d_machine;                                                                        \
    static constexpr auto i_machine = P##_i_machine;                                                                        \
    static constexpr auto imach = P##_imach;                                                                                \
    static constexpr auto umach = P##_umach;                                                                                \
    static constexpr auto c1iarg = P##_c1iarg;                                                                              \
    static constexpr auto c12ile = P##_c12ile;                                                                              \
    static constexpr auto c1ind = P##_c1ind;                                                                                \
    static constexpr auto c1dim = P##_c1dim;                                                                                \
    static constexpr auto c1ge0 = P##_c1ge0;                                                                                \
    static constexpr auto once = P##_once;                                                                                  \
    static constexpr auto mutex_init = P##_mutex_init;                                                                      \
    static constexpr auto mutex_destroy = P##_mutex_destroy;                                                                \
    static constexpr auto lock = P##_thread_mutex_lock;                                                                     \
    static constexpr auto unlock = P##_thread_mutex_unlock;                                                                 \
    static constexpr auto find_name = P##_find_name;                                                                        \
    static constexpr auto set_signal = P##_set_signal;                                                                      \
    static constexpr auto trap_mark = P##_trap_mark;                                                                        \
    static constexpr auto trap_release = P##_trap_release;                                                                  \
    static constexpr const zent_machine_table* table = &P##_machine;                                                        \
    static constexpr const double* numbers = P##_D_NUMBER;                                                                  \
    static constexpr const char* prefix = #P;                                                                               \
  };
HALF(MathApi, Math, zent, ZENT)
HALF(StatApi, Stat, zents, ZENTS)
#undef HALF

using Halves = ::testing::Types<MathApi, StatApi>;

// What the print procedure saw last, and how often.
struct Seen {
  long type, number, count;
  std::string routine, text;
};
inline Seen seen;
inline void record(long type, long number, const char* routine, const char* text) {
  seen = {type, number, seen.count + 1, routine, text};
}

// Every type prints into `seen`, none stops.
template <class Api>
class Runtime : public ::testing::Test {
 protected:
  zent::ErrorState& state = zent::error_state<typename Api::Half>;

  void SetUp() override {
    long on = 1, off = 0;
    Api::e1pos(0, &on, &off);
    Api::options(Api::print_proc, record, 0);
    seen = {};
  }
  void TearDown() override {
    EXPECT_EQ(state.top, state.frame);
    EXPECT_EQ(state.jump_depth, 0);
    EXPECT_EQ(zent::trap_depth<typename Api::Half>, 0);
    EXPECT_EQ(zent::scratch_mark<typename Api::Half>(), nullptr);
  }
  // The text of one raise, as the print procedure gets it.
  std::string message(const char* text) {
    Api::e1psh("f");
    Api::e1mes(6, 1, text);
    Api::e1pop("f");
    return seen.text;
  }
  // What the default printer writes during `body`.
  template <class Body>
  std::string printed(Body body) {
    char* text = nullptr;
    std::size_t size = 0;
    FILE* stream = open_memstream(&text, &size);
    Api::options(Api::set_file, stream, Api::print_proc, nullptr, 0);
    body();
    Api::options(Api::set_file, stderr, Api::print_proc, record, 0);
    std::fclose(stream);
    std::string result = text;
    std::free(text);
    return result;
  }
};
