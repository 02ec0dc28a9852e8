#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scan/segment_colors.h"

namespace dravenna {

struct CharStyle {
  std::uint32_t color = 0;
  bool bold = false;
  bool italic = false;
  bool strikeThru = false;
  bool operator==(const CharStyle&) const = default;
};

// The document surface: one UTF-16 string and one style byte for each character. Offsets count code units from 0; a
// line end is the two characters CR LF. It knows nothing of its view but a listener for changes of the text.
class RichTextBox {
 public:
  class Listener {
   public:
    virtual ~Listener() = default;
    // `removed` characters at `position` have given way to `inserted` new ones.
    virtual void textChanged(std::size_t position, std::size_t removed, std::size_t inserted) = 0;
  };

  RichTextBox();

  std::int32_t Top = 0;
  std::int32_t Width = 0;
  std::int32_t Height = 0;
  bool Visible = true;
  bool TabStop = false;
  std::int32_t SelAlignment = 0;  // 2 is centred

  void setListener(Listener* listener) { listener_ = listener; }

  const std::u16string& Text() const { return text_; }
  std::uint64_t revision() const { return revision_; }  // another one after each change of the text
  void clear();                                         // Text = "": caret to 0, selection empty

  std::int32_t SelStart() const { return selStart_; }
  std::int32_t SelLength() const { return selLength_; }
  std::u16string_view SelText() const;
  // Nothing selected: the colour of the character left of the caret (clrPlain at offset 0). Else the one colour of the
  // selection, or kNoColor.
  std::uint32_t SelColor() const;

  void setSelStart(std::int32_t offset);   // clamped; empties the selection
  void setSelLength(std::int32_t length);  // clamped to the end
  // Replaces the selection and leaves the caret behind the new text. The new text looks like the first character that
  // it replaces, or, where nothing is selected, as last written below.
  void setSelText(std::u16string_view text);
  void setSelColor(std::uint32_t color) { insertion_.color = color; }
  void setSelBold(bool on) { insertion_.bold = on; }
  void setSelItalic(bool on) { insertion_.italic = on; }
  void setSelStrikeThru(bool on) { insertion_.strikeThru = on; }

  // What styleAt gives is an index for style(). The seven segments have their own numbers (Segment) at all times.
  std::uint8_t styleAt(std::size_t offset) const { return static_cast<std::uint8_t>(styles_[offset]); }
  const CharStyle& style(std::uint8_t index) const { return table_[index]; }
  std::uint32_t colorAt(std::size_t offset) const { return table_[styleAt(offset)].color; }

  // Appends a text in a segment colour with the attributes that go with it, for the scanner: reserve(), segments,
  // endSegments(). Until then nothing else may be asked of the box; then the caret stands at the end, and the listener
  // hears of them all at once. Throws std::length_error for more than 2^30 characters.
  void reserve(std::size_t characters);
  void AddSegment(std::u16string_view Text, std::uint32_t Color) {
    const std::size_t size = Text.size();
    if (size + kFill > text_.size() - added_) makeRoom(size + kFill);
    char16_t* const to = text_.data() + added_;
    char* const styles = styles_.data() + added_;
    added_ += size;
    std::copy_n(Text.data(), size, to);
    // In steps of a fixed length: what is too much lies in the room behind.
    for (std::size_t at = 0; at < size; at += kFill) {
      std::fill_n(styles + at, kFill, static_cast<char>(segmentOf(Color)));
    }
  }
  void endSegments();
  // Replaces the same number of characters at each of the offsets (ascending, not overlapping, above 0) by `text`,
  // which looks like the first character that it replaces; where that is none, like the one in front.
  void replaceEach(const std::vector<std::int32_t>& starts, std::int32_t length, std::u16string_view text);

 private:
  static constexpr std::size_t kFill = 16;
  void makeRoom(std::size_t characters);
  std::uint8_t styleIndex(const CharStyle& style);
  void noteChange(std::size_t position, std::size_t removed, std::size_t inserted);

  std::u16string text_;
  std::string styles_;  // one byte a character
  std::vector<CharStyle> table_;
  CharStyle insertion_;
  std::int32_t selStart_ = 0;
  std::int32_t selLength_ = 0;
  std::size_t added_ = 0;  // where the next segment goes; what text_ holds behind is room for more
  std::uint64_t revision_ = 0;
  Listener* listener_ = nullptr;
};

}  // namespace dravenna
