#include "tests/host/HostRun.h"

namespace {

using test::HostRun;

class CatalogueFile : public test::HostFixture {
 protected:
  void SetUp() override { CreateStore(); }

  HostRun AddAll(const std::string& zvContent) {
    return RunJson({"order", "add", "--catalogue", Write("c.csv", zvContent), "--all", "1"});
  }

  // What is wrong with the catalogue; nothing must have been added.
  std::string Refusal(const std::string& zvContent) {
    const HostRun run = AddAll(zvContent);
    EXPECT_EQ(2, run.ExitCode) << zvContent;
    EXPECT_EQ("", run.Out);
    EXPECT_EQ("0", Store().Value("select count(*) from tblOrderItem"));
    const auto messages = run.Messages();
    return messages.empty() ? "" : messages.back()["error"]["description"].get<std::string>();
  }

  void ExpectRefusal(const std::string& zvContent, const std::string& zvText) {
    const std::string zRefusal = Refusal(zvContent);
    EXPECT_NE(std::string::npos, zRefusal.find(zvText)) << zRefusal;
    EXPECT_NE(std::string::npos, zRefusal.find(Folder.File("c.csv"))) << zRefusal;
  }
};

TEST_F(CatalogueFile, ColumnsMayStandInAnyOrderAndLetterCase) {
  const HostRun run = AddAll(
      "price,TAXABLE,usuallyShips,ShipQuantity,sellquantity,Model,manufacturer,shortdescription,"
      "DESCRIPTION,itemnumber\n"
      "12.3456,1,TODAY,4,3,M-1,Maker,Short,Long,A1\n");
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const auto line = Order()["OrderItems"][0];
  EXPECT_EQ("A1", line["ItemNumber"]);
  EXPECT_EQ("Long", line["Description"]);
  EXPECT_EQ("Short", line["ShortDescription"]);
  EXPECT_EQ("Maker", line["Manufacturer"]);
  EXPECT_EQ("M-1", line["Model"]);
  EXPECT_EQ(3, line["SellQuantity"]);
  EXPECT_EQ(4, line["ShipQuantity"]);
  EXPECT_EQ("TODAY", line["UsuallyShips"]);
  EXPECT_EQ(true, line["IsTaxable"]);
  EXPECT_EQ("12.3456", line["Price"]);
}

TEST_F(CatalogueFile, CountsTheLinesThatEndInACarriageReturnAlone) {
  ExpectRefusal("ItemNumber,Price\rA,1\rB,x\r", "line 3");
  ExpectRefusal("ItemNumber,Price\rA,1\r\nB,\"x\ny\"\n", "line 3");
}

TEST_F(CatalogueFile, TextsAreTakenAsTheyStand) {
  const HostRun run = AddAll(
      "\xEF\xBB\xBFItemNumber,Price,Description,Model\r\n"
      "\"A,1\",1,\"say \"\"x\"\"\r\nand\ty\", two blanks  \r\n"
      "\r\n"
      "\"[B,2]\",-0.5,\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x94\xA9 it's,\"\"\r\n");
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const auto lines = Order()["OrderItems"];
  ASSERT_EQ(2U, lines.size());
  EXPECT_EQ("A,1", lines[0]["ItemNumber"]);
  EXPECT_EQ("say \"x\"\r\nand\ty", lines[0]["Description"]);
  EXPECT_EQ(" two blanks  ", lines[0]["Model"]);
  EXPECT_EQ("[B,2]", lines[1]["ItemNumber"]);
  EXPECT_EQ("-0.5", lines[1]["Price"]);
  EXPECT_EQ("\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x94\xA9 it's", lines[1]["Description"]);
}

TEST_F(CatalogueFile, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(0, AddAll("ItemNumber,Price\nA1,1\nA2,2").ExitCode);
  EXPECT_EQ(2U, Order()["OrderItems"].size());
}

TEST_F(CatalogueFile, ABlankOrZeroPackSizeCountsAsOneAndThatIsSaid) {
  const HostRun run = AddAll(
      "ItemNumber,Price,SellQuantity,ShipQuantity\n"
      "A1,1,,5\nA2,1,0,5\nA3,1,5,0\nA4,1,5,5\n");
  ASSERT_EQ(0, run.ExitCode);
  ASSERT_EQ(1U, run.Messages().size());
  EXPECT_EQ("The catalogue gives no pack size for A1, A2 and A3; it counts as pack 1.",
            run.Messages()[0]["note"]);
  const auto lines = Order()["OrderItems"];
  EXPECT_EQ(1, lines[0]["SellQuantity"]);
  EXPECT_EQ(5, lines[0]["ShipQuantity"]);
  EXPECT_EQ(1, lines[1]["SellQuantity"]);
  EXPECT_EQ(1, lines[2]["ShipQuantity"]);
  EXPECT_EQ(5, lines[3]["SellQuantity"]);
}

TEST_F(CatalogueFile, OnlyTheItemsThatAreAddedAreNamed) {
  const std::string zFile = Write("c.csv", "ItemNumber,Price\nA1,1\nA2,1\n");
  const HostRun run = Run({"order", "add", "--catalogue", zFile, "A2", "1"});
  EXPECT_EQ("note: The catalogue gives no pack size for A2; it counts as pack 1.\n", run.Err);
}

TEST_F(CatalogueFile, AColumnThatIsNotUsedIsWarnedOf) {
  const HostRun run = AddAll("ItemNumber,Price,SelQuantity\nA1,1,10\n");
  EXPECT_EQ(0, run.ExitCode);
  const std::string zWarning = run.Messages()[0]["warning"];
  EXPECT_NE(std::string::npos, zWarning.find("\"SelQuantity\" is not used. Did you mean SellQuantity"));
}

TEST_F(CatalogueFile, AMissingColumnIsNamed) {
  ExpectRefusal("ItemNumber,Description\nA1,x\n", "line 1: there is no column Price");
  ExpectRefusal("Price\n1\n", "there is no column ItemNumber");
}

TEST_F(CatalogueFile, AColumnThatIsThereTwiceIsRefused) {
  ExpectRefusal("ItemNumber,Price,PRICE\nA1,1,1\n", "line 1: the column Price is there twice");
}

TEST_F(CatalogueFile, AnEmptyFileIsRefused) {
  ExpectRefusal("", "is empty");
  ExpectRefusal("\xEF\xBB\xBF\n\n", "is empty");
  ExpectRefusal("ItemNumber,Price\n", "holds no items");
}

TEST_F(CatalogueFile, AMissingFileIsRefused) {
  const HostRun run = Run({"order", "add", "--catalogue", Folder.File("none.csv"), "A1", "1"});
  EXPECT_EQ(2, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find(Folder.File("none.csv")));
}

TEST_F(CatalogueFile, AWrongNumberOfFieldsIsRefusedWithItsLine) {
  // The quoted field spans two lines, which count.
  ExpectRefusal("ItemNumber,Price,Description\nA1,1,\"x\ny\"\n\nA2,1\n", "line 5: the row has 2 fields");
  ExpectRefusal("ItemNumber,Price\nA1,1,2\n", "line 2: the row has 3 fields, the first row names 2 columns");
}

TEST_F(CatalogueFile, BrokenQuotingIsRefusedWithItsLine) {
  ExpectRefusal("ItemNumber,Price\nA\"1,1\n", "line 2: a quote stands");
  ExpectRefusal("ItemNumber,Price\nA0,1\n\"A1\"x,1\n", "line 3: a quote stands");
  ExpectRefusal("ItemNumber,Price\nA0,1\n\"A1,1\nA2,2\n", "line 3: the quoted field that begins in this row");
}

TEST_F(CatalogueFile, BrokenUtf8IsRefusedWithItsLine) {
  ExpectRefusal("ItemNumber,Price,Description\nA1,1,ok\nA2,1,caf\xE9\n",
                "line 3: \"caf\xEF\xBF\xBD\" is not UTF-8");
}

TEST_F(CatalogueFile, AZeroByteIsRefused) {
  ExpectRefusal(std::string("ItemNumber,Price\nA\0B,1\n", 24), "line 2: \"A\\x00B\" holds a zero byte");
}

TEST_F(CatalogueFile, MalformedNumbersAreRefusedWithLineAndColumn) {
  const std::string zHeader = "ItemNumber,Price,SellQuantity,ShipQuantity\n";
  ExpectRefusal(zHeader + "A1,x,1,1\n", "line 2: Price: \"x\" is not a price");
  ExpectRefusal(zHeader + "A1,,1,1\n", "line 2: Price: \"\" is not a price");
  ExpectRefusal(zHeader + "A1,\"1,5\",1,1\n", "Price: \"1,5\" is not a price");
  ExpectRefusal(zHeader + "A1,1.00005,1,1\n", "has more than four decimals");
  ExpectRefusal(zHeader + "A1,922337203685477.5808,1,1\n", "within the range of money");
  ExpectRefusal(zHeader + "A1,1,1.5,1\n", "SellQuantity: \"1.5\" is not a pack size");
  ExpectRefusal(zHeader + "A1,1,1,2147483648\n", "ShipQuantity: \"2147483648\" is not a pack size");
  ExpectRefusal(zHeader + "A1,1,-5,1\n", "SellQuantity: \"-5\" is not a pack size");
  ExpectRefusal("ItemNumber,Price,Taxable\nA1,1,maybe\n", "Taxable: \"maybe\" does not say");
}

TEST_F(CatalogueFile, ABlankItemNumberIsRefused) {
  ExpectRefusal("ItemNumber,Price\n  ,1\n", "line 2: ItemNumber: the item number is blank");
}

TEST_F(CatalogueFile, ADuplicateItemNumberIsRefusedInAnyLetterCase) {
  ExpectRefusal(
      "ItemNumber,Price\n\xC3\xA4"
      "b,1\n\xC3\x84"
      "B,1\n",
      "line 3: the item number \xC3\x84"
      "B is in the catalogue already");
}

TEST_F(CatalogueFile, MoneyIsExactToTheEndsOfItsRange) {
  ASSERT_EQ(0, AddAll("ItemNumber,Price\nA1,922337203685477.5807\nA2,-922337203685477.5808\n").ExitCode);
  const auto order = Order();
  EXPECT_EQ("922337203685477.5807", order["OrderItems"][0]["ExtendedPrice"]);
  EXPECT_EQ("-922337203685477.5808", order["OrderItems"][1]["Price"]);
  EXPECT_EQ("-0.0001", order["TotalPrice"]);
}

TEST_F(CatalogueFile, TheExampleCatalogueCanBeOrderedWhole) {
  const HostRun run = RunJson(
      {"order", "add", "--catalogue", QM_ORDERING_SOURCE_DIR "/examples/catalogue.csv", "--all", "2"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(25U, run.Data()["lines"].size());
  EXPECT_NE(std::string::npos, run.Err.find("no pack size for CL-4040"));
  EXPECT_EQ(0, Run({"store", "check"}).ExitCode);
}

}  // namespace
