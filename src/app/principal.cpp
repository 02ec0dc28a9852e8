#include "app/principal.h"

namespace dravenna {

Principal::Principal(const Platform& platform)
    : mnu_Archivo{u"mnu_Archivo", u"&Archivo"},
      mnu_Abrir{u"mnu_Abrir", u"A&brir"},
      mnu_Guardar{u"mnu_Guardar", u"&Guardar", false},
      mnu_L01{u"mnu_L01", u"-"},
      mnu_Export{u"mnu_Export", u"&Create LXF File", false},
      mnu_Import{u"mnu_Import", u"&Import from LXF File", false},
      mnu_L02{u"mnu_L02", u"-"},
      mnu_Salir{u"mnu_Salir", u"Salir"},
      mnu_Edition{u"mnu_Edition", u"&Edition"},
      mnu_Search{u"mnu_Search", u"&Search", false},
      mnu_Opciones{u"mnu_Opciones", u"&Opciones"},
      mnu_Shell{u"mnu_Shell", u"Shell Integration"},
      mnu_L03{u"mnu_L03", u"-"},
      mnu_NavigationMode{u"mnu_NavigationMode", u"Navigation &Mode"},
      mnu_EditMode1{u"mnu_EditMode1", u"&Secure (messages)"},
      mnu_EditMode2{u"mnu_EditMode2", u"&Normal (messages and titles)"},
      mnu_EditMode3{u"mnu_EditMode3", u"&Advanced (messages, titles and code)"},
      mnu_Ayuda{u"mnu_Ayuda", u"Ayuda"},
      mnu_AcercaD{u"mnu_AcercaD", u"Acerca de..."},
      platform_(platform),
      registry_(platform.registry) {
  menu_ = {
      {&mnu_Archivo, nullptr, nullptr, 0},
      {&mnu_Abrir, &mnu_Archivo, &Principal::mnu_Abrir_Click, u'O'},
      {&mnu_Guardar, &mnu_Archivo, &Principal::mnu_Guardar_Click, u'S'},
      {&mnu_L01, &mnu_Archivo, nullptr, 0},
      {&mnu_Export, &mnu_Archivo, &Principal::mnu_Export_Click, u'E'},
      {&mnu_Import, &mnu_Archivo, &Principal::mnu_Import_Click, u'I'},
      {&mnu_L02, &mnu_Archivo, nullptr, 0},
      {&mnu_Salir, &mnu_Archivo, &Principal::mnu_Salir_Click, 0},
      {&mnu_Edition, nullptr, nullptr, 0},
      {&mnu_Search, &mnu_Edition, &Principal::mnu_Search_Click, 0},
      {&mnu_Opciones, nullptr, nullptr, 0},
      {&mnu_Shell, &mnu_Opciones, &Principal::mnu_Shell_Click, 0},
      {&mnu_L03, &mnu_Opciones, nullptr, 0},
      {&mnu_NavigationMode, &mnu_Opciones, nullptr, 0},
      {&mnu_EditMode1, &mnu_NavigationMode, &Principal::mnu_EditMode1_Click, 0},
      {&mnu_EditMode2, &mnu_NavigationMode, &Principal::mnu_EditMode2_Click, 0},
      {&mnu_EditMode3, &mnu_NavigationMode, &Principal::mnu_EditMode3_Click, 0},
      {&mnu_Ayuda, nullptr, nullptr, 0},
      {&mnu_AcercaD, &mnu_Ayuda, &Principal::mnu_AcercaD_Click, 0},
  };
  form.Caption = kCaption;
  form.ScaleWidth = form.Width = kInnerWidth;
  form.ScaleHeight = form.Height = kInnerHeight;
  EDT.Height = kEditBoxHeight;
  EDT.ForeColor = 0xFFFFFF;
  EDT.BackColor = 0;
  EDT.onChange = [this] { EDT_Change(); };
}

Principal::~Principal() = default;

Answer Principal::say(std::u16string_view text, int flags) {
  return platform_.windowing.messageBox(text, flags, kTitle);
}

Answer Principal::say(const Setting& word, int flags) { return say(read(registry_, word), flags); }

void Principal::sayFailure(const Failure& failure) { say(u"Error: " + failure.description(), kCritical); }

void Principal::setMousePointer(std::int32_t pointer) {
  form.MousePointer = pointer;
  platform_.windowing.pointerChanged();
}

void Principal::setScreenMousePointer(std::int32_t pointer) {
  Screen.MousePointer = pointer;
  platform_.windowing.pointerChanged();
}

std::u16string Principal::RemoveColor(std::u16string_view T) const { return dravenna::RemoveColor(T); }

}  // namespace dravenna
