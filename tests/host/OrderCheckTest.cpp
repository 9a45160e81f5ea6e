#include <sys/stat.h>

#include <filesystem>

#include "tests/host/HostRun.h"
#include "tests/support/StrictXml.h"

namespace {

using test::HostRun;
using test::kCatalogue;
using Names = std::vector<std::string>;

constexpr const char* kCard =
    "# never stored\r\ncardtype=Vista\r\n CardNumber = 4111 1111 1111 1111 \r\n\r\nExpiryMonth=07\r\n"
    "ExpiryYear=2031\r\nCardHoldersRef=R=1\r\n";

class OrderCheck : public test::HostFixture {
 protected:
  void SetUp() override { CreateStore(); }

  void AddLines(const std::string& zvQuantity = "20") const {
    const std::string zCatalogue = Write("catalogue.csv", kCatalogue);
    ASSERT_EQ(0, Run({"order", "add", "--catalogue", zCatalogue, "A1", zvQuantity, "B2", "1"}).ExitCode);
  }

  void CompleteForCollection() const {
    ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.CallBranchNumber=12",
                      "DeliveryInformation.CallAttention=Ana", "DeliveryInformation.CallPhoneNumber=555",
                      "PaymentInformation.MorvaneAccountNumber=M-1"})
                     .ExitCode);
  }

  void CompleteCardHolder() const {
    const std::string zGroup = "CreditCardDetails.";
    ASSERT_EQ(
        0, Run({"order", "set", "PaymentInformation.Method=1", zGroup + "FirstName=A", zGroup + "LastName=B",
                zGroup + "CompanyName=C", zGroup + "Address1=D", zGroup + "City=E", zGroup + "StateOr=F",
                zGroup + "ZipOrPostCode=G", zGroup + "Country=H", zGroup + "PhoneNumber=I"})
               .ExitCode);
  }

  std::string CardFile(const std::string& zvContent = kCard) const {
    const std::string zFile = Write("card", zvContent);
    chmod(zFile.c_str(), 0600);
    return zFile;
  }

  nlohmann::json Validate(int lvExitCode, Names zvOptions = {}) const {
    Names arguments = {"order", "validate"};
    arguments.insert(arguments.end(), zvOptions.begin(), zvOptions.end());
    const HostRun run = RunJson(arguments);
    EXPECT_EQ(lvExitCode, run.ExitCode) << run.Err;
    return run.Data();
  }
};

TEST_F(OrderCheck, ACompleteOrderIsValid) {
  AddLines();
  CompleteForCollection();
  EXPECT_EQ(nlohmann::json::parse(R"({"valid": true,
              "lines": {"valid": true, "count": 2, "checked": true, "misfits": []},
              "delivery": {"valid": true, "missing": []}, "payment": {"valid": true, "missing": []},
              "xml": {"valid": true, "problem": ""}})"),
            Validate(0));
  EXPECT_EQ(
      "Quantities  2 lines, every quantity fits its pack\nDelivery    complete\nPayment     complete\n"
      "XML         complete\n",
      Run({"order", "validate"}).Out);
}

TEST_F(OrderCheck, MissingFieldsOfACollectionAreNamed) {
  AddLines();
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.CallAttention=  "}).ExitCode);
  const auto check = Validate(1);
  EXPECT_EQ(Names({"DeliveryInformation.CallBranchNumber", "DeliveryInformation.CallAttention",
                   "DeliveryInformation.CallPhoneNumber"}),
            check["delivery"]["missing"].get<Names>());
  EXPECT_EQ(Names({"PaymentInformation.MorvaneAccountNumber"}), check["payment"]["missing"].get<Names>());
  const std::string zText = Run({"order", "validate"}).Out;
  EXPECT_NE(std::string::npos,
            zText.find("Delivery    not complete; missing:\n            DeliveryInformation."));
}

