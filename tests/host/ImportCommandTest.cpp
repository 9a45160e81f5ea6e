#include <filesystem>

#include "tests/host/HostRun.h"
#include "tests/support/LegacyTables.h"

namespace {

using Json = nlohmann::json;
using test::HostRun;

class ImportCommand : public test::HostFixture {
 protected:
  void SetUp() override {
    CreateStore();
    Tables.AddOrder("1", {{"PONUM", "PO-1"}, {"ORDDATE", "7/4/1996"}, {"POTOTAL", "12.50"}});
    Tables.AddLine("1", "A", {{"QUANTITY", "2"}, {"UNITPRICE", "5"}, {"EXTPRICE", "10"}});
    Tables.AddLine("1", "a");
  }

  test::LegacyTables Tables;
};

TEST_F(ImportCommand, ImportsAllOrdersIntoTheHistory) {
  const HostRun run = RunJson({"import", Tables.Make()});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("", run.Err);
  EXPECT_EQ((Json{{"PurchaseOrders", 1}, {"Lines", 2}}), run.Data());
  const auto order = RunJson({"history", "open", "1"}).Data();
  EXPECT_EQ("PO-1", order["PurchaseOrderNumber"]);
  EXPECT_EQ(true, order["OrderItems"][0]["Imported"]);
  EXPECT_FALSE(std::filesystem::exists(Folder.File("Order_History_Import_Log.txt")));
}

TEST_F(ImportCommand, RefusesToImportTwiceUnlessAskedTo) {
  const std::string zTables = Tables.Make();
  EXPECT_EQ("Imported 1 purchase order with 2 lines. `qm-ordering history show` shows them.\n",
            Run({"import", zTables}).Out);
  const HostRun refused = Run({"import", zTables});
  EXPECT_EQ(1, refused.ExitCode);
  EXPECT_NE(std::string::npos, refused.Err.find("date and total: 1 of 1"));
  EXPECT_EQ("1", Store().Value("select count(*) from tblOrder where bIsCurrent = 0"));
  EXPECT_EQ(0, Run({"import", zTables, "--again"}).ExitCode);
  EXPECT_EQ("2", Store().Value("select count(*) from tblOrder where bIsCurrent = 0"));
}

TEST_F(ImportCommand, PreviewSaysWhatWouldComeAndWritesNothing) {
  Tables.AddOrder("2", {{"POTOTAL", "much"}});
  Tables.AddLine("2", "B");
  const auto before = Store().Everything();
  const HostRun run = RunJson({"import", Tables.Make(), "--preview"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ(2, run.Data()["PurchaseOrders"]);
  EXPECT_EQ(3, run.Data()["Lines"]);
  EXPECT_EQ(1, run.Data()["MarkedLines"]);
  EXPECT_EQ(0, run.Data()["AlreadyImported"]);
  EXPECT_EQ(1, run.Data()["FailingRows"]);
  EXPECT_EQ(before, Store().Everything());
  const std::string zText = Run({"import", Tables.Make(), "--preview"}).Out;
  for (const char* zPart : {"2 purchase orders with 3 lines\n", "1 line to be marked as a duplicate\n",
                            "1 row that would fail, and the whole import with the first of them\n", "POTOTAL",
                            "Nothing was imported.\n"}) {
    EXPECT_NE(std::string::npos, zText.find(zPart)) << zPart << zText;
  }
}

TEST_F(ImportCommand, LogWritesTheAccountOfIt) {
  ASSERT_EQ(0, Run({"settings", "set", "LogPath", Folder.Path()}).ExitCode);
  ASSERT_EQ(0, Run({"import", Tables.Make(), "--log"}).ExitCode);
  EXPECT_NE(std::string::npos,
            test::ReadFile(Folder.File("Order_History_Import_Log.txt")).find("PO Number: PO-1\r\n"));
}

TEST_F(ImportCommand, ALogThatCannotBeWrittenIsToldBesideTheImport) {
  const HostRun run = Run({"import", Tables.Make(), "--log"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Out.find("Imported 1 purchase order"));
  EXPECT_NE(std::string::npos, run.Err.find("LogPath")) << run.Err;
  EXPECT_EQ("1", Store().Value("select count(*) from tblOrder where bIsCurrent = 0"));
}

TEST_F(ImportCommand, TellsWhatIsWrongWithTheTables) {
  const HostRun missing = Run({"import", Folder.File("none")});
  EXPECT_EQ(3, missing.ExitCode);
  EXPECT_NE(std::string::npos, missing.Err.find(Folder.File("none")));
  EXPECT_EQ(2, Run({"import"}).ExitCode);
  Tables.AddOrder("2", {{"POTOTAL", "much"}});
  Tables.AddLine("2", "B");
  const HostRun failed = Run({"import", Tables.Make()});
  EXPECT_EQ(1, failed.ExitCode);
  EXPECT_NE(std::string::npos, failed.Err.find("POTOTAL")) << failed.Err;
  EXPECT_EQ("0", Store().Value("select count(*) from tblOrder where bIsCurrent = 0"));
}

TEST_F(ImportCommand, OfAnEmptyHistorySaysSo) {
  test::LegacyTables empty;
  const HostRun run = Run({"import", empty.Make()});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("The old history is empty: there was nothing to import.\n", run.Out);
}

}  // namespace
