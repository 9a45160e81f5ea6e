#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/foundation/MemberIterator.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// Order lines in the order in which they were added, each under a key that is unique without regard to letter
// case. Members are references: changing an item taken from the collection changes it there. There is no
// removal: who wants fewer members makes a new collection.
class QM_ORDERING_API OrderItems : public LibraryObject {
 public:
  // What walks over it.
  using Iterator = MemberIterator<OrderItem>;
  // What NewEnum answers.
  using Enumerator = MemberEnumerator<OrderItem>;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderItems";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // Appends the item under the key as given, which need not be the item's own number. Raises 457 when the key
  // is there already and 91 for a null item; the collection is then unchanged.
  void Add(const std::shared_ptr<OrderItem>& ovOrderItem, const std::string& zvItemNumber);

  // The member with that key (a string) or at that position (a number, from 1; fractions round half to even).
  // Null when there is none, and for every other kind of value.
  std::shared_ptr<OrderItem> Item(const Variant& vvKey) const;

  // The number of members.
  std::int32_t Count() const;

  // The members in the order in which they were added.
  Enumerator NewEnum() const { return Enumerator(begin()); }
  // At the first member, for a range-for over the collection itself: "const auto& oItem", since it answers
  // each by value.
  Iterator begin() const { return Iterator(m_oMembers); }
  // Behind the last member.
  std::default_sentinel_t end() const { return {}; }

 private:
  std::vector<std::shared_ptr<OrderItem>> m_oMembers;
  std::unordered_map<std::string, std::size_t> m_oPositions;  // by folded key
};

}  // namespace qm_ordering
