#include "tool/run/text_index.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>

#include "platform/failure.h"
#include "tool/script/contents.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kIndexName[] = "dravenna.index";
constexpr std::size_t kDigits = 16;

bool contains(const std::vector<std::uint64_t>& digests, std::uint64_t digest) {
  return std::find(digests.begin(), digests.end(), digest) != digests.end();
}

}  // namespace

template <class Take>
void TextIndex::read(const std::string& path, std::size_t digests, Take&& take) {
  if (session_.files->pathKind(path) != PathKind::File) return;
  std::string bytes;
  session_.files->readWhole(path, bytes);
  forEachLine(bytes, [&](const ScriptLine& line) {
    if (line.text.starts_with('#')) return;
    std::array<std::uint64_t, 2> numbers{};
    std::string_view rest = line.text;
    bool well = true;
    for (std::size_t i = 0; i < digests && well; ++i) {
      well = rest.size() > kDigits + 1 && rest[kDigits] == ' ';
      if (!well) break;
      well = std::from_chars(rest.data(), rest.data() + kDigits, numbers[i], 16).ptr == rest.data() + kDigits;
      rest.remove_prefix(kDigits + 1);
    }
    if (well) return take(numbers, std::string(rest));
    session_.console.warning(fmt::format("{}:{}: no digest and file; left out", shownName(path), line.number + 1));
  });
}

TextIndex::TextIndex(Session& session, const std::string& folder) : session_(session) {
  std::string home = folder;
  std::string path = std::filesystem::absolute(folder.empty() ? "." : folder).lexically_normal().generic_string();
  if (path.ends_with('/')) path.pop_back();
  for (std::size_t end = path.size(); end > 0 && end != std::string::npos; end = path.rfind('/', end - 1)) {
    const std::string above = path.substr(0, end);
    if (session_.files->pathKind(joinPath(above, kIndexName)) != PathKind::File) continue;
    if (end < path.size()) {
      home = above;
      prefix_ = path.substr(end + 1) + "/";
    }
    break;
  }
  indexPath_ = joinPath(home, kIndexName);
  importsPath_ = joinPath(home, "dravenna.imports");
  read(indexPath_, 1,
       [&](const auto& digests, const std::string& lxf) { known_[lxf].originals.push_back(digests[0]); });
  read(importsPath_, 2, [&](const auto& digests, const std::string& lxf) {
    // An exchange file that was made anew has no imports yet.
    const auto found = known_.find(lxf);
    if (found != known_.end() && contains(found->second.originals, digests[0]))
      found->second.imports.push_back({digests[0], digests[1]});
  });
}

bool TextIndex::isOriginal(const std::string& lxf, std::uint64_t texts) const {
  const auto found = known_.find(prefix_ + lxf);
  return found == known_.end() || contains(found->second.originals, texts);
}

bool TextIndex::fits(const std::string& lxf, std::uint64_t texts) const {
  if (isOriginal(lxf, texts)) return true;
  const std::vector<Import>& imports = known_.at(prefix_ + lxf).imports;
  return std::any_of(imports.begin(), imports.end(), [&](const Import& import) { return import.texts == texts; });
}

void TextIndex::madeFrom(const std::string& lxf, std::uint64_t texts, bool anew) {
  std::vector<std::uint64_t>& known = known_[prefix_ + lxf].originals;
  if (anew ? known == std::vector{texts} : contains(known, texts)) return;
  if (anew) known.clear();
  known.push_back(texts);
  originalsChanged_ = true;
}

void TextIndex::imported(const std::string& lxf, std::uint64_t texts) {
  const auto found = known_.find(prefix_ + lxf);
  if (found == known_.end() || fits(lxf, texts)) return;
  found->second.imports.push_back({found->second.originals.front(), texts});
  importsChanged_ = true;
}

void TextIndex::write(const std::string& path, const std::string& bytes) {
  const auto failure = attempt([&] { session_.outputs->write(path, bytes, Outputs::Kind::Index, false); });
  if (failure) session_.console.error(shown(failure->description()));
}

void TextIndex::save() {
  if (originalsChanged_) {
    std::string bytes(kIndexHead);
    for (const auto& [lxf, known] : known_) {
      for (const std::uint64_t digest : known.originals) bytes += fmt::format("{:016x} {}\n", digest, lxf);
    }
    write(indexPath_, bytes);
  }
  if (importsChanged_) {
    std::string bytes(kImportsHead);
    for (const auto& [lxf, known] : known_) {
      for (const Import& import : known.imports)
        bytes += fmt::format("{:016x} {:016x} {}\n", import.original, import.texts, lxf);
    }
    write(importsPath_, bytes);
  }
}

}  // namespace dravenna
