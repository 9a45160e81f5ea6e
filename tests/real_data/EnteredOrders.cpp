#include "tests/real_data/EnteredOrders.h"

#include <sys/wait.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "qm_ordering/order/OrderItem.h"
#include "tests/support/OrderFields.h"

namespace test {

using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderItem;

std::string EnteredOrders::RealFolder() {
  const char* zFolder = std::getenv("QM_ORDERING_REAL_DATA");
  return zFolder == nullptr || *zFolder == '\0' ? "" : std::string(zFolder) + "/northwind";
}

Values EnteredOrders::HeaderOf(const CsvRow& customer, std::size_t lvMix) {
  const std::string& zID = customer.at("customerID");
  const std::string& zContact = customer.at("contactName");
  const std::string zFirst = zContact.substr(0, zContact.find(' '));
  const std::string zLast = zContact.substr(zFirst.size());
  Values values = {{"zPurchaseOrderNumber", "PO-" + zID + "-" + std::to_string(lvMix)},
                   {"zPOReleaseNumber", std::to_string(lvMix)},
                   {"bOIIsTaxExempt", lvMix % 2 == 0 ? "-1" : "0"},
                   {"zOIAttention", zContact},
                   {"zOIDepartment", customer.at("contactTitle")},
                   {"zOIPhoneNumber", customer.at("phone")},
                   {"zOIProjectOrJobNumber", zID},
                   {"zOIRequisitionOrApprovalName", customer.at("companyName")},
                   {"zOIEmail", zID + "@" + customer.at("companyName")},
                   {"zOITaxIDNumber", customer.at("postalCode")},
                   {"lPIPaymentMethod", std::to_string(lvMix % 3)},
                   {"zPIMorvaneAccountNumber", zID},
                   {"zCCAccountNumber", zID + zID},
                   {"zCCComment1", customer.at("address")},
                   {"zCCComment2", customer.at("city") + "\n" + customer.at("country")},
                   {"zCCComment3", zLast},
                   {"zCCComment4", customer.at("contactTitle") + "\t" + zFirst},
                   {"lDIDeliveryMethod", std::to_string(lvMix % 2)},
                   {"lDIShippingMethod", std::to_string(lvMix % 11)},
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

Values EnteredOrders::LineOf(const CsvRow& product, const CsvRow& customer, std::size_t lvMix) {
  const std::string& zDiscontinued = product.at("discontinued");
  return {{"zItemNumber", product.at("productID") + " " + product.at("productName")},
          {"zCustomerNotes", customer.at("companyName") + "\n" + product.at("quantityPerUnit")},
          {"zCustomerPartNumber", customer.at("customerID") + "/" + product.at("productID")},
          {"zDescription", product.at("productName")},
          {"zShortDescription", product.at("quantityPerUnit")},
          {"bIsPriceModified", lvMix % 2 == 0 ? "-1" : "0"},
          {"bIsTaxable", lvMix % 3 == 0 ? "-1" : "0"},
          {"zManufacturer", "supplier " + product.at("supplierID")},
          {"zModel", product.at("categoryID")},
          {"lSellQuantity", std::to_string(lvMix % 12 + 1)},
          {"lShipQuantity", std::to_string(lvMix % 7 + 1)},
          {"lQuantity", std::to_string(lvMix % 50 + 1)},
          {"zUsuallyShips", zDiscontinued == "1" ? "SPECIAL ORDER" : "1-3 DAYS"},
          {"bHasNotes", lvMix % 5 == 0 ? "-1" : "0"},
          {"bHasPartsInfo", lvMix % 7 == 0 ? "-1" : "0"}};
}

OrderValues EnteredOrders::Enter(CurrentOrder& orOrder, Values header, std::vector<Values> lines) {
  orOrder.LoadSummary();
  orOrder.LoadItems(0);
  EXPECT_EQ(orOrder.Error(), ErrorInfo()) << orOrder.Error().Description;
  qm_ordering::OrderDetails& details = *orOrder.OrderDetails();
  const std::string zOrderID = std::to_string(details.OrderID());
  Currency cTotal;
  OrderValues expectedLines;
  for (std::size_t l = 0; l < lines.size(); ++l) {
    Values& values = lines[l];
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
    values["lOrderID"] = zOrderID;
    values["cExtendedPrice"] = std::to_string(cExtended.Scaled());
    values["bHasContractItem"] = "0";
    values["bImported"] = "0";
    for (const auto& field : LineFields()) {
      expectedLines.emplace_back("line " + std::to_string(l + 1) + " " + field.Column,
                                 values.at(field.Column));
    }
  }

  for (const auto& field : HeaderFields()) {
    if (header.contains(field.Column)) {
      field.Set(details, header[field.Column]);
    }
  }
  orOrder.SaveSummary();
  EXPECT_EQ(orOrder.Error(), ErrorInfo()) << orOrder.Error().Description;
  header["lOrderID"] = zOrderID;
  header["cTotalPrice"] = std::to_string(cTotal.Scaled());
  header["datSubmitDate"] = "NULL";
  header["bIsCurrent"] = "-1";
  OrderValues expected;
  for (const auto& field : HeaderFields()) {
    expected.emplace_back(field.Column, header.at(field.Column));
  }
  expected.insert(expected.end(), expectedLines.begin(), expectedLines.end());
  return expected;
}

OrderValues EnteredOrders::Submit(CurrentOrder& orOrder, OrderValues entered) const {
  orOrder.SaveToHistory();
  EXPECT_EQ(orOrder.Error(), ErrorInfo()) << orOrder.Error().Description;
  for (auto& [zName, zValue] : entered) {
    if (zName == "bIsCurrent") {
      zValue = "0";
    } else if (zName == "datSubmitDate") {
      zValue = Clock.Moment.ToStoreText();
    }
  }
  return entered;
}

OrderValues EnteredOrders::ReadInANewProcess(const std::string& zvNumbers) const {
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

void EnteredOrders::ExpectSame(const OrderValues& values, const OrderValues& expected) {
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t l = 0; l < values.size(); ++l) {
    EXPECT_EQ(values[l], expected[l]);
  }
}

}  // namespace test
