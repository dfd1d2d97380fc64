// The language: parser and meaning, without any module.
#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "host/lang/interpreter.hpp"

namespace {

using orv::Error;
using orv::Interpreter;

// What a program prints.
std::string output_of(Interpreter& interpreter, const std::string& program) {
  std::string printed;
  interpreter.set_printer([](void* to, std::string_view text) { static_cast<std::string*>(to)->append(text); }, &printed);
  interpreter.run(program, "test.orv");
  interpreter.set_printer(nullptr, nullptr);
  return printed;
}

struct Case {
  const char* program;
  const char* printed;
};
class Prints : public testing::TestWithParam<Case> {};

TEST_P(Prints, Meaning) {
  Interpreter interpreter;
  EXPECT_EQ(output_of(interpreter, GetParam().program), GetParam().printed) << GetParam().program;
  EXPECT_EQ(interpreter.stack_in_use(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Expressions, Prints,
    testing::Values(Case{"print -3^2, 2^3^2, 2^-1, -(-3)", "-9 512 0.5 3\n"}, Case{"print 1 + 2 * 3 - 4 / 8", "6.5\n"},
                    Case{"print 7 mod 3, 1 + 1 == 2, not 1 == 2", "1 1 1\n"}, Case{"print true or 1/0 and nothing", "1\n"},
                    Case{"print false and nothing", "0\n"},
                    Case{"print type(1), type(1.0), type(1.5f), type(2i), type(\"\"), type(true), type(none)",
                         "integer double float dcomplex string byte undefined\n"},
                    Case{"print 2i * 2i == -4", "1\n"}, Case{"print \"a\\tb\\x41\\\"\"", "a\tbA\"\n"},
                    Case{"print (1 +\n 2)  // a comment", "3\n"}, Case{"x = 1; y = 2; print x; print y", "1\n2\n"},
                    Case{"print [[1, 2], [3, 4]] # [[0, 1], [1, 0]]", "[[2, 1],\n [4, 3]]\n"},
                    Case{"print [[1, 2], [3, 4]] ** [1, 1]", "[3, 7]\n"}, Case{"X = 3; print x, Pi > 3.14", "3 1\n"},
                    Case{"print (1 + 2) * 3, 4; print(5, 6)\nprint", "9 4\n5 6\n\n"}));

INSTANTIATE_TEST_SUITE_P(
    Arrays, Prints,
    testing::Values(
        Case{"print 0:4, 4:0:-2, 0.0:1:0.25, size(3:1)", "[0, 1, 2, 3, 4] [4, 2, 0] [   0, 0.25,  0.5, 0.75,    1] 0\n"},
        Case{"print size(0:0.3:0.1)", "4\n"},
        Case{"a = 10:14; print a[0], a[-1], a[1:3], a[:1], a[3:], a[::-1][0]", "10 14 [11, 12, 13] [10, 11] [13, 14] 14\n"},
        Case{"a = reshape(0:5, 2, 3); print a[1, 2], a[:, 0], a[-1, 0:1], a[4], shape(a)", "5 [0, 3] [3, 4] 4 [2, 3]\n"},
        Case{"a = 0:4; a[1:2] = [7, 8]; a[-1] = 9; print a", "[0, 7, 8, 3, 9]\n"},
        Case{"a = 0:4; a[a > 2] = 0; print a, a[[1, 1]]", "[0, 1, 2, 0, 0] [1, 1]\n"},
        Case{"a = [1, 2]; b = a; b[0] = 9; print a, b", "[1, 2] [9, 2]\n"},
        Case{"print sum(1:100), min(3, [1, 2]), max([1.5, 0.5]), all([1, 0]), any([1, 0])", "5050 1 1.5 0 1\n"},
        Case{"print concat([1, 2], 3), transpose([[1, 2], [3, 4]]), \"hello\"[1:3]", "[1, 2, 3] [[1, 3],\n [2, 4]] ell\n"},
        Case{"s = {a: 1, b: [1, 2]}; s.b[1] = 5; s.c = \"new\"; s.a = \"text\"; print s.a, s.b, s.c, tags(s)[2]",
             "text [1, 5] new C\n"}));

INSTANTIATE_TEST_SUITE_P(
    Control, Prints,
    testing::Values(
        Case{"for i in 0:5\n if i == 1\n continue\n else if i == 4\n break\n else\n print i\n end\nend", "0\n2\n3\n"},
        Case{"for v in [1.5, 2.5]\n print v\nend\nfor s in [\"a\"]\n print s\nend", "1.5\n2.5\na\n"},
        Case{"i = 3\nwhile i > 0\n i = i - 1\nend\nprint i", "0\n"},
        Case{"function f(n)\n for i in 0:9\n  while true\n   if i == n\n    return i\n   end\n   break\n  end\n end\nend\nprint "
             "f(4)",
             "4\n"},
        Case{"function fact(n)\n if n < 2\n return 1\n end\n return n * fact(n - 1)\nend\nprint fact(20)",
             "2432902008176640000\n"},
        Case{"function f(a, b = 2 * a, c = none)\n return [a, b, defined(c)]\nend\nprint f(1), f(1, c = 3), f(b = 1, a = 5), "
             "f(1, none)",
             "[1, 2, 0] [1, 2, 1] [5, 1, 0] [1, 2, 0]\n"},
        Case{"procedure p(in, out y, out z)\n y = in + 1\n z[1] = y\nend\na = [0, 0]\np(4, q, a)\nprint q, a", "5 [0, 5]\n"},
        Case{"function g(x = none) = h(x)\nfunction h(x = 7) = x\nprint g(), g(1)", "7 1\n"},
        Case{"k = 5\nfunction f(x)\n global k\n k = k + x\n return k\nend\nprint f(1), k", "6 6\n"},
        Case{"try\n throw \"no\"\ncatch e\n print e.name, e.message, e.file, e.line\nend", "THROWN no test.orv 2\n"},
        Case{"try\n try\n  throw \"in\"\n catch e\n  throw e\n end\ncatch e\n print e.message, e.line\nend", "in 3\n"},
        Case{"try\n assert(1 > 2, \"order\")\ncatch e\n print e.name, e.message\nend", "ASSERTION order\n"},
        Case{"function r(n) = r(n + 1)\ntry\n r(0)\ncatch\n print \"deep\"\nend", "deep\n"},
        Case{"print format(\"%5.2f|%-4d|%s|%%|%x\", pi, 42, \"t\", 255)", " 3.14|42  |t|%|ff\n"},
        Case{"print upper(\"aZ\"), lower(\"aZ\"), len(\"abc\"), text([1])", "AZ az 3 [1]\n"}));

struct Wrong {
  const char* program;
  int line;
  const char* part;  // of the message
};
class Fails : public testing::TestWithParam<Wrong> {};

TEST_P(Fails, SayingWhereAndWhatWasExpected) {
  Interpreter interpreter;
  try {
    interpreter.run(GetParam().program, "test.orv");
    FAIL() << "no error: " << GetParam().program;
  } catch (const Error& e) {
    EXPECT_EQ(e.file, "test.orv");
    EXPECT_EQ(e.line, GetParam().line) << e.what();
    EXPECT_NE(std::string(e.what()).find(GetParam().part), std::string::npos) << e.what();
  }
  EXPECT_EQ(interpreter.stack_in_use(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Running, Fails,
    testing::Values(
        Wrong{"\nprint x", 2, "'x' is not defined"}, Wrong{"a = [1, 2]\na[2]", 2, "outside an extent of 2"},
        Wrong{"a = [1, 2]\na[0, 0]", 2, "subscripts"}, Wrong{"f(1)", 1, "no function or procedure 'f'"},
        Wrong{"function f(x) = x\n\nf(1, 2)", 3, "at most 1 argument"},
        Wrong{"function f(x) = x\nf()", 2, "needs its argument 'x'"},
        Wrong{"function f(x) = x\nf(y = 1)", 2, "expected one of: x"}, Wrong{"function f(x) = x\nf(1, x = 2)", 2, "at most 1"},
        Wrong{"function f(x, y = 1) = x\nf(1, x = 2)", 2, "twice"}, Wrong{"procedure p(out y)\nend\np(3)", 3, "is an output"},
        Wrong{"procedure p()\nend\nx = p()", 3, "has no value"}, Wrong{"print 1 + \"a\"", 1, "integer and string"},
        Wrong{"if [1, 2]\nend", 1, "a condition expected one value"}, Wrong{"x = 1:5:0", 1, "step"},
        Wrong{"x = 0:1e300", 1, "2^31"}, Wrong{"zeros(1e10, 1e10)", 1, "too large"}, Wrong{"format(\"%n\", 1)", 1, "after %"},
        Wrong{"format(\"%d\")", 1, "takes more"}, Wrong{"format(\"%999999d\", 1)", 1, "at most 4096"},
        Wrong{"[1, [2, 3]]", 1, "one shape"}, Wrong{"[1, \"a\"]", 1, "one kind"}, Wrong{"x = {a: 1}.b", 1, "B"},
        Wrong{"function f()\n x = 1\nend\ny = f()", 4, "returned no value"}, Wrong{"throw 1", 1, "throw expected"},
        Wrong{"fault(\"x\")", 1, "segv"}));

INSTANTIATE_TEST_SUITE_P(Parsing, Fails,
                         testing::Values(Wrong{"x = 1\nif x\n", 3, "expected 'end'"}, Wrong{"x = (1,\n", 1, "never closed"},
                                         Wrong{"x = 1)", 1, "closes nothing"}, Wrong{"x = [1)", 1, "expected ']'"},
                                         Wrong{"1 +\n", 1, "expected a value"}, Wrong{"\n\"abc", 2, "no closing quote"},
                                         Wrong{"x = $", 1, "'$'"}, Wrong{"x = \x80", 1, "byte 0x80"},
                                         Wrong{"break", 1, "outside a loop"}, Wrong{"return 1", 1, "outside a function"},
                                         Wrong{"else", 1, "closes nothing"}, Wrong{"1 = 2", 1, "can be assigned"},
                                         Wrong{"x y", 1, "end of the statement"}, Wrong{"x = 99999999999999999999", 1, "64 bits"},
                                         Wrong{"1e999", 1, "too large"}, Wrong{"1x", 1, "followed by 'x'"},
                                         Wrong{"if 1\nfunction f()\nend\nend", 2, "top level"},
                                         Wrong{"function f(a, a)\nend", 1, "stands twice"},
                                         Wrong{"function f(a = 1, b)\nend", 1, "needs a default"},
                                         Wrong{"procedure p()\n return 1\nend", 2, "returns no value"},
                                         Wrong{"for if in x\nend", 1, "word of the language"},
                                         Wrong{"f(a = 1, 2)", 1, "before keywords"}, Wrong{"{a: 1, a: 2}", 1, "stands twice"}));

TEST(Parser, NamesTheColumn) {
  Interpreter interpreter;
  try {
    interpreter.run("x = 1\ny = 2 + * 3", "test.orv");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.line, 2);
    EXPECT_EQ(e.column, 9);
  }
}

TEST(Parser, RefusesWhatIsTooDeep) {
  const auto repeated = [](const char* text, int n) {
    std::string s;
    for (int k = 0; k < n; ++k) s += text;
    return s;
  };
  for (const std::string& program :
       {repeated("(", 100000), repeated("-", 100000) + "1", repeated("not ", 100000) + "1", "x = 1" + repeated("+1", 100000),
        repeated("if 1\n", 100000), "x" + repeated("[0]", 100000), "2" + repeated("^2", 100000), repeated("[", 100000)}) {
    Interpreter interpreter;
    EXPECT_THROW(interpreter.run(program, "deep"), orv::SyntaxError) << program.substr(0, 10);
  }
}

TEST(Parser, KnowsWhenMoreLinesAreNeeded) {
  Interpreter interpreter;
  for (const char* open : {"if 1\n", "function f()\n", "x = [1,\n", "try\n x = 1\ncatch e\n", "print (\n"})
    EXPECT_TRUE(interpreter.needs_more(open)) << open;
  for (const char* closed : {"x = 1\n", "if 1\nend\n", "x = )\n", "\"abc\n", "1 +\n", ""})
    EXPECT_FALSE(interpreter.needs_more(closed)) << closed;
}

// Pieces of real programs in random order reach further than random bytes.
TEST(Parser, SurvivesGarbage) {
  static const char* const pieces[] = {"if",  "else", "end",  "while",  "for",    "in",    "x",         "function", "f",
                                       "(",   ")",    "[",    "]",      "{",      "}",     ",",         ":",        "=",
                                       "==",  "+",    "-",    "^",      "1",      ".5",    ";",         "\n",       "\"",
                                       "\\",  "#",    "mod",  "not",    "out",    "catch", "try",       ".",        "none",
                                       "1e9", "\x01", "\xff", "return", "global", "break", "procedure", "2i",       "throw"};
  std::mt19937 random(7);
  const std::string file = "garbage";
  std::deque<orv::Value> globals;
  int parsed = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string program;
    for (unsigned n = random() % 12; n > 0; --n)
      program += std::string(pieces[random() % std::size(pieces)]) + (random() % 2 ? " " : "");
    try {
      orv::parse(program, file, [&](const std::string&) { return &globals.emplace_back(); });
      ++parsed;
    } catch (const orv::SyntaxError& e) {
      EXPECT_GE(e.line, 1);
      EXPECT_GE(e.column, 1);
    }
    globals.clear();
  }
  EXPECT_GT(parsed, 500);  // otherwise the pieces would test the lexer only
}

TEST(Interpreter, KeepsItsStateBetweenInputs) {
  Interpreter interpreter;
  interpreter.run("x = 1\nfunction f() = 1", "a");
  EXPECT_THROW(interpreter.run("x = 2\nnosuch()", "b"), Error);
  EXPECT_EQ(output_of(interpreter, "print x, f()"), "2 1\n");
  interpreter.run("function f() = 2", "c");
  EXPECT_EQ(output_of(interpreter, "print f()"), "2\n");
  EXPECT_THROW(interpreter.run("exit(3)", "d"), orv::Exit);
  EXPECT_EQ(interpreter.stack_in_use(), 0);
}

TEST(Interpreter, StopsWhenInterrupted) {
  Interpreter interpreter;
  Interpreter::interrupt();
  EXPECT_THROW(interpreter.run("while true\n try\n  x = f()\n catch\n end\nend", "loop"), Error);
}

}  // namespace
