#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "editing/quote_walk.h"

namespace dravenna {

// Where the current text stands among those that a walk over N stops at. What a walk has found is kept until N or what
// is admitted changes, so that a step costs next to nothing.
class TextCount {
 public:
  struct Place {
    std::size_t number = 0;  // of the current text, from 1; 0 if it is not among them
    std::size_t count = 0;
    std::size_t line = 1;  // of the caret of N
  };

  // `Ini` as in the form: the position of the current text's opening quote mark, or 0.
  Place place(const RichTextBox& N, const Admission& admitted, std::int32_t Ini);

 private:
  void walk(const RichTextBox& N);

  bool walked_ = false;
  std::uint64_t revision_ = 0;
  Admission admitted_;
  std::vector<std::int32_t> positions_;  // of the opening quote marks
  std::size_t lineOffset_ = 0, line_ = 1;
};

}  // namespace dravenna
