#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/records.h"
#include "platform/failure.h"
#include "text/code_page.h"

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

}  // namespace dravenna
