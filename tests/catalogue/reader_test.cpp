#include <gtest/gtest.h>

#include <cstring>

#include "tests/catalogue/child.hpp"
#include "tools/catalogue_format.hpp"
#include "zent.h"
#include "zents.h"

namespace {

using child::Folder;
using child::Outcome;
using zent_catalogue::Encoding;
using zent_catalogue::Record;
using Bytes = std::vector<unsigned char>;

const std::vector<Record> small = {{0, "NOUGHT", "The number nought.", 0},
                                   {103, "MATH_UNKNOWN_OPTION", "%(i1) at %(i2) is no option.", 0},
                                   {200, "MATH_OUT_OF_MEMORY", "Out of it.", 0},
                                   {65535, "A_NAME_OF_THIRTY_ONE_CHARACTERS", "X", 0}};

Bytes encoded(Encoding encoding = {}) {
  zent_catalogue::Problems problems;
  Bytes bytes = zent_catalogue::encode(small, encoding, "small", problems);
  EXPECT_TRUE(problems.empty());
  return bytes;
}

std::string look_up(const std::vector<long>& numbers) {
  std::string all;
  for (const long number : numbers) {
    all += std::string(zent_find_message(number)) + "|";
    all += std::string(zent_find_name(number)) + "\n";
  }
  return all;
}

Outcome look_up_in(const std::string& path, const std::vector<long>& numbers) {
  return child::run([&] {
    setenv("ZENTERRPATH", path.c_str(), 1);
    return look_up(numbers);
  });
}

Outcome look_up_bytes(const Bytes& bytes, const std::vector<long>& numbers) {
  const Folder folder;
  child::write_file(folder.path("zenterr.bin"), bytes);
  return look_up_in(folder.path(), numbers);
}

class Orders : public testing::TestWithParam<Encoding> {};

TEST_P(Orders, EveryRecordReadsBack) {
  const Outcome outcome = look_up_bytes(encoded(GetParam()), {65535, 200, 103, 0, 100200, 7200065535});
  EXPECT_EQ(outcome.result,
            "X|A_NAME_OF_THIRTY_ONE_CHARACTERS\nOut of it.|MATH_OUT_OF_MEMORY\n%(i1) at %(i2) is no option.|MATH_UNKNOWN_OPTION\n"
            "The number nought.|NOUGHT\nOut of it.|MATH_OUT_OF_MEMORY\nX|A_NAME_OF_THIRTY_ONE_CHARACTERS\n");
  EXPECT_EQ(outcome.errors, "");
}
INSTANTIATE_TEST_SUITE_P(Reader, Orders,
                         testing::Values(Encoding{0, false}, Encoding{0, true}, Encoding{1, false}, Encoding{3, false},
                                         Encoding{3, true}, Encoding{5, true}, Encoding{12, false}));

TEST(Reader, NumbersWithoutARecordShowAsTheyCameAndHaveNoName) {
  EXPECT_EQ(
      look_up_bytes(encoded(), {201, 100201, 99999, -1, -100000, -99897}).result,
      "Error code 201.|\nError code 100201.|\nError code 99999.|\nError code -1.|\nError code -100000.|\nError code -99897.|\n");
}

// Laid out by hand: without a shift offsets count from byte 4n + 15, the last one of the indexes.
TEST(Reader, BaseWithoutAShiftIsOneByteBeforeTheEndOfTheIndexes) {
  const Bytes bytes = {0xF8, 0x72, 0, 0, 1, 0, 0, 0, 2, 0, 1, 0, 0, 0, 7, 0, 1, 0, 6, 0, 'h', 'i', 0, 'N', 0, 0};
  EXPECT_EQ(look_up_bytes(bytes, {7}).result, "hi|N\n");
}

// One record and s = 4, most significant byte first: the indexes end at byte 20, so records count from byte 32.
TEST(Reader, BaseWithAShiftIsTheNextMultipleOfTheUnit) {
  Bytes bytes = {0x72, 0xF8, 0, 0, 0, 1, 0, 0, 0, 40, 0, 1, 0, 4, 0, 7, 0, 1, 0, 2};
  bytes.resize(48);
  bytes.insert(bytes.end(), {'h', 'i', 0, 'N', 0});
  bytes.resize(80);
  EXPECT_EQ(look_up_bytes(bytes, {7}).result, "hi|N\n");
}

struct Damage {
  const char* what;
  long bytes;  // what is left of the file
  const char* reason;
  bool foreign = false;
};

class Damaged : public testing::TestWithParam<Damage> {};

TEST_P(Damaged, NumbersStandInForTextsAndOneLineTells) {
  Bytes bytes = encoded();
  bytes.resize(static_cast<std::size_t>(GetParam().bytes));
  if (GetParam().foreign) bytes[1] = 'x';
  const Outcome outcome = look_up_bytes(bytes, {200, 103, 200});
  EXPECT_EQ(outcome.result, "Error code 200.|200\nError code 103.|103\nError code 200.|200\n");
  EXPECT_EQ(outcome.errors, std::string("Error in reading zenterr.bin\n") + GetParam().reason + ".\n");
}
INSTANTIATE_TEST_SUITE_P(Reader, Damaged,
                         testing::Values(Damage{"empty", 0, ""}, Damage{"half a header", 13, ""}, Damage{"header only", 14, ""},
                                         Damage{"half the numbers", 17, ""}, Damage{"all but an offset", 31, ""},
                                         Damage{"another file", 100, "File is not in zenterr.bin format", true}),
                         [](const auto& info) {
                           return std::to_string(info.param.bytes) + (info.param.foreign ? "foreign" : "");
                         });

TEST(Reader, MissingFileIsToldOnce) {
  const Outcome outcome = look_up_in("/nonexistent/", {200, 200, 103});
  EXPECT_EQ(outcome.result, "Error code 200.|200\nError code 200.|200\nError code 103.|103\n");
  EXPECT_EQ(outcome.errors, "Error in reading zenterr.bin\nFile not found.\n");
}

TEST(Reader, StatisticsHalfHasItsOwnFileVariableAndState) {
  const Folder folder;
  child::write_file(folder.path("zents_e.bin"), encoded());
  const Outcome good = child::run([&] {
    setenv("ZENTERRPATH", "/nonexistent/", 1);
    setenv("ZENTSERRPATH", folder.path().c_str(), 1);
    return std::string(zents_find_message(200)) + zents_find_name(200) + zent_find_message(200);
  });
  EXPECT_EQ(good.result, "Out of it.MATH_OUT_OF_MEMORYError code 200.");
  EXPECT_EQ(good.errors, "Error in reading zenterr.bin\nFile not found.\n");
  child::write_file(folder.path("zents_e.bin"), Bytes(60, 'x'));
  const Outcome bad = child::run([&] {
    setenv("ZENTSERRPATH", folder.path().c_str(), 1);
    return std::string(zents_find_message(200));
  });
  EXPECT_EQ(bad.errors, "Error in reading zents_e.bin\nFile is not in zenterr.bin format.\n");
}

TEST(Reader, LastRecordCutOffAtItsEndCannotBeRead) {
  Bytes bytes = encoded();
  bytes.resize(bytes.size() - 8);
  EXPECT_EQ(look_up_bytes(bytes, {65535, 200, 65535}).result, "|\nOut of it.|MATH_OUT_OF_MEMORY\n|\n");
}

TEST(Reader, RecordIsKeptUntilAnotherIsRead) {
  const Folder folder;
  child::write_file(folder.path("zenterr.bin"), encoded());
  const Outcome outcome = child::run([&] {
    setenv("ZENTERRPATH", folder.path().c_str(), 1);
    std::string all = look_up({200});
    if (truncate(folder.path("zenterr.bin").c_str(), 0) != 0) return std::string("truncate failed");
    all += look_up({200, 201, 200});  // no record is read for 201, so the one of 200 stays
    all += look_up({103, 200});       // the failed read spoils the buffer; the last fallback text stands
    return all;
  });
  EXPECT_EQ(outcome.result,
            "Out of it.|MATH_OUT_OF_MEMORY\nOut of it.|MATH_OUT_OF_MEMORY\nError code 201.|\nOut of it.|MATH_OUT_OF_MEMORY\n"
            "Error code 201.|\nError code 201.|\n");
}

// Whatever stands in the file, lookups end in terminated strings and names in 31 characters.
std::string survey() {
  for (const long number : {0L, 103L, 65535L, 200L, 7L, 103L, -1L}) {
    if (std::strlen(zent_find_message(number)) > 200000) return "long text";
    if (std::strlen(zent_find_name(number)) > 31) return "long name";
  }
  return "fine";
}

void expect_survival(const Bytes& bytes, const std::string& what) {
  const Folder folder;
  child::write_file(folder.path("zenterr.bin"), bytes);
  const Outcome outcome = child::run([&] {
    setenv("ZENTERRPATH", folder.path().c_str(), 1);
    return survey();
  });
  EXPECT_TRUE(outcome.lived) << what << outcome.errors;
  EXPECT_EQ(outcome.result, "fine") << what;
}

TEST(Reader, EveryByteFlippedIsSurvived) {
  const Bytes good = encoded();
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      Bytes bytes = good;
      bytes[at] = static_cast<unsigned char>(bytes[at] ^ flip);
      expect_survival(bytes, "byte " + std::to_string(at) + " with " + std::to_string(flip));
    }
  }
}

