#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/order/DeliveryInformation.h"
#include "qm_ordering/order/OrderInformation.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/order/PaymentInformation.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"

namespace qm_ordering {

class Database;

// One order in memory: its summary, its three header objects and its lines.
//
// LoadSummary, AddItem (of a new line), SaveSummary, SavePONumber, SaveToHistory and
// ApplyRegistrationSettings set the error record; the record is cleared where they succeed and by nothing
// else. ItemCount and ItemExists answer whatever happens. Every other member raises the store's failure:
// -2147217900 for a refused statement, -2147467259 for a store that is missing, locked, unreadable or full.
//
// Where memory ends, a member that sets the record does so (5, "Out of memory" alone when there is no memory
// for more) or raises 7, and every other one raises 7. What the store has taken until then stays: load the
// summary and the lines again before going on.
//
// The collection of lines is what LoadItems and AddItem made of it: RemoveItem, ClearItems, UpdateItems and
// AddItem of a line that exists change the store and TotalPrice alone. A host loads the lines again
// (LoadItems) before it goes on: adding an item that was just removed, without loading, stores it and then
// raises 457, since the collection still holds its key.
class QM_ORDERING_API OrderDetails : public LibraryObject {
 public:
  OrderDetails();
  ~OrderDetails() override;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderDetails";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // -1: no order is loaded. Setting it chooses the order that LoadSummary and LoadItems read.
  std::int32_t OrderID() const { return m_lOrderID; }
  void OrderID(std::int32_t lvOrderID) { m_lOrderID = lvOrderID; }
  // The sum of the lines' extended prices.
  Currency TotalPrice() const { return m_cTotalPrice; }
  void TotalPrice(Currency cvTotalPrice) { m_cTotalPrice = cvTotalPrice; }
  // The zero date for an order that is not submitted.
  Date SubmitDate() const { return m_datSubmitDate; }
  void SubmitDate(const Date& datvSubmitDate) { m_datSubmitDate = datvSubmitDate; }
  // Whether this is the order that the user is building. False before a LoadSummary.
  bool IsCurrentOrder() const { return m_bIsCurrentOrder; }
  // The purchaser's own number for the order, free text.
  const std::string& PurchaseOrderNumber() const { return m_zPurchaseOrderNumber; }
  void PurchaseOrderNumber(const std::string& zvPurchaseOrderNumber) {
    m_zPurchaseOrderNumber = zvPurchaseOrderNumber;
  }

  // What the purchaser's organisation needs. Null until the first LoadSummary, the same object from then on.
  std::shared_ptr<qm_ordering::OrderInformation> OrderInformation() const { return m_oOrderInformation; }
  // How the order is paid. Null until the first LoadSummary, the same object from then on.
  std::shared_ptr<qm_ordering::PaymentInformation> PaymentInformation() const {
    return m_oPaymentInformation;
  }
  // How the order reaches the purchaser. Null until the first LoadSummary, the same object from then on.
  std::shared_ptr<qm_ordering::DeliveryInformation> DeliveryInformation() const {
    return m_oDeliveryInformation;
  }

  // The lines; empty until LoadItems or AddItem. LoadItems puts a new collection in its place.
  std::shared_ptr<qm_ordering::OrderItems> OrderItems() const { return m_oOrderItems; }

  // The record of the last member that sets it; number 0 for no error.
  ErrorInfo Error() const { return m_oError; }

  // Whether the last LoadItems that validated met a quantity that is not a whole number of packs.
  bool HasInvalidQuantities() const { return m_bHasInvalidQuantities; }

  // Reads the header of the order OrderID, or with bvIsLoadCurrent that of the current order, which is
  // created from the order defaults when there is none. Record: 3 when there is no such order (no field
  // changes), 5 with the detail for any failure (fields already read keep their new values), clear on
  // success.
  void LoadSummary(bool bvIsLoadCurrent = false);

  // Reads the lines of the order OrderID, or of the current order, into a new collection, each under its item
  // number as stored; an item number is shown up to the marker "DUP". lvSortType: 0 entry, 1 item number, 2
  // description, 3 manufacturer, 4 model, 5 usual shipping time, 6 price; raises 9 for any other. With
  // bvValidate each line is checked by the delivery method: raises 91 before a LoadSummary, 11 for a line
  // with a pack size of 0 (the lines before it are loaded).
  void LoadItems(std::int32_t lvSortType = 0, bool bvIsLoadCurrent = false, bool bvValidate = false);

