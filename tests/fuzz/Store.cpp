#include "tests/fuzz/Store.h"

#include "qm_ordering/store/OrderStore.h"
#include "tests/support/TempFolder.h"

namespace fuzz {

std::string NewStore() {
  static const test::TempFolder folder;
  qm_ordering::CreateOrderStore(folder.Path());
  return folder.File("Orders.mdb");
}

}  // namespace fuzz
