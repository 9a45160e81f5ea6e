#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/OrderFields.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::CheckOrderStore;
using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using qm_ordering::OrderDetails;
using test::HeaderFields;
using test::RaisedNumber;
using test::SampleValue;

using Texts = std::vector<std::string>;

class OrderDetailsSave : public test::OrderFixture {
 protected:
  // The calls that set defaults or save them.
  Texts SettingsWritten() {
    Texts written;
    for (const std::string& zCall : Settings->Calls) {
      if (zCall.starts_with("default set") || zCall == "save") {
        written.push_back(zCall);
      }
    }
    return written;
  }
};

using OrderDetailsSaveSummary = OrderDetailsSave;
using OrderDetailsSavePONumber = OrderDetailsSave;
using OrderDetailsSaveToHistory = OrderDetailsSave;
using OrderDetailsApplyRegistrationSettings = OrderDetailsSave;

TEST_F(OrderDetailsSaveSummary, RefusesAnOrderThatIsNotLoadedWithATextOfItsOwn) {
  OrderDetails order;
  const test::TraceRecorder trace;
  order.SaveSummary();
  EXPECT_EQ(order.Error(), (ErrorInfo{1, "Order not loaded yet"}));
  order.SaveSummary(true);
  EXPECT_EQ(order.Error(), (ErrorInfo{1, "Order not loaded yet"}));
  EXPECT_EQ(trace.Statements(), Texts());
  EXPECT_EQ(SettingsWritten(), Texts());
}

TEST_F(OrderDetailsSaveSummary, StoresEveryHeaderValueInItsColumn) {
  const auto oOrder = LoadCurrent();
  for (const int lMark : {1, 2}) {
    test::FillHeader(*oOrder, lMark);
    oOrder->SaveSummary();
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    for (const auto& field : HeaderFields()) {
      std::string zExpected = SampleValue(field.Column, lMark);
      if (field.Column == "lOrderID") {
        zExpected = "1";
      } else if (field.Column == "bIsCurrent") {
        zExpected = "-1";
      } else if (field.Column == "datSubmitDate") {
        zExpected = "NULL";
      }
      EXPECT_EQ(StoredHeader(field.Column), zExpected) << field.Column;
    }
  }
}

TEST_F(OrderDetailsSaveSummary, BringsEveryHeaderValueBackIntoAnotherObject) {
  const auto oOrder = LoadCurrent();
  test::FillHeader(*oOrder);
  oOrder->SubmitDate(Date());
  oOrder->SaveSummary();
  OrderDetails other;
  other.OrderID(1);
  other.LoadSummary();
  for (const auto& field : HeaderFields()) {
    EXPECT_EQ(field.Get(other), field.Get(*oOrder)) << field.Column;
  }
}

TEST_F(OrderDetailsSaveSummary, StoresTheTotalThatItHasInMemory) {
  const auto oOrder = CurrentWith({NewItem("A", 1, "5")});
  oOrder->TotalPrice(Currency::Parse("-0.0001"));
  oOrder->SaveSummary();
  EXPECT_EQ(StoredTotal(1), "-1");
}

TEST_F(OrderDetailsSaveSummary, DoesNotUseItsArgument) {
  AddSubmittedOrder(1);
  OrderDetails order;
  order.OrderID(1);
  order.LoadSummary();
  order.PurchaseOrderNumber("PO");
  for (const bool bSaveCurrent : {false, true}) {
    test::TraceRecorder trace;
    order.SaveSummary(bSaveCurrent);
    EXPECT_EQ(order.Error(), ErrorInfo());
    ASSERT_EQ(trace.Statements().size(), 1U);
    EXPECT_TRUE(trace.Statements().front().ends_with(" where lOrderID = 1"));
  }
  EXPECT_EQ(StoredHeader("bIsCurrent"), "0");
  EXPECT_EQ(StoredHeader("datSubmitDate"), "2001-03-03 10:00:00");
}