  // Writes the header to the store and its values into the order defaults; submit date and IsCurrentOrder are
  // not written. bvIsSaveCurrent is not used. Record: number 1 with "Order not loaded yet" when OrderID is
  // -1, 5 with the detail for a failure; the detail says so when the order itself is saved and only the
  // defaults are not. Raises 91 when OrderID was set and no summary was ever loaded.
  void SaveSummary(bool bvIsSaveCurrent = false);

  // Writes PurchaseOrderNumber alone. Record: 5 with the detail for a failure.
  void SavePONumber();

  // Adds an item. Sets its OrderID and its ExtendedPrice (Price times Quantity). A new line is stored, the
  // stored total brought up to date, and item and TotalPrice added here. For an item number that is in the
  // order already, in any letter case, the stored line gets the sum of both quantities, the item's price, and
  // price times sum; TotalPrice is read back, the collection and the error record stay as they are. Record
  // (new line): 4 when OrderID is -1, and when the store refuses the line; 5 with the detail when the line is
  // stored but the total is not. Raises 91 for a null item, 6 when a product, the sum of the quantities or
  // the total is out of range (for the line: nothing changes), and for a merged line the store's failures;
  // the stored total may then lack what the line has got.
  void AddItem(const std::shared_ptr<OrderItem>& ovOrderItem);

  // Writes quantity, price, extended price and the flags of price and tax of the given items into the stored
  // lines of the same item numbers, and removes the lines whose item has quantity 0; then TotalPrice is
  // brought up to date. The collection is not replaced. Raises 91 for null.
  void UpdateItems(const std::shared_ptr<qm_ordering::OrderItems>& ovOrderIems);

  // Removes a stored line and brings TotalPrice up to date. The collection keeps the item. An item number
  // with a quote raises -2147217900.
  void RemoveItem(const std::string& zvItemNumber);

  // Removes all stored lines; TotalPrice is 0. The collection keeps the items.
  void ClearItems();

  // Submits the order: it moves into the history with the moment as its submit date, and the next current
  // order is created from the order defaults. This object still names the submitted order, so that AddItem
  // would change that one: load the summary and the lines again first. Record: 2 when this is not the current
  // order (nothing changes), 5 with the detail for a failure.
  void SaveToHistory();

  // The number of lines in the store; 0 when it cannot be read (LastFailure tells why).
  std::int32_t ItemCount();

  // Whether the collection holds an item under exactly this number. The store is not asked. False when memory
  // ends (LastFailure tells).
  bool ItemExists(const std::string& zvItemNumber) const;

  // Writes contact and account values into every order of the store, submitted ones included: the order
  // default where there is one, else the registered value. The defaults are not changed. LoadSummary shows
  // the values. Record: 5 with the detail for a failure. Raises what the settings component raises.
  void ApplyRegistrationSettings();

  // The order as one "order" document, as it stands in memory. Raises 91 before the first LoadSummary,
  // -1072896760 for a text that XML cannot hold.
  std::string GetXML() const;

 private:
  friend struct LibraryAccess;

  Database& Store();
  // Adds the item's quantity to the stored line of its number; false when that line has gone in the meantime.
  bool MergeIntoStoredLine(const OrderItem& item);

  std::int32_t m_lOrderID = -1;
  Currency m_cTotalPrice;
  Date m_datSubmitDate;
  bool m_bIsCurrentOrder = false;
  std::string m_zPurchaseOrderNumber;
  std::shared_ptr<qm_ordering::OrderInformation> m_oOrderInformation;
  std::shared_ptr<qm_ordering::PaymentInformation> m_oPaymentInformation;
  std::shared_ptr<qm_ordering::DeliveryInformation> m_oDeliveryInformation;
  std::shared_ptr<qm_ordering::OrderItems> m_oOrderItems;
  ErrorInfo m_oError;
  std::unique_ptr<Database> m_oStore;
  bool m_bHasInvalidQuantities = false;
};

}  // namespace qm_ordering
