#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "tests/store/DatabaseFixture.h"
#include "tests/store/Operations.h"
#include "tests/support/RaisedNumber.h"

// How long the result sets live that operations hand back, and the batch in which lines are written.

namespace {

using test::Item;
using test::Money;
using test::OpenFiles;
using test::Operation;
using test::RaisedNumber;
using test::Rows;

using LiveSet = std::unique_ptr<qm_ordering::ado::Recordset>;

class ResultSets : public test::DatabaseFixture {
 protected:
  ResultSets() {
    AddOrder(7);
    AddOrder(12, true);
    FillLines();
  }

  void FillLines() const {
    Store.Run(
        "delete from tblOrderItem; delete from tblPersonalListItem; "
        "insert or ignore into tblPersonalList (lListID, zName) values (12, 'Tools'); "
        "insert into tblPersonalListItem (lListID, zItemNumber) values (12, 'A-1')");
    for (const char* zItem : {"A-1", "A-2", "A-3"}) {
      AddLine(12, zItem);
    }
  }
};

void ExpectClosed(qm_ordering::ado::Recordset& rows, const qm_ordering::ado::Field& field) {
  EXPECT_EQ(3704, RaisedNumber([&] { rows.AtEnd(); }));
  EXPECT_EQ(3704, RaisedNumber([&] { rows.AtBeginning(); }));
  EXPECT_EQ(3704, RaisedNumber([&] { rows.MoveNext(); }));
  EXPECT_EQ(3704, RaisedNumber([&] { rows.Fields("zItemNumber"); }));
  EXPECT_EQ(3704, RaisedNumber([&] { field.Value(); }));
}

TEST_F(ResultSets, LinesAreReadFromTheOpenConnection) {
  const auto rows = Database.OrderDetails_GetItems(12, 0, false);
  EXPECT_EQ("A-1", rows->Fields("zItemNumber").Value().ToString());
  rows->MoveNext();
  EXPECT_EQ("A-2", rows->Fields("zItemNumber").Value().ToString());
  rows->MoveNext();
  rows->MoveNext();
  EXPECT_TRUE(rows->AtEnd());
  EXPECT_EQ(3021, RaisedNumber([&] { rows->MoveNext(); }));
}

// The operations that hand back a live result set.
const std::vector<std::pair<const char*, LiveSet (*)(qm_ordering::Database&)>> kLiveSets = {
    {"OrderDetails_GetItems",
     [](qm_ordering::Database& oDatabase) { return oDatabase.OrderDetails_GetItems(12, 0, false); }},
    {"PersonalList_GetSummary",
     [](qm_ordering::Database& oDatabase) { return oDatabase.PersonalList_GetSummary(12); }},
    {"PersonalList_GetItems",
     [](qm_ordering::Database& oDatabase) { return oDatabase.PersonalList_GetItems(12); }},
};

TEST_F(ResultSets, TheNextOperationOnTheSameObjectClosesTheLinesBeingRead) {
  for (const auto* pOperations : {&test::GuardedOperations(), &test::UnguardedOperations()}) {
    for (const Operation& operation : *pOperations) {
      if (operation.Name == std::string("OrderDetails_ItemExists")) {
        continue;  // it has a connection of its own
      }
      SCOPED_TRACE(operation.Name);
      for (const auto& [zLive, open] : kLiveSets) {
        SCOPED_TRACE(zLive);
        Store.Run(
            "update tblOrder set bIsCurrent = 0; update tblOrder set bIsCurrent = -1 where lOrderID = 12");
        FillLines();
        const LiveSet rows = open(Database);
        const qm_ordering::ado::Field field = rows->Fields(0);
        ASSERT_NO_THROW(field.Value());
        operation.Run(Database);
        ASSERT_EQ("0 ", Recorded());
        ExpectClosed(*rows, field);
      }
    }
  }
}

TEST_F(ResultSets, AnOperationWithAConnectionOfItsOwnLeavesTheLinesOpen) {
  const auto rows = Database.OrderDetails_GetItems(12, 0, false);
  EXPECT_TRUE(Database.OrderDetails_ItemExists(12, "A-2"));
  EXPECT_EQ("A-1", rows->Fields("zItemNumber").Value().ToString());
}

TEST_F(ResultSets, OtherObjectsLeaveTheLinesOpen) {
  const auto rows = Database.OrderDetails_GetItems(12, 0, false);
  qm_ordering::Database other;
  other.SavePONumber(12, "PO");
  const auto others = other.OrderDetails_GetItems(12, 1, false);
  rows->MoveNext();
  EXPECT_EQ("A-2", rows->Fields("zItemNumber").Value().ToString());
  EXPECT_EQ("A-1", others->Fields("zItemNumber").Value().ToString());
}

TEST_F(ResultSets, AnOperationWritesThoughTheLinesBeingReadAreOldByNow) {
  for (const auto* pOperations : {&test::GuardedOperations(), &test::UnguardedOperations()}) {
    for (const Operation& operation : *pOperations) {
      SCOPED_TRACE(operation.Name);
      Store.Run(
          "update tblOrder set bIsCurrent = 0; update tblOrder set bIsCurrent = -1 where lOrderID = 12");
      FillLines();
      const auto rows = Database.OrderDetails_GetItems(12, 0, false);
      ASSERT_FALSE(rows->AtEnd());
      // Another program writes before the lines are read to their end.
      Store.Run("update tblOrder set zDINotes = 'changed by another program'");
      EXPECT_NO_THROW(operation.Run(Database));
      EXPECT_EQ("0 ", Recorded());
    }
  }
}

TEST_F(ResultSets, TheEndOfTheObjectClosesTheLinesBeingRead) {
  auto oDatabase = std::make_unique<qm_ordering::Database>();
  const auto rows = oDatabase->OrderDetails_GetItems(12, 0, false);
  const qm_ordering::ado::Field field = rows->Fields("zItemNumber");
  oDatabase.reset();
  ExpectClosed(*rows, field);
}

TEST_F(ResultSets, EveryOperationThatHandsBackNoLiveResultSetClosesItsConnection) {
  for (const auto* pOperations : {&test::GuardedOperations(), &test::UnguardedOperations()}) {
    for (const Operation& operation : *pOperations) {
      SCOPED_TRACE(operation.Name);
      operation.Run(Database);
      const bool bLive = std::any_of(kLiveSets.begin(), kLiveSets.end(), [&](const auto& live) {
        return operation.Name == std::string(live.first);
      });
      EXPECT_EQ(bLive, OpenFiles(Store.Path()) > 0);
    }
  }
}

TEST_F(ResultSets, AnOperationThatFailsClosesItsConnection) {
  Trace.Before = [](const std::string&) { throw std::runtime_error("stop here"); };
  for (const auto* pOperations : {&test::GuardedOperations(), &test::UnguardedOperations()}) {
    for (const Operation& operation : *pOperations) {
      RaisedNumber([&] { operation.Run(Database); });
      EXPECT_EQ(0u, OpenFiles(Store.Path())) << operation.Name;
    }
  }
}

TEST_F(ResultSets, ACallerThatHasReadItsLinesClosesTheConnectionItself) {
  const auto rows = Database.OrderDetails_GetItems(12, 0, false);
  const qm_ordering::ado::Field field = rows->Fields("zItemNumber");
  EXPECT_NE(0u, OpenFiles(Store.Path()));
  Database.CloseConnection();
  EXPECT_EQ(0u, OpenFiles(Store.Path()));
  ExpectClosed(*rows, field);
}

TEST_F(ResultSets, AHeaderOutlivesTheNextOperationTheObjectAndTheStore) {
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'before' where lOrderID = 12");
  auto oDatabase = std::make_unique<qm_ordering::Database>();
  const auto header = oDatabase->OrderDetails_GetSummary(12, false);
  oDatabase->SavePONumber(12, "after");
  EXPECT_EQ("before", header->Fields("zPurchaseOrderNumber").Value().ToString());
  oDatabase.reset();
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::remove_all(Folder.Path());

  EXPECT_EQ("before", header->Fields("zPurchaseOrderNumber").Value().ToString());
  EXPECT_EQ(12, header->Fields("lOrderID").Value().ToInteger());
  EXPECT_FALSE(header->AtEnd());
  header->MoveNext();
  EXPECT_TRUE(header->AtEnd());
}

TEST_F(ResultSets, ReadingAHeaderLeavesTheStoreFree) {
  const auto header = Database.OrderDetails_GetSummary(12, false);
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; drop view qryGetOrderSummary"));
}

// --- the batch in which lines are written

class LineBatch : public ResultSets {
 protected:
  LineBatch() { m_oConnection.Open(qm_ordering::ConnectionString()); }

