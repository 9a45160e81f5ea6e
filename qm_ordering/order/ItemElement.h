#pragma once

#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

// A new "orderitem" element of the document, with the line's attributes, its amounts in that format. Raises
// failure::kXmlCharacter when a text holds what XML cannot.
xml::Element ItemElement(xml::Document& oDocument, const OrderItem& item, const text::AmountFormat& amounts);

// Appends such an element for each of the items. A failure begins with its line, counted from 1, and item
// number: among thousands of lines it is of use only when it names the one that it is about.
void AppendItemElements(xml::Document& oDocument, xml::Element& orParent, const OrderItems& items,
                        const text::AmountFormat& amounts);

}  // namespace qm_ordering
