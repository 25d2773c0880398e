#include "vorlu/state/encoding.h"

#include <gtest/gtest.h>

namespace vorlu {
namespace {

using namespace std::string_literals;

TEST(Base64, ReadsWhatItWrites) {
  const std::pair<std::string, std::string> pairs[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xff\xfe\xfd"s, "//79"}, {"\0"s, "AA=="}};
  for (const auto& [bytes, text] : pairs) {
    EXPECT_EQ(base64Encode(bytes), text);
    EXPECT_EQ(base64Decode(text), bytes) << text;
  }
}

TEST(Encodings, RefuseWhatTheyDidNotWrite) {
  for (const std::string& text : {"Zg"s, "Zg="s, "Zm9v="s, "===="s, "A==="s, "Zg==Zg=="s, "Zm 9"s, "Zm9v\n"s, "Zm9-"s,
                                  "Z=9v"s, "Zm\\/"s, "Zm9\0"s, "Zm9\xc3"s, "Zg==Zm9v"s})
    EXPECT_EQ(base64Decode(text), std::nullopt) << text;
  for (const std::string& text : {"a"s, "0g"s, "g0"s, "0x"s, " 0"s, "a\0"s, "\xc3\xa4"s})
    EXPECT_EQ(hexDecode(text), std::nullopt) << text;
}

}  // namespace
}  // namespace vorlu
