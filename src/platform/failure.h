#pragma once

#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
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

// Runs the steps of a routine and gives the failure that has ended them, if one has. A lack of memory counts as one.
template <class Steps>
std::optional<Failure> attempt(Steps&& steps) {
  try {
    steps();
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return Failure(u"Not enough memory");
  } catch (const std::length_error&) {
    return Failure(u"The file is too large");
  }
  return std::nullopt;
}

}  // namespace dravenna
