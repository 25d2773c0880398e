#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/agent_run.h"
#include "tests/support/scripted_server.h"
#include "vorlu/install/pipeline.h"

namespace vorlu::test {

using Strings = std::vector<std::string>;

/// One member of a tar file that a test writes byte by byte, hostile ones included.
struct Member {
  std::string name;
  std::string content = {};
  char type = '0';  ///< '0' file, '1' hard link, '2' link, '3' device, '5' directory, '6' pipe
  std::string link = {};
  int mode = 0644;
};
std::string tarOf(const std::vector<Member>& members);

/// A download of one application: its bundle in a tar file, with `version` in its Info.plist.
std::string appArchive(const std::string& bundleName, const std::string& version);

/// A Mac with a server of installers, real tar (unless it is scripted), and whatever catalog a test gives.
class InstallRun : public ::testing::Test, protected AgentRun {
 protected:
  explicit InstallRun(bool realTar = true);

  /// Puts an application into the catalog: "zip", universal, by hash, served as its archive of version 2.0.
  AppBlueprints& addToCatalog(const std::string& appName);
  /// Serves `body` as the installer and makes the entry's hash its digest.
  void serve(AppBlueprints& entry, const std::string& body);
  /// The entry's installed application, in version 1.0.
  void install(const std::string& appName);
  InstallRequest updateOf(const std::string& appName) const;
  std::string installedVersion(const std::string& appName);

  /// Names in the cache and in Output together.
  Strings leftovers();
  std::string sha256(const std::string& body);
  static std::string pathOf(const std::string& appName) { return "/Applications/" + appName + ".app"; }

  std::map<std::string, refserver::Response> answers;  ///< by path of the URL
  ScriptedServer server;
  std::map<std::string, std::size_t> entries;  ///< index in the catalog by name
};

/// The lines of an update that goes through, by hash.
Lines linesOfUpdate(const std::string& appName, const std::string& hash);

}  // namespace vorlu::test
