#include "qm_ordering/order/OrderItem.h"

#include "qm_ordering/order/ItemElement.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

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
    return ItemElement(document, *this, text::AmountFormat()).XML();
  });
}

}  // namespace qm_ordering
