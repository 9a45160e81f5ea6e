#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

class Database;

// A named list of items that a user keeps for ordering again. Prices are no part of it: an item that
// LoadItems has made has the price 0, and CurrentOrder.AddItem of it sets the price of a line that the order
// holds to 0. Set its price first.
//
// The error record shows the last failure: no member clears it but AddItem of a new line that succeeds. Read
// it right after the call that is to be judged. Members raise the store's failure (AddItem says which one it
// records), and 7 where memory ends.
class QM_ORDERING_API PersonalList : public LibraryObject {
 public:
  // Without a list: ListID is -1.
  PersonalList();
  ~PersonalList() override;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "PersonalList";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The list's name, in memory: PersonalLists.RenameList changes the stored one.
  const std::string& Name() const { return m_zName; }
  void Name(std::string zvName) { m_zName = std::move(zvName); }
  // The list's id in the store; -1: not set.
  std::int32_t ListID() const { return m_lListID; }
  void ListID(std::int32_t lvListID) { m_lListID = lvListID; }
  // The items that were loaded and added. The setter takes the caller's collection, shared. While it is null,
  // AddItem stores its item and then raises 91, and LoadItems of a list with a line raises 91.
  std::shared_ptr<qm_ordering::OrderItems> OrderItems() const { return m_oOrderItems; }
  void OrderItems(const std::shared_ptr<qm_ordering::OrderItems>& ovOrderItems) {
    m_oOrderItems = ovOrderItems;
  }
  // The last failure that a member put into the record; number 0 for none.
  ErrorInfo Error() const { return m_oError; }

  // A list id, below, is a number or a text that is one ("12", "1e2"; fractions round half to even), an empty
  // value (0) or a boolean (-1, 0). Anything else is record 10, "Invalid list ID", and ListID stays as it is;
  // a number out of range raises 6.

  // Puts the item on the list vvListID: a new line, or its quantity added to the line of that item number,
  // whose other fields stay. vvListID must be given: without it the record is 9, "List ID not set", while
  // ListID is -1, and 13 is raised otherwise. Raises 91 for a null item.
  //
  // The item's OrderID becomes the list's id, also that of an item which an order holds, too: give the list
  // an item of its own. The item becomes a member of OrderItems; 457 is raised when that holds its item
  // number already, with the line stored, so that calling again would add the quantity again.
  //
  // A new line that the store refuses (a list that is not there, a quote in UsuallyShips, a text that is not
  // UTF-8) is record 4, any other failure to store it (a full disk, a store that another program holds)
  // record 5 with the detail; the item is not held then. Where the list cannot be looked at, or the quantity
  // not be added, the store's failure is raised and the record stays: -2147217900 also for an item number
  // that is not UTF-8, and for one with a quote whose line is there; 6, with nothing stored, for more than a
  // quantity holds.
  void AddItem(const std::shared_ptr<OrderItem>& ovOrderItem, const Variant& vvListID = Variant::Missing());

  // Reads the name of the list vvListID, or of ListID. Record 9 without either, record 11, "List not found",
  // when there is no such list; Name stays as it is then.
  void LoadSummary(const Variant& vvListID = Variant::Missing());

  // Adds the stored lines of the list vvListID, or of ListID, to OrderItems, without prices. A list without
  // lines is no error, also when there is no such list. The lines come in no order that is promised. Raises
  // 457 for the first item number that OrderItems holds already (a second call on the same object), and 13 or
  // 6 for a line in which another program has stored what is no number; the items before it are held then.
  void LoadItems(const Variant& vvListID = Variant::Missing());

 private:
  Database& Store();
  bool TakeListID(const Variant& vvListID);
  bool AddToStoredLine(const OrderItem& item);

  std::string m_zName;
  std::int32_t m_lListID = -1;
  std::shared_ptr<qm_ordering::OrderItems> m_oOrderItems;
  ErrorInfo m_oError;
  std::unique_ptr<Database> m_oStore;
};

}  // namespace qm_ordering
