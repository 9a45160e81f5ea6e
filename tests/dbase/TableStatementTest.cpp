#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/dbase/StatementColumns.h"
#include "tests/dbase/Tables.h"
#include "tests/support/FailureOf.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/TempFolder.h"

// What statements on tables answer, and which ones are refused.

namespace {

using namespace qm_ordering;
using test::Lines;
using test::MadeTables;
using test::RowsOf;
using test::SpreadsheetTables;

const std::string kJoin =
    "SELECT HEADS.HEAD, LINES.ITEM, LINES.NUMBER FROM LINES INNER JOIN HEADS ON LINES.KEY = HEADS.KEY "
    "ORDER BY HEADS.KEY, LINES.ITEM;";

// The engine's plan of a statement, a line for each step.
Lines PlanOf(const std::string& zvFolder, const std::string& zvSQL) {
  Lines plan;
  const auto session = ado::OpenSession(test::TableConnection(zvFolder));
  for (const auto cursor = session->Execute("EXPLAIN QUERY PLAN " + zvSQL); cursor->Next();) {
    plan.push_back(cursor->Value(3).ToString());
  }
  return plan;
}

bool Sorts(const Lines& plan) {
  for (const std::string& zStep : plan) {
    if (zStep.find("B-TREE") != std::string::npos) {
      return true;
    }
  }
  return false;
}

Failure Refusal(const std::string& zvSQL, const std::string& zvFolder = MadeTables()) {
  return test::FailureOfStatement(zvFolder, zvSQL);
}

bool Holds(const Failure& failure, const std::string& zvText) {
  return failure.Description().find(zvText) != std::string::npos;
}

}  // namespace

TEST(TableStatement, RunsTheImportsStatementAsItStands) {
  const auto session = ado::OpenSession(test::TableConnection(SpreadsheetTables()));
  const auto cursor = session->Execute(test::kImportStatement);
  const auto columns = cursor->Columns();
  EXPECT_EQ(65U, columns->Count());
  Lines rows;
  while (cursor->Next()) {
    std::string zRow;
    for (const char* zName : {"DATETIME", "PONUM", "ITEMNUM", "QUANTITY", "DESC", "DATE", "MSDS"}) {
      zRow += test::Shown(cursor->Value(columns->Find(zName))) + "|";
    }
    rows.push_back(zRow);
  }
  EXPECT_EQ((Lines{"String:20030704150405|String:A100|String:1A233|String:1|String:Säge|Date:2003-07-04 "
                   "00:00:00|Boolean:False|",
                   "String:20030704150405|String:A100|String:1b234|String:12|String:Hammer|Date:2003-07-04 "
                   "00:00:00|Boolean:True|",
                   "String:20030704150405|String:A100|String:1C235|String:0|Null:|Null:|Boolean:True|",
                   "String:20030705080000|String:A101|String:1A235|String:7|String:Nägel ½\"|Date:2003-07-04 "
                   "00:00:00|Boolean:True|"}),
            rows);
}

TEST(TableStatement, JoinsAndOrdersTheImportsStatementWithoutSorting) {
  const Lines plan = PlanOf(SpreadsheetTables(), test::kImportStatement);
  EXPECT_EQ(2U, plan.size());
  EXPECT_FALSE(Sorts(plan)) << plan.back();
}

TEST(TableStatement, JoinsByBytesAndOrdersOtherTextsWithoutRegardToLetterCase) {
  // Lines with the same key and item come as they stand in the table.
  EXPECT_EQ((Lines{"String:K1-2|String:z|String:3", "String:k1-3|String:a|String:2",
                   "String:k1-3|String:A|String:6", "String:k1-3|String:B|String:5",
                   "String:k1-3|String:C|String:1", "String:k2-1|String:A|String:4",
                   "String:k2-1|String:b|String:0"}),
            RowsOf(MadeTables("unique"), kJoin));
  EXPECT_FALSE(Sorts(PlanOf(MadeTables("unique"), kJoin)));
}

