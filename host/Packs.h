#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// The pack size that a line's quantity must fit: that in which the item sells when the order is collected at
// a branch (delivery method 0), else that in which it ships.
std::int32_t PackOf(const qm_ordering::OrderItem& item, std::int32_t lvDeliveryMethod);

bool Fits(std::int32_t lvQuantity, std::int32_t lvPack);

// The next smaller and the next larger quantity that is a whole number of packs. Nothing where that is no
// quantity to order: 0 would remove the line, and there is a largest integer.
struct NearestQuantities {
  std::optional<std::int32_t> Below;
  std::optional<std::int32_t> Above;
};
NearestQuantities NearestThatFit(std::int32_t lvQuantity, std::int32_t lvPack);

// [20, 30]
Json NearestJson(std::int32_t lvQuantity, std::int32_t lvPack);
// "20 or 30".
std::string NearestText(std::int32_t lvQuantity, std::int32_t lvPack);

// "25 is not a whole number of packs of 10; the nearest that fit are 20 or 30", or of a pack of 0 that the
// quantity cannot be checked.
std::string MisfitText(std::int32_t lvQuantity, std::int32_t lvPack);

}  // namespace host
