#include <iconv.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "platform/code_page_tables.h"
#include "platform/system.h"
#include "text/ascii.h"

namespace dravenna {

namespace {

class Converter {
 public:
  explicit Converter(const std::string& from) : state_(::iconv_open("UTF-16LE", from.c_str())) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (works()) ::iconv_close(state_);
  }

  bool works() const { return state_ != reinterpret_cast<iconv_t>(-1); }

  // The one UTF-16 unit that these bytes stand for, else kUndefined.
  char16_t unitOf(std::string_view bytes) {
    std::array<char, 4> from{};
    std::array<char, 16> to{};
    bytes.copy(from.data(), from.size());
    char* in = from.data();
    char* out = to.data();
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = to.size();
    const bool converted = ::iconv(state_, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
    // Pages with combining marks hold a letter back until they see what follows: this brings it out.
    const bool flushed = ::iconv(state_, nullptr, nullptr, &out, &outLeft) != static_cast<std::size_t>(-1);
    if (!converted || !flushed || inLeft != 0 || to.size() - outLeft != 2) return CodePage::kUndefined;
    return static_cast<char16_t>(static_cast<unsigned char>(to[0]) | static_cast<unsigned char>(to[1]) << 8);
  }

 private:
  iconv_t state_;
};

struct LanguagePage {
  std::string_view language;
  int page;
};

// Languages that are not written in the Western page.
constexpr LanguagePage kLanguagePages[] = {
    {"th", 874},  {"ja", 932},   {"ko", 949},                                               // Far East
    {"bs", 1250}, {"cs", 1250},  {"hr", 1250},  {"hu", 1250}, {"pl", 1250}, {"ro", 1250},   // Central Europe
    {"sk", 1250}, {"sl", 1250},  {"sq", 1250},  {"tk", 1250},                               //
    {"ba", 1251}, {"be", 1251},  {"bg", 1251},  {"ce", 1251}, {"cv", 1251}, {"kk", 1251},   // Cyrillic
    {"ky", 1251}, {"mk", 1251},  {"mn", 1251},  {"os", 1251}, {"ru", 1251}, {"sah", 1251},  //
    {"sr", 1251}, {"tg", 1251},  {"tt", 1251},  {"uk", 1251},                               //
    {"el", 1253},                                                                           // Greek
    {"az", 1254}, {"crh", 1254}, {"ku", 1254},  {"tr", 1254}, {"uz", 1254},                 // Turkish
    {"he", 1255}, {"iw", 1255},  {"yi", 1255},                                              // Hebrew
    {"ar", 1256}, {"ckb", 1256}, {"fa", 1256},  {"ps", 1256}, {"sd", 1256}, {"ug", 1256},   // Arabic
    {"ur", 1256},                                                                           //
    {"et", 1257}, {"lt", 1257},  {"ltg", 1257}, {"lv", 1257},                               // Baltic
    {"vi", 1258},
};

// The page of a locale name such as "pt_BR.UTF-8", "sr_RS@latin" or "C".
int pageOfLocale(const std::string& locale) {
  const std::string name = lowerAsciiOf(locale);
  const std::string language = name.substr(0, name.find_first_of("_.@"));
  const std::string modifier = name.find('@') == std::string::npos ? "" : name.substr(name.find('@') + 1);
  if (language == "zh") {
    const std::string territory = name.size() >= 5 && name[2] == '_' ? name.substr(3, 2) : "";
    return territory == "tw" || territory == "hk" || territory == "mo" ? 950 : 936;
  }
  for (const LanguagePage& entry : kLanguagePages) {
    if (entry.language != language) continue;
    if (entry.page == 1251 && modifier == "latin") return 1250;
    if (modifier == "cyrillic") return 1251;
    return entry.page;
  }
  return 1252;
}

}  // namespace

CharacterDecoder systemDecoder(int number) {
  const auto converter = std::make_shared<Converter>("CP" + std::to_string(number));
  if (!converter->works()) return {};
  return [converter](std::string_view bytes) { return converter->unitOf(bytes); };
}

std::string environmentVariable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool systemHasCodePage() { return false; }

CodePagePtr systemCodePage() {
  if (CodePagePtr page = codePageByName(environmentVariable("DRAVENNA_CODEPAGE"))) return page;
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string locale = environmentVariable(name);
    if (locale.empty()) continue;
    if (CodePagePtr page = codePageByNumber(pageOfLocale(locale))) return page;
    break;
  }
  return codePageByNumber(1252);
}

}  // namespace dravenna
