#include "support/scenario_run.h"

#include <random>

#include "support/keys.h"
#include "support/scenario_expect.h"

namespace dravenna {

namespace fs = std::filesystem;

namespace {

// What `random` looks at behind each step.
constexpr const char* kSeen[] = {"N.Text",       "N.SelStart",    "N.SelLength", "N.SelColor",    "EDT.Text",
                                 "EDT.SelStart", "EDT.SelLength", "EDT.Visible", "EDT.ForeColor", "EDT.BackColor",
                                 "focus",        "frmSearch",     "Ini",         "Fin",           "xIni",
                                 "Modified",     "UndoText",      "LastSearch",  "Status.Text"};

class ScenarioRun : public ScenarioExpectations {
 public:
  using ScenarioExpectations::ScenarioExpectations;

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
      at = static_cast<std::size_t>(wholeNumber(what.text.substr(1)));
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
    const auto elsewhere = [this](const std::u16string& key) {  // what only the window knows
      return driver().focused() == (key == u"Tab" ? Control::txtSearch : Control::N) &&
             (key == u"Tab" || key.starts_with(u"Page"));
    };
    for (int step = 1; step <= steps; ++step) {
      const Word& key = keys.at(static_cast<std::size_t>(below(keys.size())));
      const char16_t character = key.quoted ? key.text.at(static_cast<std::size_t>(below(key.text.size()))) : u' ';
      const std::u16string& text = inMain().form()->N.Text();
      auto place = static_cast<std::size_t>(below(text.size() + 1));
      if (text.substr(place, 1) == u"\n") --place;  // no place for a caret
      if (key.is(u"@")) {
        drag(static_cast<std::int32_t>(place), static_cast<std::int32_t>(place));
      } else if (!elsewhere(key.text)) {
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

  // The steps up to the end of the picker; a scenario that ends before it leaves it by Esc.
  void stepsOf(ColorPick& picker) {
    if (stepsInPicker_) return stepsInPicker_();
    const Reading outer = reading_;
    while (!picker.hidden && next_ < directives_.size()) step();
    if (!picker.hidden) driver_->key(keyNamed(u"Esc"));
    reading_ = outer;
  }

  std::function<void()> stepsInPicker_;  // of `random`
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
