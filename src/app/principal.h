#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/frm_search.h"
#include "color/color_pick.h"
#include "editing/quote_walk.h"
#include "editing/quoted_text.h"
#include "editing/text_change.h"
#include "platform/controls.h"
#include "platform/platform.h"
#include "scan/rich_text_box.h"
#include "settings/catalogue.h"
#include "settings/registry.h"

namespace dravenna {

class Principal;

// Virtual key codes and modifier bits as the handlers take them.
constexpr std::int16_t kKeyEnter = 13, kKeyEsc = 27, kKeyUp = 38, kKeyDown = 40, kKeyE = 69, kKeyF = 70, kKeyG = 71,
                       kKeyL = 76, kKeyR = 82, kKeyF1 = 112, kKeyF3 = 114, kKeyF5 = 116;
constexpr std::int16_t kShift = 1, kCtrl = 2, kAlt = 4;

inline constexpr char16_t kTitle[] = u"Dravenna";
inline constexpr char16_t kCaption[] = u"Dravenna by Orvane";    // of the main form before a load
constexpr std::int32_t kInnerWidth = 8880, kInnerHeight = 6195;  // of the main form at start, in twips
constexpr std::int32_t kEditBoxHeight = 315;
constexpr std::int32_t kHourglass = 11;

// One place of the menu: the bar's entries have no parent. Entries with a handler are clicked, the others open.
struct MenuPlace {
  MenuEntry* entry;
  MenuEntry* parent;
  void (Principal::*click)();
  char16_t shortcut;  // with Ctrl; 0 for none
};

// A key on its way through the handlers.
struct KeyEvent {
  std::int16_t KeyCode = 0;   // 0 for a character without a known key
  std::int16_t Shift = 0;     // kShift + kCtrl + kAlt
  std::int16_t KeyAscii = 0;  // the character that it yields, 0 for none
  Control focus = Control::None;
};

struct KeyOutcome {
  bool keyPasses;        // no handler consumed the key
  bool characterPasses;  // there is a character, and no handler dropped it
};

// The main form: controls, menus, members and handlers. Each subject has a file of this folder.
// Positions count the characters of N from 1, SelStart counts from 0.
class Principal {
 public:
  explicit Principal(const Platform& platform);
  ~Principal();
  Principal(const Principal&) = delete;
  Principal& operator=(const Principal&) = delete;

  // Controls.
  RichTextBox N;
  TextBox EDT;
  CommonDialog CMD;
  FormState form;
  struct {
    std::int32_t MousePointer = 0;  // for the whole screen; 11 is the hourglass
  } Screen;
  std::unique_ptr<FrmSearch> frmSearch;
  ColorPick* colorPick = nullptr;  // while the picker is open

  MenuEntry mnu_Archivo, mnu_Abrir, mnu_Guardar, mnu_L01, mnu_Export, mnu_Import, mnu_L02, mnu_Salir, mnu_Edition,
      mnu_Search, mnu_Opciones, mnu_Shell, mnu_L03, mnu_NavigationMode, mnu_EditMode1, mnu_EditMode2, mnu_EditMode3,
      mnu_Ayuda, mnu_AcercaD;
  const std::vector<MenuPlace>& menu() const { return menu_; }  // in the order of the tree

  // Members.
  std::u16string ScriptPath, AllowedCommands, SpecialAllowedCommands, LastSearch, UndoText;
  bool Modified = false, ScriptLoaded = false, HasMessages = false, HasCode = false;
  std::int16_t NavMode = 0;
  std::int32_t Ini = 0, Fin = 0;  // quote marks around the current text; 0 while there is none
  std::int32_t xIni = 0;          // where the next search goes on

  // Start-up, layout, file flows.
  void Form_Load();
  void Form_Resize();
  void Form_Unload();
  void mnu_AcercaD_Click();
  void mnu_EditMode1_Click();
  void mnu_EditMode2_Click();
  void mnu_EditMode3_Click();
  void OpenScript();
  void Salvar();
  void mnu_Abrir_Click();
  void mnu_Guardar_Click();
  void mnu_Salir_Click();

  // Load.
  void LoadScript();

  // Selection, commit, stepping, keys, search.
  void Seleccionar(bool ShowContextWarning = false, bool SetEdt = false, bool Focus = false);
  void Buscar(std::u16string_view Texto, bool bForward = false);
  void ReturnFromSearch();
  void mnu_Search_Click();
  void Form_KeyDown(std::int16_t& KeyCode, std::int16_t Shift);
  void N_KeyDown(std::int16_t& KeyCode, std::int16_t Shift);
  void Form_KeyPress(std::int16_t& KeyAscii);
  void EDT_KeyPress(std::int16_t& KeyAscii);
  void EDT_Change();
  void EDT_GotFocus();
  void N_MouseUp();
  // The whole way of a key through the handlers, in their order. What passes is left to the control with the focus.
  KeyOutcome dispatchKey(const KeyEvent& key);

  // Commits a text as it has been before; what stands there already is let be. False where another text stands.
  bool retype(const JournalledCommit& commit);

  // What has been committed since the load, the oldest first.
  const std::vector<TextChange>& changes() const { return changes_; }
  // Goes to the text of a change as a step does, and offers its older wording in EDT, not committed.
  void offerOlder(std::size_t change);

  // Exchange files.
  void mnu_Export_Click();
  void mnu_Import_Click();

  // Shell verb.
  void mnu_Shell_Click();

  // Colour codes.
  std::u16string RemoveColor(std::u16string_view T) const;

  Registry& registry() { return registry_; }
  Windowing& windowing() { return platform_.windowing; }

 private:
  // Start-up, layout, file flows.
  void ArrangeEditBox();
  void readFileCaptions();
  void setNavMode(std::int16_t mode);
  void setMousePointer(std::int32_t pointer);
  void setScreenMousePointer(std::int32_t pointer);
  Answer say(std::u16string_view text, int flags);  // a box with the program's title
  Answer say(const Setting& word, int flags);
  void sayFailure(const Failure& failure);  // "Error: " and the description
  void SetFocus(Control control) { platform_.windowing.SetFocus(control); }
  // `ScriptPath` up to and including its last "." with "lxf" behind it.
  std::u16string lxfPath() const;

  // Selection, commit, stepping, keys, search.
  void commit();
  void noteChange(std::u16string_view after, bool title);
  void cancel();
  void ShowCurrentText();
  // The part of a whole text, brackets too, that lies in the selection of N.
  std::u16string_view selectedPart(std::u16string_view whole) const;
  void ReplaceTitle(std::u16string_view Text);
  void writeScript(std::u16string_view text);  // whole, to its file
  void GoNextText(std::int16_t Shift);
  void GoPrevText(std::int16_t Shift);
  void MoveToText(bool Forward, std::int16_t Shift);
  void openSearch();
  void openColorPick();
  void closeSearch();
  void selectCurrent(Brackets brackets);
  void showEditBox(bool visible);  // and makes room for it
  void selectEditBox();            // all of it; hides the box exactly if it is empty
  void colorEditBox();
  // Puts a selection of N that has gone elsewhere back on the current text; whether it had.
  bool backToCurrentText();
  Admission admission(std::int16_t Shift) const;

  // Exchange files.
  void ExportLxf(std::u16string_view LxfFile);
  void ImportLxf(std::u16string_view LxfFile);

  Platform platform_;
  Registry registry_;
  std::vector<MenuPlace> menu_;
  std::vector<TextChange> changes_;
  // Where the selection of N stands while it is the current text.
  std::int32_t currentStart_ = 0, currentLength_ = 0;
};

}  // namespace dravenna
