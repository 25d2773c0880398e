#include "vorlu/state/encoding.h"

#include <gtest/gtest.h>

namespace vorlu {
namespace {

using namespace std::string_literals;

struct Pair {
  std::string bytes;
  std::string text;
};

TEST(Base64, ReadsWhatItWrites) {
  const Pair pairs[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"\xff\xfe\xfd"s, "//79"},
      {"\xfb\xef\xbe"s, "++++"},
      {"\0\0"s, "AAA="},
      {"\0"s, "AA=="},
  };
  for (const auto& [bytes, text] : pairs) {
    EXPECT_EQ(base64Encode(bytes), text);
    EXPECT_EQ(base64Decode(text), bytes) << text;
  }
}

TEST(Base64, RefusesWhatIsNotBase64) {
  const std::string texts[] = {
      "Zg",   "Zg=",  "Zm9v=", "====",     "=",     "A===",   "Zg==Zg==", "Zm 9",   "Zm9v\n",  "Zm9\n",
      "Zm9-", "Zm9_", "Z=9v",  "Zm9v Zm9", "Zm\\/", "Zm9\0"s, "Zm9\xc3"s, "Zm9vZg", "Zg==Zm9v"};
  for (const std::string& text : texts) EXPECT_EQ(base64Decode(text), std::nullopt) << text;
}

TEST(Hex, ReadsBothCasesAndWritesLower) {
  const Pair pairs[] = {{"", ""}, {"\0\x7f\x80\xff"s, "007f80ff"}, {"\xab\xcd\xef"s, "abcdef"}, {"09"s, "3039"}};
  for (const auto& [bytes, text] : pairs) {
    EXPECT_EQ(hexEncode(bytes), text);
    EXPECT_EQ(hexDecode(text), bytes) << text;
  }
  EXPECT_EQ(hexDecode("ABcDeF"), "\xab\xcd\xef");
}

TEST(Hex, RefusesWhatIsNotHex) {
  for (const std::string& text : {"a"s, "abc"s, "0g"s, "g0"s, "0x"s, " 0"s, "a\0"s, "\xc3\xa4"s}) {
    EXPECT_EQ(hexDecode(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vorlu
