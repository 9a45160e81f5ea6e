// Builds an order as bench/build_order.py does, line by line, and says how long each part took. Arguments: a
// folder for the store, the number of lines.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "qm_ordering/qm_ordering.h"

using namespace qm_ordering;

namespace {

// Chooses the store in a settings component of the program's own, as the other program does.
class Settings : public SettingsComponent {
 public:
  explicit Settings(std::string zvFolder) : m_zFolder(std::move(zvFolder)) {}
  std::unique_ptr<UserSettings> CreateUserSettings() override {
    struct Reader : UserSettings {
      explicit Reader(const std::string& zvFolder) : Folder(zvFolder) {}
      std::string Get(const std::string& zvKey) override {
        return zvKey == UserSettingConstants::ORDERINGDATABASEPATH ? Folder : std::string();
      }
      std::string Folder;
    };
    return std::make_unique<Reader>(m_zFolder);
  }
  std::unique_ptr<OrderDefaults> CreateOrderDefaults() override {
    struct Defaults : OrderDefaults {
      std::string Get(const std::string&) override { return {}; }
      void Set(const std::string&, const std::string&) override {}
    };
    return std::make_unique<Defaults>();
  }
  RegistrationDetails ReadRegistration() override { return {}; }

 private:
  std::string m_zFolder;
};

std::shared_ptr<OrderItem> MakeItem(int lvNumber) {
  auto oItem = std::make_shared<OrderItem>();
  const std::string zNumber = std::to_string(lvNumber);
  oItem->ItemNumber("ITEM-" + zNumber);
  oItem->Quantity(lvNumber % 7 + 1);
  oItem->Description("Description of item " + zNumber);
  oItem->ShortDescription("Item " + zNumber);
  oItem->Manufacturer("Manufacturer");
  oItem->Model("M-" + zNumber);
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  oItem->UsuallyShips("TODAY");
  oItem->IsTaxable(true);
  oItem->Price(Currency::FromScaled(114725 + lvNumber));
  return oItem;
}

class Watch {
 public:
  // The seconds since the last call.
  double Next() {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> passed = now - m_oLast;
    m_oLast = now;
    return passed.count();
  }

 private:
  std::chrono::steady_clock::time_point m_oLast = std::chrono::steady_clock::now();
};

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::cerr << "build_order FOLDER LINES\n";
    return 2;
  }
  const int lLines = std::atoi(argv[2]);
  InstallSettings(std::make_shared<Settings>(argv[1]));
  CreateOrderStore(argv[1]);
  CurrentOrder order;

  Watch watch;
  OrderItems items;
  for (int i = 0; i < lLines; ++i) {
    const auto oItem = MakeItem(i);
    items.Add(oItem, oItem->ItemNumber());
  }
  const double items_made = watch.Next();
  for (const auto& oItem : items) {
    order.AddItem(oItem);
    if (order.Error().Number != 0) {
      throw Failure(order.Error().Number, order.Error().Description);
    }
  }
  const double lines_added = watch.Next();
  order.LoadItems(0);
  Currency cTotal;
  for (const auto& oItem : *order.OrderDetails()->OrderItems()) {
    cTotal = cTotal + oItem->ExtendedPrice();
  }
  const double lines_read = watch.Next();
  std::cout << items_made << " " << lines_added << " " << lines_read << " " << cTotal.ToString() << "\n";
} catch (const Failure& failure) {
  std::cerr << "error " << failure.Number() << ": " << failure.what() << "\n";
  return 1;
}
