#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/failure.h"
#include "platform/tree_files.h"
#include "tool/run/console.h"
#include "tool/script/codec.h"

namespace dravenna {

// The code pages of a run's files. Where nobody has named one, a file is UTF-8 when it looks like it, else in the page
// of the locale. For any thread.
class Pages {
 public:
  // `named`: every file is in `page`.
  Pages(TreeFiles& files, const CodePagePtr& page, bool named, std::u16string_view allowed,
        std::u16string_view special);

  bool named() const { return !utf8_; }
  const Encoding& usual() const { return usual_; }

  // The encoding of a script. If it has no bytes above 0x7F, `beside` decides, its exchange file; if that tells nothing
  // either, most scripts of the run.
  const Encoding& of(std::string_view script, std::string_view beside = {}) {
    return utf8_ ? of(highBytesOf(script), beside) : usual_;
  }
  // The same for a script of the run, which tell() tells of where most others have another one.
  const Encoding& take(const std::string& path, std::string_view script, std::string_view beside = {});
  // That of most scripts of the run that have such bytes. Reads them all, once.
  const Encoding& ofMost();

  // Brings a file into the code page of the one that it stands beside. Where that lacks a character, tells so and
  // leaves the bytes as they are.
  std::optional<Failure> bring(const std::string& path, std::string& bytes, const Encoding& into) const;

  void addScript(const std::string& path) { scripts_.push_back(path); }
  void tell(Console& console);

 private:
  const Encoding& of(HighBytes script, std::string_view beside);
  const Encoding& ofScript(HighBytes high) const { return utf8_ && high == HighBytes::Utf8 ? *utf8_ : usual_; }

  TreeFiles& files_;
  Encoding usual_;
  std::optional<Encoding> utf8_;  // none when the page was named
  std::vector<std::string> scripts_;
  std::once_flag counted_;
  const Encoding* most_ = nullptr;
  std::mutex mutex_;
  std::vector<std::string> taken_[2];  // scripts with bytes above 0x7F: in the usual page, in UTF-8
};

}  // namespace dravenna
