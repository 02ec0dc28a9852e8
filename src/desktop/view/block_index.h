#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace dravenna {

// Where the blocks of a text begin. A block is what is laid out at once: a line up to CR LF, or a piece of a line that
// is longer than kLongestBlock. Each one also has the number of visual rows that it takes, 1 until that is known.
// Offsets count code units from 0; there is always at least one block.
class BlockIndex {
 public:
  static constexpr std::size_t kLongestBlock = 4096;

  // A change of the text; costs nothing until the next update().
  void noteChange(std::size_t position, std::size_t removed, std::size_t inserted);
  bool outdated() const { return changed_; }

  // Brings the index up to the text, and tells all noted changes as one.
  struct Change {
    std::size_t position = 0, removed = 0, inserted = 0;
    // Where an offset of the old text stands now.
    std::size_t moved(std::size_t offset) const;
  };
  Change update(std::u16string_view text);

  std::size_t count() const { return starts_.size(); }
  std::size_t begin(std::size_t block) const { return starts_[block]; }
  // End of the block without its CR LF.
  std::size_t end(std::size_t block, std::u16string_view text) const;
  // The block that holds an offset; where two meet, the later one.
  std::size_t blockAt(std::size_t offset) const;
  // Whether a block begins a line, and is no piece of one that began before.
  bool beginsLine(std::size_t block, std::u16string_view text) const;

  int rows(std::size_t block) const { return rows_[block]; }
  void setRows(std::size_t block, int rows);
  void forgetRows();
  std::size_t totalRows() const { return totalRows_; }
  std::size_t rowsBefore(std::size_t block) const;
  // The block that holds a row; the last one for a row behind the end.
  std::size_t blockAtRow(std::size_t row) const;

 private:
  void countRows();

  std::vector<std::uint32_t> starts_{0};
  std::vector<std::uint16_t> rows_{1};
  std::size_t totalRows_ = 1;
  std::size_t indexedSize_ = 0;  // of the text at the last update
  std::size_t size_ = 0;         // of the text now
  bool changed_ = false;
  std::size_t firstChange_ = 0;                       // what stands in front is as it was
  std::size_t sameTail_ = 0;                          // this many characters at the end are as they were
  mutable std::size_t markBlock_ = 0, markRows_ = 0;  // rowsBefore of one block, to start the next count from
};

}  // namespace dravenna
