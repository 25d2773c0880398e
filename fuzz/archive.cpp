#include "vorlu/install/archive.h"

#include <filesystem>

#include "fuzz/target.h"
#include "vorlu/state/forced_receipt.h"

namespace vorlu::fuzz {
namespace {

/// Whether a normalised path climbs out of where it stands.
bool climbs(std::string_view path) {
  const std::string normal = std::filesystem::path(std::string("./") + std::string(path)).lexically_normal();
  return path.starts_with('/') || normal == ".." || normal.starts_with("../");
}

FileInfo infoOf(FileKind kind, mode_t mode) {
  FileInfo info;
  info.kind = kind;
  info.mode = mode;
  return info;
}

}  // namespace

/// Path of an archive's member and, behind a zero byte, what a link says.
FUZZ_TARGET(archive) {
  Input in(input);
  const std::string path = in.text();
  const std::string target = in.rest();
  if (climbs(path)) expect(leavesFolder(path), "a path that ends outside is refused", path);
  const FileInfo link = infoOf(FileKind::link, 0777);
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  if (!leavesFolder(path) && !refusalOfItem(path, link, target))
    expect(!target.starts_with('/') && !climbs(folder + target), "a link stays inside", path, target);
  if (leavesFolder(folder + target))
    expect(refusalOfItem(path, link, target).has_value(), "a link that leads outside is refused", path, target);
  for (const FileKind kind : {FileKind::regular, FileKind::directory})
    for (const mode_t mode : {04755, 02755, 0755}) {
      const bool refused = refusalOfItem(path, infoOf(kind, mode), "").has_value();
      expect(refused == (mode == 04755 || (mode == 02755 && kind == FileKind::regular)), "no file runs as another user",
             path);
    }
  if (const auto app = markedApp(path)) expectSame(*app + " Patch Receipt.plist", path, "a receipt names its app");
}

}  // namespace vorlu::fuzz
