#include "tool/merge/document.h"

#include <string>

#include "platform/failure.h"
#include "text/text.h"
#include "tool/script/exchange_file.h"
#include "tool/script/pairing.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

// A text that ends in an escape only ever takes the place of such a one.
bool endsEscaping(std::string_view text) {
  const std::size_t last = text.find_last_not_of('\\');
  return (text.size() - (last == std::string_view::npos ? 0 : last + 1)) % 2 != 0;
}

}  // namespace

Document scriptDocument(std::string_view work, const CommandLists& lists) {
  const Outline outline = outlineOf(work, lists, OutlineOf::Menus);
  Document document;
  document.lines.reserve(outline.lines);
  document.texts.reserve(outline.texts.size());
  std::string code;
  std::size_t next = 0;
  forEachLine(work, [&](const ScriptLine& line) {
    const std::size_t first = next;
    for (; next < outline.texts.size() && outline.texts[next].lineNumber == line.number; ++next) {
      const OutlineText& text = outline.texts[next];
      const bool forTranslators = text.allowed || text.inMenu || text.segment == Segment::Title;
      document.texts.push_back({text.text, text.begin, forTranslators && hasLetter(text.text), text.inMenu});
    }
    document.lines.push_back({line.text, line.ending, 0, hashOf(line.text), first, next});
    DocumentLine& made = document.lines.back();
    made.code = made.whole;
    if (first == next) return;
    code.clear();
    appendOutside(line.text, outline, first, next, code);
    code.push_back('\n');
    for (std::size_t i = first; i < next; ++i) code.push_back(endsEscaping(document.texts[i].text) ? '\1' : '\0');
    made.code = hashOf(code);
  });
  return document;
}

Document plainDocument(std::string_view work) {
  Document document;
  forEachLine(work, [&](const ScriptLine& line) {
    const std::uint64_t hash = hashOf(line.text);
    document.lines.push_back({line.text, line.ending, hash, hash, 0, 0});
  });
  return document;
}

Document exchangeDocument(std::string_view work) {
  Document document;
  forEachLine(work, [&](const ScriptLine& line) {
    const ByteRecord record = cutRecord(line.text);
    if (!bearsNumber(record, line.number + 1)) {
      throw Failure(u"line " + decimal(static_cast<std::int64_t>(line.number) + 1) + u" does not bear its number");
    }
    document.lines.push_back({record.text, line.ending, 0, hashOf(record.text), line.number, line.number + 1});
    document.texts.push_back({record.text, 0, true, false});
  });
  return document;
}

}  // namespace dravenna
