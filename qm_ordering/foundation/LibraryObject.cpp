#include "qm_ordering/foundation/LibraryObject.h"

#include "qm_ordering/foundation/Globals.h"

namespace qm_ordering {

LibraryObject::LibraryObject() {
  StartUp();
}

}  // namespace qm_ordering
