#pragma once

#include "exchange/records.h"

namespace dravenna {

enum class MergeStatus {
  Merged,
  NoColon,  // a record without a colon was reached
  RanOut,   // the records ended inside a line of the document
};

struct MergeCounts {
  std::size_t texts = 0;         // that take a record, in the lines so far
  std::size_t changed = 0;       // of these, that are not what they were, to the letter
  std::size_t withoutCodes = 0;  // of these, that had colour codes and have none now
};

// Puts the text of the k-th line of an exchange file in the place of the k-th text of a document that takes a record.
// What stands behind the file's last CR LF is no record, unless a document line with several texts runs on into it.
template <class Char>
class LxfMerger {
 public:
  using View = std::basic_string_view<Char>;

  // The window puts every record in. With `KeepCodes`, one that is its text without colour codes leaves the text alone.
  enum class Codes { Replace, Keep };
  LxfMerger(View exchangeFile, const CommandLists& lists, Codes codes = Codes::Replace)
      : scan_(lists), pieces_(exchangeFile), codes_(codes) {
    next();
  }

  // No further line of the document will change.
  bool done() const { return behind_ || pieces_.atLast(); }

  // Appends the document's next line as it will be; false from a fault on, which status() tells. Calls each(text, text
  // without colour codes, what its record says) for each text that takes a record, behind a fault too; the record is
  // none where the exchange file has ended.
  template <class Each>
  bool addLine(View line, std::basic_string<Char>& out, Each&& each) {
    const bool unchanged = done();
    std::size_t copied = 0;
    scan_.line(line, [&](const QuotedText& quoted, View plain) {
      ++counts_.texts;
      const View before = line.substr(quoted.begin, quoted.end - quoted.begin);
      std::optional<View> record;
      if (!unchanged && !behind_) record = cutRecord(current_).text;
      each(before, plain, record);
      if (!unchanged && takesTheNext(before, plain)) {
        out.append(line.substr(copied, quoted.begin - copied)).append(*record);
        copied = quoted.end;
      }
    });
    out.append(line.substr(copied));
    return status_ == MergeStatus::Merged;
  }

  MergeStatus status() const { return status_; }
  std::size_t recordIndex() const { return index_; }  // from 0: records used, or the one at fault
  const MergeCounts& counts() const { return counts_; }

 private:
  void next() { behind_ = !pieces_.next(current_); }
  // Goes on to the next record; whether the last one takes the place of the text.
  bool takesTheNext(View before, View plain);

  RecordScan<Char> scan_;
  CrLfPieces<Char> pieces_;
  View current_;
  Codes codes_;
  bool behind_ = false;
  MergeStatus status_ = MergeStatus::Merged;
  std::size_t index_ = 0;
  MergeCounts counts_;
};

struct MergeResult {
  MergeStatus status = MergeStatus::Merged;
  std::size_t recordIndex = 0;  // as above
  std::size_t lineIndex = 0;    // from 0: the document's line at which the walk ended
  std::u16string text;          // the merged document; empty unless Merged
};

// The whole document, whose lines end in CR LF and in nothing else. What stands behind the last one is no line.
MergeResult mergeLxf(std::u16string_view document, std::u16string_view exchangeFile, const CommandLists& lists);

}  // namespace dravenna
