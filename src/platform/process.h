#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// The running process and the shell around it.
class Process {
 public:
  virtual ~Process() = default;

  // What stood behind the program's name, as one string, quote marks included.
  virtual std::u16string commandLine() = 0;

  // Folder of the running program, without a closing separator.
  virtual std::u16string programFolder() = 0;

  // `\` or `/`.
  virtual char16_t pathSeparator() = 0;

  // The program's file name as the shell verb's command line has it behind the folder: "\dravenna.exe" or "/dravenna".
  virtual std::u16string programName() = 0;

  // The verb for text files has been turned on or off in the registry: a shell that does not look there is told.
  // Never fails.
  virtual void shellVerbChanged(bool on) = 0;

  // A file (its absolute path) has been opened: the desktop's list of recent files is told. Never fails.
  virtual void documentOpened(std::u16string_view path) { static_cast<void>(path); }
};

// The words behind the program's name, from what main() was given: bytes where arguments are bytes, else UTF-8; a `\`
// that parts the names of a path is `/` here.
std::vector<std::string> commandWords(int argc, char** argv);

}  // namespace dravenna
