#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The text form of commits that are not saved yet: a line for the script, then one for each commit, each with a sum, so
// that a journal which was cut off or damaged is read as far as it goes.
namespace dravenna {

struct JournalledCommit {
  std::int32_t position = 0;     // of the opening quote mark, from 1, when the commit began
  bool title = false;            // all its places were written over
  std::u16string before, after;  // all that stands between the quote marks, brackets too

  bool operator==(const JournalledCommit&) const = default;
};

struct CommitJournal {
  std::u16string path;  // of the script
  std::vector<JournalledCommit> commits;
};

std::string journalHead(std::u16string_view path);
// `number` is that of the commit in its journal, from 1.
std::string journalLine(std::size_t number, const JournalledCommit& commit);

// Lines that are damaged, or stand there already, are left out; the first number that is missing ends the journal. The
// path is empty where there is no head.
CommitJournal readJournal(std::string_view bytes);

// The script that a head tells of, empty if there is none; `bytes` is what follows it.
std::u16string takeJournalHead(std::string_view& bytes);

}  // namespace dravenna
