#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::CheckOrderStore;
using Findings = std::vector<std::string>;

// A store with two orders of two lines each.
class CheckOrderStoreFinds : public test::StoreFixture {
 protected:
  CheckOrderStoreFinds() {
    Store.Run(
        "insert into tblOrder (bIsCurrent, cTotalPrice) values (0, 35000), (-1, -50001);"
        "insert into tblOrder (zPurchaseOrderNumber) values ('without lines');"
        "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) "
        "values (1, 'a', 10000), (1, 'b', 25000), (2, 'a', -50001), (2, 'c', 0);"
        "insert into tblPersonalList (zName) values ('l');"
        "insert into tblPersonalListItem (lListID, zItemNumber) values (1, 'a')");
  }

  // Whether one of the findings holds the text.
  static bool Holds(const Findings& findings, std::string_view zvText) {
    return std::ranges::any_of(
        findings, [&](const std::string& zFinding) { return zFinding.find(zvText) != std::string::npos; });
  }

  static std::string All(const Findings& findings) {
    std::string zAll;
    for (const std::string& zFinding : findings) {
      zAll += zFinding + "\n";
    }
    return zAll;
  }

  // Overwrites a page of the file, from 1, while nobody uses it.
  void Destroy(std::size_t lvPage) const {
    qm_ordering::ado::embedded::CloseIdleSessions();
    constexpr std::size_t kPage = 4096;
    std::string zBytes = test::ReadFile(Store.Path());
    ASSERT_LE(lvPage * kPage, zBytes.size());
    std::fill_n(zBytes.begin() + static_cast<std::ptrdiff_t>((lvPage - 1) * kPage), kPage, '\xEE');
    test::WriteFile(Store.Path(), zBytes);
  }

  std::size_t RootPage(const std::string& zvName) const {
    return std::stoul(Store.Value("select rootpage from sqlite_schema where name = '" + zvName + "'"));
  }
};

}  // namespace

