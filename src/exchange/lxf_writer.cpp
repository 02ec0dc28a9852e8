#include "exchange/lxf.h"

namespace dravenna {

std::u16string writeLxf(std::u16string_view document, const CommandLists& lists) {
  std::u16string file;
  forEachRecord(document, lists, [&](std::int32_t number, TextView text) {
    file.append(decimal(number)).append(u":").append(text).append(u"\r\n");
  });
  return file;
}

}  // namespace dravenna
