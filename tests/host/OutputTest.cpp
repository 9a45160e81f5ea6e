#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <optional>

#include "tests/host/HostRun.h"
#include "tests/support/LegacyTables.h"

namespace {

using test::HostRun;
using test::kCatalogue;

class HostOutput : public test::HostFixture {};

TEST_F(HostOutput, HelpIsThereForEveryCommand) {
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{},
                                             {"store"},
                                             {"store", "create"},
                                             {"store", "check"},
                                             {"store", "path"},
                                             {"settings"},
                                             {"settings", "list"},
                                             {"settings", "get"},
                                             {"settings", "set"},
                                             {"order"},
                                             {"order", "show"},
                                             {"order", "add"},
                                             {"order", "quantity"},
                                             {"order", "remove"},
                                             {"order", "clear"},
                                             {"order", "set"},
                                             {"order", "validate"},
                                             {"order", "xml"},
                                             {"order", "submit"},
                                             {"order", "apply-registration"},
                                             {"demo"}}) {
    std::vector<std::string> arguments = command;
    arguments.emplace_back("--help");
    const HostRun run = Run(arguments);
    EXPECT_EQ(0, run.ExitCode);
    EXPECT_EQ("", run.Err);
    std::string zUsage = "Usage: qm-ordering";
    for (const std::string& zWord : command) {
      zUsage += " " + zWord;
    }
    EXPECT_NE(std::string::npos, run.Out.find(zUsage)) << run.Out;
  }
}

TEST_F(HostOutput, TellsItsVersion) {
  const HostRun run = test::RunHost({"--version"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("qm-ordering " QM_ORDERING_VERSION "\n", run.Out);
  EXPECT_EQ("", run.Err);
}

TEST_F(HostOutput, TheHelpOfOrderSetNamesEveryPropertyAndTheHelpOfAddEveryColumn) {
  const std::string zSet = Run({"order", "set", "--help"}).Out;
  for (const char* zName :
       {"PurchaseOrderNumber", "PORelease", "CallBranchNumber", "MorvaneAccountNumber", "Comment4"}) {
    EXPECT_NE(std::string::npos, zSet.find(zName)) << zName;
  }
  const std::string zAdd = Run({"order", "add", "--help"}).Out;
  for (const char* zName : {"ItemNumber", "Description", "ShortDescription", "Manufacturer", "Model",
                            "SellQuantity", "ShipQuantity", "UsuallyShips", "Taxable", "Price"}) {
    EXPECT_NE(std::string::npos, zAdd.find(zName)) << zName;
  }
}

TEST_F(HostOutput, WrongUsageIsExitCodeTwo) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"ordr"},
                                             {"order"},
                                             {"order", "shwo"},
                                             {"order", "show", "--sort"},
                                             {"order", "show", "extra"},
                                             {"order", "show", "--no-such"},
                                             {"settings", "set", "LogPath"},
                                             {"order", "xml", "--card-number", "4111"}}) {
    const HostRun run = Run(arguments);
    EXPECT_EQ(2, run.ExitCode);
    EXPECT_EQ("", run.Out);
    EXPECT_EQ(0U, run.Err.find("qm-ordering: ")) << run.Err;
    const HostRun json = RunJson(arguments);
    EXPECT_EQ(2, json.ExitCode);
    ASSERT_EQ(1U, json.Messages().size());
    EXPECT_TRUE(json.Messages()[0]["error"]["number"].is_null());
    EXPECT_FALSE(json.Messages()[0]["error"]["description"].get<std::string>().empty());
  }
}

TEST_F(HostOutput, AMistypedCommandIsNamedWithTheNearest) {
  const auto message = [this](const std::vector<std::string>& arguments) {
    const HostRun run = Run(arguments);
    EXPECT_EQ(2, run.ExitCode);
    return run.Err;
  };
  const std::string zHelp = " Add --help to see how it is used.\n";
  EXPECT_EQ("qm-ordering: There is no command \"shwo\". Did you mean show?" + zHelp,
            message({"order", "shwo"}));
  EXPECT_EQ("qm-ordering: There is no command \"shwo\". Did you mean show?" + zHelp,
            message({"order", "shwo", "--sort", "1"}));
  EXPECT_EQ("qm-ordering: There is no command \"ordr\". Did you mean order?" + zHelp,
            message({"ordr", "show"}));
  EXPECT_EQ("qm-ordering: There is no command \"wrongest\"." + zHelp, message({"wrongest"}));
  EXPECT_EQ("qm-ordering: There is no command \"[a]\"." + zHelp, message({"store", "[a]"}));
  EXPECT_EQ("qm-ordering: A subcommand is required." + zHelp, message({"order"}));
}

TEST_F(HostOutput, GlobalOptionsMayStandBehindTheCommand) {
  const HostRun run = test::RunHost({"settings", "list", "--json", "--settings", SettingsFile()});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ(SettingsFile(), run.Data()["file"]);
}

