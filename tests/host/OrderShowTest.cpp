#include <map>
#include <sstream>
#include <string>

#include "tests/host/HostRun.h"

namespace {

using test::HostRun;
using test::kCatalogue;

class OrderShow : public test::HostFixture {
 protected:
  void SetUp() override { CreateStore(); }

  void AddCatalogue() const {
    const std::string zCatalogue = Write("catalogue.csv", kCatalogue);
    ASSERT_EQ(0, Run({"order", "add", "--catalogue", zCatalogue, "C3", "6", "A1", "20", "B2", "1"}).ExitCode);
  }
};

TEST_F(OrderShow, ShowsTheLinesInAnEmptyOrderToo) {
  const HostRun run = Run({"order", "show"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Out.find("Order 1, the current order    PO number: -    0 lines\n"));
  EXPECT_NE(std::string::npos, run.Out.find("No lines.\nTotal 0.00\n"));
}

TEST_F(OrderShow, ShowsLinesInATidyTable) {
  AddCatalogue();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-7", "DeliveryInformation.City=Reims"}).ExitCode);
  const HostRun run = Run({"order", "show"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ(
      "Order 1, the current order    PO number: PO-7    3 lines\n"
      "\n"
      "DeliveryInformation\n"
      "  DeliveryMethod             0  (collected at a branch)\n"
      "  City                       Reims\n"
      "  ShippingMethod             0  (Standard Shipping)\n"
      "\n"
      "PaymentInformation\n"
      "  Method                     0  (on account)\n"
      "\n"
      "item  description       qty     pack  ships            price  extended\n"
      "────  ────────────────  ───  ─  ────  ─────────────  ───────  ────────\n"
      "C3    Cable               6  *     5  SPECIAL ORDER   2.0000     12.00\n"
      "A1    Bolt, \"M8\"         20       10  TODAY           0.0845      1.69\n"
      "B2    Zange für Löcher    1        1  1-3 DAYS       18.7500     18.75\n"
      "\n"
      "Total 32.44\n"
      "* C3: 6 is not a whole number of packs of 5; the nearest that fit are 5 or 10.\n",
      run.Out);
}

TEST_F(OrderShow, MeasuresTextsAsATerminalShowsThem) {
  const std::string zCatalogue =
      Write("c.csv",
            "ItemNumber,Price,SellQuantity,ShipQuantity,Description\n"
            "A1,1,1,1,\xE6\x97\xA5\xE6\x9C\xAC\nA2,1,1,1,e\xCC\x81t\xC3\xA9\nA3,1,1,1,abcd\n");
  ASSERT_EQ(0, Run({"order", "add", "--catalogue", zCatalogue, "--all", "1"}).ExitCode);
  const std::string zOut = Run({"order", "show"}).Out;
  // Two wide characters take four columns, a combining accent takes none.
  EXPECT_NE(std::string::npos, zOut.find("A1    \xE6\x97\xA5\xE6\x9C\xAC           1     1"));
  EXPECT_NE(std::string::npos, zOut.find("A2    e\xCC\x81t\xC3\xA9            1     1"));
  EXPECT_NE(std::string::npos, zOut.find("A3    abcd           1     1"));
}

TEST_F(OrderShow, WrapsALongDescriptionAndLosesNothing) {
  std::string zLong;
  for (int i = 0; i < 60; ++i) {
    zLong += "word" + std::to_string(i) + " ";
  }
  const std::string zCatalogue =
      Write("c.csv", "ItemNumber,Price,SellQuantity,ShipQuantity,Description\nA1,1,1,1," + zLong + "\n");
  ASSERT_EQ(0, Run({"order", "add", "--catalogue", zCatalogue, "--all", "1"}).ExitCode);
  const std::string zOut = Run({"order", "show"}).Out;
  std::istringstream lines(zOut);
  for (std::string zLine; std::getline(lines, zLine);) {
    if (zLine.find("\xE2") == std::string::npos) {
      EXPECT_LE(zLine.size(), 100U) << zLine;
    }
  }
  for (int i = 0; i < 60; ++i) {
    EXPECT_NE(std::string::npos, zOut.find("word" + std::to_string(i))) << i;
  }
}

TEST_F(OrderShow, TextsCannotMoveTheCursor) {
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.Notes=a\x1B[2Jb\nc\td\xC2\x9B"}).ExitCode);
  const std::string zOut = Run({"order", "show"}).Out;
  EXPECT_NE(std::string::npos, zOut.find("a\\x1b[2Jb\\nc\\td\\x9b\n"));
  EXPECT_EQ("a\x1B[2Jb\nc\td\xC2\x9B", Order()["DeliveryInformation"]["Notes"]);
}

TEST_F(OrderShow, SortsByTheSevenOrders) {
  AddCatalogue();
  const std::map<std::string, std::string> expected = {{"0", "C3A1B2"}, {"1", "A1B2C3"}, {"2", "A1C3B2"},
                                                       {"3", "B2C3A1"}, {"4", "A1B2C3"}, {"5", "A1B2C3"},
                                                       {"6", "A1C3B2"}};
  for (const auto& [zSort, zOrder] : expected) {
    std::string zFound;
    const auto order = RunJson({"order", "show", "--sort", zSort}).Data();
    for (const auto& line : order["OrderItems"]) {
      zFound += line["ItemNumber"];
    }
    EXPECT_EQ(zOrder, zFound) << zSort;
  }
  EXPECT_EQ(2, Run({"order", "show", "--sort", "7"}).ExitCode);
  EXPECT_EQ(2, Run({"order", "show", "--sort", "-1"}).ExitCode);
}

// The properties' names of the header's columns, where they are not the column without its tag.
std::string PropertyOf(const std::string& zvColumn) {
  static const std::map<std::string, std::string> kOthers = {
      {"lOrderID", "OrderID"},
      {"bIsCurrent", "IsCurrentOrder"},
      {"datSubmitDate", "SubmitDate"},
      {"zPurchaseOrderNumber", "PurchaseOrderNumber"},
      {"cTotalPrice", "TotalPrice"},
      {"zPOReleaseNumber", "OrderInformation/PORelease"},
      {"lPIPaymentMethod", "PaymentInformation/Method"}};
  static const std::map<std::string, std::string> kGroups = {{"OI", "OrderInformation/"},
                                                             {"DI", "DeliveryInformation/"},
                                                             {"PI", "PaymentInformation/"},
                                                             {"CC", "PaymentInformation/CreditCardDetails/"}};
  const auto other = kOthers.find(zvColumn);
  return other != kOthers.end() ? other->second : kGroups.at(zvColumn.substr(1, 2)) + zvColumn.substr(3);
}

// A stored value as the JSON form has it, by the prefix of its column.
nlohmann::json Expected(const std::string& zvColumn, const std::string& zvStored) {
  switch (zvColumn[0]) {
    case 'l':
      return std::stoi(zvStored);
    case 'b':
      return zvStored == "-1";
    default:
      return zvStored;
  }
}

TEST_F(OrderShow, JsonHoldsEveryStoredFieldOfTheHeader) {
  ASSERT_EQ(0, Run({"order", "show"}).ExitCode);
  // Every column a value of its own.
  std::string zAssignments;
  int lValue = 100;
  std::map<std::string, std::string> values;
  for (const auto& column : Store().Query("select name from pragma_table_info('tblOrder')")) {
    const std::string& zColumn = column[0];
    if (zColumn == "lOrderID" || zColumn == "bIsCurrent" || zColumn == "datSubmitDate" ||
        zColumn == "cTotalPrice") {
      continue;
    }
    const std::string zValue = zColumn[0] == 'b' ? "-1" : std::to_string(++lValue);
    values[zColumn] = zValue;
    zAssignments += (zAssignments.empty() ? "" : ", ") + zColumn + " = '" + zValue + "'";
  }
  ASSERT_EQ(50U, values.size());
  Store().Run("update tblOrder set cTotalPrice = 1234567, " + zAssignments);
  const auto order = Order();
  EXPECT_EQ(1, order["OrderID"]);
  EXPECT_EQ(true, order["IsCurrentOrder"]);
  EXPECT_TRUE(order["SubmitDate"].is_null());
  EXPECT_EQ("123.4567", order["TotalPrice"]);
  for (const auto& [zColumn, zValue] : values) {
    // Names are compared without regard to letter case: "PostCode" is "Postcode" in a column.
    std::string zPath = PropertyOf(zColumn);
    const std::size_t lPostCode = zPath.find("Postcode");
    if (lPostCode != std::string::npos) {
      zPath.replace(lPostCode, 8, "PostCode");
    }
    const nlohmann::json::json_pointer pointer("/" + zPath);
    ASSERT_TRUE(order.contains(pointer)) << zColumn << " as " << zPath;
    EXPECT_EQ(Expected(zColumn, zValue), order[pointer]) << zColumn;
  }
}

TEST_F(OrderShow, JsonHoldsEveryStoredFieldOfTheLines) {
  AddCatalogue();
  std::string zAssignments;
  std::map<std::string, std::string> values;
  int lValue = 200;
  for (const auto& column : Store().Query("select name from pragma_table_info('tblOrderItem')")) {
    const std::string& zColumn = column[0];
    if (zColumn == "lOrderEntered" || zColumn == "lOrderID" || zColumn == "lUsuallyShipsSortOrder") {
      continue;
    }
    const std::string zValue = zColumn[0] == 'b' ? "-1" : std::to_string(++lValue);
    values[zColumn] = zValue;
    zAssignments += (zAssignments.empty() ? "" : ", ") + zColumn + " = '" + zValue + "'";
  }
  ASSERT_EQ(19U, values.size());
  Store().Run("update tblOrderItem set " + zAssignments + " where zItemNumber = 'A1'");
  const auto line = Order()["OrderItems"][1];
  EXPECT_EQ(1, line["OrderID"]);
  for (const auto& [zColumn, zValue] : values) {
    const nlohmann::json expected =
        zColumn[0] == 'c' ? nlohmann::json("0.0" + zValue) : Expected(zColumn, zValue);
    // Trailing zeros of money are not shown.
    const std::string zText =
        expected.is_string() && zColumn[0] == 'c' && expected.get<std::string>().ends_with("0")
            ? expected.get<std::string>().substr(0, 5)
            : std::string();
    EXPECT_EQ(zText.empty() ? expected : nlohmann::json(zText), line[zColumn.substr(1)]) << zColumn;
  }
}

TEST_F(OrderShow, JsonTellsWhichQuantitiesAreValid) {
  AddCatalogue();
  const auto order = Order();
  EXPECT_EQ(true, order["QuantitiesChecked"]);
  EXPECT_EQ(true, order["HasInvalidQuantities"]);
  EXPECT_EQ(false, order["OrderItems"][0]["ValidQuantity"]);
  EXPECT_EQ(nlohmann::json({5, 10}), order["OrderItems"][0]["NearestQuantities"]);
  EXPECT_EQ(true, order["OrderItems"][1]["ValidQuantity"]);
  EXPECT_FALSE(order["OrderItems"][1].contains("NearestQuantities"));
}

TEST_F(OrderShow, ALineWithPackSizeZeroIsNamedAndTheOrderShownUnchecked) {
  AddCatalogue();
  Store().Run("update tblOrderItem set lSellQuantity = 0 where zItemNumber in ('A1', 'C3')");
  const HostRun run = Run({"order", "show"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ(
      0U, run.Err.find("error 11: The sell quantity of item \"C3\" is 0. The pack size of C3 and A1 is 0, "))
      << run.Err;
  EXPECT_NE(std::string::npos, run.Out.find("Zange"));
  EXPECT_EQ(std::string::npos, run.Out.find("*"));
  const HostRun json = RunJson({"order", "show"});
  EXPECT_EQ(1, json.ExitCode);
  EXPECT_EQ(11, json.Messages()[0]["error"]["number"]);
  EXPECT_EQ(3U, json.Data()["OrderItems"].size());
  EXPECT_EQ(false, json.Data()["QuantitiesChecked"]);
  EXPECT_TRUE(json.Data()["HasInvalidQuantities"].is_null());
  EXPECT_TRUE(json.Data()["OrderItems"][0]["ValidQuantity"].is_null());
}

TEST_F(OrderShow, APackSizeZeroOfTheOtherDeliveryMethodDoesNotMatter) {
  AddCatalogue();
  Store().Run("update tblOrderItem set lShipQuantity = 0");
  EXPECT_EQ(0, Run({"order", "show"}).ExitCode);
}

TEST_F(OrderShow, AStoreThatIsNoneIsAnErrorRecordThatNamesIt) {
  Write("Orders.mdb", "this is no store");
  const HostRun run = Run({"order", "show"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_EQ(0U, run.Err.find("error 5: -2147467259 : ")) << run.Err;
  EXPECT_NE(std::string::npos, run.Err.find(Folder.File("Orders.mdb")));
  EXPECT_EQ("this is no store", test::ReadFile(Folder.File("Orders.mdb")));
}

TEST_F(OrderShow, WithoutAnyStoreSaysHowToGetOne) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", ""}).ExitCode);
  const HostRun run = Run({"order", "show"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("`qm-ordering store create` makes one"));
}

}  // namespace
