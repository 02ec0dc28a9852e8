#include "settings/settings_transfer.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/failure.h"
#include "settings/catalogue.h"
#include "settings/registry.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

namespace {

// A store in memory. Handles are the addresses of its keys.
class MemoryRegistry : public RegistryCalls {
 public:
  std::int32_t openKey(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    const auto key = keys_.find(nameOf(root, path));
    handle = key == keys_.end() ? 0 : reinterpret_cast<Handle>(&key->second);
    return handle == 0 ? 2 : 0;
  }
  std::int32_t createKey(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    handle = reinterpret_cast<Handle>(&keys_[nameOf(root, path)]);
    return 0;
  }
  std::int32_t queryValue(Handle handle, std::u16string_view name, std::uint32_t& type, char16_t* data,
                          std::uint32_t& size) override {
    if (handle == 0) return 6;
    const Values& values = *reinterpret_cast<Values*>(handle);
    const auto value = values.find(std::u16string(name));
    if (value == values.end()) return 2;
    type = kRegSz;
    if (data != nullptr)
      size = static_cast<std::uint32_t>(value->second.copy(data, size));
    else
      size = static_cast<std::uint32_t>(value->second.size());
    return 0;
  }
  std::int32_t setValue(Handle handle, std::u16string_view name, std::u16string_view data) override {
    if (full) return 112;
    (*reinterpret_cast<Values*>(handle))[std::u16string(name)] = data;
    return 0;
  }
  std::int32_t deleteKey(std::uint32_t, std::u16string_view) override { return 5; }
  std::int32_t closeKey(Handle) override { return 0; }

  bool empty() const { return keys_.empty(); }
  bool full = false;

 private:
  using Values = std::map<std::u16string, std::u16string>;
  static std::u16string nameOf(std::uint32_t root, std::u16string_view path) { return decimal(root) + foldCase(path); }
  std::map<std::u16string, Values> keys_;
};

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
