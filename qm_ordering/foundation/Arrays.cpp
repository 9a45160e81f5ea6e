#include "qm_ordering/foundation/Arrays.h"

#include <cstddef>
#include <string>

#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

const Variant& VariantArray::At(std::int32_t lvIndex) const {
  const std::int64_t lPosition = std::int64_t{lvIndex} - LowerBound;
  if (lPosition < 0 || static_cast<std::size_t>(lPosition) >= Values.size()) {
    throw Failure(failure::kIndexOutOfBounds,
                  "Index out of bounds: the array has no entry " + std::to_string(lvIndex));
  }
  return Values[static_cast<std::size_t>(lPosition)];
}

std::int32_t VariantArray::UpperBound() const {
  const std::int64_t lUpperBound = LowerBound + static_cast<std::int64_t>(Values.size()) - 1;
  if (!std::in_range<std::int32_t>(lUpperBound)) {
    throw Failure(failure::kOverflow, "Overflow: the array's upper bound does not fit a 32-bit integer");
  }
  return static_cast<std::int32_t>(lUpperBound);
}

bool HasBlankEntry(const VariantArray& vrValues) {
  const std::int32_t lUpperBound = vrValues.UpperBound();
  for (std::int32_t lIndex = 0; lIndex <= lUpperBound; ++lIndex) {
    const Variant& vEntry = vrValues.At(lIndex);
    if (!vEntry.IsNull() && text::TrimSpaces(vEntry.ToString()).empty()) {
      return true;
    }
  }
  return false;
}

}  // namespace qm_ordering
