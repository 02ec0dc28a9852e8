#include "scan/rich_text_box.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace dravenna {

namespace {

const std::vector<CharStyle>& segmentStyles() {
  static const std::vector<CharStyle> styles = {
      {clrPlain, false, false, false}, {clrComment, false, false, false}, {clrQuote, false, false, false},
      {clrError, true, true, true},    {clrTitle, true, false, false},    {clrMessage, true, false, false},
      {clrCode, true, false, false},
  };
  return styles;
}

constexpr std::size_t kRoom = 4096;  // characters
constexpr std::size_t kMostStyles = 256;
constexpr std::size_t kMostCharacters = std::numeric_limits<std::int32_t>::max() / 2;  // offsets are 32-bit

char styleByte(std::size_t index) { return static_cast<char>(static_cast<unsigned char>(index)); }

}  // namespace

RichTextBox::RichTextBox() : table_(segmentStyles()), insertion_(table_.front()) {}

void RichTextBox::clear() {
  const std::size_t removed = text_.size();
  text_.clear();
  styles_.clear();
  table_ = segmentStyles();
  selStart_ = selLength_ = 0;
  added_ = 0;
  noteChange(0, removed, 0);
}

void RichTextBox::noteChange(std::size_t position, std::size_t removed, std::size_t inserted) {
  ++revision_;
  if (listener_ != nullptr) listener_->textChanged(position, removed, inserted);
}

std::u16string_view RichTextBox::SelText() const {
  return std::u16string_view(text_).substr(static_cast<std::size_t>(selStart_), static_cast<std::size_t>(selLength_));
}

std::uint32_t RichTextBox::SelColor() const {
  if (selLength_ == 0) return selStart_ == 0 ? clrPlain : colorAt(static_cast<std::size_t>(selStart_) - 1);
  const auto begin = static_cast<std::size_t>(selStart_);
  const std::uint32_t color = colorAt(begin);
  for (std::size_t at = begin + 1; at < begin + static_cast<std::size_t>(selLength_); ++at) {
    if (styles_[at] != styles_[begin] && colorAt(at) != color) return kNoColor;
  }
  return color;
}

void RichTextBox::setSelStart(std::int32_t offset) {
  selStart_ = std::clamp(offset, 0, static_cast<std::int32_t>(text_.size()));
  selLength_ = 0;
}

void RichTextBox::setSelLength(std::int32_t length) {
  selLength_ = std::clamp(length, 0, static_cast<std::int32_t>(text_.size()) - selStart_);
}

void RichTextBox::setSelText(std::u16string_view text) {
  const auto at = static_cast<std::size_t>(selStart_);
  const auto removed = static_cast<std::size_t>(selLength_);
  const std::size_t style = removed > 0 ? styleAt(at) : styleIndex(insertion_);
  text_.replace(at, removed, text);
  styles_.replace(at, removed, text.size(), styleByte(style));
  selStart_ += static_cast<std::int32_t>(text.size());
  selLength_ = 0;
  noteChange(at, removed, text.size());
}

std::uint8_t RichTextBox::styleIndex(const CharStyle& style) {
  auto found = std::find(table_.begin(), table_.end(), style);
  if (found == table_.end()) {
    // More looks than a byte can tell: the last one is as good as any.
    if (table_.size() == kMostStyles)
      --found;
    else
      found = table_.insert(table_.end(), style);
  }
  return static_cast<std::uint8_t>(found - table_.begin());
}

void RichTextBox::reserve(std::size_t characters) {
  text_.reserve(characters);
  styles_.reserve(characters);
}

void RichTextBox::makeRoom(std::size_t characters) {
  if (characters > kMostCharacters - added_) throw std::length_error("document");
  const std::size_t size = added_ + std::max(characters, kRoom);
  styles_.resize(size);
  text_.resize(size);
}

void RichTextBox::endSegments() {
  const std::size_t added = std::exchange(added_, 0);
  text_.resize(added);
  styles_.resize(added);
  if (added > 0) insertion_ = table_[styleAt(added - 1)];
  setSelStart(static_cast<std::int32_t>(added));
  if (added > 0) noteChange(0, 0, added);
}

void RichTextBox::replaceEach(const std::vector<std::int32_t>& starts, std::int32_t length, std::u16string_view text) {
  if (starts.empty()) return;
  const auto removed = static_cast<std::size_t>(length);
  const auto first = static_cast<std::size_t>(starts.front());
  const std::size_t last = static_cast<std::size_t>(starts.back()) + removed;
  const std::size_t newSize = text_.size() - starts.size() * removed + starts.size() * text.size();
  std::u16string newText;
  std::string newStyles;
  newText.reserve(newSize);
  newStyles.reserve(newSize);
  std::size_t from = 0;
  for (const std::int32_t start : starts) {
    const auto at = static_cast<std::size_t>(start);
    newText.append(text_, from, at - from).append(text);
    newStyles.append(styles_, from, at - from);
    newStyles.append(text.size(), styles_.at(removed > 0 ? at : at - 1));
    from = at + removed;
  }
  const auto caret = static_cast<std::int32_t>(newText.size());
  newText.append(text_, from);
  newStyles.append(styles_, from);
  text_.swap(newText);
  styles_.swap(newStyles);
  setSelStart(caret);
  noteChange(first, last - first, static_cast<std::size_t>(caret) - first);
}

}  // namespace dravenna
