#include <filesystem>
#include <sstream>

#include "tests/host/HostRun.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/StrictXml.h"

namespace {

using test::EnvironmentScope;
using test::HostRun;

class HostDemo : public test::HostFixture {
 protected:
  // The one folder that the demonstration left.
  std::string DemoFolder() const {
    std::string zFolder;
    for (const auto& entry : std::filesystem::directory_iterator(Folder.Path())) {
      EXPECT_EQ("", zFolder);
      zFolder = entry.path().string();
    }
    return zFolder;
  }
};

TEST_F(HostDemo, GoesFromAnEmptyStoreToTheNextOrderAndKeepsItsFiles) {
  const EnvironmentScope temporary("TMPDIR", Folder.Path().c_str());
  // It needs no settings of the user's, not even a place for them.
  const EnvironmentScope config("XDG_CONFIG_HOME", nullptr);
  const EnvironmentScope home("HOME", nullptr);
  const HostRun run = test::RunHost({"demo"});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("", run.Err);
  const std::string zFolder = DemoFolder();
  for (const std::string& zText : std::vector<std::string>{
           "* FX-2040: 130 is not a whole number of packs of 50; the nearest that fit are 100 or 150.",
           "150 instead of 130", "Champagne Lef\xC3\xA8vre & Fils", "<order orderid=\"1\"",
           "List 1, \"Halle 3\"    6 items", zFolder + "/PersonalLists.xml", "Order 1 is in the history",
           "9. Ordering again", "added 150       150    50  yes",
           "Order 2, the current order    PO number: PO-7    0 lines", zFolder + "/Orders.mdb",
           "rm -r " + zFolder,
           // The build folder's own copy, wherever an installation would put it.
           "Catalogue " +
               std::filesystem::path(test::HostProgramPath()).replace_filename("catalogue.csv").string()}) {
    EXPECT_NE(std::string::npos, run.Out.find(zText)) << zText;
  }
  EXPECT_EQ("order", test::ReadStrictly(test::ReadFile(zFolder + "/order.xml")).Name);
  EXPECT_EQ("personallists", test::ReadStrictly(test::ReadFile(zFolder + "/PersonalLists.xml")).Name);

  const HostRun show = test::RunHost({"--json", "--settings", zFolder + "/settings.ini", "order", "show"});
  ASSERT_EQ(0, show.ExitCode) << show.Err;
  EXPECT_EQ(2, show.Data()["OrderID"]);
  EXPECT_EQ("Reims", show.Data()["DeliveryInformation"]["City"]);
  EXPECT_EQ("579.125", show.Data()["TotalPrice"]);
  EXPECT_EQ(0, test::RunHost({"--settings", zFolder + "/settings.ini", "store", "check"}).ExitCode);
}

TEST_F(HostDemo, FitsIntoAHundredColumns) {
  const EnvironmentScope temporary("TMPDIR", Folder.Path().c_str());
  std::istringstream lines(test::RunHost({"demo"}).Out);
  for (std::string zLine; std::getline(lines, zLine);) {
    std::size_t lCharacters = 0;
    for (const char c : zLine) {
      lCharacters += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1U : 0U;
    }
    // Lines with the folder's path are as long as the path.
    if (zLine.find(Folder.Path()) == std::string::npos &&
        zLine.find("/host/qm-ordering") == std::string::npos) {
      EXPECT_LE(lCharacters, 100U) << zLine;
    }
  }
}

TEST_F(HostDemo, TakesTheCataloguesPlace) {
  const EnvironmentScope temporary("TMPDIR", Folder.Path().c_str());
  const HostRun missing = test::RunHost({"demo", "--catalogue", Folder.File("none.csv")});
  EXPECT_EQ(2, missing.ExitCode);
  EXPECT_NE(std::string::npos, missing.Err.find("--catalogue"));
  EXPECT_EQ("", DemoFolder());
  EXPECT_EQ(
      0, test::RunHost({"demo", "--catalogue", QM_ORDERING_SOURCE_DIR "/examples/catalogue.csv"}).ExitCode);
}

TEST_F(HostDemo, TakesNeitherSettingsNorJson) {
  EXPECT_EQ(2, Run({"demo"}).ExitCode);
  EXPECT_EQ(2, test::RunHost({"--json", "demo"}).ExitCode);
}

}  // namespace
