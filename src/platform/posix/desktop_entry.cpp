#include "platform/posix/desktop_entry.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/posix/files.h"
#include "platform/posix/user_folders.h"

namespace dravenna::posix {

namespace {

constexpr std::string_view kEntry = "dravenna-open.desktop";
constexpr std::string_view kInstalledEntry = "org.orvane.Dravenna.desktop";
constexpr std::string_view kType = "text/plain";
constexpr std::string_view kAdded = "Added Associations";
// In our entry: the program whose line in mimeapps.list is ours too.
constexpr std::string_view kPinnedKey = "X-Dravenna-Pinned";
constexpr std::size_t kLargestFile = 16u << 20;  // bytes

using Strings = std::vector<std::string>;

Strings split(std::string_view text, char separator) {
  Strings parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

// A file of [groups] with key=value lines. Everything that is not changed stays as it was written.
class KeyFile {
 public:
  explicit KeyFile(std::string_view text) : lines_(split(text, '\n')) {}

  // The parts of a list value. Empty parts are left out.
  Strings list(std::string_view group, std::string_view key) const {
    const std::size_t at = find(group, key);
    if (at == lines_.size()) return {};
    Strings parts = split(std::string_view(lines_[at]).substr(lines_[at].find('=') + 1), ';');
    for (std::string& part : parts) {
      part.erase(0, part.find_first_not_of(" \t"));
      part.erase(part.find_last_not_of(" \t\r") + 1);
    }
    std::erase(parts, "");
    return parts;
  }

  // An empty list takes the line away, and its group too if nothing else is in it.
  void setList(std::string_view group, std::string_view key, const Strings& list) {
    std::string line = std::string(key) + "=";
    for (const std::string& part : list) line += part + ";";
    std::size_t at = find(group, key);
    if (at < lines_.size()) {
      lines_[at] = line;
    } else {
      at = static_cast<std::size_t>(std::find(lines_.begin(), lines_.end(), headerOf(group)) - lines_.begin());
      if (at == lines_.size()) {
        if (!lines_.empty()) lines_.emplace_back();
        lines_.push_back(headerOf(group));
        at = lines_.size() - 1;
      }
      lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(++at), line);
    }
    if (list.empty()) removeLine(at, group);
  }

  std::string text() const {
    std::string text;
    for (const std::string& line : lines_) text += line + '\n';
    return text;
  }

 private:
  static std::string headerOf(std::string_view group) { return std::string(1, '[').append(group).append("]"); }

  // The line of the key; the number of lines if there is none.
  std::size_t find(std::string_view group, std::string_view key) const {
    bool inside = false;
    for (std::size_t at = 0; at < lines_.size(); ++at) {
      const std::string_view line = lines_[at];
      if (line.starts_with('[')) inside = line.starts_with(headerOf(group));
      if (!inside || !line.starts_with(key)) continue;
      const std::size_t equals = line.find_first_not_of(" \t", key.size());
      if (equals != std::string_view::npos && line[equals] == '=') return at;
    }
    return lines_.size();
  }

  void removeLine(std::size_t at, std::string_view group) {
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(at));
    const bool ends = at == lines_.size() || lines_[at].empty() || lines_[at].starts_with('[');
    if (at == 0 || lines_[at - 1] != headerOf(group) || !ends) return;
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(--at));
    if (at > 0 && at == lines_.size() && lines_[at - 1].empty()) lines_.pop_back();
  }

  Strings lines_;
};

class Associations {
 public:
  explicit Associations(SystemCalls& calls) : calls_(calls) {
    const std::string data = userFolder("XDG_DATA_HOME", "/.local/share");
    const std::string config = userFolder("XDG_CONFIG_HOME", "/.config");
    if (data.empty() || config.empty()) throw SystemFailure(ENOENT, "");
    applications_ = data + "/applications";
    lists_ = config + "/mimeapps.list";
    entry_ = applications_ + "/" + std::string(kEntry);
  }

  void add(const std::string& program) {
    KeyFile lists(read(lists_));
    Strings added = lists.list(kAdded, kType);
    std::string pinned;
    const bool installed = isInstalledFor(program);
    const std::string_view id = installed ? kInstalledEntry : kEntry;
    if (const auto at = std::find_if(added.begin(), added.end(), isOurs); at != added.end()) {
      pinned = pinnedBefore();
      *at = id;
    } else {
      // The first program in this list opens the files of a user who has picked no default.
      if (added.empty()) pinned = presentProgram();
      if (!pinned.empty()) added.push_back(pinned);
      added.emplace_back(id);
    }
    makeFolders(calls_, applications_, 0700);
    replaceFile(calls_, entry_, entryText(program, pinned, installed), {});
    lists.setList(kAdded, kType, added);
    makeFolders(calls_, folderOf(lists_), 0700);
    writeIfChanged(lists.text());
  }

