#include "support/driver.h"

#include <map>

#include "app/disk_watch.h"
#include "app/status.h"
#include "platform/system.h"
#include "support/scenario.h"
#include "text/text.h"

namespace dravenna {

namespace {

template <class Shown>
Value valueOf(const Shown& shown) {
  if constexpr (std::is_same_v<Shown, bool>) {
    return shown;
  } else if constexpr (std::is_integral_v<Shown>) {
    return std::int64_t{shown};
  } else {
    return std::u16string(shown);
  }
}

Status::Parts statusOf(Driver& driver) {
  const auto files = makeTextFiles(codePageByName("1252"));
  DiskWatch disk(*files);
  return Status(*driver.form(), disk).parts();
}

using Reader = Value (*)(Driver&);

// A reader by its name; a call keeps its parentheses there.
#define SHOWN(what, value) std::pair<const std::string, Reader>(what, [](Driver& driver) { return valueOf(value); })
#define OF_FORM(what) SHOWN(#what, driver.form()->what)
#define OF_PICKER(what) SHOWN(#what, driver.picker().what)

std::map<std::string, Reader> mapOf(const auto&... readers) { return {readers...}; }

const std::map<std::string, Reader>& readers() {
  static const auto all =
      mapOf(OF_FORM(N.Text()), OF_FORM(N.SelStart()), OF_FORM(N.SelLength()), OF_FORM(N.SelText()),
            OF_FORM(N.SelColor()), OF_FORM(N.Visible), OF_FORM(N.TabStop), OF_FORM(EDT.Text()), OF_FORM(EDT.SelStart()),
            OF_FORM(EDT.SelLength()), OF_FORM(EDT.SelText()), OF_FORM(EDT.Visible), OF_FORM(EDT.ForeColor),
            OF_FORM(EDT.BackColor), OF_FORM(Ini), OF_FORM(Fin), OF_FORM(xIni), OF_FORM(NavMode), OF_FORM(Modified),
            OF_FORM(ScriptLoaded), OF_FORM(HasMessages), OF_FORM(HasCode), OF_FORM(UndoText), OF_FORM(LastSearch),
            OF_FORM(ScriptPath), OF_FORM(AllowedCommands), OF_FORM(SpecialAllowedCommands),
            SHOWN("Caption", driver.form()->form.Caption), SHOWN("MousePointer", driver.form()->form.MousePointer),
            SHOWN("frmSearch", openIf(driver.form()->frmSearch != nullptr)),
            SHOWN("frmSearch.Caption", driver.searchBox().Caption),
            SHOWN("txtSearch.Text", driver.searchBox().txtSearch.Text()),
            SHOWN("txtSearch.SelLength", driver.searchBox().txtSearch.SelLength()),
            SHOWN("btn_Search0.Caption", driver.searchBox().btn_Search[0]),
            SHOWN("btn_Search1.Caption", driver.searchBox().btn_Search[1]),
            SHOWN("CancelButton.Caption", driver.searchBox().CancelButton), SHOWN("Status.Text", statusOf(driver).text),
            SHOWN("Status.Line", statusOf(driver).line), SHOWN("Status.Errors", statusOf(driver).errors),
            SHOWN("Status.Modified", statusOf(driver).modified),
            SHOWN("ColorPick", openIf(driver.form()->colorPick != nullptr)), OF_PICKER(RFF.Text()),
            OF_PICKER(HT.Text()), OF_PICKER(txtHexColor.Text()), OF_PICKER(iPreview.BackColor));
  return all;
}

}  // namespace

std::u16string openIf(bool open) { return open ? u"open" : u"closed"; }

std::optional<Value> Driver::read(const std::string& what) {
  if (what == "focus") {
    static const char16_t* const kNames[] = {u"none", u"N", u"EDT", u"txtSearch"};
    return kNames[static_cast<std::size_t>(focused())];
  }
  for (const std::string& name : {what, what + "()"}) {
    if (const auto reader = readers().find(name); reader != readers().end()) return reader->second(*this);
  }
  for (const MenuPlace& place : form()->menu()) {
    if (toUtf8(place.entry->name) != what.substr(0, what.find('.'))) continue;
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

std::int64_t Driver::point(std::int32_t x, std::int32_t y) { return picker().picBigBox.Point(x, y); }

Principal& Driver::mainForm() {
  if (closed()) throw ScenarioError{0, "the main window is closed"};
  if (form()->colorPick != nullptr) throw ScenarioError{0, "the picker is open"};
  return *form();
}

FrmSearch& Driver::searchBox() {
  if (form()->frmSearch == nullptr) throw ScenarioError{0, "the search box is closed"};
  return *form()->frmSearch;
}

ColorPick& Driver::picker() {
  if (form()->colorPick == nullptr) throw ScenarioError{0, "the picker is closed"};
  return *form()->colorPick;
}

}  // namespace dravenna
