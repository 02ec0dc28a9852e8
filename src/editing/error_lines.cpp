#include "editing/error_lines.h"

#include <algorithm>

namespace dravenna {

namespace {

constexpr std::size_t kNone = std::u16string::npos;

bool isErrorLine(const RichTextBox& N, std::size_t begin) { return N.colorAt(begin) == clrError; }

// Where the line behind an offset begins; kNone behind the last one.
std::size_t lineBehind(const RichTextBox& N, std::size_t offset) {
  const std::size_t feed = N.Text().find(u'\n', offset);
  return feed == kNone || feed + 1 == N.Text().size() ? kNone : feed + 1;
}

std::size_t errorLineIn(const RichTextBox& N, std::size_t begin, std::size_t end) {
  for (; begin < end; begin = lineBehind(N, begin)) {
    if (isErrorLine(N, begin)) return begin;
  }
  return kNone;
}

}  // namespace

const ErrorLines::Count& ErrorLines::count(const RichTextBox& N) {
  if (counted_ && revision_ == N.revision()) return count_;
  counted_ = true;
  revision_ = N.revision();
  count_ = {};
  std::size_t number = 1;
  for (std::size_t at = N.Text().empty() ? kNone : 0; at != kNone; at = lineBehind(N, at), ++number) {
    if (!isErrorLine(N, at)) continue;
    ++count_.lines;
    if (count_.first == 0) count_.first = number;
  }
  return count_;
}

std::size_t nextErrorLine(const RichTextBox& N, std::size_t from) {
  const std::size_t size = N.Text().size();
  const std::size_t begin = from == 0 ? 0 : lineBehind(N, from - 1);
  const std::size_t found = errorLineIn(N, begin, size);
  return found != kNone ? found : errorLineIn(N, 0, std::min(from, size));
}

}  // namespace dravenna
