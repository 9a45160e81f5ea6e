#pragma once

#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

// A new "orderitem" element of the document, with the line's attributes. Raises failure::kXmlCharacter when a
// text holds what XML cannot.
xml::Element ItemElement(xml::Document& oDocument, const OrderItem& item);

}  // namespace qm_ordering
