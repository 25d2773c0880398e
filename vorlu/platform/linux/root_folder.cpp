#include "vorlu/platform/linux/root_folder.h"

namespace vorlu {
namespace {

void dropTrailingSlashes(std::string& path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
}

}  // namespace

PathParts splitPath(std::string path) {
  dropTrailingSlashes(path);
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return {".", path};
  std::string name = path.substr(slash + 1);
  path.resize(slash == 0 ? 1 : slash);
  dropTrailingSlashes(path);
  return {path, name};
}

RootFolder::RootFolder(std::string folder) : folder_(std::move(folder)) {
  dropTrailingSlashes(folder_);
  if (folder_ == "/") folder_.clear();
}

std::optional<std::string> RootFolder::agentPath(const std::string& hostPath) const {
  if (!hostPath.starts_with(folder_ + "/")) return std::nullopt;
  return hostPath.substr(folder_.size());
}

}  // namespace vorlu
