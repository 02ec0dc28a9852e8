#include "support/scenario_run.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <random>

#include "platform/system.h"
#include "support/keys.h"
#include "support/scenario.h"
#include "support/temporary_store.h"
#include "text/text.h"

namespace dravenna {

namespace fs = std::filesystem;

namespace {

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A new empty folder, gone again at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    const fs::path place = fs::canonical(fs::temp_directory_path());
    std::random_device random;
    do {
      path_ = place / ("dravenna-" + std::to_string(random()));
    } while (!fs::create_directory(path_));
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

std::int64_t numberIn(const Word& word) {
  const std::string text = toUtf8(word.text);
  std::string_view digits = text;
  const bool negative = digits.starts_with('-');
  if (negative) digits.remove_prefix(1);
  const bool hexadecimal = digits.starts_with("0x");
  if (hexadecimal) digits.remove_prefix(2);
  std::int64_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != digits.data() + digits.size()) throw ScenarioError{0, "not a number: " + text};
  return negative ? -number : number;
}

std::int32_t number32(const Word& word) { return static_cast<std::int32_t>(numberIn(word)); }

std::string shown(const Value& value) {
  if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "True" : "False";
  if (const std::int64_t* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  return inQuotes(std::get<std::u16string>(value));
}

std::u16string joined(const std::vector<std::u16string>& lines, std::u16string_view lineEnd) {
  std::u16string text;
  for (const std::u16string& line : lines) (text += line) += lineEnd;
  return text;
}

// The lines of a text; what stands behind the last line end is one only if it is not empty.
std::vector<std::u16string_view> linesOf(std::u16string_view text) {
  std::vector<std::u16string_view> lines;
  for (std::size_t end; !text.empty(); text.remove_prefix(end)) {
    end = std::min(text.find(u"\r\n"), text.size());
    lines.push_back(text.substr(0, end));
    end = std::min(end + 2, text.size());
  }
  return lines;
}

char16_t segmentLetter(std::uint32_t color) {
  static const std::map<std::uint32_t, char16_t> letters = {{clrPlain, u'p'}, {clrComment, u'c'}, {clrQuote, u'q'},
                                                            {clrError, u'e'}, {clrTitle, u't'},   {clrMessage, u'm'},
                                                            {clrCode, u'k'}};
  const auto letter = letters.find(color);
  return letter == letters.end() ? u'?' : letter->second;
}

class ScenarioRun {
 public:
  ScenarioRun(std::string name, const DriverFactory& makeDriver) : name_(std::move(name)), makeDriver_(makeDriver) {}

  bool run(std::string_view bytes) {
    try {
      directives_ = parseScenario(bytes);
      prepare();
    } catch (const ScenarioError& error) {
      report(error.line, error.message);
      return false;
    }
    while (next_ < directives_.size()) step();
    driver_.reset();
    finish();
    return passed_;
  }

 private:
  using Handler = void (ScenarioRun::*)();

  void prepare() {
    fs::create_directory(folder_.path() / "files");
    fs::create_directory(folder_.path() / "settings");
    store_.emplace(folder_.path() / "settings");
    directory_ = (folder_.path() / "files").make_preferred();
    calls_ = makeRegistry();
    process_ = std::make_unique<ScriptedProcess>(directory_.u16string());
    codePage_ = codePageByName("1252");
  }

  void finish() {
    for (const auto& [box, line] : boxLines_) report(line, "box: expected none, got " + shownBox(box));
    const int line = directives_.empty() ? 1 : directives_.back().line;
    if (!stage_.answers.empty()) report(line, "answer: one was not used");
    if (!stage_.picks.empty()) report(line, "pick: one was not used");
  }

  void step() {
    const Directive& directive = directives_[next_++];
    current_ = &directive;
    word_ = 0;
    try {
      doDirective();
    } catch (const ScenarioError& error) {
      report(directive.line, error.message);
    } catch (const Failure& failure) {
      report(directive.line, "unexpected failure: " + toUtf8(failure.description()));
    } catch (const std::exception& error) {
      report(directive.line, std::string("unexpected failure: ") + error.what());
    }
    for (; !stage_.boxes.empty(); stage_.boxes.pop_front()) boxLines_.push_back({stage_.boxes.front(), directive.line});
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
        {u"close", &ScenarioRun::doClose},       {u"expect", &ScenarioRun::doExpect}};
    const Word& name = take("directive");
    const auto handler = name.quoted ? handlers.end() : handlers.find(name.text);
    if (handler == handlers.end()) throw ScenarioError{0, "directive not understood: " + toUtf8(name.text)};
    (this->*handler->second)();
  }

  // The words of the directive at hand.
  bool more() const { return word_ < current_->words.size(); }
  const Word& take(const char* what) {
    if (!more()) throw ScenarioError{0, std::string("missing: ") + what};
    return current_->words[word_++];
  }
  std::u16string takeText(const char* what) { return filled(take(what).text); }
  bool takeIf(std::u16string_view bare) {
    if (!more() || !current_->words[word_].is(bare)) return false;
    ++word_;
    return true;
  }
  void noMore(bool block = false) const {
    if (more()) throw ScenarioError{0, "not understood: " + toUtf8(current_->words[word_].text)};
    if (current_->hasBlock && !block) throw ScenarioError{0, "this directive takes no block"};
  }
  // {program} is the program as the shell verb names it; the path behind a {dir} has the system's separators.
  std::u16string filled(std::u16string_view text) const {
    std::u16string line = replaceAll(text, u"{program}", u"{dir}" + process_->programName());
    for (std::size_t at = line.find(u"{dir}"); at != line.npos; at = line.find(u"{dir}", at + 1)) {
      const auto path = line.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end =
          line.begin() + static_cast<std::ptrdiff_t>(std::min(line.find_first_of(u"\"'\r\n]", at), line.size()));
      std::replace(path, end, u'/', process_->pathSeparator());
    }
    return replaceAll(line, u"{dir}", directory_.u16string());
  }
  // A file name: in the scenario's folder unless it is absolute.
  fs::path takePath() { return directory_ / fs::path(takeText("NAME")); }

  Driver& driver() {
    if (driver_ == nullptr) throw ScenarioError{0, "there is no start before it"};
    return *driver_;
  }

  void doFile() {
    const fs::path path = takePath();
    const bool lf = takeIf(u"lf");
    std::string bytes;
    if (takeIf(u"raw")) {
      noMoreBlockWithRaw();
      bytes = rawBytes(takeText("STRING"));
    } else {
      const std::u16string text = joined(current_->block, lf ? u"\n" : u"\r\n");
      if (codePage_->encode(text, bytes) != std::u16string::npos) {
        throw ScenarioError{0, "the block does not fit the code page"};
      }
    }
    noMore(true);
    std::ofstream out(path, std::ios::binary);
    if (!(out << bytes << std::flush)) throw ScenarioError{0, "the file cannot be made"};
  }
  void doRemove() {
    const fs::path path = takePath();
    if (fs::is_regular_file(path)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
    if (!fs::remove(path)) throw ScenarioError{0, "there is no such file"};
    noMore();
  }
  void doReadonly() {
    fs::permissions(takePath(), fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    noMore();
  }
  void doFolder() {
    fs::create_directories(takePath());
    noMore();
  }
  void doRegistry() {
    const std::uint32_t root = takeRoot();
    const std::u16string key = takeText("KEY"), valueName = takeText("NAME"), value = takeText("VALUE");
    noMore();
    if (!Registry(*calls_).SetRegValue(root, key, valueName, value)) throw ScenarioError{0, "the value is not stored"};
  }
  void doCodepage() {
    if (driver_ != nullptr) throw ScenarioError{0, "codepage stands before start only"};
    codePage_ = codePageByName(toUtf8(takeText("N")));
    if (codePage_ == nullptr) throw ScenarioError{0, "the code page is not supported"};
    noMore();
  }
  void doStart() {
    const std::u16string line = more() ? takeText("STRING") : std::u16string();
    noMore();
    driver_.reset();
    if (files_ == nullptr) files_ = std::make_unique<FailingTextFiles>(makeTextFiles(codePage_));
    for (auto& [operation, description] : faults_) files_->failNext(operation, description);
    faults_.clear();
    driver_ = makeDriver_({*files_, *calls_, *process_, stage_, [this](ColorPick& picker) { stepsOf(picker); }});
    driver_->start(line);
  }
  void doAnswer() {
    static const std::map<std::u16string, Answer> answers = {
        {u"ok", Answer::Ok}, {u"cancel", Answer::Cancel}, {u"yes", Answer::Yes}, {u"no", Answer::No}};
    const auto answer = answers.find(takeText("answer"));
    if (answer == answers.end()) throw ScenarioError{0, "an answer is ok, cancel, yes or no"};
    noMore();
    stage_.answers.push_back(answer->second);
  }
  void doPick() {
    if (takeIf(u"cancel")) {
      stage_.picks.push_back(std::nullopt);
    } else {
      stage_.picks.push_back(takePath().u16string());
    }
    noMore();
  }
  void doFail() {
    static const std::map<std::u16string, FileOperation> operations = {{u"create", FileOperation::Create},
                                                                       {u"write", FileOperation::Write},
                                                                       {u"close", FileOperation::Close},
                                                                       {u"read", FileOperation::Read}};
    const auto operation = operations.find(takeText("operation"));
    if (operation == operations.end()) throw ScenarioError{0, "what fails is create, write, close or read"};
    const std::u16string description = more() ? takeText("DESCRIPTION") : u"Failed on demand";
    noMore();
    if (files_ != nullptr) {
      files_->failNext(operation->second, description);
    } else {
      faults_.push_back({operation->second, description});
    }
  }

  void doKey() {
    const KeyStroke stroke = keyNamed(take("KEY").text);
    noMore();
    driver().key(stroke);
  }
  void typeText(std::u16string_view text) {
    for (const char16_t character : text) driver().key(keyTyping(character));
  }
  void doType() {
    const std::u16string text = takeText("STRING");
    noMore();
    typeText(text);
  }
  void doText() {
    const std::u16string text = takeText("STRING");
    noMore();
    driver().selectEdt();
    if (text.empty()) driver().key(keyNamed(u"Del"));
    typeText(text);
  }
  void doClick() {
    const Word& what = take("STRING");
    std::int32_t offset = 0;
    if (!what.quoted && what.text.starts_with(u'@')) {
      offset = number32({what.text.substr(1)});
    } else {
      const std::size_t at = form().N.Text().find(filled(what.text));
      if (at == std::u16string::npos) throw ScenarioError{0, "the text of the click does not occur"};
      std::int32_t behind = 1;
      if (more()) {
        const Word& plus = take("+K");
        if (plus.quoted || !plus.text.starts_with(u'+')) throw ScenarioError{0, "not understood: " + toUtf8(plus.text)};
        behind = number32({plus.text.substr(1)});
      }
      offset = static_cast<std::int32_t>(at) + behind;
    }
    noMore();
    driver().click(offset);
  }
  std::int32_t takeOffset() {
    const Word& word = take("@OFFSET");
    if (word.quoted || !word.text.starts_with(u'@')) throw ScenarioError{0, "an offset begins with @"};
    return number32({word.text.substr(1)});
  }
  void doDrag() {
    const std::int32_t from = takeOffset();
    const std::int32_t to = takeOffset();
    noMore();
    driver().drag(from, to);
  }
  void doFocus() {
    static const std::map<std::u16string, Control> controls = {
        {u"N", Control::N}, {u"EDT", Control::EDT}, {u"txtSearch", Control::txtSearch}};
    const auto control = controls.find(takeText("control"));
    if (control == controls.end()) throw ScenarioError{0, "the focus goes to N, EDT or txtSearch"};
    noMore();
    driver().focus(control->second);
  }
  void doMenu() {
    const std::u16string entry = takeText("ENTRY");
    noMore();
    for (const MenuPlace& place : form().menu()) {
      if (place.entry->name == entry) return driver().menu(place);
    }
    throw ScenarioError{0, "there is no such menu entry"};
  }
  void doMouse() {
    const std::u16string& what = current_->words[0].text;
    const std::int32_t x = number32(take("X"));
    const std::int32_t y = number32(take("Y"));
    noMore();
    driver().mouse(what == u"press" ? MouseStep::Press : what == u"move" ? MouseStep::Move : MouseStep::Release, x, y);
  }
  void doButton() {
    const std::u16string button = takeText("NAME");
    noMore();
    if (button != u"Command1" && button != u"CancelButton" && button != u"btn_Search0" && button != u"btn_Search1") {
      throw ScenarioError{0, "there is no such button"};
    }
    driver().button(button);
  }
  void doResize() {
    const std::int32_t width = number32(take("W"));
    const std::int32_t height = number32(take("H"));
    noMore();
    driver().resize(width, height);
  }
  void doClose() {
    noMore();
    driver().close();
  }

  void doExpect() {
    static const std::map<std::u16string, Handler> handlers = {
        {u"colors", &ScenarioRun::expectColors},    {u"picBigBox.Point", &ScenarioRun::expectPoint},
        {u"box", &ScenarioRun::expectBox},          {u"dialog", &ScenarioRun::expectDialog},
        {u"beeps", &ScenarioRun::expectBeeps},      {u"file", &ScenarioRun::expectFile},
        {u"registry", &ScenarioRun::expectRegistry}};
    const std::u16string what = takeText("WHAT");
    if (const auto handler = handlers.find(what); handler != handlers.end()) return (this->*handler->second)();
    const std::optional<Value> value = driver().read(toUtf8(what));
    if (!value) throw ScenarioError{0, "expectation not understood: " + toUtf8(what)};
    const bool block = what == u"N.Text" && !more();
    if (block) {
      compareTexts(toUtf8(what), joined(current_->block, u"\r\n"), std::get<std::u16string>(*value));
    } else {
      compare(toUtf8(what), *value);
    }
    noMore(block);
  }
  // The value of the next word against what was got.
  void compare(const std::string& what, const Value& got) {
    const Word& word = take("VALUE");
    if (std::holds_alternative<bool>(got)) {
      if (word.text != u"True" && word.text != u"False") throw ScenarioError{0, what + " is True or False"};
      check(what, word.text == u"True", got);
    } else if (std::holds_alternative<std::int64_t>(got)) {
      // Colours and the like may be written signed or not.
      const std::int64_t number = numberIn(word);
      if (static_cast<std::uint32_t>(number) != static_cast<std::uint32_t>(std::get<std::int64_t>(got))) {
        check(what, number, got);
      }
    } else {
      check(what, filled(word.text), got);
    }
  }
  void check(const std::string& what, const Value& expected, const Value& got) {
    if (expected == got) return;
    report(current_->line, what + ": expected " + shown(expected) + ", got " + shown(got));
  }
  // The first line that differs is shown.
  void compareTexts(const std::string& what, std::u16string_view expected, std::u16string_view got) {
    if (expected == got) return;
    std::size_t line = 1;
    const auto cut = [](std::u16string_view& text) {
      const std::size_t end = text.find(u'\n');
      const std::u16string_view first = text.substr(0, end == std::u16string_view::npos ? end : end + 1);
      text.remove_prefix(first.size());
      return first;
    };
    for (;; ++line) {
      const std::u16string_view a = cut(expected), b = cut(got);
      if (a == b) continue;
      const auto side = [](std::u16string_view text) { return text.empty() ? std::string("the end") : inQuotes(text); };
      return report(current_->line,
                    what + " line " + std::to_string(line) + ": expected " + side(a) + ", got " + side(b));
    }
  }
  void expectColors() {
    noMore(true);
    const std::u16string text = std::get<std::u16string>(*driver().read("N.Text"));
    std::u16string letters;
    for (const std::uint32_t color : driver().colors()) letters += segmentLetter(color);
    letters.resize(text.size(), u'-');
    std::u16string got;
    for (const std::u16string_view line : linesOf(text)) {
      (got += line) += u"\r\n";
      (got += letters.substr(static_cast<std::size_t>(line.data() - text.data()), line.size())) += u"\r\n";
    }
    compareTexts("colors", joined(current_->block, u"\r\n"), got);
  }
  void expectPoint() {
    const std::int32_t x = number32(take("X"));
    const std::int32_t y = number32(take("Y"));
    compare("picBigBox.Point", driver().point(x, y));
    noMore();
  }
  static std::string shownBox(const ShownBox& box) {
    return std::to_string(box.flags) + ' ' + inQuotes(box.text) + " title " + inQuotes(box.title);
  }
  void expectBox() {
    ShownBox expected;
    expected.flags = number32(take("FLAGS"));
    expected.text = takeText("STRING");
    expected.title = takeIf(u"title") ? takeText("STRING") : u"Dravenna";
    noMore();
    if (boxLines_.empty()) return report(current_->line, "box: expected " + shownBox(expected) + ", got none");
    const ShownBox got = boxLines_.front().first;
    boxLines_.erase(boxLines_.begin());
    if (got.flags != expected.flags || got.text != expected.text || got.title != expected.title) {
      report(current_->line, "box: expected " + shownBox(expected) + ", got " + shownBox(got));
    }
  }
  void expectDialog() {
    const std::string property = toUtf8(takeText("PROPERTY"));
    if (!stage_.dialog) throw ScenarioError{0, "no file dialog was shown"};
    const CommonDialog& dialog = stage_.dialog->properties;
    const std::map<std::string, Value> values = {{"Kind", std::u16string(stage_.dialog->save ? u"save" : u"open")},
                                                 {"Filter", dialog.Filter},
                                                 {"DialogTitle", dialog.DialogTitle},
                                                 {"InitDir", dialog.InitDir},
                                                 {"FileName", dialog.FileName},
                                                 {"Flags", std::int64_t{dialog.Flags}}};
    const auto value = values.find(property);
    if (value == values.end()) throw ScenarioError{0, "a dialog has no " + property};
    compare("dialog " + property, value->second);
    noMore();
  }
  void expectBeeps() {
    compare("beeps", std::int64_t{stage_.beeps});
    stage_.beeps = 0;
    noMore();
  }
  void expectFile() {
    const std::string what = "file " + toUtf8(current_->words[std::min(word_, current_->words.size() - 1)].text);
    const fs::path path = takePath();
    const bool there = fs::is_regular_file(path);
    if (takeIf(u"missing")) {
      noMore();
      if (there) report(current_->line, what + ": expected missing, got a file");
      return;
    }
    std::string expected;
    if (takeIf(u"raw")) {
      noMoreBlockWithRaw();
      expected = rawBytes(takeText("STRING"));
    } else {
      const bool lf = takeIf(u"lf");
      codePage_->encode(joined(current_->block, lf ? u"\n" : u"\r\n"), expected);
    }
    noMore(true);
    if (!there) return report(current_->line, what + ": expected a file, got none");
    const std::string got = readFile(path);
    compareTexts(what, codePage_->decode(expected), codePage_->decode(got));
  }
  void expectRegistry() {
    const std::uint32_t root = takeRoot();
    const std::u16string key = takeText("KEY"), valueName = takeText("NAME");
    Registry store(*calls_);
    const std::u16string got = store.GetRegValue(root, key, valueName, u"<missing>");
    const bool missing = got == u"<missing>" && store.GetRegValue(root, key, valueName, u"") != got;
    const std::string what = "registry " + toUtf8(key) + ' ' + inQuotes(valueName);
    if (takeIf(u"missing")) {
      if (!missing) report(current_->line, what + ": expected missing, got " + inQuotes(got));
    } else if (missing) {
      report(current_->line, what + ": expected " + inQuotes(takeText("VALUE")) + ", got missing");
    } else {
      compare(what, got);
    }
    noMore();
  }

  void noMoreBlockWithRaw() const {
    if (current_->hasBlock) throw ScenarioError{0, "raw takes no block"};
  }
  std::uint32_t takeRoot() {
    if (takeIf(u"HKLM")) return HKEY_LOCAL_MACHINE_ID;
    if (takeIf(u"HKCR")) return HKEY_CLASSES_ROOT_ID;
    throw ScenarioError{0, "ROOT is HKLM or HKCR"};
  }
  static std::string rawBytes(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
      if (unit > 0xFF) throw ScenarioError{0, "raw holds code units up to 255"};
      bytes += static_cast<char>(unit);
    }
    return bytes;
  }
  Principal& form() { return *driver().form(); }

  // The steps up to the end of the picker; a scenario that ends before it leaves it by Esc.
  void stepsOf(ColorPick& picker) {
    const Directive* const outer = current_;
    const std::size_t word = word_;
    while (!picker.hidden && next_ < directives_.size()) step();
    if (!picker.hidden) driver_->key(keyNamed(u"Esc"));
    current_ = outer;
    word_ = word;
  }

  void report(int line, const std::string& text) {
    passed_ = false;
    const int at = line != 0 ? line : current_ != nullptr ? current_->line : 1;
    std::printf("%s:%d: %s\n", name_.c_str(), at, text.c_str());
  }

  std::string name_;
  const DriverFactory& makeDriver_;
  std::vector<Directive> directives_;
  std::size_t next_ = 0;
  const Directive* current_ = nullptr;
  std::size_t word_ = 0;
  bool passed_ = true;

  TemporaryFolder folder_;
  std::optional<TemporaryStore> store_;
  fs::path directory_;
  CodePagePtr codePage_;
  Stage stage_;
  std::vector<std::pair<ShownBox, int>> boxLines_;  // shown and not expected yet, with the line of the step
  std::vector<std::pair<FileOperation, std::u16string>> faults_;
  std::unique_ptr<RegistryCalls> calls_;
  std::unique_ptr<ScriptedProcess> process_;
  std::unique_ptr<FailingTextFiles> files_;
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

bool runOne(const fs::path& path, const DriverFactory& makeDriver) {
  if (!fs::is_regular_file(path)) {
    std::printf("%s:0: no such file\n", path.string().c_str());
    return false;
  }
  try {
    return ScenarioRun(path.string(), makeDriver).run(readFile(path));
  } catch (const ScenarioError& error) {
    std::printf("%s:%d: %s\n", path.string().c_str(), error.line, error.message.c_str());
    return false;
  }
}

}  // namespace

int runScenarios(const std::vector<fs::path>& paths, const DriverFactory& makeDriver) {
  int passed = 0, failed = 0;
  for (const fs::path& path : paths) {
    for (const fs::path& file : scenarioFiles(path)) ++(runOne(file, makeDriver) ? passed : failed);
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}

}  // namespace dravenna