TEST_F(OrderDetailsSaveSummary, SavesNothingOfTheCardThatIsNotItsHolders) {
  const auto oOrder = LoadCurrent();
  const auto oCard = oOrder->PaymentInformation()->CreditCardDetails();
  oCard->CardType("~card type~");
  oCard->CardNumber("~card number~");
  oCard->ExpiryMonth(1234567);
  oCard->ExpiryYear(7654321);
  oCard->CardHoldersRef("~card reference~");
  test::TraceRecorder trace;
  oOrder->SaveSummary();
  oOrder->SavePONumber();
  oOrder->SaveToHistory();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::string zAll = test::ReadFile(Store.Path());
  for (const std::string& zText : trace.Statements()) {
    zAll += zText + "\n";
  }
  for (const std::string& zText : Settings->Calls) {
    zAll += zText + "\n";
  }
  for (const char* zSecret : {"~card", "1234567", "7654321"}) {
    EXPECT_EQ(zAll.find(zSecret), std::string::npos) << zSecret;
  }
  OrderDetails other;
  other.OrderID(1);
  other.LoadSummary();
  EXPECT_EQ(other.PaymentInformation()->CreditCardDetails()->CardNumber(), "");
  EXPECT_EQ(oCard->CardNumber(), "~card number~");
}

TEST_F(OrderDetailsSaveSummary, RaisesAnOrderWithoutHeaderObjects) {
  LoadCurrent();
  const auto before = Store.Everything();
  OrderDetails order;
  order.OrderID(1);
  EXPECT_EQ(RaisedNumber([&] { order.SaveSummary(); }), 91);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(SettingsWritten(), Texts());
}

TEST_F(OrderDetailsSaveSummary, TellsThatTheOrderIsSavedWhenOnlyItsDefaultsAreNot) {
  const auto oOrder = LoadCurrent();
  oOrder->PurchaseOrderNumber("PO-9");
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "save") {
      throw Failure(75, "the disk is full");
    }
  };
  oOrder->SaveSummary();
  EXPECT_EQ(oOrder->Error().Number, 5);
  EXPECT_TRUE(oOrder->Error().Description.starts_with("75 : ")) << oOrder->Error().Description;
  EXPECT_NE(oOrder->Error().Description.find("saved"), std::string::npos) << oOrder->Error().Description;
  EXPECT_NE(oOrder->Error().Description.find("the disk is full"), std::string::npos);
  EXPECT_EQ(StoredHeader("zPurchaseOrderNumber"), "PO-9");
}

TEST_F(OrderDetailsSaveSummary, GivesTheNextOrderItsDefaults) {
  const auto oOrder = LoadCurrent();
  test::FillHeader(*oOrder);
  oOrder->SaveSummary();
  oOrder->SaveToHistory();
  const auto oNext = LoadCurrent();
  EXPECT_EQ(oNext->OrderID(), 2);
  // What a new order does not take over from the last one.
  const Texts notKept = {"lOrderID",    "cTotalPrice", "datSubmitDate", "bIsCurrent", "zOIAttention",
                         "zCCComment1", "zCCComment2", "zCCComment3",   "zCCComment4"};
  for (const auto& field : HeaderFields()) {
    if (std::find(notKept.begin(), notKept.end(), field.Column) == notKept.end()) {
      EXPECT_EQ(field.Get(*oNext), SampleValue(field.Column)) << field.Column;
    }
  }
  EXPECT_EQ(oNext->OrderInformation()->Attention(), "");
  EXPECT_EQ(oNext->PaymentInformation()->CreditCardDetails()->Comment1(), "");
  EXPECT_EQ(oNext->PaymentInformation()->CreditCardDetails()->Comment4(), "");
  EXPECT_EQ(oNext->TotalPrice(), Currency());
  EXPECT_TRUE(oNext->SubmitDate().IsZero());
}

TEST_F(OrderDetailsSaveSummary, ClearsAnEarlierErrorWhenItSucceeds) {
  const auto oOrder = LoadCurrent();
  oOrder->OrderID(-1);
  oOrder->SaveSummary();
  ASSERT_EQ(oOrder->Error().Number, 1);
  oOrder->OrderID(1);
  oOrder->SaveSummary();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsSavePONumber, StoresTheNumberAlone) {
  const auto oOrder = LoadCurrent();
  test::FillHeader(*oOrder);
  oOrder->PurchaseOrderNumber("PO 'x'");
  oOrder->SavePONumber();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(StoredHeader("zPurchaseOrderNumber"), "PO 'x'");
  EXPECT_EQ(StoredHeader("zDICity"), "");
  EXPECT_EQ(SettingsWritten(), Texts());
}

