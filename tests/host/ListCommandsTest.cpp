#include <filesystem>

#include "tests/host/HostRun.h"
#include "tests/support/StrictXml.h"

namespace {

using Json = nlohmann::json;
using test::HostRun;
using test::kCatalogue;

class ListCommands : public test::HostFixture {
 protected:
  void SetUp() override {
    CreateStore();
    m_zCatalogue = Write("catalogue.csv", kCatalogue);
  }

  Json Lists() const { return RunJson({"lists", "show"}).Data()["lists"]; }

  HostRun AddItems(const std::string& zvList, std::vector<std::string> zvItems) const {
    zvItems.insert(zvItems.begin(), {"lists", "add", zvList, "--catalogue", m_zCatalogue});
    return RunJson(zvItems);
  }

  HostRun AddToOrder(std::vector<std::string> zvItems) const {
    zvItems.insert(zvItems.begin(), {"order", "add", "--catalogue", m_zCatalogue});
    return RunJson(zvItems);
  }

  // A1 at another price, B2 at none, C3 not at all.
  std::string ChangedCatalogue() const {
    return Write(
        "changed.csv",
        "ItemNumber,Description,SellQuantity,ShipQuantity,Price\nA1,Bolt,10,20,0.1\nB2,Zange,,1,0\n");
  }

  std::string m_zCatalogue;
};

TEST_F(ListCommands, CreateMakesAnEmptyListAndShowShowsIt) {
  EXPECT_EQ("There are no lists.\n", Run({"lists", "show"}).Out);
  const HostRun created = RunJson({"lists", "create", "Bob's \xC3\x89tag\xC3\xA8res"});
  ASSERT_EQ(0, created.ExitCode) << created.Err;
  EXPECT_EQ((Json{{"ListID", 1}, {"Name", "Bob's \xC3\x89tag\xC3\xA8res"}}), created.Data());
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  EXPECT_EQ(Json::parse(R"([{"ListID": 2, "Name": "Attic", "Items": 0},
                            {"ListID": 1, "Name": "Bob's Étagères", "Items": 0}])"),
            Lists());
  EXPECT_NE(std::string::npos, Run({"lists", "show"}).Out.find("Attic"));
}

TEST_F(ListCommands, CreateReplacesAListOnlyWhenAskedTo) {
  ASSERT_EQ(0, Run({"lists", "create", "Caf\xC3\xA9"}).ExitCode);
  ASSERT_EQ(0, AddItems("Caf\xC3\xA9", {"A1", "5"}).ExitCode);
  const HostRun refused = Run({"lists", "create", "CAF\xC3\x89"});
  EXPECT_EQ(1, refused.ExitCode);
  EXPECT_NE(std::string::npos, refused.Err.find("--replace"));
  EXPECT_EQ(1, Lists()[0]["Items"]);
  ASSERT_EQ(0, Run({"lists", "create", "CAF\xC3\x89", "--replace"}).ExitCode);
  EXPECT_EQ(Json::parse(R"([{"ListID": 2, "Name": "CAFÉ", "Items": 0}])"), Lists());
}

TEST_F(ListCommands, ABlankNameIsRefused) {
  for (const char* zName : {"", " \t"}) {
    EXPECT_EQ(2, Run({"lists", "create", zName}).ExitCode);
    EXPECT_EQ(2, Run({"lists", "from-order", zName}).ExitCode);
  }
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  EXPECT_EQ(2, Run({"lists", "rename", "Attic", " "}).ExitCode);
  EXPECT_EQ(1U, Lists().size());
}

TEST_F(ListCommands, ANumberIsAnIdAndAnythingElseAName) {
  ASSERT_EQ(0, Run({"lists", "create", "7"}).ExitCode);
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  EXPECT_EQ("7", RunJson({"lists", "items", "1"}).Data()["Name"]);
  EXPECT_EQ(2, RunJson({"lists", "items", "ATTIC"}).Data()["ListID"]);
  const HostRun named = Run({"lists", "items", "7"});
  EXPECT_EQ(2, named.ExitCode);
  EXPECT_NE(std::string::npos, named.Err.find("The list of that name has the id 1."));
  const HostRun near = Run({"lists", "items", "Atic"});
  EXPECT_EQ(2, near.ExitCode);
  EXPECT_NE(std::string::npos, near.Err.find("Did you mean Attic?"));
}

