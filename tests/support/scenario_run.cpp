#include "support/scenario_run.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <random>

#include "platform/scratch_folder.h"
#include "platform/system.h"
#include "support/keys.h"
#include "support/memory_registry.h"
#include "support/scenario.h"
#include "text/text.h"

namespace dravenna {

namespace fs = std::filesystem;

namespace {

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::int64_t numberIn(std::u16string_view word) {
  const std::string text = toUtf8(word);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("-0x");
  char* end = nullptr;
  const std::int64_t number = std::strtoll(text.c_str(), &end, hexadecimal ? 16 : 10);
  if (text.empty() || *end != '\0') throw ScenarioError{0, "not a number: " + text};
  return number;
}

std::string shown(const Value& value) {
  if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "True" : "False";
  if (const std::int64_t* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  return inQuotes(std::get<std::u16string>(value));
}

std::string shown(const ShownBox& box) {
  return std::to_string(box.flags) + ' ' + inQuotes(box.text) + " title " + inQuotes(box.title);
}

char16_t segmentLetter(std::uint32_t color) {
  const std::uint32_t colors[] = {clrPlain, clrComment, clrQuote, clrError, clrTitle, clrMessage, clrCode};
  return u"pcqetmk?"[std::find(std::begin(colors), std::end(colors), color) - colors];
}

// What `random` looks at behind each step.
constexpr const char* kSeen[] = {"N.Text",       "N.SelStart",    "N.SelLength", "N.SelColor",    "EDT.Text",
                                 "EDT.SelStart", "EDT.SelLength", "EDT.Visible", "EDT.ForeColor", "EDT.BackColor",
                                 "focus",        "frmSearch",     "Ini",         "Fin",           "xIni",
                                 "Modified",     "UndoText",      "LastSearch",  "Status.Text"};

class ScenarioRun {
 public:
  ScenarioRun(std::string name, DriverFactory makeDriver) : name_(std::move(name)), makeDriver_(std::move(makeDriver)) {
    fs::create_directory(folder_.file("files"));
  }

  // What was seen behind each step of `random`.
  std::vector<std::string> seen;

  // True if it was reported what the scenario's `#! ` comments say, which is nothing for most of them.
  bool run(std::string_view bytes) {
    try {
      directives_ = parseScenario(bytes, reasons_);
    } catch (const ScenarioError& error) {
      report(error.line, error.message);
    }
    while (next_ < directives_.size()) step();
    driver_.reset();
    for (const auto& [box, line] : boxLines_) report(line, "box: expected none, got " + shown(box));
    const int line = directives_.empty() ? 1 : directives_.back().line;
    if (!stage_.answers.empty()) report(line, "answer: one was not used");
    if (!stage_.picks.empty()) report(line, "pick: one was not used");
    while (!reasons_.empty()) report(line, "this was not reported: " + reasons_.front());
    return passed_;
  }

 private:
  using Handler = void (ScenarioRun::*)();

  // The directive at hand, and what of it has been read.
  struct Reading {
    const Directive* directive = nullptr;
    std::size_t word = 0;
    bool block = false;
  };

  void step() {
    reading_ = {&directives_[next_++]};
    const int line = reading_.directive->line;
    try {
      doDirective();
      if (more()) throw ScenarioError{0, "not understood: " + toUtf8(take("").text)};
      if (reading_.directive->hasBlock && !reading_.block) throw ScenarioError{0, "this directive takes no block"};
    } catch (const ScenarioError& error) {
      report(line, error.message);
    } catch (const Failure& failure) {
      report(line, "unexpected failure: " + toUtf8(failure.description()));
    } catch (const std::exception& error) {
      report(line, std::string("unexpected failure: ") + error.what());
    }
    for (; !stage_.boxes.empty(); stage_.boxes.pop_front()) boxLines_.push_back({stage_.boxes.front(), line});
  }

  void doDirective() {
    static const std::map<std::u16string, Handler> handlers = {
        {u"file", &ScenarioRun::doFile},         {u"remove", &ScenarioRun::doRemove},
        {u"readonly", &ScenarioRun::doReadonly}, {u"folder", &ScenarioRun::doFolder},
        {u"registry", &ScenarioRun::doRegistry}, {u"codepage", &ScenarioRun::doCodepage},
        {u"start", &ScenarioRun::doStart},       {u"answer", &ScenarioRun::doAnswer},
        {u"pick", &ScenarioRun::doPick},         {u"fail", &ScenarioRun::doFail},
        {u"key", &ScenarioRun::doKey},           {u"type", &ScenarioRun::doType},
        {u"text", &ScenarioRun::doText},         {u"click", &ScenarioRun::doClick},
        {u"drag", &ScenarioRun::doDrag},         {u"focus", &ScenarioRun::doFocus},
        {u"menu", &ScenarioRun::doMenu},         {u"press", &ScenarioRun::doMouse},
        {u"move", &ScenarioRun::doMouse},        {u"release", &ScenarioRun::doMouse},
        {u"button", &ScenarioRun::doButton},     {u"resize", &ScenarioRun::doResize},
        {u"close", &ScenarioRun::doClose},       {u"random", &ScenarioRun::doRandom},
        {u"expect", &ScenarioRun::doExpect}};
    const Word& name = take("directive");
    const auto handler = name.quoted ? handlers.end() : handlers.find(name.text);
    if (handler == handlers.end()) throw ScenarioError{0, "directive not understood: " + toUtf8(name.text)};
    (this->*handler->second)();
  }

  // The words of the directive at hand.
  bool more() const { return reading_.word < reading_.directive->words.size(); }
  const Word& take(const char* what) {
    if (!more()) throw ScenarioError{0, std::string("missing: ") + what};
    return reading_.directive->words[reading_.word++];
  }
  std::string lastWord() const { return toUtf8(reading_.directive->words[reading_.word - 1].text); }
  bool takeIf(std::u16string_view bare) {
    const bool there = more() && reading_.directive->words[reading_.word].is(bare);
    reading_.word += there ? 1 : 0;
    return there;
  }
  std::u16string takeText(const char* what) { return filled(take(what).text); }
  // A file name: in the scenario's folder unless it is absolute.
  fs::path takePath() { return directory_ / fs::path(takeText("NAME")); }
  std::int32_t takeNumber(const char* what) { return static_cast<std::int32_t>(numberIn(take(what).text)); }
  // A number behind a sign that stands in front of it.
  std::int32_t takeNumber(const char* what, char16_t sign) {
    const Word& word = take(what);
    if (word.quoted || !word.text.starts_with(sign)) throw ScenarioError{0, "not understood: " + toUtf8(word.text)};
    return static_cast<std::int32_t>(numberIn(word.text.substr(1)));
  }
  template <class Choice>
  Choice takeChoice(const std::map<std::u16string_view, Choice>& choices) {
    const auto choice = choices.find(take("a word").text);
    std::string wanted;
    for (const auto& [name, _] : choices) wanted += ' ' + toUtf8(name);
    if (choice == choices.end()) throw ScenarioError{0, "one of these is wanted:" + wanted};
    return choice->second;
  }
  std::uint32_t takeRoot() {
    return takeChoice<std::uint32_t>({{u"HKLM", HKEY_LOCAL_MACHINE_ID}, {u"HKCR", HKEY_CLASSES_ROOT_ID}});
  }
  std::u16string takeBlock(std::u16string_view lineEnd = u"\r\n") {
    reading_.block = true;
    std::u16string text;
    for (const std::u16string& line : reading_.directive->block) (text += line) += lineEnd;
    return text;
  }
  // The bytes of a file: behind `raw`, or the block.
  std::string takeBytes() {
    const bool lf = takeIf(u"lf");
    std::string bytes;
    if (takeIf(u"raw")) {
      for (const char16_t unit : takeText("STRING")) {
        if (unit > 0xFF) throw ScenarioError{0, "raw holds code units up to 255"};
        bytes += static_cast<char>(unit);
      }
    } else if (codePage_->encode(takeBlock(lf ? u"\n" : u"\r\n"), bytes) != std::u16string::npos) {
      throw ScenarioError{0, "the block does not fit the code page"};
    }
    return bytes;
  }
  // {program} is the program as the shell verb names it; the path behind a {dir} has the system's separators.
  std::u16string filled(std::u16string_view text) {
    std::u16string line = replaceAll(text, u"{program}", u"{dir}" + process_.programName());
    for (std::size_t at = line.find(u"{dir}"); at != line.npos; at = line.find(u"{dir}", at + 1)) {
      const auto path = line.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end =
          line.begin() + static_cast<std::ptrdiff_t>(std::min(line.find_first_of(u"\"'\r\n]", at), line.size()));
      std::replace(path, end, u'/', process_.pathSeparator());
    }
    return replaceAll(line, u"{dir}", directory_.u16string());
  }

  Driver& driver() {
    if (driver_ == nullptr) throw ScenarioError{0, "there is no start before it"};
    return *driver_;
  }
  // For a step in the main window.
  Driver& inMain() {
    driver().mainForm();
    return *driver_;
  }

  void doFile() {
    const fs::path path = takePath();
    std::ofstream out(path, std::ios::binary);
    if (!(out << takeBytes() << std::flush)) throw ScenarioError{0, "the file cannot be made"};
  }
  void doRemove() {
    const fs::path path = takePath();
    if (fs::is_regular_file(path)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
    if (!fs::remove(path)) throw ScenarioError{0, "there is no such file"};
  }
  void doReadonly() { fs::permissions(takePath(), fs::perms{0222}, fs::perm_options::remove); }
  void doFolder() { fs::create_directories(takePath()); }
  void doRegistry() {
    const std::uint32_t root = takeRoot();
    const std::u16string key = takeText("KEY"), valueName = takeText("NAME"), value = takeText("VALUE");
    if (!Registry(calls_).SetRegValue(root, key, valueName, value)) throw ScenarioError{0, "the value is not stored"};
  }
  void doCodepage() {
    if (driver_ != nullptr) throw ScenarioError{0, "codepage stands before start only"};
    const CodePagePtr page = codePageByName(toUtf8(takeText("N")));
    if (page == nullptr) throw ScenarioError{0, "the code page is not supported"};
    codePage_ = page;
    files_.use(makeTextFiles(page, takeIf(u"unnamed") ? Utf8Scripts::Recognised : Utf8Scripts::AsAllOthers));
  }
  void doStart() {
    const std::u16string line = more() ? takeText("STRING") : std::u16string();
    driver_.reset();
    driver_ = makeDriver_({files_, calls_, process_, stage_, [this](ColorPick& picker) { stepsOf(picker); }});
    driver_->start(line);
  }
  void doAnswer() {
    using enum Answer;
    stage_.answers.push_back(takeChoice<Answer>({{u"ok", Ok}, {u"cancel", Cancel}, {u"yes", Yes}, {u"no", No}}));
  }
  void doPick() { stage_.picks.push_back(takeIf(u"cancel") ? std::nullopt : std::optional(takePath().u16string())); }
  void doFail() {
    using enum FileOperation;
    const auto operation =
        takeChoice<FileOperation>({{u"create", Create}, {u"write", Write}, {u"close", Close}, {u"read", Read}});
    files_.failNext(operation, more() ? takeText("DESCRIPTION") : u"Failed on demand");
  }

  void doKey() {
    do driver().key(keyNamed(take("KEY").text));
    while (more());
  }
  void doType() {
    for (const char16_t character : takeText("STRING")) driver().key(keyTyping(character));
  }
  void doText() {
    inMain().selectEdt();
    const std::u16string text = takeText("STRING");
    if (text.empty()) driver().key(keyNamed(u"Del"));
    for (const char16_t character : text) driver().key(keyTyping(character));
  }
  void doClick() {
    const Word& what = take("STRING");
    std::size_t at = 0;
    if (!what.quoted && what.text.starts_with(u'@')) {
      at = static_cast<std::size_t>(numberIn(what.text.substr(1)));
    } else {
      at = inMain().form()->N.Text().find(filled(what.text));
      if (at == std::u16string::npos) throw ScenarioError{0, "the text of the click does not occur"};
      at += static_cast<std::size_t>(more() ? takeNumber("+K", u'+') : 1);
    }
    drag(static_cast<std::int32_t>(at), static_cast<std::int32_t>(at));
  }
  void doDrag() {
    const std::int32_t from = takeNumber("@OFFSET", u'@');
    drag(from, takeNumber("@OFFSET", u'@'));
  }
  void drag(std::int32_t from, std::int32_t to) {
    const std::size_t size = driver().mainForm().N.Text().size();
    if (std::min(from, to) < 0 || std::cmp_greater(std::max(from, to), size)) {
      throw ScenarioError{0, "the offset lies outside N"};
    }
    driver().drag(from, to);
  }
  void doFocus() {
    using enum Control;
    inMain().focus(takeChoice<Control>({{u"N", N}, {u"EDT", EDT}, {u"txtSearch", txtSearch}}));
  }
  void doMenu() {
    const std::u16string entry = takeText("ENTRY");
    for (const MenuPlace& place : driver().mainForm().menu()) {
      if (place.entry->name == entry) return driver().menu(place);
    }
    throw ScenarioError{0, "there is no such menu entry"};
  }
  void doMouse() {
    using enum MouseStep;
    reading_.word = 0;
    const auto what = takeChoice<MouseStep>({{u"press", Press}, {u"move", Move}, {u"release", Release}});
    const std::int32_t x = takeNumber("X");
    const std::int32_t y = takeNumber("Y");
    driver().picker();
    driver().mouse(what, x, y);
  }
  void doButton() {
    const bool ofPicker = takeChoice<bool>(
        {{u"Command1", true}, {u"CancelButton", false}, {u"btn_Search0", false}, {u"btn_Search1", false}});
    if (ofPicker) {
      driver().picker();
    } else {
      inMain().searchBox();
    }
    driver().button(lastWord());
  }
  void doResize() {
    const std::int32_t width = takeNumber("W");
    inMain().resize(width, takeNumber("H"));
  }
  void doClose() { inMain().close(); }

  // COUNT SEED KEY...: so many steps, each one of the keys, a character of a quoted one, or for @ a click anywhere. In
  // the window, the core alone must have come to the same each time.
  void doRandom() {
    const int steps = takeNumber("COUNT");
    std::minstd_rand random(static_cast<unsigned>(takeNumber("SEED")));
    const auto below = [&random](std::size_t limit) { return static_cast<std::int32_t>(random() % limit); };
    std::vector<Word> keys;
    while (more()) keys.push_back(take("KEY"));
    stepsInPicker_ = [this, &below] {
      const std::int32_t x = below(256);
      const std::int32_t y = below(254);
      driver_->mouse(MouseStep::Press, x, y);
      driver_->mouse(MouseStep::Release, x, y);
      driver_->key(keyNamed(u"Enter"));
    };
    for (int step = 1; step <= steps; ++step) {
      const Word& key = keys.at(static_cast<std::size_t>(below(keys.size())));
      const char16_t character = key.quoted ? key.text.at(static_cast<std::size_t>(below(key.text.size()))) : u' ';
      const std::u16string& text = inMain().form()->N.Text();
      auto place = static_cast<std::size_t>(below(text.size() + 1));
      if (text.substr(place, 1) == u"\n") --place;  // no place for a caret
      if (key.is(u"@")) {
        drag(static_cast<std::int32_t>(place), static_cast<std::int32_t>(place));
      } else if (!key.is(u"Tab") || driver().focused() != Control::txtSearch) {
        driver().key(key.quoted ? keyTyping(character) : keyNamed(key.text));
      }
      const std::string name = key.quoted ? inQuotes({&character, 1}) : toUtf8(key.text);
      const std::string behind = "step " + std::to_string(step) + ", " + name + ": ";
      for (const char* what : kSeen) seen.push_back(behind + what + ' ' + shown(*driver().read(what)));
      for (; !stage_.boxes.empty(); stage_.boxes.pop_front()) {
        seen.push_back(toUtf8(replaceAll(stage_.boxes.front().text, directory_.u16string(), u"{dir}")));
      }
    }
    stepsInPicker_ = nullptr;
  }

  void doExpect() {
    do expectOne();
    while (more());
  }
  void expectOne() {
    static const std::map<std::string, Handler> handlers = {
        {"colors", &ScenarioRun::expectColors},    {"picBigBox.Point", &ScenarioRun::expectPoint},
        {"box", &ScenarioRun::expectBox},          {"dialog", &ScenarioRun::expectDialog},
        {"beeps", &ScenarioRun::expectBeeps},      {"file", &ScenarioRun::expectFile},
        {"registry", &ScenarioRun::expectRegistry}};
    const std::string what = toUtf8(takeText("WHAT"));
    if (const auto handler = handlers.find(what); handler != handlers.end()) return (this->*handler->second)();
    const std::optional<Value> value = driver().read(what);
    if (!value) throw ScenarioError{0, "expectation not understood: " + what};
    if (what == "N.Text" && !more()) return compareTexts(what, takeBlock(), std::get<std::u16string>(*value));
    compare(what, *value);
  }
  // The value of the next word against what was got.
  void compare(const std::string& what, const Value& got) {
    const std::u16string word = takeText("VALUE");
    Value expected = word;
    if (std::holds_alternative<bool>(got)) {
      if (word != u"True" && word != u"False") throw ScenarioError{0, what + " is True or False"};
      expected = word == u"True";
    } else if (const std::int64_t* number = std::get_if<std::int64_t>(&got)) {
      // Colours and the like may be written signed or not.
      expected = numberIn(word);
      if (static_cast<std::uint32_t>(numberIn(word)) == static_cast<std::uint32_t>(*number)) return;
    }
    expect(what, expected == got, shown(expected), shown(got));
  }
  void expect(const std::string& what, bool holds, const std::string& expected, const std::string& got) {
    if (!holds) report(reading_.directive->line, what + ": expected " + expected + ", got " + got);
  }
  // The first line that differs is shown.
  void compareTexts(const std::string& what, std::u16string_view expected, std::u16string_view got) {
    const auto cut = [](std::u16string_view& text) {
      const std::u16string_view first = text.substr(0, std::min(text.find(u'\n'), text.size() - 1) + 1);
      text.remove_prefix(first.size());
      return first;
    };
    const auto side = [](std::u16string_view text) { return text.empty() ? std::string("the end") : inQuotes(text); };
    for (int line = 1; expected != got; ++line) {
      const std::u16string_view a = cut(expected), b = cut(got);
      if (a != b) return expect(what + " line " + std::to_string(line), false, side(a), side(b));
    }
  }
  void expectColors() {
    const std::u16string text = std::get<std::u16string>(*driver().read("N.Text"));
    std::u16string letters;
    for (const std::uint32_t color : driver().colors()) letters += segmentLetter(color);
    letters.resize(text.size(), u'-');
    std::u16string got;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 2) {
      end = std::min(text.find(u"\r\n", at), text.size());
      got += text.substr(at, end - at) + u"\r\n" + letters.substr(at, end - at) + u"\r\n";
    }
    compareTexts("colors", takeBlock(), got);
  }
  void expectPoint() {
    const std::int32_t x = takeNumber("X");
    const std::int32_t y = takeNumber("Y");
    compare("picBigBox.Point", driver().point(x, y));
  }
  void expectBox() {
    ShownBox expected;
    expected.flags = takeNumber("FLAGS");
    expected.text = takeText("STRING");
    expected.title = takeIf(u"title") ? takeText("STRING") : u"Dravenna";
    if (boxLines_.empty()) return expect("box", false, shown(expected), "none");
    const std::string got = shown(boxLines_.front().first);
    boxLines_.pop_front();
    expect("box", got == shown(expected), shown(expected), got);
  }
  void expectDialog() {
    if (!stage_.dialog) throw ScenarioError{0, "no file dialog was shown"};
    const CommonDialog& dialog = stage_.dialog->properties;
    const auto value = takeChoice<Value>({{u"Kind", std::u16string(stage_.dialog->save ? u"save" : u"open")},
                                          {u"Filter", dialog.Filter},
                                          {u"DialogTitle", dialog.DialogTitle},
                                          {u"InitDir", dialog.InitDir},
                                          {u"FileName", dialog.FileName},
                                          {u"Flags", std::int64_t{dialog.Flags}}});
    compare("dialog " + lastWord(), value);
  }
  void expectBeeps() { compare("beeps", std::int64_t{std::exchange(stage_.beeps, 0)}); }
  void expectFile() {
    const fs::path path = takePath();
    const std::string what = "file " + lastWord();
    const bool there = fs::is_regular_file(path);
    if (takeIf(u"missing")) return expect(what, !there, "missing", "a file");
    const std::string expected = takeBytes();
    if (!there) return expect(what, false, "a file", "none");
    compareTexts(what, codePage_->decode(expected), codePage_->decode(readFile(path)));
  }
  void expectRegistry() {
    const std::uint32_t root = takeRoot();
    const std::u16string key = takeText("KEY"), valueName = takeText("NAME");
    Registry store(calls_);
    const std::u16string got = store.GetRegValue(root, key, valueName, u"<missing>");
    const bool missing = got == u"<missing>" && store.GetRegValue(root, key, valueName, u"") != got;
    const std::string what = "registry " + toUtf8(key) + ' ' + inQuotes(valueName);
    if (takeIf(u"missing")) return expect(what, missing, "missing", inQuotes(got));
    if (missing) return expect(what, false, inQuotes(takeText("VALUE")), "missing");
    compare(what, got);
  }

  // The steps up to the end of the picker; a scenario that ends before it leaves it by Esc.
  void stepsOf(ColorPick& picker) {
    if (stepsInPicker_) return stepsInPicker_();
    const Reading outer = reading_;
    while (!picker.hidden && next_ < directives_.size()) step();
    if (!picker.hidden) driver_->key(keyNamed(u"Esc"));
    reading_ = outer;
  }

  void report(int line, const std::string& text) {
    const int at = line != 0 ? line : reading_.directive != nullptr ? reading_.directive->line : 1;
    const std::string reason = std::to_string(at) + ": " + text;
    const bool wanted = !reasons_.empty() && reasons_.front() == reason;
    if (!reasons_.empty()) reasons_.pop_front();
    if (wanted) return;
    passed_ = false;
    std::printf("%s:%s\n", name_.c_str(), reason.c_str());
  }

  std::string name_;
  DriverFactory makeDriver_;
  std::vector<Directive> directives_;
  std::size_t next_ = 0;
  Reading reading_;
  std::deque<std::string> reasons_;  // that it must fail for, in this order
  bool passed_ = true;

  ScratchFolder folder_;
  fs::path directory_ = folder_.file("files").make_preferred();
  std::function<void()> stepsInPicker_;  // of `random`
  CodePagePtr codePage_ = codePageByName("1252");
  Stage stage_;
  std::deque<std::pair<ShownBox, int>> boxLines_;  // shown and not expected yet, with the line of the step
  MemoryRegistry calls_;
  ScriptedProcess process_{directory_.u16string()};
  FailingTextFiles files_{makeTextFiles(codePage_)};
  std::unique_ptr<Driver> driver_;
};

std::vector<fs::path> scenarioFiles(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file() && entry.path().extension() == ".scn") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The same scenario without a window must have shown the same.
bool isLike(const ScenarioRun& run, const fs::path& file) {
  ScenarioRun core(file.string(), makeCoreDriver);
  if (run.seen.empty() || !core.run(readFile(file))) return run.seen.empty();
  const auto [got, expected] = std::mismatch(run.seen.begin(), run.seen.end(), core.seen.begin(), core.seen.end());
  if (got == run.seen.end() && expected == core.seen.end()) return true;
  const auto text = [](const auto& seen, auto at) { return at == seen.end() ? std::string("the end") : *at; };
  std::printf("%s:1: %s, without the window %s\n", file.string().c_str(), text(run.seen, got).c_str(),
              text(core.seen, expected).c_str());
  return false;
}

}  // namespace

int runScenarios(const std::vector<fs::path>& paths, const DriverFactory& makeDriver) {
  int passed = 0, failed = 0;
  for (const fs::path& path : paths) {
    for (const fs::path& file : scenarioFiles(path)) {
      const bool there = fs::is_regular_file(file);
      if (!there) std::printf("%s:0: no such file\n", file.string().c_str());
      ScenarioRun run(file.string(), makeDriver);
      ++(there && run.run(readFile(file)) && isLike(run, file) ? passed : failed);
    }
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}

}  // namespace dravenna
