#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "tool/po_files/po_file.h"
#include "tool/run/session.h"

namespace dravenna {

// A PO file by the places that its contexts name (see PoContexts).
struct PoEntries {
  struct OfScript {
    std::vector<const PoEntry*> entries;  // by their lines in the script
    std::vector<const PoEntry*> obsolete;
  };
  std::string path;
  PoFile file;
  std::unordered_map<std::string, std::size_t> byContext;  // index of an entry, the first one of several
  std::map<std::string, OfScript> byFile;
};

// Throws Failure.
std::shared_ptr<const PoEntries> readPoEntries(const Session& session, const std::string& path);

// The path by which contexts call a script. One that was named goes by the longest part of its path that is in use.
std::string relativeAmong(const PoEntries& entries, const Script& script);

}  // namespace dravenna
