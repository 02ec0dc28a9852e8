#pragma once

#include <string_view>

#include "scan/command_list.h"

namespace dravenna {

// What a file is by its bytes, whatever its name.
enum class Contents { Empty, Script, ExchangeFile, PoFile, Index, Other };

// How the two files begin that an index of exchange files stands in.
inline constexpr std::string_view kIndexHead = "# the texts that these exchange files were made from: digest, file\n";
inline constexpr std::string_view kImportsHead =
    "# what imports made of these texts: digest before, digest after, file\n";

Contents contentsOf(std::string_view bytes, const CommandLists& lists);

// Whether a PO file has a translation, be it fuzzy or obsolete.
bool holdsTranslations(std::string_view poFile);

// "a script", "an exchange file" ...
const char* nameOf(Contents contents);

}  // namespace dravenna
