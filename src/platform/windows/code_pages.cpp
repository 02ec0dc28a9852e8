#include "platform/code_page_tables.h"
#include "platform/system.h"
#include "platform/windows/system_calls.h"
#include "text/text.h"

namespace dravenna {

namespace {

// What the system gives for bytes that its page leaves undefined: the control of the same number, or a place in the
// private area. A page of pairs has user-defined characters there, which are pairs.
bool standsForNothing(std::string_view bytes, wchar_t unit) {
  if (bytes.size() != 1) return false;
  return unit == static_cast<unsigned char>(bytes[0]) ? unit < 0xA0 : unit >= 0xE000 && unit <= 0xF8FF;
}

}  // namespace

CharacterDecoder systemDecoder(int number) {
  const auto page = static_cast<UINT>(number);
  if (::IsValidCodePage(page) == 0) return {};
  return [page](std::string_view bytes) {
    wchar_t units[4];
    const int count =
        ::MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), units, 4);
    if (count != 1 || standsForNothing(bytes, units[0])) return CodePage::kUndefined;
    return static_cast<char16_t>(units[0]);
  };
}

std::string environmentVariable(const char* name) {
  return toUtf8(windows::environment(windows::toWide(fromUtf8(name)).c_str()));
}

bool systemHasCodePage() { return true; }

CodePagePtr systemCodePage() {
  if (CodePagePtr page = codePageByName(environmentVariable("DRAVENNA_CODEPAGE"))) return page;
  if (CodePagePtr page = codePageByNumber(static_cast<int>(::GetACP()))) return page;
  return codePageByNumber(1252);
}

}  // namespace dravenna
