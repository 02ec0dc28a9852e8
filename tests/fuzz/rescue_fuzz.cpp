#include "editing/commit_journal.h"
#include "fuzz_input.h"

using namespace dravenna;

// The journal of commits: parts are anything at all, then what stood in a text and what was typed, in turns.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const std::size_t at = input.digit() * std::size_t{37} + size;
  readJournal(input.part());

  CommitJournal written{u"/a\tb\n\\" + fromUtf8(input.part()), {}};
  std::string bytes = journalHead(written.path);
  while (!input.empty()) {
    const auto position = static_cast<std::int32_t>(1 + at % 999);
    const Text before = fromUtf8(input.part());
    written.commits.push_back({position, size % 2 == 0, before, fromUtf8(input.part())});
    bytes += journalLine(written.commits.size(), written.commits.back());
  }
  const auto isBeginning = [&](const CommitJournal& read) {
    return read.commits.size() <= written.commits.size() &&
           std::equal(read.commits.begin(), read.commits.end(), written.commits.begin());
  };
  const CommitJournal read = readJournal(bytes);
  require(read.path == written.path && read.commits == written.commits, "write and read");
  require(isBeginning(readJournal(bytes.substr(0, at % bytes.size()))), "a journal that is cut off");
  require(readJournal(bytes + bytes.substr(bytes.find('\n') + 1)).commits == read.commits, "lines written again");
  bytes[at % bytes.size()] = static_cast<char>(bytes[at % bytes.size()] + 1);
  require(isBeginning(readJournal(bytes)), "a byte that is damaged");
  return 0;
}
