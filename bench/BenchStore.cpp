#include "bench/BenchStore.h"

#include <filesystem>
#include <fstream>

#include "bench/LegacyTables.h"
#include "bench/OrderProgram.h"
#include "qm_ordering/qm_ordering.h"

namespace bench {

void MakeOrder(const std::string& zvFolder, std::int32_t lvLines) {
  std::filesystem::create_directories(zvFolder);
  qm_ordering::CreateOrderStore(zvFolder);
  std::ofstream(zvFolder + "/settings.ini") << "OrderingDatabasePath = " << zvFolder << "\n";
  // Showing the order makes it.
  LibraryProgram(zvFolder)->ShowOrder();
  FillOrder(zvFolder, lvLines);
}

void MakeLists(const std::string& zvFolder, std::int32_t lvLines) {
  MakeOrder(zvFolder, 0);
  FillLists(zvFolder, lvLines);
}

void MakeHistory(const std::string& zvFolder, std::int32_t lvOrders) {
  MakeOrder(zvFolder, 0);
  FillHistory(zvFolder, lvOrders);
}

void MakeImport(const std::string& zvFolder, std::int32_t lvLines) {
  MakeOrder(zvFolder, 0);
  MakeLegacyTables(zvFolder + "/older", lvLines);
}

}  // namespace bench
