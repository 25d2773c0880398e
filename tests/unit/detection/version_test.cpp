#include "vorlu/detection/version.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace vorlu {
namespace {

TEST(CompareVersions, OrdersNumbersByValueAndTheRestByCodeUnit) {
  const std::string thirty(30, '9');
  const struct {
    std::string latest, installed;
    int order;
  } cases[] = {
      {"1.10", "1.9", 1},
      {"2.0", "2.0", 0},
      {"2.0.0", "2.0", 1},
      {"1.2", "Unknown", -1},
      {"1.2", "skip", -1},
      {"1.2", "", 1},
      {"", "", 0},
      {"1.2 (3)", "1.2", 1},
      {"1.2b", "1.2B", 1},
      {"1.2b9", "1.2b10", -1},
      {"1.05", "1.5", 0},
      {"1.05.2", "1.5.1", 1},
      {"1.000", "1.0", 0},
      {"0", "", 1},
      {"00", "0a", -1},
      {"1" + thirty, thirty, 1},
      {"0000" + thirty, "1" + thirty, -1},
      {"18446744073709551616", "18446744073709551615", 1},
      {"1.", "1.0", -1},
      {"1-2", "1.2", -1},
      {"é", "z", 1},
      {"1.2é", "1.2é1", -1},
      {"٣", "3", 1},                 // digits of other scripts are plain characters
      {"\U0001F600", "\uFFFD", -1},  // a surrogate orders before U+FFFD, though its character number is greater
      {"\U0001F600", "\uD7FF", 1},
      {"\U0001F601", "\U0001F600", 1},
      {"\xff", "\uFFFD", 0},          // no UTF-8
      {"\xe2\x80", "\xe2\x80x", -1},  // cut off within a character
  };
  for (const auto& c : cases) {
    EXPECT_EQ(compareVersions(c.latest, c.installed), c.order) << c.latest << " against " << c.installed;
    EXPECT_EQ(compareVersions(c.installed, c.latest), -c.order) << c.installed << " against " << c.latest;
  }
}

TEST(CompareVersions, IsAnOrder) {
  std::mt19937 random(20260302);
  const std::vector<std::string> pieces = {"0", "00", "1", "01", "9",          "10",  ".",
                                           "-", "a",  "B", "é",  "\U0001F600", "\xff"};
  std::vector<std::string> texts;
  for (int index = 0; index < 120; ++index) {
    std::string text;
    for (auto left = random() % 6; left > 0; --left) text += pieces[random() % pieces.size()];
    texts.push_back(text);
  }
  for (const auto& a : texts) {
    EXPECT_EQ(compareVersions(a, a), 0) << a;
    for (const auto& b : texts) {
      const int order = compareVersions(a, b);
      ASSERT_EQ(order, -compareVersions(b, a)) << a << " and " << b;
      for (const auto& c : texts) {
        if (order <= 0 && compareVersions(b, c) <= 0) {
          ASSERT_LE(compareVersions(a, c), 0) << a << ", " << b << ", " << c;
        }
      }
    }
  }
}

}  // namespace
}  // namespace vorlu
