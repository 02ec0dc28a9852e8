#include <algorithm>

#include "support/driver.h"
#include "support/scenario.h"
#include "text/text.h"

namespace dravenna {

namespace {

// The two ends of a selection: the one that stays, and the one that moves with the keys.
struct Caret {
  std::int32_t anchor = 0;
  std::int32_t at = 0;
  std::u16string text = {};  // that they were in

  // Takes over what the program has shown and selected since.
  void follow(const std::u16string& shown, std::int32_t selStart, std::int32_t selLength) {
    if (text == shown && std::min(anchor, at) == selStart && std::max(anchor, at) == selStart + selLength) return;
    *this = {selStart, selStart + selLength, shown};
  }
  std::int32_t start() const { return std::min(anchor, at); }
  std::int32_t length() const { return std::max(anchor, at) - start(); }
};

bool oneStep(char16_t first, char16_t second) {
  return (isHighSurrogate(first) && isLowSurrogate(second)) || (first == u'\r' && second == u'\n');
}

std::int32_t stepBack(std::u16string_view text, std::int32_t at) {
  const auto i = static_cast<std::size_t>(at);
  if (i == 0) return at;
  return at - (i > 1 && oneStep(text[i - 2], text[i - 1]) ? 2 : 1);
}

std::int32_t stepOn(std::u16string_view text, std::int32_t at) {
  const auto i = static_cast<std::size_t>(at);
  if (i >= text.size()) return at;
  return at + (i + 1 < text.size() && oneStep(text[i], text[i + 1]) ? 2 : 1);
}

std::int32_t lineStart(std::u16string_view text, std::int32_t at) {
  const std::size_t end = text.substr(0, static_cast<std::size_t>(at)).rfind(u"\r\n");
  return end == std::u16string_view::npos ? 0 : static_cast<std::int32_t>(end + 2);
}

std::int32_t lineEnd(std::u16string_view text, std::int32_t at) {
  return static_cast<std::int32_t>(std::min(text.find(u"\r\n", static_cast<std::size_t>(at)), text.size()));
}

// What a control itself does with the keys that move its caret. False for any other key.
bool moveCaret(std::u16string_view text, const KeyStroke& stroke, Caret& caret) {
  const bool extend = (stroke.shift & kShift) != 0;
  const bool whole = (stroke.shift & kCtrl) != 0;
  const bool collapse = !extend && caret.length() > 0;
  switch (stroke.code) {
    case kKeyLeft:
      caret.at = collapse ? caret.start() : stepBack(text, caret.at);
      break;
    case kKeyRight:
      caret.at = collapse ? caret.start() + caret.length() : stepOn(text, caret.at);
      break;
    case kKeyHome:
      caret.at = whole ? 0 : lineStart(text, caret.at);
      break;
    case kKeyEnd:
      caret.at = whole ? static_cast<std::int32_t>(text.size()) : lineEnd(text, caret.at);
      break;
    case 'A':
      if (stroke.shift != kCtrl) return false;
      caret = {0, static_cast<std::int32_t>(text.size()), std::u16string(text)};
      return true;
    default:
      return false;
  }
  if (!extend) caret.anchor = caret.at;
  return true;
}

// What a text box itself does with a key and its character.
void editBox(TextBox& box, const KeyStroke& stroke, bool keyPasses, bool characterPasses, Caret& caret) {
  std::u16string text = box.Text();
  caret.follow(text, box.SelStart(), box.SelLength());
  const auto replace = [&](std::u16string_view with) {
    text.replace(static_cast<std::size_t>(caret.start()), static_cast<std::size_t>(caret.length()), with);
    caret.anchor = caret.at = caret.start() + static_cast<std::int32_t>(with.size());
  };
  if (keyPasses && moveCaret(text, stroke, caret)) {
    box.userEdited(text, caret.start(), caret.length());
    return;
  }
  if (stroke.code == kKeyBackspace && characterPasses) {
    if (caret.length() == 0) caret.anchor = stepBack(text, caret.at);
    replace(u"");
  } else if (stroke.code == kKeyDel && keyPasses) {
    if (caret.length() == 0) caret.anchor = stepOn(text, caret.at);
    replace(u"");
  } else if (characterPasses && stroke.character >= 0x20 && stroke.character != 0x7F) {
    replace(std::u16string_view(&stroke.character, 1));
  } else {
    return;
  }
  caret.text = text;
  box.userEdited(text, caret.start(), caret.length());
}

// The main window without a window: where the focus is, and what the controls do by themselves.
class CoreDriver : public Driver, private Windowing {
 public:
  explicit CoreDriver(const Surroundings& surroundings) : surroundings_(surroundings), stage_(surroundings.stage) {}

