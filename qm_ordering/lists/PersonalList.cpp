#include "qm_ordering/lists/PersonalList.h"

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/foundation/KeptLastFailure.h"
#include "qm_ordering/order/ItemFields.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/store/Database.h"

namespace qm_ordering {

PersonalList::PersonalList()
    : m_oOrderItems(OrOutOfMemory([] { return std::make_shared<qm_ordering::OrderItems>(); })) {}

PersonalList::~PersonalList() = default;

Database& PersonalList::Store() {
  if (m_oStore == nullptr) {
    m_oStore = std::make_unique<Database>();
  }
  return *m_oStore;
}

// Makes the list of the argument the object's; false, with the record set, when the argument names none.
// A missing argument and a number out of range raise.
bool PersonalList::TakeListID(const Variant& vvListID) {
  try {
    m_lListID = vvListID.ToInteger();
    return true;
  } catch (const Failure& failure) {
    if (vvListID.IsMissing() || failure.Number() == failure::kOverflow) {
      throw;
    }
    SetError(m_oError, OrderingError::errInvalidListID, "");
    return false;
  }
}

void PersonalList::AddItem(const std::shared_ptr<OrderItem>& ovOrderItem, const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (vvListID.IsMissing() && m_lListID == -1) {
      SetError(m_oError, OrderingError::errListIDNotSet, "");
      return;
    }
    // Fails where no id was given: the list is to be named with every item.
    if (!TakeListID(vvListID)) {
      return;
    }
    OrderItem& item = *RequireObject(ovOrderItem, "the item to be added");
    item.OrderID(m_lListID);
    if (!AddToStoredLine(item)) {
      const KeptLastFailure before;
      Store().PersonalList_AddItem(
          item.OrderID(), item.ItemNumber(), item.Quantity(), item.Description(), item.ShortDescription(),
          item.Manufacturer(), item.Model(), item.SellQuantity(), item.ShipQuantity(), item.UsuallyShips(),
          item.IsTaxable(), item.CustomerPartNumber(), item.CustomerNotes(), item.HasPartsInfo());
      const ErrorInfo stored = Store().Error();
      // The store refuses a line that another program has added meanwhile.
      const bool bRefused = stored.Number == ErrorTableEntry(OrderingError::errOrderNotLoaded).Number;
      if (bRefused && AddToStoredLine(item)) {
        before.PutBack();
      } else {
        m_oError = stored;
      }
    }
    if (m_oError.Number == 0) {
      RequireObject(m_oOrderItems, "the collection of items")->Add(ovOrderItem, item.ItemNumber());
    }
  });
}

// False when the list has no line of that item number. Of two programs that add at once both count, since the
// store itself adds to the quantity.
bool PersonalList::AddToStoredLine(const OrderItem& item) {
  if (!Store().PersonalList_ItemExists(item.OrderID(), item.ItemNumber())) {
    return false;
  }
  Store().PersonalList_IncrementQuantity(item.OrderID(), item.ItemNumber(), item.Quantity());
  return true;
}

void PersonalList::LoadSummary(const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (vvListID.IsMissing() && m_lListID == -1) {
      SetError(m_oError, OrderingError::errListIDNotSet, "");
      return;
    }
    if (!vvListID.IsMissing() && !TakeListID(vvListID)) {
      return;
    }
    const Database::Reading reading(Store());
    const auto rows = Store().PersonalList_GetSummary(m_lListID);
    if (rows->AtBeginning() && rows->AtEnd()) {
      SetError(m_oError, OrderingError::errListNotFound, "");
      return;
    }
    m_zName = rows->Fields("zName").Value().ToString();
  });
}

void PersonalList::LoadItems(const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (!vvListID.IsMissing() && !TakeListID(vvListID)) {
      return;
    }
    const Database::Reading reading(Store());
    const auto rows = Store().PersonalList_GetItems(m_lListID);
    const ItemFields fields(*rows, "lListID");
    for (; !rows->AtEnd(); rows->MoveNext()) {
      const std::shared_ptr<OrderItem> oItem = fields.MakeItem(TextOf(fields.ItemNumber()));
      RequireObject(m_oOrderItems, "the collection of items")->Add(oItem, oItem->ItemNumber());
    }
  });
}

}  // namespace qm_ordering
