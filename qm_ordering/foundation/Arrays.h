#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// An array of values whose first index need not be 0.
struct VariantArray {
  VariantArray(std::initializer_list<Variant> vValues) : Values(vValues) {}
  VariantArray(std::int32_t lvLowerBound, std::vector<Variant> vValues)
      : LowerBound(lvLowerBound), Values(std::move(vValues)) {}

  // Raises 9 outside the bounds.
  const Variant& At(std::int32_t lvIndex) const;
  // LowerBound - 1 for an array without entries. Raises 6 when that is no 32-bit integer.
  std::int32_t UpperBound() const;

  std::int32_t LowerBound = 0;
  std::vector<Variant> Values;
};

// True when an entry at an index from 0 to the upper bound is empty once leading and trailing spaces are
// removed. The walk starts at 0: raises 9 for an array that begins above it. A null entry is not blank.
bool HasBlankEntry(const VariantArray& vrValues);

}  // namespace qm_ordering
