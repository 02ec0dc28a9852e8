#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "editing/error_lines.h"
#include "editing/text_count.h"
#include "settings/catalogue.h"

namespace dravenna {

class DiskWatch;
class Principal;

// What the status place says of the form. It only ever reads: no told flow knows of it.
class Status {
 public:
  // Each is empty where there is nothing to say.
  struct Parts {
    std::u16string rescued, notice, text, line, page;
    std::u16string pageDoubt;  // why the page may be the wrong one
    std::u16string modified, errors;
    bool operator==(const Parts&) const = default;
  };

  // `disk` are the files that the form works on.
  Status(Principal& form, DiskWatch& disk) : form_(form), disk_(disk) {}

  // Whether the settings want it; they are asked once.
  bool wanted();

  // What was found is told in any case.
  Parts parts();

  // The name of a code page for the user; empty for 0.
  static std::u16string pageName(int number);

  // What the colours tell the eye, in words. Of the current text: its class, its number, its line, and whether the box
  // holds something to commit, behind what is new while the user has not gone on; without a script, how to begin. Of a
  // place of N: the class of the character there, and the line of the caret.
  std::u16string spokenText();
  std::u16string spokenPlace(std::size_t offset);
  std::u16string spokenLine(std::size_t offset);  // class, number and text of the line that begins there

  // How many finds of the rescue folder wait.
  void setRescued(std::size_t finds);

  // Looks whether another program has changed the script's file.
  void lookAtDisk();

  // A notice that stands until the next file is opened or written.
  void setNotice(std::u16string notice);
  void withdraw(const std::u16string& notice);  // if it still stands

 private:
  struct Words {
    std::u16string text, line, modified, errors, notCommitted, looksUtf8, bytesLacked;
    std::array<std::u16string, 7> classes;  // in the order of the segments
  };
  const Words& words();
  std::u16string pageDoubt();
  std::u16string className(std::size_t offset);
  std::u16string lineOf(std::size_t number);
  TextCount::Place place();
  void setNews(const std::u16string& news);

  Principal& form_;
  DiskWatch& disk_;
  TextCount count_;
  ErrorLines errorLines_;
  std::optional<bool> wanted_;
  std::optional<Words> words_;  // read at the first use: a step does not go to the store
  std::u16string notice_, rescued_;
  std::size_t finds_ = 0;
  std::uint64_t noticeUses_ = 0;
  std::u16string news_;  // to be spoken at newsIni_, as long as no file is used
  std::int32_t newsIni_ = 0;
  std::uint64_t newsUses_ = 0;
  std::size_t lacked_ = 0;  // characters of N that are bytes without a meaning, after the last use of the disk
  std::uint64_t lackedUses_ = 0;
};

}  // namespace dravenna
