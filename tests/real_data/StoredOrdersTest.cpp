#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "qm_ordering/store/OrderStore.h"
#include "tests/real_data/EnteredOrders.h"

namespace {

using qm_ordering::CheckOrderStore;
using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::Date;
using test::CsvRow;
using test::OrderValues;
using test::Values;

// Orders of whole catalogues, for every customer in turn: what another process reads from the store is what
// was set, value for value.
class StoredOrders : public test::EnteredOrders {
 protected:
  void OrderForEveryCustomer(const std::string& zvFolder) {
    const std::vector<CsvRow> products = test::ReadCsv(zvFolder + "/products.csv");
    const std::vector<CsvRow> customers = test::ReadCsv(zvFolder + "/customers.csv");
    ASSERT_FALSE(products.empty());
    ASSERT_FALSE(customers.empty());
    CurrentOrder order;
    OrderValues submitted;
    std::string zNumbers;
    for (std::size_t lCustomer = 0; lCustomer < customers.size(); ++lCustomer) {
      const CsvRow& customer = customers[lCustomer];
      SCOPED_TRACE("customer " + customer.at("customerID"));
      std::vector<Values> lines;
      for (std::size_t lProduct = 0; lProduct < products.size(); ++lProduct) {
        Values line = LineOf(products[lProduct], customer, lProduct * 31 + lCustomer * 17);
        // Another price for each customer, with all four decimals in use.
        const Currency cPrice = Currency::Parse(products[lProduct].at("unitPrice")) +
                                Currency::FromScaled(static_cast<std::int64_t>(lCustomer) * 1237);
        line["cPrice"] = std::to_string(cPrice.Scaled());
        lines.push_back(std::move(line));
      }
      const OrderValues entered = Enter(order, HeaderOf(customer, lCustomer), std::move(lines));
      const std::string zNumber = std::to_string(order.OrderDetails()->OrderID());
      ExpectSame(ReadInANewProcess(zNumber), entered);

      Clock.Moment = Date(2003, 7, 1 + static_cast<int>(lCustomer % 31), 9, 30, 0);
      const OrderValues expected = Submit(order, entered);
      submitted.insert(submitted.end(), expected.begin(), expected.end());
      zNumbers += " " + zNumber;
      if (HasFailure()) {
        return;
      }
    }
    ExpectSame(ReadInANewProcess(zNumbers), submitted);
    EXPECT_EQ(CheckOrderStore(), std::vector<std::string>());
    EXPECT_EQ(Store.Value("select count(*) from tblOrder"), std::to_string(customers.size() + 1));
  }
};

using StoredOrdersFull = StoredOrders;

TEST_F(StoredOrders, OfAMadeSetComeBackInANewProcessValueForValue) {
  OrderForEveryCustomer(kMadeFolder);
}

// The set is of use only as long as its awkward texts reach the orders as they were meant.
TEST_F(StoredOrders, OfTheMadeSetHoldItsAwkwardTexts) {
  const std::vector<CsvRow> customers = test::ReadCsv(std::string(kMadeFolder) + "/customers.csv");
  const std::vector<CsvRow> products = test::ReadCsv(std::string(kMadeFolder) + "/products.csv");
  ASSERT_GE(customers.size(), 10U);
  ASSERT_GE(products.size(), 14U);
  EXPECT_EQ(customers[0].at("region"), "");
  EXPECT_EQ(customers[1].at("companyName"), "O'Brien's \"Pub & Grill\"");
  EXPECT_EQ(customers[1].at("region"), "");
  EXPECT_EQ(customers[2].at("companyName"), "  blanks  ");
  EXPECT_EQ(customers[3].at("city"), "東京");
  EXPECT_EQ(customers[8].at("companyName"), "first\nsecond\r\nthird");
  EXPECT_EQ(customers[9].at("contactTitle").size(), 4000U);
  EXPECT_EQ(products[4].at("productName"), "  blanks at both ends  ");
  EXPECT_EQ(products[6].at("productName"), "Screwdriver 🪛🔧 set");
  EXPECT_EQ(products[10].at("productName"), "two\nlines\r\nand\ta tab");
}

TEST_F(StoredOrdersFull, OfRealDataComeBackInANewProcessValueForValue) {
  const std::string zFolder = RealFolder();
  if (zFolder.empty()) {
    GTEST_SKIP() << "QM_ORDERING_REAL_DATA is not set: it names a folder with northwind/products.csv and "
                    "northwind/customers.csv.";
  }
  OrderForEveryCustomer(zFolder);
}

}  // namespace
