#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/conditions/TroubledStore.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/TempFolder.h"

// The user moves, deletes or replaces the store's file while the host runs.

namespace {

using namespace qm_ordering;
using Texts = std::vector<std::string>;

class ReplacedStore : public test::TroubledStore {
 protected:
  ReplacedStore() {
    Replace();
    m_zOtherOrders = Orders();
    Reset();
  }

  // Another store takes the place of the one in use, which is kept.
  void Replace() const {
    test::WriteFile(Folder.File("Next.mdb"), m_zOther);
    std::filesystem::rename(Store.Path(), m_zOld);
    std::filesystem::rename(Folder.File("Next.mdb"), Store.Path());
  }

  // The old store in its place again, for a look at it.
  void PutBack() const {
    Rest();
    std::filesystem::rename(m_zOld, Store.Path());
  }

  // The store as it was, and no other one.
  void Reset() const {
    Restore();
    for (const char* zSuffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(m_zOld + zSuffix);
    }
  }

  // Whether the store in place has values that hold the word.
  static bool Holds(const std::string& zvWord) {
    for (const std::string& zLine : Orders()) {
      if (zLine.find(zvWord) != std::string::npos) {
        return true;
      }
    }
    return false;
  }

  static void ExpectWhole(const std::string& zvWhich, bool bvTotalsToo) {
    for (const std::string& zFinding : CheckOrderStore()) {
      EXPECT_TRUE(!bvTotalsToo && zFinding.find(": its total is ") != std::string::npos)
          << zvWhich << ": " << zFinding;
    }
  }

  // A call that writes lines and total in statements of their own, or the total that the object holds.
  static bool TotalMayBeApart(const std::string& zvMember) {
    return zvMember == "AddItem of a line that is there" || zvMember == "UpdateItems" ||
           zvMember == "SaveSummary";
  }

  // What a member is expected to answer: nothing, but for the item that only the object's collection holds by
  // now.
  static void ExpectDone(const std::string& zvMember, const std::string& zvFailure) {
    if (zvMember != "AddItem of a line that is there" || !zvFailure.starts_with("457 : ")) {
      EXPECT_EQ("", zvFailure) << zvMember;
    }
  }

  // Both stores are whole, and neither holds anything of the other one. The old store is in its place
  // afterwards.
  void ExpectNotMixed(const std::string& zvWhen, bool bvTotalsToo = true) const {
    ExpectWhole(zvWhen + ": the new store", bvTotalsToo);
    EXPECT_TRUE(Holds("zItemNumber = other second-3")) << zvWhen;
    EXPECT_FALSE(Holds("zItemNumber = second-")) << zvWhen << ": a line of the old store in the new one";
    PutBack();
    ExpectWhole(zvWhen + ": the old store", bvTotalsToo);
    EXPECT_FALSE(Holds("zItemNumber = other")) << zvWhen << ": a line of the new store in the old one";
    EXPECT_TRUE(Holds("zItemNumber = second-3")) << zvWhen;
  }

