#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "platform/file_state.h"
#include "platform/text_files.h"

namespace dravenna {

// Text files that remember in what state they were read or written, to tell whether another program has changed them.
class DiskWatch : public TextFiles {
 public:
  explicit DiskWatch(TextFiles& files) : files_(files) {}

  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override;
  std::unique_ptr<TextReader> openScript(std::u16string_view path) override;
  std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) override;
  bool fileExists(std::u16string_view path) override { return files_.fileExists(path); }
  PageInUse page() const override { return files_.page(); }
  void readNextIn(int codePage) override { files_.readNextIn(codePage); }

  // Counts what was opened and written.
  std::uint64_t uses() const { return uses_; }

  // The text of a file that has been read or written since, with CR LF behind each line.
  void noteText(const std::u16string& path, std::u16string_view text);

  // Whether the file is gone, or holds another text than the one noted. Reads it once for each state that it is in.
  bool changed(const std::u16string& path);

 private:
  struct Known {
    std::optional<FileState> state;
    std::optional<std::size_t> hash;   // of the text
    std::optional<FileState> another;  // a state with another text
  };
  class Writer;

  void note(const std::u16string& path, const std::optional<FileState>& state);

  TextFiles& files_;
  std::map<std::u16string, Known> known_;
  std::uint64_t uses_ = 0;
};

}  // namespace dravenna
