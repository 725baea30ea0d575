#pragma once

#include <stdexcept>
#include <string>

namespace tidemark {

// A failure of a model operation on user input; what() is the text shown to the user.
class ModelError : public std::runtime_error {
 public:
  enum class Kind { invalidImport, invalidSnapshot, failedCheck };

  static ModelError invalidImport(const std::string& m) { return {Kind::invalidImport, m}; }
  static ModelError invalidSnapshot(const std::string& m) { return {Kind::invalidSnapshot, m}; }
  static ModelError failedCheck(const std::string& m) { return {Kind::failedCheck, m}; }

  Kind kind() const { return kind_; }

 private:
  ModelError(Kind kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}
  Kind kind_;
};

}  // namespace tidemark
