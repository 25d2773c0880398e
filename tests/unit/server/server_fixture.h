#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "refserver/server.h"
#include "seal/sealed_texts.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_platform.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_data.h"
#include "vorlu/vorlu.h"

namespace vorlu::test {

inline const std::string noKeychainData =
    "Could not import Vorlu ceritifcates from keychain. Obtaining certificate data...";
inline const std::vector<std::string> keysAdded = {"Vorlu signature successfully added to the keychain",
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
  /// The status with which `flow` ended the run, nothing if it came back.
  static std::optional<int> endOf(const std::function<void()>& flow);

  /// Messages of the log, and of the Jamf Pro log, since the run began.
  std::vector<std::string> logged();
  std::vector<std::string> toldJamf();
  /// "METHOD /path STATUS" of each request since the last question.
  std::vector<std::string> requests();

  void serve(const char* file, const std::string& text);
  void serveInventory(const std::string& records);
  /// `records` enciphered to a key as the server answers it.
  static std::string secretsAnswer(const std::string& document, const seal::RsaKey& key);
  /// Every answer on `path` becomes this one.
  void answer(const std::string& path, int status, const std::string& body);
  void setRunData(const RunDataFile& file);
  RunDataFile runData();

  std::function<void(const refserver::Request&, refserver::Response&)> onRequest;
  TemporaryFolder serverFolder;
  std::optional<refserver::Server> server;
  TestPlatform mac;
  seal::SealedTexts sealed;
  std::string base;

 private:
  std::vector<std::string> linesOf(const std::string& path);

  SealedSite view_;
  std::optional<Site> site_;
  std::unique_ptr<Vorlu> vorlu_;
};

/// The agents' keys of all tests: making one takes a while.
const seal::AgentKeys& agentKeys();

/// `first` with everything of `rest` behind it.
std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& rest);

/// As many lines, each with this beginning.
::testing::Matcher<std::vector<std::string>> linesThatBegin(const std::vector<std::string>& beginnings);

}  // namespace vorlu::test