TEST_F(OrderDetailsSavePONumber, DoesNotAskWhetherAnOrderIsLoaded) {
  LoadCurrent();
  const auto before = Store.Everything();
  OrderDetails order;
  order.SaveSummary();
  ASSERT_EQ(order.Error().Number, 1);
  order.PurchaseOrderNumber("PO");
  order.SavePONumber();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(Store.Everything(), before);
}

TEST_F(OrderDetailsSaveToHistory, SubmitsTheOrderAndMakesTheNextOne) {
  const auto oOrder = CurrentWith({NewItem("A", 2, "3")});
  oOrder->SaveToHistory();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(Store.Query("select lOrderID, bIsCurrent, datSubmitDate, cTotalPrice from tblOrder order by 1"),
            (test::Rows{{"1", "0", "2003-07-04 15:04:05", "60000"}, {"2", "-1", "NULL", "0"}}));
  EXPECT_EQ(StoredLines(), Texts{"1 A 2 x 30000 = 60000"});
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsSaveToHistory, GoesOnNamingTheSubmittedOrderUntilItIsLoadedAnew) {
  const auto oOrder = CurrentWith({NewItem("A", 2, "3")});
  oOrder->SaveToHistory();
  EXPECT_EQ(oOrder->OrderID(), 1);
  EXPECT_TRUE(oOrder->IsCurrentOrder());
  EXPECT_TRUE(oOrder->SubmitDate().IsZero());
  EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("6"));
  EXPECT_EQ(NumbersOf(*oOrder), Texts{"A"});

  oOrder->AddItem(NewItem("B", 1, "1"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(StoredLines(), (Texts{"1 A 2 x 30000 = 60000", "1 B 1 x 10000 = 10000"}));
  EXPECT_EQ(StoredTotal(1), "70000");

  oOrder->LoadSummary(true);
  oOrder->LoadItems();
  EXPECT_EQ(oOrder->OrderID(), 2);
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  oOrder->AddItem(NewItem("B", 1, "1"));
  EXPECT_EQ(StoredLines().back(), "2 B 1 x 10000 = 10000");
}

TEST_F(OrderDetailsSaveToHistory, RefusesAnOrderThatIsNotTheCurrentOne) {
  AddSubmittedOrder(5);
  LoadCurrent();
  const auto before = Store.Everything();
  for (const int lOrderID : {5, 99, -1}) {
    OrderDetails order;
    order.OrderID(lOrderID);
    order.SaveToHistory();
    EXPECT_EQ(order.Error(), (ErrorInfo{2, "Specified order is not the current order"})) << lOrderID;
  }
  EXPECT_EQ(Store.Everything(), before);
}

TEST_F(OrderDetailsSaveToHistory, SubmitsOnlyOnce) {
  const auto oOrder = LoadCurrent();
  oOrder->SaveToHistory();
  Clock.Moment = Date(2003, 7, 5);
  oOrder->SaveToHistory();
  EXPECT_EQ(oOrder->Error().Number, 2);
  EXPECT_EQ(StoredHeader("datSubmitDate"), "2003-07-04 15:04:05");
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "2");
}

