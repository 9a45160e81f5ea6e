#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

using namespace std::string_view_literals;

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::CreateOrderStore;
using qm_ordering::Failure;
using test::ConnectionStringOf;
using test::FailureOf;
using test::TempFolder;
using Texts = std::vector<std::string>;

class CreateOrderStoreIn : public testing::Test {
 protected:
  // What is in the folder, at any depth, in the order of the names.
  std::vector<std::string> Names() const {
    std::vector<std::string> zNames;
    for (const auto& oEntry : std::filesystem::recursive_directory_iterator(Folder.Path())) {
      zNames.push_back(oEntry.path().lexically_relative(Folder.Path()).string());
    }
    std::ranges::sort(zNames);
    return zNames;
  }

  void ExpectNotCreated(const std::string& zvFolder, const std::string& zvCause) const {
    const Failure refused = FailureOf([&] { CreateOrderStore(zvFolder); });
    EXPECT_EQ(failure::kFileAccess, refused.Number()) << refused.Description();
    EXPECT_NE(std::string::npos,
              refused.Description().find("The order store " + zvFolder + "/Orders.mdb was not created"))
        << refused.Description();
    EXPECT_NE(std::string::npos, refused.Description().find(zvCause)) << refused.Description();
  }

  TempFolder Folder;
};

unsigned Mode(const std::string& zvPath) {
  struct stat status {};
  EXPECT_EQ(0, stat(zvPath.c_str(), &status)) << zvPath;
  return status.st_mode & 0777U;
}

// In a process of its own, which may not write more than that many bytes into a file.
std::string CreateWithRoomFor(rlim_t lvBytes, const std::string& zvFolder) {
  return test::ChildProcess([&] {
           signal(SIGXFSZ, SIG_IGN);
           const rlimit limit{lvBytes, lvBytes};
           setrlimit(RLIMIT_FSIZE, &limit);
           CreateOrderStore(zvFolder);
           return std::string("created");
         })
      .Outcome();
}

}  // namespace

TEST_F(CreateOrderStoreIn, AFolderMakesAnEmptyStoreAndNothingElse) {
  CreateOrderStore(Folder.Path());
  EXPECT_EQ(Texts{"Orders.mdb"}, Names());
  const test::StoreFile store(Folder.File("Orders.mdb"));
  EXPECT_EQ((test::Rows{{"tblOrder"}, {"tblOrderItem"}, {"tblPersonalList"}, {"tblPersonalListItem"}}),
            store.Everything());
}

TEST_F(CreateOrderStoreIn, AFolderMarksTheFileAsAStoreOfThisVersion) {
  CreateOrderStore(Folder.Path());
  const test::StoreFile store(Folder.File("Orders.mdb"));
  EXPECT_EQ(std::to_string(0x514D4F52), store.Value("pragma application_id"));
  EXPECT_EQ("2", store.Value("pragma user_version"));
  EXPECT_EQ("wal", store.Value("pragma journal_mode"));
  EXPECT_EQ("UTF-8", store.Value("pragma encoding"));
  EXPECT_EQ("ok", store.Value("pragma integrity_check"));
}

TEST_F(CreateOrderStoreIn, MissingFoldersMakesThem) {
  CreateOrderStore(Folder.File("a/b c/d"));
  EXPECT_EQ((Texts{"a", "a/b c", "a/b c/d", "a/b c/d/Orders.mdb"}), Names());
}

TEST_F(CreateOrderStoreIn, MissingFoldersLetsTheUserAloneReadThem) {
  const auto create = [&] {
    umask(0);
    CreateOrderStore(Folder.File("a/b"));
    qm_ordering::ado::Connection connection;
    connection.Open(ConnectionStringOf(Folder.File("a/b")));
    connection.Execute("insert into tblOrder (zDINotes) values ('a')");
    _exit(0);
    return std::string();
  };
  test::ChildProcess(create).Outcome();
  EXPECT_EQ(0700U, Mode(Folder.File("a")));
  EXPECT_EQ(0700U, Mode(Folder.File("a/b")));
  EXPECT_EQ(0600U, Mode(Folder.File("a/b/Orders.mdb")));
  // The process ended with the store open, so its log is still there.
  EXPECT_EQ(0600U, Mode(Folder.File("a/b/Orders.mdb-wal")));
  EXPECT_EQ(0600U, Mode(Folder.File("a/b/Orders.mdb-shm")));
}

