#include <algorithm>

#include "fuzz_input.h"
#include "memory_calls.h"
#include "model.h"
#include "robustness/quiet_platform.h"
#include "scan/line_scanner.h"

using namespace dravenna;

namespace {

constexpr std::size_t kMostSteps = 60;

// A script and a user. What each step must do to the document is told again here.
class Editor {
 public:
  Editor(CodePagePtr page, const std::pair<Text, Text>& lists, std::size_t mostRead, std::string_view script)
      : page_(std::move(page)), rule_(lists.first, lists.second), form_(page_, calls_, "/settings") {
    calls_.mostRead = mostRead;
    calls_.put("/script.txt", script);
    form_->ScriptPath = u"/script.txt";
    form_->AllowedCommands = lists.first;
    form_->SpecialAllowedCommands = lists.second;
    form_->LoadScript();
    loaded();

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
    const int number = std::atoi(std::string(line.substr(1)).c_str());
    boxes_ = std::ssize(form_.boxes);
    const int before = form_->Ini;
    int ini = before;
    switch (what) {
      case 'e':
      case 't':
        if (form_->EDT.Visible) form_->EDT.userEdited(text, static_cast<std::int32_t>(text.size()), 0);
        if (what == 'e') ini = key(kKeyEnter, 0);
        break;
      case 'n':
        ini = key(kKeyEnter, 0);
        break;
      case 'x':
        key(kKeyEsc, 0);
        break;
      case 'u':
      case 'd':
        ini = key(what == 'u' ? kKeyUp : kKeyDown, static_cast<std::int16_t>(number % 8));
        break;
      case 'c': {
        const std::size_t comma = line.find(',');
        ini = click(number, comma == std::string_view::npos ? 0 : std::atoi(std::string(line.substr(comma + 1)).c_str()));
        break;
      }
      case 'v':  // the caret moves and nobody is told
        form_->N.setSelStart(number);
        break;
      case 's':
      case 'S':
        ini = search(text, what == 's');
        break;
      case 'p':
        if (!form_->ScriptLoaded || ++pickers_ > 2) break;  // painting one takes long
        form_.pickedAt = {{number % 300, number / 300}};
        ini = key(kKeyF5, 0);
        break;
      case 'm':
        (number % 3 == 0   ? form_->mnu_EditMode1_Click()
         : number % 3 == 1 ? form_->mnu_EditMode2_Click()
                           : form_->mnu_EditMode3_Click());
        break;
      case 'w':
        save();
        return;
      case 'i':
        import();
        return;
      default:
        return;
    }
    if (what == 'v') wandered_ = true;
    if (std::string_view("encudp").find(what) != std::string_view::npos || ini != before) wandered_ = false;
    check(!wandered_);
    require(form_->Ini == ini, "the current text is another one than it should be");
  }

 private:
  std::string encoded() const {
    std::string bytes;
    require(page_->encode(doc_.text, bytes) == std::string::npos, "the document cannot be written");
    return bytes;
  }

  void loaded() {
    wandered_ = false;
    const std::string file = *calls_.find("/script.txt");
    doc_ = model::Rule::load(rule_, page_->decode(file));
    require(form_->HasMessages == doc_.hasMessages && form_->HasCode == doc_.hasCode, "flags of the load");
    require(form_->ScriptLoaded == (doc_.hasMessages || doc_.hasCode), "ScriptLoaded");
    require(form_->mnu_Guardar.Enabled == form_->ScriptLoaded && !form_->Modified, "state after the load");
    const Text errors = u"The script have " + decimal(doc_.errorLines) + u" error(s).";
    const auto isErrors = [&](const Text& box) { return box.starts_with(errors); };
    const bool said = std::any_of(form_.boxes.begin() + boxes_, form_.boxes.end(), isErrors);
    require(said == (doc_.errorLines > 0), "number of error lines");
    check(true);
    require(form_->Ini == (form_->ScriptLoaded ? walk(0, true, 0) : 0), "first text");
    require(form_->Ini != 0 || !form_->EDT.Visible || !form_->ScriptLoaded, "EDT without a text");
    if (page_->isSingleByte() || page_->isUtf8()) checkBytes(file);
  }

