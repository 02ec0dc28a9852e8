#include "tool/check/given_scripts.h"

#include <filesystem>

namespace dravenna {

namespace {

std::string stemOf(const std::string& path) {
  return withExtension(std::filesystem::path(path).lexically_normal().generic_string(), "");
}

}  // namespace

GivenScripts::GivenScripts(const std::vector<Script>& scripts) {
  const auto isText = [](const std::string& path) { return withExtension(path, ".txt") == path; };
  const auto add = [&](Paths& paths, const std::string& key, const std::string& path) {
    const auto [found, fresh] = paths.try_emplace(key, path);
    if (!fresh && isText(path) && !isText(found->second)) found->second = path;
  };
  for (const Script& script : scripts) {
    if (script.path == "-") continue;
    const std::string stem = stemOf(script.path);
    add(byPath_, stem, script.path);
    add(byRelative_, withExtension(script.relative, ""), script.path);
    const auto [named, fresh] = stemByName_.try_emplace(std::string(fileNameOf(stem)), stem);
    if (!fresh && named->second != stem) named->second.clear();
  }
}

std::string GivenScripts::scriptOf(const Script& exchangeFile) const {
  const auto find = [](const Paths& paths, const std::string& key) {
    const auto found = paths.find(key);
    return found == paths.end() ? std::string() : found->second;
  };
  const std::string stem = stemOf(exchangeFile.path);
  std::string path = find(byPath_, stem);
  if (path.empty()) path = find(byRelative_, withExtension(exchangeFile.relative, ""));
  if (path.empty()) path = find(byPath_, find(stemByName_, std::string(fileNameOf(stem))));
  return path;
}

}  // namespace dravenna
