#include "tests/host/HostRun.h"

namespace {

using test::HostRun;

class OrderHeader : public test::HostFixture {
 protected:
  void SetUp() override { CreateStore(); }

  void ExpectRefusal(const std::string& zvAssignment, const std::string& zvText) const {
    const HostRun run = Run({"order", "set", "PurchaseOrderNumber=changed", zvAssignment});
    EXPECT_EQ(2, run.ExitCode) << zvAssignment;
    EXPECT_NE(std::string::npos, run.Err.find(zvText)) << run.Err;
    EXPECT_EQ("", run.Out);
    EXPECT_EQ("", Order()["PurchaseOrderNumber"]) << zvAssignment;
  }
};

TEST_F(OrderHeader, SetSavesValuesUnderNamesInAnyLetterCase) {
  const HostRun run =
      RunJson({"order", "set", "purchaseordernumber=PO-7", "DELIVERYINFORMATION.CITY=Reims",
               "orderinformation.istaxexempt=TRUE", "PaymentInformation.Method=1",
               "CreditCardDetails.city=\xC3\x89pernay", "PaymentInformation.CreditCardDetails.Comment4=a=b"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(nlohmann::json::parse(R"({"PurchaseOrderNumber": "PO-7", "DeliveryInformation.City": "Reims",
                                      "OrderInformation.IsTaxExempt": true, "PaymentInformation.Method": 1,
                                      "PaymentInformation.CreditCardDetails.City": "Épernay",
                                      "PaymentInformation.CreditCardDetails.Comment4": "a=b"})"),
            run.Data()["set"]);
  const auto order = Order();
  EXPECT_EQ("PO-7", order["PurchaseOrderNumber"]);
  EXPECT_EQ("Reims", order["DeliveryInformation"]["City"]);
  EXPECT_EQ(true, order["OrderInformation"]["IsTaxExempt"]);
  EXPECT_EQ(1, order["PaymentInformation"]["Method"]);
  EXPECT_EQ("\xC3\x89pernay", order["PaymentInformation"]["CreditCardDetails"]["City"]);
  EXPECT_EQ("a=b", order["PaymentInformation"]["CreditCardDetails"]["Comment4"]);
  EXPECT_EQ("Reims\n", Run({"settings", "get", "DEFAULT_DI_CITY"}).Out);
}

TEST_F(OrderHeader, SetTakesBooleansInFourForms) {
  for (const auto& [zText, bValue] : std::vector<std::pair<std::string, bool>>{
           {"true", true}, {"0", false}, {"1", true}, {"False", false}}) {
    ASSERT_EQ(0, Run({"order", "set", "OrderInformation.IsTaxExempt=" + zText}).ExitCode);
    EXPECT_EQ(bValue, Order()["OrderInformation"]["IsTaxExempt"]) << zText;
  }
}

TEST_F(OrderHeader, AnEmptyValueClearsAText) {
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.City=Reims"}).ExitCode);
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.City="}).ExitCode);
  EXPECT_EQ("", Order()["DeliveryInformation"]["City"]);
}

TEST_F(OrderHeader, AwkwardTextsComeBackAsTheyWereSet) {
  for (const std::string zText : {"it's \"q\" <&> \xF0\x9F\x94\xA9", "line\r\nend\ttab", " blanks ", "[x]",
                                  "007", "'; delete from tblOrder; --"}) {
    ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.Notes=" + zText}).ExitCode) << zText;
    EXPECT_EQ(zText, Order()["DeliveryInformation"]["Notes"]);
  }
}

TEST_F(OrderHeader, AnUnknownNameIsRefusedWithTheNearest) {
  ExpectRefusal("City=Reims",
                "Did you mean DeliveryInformation.City or PaymentInformation.CreditCardDetails.City?");
  ExpectRefusal("DeliveryInformation.Citty=Reims", "Did you mean DeliveryInformation.City");
  ExpectRefusal("NoSuchThing=1", "An order has no property \"NoSuchThing\"");
}

TEST_F(OrderHeader, AWrongValueIsRefused) {
  ExpectRefusal("DeliveryInformation.DeliveryMethod=home", "is an integer");
  ExpectRefusal("DeliveryInformation.ShippingMethod=2147483648", "is an integer");
  ExpectRefusal("OrderInformation.IsTaxExempt=maybe", "true, false, 1 or 0");
  ExpectRefusal("DeliveryInformation.City=caf\xE9", "not UTF-8 text");
  ExpectRefusal("DeliveryInformation.City", "is not NAME=VALUE");
  ExpectRefusal("purchaseOrderNumber=again", "is set twice");
}

TEST_F(OrderHeader, WhatNobodyMaySetIsRefusedWithTheReason) {
  ExpectRefusal("OrderID=7", "the store gives it");
  ExpectRefusal("TotalPrice=7", "the sum of the lines");
  ExpectRefusal("SubmitDate=2003-07-04", "order submit");
  ExpectRefusal("IsCurrentOrder=0", "order submit");
  ExpectRefusal("DeliveryInformation.ShippingMethodName=Other",
                "follows from DeliveryInformation.ShippingMethod");
}

TEST_F(OrderHeader, CardDataIsRefusedWithTheReasonUnderEveryName) {
  for (const char* zName : {"CardType", "CardNumber", "ExpiryMonth", "ExpiryYear", "CardHoldersRef"}) {
    for (const char* zGroup : {"", "CreditCardDetails.", "paymentinformation.creditcarddetails."}) {
      ExpectRefusal(zGroup + std::string(zName) + "=4111", std::string(zName) + " is never stored");
    }
  }
  const HostRun run = Run({"order", "set", "CardNumber=4111111111111111"});
  EXPECT_NE(std::string::npos, run.Err.find("--card-file"));
  EXPECT_EQ(std::string::npos, run.Err.find("4111"));
}

TEST_F(OrderHeader, ApplyRegistrationFillsBlankDefaultsFromTheRegistration) {
  ASSERT_EQ(0, Run({"settings", "set", "Reg_FirstName", "Zo\xC3\xAB"}).ExitCode);
  ASSERT_EQ(0, Run({"settings", "set", "Reg_City", "Nancy"}).ExitCode);
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.City=Reims"}).ExitCode);
  const HostRun run = RunJson({"order", "apply-registration"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("Zo\xC3\xAB", run.Data()["DeliveryInformation"]["FirstName"]);
  EXPECT_EQ("Reims", run.Data()["DeliveryInformation"]["City"]);
  EXPECT_EQ("Zo\xC3\xAB", Order()["PaymentInformation"]["CreditCardDetails"]["FirstName"]);
}

TEST_F(OrderHeader, ApplyRegistrationWithAHistoryNeedsYes) {
  ASSERT_EQ(0, Run({"settings", "set", "Reg_FirstName", "Ana"}).ExitCode);
  ASSERT_EQ(0, Run({"order", "submit", "--force"}).ExitCode);
  const HostRun refused = Run({"order", "apply-registration"});
  EXPECT_EQ(2, refused.ExitCode);
  EXPECT_NE(std::string::npos, refused.Err.find("There is 1 submitted order"));
  EXPECT_NE(std::string::npos, refused.Err.find("--yes"));
  EXPECT_EQ("", Order()["DeliveryInformation"]["FirstName"]);
  EXPECT_EQ(0, Run({"order", "apply-registration", "--yes"}).ExitCode);
  EXPECT_EQ("Ana", Store().Value("select zDIFirstName from tblOrder where lOrderID = 1"));
}

TEST_F(OrderHeader, ApplyRegistrationsHelpWarns) {
  const std::string zHelp = Run({"order", "apply-registration", "--help"}).Out;
  EXPECT_NE(std::string::npos, zHelp.find("ALL orders in the store, submitted ones included"));
}

}  // namespace
