#include <gtest/gtest.h>

#include <stdexcept>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/store/DatabaseFixture.h"

// The current order becomes a submitted one, and the next current order is created.

namespace {

using qm_ordering::Date;
using test::Rows;
using Texts = std::vector<std::string>;

class OrderHistoryStatements : public test::DatabaseFixture {
 protected:
  OrderHistoryStatements() {
    AddOrder(7);
    AddOrder(12, true);
    AddLine(12, "A-1", 5, "10");
    Store.Run(
        "update tblOrder set cTotalPrice = 100000, datSubmitDate = '2001-01-02 03:04:05' where lOrderID = 7");
  }

  Rows States() const {
    return Store.Query("select lOrderID, bIsCurrent, datSubmitDate from tblOrder order by lOrderID");
  }

  // Answers why the store refused it; empty when it was done.
  std::string SubmitByAnotherProgram() const {
    try {
      Store.Run("pragma busy_timeout = 0; update tblOrder set bIsCurrent = 0");
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return {};
  }

  // Makes the creation of the next order fail.
  void RefuseNewOrders() const {
    Store.Run(
        "create trigger refuse before insert on tblOrder begin select raise(abort, 'no more orders'); end");
  }
};

const char* const kInsertEmptyOrder =
    "insert into tblOrder (bIsCurrent,zPurchaseOrderNumber, zOIPhoneNumber, zOIEmail, "
    "zDIFirstName, zDILastName, zDICompanyName, zDIAddress1, zDIAddress2, "
    "zDICity, zDIState, zDIStateOr, zDIZipOrPostCode, zDICountry, zDIPhoneNumber, "
    "zDIPhoneExt, zDIFax, zDINotes,zCCFirstName, zCCLastName, zCCCompanyName, "
    "zCCAddress1, zCCAddress2, zCCCity, zCCState, zCCStateOr, zCCZipOrPostCode, "
    "zCCCountry, zCCPhoneNumber, zCCPhoneExt, zCCAccountNumber, zCCFax, "
    "zPIMorvaneAccountNumber,zDICallBranchNumber,zDICallAttention,zDICallPhoneNumber,zDICallPhoneExt, "
    "lDIShippingMethod,lDIDeliveryMethod,lPIPaymentMethod,zOITaxIDNumber,bOIIsTaxExempt,"
    "zPOReleaseNumber, zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, zOIDepartment) "
    "values(True, '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', "
    "'', '', '', '', '', '', '', '', '', '', '', '', '', '', '', 0, 0, 0, '', False, '', '', '', '')";

TEST_F(OrderHistoryStatements, SubmittingMarksTheOrderAndCreatesTheNextOne) {
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"select count(*) from tblOrder where lOrderID = 12and bIsCurrent = True",
                   "update tblOrder set bIsCurrent = False, datSubmitDate = '2003-07-04 15:04:05' "
                   "where lOrderID = 12",
                   kInsertEmptyOrder}),
            Trace.Statements());
  EXPECT_EQ(
      (Rows{{"7", "0", "2001-01-02 03:04:05"}, {"12", "0", "2003-07-04 15:04:05"}, {"13", "-1", "NULL"}}),
      States());
  EXPECT_EQ((Rows{{"12", "A-1", "5", "100000"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, cExtendedPrice from tblOrderItem"))
      << "the lines stay with the submitted order";
}

TEST_F(OrderHistoryStatements, TheSubmitDateIsTheMomentOfTheClock) {
  Clock.Moment = Date(1999, 12, 31, 23, 59, 59);
  Database.OrderDetails_SaveToHistory(12);
  Clock.Moment = Date(2024, 2, 29);
  Database.OrderDetails_SaveToHistory(13);

  EXPECT_EQ(
      "update tblOrder set bIsCurrent = False, datSubmitDate = '1999-12-31 23:59:59' where lOrderID = 12",
      Trace.Statements().at(1));
  EXPECT_EQ("select count(*) from tblOrder where lOrderID = 13and bIsCurrent = True",
            Trace.Statements().at(3));
  EXPECT_EQ(
      "update tblOrder set bIsCurrent = False, datSubmitDate = '2024-02-29 00:00:00' where lOrderID = 13",
      Trace.Statements().at(4));
  EXPECT_EQ((Rows{{"7", "0", "2001-01-02 03:04:05"},
                  {"12", "0", "1999-12-31 23:59:59"},
                  {"13", "0", "2024-02-29 00:00:00"},
                  {"14", "-1", "NULL"}}),
            States());
  const auto submitted = Database.OrderDetails_GetSummary(12, false);
  EXPECT_EQ(Date(1999, 12, 31, 23, 59, 59), submitted->Fields("datSubmitDate").Value().ToDate());
}

TEST_F(OrderHistoryStatements, AnOrderWithANegativeNumberIsSubmittedLikeAnyOther) {
  Store.Run("update tblOrder set bIsCurrent = 0");
  AddOrder(-1, true);
  Database.OrderDetails_SaveToHistory(-1);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ("select count(*) from tblOrder where lOrderID = -1and bIsCurrent = True",
            Trace.Statements().at(0));
  EXPECT_EQ(
      "update tblOrder set bIsCurrent = False, datSubmitDate = '2003-07-04 15:04:05' where lOrderID = -1",
      Trace.Statements().at(1));
  EXPECT_EQ("0", OfOrder(-1, "bIsCurrent"));
}

TEST_F(OrderHistoryStatements, TheNextOrderStartsWithTheDefaults) {
  Settings->Defaults["DEFAULT_OI_PO_NUM"] = "PO-8";
  Database.OrderDetails_SaveToHistory(12);
  EXPECT_EQ("PO-8", OfOrder(13, "zPurchaseOrderNumber"));
}

TEST_F(OrderHistoryStatements, SubmittingAnOrderThatIsNotTheCurrentOneChangesNothing) {
  const Rows before = Store.Everything();
  for (const std::int32_t lOrderID : {7, 99, -1, 0}) {
    Trace.Take();
    Database.OrderDetails_SaveToHistory(lOrderID);
    EXPECT_EQ("2 Specified order is not the current order", Recorded()) << lOrderID;
    EXPECT_EQ((Texts{"select count(*) from tblOrder where lOrderID = " + std::to_string(lOrderID) +
                     "and bIsCurrent = True"}),
              Trace.Statements());
  }
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderHistoryStatements, SubmittingAnOrderTwiceReportsItTheSecondTime) {
  Database.OrderDetails_SaveToHistory(12);
  const Rows before = Store.Everything();
  Database.OrderDetails_SaveToHistory(12);
  EXPECT_EQ("2 Specified order is not the current order", Recorded());
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderHistoryStatements, AfterARefusalTheNextOperationFindsTheStoreFree) {
  Database.OrderDetails_SaveToHistory(7);
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrder set zDINotes = 'x'"));
  Database.OrderDetails_SaveToHistory(12);
  EXPECT_EQ("0 ", Recorded());
}

TEST_F(OrderHistoryStatements, WhenTheCreationFailsTheOrderIsSubmittedAndThereIsNoCurrentOne) {
  RefuseNewOrders();
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_TRUE(Database.Error().Description.starts_with("-2147217900 : ")) << Recorded();
  EXPECT_EQ((Rows{{"7", "0", "2001-01-02 03:04:05"}, {"12", "0", "2003-07-04 15:04:05"}}), States());

  Store.Run("drop trigger refuse");
  Database.CreateCurrentOrder();
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ("-1", OfOrder(13, "bIsCurrent"));
}

TEST_F(OrderHistoryStatements, WhenTheSettingsFailTheOrderIsSubmittedAndThereIsNoCurrentOne) {
  Settings->Before = [](const std::string&) {
    throw qm_ordering::Failure(75, "The settings cannot be read.");
  };
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_EQ(
      "5 75 : The order is submitted, but the next one could not be created; loading the current order tries "
      "again: The settings cannot be read.",
      Recorded());
  EXPECT_EQ((Rows{{"7", "0", "2001-01-02 03:04:05"}, {"12", "0", "2003-07-04 15:04:05"}}), States());
}

TEST_F(OrderHistoryStatements, WhenTheMarkingFailsNothingIsChangedAndNoOrderIsCreated) {
  Store.Run("create trigger refuse before update on tblOrder begin select raise(abort, 'not now'); end");
  const Rows before = Store.Everything();
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_TRUE(Database.Error().Description.starts_with("-2147217900 : ")) << Recorded();
  EXPECT_EQ(2u, Trace.Statements().size());
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderHistoryStatements, AnotherProgramsCurrentOrderCreatedInBetweenIsAccepted) {
  Settings->Before = [&](const std::string& zCall) {
    if (zCall == "create order defaults") {
      Store.Run("insert into tblOrder (lOrderID, bIsCurrent) values (50, -1)");
    }
  };
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(
      (Rows{{"7", "0", "2001-01-02 03:04:05"}, {"12", "0", "2003-07-04 15:04:05"}, {"50", "-1", "NULL"}}),
      States());
}

TEST_F(OrderHistoryStatements, AnotherProgramsCurrentOrderCannotBeSubmittedBeforeItIsSeen) {
  std::string zRefused;
  Settings->Before = [&](const std::string& zCall) {
    if (zCall == "create order defaults") {
      Store.Run("insert into tblOrder (lOrderID, bIsCurrent) values (50, -1)");
    }
  };
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL == "select count(*) from tblOrder where bIsCurrent = True") {
      zRefused = SubmitByAnotherProgram();
    }
  };
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_NE(std::string::npos, zRefused.find("database is locked")) << zRefused;
  EXPECT_EQ("0 ", Recorded());
}

TEST_F(OrderHistoryStatements, NobodyCanSubmitTheOrderBetweenTheCountAndTheMarking) {
  std::string zRefused;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.starts_with("update")) {
      zRefused = SubmitByAnotherProgram();
    }
  };
  Database.OrderDetails_SaveToHistory(12);

  EXPECT_NE(std::string::npos, zRefused.find("database is locked")) << zRefused;
  EXPECT_EQ("0 ", Recorded());
}

TEST_F(OrderHistoryStatements, TheMarkingAndTheCreationAreNotOneTransaction) {
  Rows seen;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.starts_with("insert")) {
      seen = States();
    }
  };
  Database.OrderDetails_SaveToHistory(12);
  EXPECT_EQ((Rows{{"7", "0", "2001-01-02 03:04:05"}, {"12", "0", "2003-07-04 15:04:05"}}), seen);
}

}  // namespace
