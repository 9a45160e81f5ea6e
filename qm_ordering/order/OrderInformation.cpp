#include "qm_ordering/order/OrderInformation.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

std::string OrderInformation::GetXML() const {
  return OrOutOfMemory([&] {
    xml::Document document;
    xml::Element element = document.CreateElement("orderinformation");
    // The number itself is the order's; consumers find the attribute here all the same.
    element.SetAttribute("ponumber", "");
    element.SetAttribute("poreleasenumber", m_zPORelease);
    element.SetAttribute("projectorjobnumber", m_zProjectOrJobNumber);
    element.SetAttribute("requisitionorapprovalname", m_zRequisitionOrApprovalName);
    element.SetAttribute("department", m_zDepartment);
    element.SetAttribute("attention", m_zAttention);
    element.SetAttribute("phonenumber", m_zPhoneNumber);
    element.SetAttribute("email", m_zEmail);
    element.SetAttribute("istaxexempt", BooleanDigit(m_bIsTaxExempt));
    element.SetAttribute("taxidnumber", m_zTaxIDNumber);
    return element.XML();
  });
}

}  // namespace qm_ordering
