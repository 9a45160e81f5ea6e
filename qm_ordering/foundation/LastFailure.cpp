#include "qm_ordering/foundation/LastFailure.h"

#include <optional>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/KeptLastFailure.h"
#include "qm_ordering/platform/PerThread.h"

namespace qm_ordering {

namespace {

// Kept in a form that is written without allocating, since exhausted memory is one of the failures.
struct Remembered {
  std::optional<Failure> Caught;
  const char* Operation = "";
};

}  // namespace

void RememberFailure(const Failure& failure, const char* zvOperation) noexcept {
  if (Remembered* pRemembered = PerThread<Remembered>::Get()) {
    pRemembered->Caught = failure;
    pRemembered->Operation = zvOperation;
  }
}

LastFailureInfo LastFailure() {
  const Remembered* pRemembered = PerThread<Remembered>::Get();
  if (pRemembered == nullptr || !pRemembered->Caught) {
    return {};
  }
  return {pRemembered->Caught->Number(), pRemembered->Caught->Description(), pRemembered->Operation};
}

void ClearLastFailure() noexcept {
  if (Remembered* pRemembered = PerThread<Remembered>::Get()) {
    pRemembered->Caught.reset();
  }
}

KeptLastFailure::KeptLastFailure() {
  if (const Remembered* pRemembered = PerThread<Remembered>::Get()) {
    m_oCaught = pRemembered->Caught;
    m_zOperation = pRemembered->Operation;
  }
}

void KeptLastFailure::PutBack() const noexcept {
  if (Remembered* pRemembered = PerThread<Remembered>::Get()) {
    pRemembered->Caught = m_oCaught;
    pRemembered->Operation = m_zOperation;
  }
}

}  // namespace qm_ordering
