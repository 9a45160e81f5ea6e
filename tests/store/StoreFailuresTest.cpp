#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "tests/store/DatabaseFixture.h"
#include "tests/store/Operations.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"

// What every operation does when the store, or the settings component, fails it.

namespace {

using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using test::FailureOf;
using test::GuardedOperations;
using test::Operation;
using test::RaisedNumber;
using test::Rows;
using test::UnguardedOperations;

class StoreFailures : public test::DatabaseFixture {
 protected:
  StoreFailures() {
    AddOrder(7);
    AddOrder(12, true);
    AddLine(12, "A-1", 5, "10");
    Store.Run("insert into tblPersonalList (lListID, zName) values (12, 'Tools')");
  }

  // Puts something else where the store is.
  void Replace(const std::function<void()>& replace) const {
    qm_ordering::ado::embedded::CloseIdleSessions();
    std::filesystem::remove(Store.Path());
    replace();
  }

  // Runs every operation and expects of each this failure, whose text holds these pieces.
  void ExpectEverywhere(std::int32_t lvNumber, const std::vector<std::string>& zvPieces) {
    for (const Operation& operation : GuardedOperations()) {
      SCOPED_TRACE(operation.Name);
      qm_ordering::ClearLastFailure();
      EXPECT_NO_THROW(operation.Run(Database));
      const ErrorInfo error = Database.Error();
      EXPECT_EQ(5, error.Number);
      EXPECT_TRUE(error.Description.starts_with(std::to_string(lvNumber) + " : ")) << error.Description;
      for (const std::string& zPiece : zvPieces) {
        EXPECT_NE(std::string::npos, error.Description.find(zPiece)) << zPiece << " in " << error.Description;
      }
      EXPECT_EQ(lvNumber, qm_ordering::LastFailure().Number);
      EXPECT_EQ(std::string("Database.") + operation.Name, qm_ordering::LastFailure().Operation);
    }
    for (const Operation& operation : UnguardedOperations()) {
      SCOPED_TRACE(operation.Name);
      Database.OrderDetails_ItemCount(12);
      ASSERT_EQ(5, Database.Error().Number);
      const Failure failure = FailureOf([&] { operation.Run(Database); });
      EXPECT_EQ(lvNumber, failure.Number());
      for (const std::string& zPiece : zvPieces) {
        EXPECT_NE(std::string::npos, failure.Description().find(zPiece))
            << zPiece << " in " << failure.Description();
      }
      EXPECT_EQ("0 ", Recorded()) << "what is raised is not recorded, and the last record is cleared";
    }
  }
};

constexpr std::int32_t kUnavailable = -2147467259;
constexpr std::int32_t kCommand = -2147217900;
constexpr std::int32_t kNoTable = -2147217865;

TEST_F(StoreFailures, AStoreThatIsMissingFailsEveryOperationAndIsNotMade) {
  Replace([] {});
  ExpectEverywhere(kUnavailable, {Store.Path(), "qm-ordering store create"});
  EXPECT_TRUE(std::filesystem::is_empty(Folder.Path()));
}

TEST_F(StoreFailures, AFolderThatIsGoneFailsEveryOperationAndIsNotMade) {
  Replace([&] { std::filesystem::remove_all(Folder.Path()); });
  ExpectEverywhere(kUnavailable, {Store.Path()});
  EXPECT_FALSE(std::filesystem::exists(Folder.Path()));
}

TEST_F(StoreFailures, AFolderInTheStoresPlaceFailsEveryOperation) {
  Replace([&] { std::filesystem::create_directory(Store.Path()); });
  ExpectEverywhere(kUnavailable, {Store.Path(), "folder"});
  EXPECT_TRUE(std::filesystem::is_empty(Store.Path()));
}

TEST_F(StoreFailures, AForeignFileFailsEveryOperationAndIsNotTouched) {
  const std::vector<std::string> contents = {
      std::string("\0\1\0\0Standard Jet DB\0\1\0\0\0", 24) + std::string(4096, '\x5A'),
      std::string("\0\1\0\0Standard ACE DB\0\1\0\0\0", 24) + std::string(4096, '\x5A'),
      std::string(10000, 'x'),
      "short",
      "",
  };
  for (const std::string& zContent : contents) {
    SCOPED_TRACE(zContent.substr(0, 20));
    Replace([&] { test::WriteFile(Store.Path(), zContent); });
    ExpectEverywhere(kUnavailable, {Store.Path()});
    EXPECT_EQ(zContent, test::ReadFile(Store.Path()));
  }
}

TEST_F(StoreFailures, ATruncatedStoreFailsEveryOperationAndIsNotTouched) {
  qm_ordering::ado::embedded::CloseIdleSessions();
  const std::string zWhole = test::ReadFile(Store.Path());
  for (const std::size_t lSize : {std::size_t{50}, std::size_t{90}}) {
    Replace([&] { test::WriteFile(Store.Path(), zWhole.substr(0, lSize)); });
    ExpectEverywhere(kUnavailable, {Store.Path()});
    EXPECT_EQ(zWhole.substr(0, lSize), test::ReadFile(Store.Path()));
  }
}

TEST_F(StoreFailures, AStoreOfAnotherProgramFailsEveryOperationAndIsNotTouched) {
  Store.Run("pragma application_id = 1");
  qm_ordering::ado::embedded::CloseIdleSessions();
  const std::string zWhole = test::ReadFile(Store.Path());
  ExpectEverywhere(kUnavailable, {Store.Path()});
  EXPECT_EQ(zWhole, test::ReadFile(Store.Path()));
}

TEST_F(StoreFailures, AStoreWithoutTablesFailsEveryOperation) {
  Store.Run(
      "drop view qryGetOrderItems; drop view qryGetOrderSummary; drop table tblOrderItem; drop table "
      "tblOrder; drop table tblPersonalListItem; drop table tblPersonalList");
  ExpectEverywhere(kNoTable, {"no such table"});
}

TEST_F(StoreFailures, AStoredQueryThatIsMissingFailsTheReadsThroughIt) {
  Store.Run("drop view qryGetOrderItems; drop view qryGetOrderSummary");
  EXPECT_EQ(kNoTable, RaisedNumber([&] { Database.OrderDetails_GetSummary(12, false); }));
  EXPECT_EQ(kNoTable, RaisedNumber([&] { Database.OrderDetails_GetItems(12, 0, true); }));
  EXPECT_EQ(1, Database.OrderDetails_ItemCount(12));
}

TEST_F(StoreFailures, AColumnThatIsMissingFailsTheStatement) {
  Store.Run("alter table tblOrder rename column zPurchaseOrderNumber to zOther");
  Database.SavePONumber(12, "PO");
  EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << Recorded();
}

TEST_F(StoreFailures, AFailedCountIsZero) {
  ASSERT_EQ(1, Database.OrderDetails_ItemCount(12));
  Replace([] {});
  EXPECT_EQ(0, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ(5, Database.Error().Number);
}

TEST_F(StoreFailures, TheNextSuccessClearsTheRecord) {
  for (const Operation& operation : GuardedOperations()) {
    SCOPED_TRACE(operation.Name);
    Store.Run(
        "update tblOrder set bIsCurrent = 0; update tblOrder set bIsCurrent = -1 where lOrderID = 12; "
        "delete from tblOrderItem where zItemNumber = 'NEW'; "
        "delete from tblPersonalListItem where zItemNumber = 'NEW'");
    const std::string zAside = Folder.File("aside");
    qm_ordering::ado::embedded::CloseIdleSessions();
    std::filesystem::rename(Store.Path(), zAside);
    operation.Run(Database);
    EXPECT_EQ(5, Database.Error().Number);

    std::filesystem::rename(zAside, Store.Path());
    operation.Run(Database);
    EXPECT_EQ("0 ", Recorded());
  }
}

TEST_F(StoreFailures, EveryOperationClearsTheRecordOfTheLastOne) {
  for (const Operation& operation : UnguardedOperations()) {
    SCOPED_TRACE(operation.Name);
    Database.OrderDetails_SaveToHistory(7);
    ASSERT_EQ("2 Specified order is not the current order", Recorded());
    operation.Run(Database);
    EXPECT_EQ("0 ", Recorded());
  }
  Database.OrderDetails_SaveToHistory(7);
  Database.OrderDetails_UpdateItems(12, qm_ordering::OrderItems());
  EXPECT_EQ("0 ", Recorded());
  Database.OrderDetails_SaveToHistory(7);
  EXPECT_EQ(9, RaisedNumber([&] { Database.OrderDetails_GetItems(12, 7, false); }));
  EXPECT_EQ("0 ", Recorded());
}

TEST_F(StoreFailures, AFreshObjectHasAClearRecordAndOpensNothing) {
  Replace([] {});
  const qm_ordering::Database database;
  EXPECT_EQ(0, database.Error().Number);
  EXPECT_EQ("", database.Error().Description);
}

TEST_F(StoreFailures, AnObjectWorksOnWhenItsStoreIsBack) {
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::rename(Store.Path(), Folder.File("aside"));
  EXPECT_EQ(kUnavailable, RaisedNumber([&] { Database.Order_GetTotalPrice(12); }));
  std::filesystem::rename(Folder.File("aside"), Store.Path());
  EXPECT_TRUE(Database.OrderDetails_ItemExists(12, "A-1"));
  EXPECT_NO_THROW(Database.Order_GetTotalPrice(12));
}

TEST_F(StoreFailures, AFailingTraceStopsEveryOperation) {
  const Rows before = Store.Everything();
  Trace.Before = [](const std::string&) { throw std::runtime_error("stop here"); };
  ExpectEverywhere(5, {"stop here"});
  EXPECT_EQ(before, Store.Everything());
}

// --- halves of operations

TEST_F(StoreFailures, WhenOnlyTheTotalFailsTheAddedLineStays) {
  Store.Run(
      "create trigger refuse before update on tblOrder begin select raise(abort, 'no totals today'); end");
  test::Line line;
  line.ItemNumber = "NEW";
  AddItem(Database, line);
  EXPECT_NE("0 ", Recorded());
  EXPECT_EQ(2, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ("0", OfOrder(12, "cTotalPrice"));
}

TEST_F(StoreFailures, WhenOnlyTheTotalFailsTheRemovedLineIsGone) {
  Store.Run(
      "create trigger refuse before update on tblOrder begin select raise(abort, 'no totals today'); end");
  EXPECT_EQ(kCommand, RaisedNumber([&] { Database.OrderItem_RemoveItem(12, "A-1"); }));
  EXPECT_EQ(0, Database.OrderDetails_ItemCount(12));
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrderItem set lQuantity = 1"));
}

TEST_F(StoreFailures, WhenOnlyTheSecondStatementFailsTheLinesAreClearedAndTheTotalStays) {
  Store.Run(
      "update tblOrder set cTotalPrice = 100000; "
      "create trigger refuse before update on tblOrder begin select raise(abort, 'no totals today'); end");
  EXPECT_EQ(kCommand, RaisedNumber([&] { Database.OrderDetails_ClearItems(12); }));
  EXPECT_EQ(0, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ("100000", OfOrder(12, "cTotalPrice"));
}

// --- the settings component

class SettingsFailures : public StoreFailures {
 protected:
  // Fails the calls that begin so.
  void FailAt(const std::string& zvCall) {
    Settings->Before = [zvCall](const std::string& zCall) {
      if (zCall.starts_with(zvCall)) {
        throw Failure(75, "The settings cannot be written: the disk is full.");
      }
    };
  }

  static qm_ordering::OrderHeader Header() {
    qm_ordering::OrderHeader header;
    header.OrderID = 12;
    header.PurchaseOrderNumber = "PO-7";
    header.CCAccountNumber = "last";
    return header;
  }
};

TEST_F(SettingsFailures, WhereverTheDefaultsFailTheOrderItselfIsSavedAndTheRecordSaysSo) {
  for (const char* zCall :
       {"create order defaults", "default set DEFAULT_OI_PO_NUM", "default set DEFAULT_DI_NOTES",
        "default set DEFAULT_CC_ACCOUNT_NUMBER", "save"}) {
    SCOPED_TRACE(zCall);
    Store.Run("update tblOrder set zPurchaseOrderNumber = 'old', zCCAccountNumber = 'old'");
    FailAt(zCall);
    Database.OrderDetails_SaveSummary(Header());

    const ErrorInfo error = Database.Error();
    EXPECT_EQ(5, error.Number);
    EXPECT_TRUE(error.Description.starts_with("75 : The order itself is saved")) << error.Description;
    EXPECT_TRUE(error.Description.ends_with("The settings cannot be written: the disk is full."))
        << error.Description;
    EXPECT_EQ("PO-7", OfOrder(12, "zPurchaseOrderNumber"));
    EXPECT_EQ("last", OfOrder(12, "zCCAccountNumber"));
  }
}

TEST_F(SettingsFailures, NothingIsKeptAfterTheDefaultThatFailed) {
  FailAt("default set DEFAULT_OI_EMAIL");
  Settings->Calls.clear();
  Database.OrderDetails_SaveSummary(Header());
  EXPECT_EQ((std::vector<std::string>{"create order defaults", "default set DEFAULT_OI_PO_NUM=PO-7",
                                      "default set DEFAULT_OI_PHONE_NUMBER=", "release order defaults"}),
            Settings->Calls);
}

TEST_F(SettingsFailures, AnExceptionOfTheComponentsOwnIsRecordedWithItsText) {
  Settings->Before = [](const std::string& zCall) {
    if (zCall == "save") {
      throw std::runtime_error("a failure of its own");
    }
  };
  Database.OrderDetails_SaveSummary(Header());
  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_NE(std::string::npos, Recorded().find("The order itself is saved")) << Recorded();
  EXPECT_NE(std::string::npos, Recorded().find("a failure of its own")) << Recorded();
}

TEST_F(SettingsFailures, AFailureOfTheStoreDoesNotSayThatTheOrderIsSaved) {
  Replace([] {});
  Database.OrderDetails_SaveSummary(Header());
  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_EQ(std::string::npos, Recorded().find("saved")) << Recorded();
}

TEST_F(SettingsFailures, TheNextSaveClearsTheRecord) {
  FailAt("save");
  Database.OrderDetails_SaveSummary(Header());
  ASSERT_EQ(5, Database.Error().Number);
  Settings->Before = nullptr;
  Database.OrderDetails_SaveSummary(Header());
  EXPECT_EQ("0 ", Recorded());
}

// --- a setting that names no folder

TEST(StoreWithoutFolder, FailsEveryOperationAndDoesNotReachTheRootFolder) {
  const test::SettingsScope settings;
  qm_ordering::StartUp();
  qm_ordering::Database database;
  for (const Operation& operation : GuardedOperations()) {
    operation.Run(database);
    EXPECT_EQ(5, database.Error().Number) << operation.Name;
    EXPECT_TRUE(database.Error().Description.starts_with("76 : ")) << database.Error().Description;
    EXPECT_NE(std::string::npos, database.Error().Description.find("OrderingDatabasePath"));
  }
  for (const Operation& operation : UnguardedOperations()) {
    EXPECT_EQ(76, RaisedNumber([&] { operation.Run(database); })) << operation.Name;
  }
}

// --- a store that another program holds; each operation waits some seconds before it gives up

class HeldStoreFull : public StoreFailures {
 protected:
  HeldStoreFull() {
    m_oOther.Open(qm_ordering::ConnectionString());
    m_oOther.BeginTransaction();
  }
  qm_ordering::ado::Connection m_oOther;
};

TEST_F(HeldStoreFull, FailsAGuardedOperationWithARecord) {
  Database.SavePONumber(12, "PO");
  EXPECT_TRUE(Recorded().starts_with("5 -2147467259 : ")) << Recorded();
  EXPECT_NE(std::string::npos, Recorded().find(Store.Path()));
  EXPECT_NE(std::string::npos, Recorded().find("another program holds the store")) << Recorded();
}

TEST_F(HeldStoreFull, FailsATransactionWhichCanBeRepeatedWhenItIsFree) {
  EXPECT_EQ(kUnavailable, RaisedNumber([&] { Database.UpdateCustPartInfo({"A-1"}, {"P"}, {"N"}, 12); }));
  m_oOther.RollbackTransaction();
  Database.UpdateCustPartInfo({"A-1"}, {"P"}, {"N"}, 12);
  EXPECT_EQ("P", OfLine(12, "A-1", "zCustomerPartNumber"));
}

TEST_F(HeldStoreFull, LetsReadsPass) {
  EXPECT_EQ(1, Database.OrderDetails_ItemCount(12));
  EXPECT_FALSE(Database.OrderDetails_GetSummary(12, true)->AtEnd());
}

}  // namespace
