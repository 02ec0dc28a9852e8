#include "platform/posix/recent_files.h"

#include <charconv>
#include <string_view>

#include "platform/posix/files.h"
#include "platform/posix/user_folders.h"

namespace dravenna::posix {

namespace {

constexpr std::size_t kLargestList = 16u << 20;  // bytes
constexpr std::size_t kNone = std::string::npos;
constexpr std::string_view kEmptyList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<xbel version=\"1.0\"\n"
    "      xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
    "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"\n"
    ">\n"
    "</xbel>\n";
constexpr std::string_view kApplication = "<bookmark:application name=\"dravenna\"";

// As the other programs write it, so that one file is one entry.
std::string addressOf(const std::string& path) {
  std::string address = "file://";
  for (const char c : path) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::string_view("/-._~!$()*+,:=@").find(c) != kNone;
    if (plain) {
      address += c;
    } else if (c == '&' || c == '\'') {
      address += c == '&' ? "&amp;" : "&apos;";
    } else {
      const auto byte = static_cast<unsigned char>(c);
      address.append({'%', "0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]});
    }
  }
  return address;
}

// The value of an attribute of the element that begins at `element`: where it begins in the text, and its length.
struct Value {
  std::size_t at = kNone, size = 0;
};
Value attribute(const std::string& text, std::size_t element, std::string_view name) {
  const std::size_t end = text.find('>', element);
  const std::size_t at = text.find(" " + std::string(name) + "=\"", element);
  if (at == kNone || at > end) return {};
  const std::size_t begin = at + name.size() + 3;
  return {begin, text.find('"', begin) - begin};
}

void setAttribute(std::string& text, std::size_t element, std::string_view name, std::string_view value) {
  const Value old = attribute(text, element, name);
  if (old.at != kNone) text.replace(old.at, old.size, value);
}

std::string applicationElement(const std::string& time) {
  return std::string(kApplication) + " exec=\"&apos;dravenna %f&apos;\" modified=\"" + time + "\" count=\"1\"/>\n";
}

std::string bookmark(const std::string& address, const std::string& time) {
  return "  <bookmark href=\"" + address + "\" added=\"" + time + "\" modified=\"" + time + "\" visited=\"" + time +
         "\">\n"
         "    <info>\n"
         "      <metadata owner=\"http://freedesktop.org\">\n"
         "        <mime:mime-type type=\"text/plain\"/>\n"
         "        <bookmark:applications>\n"
         "          " +
         applicationElement(time) +
         "        </bookmark:applications>\n"
         "      </metadata>\n"
         "    </info>\n"
         "  </bookmark>\n";
}

// Where this program stands in the bookmark that begins at `element`, it has opened it once more; else it is put there.
void noteOpening(std::string& text, std::size_t element, const std::string& time) {
  setAttribute(text, element, "modified", time);
  setAttribute(text, element, "visited", time);
  const std::size_t end = text.find("</bookmark>", element);
  const std::size_t ours = text.find(kApplication, element);
  if (ours < end) {
    setAttribute(text, ours, "modified", time);
    if (const Value count = attribute(text, ours, "count"); count.at != kNone) {
      unsigned times = 0;
      std::from_chars(text.data() + count.at, text.data() + count.at + count.size, times);
      text.replace(count.at, count.size, std::to_string(times + 1));
    }
  } else if (const std::size_t list = text.find("</bookmark:applications>", element); list < end) {
    text.insert(list, "  " + applicationElement(time) + "        ");
  }
}

}  // namespace

void addRecentFile(SystemCalls& calls, const std::string& path, const std::string& time) {
  const std::string folder = userFolder("XDG_DATA_HOME", "/.local/share");
  if (folder.empty()) return;
  const std::string list = folder + "/recently-used.xbel";
  std::string text = readIfThere(calls, list, kLargestList).value_or(std::string(kEmptyList));
  const std::size_t end = text.rfind("</xbel>");
  if (end == kNone || text.find("xmlns:bookmark=") == kNone || text.find("xmlns:mime=") == kNone) return;
  const std::string address = addressOf(path);
  if (const std::size_t known = text.find("<bookmark href=\"" + address + "\""); known != kNone) {
    noteOpening(text, known, time);
  } else {
    text.insert(end, bookmark(address, time));
  }
  makeFolders(calls, folder, 0700);
  replaceFile(calls, list, text, {.newFileMode = 0600, .flushesFolder = false});
}

}  // namespace dravenna::posix