TEST_F(HostOutput, ErrorsAreJsonToo) {
  const HostRun run = RunJson({"order", "show"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_EQ(5, run.Messages().back()["error"]["number"]);
}

TEST_F(HostOutput, DataThatCannotBeWrittenIsNoSuccess) {
  CreateStore();
  const HostRun run = Run({"order", "show"}, {.OutputFile = "/dev/full"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error 75: Not all of the output"));
  EXPECT_EQ(3, test::RunHost({"--help"}, {.OutputFile = "/dev/full"}).ExitCode);
}

TEST_F(HostOutput, AReaderThatGoesAwayIsNoSuccess) {
  CreateStore();
  int lEnds[2] = {};
  ASSERT_EQ(0, pipe2(lEnds, O_CLOEXEC));
  close(lEnds[0]);
  const HostRun run = Run({"order", "show"}, {.OutputDescriptor = lEnds[1]});
  close(lEnds[1]);
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Broken pipe"));
}

TEST_F(HostOutput, OnlyACommandThatChangesSomethingSaysThatItIsDoneWithoutAReader) {
  CreateStore();
  const std::string zDone = "What the command did is done all the same.";
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"order", "show"},
                                             {"order", "validate"},
                                             {"order", "xml"},
                                             {"settings", "list"},
                                             {"settings", "get", "LogPath"},
                                             {"store", "check"},
                                             {"store", "path"}}) {
    const HostRun run = Run(arguments, {.OutputFile = "/dev/full"});
    EXPECT_EQ(3, run.ExitCode) << arguments.back();
    EXPECT_NE(std::string::npos, run.Err.find("error 75: ")) << run.Err;
    EXPECT_EQ(std::string::npos, run.Err.find(zDone)) << run.Err;
  }
  const std::string zCatalogue = Write("catalogue.csv", kCatalogue);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"order", "add", "--catalogue", zCatalogue, "B2", "1"},
                                             {"order", "set", "PurchaseOrderNumber=PO-7"},
                                             {"order", "apply-registration"},
                                             {"order", "clear"},
                                             {"order", "submit", "--force"},
                                             {"store", "create", Folder.File("other")},
                                             {"settings", "set", "LogPath", "/a"}}) {
    const HostRun run = Run(arguments, {.OutputFile = "/dev/full"});
    EXPECT_EQ(3, run.ExitCode) << arguments.back();
    EXPECT_NE(std::string::npos, run.Err.find(zDone)) << run.Err;
  }
}

// What the program writes to a terminal as its stderr; nothing where the machine gives out no terminals.
std::optional<std::string> OnTerminal(const std::function<void(int)>& run) {
  int lMaster = -1;
  int lTerminal = -1;
  if (openpty(&lMaster, &lTerminal, nullptr, nullptr, nullptr) != 0) {
    return std::nullopt;
  }
  run(lTerminal);
  close(lTerminal);
  std::string zWritten;
  char piece[4096];
  for (ssize_t lRead = 0; (lRead = read(lMaster, piece, sizeof piece)) > 0;) {
    zWritten.append(piece, static_cast<std::size_t>(lRead));
  }
  close(lMaster);
  return zWritten;
}

TEST_F(HostOutput, ProgressIsShownOnATerminalAndTakenAway) {
  CreateStore();
  const std::string zCatalogue = Write("c.csv", kCatalogue);
  const std::optional<std::string> zOnTerminal = OnTerminal([&](int lvTerminal) {
    EXPECT_EQ(0,
              Run({"order", "add", "--catalogue", zCatalogue, "--all", "10"}, {.ErrorDescriptor = lvTerminal})
                  .ExitCode);
  });
  if (!zOnTerminal) {
    GTEST_SKIP() << "The machine gives out no terminals (is /dev/pts mounted?).";
  }
  const std::string& zWritten = *zOnTerminal;
  EXPECT_NE(std::string::npos, zWritten.find("\r\x1B[KAdding 0/3 [" + std::string(30, ' ') + "]"));
  EXPECT_NE(std::string::npos, zWritten.find("\r\x1B[KAdding 3/3 [" + std::string(30, '#') + "]"));
  EXPECT_TRUE(zWritten.ends_with("\r\x1B[K")) << zWritten;
}

TEST_F(HostOutput, TheProgressOfAnImportIsShownOnATerminal) {
  CreateStore();
  const std::optional<std::string> zOnTerminal = OnTerminal([&](int lvTerminal) {
    EXPECT_EQ(0, Run({"import", test::SmallLegacyTables()}, {.ErrorDescriptor = lvTerminal}).ExitCode);
  });
  if (!zOnTerminal) {
    GTEST_SKIP() << "The machine gives out no terminals (is /dev/pts mounted?).";
  }
  const std::string& zWritten = *zOnTerminal;
  for (int lLines = 0; lLines <= test::kSmallLines; ++lLines) {
    EXPECT_NE(std::string::npos, zWritten.find("\r\x1B[KImporting lines " + std::to_string(lLines) + "/7 ["))
        << lLines;
  }
  EXPECT_TRUE(zWritten.ends_with("\r\x1B[K")) << zWritten;
}

}  // namespace
