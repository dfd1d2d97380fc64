// The shell as a process: what it prints, and how it ends.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

struct Ended {
  int status;  // of exit, or 1000 + the signal
  std::string text;
};

Ended run(const std::string& arguments) {
  const std::string command = "exec " ZENT_BUILD_DIR "/host/orv " + arguments + " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
  const int status = pclose(pipe);
  return {WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status), text};
}

struct Run {
  const char* arguments;
  int status;
  const char* part;
};
class Shell : public testing::TestWithParam<Run> {};

TEST_P(Shell, EndsAsTold) {
  const Ended ended = run(GetParam().arguments);
  EXPECT_EQ(ended.status, GetParam().status) << ended.text;
  EXPECT_NE(ended.text.find(GetParam().part), std::string::npos) << ended.text;
}

INSTANTIATE_TEST_SUITE_P(, Shell,
                         testing::Values(Run{"--version", 0, "orv "}, Run{"--help", 0, "--no-module"},
                                         Run{"--nonsense", 2, "--help"}, Run{"nosuchfile.orv", 1, "nosuchfile.orv"},
                                         Run{"--no-module -e '1 + 2'", 0, "3\n"}, Run{"--no-module -e 'exit(7)'", 7, ""},
                                         Run{"--no-module -e 'x ='", 1, "-e:1: column 4: expected a value"},
                                         Run{"--module /nosuch.so -e 1", 1, "/nosuch.so"}, Run{"-e 'fault(\"ill\")'", 1004, ""},
                                         Run{"-e 'help'", 0, "constant"}, Run{"-e 'help \"datetodays\"'", 0, "Gregorian"},
                                         Run{"-e 'MATHSTAT_159(1)'", 1, "-e:1: "}));

// Every script asserts what it is about, and "fails at N" in its first line tells where it has to fail.
class Script : public testing::TestWithParam<std::string> {};

TEST_P(Script, HoldsItsAssertions) {
  const std::string path = ZENT_SOURCE_DIR "/tests/host/scripts/" + GetParam() + ".orv";
  const Ended ended = run(path + " " ZENT_BUILD_DIR "/examples/orv_probe.so");
  std::ifstream in(path);
  std::string first;
  std::getline(in, first);
  const std::string mark = "// fails at ";
  if (first.rfind(mark, 0) == 0) {
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.text.find(path + ":" + first.substr(mark.size()) + ": "), std::string::npos) << ended.text;
  } else {
    EXPECT_EQ(ended.status, 0) << ended.text;
    EXPECT_EQ(ended.text.substr(ended.text.size() < 5 ? 0 : ended.text.size() - 5), "done\n") << ended.text;
  }
}

std::vector<std::string> scripts() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(ZENT_SOURCE_DIR "/tests/host/scripts")) {
    if (entry.path().extension() == ".orv") names.push_back(entry.path().stem());
  }
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(, Script, testing::ValuesIn(scripts()));

TEST(Tour, Runs) {
  const Ended ended = run(ZENT_SOURCE_DIR "/examples/tour.orv");
  EXPECT_EQ(ended.status, 0) << ended.text;
  for (const char* part : {"299792458", "15.10.1582", "MATH_MASS_TO_FORCE", "MATH_BAD_CONST_NAME", "on it goes: 3.14159265"})
    EXPECT_NE(ended.text.find(part), std::string::npos) << part << "\n" << ended.text;
}

TEST(RoutinePath, IsSearchedInOrderAndErrorsNameTheFile) {
  const auto folder = std::filesystem::temp_directory_path() / "orv_shell_test_path";
  std::filesystem::create_directories(folder);
  const auto write = [&](const char* name, const char* text) { std::ofstream(folder / name) << text; };
  write("mine.orv", "//! mine: a routine of my own\nfunction mine(x) = helper(x) + 1\nfunction helper(x) = 2 * x\n");
  write("loose.orv", "x = 1\n");
  write("other.orv", "function another() = 1\n");
  write("broken.orv", "function broken(\n");
  setenv("ORVPATH", folder.c_str(), 1);
  EXPECT_EQ(run("-e 'print mine(2), constant(\"pi\") > 3'").text, "5 1\n");
  EXPECT_NE(run("-e 'help'").text.find("a routine of my own"), std::string::npos);
  EXPECT_NE(run("-e 'helper(2)'").text.find("no function or procedure 'helper'"), std::string::npos);
  EXPECT_NE(run("-e 'loose()'").text.find("loose.orv:1: "), std::string::npos);
  EXPECT_NE(run("-e 'other()'").text.find("defines no function"), std::string::npos);
  EXPECT_NE(run("-e 'broken()'").text.find("broken.orv:1: column 16"), std::string::npos);
  unsetenv("ORVPATH");
  std::filesystem::remove_all(folder);
}

}  // namespace
