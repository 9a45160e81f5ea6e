#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/settings/Settings.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/OrderValues.h"

// "order_dump FOLDER ORDER ...": reads these orders from the store in FOLDER, as another program would, and
// writes all their values to standard output.
int main(int argc, char** argv) {
  try {
    const auto oSettings = std::make_shared<test::MemorySettings>();
    oSettings->User["OrderingDatabasePath"] = argv[1];
    qm_ordering::InstallSettings(oSettings);
    for (int l = 2; l < argc; ++l) {
      qm_ordering::OrderDetails order;
      order.OrderID(std::stoi(argv[l]));
      order.LoadSummary();
      if (order.Error().Number != 0) {
        std::fputs(order.Error().Description.c_str(), stderr);
        return 1;
      }
      order.LoadItems();
      const std::string zText = test::ToText(test::ValuesOf(order));
      if (std::fwrite(zText.data(), 1, zText.size(), stdout) != zText.size()) {
        return 1;
      }
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fputs(error.what(), stderr);
    return 1;
  }
}