TEST_F(ListCommands, RenameGivesAnotherNameAndTakesNoneThatIsGiven) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, Run({"lists", "create", "Cellar"}).ExitCode);
  const HostRun refused = Run({"lists", "rename", "Attic", "CELLAR"});
  EXPECT_EQ(1, refused.ExitCode);
  EXPECT_NE(std::string::npos, refused.Err.find("\"Cellar\" already, with the id 2"));
  // Of its own name it may change the letter case.
  ASSERT_EQ(0, Run({"lists", "rename", "Attic", "ATTIC"}).ExitCode);
  const HostRun renamed = RunJson({"lists", "rename", "2", "O'Hara"});
  EXPECT_EQ((Json{{"ListID", 2}, {"Name", "O'Hara"}, {"NameBefore", "Cellar"}}), renamed.Data());
  EXPECT_EQ("ATTIC", Lists()[0]["Name"]);
  EXPECT_EQ("O'Hara", Lists()[1]["Name"]);
}

TEST_F(ListCommands, AddStoresItemsWithoutPricesAndMerges) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  const HostRun added = AddItems("Attic", {"a1", "25", "B2", "3"});
  ASSERT_EQ(0, added.ExitCode) << added.Err;
  EXPECT_EQ(Json::parse(R"([{"ItemNumber": "A1", "Done": "added", "Quantity": 25},
                            {"ItemNumber": "B2", "Done": "added", "Quantity": 3}])"),
            added.Data()["items"]);
  const HostRun merged = AddItems("1", {"A1", "5"});
  EXPECT_EQ(Json::parse(R"([{"ItemNumber": "A1", "Done": "merged", "Quantity": 30}])"),
            merged.Data()["items"]);
  EXPECT_NE(std::string::npos,
            Run({"lists", "add", "1", "--catalogue", m_zCatalogue, "A1", "1"}).Out.find("added 1 to 30"));
  const auto items = RunJson({"lists", "items", "Attic"}).Data()["OrderItems"];
  ASSERT_EQ(2U, items.size());
  EXPECT_EQ("Bolt, \"M8\"", items[0]["Description"]);
  EXPECT_EQ("O'Brannock", items[0]["Manufacturer"]);
  EXPECT_EQ(20, items[0]["ShipQuantity"]);
  EXPECT_EQ(true, items[0]["IsTaxable"]);
  EXPECT_FALSE(items[0].contains("Price"));
}

TEST_F(ListCommands, AddChecksEverythingBeforeItAddsAnything) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  EXPECT_EQ(2, AddItems("Attic", {"A1", "1", "none", "1"}).ExitCode);
  EXPECT_EQ(2, AddItems("Atticus", {"A1", "1"}).ExitCode);
  EXPECT_EQ(2, AddItems("Attic", {"A1", "0"}).ExitCode);
  EXPECT_EQ(0, Lists()[0]["Items"]);
}

TEST_F(ListCommands, AddSaysHowFarItCame) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"B2", "2147483647"}).ExitCode);
  const HostRun run = AddItems("Attic", {"A1", "1", "B2", "1", "C3", "1"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Adding item B2 failed. Added before it: 1 of 3."));
  EXPECT_NE(std::string::npos, run.Err.find("more than a list can hold"));
  EXPECT_EQ(2, Lists()[0]["Items"]);
}

TEST_F(ListCommands, RemoveRemovesAListWithItsItems) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "1", "B2", "1"}).ExitCode);
  EXPECT_EQ("Removed the list \"Attic\" with 2 items.\n", Run({"lists", "remove", "attic"}).Out);
  EXPECT_EQ(Json::array(), Lists());
  EXPECT_EQ("0", Store().Value("select count(*) from tblPersonalListItem"));
  EXPECT_EQ(2, Run({"lists", "remove", "attic"}).ExitCode);
}

TEST_F(ListCommands, XmlNamesTheListsAndExportWritesTheirItems) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "7"}).ExitCode);
  EXPECT_EQ("<personallists><personallist id=\"1\" name=\"Attic\"/></personallists>\n",
            Run({"lists", "xml"}).Out);
  const HostRun run = RunJson({"lists", "export"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const std::string zFile = Folder.File("PersonalLists.xml");
  EXPECT_EQ(zFile, run.Data()["file"]);
  EXPECT_EQ(std::filesystem::file_size(zFile), run.Data()["bytes"]);
  const auto document = test::ReadStrictly(test::ReadFile(zFile));
  EXPECT_EQ("A1", document.Children.at(0).Children.at(0).Attributes.at("itemnumber"));
}

TEST_F(ListCommands, AnExportThatFailsIsToldAndKeepsTheOldFile) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, Run({"lists", "export"}).ExitCode);
  const std::string zBefore = test::ReadFile(Folder.File("PersonalLists.xml"));
  ASSERT_EQ(0, Run({"lists", "create", "bad\x01name"}).ExitCode);
  const HostRun run = Run({"lists", "export"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("error -1072896760:")) << run.Err;
  EXPECT_EQ(zBefore, test::ReadFile(Folder.File("PersonalLists.xml")));
}

