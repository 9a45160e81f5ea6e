#include "qm_ordering/history/OrderHistoryImporter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"

namespace {

using nlohmann::json;
using qm_ordering::ImportPreview;
using qm_ordering::ImportProgress;
using qm_ordering::LastFailure;
using qm_ordering::OrderHistoryImporter;
using test::Rows;
namespace failure = qm_ordering::failure;

constexpr const char* kFailed = "Failed: Could not find Order History database";
constexpr const char* kStarted = "Order History import log started on 7/4/2003 3:04:05 PM\r\n\r\n";
constexpr const char* kRule = "\r\n===============================================\r\n\r\n";

class OrderHistoryImporterTest : public test::StoreFixture {
 protected:
  // Imports the tables and expects that many orders.
  void Import(std::int32_t lvExpected, bool bvWriteLog = false) {
    qm_ordering::ClearLastFailure();
    EXPECT_EQ(lvExpected, Importer.ApplyImports(Tables.Make(), bvWriteLog));
    EXPECT_EQ("", LastFailure().Description);
  }

  // Imports the tables, expects a failure with that number, and that nothing changed. Answers why.
  std::string Refused(std::int32_t lvNumber) {
    const Rows before = Store.Everything();
    qm_ordering::ClearLastFailure();
    EXPECT_EQ(0, Importer.ApplyImports(Tables.Make()));
    EXPECT_EQ(kFailed, Importer.LogHeader());
    EXPECT_EQ(lvNumber, LastFailure().Number) << LastFailure().Description;
    EXPECT_EQ("OrderHistoryImporter.ApplyImports", LastFailure().Operation);
    EXPECT_EQ(before, Store.Everything());
    return LastFailure().Description;
  }

  std::vector<std::string> StoredItems() const {
    std::vector<std::string> items;
    for (const auto& row : Store.Query("select zItemNumber from tblOrderItem order by lOrderEntered")) {
      items.push_back(row[0]);
    }
    return items;
  }

  std::string LogFile() const { return test::ReadFile(Folder.File("Order_History_Import_Log.txt")); }

