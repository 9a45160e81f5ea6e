#pragma once

#include <cstdint>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

struct ClassInfo;

// The common base of every class that a host can create. Objects are shared by std::shared_ptr and belong to
// the thread that made them; an empty reference is a null pointer.
class QM_ORDERING_API Object {
 public:
  // Whoever releases the last reference destroys the object.
  virtual ~Object();

  // The name under which CreateObject makes one, without the library's prefix: "CurrentOrder".
  virtual const char* ClassName() const noexcept = 0;

  // The members that can be read, written and called by name (LateBinding.h). Raises 7 when memory ends.
  virtual const ClassInfo& Members() const = 0;

  // Whether the calling thread made the object. In a child of fork no object of the parent does.
  bool BelongsToThisThread() const noexcept;
  // Raises -2147417842 unless BelongsToThisThread. What uses objects by name or through the C interface calls
  // it; a call in C++ does not, and is undefined on another thread.
  void RequireThisThread() const;

  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

 protected:
  Object() noexcept;

 private:
  std::uint64_t m_lThread;
};

}  // namespace qm_ordering
