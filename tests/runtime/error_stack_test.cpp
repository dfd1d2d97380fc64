#include <cmath>

#include "tests/runtime/halves.hpp"

template <class Api>
class ErrorStack : public Runtime<Api> {};
TYPED_TEST_SUITE(ErrorStack, Halves);

TYPED_TEST(ErrorStack, NoteOfInnerCallClimbsQuietly) {
  using Api = TypeParam;
  long off = 0;
  Api::e1pos(0, &off, &off);
  Api::e1psh("outer");
  Api::e1psh("inner");
  EXPECT_EQ(Api::e1mes(1, 77, "note"), 77);
  EXPECT_EQ(Api::n1rty(0), 1);
  Api::e1pop("inner");
  EXPECT_EQ(Api::n1rty(1), 1);
  EXPECT_EQ(Api::n1rcd(1), 77);
  Api::e1pop("outer");
  EXPECT_EQ(Api::n1rty(1), 1);
  EXPECT_EQ(Api::error_code(), 77);
  EXPECT_EQ(seen.count, 0);
}

TYPED_TEST(ErrorStack, StandingErrorSurvivesAnInnerCallWithoutOne) {
  using Api = TypeParam;
  Api::e1psh("outer");
  Api::e1mes(5, 10, "bad");
  Api::d_machine(1);
  EXPECT_EQ(Api::n1rty(0), 5);
  EXPECT_EQ(Api::n1rcd(0), 10);
  EXPECT_EQ(Api::n1rty(1), 0);
  Api::e1pop("outer");
  EXPECT_EQ(Api::error_code(), 10);
}

TYPED_TEST(ErrorStack, LowerTypeTakesTheTextButNotTheNumber) {
  using Api = TypeParam;
  Api::e1psh("outer");
  Api::e1mes(4, 40, "fatal");
  Api::e1psh("inner");
  Api::e1mes(3, 30, "warning");
  Api::e1pop("inner");
  Api::e1pop("outer");
  EXPECT_EQ(seen.type, 4);
  EXPECT_EQ(seen.number, 40);
  EXPECT_EQ(seen.routine, "outer");
  EXPECT_EQ(seen.text, "warning");
  EXPECT_EQ(Api::error_type(), 4);  // frame 0 keeps it until the next call
  Api::e1psh(" ");
  Api::e1pop(std::string(" ").c_str());  // by text
  for (long level : {0, 1}) EXPECT_EQ(Api::n1rty(level) + Api::n1rcd(level), 0);
}

TYPED_TEST(ErrorStack, UserFrameDeliversInsideAndOnlyOnce) {
  using Api = TypeParam;
  Api::e1psh("solver");
  Api::e1usr("ON");
  Api::e1psh("nested");
  Api::e1mes(4, 9, "inside");
  EXPECT_EQ(seen.count, 0);
  Api::e1pop("nested");
  EXPECT_EQ(seen.count, 1);
  EXPECT_EQ(seen.routine, "nested");
  Api::e1usr("OFF");
  EXPECT_EQ(Api::n1rty(0), 4);  // climbed into the caller
  Api::e1pop("solver");
  EXPECT_EQ(seen.count, 1);
  Api::e1usr("x");  // too short to be ON: clears
  EXPECT_EQ(this->state.frame[0].user, 0);
  Api::e1usr("on");
  EXPECT_EQ(this->state.frame[0].user, 1);
}

