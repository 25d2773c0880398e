#pragma once

#include <string>
#include <utility>
#include <variant>

namespace vorlu {

/// Why an operation failed: a text fit for the log (it names the path or URL) and the system's error number, 0 if none.
struct Failure {
  std::string text;
  int code = 0;
};

/// A value or the failure that prevented it. Reading the wrong half is a programming error.
template <class T>
class Result {
 public:
  Result(T value) : state_(std::move(value)) {}            // NOLINT(google-explicit-constructor)
  Result(Failure failure) : state_(std::move(failure)) {}  // NOLINT(google-explicit-constructor)

  bool ok() const { return std::holds_alternative<T>(state_); }
  explicit operator bool() const { return ok(); }
  T& value() { return std::get<T>(state_); }
  const T& value() const { return std::get<T>(state_); }
  T& operator*() { return value(); }
  const T& operator*() const { return value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  const Failure& failure() const { return std::get<Failure>(state_); }
  const std::string& error() const { return failure().text; }

 private:
  std::variant<T, Failure> state_;
};

/// Success without a value, or a failure.
using Status = Result<std::monostate>;
inline Status success() {
  return std::monostate{};
}

}  // namespace vorlu
