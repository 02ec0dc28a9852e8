// The catalogue of words: each is asked for, each placeholder is filled; the language packs hold all of them.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "platform/registry_text.h"
#include "platform/scratch_folder.h"
#include "platform/system.h"
#include "support/memory_registry.h"
#include "support/quiet_form.h"
#include "text/text.h"

namespace dravenna {
namespace {

TEST(Words, EveryOneIsUsedAndEveryPlaceholderFilled) {
  const ScratchFolder folder;
  const auto put = [&](const char* name, std::string_view bytes) { return folder.put(name, bytes).u16string(); };
  auto owned = std::make_unique<MemoryRegistry>();
  MemoryRegistry& store = *owned;
  for (const Setting* word : allWords()) {
    Registry(store).SetRegValue(HKEY_LOCAL_MACHINE_ID, kLangKey, word->name, word->name + Text(u" %1"));
  }
  store.full = true;
  QuietForm form(makeTextFiles(codePageByName("1252")), std::move(owned), u"no such file");
  const auto open = [&](const Text& path) {
    form.stage.answers = {Answer::No};
    form.stage.picks = {path};
    form->OpenScript();
  };
  const auto click = [&](std::int32_t offset) {
    form->N.setSelStart(offset);
    form->N_MouseUp();
  };
  form->mnu_Guardar_Click();
  open(put("empty.txt", ""));
  open(put("code.txt", "goto \"x\";\n"));
  open(put("script.txt", "mes \"one\";\ngoto \"x\";\nmes \"odd;\n"));
  form->mnu_Search_Click();
  click(19);
  click(26);
  click(6);
  form->mnu_Guardar_Click();
  form->Modified = true;
  open(folder.path("script.txt"));
  form->mnu_Export_Click();
  form->mnu_Import_Click();
  put("script.lxf", "no colon\r\n");
  form->mnu_Import_Click();
  form->Modified = true;
  form->Form_Unload();

  for (const Setting* word : allWords()) EXPECT_TRUE(store.read.contains(word->name)) << toUtf8(word->name);
  for (const TextView filled : {u"FileNotFound no such file", u"FileWithErrors 1", u"BadLXFFile 1"}) {
    EXPECT_TRUE(form.said(filled)) << toUtf8(filled);
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
    EXPECT_FALSE(pack.damaged) << language;
    const CodePagePtr page = codePageByName(pageName);
    for (const auto& words : {allWords(), allDesktopWords()}) {
      const auto key = pack.keys.find(u"HKEY_LOCAL_MACHINE\\" + Text(words.front()->key));
      ASSERT_NE(key, pack.keys.end()) << language;
      EXPECT_EQ(key->second.values.size(), words.size()) << language;
      for (const Setting* word : words) {
        const auto value = key->second.values.find(word->name);
        ASSERT_NE(value, key->second.values.end()) << language << ": " << toUtf8(word->name);
        const TextView text = value->second.string;
        std::string bytes;
        EXPECT_EQ(page->encode(text, bytes), TextView::npos) << language << ": " << toUtf8(word->name);
        for (const TextView placeholder : {u"%1", u"%2"}) {
          EXPECT_EQ(text.find(placeholder) == TextView::npos,
                    TextView(word->fallback).find(placeholder) == TextView::npos)
              << language << ": " << toUtf8(word->name);
        }
      }
    }
    const auto& values = pack.keys.at(u"HKEY_LOCAL_MACHINE\\" + Text(kLangKey)).values;
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
