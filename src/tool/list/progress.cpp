#include "tool/list/progress.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <unordered_set>

#include "platform/failure.h"
#include "text/ascii.h"
#include "tool/list/words.h"
#include "tool/po_files/po_file.h"
#include "tool/run/for_each_script.h"
#include "tool/script/exchange_file.h"
#include "tool/script/pairing.h"

namespace dravenna {

namespace {

bool hasExtension(const std::string& path, std::string_view extension) {
  return lowerAsciiOf(path).ends_with(extension);
}

std::string folderRow(const std::string& relative) {
  const std::size_t slash = relative.rfind('/');
  return slash == std::string::npos ? "." : relative.substr(0, slash);
}

class ProgressRun {
 public:
  ProgressRun(Session& session, const ProgressOptions& options) : session_(session), options_(options) {}

  void run();

 private:
  using Rows = std::map<std::string, Progress>;

  Rows measure(const Script& script, Buffers& buffers) const;
  Rows measurePo(const Script& script) const;
  Progress measureScript(const Script& script, Buffers& buffers) const;
  Progress measureExchangeFile(const Script& script, Buffers& buffers) const;
  std::string originalOf(const Script& script, std::string_view extension) const;
  void addMissing(const std::vector<Script>& scripts);
  bool take(Rows&& rows);
  std::string rowOf(const Script& script) const { return options_.byFolder ? folderRow(script.relative) : script.path; }

