#include "tool/check/consistency.h"

#include <fmt/core.h>

#include <algorithm>

#include "tool/script/shown.h"

namespace dravenna {

void Consistency::count(Uses& uses, const std::string& of, const std::string& by, std::size_t place) {
  Use& use = uses[of][by];
  if (use.count++ == 0) use.first = place;
}

void Consistency::add(const std::string& path, std::vector<Rendering> renderings) {
  if (renderings.empty()) return;
  paths_.push_back(path);
  for (Rendering& rendering : renderings) {
    count(translations_, rendering.before, rendering.now, entries_.size());
    count(originals_, rendering.now, rendering.before, entries_.size());
    entries_.push_back({paths_.size() - 1, std::move(rendering)});
  }
}

void Consistency::compare(const Uses& uses, const std::string& of, const std::string& by, const Entry& at,
                          const char* kind,
                          const std::function<void(const std::string& path, const Finding&)>& found) const {
  const auto& all = uses.at(of);
  const auto meant = std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
    return a.second.count != b.second.count ? a.second.count > b.second.count : a.second.first < b.second.first;
  });
  if (meant->first == by) return;
  const Codec utf8(CodePage::utf8());
  const Entry& first = entries_[meant->second.first];
  found(paths_[at.path],
        {at.rendering.at, kind,
         fmt::format("{} is {} here, {} in {}:{}", quotedText(utf8, of), quotedText(utf8, by),
                     quotedText(utf8, meant->first), shownName(paths_[first.path]), first.rendering.at.line)});
}

void Consistency::tell(const std::function<void(const std::string& path, const Finding&)>& found) const {
  for (const Entry& entry : entries_) {
    compare(translations_, entry.rendering.before, entry.rendering.now, entry, "two-translations", found);
    compare(originals_, entry.rendering.now, entry.rendering.before, entry, "two-originals", found);
  }
}

}  // namespace dravenna
