#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "tests/hostile/HostileHost.h"
#include "tests/support/EnvironmentScope.h"

// Hosts that call the library in any order with any values. QM_ORDERING_HOSTILE_SEED repeats a run,
// QM_ORDERING_HOSTILE_SEQUENCE one sequence of it, and with QM_ORDERING_HOSTILE_TELL set each call is told on
// stderr before it is made.

namespace {

std::optional<std::uint64_t> NumberOfEnvironment(const char* zvName) {
  const char* zValue = std::getenv(zvName);
  return zValue == nullptr ? std::nullopt : std::optional<std::uint64_t>(std::strtoull(zValue, nullptr, 10));
}

// Where nothing waits for a disk; these tests are about calls.
std::string FolderInMemory() {
  return std::filesystem::is_directory("/dev/shm") ? "/dev/shm"
                                                   : std::filesystem::temp_directory_path().string();
}

class HostileCalls : public testing::Test {
 protected:
  void Work(std::uint64_t lvDefaultSeed, std::uint64_t lvSequences) {
    const std::uint64_t lSeed = NumberOfEnvironment("QM_ORDERING_HOSTILE_SEED").value_or(lvDefaultSeed);
    const auto lOnly = NumberOfEnvironment("QM_ORDERING_HOSTILE_SEQUENCE");
    std::cout << "seed: " << lSeed << "\n";
    const test::EnvironmentScope folder("TMPDIR", FolderInMemory().c_str());
    // The store, and the host that works on it.
    struct Place : public test::StoreFixture {
      void TestBody() override {}
      Place() : Host(Folder.Path(), *Settings) {}
      test::HostileHost Host;
    };
    Place place;
    test::HostileHost& host = place.Host;
    int lSequences = 0;
    for (std::uint64_t i = lOnly.value_or(0); i < (lOnly ? *lOnly + 1 : lvSequences); ++i) {
      const std::string zWrong = host.Work(lSeed * 1'000'003 + i, 26);
      ++lSequences;
      ASSERT_EQ("", zWrong) << "seed " << lSeed << ", sequence " << i << ":\n" << host.Calls();
    }
    int lCalls = 0;
    for (const auto& [zName, lCount] : host.CallCounts()) {
      lCalls += lCount;
    }
    std::cout << "sequences: " << lSequences << "\ncalls: " << lCalls
              << "\nmembers and functions called: " << host.CallCounts().size() << "\nraised:";
    for (const auto& [lNumber, lCount] : host.RaisedCounts()) {
      std::cout << " " << lNumber << " " << lCount << "x";
    }
    std::cout << "\nrecorded:";
    for (const auto& [lNumber, lCount] : host.RecordedCounts()) {
      std::cout << " " << lNumber << " " << lCount << "x";
    }
    std::cout << "\n";
    if (!lOnly) {
      // Hosts that never met a failure would have tried nothing.
      for (const std::int32_t lNumber : {5, 6, 9, 11, 13, 76, 91, 457, -2147217900, -1072896760}) {
        EXPECT_TRUE(host.RaisedCounts().contains(lNumber)) << lNumber << " was never raised";
      }
      for (const std::int32_t lNumber : {0, 1, 2, 3, 4, 5, 9, 10, 11}) {
        EXPECT_TRUE(host.RecordedCounts().contains(lNumber)) << lNumber << " was never recorded";
      }
    }
  }
};

using HostileCallsFull = HostileCalls;

TEST_F(HostileCalls, DoNothingButWhatTheirMembersSay) {
  Work(20030704, 200);
}

TEST_F(HostileCallsFull, DoNothingButWhatTheirMembersSay) {
  Work(7, 9'000);
}

}  // namespace
