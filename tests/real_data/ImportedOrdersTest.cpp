#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/real_data/CsvTable.h"
#include "tests/real_data/EnteredOrders.h"
#include "tests/real_data/ListedOrders.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/OrderFields.h"
#include "tests/support/OrderValues.h"

namespace {

using nlohmann::json;
using qm_ordering::OrderHistory;
using test::CsvRow;
using test::OrderValues;
using test::Values;

// The fields' length in the tables.
constexpr std::size_t kLetters = 60;

// "12.5000" of an amount times 10,000.
std::string AmountText(std::int64_t lvAmount) {
  const std::string zDecimals = std::to_string(std::abs(lvAmount % 10000) + 10000).substr(1);
  return (lvAmount < 0 ? "-" : "") + std::to_string(std::abs(lvAmount / 10000)) + "." + zDecimals;
}

std::string InCapitals(std::string zvText) {
  for (char& c : zvText) {
    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return zvText;
}

// A line of the older program, and what the store must hold of it.
struct SourceLine {
  std::string ItemNumber;
  json Columns;
  Values Stored;
};

struct SourceOrder {
  std::string Key;
  json Columns;
  Values Stored;
  std::vector<SourceLine> Lines;
  std::int64_t Total = 0;  // times 10,000
};

// The orders of the CSV tables written into the tables of the older program, imported, and compared; then
// imported once more.
class ImportedOrders : public test::EnteredOrders {
 protected:
  enum class Fields { Texts, Numbers };

  void ImportAndLook(const std::string& zvFolder, Fields fields) {
    ReadSource(zvFolder);
    ASSERT_FALSE(HasFailure());
    const std::string zTables = MakeTables(fields);
    for (const std::size_t lRun : {1U, 2U}) {
      SCOPED_TRACE("import " + std::to_string(lRun));
      const std::size_t lLinesBefore = Imported.size();
      const std::int64_t lMarked = Mark();
      const qm_ordering::ImportPreview preview = m_oImporter.PreviewImports(zTables);
      EXPECT_EQ(static_cast<std::int64_t>(m_oOrders.size()), preview.Orders);
      EXPECT_EQ(static_cast<std::int64_t>(Imported.size() - lLinesBefore), preview.Lines);
      EXPECT_EQ(lMarked, preview.MarkedLines);
      EXPECT_EQ(static_cast<std::int64_t>((lRun - 1) * m_oOrders.size()), preview.AlreadyImported);
      EXPECT_EQ(0, preview.FailingRows);
      EXPECT_EQ(std::vector<std::string>(), preview.Failures);

      qm_ordering::ClearLastFailure();
      EXPECT_EQ(static_cast<std::int32_t>(m_oOrders.size()), m_oImporter.ApplyImports(zTables));
      EXPECT_EQ("", qm_ordering::LastFailure().Description);
      ExpectImported(lRun);
      ASSERT_FALSE(HasFailure());
    }
  }

  std::size_t OrderCount() const { return m_oOrders.size(); }

  // What the imports up to now must have stored: the item numbers of the lines, in their order.
  std::vector<std::string> Imported;
  // Values that a field of the tables does not hold whole.
  int Shortened = 0;

 private:
  // A text as a field holds it: of the letters of code page 1252 those that are one byte of Latin-1, a
  // question mark for another one; as many as there is room for; nothing blank at the end.
  std::string Held(const std::string& zvText) {
    std::string zHeld;
    std::size_t lLetters = 0;
    std::size_t i = 0;
    for (; i < zvText.size() && lLetters < kLetters; ++lLetters) {
      const auto cFirst = static_cast<unsigned char>(zvText[i]);
      const std::size_t lBytes = cFirst < 0x80 ? 1 : cFirst < 0xE0 ? 2 : cFirst < 0xF0 ? 3 : 4;
      const bool bLatin = cFirst < 0x80 || cFirst == 0xC2 || cFirst == 0xC3;
      zHeld += bLatin ? zvText.substr(i, lBytes) : "?";
      Shortened += bLatin ? 0 : 1;
      i += lBytes;
    }
    Shortened += i < zvText.size() ? 1 : 0;
    zHeld.erase(zHeld.find_last_not_of(" \t\r\n") + 1);
    return zHeld;
  }

  static std::pair<std::string, std::string> NameParts(const std::string& zvName) {
    const std::size_t lStart = std::min(zvName.find_first_not_of(' '), zvName.size());
    const std::string zName = zvName.substr(lStart);
    const std::size_t lSpace = zName.find(' ');
    return {zName.substr(0, lSpace), lSpace == std::string::npos ? "" : zName.substr(lSpace + 1)};
  }

  void ReadSource(const std::string& zvFolder) {
    std::map<std::string, CsvRow> customers;
    for (CsvRow& row : test::ReadCsv(zvFolder + "/customers.csv")) {
      customers[row.at("customerID")] = std::move(row);
    }
    std::map<std::string, CsvRow> products;
    for (CsvRow& row : test::ReadCsv(zvFolder + "/products.csv")) {
      products[row.at("productID")] = std::move(row);
    }
    std::map<std::string, std::vector<CsvRow>> details;
    for (CsvRow& row : test::ReadCsv(zvFolder + "/order-details.csv")) {
      details[row.at("orderID")].push_back(std::move(row));
    }
    for (const CsvRow& row : test::ReadCsv(zvFolder + "/orders.csv")) {
      const std::string& zID = row.at("orderID");
      const CsvRow& customer = customers.at(row.at("customerID"));
      SourceOrder order;
      order.Key = row.at("orderDate").substr(0, 19) + " " + zID;
      for (const CsvRow& detail : details[zID]) {
        order.Lines.push_back(LineOf(products.at(detail.at("productID")), customer, detail));
        order.Total += std::stoll(order.Lines.back().Stored.at("cExtendedPrice"));
      }
      // An order without lines is none to the import.
      if (order.Lines.empty()) {
        continue;
      }
      order.Total += test::WholeUnits(row.at("freight"), 4);
      FillHeader(order, row, customer);
      std::ranges::stable_sort(order.Lines, [](const SourceLine& left, const SourceLine& right) {
        return test::InLowerCase(left.ItemNumber) < test::InLowerCase(right.ItemNumber);
      });
      m_oOrders.push_back(std::move(order));
    }
    std::ranges::sort(m_oOrders, {}, &SourceOrder::Key);
  }

  // The text goes into a column of the older program and comes out of one of the store.
  void Copy(json& orColumns, Values& orStored, const char* zvLegacy, const char* zvColumn,
            const std::string& zvText) {
    orStored[zvColumn] = Held(zvText);
    orColumns[zvLegacy] = orStored[zvColumn];
  }

  void FillAddress(SourceOrder& orOrder, const std::string& zvLegacy, const std::string& zvColumn,
                   const std::string& zvSecond, const std::string& zvThird, const std::string& zvName) {
    const std::string zSecond = Held(zvSecond);
    const std::string zThird = Held(zvThird);
    orOrder.Columns[zvLegacy + "ADDRESS2"] = zSecond;
    orOrder.Columns[zvLegacy + "ADDRESS3"] = zThird;
    orOrder.Stored[zvColumn + "Address2"] = zThird.empty() ? zSecond : zSecond + ", " + zThird;
    const std::string zName = Held(zvName);
    orOrder.Columns[zvLegacy + "ATTN"] = zName;
    const auto [zFirst, zLast] = NameParts(zName);
    orOrder.Stored[zvColumn + "FirstName"] = zFirst;
    orOrder.Stored[zvColumn + "LastName"] = zLast;
  }

  void FillHeader(SourceOrder& orOrder, const CsvRow& row, const CsvRow& customer) {
    const auto copy = [&](const char* zvLegacy, const char* zvColumn, const std::string& zvText) {
      Copy(orOrder.Columns, orOrder.Stored, zvLegacy, zvColumn, zvText);
    };
    copy("PONUM", "zPurchaseOrderNumber", row.at("shipName"));
    copy("STADDRESS1", "zDIAddress1", row.at("shipAddress"));
    FillAddress(orOrder, "ST", "zDI", customer.at("contactTitle"), row.at("shipRegion"),
                customer.at("contactName"));
    copy("STCITY", "zDICity", row.at("shipCity"));
    copy("STSTATE", "zDIState", row.at("shipRegion"));
    copy("STZIP", "zDIZipOrPostcode", row.at("shipPostalCode"));
    copy("STTELEPHON", "zDIPhoneNumber", customer.at("phone"));
    copy("STCOUNTRY", "zDICountry", row.at("shipCountry"));
    copy("BTADDRESS1", "zCCAddress1", customer.at("address"));
    FillAddress(orOrder, "BT", "zCC", customer.at("companyName"), customer.at("region"),
                customer.at("contactTitle"));
    copy("BTCITY", "zCCCity", customer.at("city"));
    copy("BTSTATE", "zCCState", customer.at("region"));
    copy("BTZIP", "zCCZipOrPostcode", customer.at("postalCode"));
    copy("BTTELEPHON", "zCCPhoneNumber", customer.at("fax"));
    copy("BTCOUNTRY", "zCCCountry", customer.at("country"));
    copy("SPECIALINS", "zOIAttention", customer.at("companyName"));
    copy("TAXNO", "zOITaxIDNumber", row.at("shipPostalCode") + row.at("freight"));
    copy("ACCTNUMBER", "zPIMorvaneAccountNumber", row.at("customerID"));
    copy("DEPARTMENT", "zOIDepartment", row.at("employeeID"));
    copy("PROJECTJOB", "zOIProjectOrJobNumber", row.at("orderID"));
    copy("REQAPPNAME", "zOIRequisitionOrApprovalName", row.at("shippedDate"));
    copy("PROCCOMMT1", "zCCComment1", row.at("requiredDate"));
    copy("PROCCOMMT2", "zCCComment2", row.at("freight"));
    copy("PROCCOMMT3", "zCCComment3", customer.at("contactTitle"));
    copy("PROCCOMMT4", "zCCComment4", customer.at("address"));
    const bool bExempt = IsOdd(row);
    orOrder.Columns["TAXFLAG"] = bExempt ? "N" : "Y";
    orOrder.Stored["bOIIsTaxExempt"] = bExempt ? "-1" : "0";
    const bool bShipped = row.at("shipVia") == "1";
    orOrder.Columns["SHIPORPICK"] = bShipped ? "SHIP" : "PICK";
    orOrder.Stored["lDIDeliveryMethod"] = bShipped ? "1" : "0";
    orOrder.Columns["ORDDATE"] = row.at("orderDate").substr(0, 19);
    orOrder.Stored["datSubmitDate"] = row.at("orderDate").substr(0, 19);
    orOrder.Columns["POTOTAL"] = AmountText(orOrder.Total);
    orOrder.Stored["cTotalPrice"] = std::to_string(orOrder.Total);
    // Read and not taken.
    orOrder.Columns["STATUS"] = "S";
    orOrder.Columns["VENDOR"] = "taken from nowhere";
  }

  static bool IsOdd(const CsvRow& row) { return std::stoul(row.at("orderID")) % 2 == 1; }

  SourceLine LineOf(const CsvRow& product, const CsvRow& customer, const CsvRow& detail) {
    SourceLine line;
    const std::string zItemNumber = Held(product.at("productID") + " " + product.at("productName"));
    line.ItemNumber = IsOdd(detail) ? InCapitals(zItemNumber) : zItemNumber;
    line.Stored["zItemNumber"] = line.ItemNumber;
    const std::int64_t lPrice = test::WholeUnits(detail.at("unitPrice"), 4);
    const std::int64_t lFull = lPrice * std::stoll(detail.at("quantity"));
    const std::int64_t lDiscount = test::WholeUnits(detail.at("discount"), 2);
    const std::int64_t lExtended = lFull - lFull / 100 * lDiscount - lFull % 100 * lDiscount / 100;
    line.Columns["QUANTITY"] = detail.at("quantity");
    line.Stored["lQuantity"] = detail.at("quantity");
    line.Columns["UNITPRICE"] = AmountText(lPrice);
    line.Stored["cPrice"] = std::to_string(lPrice);
    line.Columns["EXTPRICE"] = AmountText(lExtended);
    line.Stored["cExtendedPrice"] = std::to_string(lExtended);
    Copy(line.Columns, line.Stored, "DESC", "zDescription", product.at("quantityPerUnit"));
    line.Stored["zShortDescription"] = line.Stored["zDescription"];
    const bool bTaxable = product.at("categoryID") > "4";
    line.Columns["TAXABLE"] = bTaxable ? "Y" : "N";
    line.Stored["bIsTaxable"] = bTaxable ? "-1" : "0";
    Copy(line.Columns, line.Stored, "CUSTNUMBER", "zCustomerPartNumber",
         customer.at("customerID") + "/" + product.at("productID"));
    Copy(line.Columns, line.Stored, "MODELNUM", "zModel", product.at("categoryID"));
    Copy(line.Columns, line.Stored, "MFGNAME", "zManufacturer", "supplier " + product.at("supplierID"));
    line.Stored["bImported"] = "-1";
    return line;
  }

  // From the last order and line to the first, so that the tables are in no order of the import.
  std::string MakeTables(Fields fields) {
    if (fields == Fields::Numbers) {
      m_oTables.Type("POHDRHIS.ORDDATE", "D");
      m_oTables.Type("POHDRHIS.POTOTAL", "N(14,4)");
      m_oTables.Type("PODTLHIS.QUANTITY", "N(8,0)");
      m_oTables.Type("PODTLHIS.UNITPRICE", "N(14,4)");
      m_oTables.Type("PODTLHIS.EXTPRICE", "N(14,4)");
    }
    for (auto order = m_oOrders.rbegin(); order != m_oOrders.rend(); ++order) {
      json& columns = m_oTables.AddOrder(order->Key, order->Columns);
      if (fields == Fields::Numbers) {
        columns["ORDDATE"] = order->Key.substr(0, 10);
      }
      for (auto line = order->Lines.rbegin(); line != order->Lines.rend(); ++line) {
        m_oTables.AddLine(order->Key, line->ItemNumber, line->Columns);
      }
    }
    return m_oTables.Make();
  }

  // Adds what a run stores to Imported; answers how many of its lines are marked.
  std::int64_t Mark() {
    std::int64_t lCounter = 0;
    std::int64_t lMarked = 0;
    for (const SourceOrder& order : m_oOrders) {
      for (const SourceLine& line : order.Lines) {
        const bool bNew = m_oNumbers.insert(test::InLowerCase(line.ItemNumber)).second;
        if (bNew) {
          lCounter = 0;
          Imported.push_back(line.ItemNumber);
          continue;
        }
        ++lMarked;
        ++lCounter;
        Imported.push_back(line.ItemNumber + " DUP " +
                           (lCounter == 1 ? "" : "(" + std::to_string(lCounter) + ")"));
        m_oNumbers.insert(test::InLowerCase(Imported.back()));
      }
    }
    return lMarked;
  }

  void ExpectImported(std::size_t lvRuns) const {
    const auto stored = Store.Query("select zItemNumber from tblOrderItem order by lOrderEntered");
    ASSERT_EQ(Imported.size(), stored.size());
    for (std::size_t l = 0; l < stored.size(); ++l) {
      ASSERT_EQ(Imported[l], stored[l][0]) << "line " << l + 1;
    }
    std::vector<test::ListedOrder> listed;
    for (const test::Row& row : Store.Query("select lOrderID from tblOrder order by lOrderID")) {
      const SourceOrder& source = m_oOrders[listed.size() % m_oOrders.size()];
      listed.push_back({std::stoi(row[0]), source.Stored.at("zPurchaseOrderNumber"),
                        source.Stored.at("datSubmitDate"), source.Total});
    }
    ASSERT_EQ(lvRuns * m_oOrders.size(), listed.size());
    for (const std::int32_t lSortOrder : {0, 1, 2, 3}) {
      SCOPED_TRACE("sort order " + std::to_string(lSortOrder));
      OrderHistory history;
      history.LoadOrders(lSortOrder);
      test::ExpectListed(history, listed, lSortOrder);
    }
    ExpectOpened(listed);
    EXPECT_EQ(std::vector<std::string>(), qm_ordering::CheckOrderStore());
  }

  // A value that the import gives, or the one of a field that it leaves alone.
  static std::string ValueOf(const Values& stored, const std::string& zvColumn) {
    const auto value = stored.find(zvColumn);
    return value != stored.end() ? value->second : zvColumn[0] == 'z' ? "" : "0";
  }

  void ExpectOpened(const std::vector<test::ListedOrder>& listed) const {
    OrderHistory history;
    history.LoadOrders();
    for (std::size_t l = 0; l < listed.size(); ++l) {
      const SourceOrder& source = m_oOrders[l % m_oOrders.size()];
      SCOPED_TRACE("order " + source.Key);
      const std::string zID = std::to_string(listed[l].OrderID);
      OrderValues expected;
      for (const auto& field : test::HeaderFields()) {
        expected.emplace_back(field.Column,
                              field.Column == "lOrderID" ? zID : ValueOf(source.Stored, field.Column));
      }
      for (std::size_t lLine = 0; lLine < source.Lines.size(); ++lLine) {
        const Values& stored = source.Lines[lLine].Stored;
        for (const auto& field : test::LineFields()) {
          expected.emplace_back("line " + std::to_string(lLine + 1) + " " + field.Column,
                                field.Column == "lOrderID" ? zID : ValueOf(stored, field.Column));
        }
      }
      const auto oEntry = history.Item(listed[l].OrderID);
      oEntry->LoadSummary();
      const auto oOrder = oEntry->OrderDetails();
      EXPECT_EQ(0, oOrder->Error().Number) << oOrder->Error().Description;
      oOrder->LoadItems();
      ExpectSame(test::ValuesOf(*oOrder), expected);
      if (HasFailure()) {
        return;
      }
    }
  }

  std::vector<SourceOrder> m_oOrders;  // in the order of their keys, the lines in that of their items
  std::set<std::wstring> m_oNumbers;   // the item numbers that are stored, in lower case
  test::LegacyTables m_oTables;
  qm_ordering::OrderHistoryImporter m_oImporter;
};

using ImportedOrdersFull = ImportedOrders;

TEST_F(ImportedOrders, OfAMadeSetAreListedAndOpenedAndTheSecondTimeMarked) {
  ImportAndLook(kMadeFolder, Fields::Texts);
  EXPECT_EQ(13U, OrderCount());
  EXPECT_EQ(44U, Imported.size());
}

TEST_F(ImportedOrdersFull, OfRealDataAreListedAndOpenedAndTheSecondTimeMarked) {
  const std::string zFolder = RealFolder();
  if (zFolder.empty()) {
    GTEST_SKIP() << "QM_ORDERING_REAL_DATA is not set: it names a folder with northwind/orders.csv, "
                    "order-details.csv, products.csv and customers.csv.";
  }
  ImportAndLook(zFolder, Fields::Numbers);
  EXPECT_EQ(830U, OrderCount());
  EXPECT_EQ(2U * 2155, Imported.size());
  EXPECT_EQ(0, Shortened) << "a value came only in part, and was compared in part";
}

}  // namespace
