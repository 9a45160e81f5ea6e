#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/real_data/CsvTable.h"
#include "tests/support/OrderFields.h"
#include "tests/support/OrderValues.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::CheckOrderStore;
using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::Date;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderItem;
using test::CsvRow;
using test::HeaderFields;
using test::LineFields;
using test::OrderValues;

// By column.
using Values = std::map<std::string, std::string>;

// Orders of whole catalogues, for every customer in turn: what another process reads from the store is what
// was set, value for value.
class StoredOrders : public test::StoreFixture {
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
      SCOPED_TRACE("customer " + customers[lCustomer].at("customerID"));
      order.LoadSummary();
      order.LoadItems(0);
      ASSERT_EQ(order.Error(), ErrorInfo()) << order.Error().Description;
      const std::string zNumber = std::to_string(order.OrderDetails()->OrderID());
      OrderValues expected = Build(order, customers[lCustomer], products, lCustomer);
      ASSERT_EQ(order.Error(), ErrorInfo()) << order.Error().Description;
      ExpectSame(ReadInANewProcess(zNumber), expected);

      Clock.Moment = Date(2003, 7, 1 + static_cast<int>(lCustomer % 31), 9, 30, 0);
      order.SaveToHistory();
      ASSERT_EQ(order.Error(), ErrorInfo()) << order.Error().Description;
      for (auto& [zName, zValue] : expected) {
        if (zName == "bIsCurrent") {
          zValue = "0";
        } else if (zName == "datSubmitDate") {
          zValue = Clock.Moment.ToStoreText();
        }
      }
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

 private:
  static Values HeaderOf(const CsvRow& customer, std::size_t lvCustomer) {
    const std::string& zID = customer.at("customerID");
    const std::string& zContact = customer.at("contactName");
    const std::string zFirst = zContact.substr(0, zContact.find(' '));
    const std::string zLast = zContact.substr(zFirst.size());
    Values values = {
        {"zPurchaseOrderNumber", "PO-" + zID + "-" + std::to_string(lvCustomer)},
        {"zPOReleaseNumber", std::to_string(lvCustomer)},
        {"bOIIsTaxExempt", lvCustomer % 2 == 0 ? "-1" : "0"},
        {"zOIAttention", zContact},
        {"zOIDepartment", customer.at("contactTitle")},
        {"zOIPhoneNumber", customer.at("phone")},
        {"zOIProjectOrJobNumber", zID},
        {"zOIRequisitionOrApprovalName", customer.at("companyName")},
        {"zOIEmail", zID + "@" + customer.at("companyName")},
        {"zOITaxIDNumber", customer.at("postalCode")},
        {"lPIPaymentMethod", std::to_string(lvCustomer % 3)},
        {"zPIMorvaneAccountNumber", zID},
        {"zCCAccountNumber", zID + zID},
        {"zCCComment1", customer.at("address")},
        {"zCCComment2", customer.at("city") + "\n" + customer.at("country")},
        {"zCCComment3", zLast},
        {"zCCComment4", customer.at("contactTitle") + "\t" + zFirst},
        {"lDIDeliveryMethod", std::to_string(lvCustomer % 2)},
        {"lDIShippingMethod", std::to_string(lvCustomer % 11)},
        {"zDINotes", zContact + ", " + customer.at("companyName") + "\r\n" + customer.at("city")},
        {"zDICallAttention", zLast},
        {"zDICallBranchNumber", customer.at("region")},
        {"zDICallPhoneExt", zFirst},
        {"zDICallPhoneNumber", customer.at("fax")}};
    for (const char* zGroup : {"zDI", "zCC"}) {
      const std::string zPrefix = zGroup;
      values[zPrefix + "FirstName"] = zFirst;
      values[zPrefix + "LastName"] = zLast;
      values[zPrefix + "CompanyName"] = customer.at("companyName");
      values[zPrefix + "Address1"] = customer.at("address");
      values[zPrefix + "Address2"] = customer.at("contactTitle");
      values[zPrefix + "City"] = customer.at("city");
      values[zPrefix + "State"] = customer.at("region");
      values[zPrefix + "StateOr"] = customer.at("region") + zPrefix;
      values[zPrefix + "ZipOrPostcode"] = customer.at("postalCode");
      values[zPrefix + "Country"] = customer.at("country");
      values[zPrefix + "PhoneNumber"] = customer.at("phone");
      values[zPrefix + "PhoneExt"] = zPrefix + zID;
      values[zPrefix + "Fax"] = customer.at("fax");
    }
    return values;
  }