TEST_F(ListCommands, OrderPutsAListIntoTheOrderAtThePricesOfToday) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "25", "B2", "3"}).ExitCode);
  ASSERT_EQ(0, AddToOrder({"B2", "1"}).ExitCode);
  const HostRun run = RunJson({"lists", "order", "Attic", "--catalogue", m_zCatalogue});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(Json::parse(R"({"lines": [
              {"ItemNumber": "A1", "Done": "added", "Quantity": 25, "Pack": 10, "ValidQuantity": false,
               "NearestQuantities": [20, 30]},
              {"ItemNumber": "B2", "Done": "merged", "Quantity": 4, "Pack": 1, "ValidQuantity": true}],
              "TotalPrice": "77.1125"})"),
            run.Data());
  EXPECT_EQ("18.75", Order()["OrderItems"][0]["Price"]);
}

TEST_F(ListCommands, OrderSaysWhichPriceChangedAndRefusesWhatHasNone) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "10", "B2", "1", "C3", "5"}).ExitCode);
  ASSERT_EQ(0, AddToOrder({"A1", "10", "B2", "2"}).ExitCode);
  const HostRun run = RunJson({"lists", "order", "Attic", "--catalogue", ChangedCatalogue()});
  EXPECT_EQ(1, run.ExitCode);
  const auto lines = run.Data()["lines"];
  ASSERT_EQ(3U, lines.size());
  EXPECT_EQ(Json::parse(R"({"ItemNumber": "A1", "Done": "merged", "Quantity": 20, "Pack": 10,
                            "ValidQuantity": true, "Price": "0.1", "PriceBefore": "0.0845"})"),
            lines[0]);
  EXPECT_EQ("refused", lines[1]["Done"]);
  EXPECT_EQ("the catalogue has no price for it", lines[1]["Reason"]);
  EXPECT_EQ("refused", lines[2]["Done"]);
  EXPECT_EQ("it is not in the catalogue, so it has no price", lines[2]["Reason"]);
  // The good price of a line that was refused is still there, and nothing was added to it.
  EXPECT_EQ("18.75", Order()["OrderItems"][1]["Price"]);
  EXPECT_EQ(2, Order()["OrderItems"][1]["Quantity"]);
  EXPECT_EQ(2U, Order()["OrderItems"].size());
}

TEST_F(ListCommands, OrderForAPersonTellsEachLine) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "5", "C3", "5"}).ExitCode);
  ASSERT_EQ(0, AddToOrder({"A1", "10"}).ExitCode);
  const HostRun run = Run({"lists", "order", "Attic", "--catalogue", ChangedCatalogue()});
  EXPECT_EQ(1, run.ExitCode);
  for (const char* zText :
       {"added 5 to 10", "0.10, was 0.0845", "no *", "refused: it is not in the",
        "1 line merged and 1 refused.", "* A1: 15 is not a whole number of packs of 10"}) {
    EXPECT_NE(std::string::npos, run.Out.find(zText)) << zText << "\n" << run.Out;
  }
  EXPECT_EQ("", run.Err);
}

TEST_F(ListCommands, OrderKeepsTheUsersRemarksAndSaysWhatCountsAsPackOne) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "5"}).ExitCode);
  Store().Run("update tblPersonalListItem set zCustomerPartNumber = 'P-9', zCustomerNotes = 'for the roof'");
  const std::string zCatalogue = Write("nopack.csv", "ItemNumber,Price\nA1,2\n");
  const HostRun run = Run({"lists", "order", "Attic", "--catalogue", zCatalogue});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("note: The catalogue gives no pack size for A1; it counts as pack 1.\n", run.Err);
  EXPECT_EQ("P-9", Order()["OrderItems"][0]["CustomerPartNumber"]);
  EXPECT_EQ("for the roof", Order()["OrderItems"][0]["CustomerNotes"]);
}

