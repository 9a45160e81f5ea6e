#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/clock/Clock.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/xml/Document.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderDetails;
using test::FailureOf;
using test::RaisedNumber;

using Texts = std::vector<std::string>;

constexpr const char* kEmptyParts =
    "<paymentinformation accountnumber=\"\" method=\"0\"><creditcarddetails firstname=\"\" lastname=\"\" "
    "companyname=\"\" address1=\"\" address2=\"\" city=\"\" state=\"\" stateor=\"\" ziporpostcode=\"\" "
    "country=\"\" phonenumber=\"\" phoneext=\"\" fax=\"\" accountnumber=\"\" cardtype=\"\" cardnumber=\"\" "
    "expirymonth=\"00\" expiryyear=\"00\" cardholdersref=\"\" comment1=\"\" comment2=\"\" comment3=\"\" "
    "comment4=\"\"/></paymentinformation>"
    "<orderinformation ponumber=\"\" poreleasenumber=\"\" projectorjobnumber=\"\" "
    "requisitionorapprovalname=\"\" department=\"\" attention=\"\" phonenumber=\"\" email=\"\" "
    "istaxexempt=\"0\" taxidnumber=\"\"/>"
    "<deliveryinformation deliverymethod=\"0\" firstname=\"\" lastname=\"\" companyname=\"\" address1=\"\" "
    "address2=\"\" city=\"\" state=\"\" stateor=\"\" ziporpostcode=\"\" country=\"\" phonenumber=\"\" "
    "phoneext=\"\" fax=\"\" shippingmethod=\"0\" shippingmethodname=\"Standard Shipping\" notes=\"\" "
    "callbranchnumber=\"\" callattention=\"\" callphonenumber=\"\" callphoneext=\"\"/>";

class OrderDocument : public test::OrderFixture {
 protected:
  // An attribute of the document's root.
  static std::string Attribute(const OrderDetails& order, const char* zvName) {
    qm_ordering::xml::Document document;
    EXPECT_TRUE(document.LoadXML(order.GetXML()));
    return document.SelectSingleNode("/order").Attribute(zvName);
  }

  // An attribute of each line in the document, in its order.
  static Texts LineAttributes(const OrderDetails& order, const char* zvName) {
    qm_ordering::xml::Document document;
    EXPECT_TRUE(document.LoadXML(order.GetXML()));
    Texts values;
    for (int l = 1;; ++l) {
      const auto line = document.SelectSingleNode("/order/orderitems/orderitem[" + std::to_string(l) + "]");
      if (!line) {
        return values;
      }
      values.push_back(line.Attribute(zvName));
    }
  }

  test::EnvironmentScope m_oLocale{"LC_ALL", "C"};
};

TEST_F(OrderDocument, OfAnOrderWithoutLinesEndsWithAnEmptyElement) {
  EXPECT_EQ(LoadCurrent()->GetXML(),
            std::string("<order orderid=\"1\" purchaseordernumber=\"\" totalprice=\"0.00\" "
                        "submitdate=\"7/4/2003\" currentdate=\"7/4/2003\" paymentmethod=\"0\" "
                        "deliverymethod=\"0\" timestamp=\"2003-7-4T3:04:05 PM300:300\">") +
                kEmptyParts + "<orderitems/></order>");
}

