#include <gtest/gtest.h>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// The orders that were submitted: listed, looked for, removed.

namespace {

using qm_ordering::Date;
using qm_ordering::Variant;
using test::Rows;
namespace failure = qm_ordering::failure;
using Texts = std::vector<std::string>;

class SubmittedOrders : public test::DatabaseFixture {
 protected:
  SubmittedOrders() {
    Add(1, "PO-b", "2003-01-02 00:00:00", 10'000);
    Add(2, "po-A", "2003-01-03 00:00:00", 30'000);
    Add(3, "PO-a", "2003-01-01 00:00:00", 20'000);
    AddOrder(12, true);
    AddLine(2, "A-1");
    AddLine(12, "A-1");
  }

  void Add(std::int32_t lvOrderID, const std::string& zvPONumber, const std::string& zvDate,
           std::int64_t lvTotal) const {
    AddOrder(lvOrderID);
    Store.Run("update tblOrder set zPurchaseOrderNumber = '" + zvPONumber + "', datSubmitDate = '" + zvDate +
              "', cTotalPrice = " + std::to_string(lvTotal) +
              " where lOrderID = " + std::to_string(lvOrderID));
  }

  std::vector<std::int32_t> Ids(std::int32_t lvSortOrder) {
    std::vector<std::int32_t> ids;
    for (const auto rows = Database.OrderHistory_GetOrders(lvSortOrder); !rows->AtEnd(); rows->MoveNext()) {
      ids.push_back(rows->Fields("lOrderID").Value().ToInteger());
    }
    return ids;
  }
};

}  // namespace

TEST_F(SubmittedOrders, ComeInTheFourOrdersOfTheHistory) {
  EXPECT_EQ((std::vector<std::int32_t>{3, 2, 1}), Ids(0));
  EXPECT_EQ(1, Ids(1).back());
  EXPECT_EQ((std::vector<std::int32_t>{3, 1, 2}), Ids(2));
  EXPECT_EQ((std::vector<std::int32_t>{1, 3, 2}), Ids(3));
  const std::string zSelect =
      "select datSubmitDate, zPurchaseOrderNumber, cTotalPrice, lOrderID from tblOrder where bIsCurrent = "
      "False "
      "order by ";
  EXPECT_EQ((Texts{zSelect + "zPurchaseOrderNumber, datSubmitDate", zSelect + "zPurchaseOrderNumber",
                   zSelect + "datSubmitDate", zSelect + "cTotalPrice"}),
            Trace.Statements());
}

TEST_F(SubmittedOrders, BreakNoTieButByTheSecondColumnOfTheirOrder) {
  Store.Run("update tblOrder set datSubmitDate = '2003-01-09 00:00:00' where lOrderID = 3");
  EXPECT_EQ((std::vector<std::int32_t>{2, 3, 1}), Ids(0));
  Store.Run("update tblOrder set cTotalPrice = 40000 where lOrderID = 3");
  EXPECT_EQ((std::vector<std::int32_t>{1, 2, 3}), Ids(3));
}

TEST_F(SubmittedOrders, HaveNoOtherOrdersThanFour) {
  for (const std::int32_t lSortOrder : {-1, 4, 2'147'483'647, -2'147'483'647 - 1}) {
    EXPECT_EQ(failure::kIndexOutOfBounds,
              test::RaisedNumber([&] { return Database.OrderHistory_GetOrders(lSortOrder); }));
  }
  EXPECT_EQ(Texts{}, Trace.Statements());
}

TEST_F(SubmittedOrders, AreReadWithoutTheStore) {
  const auto rows = Database.OrderHistory_GetOrders(3);
  Database.OrderHistory_DeleteOrder(1);
  EXPECT_EQ(Variant("PO-b"), rows->Fields("zPurchaseOrderNumber").Value());
  EXPECT_EQ(Variant(Date(2003, 1, 2)), rows->Fields("datSubmitDate").Value());
  EXPECT_EQ(Variant(test::Money("1")), rows->Fields("cTotalPrice").Value());
}

TEST_F(SubmittedOrders, AreRemovedWithTheirLines) {
  Database.OrderHistory_DeleteOrder(2);
  EXPECT_EQ((Texts{"delete from tblOrder where lOrderID = 2 and bIsCurrent = False"}), Trace.Statements());
  EXPECT_EQ((std::vector<std::int32_t>{3, 1}), Ids(0));
  EXPECT_EQ((Rows{{"12"}}), Store.Query("select lOrderID from tblOrderItem"));
}

TEST_F(SubmittedOrders, AreNotTheCurrentOneWhichIsNeverRemoved) {
  const Rows before = Store.Everything();
  Database.OrderHistory_DeleteOrder(12);
  Database.OrderHistory_DeleteOrder(99);
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(SubmittedOrders, AreFoundByTheirPurchaseOrderNumber) {
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'the current one' where lOrderID = 12");
  EXPECT_EQ(Variant(true), Database.OrderHistory_ItemExists("po-B"));
  EXPECT_EQ(Variant(false), Database.OrderHistory_ItemExists("the current one"));
  EXPECT_EQ(Variant(false), Database.OrderHistory_ItemExists("it's none"));
  EXPECT_EQ((Texts{"select count(*) from tblOrder where zPurchaseOrderNumber = 'po-B' and bIsCurrent = False",
                   "select count(*) from tblOrder where zPurchaseOrderNumber = 'the current one' and "
                   "bIsCurrent = False",
                   "select count(*) from tblOrder where zPurchaseOrderNumber = 'it''s none' and bIsCurrent = "
                   "False"}),
            Trace.Statements());
}

TEST_F(SubmittedOrders, AreNeitherThereNorNotWhenTheStoreFails) {
  Store.Run("alter table tblOrder rename to gone");
  EXPECT_TRUE(Database.OrderHistory_ItemExists("PO-b").IsEmpty());
  EXPECT_TRUE(Recorded().starts_with("5 ")) << Recorded();
  EXPECT_EQ(failure::kStoreNoTable, test::RaisedNumber([&] { return Database.OrderHistory_GetOrders(0); }));
}
