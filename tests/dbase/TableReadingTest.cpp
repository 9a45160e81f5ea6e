#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "qm_ordering/platform/ado/dbase/CodePage.h"
#include "tests/dbase/Tables.h"
#include "tests/support/TempFolder.h"

// What is read in whole tables, against what another reader reads in them.

namespace {

using test::Lines;
using test::MadeTables;
using test::RowsOf;

class TableOfAnotherMaker : public testing::TestWithParam<const char*> {};

// The bytes of a made table.
std::string Bytes(const std::string& zvName) {
  return test::ReadFile(MadeTables() + "/" + zvName + ".dbf");
}

// The rows of a table of those bytes.
Lines RowsOfBytes(const std::string& zvBytes, const std::string& zvSQL = "SELECT * FROM T") {
  const test::TempFolder folder;
  test::WriteFile(folder.File("T.DBF"), zvBytes);
  return RowsOf(folder.Path(), zvSQL);
}

}  // namespace

TEST_P(TableOfAnotherMaker, HoldsWhatAnotherReaderFindsInIt) {
  const std::string zTable = GetParam();
  const Lines expected = test::LinesOf(MadeTables() + "/" + zTable + ".txt");
  ASSERT_FALSE(expected.empty());
  const std::string zFolder = zTable.substr(0, zTable.rfind('/') + 1);
  EXPECT_EQ(expected, RowsOf(MadeTables(zFolder), "SELECT * FROM " + zTable.substr(zFolder.size())));
}

INSTANTIATE_TEST_SUITE_P(Each, TableOfAnotherMaker,
                         testing::Values("CP437", "CP850", "CP852", "CP1250", "CP1251", "CP1252", "DBASE3",
                                         "FOXPRO2", "VISUAL", "unique/HEADS", "unique/Lines"),
                         [](const auto& table) {
                           std::string zName = table.param;
                           std::replace(zName.begin(), zName.end(), '/', '_');
                           return zName;
                         });

TEST(TableReading, ReadsTheTablesOfASpreadsheet) {
  EXPECT_EQ(
      (Lines{"String:A101|String:Rue d'été 7|Date:2003-07-05 00:00:00|String:-0.0700|Null:",
             "String:A100|String:12 Mühlenstraße|Date:2003-07-04 00:00:00|String:1253.5000|String:Staddress3 "
             "20030704150405",
             "String:A102|Null:|Null:|String:0.0000|Null:"}),
      RowsOf(test::SpreadsheetTables(),
             "SELECT PONUM, STADDRESS1, ORDDATE, POTOTAL, STADDRESS3 FROM POHDRHIS"));
}

TEST(TableReading, TakesAByteWithoutACharacterAsTheReplacementCharacter) {
  std::string zBytes = Bytes("CP1252");
  zBytes.replace(0x41 + 1, 4,
                 "a\x81"
                 "b\x9D");
  EXPECT_EQ("String:a\uFFFDb\uFFFD", RowsOfBytes(zBytes).front().substr(0, 15));
}

TEST(TableReading, TakesNoLanguageAsWindows1252) {
  std::string zBytes = Bytes("CP1252");
  zBytes[29] = 0;
  EXPECT_EQ(test::LinesOf(MadeTables() + "/CP1252.txt"), RowsOfBytes(zBytes));
}

TEST(TableReading, KnowsTheCodePageOfEachLanguage) {
  // The other reader does not know no language, and Slovenian.
  std::map<int, std::string> expected = {{0, "CP1252"}, {0x87, "CP852"}};
  for (const std::string& zLine : test::LinesOf(MadeTables() + "/LANGUAGES.txt")) {
    expected.emplace(std::stoi(zLine), zLine.substr(zLine.find(' ') + 1));
  }
  ASSERT_GT(expected.size(), 20U);
  std::map<int, std::string> known;
  for (int i = 0; i < 256; ++i) {
    if (const char* zName = qm_ordering::ado::dbase::CodePageOf(static_cast<std::uint8_t>(i))) {
      known.emplace(i, zName);
    }
  }
  EXPECT_EQ(expected, known);
}

TEST(TableReading, ReadsTheVersionsWhoseTablesAreLaidOutAlike) {
  std::string zBytes = Bytes("DBASE3");
  for (const char cVersion : std::string("\x03\x43\x63\x7B\x8B\x8E\xCB\xF5\xFB")) {
    zBytes[0] = cVersion;
    EXPECT_EQ(test::LinesOf(MadeTables() + "/DBASE3.txt"), RowsOfBytes(zBytes)) << static_cast<int>(cVersion);
  }
  zBytes = Bytes("VISUAL");
  for (const char cVersion : {'\x31', '\x32'}) {
    zBytes[0] = cVersion;
    EXPECT_EQ(test::LinesOf(MadeTables() + "/VISUAL.txt"), RowsOfBytes(zBytes)) << static_cast<int>(cVersion);
  }
}

TEST(TableReading, TakesReferencesToContentsElsewhereAsNull) {
  std::string zBytes = Bytes("DBASE3");
  for (const char cType : {'M', 'G', 'P', 'B'}) {
    zBytes[32 + 11] = cType;
    EXPECT_EQ((Lines{"Null:", "Null:", "Null:", "Null:"}), RowsOfBytes(zBytes, "SELECT NAME FROM T"))
        << cType;
  }
}