TEST_F(OrderDocument, HasItsPartsAndAttributesInTheirOrder) {
  const auto oA = NewItem("A&1", 1200, "1.005");
  oA->Description("6\" nail <b>");
  oA->UsuallyShips("TODAY");
  oA->ShortDescription("not shown");
  const auto oOrder = CurrentWith({oA, NewItem("B", -1, "2.25")});
  OrderDetails& order = *oOrder;
  order.PurchaseOrderNumber("PO \"7\"");
  order.PaymentInformation()->Method(1);
  order.PaymentInformation()->MorvaneAccountNumber("acc");
  order.PaymentInformation()->CreditCardDetails()->CardNumber("4111");
  order.PaymentInformation()->CreditCardDetails()->ExpiryMonth(7);
  order.OrderInformation()->Email("a@b");
  order.DeliveryInformation()->DeliveryMethod(2);
  order.DeliveryInformation()->City("Reims");
  std::string zParts = kEmptyParts;
  const auto replace = [&zParts](const std::string& zvOld, const std::string& zvNew) {
    const std::size_t lAt = zParts.find(zvOld);
    ASSERT_NE(lAt, std::string::npos) << zvOld;
    zParts.replace(lAt, zvOld.size(), zvNew);
  };
  replace("<paymentinformation accountnumber=\"\" method=\"0\">",
          "<paymentinformation accountnumber=\"acc\" method=\"1\">");
  replace("cardnumber=\"\" expirymonth=\"00\"", "cardnumber=\"4111\" expirymonth=\"07\"");
  replace("email=\"\"", "email=\"a@b\"");
  replace("deliverymethod=\"0\"", "deliverymethod=\"2\"");
  replace(
      "<deliveryinformation deliverymethod=\"2\" firstname=\"\" lastname=\"\" companyname=\"\" "
      "address1=\"\" address2=\"\" city=\"\"",
      "<deliveryinformation deliverymethod=\"2\" firstname=\"\" lastname=\"\" companyname=\"\" "
      "address1=\"\" address2=\"\" city=\"Reims\"");
  EXPECT_EQ(order.GetXML(),
            "<order orderid=\"1\" purchaseordernumber=\"PO &quot;7&quot;\" totalprice=\"1,203.75\" "
            "submitdate=\"7/4/2003\" currentdate=\"7/4/2003\" paymentmethod=\"1\" deliverymethod=\"2\" "
            "timestamp=\"2003-7-4T3:04:05 PM300:300\">" +
                zParts +
                "<orderitems>"
                "<orderitem itemnumber=\"A&amp;1\" quantity=\"1200\" validquantity=\"1\" "
                "description=\"6&quot; nail &lt;b>\" manufacturer=\"\" model=\"\" sellquantity=\"1\" "
                "shipquantity=\"1\" usuallyships=\"TODAY\" istaxable=\"0\" price=\"1.01\" "
                "extendedprice=\"1,206.00\" ispricemodified=\"0\" customerpartnumber=\"\" "
                "customernotes=\"\" hasnotes=\"0\" hascontractitem=\"0\" haspartsinfo=\"0\"/>"
                "<orderitem itemnumber=\"B\" quantity=\"-1\" validquantity=\"1\" description=\"\" "
                "manufacturer=\"\" model=\"\" sellquantity=\"1\" shipquantity=\"1\" usuallyships=\"\" "
                "istaxable=\"0\" price=\"2.25\" extendedprice=\"-2.25\" ispricemodified=\"0\" "
                "customerpartnumber=\"\" customernotes=\"\" hasnotes=\"0\" hascontractitem=\"0\" "
                "haspartsinfo=\"0\"/>"
                "</orderitems></order>");
}

TEST_F(OrderDocument, HasTheLinesInTheOrderOfTheCollection) {
  const auto oOrder = CurrentWith({NewItem("B", 1, "3"), NewItem("A", 1, "1"), NewItem("C", 1, "2")});
  EXPECT_EQ(LineAttributes(*oOrder, "itemnumber"), (Texts{"B", "A", "C"}));
  oOrder->LoadItems(6);
  EXPECT_EQ(LineAttributes(*oOrder, "itemnumber"), (Texts{"A", "C", "B"}));
  oOrder->AddItem(NewItem("0", 1, "0.5"));
  EXPECT_EQ(LineAttributes(*oOrder, "itemnumber"), (Texts{"A", "C", "B", "0"}));
}

TEST_F(OrderDocument, ShowsWhatIsInMemoryAndNotWhatIsStored) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 1, "1")});
  oOrder->AddItem(NewItem("A", 3, "2"));
  oOrder->RemoveItem("B");
  EXPECT_EQ(LineAttributes(*oOrder, "quantity"), (Texts{"5", "1"}));
  EXPECT_EQ(Attribute(*oOrder, "totalprice"), "16.00");
  oOrder->LoadItems();
  EXPECT_EQ(LineAttributes(*oOrder, "quantity"), Texts{"8"});
}

TEST_F(OrderDocument, WritesAnItemNumberAsItIsShown) {
  const auto oOrder = CurrentWith({NewItem("A1 DUP2")});
  oOrder->LoadItems();
  EXPECT_EQ(LineAttributes(*oOrder, "itemnumber"), Texts{"A1"});
}

