#pragma once

#include <string>

namespace qm_ordering {

class OrderDetails;

// The "order" document of an order: its attributes, the elements of its three header objects, and its lines.
// Raises 91 when a header object is missing, -1072896760 for a text that XML cannot hold.
std::string OrderDocument(const OrderDetails& order);

}  // namespace qm_ordering
