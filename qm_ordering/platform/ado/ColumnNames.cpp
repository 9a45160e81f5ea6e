#include "qm_ordering/platform/ado/ColumnNames.h"

#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

std::size_t HashName::operator()(std::string_view zvName) const noexcept {
  std::size_t lHash = 1469598103934665603U;
  for (const char c : zvName) {
    lHash = (lHash ^ static_cast<unsigned char>(LowerLetter(c))) * 1099511628211U;
  }
  return lHash;
}

bool EqualName::operator()(std::string_view zvLeft, std::string_view zvRight) const noexcept {
  // Most ask in the very letters.
  return zvLeft == zvRight || SameName(zvLeft, zvRight);
}

ColumnNames::ColumnNames(std::vector<std::string> zvNames) : m_zNames(std::move(zvNames)) {
  m_oPositions.reserve(m_zNames.size());
  for (std::size_t i = 0; i < m_zNames.size(); ++i) {
    m_oPositions.emplace(m_zNames[i], i);
  }
}

std::size_t ColumnNames::Find(std::string_view zvName) const {
  const auto found = m_oPositions.find(zvName);
  if (found == m_oPositions.end()) {
    throw Failure(failure::kUnknownField, "The result set has no column \"" + std::string(zvName) + "\".");
  }
  return found->second;
}

}  // namespace qm_ordering::ado
