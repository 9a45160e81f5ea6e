#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/faults/UnreliableDisk.h"
#include "tests/faults/WorkingStore.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::ado::embedded::CloseIdleSessions;
using test::Outcome;
using test::StoreCall;

std::uint64_t Seed() {
  const char* zSeed = std::getenv("QM_ORDERING_TEST_SEED");
  return zSeed == nullptr ? 20030704 : std::strtoull(zSeed, nullptr, 10);
}

// The part of a state that is the store's; the rest is the settings'.
std::string StorePart(const std::string& zvState) {
  return zvState.substr(0, zvState.find("OrderingDatabasePath"));
}

class PowerLoss : public testing::Test {
 protected:
  using Series = std::vector<StoreCall>;

  // The states that a series passes through: those that may be found when the power fails after so many
  // acknowledged calls.
  using Course = std::vector<std::set<std::string>>;

  Series SeriesBy(std::mt19937_64& orChance) const {
    std::vector<StoreCall> calls = m_oStore.Calls();
    std::erase_if(calls, [](const StoreCall& call) { return !call.InSeries; });
    Series series;
    for (int i = 0; i < kCalls; ++i) {
      series.push_back(calls[std::uniform_int_distribution<std::size_t>(0, calls.size() - 1)(orChance)]);
    }
    return series;
  }

  Course CourseOf(const Series& series) const {
    m_oStore.SetBack();
    Course course;
    std::string zBefore = m_oStore.State();
    for (const StoreCall& call : series) {
      std::set<std::string> states = {zBefore};
      qm_ordering::SetStatementTrace([&](const std::string&) { states.insert(m_oStore.State()); });
      test::OutcomeOf([&] { return call.Prepare()(); });
      qm_ordering::SetStatementTrace(nullptr);
      const std::string zAfter = m_oStore.State();
      // The order defaults are kept behind the last statement.
      states.insert(StorePart(zAfter) + zBefore.substr(StorePart(zBefore).size()));
      states.insert(zAfter);
      course.push_back(std::move(states));
      zBefore = zAfter;
    }
    course.push_back({zBefore});
    return course;
  }

  // Runs the series until the power fails; answers how many calls were acknowledged.
  std::size_t Work(const Series& series, test::UnreliableDisk& disk) const {
    const test::SystemWatch watch(disk, m_oStore.Folder());
    std::size_t lDone = 0;
    for (const StoreCall& call : series) {
      test::OutcomeOf([&] { return call.Prepare()(); });
      if (disk.IsOff()) {
        break;
      }
      ++lDone;
    }
    CloseIdleSessions();
    return lDone;
  }

  // Cuts the power lvRounds times, at a moment that chance picks.
  void Cut(std::size_t lvRounds) const {
    const std::uint64_t lSeed = Seed();
    std::mt19937_64 chance(lSeed);
    std::size_t lWithUnflushed = 0;
    std::size_t lInCall = 0;
    Series series;
    Course course;
    std::size_t lRequests = 0;
    for (std::size_t lRound = 0; lRound < lvRounds; ++lRound) {
      if (lRound % kRoundsOfSeries == 0) {
        series = SeriesBy(chance);
        course = CourseOf(series);
        m_oStore.SetBack();
        test::UnreliableDisk endless(m_oStore.Folder(), SIZE_MAX);
        Work(series, endless);
        lRequests = endless.Requests();
      }
      m_oStore.SetBack();
      test::UnreliableDisk disk(m_oStore.Folder(),
                                std::uniform_int_distribution<std::size_t>(1, lRequests)(chance));
      const std::size_t lDone = Work(series, disk);
      const bool bNothingMore = lRound % 2 == 0;
      if (bNothingMore) {
        disk.PutLeft(m_oStore.Folder());
      } else {
        disk.PutLeft(m_oStore.Folder(), chance);
      }
      lWithUnflushed += disk.Unflushed() > 0 ? 1U : 0U;
      lInCall += lDone < series.size() ? 1U : 0U;

      SCOPED_TRACE("QM_ORDERING_TEST_SEED=" + std::to_string(lSeed) + ", round " + std::to_string(lRound) +
                   ", " + std::to_string(disk.Requests()) + " requests, " + std::to_string(lDone) +
                   " calls acknowledged" +
                   (lDone < series.size() ? std::string(", then ") + series[lDone].Name : std::string()));
      for (const std::string& zFinding : qm_ordering::CheckOrderStore()) {
        EXPECT_NE(std::string::npos, zFinding.find("its total is")) << zFinding;
      }
      EXPECT_TRUE(course[lDone].contains(m_oStore.State())) << m_oStore.State();
      qm_ordering::CurrentOrder order;
      order.SavePONumber();
      EXPECT_EQ(0, order.Error().Number) << order.Error().Description;
      if (HasFailure()) {
        return;
      }
    }
    std::cout << "power failures: " << lvRounds << ", in the middle of a call: " << lInCall
              << ", with something that was not flushed: " << lWithUnflushed << "\n";
  }