TEST(TableStatement, JoinsEachOfTwoRecordsWithTheSameKey) {
  const Lines rows = RowsOf(MadeTables("twice"), kJoin);
  EXPECT_EQ(1U + 4U * 2U + 2U, rows.size());
  EXPECT_EQ("String:K1-2|String:z|String:3", rows.front());
  EXPECT_EQ("String:k2-0|String:b|String:0", rows.back());
}

TEST(TableStatement, JoinsNothingToABlankKey) {
  EXPECT_EQ((Lines{"String:K1-3|String:z|String:3", "String:k1-2|String:a|String:2",
                   "String:k1-2|String:A|String:6", "String:k1-2|String:B|String:5",
                   "String:k1-2|String:C|String:1", "String:k2-0|String:A|String:4",
                   "String:k2-0|String:b|String:0"}),
            RowsOf(MadeTables("blank"), kJoin));
  EXPECT_EQ(Lines{"String:-1"}, RowsOf(MadeTables("blank"), "SELECT HEAD FROM HEADS WHERE KEY IS NULL"));
}

TEST(TableStatement, OrdersOneTableWithoutSorting) {
  EXPECT_FALSE(Sorts(PlanOf(MadeTables("unique"), "SELECT ITEM, KEY FROM LINES ORDER BY ITEM")));
  EXPECT_EQ((Lines{"String:a", "String:A", "String:A", "String:b", "String:B", "String:C", "String:n",
                   "String:x", "String:z"}),
            RowsOf(MadeTables("unique"), "SELECT ITEM FROM LINES ORDER BY ITEM"));
}

TEST(TableStatement, FindsTablesAndColumnsInAnyLetterCase) {
  EXPECT_EQ(Lines{"String:Z"}, RowsOf(MadeTables("unique"),
                                      "select upper(lInEs.item) from \"lines\" where [LINES].Number = '3'"));
  EXPECT_EQ(Lines{"String:k3-0"}, RowsOf(MadeTables("unique"), "SELECT head FROM heads WHERE `KEY` = 'k3'"));
}

TEST(TableStatement, ComparesTextsThatDoNotJoinWithoutRegardToLetterCase) {
  EXPECT_EQ(Lines{"Integer:5"}, RowsOf(MadeTables("unique"), "SELECT count(*) FROM LINES WHERE KEY = 'k1'"));
  EXPECT_EQ(Lines{"Integer:4"}, RowsOf(MadeTables("unique"),
                                       "SELECT count(*) FROM LINES, HEADS WHERE LINES.KEY = "
                                       "HEADS.KEY AND HEADS.KEY = 'k1'"));
}

TEST(TableStatement, ReadsOnlyTheTablesAndColumnsThatItNames) {
  const test::TempFolder folder;
  std::string zBytes = test::ReadFile(MadeTables() + "/DBASE3.dbf");
  zBytes.replace(0x101 + 1 + 16 + 9 + 14 + 10, 8, "19999999");  // the first record's day
  test::WriteFile(folder.File("T.dbf"), zBytes);
  test::WriteFile(folder.File("NAME.dbf"), "no table");
  EXPECT_EQ(4U, RowsOf(folder.Path(), "SELECT NAME, WHOLE FROM T").size());
  EXPECT_EQ(failure::kStoreUnavailable, Refusal("SELECT NAME, DAY FROM T", folder.Path()).Number());
}

TEST(TableStatement, RefusesATableThatTheFolderLacks) {
  const Failure refused = Refusal("SELECT A.X FROM POHDRHIS AS A");
  EXPECT_EQ(failure::kStoreNoTable, refused.Number());
  EXPECT_TRUE(Holds(refused, "POHDRHIS") && Holds(refused, MadeTables())) << refused.Description();
  EXPECT_EQ(failure::kStoreNoTable,
            Refusal("SELECT * FROM DBASE3 INNER JOIN NONE ON NONE.A = DBASE3.NAME").Number());
  EXPECT_EQ(failure::kStoreNoTable, Refusal("SELECT * FROM \"../DBASE3\"", MadeTables("unique")).Number());
}