  Principal* form() override { return form_.get(); }
  Control focused() override {
    if (searchActive_) return Control::txtSearch;
    return form_->colorPick != nullptr ? Control::None : mainFocus_;
  }

  void start(std::u16string_view commandLine) override {
    surroundings_.process.line = commandLine;
    closed_ = searchActive_ = searchLostFocus_ = false;
    mainFocus_ = Control::None;
    form_ = std::make_unique<Principal>(
        Platform{surroundings_.files, surroundings_.registry, surroundings_.process, *this, surroundings_.commits});
    form_->Form_Load();
    if (mainFocus_ == Control::None) mainFocus_ = form_->N.TabStop ? Control::N : Control::EDT;
    settle();
  }

  void key(const KeyStroke& stroke) override {
    if (form_->colorPick != nullptr) {
      std::int16_t code = stroke.code;
      form_->colorPick->Form_KeyDown(code);
    } else if (mainForm(); searchActive_) {
      searchKey(stroke);
    } else if (stroke.code == kKeyTab) {
      tab();
    } else if (const MenuPlace* place = shortcut(stroke)) {
      (form_.get()->*place->click)();
    } else {
      const Control focus = mainFocus_;
      const KeyOutcome outcome =
          form_->dispatchKey({stroke.code, stroke.shift, static_cast<std::int16_t>(stroke.character), focus});
      // A handler may have given the focus to EDT: the character goes there too.
      if (mainFocus_ == Control::EDT) {
        editBox(form_->EDT, stroke, outcome.keyPasses && focus == mainFocus_, outcome.characterPasses, caretOfEdt_);
      } else if (mainFocus_ == Control::N && outcome.keyPasses) {
        caretOfN_.follow(form_->N.Text(), form_->N.SelStart(), form_->N.SelLength());
        if (moveCaret(form_->N.Text(), stroke, caretOfN_)) select(caretOfN_);
      }
    }
    settle();
  }

  bool closed() override { return closed_; }

  void selectEdt() override {
    focus(Control::EDT);
    const auto length = static_cast<std::int32_t>(form_->EDT.Text().size());
    form_->EDT.userEdited(form_->EDT.Text(), 0, length);
  }

  void drag(std::int32_t from, std::int32_t to) override {
    leaveSearch();
    mainFocus_ = Control::N;
    settle();
    caretOfN_ = {from, to, form_->N.Text()};
    select(caretOfN_);
    form_->N_MouseUp();
    settle();
  }

  void focus(Control control) override {
    if (control == Control::EDT && !form_->EDT.Visible) throw ScenarioError{0, "EDT is not visible"};
    if (control == Control::txtSearch) {
      searchBox();
      searchActive_ = true;
    } else {
      SetFocus(control);
    }
    settle();
  }

  void menu(const MenuPlace& place) override {
    leaveSearch();
    settle();
    if (place.entry->Enabled && place.click != nullptr) (form_.get()->*place.click)();
    settle();
  }

  void mouse(MouseStep step, std::int32_t x, std::int32_t y) override {
    if (step == MouseStep::Press) picker().picBigBox_MouseDown(x, y);
    if (step == MouseStep::Move) picker().picBigBox_MouseMove(x, y);
    if (step == MouseStep::Release) picker().picBigBox_MouseUp(x, y);
  }

  void button(const std::string& name) override {
    if (name == "Command1") return picker().Command1_Click();
    FrmSearch& box = searchBox();
    searchActive_ = true;
    if (name == "CancelButton") {
      box.CancelButton_Click();
    } else {
      box.btn_Search_Click(name == "btn_Search0" ? 0 : 1);
    }
    settle();
  }

  void resize(std::int32_t width, std::int32_t height) override {
    FormState& state = form_->form;
    const std::int32_t frameWidth = state.Width - state.ScaleWidth;
    const std::int32_t frameHeight = state.Height - state.ScaleHeight;
    state.Width = width;
    state.Height = height;
    form_->Form_Resize();
    state.ScaleWidth = state.Width - frameWidth;
    state.ScaleHeight = state.Height - frameHeight;
    form_->Form_Resize();
  }

