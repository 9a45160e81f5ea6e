#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/Recordset.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/RaisedNumber.h"

namespace {

namespace ado = qm_ordering::ado;
namespace failure = qm_ordering::failure;
using qm_ordering::Currency;
using qm_ordering::Variant;
using test::RaisedNumber;

// Two orders with lines of the same item numbers.
class BatchRecordset : public test::StoreFixture {
 protected:
  BatchRecordset() {
    test::Run("insert into tblOrder (bIsCurrent) values (False)");
    test::Run("insert into tblOrder (bIsCurrent) values (False)");
    for (const char* zOrder : {"1", "2"}) {
      for (const char* zItem : {"a", "b", "c"}) {
        test::Run(std::string("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, cPrice, "
                              "zDescription) values (") +
                  zOrder + ", '" + zItem + "', 1, 2.5, 'text')");
      }
    }
  }

  static constexpr const char* kLines =
      "select zItemNumber, lQuantity, cPrice, bIsTaxable, zDescription, zModel from tblOrderItem where "
      "lOrderID = 1 "
      "and zItemNumber in ('a', 'b', 'c') order by zItemNumber";

  std::string Quantities(const char* zvOrder) {
    std::string zAll;
    for (const auto& row : Store.Query(std::string("select lQuantity from tblOrderItem where lOrderID = ") +
                                       zvOrder + " order by zItemNumber")) {
      zAll += row.front() + " ";
    }
    return zAll;
  }

  test::OpenConnection Connection;
};

void SetQuantities(ado::BatchRecordset& rows, std::int32_t lvQuantity) {
  for (; !rows.AtEnd(); rows.MoveNext()) {
    rows.Value(rows.Column("lQuantity"), lvQuantity);
  }
}

}  // namespace

TEST_F(BatchRecordset, WritesAllItsChangesTogether) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  EXPECT_EQ(Variant("a"), rows.Value(rows.Column("zItemNumber")));
  SetQuantities(rows, 7);
  EXPECT_EQ("1 1 1 ", Quantities("1"));
  rows.UpdateBatch();
  EXPECT_EQ("7 7 7 ", Quantities("1"));
}

TEST_F(BatchRecordset, LeavesTheLinesOfOtherOrdersWithTheSameItemNumbers) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  SetQuantities(rows, 7);
  rows.UpdateBatch();
  EXPECT_EQ("1 1 1 ", Quantities("2"));
}

TEST_F(BatchRecordset, ShowsAChangedValueBeforeItIsSent) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("lQuantity"), 7);
  EXPECT_EQ(Variant(7), rows.Value(rows.Column("LQUANTITY")));
}

TEST_F(BatchRecordset, WritesNothingWhenARowWasChangedSinceItWasRead) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  SetQuantities(rows, 7);
  Store.Run("update tblOrderItem set lQuantity = 5 where lOrderID = 1 and zItemNumber = 'c'");
  EXPECT_EQ(failure::kStoreRowChanged, RaisedNumber([&] {
              rows.UpdateBatch();
              return 0;
            }));
  EXPECT_EQ("1 1 5 ", Quantities("1"));
}

TEST_F(BatchRecordset, WritesNothingWhenARowIsGone) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  SetQuantities(rows, 7);
  Store.Run("delete from tblOrderItem where lOrderID = 1 and zItemNumber = 'b'");
  EXPECT_EQ(failure::kStoreRowChanged, RaisedNumber([&] {
              rows.UpdateBatch();
              return 0;
            }));
  EXPECT_EQ("1 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, NoticesAChangeOfAColumnThatItDoesNotWrite) {
  for (const char* zChange : {"zDescription = 'other'", "zDescription = 'TEXT'", "zDescription = null",
                              "zModel = ''", "cPrice = 25001", "bIsTaxable = -1"}) {
    Store.Run(
        "update tblOrderItem set lQuantity = 1, zDescription = 'text', zModel = null, cPrice = 25000, "
        "bIsTaxable = 0");
    ado::BatchRecordset rows = Connection.OpenBatch(kLines);
    SetQuantities(rows, 7);
    Store.Run(std::string("update tblOrderItem set ") + zChange +
              " where lOrderID = 1 and zItemNumber = 'b'");
    EXPECT_EQ(failure::kStoreRowChanged, RaisedNumber([&] {
                rows.UpdateBatch();
                return 0;
              }))
        << zChange;
    EXPECT_EQ("1 1 1 ", Quantities("1")) << zChange;
  }
}

