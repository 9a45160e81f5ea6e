#include "qm_ordering/order/DeliveryInformation.h"

#include <array>
#include <cstddef>

#include "qm_ordering/foundation/Arrays.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

namespace {

// By shipping method.
constexpr std::array<const char*, 10> kShippingMethodNames = {
    "Standard Shipping",      "UPS Next Day Air",
    "UPS Second Day Air",     "UPS Saturday Delivery Air",
    "Standard Shipping USPS", "Fed Ex Standard Overnight",
    "Fed Ex Early Overnight", "Fed Ex Collect",
    "Airborne Express",       "Other"};

}  // namespace

std::string DeliveryInformation::ShippingMethodName() const {
  const auto lMethod =
      static_cast<std::size_t>(m_lShippingMethod);  // a negative one lies beyond the names too
  return lMethod < kShippingMethodNames.size() ? kShippingMethodNames[lMethod] : "";
}

bool DeliveryInformation::Validate() const {
  return OrOutOfMemory([&] {
    if (m_lDeliveryMethod == 0) {
      return !HasBlankEntry({m_zCallBranchNumber, m_zCallAttention, m_zCallPhoneNumber});
    }
    if (HasBlankEntry({m_zFirstName, m_zLastName, m_zCompanyName, m_zAddress1, m_zCity, m_zZipOrPostCode,
                       m_zCountry, m_zPhoneNumber})) {
      return false;
    }
    return !m_zState.empty() || !m_zStateOr.empty();
  });
}

std::string DeliveryInformation::GetXML() const {
  return OrOutOfMemory([&] {
    xml::Document document;
    xml::Element element = document.CreateElement("deliveryinformation");
    element.SetAttribute("deliverymethod", std::to_string(m_lDeliveryMethod));
    element.SetAttribute("firstname", m_zFirstName);
    element.SetAttribute("lastname", m_zLastName);
    element.SetAttribute("companyname", m_zCompanyName);
    element.SetAttribute("address1", m_zAddress1);
    element.SetAttribute("address2", m_zAddress2);
    element.SetAttribute("city", m_zCity);
    element.SetAttribute("state", m_zState);
    element.SetAttribute("stateor", m_zStateOr);
    element.SetAttribute("ziporpostcode", m_zZipOrPostCode);
    element.SetAttribute("country", m_zCountry);
    element.SetAttribute("phonenumber", m_zPhoneNumber);
    element.SetAttribute("phoneext", m_zPhoneExt);
    element.SetAttribute("fax", m_zFax);
    element.SetAttribute("shippingmethod", std::to_string(m_lShippingMethod));
    element.SetAttribute("shippingmethodname", ShippingMethodName());
    element.SetAttribute("notes", m_zNotes);
    element.SetAttribute("callbranchnumber", m_zCallBranchNumber);
    element.SetAttribute("callattention", m_zCallAttention);
    element.SetAttribute("callphonenumber", m_zCallPhoneNumber);
    element.SetAttribute("callphoneext", m_zCallPhoneExt);
    return element.XML();
  });
}

}  // namespace qm_ordering
