#include <algorithm>

#include "fuzz_input.h"
#include "model.h"
#include "platform/scratch_folder.h"
#include "support/quiet_form.h"

using namespace dravenna;

namespace {

constexpr int kMostSteps = 60;
constexpr int kMostPickers = 2;  // painting one takes long

// A script and a user. What each step must do to the document is told again here.
class Editor {
 public:
  Editor(CodePagePtr page, const std::pair<Text, Text>& lists, std::size_t mostRead, std::string_view script)
      : page_(std::move(page)), rule_(lists.first, lists.second), form_(page_, calls_, folder_.file("settings")) {
    calls_.mostRead = mostRead;
    folder_.put("script.txt", script);
    form_->ScriptPath = folder_.path("script.txt");
    form_->AllowedCommands = lists.first;
    form_->SpecialAllowedCommands = lists.second;
    load();

    std::string normal;
    for (std::size_t at = 0; at < script.size();) {
      const std::size_t feed = std::min(script.find('\n', at), script.size());
      const bool pair = feed < script.size() && feed > at && script[feed - 1] == '\r';
      normal.append(script.substr(at, feed - at - (pair ? 1 : 0))).append("\r\n");
      at = feed + 1;
    }
    require(encoded() == normal, "load and save without an edit");
  }

  void step(std::string_view line) {
    const char what = line.front();
    const Text text = model::cutAt(page_->decode(line.substr(1)), u"\r").front();
    int number = 0;
    int length = 0;
    std::sscanf(std::string(line.substr(1)).c_str(), "%d,%d", &number, &length);
    const int before = ini_;
    switch (what) {
      case 't':  // types
        if (form_->EDT.Visible) form_->EDT.userEdited(text, 0, 0);
        break;
      case 'e':
        if (form_->EDT.Visible) form_->EDT.userEdited(text, 0, 0);
        [[fallthrough]];
      case 'n':
        key(kKeyEnter, 0);
        break;
      case 'x':
        key(kKeyEsc, 0);
        break;
      case 'u':
      case 'd':
        key(what == 'u' ? kKeyUp : kKeyDown, static_cast<std::int16_t>(number & 7));
        break;
      case 'c':  // clicks or drags
        form_->N.setSelStart(number);
        form_->N.setSelLength(length);
        expectSelection();
        form_->N_MouseUp();
        break;
      case 'v':  // moves the caret by keys, of which nobody is told
        form_->N.setSelStart(number);
        break;
      case 's':
      case 'S':
        search(text, what == 's');
        break;
      case 'p':  // picks a colour
        if (++pickers_ > kMostPickers) return;
        form_.pickedAt = {{number & 255, length & 255}};
        expectSelection();
        key(kKeyF5, 0);
        break;
      case 'm':
        (*form_.*(number == 0   ? &Principal::mnu_EditMode1_Click
                  : number == 1 ? &Principal::mnu_EditMode2_Click
                                : &Principal::mnu_EditMode3_Click))();
        break;
      case 'w':
        require(form_->ScriptLoaded || doc_.text == form_->N.Text(), "a script without texts has changed");
        form_->Salvar();
        require(!form_->ScriptLoaded || folder_.get("script.txt") == encoded(), "the saved file");
        require(folder_.names().size() <= 3, "a temporary file is left");  // script, settings and their lock
        load();
        return;
      default:
        return;
    }
    if (std::string_view("encudp").find(what) != std::string_view::npos || ini_ != before) wandered_ = false;
    wandered_ |= what == 'v';
    check();
  }

 private:
  std::string encoded() const {
    std::string bytes;
    require(page_->encode(doc_.text, bytes) == std::string::npos, "the document cannot be written");
    return bytes;
  }

  void load() {
    form_.boxes.clear();
    form_->LoadScript();
    doc_ = model::Rule::load(rule_, page_->decode(folder_.get("script.txt")));
    require(form_->HasMessages == doc_.hasMessages && form_->HasCode == doc_.hasCode, "flags of the load");
    require(form_->ScriptLoaded == (doc_.hasMessages || doc_.hasCode), "ScriptLoaded");
    require(form_.said(u"The script have " + decimal(doc_.errorLines) + u" error(s).") == (doc_.errorLines > 0),
            "number of error lines");
    ini_ = form_->ScriptLoaded ? walk(0, true, 0) : 0;
    wandered_ = false;
    check();
  }

  // What must hold between any two steps.
  void check() {
    Principal& form = *form_;
    require(form.N.Text() == doc_.text, "characters of the document");
    require(form.Ini == ini_, "the current text is another one");
    const std::size_t size = doc_.text.size();
    for (std::size_t at = 0; at < size; ++at) {
      require(form.N.colorAt(at) == doc_.colors[at], "colours of the document");
      if (!isTextColor(doc_.colors[at])) continue;
      const auto belongs = [&](std::size_t i) {
        return doc_.colors[i] == doc_.colors[at] || (doc_.colors[i] == clrQuote && doc_.text[i] == u'"');
      };
      require(at > 0 && at + 1 < size && belongs(at - 1) && belongs(at + 1), "a text colour outside quote marks");
      require(doc_.text[at] != u'"' && doc_.text[at] != u'\n', "a text with a quote mark or a line end");
    }
    require(form.N.Visible && form.form.MousePointer == 0 && form.Screen.MousePointer == 0, "N hidden or still busy");
    if (ini_ == 0 || !form.ScriptLoaded) return;
    const auto ini = static_cast<std::size_t>(ini_);
    const auto fin = static_cast<std::size_t>(form.Fin);
    require(doc_.text[ini - 1] == u'"' && doc_.text.find(u'"', ini) + 1 == fin, "Ini and Fin");
    if (wandered_) return;
    begin_ = static_cast<std::size_t>(form.N.SelStart());
    length_ = static_cast<std::size_t>(form.N.SelLength());
    const bool inside =
        begin_ == ini + 1 && begin_ + length_ + 2 == fin && doc_.text[ini] == u'[' && doc_.text[fin - 2] == u']';
    require(inside || (begin_ == ini && begin_ + length_ + 1 == fin), "the current text is not selected");
  }

