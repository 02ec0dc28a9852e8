#pragma once

#include <string_view>

#include "scan/command_list.h"
#include "tool/script/codec.h"

namespace dravenna {

// How the files of one code page are worked on.
struct Encoding {
  Encoding(CodePagePtr page, std::u16string_view allowed, std::u16string_view special)
      : codec(std::move(page)), lists(allowed, special, codec.wordPage()) {}

  Codec codec;
  CommandLists lists;
};

}  // namespace dravenna