TEST(Reader, EveryTruncationIsSurvived) {
  const Bytes good = encoded({3, true});
  for (std::size_t size = 0; size < good.size(); ++size)
    expect_survival(Bytes(good.begin(), good.begin() + static_cast<long>(size)), "cut to " + std::to_string(size));
}

TEST(Reader, AbsurdShiftsAndCountsAreSurvived) {
  for (const int shift : {15, 16, 31, 32, 33, 47, 48, 62, 63, 64, 65, 255, 32768, 65535}) {
    Bytes bytes = encoded();
    bytes[12] = static_cast<unsigned char>(shift & 255);
    bytes[13] = static_cast<unsigned char>(shift >> 8);
    expect_survival(bytes, "shift " + std::to_string(shift));
  }
  Bytes bytes = encoded();
  bytes[4] = bytes[5] = 0;
  expect_survival(bytes, "no records");
  bytes[4] = bytes[5] = 0xFF;
  expect_survival(bytes, "65535 records in a short file");
  bytes.resize(600000, 0xFF);
  expect_survival(bytes, "65535 records");
}

class Paths : public testing::Test {
 protected:
  Paths() {
    child::write_file(there.path("zenterr.bin"), encoded());
    child::write_file(there.path("pre-zenterr.bin"), encoded());
  }
  // With the working folder and the variable HERE set to the folder with a catalogue.
  bool finds(const std::string& path, const std::string& working = "/") {
    const Outcome outcome = child::run([&] {
      setenv("ZENTERRPATH", path.c_str(), 1);
      setenv("HERE", there.path().c_str(), 1);
      setenv("BARE", there.path().substr(0, there.path().size() - 1).c_str(), 1);
      setenv("BLANK", "", 1);
      unsetenv("ABSENT");
      if (chdir(working.c_str()) != 0) return std::string("chdir failed");
      return std::string(zent_find_name(200));
    });
    EXPECT_TRUE(outcome.lived);
    return outcome.result == "MATH_OUT_OF_MEMORY";
  }
  Folder there;
};

