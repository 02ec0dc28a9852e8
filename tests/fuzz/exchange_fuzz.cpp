#include "exchange/lxf.h"
#include "fuzz_input.h"
#include "model.h"
#include "tool/script/codec.h"
#include "tool/script/merge.h"
#include "tool/script/records.h"

using namespace dravenna;

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
      require(&file != &written || merged.status == MergeStatus::Merged, "an unchanged file merges");
    }
  }

  // The command line tool works on bytes and gives what the window gives.
  const Codec codec(page);
  const CommandLists byteLists(allowed, special, codec.wordPage());
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
