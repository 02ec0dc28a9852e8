#include "tool/script/shown.h"

#include "text/text.h"
#include "tool/script/codec.h"

namespace dravenna {

std::string shown(std::u16string_view text) { return shownName(toUtf8(text)); }

std::string shownName(std::string_view name) {
  std::string out;
  appendEscapedName(name, out);
  return out;
}

std::string counted(std::size_t count, std::string_view noun) {
  std::string out = std::to_string(count) + " ";
  out.append(noun);
  if (count != 1) out.push_back('s');
  return out;
}

}  // namespace dravenna
