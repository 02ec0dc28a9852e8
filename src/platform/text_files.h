#pragma once

#include <memory>
#include <string>
#include <string_view>

// Text files in a code page. Every operation throws Failure with a true description when it fails.
// Paths are UTF-16; a platform whose paths are bytes keeps undecodable ones as lone low surrogates 0xDC00 + byte.
namespace dravenna {

class TextReader {
 public:
  virtual ~TextReader() = default;  // closes without a failure

  // Size of the file in bytes when it was opened; 0 if it is not known. A hint for reserving memory.
  virtual std::size_t sizeHint() const { return 0; }

  virtual bool AtEndOfStream() = 0;

  // The next line without its end. CR LF and LF end a line; a lone CR is a character of it. The last line needs no
  // end. The view holds until the next call. Fails at the end of the stream.
  virtual std::u16string_view ReadLine() = 0;

  // All that has not been read, line ends as they are. Fails at the end of the stream, and so on an empty file.
  virtual std::u16string ReadAll() = 0;

  virtual void Close() = 0;
};

class TextWriter {
 public:
  virtual ~TextWriter() = default;  // without Close(): Replace leaves the old file, InPlace what was written so far

  // Fails on a character that the code page cannot hold, before any of this text is written; the description names
  // the character and its line in the file (from 1).
  virtual void Write(std::u16string_view text) = 0;

  // The text and CR LF.
  virtual void WriteLine(std::u16string_view text) = 0;

  virtual void Close() = 0;
};

enum class Writing {
  InPlace,  // empties or makes the file at once and writes into it
  Replace,  // writes beside it; Close() flushes to disk and renames over the target, keeping its permission bits and
            // following symbolic links. Until then the old contents are whole. Refuses a read-only target at once.
};

// In which code page files are read and written.
struct PageInUse {
  int number = 0;          // 0 where none is known
  bool looksUtf8 = false;  // by its bytes, the script is UTF-8, whatever it is read in
};

class TextFiles {
 public:
  virtual ~TextFiles() = default;

  // For reading. Fails if the file is missing, unreadable or a folder.
  virtual std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) = 0;

  // The same for the script that is to be edited. Once it is read, all files are read and written in its page (see
  // ScriptPage).
  virtual std::unique_ptr<TextReader> openScript(std::u16string_view path) = 0;

  virtual std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) = 0;

  virtual PageInUse page() const { return {}; }

  // The user wants the script that is opened next in this page, whatever else would decide; 0 takes the wish back.
  virtual void readNextIn(int) {}

  // True for an existing file that is no folder. Never fails.
  virtual bool fileExists(std::u16string_view path) = 0;
};

}  // namespace dravenna
