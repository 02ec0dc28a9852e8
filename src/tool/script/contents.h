#pragma once

#include <string_view>

#include "scan/command_list.h"

namespace dravenna {

// What a file is by its bytes, whatever its name.
enum class Contents { Empty, Script, ExchangeFile, PoFile, Other };

Contents contentsOf(std::string_view bytes, const CommandLists& lists);

// Whether a PO file has a translation, be it fuzzy or obsolete.
bool holdsTranslations(std::string_view poFile);

// "a script", "an exchange file" ...
const char* nameOf(Contents contents);

}  // namespace dravenna
