#include "platform/registry_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "text/text.h"

namespace dravenna {

namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kOldHeader = "REGEDIT4";
constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kColumns = 80;

// True if no unit is half a pair: such text comes back from UTF-8 as it was.
bool isWhole(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const Utf16Char next = readUtf16(text, at);
    if (next.code >= 0xD800 && next.code < 0xE000) return false;
    at += next.length;
  }
  return true;
}

bool hasControls(std::u16string_view text) {
  return std::any_of(text.begin(), text.end(), [](char16_t c) { return c < 0x20 || c == 0x7F; });
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string utf8FromUtf16Le(std::string_view bytes, bool& damaged) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    text.push_back(
        static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8));
  }
  damaged = bytes.size() % 2 != 0 || !isWhole(text);
  return toUtf8(text);
}

// The units that "41,00,42,00" stands for; nothing if a byte is malformed or missing.
std::optional<std::u16string> unitsOfHex(std::string_view hex) {
  std::u16string units;
  bool low = true;
  while (!hex.empty()) {
    unsigned byte = 0;
    const std::size_t comma = hex.find(',');
    const std::string_view digits = hex.substr(0, comma);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (error != std::errc() || end != digits.data() + digits.size() || byte > 0xFF) return std::nullopt;
    if (low) {
      units.push_back(static_cast<char16_t>(byte));
    } else {
      units.back() = static_cast<char16_t>(units.back() | byte << 8);
    }
    low = !low;
    hex = comma == std::string_view::npos ? std::string_view() : hex.substr(comma + 1);
  }
  if (!low) return std::nullopt;
  return units;
}

// The type of data written as `dword:` (4), `hex:` (3) or `hex(N):`; `data` becomes what stands behind the colon.
std::optional<std::uint32_t> typeOf(std::string_view& data) {
  const std::size_t colon = data.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view word = data.substr(0, colon);
  data.remove_prefix(colon + 1);
  if (equalIgnoringCase(fromUtf8(word), u"dword")) return 4;
  if (equalIgnoringCase(fromUtf8(word), u"hex")) return 3;
  if (word.size() < 6 || word.back() != ')' || !equalIgnoringCase(fromUtf8(word.substr(0, 4)), u"hex(")) {
    return std::nullopt;
  }
  std::uint32_t type = 0;
  const char* const last = word.data() + word.size() - 1;
  const auto [end, error] = std::from_chars(word.data() + 4, last, type, 16);
  if (error != std::errc() || end != last) return std::nullopt;
  return type;
}

class Parser {
 public:
  explicit Parser(std::string_view bytes) : rest_(bytes) {}

  RegistryText parse() {
    bool headed = false;
    std::string_view line;
    while (nextLine(line)) {
      line = trimmed(line);
      if (line.empty()) continue;
      if (line[0] == ';') {
        keepComment(line);
        continue;
      }
      const bool header = line == kHeader || line == kOldHeader;
      if (!headed && !header) result_.damaged = true;
      headed = true;
      if (header) continue;
      if (line[0] == '[') {
        parseKey(line);
      } else if (line[0] == '"' || line[0] == '@') {
        parseValue(line);
      } else {
        result_.damaged = true;
      }
    }
    return std::move(result_);
  }

