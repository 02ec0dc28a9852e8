#include "tool/merge/merge.h"

#include <fmt/core.h>

#include <algorithm>
#include <unordered_set>

#include "platform/failure.h"
#include "platform/run_program.h"
#include "platform/system.h"
#include "platform/terminal.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kFooter[] =
    R"(Code comes from whoever changed it, texts one by one: what only the translator changed stays translated, what the
original changed comes new and is listed. Exchange and PO files merge by record and by entry.
Exit status: 0 merged, 1 conflicts are left, 2 wrong use or files that cannot be merged, with OURS untouched.
Examples:
  dravenna-lxf merge old.txt es.txt new.txt -o es.txt        the new original's changes into the translation
  dravenna-lxf merge old.txt es.txt new.txt -o - | less      only shown; the list goes to standard error)";

struct Options : MergeSettings {
  std::string base, ours, theirs, out, name;
  std::vector<std::string> labels;
  bool driver = false;
  bool force = false;
};

// Where git keeps what it knows of the working tree that a driver runs in.
std::string gitFolder() {
  const std::string folder = environmentVariable("GIT_DIR");
  return folder.empty() ? ".git" : folder;
}

class MergeRun {
 public:
  MergeRun(Session& session, const Options& options) : session_(session), options_(options) {
    options_.labels.resize(3);
    const std::string names[] = {options_.ours, options_.base, options_.theirs};
    const std::string sides[] = {"ours", "base", "theirs"};
    for (std::size_t i = 0; i < 3; ++i) {
      std::string& label = options_.labels[i];
      const bool unknown = label.size() == 2 && label[0] == '%';  // to this git, which leaves it as it is
      if (label.empty() || unknown) label = options_.driver ? sides[i] : names[i];
    }
    options_.way.labels = {options_.labels[0], options_.labels[2]};
    if (options_.name.empty()) options_.name = options_.ours;
    if (options_.driver) setUpDriver();
  }

  void run() {
    if (!options_.driver) return merge();
    std::optional<std::string> why;
    try {
      merge();
    } catch (const Failure& failure) {
      why = shown(failure.description());
    } catch (const std::exception& failure) {  // wrong use, or a lack of memory
      why = failure.what();
    }
    if (why) mergeByGit(*why);
  }

 private:
  // As git calls it: OURS is the result. In a rebase the translation is what git calls theirs.
  void setUpDriver() {
    const std::string git = gitFolder();
    options_.out = options_.ours;
    if (options_.report.empty()) options_.report = joinPath(git, "dravenna-merge.txt");
    options_.append = true;
    options_.way.swapped |= inRebase(session_, git);
  }

  void merge();
  void write(const MergedFile& merged);
  void mergeByGit(const std::string& why);

  Session& session_;
  Options options_;
};

void MergeRun::merge() {
  session_.prepare();
  std::array<std::string, 3> versions;
  readFile(session_, options_.base, versions[0]);
  readFile(session_, options_.ours, versions[1]);
  readFile(session_, options_.theirs, versions[2]);
  const MergedFile merged = mergeSides(session_, options_, options_.name, std::move(versions));
  const auto failure = attempt([&] { writeList(session_, options_, merged.list, options_.out == "-"); });
  if (failure && !options_.driver) throw Failure(*failure);
  if (failure) {
    session_.console.warning(shown(failure->description()));
    writeStandardError(merged.list);
  }
  write(merged);
  if (!options_.driver || merged.conflicts > 0 || !merged.list.empty()) tellMerged(session_, options_.name, merged);
}

void MergeRun::write(const MergedFile& merged) {
  if (options_.out == "-") {
    if (!writeStandardOutput(merged.bytes)) session_.console.fail();
    return;
  }
  const auto ours = session_.files->identity(options_.ours);
  if (!ours || ours != session_.files->identity(options_.out)) {
    session_.outputs->write(options_.out, merged.bytes, Outputs::Kind::ExchangeFile, options_.force);
    return;
  }
  if (options_.driver) {  // a file of git's own, which it reads at once
    const auto replacement = session_.files->replace(options_.out);
    replacement->write(merged.bytes);
    replacement->close();
    // Some systems bring to disk at once what is renamed over a file, which takes longer than the merge.
    if (!isLink(options_.out)) removeFile(options_.out);
    replacement->place();
  } else {
    replaceScript(session_, options_.out, merged.bytes, {});
    flushFolders(session_, {folderOf(options_.out)});
  }
}

// Git takes what a driver leaves as OURS for the result, so there must be one, or no doubt that there is none.
void MergeRun::mergeByGit(const std::string& why) {
  std::vector<std::string> words = {"git", "merge-file", fmt::format("--marker-size={}", options_.way.markerSize)};
  for (const std::string& label : options_.labels) words.insert(words.end(), {"-L", label});
  words.insert(words.end(), {options_.ours, options_.base, options_.theirs});
  int status = 128;
  const auto failure = attempt([&] { status = runProgram(words).status; });
  if (failure || status >= 128) {
    session_.console.error(
        fmt::format("{}: NOT MERGED, the side that git calls ours was kept: {}", shownName(options_.name), why));
    return;
  }
  session_.console.warning(fmt::format("{}: merged line by line, as git does: {}", shownName(options_.name), why));
  if (status != 0) session_.console.fail();
}

}  // namespace

