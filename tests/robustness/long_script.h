#pragma once

#include <string>

namespace dravenna {

// A script of so many messages, each of them `text` and its number, and its exchange file.
inline std::string scriptOf(int messages, const std::string& text) {
  std::string script;
  for (int i = 1; i <= messages; ++i) script += "\tmes \"" + text + std::to_string(i) + "\"; // line\r\n";
  return script;
}

inline std::string exchangeFileOf(int messages, const std::string& text) {
  std::string file;
  for (int i = 1; i <= messages; ++i) file += std::to_string(i) + ":" + text + std::to_string(i) + "\r\n";
  return file;
}

}  // namespace dravenna
