#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::CheckOrderStore;
using qm_ordering::Failure;
using qm_ordering::RepairOrderStore;
using test::FailureOf;
using Texts = std::vector<std::string>;

// A store with three orders: two lines, one line, none.
class RepairOrderStoreOf : public test::StoreFixture {
 protected:
  RepairOrderStoreOf() {
    Store.Run(
        "insert into tblOrder (bIsCurrent, cTotalPrice) values (0, 125000), (-1, -1), (0, 0);"
        "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) values (1, 'a', 100000), (1, 'b', "
        "25000), (2, 'a', -1)");
  }

  std::string Totals() const {
    return Store.Value("select group_concat(cTotalPrice) from (select cTotalPrice from tblOrder order by 1)");
  }
};

}  // namespace

TEST_F(RepairOrderStoreOf, AWholeStoreChangesNothing) {
  const auto before = Store.Everything();
  EXPECT_EQ(Texts{}, RepairOrderStore());
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(RepairOrderStoreOf, WrongTotalsSetsThemAndSaysSo) {
  const auto before = Store.Everything();
  Store.Run(
      "update tblOrder set cTotalPrice = 100000 where lOrderID = 1;"
      "update tblOrder set cTotalPrice = 7 where lOrderID in (2, 3)");
  EXPECT_EQ((Texts{"order 1: its total was 10, its lines add up to 12.5; set to 12.5",
                   "order 2: its total was 0.0007, its lines add up to -0.0001; set to -0.0001",
                   "order 3: its total was 0.0007, its lines add up to 0; set to 0"}),
            RepairOrderStore());
  EXPECT_EQ(before, Store.Everything());
  EXPECT_EQ(Texts{}, CheckOrderStore());
}

TEST_F(RepairOrderStoreOf, TotalsAtTheEndsOfTheRangeSetsThemExactly) {
  Store.Run(
      "update tblOrderItem set cExtendedPrice = 9223372036854775807 where lOrderID = 2;"
      "update tblOrderItem set cExtendedPrice = -9223372036854775807 where zItemNumber = 'b';"
      "update tblOrderItem set cExtendedPrice = -1 where lOrderID = 1 and zItemNumber = 'a'");
  EXPECT_EQ(2U, RepairOrderStore().size());
  EXPECT_EQ("-9223372036854775808,0,9223372036854775807", Totals());
  EXPECT_EQ(Texts{}, CheckOrderStore());
}

TEST_F(RepairOrderStoreOf, ASumBeyondTheRangeLeavesThatTotalAndSaysSo) {
  Store.Run(
      "update tblOrderItem set cExtendedPrice = 9223372036854775807 where lOrderID = 1;"
      "update tblOrder set cTotalPrice = 5 where lOrderID = 3");
  EXPECT_EQ((Texts{"order 1: the sum of its lines is beyond the range of money; its total, 12.5, was left. "
                   "Change its lines",
                   "order 3: its total was 0.0005, its lines add up to 0; set to 0"}),
            RepairOrderStore());
  EXPECT_EQ("-1,0,125000", Totals());
}

TEST_F(RepairOrderStoreOf, ADamagedStoreIsRefusedAndUnchanged) {
  const std::string zRoot = Store.Value("select rootpage from sqlite_schema where name = 'idxOrderItem'");
  Store.Run("update tblOrder set cTotalPrice = 7");
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::string zBytes = test::ReadFile(Store.Path());
  std::fill_n(zBytes.begin() + (std::stol(zRoot) - 1) * 4096, 4096, '\xEE');
  test::WriteFile(Store.Path(), zBytes);
  const Failure refused = FailureOf([] { RepairOrderStore(); });
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  EXPECT_NE(std::string::npos,
            refused.Description().find(Store.Path() + " is damaged and was not repaired: "))
      << refused.Description();
  EXPECT_NE(std::string::npos,
            refused.Description().find("Restore a backup with `qm-ordering store restore`"));
  EXPECT_EQ("7,7,7", Totals());
}

TEST_F(RepairOrderStoreOf, AStoreWithATextWhereMoneyBelongsIsRefusedAndUnchanged) {
  Store.Run("update tblOrder set cTotalPrice = 7; update tblOrderItem set cExtendedPrice = 'much'");
  const Failure refused = FailureOf([] { RepairOrderStore(); });
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  EXPECT_NE(std::string::npos, refused.Description().find("holds a text, not a number"))
      << refused.Description();
  EXPECT_EQ("7,7,7", Totals());
}

TEST_F(RepairOrderStoreOf, AMissingStoreIsRefused) {
  std::filesystem::remove(Store.Path());
  EXPECT_EQ(failure::kStoreUnavailable, FailureOf([] { RepairOrderStore(); }).Number());
}

TEST_F(RepairOrderStoreOf, AllOrNothingIsChanged) {
  Store.Run("update tblOrder set cTotalPrice = 7");
  test::TraceRecorder trace;
  trace.Before = [](const std::string& zvSQL) {
    if (zvSQL == "update tblOrder set cTotalPrice = 0 where lOrderID = 3") {
      throw Failure(75, "the last one");
    }
  };
  EXPECT_EQ(75, FailureOf([] { RepairOrderStore(); }).Number());
  EXPECT_EQ("7,7,7", Totals());
}
