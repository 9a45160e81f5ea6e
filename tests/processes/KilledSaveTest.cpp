#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "qm_ordering/platform/settings/FileSettings.h"
#include "tests/processes/SharedStore.h"
#include "tests/processes/Sleep.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Pipe.h"
#include "tests/support/TempFolder.h"

namespace {

using test::Texts;

constexpr int kKeys = 40;

// Processes that are killed while they save settings, each save with values of its own.
class KilledSave : public testing::Test {
 protected:
  void KillMany(int lvKills) {
    std::mt19937 random(test::Seed());
    Save(m_lLast);
    for (int lRound = 0; lRound < lvKills && !HasFailure(); ++lRound) {
      SCOPED_TRACE("seed " + std::to_string(test::Seed()) + ", round " + std::to_string(lRound));
      KillOne(static_cast<long>(random() % 20000));
    }
    std::printf("seed: %u\nkills: %d\nkills in a save: %d\nkills that left a temporary file: %d\n",
                test::Seed(), m_lKills, InASave, Leftovers);
  }

  int InASave = 0;
  int Leftovers = 0;

 private:
  void KillOne(long lvMicroseconds) {
    test::Pipe reports;
    test::ChildProcess process([&] {
      reports.KeepWriting();
      for (int i = m_lLast + 1;; ++i) {
        reports.Write("b");
        Save(i);
        reports.Write("d");
      }
      return std::string();
    });
    reports.KeepReading();
    reports.Read();
    test::Sleep(lvMicroseconds);
    EXPECT_EQ(test::ChildProcess::kKilled, process.Kill());
    ++m_lKills;
    int lBegun = 1;
    int lDone = 0;
    while (const std::optional<char> cReport = reports.Read()) {
      lBegun += *cReport == 'b';
      lDone += *cReport == 'd';
    }
    InASave += lBegun > lDone;
    Examine(m_lLast + lDone, m_lLast + lBegun);
  }

  // The file holds all of the last save that was acknowledged, or all of the one that was under way.
  void Examine(int lvDone, int lvBegun) {
    EXPECT_EQ(kKeys, qm_ordering::FileSettingsKeys(File()).size());
    const auto oSettings = qm_ordering::CreateFileSettings(File())->CreateOrderDefaults();
    const bool bDone = oSettings->Get(Key(0)) == Value(lvDone, 0);
    for (int lKey = 0; lKey < kKeys; ++lKey) {
      EXPECT_EQ(Value(bDone ? lvDone : lvBegun, lKey), oSettings->Get(Key(lKey)));
    }
    Leftovers += test::NamesIn(m_oFolder.Path()).size() > 2;
    m_lLast = lvBegun + 1;
    Save(m_lLast);
    EXPECT_EQ((Texts{"settings.ini", "settings.ini.lock"}), test::NamesIn(m_oFolder.Path()));
  }

  std::string File() const { return m_oFolder.File("settings.ini"); }
  static std::string Key(int lvKey) { return "KEY_" + std::to_string(lvKey); }
  static std::string Value(int lvSave, int lvKey) {
    return "save " + std::to_string(lvSave) + " key " + std::to_string(lvKey) + " " +
           std::string(static_cast<std::size_t>(lvSave * 37 % 500), 'x');
  }
  void Save(int lvSave) const {
    const auto oSettings = qm_ordering::CreateFileSettings(File())->CreateOrderDefaults();
    for (int lKey = 0; lKey < kKeys; ++lKey) {
      oSettings->Set(Key(lKey), Value(lvSave, lKey));
    }
    oSettings->Save();
  }

  test::TempFolder m_oFolder;
  int m_lLast = 0;
  int m_lKills = 0;
};

using KilledSaveFull = KilledSave;

}  // namespace

TEST_F(KilledSave, LeavesTheSettingsFileWholeAndNothingForGood) {
  KillMany(15);
}

TEST_F(KilledSaveFull, LeavesTheSettingsFileWholeAndNothingForGood) {
  KillMany(300);
  EXPECT_LT(0, InASave);
  EXPECT_LT(0, Leftovers);
}
