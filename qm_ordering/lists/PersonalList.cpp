#include "qm_ordering/lists/PersonalList.h"

#include <optional>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/order/ItemFields.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/store/Database.h"

namespace qm_ordering {

namespace {

// The id that the value names; nothing when it is no number.
std::optional<std::int32_t> ListIDOf(const Variant& vvListID) {
  try {
    return vvListID.ToInteger();
  } catch (const Failure& failure) {
    if (failure.Number() == failure::kOverflow) {
      throw;
    }
    return std::nullopt;
  }
}

}  // namespace

PersonalList::PersonalList()
    : m_oOrderItems(OrOutOfMemory([] { return std::make_shared<qm_ordering::OrderItems>(); })) {}

PersonalList::~PersonalList() = default;

Database& PersonalList::Store() {
  if (m_oStore == nullptr) {
    m_oStore = std::make_unique<Database>();
  }
  return *m_oStore;
}

// Makes the list of the argument, where one is given, the object's; false, with the record set, when it names
// none.
bool PersonalList::TakeListID(const Variant& vvListID) {
  if (vvListID.IsMissing()) {
    return true;
  }
  const std::optional<std::int32_t> lListID = ListIDOf(vvListID);
  if (!lListID) {
    SetError(m_oError, OrderingError::errInvalidListID, "");
    return false;
  }
  m_lListID = *lListID;
  return true;
}

void PersonalList::AddItem(const std::shared_ptr<OrderItem>& ovOrderItem, const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (vvListID.IsMissing() && m_lListID == -1) {
      SetError(m_oError, OrderingError::errListIDNotSet, "");
      return;
    }
    if (!TakeListID(vvListID)) {
      return;
    }
    // Fails where no id was given: the list is to be named with every item.
    m_lListID = vvListID.ToInteger();
    OrderItem& item = *RequireObject(ovOrderItem, "the item to be added");
    item.OrderID(m_lListID);
    {
      // One unit, so that two programs that add the same item at once both count.
      Database::WriteUnit unit(Store());
      if (Store().PersonalList_ItemExists(item.OrderID(), item.ItemNumber())) {
        Store().PersonalList_IncrementQuantity(item.OrderID(), item.ItemNumber(), item.Quantity());
        unit.Commit();
      } else {
        Store().PersonalList_AddItem(
            item.OrderID(), item.ItemNumber(), item.Quantity(), item.Description(), item.ShortDescription(),
            item.Manufacturer(), item.Model(), item.SellQuantity(), item.ShipQuantity(), item.UsuallyShips(),
            item.IsTaxable(), item.CustomerPartNumber(), item.CustomerNotes(), item.HasPartsInfo());
        const ErrorInfo stored = Store().Error();
        if (stored.Number == 0) {
          unit.Commit();
        }
        m_oError = stored;
      }
    }
    if (m_oError.Number == 0) {
      RequireObject(m_oOrderItems, "the collection of items")->Add(ovOrderItem, item.ItemNumber());
    }
  });
}

void PersonalList::LoadSummary(const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (vvListID.IsMissing() && m_lListID == -1) {
      SetError(m_oError, OrderingError::errListIDNotSet, "");
      return;
    }
    if (!TakeListID(vvListID)) {
      return;
    }
    const Database::Reading reading(Store());
    const auto rows = Store().PersonalList_GetSummary(m_lListID);
    if (rows->AtBeginning() && rows->AtEnd()) {
      SetError(m_oError, OrderingError::errListNotFound, "");
      return;
    }
    m_zName = TextOf(rows->Fields("zName"));
  });
}

void PersonalList::LoadItems(const Variant& vvListID) {
  OrOutOfMemory([&] {
    if (!TakeListID(vvListID)) {
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