TEST(TableStatement, RefusesAColumnThatATableLacks) {
  const Failure refused = Refusal("SELECT DBASE3.PONUM FROM DBASE3");
  EXPECT_EQ(failure::kStoreCommand, refused.Number());
  EXPECT_TRUE(Holds(refused, "PONUM") && Holds(refused, MadeTables())) << refused.Description();
  EXPECT_EQ(failure::kStoreCommand, Refusal("SELECT \"PONUM\" FROM DBASE3").Number());
}

TEST(TableStatement, RefusesTwoFilesOfOneTable) {
  const test::TempFolder folder;
  for (const char* zName : {"Empty.dbf", "EMPTY.DBF"}) {
    std::filesystem::copy_file(MadeTables() + "/EMPTY.dbf", folder.File(zName));
  }
  const Failure refused = Refusal("SELECT * FROM EMPTY", folder.Path());
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  EXPECT_TRUE(Holds(refused, "Empty.dbf") && Holds(refused, "EMPTY.DBF")) << refused.Description();
}

TEST(TableStatement, RefusesWhatIsNotOneQuery) {
  for (const char* zSQL :
       {"", ";", "SELECT", "SELECT * FROM EMPTY SELECT", "SELECT * FROM EMPTY; SELECT * FROM EMPTY",
        "SELECT * FROM EMPTY;;x", "SELECT 'open FROM EMPTY", "FROM EMPTY"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL).Number()) << zSQL;
  }
  EXPECT_EQ(failure::kStoreCommand, Refusal(std::string("SELECT * FROM EMPTY\0", 20)).Number());
  EXPECT_EQ(failure::kStoreCommand, Refusal("SELECT '\xFF' FROM EMPTY").Number());
}

TEST(TableStatement, RefusesToWrite) {
  for (const char* zSQL : {"INSERT INTO EMPTY (NAME) VALUES ('x')", "DELETE FROM EMPTY",
                           "UPDATE EMPTY SET NAME = 'x'", "DROP TABLE EMPTY", "CREATE TABLE X (A)", "BEGIN",
                           "PRAGMA journal_mode", "ATTACH ':memory:' AS other", "VACUUM"}) {
    const Failure refused = Refusal(zSQL);
    EXPECT_EQ(failure::kStoreCommand, refused.Number()) << zSQL;
    EXPECT_TRUE(Holds(refused, "can only be read")) << refused.Description();
  }
}

TEST(TableStatement, FindsTheColumnsThatJoinAndSort) {
  const auto columns = ado::dbase::FindColumns(
      "SELECT A.X FROM A, [B c] WHERE A.K = \"B c\".`L` AND M=N AND A.O = 'P' AND A.Q = 3 AND 3 = R "
      "ORDER BY A.K DESC, S , lower(T), U COLLATE NOCASE");
  EXPECT_EQ((Lines{"K", "L", "M", "N"}), columns.Keys);
  EXPECT_EQ((Lines{"K", "S", "U"}), columns.Sorted);
}

TEST(TableStatement, FindsNoColumnsInHalfAStatement) {
  for (const char* zSQL :
       {"", "=", "A =", "= A", "A.", "ORDER BY", "ORDER", "'", "\"", "[", "ORDER BY \"", "A = \""}) {
    const auto columns = ado::dbase::FindColumns(zSQL);
    EXPECT_LE(columns.Keys.size() + columns.Sorted.size(), 2U) << zSQL;
  }
}

TEST(TableSession, RefusesEverythingButQueries) {
  const auto session = ado::OpenSession(test::TableConnection(MadeTables()));
  for (const Failure& refused : {test::FailureOf([&] { session->OpenRows("EMPTY", {}); }),
                                 test::FailureOf([&] { session->ReadKeyset("SELECT * FROM EMPTY"); }),
                                 test::FailureOf([&] { session->WriteKeyset({}); }),
                                 test::FailureOf([&] { session->Begin(ado::TransactionKind::Read); }),
                                 test::FailureOf([&] { session->Commit(); }),
                                 test::FailureOf([&] { session->CopyTo("/x", "/x", {}); }),
                                 test::FailureOf([&] { session->CheckIntegrity(); })}) {
    EXPECT_EQ(failure::kStoreCommand, refused.Number());
    EXPECT_TRUE(Holds(refused, MadeTables() + " can only be read")) << refused.Description();
  }
  session->Rollback();
}

