#include "qm_ordering/order/OrderItem.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

bool OrderItem::Validate(std::int32_t lvDeliveryMethod) {
  // 64 bits, because the smallest 32-bit integer modulo -1 traps.
  const std::int64_t lPack = lvDeliveryMethod != 0 ? m_lShipQuantity : m_lSellQuantity;
  if (lPack == 0) {
    throw Failure(failure::kDivisionByZero, std::string("The ") + (lvDeliveryMethod != 0 ? "ship" : "sell") +
                                                " quantity of item \"" + m_zItemNumber + "\" is 0");
  }
  m_bValidQuantity = m_lQuantity % lPack == 0;
  return m_bValidQuantity;
}

std::string OrderItem::GetXML() const {
  return OrOutOfMemory([&] {
    xml::Document document;
    xml::Element element = document.CreateElement("orderitem");
    element.SetAttribute("itemnumber", m_zItemNumber);
    element.SetAttribute("quantity", std::to_string(m_lQuantity));
    element.SetAttribute("validquantity", BooleanDigit(m_bValidQuantity));
    element.SetAttribute("description", m_zDescription);
    element.SetAttribute("manufacturer", m_zManufacturer);
    element.SetAttribute("model", m_zModel);
    element.SetAttribute("sellquantity", std::to_string(m_lSellQuantity));
    element.SetAttribute("shipquantity", std::to_string(m_lShipQuantity));
    element.SetAttribute("usuallyships", m_zUsuallyShips);
    element.SetAttribute("istaxable", BooleanDigit(m_bIsTaxable));
    element.SetAttribute("price", text::FormatAmount(m_cPrice));
    element.SetAttribute("extendedprice", text::FormatAmount(m_cExtendedPrice));
    element.SetAttribute("ispricemodified", BooleanDigit(m_bIsPriceModified));
    element.SetAttribute("customerpartnumber", m_zCustomerPartNumber);
    element.SetAttribute("customernotes", m_zCustomerNotes);
    element.SetAttribute("hasnotes", BooleanDigit(m_bHasNotes));
    element.SetAttribute("hascontractitem", BooleanDigit(m_bHasContractItem));
    element.SetAttribute("haspartsinfo", BooleanDigit(m_bHasPartsInfo));
    return element.XML();
  });
}

}  // namespace qm_ordering
