#include "qm_ordering/order/CreditCardDetails.h"

#include "qm_ordering/foundation/Arrays.h"
#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

bool CreditCardDetails::Validate() const {
  return OrOutOfMemory([&] {
    if (HasBlankEntry({m_zFirstName, m_zLastName, m_zCompanyName, m_zAddress1, m_zCity, m_zZipOrPostCode,
                       m_zCountry, m_zPhoneNumber, m_zCardNumber})) {
      return false;
    }
    if (m_zState.empty() && m_zStateOr.empty()) {
      return false;
    }
    return IsValidMonth(m_lExpiryMonth);
  });
}

}  // namespace qm_ordering
