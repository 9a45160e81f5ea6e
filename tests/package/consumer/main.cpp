// A host outside of the library's tree: what it does crosses the library's boundary in every way that a
// host's does.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "qm_ordering/qm_ordering.h"

using namespace qm_ordering;

namespace {

void Require(bool bvHolds, const std::string& zvWhat) {
  if (!bvHolds) {
    std::cerr << "It does not hold that " << zvWhat << "\n";
    std::exit(1);
  }
}

struct Stop : std::runtime_error {
  Stop() : std::runtime_error("stop") {}
};

// A settings component of the host's own, which the library calls.
class HostSettings : public SettingsComponent {
 public:
  explicit HostSettings(std::string zvFolder) : m_zFolder(std::move(zvFolder)) {}
  std::unique_ptr<UserSettings> CreateUserSettings() override { return std::make_unique<Reader>(m_zFolder); }
  std::unique_ptr<OrderDefaults> CreateOrderDefaults() override { return std::make_unique<Defaults>(); }
  RegistrationDetails ReadRegistration() override { return {}; }

 private:
  struct Reader : UserSettings {
    explicit Reader(std::string zvFolder) : Folder(std::move(zvFolder)) {}
    std::string Get(const std::string& zvKey) override {
      return zvKey == UserSettingConstants::ORDERINGDATABASEPATH ? Folder : "";
    }
    std::string Folder;
  };
  struct Defaults : OrderDefaults {
    std::string Get(const std::string&) override { return {}; }
    void Set(const std::string&, const std::string&) override {}
  };
  std::string m_zFolder;
};

void AddALineAndReadItBack() {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber("4QX17");
  oItem->Quantity(18);
  oItem->SellQuantity(6);
  oItem->ShipQuantity(6);
  oItem->Price(Currency::Parse("11.4725"));
  CurrentOrder order;
  order.AddItem(oItem);
  Require(order.Error().Number == 0, "the line is added: " + order.Error().Description);

  CurrentOrder again;
  again.LoadItems(0);
  const auto oRead = again.OrderDetails()->OrderItems()->Item("4qx17");
  Require(oRead != nullptr && oRead->Quantity() == 18, "the line is read back");
  Require(again.OrderDetails()->TotalPrice() == Currency::Parse("206.505"), "the total is exact");
}

void CatchWhatTheLibraryThrows(const std::string& zvFolder) {
  bool bCaught = false;
  try {
    CreateOrderStore(zvFolder);
  } catch (const Failure& failure) {
    bCaught = failure.Number() == failure::kFileAccess;
  }
  Require(bCaught, "a failure is caught as Failure");
  bCaught = false;
  try {
    CreateObject("Nothing");
  } catch (const std::exception& error) {
    bCaught = dynamic_cast<const Failure*>(&error) != nullptr;
  }
  Require(bCaught, "a failure is caught as std::exception and is a Failure");
}

void ThrowThroughTheLibrary(const std::string& zvFile) {
  bool bCaught = false;
  try {
    BackupOrderStore(zvFile, [](std::int64_t, std::int64_t) { throw Stop(); });
  } catch (const Stop&) {
    bCaught = true;
  }
  Require(bCaught, "what the host's own function throws comes back as it is");
}

void CastObjects() {
  const std::shared_ptr<Object> oObject = CreateObject("QM_Ordering.OrderItem");
  Require(std::dynamic_pointer_cast<OrderItem>(oObject) != nullptr, "an object casts to its class");
  Require(std::dynamic_pointer_cast<CurrentOrder>(oObject) == nullptr, "an object casts to no other class");
  const std::shared_ptr<Object> oOwn = std::make_shared<OrderItem>();
  Require(Variant(oOwn).ToObject() == oOwn, "an object of the host passes through the library");
}

}  // namespace

int main() try {
  const std::string zFolder = (std::filesystem::current_path() / "store").string();
  CreateOrderStore(zFolder);
  InstallSettings(std::make_shared<HostSettings>(zFolder));
  AddALineAndReadItBack();
  CatchWhatTheLibraryThrows(zFolder);
  ThrowThroughTheLibrary(zFolder + "/backup");
  CastObjects();
  std::cout << "The consumer works\n";
} catch (const Failure& failure) {
  std::cerr << "error " << failure.Number() << ": " << failure.what() << "\n";
  return 1;
}
