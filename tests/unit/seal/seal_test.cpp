#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "seal/generated_source.h"
#include "seal/keys.h"
#include "seal/sealed_texts.h"
#include "seal/site_file.h"
#include "seal/small_file.h"

namespace vorlu::seal {
namespace {

namespace fs = std::filesystem;

struct SealTest : testing::Test {
  SealTest() {
    std::string name = (fs::temp_directory_path() / "seal.XXXXXX").string();
    folder = ::mkdtemp(name.data());
  }
  ~SealTest() override { fs::remove_all(folder); }

  std::string in(const char* name) const { return folder + "/" + name; }
  void write(const char* name, const std::string& content) const {
    const Status status = replaceFile(in(name), content, 0600);
    ASSERT_TRUE(status) << status.error();
  }
  /// The build's keys, copied so that a test may damage them.
  void copyKeys() const {
    for (const auto& entry : fs::directory_iterator(VORLU_SITE_KEYS)) {
      fs::copy_file(entry.path(), fs::path(folder) / entry.path().filename());
    }
  }

  std::string folder;
};

TEST_F(SealTest, MakersThatRunAtOnceEndWithTheSameKeys) {
  const std::string keyFolder = in("new/keys");
  std::vector<std::string> made(3);
  std::vector<std::thread> makers;
  makers.reserve(made.size());
  for (std::string& key : made) {
    makers.emplace_back([&key, &keyFolder] {
      const auto keys = openOrMakeKeys(keyFolder);
      if (keys) key = keys->agent.privateDer() + keys->signingSecret + keys->decoys[0];
    });
  }
  for (std::thread& maker : makers) maker.join();
  EXPECT_FALSE(made[0].empty());
  EXPECT_EQ(made[1], made[0]);
  EXPECT_EQ(made[2], made[0]);

  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(keyFolder)) {
    struct stat info {};
    ASSERT_EQ(::stat(entry.path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U) << entry.path();
    ++count;
  }
  EXPECT_EQ(count, 4U);
}

TEST_F(SealTest, NamesTheDamagedKeyFile) {
  struct Damage {
    const char* file;
    std::string content;
  };
  const Damage cases[] = {{privateKeyFile, "junk"},
                          {publicKeyFile, "junk"},
                          {publicKeyFile, RsaKey::generate(2048).publicPem()},
                          {signingSecretFile, "\n"},
                          {decoysFile, "short\n"}};
  for (const Damage& damage : cases) {
    for (const auto& entry : fs::directory_iterator(folder)) fs::remove(entry.path());
    copyKeys();
    write(damage.file, damage.content);
    const auto keys = openOrMakeKeys(folder);
    ASSERT_FALSE(keys) << damage.file;
    EXPECT_NE(keys.error().find(in(damage.file)), std::string::npos) << keys.error();
  }
}

TEST_F(SealTest, ServerNeedsNoPrivateKey) {
  copyKeys();
  fs::remove(in(privateKeyFile));
  const auto keys = readServerKeys(folder);
  ASSERT_TRUE(keys) << keys.error();
  fs::remove(in(signingSecretFile));
  EXPECT_FALSE(readServerKeys(folder));
}

TEST_F(SealTest, SaysWhatIsWrongWithASiteFile) {
  struct Case {
    std::string content;
    std::string told;
  };
  const Case cases[] = {{"{", "site.json"},
                        {"[]", "one JSON object"},
                        {"{}", "the key \"connectivityURL\" is missing"},
                        {R"({"connectivityURL": "", "timestampURL": 3})", "\"timestampURL\" must be a text"}};
  for (const Case& one : cases) {
    write("site.json", one.content);
    const auto site = readSiteFile(in("site.json"));
    ASSERT_FALSE(site) << one.content;
    EXPECT_NE(site.error().find(one.told), std::string::npos) << site.error();
  }
  EXPECT_FALSE(readSiteFile(in("absent.json")));
}

TEST_F(SealTest, SealsUpTo126Bytes) {
  const auto keys = openOrMakeKeys(VORLU_SITE_KEYS);
  ASSERT_TRUE(keys) << keys.error();
  SiteFile site;
  site[SiteText::makerLine] = std::string(126, 'x');
  const auto sealed = sealSite(site, *keys);
  ASSERT_TRUE(sealed) << sealed.error();

  site[SiteText::makerLine] += "x";
  const auto refused = sealSite(site, *keys);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error(), "the value of \"makerLine\" is 127 bytes long; at most 126 can be sealed");
}

TEST_F(SealTest, StampFollowsEveryInput) {
  auto keys = openOrMakeKeys(VORLU_SITE_KEYS);
  ASSERT_TRUE(keys) << keys.error();
  SiteFile site;
  site.texts.fill("ab");
  const std::string stamp = sourceStamp(site, *keys);
  EXPECT_EQ(sourceStamp(site, *keys), stamp);

  SiteFile moved = site;
  moved.texts[0] = "a";
  moved.texts[1] = "bab";
  EXPECT_NE(sourceStamp(moved, *keys), stamp);
  keys->signingSecret += "x";
  EXPECT_NE(sourceStamp(site, *keys), stamp);
}

}  // namespace
}  // namespace vorlu::seal
