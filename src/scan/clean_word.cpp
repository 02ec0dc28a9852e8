#include "scan/clean_word.h"

namespace dravenna {

namespace {

template <class Char>
constexpr bool isDropped(Char c) {
  switch (c) {
    case ',':
    case '[':
    case ']':
    case '+':
    case '\t':
    case '-':
      return true;
    default:
      return false;
  }
}

}  // namespace

template <class Char>
std::basic_string_view<Char> CleanWord(std::basic_string_view<Char> Word, bool DropSemicolon,
                                       std::basic_string<Char>& cleaned) {
  if (cleaned.size() < Word.size()) cleaned.resize(Word.size());
  Char* const begin = cleaned.data();
  Char* end = begin;
  for (const Char c : Word) {
    if (isDropped(c) || (DropSemicolon && c == ';')) continue;
    if (c == ' ' && end == begin) continue;
    *end++ = c;
  }
  while (end > begin && end[-1] == ' ') --end;
  return {begin, static_cast<std::size_t>(end - begin)};
}

template std::string_view CleanWord<char>(std::string_view, bool, std::string&);
template std::u16string_view CleanWord<char16_t>(std::u16string_view, bool, std::u16string&);

}  // namespace dravenna