TEST_F(OrderDocument, ShowsWhichQuantitiesAreInvalid) {
  CurrentWith({NewItem("A", 10), NewItem("B", 10)});
  Store.Run("update tblOrderItem set lSellQuantity = 3 where zItemNumber = 'A'");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, true, true);
  EXPECT_EQ(LineAttributes(*oOrder, "validquantity"), (Texts{"0", "1"}));
}

TEST_F(OrderDocument, WritesTheTotalWithTwoDecimalsAndGroups) {
  const auto oOrder = LoadCurrent();
  const auto total = [&](const char* zvAmount) {
    oOrder->TotalPrice(Currency::Parse(zvAmount));
    return Attribute(*oOrder, "totalprice");
  };
  EXPECT_EQ(total("1234.5"), "1,234.50");
  EXPECT_EQ(total("0.005"), "0.01");
  EXPECT_EQ(total("-1234567.891"), "-1,234,567.89");
  EXPECT_EQ(total("922337203685477.5807"), "922,337,203,685,477.58");
  EXPECT_EQ(total("-0.005"), "-0.01");
}

TEST_F(OrderDocument, WritesANegativeAmountThatRoundsToZeroWithoutItsSign) {
  const auto oOrder = CurrentWith({NewItem("A", 1, "-0.0049")});
  EXPECT_EQ(Attribute(*oOrder, "totalprice"), "0.00");
  EXPECT_EQ(LineAttributes(*oOrder, "price"), Texts{"0.00"});
  EXPECT_EQ(LineAttributes(*oOrder, "extendedprice"), Texts{"0.00"});
}

TEST_F(OrderDocument, WritesAmountsAsTheUsersLocaleSaysAndNothingElse) {
  const test::EnvironmentScope path("LOCPATH", QM_ORDERING_LOCALES);
  const test::EnvironmentScope german("LC_ALL", "de_DE.UTF-8");
  const auto oOrder = CurrentWith({NewItem("A", 1000, "-1234.5")});
  EXPECT_EQ(Attribute(*oOrder, "totalprice"), "-1.234.500,00");
  EXPECT_EQ(LineAttributes(*oOrder, "price"), Texts{"-1.234,50"});
  EXPECT_EQ(LineAttributes(*oOrder, "extendedprice"), Texts{"-1.234.500,00"});
  EXPECT_EQ(LineAttributes(*oOrder, "quantity"), Texts{"1000"});
  EXPECT_EQ(Attribute(*oOrder, "submitdate"), "7/4/2003");
  EXPECT_EQ(Attribute(*oOrder, "timestamp"), "2003-7-4T3:04:05 PM300:300");
  EXPECT_EQ(StoredLines(), Texts{"1 A 1000 x -12345000 = -12345000000"});
}

TEST_F(OrderDocument, GivesTheCurrentOrderTodayAsItsSubmitDate) {
  const auto oOrder = LoadCurrent();
  oOrder->SubmitDate(Date(2001, 1, 2));
  EXPECT_EQ(Attribute(*oOrder, "submitdate"), "7/4/2003");
  EXPECT_EQ(Attribute(*oOrder, "currentdate"), "7/4/2003");
  Clock.Moment = Date(2003, 12, 25, 23, 59, 59);
  EXPECT_EQ(Attribute(*oOrder, "submitdate"), "12/25/2003");
  EXPECT_EQ(Attribute(*oOrder, "currentdate"), "12/25/2003");
}

TEST_F(OrderDocument, HasOneAndTheSameTodayAlsoAtMidnight) {
  class NextDayAtEachLook : public qm_ordering::clock::Clock {
   public:
    NextDayAtEachLook() { qm_ordering::clock::Install(this); }
    Date Now() override { return Date(2003, 7, m_lDay++); }
    std::int32_t TimeZoneBias() override { return 0; }

   private:
    int m_lDay = 4;
  };
  const auto oOrder = LoadCurrent();
  const NextDayAtEachLook clock;
  EXPECT_NE(oOrder->GetXML().find(" submitdate=\"7/4/2003\" currentdate=\"7/4/2003\" "), std::string::npos);
  qm_ordering::clock::Install(&Clock);
}

TEST_F(OrderDocument, GivesASubmittedOrderItsStoredDateWithoutTheTime) {
  LoadCurrent();
  AddSubmittedOrder(5);
  OrderDetails order;
  order.OrderID(5);
  order.LoadSummary();
  EXPECT_EQ(Attribute(order, "submitdate"), "3/3/2001");
  EXPECT_EQ(Attribute(order, "currentdate"), "7/4/2003");
  EXPECT_EQ(Attribute(order, "orderid"), "5");
}

