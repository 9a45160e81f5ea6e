#include "tests/processes/SharedStore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"
#include "qm_ordering/store/OrderStore.h"

namespace test {

SharedStore::SharedStore()
    : m_oStore(m_oFolder.File("Orders.mdb")), m_oSettings(qm_ordering::CreateFileSettings(SettingsPath())) {
  qm_ordering::CreateOrderStore(m_oFolder.Path());
  const auto oKeys = m_oSettings->CreateOrderDefaults();
  oKeys->Set(qm_ordering::UserSettingConstants::ORDERINGDATABASEPATH, m_oFolder.Path());
  oKeys->Save();
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(m_oSettings);
}

SharedStore::~SharedStore() {
  Rest();
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(nullptr);
}

void SharedStore::Rest() {
  qm_ordering::ado::embedded::CloseIdleSessions();
}

std::string SharedStore::Default(const std::string& zvKey) const {
  return m_oSettings->CreateOrderDefaults()->Get(zvKey);
}

Texts NamesIn(const std::string& zvFolder) {
  Texts zNames;
  for (const auto& entry : std::filesystem::directory_iterator(zvFolder)) {
    zNames.push_back(entry.path().filename().string());
  }
  std::ranges::sort(zNames);
  return zNames;
}

std::shared_ptr<qm_ordering::OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                                std::int64_t lvPrice, std::size_t lvNotes) {
  auto oItem = std::make_shared<qm_ordering::OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Quantity(lvQuantity);
  oItem->Price(qm_ordering::Currency::FromScaled(lvPrice));
  oItem->ExtendedPrice(oItem->Price() * lvQuantity);
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  oItem->CustomerNotes(std::string(lvNotes, 'n'));
  return oItem;
}

unsigned Seed() {
  const char* zSeed = std::getenv("QM_ORDERING_TEST_SEED");
  return zSeed == nullptr ? 1U : static_cast<unsigned>(std::strtoul(zSeed, nullptr, 10));
}

}  // namespace test
