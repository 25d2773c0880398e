#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "refserver/server.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/server/blueprint.h"

namespace vorlu::e2e {

/// The reference server at the address that this build's agent knows, with a shelf of installers.
class AppServer {
 public:
  /// `hook` sees each answer before it is sent and may break it.
  using Hook = std::function<void(const refserver::Request& request, refserver::Response& response)>;
  /// With a host file the server follows that Mac's clock.
  explicit AppServer(const Hook& hook = {}, const std::string& hostFile = "");

  /// Makes an application "com.example.NAME", without blanks, on the shelf and gives its path on this machine.
  std::string make(const std::string& name, const std::string& version, const std::vector<std::string>& options = {});
  /// Packs items into an installer that is served as /files/`file`, and returns its SHA-256. `contents` are the
  /// options and items of make-installer.
  std::string pack(const std::string& type, const std::string& file, const std::vector<std::string>& contents);
  /// Serves any bytes as /files/`file`, and returns their SHA-256.
  std::string serve(const std::string& file, const std::string& bytes);

  void setCatalog(const std::vector<AppBlueprints>& entries);
  void setManifest(const std::string& json);
  void setTestingCatalog(const std::vector<AppBlueprints>& entries);

  const std::string& dataFolder() const { return folder_.path(); }

  static std::string urlOf(const std::string& file);

 private:
  test::TemporaryFolder folder_;
  test::TemporaryFolder shelf_;
  std::optional<refserver::Server> server_;
};

/// An entry of an application bundle in /Applications for all processors that installs by copy; an empty hash asks for
/// the developer's signature.
AppBlueprints entryOf(const std::string& name, const std::string& latest, const std::string& type,
                      const std::string& file, const std::string& hash);

/// The version in a bundle's Info.plist, empty without one.
std::string versionOf(const std::string& bundle);

/// Names in a folder of this machine, sorted.
std::vector<std::string> namesIn(const std::string& folder);

}  // namespace vorlu::e2e