TYPED_TEST(ErrorStack, SpecialRaises) {
  using Api = TypeParam;
  Api::e1psh("f");
  Api::e1mes(3, 30, "first");
  EXPECT_EQ(Api::e1mes(-1, 31, "ignored"), 31);
  EXPECT_EQ(Api::n1rcd(0), 31);
  EXPECT_EQ(Api::e1mes(-1, 0, "x"), 0);
  EXPECT_EQ(Api::e1mes(-1, -2, "x"), -2);
  EXPECT_EQ(Api::n1rty(0), 3);
  EXPECT_EQ(Api::e1mes(-1, -1, "again"), 31);
  EXPECT_STREQ(this->state.message, "again");
  EXPECT_EQ(Api::e1mes(0, 0, "x"), 0);
  EXPECT_EQ(Api::n1rty(0), 0);
  EXPECT_STREQ(this->state.message, "");
  Api::e1mes(4, 5, " ");  // raised without a message
  EXPECT_STREQ(this->state.message, "");
  Api::e1mes(4, 5, " x");
  EXPECT_STREQ(this->state.message, " x");
  Api::e1mes(4, 5, nullptr);
  Api::e1pop("f");
  EXPECT_EQ(seen.count, 0);
  EXPECT_EQ(Api::error_code(), 5);
}

TYPED_TEST(ErrorStack, ImmediateTypesPrintAtTheRaise) {
  using Api = TypeParam;
  for (long type : {5, 6, 7}) {
    seen = {};
    Api::e1psh("f");
    Api::e1mes(type, 3, "now");
    EXPECT_EQ(seen.type, type);
    Api::e1pop("f");
    EXPECT_EQ(seen.count, 1);
  }
}

static long hooked;
TYPED_TEST(ErrorStack, ChecksumHookSeesEachMessageOnce) {
  using Api = TypeParam;
  hooked = 0;
  Api::checksum([](long type, long number, const char* text) { hooked += text[0] == 'm' ? 100 * type + number : 0; });
  long off = 0;
  Api::e1pos(0, &off, &off);
  this->message("m");
  EXPECT_EQ(hooked, 601);
  Api::e1psh("f");
  Api::e1mes(3, 2, "m");
  EXPECT_EQ(hooked, 601);
  Api::e1pop("f");
  EXPECT_EQ(hooked, 601 + 302);
  Api::e1psh("f");
  Api::e1pop("f");
  EXPECT_EQ(hooked, 601 + 302);
  Api::checksum(nullptr);
}

