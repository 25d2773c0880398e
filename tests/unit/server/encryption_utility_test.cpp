#include "vorlu/server/encryption_utility.h"

#include "tests/unit/server/server_fixture.h"

namespace vorlu::test {
namespace {

using Encryption = ServerFixture;
using ::testing::ElementsAre;

TEST_F(Encryption, ToleratesEscapedSlashesAlone) {
  EncryptionUtility utility(mac.security, newRun().log);
  EXPECT_EQ(*utility.base64Decode(R"(\/\/\/\/)"), "\xff\xff\xff");
  EXPECT_EQ(utility.base64Decode(R"(QUJD\)").error(), "invalidBase64String");
  EXPECT_THAT(logged(), ElementsAre(R"(Error: Failed to decode Base64 string (QUJD\))"));
}

}  // namespace
}  // namespace vorlu::test