TEST(TableSession, ReadsTheTablesAnewForEachStatement) {
  const test::TempFolder folder;
  std::filesystem::copy_file(MadeTables() + "/EMPTY.dbf", folder.File("T.DBF"));
  const auto session = ado::OpenSession(test::TableConnection(folder.Path()));
  EXPECT_FALSE(session->Execute("SELECT * FROM T")->Next());
  std::filesystem::copy_file(MadeTables() + "/DBASE3.dbf", folder.File("T.DBF"),
                             std::filesystem::copy_options::overwrite_existing);
  const auto first = session->Execute("SELECT NAME FROM T");
  const auto second = session->Execute("SELECT NAME FROM T");
  ASSERT_TRUE(first->Next() && second->Next() && second->Next());
  EXPECT_EQ("Nägel", first->Value(0).ToString());
  EXPECT_EQ("plain", second->Value(0).ToString());
}

TEST(TableSession, ClosesItsResultsWhenItEnds) {
  ado::Connection connection;
  connection.Open(test::TableConnection(MadeTables()));
  const auto rows = connection.Execute("SELECT NAME FROM DBASE3");
  EXPECT_EQ("Nägel", rows->Fields("name").Value().ToString());
  connection.Close();
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { rows->MoveNext(); }).Number());
}

TEST(TableSession, ClosesAResultWhoseReadingFailed) {
  const auto session = ado::OpenSession(test::TableConnection(MadeTables()));
  const auto cursor = session->Execute("SELECT abs(-9223372036854775807 - 1) FROM DBASE3");
  EXPECT_EQ(failure::kStoreCommand, test::FailureOf([&] { cursor->Next(); }).Number());
  EXPECT_FALSE(cursor->IsOpen());
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { cursor->Next(); }).Number());
}

TEST(TableSession, TakesBackslashesAsSeparators) {
  std::string zFolder = MadeTables("unique");
  for (char& c : zFolder) {
    c = c == '/' && &c != zFolder.data() ? '\\' : c;
  }
  EXPECT_EQ(4U, RowsOf(zFolder, "SELECT * FROM HEADS").size());
  EXPECT_EQ(4U, RowsOf(zFolder + "\\", "SELECT * FROM HEADS").size());
}

TEST(TableSession, RefusesAFolderThatIsNotThere) {
  const auto refused = [](const std::string& zFolder) {
    return test::FailureOf([&] { ado::OpenSession(test::TableConnection(zFolder)); });
  };
  const test::TempFolder folder;
  EXPECT_EQ(failure::kPathNotFound, refused(folder.File("none")).Number());
  EXPECT_TRUE(Holds(refused(folder.File("none")), folder.File("none")));
  test::WriteFile(folder.File("file"), "x");
  EXPECT_EQ(failure::kStoreUnavailable, refused(folder.File("file")).Number());
  EXPECT_EQ(failure::kPathNotFound, refused(folder.File("file/below")).Number());
  EXPECT_EQ(failure::kPathNotFound, refused("").Number());
  for (const char* zName : {"/data/A;B", "/data/A;B=C", "/data/A;DBQ=/data", "{/data};B=C"}) {
    EXPECT_EQ(failure::kStoreUnavailable, refused(zName).Number()) << zName;
    EXPECT_TRUE(Holds(refused(zName), "must not hold a semicolon")) << refused(zName).Description();
  }
}

TEST(TableSession, SaysThatItsFolderWentAway) {
  auto folder = std::make_unique<test::TempFolder>();
  const auto session = ado::OpenSession(test::TableConnection(folder->Path()));
  folder.reset();
  EXPECT_EQ(failure::kPathNotFound, test::FailureOf([&] { session->Execute("SELECT * FROM T"); }).Number());
}
