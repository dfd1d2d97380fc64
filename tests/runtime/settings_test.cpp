#include <cstring>

#include "tests/runtime/halves.hpp"

template <class Api>
class Settings : public Runtime<Api> {};
TYPED_TEST_SUITE(Settings, Halves);

TYPED_TEST(Settings, OptionsReadWhatTheySet) {
  using Api = TypeParam;
  const long codes[3][2] = {
      {Api::set_print, Api::get_print}, {Api::set_stop, Api::get_stop}, {Api::set_traceback, Api::get_traceback}};
  for (const auto& code : codes) {
    for (int type = 1; type <= 7; ++type) {
      for (int flag : {256, 0}) {
        long value = -1;
        Api::options(static_cast<int>(code[0]), type, flag, static_cast<int>(code[1]), type, &value, 0);
        EXPECT_EQ(value, flag != 0);
      }
    }
  }
  long id = 0;
  FILE* stream = nullptr;
  Api::options(Api::library_id, &id, Api::set_file, stdout, Api::get_file, &stream, Api::set_file, stderr, 0);
  EXPECT_EQ(id, std::string(Api::prefix) == "zent" ? 50002 : 50020);
  EXPECT_EQ(stream, stdout);
}

TYPED_TEST(Settings, BadTypeIsSkippedAndUnknownCodeEndsTheList) {
  using Api = TypeParam;
  long value = 7;
  for (int type : {0, 8, -1}) {
    Api::options(Api::set_stop, type, 1, Api::get_stop, 1, &value, 0);
    EXPECT_EQ(Api::error_code(), 132);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(this->state.i[1], 1);
    EXPECT_EQ(this->state.i[2], 5);
    EXPECT_EQ(this->state.i[3], type);
  }
  Api::options(Api::set_stop, 1, 0, 4711, Api::set_stop, 1, 1, 0);
  EXPECT_EQ(Api::error_code(), 103);
  EXPECT_EQ(this->state.i[1], 4711);
  EXPECT_EQ(this->state.i[2], 4);
  Api::options(Api::get_stop, 1, &value, 0);
  EXPECT_EQ(value, 0);
}

TYPED_TEST(Settings, PositiveTypeOfE1posSetsButNeverClears) {
  using Api = TypeParam;
  long print = 0, stop = 1;
  Api::e1pos(3, &print, &stop);
  Api::e1pos(-3, &print, &stop);
  EXPECT_EQ(print, 1);
  EXPECT_EQ(stop, 1);
  print = 0, stop = -1;
  Api::e1pos(0, &print, &stop);
  Api::e1pos(-3, &print, &stop);
  EXPECT_EQ(print, 0);
  EXPECT_EQ(stop, 1);
  print = stop = 0;
  Api::e1pos(0, &print, &stop);
  Api::e1pos(-9, &print, &stop);
  EXPECT_EQ(Api::error_code(), 132);
  EXPECT_EQ(this->state.i[3], -9);
  print = 1;
  Api::e1pos(8, &print, &stop);
  print = 0;
  Api::e1pos(-8, &print, &stop);
  EXPECT_EQ(print, 1);
}

template <class Api>
static long walk(int fixed, ...) {
  ZENT_OPTIONS(options, fixed, fixed);
  long sum = 0;
  zent::public_call<typename Api::Half>("walk", [&] {
    while (int code = options.code()) {
      if (code == 1) {
        sum += options.integer();
      } else if (code == 2) {
        sum += static_cast<long>(options.template real<float>() + *options.template pointer<double>());
      } else if (!options.template unknown<typename Api::Half>(code)) {
        return;
      }
    }
  });
  ZENT_OPTIONS_END(options);
  return sum;
}

TYPED_TEST(Settings, OptionWalkCountsEveryCodeAndValue) {
  using Api = TypeParam;
  double x = 100;
  EXPECT_EQ(walk<Api>(3, 1, 10L, 2, 1.0, &x, 1, -1, 0), 110);
  EXPECT_EQ(Api::error_code(), 0);
  EXPECT_EQ(walk<Api>(3, 1, 10, 50, 1, 20, 0), 30);
  EXPECT_EQ(Api::error_code(), 103);
  EXPECT_EQ(this->state.i[1], 50);
  EXPECT_EQ(this->state.i[2], 6);
  EXPECT_EQ(walk<Api>(0, -1, 1, 20, 0), 0);
  EXPECT_EQ(this->state.i[1], -1);
  EXPECT_EQ(this->state.i[2], 1);
}

