#include "desktop/view/block_index.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace dravenna {

namespace {

std::vector<std::size_t> starts(const BlockIndex& index) {
  std::vector<std::size_t> all;
  for (std::size_t block = 0; block < index.count(); ++block) all.push_back(index.begin(block));
  return all;
}

BlockIndex freshIndex(const std::u16string& text) {
  BlockIndex index;
  index.noteChange(0, 0, text.size());
  index.update(text);
  return index;
}

using Starts = std::vector<std::size_t>;

TEST(BlockIndex, CutsAtLineEndsAndInLongLines) {
  EXPECT_EQ(starts(freshIndex(u"")), Starts({0}));
  EXPECT_EQ(starts(freshIndex(u"a\r\n\r\nb\rc\nd")), Starts({0, 3, 5}));
  EXPECT_EQ(starts(freshIndex(u"\r\n")), Starts({0, 2}));

  const std::size_t longest = BlockIndex::kLongestBlock;
  const std::u16string whole(longest, u'x');
  EXPECT_EQ(starts(freshIndex(whole + u"\r\n")), Starts({0, longest + 2}));
  EXPECT_EQ(starts(freshIndex(whole + u"y\r\n")), Starts({0, longest, longest + 3}));
  // No cut between the halves of a character.
  EXPECT_EQ(starts(freshIndex(whole.substr(1) + u"\U0001F600 ")), Starts({0, longest - 1}));

  const std::u16string text = whole + u"y\r\nz";
  const BlockIndex index = freshIndex(text);
  EXPECT_EQ(index.end(0, text), longest);
  EXPECT_EQ(index.end(1, text), longest + 1);
  EXPECT_FALSE(index.beginsLine(1, text));
  EXPECT_TRUE(index.beginsLine(2, text));
  EXPECT_EQ(index.blockAt(longest), 1U);
  EXPECT_EQ(index.blockAt(longest + 2), 1U);
}

// Whatever changes, alone or several at a time, the index is the one of the new text, and rows stay with their blocks.
TEST(BlockIndex, FollowsRandomChanges) {
  std::mt19937 random(7);
  const auto below = [&](std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit)(random); };
  const std::u16string pieces[] = {u"",      u"\r", u"\n", u"\r\n", u"ab", u"a\r\nb\r\n", std::u16string(5000, u'x'),
                                   u"\xDC80"};
  std::u16string text;
  BlockIndex index;
  for (int round = 0; round < 3000; ++round) {
    for (std::size_t edits = below(3); edits > 0; --edits) {
      const std::size_t at = below(text.size());
      const std::size_t removed = std::min(below(text.size() > 60000 ? 30000 : 12), text.size() - at);
      const std::u16string& piece = pieces[below(std::size(pieces) - 1)];
      text.replace(at, removed, piece);
      index.noteChange(at, removed, piece.size());
    }
    index.update(text);
    ASSERT_EQ(starts(index), starts(freshIndex(text))) << "round " << round;
    index.setRows(below(index.count() - 1), static_cast<int>(below(8)) + 1);
    std::size_t rows = 0;
    for (std::size_t block = 0; block < index.count(); ++block) {
      ASSERT_EQ(index.rowsBefore(block), rows);
      ASSERT_EQ(index.blockAtRow(rows), block);
      rows += static_cast<std::size_t>(index.rows(block));
    }
    ASSERT_EQ(index.totalRows(), rows);
  }
}

}  // namespace

}  // namespace dravenna
