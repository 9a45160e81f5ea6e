#include "qm_ordering/platform/settings/SettingsText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"

namespace {

using qm_ordering::Failure;
using qm_ordering::settings::SettingsText;
using test::FailureOf;
using std::string_view_literals::operator""sv;

constexpr const char* kFile = "/home/user/settings.ini";

SettingsText Parse(std::string_view zvText) {
  return {zvText, kFile};
}

std::string ValueOf(std::string_view zvLine) {
  return Parse(zvLine).Get("K");
}

// The text after one key has been set in it.
std::string AfterSet(std::string_view zvText, std::string_view zvKey, std::string_view zvValue) {
  SettingsText text = Parse(zvText);
  text.Set(zvKey, zvValue);
  return text.Text();
}

TEST(SettingsText, TakesAPlainValueWithoutSurroundingBlanks) {
  EXPECT_EQ("value", ValueOf("K=value"));
  EXPECT_EQ("two  words", ValueOf(" \tK \t = \ttwo  words\t "));
  EXPECT_EQ("", ValueOf("K="));
  EXPECT_EQ("", ValueOf("K=  "));
  EXPECT_EQ("", ValueOf("Other=1"));
}

TEST(SettingsText, TakesMarksWithinAPlainValueAsTheyStand) {
  EXPECT_EQ("a=b # c ; d [e] \"f\" \\n", ValueOf("K=a=b # c ; d [e] \"f\" \\n"));
  EXPECT_EQ("# not a comment", ValueOf("K=# not a comment"));
  EXPECT_EQ("C:\\Data", ValueOf("K=C:\\Data"));
  EXPECT_EQ("Büro", ValueOf("K=Büro"));
  EXPECT_EQ("a\tb", ValueOf("K=a\tb"));
}

TEST(SettingsText, ReadsTheEscapesOfAQuotedValue) {
  EXPECT_EQ("", ValueOf("K=\"\""));
  EXPECT_EQ("  blanks  ", ValueOf("K = \"  blanks  \" \t"));
  EXPECT_EQ("\\ \" \n \r \t \0|"sv, ValueOf(R"(K="\\ \" \n \r \t \0|")"));
  EXPECT_EQ("\x01\xfe\xab", ValueOf(R"(K="\x01\xfe\xAB")"));
  EXPECT_EQ("Büro = # ;", ValueOf("K=\"Büro = # ;\""));
}

TEST(SettingsText, FindsAKeyInAnyLetterCase) {
  const SettingsText text = Parse("OrderingDatabasePath=/data\nGRÖSSE=1\n");
  EXPECT_EQ("/data", text.Get("ORDERINGDATABASEPATH"));
  EXPECT_EQ("/data", text.Get("orderingdatabasepath"));
  EXPECT_EQ("1", text.Get("Grösse"));
}

TEST(SettingsText, PassesOverCommentsSectionTitlesAndEmptyLines) {
  const SettingsText text = Parse("# A=1\n ; B=2\n[C=3]\n[D]\n\n  \t\nE=5");
  EXPECT_EQ(std::vector<std::string>{"E"}, text.Keys());
}

TEST(SettingsText, ListsTheKeysAsTheyStand) {
  EXPECT_EQ((std::vector<std::string>{"zeta", "Alpha", "two words"}),
            Parse("zeta=1\n[x]\nAlpha =2\n two words = 3\n").Keys());
  EXPECT_EQ(std::vector<std::string>{}, Parse("").Keys());
}

TEST(SettingsText, GivesBackWhatItParsedByteForByte) {
  for (const std::string_view zText :
       {""sv, "\n"sv, "A=1"sv, "A=1\n"sv, "\xEF\xBB\xBF"sv,
        "\xEF\xBB\xBF# x\r\n A\t=  1 \r\n\r\nB=\"\\x41\" "sv, "A=1\r\nB=2\nC=3"sv}) {
    EXPECT_EQ(zText, Parse(zText).Text());
  }
}

TEST(SettingsText, PassesOverAByteOrderMark) {
  EXPECT_EQ("1", Parse("\xEF\xBB\xBFK=1\n").Get("K"));
  EXPECT_EQ("\xEF\xBB\xBFK=2\n", AfterSet("\xEF\xBB\xBFK=1\n", "K", "2"));
  EXPECT_EQ("\xEF\xBB\xBFK=2\n", AfterSet("\xEF\xBB\xBF", "K", "2"));
}

TEST(SettingsText, ChangesALineInItsPlace) {
  EXPECT_EQ("# top\n Key =  new\n[x]\nB=2\n", AfterSet("# top\n Key =  old\t\n[x]\nB=2\n", "KEY", "new"));
  EXPECT_EQ("K=\" a\"\n", AfterSet("K=\n", "K", " a"));
  EXPECT_EQ("K=\n", AfterSet("K=\"a\"\n", "K", ""));
  EXPECT_EQ("A=1\nK=2", AfterSet("A=1\nK=1", "K", "2"));
}

TEST(SettingsText, AddsANewKeyAtTheEnd) {
  EXPECT_EQ("K=1\n", AfterSet("", "K", "1"));
  EXPECT_EQ("A=1\nK=\n", AfterSet("A=1\n", "K", ""));
  EXPECT_EQ("A=1\nK=2\n", AfterSet("A=1", "K", "2"));
  EXPECT_EQ("# last\nK=2\n", AfterSet("# last", "K", "2"));
}

TEST(SettingsText, KeepsTheLineEndsOfTheText) {
  EXPECT_EQ("A=1\r\nK=3\r\n", AfterSet("A=1\r\nK=2\r\n", "K", "3"));
  EXPECT_EQ("A=1\r\nB=2\r\nK=3\r\n", AfterSet("A=1\r\nB=2", "K", "3"));
  EXPECT_EQ("A=1\nB=2\r\nK=3\n", AfterSet("A=1\nB=2\r\n", "K", "3"));
}

TEST(SettingsText, LeavesALineAloneWhoseValueIsTheSame) {
  EXPECT_EQ("K = \"plain\"  \n", AfterSet("K = \"plain\"  \n", "k", "plain"));
}

TEST(SettingsText, WritesPlainWhatCanStandPlain) {
  EXPECT_EQ("K=Büro 7 # \\ \"x\"\n", AfterSet("", "K", "Büro 7 # \\ \"x\""));
  EXPECT_EQ("K=a\tb\n", AfterSet("", "K", "a\tb"));
}

TEST(SettingsText, QuotesWhatCannotStandPlain) {
  EXPECT_EQ("K=\" a\"\n", AfterSet("", "K", " a"));
  EXPECT_EQ("K=\"a\\t\"\n", AfterSet("", "K", "a\t"));
  EXPECT_EQ("K=\"\\\"a\\\"\"\n", AfterSet("", "K", "\"a\""));
  EXPECT_EQ("K=\"a\\r\\nb\\0\\x01\\x7f\\\\\"\n", AfterSet("", "K", "a\r\nb\0\x01\x7f\\"sv));
  EXPECT_EQ("K=\"é\\xc3|\\xff\"\n", AfterSet("", "K", "é\xC3|\xFF"));
}

TEST(SettingsText, ReadsBackWhateverWasSet) {
  std::mt19937 random(5);
  // Every byte, and those that the format gives a meaning far more often.
  const std::string zMeanings = "\"\\\n\r\t =#;[]x0n\xC3\xA9\xEF\xBB\xBF";
  for (int i = 0; i < 20'000; ++i) {
    std::string zValue;
    const int lLength = std::uniform_int_distribution<int>(0, 8)(random);
    for (int j = 0; j < lLength; ++j) {
      const auto lPick = std::uniform_int_distribution<std::size_t>(0, 511)(random);
      zValue += lPick < 256 ? static_cast<char>(static_cast<unsigned char>(lPick))
                            : zMeanings[lPick % zMeanings.size()];
    }
    const std::string zText = AfterSet("A=1\nK=old\nB=2\n", "K", zValue);
    const SettingsText again = Parse(zText);
    ASSERT_EQ(zValue, again.Get("K")) << zText;
    ASSERT_EQ("2", again.Get("B")) << zText;
    ASSERT_EQ(zText, again.Text());
  }
}

TEST(SettingsText, RefusesAKeyThatNoLineCanHold) {
  for (const std::string_view zKey : {""sv, " K"sv, "K\t"sv, "#K"sv, ";K"sv, "[K"sv, "a=b"sv, "a\nb"sv,
                                      "a\rb"sv, "a\0b"sv, "\xFF"sv, "\xEF\xBB\xBFK"sv}) {
    SettingsText text = Parse("A=1\n");
    EXPECT_EQ(qm_ordering::failure::kInvalidCall, FailureOf([&] { text.Set(zKey, "1"); }).Number())
        << testing::PrintToString(zKey);
    EXPECT_EQ("A=1\n", text.Text());
  }
}

struct BrokenText {
  const char* zName;
  std::string_view zText;
  const char* zLine;
  const char* zCause;
};

void PrintTo(const BrokenText& text, std::ostream* stream) {
  *stream << text.zName;
}

class SettingsTextBroken : public testing::TestWithParam<BrokenText> {};

TEST_P(SettingsTextBroken, IsRefusedWithFileLineAndCause) {
  const Failure failure = FailureOf([] { Parse(GetParam().zText); });
  EXPECT_EQ(qm_ordering::failure::kFileAccess, failure.Number());
  for (const char* zPart : {"\"/home/user/settings.ini\"", GetParam().zLine, GetParam().zCause}) {
    EXPECT_NE(std::string::npos, failure.Description().find(zPart)) << failure.Description();
  }
  // A sentence that says what to do follows the cause.
  EXPECT_NE(std::string::npos, failure.Description().find(". ")) << failure.Description();
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SettingsTextBroken,
    testing::Values(BrokenText{"NoEqualSign", "A=1\nB\n", "line 2 ", "no \"=\""},
                    BrokenText{"NoKey", "A=1\n\n =1\n", "line 3 ", "no key"},
                    BrokenText{"NoClosingQuote", "A=\"x", "line 1 ", "no closing quote"},
                    BrokenText{"LoneQuote", "A=\"\nB=1\n", "line 1 ", "no closing quote"},
                    BrokenText{"EscapedClosingQuote", "A=\"x\\\"\n", "line 1 ", "no closing quote"},
                    BrokenText{"BackslashAtTheEnd", "A=\"x\\\n", "line 1 ", "no closing quote"},
                    BrokenText{"TextBehindTheQuote", "A=\"x\" y\n", "line 1 ", "behind the closing quote"},
                    BrokenText{"CommentBehindTheQuote", "A=\"x\" # y\n", "line 1 ",
                               "behind the closing quote"},
                    BrokenText{"UnknownEscape", "A=\"C:\\Data\"\n", "line 1 ", "backslash"},
                    BrokenText{"ShortHexEscape", "A=\"\\x4\"\n", "line 1 ", "backslash"},
                    BrokenText{"NoHexEscape", "A=\"\\x4g\"\n", "line 1 ", "backslash"},
                    BrokenText{"BrokenUTF8", "# fine\nA=\xFC\n", "line 2 ", "not UTF-8"},
                    BrokenText{"BrokenUTF8InAComment", "# \xFC\n", "line 1 ", "not UTF-8"},
                    BrokenText{"OtherEncoding",
                               "\xFF\xFE"
                               "A\0=\0"sv,
                               "line 1 ", "not UTF-8"},
                    BrokenText{"ZeroByte", "A=1\0\n"sv, "line 1 ", "control character"},
                    BrokenText{"CarriageReturnsAlone", "# x\rA=1\rB=2\r", "line 1 ", "control character"},
                    BrokenText{"SameKeyTwice", "A=1\nB=2\na=3\n", "line 3 ", "line 1 already"}),
    [](const auto& test) { return std::string(test.param.zName); });

}  // namespace
