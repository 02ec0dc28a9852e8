// What every system's implementation of the registry must do.

#include <gtest/gtest.h>

#include "platform/system.h"
#include "settings/registry.h"

namespace dravenna {

namespace {

constexpr std::uint32_t kRoot = HKEY_LOCAL_MACHINE_ID;
constexpr char16_t kKey[] = u"Software\\Halvex\\DravennaContractTest";

class RegistryContract : public testing::Test {
 protected:
  ~RegistryContract() override {
    for (const char16_t* const below : {u"\\Below\\Deep", u"\\Below", u""}) {
      registry_->RegDeleteKeyA(kRoot, std::u16string(kKey) + below);
    }
  }

  bool has(std::u16string_view key) {
    RegistryCalls::Handle handle = 1;
    const bool opened = registry_->RegOpenKeyA(kRoot, key, handle) == 0;
    EXPECT_EQ(opened, handle != 0);
    EXPECT_EQ(registry_->RegCloseKey(handle) == 0, opened);
    return opened;
  }
  bool set(std::u16string_view key, std::u16string_view name, std::u16string_view data) {
    return Registry(*registry_).SetRegValue(kRoot, key, name, data);
  }
  std::u16string get(std::u16string_view key, std::u16string_view name) {
    return Registry(*registry_).GetRegValue(kRoot, key, name, u"missing");
  }

  std::unique_ptr<RegistryCalls> registry_ = makeRegistry();
};

TEST_F(RegistryContract, GivesBackWhatWasStored) {
  std::u16string all;
  for (unsigned unit = 1; unit < 0x3000; ++unit) all += static_cast<char16_t>(unit);
  const std::u16string values[] = {
      u"", u"a\\b\"c\" ", u"two\r\nlines", u"\xDC80\xD800x", all, std::u16string(32767, u'x')};
  for (const std::u16string& value : values) {
    ASSERT_TRUE(set(kKey, u"Name", value));
    EXPECT_EQ(get(kKey, u"Name"), value);
    registry_ = makeRegistry();
    EXPECT_EQ(get(kKey, u"Name"), value);
  }
  ASSERT_TRUE(set(kKey, u"", u"default"));
  ASSERT_TRUE(set(kKey, u"\u0416 \"=\\", u"odd name"));
  EXPECT_EQ(get(kKey, u""), u"default");
  EXPECT_EQ(get(u"SOFTWARE\\halvex\\dravennacontracttest", u"\u0436 \"=\\"), u"odd name");
  ASSERT_TRUE(set(kKey, u"NAME", u"again"));
  EXPECT_EQ(get(kKey, u"name"), u"again");
}

TEST_F(RegistryContract, FillsASmallerBufferOrFails) {
  ASSERT_TRUE(set(kKey, u"Name", u"abcdef"));
  RegistryCalls::Handle handle = 0;
  ASSERT_EQ(registry_->RegOpenKeyA(kRoot, kKey, handle), 0);
  char16_t data[4] = {u'.', u'.', u'.', u'.'};
  std::uint32_t type = 0;
  std::uint32_t size = 3;
  registry_->RegQueryValueExA(handle, u"Name", type, data, size);
  EXPECT_EQ(data[3], u'.');
  registry_->RegCloseKey(handle);
  EXPECT_NE(registry_->RegQueryValueExA(handle, u"Name", type, nullptr, size), 0);
  EXPECT_NE(registry_->RegSetValueExA(0, u"Name", u"x"), 0);
  EXPECT_NE(registry_->RegCloseKey(0), 0);
}

TEST_F(RegistryContract, MakesAndDeletesKeysOneByOne) {
  const std::u16string below = std::u16string(kKey) + u"\\Below";
  const std::u16string deep = below + u"\\Deep";
  EXPECT_EQ(get(deep, u"Name"), u"missing");
  EXPECT_NE(registry_->RegDeleteKeyA(kRoot, deep), 0);
  EXPECT_FALSE(has(kKey));
  ASSERT_TRUE(set(deep, u"", u"x"));
  EXPECT_TRUE(has(below));
  EXPECT_TRUE(has(kKey));
  EXPECT_NE(registry_->RegDeleteKeyA(kRoot, below), 0);
  EXPECT_EQ(get(deep, u""), u"x");
  EXPECT_EQ(registry_->RegDeleteKeyA(kRoot, deep), 0);
  EXPECT_FALSE(has(deep));
  EXPECT_TRUE(has(below));
  EXPECT_EQ(registry_->RegDeleteKeyA(kRoot, below), 0);
  EXPECT_EQ(registry_->RegDeleteKeyA(kRoot, kKey), 0);
  EXPECT_NE(registry_->RegDeleteKeyA(kRoot, kKey), 0);
}

}  // namespace

}  // namespace dravenna