TEST_F(CheckOrderStoreFinds, NothingInAWholeStore) {
  EXPECT_EQ(Findings{}, CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, NothingInAnEmptyStore) {
  Store.Run("delete from tblOrderItem; delete from tblOrder");
  EXPECT_EQ(Findings{}, CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, ATotalThatIsNotTheSumOfTheLines) {
  Store.Run(
      "update tblOrder set cTotalPrice = 34999 where lOrderID = 1; update tblOrder set cTotalPrice = 1 where "
      "lOrderID = 3");
  EXPECT_EQ((Findings{"order 1: its total is 3.4999, its lines add up to 3.5",
                      "order 3: its total is 0.0001, its lines add up to 0"}),
            CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, ASumBeyondTheRangeOfMoney) {
  Store.Run("update tblOrderItem set cExtendedPrice = 9223372036854775807 where lOrderID = 1");
  EXPECT_EQ(Findings{"order 1: the sum of its lines is beyond the range of money"}, CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, NothingInASumThatOnlyPassesTheRangeOnItsWay) {
  Store.Run(
      "update tblOrderItem set cExtendedPrice = 9223372036854775807 where lOrderID = 1;"
      "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) values (1, 'c', "
      "-9223372036854775807);"
      "update tblOrder set cTotalPrice = 9223372036854775807 where lOrderID = 1");
  EXPECT_EQ(Findings{}, CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, ALineWithoutItsOrder) {
  Store.Run("pragma foreign_keys = off; insert into tblOrderItem (lOrderID, zItemNumber) values (77, 'a')");
  EXPECT_EQ(Findings{"the table tblOrderItem: row 5 belongs to no row of tblOrder"}, CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, AListLineWithoutItsList) {
  Store.Run("pragma foreign_keys = off; delete from tblPersonalList");
  EXPECT_EQ(Findings{"the table tblPersonalListItem: row 1 belongs to no row of tblPersonalList"},
            CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, TwoCurrentOrders) {
  Store.Run("drop index idxOrderCurrent; update tblOrder set bIsCurrent = -1");
  EXPECT_EQ(
      (Findings{"the schema: its tables, indexes or stored queries are not those that the library makes",
                "the orders: 3 of them are the current order"}),
      CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, LinesAndListsOfOneName) {
  Store.Run(
      "drop index idxOrderItem; drop index idxPersonalListName; drop index idxPersonalListItem;"
      "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'A'), (2, 'd'), (2, 'D');"
      "insert into tblPersonalList (zName) values ('L'); insert into tblPersonalListItem (lListID, "
      "zItemNumber) values (1, 'A')");
  EXPECT_EQ(
      (Findings{"the schema: its tables, indexes or stored queries are not those that the library makes",
                "order 1: the item a is in it 2 times", "order 2: the item d is in it 2 times",
                "the lists: 2 of them have the name l", "list 1: the item a is in it 2 times"}),
      CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, EveryFindingAtATime) {
  Store.Run(
      "pragma foreign_keys = off; update tblOrder set cTotalPrice = 7 where lOrderID = 2;"
      "insert into tblOrderItem (lOrderID, zItemNumber) values (77, 'a')");
  EXPECT_EQ((Findings{"the table tblOrderItem: row 5 belongs to no row of tblOrder",
                      "order 2: its total is 0.0007, its lines add up to -5.0001"}),
            CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, ASchemaThatIsNotTheLibrarys) {
  for (const char* zChange :
       {"create table other (a)", "drop index idxOrderPurchaseOrderNumber", "drop view qryGetOrderItems",
        "create trigger t after delete on tblOrder begin select 1; end",
        "alter table tblPersonalList add column zOther TEXT"}) {
    const std::string zBytes = test::ReadFile(Store.Path());
    Store.Run(zChange);
    EXPECT_TRUE(Holds(CheckOrderStore(), "the schema: ")) << zChange;
    qm_ordering::ado::embedded::CloseIdleSessions();
    test::WriteFile(Store.Path(), zBytes);
  }
}

TEST_F(CheckOrderStoreFinds, AMissingTable) {
  Store.Run("drop table tblOrderItem");
  const std::string zMissing =
      " could not be checked: The order store " + Store.Path() + ": no such table: tblOrderItem.";
  EXPECT_EQ(
      (Findings{"the schema: its tables, indexes or stored queries are not those that the library makes",
                "item numbers and list names" + zMissing, "the totals" + zMissing}),
      CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, ATextWhereMoneyBelongs) {
  Store.Run("update tblOrderItem set cExtendedPrice = 'much' where zItemNumber = 'c'");
  EXPECT_EQ(
      (Findings{"the totals could not be checked: The column cExtendedPrice holds a text, not a number."}),
      CheckOrderStore());
}

TEST_F(CheckOrderStoreFinds, MoreThanAHundredOfAKind) {
  Store.Run(
      "pragma foreign_keys = off;"
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 150) "
      "insert into tblOrderItem (lOrderID, zItemNumber) select 99, i from n");
  EXPECT_EQ(150U, CheckOrderStore().size());
}

TEST_F(CheckOrderStoreFinds, APageOfATableThatWasOverwritten) {
  for (const char* zTable : {"tblOrder", "tblOrderItem", "tblPersonalListItem"}) {
    const std::string zBytes = test::ReadFile(Store.Path());
    Destroy(RootPage(zTable));
    const Findings findings = CheckOrderStore();
    EXPECT_TRUE(Holds(findings, "the file: ")) << zTable << "\n" << All(findings);
    qm_ordering::ado::embedded::CloseIdleSessions();
    test::WriteFile(Store.Path(), zBytes);
  }
}

TEST_F(CheckOrderStoreFinds, APageOfAnIndexThatWasOverwritten) {
  Destroy(RootPage("idxOrderItem"));
  const Findings findings = CheckOrderStore();
  EXPECT_TRUE(Holds(findings, "the file: ")) << All(findings);
}

TEST_F(CheckOrderStoreFinds, WithoutChangingAnything) {
  Store.Run("update tblOrder set cTotalPrice = 7 where lOrderID = 2");
  const auto before = Store.Everything();
  const std::string zBytes = test::ReadFile(Store.Path());
  EXPECT_EQ(1U, CheckOrderStore().size());
  qm_ordering::ado::embedded::CloseIdleSessions();
  EXPECT_EQ(before, Store.Everything());
  EXPECT_TRUE(zBytes == test::ReadFile(Store.Path()));
}

TEST_F(CheckOrderStoreFinds, NothingButAFailureWithoutAStore) {
  std::filesystem::remove(Store.Path());
  const auto missing = test::FailureOf([] { CheckOrderStore(); });
  EXPECT_EQ(failure::kStoreUnavailable, missing.Number());
  EXPECT_NE(std::string::npos, missing.Description().find(Store.Path())) << missing.Description();
  test::WriteFile(Store.Path(), std::string("\0\1\0\0Standard Jet DB\0", 20));
  EXPECT_EQ(failure::kStoreUnavailable, test::FailureOf([] { CheckOrderStore(); }).Number());
}

TEST_F(CheckOrderStoreFinds, NothingButAFailureInAFileWithoutItsBeginning) {
  Destroy(1);
  EXPECT_EQ(failure::kStoreUnavailable, test::FailureOf([] { CheckOrderStore(); }).Number());
}

TEST_F(CheckOrderStoreFinds, NothingWrongWhileAnotherProgramWrites) {
  // Another program moves an amount from the total and the lines of one order to those of another, all the
  // time.
  test::ChildProcess other([&] {
    for (int i = 0;; ++i) {
      const std::string zAmount = std::to_string(i % 1000);
      Store.Run(
          "begin immediate; update tblOrder set cTotalPrice = " + zAmount +
          " where lOrderID = 1; update tblOrderItem set cExtendedPrice = case zItemNumber when 'a' then " +
          zAmount + " else 0 end where lOrderID = 1; commit");
    }
    return std::string();
  });
  for (int i = 0; i < 30; ++i) {
    ASSERT_EQ(Findings{}, CheckOrderStore());
  }
}
