#include "qm_ordering/foundation/LibraryObject.h"

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

LibraryObject::LibraryObject() {
  OrOutOfMemory(StartUp);
}

}  // namespace qm_ordering
