#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qm_ordering::settings {

// The text of a settings file, in the form that FileSettings.h describes. Lines that nobody sets stay as they
// are, byte for byte: comments, order, blanks, line ends.
class SettingsText {
 public:
  // Raises failure::kFileAccess, naming zvFile and the line, for a text that is not of that form.
  SettingsText(std::string_view zvText, const std::string& zvFile);

  // The value of the key; empty when the text has no such key.
  std::string Get(std::string_view zvKey) const;
  // Changes the key's line, or adds one at the end. Raises failure::kInvalidCall for a key that no line
  // can hold.
  void Set(std::string_view zvKey, std::string_view zvValue);
  // The keys in the order and spelling of the text.
  std::vector<std::string> Keys() const;
  // The whole text. It is the one that was parsed unless Set changed a value.
  std::string Text() const;

 private:
  struct Line {
    std::string zStart;    // up to the value; the whole line when it has no key
    std::string zWritten;  // the value as it stands in the text, with the blanks behind it
    std::string zEnd;      // the line end
    std::string zKey;      // empty in a comment, a section title, an empty line
    std::string zValue;
  };

  // Takes the first line off the text.
  static Line TakeLine(std::string_view& zrText);

  std::string m_zByteOrderMark;
  std::string m_zLineEnd = "\n";
  std::vector<Line> m_oLines;
  std::unordered_map<std::string, std::size_t> m_oLineOfKey;  // by the folded key
};

}  // namespace qm_ordering::settings
