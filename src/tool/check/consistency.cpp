#include "tool/check/consistency.h"

#include <fmt/core.h>

#include <algorithm>
#include <unordered_map>

#include "tool/script/shown.h"

namespace dravenna {

namespace {

// Which text should have one rendering only.
struct Direction {
  std::string Rendering::*of;
  std::string Rendering::*by;
  const char* kind;
};
constexpr Direction kDirections[] = {{&Rendering::before, &Rendering::now, "two-translations"},
                                     {&Rendering::now, &Rendering::before, "two-originals"}};

struct Use {
  std::size_t count = 0;
  std::size_t first = 0;  // index of an entry
};

}  // namespace

void Consistency::add(const std::string& path, std::vector<Rendering> renderings) {
  for (Rendering& rendering : renderings) entries_.push_back({&path, std::move(rendering)});
}

void Consistency::tell(const std::function<void(const std::string& path, const Finding&)>& found) const {
  using Uses = std::unordered_map<std::string_view, Use>;
  std::unordered_map<std::string_view, Uses> all[std::size(kDirections)];
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    for (std::size_t d = 0; d < std::size(kDirections); ++d) {
      const Rendering& one = entries_[i].rendering;
      Use& use = all[d][one.*kDirections[d].of][one.*kDirections[d].by];
      if (use.count++ == 0) use.first = i;
    }
  }
  const Codec utf8(CodePage::utf8());
  for (const auto& [path, rendering] : entries_) {
    for (std::size_t d = 0; d < std::size(kDirections); ++d) {
      const std::string& of = rendering.*kDirections[d].of;
      const std::string& by = rendering.*kDirections[d].by;
      const Uses& uses = all[d].at(of);
      const auto meant = std::min_element(uses.begin(), uses.end(), [](const auto& a, const auto& b) {
        return a.second.count != b.second.count ? a.second.count > b.second.count : a.second.first < b.second.first;
      });
      if (meant->first == by) continue;
      const Entry& first = entries_[meant->second.first];
      found(*path, {rendering.at, kDirections[d].kind,
                    fmt::format("{} is {} here, {} in {}:{}", quotedText(utf8, of), quotedText(utf8, by),
                                quotedText(utf8, meant->first), shownName(*first.path), first.rendering.at.line)});
    }
  }
}

}  // namespace dravenna
