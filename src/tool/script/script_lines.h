#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// One line of a script in its work bytes.
struct ScriptLine {
  std::string_view text;    // without its line end
  std::size_t number;       // from 0
  std::size_t begin;        // offset in the file
  std::string_view ending;  // "\r\n", "\n", or empty behind the last line
};

// The lines of a script: CR LF and LF end a line, a lone CR belongs to it, and nothing stands behind the last end.
template <class Each>
void forEachLine(std::string_view bytes, Each&& each) {
  std::size_t number = 0;
  for (std::size_t at = 0; at < bytes.size(); ++number) {
    const void* const feed = std::memchr(bytes.data() + at, '\n', bytes.size() - at);
    const std::size_t next =
        feed == nullptr ? bytes.size() : static_cast<std::size_t>(static_cast<const char*>(feed) - bytes.data()) + 1;
    std::size_t end = next;
    if (feed != nullptr) --end;
    if (feed != nullptr && end > at && bytes[end - 1] == '\r') --end;
    each(ScriptLine{bytes.substr(at, end - at), number, at, bytes.substr(end, next - end)});
    at = next;
  }
}

inline std::vector<std::string_view> linesOf(std::string_view bytes) {
  std::vector<std::string_view> lines;
  forEachLine(bytes, [&](const ScriptLine& line) { lines.push_back(line.text); });
  return lines;
}

// The same lines, each with CR LF behind it.
inline std::string withCrLf(std::string_view bytes) {
  std::string lines;
  forEachLine(bytes, [&](const ScriptLine& line) { lines.append(line.text).append("\r\n"); });
  return lines;
}

// What stands in front of a text in the work bytes that it is a piece of.
inline std::string_view inFrontOf(std::string_view text, std::string_view work) {
  return work.substr(0, static_cast<std::size_t>(text.data() - work.data()));
}

// Only the lines that hold a quote mark: no other line changes the state of a scan or holds a text.
template <class Each>
void forEachQuoteLine(std::string_view bytes, Each&& each) {
  const char* const data = bytes.data();
  for (std::size_t at = 0; at < bytes.size();) {
    const void* const mark = std::memchr(data + at, '"', bytes.size() - at);
    if (mark == nullptr) return;
    const auto quote = static_cast<std::size_t>(static_cast<const char*>(mark) - data);
    std::size_t begin = quote;
    while (begin > at && data[begin - 1] != '\n') --begin;
    const void* const feed = std::memchr(data + quote, '\n', bytes.size() - quote);
    std::size_t end = feed == nullptr ? bytes.size() : static_cast<std::size_t>(static_cast<const char*>(feed) - data);
    at = end + 1;
    if (feed != nullptr && end > begin && data[end - 1] == '\r') --end;
    each(bytes.substr(begin, end - begin));
  }
}

}  // namespace dravenna