TEST_F(BatchRecordset, WritesTheChangedColumnsOfTheChangedRowsAlone) {
  Store.Run(
      "create trigger Refuse before update of zDescription, cPrice on tblOrderItem begin select raise(abort, "
      "'a column that did not change'); end");
  Store.Run(
      "create trigger RefuseRow before update on tblOrderItem when old.zItemNumber = 'a' begin select "
      "raise(abort, "
      "'a row that did not change'); end");
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("lQuantity"), 1);
  rows.MoveNext();
  rows.Value(rows.Column("lQuantity"), 7);
  rows.UpdateBatch();
  EXPECT_EQ("1 7 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, WritesNothingWhenTheStoreRefusesARow) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("lQuantity"), 7);
  rows.MoveNext();
  rows.Value(rows.Column("zItemNumber"), "A");
  EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] {
              rows.UpdateBatch();
              return 0;
            }));
  EXPECT_EQ("1 1 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, WritesNothingInAnOpenTransactionWhenARowFails) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("lQuantity"), 7);
  rows.MoveNext();
  rows.Value(rows.Column("zItemNumber"), "A");
  ado::Transaction transaction(Connection);
  Connection.Execute("update tblOrder set zDINotes = 'kept' where lOrderID = 1");
  EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] {
              rows.UpdateBatch();
              return 0;
            }));
  transaction.Commit();
  EXPECT_EQ("1 1 1 ", Quantities("1"));
  EXPECT_EQ("kept", Store.Value("select zDINotes from tblOrder where lOrderID = 1"));
}

TEST_F(BatchRecordset, IsPartOfAnOpenTransaction) {
  {
    const ado::Transaction transaction(Connection);
    ado::BatchRecordset rows = Connection.OpenBatch(kLines);
    SetQuantities(rows, 7);
    rows.UpdateBatch();
  }
  EXPECT_EQ("1 1 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, WritesEveryKindOfValueInTheKindOfItsColumn) {
  ado::BatchRecordset rows = Connection.OpenBatch(
      "select datSubmitDate, zDINotes, cTotalPrice, bOIIsTaxExempt, lDIShippingMethod from tblOrder where "
      "lOrderID = 1");
  rows.Value(rows.Column("datSubmitDate"), qm_ordering::Date(2003, 7, 4));
  rows.Value(rows.Column("zDINotes"), std::string("a\0b", 3));
  rows.Value(rows.Column("cTotalPrice"), Currency::Parse("-922337203685477.5808"));
  rows.Value(rows.Column("bOIIsTaxExempt"), true);
  rows.Value(rows.Column("lDIShippingMethod"), 9);
  rows.UpdateBatch();
  EXPECT_EQ(
      (test::Rows{{"2003-07-04 00:00:00", std::string("a\0b", 3), "-9223372036854775808", "-1", "9"}}),
      Store.Query(
          "select datSubmitDate, zDINotes, cTotalPrice, bOIIsTaxExempt, lDIShippingMethod from tblOrder "
          "where lOrderID = 1"));
}

TEST_F(BatchRecordset, WritesAWholeNumberIntoMoneyAsThatAmount) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("cPrice"), 3);
  rows.UpdateBatch();
  EXPECT_EQ("30000", Store.Value("select cPrice from tblOrderItem where lOrderID = 1 and zItemNumber = 'a'"));
}

TEST_F(BatchRecordset, RefusesATextThatIsNoNumberForANumber) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  rows.Value(rows.Column("lQuantity"), "many");
  EXPECT_EQ(failure::kTypeMismatch, RaisedNumber([&] {
              rows.UpdateBatch();
              return 0;
            }));
  EXPECT_EQ("1 1 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, ReadsAndWritesNull) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  EXPECT_TRUE(rows.Value(rows.Column("zModel")).IsNull());
  rows.Value(rows.Column("zModel"), "m");
  rows.Value(rows.Column("zDescription"), Variant::Null());
  rows.UpdateBatch();
  EXPECT_EQ(
      (test::Rows{{"m", "NULL"}}),
      Store.Query("select zModel, zDescription from tblOrderItem where lOrderID = 1 and zItemNumber = 'a'"));
}

TEST_F(BatchRecordset, DoesNotShowTheKeyThatItWritesBy) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  for (const char* zColumn : {"rowid", "lOrderEntered", "lOrderID", ""}) {
    EXPECT_EQ(failure::kUnknownField, RaisedNumber([&] { return rows.Column(zColumn); })) << zColumn;
  }
}

TEST_F(BatchRecordset, RaisesBehindItsLastRow) {
  ado::BatchRecordset rows =
      Connection.OpenBatch("select zItemNumber, lQuantity from tblOrderItem where lOrderID = 3");
  EXPECT_TRUE(rows.AtEnd());
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] { return rows.Value(rows.Column("lQuantity")); }));
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] {
              rows.Value(rows.Column("lQuantity"), 1);
              return 0;
            }));
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] {
              rows.MoveNext();
              return 0;
            }));
  rows.UpdateBatch();
  EXPECT_EQ("1 1 1 ", Quantities("1"));
}

TEST_F(BatchRecordset, WritesNothingWhenNothingChanged) {
  ado::BatchRecordset rows = Connection.OpenBatch(kLines);
  // Not even the check for a change in between.
  Store.Run("update tblOrderItem set lQuantity = 5 where lOrderID = 1 and zItemNumber = 'c'");
  rows.UpdateBatch();
  EXPECT_EQ("1 1 5 ", Quantities("1"));
}