  qm_ordering::ado::BatchRecordset Open() {
    return m_oConnection.OpenBatch(
        "select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, "
        "bIsTaxable from tblOrderItem where lOrderID = 12 and zItemNumber in ('A-1', "
        "'A-2', 'A-3')");
  }

  static void ChangeAll(qm_ordering::ado::BatchRecordset& rows) {
    for (; !rows.AtEnd(); rows.MoveNext()) {
      rows.Value(rows.Column("lQuantity"), 9);
      rows.Value(rows.Column("cPrice"), Money("1.5"));
    }
  }

  qm_ordering::ado::Connection m_oConnection;
};

TEST_F(LineBatch, WritesTheChangedRows) {
  auto rows = Open();
  ChangeAll(rows);
  rows.UpdateBatch();
  EXPECT_EQ((Rows{{"A-1", "9", "15000"}, {"A-2", "9", "15000"}, {"A-3", "9", "15000"}}),
            Store.Query("select zItemNumber, lQuantity, cPrice from tblOrderItem order by 1"));
}

TEST_F(LineBatch, ARowThatAnotherProgramChangedMeanwhileFailsAllOfThem) {
  for (const char* zChange : {"update tblOrderItem set lQuantity = 77 where zItemNumber = 'A-3'",
                              "update tblOrderItem set cExtendedPrice = 1 where zItemNumber = 'A-2'",
                              "update tblOrderItem set bIsTaxable = -1 where zItemNumber = 'A-1'",
                              "update tblOrderItem set zItemNumber = 'B' where zItemNumber = 'A-2'",
                              "delete from tblOrderItem where zItemNumber = 'A-3'"}) {
    FillLines();
    auto rows = Open();
    ChangeAll(rows);
    Store.Run(zChange);
    const Rows before = Store.Everything();
    EXPECT_EQ(-2147217864, RaisedNumber([&] { rows.UpdateBatch(); })) << zChange;
    EXPECT_EQ(before, Store.Everything()) << zChange;
    EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrder set zDINotes = 'free'")) << zChange;
  }
}

TEST_F(LineBatch, AChangeOfWhatTheBatchDidNotReadIsNoConflict) {
  auto rows = Open();
  ChangeAll(rows);
  Store.Run("update tblOrderItem set zDescription = 'new', zCustomerNotes = 'new'");
  EXPECT_NO_THROW(rows.UpdateBatch());
  EXPECT_EQ((Rows{{"3"}}), Store.Query("select count(*) from tblOrderItem where lQuantity = 9 and "
                                       "zDescription = 'new'"));
}

TEST_F(ResultSets, ItemsWhoseUpdateFailsForOneOfThemAreAllAsTheyWere) {
  Store.Run(
      "create trigger refuse before update on tblOrderItem when old.zItemNumber = 'A-3' "
      "begin select raise(abort, 'not this one'); end");
  const Rows before = Store.Everything();
  qm_ordering::OrderItems items;
  for (const char* zItem : {"A-1", "A-2", "A-3"}) {
    items.Add(Item(zItem, 9), zItem);
  }
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.OrderDetails_UpdateItems(12, items); }));
  EXPECT_EQ(before, Store.Everything());
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrder set zDINotes = 'free'"));
}

}  // namespace
