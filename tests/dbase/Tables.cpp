#include "tests/dbase/Tables.h"

#include <gtest/gtest.h>

#include <fstream>

#include "qm_ordering/platform/ado/Session.h"
#include "tests/support/FailureOf.h"

namespace test {

using namespace qm_ordering;

std::string MadeTables(const std::string& zvFolder) {
  return QM_ORDERING_DBASE_TABLES + (zvFolder.empty() ? "" : "/" + zvFolder);
}

std::string SpreadsheetTables() {
  return QM_ORDERING_SOURCE_DIR "/tests/dbase/data";
}

std::string TableConnection(const std::string& zvFolder) {
  return "DRIVER=Microsoft dBase Driver (*.dbf);DBQ=" + zvFolder + ";DefaultDir=" + zvFolder;
}

std::string Shown(const Variant& vvValue) {
  switch (vvValue.Kind()) {
    case VariantKind::Null:
      return "Null:";
    case VariantKind::Boolean:
      return "Boolean:" + vvValue.ToString();
    case VariantKind::Integer:
      return "Integer:" + vvValue.ToString();
    case VariantKind::Double:
      return "Double:" + vvValue.ToString();
    case VariantKind::Currency:
      return "Currency:" + vvValue.ToString();
    case VariantKind::Date:
      return "Date:" + vvValue.ToDate().ToStoreText();
    case VariantKind::String:
      return "String:" + vvValue.ToString();
    default:
      return "another kind";
  }
}

Lines RowsOf(const std::string& zvFolder, const std::string& zvSQL) {
  Lines lines;
  const auto session = ado::OpenSession(TableConnection(zvFolder));
  for (const auto cursor = session->Execute(zvSQL); cursor->Next();) {
    std::string zLine;
    for (std::size_t i = 0; i < cursor->Columns()->Count(); ++i) {
      zLine += (i == 0 ? "" : "|") + Shown(cursor->Value(i));
    }
    lines.push_back(zLine);
  }
  return lines;
}

Failure FailureOfStatement(const std::string& zvFolder, const std::string& zvSQL) {
  testing::internal::CaptureStderr();
  const Failure failure = FailureOf([&] { RowsOf(zvFolder, zvSQL); });
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  return failure;
}

Lines LinesOf(const std::string& zvFile) {
  std::ifstream file(zvFile);
  EXPECT_TRUE(file.good()) << zvFile;
  Lines lines;
  for (std::string zLine; std::getline(file, zLine);) {
    lines.push_back(zLine);
  }
  return lines;
}

void Put(std::string& zvBytes, std::size_t lvOffset, std::size_t lvSize, unsigned long lvNumber) {
  for (std::size_t i = 0; i < lvSize; ++i) {
    zvBytes.at(lvOffset + i) = static_cast<char>(lvNumber & 0xFFU);
    lvNumber >>= 8U;
  }
}

const char* const kImportStatement =
    " SELECT PODTLHIS.DATETIME, POHDRHIS.PONUM, POHDRHIS.STADDRESS1,  "
    "POHDRHIS.STADDRESS2, POHDRHIS.STADDRESS3,  "
    "POHDRHIS.STCITY, POHDRHIS.STSTATE, POHDRHIS.STZIP, "
    "POHDRHIS.STATTN, POHDRHIS.BTADDRESS1, POHDRHIS.BTADDRESS2, "
    "POHDRHIS.BTADDRESS3, POHDRHIS.BTCITY, POHDRHIS.BTSTATE, "
    "POHDRHIS.BTZIP, POHDRHIS.BTATTN, POHDRHIS.SPECIALINS, "
    "POHDRHIS.STATUS, POHDRHIS.ORDDATE, POHDRHIS.VENDOR, "
    "POHDRHIS.POTOTAL, POHDRHIS.TAXNO, POHDRHIS.ORDRDBY, "
    "POHDRHIS.BTTELEPHON, POHDRHIS.STTELEPHON, "
    "POHDRHIS.ACCTNUMBER, POHDRHIS.TAXFLAG, POHDRHIS.SHIPORPICK, "
    "POHDRHIS.CREDITCARD, POHDRHIS.EXPIREDATE, POHDRHIS.PORELEASE, "
    "POHDRHIS.DEPARTMENT, POHDRHIS.PROJECTJOB, "
    "POHDRHIS.REQAPPNAME, POHDRHIS.ORDBYPHEXT, "
    "POHDRHIS.CCTYPE, POHDRHIS.COMMENTS1, POHDRHIS.COMMENTS2, "
    "POHDRHIS.PROCREFNO, POHDRHIS.PROCCOMMT1, "
    "POHDRHIS.PROCCOMMT2, POHDRHIS.PROCCOMMT3, "
    "POHDRHIS.PROCCOMMT4, POHDRHIS.PADATE, POHDRHIS.PATIME, "
    "POHDRHIS.BTPROVINCE, POHDRHIS.STPROVINCE, "
    "POHDRHIS.BTCOUNTRY, POHDRHIS.STCOUNTRY, POHDRHIS.POTYPE, "
    "PODTLHIS.ITEMNUM, PODTLHIS.QUANTITY, PODTLHIS.UNITPRICE, "
    "PODTLHIS.EXTPRICE, PODTLHIS.DESC, PODTLHIS.LINENUM, "
    "PODTLHIS.DATE, PODTLHIS.MSDS, PODTLHIS.TAXABLE, PODTLHIS.CUSTNUMBER, "
    "PODTLHIS.ITEMMEMO, PODTLHIS.COMMENTS1, PODTLHIS.COMMENTS2, "
    "PODTLHIS.MODELNUM , PODTLHIS.MFGNAME "
    "FROM PODTLHIS INNER JOIN POHDRHIS ON PODTLHIS.DATETIME = POHDRHIS.DATETIME "
    " ORDER BY POHDRHIS.DATETIME, PODTLHIS.ITEMNUM;";

}  // namespace test
