#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/conditions/TroubledStore.h"

// A user without privileges, whose store or folder may not be read, written or reached for a while. The host
// goes on running all the time.

namespace {

using namespace qm_ordering;
using Texts = std::vector<std::string>;

void Allow(const std::string& zvPath, unsigned lvPermissions) {
  std::filesystem::permissions(zvPath, std::filesystem::perms(lvPermissions));
}

class Permissions : public test::TroubledStore {
 protected:
  Permissions() {
    test::GiveToUnprivileged(Folder.Path());
    test::GiveToUnprivileged(Store.Path());
  }
  // So that the folder can go.
  ~Permissions() override { Allow(Folder.Path(), 0700); }

  // The host, as that user. What it answers is what was wrong.
  void RunHost(const std::function<std::string()>& host) const {
    EXPECT_EQ("", test::ChildProcess([&] {
                    test::DropPrivileges();
                    const std::string zWrong = host();
                    Rest();
                    return zWrong;
                  }).Outcome());
  }

  std::string Compare(const Texts& zvOrders) const {
    return zvOrders == Known ? "" : "the orders are not as they were: " + zvOrders.front() + "\n";
  }

  // A host that finds nothing but failures, all of which name the store and hold the words.
  std::string ExpectNothingWorks(const Texts& zvWords) const {
    ClearLastFailure();
    CurrentOrder order;
    std::string zWrong;
    const auto expect = [&](const std::string& zvWhat, const std::string& zvFailure) {
      for (const std::string& zWord : zvWords) {
        if (zvFailure.find(zWord) == std::string::npos) {
          zWrong += zvWhat + " does not say \"" + zWord + "\" but: " + zvFailure + "\n";
          return;
        }
      }
    };
    expect("the record", order.OrderDetails()->Error().Description);
    expect("LastFailure", LastFailure().Description);
    if (order.Error().Number != 0 || order.OrderDetails()->Error().Number != 5 || order.ItemCount() != 0) {
      zWrong += "an order that could not be loaded\n";
    }
    const auto raise = [&](const std::string& zvWhat, const std::function<void()>& call) {
      try {
        call();
        zWrong += zvWhat + " succeeded\n";
      } catch (const Failure& raised) {
        zWrong += raised.Number() == failure::kStoreUnavailable ? "" : zvWhat + " raised another number\n";
        expect(zvWhat, raised.Description());
      }
    };
    raise("LoadItems", [&] { order.LoadItems(0); });
    raise("RemoveItem", [&] { order.RemoveItem("now-1"); });
    raise("CheckOrderStore", [] { CheckOrderStore(); });
    return zWrong;
  }
};

TEST_F(Permissions, AReadOnlyFileIsReadAndEveryWriteSaysWhatToDo) {
  RunHost([&] {
    CurrentOrder before;
    Rest();
    Allow(Store.Path(), 0400);
    CurrentOrder order;
    order.LoadItems(0);
    std::string zWrong = Compare(Orders());
    zWrong += ExpectWritesRefused(order, {Store.Path(), "read-only", "grant write permission"});
    zWrong += CheckOrderStore().empty() ? "" : "the check finds something\n";
    zWrong += Compare(Orders());
    // The user follows the advice.
    Allow(Store.Path(), 0600);
    zWrong += ExpectWorks("LATER");
    before.LoadItems(0);
    return zWrong + (before.ItemExists("LATER") ? "" : "an object from before does not see the item\n");
  });
  EXPECT_EQ((Texts{"now-1", "now-2", "now-3", "LATER"}), CurrentItems());
}

TEST_F(Permissions, AFileThatBecomesReadOnlyUnderAHostFailsItsNextWriteOrIsStillWritten) {
  RunHost([&] {
    CurrentOrder order;
    order.LoadItems(0);
    Allow(Store.Path(), 0400);
    // A session that has the file open may go on; what it acknowledges must be there.
    const std::string zFailure = test::FailureOfMember(test::WritingMembers().front(), order);
    Allow(Store.Path(), 0600);
    const bool bThere = CurrentItems().back() == "NEW";
    return bThere == zFailure.empty() ? ExpectWorks("LATER")
                                      : "acknowledged is not what is there: " + zFailure;
  });
  EXPECT_EQ("LATER", CurrentItems().back());
}

TEST_F(Permissions, AReadOnlyFolderIsNamedWithWhatToDo) {
  RunHost([&] {
    Allow(Folder.Path(), 0500);
    std::string zWrong = ExpectNothingWorks({Store.Path(), "folder", "grant write permission"});
    Allow(Folder.Path(), 0700);
    zWrong += Compare(Orders());
    return zWrong + ExpectWorks("LATER");
  });
  EXPECT_EQ("LATER", CurrentItems().back());
}

TEST_F(Permissions, AReadOnlyFolderDoesNotStopAHostThatHasTheStoreOpen) {
  RunHost([&] {
    CurrentOrder order;
    order.LoadItems(0);
    Allow(Folder.Path(), 0500);
    std::string zWrong = test::FailureOfMember(test::WritingMembers().front(), order);
    zWrong += CurrentItems().back() == "NEW" ? "" : "what was added is not there\n";
    // Its sessions end, and it cannot take the log away.
    Rest();
    zWrong += CurrentItems().back() == "NEW" ? "" : "what was added is not there for a new session\n";
    Allow(Folder.Path(), 0700);
    return zWrong + ExpectWorks("LATER");
  });
  EXPECT_EQ((Texts{"now-1", "now-2", "now-3", "NEW", "LATER"}), CurrentItems());
}

TEST_F(Permissions, AReadOnlyFileInAReadOnlyFolderIsNamedWithWhatToDo) {
  RunHost([&] {
    Allow(Store.Path(), 0400);
    Allow(Folder.Path(), 0500);
    std::string zWrong = ExpectNothingWorks({Store.Path(), "grant write permission"});
    Allow(Folder.Path(), 0700);
    zWrong += Compare(Orders());
    Allow(Store.Path(), 0600);
    return zWrong + ExpectWorks("LATER");
  });
  EXPECT_EQ("LATER", CurrentItems().back());
}

TEST_F(Permissions, AFolderThatCannotBeReachedFailsEveryCallUntilItCan) {
  RunHost([&] {
    std::string zWrong = ExpectWorks("BEFORE");
    CurrentOrder order;
    order.LoadItems(0);
    Allow(Folder.Path(), 0);
    zWrong += ExpectNothingWorks({Store.Path(), "Permission denied", "Check the folder " + Folder.Path()});
    zWrong += ExpectWritesRefused(order, {Store.Path(), "Permission denied"});
    Allow(Folder.Path(), 0700);
    zWrong += CurrentItems().back() == "BEFORE" ? "" : "what was stored before is not there\n";
    return zWrong + ExpectWorks("LATER");
  });
  EXPECT_EQ((Texts{"now-1", "now-2", "now-3", "BEFORE", "LATER"}), CurrentItems());
}

TEST_F(Permissions, AFileThatCannotBeReadIsNamedWithWhatToDo) {
  RunHost([&] {
    Allow(Store.Path(), 0);
    std::string zWrong = ExpectNothingWorks({Store.Path(), "check the permissions", "Permission denied"});
    Allow(Store.Path(), 0600);
    zWrong += Compare(Orders());
    return zWrong + ExpectWorks("LATER");
  });
  EXPECT_EQ("LATER", CurrentItems().back());
}

// A log that another user left: it can be read, and what it holds is there, but it cannot be made writable.
TEST_F(Permissions, AnothersLogThatIsReadOnlyLosesNothing) {
  // A host that died left its log.
  test::ChildProcess([&] {
    CurrentOrder order;
    order.LoadItems(0);
    const std::string zFailure = test::FailureOfMember(test::WritingMembers().front(), order);
    return zFailure.empty() ? std::string("done") : zFailure;
  }).Outcome();
  ASSERT_TRUE(std::filesystem::exists(Store.Path() + "-wal"));
  Allow(Store.Path() + "-wal", 0444);
  Allow(Store.Path() + "-shm", 0444);
  RunHost([&]() -> std::string {
    CurrentOrder order;
    if (order.OrderDetails()->Error().Number == 0) {
      const std::string zFailure = test::FailureOfMember(test::WritingMembers()[5], order);
      // As an ordinary user the tests own the log and the library makes it writable.
      if (geteuid() == 65534 && zFailure.find(Store.Path()) == std::string::npos && !zFailure.empty()) {
        return "the refused write does not name the store: " + zFailure;
      }
      return "";
    }
    return order.OrderDetails()->Error().Description.find(Store.Path()) == std::string::npos
               ? "the record does not name the store: " + order.OrderDetails()->Error().Description
               : "";
  });
  EXPECT_EQ("NEW", CurrentItems().back());
  EXPECT_EQ("", ExpectWorks("LATER"));
}

}  // namespace
