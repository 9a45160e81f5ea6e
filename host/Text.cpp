#include "host/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace host {

namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

struct Character {
  utf8proc_int32_t CodePoint;  // -1: a byte that is not UTF-8
  std::size_t Bytes;
};

// The first character of a text that is not empty.
Character FirstOf(std::string_view zvText) {
  utf8proc_int32_t lCodePoint = -1;
  const auto lBytes = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(zvText.data()),
                                       static_cast<utf8proc_ssize_t>(zvText.size()), &lCodePoint);
  if (lBytes <= 0) {
    return {-1, 1};
  }
  return {lCodePoint, static_cast<std::size_t>(lBytes)};
}

std::size_t WidthOf(const Character& character) {
  return character.CodePoint < 0 ? 1 : static_cast<std::size_t>(utf8proc_charwidth(character.CodePoint));
}

bool IsControl(utf8proc_int32_t lvCodePoint) {
  // C0, DEL, C1, and the marks that turn the direction of what follows.
  return lvCodePoint < 0x20 || (lvCodePoint >= 0x7F && lvCodePoint < 0xA0) ||
         (lvCodePoint >= 0x202A && lvCodePoint <= 0x202E) || (lvCodePoint >= 0x2066 && lvCodePoint <= 0x2069);
}

std::string ControlText(utf8proc_int32_t lvCodePoint) {
  switch (lvCodePoint) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default: {
      char zHex[8] = {};
      const auto end = std::to_chars(zHex, zHex + sizeof zHex, lvCodePoint, 16).ptr;
      const std::string zDigits(zHex, end);
      return lvCodePoint > 0xFF ? "\\u" + zDigits : "\\x" + std::string(2 - zDigits.size(), '0') + zDigits;
    }
  }
}

// The bytes of the text's start that fit into the width; at least one character.
std::size_t BytesWithin(std::string_view zvText, std::size_t lvWidth) {
  std::size_t lBytes = 0;
  std::size_t lWidth = 0;
  while (lBytes < zvText.size()) {
    const Character character = FirstOf(zvText.substr(lBytes));
    lWidth += WidthOf(character);
    if (lWidth > lvWidth && lBytes > 0) {
      break;
    }
    lBytes += character.Bytes;
  }
  return lBytes;
}

}  // namespace

std::string_view Trimmed(std::string_view zvText) {
  const std::size_t lFirst = zvText.find_first_not_of(" \t");
  if (lFirst == std::string_view::npos) {
    return {};
  }
  return zvText.substr(lFirst, zvText.find_last_not_of(" \t") - lFirst + 1);
}

std::string LowerCase(std::string_view zvText) {
  std::string zLower(zvText);
  std::ranges::transform(zLower, zLower.begin(), Lower);
  return zLower;
}

bool SameName(std::string_view zvLeft, std::string_view zvRight) {
  return std::ranges::equal(zvLeft, zvRight, {}, Lower, Lower);
}

bool IsUtf8(std::string_view zvText) {
  while (!zvText.empty()) {
    const Character character = FirstOf(zvText);
    if (character.CodePoint < 0) {
      return false;
    }
    zvText.remove_prefix(character.Bytes);
  }
  return true;
}

std::optional<std::int32_t> ParseInteger(std::string_view zvText) {
  std::int32_t lNumber = 0;
  const auto [end, error] = std::from_chars(zvText.data(), zvText.data() + zvText.size(), lNumber);
  if (error != std::errc() || end != zvText.data() + zvText.size()) {
    return std::nullopt;
  }
  return lNumber;
}

std::optional<bool> ParseBoolean(std::string_view zvText) {
  if (zvText == "1" || SameName(zvText, "true")) {
    return true;
  }
  if (zvText == "0" || SameName(zvText, "false")) {
    return false;
  }
  return std::nullopt;
}

std::string Shown(std::string_view zvText) {
  std::string zShown;
  while (!zvText.empty()) {
    const Character character = FirstOf(zvText);
    if (character.CodePoint < 0) {
      zShown += "\xEF\xBF\xBD";
    } else if (IsControl(character.CodePoint)) {
      zShown += ControlText(character.CodePoint);
    } else {
      zShown.append(zvText.substr(0, character.Bytes));
    }
    zvText.remove_prefix(character.Bytes);
  }
  return zShown;
}

std::size_t DisplayWidth(std::string_view zvText) {
  std::size_t lWidth = 0;
  while (!zvText.empty()) {
    const Character character = FirstOf(zvText);
    lWidth += WidthOf(character);
    zvText.remove_prefix(character.Bytes);
  }
  return lWidth;
}

std::vector<std::string> Wrapped(std::string_view zvText, std::size_t lvWidth) {
  std::vector<std::string> lines;
  while (DisplayWidth(zvText) > lvWidth) {
    const std::size_t lFits = BytesWithin(zvText, lvWidth);
    // A blank right behind what fits ends the line too.
    const std::size_t lBlank = zvText.substr(0, lFits + 1).rfind(' ');
    const bool bAtBlank = lBlank != std::string_view::npos && lBlank > 0;
    lines.emplace_back(zvText.substr(0, bAtBlank ? lBlank : lFits));
    zvText.remove_prefix(bAtBlank ? lBlank + 1 : lFits);
  }
  if (!zvText.empty() || lines.empty()) {
    lines.emplace_back(zvText);
  }
  return lines;
}

std::string Repeated(std::string_view zvText, std::size_t lvTimes) {
  std::string zAll;
  for (std::size_t i = 0; i < lvTimes; ++i) {
    zAll.append(zvText);
  }
  return zAll;
}

std::string Listed(const std::vector<std::string>& zvTexts, const char* zvLastSeparator) {
  std::string zList;
  for (std::size_t i = 0; i < zvTexts.size(); ++i) {
    if (i > 0) {
      zList += i + 1 == zvTexts.size() ? zvLastSeparator : ", ";
    }
    zList += zvTexts[i];
  }
  return zList;
}

std::string Counted(std::size_t lvCount, const std::string& zvNoun) {
  return std::to_string(lvCount) + " " + zvNoun + (lvCount == 1 ? "" : "s");
}

int DecimalsOf(qm_ordering::Currency cvAmount) {
  const std::string zText = cvAmount.ToString();
  const std::size_t lPoint = zText.find('.');
  return lPoint != std::string::npos && zText.size() - lPoint - 1 > 2 ? 4 : 2;
}

std::string MoneyText(qm_ordering::Currency cvAmount, int lvDecimals) {
  std::string zText = cvAmount.ToString();
  std::size_t lPoint = zText.find('.');
  if (lPoint == std::string::npos) {
    lPoint = zText.size();
    zText += '.';
  }
  const std::size_t lWanted = lPoint + 1 + static_cast<std::size_t>(lvDecimals);
  if (zText.size() < lWanted) {
    zText.append(lWanted - zText.size(), '0');
  }
  return zText;
}

std::string MoneyText(qm_ordering::Currency cvAmount) {
  return MoneyText(cvAmount, DecimalsOf(cvAmount));
}

}  // namespace host
