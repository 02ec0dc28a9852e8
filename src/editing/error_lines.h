#pragma once

#include <cstddef>
#include <cstdint>

#include "scan/rich_text_box.h"

namespace dravenna {

// Lines with an odd number of quote marks: they are shown, and nothing of them can be changed.
class ErrorLines {
 public:
  struct Count {
    std::size_t lines = 0;
    std::size_t first = 0;  // number of the first one in the script, from 1; 0 if there is none
  };

  // Kept until N changes.
  const Count& count(const RichTextBox& N);

 private:
  Count count_;
  std::uint64_t revision_ = 0;
  bool counted_ = false;
};

// Where the first error line begins that begins at an offset or behind it; behind the last one it goes on from the top.
// std::u16string::npos if there is none.
std::size_t nextErrorLine(const RichTextBox& N, std::size_t from);

}  // namespace dravenna
