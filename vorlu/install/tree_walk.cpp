#include "vorlu/install/tree_walk.h"

#include <fmt/format.h>

namespace vorlu {

Status walkTree(FileManager& files, const std::string& folder,
                const std::function<Status(const std::string& path, const FileInfo& info)>& visit) {
  const auto names = files.list(folder);
  if (!names) return names.failure();
  for (const std::string& name : *names) {
    const std::string path = fmt::format("{}/{}", folder, name);
    const auto info = files.info(path);
    if (!info) return Failure{fmt::format("{}: no such item", path)};
    if (Status visited = visit(path, *info); !visited) return visited;
    if (info->kind != FileKind::directory) continue;
    if (Status walked = walkTree(files, path, visit); !walked) return walked;
  }
  return success();
}

std::uint64_t treeSize(FileManager& files, const std::string& path) {
  const auto info = files.info(path);
  if (!info) return 0;
  if (info->kind != FileKind::directory) return info->size;
  std::uint64_t bytes = 0;
  static_cast<void>(walkTree(files, path, [&bytes](const std::string&, const FileInfo& item) {
    if (item.kind == FileKind::regular) bytes += item.size;
    return success();
  }));
  return bytes;
}

}  // namespace vorlu
