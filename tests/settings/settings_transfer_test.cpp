#include "settings/settings_transfer.h"

#include <gtest/gtest.h>

#include "platform/failure.h"
#include "settings/catalogue.h"
#include "settings/registry.h"
#include "support/memory_registry.h"
#include "text/text.h"

namespace dravenna {

namespace {

std::string file(std::string_view keys) { return "Windows Registry Editor Version 5.00\n\n" + std::string(keys); }

std::string refusal(const std::string& text, RegistryCalls& registry) {
  try {
    importSettings(text, registry);
    return "";
  } catch (const Failure& failure) {
    return toUtf8(failure.description());
  }
}

constexpr char kGood[] =
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\halvex\\Dravenna\\Lang]\n\"mnuFile\"=\"&Datei\"\n\"btnNext\"=\"Следующий\"\n\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Halvex\\Dravenna]\n\"LastSearch\"=\"\"\n\"NavMode\"=\"1\"\n\n"
    "[HKEY_CLASSES_ROOT\\txtfile\\shell\\Dravenna\\command]\n@=\"\\\"C:\\\\x\\\" %1\"\n";

TEST(SettingsTransfer, WhatIsImportedComesOutAgain) {
  MemoryRegistry store;
  const ImportedSettings done = importSettings(file(kGood), store);
  EXPECT_EQ(done.values, 5U);
  EXPECT_TRUE(done.verbStored);
  Registry registry(store);
  EXPECT_EQ(read(registry, words::btnNext), u"Следующий");
  EXPECT_EQ(registry.GetRegValue(HKEY_CLASSES_ROOT_ID, kVerbCommandKey, u"", u""), u"\"C:\\x\" %1");

  MemoryRegistry other;
  const std::string out = exportSettings(store);
  EXPECT_EQ(importSettings(out, other).values, 5U);  // an empty value is one, a missing one is none
  EXPECT_EQ(exportSettings(other), out);
}

TEST(SettingsTransfer, RefusesWhatIsNotTheProgramsAndStoresNothing) {
  const struct {
    std::string text;
    const char* reason;
  } cases[] = {
      {"garbage", "not a whole file"},
      {file(""), "holds no settings"},
      {file(std::string(kGood) + "[HKEY_CURRENT_USER\\Software\\Halvex]\n\"a\"=\"b\"\n"), "HKEY_CURRENT_USER"},
      {file(std::string(kGood) + "[HKEY_LOCAL_MACHINE\\Software\\HalvexTwo]\n\"a\"=\"b\"\n"), "HalvexTwo"},
      {file(std::string(kGood) + "[HKEY_CLASSES_ROOT\\txtfile\\shell\\open\\command]\n@=\"b\"\n"), "open"},
      {file("[HKEY_LOCAL_MACHINE\\Software\\Halvex\\Dravenna]\n\"NavMode\"=dword:00000001\n"), "\"NavMode\""},
  };
  for (const auto& [text, reason] : cases) {
    MemoryRegistry store;
    EXPECT_NE(refusal(text, store).find(reason), std::string::npos) << reason << ": " << refusal(text, store);
    EXPECT_TRUE(store.empty());
  }
  MemoryRegistry store;
  store.full = true;
  EXPECT_NE(refusal(file(kGood), store), "");
}

}  // namespace

}  // namespace dravenna
