#include "tests/host/HostRun.h"

namespace {

using test::HostRun;
using test::kCatalogue;

class OrderLines : public test::HostFixture {
 protected:
  void SetUp() override {
    CreateStore();
    m_zCatalogue = Write("catalogue.csv", kCatalogue);
  }

  HostRun Add(std::vector<std::string> zvItems) const {
    zvItems.insert(zvItems.begin(), {"order", "add", "--catalogue", m_zCatalogue});
    return RunJson(zvItems);
  }

  std::string LineCount() const { return Store().Value("select count(*) from tblOrderItem"); }

  std::string m_zCatalogue;
};

TEST_F(OrderLines, AddStoresItemsAndSaysWhetherTheyFitTheirPacks) {
  const HostRun run = Add({"a1", "25", "B2", "3"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(nlohmann::json::parse(R"({"lines": [
              {"ItemNumber": "A1", "Done": "added", "Quantity": 25, "Pack": 10, "ValidQuantity": false,
               "NearestQuantities": [20, 30]},
              {"ItemNumber": "B2", "Done": "added", "Quantity": 3, "Pack": 1, "ValidQuantity": true}],
              "TotalPrice": "58.3625"})"),
            run.Data());
  EXPECT_EQ("58.3625", Order()["TotalPrice"]);
}

TEST_F(OrderLines, AddMergesIntoALineAndShowsTheNewQuantity) {
  ASSERT_EQ(0, Add({"A1", "25"}).ExitCode);
  const auto line = Add({"a1", "5"}).Data()["lines"][0];
  EXPECT_EQ("merged", line["Done"]);
  EXPECT_EQ(30, line["Quantity"]);
  EXPECT_EQ(true, line["ValidQuantity"]);
  EXPECT_EQ("1", LineCount());
  const auto order = Order();
  EXPECT_EQ(30, order["OrderItems"][0]["Quantity"]);
  EXPECT_EQ("2.535", order["TotalPrice"]);
}

TEST_F(OrderLines, AnItemThatIsNamedTwiceIsAddedWithTheSum) {
  const auto data = Add({"A1", "5", "B2", "1", "a1", "5"}).Data();
  ASSERT_EQ(2U, data["lines"].size());
  EXPECT_EQ(10, data["lines"][0]["Quantity"]);
  EXPECT_EQ(2, Add({"B2", "2147483647", "B2", "1"}).ExitCode);
}

TEST_F(OrderLines, AddForAPersonMarksTheMisfit) {
  const HostRun run = Run({"order", "add", "--catalogue", m_zCatalogue, "A1", "4"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Out.find("added 4"));
  EXPECT_NE(std::string::npos,
            run.Out.find("* A1: 4 is not a whole number of packs of 10; the nearest that fits is 10."));
  const HostRun merged = Run({"order", "add", "--catalogue", m_zCatalogue, "A1", "9"});
  EXPECT_NE(std::string::npos, merged.Out.find("added 9 to 4"));
  EXPECT_NE(std::string::npos, merged.Out.find("the nearest that fit are 10 or 20."));
}

TEST_F(OrderLines, ThePackIsTheOneOfTheDeliveryMethod) {
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.DeliveryMethod=1"}).ExitCode);
  const auto line = Add({"A1", "30"}).Data()["lines"][0];
  EXPECT_EQ(20, line["Pack"]);
  EXPECT_EQ(nlohmann::json({20, 40}), line["NearestQuantities"]);
}

TEST_F(OrderLines, AllAddsTheWholeCatalogue) {
  const HostRun run = Add({"--all", "10"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(3U, run.Data()["lines"].size());
  EXPECT_EQ("3", LineCount());
  // A progress bar is for terminals.
  EXPECT_EQ("", run.Err);
}

TEST_F(OrderLines, AnUnknownItemRefusesTheWholeCommand) {
  const HostRun run = Add({"A1", "1", "B22", "1"});
  EXPECT_EQ(2, run.ExitCode);
  const std::string zError = run.Messages()[0]["error"]["description"];
  EXPECT_NE(std::string::npos, zError.find("There is no item B22 in the catalogue"));
  EXPECT_NE(std::string::npos, zError.find("Did you mean B2"));
  EXPECT_EQ("0", LineCount());
}

TEST_F(OrderLines, WrongArgumentsOfAddAreRefusedBeforeAnythingIsAdded) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"A1"},
                                             {"A1", "1", "B2"},
                                             {"A1", "x"},
                                             {"A1", "1.5"},
                                             {"A1", "0"},
                                             {"A1", "-1"},
                                             {"A1", "2147483648"},
                                             {},
                                             {"A1", "1", "--all", "1"},
                                             {"--all", "none"}}) {
    const HostRun run = Add(arguments);
    EXPECT_EQ(2, run.ExitCode);
    EXPECT_TRUE(run.Messages().at(0)["error"]["number"].is_null());
    EXPECT_EQ("0", LineCount());
  }
}

