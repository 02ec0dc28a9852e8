#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/controls.h"

namespace dravenna {

class Principal;

// The search box: the state and the handlers of its form. Created when it opens, destroyed when it closes.
class FrmSearch {
 public:
  explicit FrmSearch(Principal& owner);  // runs Form_Load: title and captions

  std::u16string Caption;
  TextBox txtSearch;
  std::array<std::u16string, 2> btn_Search;  // captions: 0 Next, 1 Previous
  std::u16string CancelButton;               // caption

  // Every one of these may end the box's life: nothing of it may be touched afterwards.
  void btn_Search_Click(std::int16_t Index);
  void CancelButton_Click();
  void Form_KeyPress(std::int16_t& KeyAscii);  // sets KeyAscii to 0 when it drops the character
  void Form_LostFocus();

 private:
  Principal& owner_;
};

}  // namespace dravenna
