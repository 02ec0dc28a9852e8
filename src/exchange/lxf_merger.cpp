#include "exchange/lxf_merger.h"

namespace dravenna {

template <class Char>
bool LxfMerger<Char>::takesTheNext(View before, View plain) {
  const Record<Char> record = cutRecord(current_);
  if (status_ == MergeStatus::Merged && behind_) status_ = MergeStatus::RanOut;
  if (status_ == MergeStatus::Merged && !record.hasColon) status_ = MergeStatus::NoColon;
  next();
  if (status_ != MergeStatus::Merged) return false;
  ++index_;
  if (record.text == before || (codes_ == Codes::Keep && record.text == plain)) return false;
  ++counts_.changed;
  if (plain.size() < before.size() && countColorCodes(record.text) == 0) ++counts_.withoutCodes;
  return true;
}

template class LxfMerger<char>;
template class LxfMerger<char16_t>;

MergeResult mergeLxf(std::u16string_view document, std::u16string_view exchangeFile, const CommandLists& lists) {
  MergeResult result;
  result.text.reserve(document.size() + exchangeFile.size());
  LxfMerger<char16_t> merger(exchangeFile, lists);
  CrLfPieces<char16_t> lines(document);
  std::size_t taken = 0;  // characters of the document
  for (std::u16string_view line; lines.next(line) && !lines.atLast() && !merger.done();) {
    if (!merger.addLine(line, result.text, [](auto&&...) {})) break;
    result.text.append(u"\r\n");
    taken += line.size() + 2;
    ++result.lineIndex;
  }
  result.status = merger.status();
  result.recordIndex = merger.recordIndex();
  if (result.status == MergeStatus::Merged) {
    result.text.append(document, taken);
  } else {
    result.text.clear();
  }
  return result;
}

}  // namespace dravenna
