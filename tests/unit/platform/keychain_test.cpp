#include "vorlu/platform/linux/linux_keychain.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/test_platform.h"

namespace vorlu::test {
namespace {

class KeychainTest : public testing::Test {
 protected:
  std::string value(const std::string& service, const std::string& account = "Vorlu") {
    const auto read = keychain_.read(service, account);
    return read ? read->value_or("(none)") : "(failure)";
  }

  TestPlatform mac_;
  LinuxKeychain keychain_{mac_.files};
};

TEST_F(KeychainTest, ItemsAreKeptByServiceAndAccount) {
  EXPECT_EQ(value("s"), "(none)");
  ASSERT_TRUE(keychain_.add({"s", "Vorlu", "one \"\\ ü", "tag", false}));
  ASSERT_TRUE(keychain_.add({"s", "Other", "two", "tag", true}));
  const auto again = keychain_.add({"s", "Vorlu", "three", "tag", false});
  ASSERT_FALSE(again);
  EXPECT_EQ(again.failure().code, LinuxKeychain::duplicateItem);
  LinuxKeychain another(mac_.files);
  EXPECT_EQ(another.read("s", "Vorlu")->value(), "one \"\\ ü");
  EXPECT_EQ(mac_.files.info(LinuxKeychain::path)->mode, 0600u);
  ASSERT_TRUE(keychain_.remove("s", "Vorlu"));
  ASSERT_TRUE(keychain_.remove("s", "Vorlu")) << "removing what isn't there is no failure";
  EXPECT_EQ(value("s"), "(none)");
  EXPECT_EQ(value("s", "Other"), "two");
}

TEST_F(KeychainTest, ACorruptFileFailsReadingAndIsMovedAsideByAdding) {
  for (const char* text :
       {"", "{", "[]", "{\"items\": {}, ", R"({"items": [{"service": 1}]})", R"({"items": {}})", R"({"other": []})"}) {
    mac_.write(LinuxKeychain::path, text);
    EXPECT_EQ(value("s"), "(failure)") << text;
    EXPECT_FALSE(keychain_.remove("s", "Vorlu")) << text;
    ASSERT_TRUE(keychain_.add({"s", "Vorlu", "new", "tag", false})) << text;
    EXPECT_EQ(value("s"), "new") << text;
    EXPECT_EQ(mac_.read(std::string(LinuxKeychain::path) + ".corrupt"), text);
  }
}

TEST_F(KeychainTest, AnUnreadableFileIsLeftAlone) {
  mac_.write("/elsewhere", R"({"items": []})");
  ASSERT_EQ(::symlink("/elsewhere", (mac_.root() + LinuxKeychain::path).c_str()), 0);
  EXPECT_EQ(value("s"), "(failure)");
  EXPECT_FALSE(keychain_.add({"s", "Vorlu", "new", "tag", false}));
}

TEST_F(KeychainTest, AFullDiskKeepsTheOldItems) {
  ASSERT_TRUE(keychain_.add({"a", "Vorlu", "kept", "tag", false}));
  mac_.files.failWritesFrom(2);  // the folder is looked after first
  EXPECT_FALSE(keychain_.add({"b", "Vorlu", "lost", "tag", false}));
  mac_.files.heal();
  EXPECT_EQ(value("a"), "kept");
  EXPECT_EQ(value("b"), "(none)");
  EXPECT_FALSE(keychain_.add({"b", "Vorlu", "no \xff text", "tag", false})) << "only text is kept";
  EXPECT_EQ(value("a"), "kept");
}

}  // namespace
}  // namespace vorlu::test
