#include "qm_ordering/platform/settings/SettingsText.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::settings {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kNoKeyBegins = "#;[";  // a comment or a section title
constexpr std::string_view kHexDigits = "0123456789abcdef";

// What is wrong with a line and what to do about it.
struct Complaint {
  std::string zCause;
  std::string zRemedy;
};

const Complaint kNotClosed{"the quoted value has no closing quote", "Close it with a double quote."};

bool IsControl(char cByte) {
  return static_cast<unsigned char>(cByte) < 0x20 || cByte == 0x7F;
}

// A tab is a blank.
bool HoldsControls(std::string_view zvText) {
  return std::any_of(zvText.begin(), zvText.end(), [](char c) { return IsControl(c) && c != '\t'; });
}

std::string_view TrimBlanks(std::string_view zvText) {
  const std::size_t lFirst = zvText.find_first_not_of(kBlanks);
  if (lFirst == std::string_view::npos) {
    return {};
  }
  return zvText.substr(lFirst, zvText.find_last_not_of(kBlanks) - lFirst + 1);
}

bool CanStandPlain(std::string_view zvValue) {
  return TrimBlanks(zvValue) == zvValue && !zvValue.starts_with('"') && !text::FindBrokenUTF8(zvValue) &&
         !HoldsControls(zvValue);
}

void AppendHex(std::string& zrQuoted, char cByte) {
  const auto byte = static_cast<unsigned char>(cByte);
  zrQuoted += {'\\', 'x', kHexDigits[byte / 16], kHexDigits[byte % 16]};
}

void AppendQuoted(std::string& zrQuoted, char cByte) {
  switch (cByte) {
    case '\\':
    case '"':
      zrQuoted += {'\\', cByte};
      return;
    case '\n':
      zrQuoted += "\\n";
      return;
    case '\r':
      zrQuoted += "\\r";
      return;
    case '\t':
      zrQuoted += "\\t";
      return;
    case '\0':
      zrQuoted += "\\0";
      return;
    default:
      break;
  }
  if (IsControl(cByte)) {
    AppendHex(zrQuoted, cByte);
  } else {
    zrQuoted += cByte;
  }
}

std::string Quoted(std::string_view zvValue) {
  std::string zQuoted = "\"";
  while (!zvValue.empty()) {
    const std::size_t lBroken = text::FindBrokenUTF8(zvValue).value_or(zvValue.size());
    for (const char c : zvValue.substr(0, lBroken)) {
      AppendQuoted(zQuoted, c);
    }
    zvValue.remove_prefix(lBroken);
    if (!zvValue.empty()) {
      AppendHex(zQuoted, zvValue.front());
      zvValue.remove_prefix(1);
    }
  }
  return zQuoted + '"';
}

std::string Written(std::string_view zvValue) {
  return CanStandPlain(zvValue) ? std::string(zvValue) : Quoted(zvValue);
}

std::optional<unsigned> HexDigit(char cDigit) {
  const char cLower = cDigit >= 'A' && cDigit <= 'F' ? static_cast<char>(cDigit - 'A' + 'a') : cDigit;
  const std::size_t lDigit = kHexDigits.find(cLower);
  if (lDigit == std::string_view::npos) {
    return std::nullopt;
  }
  return static_cast<unsigned>(lDigit);
}

// Takes the escape that begins behind a backslash off the front of the text.
char TakeEscape(std::string_view& zrText) {
  if (zrText.empty()) {
    throw kNotClosed;
  }
  const char cLetter = zrText.front();
  zrText.remove_prefix(1);
  switch (cLetter) {
    case '\\':
    case '"':
      return cLetter;
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case '0':
      return '\0';
    default:
      break;
  }
  if (cLetter == 'x' && zrText.size() >= 2) {
    const auto lHigh = HexDigit(zrText[0]);
    const auto lLow = HexDigit(zrText[1]);
    if (lHigh && lLow) {
      zrText.remove_prefix(2);
      return static_cast<char>(static_cast<unsigned char>(*lHigh * 16 + *lLow));
    }
  }
  throw Complaint{"the quoted value holds a backslash that begins none of \\\\ \\\" \\n \\r \\t \\0 \\xHH",
                  "Write \\\\ for a backslash."};
}

// The text behind the opening quote, up to a closing quote that ends it.
std::string Unquoted(std::string_view zvText) {
  std::string zValue;
  while (!zvText.empty()) {
    const char cByte = zvText.front();
    zvText.remove_prefix(1);
    if (cByte == '\\') {
      zValue += TakeEscape(zvText);
    } else if (cByte != '"') {
      zValue += cByte;
    } else if (zvText.empty()) {
      return zValue;
    } else {
      throw Complaint{"text stands behind the closing quote", "Write \\\" for a quote within the value."};
    }
  }
  throw kNotClosed;
}

