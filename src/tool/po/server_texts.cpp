#include "tool/po/server_texts.h"

#include "tool/script/breaks.h"

namespace dravenna {

namespace {

struct Literal {
  std::size_t begin;  // offsets in the work bytes, quote marks left out
  std::size_t end;
  bool joined;  // to the one in front
};

std::vector<Literal> literalsOf(const Codec& codec, std::string_view work) {
  std::vector<Literal> literals;
  bool joins = false;
  for (std::size_t at = 0; at < work.size();) {
    const ServerPiece piece = serverPieceAt(codec, work, at);
    if (piece.kind == ServerPiece::Kind::String) {
      literals.push_back({at + 1, piece.end - (piece.closed ? 1 : 0), joins});
      joins = true;
    } else if (piece.kind == ServerPiece::Kind::Code) {
      joins &= work.substr(at, piece.end - at).find_first_not_of(" \t\r\n") == std::string_view::npos;
    }
    at = piece.end;
  }
  return literals;
}

}  // namespace

ServerTexts serverTextsOf(const LoadedScript& script, const std::vector<CarriedText>& carried) {
  ServerTexts texts;
  ServerText group{};
  bool sure = true;
  const auto endGroup = [&] {
    if (!sure) group.translation.clear();
    if (group.first != nullptr && !group.text.empty()) texts.list.push_back(std::move(group));
    group = {};
    sure = true;
  };
  std::size_t record = 0;
  const auto offset = [&] {
    return record == script.records.size()
               ? script.work.size()
               : static_cast<std::size_t>(script.records[record]->text.data() - script.work.data());
  };
  for (const Literal& literal : literalsOf(script.in.codec, script.work)) {
    if (!literal.joined) endGroup();
    for (; offset() < literal.begin; ++record)
      texts.left.push_back({script.records[record], "it is in a block comment"});
    const std::string_view text = script.work.substr(literal.begin, literal.end - literal.begin);
    if (record < script.records.size() && script.records[record]->text.data() == text.data() &&
        script.records[record]->text.size() == text.size()) {
      if (group.first == nullptr) group.first = script.records[record];
      const CarryState state = carried[record].state;
      const bool same = state == CarryState::Untranslated && !script.records[record]->record;  // a name, most often
      sure &= state == CarryState::Carried || same || text.empty();
      group.translation += carried[record++].translation;
    } else {
      group.translation += text;
      for (; record < script.records.size() && offset() <= literal.end; ++record) {
        texts.left.push_back({script.records[record], "it is cut at an escaped quote mark"});
      }
    }
    group.text += text;
  }
  endGroup();
  for (; record < script.records.size(); ++record) {
    texts.left.push_back({script.records[record], "it is in a block comment"});
  }
  return texts;
}

}  // namespace dravenna