TEST_F(CreateOrderStoreIn, AFolderLeavesTheFoldersPermissionsAsTheyAre) {
  std::filesystem::permissions(Folder.Path(), std::filesystem::perms(0755));
  CreateOrderStore(Folder.Path());
  EXPECT_EQ(0755U, Mode(Folder.Path()));
  EXPECT_EQ(0600U, Mode(Folder.File("Orders.mdb")));
}

TEST_F(CreateOrderStoreIn, AFolderTakesBackslashesAndSeparatorsAtTheEnd) {
  CreateOrderStore(Folder.Path() + "\\a\\");
  CreateOrderStore(Folder.Path() + "/b//");
  EXPECT_EQ((Texts{"a", "a/Orders.mdb", "b", "b/Orders.mdb"}), Names());
}

TEST_F(CreateOrderStoreIn, ARelativeFolderMakesItInTheCurrentOne) {
  const auto create = [&] {
    std::filesystem::current_path(Folder.Path());
    CreateOrderStore("here");
    return std::string("created");
  };
  EXPECT_EQ("created", test::ChildProcess(create).Outcome());
  EXPECT_EQ((Texts{"here", "here/Orders.mdb"}), Names());
}

TEST_F(CreateOrderStoreIn, NoFolderRaises) {
  for (const std::string_view zFolder : {""sv, "\\"sv, "\\a"sv, "/tmp/a\0b"sv}) {
    EXPECT_EQ(failure::kPathNotFound, FailureOf([&] { CreateOrderStore(std::string(zFolder)); }).Number())
        << zFolder;
  }
}

TEST_F(CreateOrderStoreIn, AFolderThatNoConnectionStringCanNameRaises) {
  for (const char* zName : {"a;b", "a;b=c", ";"}) {
    const Failure failure = FailureOf([&] { CreateOrderStore(Folder.File(zName)); });
    EXPECT_EQ(failure::kPathNotFound, failure.Number()) << zName;
    EXPECT_NE(failure.Description().find("semicolon"), std::string::npos) << failure.Description();
  }
  EXPECT_EQ(failure::kPathNotFound, FailureOf([] { CreateOrderStore("{a}"); }).Number());
  EXPECT_EQ(Texts{}, Names());
}

TEST_F(CreateOrderStoreIn, AFolderReplacesNothing) {
  test::WriteFile(Folder.File("Orders.mdb"), "the user's own");
  ExpectNotCreated(Folder.Path(), "a file of that name exists; it was not touched");
  EXPECT_EQ("the user's own", test::ReadFile(Folder.File("Orders.mdb")));
  test::WriteFile(Folder.File("Orders.mdb"), "");
  ExpectNotCreated(Folder.Path(), "exists");
  EXPECT_EQ("", test::ReadFile(Folder.File("Orders.mdb")));
  EXPECT_EQ(Texts{"Orders.mdb"}, Names());
}

TEST_F(CreateOrderStoreIn, AFolderReplacesNoStoreThatIsOpen) {
  CreateOrderStore(Folder.Path());
  qm_ordering::ado::Connection connection;
  connection.Open(ConnectionStringOf(Folder.Path()));
  connection.Execute("insert into tblOrder (zDINotes) values ('a')");
  ExpectNotCreated(Folder.Path(), "exists");
  EXPECT_EQ("a", connection.Execute("select zDINotes from tblOrder")->Fields(0).Value().ToString());
  connection.Close();
  qm_ordering::ado::embedded::CloseIdleSessions();
}

