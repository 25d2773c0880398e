#include "tests/support/test_platform.h"

#include <fmt/format.h>

#include <filesystem>

namespace vorlu::test {

TestPlatform::TestPlatform(const TransferRules& rules) : urls(rootFolder_, rules) {
  for (const char* folder : {"/Applications", "/Library/Application Support", "/Library/Keychains",
                             "/Library/LaunchDaemons", "/Library/Managed Preferences", "/Library/Preferences",
                             "/Users/alice", "/Volumes", "/private/etc", "/private/tmp", "/private/var/db/receipts",
                             "/private/var/log", "/private/var/run", "/private/var/tmp", "/usr/local/bin"})
    makeFolder(folder);
  for (const char* name : {"var", "tmp", "etc"})
    std::filesystem::create_directory_symlink(fmt::format("private/{}", name), folder_ / fmt::format("/{}", name));
}

void TestPlatform::addApplication(const std::string& bundlePath, const std::string& identifier,
                                  const std::string& version) {
  const std::string name = std::filesystem::path(bundlePath).stem();
  write(bundlePath + "/Contents/Info.plist", fmt::format(R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>{}</string>
<key>CFBundleExecutable</key><string>{}</string>
<key>CFBundleShortVersionString</key><string>{}</string>
</dict></plist>
)",
                                                         identifier, name, version));
  const std::string program = bundlePath + "/Contents/MacOS/" + name;
  write(program, "#!/bin/sh\n");
  std::filesystem::permissions(folder_ / program, std::filesystem::perms(0755));
}

}  // namespace vorlu::test