  // The scan over bytes finds what the scan over characters finds.
  void checkBytes(const std::string& file) {
    const CommandLists lists(form_->AllowedCommands, form_->SpecialAllowedCommands, page_);
    ByteLineScanner bytes(lists);
    LineScanner units(lists);
    std::string line;
    const auto scan = [&](auto& scanner, auto view, auto decode) {
      Text found;
      const auto put = [&](char16_t kind, std::size_t begin, std::size_t end) {
        found += kind + decode(view.substr(begin, end - begin)) + u"|";
      };
      struct Sink {
        decltype(put)& put;
        void plain(std::size_t begin, std::size_t end) { put(u'p', begin, end); }
        void quote(std::size_t at) { put(u'q', at, at + 1); }
        void error(std::size_t begin, std::size_t end) { put(u'e', begin, end); }
        void comment(std::size_t begin, std::size_t end) { put(u'c', begin, end); }
        void text(const QuotedText& quoted) {
          put(quoted.firstOfSpecial ? u's' : quoted.allowed ? u'a' : u't', quoted.begin, quoted.end);
        }
      };
      scanner.scan(view, Sink{put});
      return found;
    };
    for (std::size_t at = 0; at < file.size(); at += line.size() + 1) {
      line = file.substr(at, file.find('\n', at) - at);
      const Text wide = page_->decode(line);
      const Text fromUnits = scan(units, TextView(wide), [](TextView text) { return Text(text); });
      require(scan(bytes, std::string_view(line), [&](std::string_view text) { return page_->decode(text); }) == fromUnits,
              "bytes and characters are scanned differently");
    }
    require(bytes.errorLines() == doc_.errorLines, "error lines over bytes");
  }

  // What must hold between any two steps.
  void check(bool selectionIsCurrent) {
    Principal& form = *form_;
    require(form.N.Text() == doc_.text, "characters of the document");
    const std::size_t size = doc_.text.size();
    for (std::size_t at = 0; at < size; ++at) {
      require(form.N.colorAt(at) == doc_.colors[at], "colours of the document");
      if (!isTextColor(doc_.colors[at])) continue;
      const auto neighbour = [&](std::size_t i) {
        return doc_.colors[i] == doc_.colors[at] || (doc_.colors[i] == clrQuote && doc_.text[i] == u'"');
      };
      require(at > 0 && at + 1 < size && neighbour(at - 1) && neighbour(at + 1) && doc_.text[at] != u'"' &&
                  doc_.text[at] != u'\n',
              "a text colour outside quote marks");
    }
    require(form.N.Visible && form.form.MousePointer == 0 && form.screenMousePointer == 0, "the window is not itself");
    if (form.Ini == 0 || !form.ScriptLoaded) return;
    const auto ini = static_cast<std::size_t>(form.Ini);
    require(doc_.text[ini - 1] == u'"' && doc_.text.find(u'"', ini) + 1 == static_cast<std::size_t>(form.Fin),
            "Ini and Fin are no quote marks");
    if (!selectionIsCurrent) return;
    begin_ = static_cast<std::size_t>(form.N.SelStart());
    length_ = static_cast<std::size_t>(form.N.SelLength());
    const std::size_t whole = static_cast<std::size_t>(form.Fin) - ini - 1;
    const bool inside = begin_ == ini + 1 && length_ + 2 == whole && doc_.text[ini] == u'[' &&
                        doc_.text[ini + whole - 1] == u']';
    require(inside || (begin_ == ini && length_ == whole), "the current text is not selected");
  }

  // Runs a key. Gives where the current text must begin afterwards.
  int key(std::int16_t code, std::int16_t shift) {
    int ini = form_->Ini;
    const bool steps = code == kKeyUp || code == kKeyDown;
    if (form_->ScriptLoaded && (code == kKeyEnter || (steps && form_->EDT.Visible))) ini = commit();
    if (form_->ScriptLoaded && steps) ini = walk(ini, code == kKeyDown, shift);
    if (form_->ScriptLoaded && code == kKeyF5) ini = target(form_->N.SelStart(), form_->N.SelLength());
    form_->dispatchKey({code, shift, 0, Control::EDT});
    return ini;
  }

  int commit() {
    const int ini = form_->Ini;
    if (ini == 0 || form_->Fin == 0) return ini;
    Text text = form_->EDT.Text();
    std::replace(text.begin(), text.end(), u'"', u'\'');
    const Text old = doc_.text.substr(begin_, length_);
    const std::uint32_t color = doc_.colors[length_ > 0 ? begin_ : begin_ - 1];
    if (text == old || !isTextColor(color)) return ini;
    if (text.empty()) text = u" ";
    if (color != clrTitle) {
      replace(begin_, text);
      return ini;
    }
    const auto title = [](const Text& inside) { return u"\"[" + inside + u"]\""; };
    std::vector<std::size_t> places;
    for (std::size_t from = 0; from != Text::npos;) {
      const std::size_t at = model::findIgnoringCase(doc_.text, title(old), from);
      if (at != Text::npos) places.push_back(at + 2);
      from = at == Text::npos ? at : at + 1;
    }
    std::for_each(places.rbegin(), places.rend(), [&](std::size_t place) { replace(place, text); });
    return static_cast<int>(model::findIgnoringCase(doc_.text, title(text), 0)) + 1;
  }