TEST_F(CreateOrderStoreIn, AFolderReplacesNoFolderAndNoSymbolicLink) {
  std::filesystem::create_directories(Folder.File("a/Orders.mdb"));
  ExpectNotCreated(Folder.File("a"), "exists");
  std::filesystem::create_directory(Folder.File("b"));
  std::filesystem::create_symlink(Folder.File("elsewhere"), Folder.File("b/Orders.mdb"));
  ExpectNotCreated(Folder.File("b"), "exists");
  EXPECT_EQ((Texts{"a", "a/Orders.mdb", "b", "b/Orders.mdb"}), Names());
}

TEST_F(CreateOrderStoreIn, AFolderWithTheLogOfALostStoreRaises) {
  for (const char* zName : {"Orders.mdb-wal", "Orders.mdb-journal"}) {
    test::WriteFile(Folder.File(zName), "rows that were not yet in the file");
    ExpectNotCreated(Folder.Path(),
                     Folder.File(zName) + ", the log of an earlier store, is there. Move it away");
    EXPECT_EQ(Texts{zName}, Names());
    EXPECT_EQ("rows that were not yet in the file", test::ReadFile(Folder.File(zName)));
    // An empty one holds nothing that could get into the new store.
    test::WriteFile(Folder.File(zName), "");
    CreateOrderStore(Folder.Path());
    std::filesystem::remove(Folder.File("Orders.mdb"));
    std::filesystem::remove(Folder.File(zName));
  }
}

TEST_F(CreateOrderStoreIn, AFileInPlaceOfAFolderRaises) {
  test::WriteFile(Folder.File("a"), "text");
  ExpectNotCreated(Folder.File("a"), "Not a directory");
  ExpectNotCreated(Folder.File("a/b"), "Not a directory");
  EXPECT_EQ(Texts{"a"}, Names());
  EXPECT_EQ("text", test::ReadFile(Folder.File("a")));
}

TEST_F(CreateOrderStoreIn, AReadOnlyFolderRaisesAndLeavesNothing) {
  std::filesystem::create_directory(Folder.File("a"));
  test::GiveToUnprivileged(Folder.Path());
  test::GiveToUnprivileged(Folder.File("a"));
  std::filesystem::permissions(Folder.File("a"), std::filesystem::perms(0500));
  for (const std::string& zFolder : {Folder.File("a"), Folder.File("a/b/c")}) {
    const std::string zOutcome = test::ChildProcess([&] {
                                   test::DropPrivileges();
                                   CreateOrderStore(zFolder);
                                   return std::string("created");
                                 }).Outcome();
    EXPECT_TRUE(zOutcome.starts_with("75 The order store " + zFolder + "/Orders.mdb was not created"))
        << zOutcome;
    EXPECT_NE(std::string::npos, zOutcome.find("Permission denied")) << zOutcome;
  }
  EXPECT_EQ(Texts{"a"}, Names());
}