TEST_F(OrderCheck, MissingFieldsOfADeliveryAreNamed) {
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.DeliveryMethod=2"}).ExitCode);
  const std::string zGroup = "DeliveryInformation.";
  EXPECT_EQ(Names({zGroup + "FirstName", zGroup + "LastName", zGroup + "CompanyName", zGroup + "Address1",
                   zGroup + "City", zGroup + "ZipOrPostCode", zGroup + "Country", zGroup + "PhoneNumber",
                   zGroup + "State or StateOr"}),
            Validate(1)["delivery"]["missing"].get<Names>());
  // Spaces count as filled in a state, and only there.
  ASSERT_EQ(0, Run({"order", "set", zGroup + "FirstName=A", zGroup + "LastName=B", zGroup + "CompanyName=C",
                    zGroup + "Address1=D", zGroup + "City= ", zGroup + "State= ", zGroup + "ZipOrPostCode=G",
                    zGroup + "Country=H", zGroup + "PhoneNumber=I"})
                   .ExitCode);
  EXPECT_EQ(Names({zGroup + "City"}), Validate(1)["delivery"]["missing"].get<Names>());
  ASSERT_EQ(0, Run({"order", "set", zGroup + "City=E"}).ExitCode);
  EXPECT_EQ(true, Validate(1)["delivery"]["valid"]);
}

TEST_F(OrderCheck, APaymentByCardNeedsTheCardFile) {
  AddLines();
  CompleteForCollection();
  CompleteCardHolder();
  EXPECT_EQ(Names({"CardNumber, in the card file", "ExpiryMonth from 1 to 12, in the card file"}),
            Validate(1)["payment"]["missing"].get<Names>());
  EXPECT_EQ(true, Validate(0, {"--card-file", CardFile()})["valid"]);
  EXPECT_EQ(0, Run({"order", "validate", "--card-file", "-"}, {.Input = kCard}).ExitCode);
}

TEST_F(OrderCheck, AMonthOutOfRangeIsNamed) {
  CompleteCardHolder();
  EXPECT_EQ(Names({"ExpiryMonth from 1 to 12, in the card file"}),
            Validate(1, {"--card-file", CardFile("CardNumber=1\nExpiryMonth=13\n")})["payment"]["missing"]
                .get<Names>());
}

TEST_F(OrderCheck, MissingFieldsOfTheCardHolderAreNamed) {
  ASSERT_EQ(0, Run({"order", "set", "PaymentInformation.Method=1"}).ExitCode);
  EXPECT_EQ(Names({"CreditCardDetails.FirstName", "CreditCardDetails.LastName",
                   "CreditCardDetails.CompanyName", "CreditCardDetails.Address1", "CreditCardDetails.City",
                   "CreditCardDetails.ZipOrPostCode", "CreditCardDetails.Country",
                   "CreditCardDetails.PhoneNumber", "CreditCardDetails.State or StateOr"}),
            Validate(1, {"--card-file", CardFile()})["payment"]["missing"].get<Names>());
}

TEST_F(OrderCheck, QuantitiesThatDoNotFitAreNamed) {
  AddLines("25");
  CompleteForCollection();
  const auto lines = Validate(1)["lines"];
  EXPECT_EQ(false, lines["valid"]);
  EXPECT_EQ(nlohmann::json::parse(
                R"([{"ItemNumber": "A1", "Quantity": 25, "Pack": 10, "NearestQuantities": [20, 30]}])"),
            lines["misfits"]);
}

TEST_F(OrderCheck, AnOrderWithoutLinesIsNotValid) {
  CompleteForCollection();
  EXPECT_EQ(false, Validate(1)["lines"]["valid"]);
  EXPECT_NE(std::string::npos, Run({"order", "validate"}).Out.find("not valid: The order has no lines."));
}