  void replace(std::size_t begin, const Text& text) {
    const std::uint32_t color = doc_.colors[length_ > 0 ? begin : begin - 1];
    const auto at = doc_.colors.begin() + static_cast<std::ptrdiff_t>(begin);
    doc_.colors.insert(doc_.colors.erase(at, at + static_cast<std::ptrdiff_t>(length_)), text.size(), color);
    doc_.text.replace(begin, length_, text);
  }

  bool admits(std::uint32_t color, int shift) const {
    const bool onlyInternal = !doc_.hasMessages && doc_.hasCode;
    return color == clrMessage || (color == clrTitle && (form_.mode() > 0 || shift == 1 || onlyInternal)) ||
           (color == clrCode && (form_.mode() == 2 || shift == 2 || onlyInternal));
  }

  int walk(int start, bool forward, int shift) const {
    for (int ini = start;;) {
      const int last = ini;
      if (forward) {
        ini = static_cast<int>(doc_.text.find(u'"', static_cast<std::size_t>(ini)) + 1);
      } else {
        const Text before = ini == 0 ? doc_.text : doc_.text.substr(0, static_cast<std::size_t>(ini) - 1);
        ini = static_cast<int>(before.rfind(u'"') + 1);
      }
      if (ini == last || ini == start) return start;
      const auto behind = static_cast<std::size_t>(ini);
      if (behind < doc_.text.size() && admits(doc_.colors[behind], shift)) return ini;
    }
  }

  // Where the text that a selection of N belongs to begins: the current one if it belongs to none.
  int target(std::int32_t start, std::int32_t length) const {
    const auto at = static_cast<std::size_t>(start);
    const auto first = static_cast<std::ptrdiff_t>(length > 0 ? at : at - 1);
    if (length == 0 && start == 0) return form_.current();
    const auto colors = doc_.colors.begin() + first;
    const bool one = std::all_of(colors, colors + std::max(length, 1), [&](std::uint32_t c) { return c == *colors; });
    return one && isTextColor(*colors) ? static_cast<int>(doc_.text.rfind(u'"', at - 1)) + 1 : form_.current();
  }

  int click(int start, int length) {
    form_->N.setSelStart(start);
    form_->N.setSelLength(length);
    const int ini = form_->ScriptLoaded ? target(form_->N.SelStart(), form_->N.SelLength()) : form_->Ini;
    form_->N_MouseUp();
    return ini;
  }

  // A hit must be an admitted text with the word in it; no hit leaves everything.
  int search(const Text& word, bool forward) {
    const int ini = form_->Ini;
    form_->Buscar(word, forward);
    if (form_->Ini == ini) return ini;
    const auto at = static_cast<std::size_t>(form_->Ini);
    require(admits(doc_.colors[at], 0), "a hit in a text that the mode leaves out");
    require(model::findIgnoringCase(Text(form_->N.SelText()), word, 0) != Text::npos, "a hit without the word");
    return form_->Ini;
  }

  void save() {
    const std::string before = *calls_.find("/script.txt");
    const bool loadedOne = form_->ScriptLoaded;
    form_->Salvar();
    require(*calls_.find("/script.txt") == (loadedOne ? encoded() : before), "the saved file");
    form_->LoadScript();
    loaded();
    checkFiles();
  }

  // Out to an exchange file and back in.
  void import() {
    form_->mnu_Export_Click();
    const Text document = doc_.text;
    const Text file = page_->decode(*calls_.find("/script.lxf"));
    form_->mnu_Import_Click();
    if (!file.empty()) {
      std::string merged;
      page_->encode(model::Rule::merge(rule_, document, file).text, merged);
      require(*calls_.find("/script.txt") == merged, "the imported file");
      loaded();
    }
    checkFiles();
  }

  void checkFiles() const { require(calls_.count() <= 4, "a temporary file is left"); }

  struct Form : QuietForm {
    using QuietForm::QuietForm;
    int current() const { return const_cast<Form&>(*this)->Ini; }
    int mode() const { return const_cast<Form&>(*this)->NavMode; }
  };

  CodePagePtr page_;
  model::Rule rule_;
  MemoryCalls calls_;
  Form form_;
  model::Document doc_;
  std::size_t begin_ = 0, length_ = 0;  // of the current text in N
  int pickers_ = 0;
  bool wandered_ = false;               // the caret of N may be elsewhere
  std::ptrdiff_t boxes_ = 0;             // shown before this step
};

}  // namespace

// Parts are a script and what the user does, one step a line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const CodePagePtr page = fuzzCodePage(input.digit());
  const auto lists = fuzzCommandLists(input.digit());
  const std::size_t mostRead = 1 + input.digit();
  Editor editor(page, lists, mostRead, input.part());
  for (std::size_t steps = 0; !input.empty() && steps < kMostSteps; ++steps) {
    const std::string_view line = input.part("\n");
    if (!line.empty()) editor.step(line);
  }
  return 0;
}