TEST_F(Paths, EntriesAreTriedFromTheLeftAndTakenLiterally) {
  const std::string good = there.path(), bare = good.substr(0, good.size() - 1);
  EXPECT_TRUE(finds("/nonexistent/:" + good));
  EXPECT_TRUE(finds(good + ":/nonexistent/"));
  EXPECT_FALSE(finds(bare)) << "no separator is added";
  EXPECT_TRUE(finds(good + "pre-")) << "an entry need not name a folder";
  EXPECT_TRUE(finds(std::string(9000, 'x') + ":" + good)) << "an endless entry is passed over";
  EXPECT_TRUE(finds("$" + std::string(9000, 'x') + "/:" + good));
}

TEST_F(Paths, EmptyEntriesMeanTheBareFileName) {
  for (const char* path : {"", ":", "/nonexistent/:", ":/nonexistent/", "$BLANK:/nonexistent/"}) {
    EXPECT_TRUE(finds(path, there.path())) << path;
    EXPECT_FALSE(finds(path, "/")) << path;
  }
}

TEST_F(Paths, VariablesAreReplacedOrTheirEntriesSkipped) {
  EXPECT_TRUE(finds("$HERE:"));
  EXPECT_FALSE(finds("$HERE"));  // the name runs to the end of the path
  EXPECT_TRUE(finds("$BARE/"));
  EXPECT_TRUE(finds("/nonexistent/:$BARE/:x"));
  EXPECT_FALSE(finds("$BARE"));
  const std::string good = there.path();
  for (const char* skipped : {"$ABSENT", "$ABSENT/", "$", "$/"}) {
    EXPECT_TRUE(finds(std::string(skipped) + ":" + good)) << skipped;
    EXPECT_FALSE(finds(std::string("/nonexistent/:") + skipped, good)) << skipped;
  }
}

TEST_F(Paths, AFileThatCannotBeReadHidesThoseBehindIt) {
  const Folder first;
  ASSERT_EQ(std::system(("mkdir " + first.path("zenterr.bin")).c_str()), 0);
  EXPECT_FALSE(finds(first.path() + ":" + there.path()));
  const Folder second;
  ASSERT_EQ(std::system(("mkfifo " + second.path("zenterr.bin")).c_str()), 0);
  EXPECT_FALSE(finds(second.path() + ":" + there.path())) << "nor may a pipe be waited for";
}

TEST_F(Paths, HomeIsAmongTheUsualPlacesAndAnOptionGoesBeforeTheEnvironment) {
  const Outcome home = child::run([&] {
    unsetenv("ZENTERRPATH");
    setenv("HOME", there.path().substr(0, there.path().size() - 1).c_str(), 1);
    return chdir("/") == 0 ? std::string(zent_find_name(200)) : "";
  });
  EXPECT_EQ(home.result, "MATH_OUT_OF_MEMORY");
  const Outcome option = child::run([&] {
    setenv("ZENTERRPATH", "/nonexistent/", 1);
    zent_error_options(ZENT_ERROR_MSG_PATH, there.path().c_str(), ZENT_ERROR_MSG_NAME, "another.bin", 0);
    return std::string(zent_find_name(200));
  });
  EXPECT_EQ(option.result, "MATH_OUT_OF_MEMORY") << option.errors;
}

}  // namespace
