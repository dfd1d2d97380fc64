#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "tests/catalogue/child.hpp"
#include "tools/catalogue_format.hpp"

namespace {

using namespace zent_catalogue;

std::vector<Record> read(const std::string& text, Problems& problems) {
  std::istringstream in(text);
  return read_records(in, "in.txt", problems);
}

TEST(Format, LinesOfATextAreJoinedWithOneBlank) {
  Problems problems;
  const auto records =
      read("# a comment\n\n7 SEVEN\n  One  %(i1),\n# between\n    two.\n\n9 NINE\r\n  50% of %(d1%6.2f).%/End\r\n", problems);
  EXPECT_TRUE(problems.empty()) << problems[0];
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].text, "One  %(i1), two.");
  EXPECT_EQ(records[0].line, 3);
  EXPECT_EQ(records[1].name, "NINE");
  EXPECT_EQ(records[1].text, "50% of %(d1%6.2f).%/End");
}

struct Refusal {
  const char* text;
  const char* complaint;
};
class Refusals : public testing::TestWithParam<Refusal> {};

TEST_P(Refusals, NameFileAndLine) {
  Problems problems;
  EXPECT_LT(read(GetParam().text, problems).size(), 2u);
  ASSERT_EQ(problems.size(), 1u) << GetParam().text;
  EXPECT_EQ(problems[0].find(GetParam().complaint), 0u) << problems[0];
}
INSTANTIATE_TEST_SUITE_P(Format, Refusals,
                         testing::Values(Refusal{"1 A\n\n2 B\n  x\n", "in.txt:1: number 1 has no text"},
                                         Refusal{"1 A\n   \n", "in.txt:1: number 1 has no text"},
                                         Refusal{"5 A\n  x\n\n4 B\n  y\n", "in.txt:4: number 4 stands below"},
                                         Refusal{"5 A\n  x\n\n5 B\n  y\n", "in.txt:4: number 5 stands twice"},
                                         Refusal{"5 A\n  x\n\n100005 B\n  y\n", "in.txt:4: number 100005 stands twice"},
                                         Refusal{"65536 A\n  x\n", "in.txt:1: number 65536 modulo 100000 is above 65535"},
                                         Refusal{"1 ABCDEFGHIJKLMNOPQRSTUVWXYZ_23456\n  x\n", "in.txt:1: the name"},
                                         Refusal{"-1 A\n  x\n", "in.txt:1: a record begins with its number"},
                                         Refusal{"A 1\n  x\n", "in.txt:1: a record begins with its number"},
                                         Refusal{"1\n  x\n", "in.txt:1: number 1 has no name"},
                                         Refusal{"1 A text\n  x\n", "in.txt:1: \"text\" behind the name"},
                                         Refusal{"  x\n", "in.txt:1: text without"},
                                         Refusal{"1 A\n  x\ty\n", "in.txt:1: number 1 has a control character"},
                                         Refusal{"1 A\n  %(i1 x\n", "in.txt:1: the key \"%(i1 x\" has no closing"},
                                         Refusal{"1 A\n  %(q1)\n", "in.txt:1: the key \"%(q1)\" has a letter"},
                                         Refusal{"1 A\n  %(i)\n", "in.txt:1: the key \"%(i)\" has no digit"},
                                         Refusal{"1 A\n  %(i0)\n", "in.txt:1: the key \"%(i0)\" has no digit"},
                                         Refusal{"1 A\n  %(i12)\n", "in.txt:1: the key \"%(i12)\" has a format"},
                                         Refusal{"1 A\n  %(i1%s)\n", "in.txt:1: the key \"%(i1%s)\" has a format"},
                                         Refusal{"1 A\n  %(l1%d)\n", "in.txt:1: the key \"%(l1%d)\" has a format"},
                                         Refusal{"1 A\n  %(d1%n)\n", "in.txt:1: the key \"%(d1%n)\" has a format"},
                                         Refusal{"1 A\n  %(i1%*d)\n", "in.txt:1: the key \"%(i1%*d)\" has a format"},
                                         Refusal{"1 A\n  %(c1%e)\n", "in.txt:1: the key \"%(c1%e)\" has a format"},
                                         Refusal{"1 A\n  %(d1%e%e)\n", "in.txt:1: the key \"%(d1%e%e)\" has a format"}));

TEST(Format, KeysOfOneKindCountAsOne) {
  EXPECT_EQ(keys_of("%(i1) %(I2) %(d1%g) %(R1) %(z3) %(s4) 100% (x) %%(l5)"),
            (std::set<std::string>{"i1", "i2", "r1", "c3", "l4", "l5"}));
}

TEST(Format, TablesAreHeldAgainstTheRecords) {
  Problems problems;
  const std::vector<Record> records = {{101, "MATH_WRONG_NUM_ARGS", "x", 1}, {102, "WRONG", "x", 4}, {106, "NEW", "x", 7}};
  check_complete(records, math_table(), "f", problems);
  ASSERT_EQ(problems.size(), 2u + 976u);
  EXPECT_EQ(problems[0], "f:4: number 102 is MATH_MAJOR_VIOLATION, not WRONG");
  EXPECT_EQ(problems[1], "f:7: number 106 is not an error of this half");
  EXPECT_EQ(problems[2], "f: number 103 MATH_UNKNOWN_OPTION is missing");
  EXPECT_EQ(stat_table().size(), 1146u);  // the 1144 of the table and the two of the Faure sequence
}

TEST(Format, WhatDoesNotFitSixteenBitsIsRefused) {
  Problems problems;
  EXPECT_TRUE(encode({{1, "A", std::string(70000, 'x'), 1}}, {}, "f", problems).empty());
  EXPECT_EQ(problems.size(), 1u);
  std::vector<Record> many;
  for (long i = 0; i < 600; ++i) many.push_back({i, "A", std::string(1000, 'x'), i});
  EXPECT_TRUE(encode(many, {}, "f", problems).empty()) << "600000 bytes are beyond 65535 units of 8";
  EXPECT_EQ(problems.size(), 2u);
  EXPECT_FALSE(encode(many, {4, false}, "f", problems).empty());
}

TEST(Format, ProgramTellsAndWritesNothing) {
  const child::Folder folder;
  std::ofstream(folder.path("in.txt")) << "2 B\n  fine\n\n1 A\n  fine\n";
  const std::string command = std::string(ZENT_BUILD_DIR) + "/tools/write_catalogue " + folder.path("in.txt") + " " +
                              folder.path("out.bin") + " 2>" + folder.path("err");
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  EXPECT_EQ(child::contents(folder.path("err")).find(folder.path("in.txt") + ":4: number 1 stands below"), 0u);
  EXPECT_NE(access(folder.path("out.bin").c_str(), F_OK), 0);
}

}  // namespace
