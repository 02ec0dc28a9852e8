#include "tool/run/pages.h"

#include <fmt/core.h>

#include <algorithm>

#include "platform/terminal.h"
#include "text/text.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostTold = 20;  // on a terminal

std::string nameOf(const Encoding& encoding) {
  const CodePage& page = encoding.codec.page();
  return page.isUtf8() ? "UTF-8" : fmt::format("code page {}", page.number());
}

}  // namespace

Pages::Pages(TreeFiles& files, const CodePagePtr& page, bool named, std::u16string_view allowed,
             std::u16string_view special)
    : files_(files), usual_(page, allowed, special) {
  if (!named && !page->isUtf8()) utf8_.emplace(CodePage::utf8(), allowed, special);
}

const Encoding& Pages::of(HighBytes script, std::string_view beside) {
  if (script != HighBytes::None) return ofScript(script);
  const HighBytes high = highBytesOf(beside);
  // A short translation may have one letter that is not ASCII, and all text is alike where there is none.
  return high == HighBytes::OneSequence ? ofMost() : ofScript(high);
}

const Encoding& Pages::take(const std::string& path, std::string_view script, std::string_view beside) {
  if (!utf8_) return usual_;
  const HighBytes high = highBytesOf(script);
  const Encoding& in = of(high, beside);
  if (high == HighBytes::None) return in;
  const std::lock_guard lock(mutex_);
  taken_[&in == &usual_ ? 0 : 1].push_back(path);
  return in;
}

const Encoding& Pages::ofMost() {
  if (!utf8_) return usual_;
  std::call_once(counted_, [this] {
    std::size_t utf8 = 0;
    std::size_t others = 0;
    std::string bytes;
    for (const std::string& path : scripts_) {
      if (path == "-" || attempt([&] { files_.readWhole(path, bytes); })) continue;
      const HighBytes high = highBytesOf(bytes);
      if (high != HighBytes::None) ++(high == HighBytes::Utf8 ? utf8 : others);
    }
    most_ = utf8 > others ? &*utf8_ : &usual_;
  });
  return *most_;
}

std::optional<Failure> Pages::bring(const std::string& path, std::string& bytes, const Encoding& into) const {
  const HighBytes high = highBytesOf(bytes);
  const Encoding& own = ofScript(high);
  if (!utf8_ || high == HighBytes::None || high == HighBytes::OneSequence || &own == &into) return std::nullopt;
  const std::u16string text = own.codec.page().decode(bytes);
  std::string out;
  const std::size_t bad = into.codec.page().encode(text, out);
  if (bad != std::u16string::npos) {
    return Failure(fromUtf8(fmt::format("{}: {} has no U+{:04X}; --codepage names another", path, nameOf(into),
                                        static_cast<unsigned>(readUtf16(text, bad).code))));
  }
  bytes.swap(out);
  return std::nullopt;
}

void Pages::tell(Console& console) {
  const bool mostUtf8 = taken_[1].size() > taken_[0].size();
  std::vector<std::string>& others = taken_[mostUtf8 ? 0 : 1];
  if (!utf8_ || others.empty() || taken_[mostUtf8 ? 1 : 0].empty()) return;
  const std::string page = nameOf(mostUtf8 ? usual_ : *utf8_);
  const std::string most = nameOf(mostUtf8 ? *utf8_ : usual_);
  std::sort(others.begin(), others.end());
  others.erase(std::unique(others.begin(), others.end()), others.end());
  const std::size_t told = errorIsTerminal() ? kMostTold : others.size();
  for (std::size_t i = 0; i < others.size() && i < told; ++i) {
    console.warning(fmt::format("{}: read in {}, others of the run in {}", shownName(others[i]), page, most));
  }
  if (others.size() > told) {
    console.warning(fmt::format("and {} more read in {}; `2> FILE` has them all", others.size() - told, page));
  }
}

}  // namespace dravenna
