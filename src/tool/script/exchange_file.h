#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/lxf_merger.h"
#include "platform/failure.h"
#include "tool/script/codec.h"
#include "tool/script/records.h"

namespace dravenna {

using ByteRecord = Record<char>;

// An exchange file cut at CR LF and at nothing else.
struct ExchangeFile {
  std::vector<ByteRecord> records;
  std::string_view rest;      // what stands behind the last CR LF; empty in a good file
  std::size_t bareFeeds = 0;  // LF without a CR in front
};

ExchangeFile cutExchangeFile(std::string_view bytes);

// Whether a record bears that number, in plain decimal.
bool bearsNumber(const ByteRecord& record, std::size_t number);

// Why the file of that name would not fit a script with so many texts, and where; nothing when it fits: as many
// records as texts, numbered from 1 in order, every line ended by CR LF.
std::optional<Failure> misfitOf(const ExchangeFile& file, const std::string& name, std::size_t texts);

// Why the bytes on disk of an exchange file of that name say another encoding than the one that it is read in, `page`:
// UTF-16, a byte order mark, or UTF-8 on one side only of file and script.
std::optional<Failure> wrongEncodingOf(std::string_view exchangeFile, const std::string& name, std::string_view script,
                                       const CodePage& page);

// A record that would break the line of its text (see breaks.h). Lines and records from 1.
struct BrokenRecord {
  std::size_t scriptLine;
  std::size_t record;
  std::string why;
};

struct Merge {
  std::string work;  // the new script
  MergeCounts counts;
  TextDigest digest;  // of the texts as they were
  std::vector<BrokenRecord> breaks;
  std::optional<Failure> failure;  // begins with "NAME:LINE: "; then `work` is no script
};

// What becomes of what an exchange file cannot tell of. The window's way: CR LF throughout, and a record that is its
// text without colour codes takes these away.
struct MergeWay {
  bool keepEol = false;    // line ends stay
  bool keepCodes = false;  // such a record leaves the text alone
};

// Merges an exchange file of that name into a script by the rule of the window; all in work bytes. Fails where the
// exchange file has no colon or ends too soon.
Merge mergeWork(const Encoding& in, std::string_view script, std::string_view lxf, const std::string& lxfName,
                MergeWay way);

// Why the next export would lack a text, or null.
const char* whatLeavesExport(std::string_view text);

}  // namespace dravenna