TEST_F(ListCommands, OrderRefusesItemsWithoutAQuantityAndAnEmptyList) {
  ASSERT_EQ(0, Run({"lists", "create", "Attic"}).ExitCode);
  EXPECT_EQ(1, Run({"lists", "order", "Attic", "--catalogue", m_zCatalogue}).ExitCode);
  ASSERT_EQ(0, AddItems("Attic", {"A1", "5"}).ExitCode);
  Store().Run("update tblPersonalListItem set lQuantity = -3");
  const HostRun run = RunJson({"lists", "order", "Attic", "--catalogue", m_zCatalogue});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("its quantity is -3", run.Data()["lines"][0]["Reason"]);
  EXPECT_EQ(2, Run({"lists", "order", "Attic"}).ExitCode) << "without a catalogue there are no prices";
}

TEST_F(ListCommands, FromOrderKeepsTheOrdersLines) {
  const HostRun empty = Run({"lists", "from-order", "Attic"});
  EXPECT_EQ(1, empty.ExitCode);
  EXPECT_EQ(Json::array(), Lists());
  ASSERT_EQ(0, AddToOrder({"A1", "20", "B2", "3"}).ExitCode);
  const HostRun run = RunJson({"lists", "from-order", "Attic"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const auto lists = Lists();
  ASSERT_EQ(1U, lists.size());
  EXPECT_EQ("Attic", lists[0]["Name"]);
  EXPECT_EQ(2, lists[0]["Items"]);
  EXPECT_EQ(lists[0], run.Data());
  EXPECT_EQ(20, RunJson({"lists", "items", "Attic"}).Data()["OrderItems"][0]["Quantity"]);
  EXPECT_EQ(2U, Order()["OrderItems"].size());
}

TEST_F(ListCommands, FromOrderReplacesAListOnlyWhenAskedToAndByAWholeOne) {
  ASSERT_EQ(0, AddToOrder({"A1", "20"}).ExitCode);
  ASSERT_EQ(0, Run({"lists", "from-order", "Attic"}).ExitCode);
  ASSERT_EQ(0, AddToOrder({"B2", "3"}).ExitCode);
  EXPECT_EQ(1, Run({"lists", "from-order", "ATTIC"}).ExitCode);
  EXPECT_EQ(1, Lists()[0]["Items"]);
  // A line that the store refuses in the middle of it.
  Store().Run(
      "create trigger refuse before insert on tblPersonalListItem when new.zItemNumber = 'B2' "
      "begin select raise(abort, 'not this one'); end");
  EXPECT_EQ(1, Run({"lists", "from-order", "Attic", "--replace"}).ExitCode);
  EXPECT_EQ(Json::parse(R"([{"ListID": 1, "Name": "Attic", "Items": 1}])"), Lists());
  const HostRun other = Run({"lists", "from-order", "Cellar", "--replace"});
  EXPECT_EQ(1, other.ExitCode);
  EXPECT_EQ(std::string::npos, other.Err.find("whole")) << other.Err;
  EXPECT_EQ(1U, Lists().size());
  Store().Run("drop trigger refuse");
  ASSERT_EQ(0, Run({"lists", "from-order", "ATTIC", "--replace"}).ExitCode);
  EXPECT_EQ(Json::parse(R"([{"ListID": 4, "Name": "ATTIC", "Items": 2}])"), Lists());
}

TEST_F(ListCommands, FromOrderTakesNoListForItsOwnThatAKilledOneLeft) {
  ASSERT_EQ(0, AddToOrder({"A1", "20"}).ExitCode);
  ASSERT_EQ(0, Run({"lists", "create", "Attic (unfinished)"}).ExitCode);
  const HostRun run = Run({"lists", "from-order", "Attic"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Attic (unfinished)"));
  EXPECT_EQ(1U, Lists().size());
}

TEST_F(ListCommands, WithoutAStoreSayHowToGetOne) {
  std::filesystem::remove(Folder.File("Orders.mdb"));
  EXPECT_EQ(3, Run({"lists", "show"}).ExitCode);
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", ""}).ExitCode);
  for (const char* zCommand : {"show", "xml", "export"}) {
    const HostRun run = Run({"lists", zCommand});
    EXPECT_EQ(3, run.ExitCode);
    EXPECT_NE(std::string::npos, run.Err.find("`qm-ordering store create` makes one")) << run.Err;
  }
}

}  // namespace
