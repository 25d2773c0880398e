#include "tests/support/faulty_file_manager.h"

#include "vorlu/platform/linux/descriptor.h"

namespace vorlu::test {

void FaultyFileManager::setFault(int first, int last, int error) {
  writes_ = 0;
  first_ = first;
  last_ = last;
  error_ = error;
}

bool FaultyFileManager::fails() {
  ++writes_;
  return first_ > 0 && writes_ >= first_ && writes_ <= last_;
}

Failure FaultyFileManager::failure(const std::string& path) const {
  return systemFailure(path, error_);
}

Status FaultyFileManager::writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) {
  return fails() ? failure(path) : real_.writeAtomically(path, data, ownership);
}

Status FaultyFileManager::append(const std::string& path, std::string_view data, const Ownership& ownership) {
  return fails() ? failure(path) : real_.append(path, data, ownership);
}

Status FaultyFileManager::createDirectory(const std::string& path, const Ownership& ownership) {
  return fails() ? failure(path) : real_.createDirectory(path, ownership);
}

Status FaultyFileManager::move(const std::string& from, const std::string& to) {
  return fails() ? failure(to) : real_.move(from, to);
}

Status FaultyFileManager::copyTree(const std::string& from, const std::string& to) {
  return fails() ? failure(to) : real_.copyTree(from, to);
}

Status FaultyFileManager::exchange(const std::string& a, const std::string& b) {
  return fails() ? failure(a) : real_.exchange(a, b);
}

Status FaultyFileManager::syncTree(const std::string& path) {
  return fails() ? failure(path) : real_.syncTree(path);
}

}  // namespace vorlu::test