  const std::string m_zOther = BytesOfOther();
  const std::string m_zOld = Folder.File("Old.mdb");
  Texts m_zOtherOrders;
};

TEST_F(ReplacedStore, IsTheOneThatTheNextCallUses) {
  CurrentOrder order;
  order.LoadItems(0);
  ASSERT_EQ("", ExpectWorks("ADDED"));
  Replace();
  EXPECT_EQ(m_zOtherOrders, Orders());
  order.LoadSummary();
  order.LoadItems(0);
  EXPECT_EQ("PO other now", order.OrderDetails()->PurchaseOrderNumber());
  EXPECT_FALSE(order.ItemExists("ADDED"));
  EXPECT_EQ("", ExpectWorks("LATER"));
  ExpectNotMixed("after reading");
  EXPECT_EQ("ADDED", CurrentItems().back());
}

// An object names its order by the id; the store that is there now has another order of that id, and that is
// the one which is written.
TEST_F(ReplacedStore, IsTheOneThatEveryMemberWrites) {
  for (const auto& member : test::WritingMembers()) {
    Reset();
    CurrentOrder order;
    order.LoadItems(0);
    Replace();
    ExpectDone(member.Name, test::FailureOfMember(member, order));
    ExpectNotMixed(member.Name, !TotalMayBeApart(member.Name));
    EXPECT_EQ(Known, Orders()) << member.Name << " wrote the store that was in use before";
  }
}

// The other store comes in the middle of a call, before each of its statements in turn.
using ReplacedStoreFull = ReplacedStore;

TEST_F(ReplacedStoreFull, IsNotMixedWithTheOldOneInTheMiddleOfACall) {
  int lCalls = 0;
  for (const auto& member : test::WritingMembers()) {
    for (std::size_t lStatement = 1;; ++lStatement) {
      SCOPED_TRACE(std::string(member.Name) + ", statement " + std::to_string(lStatement));
      Reset();
      CurrentOrder order;
      order.LoadItems(0);
      bool bReplaced = false;
      std::string zFailure;
      {
        test::TraceRecorder trace;
        trace.Before = [&](const std::string&) {
          if (trace.Statements().size() == lStatement) {
            Replace();
            bReplaced = true;
          }
        };
        zFailure = test::FailureOfMember(member, order);
      }
      if (!bReplaced) {
        break;
      }
      ++lCalls;
      ExpectDone(member.Name, zFailure);
      const bool bInNew = Holds("zItemNumber = NEW");
      ExpectNotMixed("in the middle", !TotalMayBeApart(member.Name));
      const bool bAdds = std::string(member.Name) == "AddItem of a new line";
      EXPECT_EQ(bAdds, bInNew != Holds("zItemNumber = NEW"))
          << "the added line is not in just one of the stores";
    }
  }
  EXPECT_GE(lCalls, 18);
  std::cout << "calls in whose middle the store was replaced: " << lCalls << "\n";
}

// The session of the call that is under way holds the old file, and its log is still beside the name.
TEST_F(ReplacedStore, IsRefusedWhileACallHoldsTheOldOne) {
  ASSERT_EQ("", ExpectWorks("ADDED"));
  CurrentOrder order;
  order.LoadItems(0);
  Texts zRead;
  std::string zFailure;
  {
    test::TraceRecorder trace;
    trace.Before = [&](const std::string& zvSQL) {
      if (zvSQL.starts_with("insert into tblOrderItem")) {
        Replace();
        zRead = Orders();
        ClearLastFailure();
      }
    };
    zFailure = test::FailureOfMember(test::WritingMembers().front(), order);
  }
  EXPECT_EQ("", zFailure);
  ASSERT_EQ(3U, zRead.size());
  for (const std::string& zLine : zRead) {
    EXPECT_NE(std::string::npos, zLine.find("failed: -2147467259 : The order store " + Store.Path()))
        << zLine;
    EXPECT_NE(std::string::npos, zLine.find("replaced")) << zLine;
  }
  EXPECT_EQ(m_zOtherOrders, Orders());
  ExpectNotMixed("while a call holds the old store");
  EXPECT_EQ("NEW", CurrentItems().back());
}

// The session of another thread rests on the old file.
TEST_F(ReplacedStore, IsRefusedWhileAnotherThreadHoldsTheOldOne) {
  Rest();
  std::promise<void> added;
  std::promise<void> replaced;
  std::promise<void> noticed;
  std::promise<void> ended;
  std::string zOfThread;
  std::thread other([&] {
    const auto oSettings = std::make_shared<test::MemorySettings>();
    oSettings->User["OrderingDatabasePath"] = Folder.Path();
    InstallSettings(oSettings);
    zOfThread = ExpectWorks("OF THE THREAD");
    added.set_value();
    replaced.get_future().wait();
    // It closes what it had open, and goes on with the file that is there now.
    zOfThread += ExpectWorks("LATER");
    noticed.set_value();
    ended.get_future().wait();
  });
  added.get_future().wait();
  Replace();
  CurrentOrder order;
  EXPECT_NE(std::string::npos, order.OrderDetails()->Error().Description.find("replaced"))
      << order.OrderDetails()->Error().Description;
  replaced.set_value();
  noticed.get_future().wait();
  EXPECT_EQ("", ExpectWorks("OF THIS THREAD"));
  ended.set_value();
  other.join();
  EXPECT_EQ("", zOfThread);
  EXPECT_TRUE(Holds("= LATER"));
  EXPECT_FALSE(Holds("= OF THE THREAD"));
  ExpectNotMixed("after another thread");
  EXPECT_EQ("OF THE THREAD", CurrentItems().back());
}

using DeletedStore = ReplacedStore;
using DeletedStoreFull = ReplacedStore;

TEST_F(DeletedStore, FailsEveryMemberIsNotMadeAnewAndWorksWhenItIsBack) {
  CurrentOrder order;
  order.LoadItems(0);
  ASSERT_EQ("", ExpectWorks("ADDED"));
  std::filesystem::rename(Store.Path(), m_zOld);
  EXPECT_EQ("",
            ExpectWritesRefused(order, {Store.Path(), "there is no such file", "qm-ordering store create"}));
  for (const std::string& zLine : Orders()) {
    EXPECT_NE(std::string::npos, zLine.find("failed: -2147467259 : ")) << zLine;
  }
  EXPECT_EQ(failure::kStoreUnavailable, test::RaisedNumber([] { return CheckOrderStore(); }));
  EXPECT_FALSE(std::filesystem::exists(Store.Path()));
  EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-wal"));
  std::filesystem::rename(m_zOld, Store.Path());
  EXPECT_EQ("ADDED", CurrentItems().back());
  order.LoadSummary();
  EXPECT_EQ(ErrorInfo(), order.Error());
  EXPECT_EQ("", ExpectWorks("LATER"));
}

TEST_F(DeletedStoreFull, FailsInTheMiddleOfACallOrCompletesIt) {
  for (const auto& member : test::WritingMembers()) {
    for (std::size_t lStatement = 1;; ++lStatement) {
      SCOPED_TRACE(std::string(member.Name) + ", statement " + std::to_string(lStatement));
      Reset();
      CurrentOrder order;
      order.LoadItems(0);
      bool bAway = false;
      std::string zFailure;
      {
        test::TraceRecorder trace;
        trace.Before = [&](const std::string&) {
          if (trace.Statements().size() == lStatement) {
            std::filesystem::rename(Store.Path(), m_zOld);
            bAway = true;
          }
        };
        zFailure = test::FailureOfMember(member, order);
      }
      if (!bAway) {
        break;
      }
      EXPECT_FALSE(std::filesystem::exists(Store.Path()));
      PutBack();
      ExpectWhole("put back", !TotalMayBeApart(member.Name));
      if (zFailure.empty()) {
        EXPECT_NE(Known, Orders()) << "acknowledged and not there";
      } else {
        EXPECT_NE(std::string::npos, zFailure.find("-2147467259 : ")) << zFailure;
        EXPECT_NE(std::string::npos, zFailure.find(Store.Path())) << zFailure;
      }
      order.ClearItems();
      EXPECT_EQ("", ExpectWorks("LATER"));
    }
  }
}

TEST_F(DeletedStore, WorksWhenABackupIsInItsPlace) {
  CurrentOrder order;
  ASSERT_EQ("", ExpectWorks("LOST WITH THE FILE"));
  std::filesystem::remove(Store.Path());
  EXPECT_EQ(0, order.ItemCount());
  test::WriteFile(Store.Path(), Bytes);
  EXPECT_EQ(Known, Orders());
  EXPECT_EQ("", ExpectWorks("LATER"));
}

// Put back so soon that the host has not noticed.
TEST_F(DeletedStore, WorksWhenABackupIsInItsPlaceBeforeTheNextCall) {
  CurrentOrder order;
  ASSERT_EQ("", ExpectWorks("LOST WITH THE FILE"));
  std::filesystem::remove(Store.Path());
  test::WriteFile(Store.Path(), Bytes);
  EXPECT_EQ(Known, Orders());
  EXPECT_EQ("", ExpectWorks("LATER"));
}

}  // namespace
