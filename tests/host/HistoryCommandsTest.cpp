#include <filesystem>

#include "tests/host/HostRun.h"
#include "tests/support/StrictXml.h"

namespace {

using Json = nlohmann::json;
using test::HostRun;
using test::kCatalogue;

class HistoryCommands : public test::HostFixture {
 protected:
  void SetUp() override {
    CreateStore();
    m_zCatalogue = Write("catalogue.csv", kCatalogue);
  }

  // Submits an order with that number and those lines.
  void Submit(const std::string& zvNumber, std::vector<std::string> zvItems) const {
    zvItems.insert(zvItems.begin(), {"order", "add", "--catalogue", m_zCatalogue});
    ASSERT_EQ(0, Run(zvItems).ExitCode);
    ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=" + zvNumber}).ExitCode);
    ASSERT_EQ(0, Run({"order", "submit", "--force"}).ExitCode);
  }

  // The ids that the command shows.
  std::vector<int> Ids(const std::vector<std::string>& zvArguments) const {
    std::vector<int> ids;
    const Json data = RunJson(zvArguments).Data();
    for (const auto& order : data["orders"]) {
      ids.push_back(order["OrderID"]);
    }
    return ids;
  }

  std::string m_zCatalogue;
};

TEST_F(HistoryCommands, ShowShowsTheSubmittedOrdersInFourOrders) {
  EXPECT_EQ("No order was submitted yet.\n", Run({"history", "show"}).Out);
  Submit("b", {"B2", "1"});
  Submit("A", {"B2", "9"});
  Submit("c", {"C3", "5"});
  EXPECT_EQ((std::vector{2, 1, 3}), Ids({"history", "show"}));
  EXPECT_EQ((std::vector{2, 1, 3}), Ids({"history", "show", "--sort", "1"}));
  EXPECT_EQ((std::vector{1, 2, 3}), Ids({"history", "show", "--sort", "2"}));
  EXPECT_EQ((std::vector{3, 1, 2}), Ids({"history", "show", "--sort", "3"}));
  EXPECT_EQ(2, Run({"history", "show", "--sort", "4"}).ExitCode);
  const auto first = RunJson({"history", "show"}).Data()["orders"][0];
  EXPECT_EQ("A", first["PurchaseOrderNumber"]);
  EXPECT_EQ("168.75", first["OrderTotal"]);
  EXPECT_EQ(Store().Value("select datSubmitDate from tblOrder where lOrderID = 2"), first["SubmitDate"]);
  EXPECT_NE(std::string::npos, Run({"history", "show"}).Out.find("168.75"));
}

TEST_F(HistoryCommands, FindFindsANumberInAnyLetterCase) {
  Submit("PO-\xC3\x89", {"B2", "1"});
  Submit("po-\xC3\xA9", {"B2", "2"});
  Submit("PO-7", {"B2", "3"});
  EXPECT_EQ((std::vector{1, 2}), Ids({"history", "find", "Po-\xC3\xA9"}));
  const HostRun none = Run({"history", "find", "PO-8"});
  EXPECT_EQ(1, none.ExitCode);
  EXPECT_EQ("No submitted order has the PO number PO-8.\n", none.Out);
  // The current order has the number of the last one, and is not in the history.
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-9"}).ExitCode);
  EXPECT_EQ(1, Run({"history", "find", "PO-9"}).ExitCode);
}

TEST_F(HistoryCommands, OpenShowsAnOrderWithItsLines) {
  Submit("PO-7", {"A1", "25", "B2", "3"});
  const HostRun run = RunJson({"history", "open", "1"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("PO-7", run.Data()["PurchaseOrderNumber"]);
  EXPECT_EQ(false, run.Data()["IsCurrentOrder"]);
  EXPECT_EQ(25, run.Data()["OrderItems"][0]["Quantity"]);
  EXPECT_EQ(false, run.Data()["OrderItems"][0]["ValidQuantity"]);
  EXPECT_EQ("B2", RunJson({"history", "open", "1", "--sort", "2"}).Data()["OrderItems"][1]["ItemNumber"]);
  const std::string zText = Run({"history", "open", "1"}).Out;
  EXPECT_NE(std::string::npos, zText.find("Order 1, submitted "));
  EXPECT_NE(std::string::npos, zText.find("Total 58.3625"));
}

TEST_F(HistoryCommands, TheCurrentOrderIsNoneOfThem) {
  Submit("PO-7", {"B2", "1"});
  for (const char* zCommand : {"open", "remove", "xml"}) {
    for (const char* zID : {"2", "4711", "-1"}) {
      const HostRun run = Run({"history", zCommand, "--", zID});
      EXPECT_EQ(2, run.ExitCode) << zCommand << zID;
      EXPECT_NE(std::string::npos, run.Err.find("There is no submitted order")) << run.Err;
    }
    EXPECT_EQ(2, Run({"history", zCommand, "PO-7"}).ExitCode);
  }
  EXPECT_EQ("2", Store().Value("select count(*) from tblOrder"));
}

TEST_F(HistoryCommands, RemoveRemovesAnOrderWithItsLines) {
  Submit("PO-7", {"A1", "25", "B2", "3"});
  Submit("PO-8", {"B2", "1"});
  EXPECT_EQ("Removed order 1, PO number PO-7, with 2 lines.\n", Run({"history", "remove", "1"}).Out);
  EXPECT_EQ((std::vector{2}), Ids({"history", "show"}));
  EXPECT_EQ("1", Store().Value("select count(*) from tblOrderItem"));
  EXPECT_EQ(2, Run({"history", "remove", "1"}).ExitCode);
}

TEST_F(HistoryCommands, XmlGivesTheHistoryOrOneOrder) {
  Submit("PO & 7", {"A1", "25"});
  const auto history = test::ReadStrictly(Run({"history", "xml"}).Out);
  EXPECT_EQ("orderhistory", history.Name);
  const auto order = test::ReadStrictly(Run({"history", "xml", "1"}).Out);
  EXPECT_EQ("order", order.Name);
  EXPECT_EQ("PO & 7", order.Attributes.at("purchaseordernumber"));
  const std::string zFile = Folder.File("history.xml");
  EXPECT_EQ(zFile, RunJson({"history", "xml", "--output", zFile}).Data()["file"]);
  EXPECT_EQ("orderhistory", test::ReadStrictly(test::ReadFile(zFile)).Name);
}

TEST_F(HistoryCommands, ReorderTakesThePricesOfTodayFromACatalogue) {
  Submit("PO-7", {"A1", "20", "B2", "3", "C3", "5"});
  ASSERT_EQ(0, Run({"order", "add", "--catalogue", m_zCatalogue, "B2", "1"}).ExitCode);
  const std::string zToday =
      Write("today.csv", "ItemNumber,SellQuantity,ShipQuantity,Price\nA1,50,50,0.09\nB2,1,1,20\n");
  const HostRun run = RunJson({"history", "reorder", "1", "--catalogue", zToday});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ(Json::parse(R"([
              {"ItemNumber": "A1", "Done": "added", "Quantity": 20, "Pack": 50, "ValidQuantity": false,
               "NearestQuantities": [50]},
              {"ItemNumber": "B2", "Done": "merged", "Quantity": 4, "Pack": 1, "ValidQuantity": true,
               "Price": "20", "PriceBefore": "18.75"},
              {"ItemNumber": "C3", "Done": "refused",
               "Reason": "it is not in the catalogue, so it has no price", "Quantity": 0}])"),
            run.Data()["lines"]);
  EXPECT_EQ("81.8", Order()["TotalPrice"]);
  // The submitted order keeps its own.
  EXPECT_EQ("67.94", RunJson({"history", "open", "1"}).Data()["TotalPrice"]);
}

TEST_F(HistoryCommands, ReorderTakesTheOldPricesByName) {
  Submit("PO-7", {"A1", "20", "B2", "3"});
  EXPECT_EQ(2, Run({"history", "reorder", "1"}).ExitCode);
  EXPECT_EQ(2, Run({"history", "reorder", "1", "--old-prices", "--catalogue", m_zCatalogue}).ExitCode);
  EXPECT_EQ(0U, Order()["OrderItems"].size());
  const HostRun run = RunJson({"history", "reorder", "1", "--old-prices"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const auto order = Order();
  EXPECT_EQ(2, order["OrderID"]);
  EXPECT_EQ("57.94", order["TotalPrice"]);
  EXPECT_EQ("0.0845", order["OrderItems"][0]["Price"]);
  EXPECT_EQ(10, order["OrderItems"][0]["SellQuantity"]);
  EXPECT_EQ("TODAY", order["OrderItems"][0]["UsuallyShips"]);
}

TEST_F(HistoryCommands, ReorderedLinesWithoutPacksGetPackOne) {
  Submit("PO-7", {"A1", "20", "B2", "3"});
  Store().Run("update tblOrderItem set lSellQuantity = 0, lShipQuantity = 0 where zItemNumber = 'A1'");
  const HostRun opened = RunJson({"history", "open", "1"});
  EXPECT_EQ(0, opened.ExitCode);
  EXPECT_EQ(false, opened.Data()["QuantitiesChecked"]);
  EXPECT_NE(std::string::npos, opened.Err.find("Order 1 has a line with a pack size of 0"));
  const HostRun run = Run({"history", "reorder", "1", "--old-prices"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("note: Order 1 gives no pack size for A1; it counts as pack 1.\n", run.Err);
  EXPECT_EQ(1, Order()["OrderItems"][0]["SellQuantity"]);
  EXPECT_EQ(1, Order()["OrderItems"][0]["ShipQuantity"]);
  EXPECT_EQ(0, Run({"order", "show"}).ExitCode);
}

TEST_F(HistoryCommands, ReorderRefusesAnOldPriceOfZero) {
  Submit("PO-7", {"A1", "20", "B2", "3"});
  Store().Run("update tblOrderItem set cPrice = 0 where zItemNumber = 'A1'");
  ASSERT_EQ(0, Run({"order", "add", "--catalogue", m_zCatalogue, "A1", "10"}).ExitCode);
  const HostRun run = RunJson({"history", "reorder", "1", "--old-prices"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("its old price is 0", run.Data()["lines"][0]["Reason"]);
  EXPECT_EQ("0.0845", Order()["OrderItems"][0]["Price"]);
}

TEST_F(HistoryCommands, LinesThatAnImportFoundTwiceBecomeOne) {
  Submit("PO-7", {"A1", "20", "B2", "3"});
  Store().Run("update tblOrderItem set zItemNumber = 'A1DUP1', lSellQuantity = 10 where zItemNumber = 'B2'");
  const HostRun run = RunJson({"history", "reorder", "1", "--old-prices"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Order 1 has the item A1 twice, at 0.0845 and at 18.75; both are "
                                            "added at 0.0845."))
      << run.Err;
  ASSERT_EQ(1U, run.Data()["lines"].size());
  EXPECT_EQ(23, Order()["OrderItems"][0]["Quantity"]);
  EXPECT_EQ("1.9435", Order()["TotalPrice"]);
}

TEST_F(HistoryCommands, ReorderRefusesAnOrderWithoutLines) {
  ASSERT_EQ(0, Run({"order", "submit", "--force"}).ExitCode);
  EXPECT_EQ(1, Run({"history", "reorder", "1", "--old-prices"}).ExitCode);
}

TEST_F(HistoryCommands, ReorderEndsAtTheFirstLineThatCannotBeStored) {
  Submit("PO-7", {"A1", "20", "B2", "3", "C3", "5"});
  ASSERT_EQ(0, Run({"order", "add", "--catalogue", m_zCatalogue, "B2", "2147483647"}).ExitCode);
  const HostRun run = Run({"history", "reorder", "1", "--old-prices"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Adding item B2 failed. Added before it: 1 of 3.")) << run.Err;
  EXPECT_EQ(2U, Order()["OrderItems"].size());
}

TEST_F(HistoryCommands, WithoutAStoreSayHowToGetOne) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", ""}).ExitCode);
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"history", "show"}, {"history", "find", "x"}, {"history", "xml"}}) {
    const HostRun run = Run(arguments);
    EXPECT_EQ(3, run.ExitCode);
    EXPECT_NE(std::string::npos, run.Err.find("`qm-ordering store create` makes one")) << run.Err;
  }
}

}  // namespace
