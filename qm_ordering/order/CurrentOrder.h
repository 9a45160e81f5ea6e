#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"

namespace qm_ordering {

// The one order that the user is building. Making it loads the current order's summary, creating the order
// when there is none; whatever goes wrong then shows in OrderDetails()->Error() and LastFailure(), and the
// error record here starts clear. Each member does what the one of the same name of OrderDetails does, and
// raises what that raises; those that say so also copy its error record here.
class QM_ORDERING_API CurrentOrder : public LibraryObject {
 public:
  CurrentOrder();

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "CurrentOrder";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The record of the last member that copies it; number 0 for no error.
  ErrorInfo Error() const { return m_oError; }
  // The order behind this object; one and the same for its life.
  std::shared_ptr<qm_ordering::OrderDetails> OrderDetails() const { return m_oOrder; }

  // Reads the current order, creating it from the order defaults when there is none. Copies the record.
  void LoadSummary();
  // Reads the current order's lines and checks their quantities. Raises 11 for a line with a pack size of 0.
  void LoadItems(std::int32_t lvSortOrder);

  // Adds an item, or more of the one that is there. Copies the record.
  void AddItem(const std::shared_ptr<OrderItem>& ovOrderItem);
  // Writes the given items into the stored lines, and removes those of quantity 0. The record stays.
  void UpdateItems(const std::shared_ptr<OrderItems>& ovOrderItems);
  // Removes a stored line. The record stays.
  void RemoveItem(const std::string& zvItemNumber);
  // Removes all stored lines. The record stays.
  void ClearItems();
  // The number of stored lines; 0 when it cannot be read.
  std::int32_t ItemCount();
  // Whether the collection of lines holds an item under this number.
  bool ItemExists(const std::string& zvItemNumber) const;

  // Writes the header to the store and its values into the order defaults. Copies the record.
  void SaveSummary();
  // Writes the purchase-order number alone. Copies the record.
  void SavePONumber();
  // Submits the order. Copies the record. This object goes on naming the submitted order until LoadSummary
  // and LoadItems.
  void SaveToHistory();

  // Writes contact and account values into every order, then loads the summary again. The record tells how
  // that loading went; a failure to apply shows in LastFailure alone.
  void ApplyRegistrationSettings();

  // The order as one "order" document.
  std::string GetXML() const;

 private:
  friend struct LibraryAccess;

  // For the library's own use: customer part number and notes of one line, and of all lines of an order that
  // carry a part number.
  static void UpdateCustPartInfo(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                 const std::string& zvCustomerPartNumber, const std::string& zvCustomerNotes);
  static void DeleteCustPartInfo(const std::string& zvCustomerPartNumber, std::int32_t lvOrderID);

  void CopyError();

  std::shared_ptr<qm_ordering::OrderDetails> m_oOrder;
  ErrorInfo m_oError;
  bool m_bSummaryLoaded = false;
  bool m_bItemsLoaded = false;
};

}  // namespace qm_ordering
