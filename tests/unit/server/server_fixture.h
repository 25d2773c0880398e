#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "refserver/server.h"
#include "seal/sealed_texts.h"
#include "tests/support/agent_run.h"

namespace vorlu::test {

inline const std::string noKeychainData =
    "Could not import Vorlu ceritifcates from keychain. Obtaining certificate data...";
inline const Lines keysAdded = {"Vorlu signature successfully added to the keychain",
                                "Vorlu key successfully added to the keychain",
                                "Vorlu certificate successfully added to the keychain"};

/// An agent with keys of its own beside its reference server; both live by one virtual clock.
class ServerFixture : public ::testing::Test {
 protected:
  ServerFixture();

  /// The next process on the same computer, with an empty log.
  Vorlu& newRun();
  /// A new run whose keychain holds what the server gives now.
  Vorlu& newRunWithKeys();

  /// Messages of the log, and of the Jamf Pro log, since the run began.
  Lines logged() { return mac.systemLog.lines(); }
  Lines toldJamf();
  /// "METHOD /path STATUS" of each request since the last question.
  Lines requests();

  void serve(const std::string& file, const std::string& text) { writeFile(serverFolder / ("/" + file), text); }
  void serveInventory(const std::string& records) { serve("inventory.json", "{\"SecInventory\": [" + records + "]}"); }
  /// `document` enciphered to a key as the server answers it.
  static std::string secretsAnswer(const std::string& document, const seal::RsaKey& key);
  /// Every answer on `path` becomes this one.
  void answer(const std::string& path, int status, const std::string& body);
  void setRunData(const RunDataFile& file) { mac.write(paths::runData, encodePropertyList(file)); }
  RunDataFile runData() { return *loadRunData(mac.files); }

  std::function<void(const refserver::Request&, refserver::Response&)> onRequest;
  TemporaryFolder serverFolder;
  std::optional<refserver::Server> server;
  TestPlatform mac;
  seal::SealedTexts sealed;
  std::string base;

 private:
  SealedSite view_;
  std::optional<Site> site_;
  std::unique_ptr<Vorlu> vorlu_;
};

/// A site whose server is there.
seal::SiteFile siteAt(const std::string& base);

/// The agents' keys of all tests: making one takes a while.
const seal::AgentKeys& agentKeys();

/// As many lines, each with this beginning.
::testing::Matcher<Lines> linesThatBegin(const Lines& beginnings);

}  // namespace vorlu::test