TYPED_TEST(Settings, Keys) {
  using Api = TypeParam;
  long first = 0, last = 0;
  Api::key_create(&first, nullptr);
  EXPECT_GE(first, 1);
  int data;
  EXPECT_EQ(Api::getspecific(first), nullptr);
  for (int k = 0; k < 200; ++k) Api::key_create(&last, nullptr);
  EXPECT_EQ(last, first + 200);
  EXPECT_EQ(Api::setspecific(first, &first), 0);
  EXPECT_EQ(Api::setspecific(last, &data), 0);
  EXPECT_EQ(Api::getspecific(last), &data);
  EXPECT_EQ(Api::getspecific(first), &first);
  EXPECT_EQ(Api::getspecific(last - 1), nullptr);
  for (long key : {0L, -1L, last + 1}) {
    EXPECT_EQ(Api::setspecific(key, &data), 22);
    EXPECT_EQ(Api::getspecific(key), nullptr);
  }
}

TYPED_TEST(Settings, MachineConstantsBitForBit) {
  using Api = TypeParam;
  const unsigned single[8] = {0x00800000, 0x7F7FFFFF, 0x33800000, 0x34000000, 0x3E9A209B, 0x7FFFFFFF, 0x7F800000, 0xFF800000};
  const unsigned long real[8] = {0x0010000000000000, 0x7FEFFFFFFFFFFFFF, 0x3CA0000000000000, 0x3CB0000000000000,
                                 0x3FD344133FD34413, 0x7FFFFFFFFFFFFFFF, 0x7FF0000000000000, 0xFFF0000000000000};
  for (long n = 1; n <= 8; ++n) {
    const float f = Api::f_machine(n);
    const double d = Api::d_machine(n);
    EXPECT_EQ(std::memcmp(&f, &single[n - 1], sizeof f), 0) << n;
    EXPECT_EQ(std::memcmp(&d, &real[n - 1], sizeof d), 0) << n;
  }
  EXPECT_EQ(std::memcmp(Api::table->single, single, sizeof single), 0);
  EXPECT_EQ(std::memcmp(Api::table->real, real, sizeof real), 0);
  const long integers[13] = {8, 2, 15, 32767, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};
  for (long n = 0; n <= 12; ++n) EXPECT_EQ(Api::i_machine(n), integers[n]);
  const long old[12] = {32, 4, 2, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};
  for (long n = 1; n <= 12; ++n) EXPECT_EQ(Api::imach(n), old[n - 1]);
  for (int n = 0; n <= 10; ++n) EXPECT_EQ(Api::numbers[n], n);
  EXPECT_EQ(Api::numbers[11], 0.5);
  EXPECT_EQ(Api::error_code(), 0);
  for (long n : {0, 9}) {
    const double d = Api::d_machine(n);
    EXPECT_EQ(std::memcmp(&d, &real[5], sizeof d), 0);
    EXPECT_EQ(Api::error_code(), 132);
    EXPECT_EQ(this->state.i[2], 8);
  }
  EXPECT_EQ(Api::i_machine(13), 0);
  EXPECT_EQ(Api::error_code(), 132);
  EXPECT_EQ(seen.routine, "l_machine");
  EXPECT_EQ(Api::imach(0), 0);
  EXPECT_EQ(this->state.i[1], 1);
  FILE* stream = nullptr;
  Api::umach(4, &stream);
  EXPECT_EQ(seen.number, 12010);
  Api::umach(1, &stream);
  EXPECT_EQ(stream, stdin);
}