 private:
  bool nextLine(std::string_view& line) {
    if (rest_.empty()) return false;
    const std::size_t feed = rest_.find('\n');
    line = rest_.substr(0, feed);
    rest_ = feed == std::string_view::npos ? std::string_view() : rest_.substr(feed + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return true;
  }

  // A comment under a key that could not be read, or was deleted, goes to the front.
  void keepComment(std::string_view line) {
    if (!isWhole(fromUtf8(line)) || line.find('\r') != std::string_view::npos) {
      result_.damaged = true;
      return;
    }
    RegistryKey& key = key_ != nullptr ? *key_ : result_.keys[u""];
    key.unknown.emplace_back(line);
  }

  // What stands behind the last thing on a line: nothing or a comment.
  void takeEnd(std::string_view rest) {
    rest = trimmed(rest);
    if (rest.starts_with(';')) {
      keepComment(rest);
    } else if (!rest.empty()) {
      result_.damaged = true;
    }
  }

  void parseKey(std::string_view line) {
    key_ = nullptr;
    const std::size_t close = line.rfind(']');
    if (close == std::string_view::npos) {
      result_.damaged = true;
      return;
    }
    takeEnd(line.substr(close + 1));
    std::string_view inside = line.substr(1, close - 1);
    const bool deletes = inside.starts_with('-');
    if (deletes) inside.remove_prefix(1);
    const std::u16string path = fromUtf8(inside);
    const bool empties = path.empty() || path.front() == u'\\' || path.back() == u'\\' ||
                         path.find(u"\\\\") != std::u16string::npos || path.front() == u'-';
    if (empties || !isWritableName(path)) {
      result_.damaged = true;
    } else if (deletes) {
      deleteTree(path);
    } else {
      key_ = &makeRegistryKey(result_.keys, path);
    }
  }

  void deleteTree(const std::u16string& path) {
    result_.keys.erase(path);
    const std::u16string below = path + u'\\';
    auto at = result_.keys.lower_bound(below);
    while (at != result_.keys.end() && equalIgnoringCase(at->first.substr(0, below.size()), below)) {
      at = result_.keys.erase(at);
    }
  }

  // Takes a quoted string off the front of `text`; nothing if it has no end.
  static std::optional<std::u16string> takeQuoted(std::string_view& text) {
    std::string bytes;
    for (std::size_t at = 1; at < text.size(); ++at) {
      if (text[at] == '"') {
        text.remove_prefix(at + 1);
        return fromUtf8(bytes);
      }
      const bool escapes = text[at] == '\\' && at + 1 < text.size() && (text[at + 1] == '\\' || text[at + 1] == '"');
      if (escapes) ++at;
      bytes.push_back(text[at]);
    }
    return std::nullopt;
  }

  void parseValue(std::string_view line) {
    std::optional<std::u16string> name = u"";
    if (line[0] == '@') {
      line.remove_prefix(1);
    } else {
      name = takeQuoted(line);
    }
    line = trimmed(line);
    if (!name || !isWritableName(*name) || !line.starts_with('=')) {
      result_.damaged = true;
      return;
    }
    line = trimmed(line.substr(1));
    if (line == "-") {
      if (key_ != nullptr) key_->values.erase(*name);
      return;
    }
    std::optional<RegistryValue> value = line.starts_with('"') ? stringValue(line) : typedValue(line);
    if (!value || key_ == nullptr) {
      result_.damaged = true;
      return;
    }
    key_->values.insert_or_assign(*name, std::move(*value));
  }

  std::optional<RegistryValue> stringValue(std::string_view line) {
    std::optional<std::u16string> string = takeQuoted(line);
    if (!string) return std::nullopt;
    takeEnd(line);
    if (!isWhole(*string)) result_.damaged = true;
    return RegistryValue{1, std::move(*string), {}};
  }

  std::optional<RegistryValue> typedValue(std::string_view line) {
    std::string raw(line);
    while (raw.ends_with('\\')) {
      raw.pop_back();
      if (!nextLine(line)) {
        result_.damaged = true;  // cut off
        return std::nullopt;
      }
      raw += trimmed(line);
    }
    const std::size_t comment = raw.find(';');
    if (comment != std::string::npos) {
      takeEnd(std::string_view(raw).substr(comment));
      raw.resize(comment);
    }
    std::erase_if(raw, [](char c) { return kBlanks.find(c) != std::string_view::npos; });
    std::string_view data = raw;
    const std::optional<std::uint32_t> type = typeOf(data);
    if (!type || data.find_first_not_of("0123456789abcdefABCDEF,") != std::string_view::npos) return std::nullopt;
    if (*type != 1) return RegistryValue{*type, {}, std::move(raw)};
    std::optional<std::u16string> units = unitsOfHex(data);
    if (!units) return std::nullopt;
    return RegistryValue{1, std::move(*units), {}};
  }

  std::string_view rest_;
  RegistryText result_;
  RegistryKey* key_ = nullptr;
};

void appendQuoted(std::u16string_view text, std::string& out) {
  out += '"';
  for (const char c : toUtf8(text)) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  out += '"';
}

std::string hexOf(std::u16string_view units) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string out = "hex(1):";
  for (const char16_t unit : units) {
    for (const unsigned byte : {unit & 0xFFu, unit >> 8 & 0xFFu}) {
      if (out.back() != ':') out += ',';
      out += kDigits[byte >> 4];
      out += kDigits[byte & 0xF];
    }
  }
  return out;
}

// Appends data that may be cut behind any comma. `column` is how much of the line is taken.
void appendWrapped(std::string_view data, std::size_t column, std::string& out) {
  for (bool first = true; !data.empty(); first = false) {
    const std::size_t comma = data.find(',');
    const std::string_view piece = data.substr(0, comma == std::string_view::npos ? comma : comma + 1);
    const bool last = piece.size() == data.size();
    if (!first && column + piece.size() + (last ? 0 : 1) > kColumns) {
      out += "\\\n  ";
      column = 2;
    }
    out += piece;
    column += piece.size();
    data.remove_prefix(piece.size());
  }
}

void appendValue(const std::u16string& name, const RegistryValue& value, std::string& out) {
  const std::size_t start = out.size();
  if (name.empty()) {
    out += '@';
  } else {
    appendQuoted(name, out);
  }
  out += '=';
  if (value.type != 1) {
    appendWrapped(value.raw, out.size() - start, out);
  } else if (hasControls(value.string) || !isWhole(value.string)) {
    appendWrapped(hexOf(value.string), out.size() - start, out);
  } else {
    appendQuoted(value.string, out);
  }
  out += '\n';
}

}  // namespace

bool IgnoreCase::operator()(std::u16string_view a, std::u16string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char16_t x, char16_t y) { return foldCase(x) < foldCase(y); });
}

RegistryKey& makeRegistryKey(RegistryTree& keys, std::u16string_view path) {
  for (std::size_t end = path.find(u'\\');; end = path.find(u'\\', end + 1)) {
    std::u16string above(path.substr(0, end));
    RegistryKey& key = keys[above];
    if (key.path.empty()) key.path = std::move(above);
    if (end == std::u16string_view::npos) return key;
  }
}

bool hasSubKeys(const RegistryTree& keys, std::u16string_view path) {
  const std::u16string below = std::u16string(path) + u'\\';
  const auto at = keys.lower_bound(below);
  return at != keys.end() && equalIgnoringCase(at->first.substr(0, below.size()), below);
}

bool isWritableName(std::u16string_view name) { return isWhole(name) && !hasControls(name); }

RegistryText parseRegistryText(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) {
    bool damaged = false;
    const std::string text = utf8FromUtf16Le(bytes.substr(2), damaged);
    RegistryText result = Parser(text).parse();
    result.damaged |= damaged;
    return result;
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  return Parser(bytes).parse();
}

std::string writeRegistryText(const RegistryTree& keys) {
  std::string out(kHeader);
  out += '\n';
  for (const auto& [path, key] : keys) {
    out += '\n';
    if (!path.empty()) out.append("[").append(toUtf8(key.path)).append("]\n");
    for (const std::string& line : key.unknown) out.append(line).append("\n");
    for (const auto& [name, value] : key.values) appendValue(name, value, out);
  }
  return out;
}

}  // namespace dravenna
