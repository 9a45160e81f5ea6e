#include "qm_ordering/platform/ado/Recordset.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/RaisedNumber.h"

using namespace std::string_view_literals;

namespace {

namespace ado = qm_ordering::ado;
namespace failure = qm_ordering::failure;
using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::Variant;
using qm_ordering::VariantKind;
using test::RaisedNumber;

constexpr const char* kOrders = "select lOrderID, zPurchaseOrderNumber from tblOrder order by lOrderID";

// What holds for live and for detached sets alike.
class EveryRecordset : public test::StoreFixture, public testing::WithParamInterface<bool> {
 protected:
  std::unique_ptr<ado::Recordset> Open(const std::string& zvSQL) {
    return GetParam() ? Connection.OpenDetached(zvSQL) : Connection.Execute(zvSQL);
  }

  static void AddOrders(int lvCount) {
    for (int i = 1; i <= lvCount; ++i) {
      test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('PO-" + std::to_string(i) + "')");
    }
  }

  // A value of one column after it was stored so.
  Variant Stored(const std::string& zvColumn, const std::string& zvLiteral) {
    Connection.Execute("insert into tblOrder (" + zvColumn + ") values (" + zvLiteral + ")");
    return Open("select " + zvColumn + " from tblOrder order by lOrderID desc")->Fields(zvColumn).Value();
  }

  test::OpenConnection Connection;
};

INSTANTIATE_TEST_SUITE_P(Kinds, EveryRecordset, testing::Bool(),
                         [](const auto& oInfo) { return oInfo.param ? "Detached" : "Live"; });

class LiveRecordset : public test::StoreFixture {};
class DetachedRecordset : public test::StoreFixture {};

}  // namespace

TEST_P(EveryRecordset, IsAtBothEndsWhenItHasNoRows) {
  const auto rows = Open(kOrders);
  EXPECT_TRUE(rows->AtBeginning());
  EXPECT_TRUE(rows->AtEnd());
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] { return rows->Fields("lOrderID").Value(); }));
}

TEST_P(EveryRecordset, StandsOnItsFirstRowAndEndsBehindItsLast) {
  AddOrders(2);
  const auto rows = Open(kOrders);
  EXPECT_FALSE(rows->AtBeginning());
  EXPECT_FALSE(rows->AtEnd());
  const ado::Field number = rows->Fields("zPurchaseOrderNumber");
  EXPECT_EQ(Variant("PO-1"), number.Value());
  rows->MoveNext();
  EXPECT_EQ(Variant("PO-2"), number.Value());
  EXPECT_FALSE(rows->AtEnd());
  rows->MoveNext();
  EXPECT_TRUE(rows->AtEnd());
  EXPECT_FALSE(rows->AtBeginning());
}

TEST_P(EveryRecordset, RaisesForAStepOrAValueBehindTheLastRow) {
  AddOrders(1);
  const auto rows = Open(kOrders);
  const ado::Field number = rows->Fields("zPurchaseOrderNumber");
  rows->MoveNext();
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] {
              rows->MoveNext();
              return 0;
            }));
  EXPECT_EQ(failure::kNoCurrentRow, RaisedNumber([&] { return number.Value(); }));
  EXPECT_TRUE(rows->AtEnd());
}

TEST_P(EveryRecordset, FindsAColumnByNameInAnyLetterCaseAndByPosition) {
  AddOrders(1);
  const auto rows = Open(kOrders);
  EXPECT_EQ(Variant("PO-1"), rows->Fields("ZPURCHASEordernumber").Value());
  EXPECT_EQ(Variant(1), rows->Fields(0).Value());
  EXPECT_EQ(Variant("PO-1"), rows->Fields(1).Value());
}

TEST_P(EveryRecordset, FindsAColumnInTheVeryLettersBeforeOneInOthers) {
  AddOrders(1);
  const auto rows = Open("select lOrderID as a, zPurchaseOrderNumber as A, zDINotes as B from tblOrder");
  EXPECT_EQ(rows->Fields(0).Value(), rows->Fields("a").Value());
  EXPECT_EQ(rows->Fields(1).Value(), rows->Fields("A").Value());
  EXPECT_EQ(rows->Fields(2).Value(), rows->Fields("b").Value());
}

TEST_P(EveryRecordset, RaisesForAColumnThatItDoesNotHave) {
  AddOrders(1);
  const auto rows = Open(kOrders);
  EXPECT_EQ(failure::kUnknownField, RaisedNumber([&] { return rows->Fields("zDINotes"); }));
  EXPECT_EQ(failure::kUnknownField, RaisedNumber([&] { return rows->Fields(""); }));
  EXPECT_EQ(failure::kUnknownField, RaisedNumber([&] { return rows->Fields(2); }));
}

TEST_P(EveryRecordset, RaisesForEveryUseOnceItIsClosed) {
  AddOrders(1);
  const auto rows = Open(kOrders);
  const ado::Field number = rows->Fields("zPurchaseOrderNumber");
  rows->Close();
  rows->Close();
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->AtBeginning(); }));
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->AtEnd(); }));
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] {
              rows->MoveNext();
              return 0;
            }));
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->Fields("lOrderID"); }));
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->Fields(0); }));
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return number.Value(); }));
}

