// The catalogue of words: each is asked for, each placeholder is filled; the language packs hold all of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "app/principal.h"
#include "platform/system.h"
#include "settings/registry_text.h"
#include "text/text.h"

namespace dravenna {
namespace {

// A store that holds every word as "NAME %1" and remembers which were asked for.
class WordStore : public RegistryCalls {
 public:
  std::set<Text> asked;

  std::int32_t openKey(std::uint32_t, TextView path, Handle& handle) override {
    handle = path == kLangKey ? 1 : 0;
    return handle == 0;
  }
  std::int32_t createKey(std::uint32_t, TextView, Handle&) override { return 5; }
  std::int32_t queryValue(Handle handle, TextView name, std::uint32_t& type, char16_t* data,
                          std::uint32_t& size) override {
    if (handle == 0) return 2;
    asked.emplace(name);
    const Text value = Text(name) + u" %1";
    type = kRegSz;
    size = static_cast<std::uint32_t>(value.size());
    if (data != nullptr) value.copy(data, value.size());
    return 0;
  }
  std::int32_t setValue(Handle, TextView, TextView) override { return 5; }
  std::int32_t deleteKey(std::uint32_t, TextView) override { return 2; }
  std::int32_t closeKey(Handle) override { return 0; }
};

class Surroundings : public Windowing, public Process {
 public:
  std::vector<Text> boxes;
  Text pick;

  Answer messageBox(TextView text, int flags, TextView) override {
    boxes.emplace_back(text);
    return (flags & 4) != 0 ? Answer::No : Answer::Ok;
  }
  void showOpen(CommonDialog& dialog) override { dialog.FileName = pick; }
  void showSave(CommonDialog& dialog) override { dialog.FileName = pick; }
  void beep() override {}
  void pointerChanged() override {}
  void setFocus(Control) override {}
  void showSearchBox(FrmSearch&) override {}
  void unloadSearchBox(FrmSearch&) override {}
  void showColorPick(ColorPick&) override {}
  void unloadMainForm() override {}
  Text commandLine() override { return u"no such file"; }
  Text programFolder() override { return {}; }
  char16_t pathSeparator() override { return u'/'; }
  Text programName() override { return {}; }
  void shellVerbChanged(bool) override {}
};

TEST(Words, EveryOneIsUsedAndEveryPlaceholderFilled) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / "dravenna-words";
  fs::create_directories(folder);
  const auto put = [&](const char* name, std::string_view bytes) {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return (folder / name).u16string();
  };
  const auto files = makeTextFiles(codePageByName("1252"));
  WordStore store;
  Surroundings around;
  Principal form(Platform{*files, store, around, around});
  const auto open = [&](const Text& path) {
    around.pick = path;
    form.OpenScript();
  };
  const auto click = [&](std::int32_t offset) {
    form.N.setSelStart(offset);
    form.N_MouseUp();
  };
  form.Form_Load();
  form.mnu_Guardar_Click();
  open(put("empty.txt", ""));
  open(put("code.txt", "goto \"x\";\n"));
  open(put("script.txt", "mes \"one\";\ngoto \"x\";\nmes \"odd;\n"));
  form.mnu_Search_Click();
  click(19);
  click(26);
  click(6);
  form.mnu_Guardar_Click();
  form.Modified = true;
  open((folder / "script.txt").u16string());
  around.pick = (folder / "script.lxf").u16string();
  form.mnu_Export_Click();
  form.mnu_Import_Click();
  put("script.lxf", "no colon\r\n");
  form.mnu_Import_Click();
  form.Modified = true;
  form.Form_Unload();
  fs::remove_all(folder);

  for (const Setting* word : allWords()) EXPECT_TRUE(store.asked.contains(word->name)) << toUtf8(word->name);
  EXPECT_EQ(store.asked.size(), allWords().size());
  for (const TextView filled : {u"FileNotFound no such file", u"FileWithErrors 1", u"BadLXFFile 1"}) {
    EXPECT_NE(std::find(around.boxes.begin(), around.boxes.end(), filled), around.boxes.end()) << toUtf8(filled);
  }
}

char16_t accessKey(TextView caption) {
  const std::size_t mark = caption.find(u'&');
  return mark == TextView::npos ? u'\0' : foldCase(caption[mark + 1]);
}

TEST(Words, LanguagePacksAreWhole) {
  const std::vector<std::vector<const Setting*>> menus = {
      {&words::mnuFile, &words::mnuEdition, &words::mnuOptions, &words::mnuHelp},
      {&words::mnuOpen, &words::mnuSave, &words::mnuExport, &words::mnuImport, &words::mnuExit},
      {&words::mnuShellCaption, &words::mnuNavMode},
      {&words::NavSecure, &words::NavNormal, &words::NavAdvanced}};
  const std::map<std::string, const char*> pages = {{"es", "1252"}, {"pt_BR", "1252"}, {"de", "1252"},
                                                    {"fr", "1252"}, {"ru", "1251"},    {"th", "874"}};
  for (const auto& [language, pageName] : pages) {
    std::ifstream file(std::string(LANG_FOLDER) + "/" + language + ".reg", std::ios::binary);
    const RegistryText pack = parseRegistryText(std::string{std::istreambuf_iterator<char>(file), {}});
    const auto key = pack.keys.find(u"HKEY_LOCAL_MACHINE\\" + Text(kLangKey));
    ASSERT_NE(key, pack.keys.end()) << language;
    const auto& values = key->second.values;
    EXPECT_FALSE(pack.damaged) << language;
    EXPECT_EQ(values.size(), allWords().size()) << language;
    const CodePagePtr page = codePageByName(pageName);
    for (const Setting* word : allWords()) {
      const auto value = values.find(word->name);
      ASSERT_NE(value, values.end()) << language << ": " << toUtf8(word->name);
      const TextView text = value->second.string;
      std::string bytes;
      EXPECT_EQ(page->encode(text, bytes), TextView::npos) << language << ": " << toUtf8(word->name);
      EXPECT_EQ(text.find(u"%1") == TextView::npos, TextView(word->fallback).find(u"%1") == TextView::npos)
          << language << ": " << toUtf8(word->name);
    }
    for (const auto& menu : menus) {
      std::set<char16_t> keys;
      for (const Setting* word : menu) {
        const char16_t letter = accessKey(values.at(word->name).string);
        EXPECT_TRUE(letter != 0 ? keys.insert(letter).second : accessKey(word->fallback) == 0)
            << language << ": " << toUtf8(word->name);
      }
    }
  }
}

}  // namespace
}  // namespace dravenna