  void close() override { unloadMainForm(); }

 private:
  // Windowing.
  Answer messageBox(std::u16string_view text, int flags, std::u16string_view title) override {
    loseSearch();
    stage_.boxes.push_back({std::u16string(text), flags, std::u16string(title.empty() ? u"Dravenna" : title)});
    return stage_.answerFor(flags);
  }
  void ShowOpen(CommonDialog& dialog) override { showDialog(dialog, false); }
  void ShowSave(CommonDialog& dialog) override { showDialog(dialog, true); }
  void beep() override { ++stage_.beeps; }
  void pointerChanged() override {}
  void SetFocus(Control control) override {
    if (control == Control::EDT && !form_->EDT.Visible) return;
    const bool had = focused() == control;
    leaveSearch();
    mainFocus_ = control;
    if (!had && control == Control::EDT) form_->EDT_GotFocus();
  }
  void showSearchBox(FrmSearch&) override { searchActive_ = true; }
  void unloadSearchBox(FrmSearch&) override { searchActive_ = searchLostFocus_ = false; }
  void showColorPick(ColorPick& picker) override { surroundings_.stepsOfPicker(picker); }
  void unloadMainForm() override {
    if (closed_) return;
    closed_ = true;
    form_->Form_Unload();
    mainFocus_ = Control::None;
  }

  void showDialog(CommonDialog& dialog, bool save) {
    loseSearch();
    stage_.dialog = ShownDialog{save, dialog};
    if (const std::optional<std::u16string> pick = stage_.nextPick()) {
      dialog.FileName = *pick;
    } else if (!stage_.takesOffers) {
      if (dialog.CancelError) throw Failure(u"Cancelled");
      dialog.FileName.clear();
    }
  }

  // The focus goes from the search box to the main window; the box hears of it when the handler has returned.
  void leaveSearch() {
    loseSearch();
    searchActive_ = false;
  }
  void loseSearch() { searchLostFocus_ = searchLostFocus_ || searchActive_; }

  // What the system does when a handler has returned.
  void settle() {
    if (closed_) return;
    if (searchLostFocus_ && form_->frmSearch != nullptr) form_->frmSearch->Form_LostFocus();
    searchLostFocus_ = false;
    if (mainFocus_ == Control::EDT && !form_->EDT.Visible) mainFocus_ = form_->N.TabStop ? Control::N : Control::None;
  }

  void tab() {
    if (mainFocus_ == Control::N && form_->EDT.Visible) {
      SetFocus(Control::EDT);
    } else if (mainFocus_ != Control::N && form_->N.TabStop) {
      SetFocus(Control::N);
    }
  }

  const MenuPlace* shortcut(const KeyStroke& stroke) {
    if (stroke.shift != kCtrl) return nullptr;
    for (const MenuPlace& place : form_->menu()) {
      if (place.shortcut != 0 && place.shortcut == stroke.code && place.entry->Enabled) return &place;
    }
    return nullptr;
  }

  void select(const Caret& caret) {
    form_->N.setSelStart(caret.start());
    form_->N.setSelLength(caret.length());
  }

  void searchKey(const KeyStroke& stroke) {
    FrmSearch* const box = form_->frmSearch.get();
    auto character = static_cast<std::int16_t>(stroke.character);
    if (stroke.code == kKeyTab) throw ScenarioError{0, "Tab in the search box: its buttons are clicked with button"};
    if (character != 0) box->Form_KeyPress(character);
    if (form_->frmSearch.get() == box) editBox(box->txtSearch, stroke, true, character != 0, caretOfSearch_);
  }

  Surroundings surroundings_;
  Stage& stage_;
  std::unique_ptr<Principal> form_;
  Control mainFocus_ = Control::None;
  bool searchActive_ = false;
  bool searchLostFocus_ = false;
  bool closed_ = false;
  Caret caretOfN_, caretOfEdt_, caretOfSearch_;
};

}  // namespace

std::unique_ptr<Driver> makeCoreDriver(const Surroundings& surroundings) {
  return std::make_unique<CoreDriver>(surroundings);
}

}  // namespace dravenna
