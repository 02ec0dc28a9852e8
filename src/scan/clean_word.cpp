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
void cleanWordInto(std::basic_string_view<Char> word, bool dropSemicolon, std::basic_string<Char>& out) {
  out.clear();
  for (const Char c : word) {
    if (isDropped(c) || (dropSemicolon && c == ';')) continue;
    if (c == ' ' && out.empty()) continue;
    out.push_back(c);
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
}

std::u16string CleanWord(std::u16string_view word, bool dropSemicolon) {
  std::u16string cleaned;
  cleanWordInto(word, dropSemicolon, cleaned);
  return cleaned;
}

template <class Char>
bool endsStatement(std::basic_string_view<Char> word) {
  for (std::size_t at = word.size(); at > 0; --at) {
    const Char c = word[at - 1];
    if (!isDropped(c) && c != ' ') return c == ';';
  }
  return false;
}

template void cleanWordInto<char>(std::string_view, bool, std::string&);
template void cleanWordInto<char16_t>(std::u16string_view, bool, std::u16string&);
template bool endsStatement<char>(std::string_view);
template bool endsStatement<char16_t>(std::u16string_view);

}  // namespace dravenna