TEST_F(CreateOrderStoreIn, AFolderWithoutRoomRaisesAndLeavesNothing) {
  for (const rlim_t lBytes : {rlim_t{0}, rlim_t{1}, rlim_t{4096}, rlim_t{20'000}}) {
    const std::string zOutcome = CreateWithRoomFor(lBytes, Folder.Path());
    EXPECT_TRUE(
        zOutcome.starts_with("75 The order store " + Folder.File("Orders.mdb") + " cannot be used: ") &&
        zOutcome.ends_with(" It was not created."))
        << zOutcome;
    EXPECT_EQ(Texts{}, Names()) << lBytes;
  }
  EXPECT_EQ("created", CreateWithRoomFor(1'000'000, Folder.Path()));
}

TEST_F(CreateOrderStoreIn, MissingFoldersWithoutRoomLeavesNoFolders) {
  std::filesystem::create_directory(Folder.File("a"));
  EXPECT_TRUE(CreateWithRoomFor(4096, Folder.File("a/b/c")).starts_with("75 "));
  EXPECT_EQ(Texts{"a"}, Names());
}

TEST_F(CreateOrderStoreIn, AFolderByTwoProcessesAtOnceSucceedsInOne) {
  for (int lRound = 0; lRound < 5; ++lRound) {
    const std::string zFolder = Folder.File("round " + std::to_string(lRound));
    // All begin when the parent closes its end.
    std::array<int, 2> ends{};
    ASSERT_EQ(0, pipe(ends.data()));
    std::vector<std::unique_ptr<test::ChildProcess>> processes;
    for (int i = 0; i < 4; ++i) {
      processes.push_back(std::make_unique<test::ChildProcess>([&] {
        close(ends[1]);
        char cNothing = 0;
        if (read(ends[0], &cNothing, 1) != 0) {
          return std::string("no start");
        }
        CreateOrderStore(zFolder);
        return std::string("created");
      }));
    }
    close(ends[0]);
    close(ends[1]);
    int lCreated = 0;
    for (const auto& oProcess : processes) {
      const std::string zOutcome = oProcess->Outcome();
      lCreated += zOutcome == "created" ? 1 : 0;
      EXPECT_TRUE(zOutcome == "created" || zOutcome.find("a file of that name exists") != std::string::npos)
          << zOutcome;
    }
    EXPECT_EQ(1, lCreated);
    EXPECT_EQ("ok", test::StoreFile(zFolder + "/Orders.mdb").Value("pragma integrity_check"));
  }
  EXPECT_EQ(10U, Names().size());
}

TEST_F(CreateOrderStoreIn, AFolderByTwoThreadsAtOnceSucceedsInOne) {
  for (int lRound = 0; lRound < 20; ++lRound) {
    const std::string zFolder = Folder.File("round " + std::to_string(lRound));
    std::barrier start(2);
    std::array<Failure, 2> outcomes = {Failure(0, ""), Failure(0, "")};
    const auto create = [&](std::size_t lvThread) {
      start.arrive_and_wait();
      outcomes[lvThread] = FailureOf([&] { CreateOrderStore(zFolder); });
    };
    std::thread first(create, 0);
    std::thread second(create, 1);
    first.join();
    second.join();
    EXPECT_EQ(failure::kFileAccess, outcomes[0].Number() + outcomes[1].Number())
        << outcomes[0].Description() << outcomes[1].Description();
    EXPECT_EQ(
        "5",
        test::StoreFile(zFolder + "/Orders.mdb")
            .Value("select count(*) from sqlite_schema where type = 'table' and name not like 'sqlite%'"));
  }
  EXPECT_EQ(40U, Names().size());
}

namespace {

class NewStore : public test::StoreFixture {
 protected:
  // Through the library, which closes the store again.
  static void Run(const std::string& zvFolder, const std::string& zvSQL) {
    test::RunOn(ConnectionStringOf(zvFolder), zvSQL);
    qm_ordering::ado::embedded::CloseIdleSessions();
  }
};

}  // namespace

TEST_F(NewStore, OverwritesWhatIsDeletedFromIt) {
  const std::string zShort = "a secret of the customer";
  std::string zLong;
  while (zLong.size() < 20'000) {
    zLong += "a longer secret; ";
  }
  Run(Folder.Path(),
      "insert into tblOrder (zPurchaseOrderNumber, zDINotes) values ('" + zShort + "', '" + zLong + "')");
  EXPECT_NE(std::string::npos, test::ReadFile(Store.Path()).find(zShort));
  EXPECT_NE(std::string::npos, test::ReadFile(Store.Path()).find("a longer secret"));
  Run(Folder.Path(), "delete from tblOrder");
  EXPECT_EQ(std::string::npos, test::ReadFile(Store.Path()).find(zShort));
  EXPECT_EQ(std::string::npos, test::ReadFile(Store.Path()).find("a longer secret"));
}

TEST_F(NewStore, RefusesLinesWithoutTheirHeaderAndRemovesThemWithIt) {
  EXPECT_EQ(failure::kStoreCommand, FailureOf([&] {
                                      Run(Folder.Path(),
                                          "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'a')");
                                    }).Number());
  Run(Folder.Path(), "insert into tblOrder (zDINotes) values ('a')");
  Run(Folder.Path(), "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'a')");
  Run(Folder.Path(), "insert into tblPersonalList (zName) values ('l')");
  Run(Folder.Path(), "insert into tblPersonalListItem (lListID, zItemNumber) values (1, 'a')");
  Run(Folder.Path(), "delete from tblOrder");
  Run(Folder.Path(), "delete from tblPersonalList");
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrderItem"));
  EXPECT_EQ("0", Store.Value("select count(*) from tblPersonalListItem"));
}

TEST_F(NewStore, RefusesASecondLineOrListOfOneNameInAnyLetterCase) {
  Run(Folder.Path(), "insert into tblOrder (zDINotes) values ('a')");
  Run(Folder.Path(), "insert into tblPersonalList (zName) values ('l\xC3\xA9')");
  Run(Folder.Path(), "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'a')");
  Run(Folder.Path(), "insert into tblPersonalListItem (lListID, zItemNumber) values (1, 'a')");
  for (const char* zSQL : {"insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'A')",
                           "insert into tblPersonalListItem (lListID, zItemNumber) values (1, 'A')",
                           "insert into tblPersonalList (zName) values ('L\xC3\x89')"}) {
    EXPECT_EQ(failure::kStoreCommand, FailureOf([&] { Run(Folder.Path(), zSQL); }).Number()) << zSQL;
  }
}

TEST_F(NewStore, RefusesASecondCurrentOrder) {
  Run(Folder.Path(), "insert into tblOrder (bIsCurrent) values (True)");
  Run(Folder.Path(), "insert into tblOrder (bIsCurrent) values (False)");
  EXPECT_EQ(failure::kStoreCommand, FailureOf([&] {
                                      Run(Folder.Path(), "insert into tblOrder (bIsCurrent) values (True)");
                                    }).Number());
  EXPECT_EQ(failure::kStoreCommand,
            FailureOf([&] { Run(Folder.Path(), "update tblOrder set bIsCurrent = True"); }).Number());
}

TEST_F(NewStore, GivesNoNumberTwice) {
  for (const char* zTable : {"tblOrder (zDINotes)", "tblPersonalList (zName)"}) {
    const std::string zName = std::string(zTable).substr(0, std::string(zTable).find(' '));
    Run(Folder.Path(), std::string("insert into ") + zTable + " values ('a')");
    Run(Folder.Path(), "delete from " + zName);
    Run(Folder.Path(), std::string("insert into ") + zTable + " values ('b')");
    EXPECT_EQ("2", Store.Value("select max(rowid) from " + zName));
  }
}

TEST_F(NewStore, HasZeroFalseAndTheEnteringOrderWhereAnInsertNamesNothing) {
  Run(Folder.Path(), "insert into tblOrder (zDINotes) values ('a')");
  Run(Folder.Path(), "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'z')");
  Run(Folder.Path(), "insert into tblOrderItem (lOrderID, zItemNumber) values (1, 'a')");
  EXPECT_EQ(
      (test::Rows{{"0", "0", "0", "0", "0", "0", "NULL"}}),
      Store.Query("select bIsCurrent, cTotalPrice, bOIIsTaxExempt, lDIDeliveryMethod, lDIShippingMethod, "
                  "lPIPaymentMethod, datSubmitDate from tblOrder"));
  EXPECT_EQ(
      (test::Rows{{"z", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"},
                  {"a", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}}),
      Store.Query("select zItemNumber, lQuantity, lSellQuantity, lShipQuantity, lUsuallyShipsSortOrder, "
                  "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, bHasNotes, bHasPartsInfo, "
                  "bHasContractItem, bImported from tblOrderItem order by lOrderEntered"));
}

TEST_F(NewStore, FindsItsColumnsInAnyLetterCase) {
  Run(Folder.Path(), "insert into TBLORDER (zccstateOR, zCCZipOrPostcode) values ('s', 'z')");
  EXPECT_EQ((test::Rows{{"s", "z"}}), Store.Query("select zCCStateOr, zCCZipOrPostCode from tblOrder"));
}
