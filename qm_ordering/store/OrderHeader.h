#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/platform/value/Currency.h"

namespace qm_ordering {

// The header of one order as it goes to the store: what an order's summary and its three header objects hold,
// save what is never stored (the card's type, number, expiry and holder's reference).
struct OrderHeader {
  std::int32_t OrderID = -1;
  std::string PurchaseOrderNumber;
  Currency TotalPrice;

  std::string POReleaseNumber, OIProjectOrJobNumber, OIRequisitionOrApprovalName, OIDepartment, OIAttention,
      OIPhoneNumber, OIEmail;
  bool OIIsTaxExempt = false;
  std::string OITaxIDNumber;

  std::int32_t DIDeliveryMethod = 0;
  std::string DIFirstName, DILastName, DICompanyName, DIAddress1, DIAddress2, DICity, DIState, DIStateOr,
      DIZipOrPostCode, DICountry, DIPhoneNumber, DIPhoneExt, DIFax, DICallBranchNumber, DICallAttention,
      DICallPhoneNumber, DICallPhoneExt;
  std::int32_t DIShippingMethod = 0;
  std::string DINotes;

  std::int32_t PIPaymentMethod = 0;
  std::string PIMorvaneAccountNumber;

  std::string CCFirstName, CCLastName, CCCompanyName, CCAddress1, CCAddress2, CCCity, CCState, CCStateOr,
      CCZipOrPostCode, CCCountry, CCPhoneNumber, CCPhoneExt, CCFax, CCAccountNumber, CCComment1, CCComment2,
      CCComment3, CCComment4;
};

}  // namespace qm_ordering