TEST_F(OrderCheck, APackSizeOfZeroCannotBeChecked) {
  AddLines();
  CompleteForCollection();
  Store().Run("update tblOrderItem set lSellQuantity = 0 where zItemNumber = 'B2'");
  const HostRun run = RunJson({"order", "validate"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ(11, run.Messages()[0]["error"]["number"]);
  EXPECT_EQ(false, run.Data()["lines"]["checked"]);
  EXPECT_EQ(false, run.Data()["xml"]["valid"]);
  EXPECT_EQ(false, run.Data()["valid"]);
}

TEST_F(OrderCheck, WrongCardFilesAreRefusedWithoutShowingWhatIsInThem) {
  for (const char* zContent : {"CardNumber 4111\n", "4111\n", "4111=CardNumber\n", "CardNumbr=4111\n",
                               "CardNumber=1\nCARDNUMBER=4111\n", "ExpiryMonth=4111x\n",
                               "ExpiryYear=4111.0\n", "CardNumber=4111\xFF\n", "City=4111\n"}) {
    const HostRun run = Run({"order", "validate", "--card-file", CardFile(zContent)});
    EXPECT_EQ(2, run.ExitCode) << zContent;
    EXPECT_NE(std::string::npos, run.Err.find("card, line ")) << run.Err;
    EXPECT_EQ(std::string::npos, run.Err.find("4111")) << run.Err;
    EXPECT_EQ("", run.Out) << zContent;
  }
  const HostRun nearest = Run({"order", "validate", "--card-file", CardFile("CardNumbr=1\n")});
  EXPECT_NE(std::string::npos, nearest.Err.find("Did you mean CardNumber"));
  EXPECT_EQ(2, Run({"order", "validate", "--card-file", Folder.File("none")}).ExitCode);
  EXPECT_EQ(2, Run({"order", "validate", "--card-file", Folder.Path()}).ExitCode);
}

TEST_F(OrderCheck, ACardFileThatOthersMayReadIsWarnedOf) {
  const std::string zFile = CardFile();
  EXPECT_EQ("", Run({"order", "validate", "--card-file", zFile}).Err);
  chmod(zFile.c_str(), 0640);
  EXPECT_NE(std::string::npos, Run({"order", "validate", "--card-file", zFile}).Err.find("chmod 600"));
}

TEST_F(OrderCheck, XmlGoesToStandardOutput) {
  AddLines("25");
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=<PO & 'x'>"}).ExitCode);
  const HostRun run = Run({"order", "xml"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  const test::XmlElement order = test::ReadStrictly(run.Out);
  EXPECT_EQ("order", order.Name);
  EXPECT_EQ("<PO & 'x'>", order.Attributes.at("purchaseordernumber"));
  ASSERT_EQ(2U, order.Children.at(3).Children.size());
  EXPECT_EQ("0", order.Children[3].Children[0].Attributes.at("validquantity"));
  EXPECT_EQ("Bolt, \"M8\"", order.Children[3].Children[0].Attributes.at("description"));
  EXPECT_EQ("order", test::ReadStrictly(RunJson({"order", "xml"}).Data()["xml"]).Name);
}

TEST_F(OrderCheck, XmlHoldsTheCardOfTheCardFile) {
  const HostRun run = Run({"order", "xml", "--card-file", CardFile()});
  const auto card = test::ReadStrictly(run.Out).Children.at(0).Children.at(0);
  EXPECT_EQ("Vista", card.Attributes.at("cardtype"));
  EXPECT_EQ("4111 1111 1111 1111", card.Attributes.at("cardnumber"));
  EXPECT_EQ("07", card.Attributes.at("expirymonth"));
  EXPECT_EQ("2031", card.Attributes.at("expiryyear"));
  EXPECT_EQ("R=1", card.Attributes.at("cardholdersref"));
  const HostRun without = Run({"order", "xml"});
  EXPECT_EQ("", test::ReadStrictly(without.Out).Children.at(0).Children.at(0).Attributes.at("cardnumber"));
}

TEST_F(OrderCheck, XmlReplacesAFileWholeAndForItsUserAlone) {
  const std::string zFile = Write("o.xml", "old");
  chmod(zFile.c_str(), 0644);
  std::filesystem::create_symlink("o.xml", Folder.File("link.xml"));
  const HostRun run = RunJson({"order", "xml", "--output", Folder.File("link.xml")});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_TRUE(std::filesystem::is_symlink(Folder.File("link.xml")));
  const std::string zDocument = test::ReadFile(zFile);
  EXPECT_EQ("order", test::ReadStrictly(zDocument).Name);
  EXPECT_EQ(zDocument.size(), run.Data()["bytes"]);
  EXPECT_EQ(std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
            std::filesystem::status(zFile).permissions());
}

TEST_F(OrderCheck, AnXmlFileThatCannotBeWrittenIsARaisedFailureAndLeavesNothing) {
  std::filesystem::create_directory(Folder.File("folder"));
  for (const std::string& zFile :
       {Folder.File("folder"), Folder.File("none/o.xml"), std::string("/dev/null")}) {
    const HostRun run = Run({"order", "xml", "--output", zFile});
    EXPECT_EQ(3, run.ExitCode) << zFile;
    EXPECT_NE(std::string::npos, run.Err.find("error 75: The file " + zFile)) << run.Err;
  }
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_TRUE(std::filesystem::is_empty(Folder.File("folder")));
}

TEST_F(OrderCheck, ATextThatXmlCannotHoldWritesNoFile) {
  Write("o.xml", "old");
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.Notes=a\x01"}).ExitCode);
  const HostRun run = Run({"order", "xml", "--output", Folder.File("o.xml")});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error -1072896760: "));
  EXPECT_EQ("old", test::ReadFile(Folder.File("o.xml")));
}

TEST_F(OrderCheck, AnOrderThatCannotBeExportedIsNotValid) {
  AddLines();
  CompleteForCollection();
  ASSERT_EQ(0, Run({"order", "set", "DeliveryInformation.Notes=a\x01"}).ExitCode);
  const HostRun run = Run({"order", "validate"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("", run.Err);
  EXPECT_NE(std::string::npos, run.Out.find("\nXML         ")) << run.Out;
  EXPECT_EQ(std::string::npos, run.Out.find("XML         complete")) << run.Out;
  const auto check = Validate(1);
  EXPECT_EQ(false, check["valid"]);
  EXPECT_EQ(true, check["lines"]["valid"]);
  EXPECT_EQ(true, check["delivery"]["valid"]);
  EXPECT_EQ(true, check["payment"]["valid"]);
  EXPECT_EQ(false, check["xml"]["valid"]);
  // The same that the export says.
  EXPECT_NE(std::string::npos, RunJson({"order", "xml"})
                                   .Messages()
                                   .at(0)["error"]["description"]
                                   .get<std::string>()
                                   .find(check["xml"]["problem"].get<std::string>()));
}

TEST_F(OrderCheck, XmlOfAnOrderThatCannotBeCheckedIsRefused) {
  AddLines();
  Store().Run("update tblOrderItem set lSellQuantity = 0 where zItemNumber = 'B2'");
  const HostRun run = Run({"order", "xml"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("The pack size of B2 is 0"));
}

TEST_F(OrderCheck, CardDataReachesNeitherStoreNorSettings) {
  AddLines();
  CompleteCardHolder();
  const std::string zCard = CardFile(
      "CardType=VistaSecret\nCardNumber=4111222233334444\nExpiryMonth=7\nCardHoldersRef=RefSecret\n");
  ASSERT_EQ(1, Run({"order", "validate", "--card-file", zCard}).ExitCode);
  ASSERT_EQ(0, Run({"order", "xml", "--card-file", zCard}).ExitCode);
  ASSERT_EQ(2, Run({"order", "set", "CardNumber=4111222233334444"}).ExitCode);
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-7"}).ExitCode);
  ASSERT_EQ(0, Run({"order", "submit"}).ExitCode);
  int lFiles = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Folder.Path())) {
    if (entry.path().filename() == "card") {
      continue;
    }
    ++lFiles;
    const std::string zContent = test::ReadFile(entry.path().string());
    for (const char* zSecret : {"4111222233334444", "VistaSecret", "RefSecret"}) {
      EXPECT_EQ(std::string::npos, zContent.find(zSecret)) << entry.path();
    }
  }
  // The store and the settings at the least.
  EXPECT_GE(lFiles, 2);
  EXPECT_NE(std::string::npos, test::ReadFile(SettingsFile()).find("PO-7"));
}

TEST_F(OrderCheck, SubmitMovesTheOrderIntoTheHistoryAndBeginsTheNext) {
  AddLines();
  CompleteForCollection();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-7"}).ExitCode);
  const HostRun run = RunJson({"order", "submit"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("", run.Err);
  EXPECT_EQ(nlohmann::json::parse(R"({"SubmittedOrderID": 1, "PurchaseOrderNumber": "PO-7", "OrderID": 2})"),
            run.Data());
  const auto order = Order();
  EXPECT_EQ(2, order["OrderID"]);
  EXPECT_EQ("M-1", order["PaymentInformation"]["MorvaneAccountNumber"]);
  EXPECT_TRUE(order["OrderItems"].empty());
  EXPECT_EQ("0", Store().Value("select bIsCurrent from tblOrder where lOrderID = 1"));
  EXPECT_EQ("2", Store().Value("select count(*) from tblOrderItem where lOrderID = 1"));
}

TEST_F(OrderCheck, SubmitSaysWhatItDid) {
  AddLines();
  CompleteForCollection();
  EXPECT_EQ("Submitted order 1, PO number none.\nThe current order is now order 2.\n",
            Run({"order", "submit"}).Out);
}

TEST_F(OrderCheck, SubmitWarnsOfAnIncompleteHeader) {
  AddLines();
  const HostRun run = RunJson({"order", "submit"});
  EXPECT_EQ(0, run.ExitCode);
  ASSERT_EQ(2U, run.Messages().size());
  EXPECT_NE(std::string::npos, run.Messages()[0]["warning"].get<std::string>().find("CallBranchNumber"));
  EXPECT_NE(std::string::npos, run.Messages()[1]["warning"].get<std::string>().find("MorvaneAccountNumber"));
}

TEST_F(OrderCheck, SubmitRefusesQuantitiesThatDoNotFitUnlessForced) {
  AddLines("25");
  CompleteForCollection();
  const HostRun refused = Run({"order", "submit"});
  EXPECT_EQ(1, refused.ExitCode);
  EXPECT_NE(std::string::npos, refused.Err.find("Nothing was submitted"));
  EXPECT_NE(std::string::npos, refused.Err.find("--force"));
  EXPECT_EQ(1, Order()["OrderID"]);
  const HostRun forced = Run({"order", "submit", "--force"});
  EXPECT_EQ(0, forced.ExitCode);
  EXPECT_NE(std::string::npos, forced.Err.find("warning: 1 line has a quantity that does not fit"));
  EXPECT_EQ(2, Order()["OrderID"]);
}

TEST_F(OrderCheck, SubmitRefusesAnOrderThatCannotBeCheckedUnlessForced) {
  AddLines();
  CompleteForCollection();
  Store().Run("update tblOrderItem set lSellQuantity = 0 where zItemNumber = 'B2'");
  const HostRun refused = Run({"order", "submit"});
  EXPECT_EQ(1, refused.ExitCode);
  EXPECT_EQ(0U, refused.Err.find("error 11: ")) << refused.Err;
  EXPECT_NE(std::string::npos, refused.Err.find("Nothing was submitted"));
  EXPECT_EQ("1", Store().Value("select bIsCurrent <> 0 from tblOrder where lOrderID = 1"));
  const HostRun forced = Run({"order", "submit", "--force"});
  EXPECT_EQ(0, forced.ExitCode);
  EXPECT_EQ(std::string::npos, forced.Err.find("error")) << forced.Err;
  EXPECT_EQ(0U, forced.Err.find("warning: ")) << forced.Err;
  EXPECT_NE(std::string::npos, forced.Err.find("The pack size of B2 is 0"));
  EXPECT_EQ("0", Store().Value("select bIsCurrent from tblOrder where lOrderID = 1"));
}

TEST_F(OrderCheck, SubmitRefusesAnOrderWithoutLinesUnlessForced) {
  const HostRun refused = RunJson({"order", "submit"});
  EXPECT_EQ(1, refused.ExitCode);
  ASSERT_EQ(1U, refused.Messages().size());
  EXPECT_TRUE(refused.Messages()[0]["error"]["number"].is_null());
  EXPECT_EQ(1, Order()["OrderID"]);
  EXPECT_EQ(0, Run({"order", "submit", "--force"}).ExitCode);
  EXPECT_EQ(2, Order()["OrderID"]);
}

}  // namespace
