#include "desktop/view/block_index.h"

#include <algorithm>
#include <numeric>

#include "text/text.h"

namespace dravenna {

namespace {

bool lineEndsAt(std::u16string_view text, std::size_t offset) {
  return offset >= 2 && text[offset - 1] == u'\n' && text[offset - 2] == u'\r';
}

// Appends the starts of all blocks behind the one at `from`, which begins a block, as long as they lie below `limit`.
void appendStarts(std::u16string_view text, std::size_t from, std::size_t limit, std::vector<std::uint32_t>& starts) {
  while (from < text.size()) {
    std::size_t feed = text.find(u'\n', from);
    while (feed != std::u16string_view::npos && (feed == from || text[feed - 1] != u'\r')) {
      feed = text.find(u'\n', feed + 1);
    }
    const std::size_t next = feed == std::u16string_view::npos ? text.size() : feed + 1;
    const std::size_t content = feed == std::u16string_view::npos ? text.size() : feed - 1;
    while (content - from > BlockIndex::kLongestBlock) {
      from += BlockIndex::kLongestBlock;
      if (isLowSurrogate(text[from]) && isHighSurrogate(text[from - 1])) --from;
      if (from >= limit) return;
      starts.push_back(static_cast<std::uint32_t>(from));
    }
    from = next;
    if (feed == std::u16string_view::npos || from >= limit) return;
    starts.push_back(static_cast<std::uint32_t>(from));
  }
}

}  // namespace

std::size_t BlockIndex::Change::moved(std::size_t offset) const {
  if (offset < position) return offset;
  return offset < position + removed ? position : offset - removed + inserted;
}

void BlockIndex::noteChange(std::size_t position, std::size_t removed, std::size_t inserted) {
  const std::size_t tail = size_ - position - removed;
  firstChange_ = changed_ ? std::min(firstChange_, position) : position;
  sameTail_ = changed_ ? std::min(sameTail_, tail) : tail;
  changed_ = true;
  size_ += inserted - removed;
}

BlockIndex::Change BlockIndex::update(std::u16string_view text) {
  if (!changed_) return {};
  changed_ = false;
  const std::size_t oldEnd = indexedSize_ - sameTail_;
  const Change change{firstChange_, oldEnd - firstChange_, text.size() - sameTail_ - firstChange_};

  // The blocks up to `keep` stay, and so do those from `tail` on: the CR LF in front of them is an old one.
  std::size_t keep = blockAt(firstChange_);
  if (keep > 0) --keep;
  auto tail = std::lower_bound(starts_.begin() + static_cast<std::ptrdiff_t>(keep) + 1, starts_.end(), oldEnd + 2);
  while (tail != starts_.end() && !lineEndsAt(text, change.moved(*tail))) ++tail;
  const std::size_t limit = tail == starts_.end() ? text.size() + 1 : change.moved(*tail);

  std::vector<std::uint32_t> middle;
  appendStarts(text, starts_[keep], limit, middle);
  if (change.removed != change.inserted) {
    std::for_each(tail, starts_.end(),
                  [&](std::uint32_t& start) { start = static_cast<std::uint32_t>(change.moved(start)); });
  }
  const auto first = static_cast<std::ptrdiff_t>(keep) + 1;
  const auto last = tail - starts_.begin();
  const std::ptrdiff_t same = std::min(last - first, static_cast<std::ptrdiff_t>(middle.size()));
  std::copy(middle.begin(), middle.begin() + same, starts_.begin() + first);
  starts_.erase(starts_.begin() + first + same, starts_.begin() + last);
  starts_.insert(starts_.begin() + first + same, middle.begin() + same, middle.end());
  std::fill(rows_.begin() + first - 1, rows_.begin() + first + same, std::uint16_t{1});
  rows_.erase(rows_.begin() + first + same, rows_.begin() + last);
  rows_.insert(rows_.begin() + first + same, middle.size() - static_cast<std::size_t>(same), std::uint16_t{1});
  indexedSize_ = size_ = text.size();
  countRows();
  return change;
}

std::size_t BlockIndex::end(std::size_t block, std::u16string_view text) const {
  if (block + 1 == starts_.size()) return text.size();
  const std::size_t next = starts_[block + 1];
  return lineEndsAt(text, next) ? next - 2 : next;
}

std::size_t BlockIndex::blockAt(std::size_t offset) const {
  const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
  return static_cast<std::size_t>(next - starts_.begin()) - 1;
}

bool BlockIndex::beginsLine(std::size_t block, std::u16string_view text) const {
  return block == 0 || lineEndsAt(text, starts_[block]);
}

void BlockIndex::setRows(std::size_t block, int rows) {
  const auto value = static_cast<std::uint16_t>(rows);
  const std::size_t old = rows_[block];
  rows_[block] = value;
  totalRows_ += value - old;
  if (block < markBlock_) markRows_ += value - old;
}

void BlockIndex::forgetRows() {
  std::fill(rows_.begin(), rows_.end(), std::uint16_t{1});
  countRows();
}

void BlockIndex::countRows() {
  totalRows_ = std::accumulate(rows_.begin(), rows_.end(), std::size_t{0});
  markBlock_ = markRows_ = 0;
}

std::size_t BlockIndex::rowsBefore(std::size_t block) const {
  for (; markBlock_ < block; ++markBlock_) markRows_ += rows_[markBlock_];
  for (; markBlock_ > block; --markBlock_) markRows_ -= rows_[markBlock_ - 1];
  return markRows_;
}

std::size_t BlockIndex::blockAtRow(std::size_t row) const {
  while (markRows_ > row) markRows_ -= rows_[--markBlock_];
  while (markBlock_ + 1 < rows_.size() && markRows_ + rows_[markBlock_] <= row) markRows_ += rows_[markBlock_++];
  return markBlock_;
}

}  // namespace dravenna