  Session& session_;
  const ProgressOptions& options_;
  Rows rows_;
};

// Throws Failure where there is none. With an extension it has this one instead of the script's.
std::string ProgressRun::originalOf(const Script& script, std::string_view extension) const {
  std::string path = partnerIn(*session_.files, options_.against, script);
  if (!extension.empty() && path != options_.against) path = withExtension(path, extension);
  if (session_.files->pathKind(path) == PathKind::File) return path;
  throw Failure(fromUtf8(fmt::format("{}: no original {}", script.path, path)));
}

// A text without a letter has nothing to translate.
TextState stateOf(std::string_view before, bool same) {
  return same && hasLetter(before) ? TextState::ToDo : TextState::Translated;
}

Progress ProgressRun::measureScript(const Script& script, Buffers& buffers) const {
  const std::string originalPath = originalOf(script, {});
  const auto now = loadScript(session_, script.path);
  std::string bytes;
  readBeside(session_, originalPath, now->in, bytes);
  const LoadedScript old(std::move(bytes), now->in);
  const Pairing pairing = pairScripts(old.work, old.outline, now->work, now->outline);
  Progress progress;
  for (std::size_t i = 0; i < now->outline.texts.size(); ++i) {
    const OutlineText& text = now->outline.texts[i];
    if (!text.record) continue;
    const std::string_view before = pairing.oldOf[i] == kNoText ? text.text : old.outline.texts[pairing.oldOf[i]].text;
    const bool same = pairing.oldOf[i] != kNoText && withoutColor(before) == withoutColor(text.text);
    progress.add(stateOf(before, same), countWords(before, buffers.out));
  }
  return progress;
}

Progress ProgressRun::measureExchangeFile(const Script& script, Buffers& buffers) const {
  readFile(session_, script.path, buffers.file);
  std::string bytes;
  readFile(session_, originalOf(script, ".txt"), bytes);
  const Encoding& in = session_.pages->of(bytes, buffers.file);
  const LoadedScript old(std::move(bytes), in);
  const ExchangeFile lxf = cutExchangeFile(in.codec.toWork(buffers.file, buffers.work));
  if (const auto misfit = misfitOf(lxf, script.path, old.records.size())) throw *misfit;
  Progress progress;
  for (std::size_t i = 0; i < lxf.records.size(); ++i) {
    const std::string_view before = old.records[i]->text;
    const bool same = withoutColor(before) == withoutColor(lxf.records[i].text);
    progress.add(stateOf(before, same), countWords(before, buffers.out));
  }
  return progress;
}

ProgressRun::Rows ProgressRun::measurePo(const Script& script) const {
  Rows rows;
  std::string buffer;
  session_.outputs->addInput(script.path);
  const PoFile file = readPoFile(*session_.files, script.path);
  for (const PoEntry& entry : file.entries) {
    const bool ofFolder = options_.byFolder && !entry.file.empty();
    const TextState state = entry.text.empty() ? stateOf(entry.id, true)
                            : entry.fuzzy      ? TextState::Unsure
                                               : TextState::Translated;
    rows[ofFolder ? folderRow(entry.file) : rowOf(script)].add(state, countWords(entry.id, buffer));
  }
  return rows;
}

ProgressRun::Rows ProgressRun::measure(const Script& script, Buffers& buffers) const {
  if (hasExtension(script.path, ".po")) return measurePo(script);
  return {{rowOf(script),
           hasExtension(script.path, ".lxf") ? measureExchangeFile(script, buffers) : measureScript(script, buffers)}};
}

bool ProgressRun::take(Rows&& rows) {
  for (const auto& [name, progress] : rows) rows_[name].add(progress);
  return true;
}

// Of scripts that only the originals' tree has, all is to do.
void ProgressRun::addMissing(const std::vector<Script>& scripts) {
  if (options_.against.empty() || options_.paths.size() != 1 ||
      session_.files->pathKind(options_.paths[0]) != PathKind::Folder ||
      session_.files->pathKind(options_.against) != PathKind::Folder) {
    return;
  }
  std::unordered_set<std::string> here;
  for (const Script& script : scripts) here.insert(withExtension(script.relative, ""));
  std::vector<Script> missing = collectScripts(session_, {options_.against});
  std::erase_if(missing, [&](const Script& script) { return here.count(withExtension(script.relative, "")) != 0; });
  forEachScript<Rows>(
      session_, missing,
      [&](const Script& script, Buffers& buffers) {
        Progress progress;
        const auto loaded = loadScript(session_, script.path);
        for (const OutlineText* const text : loaded->records) {
          progress.add(stateOf(text->text, true), countWords(text->text, buffers.out));
        }
        return progress.allTexts() == 0 ? Rows() : Rows{{rowOf(script), progress}};
      },
      [&](const Script&, Rows&& rows) { return take(std::move(rows)); });
}

void ProgressRun::run() {
  session_.prepare();
  const std::vector<Script> scripts = collectScripts(session_, options_.paths, {"*.txt", "*.lxf", "*.po"});
  const auto needOriginals = static_cast<std::size_t>(std::count_if(
      scripts.begin(), scripts.end(), [](const Script& script) { return !hasExtension(script.path, ".po"); }));
  if (needOriginals > 0 && options_.against.empty()) {
    throw UsageError("the progress of scripts and exchange files needs --against, for their originals");
  }
  if (!options_.against.empty() && session_.files->pathKind(options_.against) == PathKind::Missing) {
    throw Failure(u"No such file or directory: '" + fromUtf8(options_.against) + u"'");
  }
  needOneScript(*session_.files, "--against", options_.against, needOriginals);
  forEachScript<Rows>(
      session_, scripts, [&](const Script& script, Buffers& buffers) { return measure(script, buffers); },
      [&](const Script&, Rows&& rows) { return take(std::move(rows)); });
  addMissing(scripts);
  std::vector<ProgressRow> rows;
  Progress total;
  for (const auto& [name, progress] : rows_) {
    rows.push_back({name, progress});
    total.add(progress);
  }
  rows.push_back({"in all", total});
  const char* const kind = options_.byFolder ? "folder" : "file";
  Output output(*session_.outputs, options_.output);
  output.buffer() = options_.json       ? progressJson(rows, kind)
                    : options_.markdown ? progressMarkdown(rows, kind)
                                        : progressTable(rows, kind);
  if (!output.close()) session_.console.fail();
  if (options_.svg.empty()) return;
  // Rows of files would be too many for a picture.
  if (!options_.byFolder) rows.erase(rows.begin(), rows.end() - 1);
  session_.outputs->write(options_.svg, progressPicture(rows), Outputs::Kind::Report, false);
}

}  // namespace

void Progress::add(TextState state, std::size_t wordCount) {
  ++texts[static_cast<std::size_t>(state)];
  words[static_cast<std::size_t>(state)] += wordCount;
}

void Progress::add(const Progress& other) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] += other.texts[i];
    words[i] += other.words[i];
  }
}

unsigned Progress::percent() const {
  return allTexts() == 0 ? 100 : static_cast<unsigned>(texts[0] * 100 / allTexts());
}

void showProgress(Session& session, const ProgressOptions& options) { ProgressRun(session, options).run(); }

}  // namespace dravenna