  test::LegacyTables Tables;
  OrderHistoryImporter Importer;
};

TEST_F(OrderHistoryImporterTest, StartsWithEmptyTexts) {
  EXPECT_EQ("", Importer.LogHeader());
  EXPECT_EQ("", Importer.LogBody());
}

// Each column of an order with a value of its own.
TEST_F(OrderHistoryImporterTest, PutsEachColumnOfAnOrderInItsPlace) {
  const std::map<std::string, std::string> copied = {
      {"PONUM", "zPurchaseOrderNumber"},
      {"STADDRESS1", "zDIAddress1"},
      {"STADDRESS2", "zDIAddress2"},
      {"STCITY", "zDICity"},
      {"STSTATE", "zDIState"},
      {"STZIP", "zDIZipOrPostCode"},
      {"SPECIALINS", "zOIAttention"},
      {"BTADDRESS1", "zCCAddress1"},
      {"BTADDRESS2", "zCCAddress2"},
      {"BTCITY", "zCCCity"},
      {"BTSTATE", "zCCState"},
      {"BTZIP", "zCCZipOrPostCode"},
      {"TAXNO", "zOITaxIDNumber"},
      {"BTTELEPHON", "zCCPhoneNumber"},
      {"STTELEPHON", "zDIPhoneNumber"},
      {"ACCTNUMBER", "zPIMorvaneAccountNumber"},
      {"DEPARTMENT", "zOIDepartment"},
      {"PROJECTJOB", "zOIProjectOrJobNumber"},
      {"REQAPPNAME", "zOIRequisitionOrApprovalName"},
      {"PROCCOMMT1", "zCCComment1"},
      {"PROCCOMMT2", "zCCComment2"},
      {"PROCCOMMT3", "zCCComment3"},
      {"PROCCOMMT4", "zCCComment4"},
      {"BTCOUNTRY", "zCCCountry"},
      {"STCOUNTRY", "zDICountry"},
  };
  json& order = Tables.AddOrder("1");
  for (const auto& [zLegacy, zStore] : copied) {
    order[zLegacy] = "  value of " + zLegacy + ", \xC3\xA9'\"";
  }
  order["STATTN"] = "Mary Ann Smith";
  order["BTATTN"] = "Bo Li";
  order["ORDDATE"] = "2003-07-04";
  order["POTOTAL"] = "  1234.5678 ";
  order["TAXFLAG"] = "N";
  order["SHIPORPICK"] = "SHIP";
  Tables.AddLine("1", "A-1");
  Import(1);
  for (const auto& [zLegacy, zStore] : copied) {
    EXPECT_EQ("  value of " + zLegacy + ", \xC3\xA9'\"", Store.Value("select " + zStore + " from tblOrder"))
        << zStore;
  }
  EXPECT_EQ(
      (Rows{{"Mary", "Ann Smith", "Bo", "Li", "2003-07-04 00:00:00", "12345678", "-1", "1", "0"}}),
      Store.Query("select zDIFirstName, zDILastName, zCCFirstName, zCCLastName, datSubmitDate, cTotalPrice, "
                  "bOIIsTaxExempt, lDIDeliveryMethod, bIsCurrent from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, PutsEachColumnOfALineInItsPlace) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "A-1",
                 {{"QUANTITY", "12"},
                  {"UNITPRICE", "1.25"},
                  {"EXTPRICE", "15.01"},
                  {"DESC", "  Claw \xC3\xA9-hammer"},
                  {"TAXABLE", "Y"},
                  {"CUSTNUMBER", "C-9"},
                  {"MODELNUM", "M-8"},
                  {"MFGNAME", "O'Brannock"},
                  {"LINENUM", "3"},
                  {"DATE", "x"},
                  {"MSDS", "y"},
                  {"COMMENTS1", "z"}});
  Import(1);
  EXPECT_EQ((Rows{{"1", "A-1", "12", "12500", "150100", "  Claw \xC3\xA9-hammer", "  Claw \xC3\xA9-hammer",
                   "-1", "C-9", "M-8", "O'Brannock", "-1", "0", "0", "NULL"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, cPrice, cExtendedPrice, zShortDescription, "
                        "zDescription, bIsTaxable, zCustomerPartNumber, zModel, zManufacturer, bImported, "
                        "lSellQuantity, lShipQuantity, zCustomerNotes from tblOrderItem"));
}

TEST_F(OrderHistoryImporterTest, JoinsTheSecondAndThirdLinesOfAnAddress) {
  Tables.AddOrder("1", {{"STADDRESS2", "Hall 3"}, {"STADDRESS3", "Gate 2"}, {"BTADDRESS2", "a"}});
  Tables.AddOrder("2", {{"STADDRESS3", "Gate 2"}, {"BTADDRESS2", "a"}, {"BTADDRESS3", "b"}});
  Tables.AddOrder("3");
  for (const char* zKey : {"1", "2", "3"}) {
    Tables.AddLine(zKey, "A-1");
  }
  Import(3);
  EXPECT_EQ((Rows{{"Hall 3, Gate 2", "a"}, {", Gate 2", "a, b"}, {"NULL", "NULL"}}),
            Store.Query("select zDIAddress2, zCCAddress2 from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, SplitsAttentionNamesAtTheFirstSpace) {
  const std::vector<std::pair<std::string, test::Row>> names = {
      {"Mary Ann Smith", {"Mary", "Ann Smith"}},
      {"John  Smith", {"John", " Smith"}},
      {"Cher", {"Cher", ""}},
      {"  Zo\xC3\xAB O'Hara", {"Zo\xC3\xAB", "O'Hara"}},
      {"", {"NULL", "NULL"}},
  };
  Rows expected;
  for (const auto& [zName, parts] : names) {
    const std::string zKey = std::to_string(expected.size());
    Tables.AddOrder(zKey, {{"STATTN", zName}, {"BTATTN", zName}});
    Tables.AddLine(zKey, "A-1");
    expected.push_back({parts[0], parts[1], parts[0], parts[1]});
  }
  Import(static_cast<std::int32_t>(names.size()));
  EXPECT_EQ(expected,
            Store.Query("select zDIFirstName, zDILastName, zCCFirstName, zCCLastName from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, TakesTheLettersOfFlagsAsWritten) {
  const std::vector<std::pair<std::string, std::string>> flags = {
      {"N", "SHIP"}, {"n", "ship"}, {"Y", "PICK"}, {"", ""}, {"NO", "SHIPPED"}, {" N", " SHIP"}};
  for (std::size_t i = 0; i < flags.size(); ++i) {
    const std::string zKey = std::to_string(i);
    Tables.AddOrder(zKey, {{"TAXFLAG", flags[i].first}, {"SHIPORPICK", flags[i].second}});
    Tables.AddLine(zKey, "A-1",
                   {{"TAXABLE", i == 0   ? "Y"
                                : i == 1 ? "y"
                                : i == 2 ? "N"
                                : i == 3 ? ""
                                         : "YES"}});
  }
  Import(6);
  EXPECT_EQ((Rows{{"-1", "1"}, {"0", "0"}, {"0", "0"}, {"0", "0"}, {"0", "0"}, {"0", "0"}}),
            Store.Query("select bOIIsTaxExempt, lDIDeliveryMethod from tblOrder"));
  EXPECT_EQ((Rows{{"-1"}, {"0"}, {"0"}, {"0"}, {"0"}, {"0"}}),
            Store.Query("select bIsTaxable from tblOrderItem"));
}

TEST_F(OrderHistoryImporterTest, OfTablesWithoutRowsIsNoneAndNoFailure) {
  Settings->User["LogPath"] = Folder.Path();
  Import(0, true);
  EXPECT_EQ(std::string("Previous Order History database is empty.\r\n\r\n") + kRule, Importer.LogBody());
  EXPECT_EQ(std::string(kStarted) + "Success:\t0 purchase orders imported.", Importer.LogHeader());
  EXPECT_EQ(Importer.LogHeader() + "\r\n" + Importer.LogBody() + "\r\n", LogFile());
}

TEST_F(OrderHistoryImporterTest, CountsAThousandOrdersWithoutASeparator) {
  for (int i = 0; i < 1000; ++i) {
    const std::string zKey = std::to_string(i);
    Tables.AddOrder(zKey);
    Tables.AddLine(zKey, "A-1");
  }
  Import(1000);
  EXPECT_EQ(std::string(kStarted) + "Success:\t1000 purchase orders imported.", Importer.LogHeader());
}

TEST_F(OrderHistoryImporterTest, OfOrdersWithoutLinesAndLinesWithoutAnOrderIsNone) {
  Tables.AddOrder("1");
  Tables.AddLine("2", "A-1");
  Tables.AddOrder("");
  Tables.AddLine("", "A-1");
  Import(0);
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, BeginsAnOrderForEachKeyAlsoWhenNumbersAreTheSame) {
  for (const char* zKey : {"b", "a", "A"}) {
    Tables.AddOrder(zKey, {{"PONUM", "PO-7"}, {"STCITY", zKey}});
    Tables.AddLine(zKey, "B-2");
    Tables.AddLine(zKey, "A-1");
  }
  Import(3);
  // By bytes: capitals before small letters. Within an order by item number.
  EXPECT_EQ((Rows{{"1", "PO-7", "A"}, {"2", "PO-7", "a"}, {"3", "PO-7", "b"}}),
            Store.Query("select lOrderID, zPurchaseOrderNumber, zDICity from tblOrder"));
  EXPECT_EQ("A-1", StoredItems().at(0));
  EXPECT_EQ("2", Store.Value("select count(*) from tblOrderItem where lOrderID = 2"));
}

// Each line comes once for each of the rows that its key joins it to.
TEST_F(OrderHistoryImporterTest, BeginsOneOrderForTwoRowsOfOneKey) {
  Tables.AddOrder("1", {{"PONUM", "PO-7"}});
  Tables.AddOrder("1", {{"PONUM", "PO-7"}});
  Tables.AddLine("1", "X");
  Import(1);
  EXPECT_EQ((Rows{{"1", "PO-7"}}), Store.Query("select lOrderID, zPurchaseOrderNumber from tblOrder"));
  EXPECT_EQ((std::vector<std::string>{"X", "X DUP "}), StoredItems());
}

TEST_F(OrderHistoryImporterTest, OrdersTheLinesOfAnOrderWithoutRegardToLetterCase) {
  Tables.AddOrder("1");
  for (const char* zItem : {"C", "b", "", "A"}) {
    Tables.AddLine("1", zItem);
  }
  Import(1);
  EXPECT_EQ((std::vector<std::string>{"", "A", "b", "C"}), StoredItems());
}

TEST_F(OrderHistoryImporterTest, MarksALineWithoutAnItemNumberToo) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "");
  Tables.AddLine("1", "");
  Import(1);
  EXPECT_EQ((std::vector<std::string>{"", " DUP "}), StoredItems());
}

TEST_F(OrderHistoryImporterTest, MarksAnItemNumberThatTheStoreHas) {
  Tables.AddOrder("1");
  Tables.AddOrder("2");
  Tables.AddLine("1", "X");
  Tables.AddLine("1", "X");
  Tables.AddLine("1", "X");
  Tables.AddLine("2", "x");
  Tables.AddLine("2", "Y");
  Tables.AddLine("2", "Y");
  Import(2);
  // The count goes on from one order to the next, and begins anew behind a line that is new.
  EXPECT_EQ((std::vector<std::string>{"X", "X DUP ", "X DUP (2)", "x DUP (3)", "Y", "Y DUP "}),
            StoredItems());
}

TEST_F(OrderHistoryImporterTest, MarksAnItemNumberThatStoodInTheStoreBefore) {
  qm_ordering::CurrentOrder order;
  const auto oItem = std::make_shared<qm_ordering::OrderItem>();
  oItem->ItemNumber("\xC3\x89-1");
  oItem->Quantity(1);
  order.AddItem(oItem);
  ASSERT_EQ(0, order.Error().Number);
  Tables.AddOrder("1");
  Tables.AddLine("1", "A-0");
  Tables.AddLine("1", "\xC3\xA9-1");
  Import(1);
  EXPECT_EQ((std::vector<std::string>{"\xC3\x89-1", "A-0", "\xC3\xA9-1 DUP "}), StoredItems());
}

TEST_F(OrderHistoryImporterTest, RunTwiceImportsTwice) {
  Tables.AddOrder("1", {{"PONUM", "PO-7"}});
  Tables.AddLine("1", "A");
  Tables.AddLine("1", "B");
  Import(1);
  Import(1);
  EXPECT_EQ((std::vector<std::string>{"A", "B", "A DUP ", "B DUP (2)"}), StoredItems());
  EXPECT_EQ("2", Store.Value("select count(*) from tblOrder where zPurchaseOrderNumber = 'PO-7'"));
}

TEST_F(OrderHistoryImporterTest, TakesItemNumbersAsTheyAre) {
  const std::vector<std::string> items = {"", "  lead", "it's", "o''o", "a = 'b'", "\xC3\xA9tag\xC3\xA8re"};
  Tables.AddOrder("1");
  for (const std::string& zItem : items) {
    Tables.AddLine("1", zItem);
  }
  Import(1);
  for (const std::string& zItem : items) {
    EXPECT_EQ("1",
              Store.Value("select count(*) from tblOrderItem where zItemNumber = " + test::Quoted(zItem)))
        << zItem;
  }
  Import(1);
  EXPECT_EQ("1", Store.Value("select count(*) from tblOrderItem where zItemNumber like 'it''s DUP%'"));
}

TEST_F(OrderHistoryImporterTest, ReadsNumbersAsPeopleWriteThem) {
  const std::vector<std::pair<std::string, std::string>> amounts = {
      {"", "0"},
      {"12", "120000"},
      {"1,234.50", "12345000"},
      {"$5.00", "50000"},
      {"-$5.25", "-52500"},
      {"$-5.25", "-52500"},
      {" 7.5", "75000"},
      {"1,234,567", "12345670000"},
      {".5", "5000"},
      {"0.00005", "0"},
      {"0.00015", "2"},
      {"+3", "30000"},
      {"922337203685477.5807", "9223372036854775807"}};
  Rows expected;
  Tables.AddOrder("1");
  for (const auto& [zAmount, zScaled] : amounts) {
    Tables.AddLine("1", std::to_string(100 + expected.size()), {{"UNITPRICE", zAmount}});
    expected.push_back({zScaled});
  }
  Import(1);
  EXPECT_EQ(expected, Store.Query("select cPrice from tblOrderItem"));
}

TEST_F(OrderHistoryImporterTest, RoundsQuantitiesHalfToEven) {
  const std::vector<std::pair<std::string, std::string>> quantities = {
      {"2.5", "2"}, {"3.5", "4"}, {"-1", "-1"}, {"1,000", "1000"}, {"", "0"}, {"2147483647", "2147483647"}};
  Rows expected;
  Tables.AddOrder("1");
  for (const auto& [zQuantity, zStored] : quantities) {
    Tables.AddLine("1", std::to_string(expected.size()), {{"QUANTITY", zQuantity}});
    expected.push_back({zStored});
  }
  Import(1);
  EXPECT_EQ(expected, Store.Query("select lQuantity from tblOrderItem"));
}

TEST_F(OrderHistoryImporterTest, ReadsNumericFieldsLikeTexts) {
  Tables.Type("PODTLHIS.QUANTITY", "N(8,2)");
  Tables.Type("PODTLHIS.UNITPRICE", "N(12,4)");
  Tables.Type("PODTLHIS.EXTPRICE", "F(12,2)");
  Tables.Type("POHDRHIS.POTOTAL", "N(12,2)");
  Tables.AddOrder("1", {{"POTOTAL", "99.5"}});
  Tables.AddLine("1", "A", {{"QUANTITY", "2.5"}, {"UNITPRICE", "0.1234"}, {"EXTPRICE", "7.25"}});
  Tables.AddLine("1", "B");
  Import(1);
  EXPECT_EQ((Rows{{"2", "1234", "72500"}, {"0", "0", "0"}}),
            Store.Query("select lQuantity, cPrice, cExtendedPrice from tblOrderItem"));
  EXPECT_EQ("995000", Store.Value("select cTotalPrice from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, ReadsTheNumbersOfFoxPro) {
  Tables.Kind("vfp");
  Tables.Type("PODTLHIS.QUANTITY", "I");
  Tables.Type("PODTLHIS.UNITPRICE", "Y");
  Tables.Type("PODTLHIS.EXTPRICE", "B");
  Tables.Type("POHDRHIS.POTOTAL", "B");
  Tables.AddOrder("1", {{"POTOTAL", "99.5"}});
  Tables.AddLine("1", "A", {{"QUANTITY", "-7"}, {"UNITPRICE", "0.25"}, {"EXTPRICE", "0.00005"}});
  Tables.AddLine("1", "B", {{"QUANTITY", "2"}, {"UNITPRICE", "3"}, {"EXTPRICE", "0.00075"}});
  Import(1);
  EXPECT_EQ((Rows{{"-7", "2500", "0"}, {"2", "30000", "8"}}),
            Store.Query("select lQuantity, cPrice, cExtendedPrice from tblOrderItem"));
  EXPECT_EQ("995000", Store.Value("select cTotalPrice from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, RefusesTextsThatAreNoNumber) {
  Tables.AddOrder("1", {{"PONUM", "PO-7"}});
  for (const char* zText :
       {"abc", "1,5", "1,23,456", "12 34", "$", "-", "1.2.3", "0x10", "12-", ",123", "1234,567"}) {
    json& line = Tables.AddLine("1", "A-1", {{"UNITPRICE", zText}});
    const std::string zWhy = Refused(failure::kTypeMismatch);
    for (const char* zWord : {"PO-7", "A-1", "UNITPRICE"}) {
      EXPECT_NE(std::string::npos, zWhy.find(zWord)) << zWhy;
    }
    line["UNITPRICE"] = "1";
  }
}

TEST_F(OrderHistoryImporterTest, RefusesNumbersOutOfRange) {
  Tables.AddOrder("1", {{"POTOTAL", "922337203685477.5808"}});
  Tables.AddLine("1", "A-1", {{"QUANTITY", "1"}});
  Refused(failure::kOverflow);
  Tables.AddOrder("2");
  Tables.AddLine("0", "B-2", {{"QUANTITY", "2147483648"}});
  Tables.AddOrder("0");
  EXPECT_NE(std::string::npos, Refused(failure::kOverflow).find("QUANTITY"));
}

TEST_F(OrderHistoryImporterTest, ReadsDatesInFiveForms) {
  const std::vector<std::pair<std::string, std::string>> dates = {
      {"2003-07-04", "2003-07-04 00:00:00"}, {"2003-07-04 15:04:05", "2003-07-04 15:04:05"},
      {"20030704", "2003-07-04 00:00:00"},   {"7/4/2003", "2003-07-04 00:00:00"},
      {"07/04/03", "2003-07-04 00:00:00"},   {"12/31/99", "1999-12-31 00:00:00"},
      {"1/1/30", "1930-01-01 00:00:00"},     {"1/1/29", "2029-01-01 00:00:00"},
      {" 7/4/2003", "2003-07-04 00:00:00"},  {"", "NULL"}};
  Rows expected;
  for (const auto& [zDate, zStored] : dates) {
    const std::string zKey = std::to_string(expected.size());
    Tables.AddOrder(zKey, {{"ORDDATE", zDate}});
    Tables.AddLine(zKey, "A");
    expected.push_back({zStored});
  }
  Import(static_cast<std::int32_t>(dates.size()));
  EXPECT_EQ(expected, Store.Query("select datSubmitDate from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, ReadsDateFields) {
  Tables.Type("POHDRHIS.ORDDATE", "D");
  Tables.AddOrder("1", {{"ORDDATE", "1996-07-04"}});
  Tables.AddOrder("2", {{"ORDDATE", ""}});
  Tables.AddLine("1", "A");
  Tables.AddLine("2", "A");
  Import(2);
  EXPECT_EQ((Rows{{"1996-07-04 00:00:00"}, {"NULL"}}), Store.Query("select datSubmitDate from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, RefusesTextsThatAreNoDate) {
  json& order = Tables.AddOrder("1");
  Tables.AddLine("1", "A");
  for (const char* zText :
       {"soon", "2003-02-30", "20031301", "2003070", "13/1/2003", "1/1/123", "1/1", "1/1/2003x", "-1/1/03"}) {
    order["ORDDATE"] = zText;
    EXPECT_NE(std::string::npos, Refused(failure::kTypeMismatch).find(zText)) << zText;
  }
}

TEST_F(OrderHistoryImporterTest, KeepsAnAccountOfWhatItImported) {
  Tables.AddOrder("1", {{"PONUM", "A100"}});
  Tables.AddLine("1", "1A234", {{"DESC", "HAMMER"}});
  Tables.AddLine("1", "1A235", {{"DESC", "NAILS"}});
  Tables.AddOrder("2");
  Tables.AddLine("2", "1a235", {{"DESC", "caf\xC3\xA9"}});
  Tables.AddLine("2", "", {{"DESC", ""}});
  Settings->User["LogPath"] = Folder.Path();
  Import(2);
  EXPECT_FALSE(std::filesystem::exists(Folder.File("Order_History_Import_Log.txt")));
  Store.Run("delete from tblOrder; delete from tblOrderItem");
  Import(2, true);
  const std::string zBody = std::string(kRule) +
                            "PO Number: A100\r\n\r\nITEM #\t\tDESCRIPTION\r\n\r\n"
                            "1A234\t\tHAMMER\r\n1A235\t\tNAILS\r\n" +
                            kRule +
                            "PO Number: \r\n\r\nITEM #\t\tDESCRIPTION\r\n\r\n"
                            "\t\t\r\n1a235 DUP \t\tcaf\xC3\xA9\r\n" +
                            kRule;
  const std::string zHeader = std::string(kStarted) + "Success:\t2 purchase orders imported.";
  EXPECT_EQ(zHeader, Importer.LogHeader());
  EXPECT_EQ(zBody, Importer.LogBody());
  EXPECT_EQ(zHeader + "\r\n" + zBody + "\r\n", LogFile());
}

TEST_F(OrderHistoryImporterTest, ReplacesTheLogFileAtEachRun) {
  Settings->User["LogPath"] = Folder.Path() + "\\logs";
  std::filesystem::create_directory(Folder.File("logs"));
  const std::string zFile = Folder.File("logs/Order_History_Import_Log.txt");
  std::ofstream(zFile) << std::string(10'000, 'x');
  Tables.AddOrder("1", {{"PONUM", "A100"}});
  Tables.AddLine("1", "X");
  Import(1, true);
  EXPECT_EQ(Importer.LogHeader() + "\r\n" + Importer.LogBody() + "\r\n", test::ReadFile(zFile));
  const std::string zFirst = test::ReadFile(zFile);
  Import(1, true);
  EXPECT_EQ(zFirst.size() + 5, test::ReadFile(zFile).size()) << "the marker of the item is all that is new";
}

TEST_F(OrderHistoryImporterTest, StandsWhenItsLogCannotBeWritten) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  for (const std::string& zPath : {std::string(), Folder.File("none"), std::string("/proc")}) {
    Settings->User["LogPath"] = zPath;
    qm_ordering::ClearLastFailure();
    EXPECT_EQ(1, Importer.ApplyImports(Tables.Make(), true));
    EXPECT_NE(0, LastFailure().Number);
    EXPECT_EQ(std::string(kStarted) + "Success:\t1 purchase orders imported.", Importer.LogHeader());
  }
  EXPECT_EQ("3", Store.Value("select count(*) from tblOrder"));
}

TEST_F(OrderHistoryImporterTest, ThatFailsChangesNothingAndKeepsTheOlderLog) {
  Settings->User["LogPath"] = Folder.Path();
  Tables.AddOrder("1", {{"PONUM", "A100"}});
  Tables.AddLine("1", "X");
  Import(1, true);
  const std::string zLog = LogFile();
  const Rows before = Store.Everything();
  Tables.AddOrder("2", {{"POTOTAL", "much"}});
  Tables.AddLine("2", "Y");
  EXPECT_EQ(0, Importer.ApplyImports(Tables.Make(), true));
  EXPECT_EQ(kFailed, Importer.LogHeader());
  EXPECT_EQ(std::string(kRule) + "PO Number: A100\r\n\r\nITEM #\t\tDESCRIPTION\r\n\r\nX DUP \t\t\r\n",
            Importer.LogBody());
  EXPECT_EQ(before, Store.Everything());
  EXPECT_EQ(zLog, LogFile());
  // The next run begins with empty texts.
  Store.Run("delete from tblOrder; delete from tblOrderItem");
  test::LegacyTables empty;
  EXPECT_EQ(0, Importer.ApplyImports(empty.Make()));
  EXPECT_EQ(std::string("Previous Order History database is empty.\r\n\r\n") + kRule, Importer.LogBody());
}

TEST_F(OrderHistoryImporterTest, FailsWithoutItsFolderATableOrAColumn) {
  EXPECT_EQ(0, Importer.ApplyImports(Folder.File("none")));
  EXPECT_EQ(failure::kPathNotFound, LastFailure().Number);
  EXPECT_EQ(0, Importer.ApplyImports(""));
  EXPECT_EQ(kFailed, Importer.LogHeader());
  EXPECT_EQ(0, Importer.ApplyImports(Folder.Path()));
  EXPECT_EQ(failure::kStoreNoTable, LastFailure().Number);
  EXPECT_NE(std::string::npos, LastFailure().Description.find(Folder.Path()));
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  Tables.Without("PODTLHIS.MFGNAME");
  EXPECT_NE(std::string::npos, Refused(failure::kStoreCommand).find("MFGNAME"));
}

TEST_F(OrderHistoryImporterTest, FailsWithoutTheStore) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  const std::string zTables = Tables.Make();
  std::filesystem::remove(Store.Path());
  EXPECT_EQ(0, Importer.ApplyImports(zTables));
  EXPECT_EQ(failure::kStoreUnavailable, LastFailure().Number);
  EXPECT_EQ(kFailed, Importer.LogHeader());
}

TEST_F(OrderHistoryImporterTest, FailsOnADamagedTableWithNothingChangedAndNoWordElsewhere) {
  Tables.Type("POHDRHIS.ORDDATE", "D");
  Tables.AddOrder("1", {{"ORDDATE", "2003-07-04"}});
  Tables.AddLine("1", "X");
  Import(1);
  const std::string zFolder = Tables.Make();
  const std::string zFile = zFolder + "/POHDRHIS.DBF";
  const std::string zWhole = test::ReadFile(zFile);
  const auto changed = [&](std::size_t lvOffset, char cv) {
    std::string zBytes = zWhole;
    zBytes.at(lvOffset) = cv;
    return zBytes;
  };
  const Rows before = Store.Everything();
  for (const auto& [zBytes, zWhy] :
       {std::pair(std::string(), "it is empty"), std::pair(zWhole.substr(0, 100), "its header is to take"),
        std::pair(zWhole.substr(0, zWhole.size() - 10), "claims 1 records"),
        std::pair(changed(7, '\x7F'), "records"), std::pair(changed(10, '\x7F'), "bytes each"),
        std::pair(changed(zWhole.rfind("20030704"), 'x'), "column ORDDATE: \"x0030704\" is no date")}) {
    test::WriteFile(zFile, zBytes);
    qm_ordering::ClearLastFailure();
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, Importer.ApplyImports(zFolder));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(kFailed, Importer.LogHeader());
    EXPECT_EQ("", Importer.LogBody());
    EXPECT_EQ(failure::kStoreUnavailable, LastFailure().Number);
    EXPECT_NE(std::string::npos, LastFailure().Description.find(zFile)) << LastFailure().Description;
    EXPECT_NE(std::string::npos, LastFailure().Description.find(zWhy)) << LastFailure().Description;
  }
  std::filesystem::remove(zFile);
  std::filesystem::create_directory(zFile);
  EXPECT_EQ(0, Importer.ApplyImports(zFolder));
  EXPECT_NE(std::string::npos, LastFailure().Description.find("it is a folder"));
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderHistoryImporterTest, FindsTheTablesInAnyLetterCaseOfTheirNames) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  const std::string zFolder = Tables.Make();
  std::filesystem::rename(zFolder + "/POHDRHIS.DBF", zFolder + "/PoHdrHis.dbf");
  std::filesystem::rename(zFolder + "/PODTLHIS.DBF", zFolder + "/podtlhis.Dbf");
  EXPECT_EQ(1, Importer.ApplyImports(zFolder));
}

TEST_F(OrderHistoryImporterTest, RunsItsStatementAsItStands) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  test::TraceRecorder trace;
  Import(1);
  EXPECT_EQ((std::vector<std::string>{test::kImportStatement, "tblOrder", "tblOrderItem"}),
            trace.Statements());
}

TEST_F(OrderHistoryImporterTest, MakesOrdersThatTheHistoryOpens) {
  Tables.AddOrder("1",
                  {{"PONUM", "PO-7"}, {"ORDDATE", "7/4/1996"}, {"POTOTAL", "12.50"}, {"STCITY", "Reims"}});
  Tables.AddLine("1", "X", {{"QUANTITY", "5"}, {"UNITPRICE", "2"}, {"EXTPRICE", "10"}});
  Tables.AddLine("1", "X", {{"QUANTITY", "1"}});
  Import(1);
  qm_ordering::OrderHistory history;
  history.LoadOrders();
  ASSERT_EQ(1, history.Count());
  const auto oOrder = history.Item(1);
  EXPECT_EQ("PO-7", oOrder->PurchaseOrderNumber());
  EXPECT_EQ(qm_ordering::Date(1996, 7, 4), oOrder->SubmitDate());
  EXPECT_EQ("12.5", oOrder->OrderTotal().ToString());
  qm_ordering::OrderDetails& details = *oOrder->OrderDetails();
  details.LoadSummary();
  ASSERT_EQ(0, details.Error().Number) << details.Error().Description;
  EXPECT_FALSE(details.IsCurrentOrder());
  EXPECT_EQ("Reims", details.DeliveryInformation()->City());
  details.LoadItems();
  ASSERT_EQ(2, details.OrderItems()->Count());
  EXPECT_TRUE(details.OrderItems()->Item(1)->Imported());
  EXPECT_EQ("10", details.OrderItems()->Item(1)->ExtendedPrice().ToString());
  EXPECT_EQ("X", details.OrderItems()->Item(2)->ItemNumber()) << "what stands before the marker is shown";
  EXPECT_NE("", details.GetXML());
  // They know no packs.
  EXPECT_EQ(failure::kDivisionByZero, test::RaisedNumber([&] {
              details.LoadItems(0, false, true);
              return 0;
            }));
}

// The older program's total holds what it added to the lines.
TEST_F(OrderHistoryImporterTest, MakesOrdersWhoseTotalIsTheirOwn) {
  Tables.AddOrder("1", {{"POTOTAL", "12.50"}});
  Tables.AddLine("1", "X", {{"EXTPRICE", "10"}});
  Import(1);
  EXPECT_EQ(std::vector<std::string>(), qm_ordering::CheckOrderStore());
  EXPECT_EQ(std::vector<std::string>(), qm_ordering::RepairOrderStore());
  EXPECT_EQ("125000", Store.Value("select cTotalPrice from tblOrder"));
}

class ImportProgressTest : public OrderHistoryImporterTest {
 protected:
  ImportProgressTest() {
    for (const char* zKey : {"1", "2"}) {
      Tables.AddOrder(zKey);
      Tables.AddLine(zKey, "A");
      Tables.AddLine(zKey, "B");
    }
  }
};

TEST_F(ImportProgressTest, IsToldAtTheBeginningAndAfterEachLine) {
  std::vector<std::vector<std::int64_t>> told;
  Importer.OnProgress([&](const ImportProgress& progress) {
    told.push_back({progress.Orders, progress.Lines, progress.LinesInAll});
    return true;
  });
  Import(2);
  EXPECT_EQ((std::vector<std::vector<std::int64_t>>{{0, 0, 4}, {1, 1, 4}, {1, 2, 4}, {2, 3, 4}, {2, 4, 4}}),
            told);
  Importer.OnProgress(nullptr);
  Import(2);
  EXPECT_EQ(5U, told.size());
}

TEST_F(ImportProgressTest, MayCancelAtAnyLineWithNothingChanged) {
  const Rows before = Store.Everything();
  for (std::int64_t lStop = 0; lStop <= 4; ++lStop) {
    Importer.OnProgress([&](const ImportProgress& progress) { return progress.Lines < lStop; });
    qm_ordering::ClearLastFailure();
    EXPECT_EQ(0, Importer.ApplyImports(Tables.Make()));
    EXPECT_EQ("The import was cancelled. No purchase orders were imported.", Importer.LogHeader());
    EXPECT_EQ(Importer.LogHeader(), LastFailure().Description);
    EXPECT_EQ(failure::kInvalidCall, LastFailure().Number);
    EXPECT_EQ(before, Store.Everything());
  }
}

TEST_F(ImportProgressTest, CancelledWritesNoLog) {
  Settings->User["LogPath"] = Folder.Path();
  Importer.OnProgress([](const ImportProgress& progress) { return progress.Lines < 3; });
  EXPECT_EQ(0, Importer.ApplyImports(Tables.Make(), true));
  EXPECT_FALSE(std::filesystem::exists(Folder.File("Order_History_Import_Log.txt")));
}

TEST_F(ImportProgressTest, MayBeSetAnewByItselfForTheNextRun) {
  std::vector<std::string> told;
  // Longer than what a function holds in itself.
  Importer.OnProgress([this, &told, zName = std::string(100, 'x')](const ImportProgress&) {
    Importer.OnProgress(nullptr);
    told.push_back(zName);
    return true;
  });
  Import(2);
  EXPECT_EQ(std::vector<std::string>(5, std::string(100, 'x')), told);
  Import(2);
  EXPECT_EQ(5U, told.size());
}

TEST_F(ImportProgressTest, MayNotImportMeanwhileAndTheTextsStay) {
  const std::string zFolder = Tables.Make();
  std::vector<std::int32_t> numbers;
  Importer.OnProgress([&](const ImportProgress&) {
    qm_ordering::ClearLastFailure();
    EXPECT_EQ(0, Importer.ApplyImports(zFolder));
    numbers.push_back(LastFailure().Number);
    return true;
  });
  EXPECT_EQ(2, Importer.ApplyImports(zFolder));
  EXPECT_EQ(std::vector<std::int32_t>(5, failure::kInvalidCall), numbers);
  EXPECT_EQ(std::string(kStarted) + "Success:\t2 purchase orders imported.", Importer.LogHeader());
  EXPECT_TRUE(Importer.LogBody().starts_with(kRule)) << Importer.LogBody();
  EXPECT_NE(std::string::npos, Importer.LogBody().find("A\t\t\r\nB\t\t\r\n")) << Importer.LogBody();
  Importer.OnProgress(nullptr);
  Import(2);
}

TEST_F(ImportProgressTest, MayRaiseWithNothingChanged) {
  const Rows before = Store.Everything();
  Importer.OnProgress([&](const ImportProgress& progress) -> bool {
    if (progress.Lines == 3) {
      throw std::logic_error("the host's own");
    }
    return true;
  });
  try {
    Importer.ApplyImports(Tables.Make());
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ("the host's own", error.what());
  }
  EXPECT_EQ(kFailed, Importer.LogHeader());
  EXPECT_EQ(before, Store.Everything());
  // And the store may be used again.
  Importer.OnProgress(nullptr);
  Import(2);
}

TEST_F(ImportProgressTest, MayNotUseTheStoreMeanwhile) {
  qm_ordering::OrderHistory made;
  made.LoadOrders();
  qm_ordering::CurrentOrder order;
  int lCalls = 0;
  Importer.OnProgress([&](const ImportProgress& progress) {
    if (progress.Lines == 1) {
      const auto expectRefusal = [&](const char* zWhat, auto call) {
        EXPECT_EQ(failure::kInvalidCall, test::RaisedNumber([&] {
                    call();
                    return 0;
                  }))
            << zWhat;
        ++lCalls;
      };
      expectRefusal("a reading", [&] { made.LoadOrders(); });
      expectRefusal("a writing", [&] { made.DeleteOrder(1); });
      expectRefusal("another object", [&] { qm_ordering::OrderHistory().LoadOrders(); });
      expectRefusal("a backup", [&] { qm_ordering::BackupOrderStore(Folder.File("backup")); });
      order.LoadSummary();
      EXPECT_EQ(5, order.Error().Number);
      EXPECT_NE(std::string::npos, order.Error().Description.find("by the callback that follows an import"));
      ++lCalls;
    }
    return true;
  });
  qm_ordering::ClearLastFailure();
  EXPECT_EQ(2, Importer.ApplyImports(Tables.Make()));
  EXPECT_EQ(5, lCalls);
  qm_ordering::OrderHistory history;
  history.LoadOrders();
  EXPECT_EQ(2, history.Count());
}

class ImportPreviewTest : public OrderHistoryImporterTest {};

TEST_F(ImportPreviewTest, SaysWhatWouldComeAndChangesNothing) {
  Tables.AddOrder("1", {{"PONUM", "PO-1"}, {"ORDDATE", "20030704"}, {"POTOTAL", "5"}});
  Tables.AddLine("1", "X");
  Tables.AddLine("1", "x");
  Import(1);
  Tables.AddOrder("2", {{"PONUM", "PO-1"}, {"ORDDATE", "20030704"}, {"POTOTAL", "6"}});
  Tables.AddLine("2", "Y");
  Tables.AddLine("2", "y");
  Tables.AddOrder("3");
  Tables.AddLine("3", "Z");
  const Rows before = Store.Everything();
  const std::string zBody = Importer.LogBody();
  const ImportPreview preview = Importer.PreviewImports(Tables.Make());
  EXPECT_EQ(3, preview.Orders);
  EXPECT_EQ(5, preview.Lines);
  EXPECT_EQ(3, preview.MarkedLines);
  EXPECT_EQ(1, preview.AlreadyImported);
  EXPECT_EQ(0, preview.FailingRows);
  EXPECT_EQ(std::vector<std::string>(), preview.Failures);
  EXPECT_EQ(before, Store.Everything());
  EXPECT_EQ(zBody, Importer.LogBody());
  // As many as are marked then.
  Import(3);
  EXPECT_EQ("4", Store.Value("select count(*) from tblOrderItem where zItemNumber like '% DUP %'"));
}

TEST_F(ImportPreviewTest, CountsOrdersWithoutNumberOrDateAsImportedToo) {
  Tables.AddOrder("1");
  Tables.AddLine("1", "X");
  EXPECT_EQ(0, Importer.PreviewImports(Tables.Make()).AlreadyImported);
  Import(1);
  EXPECT_EQ(1, Importer.PreviewImports(Tables.Make()).AlreadyImported);
}

TEST_F(ImportPreviewTest, ComparesNumberDateAndTotalWithTheHistory) {
  const json imported = {{"PONUM", "\xC3\x89-7"}, {"ORDDATE", "20030704"}, {"POTOTAL", "5"}};
  json& order = Tables.AddOrder("1", imported);
  Tables.AddLine("1", "X");
  Import(1);
  const auto alreadyImported = [&](const json& changes) {
    order.update(imported);
    order.update(changes);
    return Importer.PreviewImports(Tables.Make()).AlreadyImported;
  };
  EXPECT_EQ(1, alreadyImported({{"PONUM", "\xC3\xA9-7"}, {"ORDDATE", "7/4/2003"}, {"POTOTAL", "$5.00"}}));
  for (const json& change :
       {json{{"PONUM", "\xC3\x89-8"}}, json{{"PONUM", ""}}, json{{"ORDDATE", "20030705"}},
        json{{"ORDDATE", ""}}, json{{"POTOTAL", "5.0001"}}, json{{"POTOTAL", ""}}}) {
    EXPECT_EQ(0, alreadyImported(change)) << change;
  }
}

TEST_F(ImportPreviewTest, AsksTheStoreOnceWhateverOrdersThereAre) {
  const auto statements = [&](int lvOrders) {
    test::LegacyTables tables;
    for (int i = 0; i < lvOrders; ++i) {
      tables.AddOrder(std::to_string(i));
      tables.AddLine(std::to_string(i), "X");
    }
    test::TraceRecorder trace;
    EXPECT_EQ(lvOrders, Importer.PreviewImports(tables.Make()).Orders);
    return trace.Take();
  };
  const auto ofOne = statements(1);
  EXPECT_EQ(ofOne, statements(20));
}

TEST_F(ImportPreviewTest, CountsNoOrderAsImportedForTheCurrentOne) {
  qm_ordering::CurrentOrder order;
  order.LoadSummary();
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'PO-7', datSubmitDate = null, cTotalPrice = 0");
  Tables.AddOrder("1", {{"PONUM", "PO-7"}});
  Tables.AddLine("1", "X");
  EXPECT_EQ(0, Importer.PreviewImports(Tables.Make()).AlreadyImported);
}

TEST_F(ImportPreviewTest, MarksALineThatIsStoredUnderTheMarkedNumberOfAnother) {
  Tables.AddOrder("1");
  for (const char* zItem : {"X", "X", "X", "X DUP (2)"}) {
    Tables.AddLine("1", zItem);
  }
  EXPECT_EQ(3, Importer.PreviewImports(Tables.Make()).MarkedLines);
  Import(1);
  EXPECT_EQ((std::vector<std::string>{"X", "X DUP ", "X DUP (2)", "X DUP (2) DUP (3)"}), StoredItems());
}

TEST_F(ImportPreviewTest, CountsAllRowsThatWouldFailAndSaysWhyOfTheFirstHundred) {
  Tables.AddOrder("1");
  for (int i = 100; i <= 200; ++i) {
    Tables.AddLine("1", std::to_string(i), {{"QUANTITY", "many"}});
  }
  const ImportPreview preview = Importer.PreviewImports(Tables.Make());
  EXPECT_EQ(101, preview.FailingRows);
  ASSERT_EQ(100U, preview.Failures.size());
  EXPECT_NE(std::string::npos, preview.Failures.back().find("item 199")) << preview.Failures.back();
}

TEST_F(ImportPreviewTest, NamesEachRowThatWouldFail) {
  Tables.AddOrder("1", {{"PONUM", "PO-1"}, {"ORDDATE", "soon"}});
  Tables.AddLine("1", "X", {{"UNITPRICE", "much"}});
  Tables.AddLine("1", "Y");
  Tables.AddOrder("2", {{"PONUM", "PO-2"}});
  Tables.AddLine("2", "Z", {{"QUANTITY", "99999999999"}});
  Tables.AddOrder("3", {{"POTOTAL", "much"}});
  Tables.AddLine("3", "Z");
  const ImportPreview preview = Importer.PreviewImports(Tables.Make());
  EXPECT_EQ(3, preview.Orders);
  EXPECT_EQ(4, preview.Lines);
  EXPECT_EQ(3, preview.FailingRows);
  ASSERT_EQ(4U, preview.Failures.size());
  EXPECT_NE(std::string::npos, preview.Failures[0].find("ORDDATE"));
  EXPECT_NE(std::string::npos, preview.Failures[1].find("UNITPRICE"));
  EXPECT_NE(std::string::npos, preview.Failures[2].find("QUANTITY"));
  EXPECT_NE(std::string::npos, preview.Failures[3].find("POTOTAL"));
}

TEST_F(ImportPreviewTest, RaisesWhatWouldEndTheImport) {
  EXPECT_EQ(failure::kPathNotFound, test::RaisedNumber([&] {
              Importer.PreviewImports(Folder.File("none"));
              return 0;
            }));
}

}  // namespace