TYPED_TEST(Settings, Checks) {
  using Api = TypeParam;
  const auto& state = this->state;
  long counter = 0, number = 0;
  const auto check = [&](auto body) {
    Api::e1psh("f");
    seen.count = 0;
    body();
    Api::e1pop("f");
    number = Api::error_code();
    return number;
  };
  for (long n : {2, 5}) EXPECT_EQ(check([&] { Api::c1iarg(n, "n", 2, 5, &counter); }), 0);
  EXPECT_EQ(counter, 2);
  for (long n : {1, 6}) {
    EXPECT_EQ(check([&] { Api::c1iarg(n, "n", 2, 5, &counter); }), 602);
    EXPECT_EQ(state.i[1], n);
    EXPECT_EQ(state.i[2], 2);
    EXPECT_EQ(state.i[3], 5);
    EXPECT_STREQ(state.l[1], "n");
  }
  EXPECT_EQ(check([&] { Api::c1iarg(99, "n", 2, -1, &counter); }), 0);
  EXPECT_EQ(check([&] { Api::c1iarg(1, "n", 2, -1, &counter); }), 603);
  counter = 0;
  EXPECT_EQ(check([&] { Api::c12ile(4, "a", 4, "b", &counter); }), 0);
  EXPECT_EQ(counter, 2);
  EXPECT_EQ(check([&] { Api::c12ile(5, "a", 4, "b", &counter); }), 601);
  EXPECT_STREQ(state.l[2], "b");
  counter = 0;
  EXPECT_EQ(check([&] { Api::c1ind(0, 5, "a", 0, "high", &counter); }), 0);
  EXPECT_EQ(counter, 1);
  EXPECT_EQ(check([&] { Api::c1ind(0, 5, "a", 4, "high", &counter); }), 601);
  EXPECT_EQ(check([&] { Api::c1ind(0, -1, "a", 4, "high", &counter); }), 603);
  counter = 0;
  EXPECT_EQ(check([&] { Api::c1dim(1, 1, "a", 1, "b", &counter); }), 0);
  EXPECT_EQ(counter, 2);
  check([&] { Api::c1dim(1, 0, "a", -1, "b", &counter); });
  EXPECT_EQ(seen.count, 3);
  EXPECT_EQ(number, 601);
  EXPECT_EQ(check([&] { Api::c1dim(1, 0, "*a", 1, "b", &counter); }), 0);
  EXPECT_EQ(check([&] { Api::c1dim(1, 3, "*a", 2, "b", &counter); }), 601);
  EXPECT_STREQ(state.l[1], "a");
  counter = 0;
  EXPECT_EQ(check([&] { Api::c1ge0("x", &counter, 0.0); }), 0);
  EXPECT_EQ(counter, 1);
  EXPECT_EQ(check([&] { Api::c1ge0("x", &counter, -1e-300); }), 11061);
  EXPECT_EQ(check([&] { Api::c1ge0("x", &counter, Api::d_machine(6)); }), 11061);
}

static int once_calls;
TYPED_TEST(Settings, OnceAndLocks) {
  using Api = TypeParam;
  once_calls = 0;
  long flag = 0;
  static long* seen_flag;
  seen_flag = &flag;
  for (int k = 0; k < 3; ++k) EXPECT_EQ(Api::once(&flag, [] { once_calls += *seen_flag == 0 ? 1 : 100; }), 0);
  EXPECT_EQ(once_calls, 1);
  EXPECT_NE(flag, 0);
  int mutex = 5;
  EXPECT_EQ(Api::mutex_init(&mutex) | Api::lock(&mutex) | Api::lock(&mutex) | Api::unlock(&mutex) | Api::mutex_destroy(&mutex),
            0);
  EXPECT_EQ(mutex, 5);
}

TYPED_TEST(Settings, StreamsOfUmach) {
  using Api = TypeParam;
  FILE* stream = nullptr;
  FILE* const standard[] = {stdin, stdout, stderr};
  for (long n = 1; n <= 3; ++n) {
    Api::umach(n, &stream);
    EXPECT_EQ(stream, standard[n - 1]);
    FILE* other = standard[n % 3];
    Api::umach(-n, &other);
    Api::umach(n, &stream);
    EXPECT_EQ(stream, other);
    other = standard[n - 1];
    Api::umach(-n, &other);
  }
  for (long n : {0L, 4L, -4L}) {
    Api::e1psh("f");
    stream = stdin;
    Api::umach(n, &stream);
    EXPECT_EQ(Api::n1rcd(0), 12010);
    EXPECT_EQ(this->state.i[1], n);
    EXPECT_EQ(stream, stdin);
    Api::e1pop("f");
  }
}

// Copies, so the caller's text may change; the name is put back at the next lookup.
TYPED_TEST(Settings, MessagePathAndNameAreCopies) {
  using Api = TypeParam;
  char path[] = "/nowhere/", name[] = "other.bin";
  auto& view = this->state.catalogue;
  Api::find_name(200);  // the file is open from here on
  const std::string before = view.path;
  Api::options(Api::message_path, path, Api::message_name, name, 0);
  path[1] = name[1] = '?';
  EXPECT_STREQ(view.path, "/nowhere/");
  EXPECT_STREQ(view.file, "other.bin");
  Api::find_name(201);
  EXPECT_STREQ(view.file, Api::Half::catalogue_file);
  Api::options(Api::message_path, before.c_str(), Api::message_name, nullptr, 0);
  EXPECT_EQ(view.path, before);
}

TYPED_TEST(Settings, WildAddressOfAResultIsTrapped) {
  using Api = TypeParam;
  auto* const wild = reinterpret_cast<long*>(sizeof(long));  // null itself is caught earlier by a sanitizer
  Api::options(Api::get_print, 3, wild, Api::set_print, 3, 0, 0);
  EXPECT_EQ(Api::error_code(), 102);
  EXPECT_TRUE(this->state.print_flag[3]);
}
