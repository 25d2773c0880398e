#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vorlu {

/// Cuts a program's output, which arrives in pieces of any size, into lines without their ends.
class LineReader {
 public:
  explicit LineReader(std::function<void(std::string_view)> onLine) : onLine_(std::move(onLine)) {}

  void feed(std::string_view piece) {
    pending_.append(piece);
    std::size_t start = 0;
    for (std::size_t end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n', start)) {
      onLine_(std::string_view(pending_).substr(start, end - start));
      start = end + 1;
    }
    pending_.erase(0, start);
    if (pending_.size() > longestLine) finish();
  }

  /// Hands over a last line without an end.
  void finish() {
    if (!pending_.empty()) onLine_(pending_);
    pending_.clear();
  }

 private:
  static constexpr std::size_t longestLine = 64 << 10;  // a longer one is cut

  std::function<void(std::string_view)> onLine_;
  std::string pending_;
};

}  // namespace vorlu
