#include "platform/process.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/system.h"
#include "platform/windows/files.h"
#include "text/text.h"

#include <shellapi.h>
#include <shlobj.h>

namespace dravenna {

namespace {

constexpr std::u16string_view kBlanks = u" \t";

// What stands behind the first word of a command line. A quote mark opens or closes a stretch in which blanks part
// nothing.
std::u16string_view withoutFirstWord(std::u16string_view line) {
  bool quoted = false;
  while (!line.empty() && (quoted || kBlanks.find(line.front()) == std::u16string_view::npos)) {
    if (line.front() == u'"') quoted = !quoted;
    line.remove_prefix(1);
  }
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  return line;
}

std::vector<std::u16string> wordsBehindProgram() {
  int count = 0;
  wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::u16string> all;
  if (words == nullptr) return all;
  for (int i = 1; i < count; ++i) all.push_back(windows::fromWide(words[i]));
  ::LocalFree(words);
  return all;
}

class WindowsProcess : public Process {
 public:
  explicit WindowsProcess(std::vector<std::u16string> arguments) : arguments_(std::move(arguments)) {}

  std::u16string commandLine() override {
    const std::u16string whole = windows::fromWide(::GetCommandLineW());
    std::u16string_view line = withoutFirstWord(whole);
    const std::size_t count = wordsBehindProgram().size();
    for (std::size_t options = count > arguments_.size() ? count - arguments_.size() : 0; options > 0; --options) {
      line = withoutFirstWord(line);
    }
    const std::size_t last = line.find_last_not_of(kBlanks);
    return std::u16string(line.substr(0, last == std::u16string_view::npos ? 0 : last + 1));
  }

  std::u16string programFolder() override {
    const std::wstring file = windows::programFile();
    return windows::fromWide(file).substr(0, file.rfind(L'\\'));
  }

  char16_t pathSeparator() override { return u'\\'; }

  std::u16string programName() override { return u"\\dravenna.exe"; }

  void shellVerbChanged(bool) override { ::SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr); }

  void documentOpened(std::u16string_view path) override {
    ::SHAddToRecentDocs(SHARD_PATHW, windows::toWide(path).c_str());
  }

 private:
  std::vector<std::u16string> arguments_;  // those that are the form's
};

}  // namespace

std::vector<std::string> commandWords(int, char**) {
  std::vector<std::string> words;
  for (std::u16string word : wordsBehindProgram()) {
    std::replace(word.begin(), word.end(), u'\\', u'/');
    words.push_back(toUtf8(word));
  }
  return words;
}

std::unique_ptr<Process> makeProcess(std::vector<std::u16string> arguments) {
  return std::make_unique<WindowsProcess>(std::move(arguments));
}

}  // namespace dravenna