TEST_F(OrderLines, ALineThatTheStoreRefusesIsAnErrorRecordWithItsCause) {
  // The lead time goes into the statement as it is, and a quote in it fails that.
  Write("catalogue.csv", "ItemNumber,Price,UsuallyShips\nA1,1,TODAY\nA2,1,it's here\nA3,1,TODAY\n");
  const HostRun run = Add({"--all", "1"});
  EXPECT_EQ(1, run.ExitCode);
  const auto error = run.Messages().back()["error"];
  EXPECT_EQ(4, error["number"]);
  EXPECT_EQ(-2147217900, error["cause"]["number"]);
  EXPECT_EQ("Database.OrderDetails_AddItem", error["cause"]["operation"]);
  // What came before is there, and is shown.
  ASSERT_EQ(1U, run.Data()["lines"].size());
  EXPECT_EQ("A1", run.Data()["lines"][0]["ItemNumber"]);
  EXPECT_EQ("1", LineCount());
  const HostRun text = Run({"order", "add", "--catalogue", m_zCatalogue, "A2", "1"});
  EXPECT_NE(std::string::npos, text.Err.find("warning: Adding item A2 failed. Added before it: 0 of 1."));
  EXPECT_NE(std::string::npos, text.Err.find("error 4: Order not loaded\n  caused by -2147217900: "));
}

