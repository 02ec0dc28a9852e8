#include "scan/command_list.h"

#include <algorithm>

#include "text/case_fold.h"

namespace dravenna {

namespace {

std::uint64_t lengthBit(std::size_t length) { return std::uint64_t{1} << std::min<std::size_t>(length, 63); }

}  // namespace

CommandList::CommandList(std::u16string_view list) {
  std::size_t begin = list.find(u',');
  while (begin != std::u16string_view::npos) {
    const std::size_t end = list.find(u',', begin + 1);
    if (end == std::u16string_view::npos) break;
    names_.push_back(foldCase(list.substr(begin + 1, end - begin - 1)));
    lengths_ |= lengthBit(names_.back().size());
    begin = end;
  }
}

bool CommandList::contains(std::u16string_view word) const {
  if ((lengths_ & lengthBit(word.size())) == 0) return false;
  return std::any_of(names_.begin(), names_.end(),
                     [&](const std::u16string& name) { return equalIgnoringCase(name, word); });
}

CommandLists::CommandLists(std::u16string_view allowed, std::u16string_view special, CodePagePtr codePage)
    : allowed_(allowed), special_(special), fixed_(u",mes,menu,"), codePage_(std::move(codePage)) {}

CommandTraits CommandLists::traits(std::u16string_view word) const {
  return {allowed_.contains(word), special_.contains(word), fixed_.contains(word)};
}

CommandTraits CommandLists::traits(std::string_view word) const {
  constexpr std::size_t kShort = 32;
  const bool ascii = std::all_of(word.begin(), word.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (ascii && word.size() <= kShort) {
    char16_t wide[kShort];
    std::copy(word.begin(), word.end(), wide);
    return traits(std::u16string_view(wide, word.size()));
  }
  return traits(ascii || !codePage_ ? std::u16string(word.begin(), word.end()) : codePage_->decode(word));
}

}  // namespace dravenna