  void key(std::int16_t code, std::int16_t shift) {
    const bool steps = code == kKeyUp || code == kKeyDown;
    if (form_->ScriptLoaded && (code == kKeyEnter || (steps && form_->EDT.Visible))) expectCommit();
    if (form_->ScriptLoaded && steps) ini_ = walk(ini_, code == kKeyDown, shift);
    form_->dispatchKey({code, shift, 0, Control::EDT});
  }

  void expectCommit() {
    if (ini_ == 0 || form_->Fin == 0) return;
    Text text = form_->EDT.Text();
    std::replace(text.begin(), text.end(), u'"', u'\'');
    const Text old = doc_.text.substr(begin_, length_);
    const std::uint32_t color = doc_.colors[length_ > 0 ? begin_ : begin_ - 1];
    const bool elsewhere = static_cast<std::size_t>(form_->N.SelStart()) != begin_ ||
                           static_cast<std::size_t>(form_->N.SelLength()) != length_;
    if (text == old || (!elsewhere && form_->EDT.BackColor == 0)) return;
    if (text.empty()) text = u" ";
    if (color != clrTitle) return replace(begin_, text);
    const auto title = [](const Text& inside) { return u"\"[" + inside + u"]\""; };
    std::vector<std::size_t> places;
    std::size_t at = 0;
    while ((at = model::findIgnoringCase(doc_.text, title(old), at)) != Text::npos) places.push_back(++at + 1);
    std::for_each(places.rbegin(), places.rend(), [&](std::size_t place) { replace(place, text); });
    ini_ = static_cast<int>(model::findIgnoringCase(doc_.text, title(text), 0)) + 1;
  }

  // Puts a text in the place of one as long as the current one.
  void replace(std::size_t begin, const Text& text) {
    const std::uint32_t color = doc_.colors[length_ > 0 ? begin : begin - 1];
    const auto at = doc_.colors.begin() + static_cast<std::ptrdiff_t>(begin);
    doc_.colors.insert(doc_.colors.erase(at, at + static_cast<std::ptrdiff_t>(length_)), text.size(), color);
    doc_.text.replace(begin, length_, text);
  }

  bool admits(std::uint32_t color, int shift) {
    const bool onlyInternal = !doc_.hasMessages && doc_.hasCode;
    return color == clrMessage || (color == clrTitle && (form_->NavMode > 0 || shift == 1 || onlyInternal)) ||
           (color == clrCode && (form_->NavMode == 2 || shift == 2 || onlyInternal));
  }

  int walk(int start, bool forward, int shift) {
    for (int ini = start;;) {
      const int last = ini;
      const Text before = ini == 0 ? doc_.text : doc_.text.substr(0, static_cast<std::size_t>(ini) - 1);
      const std::size_t found = forward ? doc_.text.find(u'"', static_cast<std::size_t>(ini)) : before.rfind(u'"');
      ini = static_cast<int>(found + 1);
      if (ini == last || ini == start) return start;
      if (found + 1 < doc_.text.size() && admits(doc_.colors[found + 1], shift)) return ini;
    }
  }

  // The text that the selection of N lies in becomes the current one.
  void expectSelection() {
    const auto start = static_cast<std::size_t>(form_->N.SelStart());
    const auto length = static_cast<std::size_t>(form_->N.SelLength());
    if (!form_->ScriptLoaded || start == 0) return;
    const std::size_t first = length > 0 ? start : start - 1;
    for (std::size_t at = first; at == first || at < start + length; ++at) {
      if (doc_.colors[at] != doc_.colors[first] || !isTextColor(doc_.colors[first])) return;
    }
    ini_ = static_cast<int>(doc_.text.rfind(u'"', start - 1)) + 1;
  }

  // A hit must be an admitted text with the word in it; no hit leaves everything.
  void search(const Text& word, bool forward) {
    form_->Buscar(word, forward);
    if (form_->Ini == ini_) return;
    ini_ = form_->Ini;
    require(admits(doc_.colors.at(static_cast<std::size_t>(ini_)), 0), "a hit in a text that the mode leaves out");
    require(model::findIgnoringCase(Text(form_->N.SelText()), word, 0) != Text::npos, "a hit without the word");
  }

  CodePagePtr page_;
  model::Rule rule_;
  ScratchFolder folder_;
  ShortReads calls_;
  QuietForm form_;
  model::Document doc_;
  int ini_ = 0;
  std::size_t begin_ = 0, length_ = 0;  // of the current text in N
  bool wandered_ = false;               // the caret of N may be elsewhere
  int pickers_ = 0;
};

}  // namespace

// Parts are a script and what the user does, one step a line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const CodePagePtr page = fuzzCodePage(input.digit());
  const auto lists = fuzzCommandLists(input.digit());
  const std::size_t mostRead = 1 + input.digit();
  Editor editor(page, lists, mostRead, input.part());
  for (int steps = 0; !input.empty() && steps < kMostSteps; ++steps) {
    const std::string_view line = input.part("\n");
    if (!line.empty()) editor.step(line);
  }
  return 0;
}
