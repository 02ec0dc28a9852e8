#include <algorithm>
#include <string>
#include <vector>

#include "platform/code_page_tables.h"
#include "platform/system.h"
#include "platform/windows/system_calls.h"

namespace dravenna {

namespace {

using windows::toWide;

constexpr std::size_t kLongestPath = 8000;  // units; the system's own limit lies above what it takes in one call

std::int32_t statusOf(LSTATUS status) { return static_cast<std::int32_t>(status); }

// Strings are those that the calls for 8-bit text give and take, in the system's code page. A string that does not fit
// into it is stored as it is, where those calls would put question marks: the path of the last script is not lost.
class WindowsRegistry : public RegistryCalls {
 public:
  explicit WindowsRegistry(std::u16string_view below) : below_(below), page_(codePageByNumber(int(::GetACP()))) {}

  std::int32_t RegOpenKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    handle = 0;
    if (!isPath(path)) return ERROR_INVALID_PARAMETER;
    HKEY key = nullptr;
    const LSTATUS status = ::RegOpenKeyW(rootKey(root), placeOf(root, path).c_str(), &key);
    if (status == ERROR_SUCCESS) handle = reinterpret_cast<Handle>(key);
    return statusOf(status);
  }

  std::int32_t RegCreateKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    handle = 0;
    if (!isPath(path)) return ERROR_INVALID_PARAMETER;
    HKEY key = nullptr;
    const LSTATUS status = ::RegCreateKeyW(rootKey(root), placeOf(root, path).c_str(), &key);
    if (status == ERROR_SUCCESS) handle = reinterpret_cast<Handle>(key);
    return statusOf(status);
  }

  std::int32_t RegQueryValueExA(Handle handle, std::u16string_view name, std::uint32_t& type, char16_t* data,
                                std::uint32_t& size) override {
    if (handle == 0) return ERROR_INVALID_HANDLE;
    DWORD kind = 0;
    std::vector<wchar_t> units;
    const LSTATUS status = read(reinterpret_cast<HKEY>(handle), toWide(name), kind, units);
    if (status != ERROR_SUCCESS) return statusOf(status);
    type = kind;
    const std::u16string text = inCodePage({units.data(), units.size()});
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::uint32_t count = data == nullptr ? length : std::min(size, length);
    if (data != nullptr) text.copy(data, count);
    size = count;
    return ERROR_SUCCESS;
  }

  std::int32_t RegSetValueExA(Handle handle, std::u16string_view name, std::u16string_view data) override {
    if (handle == 0) return ERROR_INVALID_HANDLE;
    const std::wstring units = asTheSystemDecodes(data);
    // The terminator that the string has behind its end is stored too, as the system does it for 8-bit text.
    const auto bytes = static_cast<DWORD>((units.size() + 1) * sizeof(wchar_t));
    return statusOf(::RegSetValueExW(reinterpret_cast<HKEY>(handle), toWide(name).c_str(), 0, REG_SZ,
                                     reinterpret_cast<const BYTE*>(units.c_str()), bytes));
  }

  std::int32_t RegDeleteKeyA(std::uint32_t root, std::u16string_view path) override {
    if (!isPath(path) || path.empty()) return ERROR_INVALID_PARAMETER;
    return statusOf(::RegDeleteKeyW(rootKey(root), placeOf(root, path).c_str()));
  }

  std::int32_t RegCloseKey(Handle handle) override {
    return handle == 0 ? std::int32_t{ERROR_INVALID_HANDLE} : statusOf(::RegCloseKey(reinterpret_cast<HKEY>(handle)));
  }

 private:
  static bool isPath(std::u16string_view path) {
    return path.size() <= kLongestPath && path.find(u'\0') == std::u16string_view::npos;
  }

  HKEY rootKey(std::uint32_t root) const {
    if (!below_.empty()) return HKEY_CURRENT_USER;
    return root == HKEY_CLASSES_ROOT_ID ? HKEY_CLASSES_ROOT : HKEY_LOCAL_MACHINE;
  }

  std::wstring placeOf(std::uint32_t root, std::u16string_view path) const {
    if (below_.empty()) return toWide(path);
    std::wstring place =
        toWide(below_) + (root == HKEY_CLASSES_ROOT_ID ? L"\\HKEY_CLASSES_ROOT" : L"\\HKEY_LOCAL_MACHINE");
    return path.empty() ? place : place + L"\\" + toWide(path);
  }

  // All units of a value, those of other types too. Another program may make it longer between two calls.
  static LSTATUS read(HKEY key, const std::wstring& name, DWORD& type, std::vector<wchar_t>& units) {
    for (DWORD bytes = 256;;) {
      units.resize((bytes + 1) / sizeof(wchar_t));
      bytes = static_cast<DWORD>(units.size() * sizeof(wchar_t));
      const LSTATUS status =
          ::RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(units.data()), &bytes);
      if (status == ERROR_SUCCESS) units.resize(bytes / sizeof(wchar_t));
      if (status != ERROR_MORE_DATA) return status;
    }
  }

  // The text that the 8-bit call would give; for what does not fit into the page, the string itself.
  std::u16string inCodePage(std::wstring_view units) const {
    if (units.empty() || !page_ || page_->isUtf8()) return windows::fromWide(units);
    const auto length = static_cast<int>(units.size());
    std::string bytes(2 * units.size(), '\0');
    BOOL replaced = FALSE;
    const int count = ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, units.data(), length, bytes.data(),
                                            static_cast<int>(bytes.size()), nullptr, &replaced);
    if (count <= 0 || replaced != FALSE) return windows::fromWide(units);
    bytes.resize(static_cast<std::size_t>(count));
    return page_->decode(bytes);
  }

  // What the system would store for the text's bytes; for what does not fit into the page, the text itself.
  std::wstring asTheSystemDecodes(std::u16string_view text) const {
    std::string bytes;
    if (text.empty() || !page_ || page_->isUtf8() || page_->encode(text, bytes) != std::u16string_view::npos) {
      return toWide(text);
    }
    std::wstring units(text.size() + bytes.size(), L'\0');
    const int count = ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), units.data(),
                                            static_cast<int>(units.size()));
    if (count <= 0) return toWide(text);
    units.resize(static_cast<std::size_t>(count));
    return units;
  }

  std::u16string below_;  // a key of the user that stands for both roots; empty for the roots themselves
  CodePagePtr page_;
};

}  // namespace

std::unique_ptr<RegistryCalls> makeRegistry() {
  return std::make_unique<WindowsRegistry>(windows::environment(L"DRAVENNA_REGISTRY"));
}

}  // namespace dravenna
