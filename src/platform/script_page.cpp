#include "platform/script_page.h"

#include <utility>

#include "platform/code_page_tables.h"
#include "platform/file_state.h"
#include "text/high_bytes.h"

namespace dravenna {

void ScriptPage::readNextIn(int number) { next_ = number == 0 ? nullptr : codePageByNumber(number); }

PageChooser ScriptPage::chooserFor(std::u16string_view path) {
  return [this, path = std::u16string(path)](std::string_view bytes, bool whole) {
    looksUtf8_ = looksUtf8(bytes);
    if (next_) {
      page_ = std::exchange(next_, nullptr);
    } else if (path != path_ && !sameFile(path, path_)) {
      page_ = looksUtf8_ && utf8_ == Utf8Scripts::Recognised ? CodePage::utf8() : usual_;
    }
    path_ = whole ? path : std::u16string();  // what is read in part decides nothing for the next time
    return page_;
  };
}

}  // namespace dravenna
