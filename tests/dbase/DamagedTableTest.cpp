#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

#include "qm_ordering/platform/ado/dbase/TableFile.h"
#include "tests/dbase/Tables.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

// Tables that cannot be read: each is a failure that names the file and what is wrong, and nothing is written
// to stderr.

namespace {

using namespace qm_ordering;

constexpr std::size_t kHeader = 0x101;  // of the whole table
constexpr std::size_t kRecord = 0x45;
constexpr std::size_t kRecords = 5;

class DamagedTable : public testing::Test {
 protected:
  const std::string Whole = test::ReadFile(test::MadeTables() + "/DBASE3.dbf");
  const std::string Visual = test::ReadFile(test::MadeTables() + "/VISUAL.dbf");
  const test::TempFolder Folder;
  const std::string File = Folder.File("T.DBF");

  static constexpr const char* kAll = "SELECT * FROM T";

  // What a table of those bytes raises.
  Failure Refusal(const std::string& zvBytes, const std::string& zvSQL = kAll) const {
    test::WriteFile(File, zvBytes);
    return test::FailureOfStatement(Folder.Path(), zvSQL);
  }

  void ExpectRefused(const Failure& refused, const std::string& zvWhat) const {
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
    EXPECT_NE(std::string::npos, refused.Description().find(File + " ")) << refused.Description();
    EXPECT_NE(std::string::npos, refused.Description().find(zvWhat)) << refused.Description();
  }

  static std::string Changed(std::string zvBytes, std::size_t lvOffset, const std::string& zvNew) {
    return zvBytes.replace(lvOffset, zvNew.size(), zvNew);
  }
};

}  // namespace

TEST_F(DamagedTable, IsRefusedWhenItIsEmpty) {
  ExpectRefused(Refusal(""), "it is empty");
}

TEST_F(DamagedTable, IsRefusedWhereverItIsTruncated) {
  const std::size_t lNeeded = kHeader + kRecords * kRecord;
  ASSERT_EQ(lNeeded + 1, Whole.size());  // the end mark
  for (std::size_t i = 0; i < lNeeded; ++i) {
    ExpectRefused(Refusal(Whole.substr(0, i)), "cannot be read: ");
  }
  EXPECT_EQ(0, Refusal(Whole.substr(0, lNeeded)).Number());
}

TEST_F(DamagedTable, IsRefusedWithAVersionThatIsNotKnown) {
  ExpectRefused(Refusal(Changed(Whole, 0, "\x04")), "it begins with 0x04");
  ExpectRefused(Refusal(std::string(1000, 'x')), "it begins with 0x78");
}

TEST_F(DamagedTable, IsRefusedWhenItIsEncrypted) {
  ExpectRefused(Refusal(Changed(Whole, 15, "\x01")), "it is encrypted");
}

TEST_F(DamagedTable, IsRefusedWithALanguageThatIsNotKnown) {
  ExpectRefused(Refusal(Changed(Whole, 29, "\x13")), "the language 0x13");
}

TEST_F(DamagedTable, IsRefusedWithMoreRecordsThanItHolds) {
  for (const unsigned long lClaimed : {6UL, 1'000'000UL, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL}) {
    std::string zBytes = Whole;
    test::Put(zBytes, 4, 4, lClaimed);
    ExpectRefused(Refusal(zBytes), "claims " + std::to_string(lClaimed) + " records, and it has room for 5");
  }
}

TEST_F(DamagedTable, IsRefusedWithARecordLengthUnlikeItsFields) {
  for (const unsigned long lLength : {0UL, 1UL, 0x44UL, 0x46UL, 0xFFFFUL}) {
    std::string zBytes = Whole;
    test::Put(zBytes, 10, 2, lLength);
    ExpectRefused(Refusal(zBytes),
                  "to take " + std::to_string(lLength) + " bytes each, and its fields take 69");
  }
}

TEST_F(DamagedTable, IsRefusedWithFieldsOutsideOfItsRecords) {
  ExpectRefused(Refusal(Changed(Whole, 32 + 16, "\xFF")), "its fields take");
  ExpectRefused(Refusal(Changed(Whole, 32 + 16, std::string(1, '\0'))), "its fields take");
}

TEST_F(DamagedTable, IsRefusedWithAHeaderLongerThanItsFile) {
  std::string zBytes = Whole;
  test::Put(zBytes, 8, 2, 0xFFFF);
  ExpectRefused(Refusal(zBytes), "its header is to take 65535 bytes");
}