TEST_F(OrderDocument, GivesAnOrderWithoutADateNone) {
  LoadCurrent();
  AddSubmittedOrder(5);
  OrderDetails order;
  order.OrderID(5);
  order.LoadSummary();
  order.SubmitDate(Date());
  EXPECT_EQ(Attribute(order, "submitdate"), "");
  order.SubmitDate(Date(1899, 12, 30, 1, 0, 0));
  EXPECT_EQ(Attribute(order, "submitdate"), "12/30/1899");
}

TEST_F(OrderDocument, WritesTheMomentWithTheBiasOfTheTimeZone) {
  const auto oOrder = LoadCurrent();
  Clock.Moment = Date(2004, 1, 9, 0, 5, 0);
  Clock.Bias = -60;
  EXPECT_EQ(Attribute(*oOrder, "timestamp"), "2004-1-9T12:05:00 AM-60:60");
}

TEST_F(OrderDocument, NamesAnOrderThatIsNotLoadedByItsNumber) {
  OrderDetails order;
  order.LoadSummary();
  ASSERT_EQ(order.Error().Number, 3);
  EXPECT_EQ(Attribute(order, "orderid"), "-1");
  EXPECT_EQ(Attribute(order, "submitdate"), "");
}

TEST_F(OrderDocument, FailsBeforeASummaryIsLoaded) {
  const OrderDetails order;
  EXPECT_EQ(RaisedNumber([&] { return order.GetXML(); }), 91);
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(OrderDocument, FailsOnATextThatXMLCannotHoldAndNamesItsPlace) {
  const std::string zBad = "ok \x01";
  const auto expectFailure = [&](const std::function<void(OrderDetails&)>& spoil, const Texts& zvPlaces) {
    const auto oOrder = CurrentWith({});
    spoil(*oOrder);
    const auto failure = FailureOf([&] { return oOrder->GetXML(); });
    EXPECT_EQ(failure.Number(), -1072896760) << zvPlaces.front();
    for (const std::string& zPlace : zvPlaces) {
      EXPECT_NE(failure.Description().find(zPlace), std::string::npos)
          << zPlace << ": " << failure.Description();
    }
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
  };
  expectFailure([&](OrderDetails& order) { order.PurchaseOrderNumber(zBad); },
                {"\"order\"", "\"purchaseordernumber\"", "byte 4"});
  expectFailure([&](OrderDetails& order) { order.PaymentInformation()->MorvaneAccountNumber(zBad); },
                {"\"paymentinformation\"", "\"accountnumber\""});
  expectFailure([&](OrderDetails& order) { order.PaymentInformation()->CreditCardDetails()->City(zBad); },
                {"\"creditcarddetails\"", "\"city\""});
  expectFailure([&](OrderDetails& order) { order.OrderInformation()->Email(zBad); },
                {"\"orderinformation\"", "\"email\""});
  expectFailure([&](OrderDetails& order) { order.DeliveryInformation()->Notes(zBad); },
                {"\"deliveryinformation\"", "\"notes\""});
}

TEST_F(OrderDocument, NamesTheLineThatXMLCannotHold) {
  for (const std::string zBad : {"\x01", "\xC3", "\xED\xA0\x80", "\xEF\xBF\xBE"}) {
    const auto oOrder = LoadCurrent();
    for (const char* zNumber : {"A", "B", "C"}) {
      oOrder->OrderItems()->Add(NewItem(zNumber), zNumber);
    }
    oOrder->OrderItems()->Item("B")->CustomerNotes("12" + zBad);
    const auto failure = FailureOf([&] { return oOrder->GetXML(); });
    EXPECT_EQ(failure.Number(), -1072896760);
    for (const char* zPlace : {"Line 2, item B: ", "\"orderitem\"", "\"customernotes\"", "byte 3"}) {
      EXPECT_NE(failure.Description().find(zPlace), std::string::npos)
          << zPlace << ": " << failure.Description();
    }
  }
}

TEST_F(OrderDocument, FailsOnAZeroByteAndCutsNothing) {
  const auto oOrder = LoadCurrent();
  oOrder->PurchaseOrderNumber(std::string("a\0b", 3));
  EXPECT_EQ(RaisedNumber([&] { return oOrder->GetXML(); }), -1072896760);
}

}  // namespace
