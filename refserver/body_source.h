#pragma once

#include <string>

#include "refserver/exchange.h"

namespace vorlu::refserver {

/// The bytes of an answer's body: a text, or a file that is read piece by piece.
class BodySource {
 public:
  explicit BodySource(const Response& response);
  BodySource(const BodySource&) = delete;
  BodySource& operator=(const BodySource&) = delete;
  ~BodySource();

  /// False when the file can't be opened.
  bool isOpen() const { return !isFile_ || descriptor_ >= 0; }
  std::size_t size() const { return size_; }  ///< bytes, as they were at the start
  /// Up to `count` bytes; empty when the file has become shorter or can't be read.
  std::string read(std::size_t offset, std::size_t count) const;

 private:
  bool isFile_;
  int descriptor_ = -1;
  std::string text_;
  std::size_t size_ = 0;
};

}  // namespace vorlu::refserver
