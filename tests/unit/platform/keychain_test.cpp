#include "vorlu/platform/linux/linux_keychain.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/test_platform.h"

namespace vorlu::test {
namespace {

class KeychainTest : public testing::Test {
 protected:
  Status add(const char* service, const char* value) { return keychain_.add({service, "Vorlu", value, "tag", false}); }
  std::string value(const char* service) {
    const auto read = keychain_.read(service, "Vorlu");
    return read ? read->value_or("(none)") : "(failure)";
  }

  TestPlatform mac_;
  LinuxKeychain keychain_{mac_.files, RootFolder(mac_.root())};
};

TEST_F(KeychainTest, ACorruptFileFailsReadingAndIsMovedAsideByAdding) {
  for (const char* text : {"", "{", "[]", R"({"items": [{"service": 1}]})", R"({"other": []})"}) {
    mac_.write(LinuxKeychain::path, text);
    EXPECT_EQ(value("s"), "(failure)") << text;
    EXPECT_FALSE(keychain_.remove("s", "Vorlu")) << text;
    ASSERT_TRUE(add("s", "new")) << text;
    EXPECT_EQ(value("s"), "new") << text;
    EXPECT_EQ(mac_.read(std::string(LinuxKeychain::path) + ".corrupt"), text);
  }
}

TEST_F(KeychainTest, NothingChangesAnItemThatIsThere) {
  ASSERT_TRUE(add("a", "kept"));
  EXPECT_EQ(add("a", "twice").failure().code, LinuxKeychain::duplicateItem);
  EXPECT_EQ(mac_.files.info(LinuxKeychain::path)->mode, 0600u);
  mac_.files.failWritesFrom(1);
  EXPECT_FALSE(add("b", "lost"));
  mac_.files.heal();
  EXPECT_EQ(value("a"), "kept");
  EXPECT_EQ(value("b"), "(none)");
  EXPECT_FALSE(add("b", "no \xff text")) << "only text is kept";
  EXPECT_EQ(value("a"), "kept");
}

TEST_F(KeychainTest, AgentsThatAddAtTheSameTimeLoseNothing) {
  LinuxKeychain another{mac_.files, RootFolder(mac_.root())};
  const auto addMany = [](LinuxKeychain& keychain, const std::string& account) {
    for (int i = 0; i < 40; ++i) EXPECT_TRUE(keychain.add({std::to_string(i), account, "x", "tag", false}));
  };
  std::thread other([&] { addMany(another, "other"); });
  addMany(keychain_, "own");
  other.join();
  for (int i = 0; i < 40; ++i)
    for (const char* account : {"own", "other"}) EXPECT_EQ(*keychain_.read(std::to_string(i), account), "x");
}

}  // namespace
}  // namespace vorlu::test
