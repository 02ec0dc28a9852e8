#include "support/driver.h"

#include <map>

#include "support/scenario.h"
#include "text/text.h"

namespace dravenna {

namespace {

using Reader = std::function<Value(Principal&)>;

std::u16string textOf(std::u16string_view text) { return std::u16string(text); }
std::int64_t number(std::int64_t value) { return value; }

FrmSearch& openBox(Principal& form) {
  if (form.frmSearch == nullptr) throw ScenarioError{0, "the search box is closed"};
  return *form.frmSearch;
}

ColorPick& openPicker(Principal& form) {
  if (form.colorPick == nullptr) throw ScenarioError{0, "the picker is closed"};
  return *form.colorPick;
}

const std::map<std::string, Reader, std::less<>>& readers() {
  static const std::map<std::string, Reader, std::less<>> all = {
      {"N.Text", [](Principal& form) { return form.N.Text(); }},
      {"N.SelStart", [](Principal& form) { return number(form.N.SelStart()); }},
      {"N.SelLength", [](Principal& form) { return number(form.N.SelLength()); }},
      {"N.SelText", [](Principal& form) { return textOf(form.N.SelText()); }},
      {"N.SelColor", [](Principal& form) { return number(form.N.SelColor()); }},
      {"N.Visible", [](Principal& form) { return form.N.Visible; }},
      {"N.TabStop", [](Principal& form) { return form.N.TabStop; }},
      {"EDT.Text", [](Principal& form) { return form.EDT.Text(); }},
      {"EDT.SelStart", [](Principal& form) { return number(form.EDT.SelStart()); }},
      {"EDT.SelLength", [](Principal& form) { return number(form.EDT.SelLength()); }},
      {"EDT.SelText", [](Principal& form) { return textOf(form.EDT.SelText()); }},
      {"EDT.Visible", [](Principal& form) { return form.EDT.Visible; }},
      {"EDT.ForeColor", [](Principal& form) { return number(form.EDT.ForeColor); }},
      {"EDT.BackColor", [](Principal& form) { return number(form.EDT.BackColor); }},
      {"Ini", [](Principal& form) { return number(form.Ini); }},
      {"Fin", [](Principal& form) { return number(form.Fin); }},
      {"xIni", [](Principal& form) { return number(form.xIni); }},
      {"NavMode", [](Principal& form) { return number(form.NavMode); }},
      {"Modified", [](Principal& form) { return form.Modified; }},
      {"ScriptLoaded", [](Principal& form) { return form.ScriptLoaded; }},
      {"HasMessages", [](Principal& form) { return form.HasMessages; }},
      {"HasCode", [](Principal& form) { return form.HasCode; }},
      {"UndoText", [](Principal& form) { return form.UndoText; }},
      {"LastSearch", [](Principal& form) { return form.LastSearch; }},
      {"ScriptPath", [](Principal& form) { return form.ScriptPath; }},
      {"AllowedCommands", [](Principal& form) { return form.AllowedCommands; }},
      {"SpecialAllowedCommands", [](Principal& form) { return form.SpecialAllowedCommands; }},
      {"Caption", [](Principal& form) { return form.form.Caption; }},
      {"MousePointer", [](Principal& form) { return number(form.form.MousePointer); }},
      {"frmSearch", [](Principal& form) { return textOf(form.frmSearch ? u"open" : u"closed"); }},
      {"frmSearch.Caption", [](Principal& form) { return openBox(form).Caption; }},
      {"txtSearch.Text", [](Principal& form) { return openBox(form).txtSearch.Text(); }},
      {"txtSearch.SelLength", [](Principal& form) { return number(openBox(form).txtSearch.SelLength()); }},
      {"btn_Search0.Caption", [](Principal& form) { return openBox(form).btn_Search[0]; }},
      {"btn_Search1.Caption", [](Principal& form) { return openBox(form).btn_Search[1]; }},
      {"CancelButton.Caption", [](Principal& form) { return openBox(form).CancelButton; }},
      {"ColorPick", [](Principal& form) { return textOf(form.colorPick ? u"open" : u"closed"); }},
      {"RFF.Text", [](Principal& form) { return openPicker(form).RFF.Text(); }},
      {"HT.Text", [](Principal& form) { return openPicker(form).HT.Text(); }},
      {"txtHexColor.Text", [](Principal& form) { return openPicker(form).txtHexColor.Text(); }},
      {"iPreview.BackColor", [](Principal& form) { return number(openPicker(form).iPreview.BackColor); }},
  };
  return all;
}

}  // namespace

std::optional<Value> Driver::read(const std::string& what) {
  if (what == "focus") {
    static const char16_t* const kNames[] = {u"none", u"N", u"EDT", u"txtSearch"};
    return std::u16string(kNames[static_cast<std::size_t>(focused())]);
  }
  if (const auto reader = readers().find(what); reader != readers().end()) return reader->second(*form());
  const std::size_t dot = what.find('.');
  for (const MenuPlace& place : form()->menu()) {
    if (toUtf8(place.entry->name) != what.substr(0, dot)) continue;
    if (what.ends_with(".Caption")) return place.entry->Caption;
    if (what.ends_with(".Enabled")) return place.entry->Enabled;
    if (what.ends_with(".Checked")) return place.entry->Checked;
  }
  return std::nullopt;
}

std::vector<std::uint32_t> Driver::colors() {
  std::vector<std::uint32_t> colors;
  for (std::size_t at = 0; at < form()->N.Text().size(); ++at) colors.push_back(form()->N.colorAt(at));
  return colors;
}

std::int64_t Driver::point(std::int32_t x, std::int32_t y) { return openPicker(*form()).picBigBox.Point(x, y); }

}  // namespace dravenna
