#pragma once

#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

// A new "orderitem" element of the document, with the line's attributes, its amounts in that format. Raises
// failure::kXmlCharacter when a text holds what XML cannot.
xml::Element ItemElement(xml::Document& oDocument, const OrderItem& item, const text::AmountFormat& amounts);

}  // namespace qm_ordering
