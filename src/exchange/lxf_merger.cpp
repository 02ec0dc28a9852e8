#include "exchange/lxf.h"

namespace dravenna {

namespace {

// The records in their order, one after the other.
class Records {
 public:
  explicit Records(TextView exchangeFile) : pieces_(exchangeFile) { next(); }

  bool atLastOrBehind() const { return behind_ || pieces_.atLast(); }
  bool behind() const { return behind_; }
  TextView current() const { return current_; }
  std::size_t index() const { return index_; }
  void advance() {
    ++index_;
    next();
  }

 private:
  void next() { behind_ = !pieces_.next(current_); }

  CrLfPieces pieces_;
  TextView current_;
  std::size_t index_ = 0;
  bool behind_ = false;
};

}  // namespace

MergeResult mergeLxf(std::u16string_view document, std::u16string_view exchangeFile, const CommandLists& lists) {
  MergeResult result;
  result.text.reserve(document.size() + exchangeFile.size());
  Records records(exchangeFile);
  LineScanner scanner(lists);
  std::u16string buffer;
  CrLfPieces lines(document);
  TextView line;
  std::size_t copied = 0;  // characters of the document that are in result.text
  const auto offsetOf = [&](std::size_t inLine) {
    return static_cast<std::size_t>(line.data() - document.data()) + inLine;
  };

  while (result.status == MergeStatus::Merged && lines.next(line) && !lines.atLast() && !records.atLastOrBehind()) {
    scanRecords(scanner, line, buffer, [&](const QuotedText& quoted, TextView) {
      if (result.status != MergeStatus::Merged) return;
      const std::size_t colon = records.behind() ? TextView::npos : records.current().find(u':');
      if (colon == TextView::npos) {
        result.status = records.behind() ? MergeStatus::RanOut : MergeStatus::NoColon;
        return;
      }
      result.text.append(document, copied, offsetOf(quoted.begin) - copied).append(records.current().substr(colon + 1));
      copied = offsetOf(quoted.end);
      records.advance();
    });
    if (result.status == MergeStatus::Merged) ++result.lineIndex;
  }
  result.recordIndex = records.index();
  if (result.status == MergeStatus::Merged) {
    result.text.append(document, copied);
  } else {
    result.text.clear();
  }
  return result;
}

}  // namespace dravenna
