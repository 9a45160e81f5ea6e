#include "qm_ordering/history/PreviousOrder.h"

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

constexpr const char* kOrder = "the order details";

}  // namespace

PreviousOrder::PreviousOrder()
    : m_oOrderDetails(OrOutOfMemory([] { return std::make_shared<qm_ordering::OrderDetails>(); })) {}

void PreviousOrder::OrderID(std::int32_t lvOrderID) {
  RequireObject(m_oOrderDetails, kOrder)->OrderID(lvOrderID);
  m_lOrderID = lvOrderID;
}

void PreviousOrder::LoadSummary(const Variant& vvOrderID) {
  OrOutOfMemory([&] {
    if (vvOrderID.IsMissing() && m_lOrderID == -1) {
      SetError(m_oError, OrderingError::errOrderIDNotSet, "");
      return;
    }
    if (!vvOrderID.IsMissing()) {
      m_lOrderID = vvOrderID.ToInteger();
    }
    qm_ordering::OrderDetails& order = *RequireObject(m_oOrderDetails, kOrder);
    order.OrderID(m_lOrderID);
    order.LoadSummary(false);
    m_zPurchaseOrderNumber = order.PurchaseOrderNumber();
    m_datSubmitDate = order.SubmitDate();
    m_cOrderTotal = order.TotalPrice();
  });
}

std::string PreviousOrder::GetXML() const {
  return RequireObject(m_oOrderDetails, kOrder)->GetXML();
}

}  // namespace qm_ordering
