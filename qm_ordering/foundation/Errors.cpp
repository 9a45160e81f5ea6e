#include "qm_ordering/foundation/Errors.h"

#include <exception>
#include <new>

namespace qm_ordering {

namespace {

// Made when the library is loaded, since there is no memory for it when it is needed. Never destroyed:
// threads may outlive main.
const Failure& g_oOutOfMemory = *new Failure(failure::kOutOfMemory, "Out of memory");

// Called in a catch (...) block.
Failure ExceptionInFlight() {
  try {
    throw;
  } catch (const Failure& caught) {
    return caught;
  } catch (const std::bad_alloc&) {
    return g_oOutOfMemory;
  } catch (const std::exception& exception) {
    return Failure(failure::kInvalidCall, exception.what());
  } catch (...) {
    return Failure(failure::kInvalidCall, "An exception of an unknown type");
  }
}

}  // namespace

void ClearError(ErrorInfo& record) {
  record.Number = 0;
  record.Description.clear();
}

void SetError(ErrorInfo& record, OrderingError lvCode, const std::string& zvDescription) {
  const OrderingErrorEntry& entry = ErrorTableEntry(lvCode);
  record.Description = zvDescription.empty() ? entry.Text : zvDescription;
  record.Number = entry.Number;
}

std::string ErrorDetail(std::int32_t lvNumber, std::string_view zvDescription) {
  return std::to_string(lvNumber).append(" : ").append(zvDescription);
}

Failure CatchFailure(const char* zvOperation) noexcept {
  try {
    Failure caught = ExceptionInFlight();
    RememberFailure(caught, zvOperation);
    return caught;
  } catch (...) {
    // The text of another exception did not fit into memory.
    RememberFailure(g_oOutOfMemory, zvOperation);
    return g_oOutOfMemory;
  }
}

}  // namespace qm_ordering
