#include "tests/hostile/HostileValues.h"

#include <array>
#include <bit>
#include <limits>
#include <memory>
#include <string_view>

using namespace std::string_view_literals;

namespace test {

namespace {

using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::Variant;

constexpr std::array kTexts = {
    ""sv, " "sv, "  a  "sv, "A1"sv,
    // what ends a literal, or looks like a statement
    "'"sv, "''"sv, "'''"sv, "O'Neil"sv, "\""sv, "`"sv, "a'; delete from tblOrder; --"sv, "' or 'a' = 'a"sv,
    "', True, '"sv, "') --"sv, "--"sv, "/* */"sv, "/*"sv, ";"sv, "a;b"sv, "?"sv, "?1"sv, ":a"sv, "@a"sv,
    "$a"sv,
    // what looks like another value
    "True"sv, "False"sv, "Null"sv, "NULL"sv, "007"sv, "7"sv, "7.0"sv, "1e9"sv, "1e400"sv, "-0"sv, "0x10"sv,
    "1,5"sv, ".5"sv, "5."sv, "NaN"sv, "inf"sv, "2003-07-04"sv, "-922337203685477.5808"sv,
    "922337203685477.5807"sv, "922337203685477.5808"sv, "1e-999999999999999999999"sv,
    "9e999999999999999999"sv,
    // the marker of duplicates, the lead times
    "DUP"sv, "DUPDUP"sv, "A1DUP"sv, " DUP A1"sv, "A1 DUP (2)"sv, "dup"sv, "TODAY"sv, "today"sv, "1-3 days"sv,
    // patterns, formats, shells, paths
    "%"sv, "100%"sv, "_"sv, "a_b"sv, "*"sv, "[a]"sv, "%s%n%d"sv, "{0}"sv, "${HOME}"sv, "$(id)"sv, "\\"sv,
    "C:\\x\\"sv, "../.."sv, "~"sv,
    // markup
    "<b>&amp;</b>"sv, "]]>"sv, "<![CDATA["sv, "<!--"sv, "-->"sv, "<?xml?>"sv, "&#0;"sv, "&x;"sv, "\" a=\"b"sv,
    // control characters and the zero byte
    "a\tb"sv, "a\r\nb"sv, "\n"sv, "\r"sv, "\x01"sv, "\x1b[2J"sv, "\x1f"sv, "\x7f"sv, "\0"sv, "a\0b"sv,
    "'\0'"sv, "a\xC2\x85"sv,
    // broken, overlong and impossible UTF-8
    "\xFF"sv, "a\xC3"sv, "\xC3'"sv, "\xC0\xAF"sv, "\xE0\x80\xAF"sv, "\xC0\x80"sv, "\xED\xA0\x80"sv,
    "\xED\xBF\xBF"sv, "\xF4\x90\x80\x80"sv, "\xF8\x88\x80\x80\x80"sv, "\x80"sv, "a\xE2\x82"sv,
    // characters with a trap: noncharacters, byte order mark, separators, direction, combining marks
    "\uFFFE"sv, "\uFFFF"sv, "\U0001FFFF"sv, "\U0010FFFF"sv, "\uFEFFa"sv, "\u2028"sv, "\u2029"sv,
    "\u202Eabc"sv, "\u200Ba"sv, "e\u0301"sv, "\u00E9"sv, "\u0301"sv, "a\u0300\u0301\u0302\u0303"sv,
    "\u05D0\u05D1"sv, "\uD7FF\uE000"sv, "\U0001F469\u200D\U0001F527"sv,
    // letter case
    "\u00DF"sv, "\u1E9E"sv, "SS"sv, "ss"sv, "\u0130"sv, "\u0131"sv, "I"sv, "i"sv, "i\u0307"sv, "\u017F"sv,
    "\u212A"sv, "\u212B"sv, "\u03A3"sv, "\u03C3"sv, "\u03C2"sv, "\u01C4"sv, "\u01C5"sv, "\u01C6"sv,
    "\U00010400"sv, "\U00010428"sv, "\uFB03"sv, "\u0149"sv, "\u1F80"sv, "\u13A0"sv, "\uAB70"sv};

constexpr std::array kItemNumbers = {"A1"sv,
                                     "a1"sv,
                                     "A1DUP"sv,
                                     "A1 DUP (2)"sv,
                                     "a1dup"sv,
                                     "007"sv,
                                     "7"sv,
                                     "O'Neil"sv,
                                     "o'neil"sv,
                                     "\u00DF"sv,
                                     "\u1E9E"sv,
                                     "SS"sv,
                                     "ss"sv,
                                     "\u0130"sv,
                                     "\u0131"sv,
                                     "I"sv,
                                     "i"sv,
                                     "K"sv,
                                     "\u212A"sv,
                                     "k"sv,
                                     "\u03A3"sv,
                                     "\u03C2"sv,
                                     "\u03C3"sv,
                                     "a\0b"sv,
                                     "A\0B"sv,
                                     "a"sv,
                                     "e\u0301"sv,
                                     "\u00E9"sv,
                                     " A1"sv,
                                     "A1 "sv,
                                     "100%"sv,
                                     ""sv,
                                     "True"sv,
                                     "x, 'y"sv,
                                     "x' or 'a' = 'a"sv,
                                     "A1' or zItemNumber > '"sv,
                                     "-1"sv,
                                     "\uFFFF"sv};

constexpr std::array kIntegers = {0,
                                  1,
                                  -1,
                                  2,
                                  3,
                                  7,
                                  12,
                                  255,
                                  -2,
                                  65536,
                                  std::numeric_limits<std::int32_t>::max(),
                                  std::numeric_limits<std::int32_t>::max() - 1,
                                  std::numeric_limits<std::int32_t>::min(),
                                  std::numeric_limits<std::int32_t>::min() + 1};

constexpr std::array<std::int64_t, 12> kAmounts = {0,
                                                   1,
                                                   -1,
                                                   10'000,
                                                   -10'000,
                                                   114'725,
                                                   99'999,
                                                   std::numeric_limits<std::int64_t>::max(),
                                                   std::numeric_limits<std::int64_t>::max() - 1,
                                                   std::numeric_limits<std::int64_t>::min(),
                                                   std::numeric_limits<std::int64_t>::min() + 1,
                                                   4'294'967'296};

constexpr std::size_t kShownBytes = 40;

}  // namespace

std::string HostileValues::RandomBytes() {
  std::string zText(Pick(40), '\0');
  for (char& cByte : zText) {
    cByte = static_cast<char>(Pick(256));
  }
  return zText;
}

std::string HostileValues::Text() {
  const auto zOne = [this] { return std::string(kTexts[Pick(kTexts.size())]); };
  switch (Pick(32)) {
    case 0:
      return RandomBytes();
    case 1:
    case 2:
    case 3:
      return zOne() + zOne();
    case 4: {
      // 100 KiB, seldom 2 MiB.
      const std::string zPart = zOne() + "x";
      const std::size_t lSize = Once(40) ? 2U << 20 : Once(4) ? 100U << 10 : 3000;
      std::string zText;
      while (zText.size() < lSize) {
        zText += zPart;
      }
      return zText;
    }
    default:
      return zOne();
  }
}

std::string HostileValues::ItemNumber() {
  return Once(4) ? Text() : std::string(kItemNumbers[Pick(kItemNumbers.size())]);
}

std::int32_t HostileValues::Integer() {
  return Once(8) ? static_cast<std::int32_t>(static_cast<std::uint32_t>(m_oRandom()))
                 : kIntegers[Pick(kIntegers.size())];
}

std::int32_t HostileValues::Quantity() {
  // The ends and -1, which meet as dividend and divisor of the check of packs.
  static constexpr std::array kEnds = {std::numeric_limits<std::int32_t>::min(), -1, 0,
                                       std::numeric_limits<std::int32_t>::max()};
  if (Once(8)) {
    return kEnds[Pick(kEnds.size())];
  }
  return Once(4) ? Integer() : static_cast<std::int32_t>(Pick(60)) - 10;
}

Currency HostileValues::Amount() {
  switch (Pick(4)) {
    case 0:
      return Currency::FromScaled(kAmounts[Pick(kAmounts.size())]);
    case 1:
      return Currency::FromScaled(static_cast<std::int64_t>(m_oRandom()));
    default:
      return Currency::FromScaled(static_cast<std::int64_t>(Pick(2'000'000)) - 100'000);
  }
}

Date HostileValues::Moment() {
  switch (Pick(5)) {
    case 0:
      return {};
    case 1:
      return {100, 1, 1};
    case 2:
      return {9999, 12, 31, 23, 59, 59};
    case 3:
      return {1899, 12, 30, 0, 0, 1};
    default:
      return {static_cast<int>(100 + Pick(9900)), static_cast<int>(1 + Pick(12)),
              static_cast<int>(1 + Pick(28)),     static_cast<int>(Pick(24)),
              static_cast<int>(Pick(60)),         static_cast<int>(Pick(60))};
  }
}

Variant HostileValues::Value() {
  switch (Pick(12)) {
    case 0:
      return Variant::Missing();
    case 1:
      return {};
    case 2:
      return Variant::Null();
    case 3:
      return Flag();
    case 4:
      return Integer();
    case 5:
      return std::bit_cast<double>(m_oRandom());
    case 6:
      return static_cast<double>(Integer()) / 2;
    case 7:
      return Amount();
    case 8:
      return Moment();
    case 9:
      return std::shared_ptr<qm_ordering::Object>();
    case 10:
      return ItemNumber();
    default:
      return Text();
  }
}

std::string Shown(const std::string& zvText) {
  static constexpr const char* kDigits = "0123456789ABCDEF";
  std::string zShown = "\"";
  for (const char cByte : zvText.substr(0, kShownBytes)) {
    const auto lByte = static_cast<unsigned char>(cByte);
    if (lByte >= 0x20 && lByte < 0x7F && cByte != '"' && cByte != '\\') {
      zShown += cByte;
    } else {
      zShown.append("\\x").append(1, kDigits[lByte >> 4]).append(1, kDigits[lByte & 15]);
    }
  }
  zShown += '"';
  return zvText.size() <= kShownBytes ? zShown
                                      : zShown + "... of " + std::to_string(zvText.size()) + " bytes";
}

std::string Shown(std::int32_t lvNumber) {
  return std::to_string(lvNumber);
}

std::string Shown(bool bvFlag) {
  return bvFlag ? "true" : "false";
}

std::string Shown(Currency cvAmount) {
  return cvAmount.ToString();
}

std::string Shown(const Date& datvDate) {
  return datvDate.ToStoreText();
}

}  // namespace test
