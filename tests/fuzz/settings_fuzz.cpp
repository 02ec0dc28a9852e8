#include "fuzz_input.h"
#include "platform/posix/registry_file.h"
#include "platform/registry_text.h"
#include "platform/scratch_folder.h"
#include "settings/registry.h"
#include "text/case_fold.h"

using namespace dravenna;

namespace {

constexpr std::uint32_t kRoot = HKEY_LOCAL_MACHINE_ID;

Text anyUnits(std::string_view bytes) {
  Text text;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    text.push_back(
        static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8));
  }
  return text;
}

}  // namespace

// The settings file: parts are a file, a key, a name, a value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const bool wide = input.digit() == 1;
  const std::string file(input.part());
  const auto word = [&] {
    const std::string_view bytes = input.part();
    return wide ? anyUnits(bytes) : fromUtf8(bytes);
  };
  const Text key = word();
  const Text name = word();
  const Text value = word();

  const RegistryText read = parseRegistryText(file);
  const std::string written = writeRegistryText(read.keys);
  const RegistryText again = parseRegistryText(written);
  require(again.keys == read.keys && !again.damaged, "write and parse");
  require(writeRegistryText(again.keys) == written, "write twice");

  // A value put into that file is read back, and all else stays.
  ShortReads calls;
  calls.mostRead = 1 + size % 300;
  const ScratchFolder folder;
  const std::string path = folder.put("settings", file).string();
  const std::unique_ptr<RegistryCalls> store = posix::makeRegistryFile(path, calls);
  Registry registry(*store);
  const bool stored = registry.SetRegValue(kRoot, key, name, value);
  const Text got = registry.GetRegValue(kRoot, key, name, u"missing");
  if (stored) require(got == value.substr(0, value.find(u'\0')), "a value that was stored");
  const auto other = posix::makeRegistryFile(path, calls);
  require(Registry(*other).GetRegValue(kRoot, key, name, u"missing") == got, "another program sees the same");
  const std::string changed = folder.get("settings");
  require(!read.damaged || changed == file || folder.get("settings.bad") == file, "a damaged file is kept");
  RegistryTree now = parseRegistryText(changed).keys;
  for (const auto& [place, old] : read.keys) {
    require(now.contains(place) && now[place].unknown == old.unknown, "other keys stay");
    for (const auto& [oldName, oldValue] : old.values) {
      if (stored && equalIgnoringCase(oldName, name)) continue;
      require(now[place].values[oldName] == oldValue, "other values stay");
    }
  }
  registry.DeleteRegKey(kRoot, key);
  return 0;
}
