// Fails when the library keeps a kibibyte or more for each order of the history. Counts bytes, so that it
// says the same on a busy machine.
#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "bench/Memory.h"
#include "bench/Works.h"

namespace bench {

namespace {

constexpr std::size_t kBytesAllowed = 1'024;

bool IsWithinBounds(const std::string& zvFolder) {
  bool bWithin = true;
  for (const std::int32_t lOrders : {1'000, 10'000}) {
    const std::string zStore = zvFolder + "/" + std::to_string(lOrders);
    MakeHistory(zStore, lOrders);
    const std::size_t lBytes = BytesOfOrder(*LibraryProgram(zStore), lOrders);
    std::cout << "An order of a history of " << lOrders << " takes " << lBytes << " bytes.\n";
    // Less than an entry's number, date and total can take says that nothing was measured.
    bWithin = bWithin && lBytes > 32 && lBytes < kBytesAllowed;
  }
  return bWithin;
}

}  // namespace

}  // namespace bench

int main() try {
  std::string zFolder = (std::filesystem::temp_directory_path() / "qm_ordering_bench.XXXXXX").string();
  if (mkdtemp(zFolder.data()) == nullptr) {
    throw std::runtime_error("No temporary folder can be made.");
  }
  const bool bWithin = bench::IsWithinBounds(zFolder);
  std::filesystem::remove_all(zFolder);
  return bWithin ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
