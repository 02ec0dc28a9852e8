#include "tool/po/server_texts.h"

#include <fmt/core.h>

#include <algorithm>
#include <unordered_map>

#include "tool/po_files/po_text.h"
#include "tool/script/breaks.h"

namespace dravenna {

namespace {

constexpr std::size_t kServerLine = 1024;  // bytes of a line that the server reads, its end included

// A string of a script as a server reads it, that holds records; work bytes.
struct ServerText {
  const OutlineText* first;  // of its records
  std::string text;
  std::string translation;  // empty when one of the records has none that is sure
};

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

std::vector<ServerText> serverTextsOf(const LoadedScript& script, const std::vector<CarriedText>& carried,
                                      std::vector<ServerEntries::Left>& left) {
  std::vector<ServerText> texts;
  ServerText group{};
  bool sure = true;
  const auto endGroup = [&] {
    if (!sure) group.translation.clear();
    if (group.first != nullptr && !group.text.empty()) texts.push_back(std::move(group));
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
    for (; offset() < literal.begin; ++record) left.push_back({script.records[record], "it is in a block comment"});
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
        left.push_back({script.records[record], "it is cut at an escaped quote mark"});
      }
    }
    group.text += text;
  }
  endGroup();
  for (; record < script.records.size(); ++record) {
    left.push_back({script.records[record], "it is in a block comment"});
  }
  return texts;
}

// Entries of the form that the server reads, a msgctxt and msgid each once.
class EntryWriter {
 public:
  explicit EntryWriter(const LoadedScript& script) : script_(script) {}

  // Gives why the text is left out, or nothing.
  std::string add(const ServerText& text) {
    const std::string_view npc = script_.outline.npcs[text.first->npc];
    if (!fitsPo(text.text)) return "control characters";
    if (npc.empty()) return "it stands in no NPC";
    const std::string context = line("msgctxt", npc);
    const std::string id = line("msgid", text.text);
    const std::string translation = line("msgstr", text.translation);
    if (std::max({context.size(), id.size(), translation.size()}) >= kServerLine) return "too long for the server";
    const auto [found, fresh] = byKey_.emplace(context + id, entries_.size());
    if (fresh) {
      entries_.push_back({context + id, translation, text.first->lineNumber});
      return {};
    }
    Entry& first = entries_[found->second];
    if (text.translation.empty() || first.translation == translation) return {};
    if (first.translation != line("msgstr", {})) {
      return fmt::format("line {} has another translation of the same text of the NPC", first.lineNumber + 1);
    }
    first.translation = translation;
    first.lineNumber = text.first->lineNumber;
    return {};
  }

  void write(ServerEntries& to) const {
    to.messages = entries_.size();
    for (const Entry& entry : entries_) to.bytes += entry.key + entry.translation + "\n";
  }

 private:
  struct Entry {
    std::string key;  // msgctxt and msgid lines
    std::string translation;
    std::size_t lineNumber;  // of the text that the translation is from
  };

  std::string line(const char* keyword, std::string_view work) const {
    std::string buffer;
    return fmt::format("{} \"{}\"\n", keyword, script_.in.codec.toFile(work, buffer));
  }

  const LoadedScript& script_;
  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t> byKey_;
};

}  // namespace

ServerEntries serverEntriesOf(const LoadedScript& script, const std::vector<CarriedText>& carried) {
  ServerEntries entries;
  EntryWriter writer(script);
  for (const ServerText& text : serverTextsOf(script, carried, entries.left)) {
    if (const std::string why = writer.add(text); !why.empty()) entries.left.push_back({text.first, why});
  }
  writer.write(entries);
  return entries;
}

}  // namespace dravenna
