#include "qm_ordering/order/PaymentInformation.h"

#include "qm_ordering/foundation/Arrays.h"
#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

PaymentInformation::PaymentInformation()
    : m_oCreditCardDetails(OrOutOfMemory([] { return std::make_shared<qm_ordering::CreditCardDetails>(); })) {
}

bool PaymentInformation::Validate() const {
  return OrOutOfMemory([&] {
    if (m_lMethod != 0) {
      return m_oCreditCardDetails->Validate();
    }
    return !HasBlankEntry({m_zMorvaneAccountNumber});
  });
}

std::string PaymentInformation::GetXML() const {
  return OrOutOfMemory([&] {
    xml::Document document;
    xml::Element element = document.CreateElement("paymentinformation");
    element.SetAttribute("accountnumber", m_zMorvaneAccountNumber);
    element.SetAttribute("method", std::to_string(m_lMethod));

    xml::Element card = document.CreateElement("creditcarddetails");
    card.SetAttribute("firstname", m_oCreditCardDetails->FirstName());
    card.SetAttribute("lastname", m_oCreditCardDetails->LastName());
    card.SetAttribute("companyname", m_oCreditCardDetails->CompanyName());
    card.SetAttribute("address1", m_oCreditCardDetails->Address1());
    card.SetAttribute("address2", m_oCreditCardDetails->Address2());
    card.SetAttribute("city", m_oCreditCardDetails->City());
    card.SetAttribute("state", m_oCreditCardDetails->State());
    card.SetAttribute("stateor", m_oCreditCardDetails->StateOr());
    card.SetAttribute("ziporpostcode", m_oCreditCardDetails->ZipOrPostCode());
    card.SetAttribute("country", m_oCreditCardDetails->Country());
    card.SetAttribute("phonenumber", m_oCreditCardDetails->PhoneNumber());
    card.SetAttribute("phoneext", m_oCreditCardDetails->PhoneExt());
    card.SetAttribute("fax", m_oCreditCardDetails->Fax());
    card.SetAttribute("accountnumber", m_oCreditCardDetails->AccountNumber());
    card.SetAttribute("cardtype", m_oCreditCardDetails->CardType());
    card.SetAttribute("cardnumber", m_oCreditCardDetails->CardNumber());
    card.SetAttribute("expirymonth", TwoDigits(m_oCreditCardDetails->ExpiryMonth()));
    card.SetAttribute("expiryyear", TwoDigits(m_oCreditCardDetails->ExpiryYear()));
    card.SetAttribute("cardholdersref", m_oCreditCardDetails->CardHoldersRef());
    card.SetAttribute("comment1", m_oCreditCardDetails->Comment1());
    card.SetAttribute("comment2", m_oCreditCardDetails->Comment2());
    card.SetAttribute("comment3", m_oCreditCardDetails->Comment3());
    card.SetAttribute("comment4", m_oCreditCardDetails->Comment4());
    element.AppendChild(card);
    return element.XML();
  });
}

}  // namespace qm_ordering
