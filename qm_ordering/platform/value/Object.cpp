#include "qm_ordering/platform/value/Object.h"

#include "qm_ordering/platform/value/ThreadNumber.h"

namespace qm_ordering {

Object::Object() noexcept : m_lThread(ThisThread()) {}

Object::~Object() = default;

bool Object::BelongsToThisThread() const noexcept {
  return m_lThread == ThisThread();
}

void Object::RequireThisThread() const {
  qm_ordering::RequireThisThread(m_lThread);
}

}  // namespace qm_ordering
