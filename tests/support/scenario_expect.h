#pragma once

#include "support/scenario_state.h"

namespace dravenna {

inline std::string shown(const Value& value) {
  if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "True" : "False";
  if (const std::int64_t* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  return inQuotes(std::get<std::u16string>(value));
}

inline std::string shown(const ShownBox& box) {
  return std::to_string(box.flags) + ' ' + inQuotes(box.text) + " title " + inQuotes(box.title);
}

inline char16_t segmentLetter(std::uint32_t color) {
  const std::uint32_t colors[] = {clrPlain, clrComment, clrQuote, clrError, clrTitle, clrMessage, clrCode};
  return u"pcqetmk?"[std::find(std::begin(colors), std::end(colors), color) - colors];
}

// The directive `expect`.
class ScenarioExpectations : public ScenarioState {
 public:
  using ScenarioState::ScenarioState;

 protected:
  void doExpect() {
    do expectOne();
    while (more());
  }

 private:
  using Handler = void (ScenarioExpectations::*)();

  void expectOne() {
    static const std::map<std::string, Handler> handlers = {
        {"colors", &ScenarioExpectations::expectColors},    {"picBigBox.Point", &ScenarioExpectations::expectPoint},
        {"box", &ScenarioExpectations::expectBox},          {"dialog", &ScenarioExpectations::expectDialog},
        {"beeps", &ScenarioExpectations::expectBeeps},      {"file", &ScenarioExpectations::expectFile},
        {"registry", &ScenarioExpectations::expectRegistry}};
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
      expected = wholeNumber(word);
      if (static_cast<std::uint32_t>(wholeNumber(word)) == static_cast<std::uint32_t>(*number)) return;
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
    const auto path = takePath();
    const std::string what = "file " + lastWord();
    const bool there = std::filesystem::is_regular_file(path);
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
};

}  // namespace dravenna
