#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/conditions/TroubledStore.h"
#include "tests/support/TempFolder.h"

// The log beside a store, after a host that died, cut or damaged; and other things in its place. A whole log
// of another store, put there by hand, is what nobody can tell from the store's own: it does not name its
// store.

namespace {

using namespace qm_ordering;
using Texts = std::vector<std::string>;

class DamagedLog : public test::TroubledStore {
 protected:
  static constexpr int kSteps = 12;

  std::string Log() const { return Store.Path() + "-wal"; }
  std::string Index() const { return Store.Path() + "-shm"; }

  // A host adds a line and then saves the number of the step, many times, and dies.
  void LeaveLog() {
    EXPECT_EQ("died", test::ChildProcess([&] {
                        CurrentOrder order;
                        for (int i = 1; i <= kSteps; ++i) {
                          const std::string zFailure = Step(order, i);
                          if (!zFailure.empty()) {
                            return zFailure;
                          }
                        }
                        return std::string("died");
                      }).Outcome());
    m_zLog = test::ReadFile(Log());
    m_zIndex = test::ReadFile(Index());
    ASSERT_GT(m_zLog.size(), 20'000U);
  }

  // The store and its log as they were left. After a restart of the machine there is no index, after the end
  // of the host alone there is.
  void PutLog(const std::string& zvLog, bool bvIndex) const {
    Restore();
    test::WriteFile(Log(), zvLog);
    if (bvIndex) {
      test::WriteFile(Index(), m_zIndex);
    }
  }

  // The steps that the store holds: those up to some step, the last of them perhaps without its number, and
  // perhaps without the total. Anything else is wrong.
  int ExpectSomeSteps() const {
    OrderDetails order;
    order.LoadSummary(true);
    EXPECT_EQ(ErrorInfo(), order.Error());
    order.LoadItems(0, true);
    int lSteps = 0;
    for (const auto& oItem : *order.OrderItems()) {
      if (oItem->ItemNumber().starts_with("STEP ")) {
        EXPECT_EQ("STEP " + std::to_string(++lSteps), oItem->ItemNumber());
        EXPECT_EQ(lSteps, oItem->Quantity());
      }
    }
    const std::string zNumber = order.PurchaseOrderNumber();
    const auto zNumberOf = [](int lvStep) { return lvStep == 0 ? "PO now" : "PO " + std::to_string(lvStep); };
    EXPECT_TRUE(zNumber == zNumberOf(lSteps) || zNumber == zNumberOf(lSteps - 1)) << zNumber;
    for (const std::string& zFinding : CheckOrderStore()) {
      EXPECT_NE(std::string::npos, zFinding.find(": its total is ")) << zFinding;
    }
    return lSteps;
  }

  std::string m_zLog;
  std::string m_zIndex;

 private:
  static std::string Step(CurrentOrder& order, int lvStep) {
    auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber("STEP " + std::to_string(lvStep));
    oItem->Quantity(lvStep);
    oItem->SellQuantity(1);
    oItem->ShipQuantity(1);
    oItem->Price(Currency::Parse("1"));
    order.AddItem(oItem);
    if (order.Error().Number == 0) {
      order.OrderDetails()->PurchaseOrderNumber("PO " + std::to_string(lvStep));
      order.SavePONumber();
    }
    return order.Error().Description;
  }
};

using DamagedLogFull = DamagedLog;

TEST_F(DamagedLog, ThatIsWholeHoldsAllThatWasAcknowledged) {
  LeaveLog();
  for (const bool bIndex : {false, true}) {
    PutLog(m_zLog, bIndex);
    EXPECT_EQ(kSteps, ExpectSomeSteps());
    EXPECT_EQ("PO " + std::to_string(kSteps), [] {
      CurrentOrder order;
      return order.OrderDetails()->PurchaseOrderNumber();
    }());
    EXPECT_EQ("", ExpectWorks("LATER"));
  }
}

// The engine takes what is whole, up to the first damage, and ignores the rest: the store is in a state in
// which it once was. That acknowledged work is lost then is what no program can help.
TEST_F(DamagedLogFull, ThatWasCutGivesAStateOfTheStore) {
  LeaveLog();
  constexpr std::size_t kHeader = 32;
  constexpr std::size_t kFrame = 4096 + 24;
  std::vector<std::size_t> sizes = {0, 1, kHeader - 1, kHeader, kHeader + 1};
  for (std::size_t lSize = kHeader + kFrame; lSize <= m_zLog.size(); lSize += kFrame) {
    sizes.insert(sizes.end(), {lSize - 1, lSize, lSize + 24});
  }
  int lLast = 0;
  int lCuts = 0;
  for (const std::size_t lSize : sizes) {
    for (const bool bIndex : {false, true}) {
      SCOPED_TRACE(std::to_string(lSize) + " bytes of the log" + (bIndex ? ", with its index" : ""));
      PutLog(m_zLog.substr(0, lSize), bIndex);
      const int lSteps = ExpectSomeSteps();
      EXPECT_GE(lSteps, lLast) << "less in a longer log";
      lLast = lSteps;
      ++lCuts;
      if (lCuts % 8 == 0) {
        CurrentOrder order;
        order.ClearItems();
        EXPECT_EQ("", ExpectWorks("LATER"));
      }
    }
  }
  EXPECT_EQ(kSteps, lLast);
  std::cout << "cuts of the log: " << lCuts << "\n";
}

TEST_F(DamagedLogFull, WithBytesThatChangedGivesAStateOfTheStore) {
  const char* zSeed = std::getenv("QM_ORDERING_DAMAGE_SEED");
  const std::uint64_t lSeed = zSeed == nullptr ? 12 : std::strtoull(zSeed, nullptr, 10);
  std::cout << "seed: " << lSeed << "\n";
  std::mt19937_64 random(lSeed);
  LeaveLog();
  int lLess = 0;
  constexpr int kFlips = 300;
  for (int i = 0; i < kFlips; ++i) {
    std::string zLog = m_zLog;
    const std::size_t lOffset = random() % zLog.size();
    zLog[lOffset] = static_cast<char>(zLog[lOffset] ^ static_cast<char>(1 << random() % 8));
    SCOPED_TRACE("seed " + std::to_string(lSeed) + ", byte " + std::to_string(lOffset) + " of the log");
    PutLog(zLog, i % 2 == 0);
    lLess += ExpectSomeSteps() < kSteps ? 1 : 0;
    ASSERT_FALSE(HasFailure());
  }
  std::cout << "bytes of the log changed: " << kFlips << ", of which took steps away: " << lLess << "\n";
  EXPECT_GT(lLess, 0);
}

TEST_F(DamagedLog, ThatIsAFolderIsNamedUntilItIsGone) {
  for (const std::string& zFolder : {Log(), Index()}) {
    SCOPED_TRACE(zFolder);
    Restore();
    std::filesystem::create_directory(zFolder);
    CurrentOrder order;
    for (const std::string& zWord :
         {Store.Path(), zFolder + " beside it is not a file", std::string("Move it away")}) {
      EXPECT_NE(std::string::npos, order.OrderDetails()->Error().Description.find(zWord))
          << order.OrderDetails()->Error().Description;
    }
    std::filesystem::remove(zFolder);
    EXPECT_EQ(Known, Orders());
    EXPECT_EQ("", ExpectWorks("LATER"));
  }
}

TEST_F(DamagedLog, OfAnotherKindIsIgnored) {
  for (const std::string& zPath : {Log(), Index()}) {
    for (const std::string& zContent :
         {std::string("a shopping list"), std::string(100'000, 'x'), std::string(40'000, '\0')}) {
      SCOPED_TRACE(zPath + " of " + std::to_string(zContent.size()) + " bytes");
      Restore();
      test::WriteFile(zPath, zContent);
      EXPECT_EQ(Known, Orders());
      EXPECT_EQ("", ExpectWorks("LATER"));
      Rest();
      EXPECT_EQ("LATER", CurrentItems().back());
    }
  }
}

}  // namespace
