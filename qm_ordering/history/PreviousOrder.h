#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// A submitted order: what a list of the history shows of it, and the order itself, which the host loads when
// it is wanted.
class QM_ORDERING_API PreviousOrder : public LibraryObject {
 public:
  // Without an order: OrderID is -1.
  PreviousOrder() = default;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "PreviousOrder";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The order's id in the store; -1: not set. Setting it sets that of OrderDetails first. Raises 91 while
  // OrderDetails is null.
  std::int32_t OrderID() const { return m_lOrderID; }
  void OrderID(std::int32_t lvOrderID);

  // The order itself: only its id is set until the host calls its LoadSummary and LoadItems. Raises 7 when
  // there is no memory for it. The setter takes another one, shared.
  std::shared_ptr<qm_ordering::OrderDetails> OrderDetails() const;
  void OrderDetails(const std::shared_ptr<qm_ordering::OrderDetails>& ovOrderDetails) {
    m_oOrderDetails = ovOrderDetails;
  }

  // The purchaser's own number for the order.
  const std::string& PurchaseOrderNumber() const { return m_zPurchaseOrderNumber; }
  // When the order was submitted; the zero date when that is not known.
  Date SubmitDate() const { return m_datSubmitDate; }
  // The order's total price.
  Currency OrderTotal() const { return m_cOrderTotal; }

  // Reads number, date and total of the order vvOrderID, or of the one that is set. Without either it does
  // nothing; that failure is in no record that a host can read. Raises 13, 6 or 94 for a value that is no id,
  // and 91 while OrderDetails is null. OrderDetails has its header afterwards, and in its record how the
  // reading went; when the order is not there, number, date and total are those that OrderDetails had.
  void LoadSummary(const Variant& vvOrderID = Variant::Missing());

  // The document of OrderDetails; raises what that raises, and 91 while it is null.
  std::string GetXML() const;

 private:
  friend class OrderHistory;
  void PurchaseOrderNumber(std::string zvPurchaseOrderNumber) {
    m_zPurchaseOrderNumber = std::move(zvPurchaseOrderNumber);
  }
  void SubmitDate(const Date& datvSubmitDate) { m_datSubmitDate = datvSubmitDate; }
  void OrderTotal(Currency cvOrderTotal) { m_cOrderTotal = cvOrderTotal; }

  std::int32_t m_lOrderID = -1;
  std::string m_zPurchaseOrderNumber;
  Date m_datSubmitDate;
  Currency m_cOrderTotal;
  // Made when it is first asked for: most entries of a long history never are, and it is the larger part of
  // one. Until then the optional is empty, which a null that the host has set is not.
  mutable std::optional<std::shared_ptr<qm_ordering::OrderDetails>> m_oOrderDetails;
  ErrorInfo m_oError;
};

}  // namespace qm_ordering
