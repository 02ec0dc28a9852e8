#include "tool/list/progress.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

#include "platform/failure.h"
#include "tool/list/words.h"
#include "tool/po_files/po_file.h"
#include "tool/run/for_each_script.h"
#include "tool/script/exchange_file.h"
#include "tool/script/pairing.h"

namespace dravenna {

namespace {

std::string folderRow(const std::string& relative) {
  const std::size_t slash = relative.rfind('/');
  return slash == std::string::npos ? "." : relative.substr(0, slash);
}

using Rows = std::map<std::string, Progress>;

std::string rowOf(const ProgressOptions& options, const Script& script) {
  return options.byFolder ? folderRow(script.relative) : script.path;
}

// The original's path, if it leads there. Throws Failure.
std::string original(const Session& session, const Script& script, std::string path) {
  if (session.files->pathKind(path) == PathKind::File) return path;
  throw Failure(fromUtf8(fmt::format("{}: no original {}", script.path, path)));
}

Progress measureScript(const Session& session, const std::string& against, const Script& script, Buffers& buffers) {
  const std::string originalPath = original(session, script, partnerIn(*session.files, against, script));
  const auto now = loadScript(session, script.path);
  std::string bytes;
  readBeside(session, originalPath, now->in, bytes);
  const LoadedScript old(std::move(bytes), now->in);
  const Pairing pairing = pairScripts(old.work, old.outline, now->work, now->outline);
  Progress progress;
  forEachState(old.outline, now->outline, pairing, [&](Progress::State state, std::string_view before) {
    progress.add(state, countWords(before, buffers.out));
  });
  return progress;
}

Progress measureExchangeFile(const Session& session, const std::string& against, const Script& script,
                             Buffers& buffers) {
  readFile(session, script.path, buffers.file);
  std::string bytes;
  readFile(session, original(session, script, scriptIn(session, against, script)), bytes);
  const Encoding& in = session.pages->of(bytes, buffers.file);
  const LoadedScript old(std::move(bytes), in);
  const ExchangeFile lxf = cutExchangeFile(in.codec.toWork(buffers.file, buffers.work));
  if (const auto misfit = misfitOf(lxf, script.path, old.records.size())) throw *misfit;
  Progress progress;
  for (std::size_t i = 0; i < lxf.records.size(); ++i) {
    const std::string_view before = old.records[i]->text;
    progress.add(stateOf(before, lxf.records[i].text), countWords(before, buffers.out));
  }
  return progress;
}

Rows measurePo(const Session& session, const ProgressOptions& options, const Script& script, Buffers& buffers) {
  Rows rows;
  session.outputs->addInput(script.path);
  const PoFile file = readPoFile(*session.files, script.path);
  for (const PoEntry& entry : file.entries) {
    const bool ofFolder = options.byFolder && !entry.file.empty();
    const Progress::State state = entry.text.empty() ? stateOf(entry.id, entry.id)
                                  : entry.fuzzy      ? Progress::Unsure
                                                     : Progress::Translated;
    rows[ofFolder ? folderRow(entry.file) : rowOf(options, script)].add(state, countWords(entry.id, buffers.out));
  }
  return rows;
}

Rows rowsOf(const Session& session, const ProgressOptions& options, const Script& script, Buffers& buffers) {
  if (hasExtension(script.path, ".po")) return measurePo(session, options, script, buffers);
  const auto measureOne = hasExtension(script.path, ".lxf") ? measureExchangeFile : measureScript;
  return {{rowOf(options, script), measureOne(session, options.against, script, buffers)}};
}

// Of a script that only the originals' tree has, all is to do.
Rows rowsOfMissing(const Session& session, const ProgressOptions& options, const Script& script, Buffers& buffers) {
  Progress progress;
  const auto loaded = loadScript(session, script.path);
  for (const OutlineText* const text : loaded->records) {
    progress.add(stateOf(text->text, text->text), countWords(text->text, buffers.out));
  }
  return progress.figures[0] == 0 ? Rows() : Rows{{rowOf(options, script), progress}};
}

}  // namespace

Progress::State stateOf(std::string_view original, std::string_view now) {
  const std::string plain = withoutColor(now);
  const bool isBlank = plain.find_first_not_of(' ') == std::string::npos;
  return hasLetter(original) && (isBlank || plain == withoutColor(original)) ? Progress::ToDo : Progress::Translated;
}

void Progress::add(State state, std::size_t words) {
  ++figures[0];
  ++figures[state];
  figures[kWords] += words;
  figures[kWords + state] += words;
}

void Progress::add(const Progress& other) {
  for (std::size_t i = 0; i < figures.size(); ++i) figures[i] += other.figures[i];
}

unsigned Progress::percent() const {
  return figures[0] == 0 ? 100 : static_cast<unsigned>(figures[Translated] * 100 / figures[0]);
}

void showProgress(Session& session, const ProgressOptions& options) {
  const std::vector<Script> scripts = collectScripts(session, options.paths, {"*.txt", "*.lxf", "*.po"});
  const auto needOriginals = static_cast<std::size_t>(std::count_if(
      scripts.begin(), scripts.end(), [](const Script& script) { return !hasExtension(script.path, ".po"); }));
  if (needOriginals > 0 && options.against.empty()) {
    throw UsageError("the progress of scripts and exchange files needs --against, for their originals");
  }
  needOneScript(*session.files, "--against", options.against, needOriginals);
  Rows all;
  const auto measureEach = [&](const std::vector<Script>& some, auto&& measureOne) {
    forEachScript<Rows>(
        session, some,
        [&](const Script& script, Buffers& buffers) { return measureOne(session, options, script, buffers); },
        [&](const Script&, Rows&& rows) {
          for (const auto& [name, progress] : rows) all[name].add(progress);
          return true;
        });
  };
  measureEach(scripts, rowsOf);
  measureEach(onlyInOriginal(session, options.paths, options.against, scripts, true), rowsOfMissing);
  ProgressRows rows(all.begin(), all.end());
  Progress total;
  for (const auto& [name, progress] : rows) total.add(progress);
  rows.emplace_back("in all", total);
  const char* const kind = options.byFolder ? "folder" : "file";
  Output output(*session.outputs, options.output);
  output.buffer() = options.json       ? progressJson(rows, kind)
                    : options.markdown ? progressMarkdown(rows, kind)
                                       : progressTable(rows, kind);
  if (!output.close()) session.console.fail();
  if (options.svg.empty()) return;
  // Rows of files would be too many for a picture.
  if (!options.byFolder) rows.erase(rows.begin(), rows.end() - 1);
  session.outputs->write(options.svg, progressPicture(rows), Outputs::Kind::Report, false);
}

}  // namespace dravenna
