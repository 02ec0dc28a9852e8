#include "desktop/portal/font_name.h"

#include <QtCore/QStringList>
#include <algorithm>
#include <iterator>
#include <utility>

namespace dravenna {

namespace {

constexpr double kSmallest = 4, kLargest = 48;  // points
constexpr int kCommas = 9;                      // at the least, in the toolkit's form

}  // namespace

QFont fontNamed(const QString& description, QFont usual) {
  static const std::pair<const char*, QFont::Weight> kWeights[] = {
      {"Thin", QFont::Thin},     {"Ultra-Light", QFont::ExtraLight},
      {"Light", QFont::Light},   {"Regular", QFont::Normal},
      {"Normal", QFont::Normal}, {"Book", QFont::Normal},
      {"Medium", QFont::Medium}, {"Semi-Bold", QFont::DemiBold},
      {"Bold", QFont::Bold},     {"Ultra-Bold", QFont::ExtraBold},
      {"Heavy", QFont::Black},   {"Black", QFont::Black}};
  if (QFont told; description.count(u',') >= kCommas && told.fromString(description) && told.pointSizeF() > 0)
    return told;
  QStringList words = description.split(u' ', Qt::SkipEmptyParts);
  bool isSize = false;
  const double size = words.isEmpty() ? 0 : words.constLast().toDouble(&isSize);
  if (isSize) words.removeLast();
  if (size >= kSmallest && size <= kLargest) usual.setPointSizeF(size);
  for (; words.size() > 1; words.removeLast()) {
    const QString& word = words.constLast();
    const auto* weight = std::find_if(std::begin(kWeights), std::end(kWeights),
                                      [&](const auto& known) { return word == QLatin1String(known.first); });
    if (weight != std::end(kWeights)) {
      usual.setWeight(weight->second);
    } else if (word == QLatin1String("Italic") || word == QLatin1String("Oblique")) {
      usual.setItalic(true);
    } else {
      break;
    }
  }
  const QString family = words.join(u' ').section(u',', 0, 0);
  if (!family.isEmpty()) usual.setFamily(family);
  return usual;
}

}  // namespace dravenna
