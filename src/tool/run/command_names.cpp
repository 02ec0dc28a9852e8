#include "tool/run/command_names.h"

#include <nlohmann/json.hpp>

#include "platform/failure.h"
#include "platform/system.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr char kBuiltIn[] =
#include "tool/commands_json.inc"
    ;

std::u16string listOf(const nlohmann::json& names) {
  std::u16string list = u",";
  for (const auto& name : names) list += fromUtf8(name.get<std::string>()) + u",";
  return list;
}

}  // namespace

std::vector<CommandPair> readCommandPairs(std::string_view json) {
  std::vector<CommandPair> pairs;
  try {
    const auto file = nlohmann::json::parse(json);
    for (const auto& pair : file.at("pairs")) {
      pairs.push_back({pair.at("name").get<std::string>(), listOf(pair.at("allowed")), listOf(pair.at("special"))});
    }
  } catch (const nlohmann::json::exception& failure) {
    throw Failure(u"The file of command lists is damaged: " + fromUtf8(failure.what()));
  }
  return pairs;
}

std::string usualCommandsFile(TreeFiles& files) {
  std::string named = environmentVariable("DRAVENNA_COMMANDS");
  if (!named.empty()) return named;
  const auto installed = executableFile().parent_path() / ".." / "share" / "dravenna" / "commands.json";
  return files.pathKind(installed) == PathKind::File ? installed.string() : std::string();
}

std::vector<CommandPair> commandPairsOf(TreeFiles& files, const std::string& path) {
  std::string bytes = kBuiltIn;
  if (!path.empty()) files.readWhole(path, bytes);
  return readCommandPairs(bytes);
}

}  // namespace dravenna
