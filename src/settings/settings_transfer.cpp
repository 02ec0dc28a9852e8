#include "settings/settings_transfer.h"

#include <optional>

#include "platform/failure.h"
#include "platform/registry_text.h"
#include "settings/catalogue.h"
#include "settings/registry.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr TextView kMachine = u"HKEY_LOCAL_MACHINE\\";
constexpr TextView kClasses = u"HKEY_CLASSES_ROOT\\";
constexpr TextView kOwnKeys = u"Software\\Halvex";

// A key of the program with its root.
struct OwnKey {
  std::uint32_t root;
  TextView path;
};

bool startsWith(TextView text, TextView with) {
  return text.size() >= with.size() && equalIgnoringCase(text.substr(0, with.size()), with);
}

std::optional<OwnKey> ownKey(TextView key) {
  if (startsWith(key, kMachine)) {
    const TextView path = key.substr(kMachine.size());
    const bool below = startsWith(path, kOwnKeys) && (path.size() == kOwnKeys.size() || path[kOwnKeys.size()] == u'\\');
    if (below) return OwnKey{HKEY_LOCAL_MACHINE_ID, path};
  } else if (startsWith(key, kClasses)) {
    const TextView path = key.substr(kClasses.size());
    if (equalIgnoringCase(path, kVerbKey) || equalIgnoringCase(path, kVerbCommandKey))
      return OwnKey{HKEY_CLASSES_ROOT_ID, path};
  }
  return std::nullopt;
}

void check(const RegistryText& text) {
  if (text.damaged) throw Failure(u"The file is not a whole file of exported registry keys. Nothing was stored.");
  std::size_t values = 0;
  for (const auto& [path, key] : text.keys) {
    if (!key.values.empty() && !ownKey(key.path)) {
      throw Failure(u"The key " + key.path + u" is not one of this program. Nothing was stored.");
    }
    for (const auto& [name, value] : key.values) {
      if (value.type != kRegSz) {
        throw Failure(u"The value \"" + name + u"\" of the key " + key.path + u" is no string. Nothing was stored.");
      }
    }
    values += key.values.size();
  }
  if (values == 0) throw Failure(u"The file holds no settings. Nothing was stored.");
}

// The value, if the store has it: two different defaults cannot both be what is stored.
std::optional<Text> stored(Registry& registry, std::uint32_t root, TextView key, TextView name) {
  Text value = registry.GetRegValue(root, key, name, u"1");
  if (value == u"1" && registry.GetRegValue(root, key, name, u"2") == u"2") return std::nullopt;
  return value;
}

}  // namespace

ImportedSettings importSettings(std::string_view file, RegistryCalls& registry) {
  const RegistryText text = parseRegistryText(file);
  check(text);
  Registry store(registry);
  ImportedSettings done;
  for (const auto& [path, key] : text.keys) {
    const std::optional<OwnKey> own = ownKey(key.path);
    for (const auto& [name, value] : key.values) {
      if (!store.SetRegValue(own->root, own->path, name, value.string)) {
        throw Failure(u"The settings store refuses the value \"" + name + u"\" of the key " + key.path + u".");
      }
      ++done.values;
      done.verbStored |= equalIgnoringCase(own->path, kVerbCommandKey) && name.empty() && !value.string.empty();
    }
  }
  return done;
}

std::string exportSettings(RegistryCalls& registry) {
  Registry store(registry);
  RegistryTree keys;
  const auto put = [&](TextView root, std::uint32_t rootId, TextView path, TextView name) {
    const std::optional<Text> value = stored(store, rootId, path, name);
    if (!value) return;
    const Text whole = Text(root) + Text(path);
    RegistryKey& key = keys[whole];
    key.path = whole;
    key.values[Text(name)].string = *value;
  };
  const auto putSetting = [&](const Setting& setting) {
    put(kMachine, HKEY_LOCAL_MACHINE_ID, setting.key, setting.name);
  };
  for (const Setting* setting :
       {&settings::File, &settings::NavMode, &settings::LastSearch, &settings::AllowedCommands,
        &settings::SpecialAllowedCommands, &settings::StatusPlace, &settings::CodePage, &settings::Zoom}) {
    putSetting(*setting);
  }
  for (const Setting* word : allWords()) putSetting(*word);
  for (const Setting* word : allDesktopWords()) putSetting(*word);
  put(kClasses, HKEY_CLASSES_ROOT_ID, kVerbKey, u"");
  put(kClasses, HKEY_CLASSES_ROOT_ID, kVerbCommandKey, u"");
  return writeRegistryText(keys);
}

}  // namespace dravenna
