#include "platform/script_page.h"

#include <array>
#include <cstring>

#include "platform/code_page_tables.h"
#include "platform/failure.h"
#include "platform/file_state.h"
#include "text/high_bytes.h"

namespace dravenna {

namespace {

HighBytes highBytesIn(ByteSource& source) {
  std::array<char, 65536> buffer;
  std::size_t carried = 0;  // bytes at the front of the buffer that wait for the rest of their character
  HighBytes all = HighBytes::None;
  for (std::size_t count = 1; count != 0 && all != HighBytes::Other;) {
    count = source.read(buffer.data() + carried, buffer.size() - carried);
    const std::string_view bytes(buffer.data(), carried + count);
    carried = count == 0 ? 0 : CodePage::utf8()->incompleteTail(bytes);
    all = both(all, highBytesOf(bytes.substr(0, bytes.size() - carried)));
    std::memmove(buffer.data(), bytes.data() + bytes.size() - carried, carried);
  }
  return all;
}

}  // namespace

bool ScriptPage::looksUtf8() const {
  if (looksUtf8_) return *looksUtf8_;
  looksUtf8_ = false;
  const std::optional<FileState> state = fileState(path_);
  if (!state || state->size == 0) return false;  // nothing, or a pipe: what that gives comes only once
  // A failure is told by whoever reads it next.
  static_cast<void>(attempt([&] { looksUtf8_ = highBytesIn(*open_(path_)) == HighBytes::Utf8; }));
  return *looksUtf8_;
}

PageInUse ScriptPage::inUse() const { return {page_->number(), !page_->isUtf8() && looksUtf8()}; }

void ScriptPage::readNextIn(int number) { next_ = number == 0 ? nullptr : codePageByNumber(number); }

void ScriptPage::take(std::u16string_view path) {
  CodePagePtr page = std::exchange(next_, nullptr);
  if (!page && (path == path_ || sameFile(path, path_))) page = page_;
  if (!page && utf8_ == Utf8Scripts::AsAllOthers) page = usual_;
  path_ = path;
  looksUtf8_.reset();
  page_ = page ? page : looksUtf8() ? CodePage::utf8() : usual_;
}

}  // namespace dravenna
