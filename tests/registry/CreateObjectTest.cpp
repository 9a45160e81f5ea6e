#include "qm_ordering/registry/CreateObject.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/history/PreviousOrder.h"
#include "qm_ordering/lists/PersonalList.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/order/CreditCardDetails.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/DeliveryInformation.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderInformation.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/order/PaymentInformation.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::CreateObject;
using test::FailureOf;
using test::RaisedNumber;

class CreateObjectTest : public test::StoreFixture {
 protected:
  template <typename Class>
  static void ExpectMade(const std::string& zvName) {
    for (const std::string& zName : {zvName, "QM_Ordering." + zvName}) {
      const auto oObject = CreateObject(zName);
      ASSERT_NE(oObject, nullptr) << zName;
      EXPECT_NE(std::dynamic_pointer_cast<Class>(oObject), nullptr) << zName;
      EXPECT_EQ(oObject->ClassName(), zvName);
      EXPECT_NE(CreateObject(zName), oObject) << zName;
    }
  }
};

TEST_F(CreateObjectTest, MakesEachPublicClassByEitherFormOfItsName) {
  ExpectMade<qm_ordering::CreditCardDetails>("CreditCardDetails");
  ExpectMade<qm_ordering::CurrentOrder>("CurrentOrder");
  ExpectMade<qm_ordering::DeliveryInformation>("DeliveryInformation");
  ExpectMade<qm_ordering::OrderDetails>("OrderDetails");
  ExpectMade<qm_ordering::OrderInformation>("OrderInformation");
  ExpectMade<qm_ordering::OrderItem>("OrderItem");
  ExpectMade<qm_ordering::OrderItems>("OrderItems");
  ExpectMade<qm_ordering::OrderHistory>("OrderHistory");
  ExpectMade<qm_ordering::PaymentInformation>("PaymentInformation");
  ExpectMade<qm_ordering::PersonalList>("PersonalList");
  ExpectMade<qm_ordering::PersonalLists>("PersonalLists");
  ExpectMade<qm_ordering::PreviousOrder>("PreviousOrder");
}

TEST_F(CreateObjectTest, TakesANameInAnyLetterCase) {
  for (const char* zName : {"orderitem", "ORDERITEM", "oRDERiTEM", "qm_ordering.orderitem",
                            "QM_ORDERING.ORDERITEM", "Qm_Ordering.OrderItem"}) {
    EXPECT_STREQ(CreateObject(zName)->ClassName(), "OrderItem") << zName;
  }
}

TEST_F(CreateObjectTest, RefusesANameThatIsNoPublicClassAndNamesIt) {
  for (const char* zName :
       {"Database", "QM_Ordering.Database", "Order", "OrderItemss", "", "QM_Ordering", "QM_Ordering.",
        "Other.OrderItem", "QM_Ordering.QM_Ordering.OrderItem", " OrderItem", "OrderItem ",
        "QM_OrderingOrderItem", "OrderItem\u017f"}) {  // the long s, of which Unicode makes an s
    const auto failure = FailureOf([&] { CreateObject(zName); });
    EXPECT_EQ(failure.Number(), 429) << zName;
    EXPECT_NE(failure.Description().find("\"" + std::string(zName) + "\""), std::string::npos)
        << failure.Description();
  }
  EXPECT_EQ(RaisedNumber([] { return CreateObject(std::string("OrderItem\0", 10)); }), 429);
}

TEST_F(CreateObjectTest, RunsTheStartUpFirst) {
  qm_ordering::ForgetStartUp();
  ASSERT_EQ(qm_ordering::DatabasePath(), "");
  CreateObject("OrderItem");
  EXPECT_EQ(qm_ordering::DatabasePath(), Folder.Path());
}

TEST_F(CreateObjectTest, RaisesAStartUpThatFailsAndTriesItAgain) {
  qm_ordering::ForgetStartUp();
  Settings->Before = [](const std::string&) { throw qm_ordering::Failure(75, "no settings"); };
  for (const char* zName : {"OrderItem", "QM_Ordering.CurrentOrder"}) {
    EXPECT_EQ(RaisedNumber([&] { return CreateObject(zName); }), 75);
  }
  Settings->Before = nullptr;
  EXPECT_STREQ(CreateObject("OrderItem")->ClassName(), "OrderItem");
}

TEST_F(CreateObjectTest, MakesACurrentOrderThatIsLoaded) {
  const auto oOrder = std::dynamic_pointer_cast<qm_ordering::CurrentOrder>(CreateObject("CurrentOrder"));
  ASSERT_NE(oOrder, nullptr);
  EXPECT_EQ(oOrder->OrderDetails()->OrderID(), 1);
  EXPECT_EQ(Store.Value("select count(*) from tblOrder where bIsCurrent = -1"), "1");
}

}  // namespace