void addMergeSettings(Verb verb, MergeSettings& settings) {
  const auto take = [&settings](const std::string& way) {
    const auto* const found = std::find(std::begin(kOnConflictNames), std::end(kOnConflictNames), way);
    settings.way.onConflict = static_cast<OnConflict>(found - std::begin(kOnConflictNames));
  };
  verb.choice("--on-conflict", take, "WAY", "A text that both changed: smart (default), ours, theirs or markers",
              std::vector<std::string>(std::begin(kOnConflictNames), std::end(kOnConflictNames)));
  verb.text("--their-codepage", settings.theirPage, "NAME",
            "Code page of THEIRS where it is another than that of OURS");
  verb.text("--report", settings.report, "FILE", "File for the list of what is to translate and to look at");
  verb.flag("--append", settings.append, "Add to the list that is there");
}

CodePagePtr theirPageOf(const MergeSettings& settings) {
  CodePagePtr page = settings.theirPage.empty() ? nullptr : codePageByName(settings.theirPage);
  if (page || settings.theirPage.empty()) return page;
  throw UsageError(fmt::format("--their-codepage: {} is no code page that is supported", settings.theirPage));
}

MergedFile mergeSides(const Session& session, const MergeSettings& settings, const std::string& name,
                      std::array<std::string, 3> versions) {
  MergeWish wish{name, nullptr, session.pages->named(), theirPageOf(settings), settings.way};
  wish.page = session.codePageName.empty() ? systemCodePage() : codePageByName(session.codePageName);
  if (wish.way.swapped) {
    std::swap(versions[1], versions[2]);
    std::swap(wish.way.labels[0], wish.way.labels[1]);
    if (wish.theirPage != nullptr) std::swap(wish.page, wish.theirPage);
  }
  return mergeFile(versions[0], versions[1], versions[2], session.pages->usual().lists, wish);
}

void writeList(Session& session, const MergeSettings& settings, const std::string& list, bool outputTaken) {
  if (settings.report.empty() && outputTaken) return writeStandardError(list);
  if (list.empty() && settings.append) return;
  std::string present;
  const auto file = settings.append ? session.files->identity(settings.report) : std::nullopt;
  const bool there = file && file->plain;
  if (there) session.files->readWhole(settings.report, present);
  // A merge of many files adds to a list that grows: only lines that begin as those of this file are looked at.
  std::unordered_set<std::string_view> known;
  const std::string_view begin = std::string_view(list).substr(0, list.find(':') + 1);
  forEachLine(present, [&](const ScriptLine& line) {
    if (line.text.starts_with(begin)) known.insert(line.text);
  });
  std::string fresh;
  forEachLine(list, [&](const ScriptLine& line) {
    if (known.insert(line.text).second) fresh.append(line.text).append("\n");
  });
  if (there) return session.outputs->append(settings.report, present, fresh);
  Output output(*session.outputs, settings.report);
  output.buffer() = fresh;
  output.close();
}

std::optional<std::string> askGit(std::vector<std::string> words) {
  words.insert(words.begin(), "git");
  ProgramRun result = runProgram(words);
  if (result.status != 0) return std::nullopt;
  if (result.output.ends_with('\n')) result.output.pop_back();
  return std::move(result.output);
}

std::string askTree(std::vector<std::string> words) {
  const auto answer = askGit(std::move(words));
  if (!answer) throw Failure(u"This is no working tree of git");
  return *answer;
}

bool inRebase(const Session& session, const std::string& gitFolder) {
  const auto has = [&](const char* name) {
    return session.files->pathKind(joinPath(gitFolder, name)) != PathKind::Missing;
  };
  return has("rebase-merge") || has("rebase-apply");
}

void tellMerged(Session& session, const std::string& name, const MergedFile& merged) {
  if (merged.conflicts > 0) session.console.fail();
  session.console.note(fmt::format("{}: {}, {} to translate, {} to look at", shownName(name),
                                   counted(merged.conflicts, "conflict"), merged.toTranslate, merged.toLookAt));
}

void addMerge(Verb program, Session& session) {
  Verb verb = program.verb("merge", "Merge three versions of a script, or of an exchange or PO file");
  const auto options = std::make_shared<Options>();
  verb.text("base", options->base, "BASE", "What both sides began with", Need::Required);
  verb.text("ours", options->ours, "OURS", "The translation", Need::Required);
  verb.text("theirs", options->theirs, "THEIRS", "The original that went on", Need::Required);
  verb.text("-o,--out", options->out, "FILE", "The result, `-` for standard output; it may be OURS");
  addMergeSettings(verb, *options);
  verb.each("-L", options->labels, "LABEL", "Labels of conflict markers: of OURS, then BASE, then THEIRS");
  verb.number("--marker-size", options->way.markerSize, "N", "Characters of a conflict marker (default 7)", 1, 1000);
  verb.text("--name", options->name, "NAME", "What messages and the list call the file; its extension tells its kind");
  verb.flag("--swapped", options->way.swapped, "THEIRS is the translation, as in a rebase");
  verb.flag("--driver", options->driver, "As git's merge driver: the result takes the place of OURS in any case");
  verb.flag("-f,--force", options->force, "Overwrite a file other than OURS with other contents");
  session.addOptions(verb);
  verb.footer(kFooter);
  verb.onRun([&session, options] {
    if (options->out.empty() && !options->driver) throw UsageError("-o FILE is required");
    const auto failure = attempt([&] { MergeRun(session, *options).run(); });
    if (!failure) return;
    session.console.error(shown(failure->description()));
    session.console.fail(2);
  });
}

}  // namespace dravenna