  // Cuts the power at every lvStride-th request of a call that stands alone.
  void CutWithin(const char* zvCall, std::size_t lvStride) const {
    const std::vector<StoreCall> calls = m_oStore.Calls();
    const auto call = std::ranges::find_if(
        calls, [&](const StoreCall& other) { return other.Name == std::string(zvCall); });
    ASSERT_NE(calls.end(), call);
    m_oStore.SetBack();
    const auto course = call->Prepare();
    const std::string zBefore = m_oStore.State();
    EXPECT_EQ("", test::OutcomeOf(course).Failure);
    const std::string zAfter = m_oStore.State();

    std::mt19937_64 chance(Seed());
    std::size_t lRounds = 0;
    bool bEnded = false;
    for (std::size_t lAt = 1; !bEnded; lAt += lvStride) {
      for (const bool bNothingMore : {true, false}) {
        SCOPED_TRACE("QM_ORDERING_TEST_SEED=" + std::to_string(Seed()) + ", request " + std::to_string(lAt) +
                     (bNothingMore ? ", nothing" : ", parts") + " of what was not flushed is left");
        m_oStore.SetBack();
        const auto run = call->Prepare();
        CloseIdleSessions();
        test::UnreliableDisk disk(m_oStore.Folder(), lAt);
        Outcome outcome;
        {
          const test::SystemWatch watch(disk, m_oStore.Folder());
          outcome = test::OutcomeOf(run);
          bEnded = !disk.IsOff();
          CloseIdleSessions();
        }
        if (bNothingMore) {
          disk.PutLeft(m_oStore.Folder());
        } else {
          disk.PutLeft(m_oStore.Folder(), chance);
        }
        ++lRounds;
        if (m_oStore.KeptFile().empty()) {
          EXPECT_EQ(std::vector<std::string>(), qm_ordering::CheckOrderStore());
        }
        const std::string zState = m_oStore.State();
        EXPECT_TRUE(zState == zAfter || (!bEnded && zState == zBefore)) << zState;
        if (HasFailure()) {
          return;
        }
      }
    }
    std::cout << "power failures: " << lRounds << "\n";
  }

  static constexpr int kCalls = 12;
  static constexpr std::size_t kRoundsOfSeries = 10;

  test::WorkingStore m_oStore;
};

class PowerLossFull : public PowerLoss {};

}  // namespace

TEST_F(PowerLoss, LeavesWhatWasAcknowledged) {
  Cut(20);
}

TEST_F(PowerLossFull, LeavesWhatWasAcknowledged) {
  Cut(400);
}

TEST_F(PowerLoss, InTheMiddleOfARestoreLeavesTheOldStoreOrTheNew) {
  CutWithin("RestoreOrderStore", 17);
}

TEST_F(PowerLossFull, InTheMiddleOfARestoreLeavesTheOldStoreOrTheNew) {
  CutWithin("RestoreOrderStore", 1);
}

TEST_F(PowerLoss, InTheMiddleOfAnImportLeavesAllOrdersOrNone) {
  CutWithin("ApplyImports", 7);
}

TEST_F(PowerLossFull, InTheMiddleOfAnImportLeavesAllOrdersOrNone) {
  CutWithin("ApplyImports", 1);
}

TEST_F(PowerLoss, InTheMiddleOfAnExportLeavesTheOldFileOfTheListsOrTheNew) {
  CutWithin("SaveAsXML", 3);
}

TEST_F(PowerLossFull, InTheMiddleOfAnExportLeavesTheOldFileOfTheListsOrTheNew) {
  CutWithin("SaveAsXML", 1);
}
