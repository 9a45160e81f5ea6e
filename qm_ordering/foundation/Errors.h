#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

// Number 0, no description.
void ClearError(ErrorInfo& record);

// The table's number for the code, with zvDescription, or with the table's text when that is empty; a text
// that there is no memory for is replaced by "Out of memory". Raises 9 for a code outside the table; the
// record is then unchanged.
void SetError(ErrorInfo& record, OrderingError lvCode, const std::string& zvDescription);

// errUnexpected with the failure's ErrorDetail, or with "Out of memory" alone when there is no memory for it.
void SetUnexpected(ErrorInfo& record, const Failure& failure);

// "NUMBER : DESCRIPTION", the description that a caught failure gives its record.
std::string ErrorDetail(std::int32_t lvNumber, std::string_view zvDescription);

// Called in a catch (...) block: the exception in flight as a Failure, remembered for LastFailure under the
// name of the operation. An exception that is no Failure keeps its text under number 5; exhausted memory,
// also while the failure is being made, is number 7.
Failure CatchFailure(const char* zvOperation) noexcept;

// Makes the failure this thread's LastFailure. zvOperation is a literal, as in CatchFailure: its address is
// kept. A thread that is ending remembers nothing.
void RememberFailure(const Failure& failure, const char* zvOperation) noexcept;

}  // namespace qm_ordering