TEST_F(OrderDetailsSaveToHistory, LeavesNoCurrentOrderWhenTheNextCannotBeMadeAndTheNextLoadMakesIt) {
  const auto oOrder = LoadCurrent();
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "create order defaults") {
      throw Failure(75, "the settings are gone");
    }
  };
  oOrder->SaveToHistory();
  EXPECT_EQ(oOrder->Error(), (ErrorInfo{5,
                                        "75 : The order is submitted, but the next one could not be created; "
                                        "loading the current order tries again: the settings are gone"}));
  EXPECT_EQ(qm_ordering::LastFailure().Operation, "Database.OrderDetails_SaveToHistory");
  EXPECT_EQ(Store.Query("select lOrderID, bIsCurrent, datSubmitDate from tblOrder"),
            (test::Rows{{"1", "0", "2003-07-04 15:04:05"}}));
  Settings->Before = nullptr;
  oOrder->LoadSummary(true);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oOrder->OrderID(), 2);
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsApplyRegistrationSettings, FillsWhatHasNoDefaultInEveryOrder) {
  AddSubmittedOrder(5);
  const auto oOrder = LoadCurrent();
  Settings->Registration.City = "O'Fallon";
  Settings->Registration.FirstName = "Ann";
  Settings->Registration.AccountNumber = "007";
  Settings->Defaults["DEFAULT_DI_FIRSTNAME"] = "Bob";
  const auto defaults = Settings->Defaults;
  oOrder->ApplyRegistrationSettings();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(Store.Query("select zDICity, zCCCity, zDIFirstName, zCCFirstName, zCCAccountNumber, "
                        "zPIMorvaneAccountNumber from tblOrder"),
            (test::Rows{{"O'Fallon", "O'Fallon", "Bob", "Ann", "007", "007"},
                        {"O'Fallon", "O'Fallon", "Bob", "Ann", "007", "007"}}));
  EXPECT_EQ(Settings->Defaults, defaults);
  EXPECT_EQ(oOrder->DeliveryInformation()->City(), "");
  oOrder->LoadSummary();
  EXPECT_EQ(oOrder->DeliveryInformation()->City(), "O'Fallon");
}

// Each registered value stands in its own columns: all differ.
TEST_F(OrderDetailsApplyRegistrationSettings, PutsEachRegisteredValueIntoItsColumns) {
  const auto oOrder = LoadCurrent();
  Settings->Registration = {"city",  "company", "address1", "address2", "fax",
                            "phone", "ext",     "country",  "email",    "first",
                            "last",  "state",   "stateor",  "postcode", "account"};
  oOrder->ApplyRegistrationSettings();
  ASSERT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(
      Store.Query("select zOIPhoneNumber, zOIEmail, zDIFirstName, zDILastName, zDICompanyName, zDIAddress1, "
                  "zDIAddress2, zDICity, zDIState, zDIStateOr, zDIZipOrPostCode, zDICountry, zDIPhoneNumber, "
                  "zDIPhoneExt, zDIFax from tblOrder"),
      (test::Rows{{"phone", "email", "first", "last", "company", "address1", "address2", "city", "state",
                   "stateor", "postcode", "country", "phone", "ext", "fax"}}));
  EXPECT_EQ(
      Store.Query("select zCCFirstName, zCCLastName, zCCCompanyName, zCCAddress1, zCCAddress2, zCCCity, "
                  "zCCState, zCCStateOr, zCCZipOrPostCode, zCCCountry, zCCPhoneNumber, zCCPhoneExt, "
                  "zCCAccountNumber, zCCFax, zPIMorvaneAccountNumber from tblOrder"),
      (test::Rows{{"first", "last", "company", "address1", "address2", "city", "state", "stateor", "postcode",
                   "country", "phone", "ext", "account", "fax", "account"}}));
  EXPECT_EQ(Store.Query("select zPurchaseOrderNumber, zDINotes, zOIAttention, zOITaxIDNumber, "
                        "zDICallPhoneNumber from tblOrder"),
            (test::Rows{{"", "", "NULL", "", ""}}));
}

TEST_F(OrderDetailsApplyRegistrationSettings, RaisesARegistrationThatCannotBeRead) {
  const auto oOrder = LoadCurrent();
  const auto before = Store.Everything();
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "read registration") {
      throw Failure(75, "no registration");
    }
  };
  EXPECT_EQ(RaisedNumber([&] { oOrder->ApplyRegistrationSettings(); }), 75);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(Store.Everything(), before);
}

TEST_F(OrderDetailsApplyRegistrationSettings, RecordsDefaultsThatCannotBeRead) {
  const auto oOrder = LoadCurrent();
  const auto before = Store.Everything();
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "default get DEFAULT_CC_FAX") {
      throw Failure(75, "no defaults");
    }
  };
  oOrder->ApplyRegistrationSettings();
  EXPECT_EQ(oOrder->Error(), (ErrorInfo{5, "75 : no defaults"}));
  EXPECT_EQ(Store.Everything(), before);
}

}  // namespace
