#pragma once

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// The base of the public classes: making one runs the thread's start-up first. A settings component that
// fails then raises its failure out of the constructor, and the next object tries again.
class QM_ORDERING_API LibraryObject : public Object {
 protected:
  // Runs the start-up of this thread when it has not run yet.
  LibraryObject();
};

// What only the library may call of the public classes; defined by the library's own code alone.
struct LibraryAccess;

}  // namespace qm_ordering
