#include "qm_ordering/order/OrderItems.h"

#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

// 0, which is no position, for a number that no 32-bit integer can hold.
std::int32_t PositionOf(const Variant& vvNumber) {
  try {
    return vvNumber.ToInteger();
  } catch (const Failure&) {
    return 0;
  }
}

}  // namespace

void OrderItems::Add(const std::shared_ptr<OrderItem>& ovOrderItem, const std::string& zvItemNumber) {
  OrOutOfMemory([&] {
    if (ovOrderItem == nullptr) {
      throw Failure(failure::kObjectNotSet, "OrderItems.Add: there is no item to add under the key \"" +
                                                zvItemNumber + "\", the reference is not set");
    }
    const auto [position, bNew] = m_oPositions.try_emplace(text::Fold(zvItemNumber), m_oMembers.size());
    if (!bNew) {
      throw Failure(
          failure::kDuplicateKey,
          "OrderItems.Add: the collection already has a member with the key \"" + zvItemNumber + "\"");
    }
    try {
      m_oMembers.push_back(ovOrderItem);
    } catch (...) {
      m_oPositions.erase(position);
      throw;
    }
  });
}

std::shared_ptr<OrderItem> OrderItems::Item(const Variant& vvKey) const {
  return OrOutOfMemory([&]() -> std::shared_ptr<OrderItem> {
    switch (vvKey.Kind()) {
      case VariantKind::String: {
        const auto position = m_oPositions.find(text::Fold(vvKey.ToString()));
        return position == m_oPositions.end() ? nullptr : m_oMembers[position->second];
      }
      case VariantKind::Integer:
      case VariantKind::Double:
      case VariantKind::Currency: {
        const std::int32_t lPosition = PositionOf(vvKey);
        return lPosition < 1 || lPosition > Count() ? nullptr
                                                    : m_oMembers[static_cast<std::size_t>(lPosition) - 1];
      }
      default:
        return nullptr;
    }
  });
}

std::int32_t OrderItems::Count() const {
  return static_cast<std::int32_t>(m_oMembers.size());
}

}  // namespace qm_ordering