TEST(TableReading, KeepsTheTextOfANumber) {
  std::string zBytes = Bytes("DBASE3");
  const std::size_t lWhole = 0x101 + 1 + 16;
  for (const auto& [zField, zExpected] :
       {std::pair(" 0012.50 ", "String:0012.50"), std::pair("*********", "String:*********"),
        std::pair("1,234.50 ", "String:1,234.50"), std::pair(" 1 2     ", "String:1 2")}) {
    zBytes.replace(lWhole, 9, zField);
    EXPECT_EQ(zExpected, RowsOfBytes(zBytes, "SELECT WHOLE FROM T").front());
  }
  EXPECT_EQ("String:99999999.9999", RowsOfBytes(zBytes, "SELECT AMOUNT FROM T").back());
}

TEST(TableReading, KeepsAZeroByteWithinAText) {
  std::string zBytes = Bytes("DBASE3");
  zBytes.replace(0x101 + 1, 3, std::string("a\0b", 3));
  EXPECT_EQ(std::string("String:a\0bel", 12), RowsOfBytes(zBytes, "SELECT NAME FROM T").front());
}

TEST(TableReading, KeepsBlanksBeforeATextAndDropsThoseBehindIt) {
  std::string zBytes = Bytes("CP1252");
  zBytes.replace(0x41 + 1, 40, std::string("  two  blanks") + std::string(20, ' ') + std::string(7, '\0'));
  EXPECT_EQ("String:  two  blanks", RowsOfBytes(zBytes).front());
}

TEST(TableReading, KnowsNullFromTheFlagsOfARecord) {
  EXPECT_EQ((Lines{"String:one|Integer:1|Currency:1|Double:1.5|Integer:1|String:one",
                   "Null:|Null:|Null:|Null:|Integer:2|String:two",
                   "String:three|Null:|Currency:0|Double:0|Integer:3|String:three"}),
            RowsOf(MadeTables(), "SELECT * FROM NULLS"));
}

TEST(TableReading, FindsTheNullFlagsBehindThoseOfVaryingLength) {
  // The first field becomes one of varying length, which has a flag of its own: those behind it move by one.
  std::string zBytes = Bytes("NULLS");
  zBytes[32 + 11] = 'V';
  const std::size_t lSecond = zBytes.size() - 0x26 - 1;
  zBytes[lSecond] = 0x04;  // the second field's
  EXPECT_EQ((Lines{"Integer:1|Currency:1", "Null:|Currency:0", "Integer:0|Currency:0"}),
            RowsOfBytes(zBytes, "SELECT COUNT, MONEY FROM T"));
}

TEST(TableReading, RoundsATimeToTheNearestSecond) {
  const std::string zWhole = Bytes("VISUAL");
  const std::size_t lMoment = 0x288 + 0x5B - 8;  // of the first record
  ASSERT_EQ(1U, RowsOfBytes(zWhole, "SELECT MOMENT FROM T WHERE COUNT = 2147483646").size());
  for (const auto& [lMilliseconds, zExpected] : {std::pair(54'245'499UL, "Date:2003-07-04 15:04:05"),
                                                 std::pair(54'245'501UL, "Date:2003-07-04 15:04:06"),
                                                 std::pair(86'399'999UL, "Date:2003-07-05 00:00:00")}) {
    std::string zBytes = zWhole;
    test::Put(zBytes, lMoment + 4, 4, lMilliseconds);
    EXPECT_EQ(zExpected, RowsOfBytes(zBytes, "SELECT MOMENT FROM T").front());
  }
}

TEST(TableReading, ReadsAFileThatIsLongerThanItsRecords) {
  const Lines expected = test::LinesOf(MadeTables() + "/DBASE3.txt");
  const std::string zBytes = Bytes("DBASE3");
  EXPECT_EQ(expected, RowsOfBytes(zBytes.substr(0, zBytes.size() - 1)));
  EXPECT_EQ(expected, RowsOfBytes(zBytes + std::string(5000, '\0')));
  EXPECT_EQ(expected, RowsOfBytes(zBytes + zBytes));
}

TEST(TableReading, ReadsATableWithoutRecords) {
  EXPECT_EQ(Lines(), RowsOf(MadeTables(), "SELECT * FROM EMPTY"));
  EXPECT_EQ(Lines{"Integer:0"}, RowsOf(MadeTables(), "SELECT count(*) FROM EMPTY"));
}

TEST(TableReading, CountsRecordsWithoutReadingAColumn) {
  EXPECT_EQ(Lines{"Integer:4"}, RowsOf(MadeTables(), "SELECT count(*) FROM DBASE3"));
}

TEST(TableReading, ReadsMoreThanABlockOfTheFile) {
  const std::string zOnce = Bytes("DBASE3");
  const std::string zRecords = zOnce.substr(0x101, 5 * 0x45);
  std::string zBytes = zOnce.substr(0, 0x101);
  Lines expected;
  for (int i = 0; i < 4000; ++i) {
    zBytes += zRecords;
  }
  test::Put(zBytes, 4, 4, 5 * 4000);
  ASSERT_GT(zBytes.size(), 1024U * 1024U);
  EXPECT_EQ(Lines{"Integer:16000"}, RowsOfBytes(zBytes, "SELECT count(*) FROM T"));
  EXPECT_EQ(Lines{"Integer:4000"}, RowsOfBytes(zBytes, "SELECT count(*) FROM T WHERE NAME = 'nägel'"));
}