TYPED_TEST(ErrorStack, ProcessEnds) {
  using Api = TypeParam;
  const auto nest = [](int n) {
    for (int k = 0; k < n; ++k) Api::e1psh("deep");
  };
  const auto exits = ::testing::ExitedWithCode(8);
  EXPECT_EXIT(nest(200), exits, "");
  EXPECT_EXIT((nest(199), std::_Exit(0)), ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT((Api::e1psh("a"), Api::e1pop("b")), exits, "");
  EXPECT_EXIT(Api::e1pop("USER"), exits, "");
  EXPECT_EXIT((Api::e1psh("a"), this->state.signal_jump = 1, Api::e1pop("b")), exits, "");
  EXPECT_EXIT(Api::n1rty(2), exits, "");
  EXPECT_EXIT(Api::n1rcd(-1), exits, "");
  const auto bad_type = [](long type) {
    Api::options(Api::print_proc, nullptr, 0);
    Api::e1mes(type, 1, "the text");
  };
  EXPECT_EXIT(bad_type(9), exits, "Error type must be -1,...,8, but type =(.|\n)*9.(.|\n)*the text");
  EXPECT_EXIT(bad_type(-2), exits, "e1mes");
  EXPECT_EXIT(Api::e1mes(8, 1, "x"), exits, "");
  const auto stops = [](const char* text) {
    Api::options(Api::set_stop, 4, 1, 0);
    Api::e1psh("a");
    Api::e1mes(4, 1, text);
    Api::e1psh("b");
    Api::e1pop("b");
    Api::e1pop("a");
  };
  EXPECT_EXIT(stops("x"), ::testing::ExitedWithCode(4), "");
  EXPECT_EXIT(stops(" "), ::testing::ExitedWithCode(4), "");
}

TYPED_TEST(ErrorStack, MessageForms) {
  using Api = TypeParam;
  Api::e1sti(1, -9000000000);
  Api::e1sti(2, 255);
  Api::e1sti(10, 1);
  Api::e1std(1, 0.5);
  Api::e1str(9, 0.25F);
  Api::e1stc(3, {1.0F, -2.0F});
  Api::e1stl(-1, "abc");
  Api::e1stl(2, nullptr);
  const struct {
    const char *text, *expected;
  } cases[] = {
      {"%(i1) %(I2)", "-9000000000 255"},
      {"%(i2%5d|) %(i2%#x) %(i1%li)", "  255| 0xff -9000000000"},
      {"%(r1) %(D1%.2f) %(f9%g)", "5.000000e-01 0.50 0.25"},
      {"%(c3) %(Z3%%g+%gi)", "(1.000000e+00,-2.000000e+00) (1.000000e+00,-2.000000e+00)"},
      {"%(c3%%%g+%gi)", "%1+-2i"},
      {"%(s1) %(L1%-5s|) [%(l2)]", "abc abc  | []"},
      {"%(i0)[%(l0)]", "0[]"},
      {"%(q1%5d) %(q7)", "%(q1) %(q7)"},
      {"a%/b 100% %% %x %(", "a\nb 100% %% %x %("},
      {"%(ix) %(i", "%(ix) %(i"},
      {"%(i1", "%(i1"},
      {"%(i2%n) %(i2%s) %(l1%d) %(l1%s%s) %(i2%*d) %(r1%d) %(i2%99999999d)", "255 255 abc abc 255 5.000000e-01 255"},
  };
  for (const auto& c : cases) EXPECT_EQ(this->message(c.text), c.expected) << c.text;
}

TYPED_TEST(ErrorStack, LongTextsGrowTheBuffer) {
  using Api = TypeParam;
  const std::string long_text(5000, 'y'), value(70000, 'z');
  EXPECT_EQ(this->message(long_text.c_str()), long_text);
  Api::e1stl(1, value.c_str());
  EXPECT_EQ(this->message("<%(l1)|%(l1)>"), "<" + value + "|" + value + ">");
  EXPECT_EQ(this->message("%(i2%9000d)").size(), 9000u);
  Api::e1stl(1, nullptr);
}

TYPED_TEST(ErrorStack, PrinterNamesTheCalledRoutineAndCutsLines) {
  using Api = TypeParam;
  const auto raise = [](long type, const std::string& text) {
    Api::e1psh("called");
    Api::e1psh("inner");
    Api::e1mes(type, 3, text.c_str());
    Api::e1pop("inner");
    Api::e1pop("called");
  };
  EXPECT_EQ(this->printed([&] { raise(7, "short"); }), "\n*** FATAL_IMMEDIATE Error from called.  short\n\n");
  EXPECT_EQ(this->printed([&] { raise(5, "one\ntwo"); }), "\n*** TERMINAL Error from called.  one\n***          two\n\n");
  EXPECT_EQ(this->printed([&] { raise(5, " "); }), "");
  // The head takes 33 characters: 44 are left in the first line, 65 in the others.
  const std::string a(44, 'a'), b(45, 'b'), c(65, 'c'), d(140, 'd');
  const std::string head = "\n*** TERMINAL Error from called.  ", next = "\n***          ";
  EXPECT_EQ(this->printed([&] { raise(5, a); }), head + a + "\n\n");
  EXPECT_EQ(this->printed([&] { raise(5, b); }), head + next + b + "\n\n");
  EXPECT_EQ(this->printed([&] { raise(5, a + " " + c + " e"); }), head + a + next + c + next + "e\n\n");
  EXPECT_EQ(this->printed([&] { raise(5, d); }),
            head + next + d.substr(0, 65) + next + d.substr(0, 65) + next + d.substr(0, 10) + "\n\n");
  const std::string fatal = this->printed([&] { raise(4, "x"); });
  EXPECT_EQ(fatal.find("\n*** FATAL    Error "), 0u);
  EXPECT_NE(fatal.find(" from called.  x\n\n"), std::string::npos);
}

TYPED_TEST(ErrorStack, Traceback) {
  using Api = TypeParam;
  const auto raise = [] {
    Api::e1psh("called");
    Api::e1psh("inner");
    Api::e1mes(5, -3, "x");
    Api::e1pop("inner");
    Api::e1pop("called");
  };
  Api::options(Api::set_traceback, 5, 1, 0);
  const auto row = [](const char* a, const char* b, const char* c, const char* name) {
    char line[200];
    std::snprintf(line, sizeof line, " %5s%-9s   %-25s %s\n", a, b, c, name);
    return std::string(line);
  };
  const std::string head =
      "Here is a traceback of the calls in reverse order.\n  Error Type        Error Code              Routine\n"
      "  ----------        ----------              -------\n";
  std::string text = this->printed(raise);
  const std::string user = row("", "", "", "USER");
  ASSERT_NE(text.find(head), std::string::npos);
  text = text.substr(text.find(head) + head.size());
  EXPECT_EQ(text.find("ZENT_TERMINAL"), 1u);
  EXPECT_EQ(text.substr(text.find('\n') + 1), user);
  EXPECT_NE(text.find(" called\n"), std::string::npos);
  Api::options(Api::full_traceback, 1, 0);
  text = this->printed(raise);
  EXPECT_NE(text.find(" inner\n" + row("", "", "", "called") + user), std::string::npos);
  Api::options(Api::full_traceback, 0, Api::set_traceback, 5, 0, 0);
}

// The tables as the process found them, before any test set a flag.
struct Tables {
  std::string print, stop, traceback, immediate;
  explicit Tables(const zent::ErrorState& state) {
    for (long type = 0; type < zent::type_count; ++type) {
      print += state.print_flag[type] ? '1' : '0';
      stop += state.stop_flag[type] ? '1' : '0';
      traceback += state.traceback_flag[type] ? '1' : '0';
      immediate += state.immediate_flag[type] ? '1' : '0';
    }
  }
};
template <class Half>
static const Tables fresh{zent::error_state<Half>};
static const Tables* const all_fresh[] = {&fresh<zent::Math>, &fresh<zent::Stat>};

TYPED_TEST(ErrorStack, DefaultTablesAndExitStatus) {
  using Api = TypeParam;
  const Tables& tables = *all_fresh[Api::Half::is_math ? 0 : 1];
  EXPECT_EQ(tables.print, "000111111");
  EXPECT_EQ(tables.stop, "000011001");
  EXPECT_EQ(tables.traceback, "000000001");
  EXPECT_EQ(tables.immediate, "000001111");
  const auto raise = [&](long type) {
    for (long each = 0; each < zent::type_count; ++each) this->state.stop_flag[each] = tables.stop[each] == '1';
    zent::public_call<typename Api::Half>(
        "outer", [=] { zent::public_call<typename Api::Half>("inner", [=] { Api::e1mes(type, 1, "x"); }); });
    std::_Exit(90);
  };
  for (long type = 1; type <= 7; ++type) {
    const int status = tables.stop[type] == '1' ? static_cast<int>(type) : 90;
    EXPECT_EXIT(raise(type), ::testing::ExitedWithCode(status), "") << type;
  }
}

// A user function that calls the library without an error must not lose the warning that its caller has waiting.
TYPED_TEST(ErrorStack, WaitingMessageOutlivesASoundNestedCall) {
  using Api = TypeParam;
  hooked = 0;
  Api::checksum([](long, long, const char*) { ++hooked; });
  Api::e1psh("solver");
  Api::e1mes(3, 12, "waiting");
  Api::e1usr("ON");
  Api::d_machine(1);
  EXPECT_EQ(seen.count + hooked, 0);
  Api::e1usr("OFF");
  Api::e1pop("solver");
  EXPECT_EQ(seen.count, 1);
  EXPECT_EQ(seen.number, 12);
  EXPECT_EQ(seen.text, "waiting");
  EXPECT_EQ(hooked, 1);
  Api::checksum(nullptr);
}