TEST_F(DamagedTable, IsRefusedWithAHeaderTooShortForItsFields) {
  for (const unsigned long lLength : {0UL, 31UL, 32UL}) {
    std::string zBytes = Whole;
    test::Put(zBytes, 8, 2, lLength);
    ExpectRefused(Refusal(zBytes), "leaves none to the fields");
  }
  for (const unsigned long lLength : {33UL, 64UL, 65UL, 0x100UL}) {
    std::string zBytes = Whole;
    test::Put(zBytes, 8, 2, lLength);
    ExpectRefused(Refusal(zBytes), "the end of its list of fields is missing");
  }
}

TEST_F(DamagedTable, IsRefusedWithoutFields) {
  ExpectRefused(Refusal(Changed(Whole, 32, "\x0D")), "it has no fields");
}

TEST_F(DamagedTable, IsRefusedWithMoreFieldsThanTheEngineTakes) {
  const auto refusal = [&](std::size_t lvFields) {
    std::string zBytes = Whole.substr(0, 32);
    for (std::size_t i = 0; i < lvFields; ++i) {
      std::string zField(32, '\0');
      zField.replace(0, 6, "F" + std::to_string(10'000 + i));
      zField[11] = 'C';
      zField[16] = 1;
      zBytes += zField;
    }
    zBytes += '\x0D';
    test::Put(zBytes, 4, 4, 0);
    test::Put(zBytes, 8, 2, zBytes.size());
    test::Put(zBytes, 10, 2, lvFields + 1);
    return Refusal(zBytes);
  };
  EXPECT_EQ(0, refusal(2000).Number());
  ExpectRefused(refusal(2001), "it has 2001 fields, more than 2000");
}

TEST_F(DamagedTable, IsRefusedWithFieldsOfTheSystemAlone) {
  std::string zBytes = test::ReadFile(test::MadeTables() + "/CP1252.dbf");
  zBytes[0] = 0x30;
  zBytes[32 + 18] = 1;
  ExpectRefused(Refusal(zBytes), "it has no fields");
}

TEST_F(DamagedTable, IsRefusedWithoutTheEndOfItsFields) {
  ExpectRefused(Refusal(Changed(Whole, kHeader - 1, " ")), "the end of its list of fields is missing");
}

TEST_F(DamagedTable, IsRefusedWithTwoFieldsOfOneName) {
  ExpectRefused(Refusal(Changed(Whole, 32 + 32, std::string("name\0", 5))), "two fields of the name name");
}

TEST_F(DamagedTable, IsRefusedWithAFieldWithoutName) {
  ExpectRefused(Refusal(Changed(Whole, 32 + 32, std::string(11, '\0'))), "its field 2 has no name");
}

TEST_F(DamagedTable, IsRefusedWithoutRoomForItsNullFlags) {
  ExpectRefused(Refusal(Changed(Visual, 32 + 18, "\x02")), "no room to tell which fields are null");
}

TEST_F(DamagedTable, IsRefusedWithARecordThatIsNeitherValidNorDeleted) {
  ExpectRefused(Refusal(Changed(Whole, kHeader + 2 * kRecord, "\x1A")), "record 3: it begins with 0x1A");
}

TEST_F(DamagedTable, IsRefusedWithADayThatIsNone) {
  const std::size_t lDay = kHeader + kRecord + 1 + 16 + 9 + 14 + 10;
  for (const char* zDay :
       {"20030229", "20031301", "00010101", "2003-1-1", "tomorrow", "       1", "0000000 "}) {
    ExpectRefused(Refusal(Changed(Whole, lDay, zDay)),
                  "record 2: column DAY: \"" + std::string(zDay) + "\" is no date");
  }
  for (const char* zDay : {"        ", "00000000"}) {
    EXPECT_EQ(0, Refusal(Changed(Whole, lDay, zDay)).Number()) << zDay;
  }
}

TEST_F(DamagedTable, IsRefusedWithATimeThatIsNone) {
  const std::size_t lMoment = 0x288 + 0x5B - 8;
  for (const auto& [lDay, lTime] :
       {std::pair(2'452'825UL, 86'400'000UL), std::pair(2'452'825UL, 0xFFFFFFFFUL),
        std::pair(5'373'485UL, 0UL), std::pair(1UL, 0UL), std::pair(0xFFFFFFFFUL, 0UL),
        std::pair(5'373'484UL, 86'399'999UL)}) {
    std::string zBytes = Visual;
    test::Put(zBytes, lMoment, 4, lDay);
    test::Put(zBytes, lMoment + 4, 4, lTime);
    ExpectRefused(Refusal(zBytes), "record 1: column MOMENT: it holds no date and time");
  }
}

TEST_F(DamagedTable, IsRefusedWithAFlagThatIsNone) {
  const std::size_t lFlag = kHeader + 1 + 16 + 9 + 14 + 10 + 8;
  ExpectRefused(Refusal(Changed(Whole, lFlag, "1")),
                "record 1: column FLAG: \"1\" is neither true nor false");
  for (const char* zFlag : {"T", "t", "Y", "y", "F", "f", "N", "n", "?", " "}) {
    EXPECT_EQ(0, Refusal(Changed(Whole, lFlag, zFlag)).Number()) << zFlag;
  }
}

TEST_F(DamagedTable, IsRefusedWithADoubleThatIsNoNumber) {
  const std::size_t lRatio = 0x288 + 0x5B - 16;
  ExpectRefused(Refusal(Changed(Visual, lRatio, std::string("\0\0\0\0\0\0\xF0\x7F", 8))),
                "record 1: column RATIO: it holds no number");
}

TEST_F(DamagedTable, IsRefusedOnlyForTheColumnsThatAreNamed) {
  const std::string zBytes = Changed(Whole, 32 + 11, "V");
  ExpectRefused(Refusal(zBytes), "column NAME is of the type V");
  EXPECT_EQ(0, Refusal(zBytes, "SELECT WHOLE, DAY FROM T").Number());
}

TEST_F(DamagedTable, IsRefusedWithAColumnOfTheWrongWidth) {
  ExpectRefused(Refusal(Changed(Whole, 32 + 11, "D")),
                "column NAME of the type D takes 16 bytes instead of 8");
  ExpectRefused(Refusal(Changed(Whole, 32 + 11, "L")), "takes 16 bytes instead of 1");
  ExpectRefused(Refusal(Changed(Whole, 32 + 11, "I")), "takes 16 bytes instead of 4");
  ExpectRefused(Refusal(Changed(Whole, 32 + 11, "Y")), "takes 16 bytes instead of 8");
  ExpectRefused(Refusal(Changed(Visual, 32 + 11, "B")), "takes 16 bytes instead of 8");
}

TEST_F(DamagedTable, IsRefusedForTextThatIsBytes) {
  ExpectRefused(Refusal(Changed(Visual, 32 + 18, "\x04")), "column NAME holds bytes");
}

TEST_F(DamagedTable, ShowsAValueAsOneLineOfText) {
  const std::size_t lDay = kHeader + 1 + 16 + 9 + 14 + 10;
  ExpectRefused(Refusal(Changed(Whole, lDay,
                                "a\nb\x84\t\x7F"
                                "12")),
                "\"a?bä??12\" is no date");
}

TEST_F(DamagedTable, IsRefusedWhenItIsAFolder) {
  std::filesystem::create_directory(File);
  ExpectRefused(test::FailureOfStatement(Folder.Path(), kAll), "it is a folder");
}

TEST_F(DamagedTable, IsRefusedWhenItIsAPipe) {
  ASSERT_EQ(0, mkfifo(File.c_str(), 0600));
  ExpectRefused(test::FailureOfStatement(Folder.Path(), kAll), "it is no regular file");
}

TEST_F(DamagedTable, IsRefusedWhenItIsALinkThatLeadsNowhere) {
  std::filesystem::create_symlink(Folder.File("none"), File);
  ExpectRefused(test::FailureOfStatement(Folder.Path(), kAll), "No such file");
}

TEST_F(DamagedTable, IsRefusedWhenItMayNotBeRead) {
  test::WriteFile(File, Whole);
  std::filesystem::permissions(File, std::filesystem::perms(0));
  test::GiveToUnprivileged(Folder.Path());
  test::GiveToUnprivileged(File);
  const std::string zOutcome = test::ChildProcess([&] {
                                 test::DropPrivileges();
                                 const Failure refused = test::FailureOfStatement(Folder.Path(), kAll);
                                 return std::to_string(refused.Number()) + " " + refused.Description();
                               }).Outcome();
  EXPECT_EQ("-2147467259 The dBase table " + File + " cannot be read: Permission denied.", zOutcome);
}

TEST_F(DamagedTable, IsRefusedAtTheRecordWhereItEndsMeanwhile) {
  const std::size_t lRecords = 20'000;
  std::string zBytes = Whole.substr(0, kHeader);
  for (std::size_t i = 0; i < lRecords; ++i) {
    zBytes += Whole.substr(kHeader, kRecord);
  }
  test::Put(zBytes, 4, 4, lRecords);
  test::WriteFile(File, zBytes);
  testing::internal::CaptureStderr();
  ado::dbase::TableFile table(File);
  ASSERT_NE(nullptr, table.Record(0));
  ASSERT_EQ(0, truncate(File.c_str(), static_cast<off_t>(kHeader + 10'000 * kRecord + 7)));
  EXPECT_NE(nullptr, table.Record(9'999));
  ExpectRefused(test::FailureOf([&] { table.Record(10'000); }), "record 10001: the file ends before it");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}
