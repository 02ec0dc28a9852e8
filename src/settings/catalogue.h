#pragma once

#include <span>
#include <string>

#include "settings/registry.h"

// All that the program keeps in the settings store, and every word that it says: name, default, use.
namespace dravenna {

inline constexpr char16_t kSettingsKey[] = u"Software\\Halvex\\Dravenna";
inline constexpr char16_t kLangKey[] = u"Software\\Halvex\\Dravenna\\Lang";
// What the window adds on its own.
inline constexpr char16_t kDesktopKey[] = u"Software\\Halvex\\Dravenna\\Desktop";
inline constexpr char16_t kDesktopLangKey[] = u"Software\\Halvex\\Dravenna\\Desktop\\Lang";
// The command lists stand under a key of another spelling.
inline constexpr char16_t kCommandsKey[] = u"Software\\Halvex\\Dravanne\\Lang";
inline constexpr char16_t kVerbKey[] = u"txtfile\\shell\\Dravenna";
inline constexpr char16_t kVerbCommandKey[] = u"txtfile\\shell\\Dravenna\\command";

// A value in the store with the default that holds when it is missing.
struct Setting {
  const char16_t* key;
  const char16_t* name;
  const char16_t* fallback;
  const char16_t* use;
};

namespace settings {
extern const Setting File, NavMode, LastSearch, AllowedCommands, SpecialAllowedCommands, StatusPlace, CodePage, Zoom;
}

// The localised words, under kLangKey.
namespace words {
extern const Setting mnuFile, mnuOpen, mnuExport, mnuImport, mnuSave, mnuExit, mnuEdition, mnuSearch, mnuOptions,
    mnuShellCaption, mnuHelp, mnuAbout, mnuNavMode, NavSecure, NavNormal, NavAdvanced, btnNext, btnPrev, btnClose,
    dialogOpen, mnuSaveBeforeOpen, SaveBeforeExit, NoFileSelected, FileSaved, FileNotFound, NoTextToEdit, NothingToEdit,
    FileWithErrors, LogicalContextWarning, LineWithErrors, LXFCreated, ImportWarning, BadLXFFile, ImportFinish;
}

// Those under kDesktopLangKey.
namespace desktop_words {
#define WORD(name, fallback, use) extern const Setting name;
#include "settings/desktop_words.inc"
#undef WORD
}  // namespace desktop_words

// All 34 words under kLangKey, and those under kDesktopLangKey, for whoever makes a language pack.
std::span<const Setting* const> allWords();
std::span<const Setting* const> allDesktopWords();

// The value from the store, or the default.
std::u16string read(Registry& registry, const Setting& setting);

// The same with every "%1" replaced.
std::u16string readFilled(Registry& registry, const Setting& setting, std::u16string_view filling);

void write(Registry& registry, const Setting& setting, std::u16string_view value);

// A text read as a number: what is none, or lies outside a 16-bit number, counts as 0.
double numberIn(std::u16string_view text);

}  // namespace dravenna
