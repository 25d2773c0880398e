#include "vorlu/platform/regular_expression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorlu::test {
namespace {

TEST(RegularExpression, FirstMatchAnywhere) {
  struct Case {
    const char* pattern;
    std::string text;
    std::optional<std::string> match;
  };
  for (const Case& c : {Case{R"(^Foo.*\.pkg$)", "Foo 1.2.pkg", "Foo 1.2.pkg"},
                        {R"(^Foo.*\.pkg$)", "dir/Foo.pkg", std::nullopt},
                        {R"([0-9]+(\.[0-9]+)*)", "v1.20.3 and 4", "1.20.3"},
                        {R"((?<=href=")[^"]*(?="))", R"(<a href="x/y.dmg">)", "x/y.dmg"},
                        {"foo", "FOO", std::nullopt},
                        {"x*", "abc", ""},
                        {R"(\p{L}+)", "42 Übergröße!", "Übergröße"},
                        {"a.c", "a\nc", std::nullopt},
                        {"^b", "a\nb", std::nullopt},
                        {"", "", ""}}) {
    const auto expression = RegularExpression::compile(c.pattern);
    ASSERT_TRUE(expression) << c.pattern;
    EXPECT_EQ(expression->firstMatch(c.text), c.match) << c.pattern;
  }
}

TEST(RegularExpression, FaultsAndRunawaysAreContained) {
  for (const char* pattern : {"(", "[a", "*", "a{2,1}", "\\"}) {
    const auto expression = RegularExpression::compile(pattern);
    ASSERT_FALSE(expression) << pattern;
    EXPECT_THAT(expression.error(), testing::StartsWith(pattern));
  }
  const auto deep = RegularExpression::compile("(?:a|b)*c");
  EXPECT_EQ(deep->firstMatch(std::string(5'000'000, 'a')), std::nullopt);
}

}  // namespace
}  // namespace vorlu::test
