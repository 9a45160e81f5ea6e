#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/settings/Settings.h"
#include "tests/support/FixedClock.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/TempFolder.h"

namespace test {

using Texts = std::vector<std::string>;

// A new store and a new settings file in a folder of their own, for a test and the processes that it starts.
// This thread works on them for the length of the scope, by the library's own settings component. The clock
// stands still. Start no process while this one has the store open: see Rest.
class SharedStore {
 public:
  SharedStore();
  ~SharedStore();
  SharedStore(const SharedStore&) = delete;
  SharedStore& operator=(const SharedStore&) = delete;

  // Closes what this process has open of the store. To be called before each fork, when every object that may
  // hold a connection has gone.
  static void Rest();

  const StoreFile& Store() const { return m_oStore; }
  std::string LogPath() const { return m_oStore.Path() + "-wal"; }
  std::string ListsPath() const { return m_oFolder.File("PersonalLists.xml"); }
  std::string SettingsPath() const { return m_oFolder.File("settings.ini"); }
  // What is kept under the key as a default of the next order.
  std::string Default(const std::string& zvKey) const;

 private:
  TempFolder m_oFolder;
  StoreFile m_oStore;
  FixedClock m_oClock;
  std::shared_ptr<qm_ordering::SettingsComponent> m_oSettings;
};

// The names in a folder, in their order.
Texts NamesIn(const std::string& zvFolder);

// An item with packs of one. lvPrice is its price times 10,000.
std::shared_ptr<qm_ordering::OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                                std::int64_t lvPrice, std::size_t lvNotes = 0);

// From the environment variable QM_ORDERING_TEST_SEED, so that a run can be repeated as far as the machine's
// timing allows; 1 without it.
unsigned Seed();

}  // namespace test
