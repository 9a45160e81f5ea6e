#include "bench/BenchStore.h"

#include <filesystem>
#include <fstream>

#include "bench/OrderProgram.h"
#include "qm_ordering/qm_ordering.h"

namespace bench {

void MakeStore(const std::string& zvFolder, const std::vector<Line>& lines) {
  std::filesystem::create_directories(zvFolder);
  qm_ordering::CreateOrderStore(zvFolder);
  std::ofstream(zvFolder + "/settings.ini") << "OrderingDatabasePath = " << zvFolder << "\n";
  // Showing the order makes it.
  LibraryProgram(zvFolder)->ShowOrder();
  FillStore(zvFolder, lines);
}

}  // namespace bench
