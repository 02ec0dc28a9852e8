#pragma once

#include <algorithm>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "platform/scratch_folder.h"
#include "platform/system.h"
#include "support/driver.h"
#include "support/memory_registry.h"
#include "support/scenario.h"
#include "text/text.h"

namespace dravenna {

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline std::int64_t wholeNumber(std::u16string_view word) {
  const std::string text = toUtf8(word);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("-0x");
  char* end = nullptr;
  const std::int64_t number = std::strtoll(text.c_str(), &end, hexadecimal ? 16 : 10);
  if (text.empty() || *end != '\0') throw ScenarioError{0, "not a number: " + text};
  return number;
}

// A run of a scenario: what it works on, and the words of the directive at hand.
class ScenarioState {
 public:
  ScenarioState(std::string name, DriverFactory makeDriver)
      : name_(std::move(name)), makeDriver_(std::move(makeDriver)) {
    std::filesystem::create_directory(folder_.file("files"));
  }

 protected:
  // The directive, and what of it has been read.
  struct Reading {
    const Directive* directive = nullptr;
    std::size_t word = 0;
    bool block = false;
  };

  bool more() const { return reading_.word < reading_.directive->words.size(); }
  const Word& take(const char* what) {
    if (!more()) throw ScenarioError{0, std::string("missing: ") + what};
    return reading_.directive->words[reading_.word++];
  }
  std::string lastWord() const { return toUtf8(reading_.directive->words[reading_.word - 1].text); }
  bool takeIf(std::u16string_view bare) {
    const bool there = more() && reading_.directive->words[reading_.word].is(bare);
    reading_.word += there ? 1 : 0;
    return there;
  }
  std::u16string takeText(const char* what) { return filled(take(what).text); }
  // A file name: in the scenario's folder unless it is absolute.
  std::filesystem::path takePath() { return directory_ / std::filesystem::path(takeText("NAME")); }
  std::int32_t takeNumber(const char* what) { return static_cast<std::int32_t>(wholeNumber(take(what).text)); }
  // A number behind a sign that stands in front of it.
  std::int32_t takeNumber(const char* what, char16_t sign) {
    const Word& word = take(what);
    if (word.quoted || !word.text.starts_with(sign)) throw ScenarioError{0, "not understood: " + toUtf8(word.text)};
    return static_cast<std::int32_t>(wholeNumber(word.text.substr(1)));
  }
  template <class Choice>
  Choice takeChoice(const std::map<std::u16string_view, Choice>& choices) {
    const auto choice = choices.find(take("a word").text);
    std::string wanted;
    for (const auto& [name, _] : choices) wanted += ' ' + toUtf8(name);
    if (choice == choices.end()) throw ScenarioError{0, "one of these is wanted:" + wanted};
    return choice->second;
  }
  std::uint32_t takeRoot() {
    return takeChoice<std::uint32_t>({{u"HKLM", HKEY_LOCAL_MACHINE_ID}, {u"HKCR", HKEY_CLASSES_ROOT_ID}});
  }
  std::u16string takeBlock(std::u16string_view lineEnd = u"\r\n") {
    reading_.block = true;
    std::u16string text;
    for (const std::u16string& line : reading_.directive->block) (text += line) += lineEnd;
    return text;
  }
  // The bytes of a file: behind `raw`, or the block.
  std::string takeBytes() {
    const bool lf = takeIf(u"lf");
    std::string bytes;
    if (takeIf(u"raw")) {
      for (const char16_t unit : takeText("STRING")) {
        if (unit > 0xFF) throw ScenarioError{0, "raw holds code units up to 255"};
        bytes += static_cast<char>(unit);
      }
    } else if (codePage_->encode(takeBlock(lf ? u"\n" : u"\r\n"), bytes) != std::u16string::npos) {
      throw ScenarioError{0, "the block does not fit the code page"};
    }
    return bytes;
  }
  // {program} is the program as the shell verb names it; the path behind a {dir} has the system's separators.
  std::u16string filled(std::u16string_view text) {
    std::u16string line = replaceAll(text, u"{program}", u"{dir}" + process_.programName());
    for (std::size_t at = line.find(u"{dir}"); at != line.npos; at = line.find(u"{dir}", at + 1)) {
      const auto path = line.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end =
          line.begin() + static_cast<std::ptrdiff_t>(std::min(line.find_first_of(u"\"'\r\n]", at), line.size()));
      std::replace(path, end, u'/', process_.pathSeparator());
    }
    return replaceAll(line, u"{dir}", directory_.u16string());
  }

  Driver& driver() {
    if (driver_ == nullptr) throw ScenarioError{0, "there is no start before it"};
    return *driver_;
  }
  // For a step in the main window.
  Driver& inMain() {
    driver().mainForm();
    return *driver_;
  }

  // Line 0 is that of the directive at hand.
  void report(int line, const std::string& text) {
    const int at = line != 0 ? line : reading_.directive != nullptr ? reading_.directive->line : 1;
    const std::string reason = std::to_string(at) + ": " + text;
    const bool wanted = !reasons_.empty() && reasons_.front() == reason;
    if (!reasons_.empty()) reasons_.pop_front();
    if (wanted) return;
    passed_ = false;
    std::printf("%s:%s\n", name_.c_str(), reason.c_str());
  }

  std::string name_;
  DriverFactory makeDriver_;
  std::vector<Directive> directives_;
  std::size_t next_ = 0;
  Reading reading_;
  std::deque<std::string> reasons_;  // that it must fail for, in this order
  bool passed_ = true;

  ScratchFolder folder_;
  std::filesystem::path directory_ = folder_.file("files").make_preferred();
  CodePagePtr codePage_ = codePageByName("1252");
  Stage stage_;
  std::deque<std::pair<ShownBox, int>> boxLines_;  // shown and not expected yet, with the line of the step
  MemoryRegistry calls_;
  ScriptedProcess process_{directory_.u16string()};
  FailingTextFiles files_{makeTextFiles(codePage_)};
  std::unique_ptr<Driver> driver_;
};

}  // namespace dravenna
