#include "qm_ordering/foundation/Errors.h"

#include <exception>
#include <new>

#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

// Called in a catch (...) block.
Failure ExceptionInFlight() {
  try {
    throw;
  } catch (const Failure& caught) {
    return caught;
  } catch (const std::bad_alloc&) {
    return OutOfMemory();
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
  record.Number = entry.Number;
  try {
    record.Description = zvDescription.empty() ? entry.Text : zvDescription;
  } catch (const std::bad_alloc&) {
    // A text so short that a string holds it in itself.
    record.Description = OutOfMemory().Description();
  }
}

void SetUnexpected(ErrorInfo& record, const Failure& failure) {
  std::string zDetail;
  try {
    zDetail = ErrorDetail(failure.Number(), failure.Description());
  } catch (const std::bad_alloc&) {
    zDetail = OutOfMemory().Description();
  }
  SetError(record, OrderingError::errUnexpected, zDetail);
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
    RememberFailure(OutOfMemory(), zvOperation);
    return OutOfMemory();
  }
}

}  // namespace qm_ordering
