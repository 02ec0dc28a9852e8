#include "color/color_codes.h"

#include "fuzz_input.h"
#include "model.h"

using namespace dravenna;

// RemoveColor over characters and over bytes, and what the picker takes and gives back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const auto start = static_cast<std::int32_t>(input.digit());
  const auto length = static_cast<std::int32_t>(input.digit());
  const std::string bytes(input.rest());
  const Text text = fuzzCodePage(0)->decode(bytes);
  const Text plain = RemoveColor(text);
  require(plain == model::removeColor(text), "RemoveColor");

  std::string plainBytes;
  appendWithoutColor(std::string_view(bytes), plainBytes);
  require(fuzzCodePage(0)->decode(plainBytes) == plain, "RemoveColor over bytes");

  const auto all = static_cast<std::int32_t>(text.size());
  const std::int32_t from = std::min(start, all);
  const std::int32_t count = std::min(length, all - from);
  const Text selected =
      model::removeColor(text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(count)));
  const PreviewText preview = splitForPreview(text, from, count);
  require(preview.blnSampleText == selected.empty() || selected.size() == 1, "sample text");
  require(preview.blnSampleText || preview.strSelText == selected, "selected text");
  require(preview.blnSampleText || selected.size() >= 59 ||
              preview.strLeftText.size() + selected.size() + preview.strRightText.size() <= 60,
          "length of the preview");
  require(coloredText(preview, u"00FF00") ==
              (preview.blnSampleText ? Text(u"^00FF00") : u"^00FF00" + selected + u"^000000"),
          "coloured text");
  return 0;
}