void CheckKey(std::string_view zvKey) {
  const bool bFits = !zvKey.empty() && TrimBlanks(zvKey) == zvKey &&
                     kNoKeyBegins.find(zvKey.front()) == std::string_view::npos &&
                     !zvKey.starts_with(kByteOrderMark) && zvKey.find('=') == std::string_view::npos &&
                     !HoldsControls(zvKey) && !text::FindBrokenUTF8(zvKey);
  if (!bFits) {
    throw Failure(
        failure::kInvalidCall,
        "A settings file cannot hold a key that is empty, begins with # ; or [, begins or ends with a "
        "blank, or holds \"=\", control characters or text that is not UTF-8.");
  }
}

}  // namespace

SettingsText::SettingsText(std::string_view zvText, const std::string& zvFile) {
  if (zvText.starts_with(kByteOrderMark)) {
    m_zByteOrderMark = kByteOrderMark;
    zvText.remove_prefix(kByteOrderMark.size());
  }
  while (!zvText.empty()) {
    try {
      Line line = TakeLine(zvText);
      if (!line.zKey.empty()) {
        const auto [known, bIsNew] = m_oLineOfKey.emplace(text::Fold(line.zKey), m_oLines.size());
        if (!bIsNew) {
          throw Complaint{"its key stands on line " + std::to_string(known->second + 1) + " already",
                          "Remove one of the two lines."};
        }
      }
      m_oLines.push_back(std::move(line));
    } catch (const Complaint& complaint) {
      throw Failure(failure::kFileAccess, "Cannot read line " + std::to_string(m_oLines.size() + 1) +
                                              " of the settings file \"" + zvFile +
                                              "\": " + complaint.zCause + ". " + complaint.zRemedy);
    }
  }
  if (!m_oLines.empty() && !m_oLines.front().zEnd.empty()) {
    m_zLineEnd = m_oLines.front().zEnd;
  }
}

SettingsText::Line SettingsText::TakeLine(std::string_view& zrText) {
  Line line;
  const std::size_t lLineFeed = zrText.find('\n');
  std::string_view zContent = zrText.substr(0, lLineFeed);
  if (lLineFeed == std::string_view::npos) {
    zrText = {};
  } else {
    zrText.remove_prefix(lLineFeed + 1);
    line.zEnd = zContent.ends_with('\r') ? "\r\n" : "\n";
    zContent.remove_suffix(line.zEnd.size() - 1);
  }
  if (text::FindBrokenUTF8(zContent)) {
    throw Complaint{"it is not UTF-8", "Save the file as UTF-8."};
  }
  if (HoldsControls(zContent)) {
    throw Complaint{"it holds a control character",
                    "Put the value in double quotes and write \\xHH for it; end lines with a line feed."};
  }
  line.zStart = zContent;
  const std::string_view zTrimmed = TrimBlanks(zContent);
  if (zTrimmed.empty() || kNoKeyBegins.find(zTrimmed.front()) != std::string_view::npos) {
    return line;
  }
  const std::size_t lEqual = zContent.find('=');
  if (lEqual == std::string_view::npos) {
    throw Complaint{"there is no \"=\" in it", "Write KEY=VALUE, or begin the line with # as a comment."};
  }
  line.zKey = TrimBlanks(zContent.substr(0, lEqual));
  if (line.zKey.empty()) {
    throw Complaint{"no key stands before the \"=\"", "Write KEY=VALUE."};
  }
  const std::size_t lValue = std::min(zContent.find_first_not_of(kBlanks, lEqual + 1), zContent.size());
  line.zStart = zContent.substr(0, lValue);
  line.zWritten = zContent.substr(lValue);
  const std::string_view zValue = TrimBlanks(line.zWritten);
  line.zValue = zValue.starts_with('"') ? Unquoted(zValue.substr(1)) : std::string(zValue);
  return line;
}

std::string SettingsText::Get(std::string_view zvKey) const {
  const auto found = m_oLineOfKey.find(text::Fold(zvKey));
  return found == m_oLineOfKey.end() ? std::string() : m_oLines[found->second].zValue;
}

void SettingsText::Set(std::string_view zvKey, std::string_view zvValue) {
  CheckKey(zvKey);
  const auto [known, bIsNew] = m_oLineOfKey.emplace(text::Fold(zvKey), m_oLines.size());
  if (bIsNew) {
    if (!m_oLines.empty() && m_oLines.back().zEnd.empty()) {
      m_oLines.back().zEnd = m_zLineEnd;
    }
    const std::string zKey(zvKey);
    m_oLines.push_back({zKey + "=", Written(zvValue), m_zLineEnd, zKey, std::string(zvValue)});
    return;
  }
  Line& line = m_oLines[known->second];
  if (line.zValue != zvValue) {
    line.zValue = zvValue;
    line.zWritten = Written(zvValue);
  }
}

std::vector<std::string> SettingsText::Keys() const {
  std::vector<std::string> keys;
  for (const Line& line : m_oLines) {
    if (!line.zKey.empty()) {
      keys.push_back(line.zKey);
    }
  }
  return keys;
}

std::string SettingsText::Text() const {
  std::string zText = m_zByteOrderMark;
  for (const Line& line : m_oLines) {
    zText += line.zStart;
    zText += line.zWritten;
    zText += line.zEnd;
  }
  return zText;
}

}  // namespace qm_ordering::settings
