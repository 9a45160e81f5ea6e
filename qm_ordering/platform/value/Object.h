#pragma once

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The common base of every class that a host can create. Objects are shared by std::shared_ptr and belong to
// the thread that made them; an empty reference is a null pointer.
class QM_ORDERING_API Object {
 public:
  // Whoever releases the last reference destroys the object.
  virtual ~Object();

  // The name under which CreateObject makes one, without the library's prefix: "CurrentOrder".
  virtual const char* ClassName() const noexcept = 0;

  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

 protected:
  Object() = default;
};

}  // namespace qm_ordering
