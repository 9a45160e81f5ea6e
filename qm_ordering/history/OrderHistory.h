#pragma once

#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/foundation/MemberIterator.h"
#include "qm_ordering/foundation/MembersById.h"
#include "qm_ordering/history/PreviousOrder.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

class Database;

// The orders that were submitted. It is filled once, by LoadOrders; make a new one to see what has changed
// since. Members raise the store's failure (-2147217900 for a refused statement, -2147467259 for a
// store that is missing, locked, unreadable or full), and 7 where memory ends.
class QM_ORDERING_API OrderHistory : public LibraryObject {
 public:
  // What walks over it.
  using Iterator = MemberIterator<PreviousOrder>;
  // What NewEnum answers.
  using Enumerator = MemberEnumerator<PreviousOrder>;

  // Empty.
  OrderHistory();
  ~OrderHistory() override;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderHistory";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // Adds the submitted orders, all ascending: 0 by purchase-order number, then date; 1 by purchase-order
  // number; 2 by date; 3 by total. Raises 9 for any other code before the store is read, 457 for the first
  // order that is held already (a second call on the same object), and 13 or 6 for an order in which another
  // program has stored what is no date or number; the entries before it are held then.
  void LoadOrders(std::int32_t lvSortOrder = 0);

  // Removes a submitted order and its lines from the store; nothing for the current order and for one that is
  // not there. The entry stays in this collection.
  void DeleteOrder(std::int32_t lvOrderID);

  // Whether the store has a submitted order with that purchase-order number, in any letter case: a boolean,
  // or an empty value when the store cannot be asked (LastFailure says why).
  Variant ItemExists(const std::string& zvPONumber);

  // The entry of that order. Raises 5 when there is none.
  std::shared_ptr<PreviousOrder> Item(std::int32_t lvOrderID) const;

  // The number of entries.
  std::int32_t Count() const { return m_oOrders.Count(); }

  // The entries in the order in which they were loaded.
  Enumerator NewEnum() const { return Enumerator(begin()); }
  // At the first entry, for a range-for over the collection itself: "const auto& oOrder", since it answers
  // each by value.
  Iterator begin() const { return m_oOrders.begin(); }
  // Behind the last entry.
  std::default_sentinel_t end() const { return {}; }

  // The "orderhistory" document: an element for each entry, with its id, purchase-order number, short date of
  // submission ("7/4/2003", empty for the zero date) and total (two decimals, in the number format of the
  // user's locale). Raises -1072896760 when a number holds what XML cannot.
  std::string GetXML() const;

 private:
  Database& Store();

  MembersById<PreviousOrder> m_oOrders;
  std::unique_ptr<Database> m_oStore;
};

}  // namespace qm_ordering