TEST_P(EveryRecordset, GivesEachValueInTheKindOfItsColumn) {
  EXPECT_EQ(Variant(-2147483647 - 1), Stored("lDIShippingMethod", "-2147483648"));
  EXPECT_EQ(Variant(2147483647), Stored("lDIShippingMethod", "2147483647"));
  EXPECT_EQ(Variant(true), Stored("bOIIsTaxExempt", "True"));
  EXPECT_EQ(Variant(false), Stored("bOIIsTaxExempt", "False"));
  EXPECT_EQ(Variant("007"), Stored("zDINotes", "'007'"));
  EXPECT_EQ(Variant(""), Stored("zDINotes", "''"));
  EXPECT_EQ(Variant(Date(2003, 7, 4, 15, 4, 5)), Stored("datSubmitDate", "'2003-07-04 15:04:05'"));
  EXPECT_EQ(Variant(Date()), Stored("datSubmitDate", "'1899-12-30'"));
  EXPECT_EQ(Variant(Date(100, 1, 1)), Stored("datSubmitDate", "'0100-01-01'"));
  EXPECT_EQ(Variant(Date(9999, 12, 31, 23, 59, 59)), Stored("datSubmitDate", "'9999-12-31 23:59:59'"));
}

TEST_P(EveryRecordset, GivesMoneyExactlyUpToBothEnds) {
  for (const char* zAmount :
       {"922337203685477.5807", "-922337203685477.5808", "0.0001", "-0.0001", "0", "12.5"}) {
    const Variant vAmount = Stored("cTotalPrice", zAmount);
    EXPECT_EQ(VariantKind::Currency, vAmount.Kind()) << zAmount;
    EXPECT_EQ(zAmount, vAmount.ToCurrency().ToString());
  }
}

TEST_P(EveryRecordset, GivesZeroBytesOfATextAsTheyAre) {
  const auto zText = "a\0b\0"sv;
  EXPECT_EQ(Variant(zText), Stored("zDINotes", "'" + std::string(zText) + "'"));
}

TEST_P(EveryRecordset, GivesNullForAColumnWithoutAValue) {
  test::Run("insert into tblOrder (bIsCurrent) values (False)");
  const auto rows =
      Open("select datSubmitDate, zDINotes, cTotalPrice, lDIShippingMethod, bOIIsTaxExempt from tblOrder");
  EXPECT_TRUE(rows->Fields("datSubmitDate").Value().IsNull());
  EXPECT_TRUE(rows->Fields("zDINotes").Value().IsNull());
  EXPECT_EQ(Variant(Currency()), rows->Fields("cTotalPrice").Value());
  EXPECT_EQ(Variant(0), rows->Fields("lDIShippingMethod").Value());
  EXPECT_EQ(Variant(false), rows->Fields("bOIIsTaxExempt").Value());
}

TEST_P(EveryRecordset, GivesCountsSumsAndLargestValuesInTheirKinds) {
  const char* zSQL =
      "select count(*), sum(cTotalPrice), max(lOrderID), max(datSubmitDate), max(zDINotes) from tblOrder";
  const auto none = Open(zSQL);
  EXPECT_EQ(Variant(0), none->Fields(0).Value());
  EXPECT_TRUE(none->Fields(1).Value().IsNull());
  EXPECT_TRUE(none->Fields(2).Value().IsNull());
  none->Close();
  test::Run(
      "insert into tblOrder (cTotalPrice, datSubmitDate, zDINotes) values (922337203685477.5806, "
      "'2003-07-04', 'a')");
  test::Run("insert into tblOrder (cTotalPrice, datSubmitDate, zDINotes) values (0.0001, '2003-07-05', 'B')");
  const auto rows = Open(zSQL);
  EXPECT_EQ(Variant(2), rows->Fields(0).Value());
  EXPECT_EQ(Variant(Currency::Parse("922337203685477.5807")), rows->Fields(1).Value());
  EXPECT_EQ(Variant(2), rows->Fields(2).Value());
  EXPECT_EQ(Variant(Date(2003, 7, 5)), rows->Fields(3).Value());
  EXPECT_EQ(Variant("B"), rows->Fields(4).Value());
}

TEST_P(EveryRecordset, RaisesOverflowForASumBeyondTheRangeOfMoney) {
  test::Run("insert into tblOrder (cTotalPrice) values (922337203685477.5807)");
  test::Run("insert into tblOrder (cTotalPrice) values (0.0001)");
  EXPECT_EQ(failure::kOverflow, RaisedNumber([&] { return Open("select sum(cTotalPrice) from tblOrder"); }));
}

