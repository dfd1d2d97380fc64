// The texts that are delivered with the library.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/catalogue/child.hpp"
#include "tools/catalogue_format.hpp"
#include "zent.h"
#include "zents.h"

namespace {

using namespace zent_catalogue;
using Slots = std::map<long, std::set<std::string>>;

// Values that every place that raises a number stores before it does; numbers that nothing raises have no row.
Slots raised_slots(const std::string& half) {
  std::ifstream in(std::string(ZENT_SOURCE_DIR) + "/tests/data/raised_slots.tsv");
  Slots all;
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string of, number, list, slot;
    std::getline(fields, of, '\t');
    std::getline(fields, number, '\t');
    std::getline(fields, list, '\t');
    if (of != half) continue;
    std::set<std::string>& slots = all[std::stol(number)];
    std::istringstream names(list);
    while (std::getline(names, slot, ',')) slots.insert(slot);
  }
  return all;
}

struct Half {
  const char* name;
  const char* file;
  const Table& (*table)();
  const char* (*find_message)(long);
  const char* (*find_name)(long);
};

class Texts : public testing::TestWithParam<Half> {
 protected:
  void SetUp() override {
    const std::string file = std::string(ZENT_SOURCE_DIR) + "/catalogue/" + GetParam().file + ".txt";
    std::ifstream in(file);
    records = read_records(in, file, problems);
    check_complete(records, GetParam().table(), file, problems);
  }
  std::vector<Record> records;
  Problems problems;
};

TEST_P(Texts, EveryNumberHasARecordWithItsName) {
  for (const std::string& problem : problems) ADD_FAILURE() << problem;
  EXPECT_EQ(records.size(), GetParam().table().size());
}

TEST_P(Texts, EveryKeyIsFilledByWhatRaisesTheError) {
  const Slots raised = raised_slots(GetParam().name);
  ASSERT_GT(raised.size(), 300u);
  for (const Record& record : records) {
    const auto row = raised.find(record.number);
    for (const std::string& key : keys_of(record.text))
      EXPECT_TRUE(row != raised.end() && row->second.count(key) == 1)
          << GetParam().file << ".txt:" << record.line << ": " << record.number << " " << record.name << " shows " << key;
  }
}

TEST_P(Texts, TheBuiltFileReadsBackWhole) {
  const child::Outcome outcome = child::run([this] {
    for (const char* variable : {"ZENTERRPATH", "ZENTSERRPATH"}) setenv(variable, ZENT_BUILD_DIR "/", 1);
    for (const Record& record : records) {
      if (GetParam().find_message(record.number) != record.text) return "text of " + record.name;
      if (GetParam().find_name(record.number) != record.name) return "name of " + record.name;
    }
    return std::string("all");
  });
  EXPECT_EQ(outcome.result, "all") << outcome.errors;
}

INSTANTIATE_TEST_SUITE_P(Halves, Texts,
                         testing::Values(Half{"math", "zenterr", math_table, zent_find_message, zent_find_name},
                                         Half{"stat", "zents_e", stat_table, zents_find_message, zents_find_name}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
