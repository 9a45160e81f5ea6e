#include "host/Packs.h"

#include <cstdlib>
#include <utility>

namespace host {

namespace {

std::optional<std::int32_t> AsQuantity(std::int64_t lvQuantity) {
  if (lvQuantity == 0 || !std::in_range<std::int32_t>(lvQuantity)) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(lvQuantity);
}

}  // namespace

std::int32_t PackOf(const qm_ordering::OrderItem& item, std::int32_t lvDeliveryMethod) {
  return lvDeliveryMethod == 0 ? item.SellQuantity() : item.ShipQuantity();
}

bool Fits(std::int32_t lvQuantity, std::int32_t lvPack) {
  return lvPack != 0 && std::int64_t{lvQuantity} % lvPack == 0;
}

NearestQuantities NearestThatFit(std::int32_t lvQuantity, std::int32_t lvPack) {
  if (lvPack == 0) {
    return {};
  }
  const std::int64_t lPack = std::abs(std::int64_t{lvPack});
  // Rounded down, for negative quantities too.
  const std::int64_t lBelow = lvQuantity - (lvQuantity % lPack + lPack) % lPack;
  return {AsQuantity(lBelow), AsQuantity(lBelow == lvQuantity ? lBelow : lBelow + lPack)};
}

Json NearestJson(std::int32_t lvQuantity, std::int32_t lvPack) {
  const NearestQuantities nearest = NearestThatFit(lvQuantity, lvPack);
  Json quantities = Json::array();
  for (const auto& lQuantity : {nearest.Below, nearest.Above}) {
    if (lQuantity) {
      quantities.push_back(*lQuantity);
    }
  }
  return quantities;
}

std::string NearestText(std::int32_t lvQuantity, std::int32_t lvPack) {
  const NearestQuantities nearest = NearestThatFit(lvQuantity, lvPack);
  std::string zText = nearest.Below ? std::to_string(*nearest.Below) : std::string();
  if (nearest.Above) {
    zText += (zText.empty() ? "" : " or ") + std::to_string(*nearest.Above);
  }
  return zText;
}

std::string MisfitText(std::int32_t lvQuantity, std::int32_t lvPack) {
  if (lvPack == 0) {
    return "its pack size is 0, so its quantity cannot be checked";
  }
  const NearestQuantities nearest = NearestThatFit(lvQuantity, lvPack);
  return std::to_string(lvQuantity) + " is not a whole number of packs of " + std::to_string(lvPack) +
         (nearest.Below && nearest.Above ? "; the nearest that fit are " : "; the nearest that fits is ") +
         NearestText(lvQuantity, lvPack);
}

}  // namespace host