  static Values LineOf(const CsvRow& product, const CsvRow& customer, std::size_t lvProduct,
                       std::size_t lvCustomer) {
    const std::size_t lMix = lvProduct * 31 + lvCustomer * 17;
    // Another price for each customer, with all four decimals in use.
    const Currency cPrice = Currency::Parse(product.at("unitPrice")) +
                            Currency::FromScaled(static_cast<std::int64_t>(lvCustomer) * 1237);
    const std::string& zDiscontinued = product.at("discontinued");
    return {{"zItemNumber", product.at("productID") + " " + product.at("productName")},
            {"zCustomerNotes", customer.at("companyName") + "\n" + product.at("quantityPerUnit")},
            {"zCustomerPartNumber", customer.at("customerID") + "/" + product.at("productID")},
            {"zDescription", product.at("productName")},
            {"zShortDescription", product.at("quantityPerUnit")},
            {"bIsPriceModified", lMix % 2 == 0 ? "-1" : "0"},
            {"bIsTaxable", lMix % 3 == 0 ? "-1" : "0"},
            {"zManufacturer", "supplier " + product.at("supplierID")},
            {"zModel", product.at("categoryID")},
            {"lSellQuantity", std::to_string(lMix % 12 + 1)},
            {"lShipQuantity", std::to_string(lMix % 7 + 1)},
            {"cPrice", std::to_string(cPrice.Scaled())},
            {"lQuantity", std::to_string(lMix % 50 + 1)},
            {"zUsuallyShips", zDiscontinued == "1" ? "SPECIAL ORDER" : "1-3 DAYS"},
            {"bHasNotes", lMix % 5 == 0 ? "-1" : "0"},
            {"bHasPartsInfo", lMix % 7 == 0 ? "-1" : "0"}};
  }

  // Fills, saves, and answers what the store must hold then.
  static OrderValues Build(CurrentOrder& orOrder, const CsvRow& customer, const std::vector<CsvRow>& products,
                           std::size_t lvCustomer) {
    qm_ordering::OrderDetails& details = *orOrder.OrderDetails();
    Currency cTotal;
    OrderValues lines;
    for (std::size_t lProduct = 0; lProduct < products.size(); ++lProduct) {
      Values values = LineOf(products[lProduct], customer, lProduct, lvCustomer);
      const auto oItem = std::make_shared<OrderItem>();
      for (const auto& field : LineFields()) {
        if (values.contains(field.Column)) {
          field.Set(*oItem, values[field.Column]);
        }
      }
      orOrder.AddItem(oItem);
      EXPECT_EQ(orOrder.Error(), ErrorInfo()) << orOrder.Error().Description;
      const Currency cExtended =
          Currency::FromScaled(std::stoll(values["cPrice"])) * std::stoi(values["lQuantity"]);
      cTotal += cExtended;
      values["lOrderID"] = std::to_string(details.OrderID());
      values["cExtendedPrice"] = std::to_string(cExtended.Scaled());
      values["bHasContractItem"] = "0";
      values["bImported"] = "0";
      for (const auto& field : LineFields()) {
        lines.emplace_back("line " + std::to_string(lProduct + 1) + " " + field.Column,
                           values.at(field.Column));
      }
    }

    Values header = HeaderOf(customer, lvCustomer);
    for (const auto& field : HeaderFields()) {
      if (header.contains(field.Column)) {
        field.Set(details, header[field.Column]);
      }
    }
    orOrder.SaveSummary();
    header["lOrderID"] = std::to_string(details.OrderID());
    header["cTotalPrice"] = std::to_string(cTotal.Scaled());
    header["datSubmitDate"] = "NULL";
    header["bIsCurrent"] = "-1";
    OrderValues expected;
    for (const auto& field : HeaderFields()) {
      expected.emplace_back(field.Column, header.at(field.Column));
    }
    expected.insert(expected.end(), lines.begin(), lines.end());
    return expected;
  }

  OrderValues ReadInANewProcess(const std::string& zvNumbers) const {
    const std::string zCommand =
        std::string("'") + QM_ORDERING_ORDER_DUMP + "' '" + Folder.Path() + "' " + zvNumbers;
    FILE* pPipe = popen(zCommand.c_str(), "r");
    if (pPipe == nullptr) {
      ADD_FAILURE() << zCommand;
      return {};
    }
    std::string zText;
    std::array<char, 65536> buffer{};
    while (const std::size_t lRead = fread(buffer.data(), 1, buffer.size(), pPipe)) {
      zText.append(buffer.data(), lRead);
    }
    const int lStatus = pclose(pPipe);
    EXPECT_TRUE(WIFEXITED(lStatus) && WEXITSTATUS(lStatus) == 0) << zCommand << ": status " << lStatus;
    return test::FromText(zText);
  }

  static void ExpectSame(const OrderValues& values, const OrderValues& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t l = 0; l < values.size(); ++l) {
      EXPECT_EQ(values[l], expected[l]);
    }
  }
};

using StoredOrdersFull = StoredOrders;

TEST_F(StoredOrders, OfAMadeSetComeBackInANewProcessValueForValue) {
  OrderForEveryCustomer(QM_ORDERING_SOURCE_DIR "/tests/real_data/made");
}

// The set is of use only as long as its awkward texts reach the orders as they were meant.
TEST_F(StoredOrders, OfTheMadeSetHoldItsAwkwardTexts) {
  const std::vector<CsvRow> customers =
      test::ReadCsv(QM_ORDERING_SOURCE_DIR "/tests/real_data/made/customers.csv");
  const std::vector<CsvRow> products =
      test::ReadCsv(QM_ORDERING_SOURCE_DIR "/tests/real_data/made/products.csv");
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
  const char* zFolder = std::getenv("QM_ORDERING_REAL_DATA");
  if (zFolder == nullptr || *zFolder == '\0') {
    GTEST_SKIP() << "QM_ORDERING_REAL_DATA is not set: it names a folder with northwind/products.csv and "
                    "northwind/customers.csv.";
  }
  OrderForEveryCustomer(std::string(zFolder) + "/northwind");
}

}  // namespace
