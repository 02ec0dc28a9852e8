#include "batch/codec.h"
#include "batch/merge.h"
#include "batch/records.h"
#include "exchange/lxf.h"
#include "fuzz_input.h"
#include "model.h"

using namespace dravenna;

namespace {

// The merge may change nothing but the texts that take a record, from the first one on without a gap.
void checkOutside(const Text& document, const Text& merged, const Text& exchangeFile, const CommandLists& lists) {
  const std::vector<Text> records = model::cutAt(exchangeFile, u"\r\n");
  LineScanner scanner(lists);
  Text expected;
  Text buffer;
  std::size_t record = 0;
  std::size_t copied = 0;
  std::size_t lineStart = 0;
  for (const Text& line : model::cutAt(document, u"\r\n")) {
    if (record >= records.size() - 1 || lineStart + line.size() == document.size()) break;
    scanRecords(scanner, TextView(line), buffer, [&](const QuotedText& quoted, TextView) {
      const Text& from = records.at(record++);
      expected += document.substr(copied, lineStart + quoted.begin - copied) + from.substr(from.find(u':') + 1);
      copied = lineStart + quoted.end;
    });
    lineStart += line.size() + 2;
  }
  require(merged == expected + document.substr(copied), "the merge changed something else");
}

// What a scan tells, as one text.
template <class Char, class Decode>
struct Listener {
  std::basic_string_view<Char> line;
  Decode decode;
  Text& heard;

  void plain(std::size_t begin, std::size_t end) { hear(u'p', begin, end); }
  void quote(std::size_t at) { hear(u'q', at, at + 1); }
  void error(std::size_t begin, std::size_t end) { hear(u'e', begin, end); }
  void comment(std::size_t begin, std::size_t end) { hear(u'c', begin, end); }
  void text(const QuotedText& quoted) {
    hear(quoted.allowed ? u'a' : u't', quoted.begin, quoted.end);
    if (quoted.firstOfSpecial) heard += u's';
  }
  void hear(char16_t what, std::size_t begin, std::size_t end) {
    heard += what + decode(line.substr(begin, end - begin)) + u'|';
  }
};
template <class Char, class Decode>
Listener(std::basic_string_view<Char>, Decode, Text&) -> Listener<Char, Decode>;

// A scan over bytes finds what a scan over characters finds, where the two may be cut at the same places.
void checkBytes(const CodePage& page, const std::string& script, const CommandLists& lists) {
  ByteLineScanner bytes(lists);
  LineScanner units(lists);
  std::string line;
  for (std::size_t at = 0; at < script.size(); at += line.size() + 1) {
    line = script.substr(at, script.find('\n', at) - at);
    const Text wide = page.decode(line);
    Text fromBytes;
    Text fromUnits;
    const auto decode = [&](std::string_view piece) { return page.decode(piece); };
    bytes.scan(line, Listener{std::string_view(line), decode, fromBytes});
    units.scan(wide, Listener{TextView(wide), [](TextView piece) { return Text(piece); }, fromUnits});
    require(fromBytes == fromUnits, "bytes and characters are scanned differently");
  }
}

}  // namespace

// Parts are a script and an exchange file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const CodePagePtr page = fuzzCodePage(input.digit());
  const auto [allowed, special] = fuzzCommandLists(input.digit());
  const std::string script(input.part());
  const std::string lxf(input.rest());
  const model::Rule rule(allowed, special);
  const CommandLists lists(allowed, special);

  // The functions take any text, the last line without an end too.
  const Text raw = page->decode(script);
  const Text document = model::Rule::load(rule, raw).text;
  const Text exchangeFile = page->decode(lxf);
  for (const Text& text : {raw, document}) {
    Text expected;
    const std::vector<Text> records = model::Rule::records(rule, text);
    for (std::size_t i = 0; i < records.size(); ++i) {
      expected += decimal(static_cast<std::int64_t>(i) + 1) + u":" + records[i] + u"\r\n";
    }
    const Text written = writeLxf(text, lists);
    require(written == expected, "exchange file");
    for (const Text& file : {exchangeFile, written}) {
      const MergeResult merged = mergeLxf(text, file, lists);
      const model::Merged wanted = model::Rule::merge(rule, text, file);
      require((merged.status == MergeStatus::RanOut) == wanted.ranOut, "records run out");
      require((merged.status == MergeStatus::NoColon) == (wanted.badRecord != 0), "a record without a colon");
      if (wanted.badRecord != 0) require(merged.recordIndex + 1 == wanted.badRecord, "number of the bad record");
      require(merged.text == wanted.text, "merged text");
      if (merged.status == MergeStatus::Merged) checkOutside(text, merged.text, file, lists);
      require(&file != &written || merged.status == MergeStatus::Merged, "an unchanged file merges");
    }
  }

  // The command line tool works on bytes and gives what the window gives.
  const Codec codec(page);
  const CommandLists byteLists(allowed, special, codec.wordPage());
  if (page->isSingleByte() || page->isUtf8()) checkBytes(*page, script, byteLists);
  std::string scriptBuffer;
  std::string lxfBuffer;
  std::string out;
  std::string outBuffer;
  const std::string_view work = codec.toWork(script, scriptBuffer);
  require(codec.toFile(work, outBuffer) == script, "work bytes come back");
  require(codec.decode(work) == raw && codec.units(work) == raw.size(), "characters of the work bytes");
  exportWork(work, byteLists, true, out);
  const Merge same = mergeWork(codec, byteLists, work, out, true);
  require(same.error.empty() && same.bytes == script && same.changed == 0, "a file with its codes changes nothing");
  out.clear();
  exportWork(work, byteLists, false, out);
  std::string fromWindow;
  page->encode(writeLxf(document, lists), fromWindow);
  require(codec.toFile(out, outBuffer) == fromWindow, "tool and window export the same");
  const MergeResult inWindow = mergeLxf(document, exchangeFile, lists);
  const Merge merge = mergeWork(codec, byteLists, work, codec.toWork(lxf, lxfBuffer), false);
  require(merge.error.empty() == (inWindow.status == MergeStatus::Merged), "tool and window refuse the same");
  std::string bytes;
  page->encode(inWindow.text, bytes);
  if (merge.error.empty()) require(merge.bytes == bytes, "tool and window import the same");
  return 0;
}
