#include "tool/po_files/po_entries.h"

#include <algorithm>
#include <filesystem>

#include "tool/po_files/po_text.h"

namespace dravenna {

std::shared_ptr<const PoEntries> readPoEntries(const Session& session, const std::string& path) {
  session.outputs->addInput(path);
  const auto read = std::make_shared<PoEntries>();
  read->path = path;
  read->file = readPoFile(*session.files, path);
  const auto fileOf = [](const PoEntry& entry) { return entry.context.substr(0, entry.context.find(" | ")); };
  for (std::size_t i = 0; i < read->file.entries.size(); ++i) {
    const PoEntry& entry = read->file.entries[i];
    read->byContext.emplace(entry.context, i);
    read->byFile[fileOf(entry)].entries.push_back(&entry);
  }
  for (const PoEntry& entry : read->file.obsolete) read->byFile[fileOf(entry)].obsolete.push_back(&entry);
  for (auto& [name, own] : read->byFile) {
    std::stable_sort(own.entries.begin(), own.entries.end(),
                     [](const PoEntry* a, const PoEntry* b) { return a->line < b->line; });
  }
  return read;
}

std::string relativeAmong(const PoEntries& entries, const Script& script) {
  const std::string path = std::filesystem::absolute(script.path).lexically_normal().generic_string();
  for (std::size_t slash = path.find('/'); script.named && slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (entries.byFile.count(poNameOf(path.substr(slash + 1))) != 0) return path.substr(slash + 1);
  }
  return script.relative;
}

}  // namespace dravenna
