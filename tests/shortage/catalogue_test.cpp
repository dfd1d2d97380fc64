// The catalogue reader without memory. It opens its file once a process, so each case runs in a process of its own.
#include <gtest/gtest.h>

#include "tests/catalogue/child.hpp"
#include "tests/support/failing_allocation.hpp"
#include "zent.h"

namespace {

struct Shortage {
  const char* what;
  long allocation;  // which one fails: path, numbers, offsets, record
  const char* text;
  const char* name;
  const char* errors;
};

class CatalogueShortage : public testing::TestWithParam<Shortage> {};

TEST_P(CatalogueShortage, NumbersStandIn) {
  const child::Outcome outcome = child::run([] {
    failing::arm(GetParam().allocation);
    const std::string text = zent_find_message(200);
    if (!failing::struck()) return std::string("nothing failed");
    failing::arm(0);
    return text + "|" + zent_find_name(200);
  });
  EXPECT_EQ(outcome.result, std::string(GetParam().text) + "|" + GetParam().name);
  EXPECT_EQ(outcome.errors, GetParam().errors);
}

INSTANTIATE_TEST_SUITE_P(
    Reader, CatalogueShortage,
    testing::Values(Shortage{"Numbers", 2, "Error code 200.", "200", "Error in reading zenterr.bin\nOut-of-space.\n"},
                    Shortage{"Offsets", 3, "Error code 200.", "200", "Error in reading zenterr.bin\nOut-of-space.\n"},
                    Shortage{"Record", 4, "Error in reading zenterr.bin for error message 200.\nOut-of-memory.\n", "200", ""}),
    [](const auto& info) { return std::string(info.param.what); });

TEST(CataloguePath, IsUsedWithoutACopy) {
  const child::Outcome outcome = child::run([] {
    failing::arm(1);
    return std::string(zent_find_name(200));
  });
  EXPECT_EQ(outcome.result, "MATH_OUT_OF_MEMORY") << outcome.errors;
}

}  // namespace