  void remove() {
    KeyFile lists(read(lists_));
    Strings added = lists.list(kAdded, kType);
    if (std::erase_if(added, isOurs) != 0) {
      if (added.size() == 1 && added[0] == pinnedBefore()) added.clear();
      lists.setList(kAdded, kType, added);
      writeIfChanged(lists.text());
    }
    if (calls_.unlink(entry_.c_str()) < 0 && errno != ENOENT) failWithErrno(entry_);
  }

 private:
  static bool isOurs(std::string_view id) { return id == kEntry || id == kInstalledEntry; }

  static Strings systemFolders() {
    const char* const named = std::getenv("XDG_DATA_DIRS");
    Strings folders = split(named != nullptr && named[0] != '\0' ? named : "/usr/local/share:/usr/share", ':');
    for (std::string& folder : folders) {
      while (folder.ends_with('/')) folder.pop_back();
      folder += "/applications";
    }
    return folders;
  }

  // Whether the entry of an installed program starts this one. It is taken then: file managers show no second one.
  bool isInstalledFor(const std::string& program) {
    const Strings folders = systemFolders();
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
      struct stat status {};
      const std::string prefix = folderOf(folderOf(folder));  // of PREFIX/share/applications
      return program == prefix + "/bin/dravenna" &&
             calls_.stat((folder + "/" + std::string(kInstalledEntry)).c_str(), status) == 0;
    });
  }

  // Empty for a missing file.
  std::string read(const std::string& path) { return readIfThere(calls_, path, kLargestFile).value_or(""); }

  void writeIfChanged(const std::string& text) {
    if (text == read(lists_)) return;
    if (!text.empty()) {
      replaceFile(calls_, lists_, text, {});
    } else if (calls_.unlink(lists_.c_str()) < 0) {
      failWithErrno(lists_);
    }
  }

  std::string pinnedBefore() {
    const Strings pinned = KeyFile(read(entry_)).list("Desktop Entry", kPinnedKey);
    return pinned.empty() ? "" : pinned[0];
  }

  // The entry of the program that opens text files when no default is picked; empty if there is none.
  std::string presentProgram() {
    Strings folders = systemFolders();
    folders.insert(folders.begin(), applications_);
    for (const std::string& folder : folders) {
      Strings programs = KeyFile(read(folder + "/mimeapps.list")).list(kAdded, kType);
      const Strings cached = KeyFile(read(folder + "/mimeinfo.cache")).list("MIME Cache", kType);
      programs.insert(programs.end(), cached.begin(), cached.end());
      for (const std::string& program : programs) {
        if (!isOurs(program) && isInstalled(folders, program)) return program;
      }
    }
    return {};
  }

  // The id of an entry has "-" for "/" where it stands in a folder below.
  bool isInstalled(const Strings& folders, const std::string& program) {
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
      struct stat status {};
      for (std::string path = program;; path[path.find('-')] = '/') {
        std::string whole = folder;
        whole.append("/").append(path);
        if (calls_.stat(whole.c_str(), status) == 0) return true;
        if (path.find('-') == std::string::npos) return false;
      }
    });
  }

  // A quoted argument has its own escapes, and the value as a whole doubles each backslash once more.
  static std::string execArgument(const std::string& program) {
    std::string argument = "\"";
    for (const char c : program) {
      if (c == '"' || c == '`' || c == '$') argument += "\\\\";
      if (c == '\\') argument += "\\\\\\";
      if (c == '%') argument += '%';
      if (c == '\n') {
        argument += "\\n";
      } else {
        argument += c;
      }
    }
    return argument + "\"";
  }

  // Where the installed entry is taken, this one counts as deleted, opens nothing and only remembers.
  static std::string entryText(const std::string& program, const std::string& pinned, bool installed) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Version=1.0\n"
           "Name=Dravenna\n"
           "Comment=Edit the quoted texts of an NPC script\n"
           "Exec=" +
           execArgument(program) +
           " %f\n"
           "Icon=dravenna\n"
           "Terminal=false\n"
           // Without a place in the menus; the file managers show it all the same.
           + (installed ? "Hidden=true\n" : "NoDisplay=true\nMimeType=" + std::string(kType) + ";\n") +
           (pinned.empty() ? "" : std::string(kPinnedKey) + "=" + pinned + "\n");
  }

  SystemCalls& calls_;
  std::string applications_;
  std::string lists_;
  std::string entry_;
};

}  // namespace

void addDesktopEntry(SystemCalls& calls, const std::string& program) { Associations(calls).add(program); }

void removeDesktopEntry(SystemCalls& calls) { Associations(calls).remove(); }

}  // namespace dravenna::posix
