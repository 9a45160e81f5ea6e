// Any texts as the values of statements, quoted as the library quotes them: the store gives back the very
// bytes, or the statement is refused because a text is not UTF-8. No text changes what a statement does.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/fuzz/Input.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/Store.h"

namespace {

using fuzz::Require;
using qm_ordering::Failure;
using qm_ordering::ado::Connection;

// A store with two orders, 1 and 2, that each have a line "line", in a transaction that is never committed,
// so that nothing is written to the disk.
Connection& Store() {
  static Connection connection;
  if (!connection.IsOpen()) {
    connection.Open("Driver=Microsoft Access Driver (*.mdb);DBQ=" + fuzz::NewStore());
    connection.BeginTransaction();
    for (const char* zSQL : {"insert into tblOrder (lOrderID, zOIDepartment) values (1, 'first')",
                             "insert into tblOrder (lOrderID, zOIDepartment) values (2, 'second')",
                             "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'line')",
                             "insert into tblOrderItem (lOrderID, zItemNumber) values (2, 'line')"}) {
      connection.Execute(zSQL);
    }
  }
  return connection;
}

std::string Literal(std::string_view zvText) {
  return "'" + qm_ordering::SQLText(zvText) + "'";
}

std::int32_t Number(const std::string& zvSQL) {
  return Store().Execute(zvSQL)->Fields(0).Value().ToInteger();
}

void UpdateReadAndCompare(const std::string& zvFirst, const std::string& zvSecond) {
  Store().Execute("update tblOrder set zDINotes = " + Literal(zvFirst) +
                  ", lDIDeliveryMethod = 7, zPurchaseOrderNumber = " + Literal(zvSecond) +
                  ", bOIIsTaxExempt = True where lOrderID = 1");
  const auto rows = Store().Execute(
      "select zDINotes, lDIDeliveryMethod, zPurchaseOrderNumber, bOIIsTaxExempt, zOIDepartment from tblOrder "
      "where zDINotes = " +
      Literal(zvFirst) + " and zPurchaseOrderNumber = " + Literal(zvSecond) + " and lDIDeliveryMethod = 7");
  Require(!rows->AtEnd(), "a text is found by itself");
  Require(rows->Fields(0).Value().ToString() == zvFirst, "the first text comes back as it is");
  Require(rows->Fields(1).Value().ToInteger() == 7, "the number between the texts comes back");
  Require(rows->Fields(2).Value().ToString() == zvSecond, "the second text comes back as it is");
  Require(rows->Fields(3).Value().ToBoolean(), "the flag behind the texts comes back");
  Require(rows->Fields(4).Value().ToString() == "first", "a column that is not named stays as it is");
  rows->MoveNext();
  Require(rows->AtEnd(), "only the one row holds the texts");
  const auto other = Store().Execute(
      "select zDINotes, zPurchaseOrderNumber, zOIDepartment from tblOrder where lOrderID = 2");
  Require(other->Fields(0).Value().IsNull() && other->Fields(1).Value().IsNull() &&
              other->Fields(2).Value().ToString() == "second",
          "the other row stays as it is");
}

void InsertFindAndDelete(const std::string& zvFirst, const std::string& zvSecond) {
  Store().Execute("insert into tblOrderItem (lOrderID, zItemNumber, zDescription, cPrice) values (1, " +
                  Literal(zvFirst) + ", " + Literal(zvSecond) + ", 1.5)");
  Require(Number("select count(*) from tblOrderItem where zItemNumber in (" + Literal(zvFirst) + ", " +
                 Literal(zvFirst) + ") and cPrice = 1.5") == 1,
          "a list that holds the text finds the one row");
  Store().Execute("delete from tblOrderItem where zItemNumber = " + Literal(zvFirst) +
                  " and zDescription = " + Literal(zvSecond));
  Require(Number("select count(*) from tblOrderItem where zItemNumber = 'line'") == 2,
          "the other lines stay");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  const auto [zFirst, zSecond] = fuzz::TwoTexts(pData, lSize);
  const bool bText =
      !qm_ordering::text::FindBrokenUTF8(zFirst) && !qm_ordering::text::FindBrokenUTF8(zSecond);
  const bool bNewLine = qm_ordering::text::CompareFolded(zFirst, "line") != 0;
  static std::int32_t lChanges = Number("select total_changes()");
  try {
    UpdateReadAndCompare(zFirst, zSecond);
    if (bNewLine) {
      InsertFindAndDelete(zFirst, zSecond);
    }
    Require(bText, "text that is not UTF-8 is refused");
    lChanges += bNewLine ? 3 : 1;
  } catch (const Failure& failure) {
    Require(!bText && failure.Number() == qm_ordering::failure::kStoreCommand,
            "only text that is not UTF-8 is refused: " + failure.Description());
  }
  Require(Number("select total_changes()") == lChanges,
          "each statement changes one row, one that is refused none");
  return 0;
}
