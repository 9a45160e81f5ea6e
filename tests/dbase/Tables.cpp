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

}  // namespace test
