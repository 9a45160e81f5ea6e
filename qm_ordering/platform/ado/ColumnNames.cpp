#include "qm_ordering/platform/ado/ColumnNames.h"

#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

ColumnNames::ColumnNames(std::vector<std::string> zvNames) : m_zNames(std::move(zvNames)) {
  m_oPositions.reserve(m_zNames.size());
  for (std::size_t i = 0; i < m_zNames.size(); ++i) {
    m_oPositions.emplace(m_zNames[i], i);
  }
}

std::size_t ColumnNames::Find(std::string_view zvName) const {
  // Most ask in the very letters.
  if (const auto found = m_oPositions.find(zvName); found != m_oPositions.end()) {
    return found->second;
  }
  for (std::size_t i = 0; i < m_zNames.size(); ++i) {
    if (SameName(m_zNames[i], zvName)) {
      return i;
    }
  }
  throw Failure(failure::kUnknownField, "The result set has no column \"" + std::string(zvName) + "\".");
}

}  // namespace qm_ordering::ado
