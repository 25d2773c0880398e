#include "vorlu/detection/version.h"

#include <gtest/gtest.h>

namespace vorlu {
namespace {

TEST(CompareVersions, OrdersNumbersByValueAndTheRestByCodeUnit) {
  const std::string thirty(30, '9');
  using Pairs = std::vector<std::pair<std::string, std::string>>;
  const Pairs newer = {{"1.10", "1.9"},
                       {"2.0.0", "2.0"},
                       {"1.2", ""},
                       {"1.2 (3)", "1.2"},
                       {"1.2b", "1.2B"},
                       {"1.2b10", "1.2b9"},
                       {"1.05.2", "1.5.1"},
                       {"0", ""},
                       {"0a", "00"},
                       {"1" + thirty, thirty},
                       {"1" + thirty, "0000" + thirty},
                       {"18446744073709551616", "18446744073709551615"},
                       {"1.0", "1."},
                       {"1.2", "1-2"},
                       {"é", "z"},
                       {"1.2é1", "1.2é"},
                       {"Unknown", "1.2"},
                       {"skip", "1.2"},
                       // digits of other scripts are plain characters
                       {"٣", "3"},
                       // a surrogate orders before U+FFFD, though its character number is greater
                       {"\uFFFD", "\U0001F600"},
                       {"\U0001F600", "\uD7FF"},
                       {"\U0001F601", "\U0001F600"},
                       // cut off within a character
                       {"\xe2\x80x", "\xe2\x80"}};
  for (const auto& [high, low] : newer) {
    EXPECT_EQ(compareVersions(high, low), 1) << high << " against " << low;
    EXPECT_EQ(compareVersions(low, high), -1) << low << " against " << high;
  }
  Pairs equal = {{"2.0", "2.0"}, {"", ""}, {"1.05", "1.5"}, {"1.000", "1.0"}, {"\xff", "\uFFFD"}};
  equal.emplace_back("\xf4\x90\x80\x80", "\xff\xff\xff\xff"), equal.emplace_back("\xe0\x80\xaf", "\xff\xff\xff");
  for (const auto& [a, b] : equal) EXPECT_EQ(compareVersions(a, b), 0) << a << " against " << b;
}

}  // namespace
}  // namespace vorlu
