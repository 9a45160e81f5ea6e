#include "qm_ordering/platform/value/Failure.h"

#include <utility>

namespace qm_ordering {

Failure::Failure(std::int32_t lvNumber, std::string zvDescription)
    : m_lNumber(lvNumber), m_zDescription(std::make_shared<const std::string>(std::move(zvDescription))) {}

Failure::~Failure() = default;

const char* Failure::what() const noexcept {
  return m_zDescription->c_str();
}

}  // namespace qm_ordering
