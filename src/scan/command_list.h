#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/code_page.h"

namespace dravenna {

inline constexpr char16_t kDefaultAllowedCommands[] =
    u",mes,menu,announce,mapannounce,areaannounce,debugmes,npctalk,logmes,globalmes,select,";
inline constexpr char16_t kDefaultSpecialCommands[] = u",mapannounce,areaannounce,";

// One list: names with a comma in front of and behind each. A word is in it when "," + word + "," occurs, letter case
// ignored; a list without its outer commas has lost its first and last word.
class CommandList {
 public:
  explicit CommandList(std::u16string_view list);
  bool contains(std::u16string_view word) const;  // the word holds no comma

 private:
  std::vector<std::u16string> names_;  // folded
  std::uint64_t lengths_ = 0;          // bit n: a name of n characters is there (63 and more share the last bit)
};

// What the lists say of a word.
struct CommandTraits {
  bool allowed = false;
  bool special = false;
  bool fixed = false;  // mes or menu
};

// The lists that a scan works with.
class CommandLists {
 public:
  // `codePage` decodes words when the scan runs over bytes; it may be null for scans over UTF-16.
  CommandLists(std::u16string_view allowed, std::u16string_view special, CodePagePtr codePage = nullptr);

  CommandTraits traits(std::u16string_view word) const;
  CommandTraits traits(std::string_view word) const;

 private:
  CommandList allowed_;
  CommandList special_;
  CommandList fixed_;
  CodePagePtr codePage_;
};

}  // namespace dravenna
