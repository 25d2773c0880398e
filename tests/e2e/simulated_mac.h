#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace vorlu::e2e {

/// What a program did: its exit status (128 and the signal's number after a signal) and both of its outputs, mixed.
struct Outcome {
  int status = -1;
  std::string output;
};

/// Runs a program of this machine to its end, with no input.
Outcome runOnMachine(const std::vector<std::string>& command);

/// Path of a file of this build, or of this checkout.
std::string builtFile(const std::string& name);
std::string sourceFile(const std::string& name);

/// A simulated Mac in a temporary folder; it and all that runs in it end with this object. What fails in making or
/// steering it throws a std::runtime_error with the text of the failing command. One object may be used from several
/// threads as long as only `run` and `shell` overlap.
class SimulatedMac {
 public:
  /// Why no Mac can run on this machine; nothing when it can.
  static std::optional<std::string> whyNotHere();

  /// A new Mac, not booted, with this program as its /usr/local/bin/vorlu.
  explicit SimulatedMac(const std::string& agent = builtFile("vorlu"));
  ~SimulatedMac();
  SimulatedMac(const SimulatedMac&) = delete;
  SimulatedMac& operator=(const SimulatedMac&) = delete;

  void boot();

  /// Runs a command in the Mac to its end, as root or as `user`.
  Outcome run(const std::vector<std::string>& command, const std::string& user = "root");
  /// Runs a line of zsh.
  Outcome shell(const std::string& line, const std::string& user = "root");

  /// Where this machine has the Mac's file: path("/var/log/Vorlu.log").
  std::string path(const std::string& macPath) const { return temporary_ / ("/mac" + macPath); }
  std::string read(const std::string& macPath) const;
  void write(const std::string& macPath, const std::string& text) const;

  /// Sets a key of the host file to a JSON value; "null" removes it.
  void setHost(const std::string& key, const std::string& json);
  /// Calls of the stand-ins since the Mac was made, in order.
  std::vector<std::string> toolCalls() const;
  /// Puts an application into /Applications.
  void addApplication(const std::string& name, const std::string& version, const std::string& identifier) const;

 private:
  test::TemporaryFolder temporary_;  // holds the Mac's folder, so that the
                                     // folder is the Mac's alone
};

/// Skips its tests where no Mac can run; on a build server that is a failure.
class SimulatedMacTest : public ::testing::Test {
 protected:
  void SetUp() override;
};

}  // namespace vorlu::e2e
