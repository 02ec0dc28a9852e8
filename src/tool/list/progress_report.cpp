#include <fmt/format.h>

#include "text/text.h"
#include "tool/list/progress.h"

namespace dravenna {

namespace {

constexpr std::array kHeads = {"texts", "translated", "unsure", "to do", "words", "translated", "unsure", "to do"};
constexpr std::array kKeys = {"texts", "translated",      "unsure",      "toDo",
                              "words", "translatedWords", "unsureWords", "toDoWords"};

std::string escaped(std::string_view name, std::string_view special, std::string_view (*replacement)(char)) {
  std::string out;
  for (const char c : shownName(name)) {
    special.find(c) == std::string_view::npos ? out.append(1, c) : out.append(replacement(c));
  }
  return out;
}

std::string xmlOf(std::string_view name) {
  return escaped(name, "&<>", [](char c) -> std::string_view {
    return c == '&' ? "&amp;" : c == '<' ? "&lt;" : "&gt;";
  });
}

}  // namespace

std::string progressTable(const ProgressRows& rows, std::string_view kind) {
  std::string out = fmt::format("{:>11}  done  {}\n", fmt::join(kHeads, ""), kind);
  for (const auto& [name, progress] : rows) {
    out += fmt::format("{:>11}{:>5}%  {}\n", fmt::join(progress.figures, ""), progress.percent(), shownName(name));
  }
  return out;
}

std::string progressMarkdown(const ProgressRows& rows, std::string_view kind) {
  std::string out = fmt::format("| {} | {} | done |\n| --- |", kind, fmt::join(kHeads, " | "));
  for (std::size_t i = 0; i <= kHeads.size(); ++i) out += " ---: |";
  for (const auto& [name, progress] : rows) {
    out += fmt::format("\n| {} | {} | {}% |", escaped(name, "|", [](char) -> std::string_view { return "\\|"; }),
                       fmt::join(progress.figures, " | "), progress.percent());
  }
  return out + "\n";
}

std::string progressJson(const ProgressRows& rows, std::string_view kind) {
  const auto figures = [](const Progress& progress) {
    std::string out;
    for (std::size_t i = 0; i < kKeys.size(); ++i)
      out += fmt::format("{}\"{}\":{}", i == 0 ? "" : ",", kKeys[i], progress.figures[i]);
    return out;
  };
  std::string out = fmt::format("{{\"{}s\":[", kind);
  for (std::size_t i = 0; i + 1 < rows.size(); ++i) {
    out += fmt::format("{}\n{{\"{}\":{},{}}}", i == 0 ? "" : ",", kind, jsonString(rows[i].first),
                       figures(rows[i].second));
  }
  return out + "],\n\"total\":{" + figures(rows.back().second) + "}}\n";
}

std::string progressPicture(const ProgressRows& rows) {
  constexpr std::size_t kRow = 22;
  constexpr std::size_t kNames = 200;
  constexpr std::size_t kBar = 360;
  std::string out = fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{}\" height=\"{}\" font-family=\"sans-serif\" "
      "font-size=\"12\">\n"
      "<title>{}% of {} texts translated</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n",
      kNames + kBar + 60, kRow * rows.size() + 8, rows.back().second.percent(), rows.back().second.figures[0]);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Progress& progress = rows[i].second;
    const auto& texts = progress.figures;
    const std::size_t all = std::max<std::size_t>(texts[0], 1);
    const std::size_t y = 4 + i * kRow;
    const std::size_t translated = kBar * texts[Progress::Translated] / all;
    const std::size_t unsure = kBar * (texts[Progress::Translated] + texts[Progress::Unsure]) / all - translated;
    out += fmt::format("<text x=\"{}\" y=\"{}\" text-anchor=\"end\">{}</text>\n", kNames - 8, y + 15,
                       xmlOf(rows[i].first));
    const auto bar = [&](std::size_t x, std::size_t width, const char* color) {
      out += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"{}\"/>\n", kNames + x, y + 3, width,
                         kRow - 6, color);
    };
    bar(0, kBar, "#d0d7de");
    bar(0, translated, "#2da44e");
    bar(translated, unsure, "#d4a72c");
    out += fmt::format("<text x=\"{}\" y=\"{}\">{}%</text>\n", kNames + kBar + 8, y + 15, progress.percent());
  }
  return out + "</svg>\n";
}

}  // namespace dravenna
