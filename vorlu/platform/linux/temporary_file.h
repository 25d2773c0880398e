#pragma once

#include <string>
#include <string_view>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/descriptor.h"

namespace vorlu {

/// `prefix` and 16 random hexadecimal digits.
std::string temporaryName(std::string_view prefix);

/// A new file of mode 0600 beside its future place. It is removed again unless it was renamed or kept.
class TemporaryFile {
 public:
  /// `folder` is a path of the machine; a failure speaks of `shownFolder`.
  static Result<TemporaryFile> create(const std::string& folder, const std::string& shownFolder,
                                      std::string_view prefix);
  TemporaryFile(TemporaryFile&&) = default;
  TemporaryFile& operator=(TemporaryFile&&) = delete;
  ~TemporaryFile();

  int descriptor() const { return file_.get(); }
  const std::string& name() const { return name_; }
  /// Takes the place of `name` in the same folder; false with errno set.
  bool renameTo(const std::string& name);
  void keep() { name_.clear(); }
  /// The open file, for one who goes on using it.
  Descriptor release() { return std::move(file_); }

 private:
  TemporaryFile(Descriptor folder, Descriptor file, std::string name)
      : folder_(std::move(folder)), file_(std::move(file)), name_(std::move(name)) {}

  Descriptor folder_;
  Descriptor file_;
  std::string name_;  ///< empty once the file may stay
};

}  // namespace vorlu
