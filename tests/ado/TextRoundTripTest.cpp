#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "tests/ado/OpenStore.h"

using namespace std::string_view_literals;

namespace {

using TextRoundTrip = test::StoreFixture;

std::string Encode(char32_t cPoint) {
  const auto byte = [](char32_t lBits) { return static_cast<char>(static_cast<unsigned char>(lBits)); };
  if (cPoint < 0x80) {
    return {byte(cPoint)};
  }
  if (cPoint < 0x800) {
    return {byte(0xC0 | (cPoint >> 6)), byte(0x80 | (cPoint & 0x3F))};
  }
  if (cPoint < 0x10000) {
    return {byte(0xE0 | (cPoint >> 12)), byte(0x80 | ((cPoint >> 6) & 0x3F)), byte(0x80 | (cPoint & 0x3F))};
  }
  return {byte(0xF0 | (cPoint >> 18)), byte(0x80 | ((cPoint >> 12) & 0x3F)),
          byte(0x80 | ((cPoint >> 6) & 0x3F)), byte(0x80 | (cPoint & 0x3F))};
}

// Texts of quotes, signs of the language, zero bytes and letters of every plane.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned lvSeed) : m_oRandom(lvSeed) {}

  std::string Next() {
    static constexpr std::array kPieces = {"'"sv,  "''"sv,        "'; delete from tblOrder; --"sv,
                                           "\0"sv, "\r\n"sv,      "\t"sv,
                                           " "sv,  "True"sv,      "12and"sv,
                                           "-1"sv, "?"sv,         "\\"sv,
                                           "%"sv,  "007"sv,       "1e5"sv,
                                           "\""sv, "NULL"sv,      "\x01"sv,
                                           "/*"sv, "2003-07-04"sv};
    std::string zText;
    const std::size_t lPieces = Below(12);
    for (std::size_t i = 0; i < lPieces; ++i) {
      zText += Below(3) == 0 ? Encode(RandomPoint()) : std::string(kPieces[Below(kPieces.size())]);
    }
    return zText;
  }

 private:
  std::size_t Below(std::size_t lvLimit) {
    return std::uniform_int_distribution<std::size_t>(0, lvLimit - 1)(m_oRandom);
  }

  char32_t RandomPoint() {
    static constexpr std::array<char32_t, 5> kLimits = {0x80, 0x800, 0xD800, 0x10000, 0x110000};
    const auto cPoint = static_cast<char32_t>(Below(kLimits[Below(kLimits.size())]));
    return cPoint >= 0xD800 && cPoint < 0xE000 ? U'\uFFFD' : cPoint;
  }

  std::mt19937 m_oRandom;
};

}  // namespace

TEST_F(TextRoundTrip, GivesBackTheVeryBytesOfEveryText) {
  constexpr unsigned kSeed = 20030704;
  RandomTexts texts(kSeed);
  test::OpenConnection connection;
  const qm_ordering::ado::Transaction transaction(connection);
  for (int i = 1; i <= 3000; ++i) {
    const std::string zText = texts.Next();
    ASSERT_FALSE(qm_ordering::text::FindBrokenUTF8(zText)) << "text " << i << " of seed " << kSeed;
    connection.Execute("insert into tblOrder (zDINotes) values ('" + qm_ordering::SQLText(zText) + "')");
    const auto rows =
        connection.Execute("select zDINotes from tblOrder where lOrderID = " + std::to_string(i) +
                           " and zDINotes = '" + qm_ordering::SQLText(zText) + "'");
    ASSERT_FALSE(rows->AtEnd()) << "text " << i << " of seed " << kSeed;
    ASSERT_EQ(zText, rows->Fields(0).Value().ToString()) << "text " << i << " of seed " << kSeed;
  }
}

TEST_F(TextRoundTrip, KeepsTextsThatLookLikeNumbersAsTexts) {
  for (const char* zText : {"007", "1e5", " 12 ", "0x10", "1.50", "-0", ""}) {
    test::Run(std::string("insert into tblOrder (zPurchaseOrderNumber) values ('") + zText + "')");
    EXPECT_EQ(zText, test::Value("select zPurchaseOrderNumber from tblOrder order by lOrderID desc"));
  }
}

TEST_F(TextRoundTrip, KeepsAVeryLongText) {
  const std::string zText(5'000'000, '\'');
  test::Run("insert into tblOrder (zDINotes) values ('" + qm_ordering::SQLText(zText) + "')");
  EXPECT_TRUE(zText == test::Value("select zDINotes from tblOrder"));
}
