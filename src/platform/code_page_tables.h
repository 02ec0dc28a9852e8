#pragma once

#include <functional>
#include <string_view>

#include "text/code_page.h"

// Code pages by name, from the tables that a system gives.
namespace dravenna {

// The one UTF-16 unit that the bytes of a character (one or two) stand for, CodePage::kUndefined for none.
using CharacterDecoder = std::function<char16_t(std::string_view bytes)>;

// Implemented by each system: the decoder of a page; empty for one that the system does not have.
CharacterDecoder systemDecoder(int number);

// The page of that number, built at its first use; null for one that is not supported.
CodePagePtr codePageByNumber(int number);

}  // namespace dravenna
