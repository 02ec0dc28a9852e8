#pragma once

#include <string>

namespace dravenna {

// A script of about `bytes` bytes of windows-1252 text with LF line ends, made of dialogues as servers have them:
// messages, menus, code, comments, colour codes. One title, "[Guard]", stands at 500 places. The same at every call.
std::string generatedScript(std::size_t bytes);

}  // namespace dravenna
