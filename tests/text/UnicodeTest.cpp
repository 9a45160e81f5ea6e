#include "qm_ordering/platform/text/Unicode.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>

namespace {

using qm_ordering::text::CompareFolded;
using qm_ordering::text::FindBrokenUTF8;
using qm_ordering::text::FindNonXML;
using qm_ordering::text::Fold;
using qm_ordering::text::TrimSpaces;
using std::string_view_literals::operator""sv;

// Written out here, so that the tests do not lean on the library that does the folding.
std::string Encode(char32_t code) {
  const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
  if (code < 0x80) {
    return {byte(code)};
  }
  if (code < 0x800) {
    return {byte(0xC0 | (code >> 6)), byte(0x80 | (code & 0x3F))};
  }
  if (code < 0x10000) {
    return {byte(0xE0 | (code >> 12)), byte(0x80 | ((code >> 6) & 0x3F)), byte(0x80 | (code & 0x3F))};
  }
  return {byte(0xF0 | (code >> 18)), byte(0x80 | ((code >> 12) & 0x3F)), byte(0x80 | ((code >> 6) & 0x3F)),
          byte(0x80 | (code & 0x3F))};
}

bool IsSurrogate(char32_t code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

constexpr char32_t kLast = 0x10FFFF;

int Sign(int lvValue) {
  return (lvValue > 0) - (lvValue < 0);
}

// std::string compares its bytes as unsigned.
int FoldedOrder(const std::string& zvLeft, const std::string& zvRight) {
  return Sign(Fold(zvLeft).compare(Fold(zvRight)));
}

// Texts of pieces that meet in every way: letters with and without a fold, folds of another length, parts of
// characters, bytes that are never text.
std::string RandomText(std::mt19937& random) {
  static const std::array<std::string, 27> kPieces = {"a",
                                                      "A",
                                                      "z",
                                                      "Z",
                                                      "[",
                                                      "0",
                                                      std::string(1, '\0'),
                                                      "É",
                                                      "é",
                                                      "ß",
                                                      "ẞ",
                                                      "ſ",
                                                      "\u212A",
                                                      "σ",
                                                      "ς",
                                                      "İ",
                                                      "ı",
                                                      "𐐀",
                                                      "𐐨",
                                                      "\xC3",
                                                      "\xA9",
                                                      "\xE2\x82",
                                                      "\xE2\x84",
                                                      "\xAC",
                                                      "\x80",
                                                      "\xF0\x90\x90",
                                                      "\xFF"};
  std::string zText;
  const std::size_t lCount = std::uniform_int_distribution<std::size_t>(0, 4)(random);
  for (std::size_t i = 0; i < lCount; ++i) {
    zText += kPieces[std::uniform_int_distribution<std::size_t>(0, kPieces.size() - 1)(random)];
  }
  return zText;
}

TEST(Unicode, FoldsLetterCaseOneToOne) {
  EXPECT_EQ("ab1-z", Fold("aB1-Z"));
  EXPECT_EQ("é", Fold("É"));
  EXPECT_EQ("ß", Fold("ß"));
  EXPECT_EQ("ß", Fold("ẞ"));
  EXPECT_EQ("s", Fold("ſ"));
  EXPECT_EQ("k", Fold("\u212A"));
  EXPECT_EQ("σσσ", Fold("Σσς"));
  EXPECT_EQ("яж", Fold("ЯЖ"));
  EXPECT_EQ("ᾳ", Fold("ᾼ"));
  EXPECT_EQ("ǆǆǆ", Fold("Ǆǅǆ"));
  EXPECT_EQ("𐐨", Fold("𐐀"));
  EXPECT_EQ("Ꭰ", Fold("ꭰ"));
}

TEST(Unicode, KeepsLettersThatHaveNoFoldOfOneLetter) {
  for (const char* zLetter : {"ß", "İ", "ı", "ŉ", "ǰ", "ΐ", "և", "ﬁ"}) {
    EXPECT_EQ(zLetter, Fold(zLetter));
  }
}

TEST(Unicode, DoesNotNormalise) {
  EXPECT_EQ("e\u0301", Fold("E\u0301"));
  EXPECT_NE(0, CompareFolded("é", "e\u0301"));
  EXPECT_EQ("ａ", Fold("Ａ"));
  EXPECT_NE(0, CompareFolded("a", "ａ"));
}

TEST(Unicode, FoldsZeroBytesAndEmptyTexts) {
  EXPECT_EQ("", Fold(""));
  EXPECT_EQ("a\0b"sv, Fold("A\0B"sv));
}

TEST(Unicode, FoldsEveryCodePointToOneThatStays) {
  for (char32_t code = 0; code <= kLast; ++code) {
    if (IsSurrogate(code)) {
      continue;
    }
    const std::string zFolded = Fold(Encode(code));
    ASSERT_FALSE(FindBrokenUTF8(zFolded)) << std::hex << static_cast<std::uint32_t>(code);
    ASSERT_EQ(zFolded, Fold(zFolded)) << std::hex << static_cast<std::uint32_t>(code);
    std::size_t lLetters = 0;
    for (const char c : zFolded) {
      lLetters += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }
    ASSERT_EQ(1U, lLetters) << std::hex << static_cast<std::uint32_t>(code);
    ASSERT_EQ(0, CompareFolded(Encode(code), zFolded)) << std::hex << static_cast<std::uint32_t>(code);
  }
}

TEST(Unicode, KeepsBrokenBytesInFolding) {
  EXPECT_EQ(
      "\xC3"
      "a",
      Fold("\xC3"
           "A"));
  EXPECT_EQ("\xFF\x80x\xE2\x82", Fold("\xFF\x80X\xE2\x82"));
  EXPECT_EQ("\xED\xA0\x80", Fold("\xED\xA0\x80"));
  EXPECT_EQ("\xC1\x81", Fold("\xC1\x81"));
}

TEST(Unicode, ComparesWithoutRegardToLetterCase) {
  EXPECT_EQ(0, CompareFolded("", ""));
  EXPECT_EQ(0, CompareFolded("AbC", "aBc"));
  EXPECT_EQ(0, CompareFolded("Ärger", "ÄRGER"));
  EXPECT_EQ(0, CompareFolded("STRAẞE", "straße"));
  EXPECT_LT(CompareFolded("", "a"), 0);
  EXPECT_LT(CompareFolded("a", "B"), 0);
  EXPECT_GT(CompareFolded("b", "A"), 0);
  EXPECT_LT(CompareFolded("abc", "ABCd"), 0);
  EXPECT_LT(CompareFolded("z", "É"), 0);
  EXPECT_LT(CompareFolded("_", "A"), 0);
  EXPECT_LT(CompareFolded("a"sv, "a\0"sv), 0);
  EXPECT_NE(0, CompareFolded("strasse", "straße"));
}

TEST(Unicode, ComparesCharactersThatShareTheirFirstBytes) {
  EXPECT_EQ(0, CompareFolded("xÉ", "xé"));
  EXPECT_EQ(0, CompareFolded("x𐐀", "x𐐨"));
  EXPECT_LT(CompareFolded("È", "é"), 0);
  EXPECT_LT(CompareFolded("é", "Ê"), 0);
  EXPECT_EQ(0, CompareFolded("\u212Ax", "Kx"));
}

TEST(Unicode, ComparesAsTheFoldedBytesCompare) {
  std::mt19937 random(20030704);
  std::size_t lEqualButDifferent = 0;
  for (int i = 0; i < 200'000; ++i) {
    const std::string zLeft = RandomText(random);
    const std::string zRight = RandomText(random);
    ASSERT_EQ(FoldedOrder(zLeft, zRight), Sign(CompareFolded(zLeft, zRight)))
        << testing::PrintToString(zLeft) << " " << testing::PrintToString(zRight);
    ASSERT_EQ(Sign(CompareFolded(zLeft, zRight)), -Sign(CompareFolded(zRight, zLeft)));
    lEqualButDifferent += zLeft != zRight && CompareFolded(zLeft, zRight) == 0;
  }
  // The texts are such that folding mattered.
  EXPECT_GT(lEqualButDifferent, 100U);
}

TEST(Unicode, ComparesAsTheFoldedBytesCompareBehindALongCommonStart) {
  std::mt19937 random(1);
  for (int i = 0; i < 50'000; ++i) {
    const std::string zStart = RandomText(random) + RandomText(random);
    const std::string zLeft = zStart + RandomText(random);
    const std::string zRight = zStart + RandomText(random);
    ASSERT_EQ(FoldedOrder(zLeft, zRight), Sign(CompareFolded(zLeft, zRight)))
        << testing::PrintToString(zLeft) << " " << testing::PrintToString(zRight);
  }
}

TEST(Unicode, FoldsABrokenTextOnceAndForAll) {
  std::mt19937 random(2);
  for (int i = 0; i < 50'000; ++i) {
    const std::string zFolded = Fold(RandomText(random));
    ASSERT_EQ(zFolded, Fold(zFolded)) << testing::PrintToString(zFolded);
  }
}

TEST(Unicode, NamesTheFoldingVersion) {
  int lMajor = 0;
  int lMinor = 0;
  ASSERT_EQ(2, std::sscanf(qm_ordering::text::FoldingVersion(), "%d.%d", &lMajor, &lMinor));
  EXPECT_GE(lMajor, 14);
}

TEST(Unicode, AcceptsEveryCodePointAsUTF8) {
  for (char32_t code = 0; code <= kLast; ++code) {
    const auto broken = FindBrokenUTF8("a" + Encode(code) + "z");
    if (IsSurrogate(code)) {
      ASSERT_EQ(1U, broken) << std::hex << static_cast<std::uint32_t>(code);
    } else {
      ASSERT_FALSE(broken) << std::hex << static_cast<std::uint32_t>(code);
    }
  }
}

TEST(Unicode, FindsTheFirstBrokenByte) {
  EXPECT_FALSE(FindBrokenUTF8(""));
  EXPECT_FALSE(FindBrokenUTF8("a\0b"sv));
  EXPECT_EQ(0U, FindBrokenUTF8("\x80"));                  // continues nothing
  EXPECT_EQ(2U, FindBrokenUTF8("ab\xFF"));                // never text
  EXPECT_EQ(2U, FindBrokenUTF8("é\xC3"));                 // cut off
  EXPECT_EQ(1U, FindBrokenUTF8("a\xE2\x82z"));            // cut off within a text
  EXPECT_EQ(0U, FindBrokenUTF8("\xF0\x9F\x98"));          // cut off
  EXPECT_EQ(0U, FindBrokenUTF8("\xC0\x80"));              // overlong
  EXPECT_EQ(0U, FindBrokenUTF8("\xC1\xBF"));              // overlong
  EXPECT_EQ(0U, FindBrokenUTF8("\xE0\x9F\xBF"));          // overlong
  EXPECT_EQ(0U, FindBrokenUTF8("\xF0\x8F\xBF\xBF"));      // overlong
  EXPECT_EQ(0U, FindBrokenUTF8("\xF4\x90\x80\x80"));      // above the last code point
  EXPECT_EQ(0U, FindBrokenUTF8("\xF8\x88\x80\x80\x80"));  // five bytes
}

TEST(Unicode, FindsWhatXMLCannotHold) {
  for (char32_t code = 0; code <= kLast; ++code) {
    const bool bAllowed = code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code <= 0xD7FF) ||
                          (code >= 0xE000 && code <= 0xFFFD) || code >= 0x10000;
    const auto bad = FindNonXML("é" + Encode(code) + "z");
    if (bAllowed) {
      ASSERT_FALSE(bad) << std::hex << static_cast<std::uint32_t>(code);
    } else {
      ASSERT_EQ(2U, bad) << std::hex << static_cast<std::uint32_t>(code);
    }
  }
  EXPECT_FALSE(FindNonXML(""));
  EXPECT_EQ(1U, FindNonXML("a\xC3"));
}

TEST(Unicode, FindsItAtEveryPlaceOfATextOfEveryLength) {
  for (std::size_t lLength = 1; lLength <= 40; ++lLength) {
    for (std::size_t lAt = 0; lAt < lLength; ++lAt) {
      for (const char cBad : {'\0', '\x01', '\x1F', '\x80', '\xFF'}) {
        for (const char cOther : {' ', 'z', '\x7F', '\t'}) {
          std::string zText(lLength, cOther);
          EXPECT_FALSE(FindNonXML(zText));
          zText[lAt] = cBad;
          EXPECT_EQ(lAt, FindNonXML(zText));
        }
      }
    }
  }
}

TEST(Unicode, TrimsSpacesAlone) {
  EXPECT_EQ("", TrimSpaces(""));
  EXPECT_EQ("", TrimSpaces("   "));
  EXPECT_EQ("a", TrimSpaces("a"));
  EXPECT_EQ("a  b", TrimSpaces("  a  b "));
  EXPECT_EQ("\ta\n", TrimSpaces(" \ta\n "));
  EXPECT_EQ("\u00A0", TrimSpaces(" \u00A0 "));
}

}  // namespace
