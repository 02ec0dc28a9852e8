#include "exchange/lxf_merger.h"
#include "fuzz_input.h"
#include "model.h"
#include "tool/script/codec.h"
#include "tool/script/exchange_file.h"
#include "tool/script/records.h"

using namespace dravenna;

// As the window writes it, line by line.
static Text exchangeFileOf(TextView document, const CommandLists& lists) {
  Text file;
  writeRecords(document, lists, [&](TextView record) { file.append(record).append(u"\r\n"); });
  return file;
}

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
    const Text written = exchangeFileOf(text, lists);
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
  const Encoding in(page, allowed, special);
  const Codec& codec = in.codec;
  const CommandLists& byteLists = in.lists;
  std::string scriptBuffer;
  std::string lxfBuffer;
  std::string out;
  std::string outBuffer;
  const std::string_view work = codec.toWork(script, scriptBuffer);
  require(codec.toFile(work, outBuffer) == script, "work bytes come back");
  require(codec.decode(work) == raw && codec.units(work) == raw.size(), "characters of the work bytes");
  exportWork(work, byteLists, true, out);
  const Merge same = mergeWork(in, work, out, "", {.keepEol = true});
  require(!same.failure && same.work == work && same.counts.changed == 0, "a file with its codes changes nothing");
  out.clear();
  exportWork(work, byteLists, false, out);
  std::string fromWindow;
  page->encode(exchangeFileOf(document, lists), fromWindow);
  require(codec.toFile(out, outBuffer) == fromWindow, "tool and window export the same");
  const Merge kept = mergeWork(in, work, out, "", {.keepEol = true, .keepCodes = true});
  require(!kept.failure && kept.work == work, "an export changes nothing where codes are kept");
  const MergeResult inWindow = mergeLxf(document, exchangeFile, lists);
  const Merge merge = mergeWork(in, work, codec.toWork(lxf, lxfBuffer), "", {});
  require(!merge.failure == (inWindow.status == MergeStatus::Merged), "tool and window refuse the same");
  std::string bytes;
  page->encode(inWindow.text, bytes);
  if (!merge.failure) require(codec.toFile(merge.work, outBuffer) == bytes, "tool and window import the same");
  return 0;
}
