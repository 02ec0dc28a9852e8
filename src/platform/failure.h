#pragma once

#include <exception>
#include <string>
#include <utility>

namespace dravenna {

// What every platform operation throws when it fails. The description is for the user's eyes.
class Failure : public std::exception {
 public:
  explicit Failure(std::u16string description) : description_(std::move(description)) {}
  const std::u16string& description() const { return description_; }
  const char* what() const noexcept override { return "platform failure"; }

 private:
  std::u16string description_;
};

}  // namespace dravenna
