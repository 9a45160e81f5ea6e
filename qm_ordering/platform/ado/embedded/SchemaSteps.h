#pragma once

#include <cstdint>
#include <span>

namespace qm_ordering::ado::embedded {

// The scripts that make a store's tables, indexes and views, one for each version of the schema: the first
// one for an empty file, each further one for a store of the version before it. The provider does not know
// what is in them; they are defined where the store's schema is.
extern const std::span<const char* const> kSchemaSteps;

// The version that this library works with.
inline std::int32_t SchemaVersion() {
  return static_cast<std::int32_t>(kSchemaSteps.size());
}

}  // namespace qm_ordering::ado::embedded