TEST_F(OrderLines, AnOverflowIsARaisedFailureAndChangesNothing) {
  ASSERT_EQ(0, Add({"A1", "2147483640"}).ExitCode);
  const HostRun run = Add({"A1", "10"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_EQ(6, run.Messages().back()["error"]["number"]);
  EXPECT_EQ(2147483640, Order()["OrderItems"][0]["Quantity"]);
}

TEST_F(OrderLines, ItemNumbersWithTheMarkOfAnImportAreWarnedOf) {
  Write("catalogue.csv", "ItemNumber,Price,SellQuantity,ShipQuantity\nDUPLEX-1,1,1,1\n");
  const HostRun run = Add({"DUPLEX-1", "2"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("DUP"));
  // It is found by its whole number all the same.
  EXPECT_EQ(2, run.Data()["lines"][0]["Quantity"]);
  EXPECT_EQ(0, Run({"order", "quantity", "duplex-1", "5"}).ExitCode);
  EXPECT_EQ("5", Store().Value("select lQuantity from tblOrderItem"));
  EXPECT_EQ(0, Run({"order", "remove", "DUPLEX-1"}).ExitCode);
  EXPECT_EQ("0", LineCount());
}

TEST_F(OrderLines, QuantityChangesLinesAndTheirExtendedPrices) {
  ASSERT_EQ(0, Add({"A1", "10", "B2", "1", "C3", "5"}).ExitCode);
  const HostRun run = RunJson({"order", "quantity", "a1", "15", "b2", "2", "C3", "0"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const auto lines = run.Data()["lines"];
  EXPECT_EQ("changed", lines[0]["Done"]);
  EXPECT_EQ(nlohmann::json({10, 20}), lines[0]["NearestQuantities"]);
  EXPECT_EQ("removed", lines[2]["Done"]);
  EXPECT_EQ(0, lines[2]["Quantity"]);
  const auto order = Order();
  ASSERT_EQ(2U, order["OrderItems"].size());
  EXPECT_EQ("1.2675", order["OrderItems"][0]["ExtendedPrice"]);
  EXPECT_EQ("37.5", order["OrderItems"][1]["ExtendedPrice"]);
  EXPECT_EQ("38.7675", order["TotalPrice"]);
}

TEST_F(OrderLines, WrongArgumentsOfQuantityChangeNothing) {
  ASSERT_EQ(0, Add({"A1", "10", "B2", "1"}).ExitCode);
  for (const std::vector<std::string>& items : std::vector<std::vector<std::string>>{{"A1", "20", "A11", "1"},
                                                                                     {"A1", "20", "a1", "30"},
                                                                                     {"A1", "20", "B2"},
                                                                                     {"A1", "x"},
                                                                                     {"A1", "-1"},
                                                                                     {}}) {
    std::vector<std::string> arguments = {"order", "quantity"};
    arguments.insert(arguments.end(), items.begin(), items.end());
    EXPECT_EQ(2, Run(arguments).ExitCode);
  }
  EXPECT_EQ("10", Store().Value("select lQuantity from tblOrderItem where zItemNumber = 'A1'"));
  const HostRun run = Run({"order", "quantity", "A11", "1"});
  EXPECT_NE(std::string::npos, run.Err.find("The order has no item A11. Did you mean A1"));
}

TEST_F(OrderLines, AQuantityWhoseExtendedPriceOverflowsChangesNothing) {
  Write("catalogue.csv", "ItemNumber,Price,SellQuantity,ShipQuantity\nA1,922337203685477,1,1\n");
  ASSERT_EQ(0, Add({"A1", "1"}).ExitCode);
  const HostRun run = Run({"order", "quantity", "A1", "2"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error 6: "));
  EXPECT_EQ("1", Store().Value("select lQuantity from tblOrderItem"));
}

TEST_F(OrderLines, ANumberWithAQuoteFailsAsTheLibraryRaisesIt) {
  Write("catalogue.csv", "ItemNumber,Price,SellQuantity,ShipQuantity\nO'1,1,1,1\n");
  ASSERT_EQ(0, Add({"O'1", "1"}).ExitCode);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"order", "quantity", "O'1", "2"},
                                             {"order", "quantity", "O'1", "0"},
                                             {"order", "remove", "O'1"},
                                             {"order", "add", "--catalogue", m_zCatalogue, "O'1", "1"}}) {
    const HostRun run = Run(arguments);
    EXPECT_EQ(3, run.ExitCode);
    EXPECT_NE(std::string::npos, run.Err.find("error -2147217900: ")) << run.Err;
  }
  EXPECT_EQ("1", Store().Value("select lQuantity from tblOrderItem"));
}

TEST_F(OrderLines, RemoveTakesALineOut) {
  ASSERT_EQ(0, Add({"A1", "10", "B2", "1"}).ExitCode);
  const HostRun run = RunJson({"order", "remove", "b2"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("0.845", run.Data()["TotalPrice"]);
  EXPECT_EQ("removed", run.Data()["lines"][0]["Done"]);
  EXPECT_EQ("1", LineCount());
  EXPECT_EQ(2, Run({"order", "remove", "B2"}).ExitCode);
}

TEST_F(OrderLines, ItemNumbersThatLookLikeCommandsListsAndOptionsAreItemNumbers) {
  Write("catalogue.csv",
        "ItemNumber,Price,SellQuantity,ShipQuantity\nclear,1,1,1\n\"[A,B]\",1,1,1\n-X,1,1,1\n--json,1,1,1\n");
  ASSERT_EQ(0, Add({"--", "clear", "1", "[A,B]", "2", "-X", "3", "--json", "4"}).ExitCode);
  EXPECT_EQ("4", LineCount());
  for (const char* zItem : {"clear", "[A,B]", "-X", "--json"}) {
    EXPECT_EQ(0, Run({"order", "remove", "--", zItem}).ExitCode) << zItem;
  }
  EXPECT_EQ("0", LineCount());
}

TEST_F(OrderLines, AStoredPackOfZeroIsNamedInsteadOfNearestQuantities) {
  ASSERT_EQ(0, Add({"B2", "8"}).ExitCode);
  Store().Run("update tblOrderItem set lSellQuantity = 0");
  // The catalogue gives no pack either, but the stored line keeps its own.
  Write("catalogue.csv", "ItemNumber,Price\nB2,1\nD4,1\n");
  const HostRun merged = Run({"order", "add", "--catalogue", m_zCatalogue, "B2", "1", "D4", "1"});
  EXPECT_EQ(0, merged.ExitCode);
  EXPECT_NE(std::string::npos,
            merged.Out.find("* B2: its pack size is 0, so its quantity cannot be checked.\n"));
  EXPECT_EQ(std::string::npos, merged.Out.find("nearest")) << merged.Out;
  EXPECT_EQ("note: The catalogue gives no pack size for D4; it counts as pack 1.\n", merged.Err);
  const HostRun changed = Run({"order", "quantity", "B2", "7"});
  EXPECT_NE(std::string::npos,
            changed.Out.find("* B2: its pack size is 0, so its quantity cannot be checked.\n"));
  const auto line = RunJson({"order", "quantity", "B2", "6"}).Data()["lines"][0];
  EXPECT_EQ(0, line["Pack"]);
  EXPECT_TRUE(line["ValidQuantity"].is_null());
  EXPECT_FALSE(line.contains("NearestQuantities"));
}

TEST_F(OrderLines, AFailedAddOfNothingShowsNoTable) {
  Write("catalogue.csv", "ItemNumber,Price,SellQuantity,ShipQuantity\nO'1,1,1,1\nB2,1,1,1\n");
  ASSERT_EQ(0, Add({"O'1", "1"}).ExitCode);
  const HostRun none = Run({"order", "add", "--catalogue", m_zCatalogue, "O'1", "1"});
  EXPECT_EQ(3, none.ExitCode);
  EXPECT_EQ("", none.Out);
  EXPECT_NE(std::string::npos, none.Err.find("Added before it: 0 of 1."));
  const HostRun some = Run({"order", "add", "--catalogue", m_zCatalogue, "B2", "1", "O'1", "1"});
  EXPECT_EQ(3, some.ExitCode);
  EXPECT_NE(std::string::npos, some.Out.find("\nTotal "));
}

TEST_F(OrderLines, ClearRemovesAllLines) {
  ASSERT_EQ(0, Add({"A1", "10", "B2", "1"}).ExitCode);
  const HostRun run = RunJson({"order", "clear"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ(2, run.Data()["RemovedLines"]);
  EXPECT_EQ("0", run.Data()["TotalPrice"]);
  EXPECT_EQ("0", LineCount());
  EXPECT_EQ(0, Run({"store", "check"}).ExitCode);
}

}  // namespace