TEST_P(EveryRecordset, RefusesAValueOfAnotherKindThanItsColumn) {
  // As a program that knows nothing of the library's kinds could have written it.
  Store.Run("insert into tblOrder (lDIDeliveryMethod) values ('x')");
  Store.Run("insert into tblOrder (cTotalPrice, datSubmitDate) values (1.5, 'yesterday')");
  Store.Run("update tblOrder set lDIShippingMethod = 2147483648");
  const auto value = [&](const char* zvColumn, int lvOrder) {
    return RaisedNumber([&] {
      return Open(std::string("select ") + zvColumn +
                  " from tblOrder where lOrderID = " + std::to_string(lvOrder))
          ->Fields(0)
          .Value();
    });
  };
  EXPECT_EQ(failure::kTypeMismatch, value("lDIDeliveryMethod", 1));
  EXPECT_EQ(failure::kTypeMismatch, value("cTotalPrice", 2));
  EXPECT_EQ(failure::kTypeMismatch, value("datSubmitDate", 2));
  EXPECT_EQ(failure::kOverflow, value("lDIShippingMethod", 1));
}

TEST_P(EveryRecordset, RaisesForAStatementThatIsNoQuery) {
  AddOrders(1);
  const auto use = [&] {
    const auto rows = Open("update tblOrder set zDINotes = 'a'");
    return rows->AtEnd();
  };
  EXPECT_EQ(failure::kClosedObject, RaisedNumber(use));
  EXPECT_EQ("a", test::Value("select zDINotes from tblOrder"));
}

TEST_P(EveryRecordset, ReadsTwoQueriesOfOneTextAtATime) {
  AddOrders(2);
  const auto outer = Open(kOrders);
  const auto inner = Open(kOrders);
  outer->MoveNext();
  EXPECT_EQ(Variant(2), outer->Fields(0).Value());
  EXPECT_EQ(Variant(1), inner->Fields(0).Value());
}

TEST_F(LiveRecordset, IsClosedByTheEndOfItsConnection) {
  test::Run("insert into tblOrder (bIsCurrent) values (False)");
  for (const bool bRead : {false, true}) {
    test::OpenConnection connection;
    const auto rows = connection.Execute(kOrders);
    const ado::Field order = rows->Fields(0);
    if (bRead) {
      rows->MoveNext();
    }
    connection.Close();
    EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->AtBeginning(); })) << bRead;
    EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->AtEnd(); })) << bRead;
    EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] {
                rows->MoveNext();
                return 0;
              }))
        << bRead;
    EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return order.Value(); })) << bRead;
    EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->Fields("lOrderID"); })) << bRead;
  }
}

TEST_F(LiveRecordset, MayEndAfterItsConnection) {
  std::unique_ptr<ado::Recordset> rows;
  {
    test::OpenConnection connection;
    rows = connection.Execute(kOrders);
  }
  // Another connection has its session by now.
  test::OpenConnection next;
  const auto others = next.Execute(kOrders);
  EXPECT_EQ(failure::kClosedObject, RaisedNumber([&] { return rows->Fields(0); }));
  rows.reset();
  EXPECT_TRUE(others->AtEnd());
}

TEST_F(LiveRecordset, SeesTheStoreAsItWasWhenItWasOpened) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  test::OpenConnection connection;
  const auto rows = connection.Execute(kOrders);
  test::Run("update tblOrder set zPurchaseOrderNumber = 'changed'");
  rows->MoveNext();
  EXPECT_EQ(Variant("b"), rows->Fields(1).Value());
}

TEST_F(LiveRecordset, LetsOthersWriteWhileItIsOpen) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  test::OpenConnection connection;
  const auto rows = connection.Execute(kOrders);
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  EXPECT_EQ("2", test::Value("select count(*) from tblOrder"));
  EXPECT_FALSE(rows->AtEnd());
}

TEST_F(DetachedRecordset, IsReadAfterItsConnectionAndTheStoresFileAreGone) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber, cTotalPrice) values ('a', 1.5)");
  test::Run("insert into tblOrder (zPurchaseOrderNumber, datSubmitDate) values ('b', '2003-07-04')");
  std::unique_ptr<ado::Recordset> rows;
  {
    test::OpenConnection connection;
    rows = connection.OpenDetached(
        "select zPurchaseOrderNumber, cTotalPrice, datSubmitDate from tblOrder order by lOrderID");
  }
  ado::embedded::CloseIdleSessions();
  ASSERT_TRUE(std::filesystem::remove(Store.Path()));
  EXPECT_EQ(Variant("a"), rows->Fields("zPurchaseOrderNumber").Value());
  EXPECT_EQ(Variant(Currency::Parse("1.5")), rows->Fields("cTotalPrice").Value());
  EXPECT_TRUE(rows->Fields("datSubmitDate").Value().IsNull());
  rows->MoveNext();
  EXPECT_EQ(Variant("b"), rows->Fields("zPurchaseOrderNumber").Value());
  EXPECT_EQ(Variant(Date(2003, 7, 4)), rows->Fields("datSubmitDate").Value());
  rows->MoveNext();
  EXPECT_TRUE(rows->AtEnd());
}

TEST_F(DetachedRecordset, DoesNotFollowLaterChanges) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  test::OpenConnection connection;
  const auto rows = connection.OpenDetached(kOrders);
  test::Run("update tblOrder set zPurchaseOrderNumber = 'changed'");
  EXPECT_EQ(Variant("a"), rows->Fields(1).Value());
}
