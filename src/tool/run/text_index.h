#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tool/run/session.h"

namespace dravenna {

// What the exchange files of a folder were made from: `dravenna.index` beside them holds the digests of their scripts'
// original texts. An import keeps what its scripts' texts have become in `dravenna.imports`, so that the next one knows
// its work. The index of a folder above counts for one that has none of its own. Exchange files go by their paths below
// the folder.
class TextIndex {
 public:
  // Reads both files, which may be missing. A line that cannot be read is told and left out.
  TextIndex(Session& session, const std::string& folder);

  bool knows(const std::string& lxf) const { return known_.count(prefix_ + lxf) != 0; }
  // Whether the exchange file was made from these texts, or nothing is known of it.
  bool isOriginal(const std::string& lxf, std::uint64_t texts) const;
  // The same, or an import of it has made these texts.
  bool fits(const std::string& lxf, std::uint64_t texts) const;

  // An exchange file with these texts was written anew, or stood there with the same bytes.
  void madeFrom(const std::string& lxf, std::uint64_t texts, bool anew);
  // An import of it leaves the script with these texts.
  void imported(const std::string& lxf, std::uint64_t texts);

  // Writes what has changed; tells what fails.
  void save();

 private:
  struct Import {
    std::uint64_t original;
    std::uint64_t texts;
  };
  struct Known {
    std::vector<std::uint64_t> originals;
    std::vector<Import> imports;
  };
  // Reads lines of `digests` numbers and a path: take(numbers, path).
  template <class Take>
  void read(const std::string& path, std::size_t digests, Take&& take);
  void write(const std::string& path, const std::string& bytes);

  Session& session_;
  std::string indexPath_;
  std::string importsPath_;
  std::string prefix_;  // of the folder below that of the index
  std::map<std::string, Known> known_;
  bool originalsChanged_ = false;
  bool importsChanged_ = false;
};

}  // namespace dravenna
