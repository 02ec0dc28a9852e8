#include "platform/process.h"

#include <ctime>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/desktop_entry.h"
#include "platform/posix/files.h"
#include "platform/posix/recent_files.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr char16_t kProgramName[] = u"/dravenna";

class PosixProcess : public Process {
 public:
  explicit PosixProcess(std::vector<std::u16string> arguments) : arguments_(std::move(arguments)) {}

  std::u16string commandLine() override {
    std::u16string line;
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
      if (i > 0) line += u' ';
      line += arguments_[i];
    }
    return line;
  }

  std::u16string programFolder() override {
    std::string program;
    if (posix::realSystemCalls().readlink("/proc/self/exe", program) < 0) return u".";
    return fromUtf8(posix::folderOf(program));
  }

  char16_t pathSeparator() override { return u'/'; }

  std::u16string programName() override { return kProgramName; }

  void shellVerbChanged(bool on) override {
    try {
      if (on) {
        posix::addDesktopEntry(posix::realSystemCalls(), posix::pathBytes(programFolder() + kProgramName));
      } else {
        posix::removeDesktopEntry(posix::realSystemCalls());
      }
    } catch (const std::exception&) {
      // The registry is the record of the state; the entry is a convenience.
    }
  }

  void documentOpened(std::u16string_view path) override {
    try {
      const std::time_t now = std::time(nullptr);
      std::tm utc{};
      char text[sizeof "2026-11-25T12:00:00Z"] = "";
      if (::gmtime_r(&now, &utc) == nullptr) return;
      std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
      posix::addRecentFile(posix::realSystemCalls(), posix::pathBytes(path), text);
    } catch (const std::exception&) {
      // Nothing of the program depends on the list.
    }
  }

 private:
  std::vector<std::u16string> arguments_;
};

}  // namespace

std::vector<std::string> commandWords(int argc, char** argv) {
  return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::unique_ptr<Process> makeProcess(std::vector<std::u16string> arguments) {
  return std::make_unique<PosixProcess>(std::move(arguments));
}

}  // namespace dravenna
