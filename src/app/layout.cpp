#include "app/principal.h"

namespace dravenna {

namespace {

constexpr std::int32_t kSmallestWidth = 4500;
constexpr std::int32_t kSmallestHeight = 4000;
constexpr std::int32_t kMinimized = 1;
constexpr std::int32_t kGap = 10;  // between N and EDT

}  // namespace

void Principal::Form_Resize() {
  if (form.WindowState == kMinimized) return;
  // The inner size follows the outer one; the frame keeps its thickness.
  if (form.Width < kSmallestWidth) {
    form.ScaleWidth += kSmallestWidth - form.Width;
    form.Width = kSmallestWidth;
  }
  if (form.Height < kSmallestHeight) {
    form.ScaleHeight += kSmallestHeight - form.Height;
    form.Height = kSmallestHeight;
  }
  ArrangeEditBox();
  N.Top = 0;
}

void Principal::ArrangeEditBox() {
  N.Width = form.ScaleWidth;
  N.Height = form.ScaleHeight - EDT.Height;
  if (EDT.Visible) {
    EDT.Top = N.Height + N.Top + kGap;
    EDT.Width = N.Width;
  } else {
    N.Height = form.ScaleHeight;
  }
}

}  // namespace dravenna
